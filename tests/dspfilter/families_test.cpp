// Every family against formulas that know nothing of poles: polynomials in the frequency.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "tests/dspfilter/responses.h"

namespace {

constexpr double kRipple = 0.25892541179416721;   // 10^(1/10) - 1
constexpr double kStopband = 63094.734448019325;  // 10^(48/10) - 1

double Chebyshev(unsigned n, double x) {
  double previous = 1, current = x;
  for (unsigned i = 1; i < n; ++i) previous = std::exchange(current, 2 * x * current - previous);
  return current;
}

// The Butterworth polynomial, whose coefficients follow from each other: a[k] / a[k-1] = cos((k - 1) g) / sin(k g)
// with g = pi / 2n.
Complex Butterworth(unsigned n, double w) {
  const double g = std::numbers::pi / (2 * n);
  Complex sum = 1, power = 1;
  double coefficient = 1;
  for (unsigned k = 1; k <= n; ++k) {
    coefficient *= std::cos((k - 1) * g) / std::sin(k * g);
    power *= Complex(0, w);
    sum += coefficient * power;
  }
  return 1.0 / sum;
}

// The reverse Bessel polynomial by its recurrence, relative to its value at 0.
Complex BesselByDelay(unsigned n, double w) {
  const Complex s(0, w);
  Complex previous = 1, current = s + 1.0;
  double atZero = 1;
  for (unsigned i = 2; i <= n; ++i) {
    previous = std::exchange(current, (2 * i - 1.0) * current + s * s * previous);
    atZero *= 2 * i - 1;
  }
  return atZero / current;
}

Complex Bessel(unsigned n, double w) {
  double low = 0, high = 20;
  for (int i = 0; i < 60; ++i) {
    const double middle = (low + high) / 2;
    (std::norm(BesselByDelay(n, middle)) > 0.5 ? low : high) = middle;
  }
  return BesselByDelay(n, w * low);
}

// L of the Legendre filter by Simpson's rule over the square that is its slope.
double LegendreIntegral(unsigned n, double to) {
  const auto slope = [n](double x) {
    const unsigned last = (n - 1) / 2, step = n % 2 != 0 ? 1 : 2;
    double previous = 0, current = 1, sum = 0;
    for (unsigned i = 0; i <= last; ++i) {
      if ((last - i) % step == 0) sum += (2 * i + 1) * current;
      previous = std::exchange(current, ((2 * i + 1) * x * current - i * previous) / (i + 1));
    }
    return sum * sum * (n % 2 != 0 ? 1 : x + 1);
  };
  constexpr int kSteps = 20000;
  const double h = (to + 1) / kSteps;
  double sum = slope(-1) + slope(to);
  for (int i = 1; i < kSteps; ++i) sum += (i % 2 != 0 ? 4 : 2) * slope(-1 + i * h);
  return sum * h / 3;
}

double ButterworthPower(unsigned n, double w) { return 1 / (1 + std::pow(w, 2.0 * n)); }
double BesselPower(unsigned n, double w) { return std::norm(Bessel(n, w)); }
double ChebyshevIPower(unsigned n, double w) { return 1 / (1 + kRipple * std::pow(Chebyshev(n, w), 2)); }
double ChebyshevIIPower(unsigned n, double w) {
  return 1 / (1 + kStopband / std::pow(Chebyshev(n, 1 / w), 2));
}
double LegendrePower(unsigned n, double w) {
  return 1 / (1 + LegendreIntegral(n, 2 * w * w - 1) / LegendreIntegral(n, 1));
}

const struct {
  const char* family;
  double (*power)(unsigned n, double w);
} kPowers[] = {
    {"Bessel", BesselPower},           {"Butterworth", ButterworthPower}, {"ChebyshevI", ChebyshevIPower},
    {"ChebyshevII", ChebyshevIIPower}, {"Legendre", LegendrePower},
};

const Family& Find(const std::string& name) {
  return *std::ranges::find(kFamilies, name, [](const Family& family) { return std::string(family.name); });
}

TEST(Families, MagnitudeFollowsTheFormula) {
  for (const auto& row : kPowers) {
    for (const unsigned order : {1u, 2u, 3u, 4u, 5u, 8u, 13u, 20u}) {
      for (const double w : {0.01, 0.3, 0.77, 0.98, 1.0, 1.03, 1.7}) {
        const double expected = std::sqrt(row.power(order, w));
        for (const double cutoff : {0.001, 0.05, 0.25, 0.45}) {
          const double got = std::abs(ResponseAt(Find(row.family).make(order, cutoff), cutoff, w));
          EXPECT_NEAR(got / expected, 1, 1e-8) << row.family << order << " at " << w << ", cutoff " << cutoff;
        }
      }
    }
  }
}

TEST(Families, PhaseFollowsTheFormula) {
  for (unsigned order = 1; order <= 20; ++order) {
    for (const double w : {0.01, 0.3, 0.77, 1.0, 1.7}) {
      const Complex bessel = ResponseAt(Find("Bessel").make(order, 0.1), 0.1, w);
      EXPECT_NEAR(std::abs(bessel / Bessel(order, w) - 1.0), 0, 1e-9) << "Bessel" << order << " at " << w;
      const Complex butterworth = ResponseAt(Find("Butterworth").make(order, 0.1), 0.1, w);
      EXPECT_NEAR(std::abs(butterworth / Butterworth(order, w) - 1.0), 0, 1e-9) << order << " at " << w;
    }
  }
}

// Analog responses from an unrelated program's transfer functions (scipy.signal, analog=True; Legendre
// from the textbook polynomials L3 and L6).
const struct {
  const char* family;
  unsigned order;
  double w;
  Complex response;
} kKnown[] = {
    {"ChebyshevI", 3, 1, {-0.803588824358382, -0.385451989345747}},
    {"ChebyshevI", 6, 3, {-9.50984915682275e-05, -3.1759346606796e-05}},
    {"ChebyshevII", 3, 1, {-0.00192441633869472, 0.00348504715606202}},
    {"ChebyshevII", 6, 3, {-0.00114488991675855, -0.00138466302857364}},
    {"Elliptic", 3, 0.3, {0.719254764563572, -0.589042938852028}},
    {"Elliptic", 3, 3, {-0.00236006970440667, 0.0065924862075547}},
    {"Elliptic", 6, 0.8, {-0.886043968478799, 0.460868334040395}},
    {"Elliptic", 6, 1, {0.8768134885363, -0.159769649949815}},
    {"Elliptic", 6, 1.4, {0.000880293819274649, 0.000958594194222778}},
    {"Legendre", 3, 1.4, {-0.245981719020199, 0.10392450223777}},
    {"Legendre", 6, 0.8, {-0.398438284039861, 0.848067645938288}},
    {"Legendre", 6, 3, {-0.000184508256569673, -0.000124873367782632}},
};

TEST(Families, ComplexResponseMatchesKnownValues) {
  for (const auto& row : kKnown) {
    for (const double cutoff : {0.02, 0.3}) {
      const Complex got = ResponseAt(Find(row.family).make(row.order, cutoff), cutoff, row.w);
      EXPECT_NEAR(std::abs(got / row.response - 1.0), 0, 1e-9) << row.family << row.order << " at " << row.w;
    }
  }
}

// Golden section search for the extreme value between a and b.
double Extreme(const std::function<double(double)>& f, double a, double b, double sign) {
  constexpr double kGolden = 0.6180339887498949;
  for (int i = 0; i < 60; ++i) {
    const double c = b - kGolden * (b - a), d = a + kGolden * (b - a);
    (sign * f(c) > sign * f(d) ? b : a) = sign * f(c) > sign * f(d) ? d : c;
  }
  return f((a + b) / 2);
}

// The turning points of f over from..to with points crowding towards `to`, where ripples are narrowest.
std::vector<double> TurningValues(const std::function<double(double)>& f, double from, double to) {
  constexpr int kPoints = 40000;
  const auto at = [&](int i) { return to + (from - to) * std::exp(-18.0 * i / kPoints); };
  std::vector<double> values;
  for (int i = 1; i < kPoints; ++i) {
    const double before = f(at(i)) - f(at(i - 1)), after = f(at(i + 1)) - f(at(i));
    if (before * after < 0) values.push_back(Extreme(f, at(i - 1), at(i + 1), before > 0 ? 1 : -1));
  }
  return values;
}

double PowerDb(const Dsp::Cascade& cascade, double w) {
  return 10 * std::log10(std::norm(ResponseAt(cascade, 0.2, w)));
}

TEST(Families, PassbandRipplesAreEqualAndCounted) {
  for (const std::string name : {"ChebyshevI", "Elliptic"}) {
    for (const unsigned order : {2u, 3u, 6u, 9u, 20u}) {
      const auto cascade = Find(name).make(order, 0.2);
      const auto turns = TurningValues([&](double w) { return PowerDb(cascade, w); }, 1e-6, 1);
      ASSERT_EQ(turns.size(), order - 1) << name << order;
      for (size_t i = 0; i < turns.size(); ++i) {
        EXPECT_NEAR(turns[turns.size() - 1 - i], i % 2 == 0 ? 0 : -1, 1e-6) << name << order;
      }
      EXPECT_NEAR(PowerDb(cascade, 1), -1, 1e-6) << name << order;
      EXPECT_NEAR(PowerDb(cascade, 0), order % 2 != 0 ? 0 : -1, 1e-9) << name << order;
    }
  }
}

// Over 1/w, so that the far end of the stopband comes within reach; maxima only, the zeros lie between.
TEST(Families, StopbandRipplesAreEqualAndCounted) {
  for (const std::string name : {"ChebyshevII", "Elliptic"}) {
    for (const unsigned order : {2u, 3u, 6u, 9u, 20u}) {
      const auto cascade = Find(name).make(order, 0.2);
      auto turns = TurningValues([&](double v) { return PowerDb(cascade, 1 / v); }, 1e-6, 1);
      std::erase_if(turns, [](double dB) { return dB < -60 || dB > -2; });  // zeros; elliptic pass-band edge
      ASSERT_EQ(turns.size(), (order - 1) / 2) << name << order;
      for (const double dB : turns) EXPECT_NEAR(dB, -48, 1e-6) << name << order;
    }
  }
  EXPECT_NEAR(PowerDb(Find("ChebyshevII").make(7, 0.2), 1), -48, 1e-6);
}

}  // namespace
