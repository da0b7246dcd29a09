// What an observer of the link is told, as the log of exchanges keeps it.
#include "simulator/link_log.h"

#include <gtest/gtest.h>

#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

// "F4 command x2 ack 2 to 12 from 10 payload 0", the newest last.
std::string Text(const Exchange& e) {
  constexpr const char* kKinds[] = {"command", "refused", "block", "report"};
  char text[120];
  std::snprintf(text, sizeof text, "%02X %s x%u ack %u to %u from %u payload %u", e.code,
                kKinds[static_cast<int>(e.kind)], static_cast<unsigned>(e.times),
                static_cast<unsigned>(e.acknowledgements), static_cast<unsigned>(e.toController),
                static_cast<unsigned>(e.toHost), static_cast<unsigned>(e.payload));
  return text;
}

std::vector<std::string> Texts(const LinkLog& log) {
  std::vector<std::string> texts;
  for (const Exchange& e : log.Copy()) texts.push_back(Text(e));
  return texts;
}

TEST(LinkLogTest, KeepsEachCommandWithItsAnswer) {
  Host host;
  LinkLog log(6);
  host.controller.Observe([&log](const LinkEvent& event) { log.Add(event); });
  host.Say("F4"), host.Say("F4");              // the same again: one row
  host.Say("E9 34 12"), host.Say("E9 34 12");  // obeyed in silence
  host.Say("E7 09");                           // no such axes
  host.Load("00 00 00 00 00 FF FF FF FF FF");
  host.Say("F3 01");
  host.HearAfter(1);  // the two samples are over: the controller says so
  EXPECT_EQ(Texts(log), (std::vector<std::string>{
                            "E7 refused x1 ack 0 to 7 from 0 payload 1", "B1 command x1 ack 1 to 9 from 3 payload 3",
                            "B2 command x1 ack 1 to 6 from 3 payload 0", "B2 block x1 ack 1 to 10 from 3 payload 0",
                            "F3 command x1 ack 1 to 7 from 3 payload 1", "F3 report x1 ack 1 to 0 from 3 payload 0"}));
  EXPECT_EQ(host.controller.BytesReceived(), 2 * 6 + 2 * 8 + 7 + 9 + 6 + 10 + 7u);
  EXPECT_EQ(host.controller.BytesTaken(), 2 * 5 + 5 * 3u);
}

TEST(LinkLogTest, CountsRepeatsStreamsAndSilence) {
  Host host;
  LinkLog log(10);
  host.controller.Observe([&log](const LinkEvent& event) { log.Add(event); });
  host.Say("F4"), host.Say("F4");
  host.controller.faults().StopAnswering();
  host.Say("F4");
  host.controller.faults() = {};
  host.Say("B5 06");  // both analog inputs, 4 bytes a sample
  host.HearAfter(0.01);
  EXPECT_EQ(Texts(log), (std::vector<std::string>{"F4 command x3 ack 2 to 18 from 10 payload 0",
                                                  "B5 command x1 ack 0 to 7 from 400 payload 1"}));
  host.controller.Observe({});
  host.Say("F4");
  EXPECT_EQ(log.Copy().size(), 2u);
}

}  // namespace
}  // namespace zrv::sim
