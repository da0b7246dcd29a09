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
    {"16 bit, dark", 0, "00 00 FF FF 00", {-1, 1, 0, 0}},
    {"12/11 bit", 1, "FF FF FF", {1, 1, 1, 0xFFFFFF}},
    {"12/11 bit, dark", 1, "00 00 00", {-1, -1, 0, 0}},
    {"12/11 bit, Y alone", 1, "00 0F FE", {-1, 1, 0, 0}},
    {"5-6-5 white", 2, "FF F0 00 FF FF", {1, -1, 255, 0xFFFFFF}},
    {"5-6-5 red", 2, "00 0F FF F8 00", {-1, 1, 255, 0xFF0000}},
    {"5-6-5 green", 2, "00 0F FF 07 E0", {-1, 1, 255, 0x00FF00}},
    {"5-6-5 black", 2, "FF FF FF 00 00", {1, 1, 0, 0}},
    {"8-8-8", 3, "FF F0 00 12 34 56", {1, -1, 255, 0x123456}},
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

TEST(SampleBlockTest, MiddleCodes) {
  const Sample s = DecodeBlock(3, FromHex("12 34 56 00 00 01"))[0];
  EXPECT_FLOAT_EQ(s.x, 0x123 / 2047.5f - 1);
  EXPECT_FLOAT_EQ(s.y, 0x456 / 2047.5f - 1);
  EXPECT_FLOAT_EQ(DecodeBlock(1, FromHex("12 34 56"))[0].y, (4 * 128 + 0x2B) / 1023.5f - 1);
}

// Four samples of 100 us: (1, -1, 1), (0.0, 0.5, 2), (0.25, 0, 3), (-1, 1, 4), on the 32767.5 scale.
const std::string kAnnounceFour = "B5 B0 2B B1 09 14 00 00 0A";
const std::string kFour = "FF FF 00 00 01 FF 7F FF BF 02 FF 9F FF 7F 03 00 00 FF FF 04";

// Stop values are on a scale of 32768: 0x9FFF of 32767.5 is 40959.6 there. A 0 is sent as 0x7FFF, which is
// a tie in single precision, and comes back as exactly 0.
struct StopCase {
  const char* name;
  const char* start;
  double seconds;  // until the stop
  std::string answer;
};
const StopCase kStops[] = {
    {"first sample", "B5 B0 2B F1 06 0A", 0.00005, " FF FF 00 00 01 00 00 00 00"},
    {"second sample, as soon as it is due", "B5 B0 2B F1 06 0A", 0.0001, " 00 80 00 C0 02 01 00 00 00"},
    {"third sample", "B5 B0 2B F1 06 0A", 0.00025, " 00 A0 00 80 03 02 00 00 00"},
    {"last sample", "B5 B0 2B F1 06 0A", 0.00039, " 00 00 FF FF 04 03 00 00 00"},
    {"second round", "B5 B0 2B F1 06 0A", 0.00045, " FF FF 00 00 01 00 00 00 00"},
    {"round 250001", "B5 B0 2B F1 06 0A", 100.00015, " 00 80 00 C0 02 01 00 00 00"},
    {"once, and over: the last sample is held", "B5 B0 2B F5 07 01 0A", 5, " 00 00 FF FF 04 03 00 00 00"},
};

TEST(PlaybackTest, StopReportsTheSampleOfThatMoment) {
  for (const StopCase& c : kStops) {
    Host host;
    host.Load(kAnnounceFour, kFour);
    EXPECT_EQ(host.Say(c.start), kAck) << c.name;
    host.now += c.seconds;
    const std::string answer = host.Say(kStopFrame);
    EXPECT_EQ(answer, kAck + c.answer) << c.name;
    EXPECT_FALSE(host.controller.IsPlaying()) << c.name;
  }
}

struct RemainingCase {
  const char* name;
  const char* start;
  double seconds;
  std::string answer;
  bool playing;
};
const RemainingCase kRemaining[] = {
    {"three rounds just started", "B5 B0 2B F5 07 03 0A", 0, " 0B 00 00", true},
    {"three rounds, five samples out", "B5 B0 2B F5 07 03 0A", 0.00045, " 07 00 00", true},
    {"last sample out", "B5 B0 2B F5 07 03 0A", 0.00115, " 00 00 00", true},
    {"over", "B5 B0 2B F5 07 03 0A", 0.0012, " 00 00 00", false},
    {"endless counts the round", "B5 B0 2B F1 06 0A", 0.00045, " 03 00 00", true},
};

TEST(PlaybackTest, SamplesRemaining) {
  for (const RemainingCase& c : kRemaining) {
    Host host;
    host.Load(kAnnounceFour, kFour);
    host.Say(c.start);
    host.now += c.seconds;
    EXPECT_EQ(host.Say(kRemainingFrame), kAck + c.answer) << c.name;
    EXPECT_EQ(host.Say(kStateFrame), kAck + (c.playing ? " 01 11" : " 00 11")) << c.name;
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
}

TEST(PlaybackTest, AStoppedPlayReportsNoEnd) {
  Host host;
  host.Load(kAnnounceFour, kFour);
  host.Say("B5 B0 2B F3 07 20 0A");
  host.Say(kStopFrame);
  host.now += 10;
  EXPECT_EQ(host.Hear(), "");
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

// Steps that no float can hold exactly must not shift a sample: 0.1 ms a thousand times is 1000 samples.
TEST(PlaybackTest, ManySmallStepsEqualOneLargeOne) {
  Host host;
  host.Load(kAnnounceFour, kFour);
  host.Say(kPlayEndlessFrame);
  for (int i = 0; i < 1000; ++i) {
    host.now += 0.0001;
    host.controller.Advance(host.now);
    ASSERT_EQ(host.controller.SampleIndex(), static_cast<uint32_t>((i + 1) % 4)) << i;
  }
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
      {"saved, boot with defaults", "B5 B0 2B EF 08 00 00 0A", "B5 B0 2B F8 07 01 0A", 0, 0, false},
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
}

TEST(FlashTest, FactoryNameStaysAndTheSetNameGoesFirst) {
  Host host;
  EXPECT_EQ(host.Say("B5 B0 2B BD 07 46 0A"), kAck);
  EXPECT_EQ(host.controller.DeviceName(), "F");
  host.Say(kSetName);
  EXPECT_EQ(host.controller.DeviceName(), "A");
  host.controller.PowerCycle();
  EXPECT_EQ(host.controller.DeviceName(), "F");
}

}  // namespace
}  // namespace zrv::sim
