#include <cmath>

#include "dspfilter/prototypes.h"
#include "dspfilter/roots.h"

namespace Dsp {
namespace {

// The reverse Bessel polynomial: coefficient k is (2n-k)! / (2^(n-k) k! (n-k)!), here by the ratio of
// neighbours from x^n downwards. Source: Storch, Synthesis of constant-time-delay ladder networks using
// Bessel polynomials, Proc. IRE 42 (1954).
std::vector<DoubleDouble> ReverseBessel(unsigned n) {
  std::vector<DoubleDouble> coefficients(n + 1);
  coefficients[n] = 1;
  for (unsigned k = n; k-- > 0;) {
    coefficients[k] =
        coefficients[k + 1] * static_cast<double>((2 * n - k) * (k + 1)) / static_cast<double>(2 * (n - k));
  }
  return coefficients;
}

double PowerAt(double frequency, std::span<const std::complex<double>> poles) {
  double power = 1;
  for (auto pole : poles) power /= std::norm(1.0 - std::complex<double>(0, frequency) / pole);
  return power;
}

// The frequency of half power. The gain of a Bessel filter only falls, so halving the interval finds it.
double HalfPowerFrequency(std::span<const std::complex<double>> poles) {
  double low = 0;
  double high = static_cast<double>(poles.size());  // the delay is 1 s, so the gain is down long before
  for (int i = 0; i < 80; ++i) {
    const double middle = (low + high) / 2;
    (PowerAt(middle, poles) > 0.5 ? low : high) = middle;
  }
  return low;
}

}  // namespace

// As derived the filter has a delay of 1 s; the poles are scaled so that it has half power at 1 rad/s.
Prototype Bessel::MakePrototype(const LowPassRequest& request) {
  auto poles = PolynomialRoots(ReverseBessel(request.order));
  const double cutoff = HalfPowerFrequency(poles);
  for (auto& pole : poles) pole /= cutoff;
  return PrototypeFromPoles(poles);
}

}  // namespace Dsp
