#include "simulator/playback.h"

#include <utility>

namespace zrv::sim {

void Playback::Load(std::vector<Sample> block) {
  block_ = std::move(block);
  played_ = 0;
}

void Playback::Start(uint32_t rounds) {
  playing_ = !block_.empty();
  rounds_ = rounds;
  played_ = 0;
}

const Sample& Playback::Next() { return block_[played_++ % block_.size()]; }

uint64_t Playback::TicksToEnd() const {
  if (!playing_) return 0;
  return rounds_ == 0 ? kEndless : rounds_ * block_.size() - played_;
}

uint32_t Playback::index() const {
  if (played_ == 0 || block_.empty()) return 0;
  return static_cast<uint32_t>((played_ - 1) % block_.size());
}

uint32_t Playback::Remaining() const {
  if (!playing_) return 0;
  const uint64_t left = rounds_ == 0 ? block_.size() - 1 - index() : TicksToEnd();
  return static_cast<uint32_t>(std::min<uint64_t>(left, 0xFFFFFF));
}

}  // namespace zrv::sim
