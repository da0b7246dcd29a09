// A whole session with controllers on COM ports. ZRV_TEST_CONTROLLERS names the ports, in the order of the
// controllers' output formats: "COM11 COM12 ...".
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "ZRVDevice.h"

namespace zrv::testing {
namespace {

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
  ZRVAvailableDevices list;
  device.GetAvailableDevices(&list);
  std::map<std::string, std::string> expected, found;
  for (size_t i = 0; i < ports.size(); ++i) expected[ports[i]] = "Format " + std::to_string(i);
  for (unsigned i = 0; i < list.NumDevices; ++i) {
    found[list.CommPortName[i]] = list.DeviceName[i];
    EXPECT_EQ("COM" + std::to_string(list.CommPortNumber[i]), list.CommPortName[i]);
  }
  EXPECT_EQ(found, expected);
  EXPECT_FALSE(device.IsDeviceConnected());
}

TEST_F(ComController, BlocksOfEveryFormatArriveAndPlay) {
  std::vector<float> x(25000, 0.5f), y(25000, -0.25f);
  std::vector<unsigned char> m(25000, 0x81);
  for (size_t format = 0; format < 5; ++format) {
    SCOPED_TRACE(format);
    device.ConnectDevice(format == 0 ? ("\\\\.\\" + ports[0]).c_str() : ports[format].c_str());
    ASSERT_EQ(device.GetLastError(), ErrorNone);
    for (const unsigned count : {1u, 25000u}) {
      device.SendDataStream(x.data(), y.data(), m.data(), count, 0, false);
      ASSERT_EQ(device.GetLastError(), ErrorNone) << count;
      device.StartDataStream(-1, false);
      EXPECT_TRUE(device.IsDeviceRunning());
      device.StopDataStream();
      EXPECT_NEAR(device.GetXStop(), 0.5f, 1e-3f);
      EXPECT_NEAR(device.GetYStop(), -0.25f, 1e-3f);
    }
    device.SetDeviceParam(ParamSampleRate, 100000);
    device.StartDataStream(1, true);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
    EXPECT_NEAR(device.GetAnalogInputValue(0), 0.0f, 0.01f);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
  }
}

}  // namespace
}  // namespace zrv::testing
