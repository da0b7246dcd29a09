// zrv against zrv simulate, each in a process of its own.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

#include "decoded_picture.h"
#include "run_zrv.h"
#include "simulator/pseudo_terminal.h"

namespace zrvtool::test {
namespace {

namespace sim = zrv::sim;

class WithSimulator : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(simulator_.WaitFor("Ctrl-C ends it")); }
  std::string At() const { return "--port-dir " + folder_.Path() + " "; }
  // What zrv prints when it succeeds, in which the words are found.
  std::string Shown(const std::string& command, const std::vector<std::string>& words = {}) const {
    const auto [status, output] = Zrv(At() + command);
    EXPECT_EQ(status, 0) << command << "\n" << output;
    for (const std::string& word : words) EXPECT_NE(output.find(word), std::string::npos) << word << output;
    return output;
  }

  Folder folder_;
  Background simulator_{{"simulate", "--port-dir", folder_.Path(), "--name", "Bench 7", "--format", "3", "--picture",
                         folder_.File("drawn.png")}};
};

TEST_F(WithSimulator, IsListedDescribedAndSetUp) {
  Shown("list", {"ttyUSB0", "Bench 7"});
  Shown("info ttyUSB0", {"Bench 7", "output format 3"});
  EXPECT_EQ(Zrv(At() + "set ttyUSB0 SampleRate 34567").output, "SampleRate is now 34567 samples/s\n");
  EXPECT_EQ(Zrv(At() + "get ttyUSB0 SampleRate").output, "34567 samples/s\n");
  EXPECT_EQ(Zrv(At() + "set auto DeviceAxes AxesSwap").output, "DeviceAxes is now AxesSwap\n");
  Shown("get auto", {"AxesSwap"});
}

// The name has a quote, a backslash and a byte that is no UTF-8.
TEST(Json, IsWholeAndValidWhateverTheNameOfTheController) {
  const Folder folder;
  Background simulator({"simulate", "--port-dir", folder.Path(), "--name", "a\"\\\xFF", "--ai1", "dc:0.5"});
  ASSERT_TRUE(simulator.WaitFor("Ctrl-C ends it"));
  const auto zrv = [&](const std::string& arguments) {
    const Outcome outcome = Zrv("--port-dir " + folder.Path() + " " + arguments + " --json");
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    return nlohmann::json::parse(outcome.output);
  };
  const char kName[] = "a\"\\\xEF\xBF\xBD";
  const auto list = zrv("list");
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0]["port"], "ttyUSB0");
  EXPECT_EQ(list[0]["name"], kName);
  EXPECT_EQ(list[0]["vmax_v"], 140);

  Zrv("--port-dir " + folder.Path() + " set ttyUSB0 DataScale 0.1");
  Zrv("--port-dir " + folder.Path() + " set ttyUSB0 DeviceAxes 5");
  const auto info = zrv("info auto");
  EXPECT_EQ(info["name"], kName);
  EXPECT_EQ(info["settings"]["axes"], "AxesSwapFlipX");
  EXPECT_EQ(info["limits"]["samples_held"], 25000);
  const auto all = zrv("get auto");
  EXPECT_EQ(all["DeviceAxes"], (nlohmann::json{{"value", 5}, {"name", "AxesSwapFlipX"}}));
  EXPECT_EQ(zrv("get auto SampleRate"), (nlohmann::json{{"SampleRate", {{"value", 10000}, {"unit", "samples/s"}}}}));

  const auto live = zrv("analog auto --seconds 0.2 --interval 50");
  EXPECT_GE(live["time_s"].size(), 3u);
  EXPECT_EQ(live["detector"].size(), live["time_s"].size());
  const auto capture = zrv("analog auto --capture 40");
  EXPECT_NEAR(capture["time_s"][39].get<double>(), 39 / 10000.0, 1e-9);
  EXPECT_NEAR(capture["ai1_v"][39].get<double>(), 0.5, 0.001);
  EXPECT_FALSE(capture.contains("detector"));

  WriteText(folder.File("points"), "0 0 1\n0.5 -0.1 0\n");
  const auto file = zrv("info " + folder.File("points"));
  EXPECT_EQ(file["type"], "point file");
  EXPECT_EQ(file["lit"], 1);
  EXPECT_EQ(file["y_min"], -0.1);
  EXPECT_TRUE(file["rate_hz"].is_null());
}

TEST_F(WithSimulator, PlaysSoManyTimesAndStops) {
  Shown("play ttyUSB0 rose --samples 1000 --rate 20000 --repeat 4", {"playing rose: 1000 samples", "stopped"});
  EXPECT_EQ(Zrv(At() + "goto ttyUSB0 0.5 -0.25").output, "the mirror holds x 0.5, y -0.25\n");
  Shown("play ttyUSB0 lissajous --seconds 0.3");
  EXPECT_EQ(Zrv(At() + "play ttyUSB0 sine --samples 30000").status, 1);  // more than it holds
  Shown("play ttyUSB0 rose --detach", {"zrv stop ttyUSB0"});
  Shown("stop ttyUSB0");
  simulator_.Signal(SIGTERM);
  EXPECT_EQ(simulator_.Finish(10).status, 0);
  EXPECT_GT(CountPixels(LoadImage(folder_.File("drawn.png")), IsMirrorInk), 100);
}

TEST_F(WithSimulator, CtrlCStopsTheMirrorAndEndsWell) {
  for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    Background play({"--port-dir", folder_.Path(), "play", "ttyUSB0", "rose"});
    ASSERT_TRUE(play.WaitFor("playing rose"));
    play.Signal(signal);
    const Outcome outcome = play.Finish(10);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_NE(outcome.output.find("stopped"), std::string::npos) << outcome.output;
    Shown("info ttyUSB0", {"Laser modulation       off"});
  }
}

TEST_F(WithSimulator, PulledAwayWhilePlayingSaysSoAtOnce) {
  Background play({"--port-dir", folder_.Path(), "play", "ttyUSB0", "rose"});
  ASSERT_TRUE(play.WaitFor("playing rose"));
  simulator_.Signal(SIGKILL);
  const auto start = std::chrono::steady_clock::now();
  const Outcome outcome = play.Finish(20);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
  EXPECT_EQ(outcome.status, 1) << outcome.output;
  EXPECT_NE(outcome.output.find("lost the controller while playing"), std::string::npos) << outcome.output;
  EXPECT_NE(outcome.output.find("(Error"), std::string::npos) << outcome.output;
  EXPECT_NE(outcome.output.find("Switch the laser off by hand"), std::string::npos) << outcome.output;
}

// An acknowledgement that is lost on its way back: the laser is on, and its record says off.
TEST(Laser, IsOffAfterEveryCommandThatLitItWhateverIsLost) {
  const struct {
    uint8_t code;  // whose acknowledgements are lost
    const char* command;
    const char* said;
  } kCases[] = {
      {0xD9, "play ttyUSB0 rose", "could not switch on the laser modulation"},
      {0xD9, "set ttyUSB0 LaserModulationEnable on", "could not set LaserModulationEnable to on"},
      {0xD9, "stop ttyUSB0", "the laser is off"},  // another program lit it
      {0xD8, "stop ttyUSB0", "the laser is off"},
      {0xD8, "goto ttyUSB0 0.5 0.5", "could not centre the mirror and switch the laser off"},
  };
  const Folder folder;
  sim::PseudoTerminal terminal({}, {.portDirectory = folder.Path(), .portName = "ttyUSB0"});
  for (const auto& c : kCases) {
    terminal.Access([&](sim::Controller& controller) {
      controller.faults().Clear();
      controller.Receive(std::vector<uint8_t>{0xB5, 0xB0, 0x2B, 0xD9, 6, 0x0A}, 0);  // lit, and nobody knows
      controller.faults().OnCommand(c.code, sim::Fault::Drop());
    });
    const Outcome outcome = Zrv("--port-dir " + folder.Path() + " " + c.command);
    EXPECT_NE(outcome.output.find(c.said), std::string::npos) << c.command << "\n" << outcome.output;
    EXPECT_FALSE(terminal.Access([](sim::Controller& controller) { return controller.settings().laserModulation; }))
        << c.command;
  }
}

TEST(Laser, IsOffWhenWhatLightsItIsInterrupted) {
  const Folder folder;
  sim::PseudoTerminal terminal({}, {.portDirectory = folder.Path(), .portName = "ttyUSB0"});
  const auto lit = [&] {
    return terminal.Access([](sim::Controller& controller) { return controller.settings().laserModulation; });
  };
  terminal.Access([](sim::Controller& controller) { controller.faults().OnCommand(0xD9, sim::Fault::Delay(0.3)); });
  for (const auto& words : std::vector<std::vector<std::string>>{{"set", "ttyUSB0", "LaserModulationEnable", "on"},
                                                                 {"play", "ttyUSB0", "rose", "--detach"}}) {
    std::vector<std::string> arguments = {"--port-dir", folder.Path()};
    arguments.insert(arguments.end(), words.begin(), words.end());
    Background command(arguments);
    for (int i = 0; i < 1000 && !lit(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_TRUE(lit()) << words[0];
    command.Signal(SIGINT);
    const Outcome outcome = command.Finish(20);
    EXPECT_EQ(outcome.status, 1) << outcome.output;
    EXPECT_NE(outcome.output.find("interrupted"), std::string::npos) << outcome.output;
    EXPECT_FALSE(lit()) << words[0];
  }
}

TEST_F(WithSimulator, SavesAndLoadsItsParameters) {
  const std::string file = folder_.File("params.ini");
  Shown("set ttyUSB0 SampleRate 12345");
  Shown("set ttyUSB0 DeviceAxes AxesFlipY");
  Shown("save ttyUSB0 " + file);
  EXPECT_NE(ReadText(file).find("DeviceAxes = AxesFlipY\n"), std::string::npos) << ReadText(file);
  Shown("set ttyUSB0 SampleRate 20000");
  Shown("set ttyUSB0 DeviceAxes AxesNormal");
  Shown("load ttyUSB0 " + file);
  EXPECT_EQ(Zrv(At() + "get ttyUSB0 SampleRate").output, "12345 samples/s\n");
  EXPECT_EQ(Zrv(At() + "get ttyUSB0 DeviceAxes").output, "AxesFlipY\n");
  EXPECT_EQ(Zrv(At() + "save ttyUSB0 " + folder_.File("no/such/file")).status, 1);
}

TEST_F(WithSimulator, ReadsItsInputsAndTracking) {
  const std::string live = Shown("analog ttyUSB0 --seconds 0.3 --interval 50", {",0.5"});  // detector
  EXPECT_EQ(live.rfind("time_s,ai0_v,ai1_v,detector\n0.0", 0), 0u) << live;
  const std::string plot = folder_.File("inputs.png");
  const std::string capture = Shown("analog ttyUSB0 --capture 500 --plot " + plot);
  EXPECT_EQ(std::count(capture.begin(), capture.end(), '\n'), 502);  // head, samples, note
  EXPECT_GT(CountPixels(LoadImage(plot), IsInk), 100);
  const std::string track = Shown("track ttyUSB0 --seconds 0.2 --interval 3600000");  // does not wait for an hour
  EXPECT_EQ(track.rfind("time_s,x,y,status,flag\n", 0), 0u) << track;
}

TEST(Demo, ShowsWhatWasSentAndDrawn) {
  for (const char* way : {"", " --memory"}) {
    const Folder folder;
    const Outcome demo = Zrv("demo --output-dir " + folder.Path() + way);
    ASSERT_EQ(demo.status, 0) << demo.output;
    EXPECT_NE(demo.output.find("Played to the end"), std::string::npos) << demo.output;
    EXPECT_NE(demo.output.find("zrv simulate"), std::string::npos) << demo.output;
    const Image sent = LoadImage(folder.File("zrv-demo-sent.png"));
    const Image drawn = LoadImage(folder.File("zrv-demo-drawn.png"));
    const long sentInk = CountPixels(sent, IsInk), drawnInk = CountPixels(drawn, IsMirrorInk);
    EXPECT_GT(sentInk, 5000);
    // The mirror follows: a line of about the same length.
    EXPECT_GT(drawnInk, sentInk / 2);
    EXPECT_LT(drawnInk, sentInk * 2);
  }
}

}  // namespace
}  // namespace zrvtool::test
