// The whole way through a serial port: discovery in a port directory, connecting, and the example programs, with the
// simulated controller on a pseudo-terminal.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
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

  // What a program prints; empty when it fails.
  static std::string Run(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    std::string output;
    char part[256];
    while (std::fgets(part, sizeof part, pipe) != nullptr) output += part;
    const int status = pclose(pipe);
    EXPECT_EQ(status, 0) << command << "\n" << output;
    return status == 0 ? output : "";
  }

  static bool Has(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

  // The circle was drawn for two seconds: 20 turns of 2000 samples, radius 0.5 about the centre.
  static void ExpectCircle(sim::PseudoTerminal& controller) {
    const auto path = controller.Access([](sim::Controller& c) { return c.DrawnPath(); });
    size_t drawn = 0;
    for (const auto& point : path) drawn += point.m == 255 ? 1 : 0;
    EXPECT_GE(drawn, 40000u);
    const auto block = controller.Access([](sim::Controller& c) { return c.Block(); });
    ASSERT_EQ(block.size(), 2000u);
    for (const auto& sample : block) EXPECT_NEAR(std::hypot(sample.x, sample.y), 0.5f, 1e-3f);
    EXPECT_FALSE(controller.Access([](sim::Controller& c) { return c.IsPlaying(); }));
  }

  std::string directory;
  std::vector<std::unique_ptr<sim::PseudoTerminal>> controllers;
};

TEST_F(SerialPort, ControllersAreFoundAndConnected) {
  Plug("Left");
  Plug("Right", "ttyACM3");
  ZRVDevice device;
  ZRVAvailableDevices list;
  device.GetAvailableDevices(&list);
  ASSERT_EQ(list.NumDevices, 2u);
  EXPECT_STREQ(list.DeviceName[0], "Left");
  EXPECT_STREQ(list.CommPortName[0], "ttyUSB0");
  EXPECT_STREQ(list.DeviceName[1], "Right");
  EXPECT_STREQ(list.CommPortName[1], "ttyACM3");
  EXPECT_EQ(list.CommPortNumber[1], 3u);

  device.ConnectDevice("ttyACM3");
  ASSERT_EQ(device.GetLastError(), ErrorNone);
  device.SetDeviceParam(ParamVbias, 42);
  EXPECT_EQ(controllers[1]->Access([](sim::Controller& c) { return c.settings().vbias; }), 42);
  device.ConnectDevice();
  ASSERT_EQ(device.GetLastError(), ErrorNone);
  device.SetDeviceParam(ParamVbias, 43);
  EXPECT_EQ(controllers[0]->Access([](sim::Controller& c) { return c.settings().vbias; }), 43);
  EXPECT_EQ(controllers[1]->Access([](sim::Controller& c) { return c.settings().vbias; }), 42);
}

TEST_F(SerialPort, UnpluggingEndsEveryCallAtOnce) {
  sim::PseudoTerminal& controller = Plug("Loose");
  ZRVDevice device;
  device.ConnectDevice("ttyUSB0");
  ASSERT_EQ(device.GetLastError(), ErrorNone);
  controller.CutLink();
  device.GetDeviceState();
  EXPECT_NE(device.GetLastError(), ErrorNone);
  device.SendSerialReset();
  EXPECT_NE(device.GetLastError(), ErrorNone);
  device.DisconnectDevice();
  EXPECT_FALSE(device.IsDeviceConnected());
  device.ConnectDevice((directory + "/ttyUSB0").c_str());
  EXPECT_EQ(device.GetLastError(), ErrorNoDeviceFound);
}

TEST_F(SerialPort, AStreamAndALongCapturePassThePort) {
  Plug("Sensor");
  ZRVDevice device;
  device.ConnectDevice("ttyUSB0");
  ASSERT_EQ(device.GetLastError(), ErrorNone);
  std::vector<float> ai0(150000, 99.0f), ai1(150000, 99.0f);
  device.GetAnalogInputBuffer(ai0.data(), ai1.data(), 150000);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_EQ(ai0[149999], 0.0f);
  EXPECT_EQ(ai1[149999], 0.0f);
  device.SetDeviceParam(ParamDataMode, DataModeAnalogVolts);
  EXPECT_EQ(device.GetAnalogInputStream(ai0.data(), ai1.data(), 2000), 2000u);
  device.SetDeviceParam(ParamDataMode, DataModeBuffer);
  EXPECT_TRUE(device.IsDeviceResponding());
}

TEST_F(SerialPort, TheCExampleRunsOnAGivenPort) {
  sim::PseudoTerminal& controller = Plug("Bench 3");
  const std::string output = Run("'" ZRV_PLAY_CIRCLE "' " + controller.Port());
  EXPECT_TRUE(Has(output, "connected to Bench 3, 20000 samples per second")) << output;
  EXPECT_TRUE(Has(output, "playing: yes\nstopped at (")) << output;
  ExpectCircle(controller);
}

TEST_F(SerialPort, TheCExampleFindsAControllerByItself) {
  sim::PseudoTerminal& controller = Plug("Bench 4");
  char name[] = "play_circle";
  char* arguments[] = {name, nullptr};
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(PlayCircleMain(1, arguments), 0);
  const std::string output = ::testing::internal::GetCapturedStdout();
  EXPECT_TRUE(Has(output, "1 controller(s) found\n  ttyUSB0  Bench 4, firmware ZRVSIM 10.7")) << output;
  ExpectCircle(controller);
}

#if defined(ZRV_PYTHON)
TEST_F(SerialPort, ThePythonExampleRuns) {
  sim::PseudoTerminal& controller = Plug("Bench 5");
  const std::string output = Run("'" ZRV_PYTHON "' -B '" ZRV_SOURCE_DIR "/examples/play_circle.py' --library '" ZRV_LIBRARY_FILE
                                 "' " + controller.Port());
  EXPECT_TRUE(Has(output, "connected to Bench 5, 20000 samples per second")) << output;
  EXPECT_TRUE(Has(output, "playing: yes\nstopped at (")) << output;
  ExpectCircle(controller);
}
#endif

}  // namespace
}  // namespace zrv::testing
