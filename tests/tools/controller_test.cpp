// zrv against zrv simulate, each in a process of its own.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <chrono>

#include "decoded_picture.h"
#include "run_zrv.h"

namespace zrvtool::test {
namespace {

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

TEST_F(WithSimulator, PlaysSoManyTimesAndStops) {
  Shown("play ttyUSB0 rose --samples 1000 --rate 20000 --repeat 4", {"playing rose: 1000 samples", "stopped"});
  EXPECT_EQ(Zrv(At() + "goto ttyUSB0 0.5 -0.25").output, "the mirror holds x 0.5, y -0.25\n");
  Shown("play ttyUSB0 lissajous --seconds 0.3");
  EXPECT_EQ(Zrv(At() + "play ttyUSB0 sine --samples 30000").status, 1);  // more than it holds
  Shown("play ttyUSB0 rose --detach", {"zrv stop ttyUSB0"});
  Shown("stop ttyUSB0");
  simulator_.Signal(SIGTERM);
  EXPECT_EQ(simulator_.Finish(10).status, 0);
  EXPECT_GT(CountPixels(Decoded(folder_.File("drawn.png")), IsMirrorInk), 100);
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
  EXPECT_GT(CountPixels(Decoded(plot), IsInk), 100);
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
    const DecodedPicture sent = Decoded(folder.File("zrv-demo-sent.png"));
    const DecodedPicture drawn = Decoded(folder.File("zrv-demo-drawn.png"));
    const long sentInk = CountPixels(sent, IsInk), drawnInk = CountPixels(drawn, IsMirrorInk);
    EXPECT_GT(sentInk, 5000);
    // The mirror follows: a line of about the same length.
    EXPECT_GT(drawnInk, sentInk / 2);
    EXPECT_LT(drawnInk, sentInk * 2);
  }
}

}  // namespace
}  // namespace zrvtool::test
