// What all device objects share: the command being sent, the staging and receive buffers, the read time-out.
// Unguarded: one thread at a time may call into any device.
#ifndef ZRV_DEVICE_COMMAND_BUFFER_H
#define ZRV_DEVICE_COMMAND_BUFFER_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "device/protocol.h"

namespace zrv {

constexpr unsigned int kDefaultReadTimeoutMs = 2000;  // each acknowledgement and answer
constexpr unsigned int kDefaultCapacity = 25000;      // samples
constexpr size_t kReceiveBufferBytes = 500000;
constexpr unsigned int kClearReadBytes = 131072;      // also the driver's queue sizes
constexpr uint8_t kFiller = 0xDC;                    // what an answer byte that did not arrive reads as
constexpr size_t kMoveSamples = 50000;                // longest move to a position

// The command byte, its payload and the payload's length. Filled by chaining:
//   NewCommand(kCmdSetSampleRate).U24(samplesPerSecond);
// The payload area is also where answers are read to and sample blocks are packed.
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
      payload_[payloadLength_++] = static_cast<uint8_t>(value >> (8 * i));
    }
    return *this;
  }
  CommandBuffer& U8(uint32_t value) { return Put(value, 1); }
  CommandBuffer& U16(uint32_t value) { return Put(value, 2); }
  CommandBuffer& U24(uint32_t value) { return Put(value, 3); }

  // The complete frame; valid until the next call.
  std::span<const uint8_t> Frame();

  // The payload area, grown when it holds fewer bytes.
  std::span<uint8_t> Area(size_t bytes) {
    if (payload_.size() < bytes) payload_.resize(bytes);
    return std::span(payload_).first(bytes);
  }

 private:
  uint8_t command_ = 0;
  uint32_t payloadLength_ = 0;
  std::vector<uint8_t> payload_ = std::vector<uint8_t>(kDefaultCapacity * protocol::kMaxBytesPerSample);
  uint8_t frame_[protocol::kMaxFrameBytes] = {};
};

struct SharedState {
  CommandBuffer command;
  unsigned int readTimeoutMs = kDefaultReadTimeoutMs;
  std::vector<uint8_t> received = std::vector<uint8_t>(kReceiveBufferBytes);
  std::vector<float> moveX = std::vector<float>(kMoveSamples);
  std::vector<float> moveY = std::vector<float>(kMoveSamples);
  std::vector<uint8_t> moveM = std::vector<uint8_t>(kMoveSamples);
};

SharedState& Shared();

inline CommandBuffer& NewCommand(uint8_t code) { return Shared().command.Begin(code); }

}  // namespace zrv

#endif
