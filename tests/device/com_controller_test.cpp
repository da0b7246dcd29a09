// A whole session with controllers on COM ports. ZRV_TEST_CONTROLLERS names the ports, in the order of the
// controllers' output formats: "COM11 COM12 ...".
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "ZRVDevice.h"

namespace zrv::testing {
namespace {

using Clock = std::chrono::steady_clock;

class ComController : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* names = std::getenv("ZRV_TEST_CONTROLLERS");
    if (names == nullptr) GTEST_SKIP() << "no controllers to test with: see docs/windows.md";
    std::istringstream in(names);
    for (std::string name; in >> name;) ports.push_back(name);
    ASSERT_GE(ports.size(), 5u);
  }

  std::vector<std::string> ports;
  ZRVDevice device;
};

TEST_F(ComController, DiscoveryFindsEveryOneAndSkipsSilentPorts) {
  const auto start = Clock::now();
  const std::unique_ptr<ZRVAvailableDevices> list(device.GetAvailableDevices());
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(40));
  ASSERT_EQ(list->NumDevices, ports.size());
  for (size_t i = 0; i < ports.size(); ++i) {
    size_t at = 0;
    while (at < ports.size() && ports[i] != list->CommPortName[at]) ++at;
    ASSERT_LT(at, ports.size()) << ports[i];
    EXPECT_EQ("COM" + std::to_string(list->CommPortNumber[at]), ports[i]);
    EXPECT_EQ(list->DeviceName[at], "Format " + std::to_string(i));
    EXPECT_EQ(list->USARTBaudRate[at], 921600u);
    EXPECT_EQ(list->VmaxMEMSDriver[at], 140.0f);
  }
  EXPECT_FALSE(device.IsDeviceConnected());
}

TEST_F(ComController, NamesOfPorts) {
  const struct {
    std::string name;
    ZRVError error;
  } cases[] = {
      {ports[0], ErrorNone},          {"\\\\.\\" + ports[0], ErrorNone},       {"com11", ErrorInvalidPortName},
      {"COM", ErrorInvalidPortName},  {"COM250", ErrorNoDeviceFound},          {"COMX", ErrorNoDeviceFound},
      {"/dev/x", ErrorInvalidPortName}, {"\\\\.\\COM250", ErrorNoDeviceFound}, {ports[0], ErrorNone},
  };
  for (const auto& c : cases) {
    device.ConnectDevice(c.name.c_str());
    EXPECT_EQ(device.GetLastError(), c.error) << c.name;
    EXPECT_EQ(device.IsDeviceConnected(), c.error == ErrorNone) << c.name;
    device.DisconnectDevice();
  }
}

TEST_F(ComController, EveryFormatArrivesAsSent) {
  const struct {
    unsigned char mask;  // the bits of M that the format carries
    float tolerance;     // one step of its coordinates
  } formats[] = {{0xFF, 1 / 16000.0f}, {0x01, 1 / 1000.0f}, {0x00, 1 / 2000.0f}, {0x00, 1 / 2000.0f}, {0xFF, 1 / 2000.0f}};
  std::vector<float> x(25000, 0.5f), y(25000, -0.25f);
  std::vector<unsigned char> m(25000, 0x81);
  for (size_t format = 0; format < 5; ++format) {
    SCOPED_TRACE(format);
    device.ConnectDevice(ports[format].c_str());
    ASSERT_EQ(device.GetLastError(), ErrorNone);
    for (const unsigned count : {1u, 100u, 25000u}) {
      device.SendDataStream(x.data(), y.data(), m.data(), count, 0, false);
      ASSERT_EQ(device.GetLastError(), ErrorNone) << count;
      device.StartDataStream(-1, false);
      EXPECT_TRUE(device.IsDeviceRunning());
      device.StopDataStream();
      EXPECT_EQ(device.GetLastError(), ErrorNone);
      EXPECT_NEAR(device.GetXStop(), 0.5f, formats[format].tolerance);
      EXPECT_NEAR(device.GetYStop(), -0.25f, formats[format].tolerance);
      EXPECT_EQ(device.GetMStop() & formats[format].mask, 0x81 & formats[format].mask);
      EXPECT_LT(device.GetIStop(), count);
    }
    EXPECT_FALSE(device.IsDeviceRunning());
    device.DisconnectDevice();
  }
}

TEST_F(ComController, PlaysACountedNumberOfTimesAndSaysWhenItIsDone) {
  device.ConnectDevice(ports[0].c_str());
  device.SetDeviceParam(ParamSampleRate, 10000);
  std::vector<float> x(1000), y(1000);
  std::vector<unsigned char> m(1000);
  device.SendDataStream(x.data(), y.data(), m.data(), 1000, 0, false);
  const auto start = Clock::now();
  device.StartDataStream(3, true);  // 300 ms
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(290));
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(1500));
  EXPECT_EQ(device.GetSamplesRemaining(), 0u);
}

TEST_F(ComController, ReadsAnalogInputs) {
  device.ConnectDevice(ports[0].c_str());
  EXPECT_NEAR(device.GetAnalogInputValue(0), 0.0f, 0.01f);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
}

}  // namespace
}  // namespace zrv::testing
