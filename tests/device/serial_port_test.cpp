// The whole way through a serial port: discovery in a port directory, connecting, and the C example, with the
// simulated controller on a pseudo-terminal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "ZRVDevice.h"
#include "simulator/pseudo_terminal.h"

extern "C" int PlayCircleMain(int argc, char** argv);  // main of examples/play_circle.c

namespace zrv::testing {
namespace {

class SerialPort : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = (std::filesystem::temp_directory_path() / "zrv-ports-XXXXXX").string();
    directory = mkdtemp(name.data());
    ZRVSerialIO::SetPortDirectory(directory.c_str());
  }
  void TearDown() override {
    ZRVSerialIO::SetPortDirectory("/dev");
    controllers.clear();
    std::filesystem::remove_all(directory);
  }

  sim::PseudoTerminal& Plug(const std::string& name, const std::string& portName = "") {
    sim::Options options;
    options.deviceName = name;
    options.factory.sampleRate = 20000;
    controllers.push_back(std::make_unique<sim::PseudoTerminal>(options, sim::PortOptions{directory, portName, 0}));
    return *controllers.back();
  }

  // The circle was drawn for two seconds: 20 turns of 2000 samples, radius 0.5 about the centre.
  static void ExpectCircle(sim::PseudoTerminal& controller, std::vector<std::string> arguments, const char* said) {
    char* argv[] = {arguments[0].data(), arguments.size() > 1 ? arguments[1].data() : nullptr, nullptr};
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(PlayCircleMain(static_cast<int>(arguments.size()), argv), 0);
    const std::string output = ::testing::internal::GetCapturedStdout();
    EXPECT_NE(output.find(said), std::string::npos) << output;
    EXPECT_NE(output.find("playing: yes\nstopped at ("), std::string::npos) << output;
    const auto path = controller.Access([](sim::Controller& c) { return c.DrawnPath(); });
    EXPECT_GE(std::count_if(path.begin(), path.end(), [](const auto& point) { return point.m == 255; }), 40000);
    const auto block = controller.Access([](sim::Controller& c) { return c.Block(); });
    ASSERT_EQ(block.size(), 2000u);
    for (const auto& sample : block) EXPECT_NEAR(std::hypot(sample.x, sample.y), 0.5f, 1e-3f);
    EXPECT_FALSE(controller.Access([](sim::Controller& c) { return c.IsPlaying(); }));
  }
  static int Bias(sim::PseudoTerminal& controller) {
    return controller.Access([](sim::Controller& c) { return c.settings().vbias; });
  }

  std::string directory;
  std::vector<std::unique_ptr<sim::PseudoTerminal>> controllers;
};

TEST_F(SerialPort, ControllersAreFoundAndConnected) {
  sim::PseudoTerminal& left = Plug("Left");
  sim::PseudoTerminal& right = Plug("Right", "ttyACM3");
  ZRVDevice device;
  ZRVAvailableDevices list;
  device.GetAvailableDevices(&list);
  ASSERT_EQ(list.NumDevices, 2u);
  const std::string texts[] = {list.DeviceName[0], list.CommPortName[0], list.DeviceName[1], list.CommPortName[1]};
  EXPECT_THAT(texts, ::testing::ElementsAre("Left", "ttyUSB0", "Right", "ttyACM3"));
  EXPECT_EQ(list.CommPortNumber[1], 3u);
  device.ConnectDevice("ttyACM3");
  device.SetDeviceParam(ParamVbias, 42);
  device.ConnectDevice();  // the first one
  device.SetDeviceParam(ParamVbias, 43);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_EQ(std::pair(Bias(left), Bias(right)), std::pair(43, 42));
  left.CutLink();
  device.GetDeviceState();
  EXPECT_NE(device.GetLastError(), ErrorNone);
}

TEST_F(SerialPort, TheCExampleRunsOnAGivenPortAndFindsAControllerByItself) {
  ExpectCircle(Plug("Bench 3"), {"play_circle", "ttyUSB0"}, "connected to Bench 3, 20000 samples per second");
  controllers.clear();
  ExpectCircle(Plug("Bench 4"), {"play_circle"}, "1 controller(s) found\n  ttyUSB0  Bench 4, firmware ZRVSIM 10.7");
}

}  // namespace
}  // namespace zrv::testing
