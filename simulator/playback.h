// Which sample of the block is put out, counted in ticks of the sample clock.
#ifndef ZRV_SIMULATOR_PLAYBACK_H
#define ZRV_SIMULATOR_PLAYBACK_H

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "simulator/sample_block.h"

namespace zrv::sim {

class Playback {
 public:
  static constexpr uint64_t kEndless = std::numeric_limits<uint64_t>::max();

  // A block that replaces another while playing starts at its first sample, for as many rounds as asked
  // for when the play was started.
  void Load(std::vector<Sample> block);
  // Plays the block so many times, 0 without end; nothing without a block.
  void Start(uint32_t rounds);
  void Stop() { playing_ = false; }
  void Clear() { *this = Playback(); }

  // The next sample. Only while TicksToEnd() is not 0.
  const Sample& Next();
  // Passes over ticks as if they had been played.
  void Skip(uint64_t ticks) { played_ += ticks; }
  // Samples still to be put out; kEndless without an end. 0 once the last one was, until Stop.
  uint64_t TicksToEnd() const;

  bool playing() const { return playing_; }
  const std::vector<Sample>& block() const { return block_; }
  uint32_t rounds() const { return static_cast<uint32_t>(rounds_); }
  // Of the sample last put out.
  uint32_t index() const;
  // Samples still to play: of all rounds, or of the round under way when there is no end. At most 24 bits.
  uint32_t Remaining() const;

 private:
  std::vector<Sample> block_;
  bool playing_ = false;
  uint64_t rounds_ = 0;
  uint64_t played_ = 0;  // since the start
};

}  // namespace zrv::sim

#endif
