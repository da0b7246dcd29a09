// Elliptic (Cauer) low pass by Jacobi's elliptic functions.
//
// Source of the formulas: S. J. Orfanidis, Lecture Notes on Elliptic Filter Design (2006); nome and
// products: Abramowitz & Stegun, chapters 16 and 17. A modulus is carried together with its complement,
// because either may be so close to 1 that the other could not be had from it by subtraction.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "dspfilter/prototypes.h"

namespace Dsp {
namespace {

using std::numbers::pi;
using Complex = std::complex<double>;

struct Modulus {
  double k;
  double complement;  // sqrt(1 - k^2)
};

double ArithmeticGeometricMean(double a, double b) {
  for (int i = 0; i < 40 && std::abs(a - b) > 1e-16 * a; ++i) {
    const double mean = (a + b) / 2;
    b = std::sqrt(a * b);
    a = mean;
  }
  return a;
}

// q = exp(-pi K'/K); the quarter periods are to each other as the means with the moduli exchanged.
double Nome(Modulus m) {
  return std::exp(-pi * ArithmeticGeometricMean(1, m.complement) / ArithmeticGeometricMean(1, m.k));
}

// Theta functions as products, all of whose factors are positive: no digit is lost at either end.
Modulus ModulusOfNome(double q) {
  double k = 1;
  double complement = 1;
  for (double odd = q; odd > 1e-18; odd *= q * q) {
    k *= (1 + odd * q) / (1 + odd);
    complement *= (1 - odd) / (1 + odd);
  }
  return {4 * std::sqrt(q) * std::pow(k, 4), std::pow(complement, 4)};
}

// The moduli of a descending Landen transformation, the first one included; the last is negligible.
std::vector<double> Landen(Modulus m) {
  std::vector<double> moduli = {m.k};
  while (moduli.back() > 1e-18 && moduli.size() < 20) {
    const double root = m.k / (1 + m.complement);
    m = {root * root, 2 * std::sqrt(m.complement) / (1 + m.complement)};
    moduli.push_back(m.k);
  }
  return moduli;
}

// cd(uK, k) from cos(u pi/2), and sn(uK, k) from sin(u pi/2): the same ascent serves both.
Complex Ascend(Complex w, const std::vector<double>& moduli) {
  for (size_t i = moduli.size() - 1; i > 0; --i) w = (1 + moduli[i]) * w / (1.0 + moduli[i] * w * w);
  return w;
}

// The u of sn(j u K, k) = j t.
double InverseImaginarySn(double t, const std::vector<double>& moduli) {
  for (size_t i = 1; i < moduli.size(); ++i) {
    const double scaled = moduli[i - 1] * t;
    t = 2 * t / ((1 + moduli[i]) * (1 + std::sqrt(1 + scaled * scaled)));
  }
  return 2 / pi * std::asinh(t);
}

// The selectivity k that an order reaches with given ripples: the nome's n-th root (degree equation).
std::vector<double> SelectivityModuli(unsigned order, Modulus ripples) {
  return Landen(ModulusOfNome(std::pow(Nome(ripples), 1.0 / order)));
}

}  // namespace

Prototype Elliptic::MakePrototype(const LowPassRequest& request) {
  const double pass = RippleSquared(request.rippleDb);
  const double stop = RippleSquared(request.stopbandDb);
  const Modulus ripples = {std::sqrt(pass / stop), std::sqrt((stop - pass) / stop)};
  const auto moduli = SelectivityModuli(request.order, ripples);
  const double v = InverseImaginarySn(1 / std::sqrt(pass), Landen(ripples)) / request.order;

  Prototype result;
  for (unsigned i = 0; i < request.order / 2; ++i) {
    const double u = (2 * i + 1.0) / request.order;
    result.zeros.push_back(1 / (moduli[0] * Ascend(std::cos(u * pi / 2), moduli).real()));
    const Complex pole = Complex(0, 1) * Ascend(std::cos(Complex(u, -v) * (pi / 2)), moduli);
    result.poles.emplace_back(-std::abs(pole.real()), std::abs(pole.imag()));
  }
  if (request.order % 2 != 0) {
    result.realPole = -Ascend(std::sin(Complex(0, v) * (pi / 2)), moduli).imag();
  }
  result.dcGain = RippleStart(request.order, request.rippleDb);
  return result;
}

}  // namespace Dsp
