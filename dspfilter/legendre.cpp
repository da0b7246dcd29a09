// Legendre ("optimum L") low pass: of all filters whose gain only falls, the steepest at the cutoff.
//
// The power gain is 1 / (1 + L(w^2)), where L rises from 0 to 1 over the pass band and its slope is the
// square of a polynomial. Sources: A. Papoulis, Optimum filters with monotonic response, Proc. IRE 46
// (1958); for even orders M. Fukada, Optimum filters of even orders with monotonic response, Trans. IRE
// CT-6 (1959).
#include <cmath>
#include <utility>

#include "dspfilter/prototypes.h"
#include "dspfilter/roots.h"

namespace Dsp {
namespace {

using Polynomial = std::vector<DoubleDouble>;  // coefficient k belongs to x^k

Polynomial Product(const Polynomial& a, const Polynomial& b) {
  Polynomial product(a.size() + b.size() - 1);
  for (size_t i = 0; i < a.size(); ++i) {
    for (size_t j = 0; j < b.size(); ++j) product[i + j] = product[i + j] + a[i] * b[j];
  }
  return product;
}

// sum((2i + 1) P_i(x)) of the Legendre polynomials P_i, i = last, last - step, ..., down to 0 or 1. They
// are made by (i + 1) P_(i+1) = (2i + 1) x P_i - i P_(i-1).
Polynomial LegendreSum(unsigned last, unsigned step) {
  Polynomial sum(last + 1);
  Polynomial previous(last + 2);
  Polynomial current(last + 2);
  current[0] = 1;
  for (unsigned i = 0; i <= last; ++i) {
    const double weight = 2 * i + 1;
    if ((last - i) % step == 0) {
      for (unsigned k = 0; k <= i; ++k) sum[k] = sum[k] + current[k] * weight;
    }
    Polynomial next(last + 2);
    for (unsigned k = 0; k <= i + 1; ++k) {
      const DoubleDouble shifted = k > 0 ? current[k - 1] * weight : DoubleDouble();
      next[k] = (shifted - previous[k] * static_cast<double>(i)) / static_cast<double>(i + 1);
    }
    previous = std::exchange(current, next);
  }
  return sum;
}

// dL/dx but for a factor, in x = 2 w^2 - 1: a square for odd orders, (x + 1) times a square for even ones.
Polynomial Slope(unsigned order) {
  const bool odd = order % 2 != 0;
  const Polynomial sum = LegendreSum((order - 1) / 2, odd ? 1 : 2);
  const Polynomial square = Product(sum, sum);
  return odd ? square : Product(square, {1, 1});
}

DoubleDouble ValueAt(const Polynomial& polynomial, double x) {
  DoubleDouble value;
  for (size_t k = polynomial.size(); k-- > 0;) value = value * x + polynomial[k];
  return value;
}

// 1 + L in x: the integral of the slope, made 1 at x = -1 (0 Hz) and 2 at x = 1 (the cutoff).
Polynomial InversePower(unsigned order) {
  const Polynomial slope = Slope(order);
  Polynomial integral(slope.size() + 1);
  for (size_t k = 0; k < slope.size(); ++k) integral[k + 1] = slope[k] / static_cast<double>(k + 1);
  const DoubleDouble start = ValueAt(integral, -1);
  const DoubleDouble rise = ValueAt(integral, 1) - start;
  for (auto& coefficient : integral) coefficient = coefficient / rise;
  integral[0] = integral[0] - start / rise + 1;
  return integral;
}

}  // namespace

// Where 1 + L vanishes, s^2 = -w^2 = -(x + 1) / 2; of the two roots the stable one is the pole.
Prototype Legendre::MakePrototype(const LowPassRequest& request) {
  auto poles = PolynomialRoots(InversePower(request.order));
  for (auto& pole : poles) pole = -std::sqrt(-(pole + 1.0) / 2.0);
  return PrototypeFromPoles(poles);
}

}  // namespace Dsp
