#include "simulator/frame_parser.h"

namespace zrv::sim {

using namespace protocol;

namespace {
constexpr size_t kLengthAt = 4;
constexpr size_t kPayloadAt = 5;
}  // namespace

// Whether the byte may stand where it does. The last byte of a frame is looked at too: a length that lies
// ends there.
bool FrameParser::Fits(uint8_t byte) const {
  if (size_ < kFrameHeader.size()) return byte == kFrameHeader[size_];
  if (size_ == kLengthAt) return byte >= kFrameOverhead && byte <= kMaxFrameBytes;
  return size_ < kPayloadAt || size_ + 1 < frame_[kLengthAt] || byte == kTrailer;
}

void FrameParser::Fault(uint8_t byte) {
  const bool alone = size_ == 0 && byte == kTrailer;
  if (!alone) ++faults_;
  size_ = 0;
  skipping_ = byte != kTrailer;
}

std::optional<Frame> FrameParser::Push(uint8_t byte) {
  if (skipping_) {
    skipping_ = byte != kTrailer;
    return std::nullopt;
  }
  if (!Fits(byte)) {
    Fault(byte);
    return std::nullopt;
  }
  frame_[size_++] = byte;
  if (size_ <= kPayloadAt || size_ < frame_[kLengthAt]) return std::nullopt;
  const size_t payload = size_ - kFrameOverhead;
  size_ = 0;
  return Frame{frame_[3], std::span(frame_).subspan(kPayloadAt, payload)};
}

bool FrameParser::GiveUp() {
  const bool begun = !idle();
  if (size_ > 0) ++faults_;  // skipping was counted when it began
  size_ = 0;
  skipping_ = false;
  return begun;
}

}  // namespace zrv::sim
