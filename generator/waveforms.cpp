// Periodic signals written straight as samples.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <ctime>

#include "ZRVDataGenerator.h"
#include "generator/counts.h"
#include "generator/geometry.h"

namespace {

using zrv::kPi;

// One array: x is the signal. Two: x is the time axis from -1 upward, y the signal, m 255. value(i) is called for
// i = 0, 1, 2, ... in turn.
template <typename Value>
unsigned int WriteWaveform(float* x, float* y, unsigned char* m, unsigned int n, Value value) {
  if (!x || (y && !m)) return 0;
  float* signal = y ? y : x;
  for (unsigned int i = 0; i < n; ++i) signal[i] = value(i);
  if (!y) return n;
  const auto count = static_cast<float>(n);
  for (unsigned int i = 0; i < n; ++i) x[i] = 2.0f * static_cast<float>(i) / count - 1.0f;
  std::fill_n(m, n, static_cast<unsigned char>(255));
  return n;
}

// Walks around a period, from where the phase (radians) starts.
class PeriodCounter {
 public:
  PeriodCounter(unsigned int period, float phase) : period_(period), at_(Offset(period, phase)) {}

  unsigned int Next() {
    const unsigned int at = at_;
    at_ = at + 1 == period_ ? 0 : at + 1;
    return at;
  }

 private:
  static unsigned int Offset(unsigned int period, float phase) {
    // Single precision throughout: its roundings take back most of those of a phase given as a fraction of pi.
    const float samples = std::trunc(static_cast<float>(period) * phase / static_cast<float>(kPi) / 2.0f);
    if (!std::isfinite(samples)) return 0;
    const double within = std::fmod(static_cast<double>(samples), period);
    return static_cast<unsigned int>(within < 0 ? within + period : within);
  }

  unsigned int period_;
  unsigned int at_;
};

// Samples of one period; 0 when there are no cycles, or more than samples.
unsigned int PeriodOf(unsigned int numSamples, unsigned int numCycles) {
  return numCycles == 0 ? 0 : numSamples / numCycles;
}

// The counts of the two-axis test pattern.
struct RQPlan {
  int numSamples = 0;  // 0: fewer than 2 samples a period
  int period = 0;      // samples of one y period

  RQPlan(unsigned int frequency, float xMultiple) {
    constexpr unsigned int kMaxRate = 80000;  // samples a second
    constexpr float kMaxSamples = 12500.0f;
    if (frequency == 0 || !(xMultiple > 0.0f)) return;
    const auto wanted = static_cast<float>(std::min(80u, kMaxRate / frequency));
    const float fitted = std::trunc(std::min(wanted * xMultiple, kMaxSamples));
    const float whole = std::trunc(fitted / xMultiple);  // at most the wanted period
    if (!(whole >= 2.0f)) return;                        // an endless multiple leaves 0
    period = static_cast<int>(whole);
    numSamples = static_cast<int>(whole * xMultiple);
  }
};

// Both the rising and the falling straight of the triangle, -1..1.
float TriangleAt(int i, float n, float risePortion) {
  const auto at = static_cast<float>(i);
  const float rising = n * risePortion;
  if (at < std::trunc(rising)) return at * (2.0f / rising) - 1.0f;
  return 1.0f - (at - rising) * (2.0f / (n - rising));
}

unsigned char RQMark(int i, int period) {
  const int half = i % (period / 2);
  const bool middle = period / 40 < half && half <= 19 * period / 40;
  return static_cast<unsigned char>(1 + (i % 2 ? 2 : 0) + (i % period < period / 2 ? 4 : 0) + (middle ? 0 : 8));
}

}  // namespace

unsigned int ZRVDataGenerator::SineWaveform(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                            float amplitude, unsigned int numCycles, float phase) {
  const double step = numCycles * (2.0 * kPi) / numSamples;
  return WriteWaveform(x, y, m, numSamples, [=](unsigned int i) {
    return static_cast<float>(std::sin(i * step + static_cast<double>(phase)) * static_cast<double>(amplitude));
  });
}

unsigned int ZRVDataGenerator::SawtoothWaveform(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                                float amplitude, unsigned int numCycles, float risePortion,
                                                float phase) {
  const unsigned int period = PeriodOf(numSamples, numCycles);
  if (period == 0) return 0;
  const unsigned int rise = std::max(zrv::WholeCount(static_cast<float>(period) * risePortion), 1u);
  const auto rising = static_cast<float>(rise);
  const auto falling = static_cast<float>(period > rise ? period - rise : 1);
  return WriteWaveform(x, y, m, numSamples, [=, counter = PeriodCounter(period, phase)](unsigned int) mutable {
    const unsigned int u = counter.Next();
    const float v =
        u > rise ? 1.0f - 2.0f * static_cast<float>(u - rise) / falling : 2.0f * static_cast<float>(u) / rising - 1.0f;
    return v * amplitude;
  });
}

unsigned int ZRVDataGenerator::SquareWaveform(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                              float amplitude, unsigned int numCycles, float dutyCycle, float phase) {
  const unsigned int period = PeriodOf(numSamples, numCycles);
  if (period == 0) return 0;
  const unsigned int low = zrv::WholeCount(std::ceil(static_cast<float>(period) * dutyCycle));
  return WriteWaveform(x, y, m, numSamples, [=, counter = PeriodCounter(period, phase)](unsigned int) mutable {
    return counter.Next() < low ? -amplitude : amplitude;
  });
}

unsigned int ZRVDataGenerator::NoiseWaveform(float* data, unsigned int numSamples, float amplitude) {
  if (!data) return 0;
  std::srand(static_cast<unsigned int>(std::time(nullptr)));
  for (size_t i = 0; i < numSamples; ++i) {
    const int value = std::rand() & 0x7FFF;  // 15 bits, all that some systems have
    data[i] = (2.0f * static_cast<float>(value) / 32767.0f - 1.0f) * amplitude;
  }
  return numSamples;
}

unsigned int ZRVDataGenerator::RQWaveform(float* x, float* y, unsigned char* m, unsigned int& outputRate,
                                          bool triangleY, float amplitudeX, float amplitudeY, unsigned int frequency,
                                          float xMultiple, float risePortion, float /*reserved*/) {
  const RQPlan plan(frequency, xMultiple);
  if (!x || !y || !m || plan.numSamples < 1) return 0;
  const int n = plan.numSamples;
  outputRate = frequency * static_cast<unsigned int>(plan.period);
  const double step = 6.2831854820251465 / n;  // 2 pi in single precision, divided in double
  for (int i = 0; i < n; ++i) {
    y[i] = triangleY ? TriangleAt(i, static_cast<float>(n), risePortion) * amplitudeY
                     : static_cast<float>(std::sin(i * step) * static_cast<double>(-amplitudeY));
    x[i] = static_cast<float>(std::sin(i * step * static_cast<double>(xMultiple)) * static_cast<double>(-amplitudeX));
    m[i] = RQMark(i, plan.period);
  }
  m[0] = static_cast<unsigned char>(m[0] + 32);  // start of the pattern
  return static_cast<unsigned int>(n);
}
