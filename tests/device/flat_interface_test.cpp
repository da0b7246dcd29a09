// The flat C interface: what each function forwards to.
#include "ZRVFlatInterface.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

#include "ZRVDataGenerator.h"
#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

struct ThrowingTransport : ScriptedTransport {
  bool armed = false;
  int Write(const void* buffer, unsigned count, unsigned* written, unsigned timeoutMs) override {
    if (armed) throw std::runtime_error("a caller's transport");
    return ScriptedTransport::Write(buffer, count, written, timeoutMs);
  }
};

class FlatInterface : public ::testing::Test {
 protected:
  FlatInterface() : device(ZRVCreateDevice()), port(new ThrowingTransport) {
    SkipPauses(*device);
    ZRVConnectDeviceSocket(device, port);
  }
  ~FlatInterface() override { ZRVDeleteDevice(device); }

  ZRVDevice* device;
  ThrowingTransport* port;
};

TEST_F(FlatInterface, EachFunctionReachesItsMember) {
  float x[2] = {0, 1}, y[2] = {-1, 0};
  unsigned char m[2] = {0x80, 1};
  int integrals[2];
  ZRVDeviceParamsStruct params;
  const std::pair<std::function<void()>, std::string> kCalls[] = {
      {[&] { ZRVSendSerialReset(device); }, kResync},
      {[&] { ZRVClearInputBuffer(device); }, ""},
      {[&] { ZRVResetDevice(device); }, "B5 B0 2B EE 06 0A"},
      {[&] { params = ZRVGetDeviceParams(device); }, "B5 B0 2B E0 06 0A | B5 B0 2B E4 06 0A | B5 B0 2B E1 06 0A"},
      {[&] { params.Vbias = 50; ZRVSetDeviceParams(device, params); }, "B5 B0 2B EA 07 32 0A"},
      {[&] { ZRVSetDeviceParam(device, ParamVbias, 80, 0); }, "B5 B0 2B EA 07 50 0A"},
      {[&] { ZRVSetDeviceParam(device, ParamOutputOffsets, 1, -1); }, "B5 B0 2B BF 0A FF FF 01 00 0A"},
      {[&] { EXPECT_EQ(ZRVGetDeviceParam(device, ParamOutputOffsets), 1); }, ""},  // the one of x
      {[&] { ZRVGetDeviceParam(device, ParamDeviceState); }, "B5 B0 2B F4 06 0A"},
      {[&] { ZRVSendDataStream(device, x, y, m, 2, 1, false); },
       "B5 B0 2B B1 09 0A 00 00 0A | B5 B0 2B B2 06 0A | FF 7F 00 00 01 FF FF FF 7F 80"},
      {[&] { ZRVStartDataStream(device, 3, false); }, "B5 B0 2B F5 07 03 0A"},
      {[&] { ZRVStartDataStream(device, 3, true); }, "B5 B0 2B F3 07 03 0A"},
      {[&] { ZRVStopDataStream(device); }, "B5 B0 2B F2 06 0A"},
      {[&] { EXPECT_EQ(std::pair(ZRVGetXStop(device), ZRVGetYStop(device)), std::pair(0.5f, -0.5f)); }, ""},
      {[&] { EXPECT_EQ(std::pair(int{ZRVGetMStop(device)}, ZRVGetIStop(device)), std::pair(9, 0x01020304u)); }, ""},
      {[&] { EXPECT_EQ(ZRVGetSamplesRemaining(device), 0x030201u); }, "B5 B0 2B E2 06 0A"},
      {[&] { EXPECT_FALSE(ZRVIsDeviceRunning(device)); }, "B5 B0 2B F4 06 0A"},
      {[&] { EXPECT_TRUE(ZRVIsTrackingSupported(device)); }, "B5 B0 2B F4 06 0A"},
      {[&] { ZRVGoToDevicePosition(device, 2, 0, 0, 0); }, ""},
      {[&] { EXPECT_EQ(ZRVGetLastError(device), ErrorInvalidValue); }, ""},
      {[&] { EXPECT_EQ(ZRVGetAnalogInputValue(device, 1), 1.0f); }, "B5 B0 2B A1 06 0A"},
      {[&] { EXPECT_GT(ZRVGetPhotoDetectorValue(device), 1.0f); }, "B5 B0 2B A6 06 0A"},
      {[&] { ZRVGetAnalogInputBuffer(device, x, y, 1); }, "B5 B0 2B A4 09 01 00 00 0A | B5 B0 2B A5 06 0A"},
      {[&] { EXPECT_EQ(std::pair(x[0], y[0]), std::pair(0.0f, 1.0f)); }, ""},
      {[&] { EXPECT_EQ(ZRVGetAnalogInputStream(device, x, y, 0), 0u); }, ""},
      {[&] { EXPECT_EQ(ZRVGetDeviceParamAxis(device, ParamOutputOffsets, 1), -1); }, ""},
      {[&] { EXPECT_TRUE(ZRVIsDeviceResponding(device)); }, "B5 B0 2B E3 06 0A"},
      {[&] { ZRVSetDeviceName(device, "Ab"); },
       "B5 B0 2B BA 08 41 62 0A | B5 B0 2B E0 06 0A | B5 B0 2B E4 06 0A | B5 B0 2B E1 06 0A"},
      {[&] { ZRVSetLaserBoostEnable(device, 1); }, "B5 B0 2B DB 06 0A"},
      {[&] { EXPECT_EQ(ZRVGetOrBEX1Stream(device, x, 1, 1), 0u); }, ""},  // no sensor module
      {[&] { ZRVGetTrackIntegrals(device, &integrals[0], &integrals[1]); }, "B5 B0 2B 91 06 0A"},
      {[&] { ZRVSaveToFlash(device, FlashSettingsAndData); }, "B5 B0 2B F8 07 01 0A"},
  };
  port->Answer(0xF2, kAck + FromHex("00 C0 00 40 09 04 03 02 01"));
  port->Answer(0xE2, kAck + FromHex("01 02 03"));
  port->Answer(0xF4, kAck + LE16(0x1000));
  port->Answer(0xA1, kAck + LE16(36045));
  port->Answer(0xA5, kAck + LE16(32768) + LE16(36045) + Bytes{0});
  port->TakeWrites();
  for (size_t i = 0; i < std::size(kCalls); ++i) {
    kCalls[i].first();
    EXPECT_EQ(port->TakeWrites(), kCalls[i].second) << i;
  }

  unsigned int given[2] = {1, 2}, read[3] = {7, 7, 7};
  ZRVSetRGBData(device, 0x123456, 0);
  ZRVSetRGBDataArray(device, given, 2);
  ZRVGetRGBData(device, read, 3);
  EXPECT_THAT(read, ::testing::ElementsAre(1, 2, 0x123456));
  ZRVResetDevicePosition(device);
  EXPECT_EQ(port->TakeWrites().substr(0, 29), "B5 B0 2B BF 0A 00 80 00 80 0A");
}

TEST_F(FlatInterface, AFileIsAppliedAtOnce) {
  const auto path = (std::filesystem::temp_directory_path() / "zrv_flat_params.txt").string();
  std::ofstream(path) << "Vbias = 33\n";
  port->TakeWrites();
  ZRVLoadDeviceParams(device, path.c_str());
  EXPECT_EQ(port->TakeWrites(), "B5 B0 2B EA 07 21 0A");
  ZRVDevice::SetDefinitionsFile(ZRV_SOURCE_DIR "/include/ZRVDefinitions.h");
  ZRVSaveDeviceParams(device, const_cast<char*>(path.c_str()));
  EXPECT_EQ(port->TakeWrites(), "");
  EXPECT_EQ(device->LoadDeviceParam(path.c_str(), "Vbias", 0), 33.0f);
  std::filesystem::remove(path);

  char* name = ZRVGetEnumString(device, "ZRVSync", 2);
  EXPECT_STREQ(name, "SyncMode2");
  ZRVFreeText(name);
  EXPECT_STREQ(std::unique_ptr<char[]>(ZRVGetEnumString(device, nullptr, 2)).get(), "");
  ZRVDevice::SetDefinitionsFile(nullptr);
}

TEST_F(FlatInterface, NothingIsThrownThroughIt) {
  port->armed = true;
  EXPECT_EQ(ZRVGetAnalogInputValue(device, 0), 0.0f);
  EXPECT_EQ(ZRVGetDeviceParams(device).ParamsValid, 0);
  ZRVStopDataStream(device);
  port->armed = false;
  EXPECT_EQ(ZRVGetDeviceParams(device).ParamsValid, 1);
  ZRVDisconnectDevice(device);
  EXPECT_FALSE(ZRVIsDeviceConnected(device));
  ZRVConnectDevice(device, nullptr);
  EXPECT_EQ(ZRVGetLastError(device), ErrorInvalidPortName);
  ZRVDeleteDevice(nullptr);
  ZRVDeleteDataGenerator(nullptr);
}

TEST(FlatGenerator, RasterIsTheMembers) {
  struct Pattern {
    std::vector<float> x = std::vector<float>(60000), y = x;
    std::vector<unsigned char> m = std::vector<unsigned char>(60000);
    unsigned int sps = 0, count = 0;
    bool operator==(const Pattern&) const = default;
  } expected, flat;
  expected.count =
      ZRVDataGenerator().LinearRasterPattern(expected.x.data(), expected.y.data(), expected.m.data(), 0.5f, 0.75f, 10,
                                             20, 0.02f, true, false, 3, 0.5f, expected.sps, 1000, 20000);
  ASSERT_GT(expected.count, 0u);
  ZRVDataGenerator* generator = ZRVCreateDataGenerator();
  for (unsigned int* rate : {static_cast<unsigned int*>(nullptr), &flat.sps}) {
    flat.count = ZRVLinearRasterPattern(generator, flat.x.data(), flat.y.data(), flat.m.data(), 0.5f, 0.75f, 10, 20,
                                        0.02f, true, false, 3, 0.5f, rate, 1000, 20000);
  }
  EXPECT_TRUE(flat == expected);
  ZRVDeleteDataGenerator(generator);
}

}  // namespace
}  // namespace zrv::testing
