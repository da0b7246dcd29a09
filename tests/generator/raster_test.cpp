#include "generator/raster_plan.h"
#include "points.h"

namespace {

using namespace zrv_test;

TEST(RasterPlan, BudgetsWorkedOutByHand) {
  // Asked: lines, pixels, line duration, hold, two-way, lowest and highest rate. No samples a pixel: refused.
  const auto expect = [](const char* name, zrv::RasterRequest ask, size_t samplesPerPixel = 0, unsigned sps = 0,
                         size_t line = 0, size_t flyback = 0, size_t total = 0) {
    const zrv::RasterPlan plan = zrv::PlanRaster(ask).value_or(zrv::RasterPlan{});
    EXPECT_EQ((std::vector{plan.samplesPerPixel, size_t{plan.sps}, plan.line, plan.flyback, plan.Total()}),
              (std::vector{samplesPerPixel, size_t{sps}, line, flyback, total}))
        << name;
  };
  expect("24 samples a pixel at most", {12, 10, 0.01f, false, false, 0, 100000}, 24, 24000, 264, 240, 6576);
  expect("two-way has no fly-back", {12, 10, 0.01f, false, true, 0, 100000}, 24, 24000, 264, 240, 3696);
  expect("short fly-back", {3, 10, 0.5f, false, false, 0, 100000}, 24, 480, 240 + 24, 4, 3 * 268 + 528);
  expect("0 pixels are 2", {1, 0, 0.01f, false, true, 0, 100000}, 24, 4800, 48 + 4, 48, 3 * 52);
  expect("budget of 50000", {249, 200, 0.02f, false, true, 0, 100000}, 1, 10000, 220, 200, 251 * 220);
  expect("fallback budget", {250, 200, 0.02f, false, true, 0, 100000}, 1, 10000, 220, 200, 252 * 220);
  expect("fallback budget for hold", {50, 300, 0.1f, true, true, 0, 100000}, 4, 12000, 1320, 1200, 52 * 1320);
  expect("too many pixels to hold", {60, 300, 0.1f, true, true, 0, 100000});
  expect("too many pixels", {1000, 100, 0.1f, false, true, 0, 100000});
  expect("most of 25000 pixels, two-way", {1, 25000, 0.005f, false, true, 0, 9999999}, 1, 5000000, 27500, 25000, 82500);
  expect("most of them with hold", {1, 8333, 0.01f, true, false, 0, 9999999}, 4, 3333200, 36664, 33332, 143324);
  expect("many of them, one-way", {20, 1190, 0.01f, false, false, 0, 9999999}, 2, 238000, 2618, 2380, 105196);
  expect("rate limited", {10, 100, 0.01f, false, true, 0, 20000}, 2, 20000, 220, 200, 12 * 220);
  expect("rate limited too far to hold", {10, 100, 0.01f, true, true, 0, 20000});
  expect("raised to the lowest rate", {2, 2, 1.0f, false, true, 1000, 9000}, 24, 1000, 1100, 1000, 4400);
  expect("sizes that wrap 32 bits", {0xFFFFFFFF, 0xFFFFFFFF, 0.01f, false, true, 0, 100000});
  expect("no time", {10, 10, 0.0f, false, true, 0, 100000});
  expect("no number", {10, 10, NAN, false, true, 100, 100000});
  expect("endless", {10, 10, INFINITY, false, true, 100, 100000});
  expect("no rate", {10, 10, 0.01f, false, true, 0, 0});
  expect("a rate that makes a year of samples", {10, 10, 1e6f, false, true, 100000, 100000});
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

// Asks for the count first, as a user does; all that is planned for is filled with numbers.
struct Raster {
  Points out;
  unsigned count = 0, sps = 0;

  explicit Raster(const Ask& a) {
    const zrv::RasterRequest request = {a.lines, a.pixels, a.duration, a.hold, a.twoWay, a.minSps, a.maxSps};
    const auto plan = a.imaging ? zrv::PlanImagingRaster(request) : zrv::PlanRaster(request);
    const size_t room = plan ? plan->Total() : 0;
    out = Points(room + 8);
    Generator g;
    const auto make = a.imaging ? &Generator::LinearRasterPatternImaging : &Generator::LinearRasterPattern;
    const auto run = [&](float* x, float* y, unsigned char* m, unsigned& rate) {
      return (g.*make)(x, y, m, 0.9f, 0.8f, a.lines, a.pixels, a.duration, a.hold, a.twoWay, a.shift, a.angle, rate,
                       a.minSps, a.maxSps);
    };
    unsigned rateAhead = 0;
    EXPECT_EQ(run(nullptr, nullptr, nullptr, rateAhead), room);
    EXPECT_EQ(run(out.x.data(), nullptr, out.m.data(), sps), 0u);
    count = run(out.x.data(), out.y.data(), out.m.data(), sps);
    EXPECT_EQ(rateAhead, sps);
    EXPECT_EQ(count, room);
    EXPECT_TRUE(out.UntouchedFrom(room));
    for (size_t i = 0; i < count; ++i) EXPECT_TRUE(std::abs(out.x[i]) < 9 && std::abs(out.y[i]) < 9) << i;
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
  const auto& m = r.out.m;
  EXPECT_EQ((std::vector<int>{m[line], m[line + turn], m[line + turn + 4], m[line + turn + 14]}),
            (std::vector<int>{128, 1 + 4, 1 + 2, 1}));
  for (size_t n = 0; n < 4; ++n) {
    const size_t start = line + n * period;
    const double at = -0.9 + 2.0 * 0.9 * static_cast<double>(n) / 3.0;
    EXPECT_NEAR(r.out.x[start + turn], at, 1e-6);
    EXPECT_NEAR(r.out.x[start + turn + 119], at, 1e-6);
    if (n > 0) {
      r.out.ExpectAt(start, {{at - 0.3, -0.8}}, "half a line below itself");
    }
    if (n < 3) {
      EXPECT_NEAR(r.out.x[start + line - 1], at + 0.3, 1e-6);
    }
    EXPECT_NEAR(r.out.y[start + line], 0.8, 1e-6) << "fly-back";
  }
  // The leads meet between last and second sample, at the middle of the sweep.
  const double meeting = (r.out.x[line + 1] + r.out.x[r.count - line - 1]) / 2;
  r.out.ExpectAt(0, {{meeting, 0}});
  EXPECT_NEAR(r.out.x[r.count - 1], meeting, 1e-3);
  EXPECT_EQ(m[0] + m[line - 1] + m[r.count - 1], 0);
}

TEST(Raster, ImagingMarksBackwardLinesAndReturnsOnce) {
  const Raster r(Ask{.lines = 4, .twoWay = true, .imaging = true});  // 20 active, turnarounds of 1: 22 a line
  ASSERT_EQ(r.count, 6u * 22);
  EXPECT_EQ(r.WithBit(64), 2 * 20);
  EXPECT_EQ(r.WithBit(1), 4 * 20);
  // Of 4 samples those from 4 / 5 = 0 to before 12 / 5 = 2 have the clock.
  EXPECT_EQ(r.out.m[1], 1 + 2 + 4);
  EXPECT_EQ(r.out.m[22], 0);
  EXPECT_EQ(r.out.m[22 + 1], 64 + 1 + 2);
  EXPECT_EQ(r.out.m[22 + 3], 64 + 1);
  EXPECT_EQ(r.out.x[4 * 22], r.out.x[4 * 22 - 1]);
  EXPECT_EQ(Raster(Ask{.imaging = true}).WithBit(128), 0);
}

TEST(Raster, HoldDwellsAtEachPixelAndTwoWayLinesAlternate) {
  const Raster r(Ask{.hold = true, .twoWay = true});
  const float* y = &r.out.y[132 + 6];
  for (size_t i = 0; i < 120; ++i) EXPECT_EQ(y[i], y[264 + i]) << i;
  for (size_t i = 0; i < 120; ++i) {
    if (i % 24 < 20) {
      EXPECT_EQ(y[i], y[i / 24 * 24]) << i;
    }
    if (i >= 24 && i % 24 == 0) {
      EXPECT_NEAR(y[i] - y[i - 24], (y[96] - y[0]) / 4, 1e-5) << i;
    }
  }
  EXPECT_NEAR(y[0], -y[96], 0.02);
  EXPECT_LT(y[0] * y[132], 0) << "the second line begins where the first one ends";
  EXPECT_EQ(r.out.x[132 * 4 - 1], r.out.x[132 * 3 + 6]) << "nor does the third of four lead on to the next";
}

TEST(Raster, ShiftAndRotation) {
  const Raster still(Ask{});
  const auto n = static_cast<std::ptrdiff_t>(still.count);
  for (const int shift : {1, -500, static_cast<int>(n), static_cast<int>(n) + 3, -2147483647}) {
    const Raster shifted(Ask{.shift = shift});
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      const std::ptrdiff_t from = ((i - shift) % n + n) % n;
      ASSERT_EQ(shifted.out.m[static_cast<size_t>(i)], still.out.m[static_cast<size_t>(from)]) << shift;
    }
  }
  const Raster turned(Ask{.angle = kPi / 2});
  for (size_t i = 0; i < still.count; ++i) turned.out.ExpectAt(i, {{still.out.y[i], -still.out.x[i]}});
  const Raster one(Ask{.lines = 1});
  EXPECT_EQ(Head(one.out.x, one.count), std::vector<float>(one.count, 0.0f)) << "a single line collapses";
}

TEST(Raster, EveryShapeFillsExactlyItsRoomWithFinitePositions) {
  Random random(7);
  for (int round = 0; round < 400; ++round) {
    const auto below = [&](int limit) { return static_cast<int>(random() >> 8) % limit; };
    const Raster r({.lines = random() % 6,
                    .pixels = random() % 9,
                    .duration = 1e-5f * static_cast<float>(below(900)),
                    .hold = below(2) == 0,
                    .twoWay = below(2) == 0,
                    .imaging = below(2) == 0,
                    .minSps = below(3000),
                    .maxSps = below(60000)});
    EXPECT_EQ(r.sps > 0, r.count > 0) << "round " << round;
  }
  const Raster none({.lines = 0});
  EXPECT_EQ(none.out.With(0, none.count), none.count) << "dark";
}

struct Dwell {
  Points out{2000};
  unsigned count, sps;

  Dwell(std::vector<float> times, float transition, unsigned rate, int minSps = 0, int maxSps = 100000) : sps(rate) {
    const float x[] = {0.5f, -0.5f, 0.25f}, y[] = {0.1f, 0.2f, 0.3f};
    const unsigned char m[] = {11, 22, 33};
    Generator g;
    count = g.PointToPointPattern(out.x.data(), out.y.data(), out.m.data(), x, y, m, times.data(),
                                  static_cast<int>(times.size()), transition, sps, minSps, maxSps);
    EXPECT_TRUE(out.UntouchedFrom(count));
  }
  // Samples at each of the three points, and between them.
  void Expect(std::vector<std::ptrdiff_t> samples) const {
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(out.With(static_cast<int>(11 * i), count), samples[i]) << i;
  }
};

TEST(PointToPoint, DwellsThenMovesDark) {
  const Dwell d({10, 20, 5}, 2, 10000);  // 100, 200, 50 samples, 20 of each to move; the last goes nowhere in 21
  d.Expect({20 + 20 + 21, 80, 180, 30});
  d.out.ExpectAt(79, {{0.5, 0.1}, {0.5, 0.1}});
  EXPECT_LT(d.out.x[82], 0.5f);
  d.out.ExpectAt(100, {{-0.5, 0.2}});
  // Moves of 25, then of 25 / 2 = 12: a short dwell shortens all further moves.
  Dwell({10, 2.5f, 10}, 2.5f, 10000).Expect({25 + 12 + 13, 75, 13, 88});
  // Without any dwell the move vanishes too, yet each point takes two places, filled with its move's ends.
  const Dwell none({0, 0, 0}, 2, 10000);
  EXPECT_EQ(none.count, 6u);
  EXPECT_EQ(Head(none.out.x, 6), (std::vector<float>{0.5f, -0.5f, -0.5f, 0.25f, 0.25f, 0.25f}));
}

TEST(PointToPoint, ChoosesARateOnlyWhenNoneIsGiven) {
  EXPECT_EQ(Dwell({3000, 4000}, 1, 0, 0, 100).sps, 100u);
  EXPECT_EQ(Dwell({0.3f, 0.4f}, 1, 0, 7, 1000000).sps, 1000000u);
  EXPECT_EQ(Dwell({300, 400}, 1, 0, 500, 100).sps, 500u) << "the lowest rate wins";
  EXPECT_EQ(Dwell({10}, 1, 777, 1000, 2000).sps, 777u);
  EXPECT_EQ(Dwell({1e30f, 1e30f}, 1, 1000).count, 0u);  // absurd
  EXPECT_EQ(Dwell({NAN, -5}, NAN, 1000).count, 4u);
  EXPECT_EQ(Dwell({}, 1, 1000).count, 0u);
}

}  // namespace
