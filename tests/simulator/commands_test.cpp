// What commands leave behind, within their limits, and which are refused.
#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

const std::string kInfo = kAck + " 5A 52 2D 49 4E 46 4F 0A";  // "ZR-INFO\n"

struct SetCase {
  const char* name;
  std::vector<const char*> frames;
  std::string deviceName, numbers;  // of the identification
};
const SetCase kSets[] = {
    {"untouched",
     {},
     "53 69 6D",
     "00 10 0E 10 27 00 C8 00 FF 7F FF 7F 8C 50 50 00 00 00 00 00 11 00 00 00 00 00 00 00 00"},
    {"every value",  // a line feed in the name ends it; a trailer's value in the buffer offset does not
     {"BA 41 0A", "BB 00 C2 01", "E8 20 4E 00", "C0 F4 01", "E9 00 40", "EC 00 40 FF 7F", "EA 3C", "EB 32", "E7 05",
      "D5", "D7", "D9", "E5 03", "B0 0A 0B 0C", "EF 02 00"},
     "41",
     "00 C2 01 20 4E 00 F4 01 00 40 00 40 8C 3C 32 05 01 01 01 06 11 00 00 0A 0B 0C 02 00 00"},
    {"below every limit",
     {"BB 00 00 00", "E8 32 00 00", "C0 00 00", "EA 00"},
     "53 69 6D",
     "00 C2 01 C8 00 00 32 00 FF 7F FF 7F 8C 0A 50 00 00 00 00 00 11 00 00 00 00 00 00 00 00"},
    {"above every limit",
     {"BB FF FF FF", "E8 FF FF FF", "C0 FF FF", "E9 FF FF", "EC FF FF FF FF", "EA FF", "EB FF"},
     "53 69 6D",
     "00 40 38 A0 86 01 10 27 FF 7F FF 7F 8C 64 8C 00 00 00 00 00 11 00 00 00 00 00 00 00 00"},
};

TEST(CommandsTest, IdentificationReportsWhatWasSetWithinItsLimits) {
  Options options;
  options.deviceName = "Sim";
  options.firmwareName = "Fw1";
  for (const SetCase& c : kSets) {
    Host host(options);
    for (const char* frame : c.frames) host.Say(frame);
    EXPECT_EQ(host.Say("E0"), kInfo + " " + c.deviceName +
                                  " 0A 46 77 31 0A 55 53 42 0A "
                                  "30 30 3A 31 31 3A 32 32 3A 33 33 3A 34 34 3A 35 35 0A " +
                                  c.numbers)
        << c.name;
  }
}

// Axes 8, boot 3, sync 16, no name, save 2, less than a sample, more than the capacity, a block that nobody
// announced, plays of 0 and 33 rounds, a payload that is too long, a code that there is not.
TEST(CommandsTest, RefusedFramesAreCountedAndNotAnswered) {
  for (const char* frame : {"E7 08", "EF 03 00", "E5 10", "BA", "F8 02", "B1 04 00 00", "B1 49 E8 01", "B2", "F5 00",
                            "F5 21", "E3 01", "11"}) {
    Host host;
    EXPECT_EQ(host.Say(frame), "") << frame;
    EXPECT_EQ(host.controller.FramesRejected(), 1u) << frame;
    EXPECT_EQ(host.Say("E3"), kAck) << "after " << frame;
  }
  EXPECT_EQ(Host().Say("F3 01"), kAck + " " + kAck) << "a play without a block is over at once";
}

TEST(CommandsTest, TrackingComesBackAsItWasSet) {
  Host host;
  host.Say("9D FF FF FF FF FF 00 02");  // threshold, tangential gain and delay are bounded
  EXPECT_EQ(host.Say("90"), kInfo + " FF 7F FF 99 BF 00 02");
  for (const char* frame : {"95 0A 01", "96 02", "9A 00", "97 04", "98 05", "99 06"}) EXPECT_EQ(host.Say(frame), "");
  EXPECT_EQ(host.Say("90"), kInfo + " 0A 01 02 67 04 05 06");
}

TEST(CommandsTest, ControllerOfAnotherFormatWithoutTracking) {
  Options options;
  options.tracking = false;
  options.formatCode = 5;
  Host host(options);
  EXPECT_EQ(host.Say("F4"), kAck + " 00 A1");
  EXPECT_EQ(host.Say("90"), kAck + " 4E 4F 54 52 41 43 4B 0A");
  for (const char* frame : {"92", "91", "9D FF 7F 01 81 02 80 03", "96 01"}) EXPECT_EQ(host.Say(frame), "") << frame;
  EXPECT_EQ(host.controller.FramesRejected(), 4u);
}

}  // namespace
}  // namespace zrv::sim
