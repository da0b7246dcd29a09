#include <random>

#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

const std::string kRespond = "B5 B0 2B E3 06 0A";

TEST(FrameParserTest, FindsItsFeetAgainHoweverTheBytesCome) {
  const std::string twice = kAck + " " + kAck;
  const struct {
    const char* name;
    std::string bytes, answer;
  } kStreams[] = {
      {"lone trailers between frames", "0A 0A " + kRespond + " 0A " + kRespond, twice},
      {"wrong header: dropped up to its trailer", "B5 B0 2C E3 06 0A " + kRespond, kAck},
      {"stray byte takes the next frame with it", "55 " + kRespond + " " + kRespond, kAck},
      {"length below a frame's", "B5 B0 2B E3 05 0A " + kRespond, kAck},
      {"length above the longest frame", "B5 B0 2B E3 65 0A " + kRespond, kAck},
      {"length one too long eats the next header", "B5 B0 2B E3 07 0A " + kRespond + " " + kRespond, kAck},
      {"length one too short", "B5 B0 2B E7 06 01 0A " + kRespond, kAck},
      {"no trailer", "B5 B0 2B E3 06 0B 0A " + kRespond, kAck},
      {"trailer's value in a payload", "B5 B0 2B BF 0A 0A 0A 0A 0A 0A B5 B0 2B E4 06 0A", kAck + " 0A 0A 0A 0A"},
      {"header within a frame", "B5 B0 B5 B0 2B E3 06 0A " + kRespond, kAck},
      {"trailer cuts a header short", "B5 B0 0A " + kRespond, kAck},
  };
  for (const auto& c : kStreams) {
    Host whole, pieces;
    EXPECT_EQ(whole.Send(c.bytes), c.answer) << c.name;
    for (const uint8_t byte : FromHex(c.bytes)) pieces.controller.Receive({&byte, 1}, pieces.now);
    EXPECT_EQ(pieces.Hear(), c.answer) << c.name;
  }
}

TEST(FrameParserTest, WhatIsCutShortIsGivenUpAfterASilence) {
  Host host;
  EXPECT_EQ(host.Send("B5 B0 2B BA 1F 41 42"), "");
  host.now += Controller::kFrameSilence / 2;
  EXPECT_EQ(host.Say("E3"), "");  // still taken for the name
  host.now += Controller::kFrameSilence * 2;
  EXPECT_EQ(host.Say("E3"), kAck);
  EXPECT_EQ(host.controller.FramesRejected(), 1u);
  host.Say("B1 0A 00 00");
  host.Say("B2");
  host.Send("01 02");
  host.now += Controller::kBlockSilence * 1.5;
  EXPECT_EQ(host.Say("E3"), kAck);
  EXPECT_EQ(host.Say("B2"), "") << "the announcement went with it";
}

// Noise, and frames of known codes with noise in them: those reach the commands far more often.
TEST(FrameParserTest, NothingKeepsItFromAnsweringAgain) {
  std::mt19937 random(11);
  Options options;
  options.captureCapacity = 1000;
  Host host(options);
  for (int round = 0; round < 3000; ++round) {
    Bytes frame = FromHex("B5 B0 2B 00 06");
    frame[3] = static_cast<uint8_t>(0x90 + random() % 0x70);
    for (auto left = random() % 8; left > 0; --left) frame.push_back(static_cast<uint8_t>(random()));
    frame[4] = static_cast<uint8_t>(frame.size() + 1 + (random() % 8 == 0));
    frame.push_back(0x0A);
    if (round % 10 == 0) frame[random() % frame.size()] = static_cast<uint8_t>(random());
    host.controller.Receive(frame, host.now);
    host.now += 0.01;
    if (round % 50 != 49) continue;
    host.now += 2 * Controller::kBlockSilence;
    host.Say("B5 00");
    EXPECT_EQ(host.Say("E3"), kAck) << round;
  }
}

}  // namespace
}  // namespace zrv::sim
