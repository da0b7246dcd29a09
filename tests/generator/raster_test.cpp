#include <limits>

#include "ZRVDataGenerator.h"
#include "generator/raster_plan.h"
#include "points.h"

namespace {

using namespace zrv_test;

TEST(RasterPlan, BudgetsWorkedOutByHand) {
  // lines, pixels, line duration, hold, two-way, lowest and highest rate
  const struct {
    const char* name;
    zrv::RasterRequest ask;
    size_t samplesPerPixel;  // 0: refused
    unsigned sps;
    size_t line, flyback, total;
  } kCases[] = {
      {"24 samples a pixel at most", {12, 10, 0.01f, false, false, 0, 100000}, 24, 24000, 264, 240, 6576},
      {"two-way has no fly-back", {12, 10, 0.01f, false, true, 0, 100000}, 24, 24000, 264, 240, 3696},
      {"short fly-back of slow lines", {3, 10, 0.5f, false, false, 0, 100000}, 24, 480, 240 + 24, 4, 3 * 268 + 528},
      {"0 pixels are 2", {1, 0, 0.01f, false, true, 0, 100000}, 24, 4800, 48 + 4, 48, 3 * 52},
      {"budget of 50000", {249, 200, 0.02f, false, true, 0, 100000}, 1, 10000, 220, 200, 251 * 220},
      {"fallback budget", {250, 200, 0.02f, false, true, 0, 100000}, 1, 10000, 220, 200, 252 * 220},
      {"fallback budget for hold", {50, 300, 0.1f, true, true, 0, 100000}, 4, 12000, 1320, 1200, 52 * 1320},
      {"too many pixels to hold", {60, 300, 0.1f, true, true, 0, 100000}, 0, 0, 0, 0, 0},
      {"too many pixels", {1000, 100, 0.1f, false, true, 0, 100000}, 0, 0, 0, 0, 0},
      {"rate limited", {10, 100, 0.01f, false, true, 0, 20000}, 2, 20000, 220, 200, 12 * 220},
      {"rate limited too far to hold", {10, 100, 0.01f, true, true, 0, 20000}, 0, 0, 0, 0, 0},
      {"raised to the lowest rate", {2, 2, 1.0f, false, true, 1000, 9000}, 24, 1000, 1100, 1000, 4400},
      {"sizes that wrap 32 bits", {0xFFFFFFFF, 0xFFFFFFFF, 0.01f, false, true, 0, 100000}, 0, 0, 0, 0, 0},
      {"no time", {10, 10, 0.0f, false, true, 0, 100000}, 0, 0, 0, 0, 0},
      {"no number", {10, 10, std::numeric_limits<float>::quiet_NaN(), false, true, 100, 100000}, 0, 0, 0, 0, 0},
      {"endless", {10, 10, std::numeric_limits<float>::infinity(), false, true, 100, 100000}, 0, 0, 0, 0, 0},
      {"no rate", {10, 10, 0.01f, false, true, 0, 0}, 0, 0, 0, 0, 0},
      {"a rate that makes a year of samples", {10, 10, 1e6f, false, true, 100000, 100000}, 0, 0, 0, 0, 0},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const auto plan = zrv::PlanRaster(c.ask);
    ASSERT_EQ(plan.has_value(), c.samplesPerPixel != 0);
    if (!plan) continue;
    EXPECT_EQ(plan->samplesPerPixel, c.samplesPerPixel);
    EXPECT_EQ(plan->sps, c.sps);
    EXPECT_EQ(plan->line, c.line);
    EXPECT_EQ(plan->flyback, c.flyback);
    EXPECT_EQ(plan->Total(), c.total);
  }
  const auto imaging = zrv::PlanImagingRaster({12, 10, 0.01f, false, false, 0, 100000});
  ASSERT_TRUE(imaging);
  EXPECT_EQ(imaging->Total(), 12u * (44 + 15) + 88);  // 4000 samples a second, fly-back a hair below 4 ms
  EXPECT_EQ(zrv::PlanImagingRaster({12, 10, 0.01f, false, false, 0, 3999})->samplesPerPixel, 1u);
}

struct Ask {
  unsigned lines = 4, pixels = 5;
  float duration = 0.01f;
  bool hold = false, twoWay = false, imaging = false;
  int shift = 0;
  float angle = 0;
  int minSps = 0, maxSps = 100000;
};

struct Raster {
  Points out;
  unsigned count = 0, sps = 0;
  zrv::RasterPlan plan;

  explicit Raster(const Ask& a) {
    const zrv::RasterRequest request = {a.lines, a.pixels, a.duration, a.hold, a.twoWay, a.minSps, a.maxSps};
    const auto planned = a.imaging ? zrv::PlanImagingRaster(request) : zrv::PlanRaster(request);
    if (planned) plan = *planned;
    const size_t room = planned ? plan.Total() : 0;
    out = Points(room + 8);
    ZRVDataGenerator g;
    const auto make =
        a.imaging ? &ZRVDataGenerator::LinearRasterPatternImaging : &ZRVDataGenerator::LinearRasterPattern;
    const auto run = [&](float* x, float* y, unsigned char* m, unsigned& rate) {
      return (g.*make)(x, y, m, 0.9f, 0.8f, a.lines, a.pixels, a.duration, a.hold, a.twoWay, a.shift, a.angle, rate,
                       a.minSps, a.maxSps);
    };
    unsigned rateAhead = 0;
    const unsigned countAhead = run(nullptr, nullptr, nullptr, rateAhead);
    EXPECT_EQ(run(out.x.data(), nullptr, out.m.data(), sps), 0u);
    count = run(out.x.data(), out.y.data(), out.m.data(), sps);
    EXPECT_EQ(countAhead, count);
    EXPECT_EQ(rateAhead, sps);
    EXPECT_EQ(count, room);
    EXPECT_TRUE(out.UntouchedFrom(room));
    for (size_t i = 0; i < count; ++i) EXPECT_TRUE(std::isfinite(out.x[i]) && std::isfinite(out.y[i])) << i;
  }

  std::ptrdiff_t WithBit(int bit) const {
    return std::count_if(out.m.begin(), out.m.begin() + count, [bit](unsigned char m) { return (m & bit) != 0; });
  }
};

// 5 pixels of 24 samples: 120 active, turnarounds of 6, 132 a line, 120 to fly back.
TEST(Raster, OneWayLinesStepAndFlyBack) {
  const Raster r(Ask{});
  const size_t line = 132, turn = 6, period = line + 120;
  ASSERT_EQ(r.count, 4 * period + 2 * line);
  EXPECT_EQ(r.WithBit(1), 4 * 120);
  EXPECT_EQ(r.WithBit(2), 4 * 5 * 10);  // of 24 samples those from 24 / 5 = 4 to before 3 * 24 / 5 = 14
  EXPECT_EQ(r.WithBit(4), 1);
  EXPECT_EQ(r.WithBit(128), 4);
  EXPECT_EQ(r.WithBit(64), 0);
  EXPECT_EQ(r.out.m[line], 128);
  EXPECT_EQ(r.out.m[line + turn], 1 + 4);
  EXPECT_EQ(r.out.m[line + turn + 4], 1 + 2);
  EXPECT_EQ(r.out.m[line + turn + 14], 1);
  for (size_t n = 0; n < 4; ++n) {
    const size_t start = line + n * period;
    const float at = -0.9f + 2.0f * 0.9f * static_cast<float>(n) / 3.0f;
    EXPECT_NEAR(r.out.x[start + turn], at, 1e-6);
    EXPECT_NEAR(r.out.x[start + turn + 119], at, 1e-6);
    EXPECT_NEAR(r.out.y[start], -0.8f, 1e-6);
    if (n > 0) { EXPECT_NEAR(r.out.x[start], at - 0.3f, 1e-6) << "half a line below itself"; }
    if (n < 3) { EXPECT_NEAR(r.out.x[start + line - 1], at + 0.3f, 1e-6); }
    EXPECT_NEAR(r.out.y[start + line], 0.8f, 1e-6) << "fly-back";
  }
  // The leads meet between last and second sample, at the middle of the sweep.
  const float meeting = (r.out.x[line + 1] + r.out.x[r.count - line - 1]) / 2;
  EXPECT_NEAR(r.out.x[0], meeting, 1e-6);
  EXPECT_EQ(r.out.y[0], 0.0f);
  EXPECT_NEAR(r.out.x[r.count - 1], meeting, 1e-3);
  EXPECT_EQ(r.out.m[0] + r.out.m[line - 1] + r.out.m[r.count - 1], 0);
}

TEST(Raster, ImagingMarksBackwardLinesAndReturnsOnce) {
  const Raster r(Ask{.lines = 4, .twoWay = true, .imaging = true});  // 20 active, turnarounds of 1: 22 a line
  ASSERT_EQ(r.count, 6u * 22);
  EXPECT_EQ(r.WithBit(64), 2 * 20);
  EXPECT_EQ(r.WithBit(1), 4 * 20);
  EXPECT_EQ(r.out.m[1], 1 + 2 + 4);  // of 4 samples those from 4 / 5 = 0 to before 12 / 5 = 2 have the clock
  EXPECT_EQ(r.out.m[22], 0);
  EXPECT_EQ(r.out.m[22 + 1], 64 + 1 + 2);
  EXPECT_EQ(r.out.m[22 + 3], 64 + 1);
  EXPECT_EQ(r.out.x[4 * 22], r.out.x[4 * 22 - 1]);
  EXPECT_EQ(Raster(Ask{.imaging = true}).WithBit(128), 0);
}

TEST(Raster, HoldDwellsAtEachPixelAndTwoWayLinesAlternate) {
  const Raster r(Ask{.hold = true, .twoWay = true});
  for (size_t i = 0; i < 132; ++i) EXPECT_EQ(r.out.y[132 + i], r.out.y[396 + i]) << i;
  EXPECT_LT(r.out.y[138] * r.out.y[138 + 132], 0) << "the second line begins where the first one ends";
  const size_t first = 132 + 6;
  for (size_t pixel = 0; pixel < 5; ++pixel) {
    for (size_t j = 1; j < 20; ++j) EXPECT_EQ(r.out.y[first + pixel * 24 + j], r.out.y[first + pixel * 24]);
    if (pixel > 0) {
      EXPECT_NEAR(r.out.y[first + pixel * 24] - r.out.y[first + pixel * 24 - 24],
                  (r.out.y[first + 96] - r.out.y[first]) / 4, 1e-5);
    }
  }
  EXPECT_NEAR(r.out.y[first], -r.out.y[first + 96], 0.02);
}

TEST(Raster, ShiftWrapsTheDigitalByteInBothDirections) {
  const Raster still(Ask{});
  const auto n = static_cast<std::ptrdiff_t>(still.count);
  for (const int shift : {1, -1, 500, -500, static_cast<int>(n), static_cast<int>(n) + 3, -2147483647}) {
    const Raster shifted(Ask{.shift = shift});
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      const std::ptrdiff_t from = ((i - shift) % n + n) % n;
      ASSERT_EQ(shifted.out.m[static_cast<size_t>(i)], still.out.m[static_cast<size_t>(from)]) << shift << " at " << i;
    }
  }
}

TEST(Raster, RotationTurnsClockwiseAndASingleLineCollapses) {
  const Raster still(Ask{}), turned(Ask{.angle = 0.5f});
  for (size_t i = 0; i < still.count; ++i) {
    EXPECT_NEAR(turned.out.x[i], std::cos(0.5f) * still.out.x[i] + std::sin(0.5f) * still.out.y[i], 1e-6);
    EXPECT_NEAR(turned.out.y[i], std::cos(0.5f) * still.out.y[i] - std::sin(0.5f) * still.out.x[i], 1e-6);
  }
  const Raster one(Ask{.lines = 1});
  EXPECT_EQ(Head(one.out.x, one.count), std::vector<float>(one.count, 0.0f));
}

unsigned Below(std::mt19937& random, unsigned limit) { return static_cast<unsigned>(random() % limit); }

TEST(Raster, EveryShapeFillsExactlyItsRoomWithFinitePositions) {
  std::mt19937 random(7);
  for (int round = 0; round < 400; ++round) {
    const Ask a = {.lines = Below(random, 6), .pixels = Below(random, 9),
                   .duration = 1e-5f * static_cast<float>(1 + random() % 900), .hold = random() % 2 == 0,
                   .twoWay = random() % 2 == 0, .imaging = random() % 2 == 0,
                   .shift = static_cast<int>(random() % 99) - 50, .minSps = static_cast<int>(random() % 3000),
                   .maxSps = static_cast<int>(random() % 60000)};
    SCOPED_TRACE(testing::Message() << a.lines << " lines, " << a.pixels << " pixels, " << a.duration << " s, max "
                                    << a.maxSps);
    const Raster r(a);
    EXPECT_EQ(r.sps > 0, r.count > 0);
    for (size_t i = 0; a.lines == 0 && i < r.count; ++i) EXPECT_EQ(r.out.m[i] + std::abs(r.out.x[i]), 0) << "dark";
  }
}

struct Dwell {
  Points out{2000};
  unsigned count, sps;

  Dwell(std::vector<float> times, float transition, unsigned rate, int minSps = 0, int maxSps = 100000) : sps(rate) {
    const float x[] = {0.5f, -0.5f, 0.25f}, y[] = {0.1f, 0.2f, 0.3f};
    const unsigned char m[] = {11, 22, 33};
    ZRVDataGenerator g;
    count = g.PointToPointPattern(out.x.data(), out.y.data(), out.m.data(), x, y, m, times.data(),
                                  static_cast<int>(times.size()), transition, sps, minSps, maxSps);
    EXPECT_TRUE(out.UntouchedFrom(count));
  }
  std::ptrdiff_t With(int m) const { return std::count(out.m.begin(), out.m.begin() + count, m); }
};

TEST(PointToPoint, DwellsThenMovesDark) {
  const Dwell d({10, 20, 5}, 2, 10000);  // 100, 200, 50 samples, 20 of each to move
  EXPECT_EQ(d.With(11), 80);
  EXPECT_EQ(d.With(22), 180);
  EXPECT_EQ(d.With(33), 30);
  EXPECT_EQ(d.count, 100u + 200 + 50 + 1);  // the last move goes nowhere, and one sample further
  EXPECT_EQ(d.out.x[79], 0.5f);
  EXPECT_EQ(d.out.x[80], 0.5f);
  EXPECT_LT(d.out.x[82], 0.5f);
  EXPECT_EQ(d.out.x[100], -0.5f);
}

TEST(PointToPoint, AShortDwellShortensAllFurtherMoves) {
  const Dwell d({10, 2, 10}, 2.5f, 10000);  // moves of 25, then of 20 / 2 = 10
  EXPECT_EQ(d.With(11), 75);
  EXPECT_EQ(d.With(22), 10);
  EXPECT_EQ(d.With(33), 90);
  EXPECT_EQ(d.With(0), 25 + 10 + 11);
  // Without any dwell the move vanishes too, yet each point takes two places, filled with its move's ends.
  const Dwell none({0, 0, 0}, 2, 10000);
  EXPECT_EQ(none.count, 6u);
  EXPECT_EQ(Head(none.out.x, 6), (std::vector<float>{0.5f, -0.5f, -0.5f, 0.25f, 0.25f, 0.25f}));
}

TEST(PointToPoint, ChoosesARateOnlyWhenNoneIsGiven) {
  EXPECT_EQ(Dwell({3000, 4000}, 1, 0, 0, 100).sps, 100u);
  EXPECT_EQ(Dwell({0.3f, 0.4f}, 1, 0, 7, 1000000).sps, 1000000u);
  EXPECT_EQ(Dwell({30000, 40000}, 1, 0, 3, 10).sps, 10u);
  EXPECT_EQ(Dwell({10}, 1, 777, 1000, 2000).sps, 777u);
  EXPECT_EQ(Dwell({1e30f, 1e30f}, 1, 1000).count, 0u);  // absurd
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(Dwell({nan, -5}, nan, 1000).count, 4u);
  EXPECT_EQ(Dwell({}, 1, 1000).count, 0u);
}

}  // namespace
