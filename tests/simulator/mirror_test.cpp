// The mirror against the analytic response of H(s) = w^2 / (s^2 + (w/Q) s + w^2), and where settings put
// what it is asked to follow.
#include "simulator/mirror.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <tuple>

#include "simulator/output.h"

namespace zrv::sim {
namespace {

constexpr double kPi = std::numbers::pi;

MirrorModel Model(double rate, double filterHz = 0, MirrorOptions options = {}) {
  MirrorModel model(options);
  model.Configure({rate, filterHz});
  return model;
}

// Of second order, a step rings at w * sqrt(1 - 1/4Q^2) and dies as exp(-w t / 2Q).
TEST(MirrorTest, StepsComeOutAsTheAnalyticResponse) {
  constexpr double kRate = 50000;
  const struct {
    MirrorOptions mirror;
    double filterHz, hertz, q, tolerance;                                // frequency and q of what dominates
  } kSteps[] = {{{1200, 50}, 0, 1200, 50, 1e-5},                         // resonant mirror
                {{1e6, 0.7}, 200, 200, std::numbers::sqrt2 / 2, 2e-4}};  // Butterworth filter before a stiff one
  for (const auto& c : kSteps) {
    MirrorModel model = Model(kRate, c.filterHz, c.mirror);
    const double w = 2 * kPi * c.hertz, damped = w * std::sqrt(1 - 1 / (4 * c.q * c.q));
    for (int i = 1; i <= 50000; ++i) {
      model.Step({1, -0.5f});
      const double t = i / kRate, envelope = std::exp(-w * t / (2 * c.q));
      const double expected = 1 - envelope * (std::cos(damped * t) + w / (2 * c.q * damped) * std::sin(damped * t));
      ASSERT_NEAR(model.position().x, expected, c.tolerance) << c.hertz << " " << i;
      ASSERT_NEAR(model.position().y, -0.5 * expected, c.tolerance) << c.hertz << " " << i;
    }
  }
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

TEST(OutputTest, SettingsPlaceTheSample) {
  const struct {
    const char* name;
    uint8_t axes;
    uint16_t scale, cosine, sine, offsetX, offsetY;
    float x, y;  // where (0.25, 0.5) goes
  } kPlaces[] = {
      {"flip x", 1, 32767, 32767, 16384, 32768, 32768, -0.25, 0.5},
      {"flip y", 2, 32767, 32767, 16384, 32768, 32768, 0.25, -0.5},
      {"swap, then flip x", 5, 32767, 32767, 16384, 32768, 32768, -0.5, 0.25},
      {"a quarter turn", 0, 32767, 16384, 32767, 32768, 32768, -0.5, 0.25},
      {"offset is not scaled", 0, 0, 32767, 16384, 65535, 1, 1, -1},
      {"beyond the edge", 0, 32767, 32767, 16384, 65535, 1, 1, -0.5},
  };
  for (const auto& c : kPlaces) {
    Settings s;
    std::tie(s.axes, s.dataScale, s.rotationCos, s.rotationSin, s.offsetX, s.offsetY) =
        std::tie(c.axes, c.scale, c.cosine, c.sine, c.offsetX, c.offsetY);
    const MirrorPosition at = Placed(s, {0.25f, 0.5f, 0, 0});
    EXPECT_NEAR(at.x, c.x, 1e-6) << c.name;
    EXPECT_NEAR(at.y, c.y, 1e-6) << c.name;
  }
}

TEST(OutputTest, CountsAtTheEdges) {
  EXPECT_EQ(VoltsToCount(0), 32768);
  EXPECT_EQ(VoltsToCount(-1e9), 0);
  EXPECT_EQ(VoltsToCount(1e300), 65535);
  EXPECT_EQ(VoltsToCount(std::nan("")), 0);
  EXPECT_EQ(DetectorToCount(2.5), 65535);
  EXPECT_EQ(StopCount(-1), 0);
  EXPECT_EQ(StopCount(1), 65535);
  EXPECT_EQ(TrackCount(-1), 1);
}

}  // namespace
}  // namespace zrv::sim
