// The way of a sample into a filter's double arithmetic and back.
#ifndef ZRV_DSPFILTER_SAMPLES_H
#define ZRV_DSPFILTER_SAMPLES_H

#include <algorithm>
#include <cmath>
#include <limits>

namespace Dsp {

// Added to every sample. When the input falls silent the state settles at this level instead of decaying
// into denormal numbers, which cost a hundred times the time. It is far below what single precision holds.
inline constexpr double kQuiet = 1e-60;

// Takes the samples of one channel. Not-a-number and infinities would stay in a recursive filter for
// ever, so they are replaced by the last finite sample (0 before the first).
class SampleInput {
 public:
  double Take(float sample) {
    if (std::isfinite(sample)) last_ = sample;
    return last_ + kQuiet;
  }

 private:
  float last_ = 0.0f;
};

// Rounds to single precision: held inside its range, and 0 where only a denormal would be left.
inline float ToSample(double value) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  constexpr double kSmallest = std::numeric_limits<float>::min();
  const double held = std::clamp(value, -kLargest, kLargest);
  return static_cast<float>(std::abs(held) < kSmallest ? 0.0 : held);
}

}  // namespace Dsp

#endif
