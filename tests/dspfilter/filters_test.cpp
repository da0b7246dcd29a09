// Running filters: stability, bad parameters and samples, state, and filters given by coefficients.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <utility>

#include "dspfilter/iir_generic.h"
#include "tests/dspfilter/responses.h"

namespace {

using Samples = std::vector<float>;
using Elliptic = Dsp::Elliptic::Design::LowPass<20>;
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr double kNanD = std::numeric_limits<double>::quiet_NaN();

Samples Noise(size_t count, unsigned seed = 7) {
  std::mt19937 random(seed);
  Samples noise(count);
  for (float& sample : noise) sample = static_cast<float>(random() % 2001) / 1000.0f - 1;
  return noise;
}

// In pieces of size, or whole.
Samples Filtered(Dsp::Filter& filter, Samples samples, size_t size = 0) {
  if (size == 0) size = samples.size();
  for (size_t at = 0; at < samples.size(); at += size) {
    float* const channels[] = {samples.data() + at};
    filter.Process(static_cast<unsigned>(std::min(size, samples.size() - at)), channels, channels);
  }
  return samples;
}

// The triangle of stable coefficient pairs: |a2| < 1 and |a1| < 1 + a2. With each section's gain made 1 at 0 Hz, no
// part of the cascade peaks far above the whole: 2 in amplitude.
TEST(Filters, EveryDesignIsStableAndOrderedAgainstOverflow) {
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

TEST(Filters, ParametersAreHeldInTheirRanges) {
  const auto expect = [](const char* name, double rate, double order, double cutoff, double ripple, double stopband,
                         unsigned gotOrder, double gotCutoff, double gotRipple, double gotStopband) {
    Dsp::Params params = Elliptic::Defaults();
    EXPECT_TRUE(params.Set("Sample Rate", rate) && params.Set("Order", order));
    EXPECT_TRUE(params.Set("Cutoff Frequency", cutoff) && params.Set("Ripple dB", ripple));
    EXPECT_TRUE(params.Set("Stopband dB", stopband) && !params.Set("Q", 1));
    const auto request = Dsp::ReadLowPass(params, 20);
    EXPECT_EQ(request.order, gotOrder) << name;
    EXPECT_DOUBLE_EQ(request.cutoff, gotCutoff) << name;
    EXPECT_DOUBLE_EQ(request.rippleDb, gotRipple) << name;
    EXPECT_DOUBLE_EQ(request.stopbandDb, gotStopband) << name;
  };
  expect("as given", 1000, 5, 100, 2, 60, 5, 0.1, 2, 60);
  expect("order 0, cutoff 0", 1000, 0, 0, 1, 48, 1, 1e-5, 1, 48);
  expect("order 21, cutoff at half the rate", 1000, 21, 500, 1, 48, 20, 0.49999, 1, 48);
  expect("negative", 1000, -3, -100, -1, -1, 1, 1e-5, 1e-4, 1.0001);
  expect("not-a-number", 1000, kNanD, kNanD, kNanD, kNanD, 1, 1e-5, 1, 48);
  expect("infinite", 1000, kInfinity, kInfinity, kInfinity, kInfinity, 20, 0.49999, 12, 200);
  expect("rate 0", 0, 4, 100, 1, 48, 4, 1e-5, 1, 48);
  expect("rate infinite", kInfinity, 4, 100, 1, 48, 4, 1e-5, 1, 48);
  expect("stopband inside the ripple", 1000, 4, 100, 6, 3, 4, 0.1, 6, 7);
}

// Both channels against filters of one which get their samples in pieces, and against the difference equation of
// each section.
TEST(Filters, ChannelsFollowTheDifferenceEquationHoweverTheyAreCut) {
  using Design = Dsp::Bessel::Design::LowPass<20>;
  for (unsigned order = 1; order <= 20; ++order) {
    Samples x = Noise(700), y = Noise(700, 8);
    auto left = MakeFilter<Design, 1>(order, 0.11), right = left;
    const Samples xExpected = Filtered(left, x, 37 * order), yExpected = Filtered(right, y);

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

    auto both = MakeFilter<Design, 2>(order, 0.11);
    float* const channels[] = {x.data(), y.data()};
    both.Process(700, channels, channels);
    EXPECT_EQ(x, xExpected) << order;
    EXPECT_EQ(y, yExpected) << order;
    for (size_t i = 0; i < x.size(); ++i) ASSERT_NEAR(x[i], direct[i] * left.Coefficients().gain, 1e-6) << order;
  }
}

TEST(Filters, NonFiniteSamplesRepeatTheLastFiniteOne) {
  auto clean = MakeFilter<Elliptic, 1>(7, 0.2), dirty = clean;
  const Samples expected = Filtered(clean, {0, 0.5f, 0.5f, 0.5f, -1, -1, 0.25f});
  const Samples samples = {kNan, 0.5f, kInfinity, kNan, -1, -kInfinity, 0.25f};
  EXPECT_EQ(Filtered(dirty, samples), expected);
  dirty.Reset();
  EXPECT_EQ(Filtered(dirty, samples, 1), expected) << "also when the last good one was in another call";
}

// 2^112 and beyond count as infinite; what is below stays finite through the worst overshoot.
TEST(Filters, SilenceBecomesZeroAndTheLargestSamplesStayFinite) {
  auto filter = MakeFilter<Elliptic, 1>(9, 0.2), steep = MakeFilter<Elliptic, 1>(20, 0.2);
  Samples impulse(20000, 0.0f);
  impulse[0] = 1;
  const Samples out = Filtered(filter, impulse), largest = Filtered(steep, Samples(500, 5.19e33f));
  EXPECT_GT(std::abs(out[100]), 1e-6f);
  EXPECT_TRUE(std::ranges::none_of(out, [](float v) { return std::fpclassify(v) == FP_SUBNORMAL; }));
  EXPECT_EQ(out.back(), 0.0f);
  EXPECT_GT(*std::ranges::max_element(largest), 5.19e33f);
  EXPECT_TRUE(std::ranges::all_of(largest, [](float v) { return std::isfinite(v); }));
  steep.Reset();
  EXPECT_EQ(Filtered(steep, Samples(500, -5.2e33f)), Samples(500, 0.0f));
}

// 2 y[i] = x[i] + 2 x[i-1] + 4 x[i-2] + y[i-1] - 0.5 y[i-2], by hand.
TEST(Generic, FollowsTheDifferenceEquation) {
  const double b[] = {1, 2, 4}, a[] = {2, -1, 0.5};
  const auto filter = Dsp::IIRGeneric::Create(1, 2, b, a);
  ASSERT_NE(filter, nullptr);
  EXPECT_EQ(filter->Order(), 2u);
  const Samples expected = {0.5f, 1.25f, 2.5f, 0.9375f, -0.15625f};
  EXPECT_EQ(Filtered(*filter, {1, 0, 0, 0, 0}), expected);
  filter->Reset();
  EXPECT_EQ(Filtered(*filter, {1, 0, 0, 0, 0}), expected);
}

TEST(Generic, ImpossibleCoefficientsGiveNoFilterAndUnstableOnesStartAgain) {
  const std::pair<std::vector<double>, std::vector<double>> kImpossible[] = {
      {{1, 1}, {0, 1}}, {{1, kNanD}, {1, 0}},     {{1, 0}, {kInfinity, 0}}, {{1, 0}, {1, kNanD}},
      {{1, 0}, {1}},    {{1e300, 0}, {1e-300, 0}}};  // a block too short, a quotient that overflows
  for (const auto& [b, a] : kImpossible) EXPECT_EQ(Dsp::IIRGeneric::Create(1, 1, b, a), nullptr) << b[0] << a[0];
  const double b[] = {1, 0}, a[] = {1, -1e10};
  const Samples grown = Filtered(*Dsp::IIRGeneric::Create(1, 1, b, a), Samples(200, 1.0f));
  EXPECT_EQ(grown[3], 1e30f);
  EXPECT_EQ(std::ranges::count(grown, 1.0f), 40);  // 1, 1e10, 1e20, 1e30, and 0 instead of 1e40
}

}  // namespace
