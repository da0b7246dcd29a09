// The way of a sample into a filter's double arithmetic and back.
#ifndef ZRV_DSPFILTER_SAMPLES_H
#define ZRV_DSPFILTER_SAMPLES_H

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace Dsp {

// Added to every sample. When the input falls silent the state settles at this level instead of decaying
// into denormal numbers, which cost a hundred times the time. It is far below what single precision holds.
inline constexpr double kQuiet = 1e-60;

// Within +-2^112, about 5e33: far beyond any position, and so far below the end of single precision that no
// overshoot of a filter leaves it. False for infinities and not-a-number.
inline bool IsUsable(float sample) {
  constexpr uint32_t kExponent = 0x7F800000;
  constexpr uint32_t kLimit = (127 + 112) << 23;
  return (std::bit_cast<uint32_t>(sample) & kExponent) < kLimit;
}

// One channel's input. Not-a-number and infinities would stay in a recursive filter for ever, so what is
// not usable is replaced by the last usable sample (0 before the first).
class SampleInput {
 public:
  float Take(float sample) {
    if (IsUsable(sample)) last_ = sample;
    return last_;
  }

  // The same for a block: gives samples itself when all are usable, else the corrected ones in scratch.
  const float* Take(const float* samples, unsigned count, float* scratch) {
    uint32_t numOdd = 0;  // a count, not a flag: it is what compilers make vector code of
    for (unsigned i = 0; i < count; ++i) numOdd += IsUsable(samples[i]) ? 0 : 1;
    if (numOdd == 0) {
      if (count > 0) last_ = samples[count - 1];
      return samples;
    }
    std::transform(samples, samples + count, scratch, [this](float sample) { return Take(sample); });
    return scratch;
  }

 private:
  float last_ = 0.0f;
};

// Rounds to single precision, and to 0 where only a denormal would be left.
inline float ToSample(double value) {
  constexpr double kSmallest = std::numeric_limits<float>::min();
  return static_cast<float>(std::abs(value) < kSmallest ? 0.0 : value);
}

}  // namespace Dsp

#endif
