// The flat C interface.
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

// That forwards pass their parameters in order is for tests/python/forwards_test.py; here, what they do besides.
TEST_F(FlatInterface, RecordsTravelByValueAndResultsMayBeUnwanted) {
  ZRVDeviceParamsStruct params = ZRVGetDeviceParams(device);
  EXPECT_EQ(params.Vbias, 70);
  params.Vbias = 50;
  port->TakeWrites();
  ZRVSetDeviceParams(device, params);
  EXPECT_EQ(port->TakeWrites(), "B5 B0 2B EA 07 32 0A");
  port->Answer(0x92, kAck + Bytes(6));
  EXPECT_EQ(ZRVGetTrackParams(device).NormalGain, 63);
  EXPECT_TRUE(ZRVGetTrackStatus(device).Valid);
  ZRVSetDeviceParam(device, ParamOutputOffsets, 1, -1);
  EXPECT_EQ(ZRVGetDeviceParam(device, ParamOutputOffsets), 1);  // the one of x
  EXPECT_EQ(ZRVGetDeviceParamAxis(device, ParamOutputOffsets, 1), -1);
  ZRVDataGenerator* generator = ZRVCreateDataGenerator();
  const auto raster = [&](unsigned int* sps) {
    return ZRVLinearRasterPattern(generator, nullptr, nullptr, nullptr, 1, 1, 10, 20, 0.02f, true, false, 3, 0, sps, 1,
                                  20000);
  };
  unsigned int sps = 0;
  EXPECT_GT(raster(nullptr), 0u);
  EXPECT_EQ(raster(nullptr), raster(&sps));
  EXPECT_GT(sps, 0u);
  ZRVDeleteDataGenerator(generator);
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

}  // namespace
}  // namespace zrv::testing
