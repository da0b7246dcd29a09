// Blocks, the sample clock, stop values and what comes at the end of a play.
#include "simulator/playback.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

struct DecodeCase {
  const char* name;
  uint32_t format;
  const char* bytes;
  Sample sample;
};
const DecodeCase kDecodes[] = {
    {"16 bit", 0, "FF FF 00 00 80", {1, -1, 0x80, 0xFFFFFF}},
    {"16 bit, dark", 0, "34 12 FF FF 00", {0x1234 / 32767.5f - 1, 1, 0, 0}},
    {"12/11 bit", 1, "12 34 57", {0x123 / 2047.5f - 1, (4 * 128 + 0x2B) / 1023.5f - 1, 1, 0xFFFFFF}},
    {"12/11 bit, dark", 1, "00 0F FE", {-1, 1, 0, 0}},
    {"5-6-5 red", 2, "00 0F FF F8 00", {-1, 1, 255, 0xFF0000}},
    {"5-6-5 green and some blue", 2, "FF F0 00 07 F2", {1, -1, 255, 0x00FF94}},
    {"5-6-5 black", 2, "FF FF FF 00 00", {1, 1, 0, 0}},
    {"8-8-8", 3, "12 34 56 12 34 56", {0x123 / 2047.5f - 1, 0x456 / 2047.5f - 1, 255, 0x123456}},
    {"M and 8-8-8", 4, "00 0F FF 00 12 34 56", {-1, 1, 0, 0x123456}},
    {"unknown format", 5, "FF FF FF FF FF", {0, 0, 0, 0}},
};

TEST(SampleBlockTest, EveryFormatIsDecoded) {
  for (const DecodeCase& c : kDecodes) {
    const Bytes bytes = FromHex(c.bytes);
    const auto block = DecodeBlock(c.format, bytes);
    ASSERT_EQ(block.size(), 1u) << c.name;
    EXPECT_FLOAT_EQ(block[0].x, c.sample.x) << c.name;
    EXPECT_FLOAT_EQ(block[0].y, c.sample.y) << c.name;
    EXPECT_EQ(block[0].m, c.sample.m) << c.name;
    EXPECT_EQ(block[0].rgb, c.sample.rgb) << c.name;
    EXPECT_TRUE(DecodeBlock(c.format, std::span(bytes).first(bytes.size() - 1)).empty()) << c.name;
  }
}

// Four samples of 100 us: (1, -1, 1), (0.0, 0.5, 2), (0.25, 0, 3), (-1, 1, 4), on the 32767.5 scale.
const std::string kAnnounceFour = "B5 B0 2B B1 09 14 00 00 0A";
const std::string kFour = "FF FF 00 00 01 FF 7F FF BF 02 FF 9F FF 7F 03 00 00 FF FF 04";

// Stop values are on a scale of 32768: 0x9FFF of 32767.5 is 40959.6 there. A 0 is sent as 0x7FFF, which is
// a tie in single precision, and comes back as exactly 0.
struct PlayCase {
  const char* name;
  std::string start;
  double seconds;  // until the question
  std::string remaining, stopped;
  bool playing;
};
const std::string kThreeRounds = "B5 B0 2B F5 07 03 0A";
const PlayCase kPlays[] = {
    {"just started", kThreeRounds, 0, " 0B 00 00", " FF FF 00 00 01 00 00 00 00", true},
    {"second sample, as soon as it is due", kThreeRounds, 0.0001, " 0A 00 00", " 00 80 00 C0 02 01 00 00 00", true},
    {"third sample", kThreeRounds, 0.00025, " 09 00 00", " 00 A0 00 80 03 02 00 00 00", true},
    {"second round", kThreeRounds, 0.00045, " 07 00 00", " FF FF 00 00 01 00 00 00 00", true},
    {"last sample out", kThreeRounds, 0.00115, " 00 00 00", " 00 00 FF FF 04 03 00 00 00", true},
    {"over: the last sample is held", kThreeRounds, 0.0012, " 00 00 00", " 00 00 FF FF 04 03 00 00 00", false},
    {"endless counts the round", kPlayEndlessFrame, 0.00045, " 03 00 00", " FF FF 00 00 01 00 00 00 00", true},
    {"round 250001", kPlayEndlessFrame, 100.00015, " 02 00 00", " 00 80 00 C0 02 01 00 00 00", true},
};

TEST(PlaybackTest, WhereAPlayIsAndStops) {
  for (const PlayCase& c : kPlays) {
    Host host;
    host.Load(kAnnounceFour, kFour);
    EXPECT_EQ(host.Say(c.start), kAck) << c.name;
    host.now += c.seconds;
    EXPECT_EQ(host.Say(kRemainingFrame), kAck + c.remaining) << c.name;
    EXPECT_EQ(host.Say(kStateFrame), kAck + (c.playing ? " 01 11" : " 00 11")) << c.name;
    EXPECT_EQ(host.Say(kStopFrame), kAck + c.stopped) << c.name;
    EXPECT_FALSE(host.controller.IsPlaying()) << c.name;
  }
}

TEST(PlaybackTest, EndOfPlayIsReportedOnTimeAndOnce) {
  Host host;
  host.Load(kAnnounceFour, kFour);
  EXPECT_EQ(host.Say("B5 B0 2B F3 07 20 0A"), kAck);  // 32 rounds of 400 us
  EXPECT_NEAR(host.controller.NextEventTime(), host.now + 0.0128, 1e-9);
  host.now += 0.01279;
  EXPECT_EQ(host.Hear(), "");
  host.now += 0.00001;
  EXPECT_EQ(host.Hear(), kAck);
  host.now += 10;
  EXPECT_EQ(host.Hear(), "");
  EXPECT_EQ(host.controller.NextEventTime(), Controller::kNever);
  EXPECT_EQ(host.controller.DrawnPath().size(), 128u);
  host.Say("B5 B0 2B F3 07 20 0A");
  host.Say(kStopFrame);
  host.now += 10;
  EXPECT_EQ(host.Hear(), "") << "a stopped play reports no end";
}

TEST(PlaybackTest, ANewBlockTakesOverWithoutAStop) {
  Host host;
  host.Load(kAnnounceFour, kFour);
  host.Say(kPlayEndlessFrame);
  host.now += 0.00025;
  EXPECT_EQ(host.Say("B5 B0 2B B1 09 05 00 00 0A"), kAck);
  EXPECT_EQ(host.Say("B5 B0 2B B2 06 0A"), kAck);
  EXPECT_EQ(host.Say("FF FF FF FF"), "");
  EXPECT_EQ(host.controller.Output().m, 3) << "the old one plays until the new one is whole";
  EXPECT_EQ(host.Say("09 " + kStateFrame), kAck + " " + kAck + " 01 11");
  EXPECT_EQ(host.Say(kStopFrame), kAck + " FF FF FF FF 09 00 00 00 00");
}

TEST(PlaybackTest, ChangingTheRateGoesOnWithTheNextSample) {
  Host host;
  host.Load(kAnnounceFour, kFour);
  host.Say(kPlayEndlessFrame);
  host.now += 0.00015;
  host.Say("B5 B0 2B E8 09 C8 00 00 0A");  // 200 samples/s: 5 ms each
  EXPECT_EQ(host.controller.SampleIndex(), 1u);
  host.now += 0.0049;
  host.Hear();
  EXPECT_EQ(host.controller.SampleIndex(), 1u);
  host.now += 0.0002;
  host.Hear();
  EXPECT_EQ(host.controller.SampleIndex(), 2u);
}

TEST(PlaybackTest, TimeThatRunsBackwardsOrIsNoNumberStandsStill) {
  Host host;
  host.Load(kAnnounceFour, kFour);
  host.Say(kPlayEndlessFrame);
  for (const double time : {-5.0, std::nan(""), static_cast<double>(INFINITY)}) host.controller.Advance(time);
  EXPECT_EQ(host.controller.SampleIndex(), 0u);
  host.controller.Advance(1e12);
  EXPECT_EQ(host.controller.DrawnPath().size(), host.controller.options().pathCapacity);
}

// --- What survives ---

const std::string kSetName = "B5 B0 2B BA 07 41 0A";

TEST(FlashTest, WhatComesBackAfterPowerOff) {
  struct Case {
    const char* name;
    const char* boot;
    const char* save;
    int axes;
    size_t block;
    bool playing;
  };
  const Case kCases[] = {
      {"nothing saved", "B5 B0 2B EF 08 01 00 0A", "", 0, 0, false},
      {"boot with defaults", "B5 B0 2B EF 08 00 00 0A", "B5 B0 2B F8 07 01 0A", 0, 0, false},
      {"settings", "B5 B0 2B EF 08 01 00 0A", "B5 B0 2B F8 07 00 0A", 2, 0, false},
      {"settings and data", "B5 B0 2B EF 08 01 00 0A", "B5 B0 2B F8 07 01 0A", 2, 4, false},
      {"settings and data, and run", "B5 B0 2B EF 08 02 00 0A", "B5 B0 2B F8 07 01 0A", 2, 4, true},
      {"run without data", "B5 B0 2B EF 08 02 00 0A", "B5 B0 2B F8 07 00 0A", 2, 0, false},
  };
  for (const Case& c : kCases) {
    Host host;
    for (const std::string& frame : {kSetAxesFrame, kSetName, std::string(c.boot)}) EXPECT_EQ(host.Say(frame), kAck);
    host.Load(kAnnounceFour, kFour);
    host.Say(c.save);
    host.Say("B5 B0 2B E7 07 07 0A");  // not saved
    host.controller.PowerCycle();
    EXPECT_EQ(host.controller.settings().axes, c.axes) << c.name;
    EXPECT_EQ(host.controller.DeviceName(), c.axes == 2 ? "A" : "ZRV Simulator") << c.name;
    EXPECT_EQ(host.controller.Block().size(), c.block) << c.name;
    EXPECT_EQ(host.controller.IsPlaying(), c.playing) << c.name;
  }
}

TEST(FlashTest, ResetBootsAndAnswersFirst) {
  Host host;
  host.Say(kSetAxesFrame);
  host.Load(kAnnounceFour, kFour);
  host.Say(kPlayEndlessFrame);
  EXPECT_EQ(host.Say("B5 B0 2B EE 06 0A"), kAck);
  EXPECT_FALSE(host.controller.IsPlaying());
  EXPECT_EQ(host.controller.settings().axes, 0);
  EXPECT_EQ(host.Say(kStopFrame), kAck + " 00 80 00 80 00 00 00 00 00");
  host.Say("B5 B0 2B BD 07 46 0A");  // the factory name stays, and the set name goes before it
  host.Say(kSetName);
  EXPECT_EQ(host.controller.DeviceName(), "A");
  host.controller.PowerCycle();
  EXPECT_EQ(host.controller.DeviceName(), "F");
}

}  // namespace
}  // namespace zrv::sim
