// The bytes of every command, written out by hand.
#include <gtest/gtest.h>

#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

const std::string kIdentityFrame = "B5 B0 2B E0 06 0A";
const std::string kOffsetsFrame = "B5 B0 2B E4 06 0A";
const std::string kTrackFrame = "B5 B0 2B 90 06 0A";
const std::string kInfo = kAck + " 5A 52 2D 49 4E 46 4F 0A";  // "ZR-INFO\n"

// The lines of name, firmware "Fw1", link "USB" and address; numbers after that.
std::string Identity(const std::string& name, const std::string& numbers) {
  return kInfo + " " + name + " 0A 46 77 31 0A 55 53 42 0A "
         "30 30 3A 31 31 3A 32 32 3A 33 33 3A 34 34 3A 35 35 0A " + numbers;
}

Options Small() {
  Options options;
  options.deviceName = "Sim";
  options.firmwareName = "Fw1";
  return options;
}

TEST(CommandsTest, IdentificationIsFiveLinesAndTwentySevenBytes) {
  Host host(Small());
  EXPECT_EQ(host.Say(kIdentityFrame),
            Identity("53 69 6D", "00 10 0E 10 27 00 C8 00 "     // 921600 baud, 10000 samples/s, 200 Hz
                                 "FF 7F FF 7F 8C 50 50 00 "     // scale 1, cosine 1, 140 V, 80 V, 80 V, axes 0
                                 "00 00 00 00 11 00 00 "        // nothing enabled, filter and tracking, no errors
                                 "00 00 00 00 00 00"));         // buffer offset, boot, data mode
  EXPECT_EQ(host.Say("B5 B0 2B E1 06 0A"), kInfo + " C8 00 00 A0 86 01 01 00 00 A8 61 00"  // 200, 100000, 1, 25000
                                                   " 32 00 10 27 00 64 00 8C 0A 64");      // 50, 10000, six bytes
}

struct SetCase {
  const char* name;
  std::vector<const char*> frames;
  std::string identity;
};
const SetCase kSets[] = {
    {"every value",  // a line feed in the name ends it; a trailer's value in the buffer offset does not
     {"B5 B0 2B BA 08 41 0A 0A", "B5 B0 2B BB 09 00 C2 01 0A", "B5 B0 2B E8 09 20 4E 00 0A",
      "B5 B0 2B C0 08 F4 01 0A", "B5 B0 2B E9 08 00 40 0A", "B5 B0 2B EC 0A 00 40 FF 7F 0A",
      "B5 B0 2B EA 07 3C 0A", "B5 B0 2B EB 07 32 0A", "B5 B0 2B E7 07 05 0A", "B5 B0 2B D5 06 0A",
      "B5 B0 2B D7 06 0A", "B5 B0 2B D9 06 0A", "B5 B0 2B E5 07 03 0A", "B5 B0 2B B0 09 0A 0B 0C 0A",
      "B5 B0 2B EF 08 02 00 0A"},
     Identity("41", "00 C2 01 20 4E 00 F4 01 00 40 00 40 8C 3C 32 05 01 01 01 06 11 00 00 0A 0B 0C 02 00 00")},
    {"below every limit",
     {"B5 B0 2B BB 09 00 00 00 0A", "B5 B0 2B E8 09 32 00 00 0A", "B5 B0 2B C0 08 00 00 0A", "B5 B0 2B EA 07 00 0A"},
     Identity("53 69 6D", "00 C2 01 C8 00 00 32 00 FF 7F FF 7F 8C 0A 50 00 00 00 00 00 11 00 00 00 00 00 00 00 00")},
    {"above every limit",
     {"B5 B0 2B BB 09 FF FF FF 0A", "B5 B0 2B E8 09 FF FF FF 0A", "B5 B0 2B C0 08 FF FF 0A", "B5 B0 2B E9 08 FF FF 0A",
      "B5 B0 2B EC 0A FF FF FF FF 0A", "B5 B0 2B EA 07 FF 0A", "B5 B0 2B EB 07 FF 0A"},
     Identity("53 69 6D", "00 40 38 A0 86 01 10 27 FF 7F FF 7F 8C 64 8C 00 00 00 00 00 11 00 00 00 00 00 00 00 00")},
};

TEST(CommandsTest, IdentificationReportsWhatWasSetWithinItsLimits) {
  for (const SetCase& c : kSets) {
    Host host(Small());
    for (const char* frame : c.frames) host.Say(frame);
    EXPECT_EQ(host.Say(kIdentityFrame), c.identity) << c.name;
  }
}

// What an untouched controller answers. Hosts do not wait after those with nothing.
struct AnswerCase {
  std::string answer;
  std::vector<std::string> frames;
};
const AnswerCase kAnswers[] = {
    {kAck, {kRespondFrame, "B5 B0 2B EE 06 0A", "B5 B0 2B BB 09 00 10 0E 0A", "B5 B0 2B E8 09 C8 00 00 0A",
            "B5 B0 2B C0 08 C8 00 0A", "B5 B0 2B EB 07 50 0A", "B5 B0 2B EA 07 50 0A", "B5 B0 2B E7 07 07 0A",
            "B5 B0 2B EF 08 01 00 0A", "B5 B0 2B E5 07 0F 0A", "B5 B0 2B BA 09 61 62 63 0A", "B5 B0 2B BD 07 61 0A"}},
    {kAck, {"B5 B0 2B D4 06 0A", "B5 B0 2B D5 06 0A", "B5 B0 2B D6 06 0A", "B5 B0 2B D7 06 0A",   // driver, output
            "B5 B0 2B D8 06 0A", "B5 B0 2B D9 06 0A", "B5 B0 2B DA 06 0A", "B5 B0 2B DB 06 0A",   // modulation, boost
            "B5 B0 2B F8 07 00 0A", "B5 B0 2B F8 07 01 0A",                                       // save
            "B5 B0 2B B1 09 05 00 00 0A", "B5 B0 2B B1 09 48 E8 01 0A",   // announce one sample, and the capacity
            kPlayEndlessFrame, "B5 B0 2B F5 07 01 0A", "B5 B0 2B A4 09 01 00 00 0A", "B5 B0 2B A5 06 0A",
            "B5 B0 2B 9D 0D FF 7F 01 81 02 80 03 0A"}},
    {"", {"B5 B0 2B E9 08 FF 7F 0A", "B5 B0 2B EC 0A FF 7F 00 40 0A", "B5 B0 2B BF 0A 00 80 00 80 0A",
          "B5 B0 2B B0 09 01 00 00 0A", "B5 B0 2B B5 07 00 0A", "B5 B0 2B 95 08 FF 7F 0A", "B5 B0 2B 96 07 01 0A",
          "B5 B0 2B 9A 07 81 0A", "B5 B0 2B 97 07 02 0A", "B5 B0 2B 98 07 80 0A", "B5 B0 2B 99 07 03 0A"}},
    {kAck + " " + kAck, {"B5 B0 2B F3 07 01 0A"}},  // a play without a block is over at once
    {kAck + " 00 11", {kStateFrame}},
    {kAck + " 00 80 00 80", {kOffsetsFrame, "B5 B0 2B 91 06 0A"}},
    {kAck + " 00 80 00 80 00 00 00 00 00", {kStopFrame}},
    {kAck + " 00 00 00", {kRemainingFrame}},
    {kAck + " 00 80 00 80 00 00", {"B5 B0 2B 92 06 0A"}},
    {kInfo + " FF 3F 3F 80 28 FF 05", {kTrackFrame}},
};
// Axes 8, boot 3, sync 16, no name, save 2, less than a sample, more than the capacity, a block that nobody
// announced, plays of 0 and 33 rounds.
const std::string kRefused[] = {
    "B5 B0 2B E7 07 08 0A", "B5 B0 2B EF 08 03 00 0A", "B5 B0 2B E5 07 10 0A", "B5 B0 2B BA 06 0A",
    "B5 B0 2B F8 07 02 0A", "B5 B0 2B B1 09 04 00 00 0A", "B5 B0 2B B1 09 49 E8 01 0A", "B5 B0 2B B2 06 0A",
    "B5 B0 2B F5 07 00 0A", "B5 B0 2B F5 07 21 0A"};

// Says the frame to a new controller, which must answer the next one in any case.
void ExpectAnswer(const std::string& frame, const std::string& answer, uint64_t rejected) {
  Host host;
  EXPECT_EQ(host.Say(frame), answer) << frame;
  EXPECT_EQ(host.controller.FramesRejected(), rejected) << frame;
  EXPECT_EQ(host.Say(kRespondFrame), kAck) << "after " << frame;
}

TEST(CommandsTest, EveryCommandIsAnsweredAsItsHostExpects) {
  for (const AnswerCase& c : kAnswers) {
    for (const std::string& frame : c.frames) {
      ExpectAnswer(frame, c.answer, 0);
      Bytes longer = FromHex(frame);
      const size_t extra = longer[3] == 0xBA || longer[3] == 0xBD ? 32 : 1;  // names have room
      longer[4] = static_cast<uint8_t>(longer[4] + extra);
      longer.insert(longer.begin() + 5, extra, 1);
      ExpectAnswer(ToHex(longer), "", 1);
    }
  }
  for (const std::string& frame : kRefused) ExpectAnswer(frame, "", 1);
}

TEST(CommandsTest, UnknownCodesAreDropped) {
  int answered = 0;
  for (int code = 0; code < 256; ++code) {
    Host host;
    answered += host.Say(ToHex({0xB5, 0xB0, 0x2B, static_cast<uint8_t>(code), 6, 0x0A})).empty() ? 0 : 1;
  }
  // Without payload and acknowledged: 90..92, A0, A1, A5, A6, D4..DB, E0..E4, EE, F1, F2, F4.
  EXPECT_EQ(answered, 3 + 4 + 8 + 5 + 1 + 3);
}

TEST(CommandsTest, TrackingComesBackAsItWasSet) {
  Host host;
  host.Say("B5 B0 2B 9D 0D FF FF FF FF FF 00 02 0A");  // threshold, tangential gain and delay are bounded
  EXPECT_EQ(host.Say(kTrackFrame), kInfo + " FF 7F FF 99 BF 00 02");
  for (const char* frame : {"B5 B0 2B 95 08 0A 01 0A", "B5 B0 2B 96 07 02 0A", "B5 B0 2B 9A 07 00 0A",
                            "B5 B0 2B 97 07 04 0A", "B5 B0 2B 98 07 05 0A", "B5 B0 2B 99 07 06 0A"}) {
    host.Say(frame);
  }
  EXPECT_EQ(host.Say(kTrackFrame), kInfo + " 0A 01 02 67 04 05 06");
  host.controller.SetTrackTarget(TrackTarget{1.0f, -1.0f, 7, true});
  host.controller.SetTrackIntegrals(-32768, 258);
  EXPECT_EQ(host.Say("B5 B0 2B 92 06 0A"), kAck + " FF FF 01 00 07 01");
  EXPECT_EQ(host.Say("B5 B0 2B 91 06 0A"), kAck + " 00 00 02 81");
  host.Say("B5 B0 2B BF 0A FF FF 01 00 0A");
  EXPECT_EQ(host.Say(kOffsetsFrame), kAck + " FF FF 01 00");
}

TEST(CommandsTest, ControllerOfAnotherFormatWithoutTracking) {
  Options options;
  options.tracking = false;
  options.formatCode = 5;
  Host host(options);
  EXPECT_EQ(host.Say(kStateFrame), kAck + " 00 A1");
  EXPECT_EQ(host.Say(kTrackFrame), kAck + " 4E 4F 54 52 41 43 4B 0A");
  for (const char* frame : {"B5 B0 2B 92 06 0A", "B5 B0 2B 91 06 0A", "B5 B0 2B 9D 0D FF 7F 01 81 02 80 03 0A"}) {
    EXPECT_EQ(host.Say(frame), "") << frame;
  }
}

}  // namespace
}  // namespace zrv::sim
