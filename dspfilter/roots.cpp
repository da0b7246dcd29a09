#include "dspfilter/roots.h"

#include <cmath>
#include <numbers>

namespace Dsp {
namespace {

using Complex = std::complex<double>;

struct WideComplex {
  DoubleDouble re, im;

  explicit operator Complex() const { return {static_cast<double>(re), static_cast<double>(im)}; }
};

// p(z) / p'(z). Only the value suffers from cancellation beside a root; the slope needs no extra digits.
Complex NewtonStep(std::span<const DoubleDouble> coefficients, const WideComplex& z) {
  WideComplex value;
  Complex slope;
  for (size_t k = coefficients.size(); k-- > 0;) {
    slope = slope * Complex(z) + Complex(value);
    value = {value.re * z.re - value.im * z.im + coefficients[k], value.re * z.im + value.im * z.re};
  }
  return Complex(value) / slope;
}

// On a circle whose radius is the geometric mean of the roots, off every axis of symmetry.
std::vector<WideComplex> StartingPoints(std::span<const DoubleDouble> coefficients) {
  const size_t degree = coefficients.size() - 1;
  const double radius =
      std::pow(std::abs(coefficients.front().high / coefficients.back().high), 1.0 / static_cast<double>(degree));
  std::vector<WideComplex> points(degree);
  for (size_t i = 0; i < degree; ++i) {
    const double turn = (static_cast<double>(i) + 0.35) / static_cast<double>(degree);
    const Complex z = std::polar(radius, 2 * std::numbers::pi * turn);
    points[i] = {z.real(), z.imag()};
  }
  return points;
}

Complex Repulsion(const std::vector<WideComplex>& roots, size_t self) {
  Complex sum;
  for (size_t j = 0; j < roots.size(); ++j) {
    if (j != self) sum += 1.0 / (Complex(roots[self]) - Complex(roots[j]));
  }
  return sum;
}

}  // namespace

// Source: O. Aberth, Iteration methods for finding all zeros of a polynomial simultaneously, Math. Comp.
// 27 (1973). Convergence is cubic, so a step below 1e-12 leaves nothing that a double could hold.
std::vector<Complex> PolynomialRoots(std::span<const DoubleDouble> coefficients) {
  constexpr int kMaxRounds = 200;  // about 20 are needed at degree 20
  auto roots = StartingPoints(coefficients);
  bool moving = true;
  for (int round = 0; round < kMaxRounds && moving; ++round) {
    moving = false;
    for (size_t i = 0; i < roots.size(); ++i) {
      const Complex newton = NewtonStep(coefficients, roots[i]);
      const Complex step = newton / (1.0 - newton * Repulsion(roots, i));
      roots[i] = {roots[i].re - step.real(), roots[i].im - step.imag()};
      moving = moving || std::abs(step) > 1e-12 * std::abs(Complex(roots[i]));
    }
  }
  return {roots.begin(), roots.end()};
}

}  // namespace Dsp
