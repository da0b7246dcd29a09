// Numbers of 106 bits, each the unevaluated sum of two doubles.
//
// High-order polynomials lose up to fifteen digits to cancellation beside their roots; long double would
// not help on compilers where it is plain double. Sources: T. J. Dekker, A floating-point technique for
// extending the available precision, Numer. Math. 18 (1971); D. E. Knuth, TAOCP 2, section 4.2.2.
#ifndef ZRV_DSPFILTER_DOUBLE_DOUBLE_H
#define ZRV_DSPFILTER_DOUBLE_DOUBLE_H

namespace Dsp {

struct DoubleDouble {
  double high = 0;
  double low = 0;

  constexpr DoubleDouble() = default;
  constexpr DoubleDouble(double value) : high(value) {}
  constexpr DoubleDouble(double h, double l) : high(h), low(l) {}

  constexpr explicit operator double() const { return high + low; }
};

// a + b without error, for |a| >= |b|.
constexpr DoubleDouble QuickSum(double a, double b) {
  const double sum = a + b;
  return {sum, b - (sum - a)};
}

// a + b without error.
constexpr DoubleDouble ExactSum(double a, double b) {
  const double sum = a + b;
  const double part = sum - a;
  return {sum, (a - (sum - part)) + (b - part)};
}

// The upper 26 bits and the rest. Not for values beyond 1e300.
constexpr DoubleDouble Split(double a) {
  const double scaled = 134217729.0 * a;  // 2^27 + 1
  const double high = scaled - (scaled - a);
  return {high, a - high};
}

// a * b without error. Not std::fma, which some run-time libraries round twice.
constexpr DoubleDouble ExactProduct(double a, double b) {
  const double product = a * b;
  const DoubleDouble x = Split(a);
  const DoubleDouble y = Split(b);
  const double error = ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low;
  return {product, error};
}

constexpr DoubleDouble operator-(DoubleDouble a) { return {-a.high, -a.low}; }

constexpr DoubleDouble operator+(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble high = ExactSum(a.high, b.high);
  const DoubleDouble low = ExactSum(a.low, b.low);
  const DoubleDouble sum = QuickSum(high.high, high.low + low.high);
  return QuickSum(sum.high, sum.low + low.low);
}

constexpr DoubleDouble operator-(DoubleDouble a, DoubleDouble b) { return a + -b; }

constexpr DoubleDouble operator*(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble product = ExactProduct(a.high, b.high);
  return QuickSum(product.high, product.low + (a.high * b.low + a.low * b.high));
}

constexpr DoubleDouble operator/(DoubleDouble a, DoubleDouble b) {
  const double first = a.high / b.high;
  const DoubleDouble rest = a - b * first;
  const double second = rest.high / b.high;
  const DoubleDouble rest2 = rest - b * second;
  return QuickSum(first, second) + DoubleDouble(rest2.high / b.high);
}

}  // namespace Dsp

#endif
