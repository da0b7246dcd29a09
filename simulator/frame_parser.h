// Finds command frames in a byte stream.
#ifndef ZRV_SIMULATOR_FRAME_PARSER_H
#define ZRV_SIMULATOR_FRAME_PARSER_H

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "device/protocol.h"

namespace zrv::sim {

struct Frame {
  uint8_t code = 0;
  std::span<const uint8_t> payload;  // valid until the next byte is pushed
};

// A frame ends by its length byte, for names may hold the trailer's value. After anything that is not a
// frame all is dropped up to the next trailer; a trailer between frames is ignored.
class FrameParser {
 public:
  std::optional<Frame> Push(uint8_t byte);
  // Forgets a frame begun; true when there was one.
  bool GiveUp();
  bool idle() const { return size_ == 0 && !skipping_; }
  uint64_t faults() const { return faults_; }

 private:
  bool Fits(uint8_t byte) const;
  void Fault(uint8_t byte);

  std::array<uint8_t, protocol::kMaxFrameBytes> frame_{};
  size_t size_ = 0;
  bool skipping_ = false;
  uint64_t faults_ = 0;
};

}  // namespace zrv::sim

#endif
