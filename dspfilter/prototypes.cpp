#include "dspfilter/prototypes.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

namespace Dsp {
namespace {

// The poles of Butterworth and Chebyshev filters lie on an ellipse, those of a Butterworth filter on the
// circle: -a sin(t) + j b cos(t) with t = (2k + 1) pi / 2n, k = 0..n-1.
// Source: Oppenheim & Schafer, Discrete-Time Signal Processing, appendix B.
Prototype PolesOnEllipse(unsigned order, double a, double b) {
  Prototype result;
  for (unsigned k = 0; k < order / 2; ++k) {
    const double t = (2 * k + 1) * std::numbers::pi / (2 * order);
    result.poles.emplace_back(-a * std::sin(t), b * std::cos(t));
  }
  if (order % 2 != 0) result.realPole = -a;
  return result;
}

Prototype ChebyshevPoles(unsigned order, double ripple) {
  const double mu = std::asinh(1 / ripple) / order;
  return PolesOnEllipse(order, std::sinh(mu), std::cosh(mu));
}

}  // namespace

double RippleSquared(double dB) { return std::expm1(dB * std::numbers::ln10 / 10); }

double RippleStart(unsigned order, double rippleDb) { return order % 2 != 0 ? 1.0 : std::pow(10, -rippleDb / 20); }

Prototype PrototypeFromPoles(std::span<const std::complex<double>> poles) {
  std::vector<std::complex<double>> sorted(poles.begin(), poles.end());
  std::ranges::sort(sorted, std::greater<>{}, [](auto pole) { return pole.imag(); });
  Prototype result;
  result.poles.assign(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2));
  if (sorted.size() % 2 != 0) result.realPole = sorted[sorted.size() / 2].real();
  return result;
}

Prototype Butterworth::MakePrototype(const LowPassRequest& request) { return PolesOnEllipse(request.order, 1, 1); }

Prototype ChebyshevI::MakePrototype(const LowPassRequest& request) {
  Prototype result = ChebyshevPoles(request.order, std::sqrt(RippleSquared(request.rippleDb)));
  result.dcGain = RippleStart(request.order, request.rippleDb);
  return result;
}

// The mirror image of Chebyshev I under s -> 1/s: ripple in the stopband, which starts at 1 rad/s.
Prototype ChebyshevII::MakePrototype(const LowPassRequest& request) {
  Prototype result = ChebyshevPoles(request.order, 1 / std::sqrt(RippleSquared(request.stopbandDb)));
  for (auto& pole : result.poles) pole = 1.0 / std::conj(pole);
  if (result.realPole) result.realPole = 1 / *result.realPole;
  for (unsigned k = 0; k < request.order / 2; ++k) {
    result.zeros.push_back(1 / std::cos((2 * k + 1) * std::numbers::pi / (2 * request.order)));
  }
  return result;
}

}  // namespace Dsp
