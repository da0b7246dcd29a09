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

  Folder folder_;
  Background simulator_{{"simulate", "--port-dir", folder_.Path(), "--name", "Bench 7", "--format", "3", "--picture",
                         folder_.File("drawn.png")}};
};

TEST_F(WithSimulator, IsListedDescribedAndSetUp) {
  const Outcome list = Zrv(At() + "list");
  EXPECT_EQ(list.status, 0);
  EXPECT_NE(list.output.find("ttyUSB0"), std::string::npos) << list.output;
  EXPECT_NE(list.output.find("Bench 7"), std::string::npos) << list.output;

  const Outcome info = Zrv(At() + "info ttyUSB0");
  EXPECT_NE(info.output.find("Bench 7"), std::string::npos) << info.output;
  EXPECT_NE(info.output.find("output format 3"), std::string::npos) << info.output;

  EXPECT_EQ(Zrv(At() + "set ttyUSB0 SampleRate 34567").output, "SampleRate is now 34567 samples/s\n");
  EXPECT_EQ(Zrv(At() + "get ttyUSB0 SampleRate").output, "34567 samples/s\n");
  EXPECT_EQ(Zrv(At() + "set auto DeviceAxes AxesSwap").output, "DeviceAxes is now AxesSwap\n");
  EXPECT_NE(Zrv(At() + "get auto").output.find("AxesSwap"), std::string::npos);
}

TEST_F(WithSimulator, PlaysSoManyTimesAndStops) {
  const Outcome play = Zrv(At() + "play ttyUSB0 rose --samples 1000 --rate 20000 --repeat 4");
  EXPECT_EQ(play.status, 0);
  EXPECT_NE(play.output.find("playing rose: 1000 samples"), std::string::npos) << play.output;
  EXPECT_NE(play.output.find("stopped"), std::string::npos) << play.output;
  EXPECT_EQ(Zrv(At() + "goto ttyUSB0 0.5 -0.25").output, "the mirror holds x 0.5, y -0.25\n");
  EXPECT_EQ(Zrv(At() + "play ttyUSB0 lissajous --seconds 0.3").status, 0);
  EXPECT_EQ(Zrv(At() + "play ttyUSB0 sine --samples 30000").status, 1);  // more than it holds
  const Outcome left = Zrv(At() + "play ttyUSB0 rose --detach");
  EXPECT_NE(left.output.find("zrv stop ttyUSB0"), std::string::npos) << left.output;
  EXPECT_EQ(Zrv(At() + "stop ttyUSB0").status, 0);
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
    EXPECT_NE(Zrv(At() + "info ttyUSB0").output.find("Laser modulation       off"), std::string::npos);
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
  ASSERT_EQ(Zrv(At() + "set ttyUSB0 SampleRate 12345").status, 0);
  ASSERT_EQ(Zrv(At() + "set ttyUSB0 DeviceAxes AxesFlipY").status, 0);
  ASSERT_EQ(Zrv(At() + "save ttyUSB0 " + file).status, 0);
  EXPECT_NE(ReadText(file).find("DeviceAxes = AxesFlipY\n"), std::string::npos) << ReadText(file);
  ASSERT_EQ(Zrv(At() + "set ttyUSB0 SampleRate 20000").status, 0);
  ASSERT_EQ(Zrv(At() + "set ttyUSB0 DeviceAxes AxesNormal").status, 0);
  const Outcome load = Zrv(At() + "load ttyUSB0 " + file);
  EXPECT_EQ(load.status, 0) << load.output;
  EXPECT_EQ(Zrv(At() + "get ttyUSB0 SampleRate").output, "12345 samples/s\n");
  EXPECT_EQ(Zrv(At() + "get ttyUSB0 DeviceAxes").output, "AxesFlipY\n");
  EXPECT_EQ(Zrv(At() + "save ttyUSB0 " + folder_.File("no/such/file")).status, 1);
}

TEST_F(WithSimulator, ReadsItsInputsAndTracking) {
  const Outcome live = Zrv(At() + "analog ttyUSB0 --seconds 0.3 --interval 50");
  EXPECT_EQ(live.status, 0) << live.output;
  EXPECT_EQ(live.output.rfind("time_s,ai0_v,ai1_v,detector\n0.0", 0), 0u) << live.output;
  EXPECT_NE(live.output.find(",0.5"), std::string::npos) << live.output;  // the detector's level
  const std::string plot = folder_.File("inputs.png");
  const Outcome capture = Zrv(At() + "analog ttyUSB0 --capture 500 --plot " + plot);
  EXPECT_EQ(capture.status, 0) << capture.output;
  EXPECT_EQ(std::count(capture.output.begin(), capture.output.end(), '\n'), 502);  // head, samples, note
  EXPECT_GT(CountPixels(Decoded(plot), IsInk), 100);
  const Outcome track = Zrv(At() + "track ttyUSB0 --seconds 0.2 --interval 3600000");  // does not wait for an hour
  EXPECT_EQ(track.status, 0) << track.output;
  EXPECT_EQ(track.output.rfind("time_s,x,y,status,flag\n", 0), 0u) << track.output;
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
