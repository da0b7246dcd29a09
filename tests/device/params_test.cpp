// The parameter record, each setter's bytes, limits and refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr int kFieldBytes = 29;  // what follows the text lines of the identification

struct SetterCase {
  const char* name;
  ZRVParam param;
  float value1, value2;
  const char* wire;  // "" when nothing is sent
  float stored;      // what GetDeviceParam says afterwards
  ZRVError error;
};

const SetterCase kSetterCases[] = {
    {"baud rate", ParamUSARTBaudRate, 460800, 0, "B5 B0 2B BB 09 00 08 07 0A", 460800, ErrorNone},
    {"baud rate below", ParamUSARTBaudRate, 1, 0, "B5 B0 2B BB 09 00 C2 01 0A", 115200, ErrorNone},
    {"baud rate above", ParamUSARTBaudRate, 1e12f, 0, "B5 B0 2B BB 09 00 40 38 0A", 3686400, ErrorNone},
    {"sample rate", ParamSampleRate, 44099.6f, 0, "B5 B0 2B E8 09 44 AC 00 0A", 44100, ErrorNone},
    {"sample rate below", ParamSampleRate, 50, 0, "B5 B0 2B E8 09 2C 01 00 0A", 300, ErrorNone},
    {"sample rate negative", ParamSampleRate, -5, 0, "B5 B0 2B E8 09 2C 01 00 0A", 300, ErrorNone},
    {"sample rate above", ParamSampleRate, kInfinity, 0, "B5 B0 2B E8 09 50 C3 00 0A", 50000, ErrorNone},
    {"sample rate unchanged", ParamSampleRate, 20000, 0, "", 20000, ErrorNone},
    {"sample rate NaN", ParamSampleRate, kNaN, 0, "", 20000, ErrorInvalidValue},
    {"bandwidth", ParamHardwareFilterBw, 258, 0, "B5 B0 2B C0 08 02 01 0A", 258, ErrorNone},
    {"bandwidth above", ParamHardwareFilterBw, 65000, 0, "B5 B0 2B C0 08 28 23 0A", 9000, ErrorNone},
    {"difference", ParamVdifferenceMax, 99.5f, 0, "B5 B0 2B EB 07 64 0A", 99.5f, ErrorNone},
    {"difference above", ParamVdifferenceMax, 500, 0, "B5 B0 2B EB 07 82 0A", 130, ErrorNone},
    {"difference below", ParamVdifferenceMax, -1, 0, "B5 B0 2B EB 07 00 0A", 0, ErrorNone},
    {"difference NaN", ParamVdifferenceMax, kNaN, 0, "", 60, ErrorInvalidValue},
    {"bias", ParamVbias, 42.4f, 0, "B5 B0 2B EA 07 2A 0A", 42.4f, ErrorNone},
    {"bias below", ParamVbias, 1, 0, "B5 B0 2B EA 07 05 0A", 5, ErrorNone},
    {"offsets", ParamOutputOffsets, 0.5f, -0.5f, "B5 B0 2B BF 0A 00 C0 01 40 0A", 0.5f, ErrorNone},
    {"offsets centred are sent too", ParamOutputOffsets, 0, 0, "B5 B0 2B BF 0A 00 80 00 80 0A", 0, ErrorNone},
    {"offsets beyond", ParamOutputOffsets, 3, -3, "B5 B0 2B BF 0A FF FF 01 00 0A", 1, ErrorNone},
    {"offsets NaN", ParamOutputOffsets, 0, kNaN, "", 0, ErrorInvalidValue},
    {"scale", ParamDataScale, 0.5f, 0, "B5 B0 2B E9 08 FF 3F 0A", 0.5f, ErrorNone},
    {"scale beyond", ParamDataScale, -2, 0, "B5 B0 2B E9 08 00 00 0A", 0, ErrorNone},
    // cos(1) * 16383 + 16384 = 25235.77, sin(1) * 16383 + 16384 = 30169.82, both truncated.
    {"rotation", ParamDataRotation, 1, 0, "B5 B0 2B EC 0A 93 62 D9 75 0A", 1, ErrorNone},
    {"rotation infinite", ParamDataRotation, kInfinity, 0, "", 0, ErrorInvalidValue},
    {"driver on", ParamMEMSDriverEnable, 0.1f, 0, "B5 B0 2B D5 06 0A", 1, ErrorNone},
    {"outputs on", ParamDigitalOutputEnable, -1, 0, "B5 B0 2B D7 06 0A", 1, ErrorNone},
    {"laser on", ParamLaserModulationEnable, 2, 0, "B5 B0 2B D9 06 0A", 1, ErrorNone},
    {"laser NaN", ParamLaserModulationEnable, kNaN, 0, "", 0, ErrorInvalidValue},
    {"laser off already", ParamLaserModulationEnable, 0, 0, "", 0, ErrorNone},
    {"buffer offset", ParamBufferOffset, 70000, 0, "B5 B0 2B B0 09 70 11 01 0A", 70000, ErrorNone},
    {"axes", ParamDeviceAxes, 7.9f, 0, "B5 B0 2B E7 07 07 0A", 7, ErrorNone},
    {"axes too many", ParamDeviceAxes, 8, 0, "", 0, ErrorInvalidValue},
    {"axes negative", ParamDeviceAxes, -1, 0, "", 0, ErrorInvalidValue},
    {"boot", ParamBootSetting, 2, 0, "B5 B0 2B EF 08 02 00 0A", 2, ErrorNone},
    {"sync", ParamSyncMode, 15, 0, "B5 B0 2B E5 07 0F 0A", 15, ErrorNone},
    {"data mode", ParamDataMode, 6, 0, "B5 B0 2B B5 07 06 0A | 0A | 0A | 0A", 6, ErrorNone},
    {"data mode is always sent", ParamDataMode, 0, 0, "B5 B0 2B B5 07 00 0A | 0A | 0A | 0A", 0, ErrorNone},
    {"state", ParamDeviceState, 0, 0, "", 256, ErrorInvalidParam},
    {"unknown", static_cast<ZRVParam>(3), 0, 0, "", 1e9f, ErrorInvalidParam},
};

TEST(Params, SettersSendTheirBytesAndKeepWhatWasAcknowledged) {
  ScriptedDevice s;
  for (const auto& c : kSetterCases) {
    SCOPED_TRACE(c.name);
    ZRVDeviceParams fresh;
    s.device.GetDeviceParams(&fresh);
    s.port->TakeWrites();
    s.device.SetDeviceParam(c.param, c.value1, c.value2);
    EXPECT_EQ(s.device.GetLastError(), c.error);
    EXPECT_EQ(s.port->TakeWrites(), c.wire);
    EXPECT_EQ(s.device.GetDeviceParam(c.param), c.stored);
  }
}

TEST(Params, ARefusedSetterKeepsTheOldValue) {
  ScriptedDevice s;
  const struct {
    const char* name;
    ZRVParam param;
    uint8_t code;
    float before;
  } kCases[] = {{"rate", ParamSampleRate, 0xE8, 20000},
                {"bias", ParamVbias, 0xEA, 70},
                {"driver", ParamMEMSDriverEnable, 0xD5, 0},
                {"axes", ParamDeviceAxes, 0xE7, 0}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    s.port->Answer(c.code, {0xB5, 0xB0, 0x0B});
    s.device.SetDeviceParam(c.param, 5);
    EXPECT_EQ(s.device.GetLastError(), ErrorBadAcknowledge);
    EXPECT_EQ(s.device.GetDeviceParam(c.param), c.before);
  }
}

TEST(Params, TheRecordIsReadFieldByField) {
  ScriptedDevice s;
  s.port->Answer(0xE4, kAck + Bytes{0x00, 0xC0, 0x01, 0x40});
  const std::unique_ptr<ZRVDeviceParams> p(s.device.GetDeviceParams());
  EXPECT_EQ(s.port->TakeWrites(), "B5 B0 2B E0 06 0A | B5 B0 2B E4 06 0A | B5 B0 2B E1 06 0A");
  EXPECT_EQ(s.device.GetLastError(), ErrorNone);
  EXPECT_EQ(p->ParamsValid, 1);
  EXPECT_STREQ(p->DeviceName, "Bench 1");
  EXPECT_STREQ(p->FirmwareName, "FW 3.2");
  EXPECT_STREQ(p->CommType, "USB");
  EXPECT_STREQ(p->BluetoothMAC, "00:11:22:33:44:55");
  EXPECT_EQ(p->USARTBaudRate, 921600u);
  EXPECT_EQ(p->SampleRate, 20000u);
  EXPECT_EQ(p->HardwareFilterBw, 2000u);
  EXPECT_EQ(p->DataScale, 1.0f);
  EXPECT_EQ(p->DataRotation, 0.0f);
  EXPECT_EQ(p->VmaxMEMSDriver, 130.0f);
  EXPECT_EQ(p->Vbias, 70.0f);
  EXPECT_EQ(p->VdifferenceMax, 60.0f);
  EXPECT_EQ(p->HardwareFilterOn, 1u);
  EXPECT_EQ(p->XOffset, 16384.0f / 32767.0f);
  EXPECT_EQ(p->YOffset, -16383.0f / 32767.0f);
  EXPECT_EQ(p->SampleRateMin, 300u);
  EXPECT_EQ(p->SampleRateMax, 50000u);
  EXPECT_EQ(p->LimitWord3, 1u);
  EXPECT_EQ(p->SampleBufferCapacity, 30000u);
  EXPECT_EQ(p->HardwareFilterBwMin, 10u);
  EXPECT_EQ(p->HardwareFilterBwMax, 9000u);
  EXPECT_EQ(p->LimitByte10, 4u);
  EXPECT_EQ(p->VbiasMin, 5u);
  EXPECT_EQ(p->VbiasMax, 90u);
}

TEST(Params, AnIdentificationCutAnywhereIsNeverValidNorTrusted) {
  ScriptedDevice s;
  for (size_t length = 0; length < kIdentification.size(); ++length) {
    SCOPED_TRACE(length);
    s.port->Answer(0xE0, Bytes(kIdentification.begin(), kIdentification.begin() + static_cast<int>(length)));
    ZRVDeviceParams p;
    p.ParamsValid = 1;
    s.device.GetDeviceParams(&p);
    const size_t lineEnd = 3 + 8;
    const ZRVError expected = length < 3         ? ErrorSerialComm
                              : length < lineEnd - 1 ? ErrorBadAcknowledge
                                                     : ErrorDeviceResponse;
    EXPECT_EQ(s.device.GetLastError(), expected);
    EXPECT_EQ(p.ParamsValid, 0);
    EXPECT_EQ(s.device.GetDeviceParam(ParamSampleRate), 20000.0f);
    s.port->Answer(0xE0, kIdentification);
    s.device.GetDeviceParams(&p);
    EXPECT_EQ(p.ParamsValid, 1);
    EXPECT_EQ(s.device.GetLastError(), ErrorNone);
  }
}

TEST(Params, MissingAnswerBytesReadAsFillerInTheCallersRecord) {
  ScriptedDevice s;
  const size_t uptoRate = kIdentification.size() - kFieldBytes + 4;  // ends within the sample rate
  s.port->Answer(0xE0, Bytes(kIdentification.begin(), kIdentification.begin() + static_cast<int>(uptoRate)));
  ZRVDeviceParams p;
  s.device.GetDeviceParams(&p);
  EXPECT_EQ(p.USARTBaudRate, 921600u);
  EXPECT_EQ(p.HardwareFilterBw, 0xDCDCu);
  EXPECT_EQ(p.Vbias, 220.0f);
}

TEST(Params, LimitsCutAnywhereAreNotTrustedEither) {
  ScriptedDevice s;
  for (size_t length = 0; length < kLimits.size(); ++length) {
    SCOPED_TRACE(length);
    s.device.SetDeviceParam(ParamSampleRate, 1000);
    s.port->Answer(0xE1, Bytes(kLimits.begin(), kLimits.begin() + static_cast<int>(length)));
    ZRVDeviceParams p;
    s.device.GetDeviceParams(&p);
    EXPECT_NE(s.device.GetLastError(), ErrorNone);
    EXPECT_EQ(p.ParamsValid, 0);
    s.port->TakeWrites();
    s.device.SetDeviceParam(ParamSampleRate, 1e6f);
    EXPECT_EQ(s.port->TakeWrites(), "B5 B0 2B E8 09 50 C3 00 0A");
  }
}

TEST(Params, LongTextsAreCutToTheirFields) {
  ScriptedDevice s;
  const Bytes tail(kIdentification.end() - kFieldBytes, kIdentification.end());
  s.port->Answer(0xE0, kAck + Text("ZR-INFO\n" + std::string(79, 'n') + "\n" + std::string(40, 'f') + "\n" +
                                   std::string(16, 'c') + "\n" + std::string(18, 'm') + "\n") + tail);
  ZRVDeviceParams p;
  s.device.GetDeviceParams(&p);
  EXPECT_EQ(s.device.GetLastError(), ErrorNone);
  EXPECT_EQ(p.DeviceName, std::string(31, 'n'));
  EXPECT_EQ(p.FirmwareName, std::string(15, 'f'));
  EXPECT_EQ(p.CommType, std::string(15, 'c'));
  EXPECT_EQ(p.BluetoothMAC, std::string(17, 'm'));
}

TEST(Params, WithoutAPortOnlyTheLimitsAreGiven) {
  ZRVDevice device;
  ZRVDeviceParams p;
  p.ParamsValid = 1;
  p.SampleRate = 77;
  device.GetDeviceParams(&p);
  EXPECT_EQ(p.ParamsValid, 0);
  EXPECT_EQ(p.SampleRate, 77u);
  EXPECT_EQ(p.SampleRateMin, 200u);
  EXPECT_EQ(p.SampleBufferCapacity, 25000u);
  EXPECT_EQ(p.LimitByte10, 140u);
  EXPECT_EQ(p.VbiasMax, 100u);
  device.GetDeviceParams(nullptr);
  EXPECT_EQ(device.GetLastError(), ErrorNotConnected);
}

TEST(Params, ARecordSendsWhatChangedAndKeepsTheWorstError) {
  ScriptedDevice s;
  ZRVDeviceParams p;
  s.device.GetDeviceParams(&p);
  s.port->TakeWrites();
  s.device.SetDeviceParams(&p);
  EXPECT_EQ(s.port->TakeWrites(), "");
  EXPECT_EQ(s.device.GetLastError(), ErrorNone);

  p.SampleRate = 1000;
  p.Vbias = 1e9f;                   // not given
  p.BufferOffset = 1000000000;      // not given
  p.DeviceAxes = AxesSwap;
  p.DigitalOutputEnable = 2;        // refused
  p.XOffset = 0.25f;
  p.YOffset = 1e9f;                 // not given: Y stays
  p.SyncMode = static_cast<ZRVSync>(1000000000);
  s.device.SetDeviceParams(&p);
  EXPECT_EQ(s.port->TakeWrites(),
            "B5 B0 2B E8 09 E8 03 00 0A | B5 B0 2B BF 0A 00 A0 00 80 0A | B5 B0 2B E7 07 04 0A");
  EXPECT_EQ(s.device.GetLastError(), ErrorInvalidValue);

  s.device.GetDeviceParams(&p);
  p.VmaxMEMSDriver = 99;  // read only
  p.SampleRate = 2000;
  s.port->TakeWrites();
  s.device.SetDeviceParams(&p);
  EXPECT_EQ(s.port->TakeWrites(), "B5 B0 2B E8 09 D0 07 00 0A");
  EXPECT_EQ(s.device.GetLastError(), ErrorReadOnlyParam);
  s.device.SetDeviceParams(nullptr);
  EXPECT_EQ(s.device.GetLastError(), ErrorNotConnected);
}

// The scripted controller goes on reporting its first name, as one that shortens names would.
TEST(Params, ANameSetThroughARecordIsNotSentAgain) {
  ScriptedDevice s;
  ZRVDeviceParams p;
  s.device.GetDeviceParams(&p);
  std::strcpy(p.DeviceName, "Lab");
  s.port->TakeWrites();
  s.device.SetDeviceParams(&p);
  EXPECT_EQ(s.port->TakeWrites().substr(0, 26), "B5 B0 2B BA 09 4C 61 62 0A");
  s.device.SetDeviceParams(&p);
  EXPECT_EQ(s.port->TakeWrites(), "");

  std::strcpy(p.DeviceName, "Bad");
  s.port->Answer(0xBA, {0xB5, 0xB0, 0x0B});
  for (int attempt = 0; attempt < 2; ++attempt) {  // a refused name is
    s.device.SetDeviceParams(&p);
    EXPECT_EQ(s.port->TakeWrites(), "B5 B0 2B BA 09 42 61 64 0A | 0A | 0A | 0A");
    EXPECT_EQ(s.device.GetLastError(), ErrorBadAcknowledge);
  }
}

TEST(Params, ReadOnlyFields) {
  const struct {
    const char* name;
    void (*change)(ZRVDeviceParams&);
    ZRVError error;
  } kCases[] = {
      {"firmware", [](ZRVDeviceParams& p) { p.FirmwareName[0] = 'x'; }, ErrorReadOnlyParam},
      {"firmware empty", [](ZRVDeviceParams& p) { p.FirmwareName[0] = '\0'; }, ErrorNone},
      {"link", [](ZRVDeviceParams& p) { p.CommType[0] = 'x'; }, ErrorReadOnlyParam},
      {"MAC", [](ZRVDeviceParams& p) { p.BluetoothMAC[0] = 'x'; }, ErrorReadOnlyParam},
      {"errors", [](ZRVDeviceParams& p) { p.DeviceErrorRegister = 7; }, ErrorReadOnlyParam},
      {"state", [](ZRVDeviceParams& p) { p.DeviceState = 7; }, ErrorReadOnlyParam},
      {"state not given", [](ZRVDeviceParams& p) { p.DeviceState = 1000000000; }, ErrorNone},
      {"filter", [](ZRVDeviceParams& p) { p.HardwareFilterOn = 0; }, ErrorReadOnlyParam},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    ScriptedDevice s;
    ZRVDeviceParams p;
    s.device.GetDeviceParams(&p);
    s.port->TakeWrites();
    c.change(p);
    s.device.SetDeviceParams(&p);
    EXPECT_EQ(s.device.GetLastError(), c.error);
    EXPECT_EQ(s.port->TakeWrites(), "");
  }
}

TEST(Params, Names) {
  constexpr const char* kAccess = "5c0e1b7a9f3d2e84c6a1b0f97d3e5a21";
  const std::string reread = " | B5 B0 2B E0 06 0A | B5 B0 2B E4 06 0A | B5 B0 2B E1 06 0A";
  ScriptedDevice s;
  s.device.SetDeviceName("Bench 1");
  EXPECT_EQ(s.port->TakeWrites(), "");  // its name already
  s.device.SetDeviceName("Lab");
  EXPECT_EQ(s.port->TakeWrites(), "B5 B0 2B BA 09 4C 61 62 0A" + reread);
  s.device.SetDeviceName(std::string(31, 'a').c_str());
  EXPECT_EQ(s.port->TakeWrites().substr(0, 14), "B5 B0 2B BA 25");
  for (const char* bad : {static_cast<const char*>(nullptr), "12345678901234567890123456789012"}) {
    s.device.SetDeviceName(bad);
    EXPECT_EQ(s.device.GetLastError(), ErrorInvalidValue);
    s.device.SetDefaultDeviceName(bad, kAccess);
    EXPECT_EQ(s.device.GetLastError(), ErrorInvalidValue);
    EXPECT_EQ(s.port->TakeWrites(), "");
  }
  s.device.SetDefaultDeviceName("Lab", kAccess);
  EXPECT_EQ(s.port->TakeWrites(), "B5 B0 2B BD 09 4C 61 62 0A" + reread);
  s.device.SetDefaultDeviceName("Lab", "5C0E1B7A9F3D2E84C6A1B0F97D3E5A21");
  EXPECT_EQ(s.port->TakeWrites(), "");
}

TEST(Params, HardwareFilterDelay) {
  ScriptedDevice s;  // 20000 samples/s, 2000 Hz: 2000000 / 316000 = 6
  EXPECT_EQ(s.device.CalcHardwareFilterDelay(100), 6u);
  EXPECT_EQ(s.device.CalcHardwareFilterDelay(5), 4u);
  s.port->Answer(0xF4, kAck + Bytes{0x00, 0x00});
  s.device.GetDeviceState();
  EXPECT_EQ(s.device.CalcHardwareFilterDelay(100), 0u);
}

}  // namespace
}  // namespace zrv::testing
