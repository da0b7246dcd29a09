// The parameter record, each setter's bytes, limits and refusals.
#include <cmath>

#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

using ::testing::ElementsAre;

const struct SetterCase {
  const char* name;
  ZRVParam param;
  float value1, value2;
  const char* wire;  // "" when nothing is sent
  float stored;      // what GetDeviceParam says afterwards
  ZRVError error;
} kSetterCases[] = {
    {"baud rate below", ParamUSARTBaudRate, 1, 0, "B5 B0 2B BB 09 00 C2 01 0A", 115200, ErrorNone},
    {"baud rate above", ParamUSARTBaudRate, 1e12f, 0, "B5 B0 2B BB 09 00 40 38 0A", 3686400, ErrorNone},
    {"sample rate", ParamSampleRate, 44099.6f, 0, "B5 B0 2B E8 09 44 AC 00 0A", 44100, ErrorNone},
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
    {"laser infinite", ParamLaserModulationEnable, kInfinity, 0, "", 0, ErrorInvalidValue},
    {"laser off already", ParamLaserModulationEnable, 0, 0, "", 0, ErrorNone},
    {"buffer offset", ParamBufferOffset, 70000, 0, "B5 B0 2B B0 09 70 11 01 0A", 70000, ErrorNone},
    {"buffer offset infinite", ParamBufferOffset, kInfinity, 0, "", 0, ErrorInvalidValue},
    {"axes", ParamDeviceAxes, 7.9f, 0, "B5 B0 2B E7 07 07 0A", 7, ErrorNone},
    {"axes too many", ParamDeviceAxes, 8, 0, "", 0, ErrorInvalidValue},
    {"axes negative", ParamDeviceAxes, -1, 0, "", 0, ErrorInvalidValue},
    {"axes infinite", ParamDeviceAxes, kInfinity, 0, "", 0, ErrorInvalidValue},
    {"boot negative", ParamBootSetting, -1, 0, "B5 B0 2B EF 08 FF FF 0A", 4294967295.0f, ErrorNone},
    {"boot", ParamBootSetting, 2, 0, "B5 B0 2B EF 08 02 00 0A", 2, ErrorNone},
    {"sync", ParamSyncMode, 15, 0, "B5 B0 2B E5 07 0F 0A", 15, ErrorNone},
    {"sync beyond a byte", ParamSyncMode, 258.9f, 0, "B5 B0 2B E5 07 02 0A", 258, ErrorNone},
    {"sync far below", ParamSyncMode, -1e30f, 0, "B5 B0 2B E5 07 00 0A", 2147483648.0f, ErrorNone},
    {"sync NaN", ParamSyncMode, kNaN, 0, "", 0, ErrorInvalidValue},
    {"data mode -1", ParamDataMode, -1, 0, "B5 B0 2B B5 07 FF 0A | 0A | 0A | 0A", 4294967295.0f, ErrorNone},
    {"data mode", ParamDataMode, 6, 0, "B5 B0 2B B5 07 06 0A | 0A | 0A | 0A", 6, ErrorNone},
    {"data mode is always sent", ParamDataMode, 0, 0, "B5 B0 2B B5 07 00 0A | 0A | 0A | 0A", 0, ErrorNone},
    {"state", ParamDeviceState, 0, 0, "", 256, ErrorInvalidParam},
    {"unknown", static_cast<ZRVParam>(3), 0, 0, "", 1e9f, ErrorInvalidParam},
};

template <typename... T>
std::vector<double> Numbers(T... fields) {
  return {static_cast<double>(fields)...};
}

class Params : public Scripted {
 protected:
  std::string SentRecord() {
    return Sent([&] { device.SetDeviceParams(&p); });
  }

  ZRVDeviceParams p;
};

TEST_F(Params, SettersSendTheirBytesAndKeepWhatWasAcknowledged) {
  for (const auto& c : kSetterCases) {
    SCOPED_TRACE(c.name);
    device.GetDeviceParams(&p);
    EXPECT_EQ(Sent([&] { device.SetDeviceParam(c.param, c.value1, c.value2); }), c.wire);
    EXPECT_EQ(device.GetLastError(), c.error);
    EXPECT_EQ(device.GetDeviceParam(c.param), c.stored);
  }
}

TEST_F(Params, ARefusedSetterKeepsTheOldValue) {
  const std::tuple<ZRVParam, uint8_t, float> kCases[] = {{ParamSampleRate, 0xE8, 20000},
                                                         {ParamMEMSDriverEnable, 0xD5, 0}};
  for (const auto& [param, code, before] : kCases) {
    port->Answer(code, {0xB5, 0xB0, 0x0B});
    device.SetDeviceParam(param, 5);
    EXPECT_EQ(device.GetLastError(), ErrorBadAcknowledge);
    EXPECT_EQ(device.GetDeviceParam(param), before);
  }
}

TEST_F(Params, TheRecordIsReadFieldByField) {
  const std::string names = "ZR-INFO\n" + std::string(79, 'n') + "\nFW 3.2\nUSB\n" + std::string(18, 'm') + "\n";
  port->Answer(0xE0, kAck + Text(names) + Bytes{0x00, 0x10, 0x0E, 0x20, 0x4E, 0x00, 0xD0, 0x07, 0xFF, 0x3F,
                                                0x00, 0x40, 130,  70,   60,   1,    2,    3,    4,    0x07,
                                                0x61, 5,    6,    7,    8,    9,    10,   11,   12});
  port->Answer(0xE4, kAck + FromHex("00 C0 01 40"));
  device.GetDeviceParams(&p);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  const std::string texts[] = {p.DeviceName, p.FirmwareName, p.CommType, p.BluetoothMAC};
  EXPECT_THAT(texts, ElementsAre(std::string(31, 'n'), "FW 3.2", "USB", std::string(17, 'm')));  // cut to their fields
  EXPECT_THAT(Numbers(p.ParamsValid, p.USARTBaudRate, p.SampleRate, p.HardwareFilterBw, p.VmaxMEMSDriver, p.Vbias,
                      p.VdifferenceMax, p.DeviceAxes, p.MEMSDriverEnable, p.DigitalOutputEnable,
                      p.LaserModulationEnable, p.HardwareFilterOn, p.SyncMode, p.SyncState, p.DeviceErrorRegister,
                      p.BufferOffset, p.BootSetting, p.DataMode),
              ElementsAre(1, 921600, 20000, 2000, 130, 70, 60, 1, 2, 3, 4, 1, 3, 3, 0x605, 0x090807, 0x0B0A, 12));
  EXPECT_THAT(Numbers(p.SampleRateMin, p.SampleRateMax, p.LimitWord3, p.SampleBufferCapacity, p.HardwareFilterBwMin,
                      p.HardwareFilterBwMax, p.LimitByte7, p.LimitByte8, p.LimitByte9, p.LimitByte10, p.VbiasMin,
                      p.VbiasMax, p.DataScale, p.XOffset, p.YOffset),
              ElementsAre(300, 50000, 1, 30000, 10, 9000, 1, 2, 3, 4, 5, 90, 16383.0f / 32767, 16384.0f / 32767,
                          -16383.0f / 32767));
  EXPECT_NEAR(p.DataRotation, M_PI / 2, 1e-6);
}

TEST_F(Params, AnIdentificationOrLimitsCutShortAreNotTrusted) {
  const std::tuple<uint8_t, size_t, ZRVError> kCases[] = {{0xE0, 9, ErrorBadAcknowledge},
                                                          {0xE0, kIdentification.size() - 1, ErrorDeviceResponse},
                                                          {0xE1, 9, ErrorBadAcknowledge},
                                                          {0xE1, kLimits.size() - 1, ErrorDeviceResponse},
                                                          {0xE0, kIdentification.size() - 25, ErrorDeviceResponse}};
  for (const auto& [code, length, error] : kCases) {
    port->once[code] = Head(code == 0xE0 ? kIdentification : kLimits, length);
    p.ParamsValid = 1;
    device.GetDeviceParams(&p);
    EXPECT_EQ(device.GetLastError(), error) << length;
    EXPECT_EQ(p.ParamsValid, 0) << length;
    EXPECT_EQ(device.GetDeviceParam(ParamSampleRate), 20000.0f) << length;
    device.SetDeviceParam(ParamVbias, 1e6f);  // to the limit known before
    EXPECT_EQ(device.GetDeviceParam(ParamVbias), 90.0f) << length;
  }
}

// What does not arrive stays as it was, in the device's record and in the caller's, the limits included.
TEST_F(Params, ACutRecordKeepsWhatDidNotArrive) {
  Bytes other = kIdentification, otherLimits = kLimits;
  other[kAck.size() + 8] = 'W';  // "Wench 1"
  std::fill(other.end() - 29, other.end(), uint8_t{1});
  std::fill(otherLimits.end() - 22, otherLimits.end(), uint8_t{2});
  const ZRVDeviceParams& own = StateOf(device).params;
  // The baud rate arrives, the sample rate does not.
  port->Answer(0xE0, Head(other, other.size() - 24));
  port->Answer(0xE4, {});
  p.SampleRate = 77;
  p.XOffset = 0.5f;
  device.GetDeviceParams(&p);
  EXPECT_EQ(std::tuple(p.DeviceName[0], p.USARTBaudRate, p.SampleRate, p.XOffset, p.DataMode),
            std::tuple('W', 0x010101u, 77u, 0.5f, DataModeBuffer));
  EXPECT_EQ(std::tuple(own.DeviceName[0], own.USARTBaudRate, own.SampleRate), std::tuple('W', 0x010101u, 20000u));
  // The third limit does not arrive whole.
  port->Answer(0xE0, kIdentification);
  port->Answer(0xE4, AnswersToAll()[0xE4]);
  port->Answer(0xE1, Head(otherLimits, otherLimits.size() - 14));
  p.LimitWord3 = 78;
  device.GetDeviceParams(&p);
  EXPECT_EQ(std::tuple(p.SampleRateMax, p.LimitWord3, p.VbiasMax), std::tuple(0x020202u, 78u, 0u));
  EXPECT_EQ(std::tuple(own.SampleRateMax, own.LimitWord3, own.VbiasMax), std::tuple(0x020202u, 1u, 90u));
  EXPECT_EQ(std::tuple(device.GetLastError(), p.ParamsValid, own.ParamsValid), std::tuple(ErrorDeviceResponse, 0, 0));
}

TEST_F(Params, WithoutAPortOnlyTheLimitsAreGiven) {
  p.ParamsValid = 1;
  p.SampleRate = 77;
  ZRVDevice().GetDeviceParams(&p);
  EXPECT_EQ(std::tuple(p.ParamsValid, p.SampleRate, p.SampleRateMin, p.SampleBufferCapacity, p.LimitByte10, p.VbiasMax),
            std::tuple(0, 77, 200, 25000, 140, 100));
}

TEST_F(Params, ARecordSendsWhatChangedAndKeepsTheWorstError) {
  device.GetDeviceParams(&p);
  EXPECT_EQ(SentRecord(), "");
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  p.SampleRate = 1000;
  p.Vbias = 1e9f;               // not given
  p.BufferOffset = 1000000000;  // not given
  p.DeviceAxes = AxesSwap;
  p.DigitalOutputEnable = 2;  // refused
  p.XOffset = 0.25f;
  p.YOffset = 1e9f;  // not given: Y stays
  p.SyncMode = static_cast<ZRVSync>(1000000000);
  EXPECT_EQ(SentRecord(), "B5 B0 2B E8 09 E8 03 00 0A | B5 B0 2B BF 0A 00 A0 00 80 0A | B5 B0 2B E7 07 04 0A");
  EXPECT_EQ(device.GetLastError(), ErrorInvalidValue);
  device.GetDeviceParams(&p);
  p.XOffset = 0.5f;
  p.YOffset = -3;  // held in -1
  EXPECT_EQ(SentRecord(), "B5 B0 2B BF 0A 00 C0 01 00 0A");
}

TEST_F(Params, ReadOnlyFields) {
  const std::pair<void (*)(ZRVDeviceParams&), ZRVError> kCases[] = {
      {[](ZRVDeviceParams& r) { r.FirmwareName[0] = 'x'; }, ErrorReadOnlyParam},
      {[](ZRVDeviceParams& r) { r.FirmwareName[0] = '\0'; }, ErrorNone},
      {[](ZRVDeviceParams& r) { r.CommType[0] = 'x'; }, ErrorReadOnlyParam},
      {[](ZRVDeviceParams& r) { r.BluetoothMAC[0] = 'x'; }, ErrorReadOnlyParam},
      {[](ZRVDeviceParams& r) { r.DeviceErrorRegister = 7; }, ErrorReadOnlyParam},
      {[](ZRVDeviceParams& r) { r.DeviceState = 7; }, ErrorReadOnlyParam},
      {[](ZRVDeviceParams& r) { r.DeviceState = 1000000000; }, ErrorNone},  // not given
      {[](ZRVDeviceParams& r) { r.HardwareFilterOn = 0; }, ErrorReadOnlyParam},
      {[](ZRVDeviceParams& r) { r.VmaxMEMSDriver = 99; }, ErrorReadOnlyParam},
  };
  for (size_t i = 0; i < std::size(kCases); ++i) {
    device.GetDeviceParams(&p);
    kCases[i].first(p);
    EXPECT_EQ(SentRecord(), "") << i;
    EXPECT_EQ(device.GetLastError(), kCases[i].second) << i;
  }
}

TEST_F(Params, Names) {
  constexpr const char* kAccess = "5c0e1b7a9f3d2e84c6a1b0f97d3e5a21";
  const std::string reread = " | B5 B0 2B E0 06 0A | B5 B0 2B E4 06 0A | B5 B0 2B E1 06 0A";
  const auto named = [&](const char* name) { return Sent([&] { device.SetDeviceName(name); }); };
  const auto defaultNamed = [&](const char* name, const char* access) {
    return Sent([&] { device.SetDefaultDeviceName(name, access); });
  };
  EXPECT_EQ(named("Bench 1"), "");  // its name already
  EXPECT_EQ(named("Lab"), "B5 B0 2B BA 09 4C 61 62 0A" + reread);
  EXPECT_EQ(named(std::string(31, 'a').c_str()).substr(0, 14), "B5 B0 2B BA 25");
  EXPECT_EQ(defaultNamed("Lab", kAccess), "B5 B0 2B BD 09 4C 61 62 0A" + reread);
  EXPECT_EQ(defaultNamed("Lab", "5C0E1B7A9F3D2E84C6A1B0F97D3E5A21"), "");
  for (const char* bad : {static_cast<const char*>(nullptr), "12345678901234567890123456789012"}) {
    EXPECT_EQ(named(bad) + defaultNamed(bad, kAccess), "");
    EXPECT_EQ(device.GetLastError(), ErrorInvalidValue);
  }
}

// The scripted controller goes on reporting its first name, as one that shortens names would.
TEST_F(Params, ANameSetThroughARecordIsNotSentAgainAlsoWhenRefused) {
  device.GetDeviceParams(&p);
  std::strcpy(p.DeviceName, "Lab");
  EXPECT_EQ(SentRecord().substr(0, 26), "B5 B0 2B BA 09 4C 61 62 0A");
  EXPECT_EQ(SentRecord(), "");
  std::strcpy(p.DeviceName, "Bad");
  port->Answer(0xBA, {0xB5, 0xB0, 0x0B});
  EXPECT_EQ(SentRecord(), "B5 B0 2B BA 09 42 61 64 0A | 0A | 0A | 0A");
  EXPECT_EQ(device.GetLastError(), ErrorBadAcknowledge);
  EXPECT_EQ(SentRecord(), "");
}

TEST_F(Params, HardwareFilterDelay) {  // 20000 samples/s, 2000 Hz: 2000000 / 316000 = 6
  EXPECT_EQ(device.CalcHardwareFilterDelay(100), 6u);
  EXPECT_EQ(device.CalcHardwareFilterDelay(5), 4u);
  SetState(0);
  EXPECT_EQ(device.CalcHardwareFilterDelay(100), 0u);
}

}  // namespace
}  // namespace zrv::testing
