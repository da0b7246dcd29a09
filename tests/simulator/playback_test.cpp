// Blocks, the sample clock, stop values and what comes at the end of a play.
#include "simulator/playback.h"

#include <cmath>

#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

const std::tuple<uint32_t, const char*, Sample> kDecodes[] = {
    {0, "FF FF 00 00 80", {1, -1, 0x80, 0xFFFFFF}},
    {0, "34 12 FF FF 00", {0x1234 / 32767.5f - 1, 1, 0, 0}},
    {1, "12 34 57", {0x123 / 2047.5f - 1, (4 * 128 + 0x2B) / 1023.5f - 1, 1, 0xFFFFFF}},
    {1, "00 0F FE", {-1, 1, 0, 0}},
    {2, "00 0F FF F8 00", {-1, 1, 255, 0xFF0000}},
    {2, "FF F0 00 07 F2", {1, -1, 255, 0x00FF94}},
    {2, "FF FF FF 00 00", {1, 1, 0, 0}},
    {3, "12 34 56 12 34 56", {0x123 / 2047.5f - 1, 0x456 / 2047.5f - 1, 255, 0x123456}},
    {4, "00 0F FF 00 12 34 56", {-1, 1, 0, 0x123456}},
    {5, "FF FF FF FF FF", {0, 0, 0, 0}},
};

TEST(SampleBlockTest, EveryFormatIsDecoded) {
  for (const auto& [format, hex, sample] : kDecodes) {
    const Bytes bytes = FromHex(hex);
    const auto block = DecodeBlock(format, bytes);
    ASSERT_EQ(block.size(), 1u) << hex;
    EXPECT_FLOAT_EQ(block[0].x, sample.x) << hex;
    EXPECT_FLOAT_EQ(block[0].y, sample.y) << hex;
    EXPECT_EQ(std::pair(block[0].m, block[0].rgb), std::pair(sample.m, sample.rgb)) << hex;
    EXPECT_TRUE(DecodeBlock(format, std::span(bytes).first(bytes.size() - 1)).empty()) << hex;
  }
}

// Four samples of 100 us: (1, -1, 1), (0.0, 0.5, 2), (0.25, 0, 3), (-1, 1, 4), on the 32767.5 scale.
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
const std::string kThreeRounds = "F5 03";
const PlayCase kPlays[] = {
    {"just started", kThreeRounds, 0, " 0B 00 00", " FF FF 00 00 01 00 00 00 00", true},
    {"second sample, as soon as it is due", kThreeRounds, 0.0001, " 0A 00 00", " 00 80 00 C0 02 01 00 00 00", true},
    {"third sample", kThreeRounds, 0.00025, " 09 00 00", " 00 A0 00 80 03 02 00 00 00", true},
    {"second round", kThreeRounds, 0.00045, " 07 00 00", " FF FF 00 00 01 00 00 00 00", true},
    {"last sample out", kThreeRounds, 0.00115, " 00 00 00", " 00 00 FF FF 04 03 00 00 00", true},
    {"over: the last sample is held", kThreeRounds, 0.0012, " 00 00 00", " 00 00 FF FF 04 03 00 00 00", false},
    {"endless counts the round", "F1", 0.00045, " 03 00 00", " FF FF 00 00 01 00 00 00 00", true},
    {"round 250001", "F1", 100.00015, " 02 00 00", " 00 80 00 C0 02 01 00 00 00", true},
};

TEST(PlaybackTest, WhereAPlayIsAndStops) {
  for (const PlayCase& c : kPlays) {
    Host host;
    host.Load(kFour);
    EXPECT_EQ(host.Say(c.start), kAck) << c.name;
    host.now += c.seconds;
    EXPECT_EQ(host.Say("E2"), kAck + c.remaining) << c.name;
    EXPECT_EQ(host.Say("F4"), kAck + (c.playing ? " 01 11" : " 00 11")) << c.name;
    EXPECT_EQ(host.Say("F2"), kAck + c.stopped) << c.name;
    EXPECT_FALSE(host.controller.IsPlaying()) << c.name;
  }
}

TEST(PlaybackTest, EndOfPlayIsReportedOnTimeAndOnce) {
  Host host;
  host.Load(kFour);
  EXPECT_EQ(host.Say("F3 20"), kAck);  // 32 rounds of 400 us
  EXPECT_NEAR(host.controller.NextEventTime(), host.now + 0.0128, 1e-9);
  EXPECT_EQ(host.HearAfter(0.01279), "");
  EXPECT_EQ(host.HearAfter(0.00001), kAck);
  EXPECT_EQ(host.HearAfter(10), "");
  EXPECT_EQ(host.controller.NextEventTime(), Controller::kNever);
  EXPECT_EQ(host.controller.DrawnPath().size(), 128u);
  host.Say("F3 20");
  host.Say("F2");
  EXPECT_EQ(host.HearAfter(10), "") << "a stopped play reports no end";
}

TEST(PlaybackTest, ANewBlockTakesOverWithoutAStop) {
  Host host;
  host.Load(kFour);
  host.Say("F1");
  host.now += 0.00025;
  host.Say("B1 05 00 00");
  host.Say("B2");
  EXPECT_EQ(host.Send("FF FF FF FF"), "");
  EXPECT_EQ(host.controller.Output().m, 3) << "the old one plays until the new one is whole";
  EXPECT_EQ(host.Send("09 " + FrameOf("F4")), kAck + " " + kAck + " 01 11");
  EXPECT_EQ(host.Say("F2"), kAck + " FF FF FF FF 09 00 00 00 00");
}

TEST(PlaybackTest, ChangingTheRateGoesOnWithTheNextSample) {
  Host host;
  host.Load(kFour);
  host.Say("F1");
  host.now += 0.00015;
  host.Say("E8 C8 00 00");  // 200 samples/s: 5 ms each
  for (const auto& [seconds, index] : {std::pair{0.0, 1u}, {0.0049, 1u}, {0.0002, 2u}}) {
    host.HearAfter(seconds);
    EXPECT_EQ(host.controller.SampleIndex(), index);
  }
}

TEST(PlaybackTest, TimeThatRunsBackwardsOrIsNoNumberStandsStill) {
  Host host;
  host.Load(kFour);
  host.Say("F1");
  for (const double time : {-5.0, std::nan(""), static_cast<double>(INFINITY)}) host.controller.Advance(time);
  EXPECT_EQ(host.controller.SampleIndex(), 0u);
}

// --- What survives ---

TEST(FlashTest, WhatComesBackAfterPowerOff) {
  const struct {
    const char* name;
    const char* boot;
    const char* save;
    int axes;
    size_t block;
    bool playing;
  } kCases[] = {
      {"boot with defaults", "EF 00 00", "F8 01", 0, 0, false},
      {"settings", "EF 01 00", "F8 00", 2, 0, false},
      {"settings and data", "EF 01 00", "F8 01", 2, 4, false},
      {"settings and data, and run", "EF 02 00", "F8 01", 2, 4, true},
      {"run without data", "EF 02 00", "F8 00", 2, 0, false},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    Host host;
    for (const char* frame : {"E7 02", "BA 41", c.boot}) EXPECT_EQ(host.Say(frame), kAck);
    host.Load(kFour);
    host.Say("F1");
    host.Say(c.save);
    host.Say("E7 07");  // not saved
    EXPECT_EQ(host.Say("EE"), kAck) << "a reset answers, and boots as power does";
    EXPECT_EQ(host.controller.settings().axes, c.axes);
    EXPECT_EQ(host.controller.DeviceName(), c.axes == 2 ? "A" : "ZRV Simulator");
    EXPECT_EQ(host.controller.Block().size(), c.block);
    EXPECT_EQ(host.controller.IsPlaying(), c.playing);
    EXPECT_EQ(host.Say("F2").substr(0, 20), kAck + (c.playing ? " FF FF 00 00" : " 00 80 00 80"));
  }
}

TEST(FlashTest, TheFactoryNameStaysAndTheSetNameGoesBeforeIt) {
  Host host;
  host.Say("BD 46");
  host.Say("BA 41");
  EXPECT_EQ(host.controller.DeviceName(), "A");
  host.controller.PowerCycle();
  EXPECT_EQ(host.controller.DeviceName(), "F");
}

}  // namespace
}  // namespace zrv::sim
