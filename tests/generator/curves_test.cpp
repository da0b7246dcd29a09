#include <climits>

#include "ZRVDataGenerator.h"
#include "points.h"

namespace {

using namespace zrv_test;
using Generator = ZRVDataGenerator;

constexpr float kPi = 3.14159274f;

// x, y pairs against the first points.
void ExpectPoints(const Points& p, const std::vector<std::pair<double, double>>& expected, const char* name = "") {
  for (size_t i = 0; i < expected.size(); ++i) {
    EXPECT_NEAR(p.x[i], expected[i].first, 1e-6) << name << " x at " << i;
    EXPECT_NEAR(p.y[i], expected[i].second, 1e-6) << name << " y at " << i;
  }
}

void ExpectWritten(const Points& p, unsigned int count) {
  EXPECT_TRUE(std::all_of(p.m.begin(), p.m.begin() + count, [](int m) { return m == 255; }));
  EXPECT_TRUE(p.UntouchedFrom(count));
}

// Two turns in 8 samples: quarter turns, radius i / 8.
TEST(SpiralCurve, QuarterTurns) {
  Points p(10);
  ASSERT_EQ(Generator::SpiralCurve(p.x.data(), p.y.data(), p.m.data(), 8, 0.8f, 0.4f, 2, 0), 8u);
  ExpectPoints(p, {{0, 0}, {0, 0.05}, {-0.2, 0}, {0, -0.15}, {0.4, 0}, {0, 0.25}, {-0.6, 0}, {0, -0.35}});
  ExpectWritten(p, 8);
}

TEST(PolygonCurve, SquareOfTwelve) {
  Points p(15);
  ASSERT_EQ(Generator::PolygonCurve(p.x.data(), p.y.data(), p.m.data(), 12, 0.9f, 4, 0), 13u);
  ExpectPoints(p, {{0.9, 0}, {0.6, 0.3}, {0.3, 0.6}, {0, 0.9}, {-0.3, 0.6}, {-0.6, 0.3}, {-0.9, 0}});
  EXPECT_EQ(p.x[12], 0.9f);
  EXPECT_EQ(p.y[12], 0.0f) << "closes exactly";
  ExpectWritten(p, 13);
}

TEST(PolygonCurve, Counts) {
  const unsigned int kRows[][3] = {{12, 5, 11}, {5, 5, 6}, {4, 5, 1}, {1, UINT_MAX, 1}, {7, 1, 8}, {7, 0, 0}};
  for (const auto& row : kRows) {
    Points p(14);
    EXPECT_EQ(Generator::PolygonCurve(p.x.data(), p.y.data(), p.m.data(), row[0], 0.5f, row[1], 0), row[2]);
    ExpectWritten(p, row[2]);
    if (row[2] == 1) { ExpectPoints(p, {{0.5, 0}}); }
  }
}

// cos(2t) times (cos t, sin t), eighths of a turn; tips at the amplitude.
TEST(SpirographCurve, FourPetalRose) {
  Points p(10);
  ASSERT_EQ(Generator::SpirographCurve(p.x.data(), p.y.data(), p.m.data(), 8, 0, 0, 0.8f, 2, 1, 0), 8u);
  ExpectPoints(p, {{0.8, 0}, {0, 0}, {0, -0.8}, {0, 0}, {-0.8, 0}, {0, 0}, {0, 0.8}, {0, 0}});
  ExpectWritten(p, 8);
}

struct SpirographCase {
  const char* name;
  unsigned int type;
  int a, b, c;
  std::vector<std::pair<double, double>> quarters;  // of the whole figure, amplitude 1
};

TEST(SpirographCurve, QuarterPoints) {
  const SpirographCase kRows[] = {
      // R = 2, r = 1, k = 2: cardioid, farthest 3 at half way.
      {"cardioid", 1, 1, 1, 0, {{1.0 / 3, 0}, {1.0 / 3, 2.0 / 3}, {-1, 0}, {1.0 / 3, -2.0 / 3}}},
      // R = 2, pen 3: limacon through (-1, 0) .. (-5, 0).
      {"limacon", 2, 1, 1, 3, {{-0.2, 0}, {0.6, 0.4}, {-1, 0}, {0.6, -0.4}}},
      // R = 3, r = 1, k = 3: astroid.
      {"astroid", 3, 4, 1, 0, {{1, 0}, {0, 1}, {-1, 0}, {0, -1}}},
      // R = 1, k = 1, pen 0.5 does not exist; pen 3: ellipse 4 by 2.
      {"ellipse", 4, 2, 1, 3, {{1, 0}, {0, -0.5}, {-1, 0}, {0, 0.5}}},
  };
  for (const auto& row : kRows) {
    Points p(4);
    Generator::SpirographCurve(p.x.data(), p.y.data(), p.m.data(), 4, row.type, 0, 1, row.a, row.b, row.c);
    ExpectPoints(p, row.quarters, row.name);
  }
}

// One step more than the last sample would be sample 0 again: the step across the seam is like the others.
TEST(SpirographCurve, ClosesAtItsLargestRadius) {
  const unsigned int n = 5000;
  for (unsigned int type = 0; type <= 4; ++type) {
    for (unsigned int wave : {0u, 1u}) {
      for (const auto& [a, b, c] : {std::tuple{7, 3, 2}, {6, 4, 5}, {5, -2, 1}, {3, 5, 4}}) {
        Points p(n + 1);
        ASSERT_EQ(Generator::SpirographCurve(p.x.data(), p.y.data(), p.m.data(), n, type, wave, 0.7f, a, b, c), n);
        double radius = 0;
        for (size_t i = 0; i < n; ++i) radius = std::max<double>(radius, std::hypot(p.x[i], p.y[i]));
        EXPECT_NEAR(radius, 0.7, 1e-6);
        const double seam = std::hypot(p.x[n - 1] - p.x[0], p.y[n - 1] - p.y[0]);
        if (wave == 0) { EXPECT_LT(seam, 0.02) << type << ": " << a << " " << b; }
        ExpectWritten(p, n);
      }
    }
  }
}

TEST(SpirographCurve, DegenerateRings) {
  Points p(6);
  const auto draw = [&](unsigned int type, int a, int b, int c) {
    return Generator::SpirographCurve(p.x.data(), p.y.data(), p.m.data(), 4, type, 0, 1, a, b, c);
  };
  for (unsigned int type = 0; type <= 4; ++type) EXPECT_EQ(draw(type, 3, 0, 1), 0u);
  EXPECT_TRUE(p.UntouchedFrom(0));
  EXPECT_EQ(draw(5, 3, 0, 1), 4u) << "an unknown figure is all centre";
  EXPECT_EQ(Head(p.x, 4), std::vector<float>(4, 0));
  EXPECT_EQ(draw(4, 3, 3, 0), 4u) << "without radius and pen";
  EXPECT_EQ(Head(p.y, 4), std::vector<float>(4, 0));
  for (int big : {INT_MAX, INT_MIN}) EXPECT_EQ(draw(1, big, big, big), 4u);
  for (unsigned int type = 0; type <= 4; ++type) EXPECT_EQ(draw(type, INT_MIN, -1, 1), 4u);
  EXPECT_TRUE(p.UntouchedFrom(4));
}

struct LissajousCase {
  const char* name;
  unsigned int wave, modulation;
  std::vector<std::pair<double, double>> eighths;
};

// Frequencies 1 and 2, amplitude 1, no phase; modulated at 2 with depth 1 and phase pi / 2 on y. r is sqrt(1/2).
TEST(LissajousCurve, EighthsOfATurn) {
  const double r = std::sqrt(0.5);
  const LissajousCase kRows[] = {
      {"plain", 0, 0, {{0, 0}, {r, 1}, {1, 0}, {r, -1}, {0, 0}, {-r, 1}}},
      {"triangle", 1, 0, {{0, 0}, {0.5, 1}, {1, 0}, {0.5, -1}, {0, 0}, {-0.5, 1}}},
      // x: (1 - sin(2a) / 2) sin a; y: (1 - cos(2a) / 2) sin(2a)
      {"amplitude", 0, 1, {{0, 0}, {r / 2, 1}, {1, 0}, {1.5 * r, -1}, {0, 0}, {-r / 2, 1}}},
      // x: sin(sin(2a) + a); y: sin(cos(2a) + 2a)
      {"phase", 0, 2, {{0, std::sin(1)}, {std::sin(1 + 0.785398163), 1}, {1, std::sin(-1 + 3.14159265)},
                       {std::sin(-1 + 2.35619449), -1}}},
  };
  for (const auto& row : kRows) {
    Points p(8);
    Generator::LissajousCurve(p.x.data(), p.y.data(), p.m.data(), 8, row.wave, 1, 1, 2, 0, row.modulation, 1, 2,
                              kPi / 2);
    ExpectPoints(p, row.eighths, row.name);
  }
  Points p(8);
  EXPECT_EQ(Generator::LissajousCurve(p.x.data(), p.y.data(), p.m.data(), 8, 0, 1, 1, 2, 0, 3, 1, 2, 0), 8u);
  EXPECT_EQ(p.x[0], kFloatCanary) << "an unknown modulation writes m alone";
  EXPECT_EQ(p.m[7], 255);
}

TEST(AnalogClockCurve, ThreeOClockAndHalfPastOne) {
  Points p(15);
  ASSERT_EQ(Generator::AnalogClockCurve(p.x.data(), p.y.data(), p.m.data(), 3, 0, 0, 0.5f), 13u);
  ExpectPoints(p, {{0, 0}, {-0.015, 0}, {0, 0.5}, {0.015, 0},   // seconds
                   {0, 0}, {-0.035, 0}, {0, 0.4}, {0.035, 0},   // minutes
                   {0, 0}, {0, 0.05}, {0.25, 0}, {0, -0.05}, {0, 0}});
  ExpectWritten(p, 13);
  Generator::AnalogClockCurve(p.x.data(), p.y.data(), p.m.data(), 1, 30, 15, 1);
  const double hour = (1 + 30.25 / 60) / 12, minute = 30.25 / 60, turn = 6.283185307;
  EXPECT_NEAR(p.x[10] / p.y[10], std::tan(turn * hour), 1e-5) << "the hands creep";
  EXPECT_NEAR(p.x[6] / p.y[6], std::tan(turn * minute), 1e-5);
}

TEST(DynamicsCurve, BouncesAndSlows) {
  Points p(6);
  ASSERT_EQ(Generator::DynamicsCurve(p.x.data(), p.y.data(), p.m.data(), 4, 0.9f, 0, 0.2f, 0, 0, 0, 0.5f), 4u);
  ExpectPoints(p, {{0.9, 0}, {0.8, 0}, {0.7, 0}, {0.6, 0}});
  ExpectWritten(p, 4);
  Generator::DynamicsCurve(p.x.data(), p.y.data(), p.m.data(), 4, 0, -0.9f, 0.1f, -0.2f, 0.1f, 0, 1);
  ExpectPoints(p, {{0.1, -0.9}, {0.3, -0.7}, {0.6, -0.5}, {1.0, -0.3}});
}

TEST(Curves, NothingToDivideByAndNullArrays) {
  Points p(16);
  float *x = p.x.data(), *y = p.y.data();
  unsigned char* m = p.m.data();
  EXPECT_EQ(Generator::SpiralCurve(x, y, m, 0, 1, 1, 1, 0), 0u);
  EXPECT_EQ(Generator::SpiralCurve(x, y, m, 4, 1, 1, 0, 0), 0u);
  EXPECT_EQ(Generator::SpirographCurve(x, y, m, 0, 0, 0, 1, 2, 1, 0), 0u);
  EXPECT_EQ(Generator::LissajousCurve(x, y, m, 0, 0, 1, 1, 1, 0, 0, 0, 0, 0), 0u);
  EXPECT_EQ(Generator::SpiralCurve(nullptr, y, m, 4, 1, 1, 1, 0), 0u);
  EXPECT_EQ(Generator::PolygonCurve(x, nullptr, m, 4, 1, 4, 0), 0u);
  EXPECT_EQ(Generator::LissajousCurve(nullptr, y, m, 4, 0, 1, 1, 1, 0, 0, 0, 0, 0), 0u);
  EXPECT_EQ(Generator::AnalogClockCurve(x, y, nullptr, 1, 1, 1, 1), 0u);
  EXPECT_EQ(Generator::DynamicsCurve(x, nullptr, m, 4, 0, 0, 0, 0, 0, 0, 0), 0u);
  EXPECT_TRUE(p.UntouchedFrom(0));
}

}  // namespace
