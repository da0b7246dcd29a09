#include "points.h"

namespace {

using namespace zrv_test;

enum class Profile {
  front,
  linear,
  trapezoidal,
  optimized
};

struct Settings {
  Profile profile;
  float blankSpeed = 1, drawAccel = 0, blankAccel = 0;
};

// Runs a profile into exactly the room that is promised, plus canaries.
struct Interpolated {
  Points out;
  unsigned int count = 0;

  Interpolated(const Points& path, unsigned int numKeypoints, unsigned int numSamples, Settings set) {
    const size_t room = std::max(numSamples, numKeypoints + numKeypoints / 4) + numKeypoints;
    out = Points(room + 8);
    const auto run = [&](auto... settings) {
      Generator g;
      const float *x = path.x.data(), *y = path.y.data();
      const unsigned char* m = path.m.data();
      float *xOut = out.x.data(), *yOut = out.y.data();
      unsigned char* mOut = out.m.data();
      switch (set.profile) {
        case Profile::front: return g.InterpolateData(x, y, m, xOut, yOut, mOut, settings...);
        case Profile::trapezoidal: return g.InterpolateDataTrapezoidal(x, y, m, xOut, yOut, mOut, settings...);
        case Profile::linear:
          return g.InterpolateDataLinear(x, y, m, xOut, yOut, mOut, numKeypoints, numSamples, set.blankSpeed);
        default:
          return g.InterpolateDataOptimized(x, y, m, path.index.data(), xOut, yOut, mOut, out.index.data(),
                                            numKeypoints, numSamples);
      }
    };
    count = run(numKeypoints, numSamples, set.blankSpeed, set.drawAccel, set.blankAccel);
    EXPECT_LE(count, room);
    EXPECT_TRUE(out.UntouchedFrom(room));
  }

  void ExpectX(size_t first, const std::vector<double>& x) const {
    for (size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(out.x[first + i], x[i], 1e-6) << first + i;
  }
};

TEST(InterpolateLinear, TwoKeypointsAndTheClosingSample) {
  const Interpolated run({{0, 0, 1}, {1, 0, 7}}, 2, 4, {Profile::linear});
  ASSERT_EQ(run.count, 5u);
  run.out.ExpectAt(0, {{0, 0}, {0.25, 0}, {0.5, 0}, {0.75, 0}, {1, 7}}, "the closing y is the digital byte");
  EXPECT_EQ(Head(run.out.m, 5), (std::vector<int>{1, 1, 1, 1, 7}));
}

// n = 10, f = 0.5: five samples speeding up to the middle, five slowing down, none between.
TEST(InterpolateTrapezoidal, HalfAndHalf) {
  const Interpolated run({{0, 0, 1}, {1, 0, 1}}, 2, 10, {Profile::trapezoidal, 1, 0.5f, 0.5f});
  ASSERT_EQ(run.count, 10u);
  run.ExpectX(0, {0, 0.02, 0.08, 0.18, 0.32, 0.5, 0.68, 0.82, 0.92, 0.98});
  const Interpolated few({{0, 0, 1}, {-1, 1, 1}}, 2, 5, {Profile::trapezoidal, 1, 0.5f, 0.5f});
  ASSERT_EQ(few.count, 5u) << "short segments run steadily";
  few.ExpectX(0, {0, -0.2, -0.4, -0.6, -0.8});
}

// Straight on and back: the reversals at 0 and 1 weigh 1, the point at 0.5 nothing. Fractions at the start 0.4, at
// 0.5 0.1; 20 samples a segment: ceil(40 * 0.4 / 1.5) = 11 up, floor(40 * 0.1 / 1.5) = 2 down, 7 between.
TEST(InterpolateOptimized, CornersSlowDown) {
  const Points path{{0, 1, 1}, {0.5f, 1, 2}, {1, 1, 3}, {0.5f, 1, 4}, {0, 1, 5}};
  const Interpolated run(path, 5, 80, {Profile::optimized});
  ASSERT_EQ(run.count, 80u);
  run.ExpectX(0, {0, 0.2 / 121, 0.2 * 4 / 121, 0.2 * 9 / 121});
  run.ExpectX(10, {0.2 * 100 / 121, 0.2, 0.2 + 0.25 / 7});
  run.ExpectX(18, {0.45, 0.45 + 0.05 * 0.75, 0.5});
  for (size_t i = 0; i < 80; ++i) {
    EXPECT_EQ(run.out.m[i], 1 + i / 20) << i;
    EXPECT_EQ(run.out.index[i], 100 + i / 20) << i;
  }
}

TEST(InterpolateOptimized, MoreKeypointsThanSamplesRaisesTheCount) {
  Random random(3);
  const Points path = RandomPath(random, 40);
  EXPECT_GE(Interpolated(path, 40, 1, {Profile::optimized}).count, 45u);
  // Equal lengths and corners: exactly trunc(4 * 1.25) = 5 on three sides of a triangle, closed.
  const Points triangle{{0, 0, 1}, {1, 0, 2}, {0.5f, 0.8660254f, 3}, {0, 0, 4}};
  EXPECT_EQ(Interpolated(triangle, 4, 4, {Profile::optimized}).count, 5u);
}

TEST(Interpolation, SamplesOfEachSegment) {
  constexpr Settings kLinear = {Profile::linear, 1}, kOptimized = {Profile::optimized};
  constexpr Settings kTrapezoidal = {Profile::trapezoidal, 1, 0.1f, 0};
  // How many samples carry each mark.
  const auto expect = [](const char* name, Settings set, unsigned samples, const Points& path, unsigned count,
                         std::vector<int> marks, std::vector<int> with) {
    const Interpolated run(path, path.size(), samples, set);
    EXPECT_EQ(run.count, count) << name;
    for (size_t i = 0; i < marks.size(); ++i) EXPECT_EQ(run.out.With(marks[i], count), with[i]) << name << i;
  };
  // Four drawn sides and a blank return of 1: at speed 4 floor(100 / 17) = 5 for it, 23.75 for each side.
  expect("blank segments go faster", {Profile::linear, 4}, 100,
         {{0, 0, 9}, {1, 0, 9}, {1, 1, 9}, {0, 1, 9}, {0, 0, 0}, {1, 0, 3}}, 4 * 23 + 5 + 1, {9, 0}, {4 * 23, 5});
  expect("one sample a segment at least", kLinear, 2, {{0, 0, 0}, {1, 0, 0}, {0, 0, 0}, {1, 0, 4}, {0, 0, 4}}, 5, {0},
         {3});
  // Nominal counts 2.5, 2.5, 5; the last keypoint is not written.
  expect("halves round up and the last takes the rest", kTrapezoidal, 10,
         {{0, 0, 1}, {0.25f, 0, 2}, {0.5f, 0, 3}, {1, 0, 4}}, 10, {1, 2, 3, 4}, {3, 3, 4, 0});
  expect("segments below a sample are extra", kTrapezoidal, 10, {{0, 0, 1}, {0.001f, 0, 2}, {0.002f, 0, 3}, {1, 0, 4}},
         12, {1, 2, 3}, {1, 1, 10});
  // Drawn out 1 and blank back 1, both ends reversals: weights 1.6 and 2 / 1.75 = 1.142857 of 2.742857.
  expect("blank segments weigh less", kOptimized, 96, {{0, 0, 1}, {1, 0, 0}, {0, 0, 1}}, 96, {1, 0}, {56, 40});
  // Of a total weight of about 2.9, 0.0001 has a share far below half a sample, 0.02 one of 0.69.
  expect("tiny segments vanish, short ones have one", kOptimized, 100,
         {{0, 0, 1}, {0.0001f, 0, 2}, {0.0201f, 0, 3}, {1, 0, 4}, {0, 0, 5}}, 100, {1, 2}, {0, 1});
  // Far outside the field the product of straight-on vectors comes out a bit above that of their lengths.
  // Weights 1.3, 1.3 and 2 * 1.6 of 5.8.
  expect("large paths have corners too", kOptimized, 100, {{0, 0, 1}, {30, 10, 2}, {60, 20, 3}, {0, 0, 4}}, 100,
         {1, 2, 3}, {22, 22, 56});
  expect("no length gives all to the last", kOptimized, 50, {{1, 1, 1}, {1, 1, 2}, {1, 1, 3}, {1, 1, 4}}, 50, {1, 2, 3},
         {0, 0, 50});
}

TEST(InterpolateData, FrontDoor) {
  const Points path{{0, 0.5f, 7}, {1, 0, 8}, {0, 1, 9}};
  const auto expect = [&](const char* name, unsigned keypoints, unsigned samples, float drawAccel, unsigned count,
                          unsigned written) {
    const Interpolated run(path, keypoints, samples, {Profile::front, 1, drawAccel, 0});
    EXPECT_EQ(run.count, count) << name;
    EXPECT_TRUE(run.out.UntouchedFrom(written)) << name;
    if (written > 0) {
      EXPECT_NE(run.out.x[written - 1], kFloatCanary) << name;
    }
  };
  expect("no keypoints", 0, 10, 0, 0, 0);
  expect("no samples", 3, 0, 0, 3, 0);
  expect("as many keypoints as samples are copied", 3, 3, 0.5f, 3, 3);
  expect("one keypoint, linear", 1, 10, 0.00009f, 1, 10);
  expect("one keypoint, trapezoidal", 1, 10, 0.0001f, 0, 10);
  expect("linear has a closing sample", 2, 10, 0.00009f, 11, 11);
  expect("trapezoidal has none", 2, 10, 0.0002f, 10, 10);
  const Interpolated one(path, 1, 10, {Profile::front});
  one.out.ExpectAt(0, {{0, 7}, {0, 0.5}}, "the closing sample overwrote the first");
}

TEST(InterpolateData, ClampsItsParameters) {
  Random random(5);
  const Points path = RandomPath(random, 12);
  for (const auto& [wild, tame] : {std::pair<Settings, Settings>{{{}, 99, 3, 7}, {{}, 10, 0.5f, 0.5f}},
                                   {{{}, 0, -1, -1}, {{}, 1, 0, 0}},
                                   {{{}, NAN, NAN, NAN}, {{}, 1, 0, 0}}}) {
    const Interpolated a(path, 12, 300, wild), b(path, 12, 300, tame);
    EXPECT_TRUE(a.count == b.count && a.out.x == b.out.x && a.out.y == b.out.y && a.out.m == b.out.m);
  }
}

TEST(Interpolation, NullArraysAndOneKeypoint) {
  Generator g;
  Points p{{0, 0, 1}, {1, 0, 1}}, out(300);
  const float *x = p.x.data(), *y = p.y.data();
  float *xOut = out.x.data(), *yOut = out.y.data();
  unsigned char *m = p.m.data(), *mOut = out.m.data();
  EXPECT_EQ(g.InterpolateDataLinear(nullptr, y, m, xOut, yOut, mOut, 2, 9, 1), 0u);
  EXPECT_EQ(g.InterpolateDataTrapezoidal(x, y, m, xOut, nullptr, mOut, 2, 9, 1, 0, 0), 0u);
  EXPECT_EQ(g.InterpolateDataOptimized(x, y, m, xOut, yOut, nullptr, 2, 9), 0u);
  EXPECT_EQ(g.InterpolateData(x, y, nullptr, xOut, yOut, mOut, 2, 9, 1, 0, 0), 0u);
  EXPECT_TRUE(out.UntouchedFrom(0));
  EXPECT_EQ(g.InterpolateDataOptimized(x, y, m, xOut, yOut, mOut, 1, 9), 0u);
  EXPECT_TRUE(out.UntouchedFrom(9));
  EXPECT_EQ(out.x[8], 0.0f) << "one keypoint fills the samples";
}

}  // namespace
