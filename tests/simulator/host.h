// A host made of hexadecimal text, for tests that give the bytes of the wire as they are.
#ifndef ZRV_TESTS_SIMULATOR_HOST_H
#define ZRV_TESTS_SIMULATOR_HOST_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "simulator/controller.h"

namespace zrv::sim {

using Bytes = std::vector<uint8_t>;

// "B5 0A" or "B50A".
inline Bytes FromHex(const std::string& text) {
  Bytes bytes;
  int digits = 0, value = 0;
  for (const char c : text) {
    if (c == ' ') continue;
    value = value * 16 + (c <= '9' ? c - '0' : c - 'A' + 10);
    if (++digits % 2 == 0) bytes.push_back(static_cast<uint8_t>(std::exchange(value, 0)));
  }
  return bytes;
}

inline std::string ToHex(const Bytes& bytes) {
  std::string text;
  for (const uint8_t byte : bytes) {
    char pair[4];
    std::snprintf(pair, sizeof pair, text.empty() ? "%02X" : " %02X", byte);
    text += pair;
  }
  return text;
}

// One controller and its time.
struct Host {
  explicit Host(Options options = {}) : controller(std::move(options)) {}

  // Sends the bytes and returns what has come back by now.
  std::string Say(const std::string& hex) {
    controller.Receive(FromHex(hex), now);
    return Hear();
  }
  std::string Hear() { return ToHex(HearBytes()); }
  Bytes HearBytes() {
    controller.Advance(now);
    Bytes bytes(controller.Available());
    controller.Take(bytes);
    return bytes;
  }
  void Load(const std::string& announce, const std::string& block) {
    Say(announce);
    Say("B5 B0 2B B2 06 0A");
    Say(block);
  }

  Controller controller;
  double now = 1;
};

inline const std::string kAck = "B5 B0 0A";
inline const std::string kStopFrame = "B5 B0 2B F2 06 0A";
inline const std::string kStateFrame = "B5 B0 2B F4 06 0A";
inline const std::string kRespondFrame = "B5 B0 2B E3 06 0A";
inline const std::string kRemainingFrame = "B5 B0 2B E2 06 0A";
inline const std::string kPlayEndlessFrame = "B5 B0 2B F1 06 0A";
inline const std::string kSetAxesFrame = "B5 B0 2B E7 07 02 0A";

}  // namespace zrv::sim

#endif
