// Every fault switch, seen from the host.
#include <algorithm>

#include "simulator/faults.h"
#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

// The answer to the state command is B5 B0 0A 00 11.
struct FaultCase {
  const char* name;
  void (*ask)(Faults&);
  std::string first, second;  // two answers in turn
};
const std::string kGood = kAck + " 00 11";
const FaultCase kFaults[] = {
    {"third byte dropped", [](Faults& f) { f.AtByte(2, Fault::Drop()); }, "B5 B0 00 11", kGood},
    {"first byte corrupted", [](Faults& f) { f.AtByte(0, Fault::Corrupt(0x81)); }, "34 B0 0A 00 11", kGood},
    {"last byte doubled", [](Faults& f) { f.AtByte(4, Fault::Duplicate()); }, kGood + " 11", kGood},
    {"a byte of the next answer", [](Faults& f) { f.AtByte(5, Fault::Drop()); }, kGood, "B0 0A 00 11"},
    {"command, every byte", [](Faults& f) { f.OnCommand(0xF4, Fault::Drop()); }, "", ""},
    {"one byte of it", [](Faults& f) { f.OnCommand(0xF4, Fault::Drop(), 3); }, kAck + " 11", kAck + " 11"},
    {"another command", [](Faults& f) { f.OnCommand(0xF2, Fault::Drop()); }, kGood, kGood},
    {"cut in mid-answer", [](Faults& f) { f.AtByte(3, Fault::Cut()); }, kAck, ""},
    {"cut in mid-command", [](Faults& f) { f.CutAfterReceiving(9); }, kGood, ""},
    {"cleared",
     [](Faults& f) {
       f.StopAnswering(), f.OnCommand(0xF4, Fault::Drop()), f.AtByte(0, Fault::Drop());
       f.FailRandomly(1, 1), f.FailRandomAnswers(1, 1), f.StartChatter({}), f.CutAfterReceiving(1), f.Clear();
     },
     kGood, kGood},
};

TEST(FaultsTest, EachSwitchDoesWhatItSays) {
  for (const FaultCase& c : kFaults) {
    Host host;
    host.Say("E3");  // positions count from the call, not from the start
    c.ask(host.controller.faults());
    EXPECT_EQ(host.Say("F4"), c.first) << c.name;
    EXPECT_EQ(host.Say("F4"), c.second) << c.name;
    EXPECT_EQ(host.HearAfter(0.01), "") << c.name;
  }
}

TEST(FaultsTest, ADelayHoldsUpWhatFollows) {
  Host host;
  host.controller.faults().OnCommand(0xF4, Fault::Delay(0.5), 3);
  EXPECT_EQ(host.Say("F4"), kAck);
  EXPECT_EQ(host.Say("E3"), "");
  EXPECT_NEAR(host.controller.NextEventTime(), host.now + 0.5, 1e-9);
  EXPECT_EQ(host.HearAfter(0.499), "");
  EXPECT_EQ(host.HearAfter(0.002), "00 11 " + kAck);
}

TEST(FaultsTest, RandomFaultsKeepTheirRateAndTheirSeed) {
  const auto run = [](double probability, uint32_t seed) {
    Faults faults;
    faults.FailRandomly(probability, seed);
    std::string record;
    for (int i = 0; i < 10000; ++i) record += faults.Next(0xF4, 0) ? 'x' : '.';
    return record;
  };
  const std::string record = run(0.1, 1);
  EXPECT_NEAR(static_cast<double>(std::count(record.begin(), record.end(), 'x')), 1000, 120);  // four sigmas
  EXPECT_EQ(run(0, 1), std::string(10000, '.'));
  EXPECT_EQ(run(0.1, 1), record);
  EXPECT_NE(run(0.1, 1), run(0.1, 2));
}

}  // namespace
}  // namespace zrv::sim
