// The mirror against the analytic response of H(s) = w^2 / (s^2 + (w/Q) s + w^2), and where settings put
// what it is asked to follow.
#include "simulator/mirror.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "simulator/output.h"

namespace zrv::sim {
namespace {

constexpr double kPi = std::numbers::pi;

MirrorModel Model(double rate, double filterHz = 0, MirrorOptions options = {}) {
  MirrorModel model(options);
  model.Configure({rate, filterHz});
  return model;
}

// Largest X over the last second of so many seconds of a sine.
double SineAmplitude(MirrorModel model, double rate, double hertz, double seconds) {
  double largest = 0;
  const int count = static_cast<int>(rate * seconds);
  for (int i = 0; i < count; ++i) {
    model.Step({static_cast<float>(std::sin(2 * kPi * hertz * i / rate)), 0});
    if (i > count - rate) largest = std::max(largest, std::fabs(static_cast<double>(model.position().x)));
  }
  return largest;
}

// The gain of the continuous system behind a hold of one sample.
double Gain(double rate, double hertz, double f0, double q) {
  const double u = hertz / f0, hold = kPi * hertz / rate;
  return std::sin(hold) / hold / std::hypot(1 - u * u, u / q);
}

TEST(MirrorTest, SinesComeOutAsTheAnalyticResponseSays) {
  constexpr double kRate = 100000;
  for (const double hertz : {10.0, 300.0, 1000.0, 1150.0, 1200.0, 1250.0, 3000.0}) {
    EXPECT_NEAR(SineAmplitude(Model(kRate), kRate, hertz, 1.5) / Gain(kRate, hertz, 1200, 50), 1, 0.005) << hertz;
  }
}

TEST(MirrorTest, ResonancePeakIsQ) {
  for (const double q : {5.0, 50.0}) {
    EXPECT_NEAR(SineAmplitude(Model(100000, 0, {1200, q}), 100000, 1200, 1.5) / q, 1, 0.005) << q;
  }
}

TEST(MirrorTest, RestsOnItsTargetAtEveryRate) {
  for (const double rate : {200.0, 1000.0, 10000.0, 100000.0}) {
    for (const double filter : {0.0, 200.0, 10000.0}) {
      MirrorModel model = Model(rate, filter);
      for (int i = 0; i < rate; ++i) model.Step({0.75f, -0.5f});
      EXPECT_NEAR(model.position().x, 0.75, 1e-5) << rate << " " << filter;
      EXPECT_NEAR(model.position().y, -0.5, 1e-5) << rate << " " << filter;
    }
  }
}

// The same held input must give the same motion however finely it is stepped.
TEST(MirrorTest, StepSizeDoesNotChangeTheMotion) {
  for (const double filter : {0.0, 500.0}) {
    MirrorModel coarse = Model(200, filter), fine = Model(100000, filter);
    for (int i = 0; i < 3; ++i) coarse.Step({1, 0});
    for (int i = 0; i < 1500; ++i) fine.Step({1, 0});
    EXPECT_NEAR(coarse.position().x, fine.position().x, 1e-6) << filter;
  }
}

// A step rings at w * sqrt(1 - 1/4Q^2) and dies as exp(-w t / 2Q).
TEST(MirrorTest, RingingFollowsTheStepResponse) {
  constexpr double kRate = 50000, kQ = 50, w = 2 * kPi * 1200;
  const double damped = w * std::sqrt(1 - 1 / (4 * kQ * kQ));
  MirrorModel model = Model(kRate);
  for (int i = 1; i <= 5000; ++i) {
    model.Step({1, 0});
    const double t = i / kRate, envelope = std::exp(-w * t / (2 * kQ));
    const double expected = 1 - envelope * (std::cos(damped * t) + w / (2 * kQ * damped) * std::sin(damped * t));
    ASSERT_NEAR(model.position().x, expected, 1e-5) << i;
  }
}

TEST(MirrorTest, LowPassIsSecondOrder) {
  constexpr double kRate = 100000;
  const auto filtered = [&](double hertz) {
    return SineAmplitude(Model(kRate, 200, {40000, 0.7071}), kRate, hertz, 1.5);
  };
  EXPECT_NEAR(filtered(20), 1, 0.001);
  EXPECT_NEAR(filtered(200), std::numbers::sqrt2 / 2, 0.003);     // -3 dB at the corner
  EXPECT_NEAR(filtered(2000), 1 / std::hypot(1, 100), 0.0005);    // -40 dB a decade above
  EXPECT_GT(SineAmplitude(Model(kRate, 0, {40000, 0.7071}), kRate, 2000, 1.5), 0.99);
}

TEST(MirrorTest, SwitchingTheFilterOnDoesNotJerk) {
  MirrorModel model = Model(10000);
  for (int i = 0; i < 10000; ++i) model.Step({0.5f, 0});
  model.Configure({10000, 200});
  for (int i = 0; i < 100; ++i) {
    model.Step({0.5f, 0});
    ASSERT_NEAR(model.position().x, 0.5, 1e-5) << i;
  }
}

TEST(MirrorTest, AbsurdOptionsStayFinite) {
  for (const double bad : {0.0, -1.0, 1e300, std::nan("")}) {
    MirrorModel model = Model(bad, bad, {bad, bad});
    for (int i = 0; i < 1000; ++i) model.Step({1, -1});
    EXPECT_TRUE(std::isfinite(model.position().x)) << bad;
  }
}

struct PlaceCase {
  const char* name;
  uint8_t axes;
  uint16_t scale, cosine, sine, offsetX, offsetY;
  double x, y;  // where (0.25, 0.5) goes
};
const PlaceCase kPlaces[] = {
    {"as it is", 0, 32767, 32767, 16384, 32768, 32768, 0.25, 0.5},
    {"flip x", 1, 32767, 32767, 16384, 32768, 32768, -0.25, 0.5},
    {"flip y", 2, 32767, 32767, 16384, 32768, 32768, 0.25, -0.5},
    {"swap", 4, 32767, 32767, 16384, 32768, 32768, 0.5, 0.25},
    {"swap, then flip x", 5, 32767, 32767, 16384, 32768, 32768, -0.5, 0.25},
    {"no scale", 0, 0, 32767, 16384, 32768, 32768, 0, 0},
    {"a quarter turn", 0, 32767, 16384, 32767, 32768, 32768, -0.5, 0.25},
    {"half a turn", 0, 32767, 1, 16384, 32768, 32768, -0.25, -0.5},
    {"offset is not scaled", 0, 0, 32767, 16384, 65535, 1, 1, -1},
    {"beyond the edge", 0, 32767, 32767, 16384, 65535, 1, 1, -0.5},
};

TEST(OutputTest, SettingsPlaceTheSample) {
  for (const PlaceCase& c : kPlaces) {
    Settings s;
    s.axes = c.axes;
    s.dataScale = c.scale;
    s.rotationCos = c.cosine;
    s.rotationSin = c.sine;
    s.offsetX = c.offsetX;
    s.offsetY = c.offsetY;
    const MirrorPosition at = Placed(s, {0.25f, 0.5f, 0, 0});
    EXPECT_NEAR(at.x, c.x, 1e-6) << c.name;
    EXPECT_NEAR(at.y, c.y, 1e-6) << c.name;
  }
}

TEST(OutputTest, CountsAtTheEdges) {
  EXPECT_EQ(VoltsToCount(0), 32768);
  EXPECT_EQ(VoltsToCount(1), 36045);
  EXPECT_EQ(VoltsToCount(-1e9), 0);
  EXPECT_EQ(VoltsToCount(1e300), 65535);
  EXPECT_EQ(VoltsToCount(std::nan("")), 0);
  EXPECT_EQ(DetectorToCount(1), 32767);
  EXPECT_EQ(DetectorToCount(2.5), 65535);
  EXPECT_EQ(StopCount(-1), 0);
  EXPECT_EQ(StopCount(0.5f), 49152);
  EXPECT_EQ(StopCount(1), 65535);
  EXPECT_EQ(TrackCount(-1), 1);
}

}  // namespace
}  // namespace zrv::sim
