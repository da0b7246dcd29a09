// Running filters: stability, bad parameters and samples, state, and filters given by coefficients.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <utility>

#include "dspfilter/iir_generic.h"
#include "dspfilter/roots.h"
#include "tests/dspfilter/responses.h"

namespace {

using Bessel = Dsp::Bessel::Design::LowPass<20>;
using Elliptic = Dsp::Elliptic::Design::LowPass<20>;
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr double kNanD = std::numeric_limits<double>::quiet_NaN();

std::vector<float> Noise(size_t count) {
  std::mt19937 random(7);
  std::vector<float> noise(count);
  for (float& sample : noise) sample = static_cast<float>(random() % 2001) / 1000.0f - 1;
  return noise;
}

void Filter(Dsp::Filter& filter, std::vector<float>& samples, size_t from, size_t count) {
  float* const channels[] = {samples.data() + from};
  filter.Process(static_cast<unsigned>(count), channels, channels);
}

std::vector<float> Filtered(Dsp::Filter& filter, std::vector<float> samples) {
  Filter(filter, samples, 0, samples.size());
  return samples;
}

// The triangle of stable coefficient pairs: |a2| < 1 and |a1| < 1 + a2.
TEST(Filters, EveryDesignIsStable) {
  for (const Family& family : kFamilies) {
    for (unsigned order = 1; order <= 20; ++order) {
      for (const double cutoff : {0.0, 1e-5, 0.001, 0.1, 0.3, 0.499, 0.7}) {
        const auto cascade = family.make(order, cutoff);
        EXPECT_EQ(cascade.order, order);
        EXPECT_TRUE(cascade.gain > 1e-120 && cascade.gain < 2) << family.name << order << " " << cutoff;
        EXPECT_LT(std::abs(cascade.firstOrderA1.value_or(0)), 1);
        for (const auto& biquad : cascade.biquads) {
          EXPECT_LT(std::abs(biquad.a2), 1) << family.name << order << " " << cutoff;
          EXPECT_LT(std::abs(biquad.a1), 1 + biquad.a2) << family.name << order << " " << cutoff;
        }
      }
    }
  }
}

template <class Design>
void ExpectSettles(double expected, double tolerance = 1e-6) {
  constexpr size_t kHalf = 1000000;
  auto filter = MakeFilter<Design, 1>(20, 0.001);
  std::vector<float> samples(2 * kHalf, 1.0f);
  std::fill(samples.begin() + kHalf, samples.end(), 0.0f);
  Filter(filter, samples, 0, samples.size());
  EXPECT_NEAR(samples[kHalf - 1], expected, tolerance);
  EXPECT_NEAR(samples.back(), 0, tolerance);
  for (const float sample : samples) ASSERT_LT(std::abs(sample), 1.7f);
}

TEST(Filters, Order20AtAThousandthOfTheRateSettles) {
  ExpectSettles<Bessel>(1);
  ExpectSettles<Dsp::Butterworth::Design::LowPass<20>>(1);
  ExpectSettles<Dsp::ChebyshevI::Design::LowPass<20>>(std::pow(10, -0.05));
  ExpectSettles<Dsp::ChebyshevII::Design::LowPass<20>>(1);
  // The pole beside its stopband has a time constant of 46 million samples, though hardly any amplitude.
  ExpectSettles<Elliptic>(std::pow(10, -0.05), 2e-4);
  ExpectSettles<Dsp::Legendre::Design::LowPass<20>>(1);
}

// With each section's gain made 1 at 0 Hz, no part of the cascade peaks far above the whole: 2 in amplitude.
TEST(Filters, SectionsAreOrderedAgainstOverflow) {
  for (const Family& family : kFamilies) {
    const auto cascade = family.make(20, 0.1);
    for (double w = 0; w < 3; w += 0.001) {
      const Complex z1 = std::polar(1.0, -2 * std::atan(w * std::tan(0.1 * std::numbers::pi)));
      Complex partial = 1;
      for (const auto& biquad : cascade.biquads) {
        partial *= SectionResponse(biquad, z1) / SectionResponse(biquad, 1);
        ASSERT_LT(std::abs(partial), 2) << family.name << " at " << w;
      }
    }
  }
}

const struct {
  const char* name;
  double rate, order, cutoff, ripple, stopband;  // set
  unsigned gotOrder;
  double gotCutoff, gotRipple, gotStopband;
} kRequests[] = {
    {"as given", 1000, 5, 100, 2, 60, 5, 0.1, 2, 60},
    {"order 0, cutoff 0", 1000, 0, 0, 1, 48, 1, 1e-5, 1, 48},
    {"order 21, cutoff at half the rate", 1000, 21, 500, 1, 48, 20, 0.49999, 1, 48},
    {"negative", 1000, -3, -100, -1, -1, 1, 1e-5, 1e-4, 1.0001},
    {"not-a-number", 1000, kNanD, kNanD, kNanD, kNanD, 1, 1e-5, 1, 48},
    {"infinite", 1000, kInfinity, kInfinity, kInfinity, kInfinity, 20, 0.49999, 12, 200},
    {"rate 0", 0, 4, 100, 1, 48, 4, 1e-5, 1, 48},
    {"rate infinite", kInfinity, 4, 100, 1, 48, 4, 1e-5, 1, 48},
    {"stopband inside the ripple", 1000, 4, 100, 6, 3, 4, 0.1, 6, 7},
};

TEST(Filters, ParametersAreHeldInTheirRanges) {
  for (const auto& row : kRequests) {
    Dsp::Params params = Elliptic::Defaults();
    EXPECT_TRUE(params.Set("Sample Rate", row.rate) && params.Set("Order", row.order));
    EXPECT_TRUE(params.Set("Cutoff Frequency", row.cutoff) && params.Set("Ripple dB", row.ripple));
    EXPECT_TRUE(params.Set("Stopband dB", row.stopband));
    const auto request = Dsp::ReadLowPass(params, 20);
    EXPECT_EQ(request.order, row.gotOrder) << row.name;
    EXPECT_DOUBLE_EQ(request.cutoff, row.gotCutoff) << row.name;
    EXPECT_DOUBLE_EQ(request.rippleDb, row.gotRipple) << row.name;
    EXPECT_DOUBLE_EQ(request.stopbandDb, row.gotStopband) << row.name;
    for (const auto& biquad : Elliptic::Make(params).biquads) EXPECT_LT(std::abs(biquad.a2), 1) << row.name;
  }
}

template <class Design>
void ExpectCutsDoNotMatter(unsigned order) {
  const auto noise = Noise(3000);
  auto whole = MakeFilter<Design, 1>(order, 0.07);
  const auto expected = Filtered(whole, noise);
  auto pieces = MakeFilter<Design, 1>(order, 0.07);
  auto samples = noise;
  for (size_t at = 0, size = 0; at < samples.size(); at += size, size = (size * 5 + 1) % 1013) {
    size = std::min(size, samples.size() - at);
    Filter(pieces, samples, at, size);
  }
  EXPECT_EQ(samples, expected) << order;
}

TEST(Filters, ResultsDoNotDependOnWhereASequenceIsCut) {
  for (unsigned order = 1; order <= 20; ++order) ExpectCutsDoNotMatter<Elliptic>(order);
}

// Both channels against two filters of one, and against the difference equation of each section.
TEST(Filters, ChannelsAreIndependentAndFollowTheDifferenceEquation) {
  for (unsigned order = 1; order <= 20; ++order) {
    auto x = Noise(700), y = Noise(1400);
    y.erase(y.begin(), y.begin() + 700);
    auto left = MakeFilter<Bessel, 1>(order, 0.11), right = left;
    const auto xExpected = Filtered(left, x), yExpected = Filtered(right, y);

    std::vector<double> direct(x.begin(), x.end());
    const auto section = [&direct](double b1, double b2, double a1, double a2) {
      double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
      for (double& sample : direct) {
        const double out = sample + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
        x2 = std::exchange(x1, sample);
        y2 = std::exchange(y1, out);
        sample = out;
      }
    };
    for (const auto& b : left.Coefficients().biquads) section(b.b1, 1, b.a1, b.a2);
    if (order % 2 != 0) section(1, 0, *left.Coefficients().firstOrderA1, 0);

    auto both = MakeFilter<Bessel, 2>(order, 0.11);
    float* const channels[] = {x.data(), y.data()};
    both.Process(700, channels, channels);
    EXPECT_EQ(x, xExpected) << order;
    EXPECT_EQ(y, yExpected) << order;
    for (size_t i = 0; i < x.size(); ++i) ASSERT_NEAR(x[i], direct[i] * left.Coefficients().gain, 1e-6) << order;
  }
}

TEST(Filters, NonFiniteSamplesRepeatTheLastFiniteOne) {
  auto clean = MakeFilter<Elliptic, 1>(7, 0.2), dirty = clean;
  const auto expected = Filtered(clean, {0, 0.5f, 0.5f, 0.5f, -1, -1, 0.25f});
  const std::vector<float> samples = {kNan, 0.5f, kInfinity, kNan, -1, -kInfinity, 0.25f};
  EXPECT_EQ(Filtered(dirty, samples), expected);
  dirty.Reset();
  for (size_t i = 0; i < samples.size(); ++i) {  // also when the last good one was in another call
    EXPECT_EQ(Filtered(dirty, {samples[i]})[0], expected[i]) << i;
  }
}

TEST(Filters, SilenceBecomesZeroAndStaysFast) {
  auto filter = MakeFilter<Elliptic, 1>(9, 0.2);
  std::vector<float> samples(20000, 0.0f);
  samples[0] = 1;
  Filter(filter, samples, 0, samples.size());
  EXPECT_GT(std::abs(samples[100]), 1e-6f);
  for (size_t i = 0; i < samples.size(); ++i) {
    ASSERT_NE(std::fpclassify(samples[i]), FP_SUBNORMAL) << i;
  }
  EXPECT_EQ(samples.back(), 0.0f);
}

// 2^112 and beyond count as infinite; what is below stays finite through the worst overshoot.
TEST(Filters, LargestSamplesStayFinite) {
  auto filter = MakeFilter<Elliptic, 1>(20, 0.2);
  const auto out = Filtered(filter, std::vector<float>(500, 5.19e33f));
  EXPECT_GT(*std::ranges::max_element(out), 5.19e33f);
  for (const float sample : out) ASSERT_TRUE(std::isfinite(sample));
  filter.Reset();
  EXPECT_EQ(Filtered(filter, std::vector<float>(500, -5.2e33f)), std::vector<float>(500, 0.0f));
}

// 2 y[i] = x[i] + 2 x[i-1] + 4 x[i-2] + y[i-1] - 0.5 y[i-2], by hand.
TEST(Generic, FollowsTheDifferenceEquation) {
  const double b[] = {1, 2, 4}, a[] = {2, -1, 0.5};
  const auto filter = Dsp::IIRGeneric::Create(1, 2, b, a);
  ASSERT_NE(filter, nullptr);
  EXPECT_EQ(filter->Order(), 2u);
  const std::vector<float> expected = {0.5f, 1.25f, 2.5f, 0.9375f, -0.15625f};
  EXPECT_EQ(Filtered(*filter, {1, 0, 0, 0, 0}), expected);
  filter->Reset();
  EXPECT_EQ(Filtered(*filter, {1, 0, 0, 0, 0}), expected);
}

TEST(Generic, ImpossibleCoefficientsGiveNoFilter) {
  const struct {
    const char* name;
    std::vector<double> b, a;
  } kRows[] = {
      {"a0 is 0", {1, 1}, {0, 1}},          {"not-a-number in b", {1, kNanD}, {1, 0}},
      {"infinite a0", {1, 0}, {kInfinity, 0}}, {"not-a-number in a", {1, 0}, {1, kNanD}},
      {"block too short", {1, 0}, {1}},     {"quotient overflows", {1e300, 0}, {1e-300, 0}},
  };
  for (const auto& row : kRows) EXPECT_EQ(Dsp::IIRGeneric::Create(1, 1, row.b, row.a), nullptr) << row.name;
}

TEST(Generic, UnstableFilterStartsAgainInsteadOfStickingAtNotANumber) {
  const double b[] = {1, 0}, a[] = {1, -1e10};
  const auto filter = Dsp::IIRGeneric::Create(1, 1, b, a);
  const auto grown = Filtered(*filter, std::vector<float>(200, 1.0f));
  EXPECT_EQ(grown[3], 1e30f);
  EXPECT_EQ(std::ranges::count(grown, 1.0f), 40);  // 1, 1e10, 1e20, 1e30, and 0 instead of 1e40
  for (const float sample : grown) ASSERT_TRUE(std::isfinite(sample));
}

// (x - 1)(x - 2)...(x - 18): in plain double its roots are off in the third digit.
TEST(Roots, IllConditionedPolynomialIsSolvedToTheLastBits) {
  std::vector<Dsp::DoubleDouble> p = {1};
  for (int root = 1; root <= 18; ++root) {
    p.push_back(p.back());
    for (size_t k = p.size() - 2; k > 0; --k) p[k] = p[k - 1] - p[k] * root;
    p[0] = p[0] * -root;
  }
  auto roots = Dsp::PolynomialRoots(p);
  std::ranges::sort(roots, {}, [](Complex root) { return root.real(); });
  for (int i = 0; i < 18; ++i) {
    const auto root = roots[static_cast<size_t>(i)];
    EXPECT_NEAR(std::abs(root - (i + 1.0)), 0, 1e-14 * (i + 1));
  }
}

}  // namespace
