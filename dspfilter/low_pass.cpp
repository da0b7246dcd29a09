#include "dspfilter/low_pass.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <utility>

namespace Dsp {
namespace {

// Like std::clamp, and missing for not-a-number.
double Held(double value, double lowest, double highest, double missing) {
  return std::isnan(value) ? missing : std::clamp(value, lowest, highest);
}

double CutoffFraction(double cutoff, double sampleRate) {
  if (!(sampleRate > 0) || std::isinf(sampleRate)) return kLowestCutoff;
  return Held(cutoff / sampleRate, kLowestCutoff, kHighestCutoff, kLowestCutoff);
}

double QualityFactor(std::complex<double> pole) { return std::abs(pole) / (-2 * pole.real()); }

// Takes out of zeros the one nearest to the pole; without any left, both zeros lie at infinity.
std::optional<double> TakeNearest(std::vector<double>& zeros, std::complex<double> pole) {
  if (zeros.empty()) return std::nullopt;
  const auto nearest =
      std::ranges::min_element(zeros, {}, [&](double zero) { return std::abs(pole - std::complex<double>(0, zero)); });
  const double zero = *nearest;
  zeros.erase(nearest);
  return zero;
}

// z = (1 + s) / (1 - s) for a pair of poles and its zeros, s scaled by the warped cutoff. Written out, so
// that a2 keeps its digits when the poles are near 1. Zeros at infinity come to lie at z = -1.
Biquad DigitalBiquad(std::complex<double> pole, std::optional<double> zero, double warped) {
  const double real = pole.real() * warped;
  const double square = std::norm(pole) * warped * warped;
  const double scale = 1 - 2 * real + square;
  const double zeroSquare = zero ? *zero * *zero * warped * warped : 0;
  const double b1 = zero ? 2 * (zeroSquare - 1) / (zeroSquare + 1) : 2;
  return {b1, 2 * (square - 1) / scale, (1 + 2 * real + square) / scale};
}

}  // namespace

LowPassRequest ReadLowPass(const Params& params, unsigned maxOrder) {
  const auto value = [&](std::string_view name) { return params.Get(name, std::nan("")); };
  LowPassRequest request;
  request.order = static_cast<unsigned>(Held(value(kOrder), 1, maxOrder, 1));
  request.cutoff = CutoffFraction(value(kCutoffFrequency), value(kSampleRate));
  request.rippleDb = Held(value(kRippleDb), 1e-4, 12, 1);
  request.stopbandDb = Held(value(kStopbandDb), request.rippleDb + 1, 200, 48);
  return request;
}

// The poles nearest to the axis choose their zeros first, for they have most to gain: a peak beside its
// notch. The gain at 0 Hz is made right with the rounded coefficients, which at low cutoffs differ from
// the exact ones by more than a small gain error.
Cascade DigitalCascade(const Prototype& prototype, double cutoff) {
  const double warped = std::tan(std::numbers::pi * cutoff);
  auto poles = prototype.poles;
  auto zeros = prototype.zeros;
  std::ranges::sort(poles, std::greater<>{}, QualityFactor);
  Cascade cascade;
  cascade.order = static_cast<unsigned>(2 * poles.size()) + (prototype.realPole ? 1 : 0);
  cascade.gain = prototype.dcGain;
  for (const auto pole : poles) {
    const Biquad biquad = DigitalBiquad(pole, TakeNearest(zeros, pole), warped);
    cascade.gain *= ((1 + biquad.a1) + biquad.a2) / (2 + biquad.b1);
    cascade.biquads.push_back(biquad);
  }
  std::ranges::reverse(cascade.biquads);
  if (prototype.realPole) {
    const double pole = *prototype.realPole * warped;
    cascade.firstOrderA1 = -(1 + pole) / (1 - pole);
    cascade.gain *= (1 + *cascade.firstOrderA1) / 2;
  }
  return cascade;
}

}  // namespace Dsp
