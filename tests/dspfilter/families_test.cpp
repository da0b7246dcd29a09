// Every family against responses worked out elsewhere, and against what its ripples are known to look like.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/dspfilter/responses.h"

namespace {

const Family& Find(const std::string& name) {
  return *std::ranges::find(kFamilies, name, [](const Family& family) { return std::string(family.name); });
}

// Analog responses. Bessel: from its polynomials, in exact fractions. Butterworth: from its polynomials, in double
// precision. The others: from an unrelated program's transfer functions (scipy.signal, analog=True; Legendre from the
// textbook polynomials L3 and L6).
const struct {
  const char* family;
  unsigned order;
  double w;
  Complex response;
} kKnown[] = {
    {"Bessel", 1, 0.3, {0.917431192660551, -0.275229357798165}},
    {"Bessel", 2, 1.7, {-0.131538480288685, -0.387329595552708}},
    {"Bessel", 5, 1.7, {-0.202722590642066, 0.249086714414701}},
    {"Bessel", 20, 1.7, {-0.291542960580878, -0.211581780386545}},
    {"Butterworth", 1, 1.03, {0.485224901741957, -0.499781648794216}},
    {"Butterworth", 2, 0.3, {0.902688225374467, -0.420855142061233}},
    {"Butterworth", 5, 0.3, {0.554962755643192, -0.831871645738562}},
    {"Butterworth", 20, 1.03, {-0.326555132328723, 0.357758708330835}},
    {"ChebyshevI", 3, 1, {-0.803588824358382, -0.385451989345747}},
    {"ChebyshevI", 6, 3, {-9.50984915682275e-05, -3.1759346606796e-05}},
    {"ChebyshevII", 3, 1, {-0.00192441633869472, 0.00348504715606202}},
    {"ChebyshevII", 6, 3, {-0.00114488991675855, -0.00138466302857364}},
    {"Elliptic", 3, 3, {-0.00236006970440667, 0.0065924862075547}},
    {"Elliptic", 6, 0.8, {-0.886043968478799, 0.460868334040395}},
    {"Legendre", 3, 1.4, {-0.245981719020199, 0.10392450223777}},
    {"Legendre", 6, 3, {-0.000184508256569673, -0.000124873367782632}},
};

TEST(Families, ComplexResponseMatchesKnownValues) {
  for (const auto& row : kKnown) {
    for (const double cutoff : {0.001, 0.02, 0.3, 0.45}) {
      const Complex got = ResponseAt(Find(row.family).make(row.order, cutoff), cutoff, row.w);
      EXPECT_NEAR(std::abs(got / row.response - 1.0), 0, 1e-8) << row.family << row.order << " at " << row.w;
    }
  }
  // The integral of the squared Legendre sums, in exact fractions.
  for (const auto& [order, gain] :
       {std::pair{2u, 0.68591222807305}, {13, 0.257307054085022}, {20, 0.0743355916130236}}) {
    EXPECT_NEAR(std::abs(ResponseAt(Find("Legendre").make(order, 0.2), 0.2, 1.03)), gain, 1e-9) << order;
  }
}

// The values of f at its turning points over from..to, with points crowding towards `to`, where ripples are
// narrowest. A parabola through three neighbours finds the height between them.
std::vector<double> TurningValues(const std::function<double(double)>& f, double from, double to) {
  constexpr int kPoints = 40000;
  const auto at = [&](int i) { return to + (from - to) * std::exp(-18.0 * i / kPoints); };
  std::vector<double> values;
  double last = f(at(0)), middle = f(at(1));
  for (int i = 2; i <= kPoints; ++i) {
    const double next = f(at(i));
    if ((middle - last) * (next - middle) < 0) {
      const double slope = (next - last) / 2, bend = next - 2 * middle + last;
      values.push_back(middle - slope * slope / (2 * bend));
    }
    last = middle, middle = next;
  }
  return values;
}

double PowerDb(const Dsp::Cascade& cascade, double w) {
  return 10 * std::log10(std::norm(ResponseAt(cascade, 0.2, w)));
}

TEST(Families, RipplesAreEqualAndCounted) {
  for (const unsigned order : {1u, 2u, 3u, 6u, 9u, 20u}) {
    for (const std::string name : {"ChebyshevI", "Elliptic"}) {
      const auto cascade = Find(name).make(order, 0.2);
      const auto turns = TurningValues([&](double w) { return PowerDb(cascade, w); }, 1e-6, 1);
      ASSERT_EQ(turns.size(), order - 1) << name << order;
      for (size_t i = 0; i < turns.size(); ++i) {
        EXPECT_NEAR(turns[turns.size() - 1 - i], i % 2 == 0 ? 0 : -1, 1e-6) << name << order;
      }
      EXPECT_NEAR(PowerDb(cascade, 1), -1, 1e-6) << name << order;
      EXPECT_NEAR(PowerDb(cascade, 0), order % 2 != 0 ? 0 : -1, 1e-9) << name << order;
    }
    // Over 1/w, so that the far end of the stopband comes within reach; maxima only, the zeros lie between.
    for (const std::string name : {"ChebyshevII", "Elliptic"}) {
      const auto cascade = Find(name).make(order, 0.2);
      auto turns = TurningValues([&](double v) { return PowerDb(cascade, 1 / v); }, 1e-6, 1);
      std::erase_if(turns, [](double dB) { return dB < -60 || dB > -2; });  // zeros; elliptic pass-band edge
      ASSERT_EQ(turns.size(), (order - 1) / 2) << name << order;
      for (const double dB : turns) EXPECT_NEAR(dB, -48, 1e-6) << name << order;
    }
    EXPECT_NEAR(PowerDb(Find("ChebyshevII").make(order, 0.2), 1), -48, 1e-6);
  }
}

}  // namespace
