// The command being made: its code and its payload.
#ifndef ZRV_DEVICE_COMMAND_BUFFER_H
#define ZRV_DEVICE_COMMAND_BUFFER_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "device/protocol.h"

namespace zrv {

constexpr unsigned int kDefaultCapacity = 25000;  // samples

// Filled by chaining: Begin(kCmdSetSampleRate).U24(samplesPerSecond). The payload area is also where most answers are
// read to and where sample blocks are packed: what one leaves there, the next one finds.
class CommandBuffer {
 public:
  CommandBuffer& Begin(uint8_t code) {
    command_ = code;
    payloadLength_ = 0;
    return *this;
  }

  // width bytes, least significant first. What would not fit into a frame is left out.
  CommandBuffer& Put(uint32_t value, int width) {
    for (int i = 0; i < width && payloadLength_ < protocol::kMaxPayloadBytes; ++i) {
      area_[payloadLength_++] = static_cast<uint8_t>(value >> (8 * i));
    }
    return *this;
  }
  CommandBuffer& U8(uint32_t value) { return Put(value, 1); }
  CommandBuffer& U16(uint32_t value) { return Put(value, 2); }
  CommandBuffer& U24(uint32_t value) { return Put(value, 3); }

  // The complete frame; valid until the next call.
  std::span<const uint8_t> Frame() {
    const size_t length = payloadLength_ + protocol::kFrameOverhead;
    uint8_t* out = std::copy(protocol::kFrameHeader.begin(), protocol::kFrameHeader.end(), frame_);
    *out++ = command_;
    *out++ = static_cast<uint8_t>(length);
    out = std::copy_n(area_.begin(), payloadLength_, out);
    *out = protocol::kTrailer;
    return std::span(frame_).first(length);
  }

  // The start of the payload area, which is grown when it holds fewer bytes.
  std::span<uint8_t> Area(size_t bytes) {
    if (area_.size() < bytes) area_.resize(bytes);
    return std::span(area_).first(bytes);
  }

 private:
  uint8_t command_ = 0;
  size_t payloadLength_ = 0;
  std::vector<uint8_t> area_ = std::vector<uint8_t>(kDefaultCapacity * protocol::kMaxBytesPerSample);
  uint8_t frame_[protocol::kMaxFrameBytes] = {};
};

}  // namespace zrv

#endif
