// A host made of hexadecimal text, for tests that give the bytes of the wire as they are.
#ifndef ZRV_TESTS_SIMULATOR_HOST_H
#define ZRV_TESTS_SIMULATOR_HOST_H

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "simulator/controller.h"
#include "tests/hex.h"

namespace zrv::sim {

using testing::Bytes;
using testing::FromHex;
using testing::ToHex;

inline const std::string kAck = "B5 B0 0A";

// A frame without its header and its end: its code and its payload.
inline std::string FrameOf(const std::string& codeAndPayload) {
  const Bytes bytes = FromHex(codeAndPayload);
  const Bytes length = {static_cast<uint8_t>(bytes.size() + 5)};
  return "B5 B0 2B " + codeAndPayload.substr(0, 2) + " " + ToHex(length) + codeAndPayload.substr(2) + " 0A";
}

// One controller and its time.
struct Host {
  explicit Host(Options options = {}) : controller(std::move(options)) {}

  // Sends the bytes and returns what has come back by now.
  std::string Send(const std::string& hex) {
    controller.Receive(FromHex(hex), now);
    return Hear();
  }
  std::string Say(const std::string& codeAndPayload) { return Send(FrameOf(codeAndPayload)); }
  std::string Hear() { return ToHex(HearBytes()); }
  std::string HearAfter(double seconds) {
    now += seconds;
    return Hear();
  }
  Bytes HearBytes() {
    controller.Advance(now);
    Bytes bytes(controller.Available());
    controller.Take(bytes);
    return bytes;
  }
  // Samples of five bytes.
  void Load(const std::string& block) {
    Say("B1 " + ToHex(Bytes{static_cast<uint8_t>(FromHex(block).size()), 0, 0}));
    Say("B2");
    Send(block);
  }

  Controller controller;
  double now = 1;
};

}  // namespace zrv::sim

#endif
