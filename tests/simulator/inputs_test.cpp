// Analog inputs: single readings, captures and the streams of modes 6..9.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

using Shape = AnalogSignal::Shape;
const std::string kMode0 = "B5 B0 2B B5 07 00 0A";

std::string Mode(int mode) { return "B5 B0 2B B5 07 0" + std::to_string(mode) + " 0A"; }

AnalogSignal Dc(double level) { return {Shape::kDc, level, 0, 0, 1}; }

TEST(InputsTest, ReadingsFollowTheirSignals) {
  Host host;
  host.controller.SetAnalogInput(0, Dc(-10));
  host.controller.SetAnalogInput(1, Dc(1));
  host.controller.SetPhotoDetector(Dc(1));
  EXPECT_EQ(host.Say("B5 B0 2B A0 06 0A"), kAck + " 00 00");   // 32768 - 32770, kept at 0
  EXPECT_EQ(host.Say("B5 B0 2B A1 06 0A"), kAck + " CD 8C");   // 32768 + 3277
  EXPECT_EQ(host.Say("B5 B0 2B A6 06 0A"), kAck + " FF 7F");
  host.controller.SetAnalogInput(0, {Shape::kSine, 1, 2, 50, 1});
  host.now = 2.005;  // a quarter period past the 100th
  EXPECT_EQ(host.Say("B5 B0 2B A0 06 0A"), kAck + " 67 A6");  // 3 V: 32768 + 9831
  host.controller.SetAnalogInput(0, {Shape::kNoise, 0, 5, 0, 9});
  double squares = 0;
  for (int i = 0; i < 4000; ++i) {
    host.now += 0.001;
    const Bytes answer = FromHex(host.Say("B5 B0 2B A0 06 0A"));
    const double volts = ((answer[3] | answer[4] << 8) - 32768) / 3277.0;
    ASSERT_LE(std::fabs(volts), 5.001);
    squares += volts * volts;
  }
  EXPECT_NEAR(squares / 4000, 25.0 / 3, 0.5);  // uniform
}

TEST(InputsTest, CaptureLoopsTheMirrorBack) {
  Options options;
  options.hardwareFilter = false;
  options.mirror = {100000, 0.7};  // as good as stiff
  options.analogInputs[0] = {Shape::kMirrorX, 0, 10, 0, 1};
  options.analogInputs[1] = {Shape::kMirrorY, 0, 10, 0, 1};
  Host host(options);
  host.Load("B5 B0 2B B1 09 0A 00 00 0A", "FF FF 00 00 11 00 00 FF FF 22");
  host.Say(kPlayEndlessFrame);
  host.now += 0.00995;  // in sample 99, the second of the block
  host.Say("B5 B0 2B A4 09 02 00 00 0A");
  // 10 V is count 65538, kept at 65535; -10 V is -2, kept at 0. The fifth byte is M.
  EXPECT_EQ(host.Say("B5 B0 2B A5 06 0A"), kAck + " FF FF 00 00 11 00 00 FF FF 22");
}

TEST(InputsTest, ModesSixToEightStreamPairsAtTheSampleRate) {
  for (const int mode : {6, 7, 8}) {
    Host host;
    host.controller.SetAnalogInput(0, Dc(1));
    host.controller.SetAnalogInput(1, Dc(-1));
    EXPECT_EQ(host.Say(Mode(mode)), "");
    EXPECT_NEAR(host.controller.NextEventTime() - host.now, 0.001, 1e-9) << "a batch of 10";
    host.now += 0.00495;
    std::string records;
    for (int i = 0; i < 49; ++i) records += i ? " CD 8C 33 73" : "CD 8C 33 73";
    EXPECT_EQ(host.Hear(), records) << mode;
    EXPECT_EQ(host.Say(kMode0 + " " + kRespondFrame), kAck) << "the stream ends with its mode";
    host.now += 1;
    EXPECT_EQ(host.Hear(), "");
  }
}

TEST(InputsTest, CaptureAndBacklogAreBounded) {
  Options options;
  options.captureCapacity = 1000;
  options.streamBacklog = 1003;
  Host host(options);
  host.Say("B5 B0 2B A4 09 FF FF FF 0A");
  host.controller.Receive(FromHex("B5 B0 2B A5 06 0A"), host.now);
  EXPECT_EQ(host.HearBytes().size(), 3u + 5000);
  host.Say(Mode(6));
  host.now += 100;
  EXPECT_EQ(host.HearBytes().size(), 1000u) << "what nobody reads loses whole records";
}

TEST(InputsTest, SensorBlocksBeginWithTheirMark) {
  Options options;
  options.sensorBlockSamples = 3;
  options.analogInputs[0] = Dc(1);
  Host host(options);
  host.Say(Mode(9));
  host.now += 0.00065;  // six samples
  EXPECT_EQ(host.Hear(), "B5 AA 55 0F CD 8C CD 8C CD 8C B5 AA 55 0F CD 8C CD 8C CD 8C");
  host.now += 0.0001;
  EXPECT_EQ(host.Hear(), "B5 AA 55 0F CD 8C");
}

// What the mirror draws is recorded with its digital value, while playing only and up to the bound.
TEST(InputsTest, DrawnPathIsBoundedAndOrdered) {
  Options options;
  options.pathCapacity = 50;
  Host host(options);
  host.Load("B5 B0 2B B1 09 0A 00 00 0A", "FF FF 00 00 11 00 00 FF FF 00");
  host.now += 1;
  host.Hear();
  EXPECT_TRUE(host.controller.DrawnPath().empty()) << "idle draws nothing";
  host.Say(kPlayEndlessFrame);
  host.now += 0.01;
  host.Say(kStopFrame);
  host.now += 1;
  host.Hear();
  const auto path = host.controller.DrawnPath();
  ASSERT_EQ(path.size(), 50u);
  for (size_t i = 1; i < path.size(); ++i) {
    ASSERT_NEAR(path[i].time - path[i - 1].time, 0.0001, 1e-9);
    ASSERT_NE(path[i].m, path[i - 1].m);
    ASSERT_EQ(path[i].rgb, path[i].m ? 0xFFFFFFu : 0u);
  }
}

TEST(InputsTest, FilterIsBypassedInModesSevenAndEight) {
  const auto reach = [](int mode) {
    Options options;
    options.mirror = {20000, 0.7};
    Host host(options);
    host.Say(Mode(mode));
    host.Load("B5 B0 2B B1 09 05 00 00 0A", "FF FF FF FF 01");
    host.Say(kPlayEndlessFrame);
    host.now += 0.001;  // a fifth of the 200 Hz filter's period
    host.Hear();
    return host.controller.Mirror().x;
  };
  EXPECT_LT(reach(6), 0.6f);
  EXPECT_GT(reach(7), 0.99f);
  EXPECT_GT(reach(8), 0.99f);
}

}  // namespace
}  // namespace zrv::sim
