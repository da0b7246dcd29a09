// The flat C interface: what each function forwards to, what the library exports, the example programs.
#include "ZRVFlatInterface.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <stdexcept>

#include "ZRVDataGenerator.h"
#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

class FlatInterface : public ::testing::Test {
 protected:
  FlatInterface() : device(ZRVCreateDevice()), port(new ScriptedTransport) {
    ZRVConnectDeviceSocket(device, port);
    port->TakeWrites();
  }
  ~FlatInterface() override { ZRVDeleteDevice(device); }

  ZRVDevice* device;
  ScriptedTransport* port;
};

TEST_F(FlatInterface, EachFunctionReachesItsMember) {
  float x[2] = {0, 1}, y[2] = {-1, 0};
  unsigned char m[2] = {0x80, 1};
  const struct {
    const char* name;
    std::function<void()> call;
    std::string wire;
  } kCalls[] = {
      {"reset link", [&] { ZRVSendSerialReset(device); }, kResync},
      {"clear input", [&] { ZRVClearInputBuffer(device); }, ""},
      {"reset", [&] { ZRVResetDevice(device); }, "B5 B0 2B EE 06 0A"},
      {"params", [&] { ZRVGetDeviceParams(device); }, "B5 B0 2B E0 06 0A | B5 B0 2B E4 06 0A | B5 B0 2B E1 06 0A"},
      {"one parameter", [&] { ZRVSetDeviceParam(device, ParamVbias, 80, 0); }, "B5 B0 2B EA 07 50 0A"},
      {"offsets", [&] { ZRVSetDeviceParam(device, ParamOutputOffsets, 1, -1); }, "B5 B0 2B BF 0A FF FF 01 00 0A"},
      {"state", [&] { ZRVGetDeviceParam(device, ParamDeviceState); }, "B5 B0 2B F4 06 0A"},
      {"send", [&] { ZRVSendDataStream(device, x, y, m, 2, 1, false); },
       "B5 B0 2B B1 09 0A 00 00 0A | B5 B0 2B B2 06 0A | FF 7F 00 00 01 FF FF FF 7F 80"},
      {"play counted", [&] { ZRVStartDataStream(device, 3, false); }, "B5 B0 2B F5 07 03 0A"},
      {"play and wait", [&] { ZRVStartDataStream(device, 3, true); }, "B5 B0 2B F3 07 03 0A"},
      {"stop", [&] { ZRVStopDataStream(device); }, "B5 B0 2B F2 06 0A"},
      {"remaining", [&] { ZRVGetSamplesRemaining(device); }, "B5 B0 2B E2 06 0A"},
      {"running", [&] { EXPECT_FALSE(ZRVIsDeviceRunning(device)); }, "B5 B0 2B F4 06 0A"},
      {"tracking", [&] { EXPECT_FALSE(ZRVIsTrackingSupported(device)); }, "B5 B0 2B F4 06 0A"},
      {"analog", [&] { EXPECT_EQ(ZRVGetAnalogInputValue(device, 1), 0.0f); }, "B5 B0 2B A1 06 0A"},
      {"detector", [&] { EXPECT_GT(ZRVGetPhotoDetectorValue(device), 1.0f); }, "B5 B0 2B A6 06 0A"},
      {"capture", [&] { ZRVGetAnalogInputBuffer(device, x, y, 1); }, "B5 B0 2B A4 09 01 00 00 0A | B5 B0 2B A5 06 0A"},
      {"stream", [&] { EXPECT_EQ(ZRVGetAnalogInputStream(device, x, y, 0), 0u); }, ""},
      {"flash", [&] { ZRVSaveToFlash(device, FlashSettings); }, "B5 B0 2B F8 07 00 0A"},
  };
  for (const auto& c : kCalls) {
    c.call();
    EXPECT_EQ(port->TakeWrites(), c.wire) << c.name;
  }
}

TEST_F(FlatInterface, RecordsTravelByValue) {
  ZRVDeviceParamsStruct params = ZRVGetDeviceParams(device);
  EXPECT_EQ(params.ParamsValid, 1);
  EXPECT_STREQ(params.DeviceName, "Bench 1");
  EXPECT_EQ(params.VbiasMax, 90u);
  port->TakeWrites();
  params.SampleRate = 1000;
  params.SyncMode = SyncMode2;
  ZRVSetDeviceParams(device, params);
  EXPECT_EQ(port->TakeWrites(), "B5 B0 2B E8 09 E8 03 00 0A | B5 B0 2B E5 07 02 0A");
  params.DeviceErrorRegister = 5;
  ZRVSetDeviceParams(device, params);
  EXPECT_EQ(ZRVGetLastError(device), ErrorReadOnlyParam);
}

TEST_F(FlatInterface, OffsetsReadAsX) {
  ZRVSetDeviceParam(device, ParamOutputOffsets, 0.25f, -0.5f);
  EXPECT_EQ(ZRVGetDeviceParam(device, ParamOutputOffsets), 0.25f);
  EXPECT_EQ(ZRVGetDeviceParam(device, static_cast<ZRVParam>(3)), 1e9f);
  EXPECT_EQ(ZRVGetLastError(device), ErrorInvalidParam);
}

TEST_F(FlatInterface, StopValues) {
  port->Answer(0xF2, kAck + Bytes{0x00, 0xC0, 0x00, 0x40, 9, 4, 3, 2, 1});
  ZRVStopDataStream(device);
  EXPECT_EQ(ZRVGetXStop(device), 0.5f);
  EXPECT_EQ(ZRVGetYStop(device), -0.5f);
  EXPECT_EQ(ZRVGetMStop(device), 9);
  EXPECT_EQ(ZRVGetIStop(device), 0x01020304u);
}

TEST_F(FlatInterface, Colours) {
  unsigned int given[2] = {1, 2}, read[3] = {7, 7, 7};
  ZRVSetRGBData(device, 0x123456, 0);
  ZRVSetRGBDataArray(device, given, 2);
  ZRVGetRGBData(device, read, 3);
  EXPECT_EQ(read[1], 2u);
  EXPECT_EQ(read[2], 0x123456u);
}

TEST_F(FlatInterface, AFileIsAppliedAtOnce) {
  const auto path = (std::filesystem::temp_directory_path() / "zrv_flat_params.txt").string();
  std::ofstream(path) << "Vbias = 33\n";
  ZRVLoadDeviceParams(device, path.c_str());
  EXPECT_EQ(port->TakeWrites(), "B5 B0 2B EA 07 21 0A");
  ZRVDevice::SetDefinitionsFile(ZRV_SOURCE_DIR "/include/ZRVDefinitions.h");
  ZRVSaveDeviceParams(device, const_cast<char*>(path.c_str()));
  EXPECT_EQ(port->TakeWrites(), "");
  EXPECT_EQ(device->LoadDeviceParam(path.c_str(), "Vbias", 0), 33.0f);
  std::filesystem::remove(path);

  const std::unique_ptr<char[]> name(ZRVGetEnumString(device, "ZRVSync", 2));
  EXPECT_STREQ(name.get(), "SyncMode2");
  const std::unique_ptr<char[]> none(ZRVGetEnumString(device, nullptr, 2));
  EXPECT_STREQ(none.get(), "");
  ZRVDevice::SetDefinitionsFile(nullptr);
}

TEST_F(FlatInterface, NothingIsThrownThroughIt) {
  struct Throwing : ScriptedTransport {
    bool armed = false;
    int Write(const void* buffer, unsigned count, unsigned* written, unsigned timeoutMs) override {
      if (armed) throw std::runtime_error("a caller's transport");
      return ScriptedTransport::Write(buffer, count, written, timeoutMs);
    }
  };
  auto* transport = new Throwing;
  ZRVConnectDeviceSocket(device, transport);
  transport->armed = true;
  EXPECT_EQ(ZRVGetAnalogInputValue(device, 0), 0.0f);
  EXPECT_EQ(ZRVGetDeviceParams(device).ParamsValid, 0);
  ZRVStopDataStream(device);
  transport->armed = false;
  EXPECT_EQ(ZRVGetDeviceParams(device).ParamsValid, 1);
}

TEST(FlatHandles, DeletingNothingIsQuiet) {
  ZRVDeleteDevice(nullptr);
  ZRVDeleteDataGenerator(nullptr);
  ZRVDevice* device = ZRVCreateDevice();
  EXPECT_FALSE(ZRVIsDeviceConnected(device));
  ZRVDisconnectDevice(device);
  EXPECT_EQ(ZRVGetLastError(device), ErrorNotConnected);
  ZRVConnectDevice(device, nullptr);
  EXPECT_EQ(ZRVGetLastError(device), ErrorInvalidPortName);
  ZRVGoToDevicePosition(device, 2, 0, 0, 0);
  EXPECT_EQ(ZRVGetLastError(device), ErrorInvalidValue);
  ZRVResetDevicePosition(device);
  EXPECT_EQ(ZRVGetLastError(device), ErrorNotConnected);
  EXPECT_EQ(ZRVGetSamplesRemaining(device), 1000000000u);
  ZRVDeleteDevice(device);
}

TEST(FlatGenerator, RasterIsTheMembers) {
  std::vector<float> x(60000), y(60000), expectedX(60000), expectedY(60000);
  std::vector<unsigned char> m(60000), expectedM(60000);
  unsigned int sps = 0, expectedSps = 0;
  ZRVDataGenerator reference;
  const unsigned expected = reference.LinearRasterPattern(expectedX.data(), expectedY.data(), expectedM.data(), 0.5f, 0.75f,
                                                          10, 20, 0.02f, true, false, 3, 0.5f, expectedSps, 1000, 20000);
  ASSERT_GT(expected, 0u);
  ZRVDataGenerator* generator = ZRVCreateDataGenerator();
  for (unsigned int* rate : {&sps, static_cast<unsigned int*>(nullptr)}) {
    EXPECT_EQ(ZRVLinearRasterPattern(generator, x.data(), y.data(), m.data(), 0.5f, 0.75f, 10, 20, 0.02f, true, false, 3,
                                     0.5f, rate, 1000, 20000),
              expected);
  }
  EXPECT_EQ(sps, expectedSps);
  EXPECT_EQ(x, expectedX);
  EXPECT_EQ(y, expectedY);
  EXPECT_EQ(m, expectedM);
  ZRVDeleteDataGenerator(generator);
}

#if !defined(_WIN32)
const std::set<std::string> kExports = {
    "ZRVClearInputBuffer",    "ZRVConnectDevice",       "ZRVConnectDeviceAuto",    "ZRVConnectDeviceSocket",
    "ZRVCreateDataGenerator", "ZRVCreateDevice",        "ZRVDeleteDataGenerator",  "ZRVDeleteDevice",
    "ZRVDisconnectDevice",    "ZRVGetAnalogInputBuffer", "ZRVGetAnalogInputStream", "ZRVGetAnalogInputValue",
    "ZRVGetAvailableDevices", "ZRVGetDeviceParam",      "ZRVGetDeviceParams",      "ZRVGetEnumString",
    "ZRVGetIStop",            "ZRVGetLastError",        "ZRVGetMStop",             "ZRVGetPhotoDetectorValue",
    "ZRVGetRGBData",          "ZRVGetSamplesRemaining", "ZRVGetXStop",             "ZRVGetYStop",
    "ZRVGoToDevicePosition",  "ZRVIsDeviceConnected",   "ZRVIsDeviceRunning",      "ZRVIsTrackingSupported",
    "ZRVLinearRasterPattern", "ZRVLoadDeviceParams",    "ZRVResetDevice",          "ZRVResetDevicePosition",
    "ZRVSaveDeviceParams",    "ZRVSaveToFlash",         "ZRVSendDataStream",       "ZRVSendSerialReset",
    "ZRVSetDeviceParam",      "ZRVSetDeviceParams",     "ZRVSetRGBData",           "ZRVSetRGBDataArray",
    "ZRVStartDataStream",     "ZRVStopDataStream"};

TEST(FlatExports, PlainNamesAndNoOthers) {
  ASSERT_EQ(kExports.size(), 42u);
  FILE* pipe = popen("nm -D --defined-only '" ZRV_LIBRARY_FILE "'", "r");
  ASSERT_NE(pipe, nullptr);
  std::set<std::string> found;
  char line[4096], symbol[4000];
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
    if (std::sscanf(line, "%*s %*s %3999s", symbol) == 1 && symbol[0] != '_') found.insert(symbol);
  }
  ASSERT_EQ(pclose(pipe), 0);
  EXPECT_EQ(found, kExports);
}
#endif

}  // namespace
}  // namespace zrv::testing
