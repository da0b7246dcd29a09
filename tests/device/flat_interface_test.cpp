// The flat C interface: what each function forwards to, and what the library exports.
#include "ZRVFlatInterface.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <set>
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
  FlatInterface() : device(ZRVCreateDevice()), port(new ThrowingTransport) { ZRVConnectDeviceSocket(device, port); }
  ~FlatInterface() override { ZRVDeleteDevice(device); }

  ZRVDevice* device;
  ThrowingTransport* port;
};

TEST_F(FlatInterface, EachFunctionReachesItsMember) {
  float x[2] = {0, 1}, y[2] = {-1, 0};
  unsigned char m[2] = {0x80, 1};
  int integrals[2];
  ZRVDeviceParamsStruct params;
  const struct {
    const char* name;
    std::function<void()> call;
    std::string wire;
  } kCalls[] = {
      {"reset link", [&] { ZRVSendSerialReset(device); }, kResync},
      {"clear input", [&] { ZRVClearInputBuffer(device); }, ""},
      {"reset", [&] { ZRVResetDevice(device); }, "B5 B0 2B EE 06 0A"},
      {"get params", [&] { params = ZRVGetDeviceParams(device); EXPECT_EQ(params.VbiasMax, 90u); },
       "B5 B0 2B E0 06 0A | B5 B0 2B E4 06 0A | B5 B0 2B E1 06 0A"},
      {"set params", [&] { params.Vbias = 50; ZRVSetDeviceParams(device, params); }, "B5 B0 2B EA 07 32 0A"},
      {"one parameter", [&] { ZRVSetDeviceParam(device, ParamVbias, 80, 0); }, "B5 B0 2B EA 07 50 0A"},
      {"offsets", [&] { ZRVSetDeviceParam(device, ParamOutputOffsets, 1, -1); }, "B5 B0 2B BF 0A FF FF 01 00 0A"},
      {"offsets read as x", [&] { EXPECT_EQ(ZRVGetDeviceParam(device, ParamOutputOffsets), 1); }, ""},
      {"state", [&] { ZRVGetDeviceParam(device, ParamDeviceState); }, "B5 B0 2B F4 06 0A"},
      {"send", [&] { ZRVSendDataStream(device, x, y, m, 2, 1, false); },
       "B5 B0 2B B1 09 0A 00 00 0A | B5 B0 2B B2 06 0A | FF 7F 00 00 01 FF FF FF 7F 80"},
      {"play counted", [&] { ZRVStartDataStream(device, 3, false); }, "B5 B0 2B F5 07 03 0A"},
      {"play and wait", [&] { ZRVStartDataStream(device, 3, true); }, "B5 B0 2B F3 07 03 0A"},
      {"stop", [&] { ZRVStopDataStream(device); }, "B5 B0 2B F2 06 0A"},
      {"x, y",
       [&] { EXPECT_EQ(std::tuple(ZRVGetXStop(device), ZRVGetYStop(device)), std::tuple(0.5f, -0.5f)); }, ""},
      {"m, i",
       [&] { EXPECT_EQ(std::tuple(ZRVGetMStop(device), ZRVGetIStop(device)), std::tuple(9, 0x01020304)); }, ""},
      {"remaining", [&] { EXPECT_EQ(ZRVGetSamplesRemaining(device), 0x030201u); }, "B5 B0 2B E2 06 0A"},
      {"running", [&] { EXPECT_FALSE(ZRVIsDeviceRunning(device)); }, "B5 B0 2B F4 06 0A"},
      {"tracking", [&] { EXPECT_FALSE(ZRVIsTrackingSupported(device)); }, "B5 B0 2B F4 06 0A"},
      {"goto", [&] { ZRVGoToDevicePosition(device, 2, 0, 0, 0); }, ""},
      {"goto, refused", [&] { EXPECT_EQ(ZRVGetLastError(device), ErrorInvalidValue); }, ""},
      {"analog", [&] { EXPECT_EQ(ZRVGetAnalogInputValue(device, 1), 0.0f); }, "B5 B0 2B A1 06 0A"},
      {"detector", [&] { EXPECT_GT(ZRVGetPhotoDetectorValue(device), 1.0f); }, "B5 B0 2B A6 06 0A"},
      {"capture", [&] { ZRVGetAnalogInputBuffer(device, x, y, 1); }, "B5 B0 2B A4 09 01 00 00 0A | B5 B0 2B A5 06 0A"},
      {"stream", [&] { EXPECT_EQ(ZRVGetAnalogInputStream(device, x, y, 0), 0u); }, ""},
      {"offsets read as y", [&] { EXPECT_EQ(ZRVGetDeviceParamAxis(device, ParamOutputOffsets, 1), -1); }, ""},
      {"responding", [&] { EXPECT_TRUE(ZRVIsDeviceResponding(device)); }, "B5 B0 2B E3 06 0A"},
      {"rename", [&] { ZRVSetDeviceName(device, "Ab"); },
       "B5 B0 2B BA 08 41 62 0A | B5 B0 2B E0 06 0A | B5 B0 2B E4 06 0A | B5 B0 2B E1 06 0A"},
      {"boost", [&] { ZRVSetLaserBoostEnable(device, 1); }, "B5 B0 2B DB 06 0A"},
      {"no sensor module", [&] { EXPECT_EQ(ZRVGetOrBEX1Stream(device, x, 1, 1), 0u); }, ""},
      {"track integrals", [&] { ZRVGetTrackIntegrals(device, &integrals[0], &integrals[1]); }, "B5 B0 2B 91 06 0A"},
      {"flash", [&] { ZRVSaveToFlash(device, FlashSettingsAndData); }, "B5 B0 2B F8 07 01 0A"},
  };
  port->Answer(0xF2, kAck + Bytes{0x00, 0xC0, 0x00, 0x40, 9, 4, 3, 2, 1});
  port->Answer(0xE2, kAck + Bytes{0x01, 0x02, 0x03});
  port->TakeWrites();
  for (const auto& c : kCalls) {
    c.call();
    EXPECT_EQ(port->TakeWrites(), c.wire) << c.name;
  }
  port->Answer(0xE2, kAck + Bytes{0x01, 0x02});
  EXPECT_EQ(ZRVGetSamplesRemaining(device), 0u);
  EXPECT_EQ(ZRVGetLastError(device), ErrorDeviceResponse);

  unsigned int given[2] = {1, 2}, read[3] = {7, 7, 7};
  ZRVSetRGBData(device, 0x123456, 0);
  ZRVSetRGBDataArray(device, given, 2);
  ZRVGetRGBData(device, read, 3);
  EXPECT_THAT(read, ::testing::ElementsAre(1, 2, 0x123456));
  ZRVResetDevicePosition(device);
  EXPECT_EQ(port->TakeWrites().substr(20, 29), "B5 B0 2B BF 0A 00 80 00 80 0A");
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
  using Pattern = std::tuple<std::vector<float>, std::vector<float>, std::vector<unsigned char>>;
  const auto empty = [] { return Pattern(std::vector<float>(60000), std::vector<float>(60000), 60000); };
  auto [x, y, m] = empty();
  auto [expectedX, expectedY, expectedM] = empty();
  unsigned int sps = 0, expectedSps = 0;
  const unsigned expected =
      ZRVDataGenerator().LinearRasterPattern(expectedX.data(), expectedY.data(), expectedM.data(), 0.5f, 0.75f, 10, 20,
                                             0.02f, true, false, 3, 0.5f, expectedSps, 1000, 20000);
  ASSERT_GT(expected, 0u);
  ZRVDataGenerator* generator = ZRVCreateDataGenerator();
  for (unsigned int* rate : {&sps, static_cast<unsigned int*>(nullptr)}) {
    EXPECT_EQ(ZRVLinearRasterPattern(generator, x.data(), y.data(), m.data(), 0.5f, 0.75f, 10, 20, 0.02f, true, false,
                                     3, 0.5f, rate, 1000, 20000),
              expected);
  }
  EXPECT_EQ(sps, expectedSps);
  EXPECT_TRUE(x == expectedX && y == expectedY && m == expectedM);
  ZRVDeleteDataGenerator(generator);
}

#if !defined(_WIN32)
// The functions that the header declares, in any library that a C program links.
TEST(FlatExports, PlainNamesAndNoOthers) {
  std::set<std::string> declared, found;
  std::ifstream header(ZRV_SOURCE_DIR "/include/ZRVFlatInterface.h");
  std::smatch match;
  for (std::string line; std::getline(header, line);) {
    if (std::regex_search(line, match, std::regex("^ZRV_API .*[ *](ZRV\\w+)\\("))) declared.insert(match[1]);
  }
  EXPECT_EQ(declared.size(), 167u);
  FILE* pipe = popen("nm -D --defined-only '" ZRV_LIBRARY_FILE "'", "r");
  ASSERT_NE(pipe, nullptr);
  char line[4096], symbol[4000];
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
    if (std::sscanf(line, "%*s %*s %3999s", symbol) == 1 && symbol[0] != '_') found.insert(symbol);
  }
  ASSERT_EQ(pclose(pipe), 0);
  EXPECT_EQ(found, declared);
}
#endif

}  // namespace
}  // namespace zrv::testing
