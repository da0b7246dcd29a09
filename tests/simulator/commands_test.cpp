// The bytes of every command, written out by hand.
#include <gtest/gtest.h>

#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

const std::string kOffsetsFrame = "B5 B0 2B E4 06 0A";
const std::string kTrackFrame = "B5 B0 2B 90 06 0A";

// "ZR-INFO\n", name, firmware, link and address lines; numbers after that.
const std::string kIdentityText =
    "5A 52 2D 49 4E 46 4F 0A 53 69 6D 0A 46 77 31 0A 55 53 42 0A "
    "30 30 3A 31 31 3A 32 32 3A 33 33 3A 34 34 3A 35 35 0A";

Options Small() {
  Options options;
  options.deviceName = "Sim";
  options.firmwareName = "Fw1";
  return options;
}

TEST(CommandsTest, IdentificationIsFiveLinesAndTwentySevenBytes) {
  Host host(Small());
  EXPECT_EQ(host.Say("B5 B0 2B E0 06 0A"),
            kAck + " " + kIdentityText +
                " 00 10 0E 10 27 00 C8 00"        // 921600 baud, 10000 samples/s, 200 Hz
                " FF 7F FF 7F 8C 50 50 00"        // scale 1, cosine 1, 140 V, 80 V, 80 V, axes 0
                " 00 00 00 00 11 00 00"           // nothing enabled, filter and tracking, no errors
                " 00 00 00 00 00 00");            // buffer offset, boot, data mode
}

TEST(CommandsTest, LimitsAreOneLineAndTwentyTwoBytes) {
  Host host(Small());
  EXPECT_EQ(host.Say("B5 B0 2B E1 06 0A"), kAck +
                                               " 5A 52 2D 49 4E 46 4F 0A"
                                               " C8 00 00 A0 86 01 01 00 00 A8 61 00"  // 200, 100000, 1, 25000
                                               " 32 00 10 27 00 64 00 8C 0A 64");      // 50, 10000, six bytes
}

TEST(CommandsTest, IdentificationReportsWhatWasSet) {
  Host host(Small());
  for (const char* frame : {
           "B5 B0 2B BA 08 41 0A 0A",           // name "A", a line feed in it: the name ends there
           "B5 B0 2B BB 09 00 C2 01 0A",        // 115200 baud
           "B5 B0 2B E8 09 20 4E 00 0A",        // 20000 samples/s
           "B5 B0 2B C0 08 F4 01 0A",           // 500 Hz
           "B5 B0 2B E9 08 00 40 0A",           // scale
           "B5 B0 2B EC 0A 00 40 FF 7F 0A",     // 90 degrees
           "B5 B0 2B EA 07 3C 0A",              // Vbias 60
           "B5 B0 2B EB 07 32 0A",              // Vdifference 50
           "B5 B0 2B E7 07 05 0A",              // axes 5
           "B5 B0 2B D5 06 0A", "B5 B0 2B D7 06 0A", "B5 B0 2B D9 06 0A",
           "B5 B0 2B E5 07 03 0A",              // sync mode 3
           "B5 B0 2B B0 09 0A 0B 0C 0A",        // buffer offset with a trailer's value in it
           "B5 B0 2B EF 08 02 00 0A",           // boot 2
       }) {
    host.Say(frame);
  }
  EXPECT_EQ(host.Say("B5 B0 2B E0 06 0A"),
            kAck +
                " 5A 52 2D 49 4E 46 4F 0A 41 0A 46 77 31 0A 55 53 42 0A "
                "30 30 3A 31 31 3A 32 32 3A 33 33 3A 34 34 3A 35 35 0A"
                " 00 C2 01 20 4E 00 F4 01 00 40 00 40 8C 3C 32 05"
                " 01 01 01 06 11 00 00 0A 0B 0C 02 00 00");
}

// Everything else: what is sent and what comes back, nothing where hosts do not wait.
struct AnswerCase {
  const char* name;
  std::string frame;
  std::string answer;
};
const AnswerCase kAnswers[] = {
    {"responding", kRespondFrame, kAck},
    {"reset", "B5 B0 2B EE 06 0A", kAck},
    {"state", kStateFrame, kAck + " 00 11"},
    {"offsets", kOffsetsFrame, kAck + " 00 80 00 80"},
    {"set baud", "B5 B0 2B BB 09 00 10 0E 0A", kAck},
    {"set rate", "B5 B0 2B E8 09 C8 00 00 0A", kAck},
    {"set bandwidth", "B5 B0 2B C0 08 C8 00 0A", kAck},
    {"set scale is silent", "B5 B0 2B E9 08 FF 7F 0A", ""},
    {"set rotation is silent", "B5 B0 2B EC 0A FF 7F 00 40 0A", ""},
    {"set offsets is silent", "B5 B0 2B BF 0A 00 80 00 80 0A", ""},
    {"set buffer offset is silent", "B5 B0 2B B0 09 01 00 00 0A", ""},
    {"set data mode is silent", "B5 B0 2B B5 07 00 0A", ""},
    {"set Vdifference", "B5 B0 2B EB 07 50 0A", kAck},
    {"set Vbias", "B5 B0 2B EA 07 50 0A", kAck},
    {"set axes", "B5 B0 2B E7 07 07 0A", kAck},
    {"set axes 8", "B5 B0 2B E7 07 08 0A", ""},
    {"set boot", "B5 B0 2B EF 08 01 00 0A", kAck},
    {"set boot 3", "B5 B0 2B EF 08 03 00 0A", ""},
    {"set sync", "B5 B0 2B E5 07 0F 0A", kAck},
    {"set sync 16", "B5 B0 2B E5 07 10 0A", ""},
    {"set name", "B5 B0 2B BA 09 61 62 63 0A", kAck},
    {"set name of no bytes", "B5 B0 2B BA 06 0A", ""},
    {"set factory name", "B5 B0 2B BD 07 61 0A", kAck},
    {"driver off", "B5 B0 2B D4 06 0A", kAck},
    {"driver on", "B5 B0 2B D5 06 0A", kAck},
    {"output off", "B5 B0 2B D6 06 0A", kAck},
    {"output on", "B5 B0 2B D7 06 0A", kAck},
    {"modulation off", "B5 B0 2B D8 06 0A", kAck},
    {"modulation on", "B5 B0 2B D9 06 0A", kAck},
    {"boost off", "B5 B0 2B DA 06 0A", kAck},
    {"boost on", "B5 B0 2B DB 06 0A", kAck},
    {"save settings", "B5 B0 2B F8 07 00 0A", kAck},
    {"save settings and data", "B5 B0 2B F8 07 01 0A", kAck},
    {"save something else", "B5 B0 2B F8 07 02 0A", ""},
    {"announce a block", "B5 B0 2B B1 09 05 00 00 0A", kAck},
    {"announce less than a sample", "B5 B0 2B B1 09 04 00 00 0A", ""},
    {"announce the capacity", "B5 B0 2B B1 09 48 E8 01 0A", kAck},
    {"announce a byte more", "B5 B0 2B B1 09 49 E8 01 0A", ""},
    {"block unannounced", "B5 B0 2B B2 06 0A", ""},
    {"play without a block", kPlayEndlessFrame, kAck},
    {"play N without a block", "B5 B0 2B F5 07 01 0A", kAck},
    {"play N and report without a block", "B5 B0 2B F3 07 01 0A", kAck + " " + kAck},
    {"play 0 times", "B5 B0 2B F5 07 00 0A", ""},
    {"play 33 times", "B5 B0 2B F5 07 21 0A", ""},
    {"stop", kStopFrame, kAck + " 00 80 00 80 00 00 00 00 00"},
    {"remaining", kRemainingFrame, kAck + " 00 00 00"},
    {"analog input 0", "B5 B0 2B A0 06 0A", kAck + " 00 80"},
    {"analog input 1", "B5 B0 2B A1 06 0A", kAck + " 00 80"},
    {"photodetector", "B5 B0 2B A6 06 0A", kAck + " 00 00"},
    {"capture length", "B5 B0 2B A4 09 01 00 00 0A", kAck},
    {"capture of nothing", "B5 B0 2B A5 06 0A", kAck},
    {"tracking parameters", kTrackFrame, kAck + " 5A 52 2D 49 4E 46 4F 0A FF 3F 3F 80 28 FF 05"},
    {"set all tracking", "B5 B0 2B 9D 0D FF 7F 01 81 02 80 03 0A", kAck},
    {"set threshold is silent", "B5 B0 2B 95 08 FF 7F 0A", ""},
    {"set normal gain is silent", "B5 B0 2B 96 07 01 0A", ""},
    {"set tangential gain is silent", "B5 B0 2B 9A 07 81 0A", ""},
    {"set delay is silent", "B5 B0 2B 97 07 02 0A", ""},
    {"set hit ratio is silent", "B5 B0 2B 98 07 80 0A", ""},
    {"set tracking state is silent", "B5 B0 2B 99 07 03 0A", ""},
    {"tracking status", "B5 B0 2B 92 06 0A", kAck + " 00 80 00 80 00 00"},
    {"tracking integrals", "B5 B0 2B 91 06 0A", kAck + " 00 80 00 80"},
};

TEST(CommandsTest, EveryCommandIsAnsweredAsItsHostExpects) {
  for (const AnswerCase& c : kAnswers) {
    Host host;
    EXPECT_EQ(host.Say(c.frame), c.answer) << c.name;
    EXPECT_EQ(host.Say(kRespondFrame), kAck) << "after " << c.name;
  }
}

TEST(CommandsTest, PayloadOfTheWrongLengthIsRefused) {
  for (const AnswerCase& c : kAnswers) {
    Bytes frame = FromHex(c.frame);
    const bool name = frame[3] == 0xBA || frame[3] == 0xBD;
    const size_t extra = name ? 32 : 1;
    frame[4] = static_cast<uint8_t>(frame[4] + extra);
    frame.insert(frame.begin() + 5, extra, 1);
    Host host;
    EXPECT_EQ(host.Say(ToHex(frame)), "") << c.name;
    EXPECT_EQ(host.controller.FramesRejected(), 1u) << c.name;
  }
}

TEST(CommandsTest, UnknownCodesAreDropped) {
  int answered = 0;
  for (int code = 0; code < 256; ++code) {
    Host host;
    const Bytes frame = {0xB5, 0xB0, 0x2B, static_cast<uint8_t>(code), 6, 0x0A};
    answered += host.Say(ToHex(frame)).empty() ? 0 : 1;
  }
  // Without payload and acknowledged: 90..92, A0, A1, A5, A6, D4..DB, E0..E4, EE, F1, F2, F4.
  EXPECT_EQ(answered, 3 + 4 + 8 + 5 + 1 + 3);
}

struct ClampCase {
  const char* name;
  std::string frame;
  uint32_t (*value)(const Settings&);
  uint32_t expected;
};
const ClampCase kClamps[] = {
    {"rate too low", "B5 B0 2B E8 09 32 00 00 0A", [](const Settings& s) { return s.sampleRate; }, 200},
    {"rate too high", "B5 B0 2B E8 09 FF FF FF 0A", [](const Settings& s) { return s.sampleRate; }, 100000},
    {"baud too low", "B5 B0 2B BB 09 00 00 00 0A", [](const Settings& s) { return s.usartBaudRate; }, 115200},
    {"baud too high", "B5 B0 2B BB 09 FF FF FF 0A", [](const Settings& s) { return s.usartBaudRate; }, 3686400},
    {"bandwidth too low", "B5 B0 2B C0 08 00 00 0A",
     [](const Settings& s) { return uint32_t{s.hardwareFilterBw}; }, 50},
    {"Vbias too low", "B5 B0 2B EA 07 00 0A", [](const Settings& s) { return uint32_t{s.vbias}; }, 10},
    {"Vdifference too high", "B5 B0 2B EB 07 FF 0A",
     [](const Settings& s) { return uint32_t{s.vdifferenceMax}; }, 140},
    {"scale above 1", "B5 B0 2B E9 08 FF FF 0A", [](const Settings& s) { return uint32_t{s.dataScale}; }, 32767},
    {"tangential gain", "B5 B0 2B 9A 07 00 0A",
     [](const Settings& s) { return uint32_t{s.track.tangentialGain}; }, 0x80 - 25},
    {"buffer delay", "B5 B0 2B 97 07 FF 0A", [](const Settings& s) { return uint32_t{s.track.bufferDelay}; }, 191},
};

TEST(CommandsTest, ValuesBeyondALimitAreClamped) {
  for (const ClampCase& c : kClamps) {
    Host host;
    host.Say(c.frame);
    EXPECT_EQ(c.value(host.controller.settings()), c.expected) << c.name;
  }
}

TEST(CommandsTest, TrackingRecordComesBackAsItWasSet) {
  Host host;
  host.Say("B5 B0 2B 9D 0D FF 7F FF 67 BF 00 02 0A");
  EXPECT_EQ(host.Say(kTrackFrame), kAck + " 5A 52 2D 49 4E 46 4F 0A FF 7F FF 67 BF 00 02");
  for (const char* frame : {"B5 B0 2B 95 08 0A 01 0A", "B5 B0 2B 96 07 02 0A", "B5 B0 2B 9A 07 90 0A",
                            "B5 B0 2B 97 07 04 0A", "B5 B0 2B 98 07 05 0A", "B5 B0 2B 99 07 06 0A"}) {
    host.Say(frame);
  }
  EXPECT_EQ(host.Say(kTrackFrame), kAck + " 5A 52 2D 49 4E 46 4F 0A 0A 01 02 90 04 05 06");
}

TEST(CommandsTest, TrackingStatusAndIntegrals) {
  Host host;
  host.controller.SetTrackTarget(TrackTarget{1.0f, -1.0f, 7, true});
  host.controller.SetTrackIntegrals(-32768, 258);
  EXPECT_EQ(host.Say("B5 B0 2B 92 06 0A"), kAck + " FF FF 01 00 07 01");
  EXPECT_EQ(host.Say("B5 B0 2B 91 06 0A"), kAck + " 00 00 02 81");
}

TEST(CommandsTest, ControllerWithoutTracking) {
  Options options;
  options.tracking = false;
  Host host(options);
  EXPECT_EQ(host.Say(kStateFrame), kAck + " 00 01");
  EXPECT_EQ(host.Say(kTrackFrame), kAck + " 4E 4F 54 52 41 43 4B 0A");
  for (const char* frame : {"B5 B0 2B 92 06 0A", "B5 B0 2B 91 06 0A", "B5 B0 2B 9D 0D FF 7F 01 81 02 80 03 0A"}) {
    EXPECT_EQ(host.Say(frame), "") << frame;
  }
}

TEST(CommandsTest, OffsetsComeBackAsTheyWereSet) {
  Host host;
  host.Say("B5 B0 2B BF 0A FF FF 01 00 0A");
  EXPECT_EQ(host.Say(kOffsetsFrame), kAck + " FF FF 01 00");
}

TEST(CommandsTest, FormatCodeIsInTheStateWord) {
  Options options;
  options.formatCode = 5;
  Host host(options);
  EXPECT_EQ(host.Say(kStateFrame), kAck + " 00 B1");
}

}  // namespace
}  // namespace zrv::sim
