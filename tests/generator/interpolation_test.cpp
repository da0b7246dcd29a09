#include "ZRVDataGenerator.h"
#include "points.h"

namespace {

using namespace zrv_test;

enum class Profile { front, linear, trapezoidal, optimized };

struct Settings {
  Profile profile;
  float blankSpeed = 1, drawAccel = 0, blankAccel = 0;
};

// Runs a profile into exactly the room that is promised, plus canaries.
struct Interpolated {
  Points out;
  unsigned int count = 0;

  Interpolated(const Points& path, unsigned int numKeypoints, unsigned int numSamples, Settings set) {
    const unsigned int samples = std::max(numSamples, numKeypoints + numKeypoints / 4);
    const size_t room = samples + numKeypoints;
    out = Points(room + 8);
    ZRVDataGenerator generator;
    const float *x = path.x.data(), *y = path.y.data();
    const unsigned char* m = path.m.data();
    float *xOut = out.x.data(), *yOut = out.y.data();
    unsigned char* mOut = out.m.data();
    switch (set.profile) {
      case Profile::front:
        count = generator.InterpolateData(x, y, m, xOut, yOut, mOut, numKeypoints, numSamples, set.blankSpeed,
                                          set.drawAccel, set.blankAccel);
        break;
      case Profile::linear:
        count = generator.InterpolateDataLinear(x, y, m, xOut, yOut, mOut, numKeypoints, numSamples,
                                                set.blankSpeed);
        break;
      case Profile::trapezoidal:
        count = generator.InterpolateDataTrapezoidal(x, y, m, xOut, yOut, mOut, numKeypoints, numSamples,
                                                     set.blankSpeed, set.drawAccel, set.blankAccel);
        break;
      case Profile::optimized:
        count = generator.InterpolateDataOptimized(x, y, m, path.index.data(), xOut, yOut, mOut,
                                                   out.index.data(), numKeypoints, numSamples);
        break;
    }
    EXPECT_LE(count, room);
    EXPECT_TRUE(out.UntouchedFrom(room));
  }

  // How many of the first count samples carry the byte.
  std::ptrdiff_t With(int m) const { return std::count(out.m.begin(), out.m.begin() + count, m); }
};

TEST(InterpolateLinear, TwoKeypointsAndTheClosingSample) {
  const Interpolated run({{0, 0, 1}, {1, 0, 7}}, 2, 100, {Profile::linear});
  ASSERT_EQ(run.count, 101u);
  for (unsigned int i = 0; i < 100; ++i) EXPECT_EQ(run.out.x[i], static_cast<float>(i) / 100.0f);
  EXPECT_EQ(run.out.y[99], 0.0f);
  EXPECT_EQ(run.out.x[100], 1.0f);
  EXPECT_EQ(run.out.y[100], 7.0f) << "the closing sample's y is the digital byte";
  EXPECT_EQ(run.out.m[100], 7);
  EXPECT_TRUE(run.out.UntouchedFrom(101));
}

// n = 10, f = 0.5: five samples speeding up to the middle, five slowing down, none between.
TEST(InterpolateTrapezoidal, HalfAndHalf) {
  const Interpolated run({{0, 0, 1}, {1, 0, 1}}, 2, 10, {Profile::trapezoidal, 1, 0.5f, 0.5f});
  ASSERT_EQ(run.count, 10u);
  const float expected[] = {0, 0.02f, 0.08f, 0.18f, 0.32f, 0.5f, 0.68f, 0.82f, 0.92f, 0.98f};
  for (size_t i = 0; i < 10; ++i) EXPECT_NEAR(run.out.x[i], expected[i], 1e-7) << i;
  const Interpolated few({{0, 0, 1}, {1, -1, 1}}, 2, 5, {Profile::trapezoidal, 1, 0.5f, 0.5f});
  ASSERT_EQ(few.count, 5u) << "short segments run steadily";
  for (unsigned int i = 0; i < 5; ++i) EXPECT_FLOAT_EQ(few.out.y[i], -static_cast<float>(i) / 5);
}

// A closed square has corners of 0.5: fractions 0.3 * 0.5 + 0.1 = 0.25 at both ends of its sides. 40 samples give
// 10 a side: up ceil(20 * 0.25 / 1.5) = 4, down floor(...) = 3.
TEST(InterpolateOptimized, SquareCorners) {
  const Points path{{0, 0, 1}, {1, 0, 2}, {1, 1, 3}, {0, 1, 4}, {0, 0, 5}};
  const Interpolated run(path, 5, 40, {Profile::optimized});
  ASSERT_EQ(run.count, 40u);
  const double expected[] = {0,        0.25 / 16, 0.25 / 4, 0.25 * 9 / 16, 0.25, 0.25 + 0.5 / 3, 0.25 + 1.0 / 3,
                             0.75, 0.75 + 0.25 * 5 / 9, 0.75 + 0.25 * 8 / 9};
  for (size_t i = 0; i < 10; ++i) EXPECT_NEAR(run.out.x[i], expected[i], 1e-6) << i;
  for (size_t i = 0; i < 40; ++i) {
    EXPECT_EQ(run.out.m[i], 1 + i / 10) << i;
    EXPECT_EQ(run.out.index[i], 100 + i / 10) << i;
  }
}

// Straight on and back: the reversals at 0 and 1 weigh 1, the point at 0.5 nothing. Fractions at the start 0.4, at
// 0.5 0.1; 20 samples a segment: ceil(40 * 0.4 / 1.5) = 11 up, floor(40 * 0.1 / 1.5) = 2 down, 7 between.
TEST(InterpolateOptimized, StraightOnIsNoCorner) {
  const Points path{{0, 0, 1}, {0.5f, 0, 2}, {1, 0, 3}, {0.5f, 0, 4}, {0, 0, 5}};
  const Interpolated run(path, 5, 80, {Profile::optimized});
  ASSERT_EQ(run.count, 80u);
  ASSERT_EQ(run.With(1), 20);
  EXPECT_NEAR(run.out.x[10], 0.5 * 0.4 * 100 / 121, 1e-6);
  EXPECT_NEAR(run.out.x[11], 0.2, 1e-6);
  EXPECT_NEAR(run.out.x[18], 0.45, 1e-6);
  EXPECT_NEAR(run.out.x[19], 0.45 + 0.05 * 0.75, 1e-6);
}

TEST(InterpolateOptimized, MoreKeypointsThanSamplesRaisesTheCount) {
  Random random(3);
  Points path = RandomPath(random, 40);
  for (unsigned int wanted : {1u, 39u, 40u}) EXPECT_GE(Interpolated(path, 40, wanted, {Profile::optimized}).count, 45u);
  // Equal lengths and corners: exactly trunc(4 * 1.25) = 5 on three sides of a triangle, closed.
  const Points triangle{{0, 0, 1}, {1, 0, 2}, {0.5f, 0.8660254f, 3}, {0, 0, 4}};
  EXPECT_EQ(Interpolated(triangle, 4, 4, {Profile::optimized}).count, 5u);
}

struct CountCase {
  const char* name;
  Settings set;
  unsigned int samples;
  Points path;
  unsigned int count;
  std::vector<int> marks, with;  // how many samples carry each mark
};

TEST(Interpolation, SamplesOfEachSegment) {
  constexpr Settings kTrapezoidal = {Profile::trapezoidal, 1, 0.1f, 0};
  const CountCase kRows[] = {
      // Four drawn sides and a blank return of 1: at speed 4 floor(100 / 17) = 5 for it, 23.75 for each side.
      {"blank segments go faster", {Profile::linear, 4}, 100,
       {{0, 0, 9}, {1, 0, 9}, {1, 1, 9}, {0, 1, 9}, {0, 0, 0}, {1, 0, 3}}, 4 * 23 + 5 + 1, {9, 0}, {4 * 23, 5}},
      {"one sample a segment at least", {Profile::linear, 1}, 2,
       {{0, 0, 0}, {1, 0, 0}, {0, 0, 0}, {1, 0, 4}, {0, 0, 4}}, 5, {0}, {3}},
      // Nominal counts 2.5, 2.5, 5; the last keypoint is not written.
      {"halves round up and the last takes the rest", kTrapezoidal, 10,
       {{0, 0, 1}, {0.25f, 0, 2}, {0.5f, 0, 3}, {1, 0, 4}}, 10, {1, 2, 3, 4}, {3, 3, 4, 0}},
      {"segments below a sample are extra", kTrapezoidal, 10,
       {{0, 0, 1}, {0.001f, 0, 2}, {0.002f, 0, 3}, {1, 0, 4}}, 12, {1, 2, 3}, {1, 1, 10}},
      // Drawn out 1 and blank back 1, both ends reversals: weights 1.6 and 2 / 1.75 = 1.142857 of 2.742857.
      {"blank segments weigh less", {Profile::optimized}, 96, {{0, 0, 1}, {1, 0, 0}, {0, 0, 1}}, 96, {1, 0}, {56, 40}},
      // Of a total weight of about 2.9, 0.0001 has a share far below half a sample, 0.02 one of 0.69.
      {"tiny segments vanish, short ones have one", {Profile::optimized}, 100,
       {{0, 0, 1}, {0.0001f, 0, 2}, {0.0201f, 0, 3}, {1, 0, 4}, {0, 0, 5}}, 100, {1, 2}, {0, 1}},
      // Far outside the field the product of straight-on vectors comes out a bit above that of their lengths.
      // Weights 1.3, 1.3 and 2 * 1.6 of 5.8.
      {"large paths have corners too", {Profile::optimized}, 100,
       {{0, 0, 1}, {30, 10, 2}, {60, 20, 3}, {0, 0, 4}}, 100, {1, 2, 3}, {22, 22, 56}},
      {"no length gives all to the last", {Profile::optimized}, 50,
       {{1, 1, 1}, {1, 1, 2}, {1, 1, 3}, {1, 1, 4}}, 50, {1, 2, 3}, {0, 0, 50}},
  };
  for (const auto& row : kRows) {
    const Interpolated run(row.path, row.path.size(), row.samples, row.set);
    EXPECT_EQ(run.count, row.count) << row.name;
    for (size_t i = 0; i < row.marks.size(); ++i) EXPECT_EQ(run.With(row.marks[i]), row.with[i]) << row.name << i;
  }
}

struct FrontCase {
  const char* name;
  unsigned int keypoints, samples;
  float drawAccel;
  unsigned int count, written;
};

TEST(InterpolateData, FrontDoor) {
  const Points path{{0, 0.5f, 7}, {1, 0, 8}, {0, 1, 9}};
  const FrontCase kRows[] = {
      {"no keypoints", 0, 10, 0, 0, 0},
      {"no samples", 3, 0, 0, 3, 0},
      {"as many keypoints as samples are copied", 3, 3, 0.5f, 3, 3},
      {"one keypoint, linear", 1, 10, 0.00009f, 1, 10},
      {"one keypoint, trapezoidal", 1, 10, 0.0001f, 0, 10},
      {"linear has a closing sample", 2, 10, 0.00009f, 11, 11},
      {"trapezoidal has none", 2, 10, 0.0002f, 10, 10},
  };
  for (const auto& row : kRows) {
    const Interpolated run(path, row.keypoints, row.samples, {Profile::front, 1, row.drawAccel, 0});
    EXPECT_EQ(run.count, row.count) << row.name;
    EXPECT_TRUE(run.out.UntouchedFrom(row.written)) << row.name;
    if (row.written > 1) { EXPECT_NE(run.out.x[row.written - 1], kFloatCanary) << row.name; }
  }
  const Interpolated one(path, 1, 10, {Profile::front});
  EXPECT_EQ(one.out.y[0], 7.0f) << "the closing sample overwrote the first";
  EXPECT_EQ(one.out.y[1], 0.5f);
}

TEST(InterpolateData, ClampsItsParameters) {
  Random random(5);
  const Points path = RandomPath(random, 12);
  const auto same = [&](Settings wild, Settings tame) {
    wild.profile = tame.profile = Profile::front;
    const Interpolated a(path, 12, 300, wild), b(path, 12, 300, tame);
    return a.count == b.count && a.out.x == b.out.x && a.out.y == b.out.y && a.out.m == b.out.m;
  };
  EXPECT_TRUE(same({{}, 99, 3, 7}, {{}, 10, 0.5f, 0.5f}));
  EXPECT_TRUE(same({{}, 0, -1, -1}, {{}, 1, 0, 0}));
  EXPECT_TRUE(same({{}, NAN, NAN, NAN}, {{}, 1, 0, 0}));
}

// Where the sample lies along its segment, 0..1, or a failure when it lies elsewhere.
double ProgressOn(const Points& path, size_t segment, float x, float y) {
  const double dx = path.x[segment + 1] - path.x[segment], dy = path.y[segment + 1] - path.y[segment];
  const double px = x - path.x[segment], py = y - path.y[segment];
  EXPECT_NEAR(px * dy - py * dx, 0, 1e-6) << "off segment " << segment;
  const double length = dx * dx + dy * dy;
  return length > 1e-9 ? (px * dx + py * dy) / length : 0;
}

// The linear and trapezoidal profiles have no index; distinct bytes stand in for it on paths short enough.
TEST(InterpolationProperty, SamplesLieOnTheirSegmentsInOrderAndAreAsManyAsPromised) {
  Random random(11);
  for (int round = 0; round < 300; ++round) {
    const unsigned int keypoints = 2 + random() % 60, samples = keypoints + 1 + random() % 2000;
    Points path = RandomPath(random, keypoints);
    for (unsigned int i = 0; i < keypoints; ++i) path.m[i] = static_cast<unsigned char>(i);
    for (Profile profile : {Profile::linear, Profile::trapezoidal, Profile::optimized}) {
      const Interpolated run(path, keypoints, samples, {profile, 3, 0.3f, 0.2f});
      const unsigned int end = profile == Profile::linear ? run.count - 1 : run.count;
      EXPECT_GE(run.count, profile == Profile::trapezoidal ? samples : keypoints);
      EXPECT_LE(run.count, samples + keypoints);
      double before = -1;
      for (unsigned int i = 0; i < end; ++i) {
        const size_t segment = run.out.m[i];
        ASSERT_LT(segment, keypoints - 1);
        if (i > 0 && run.out.m[i - 1] != segment) {
          EXPECT_LT(run.out.m[i - 1], segment);
          before = -1;
        }
        if (profile == Profile::optimized) { EXPECT_EQ(run.out.index[i], segment); }
        const double now = ProgressOn(path, segment, run.out.x[i], run.out.y[i]);
        EXPECT_GE(now, before - 1e-5);
        EXPECT_LE(now, 1 + 1e-5);
        before = now;
      }
      if (HasFailure()) return;
    }
  }
}

TEST(InterpolationProperty, HostileInputStaysInsideTheArrays) {
  Random random(13);
  const float kWild[] = {NAN, INFINITY, -INFINITY, 3e38f, -3e38f, 1e19f, 1e-40f, 0};
  for (int round = 0; round < 2000; ++round) {
    const unsigned int keypoints = random() % 20, samples = random() % 300;
    Points path = RandomPath(random, keypoints);
    for (unsigned int i = 0; i < keypoints; ++i) {
      if (random() % 4 == 0) path.x[i] = kWild[random() % 8];
      if (random() % 4 == 0) path.y[i] = kWild[random() % 8];
    }
    const auto wild = [&] { return random() % 2 ? kWild[random() % 8] : static_cast<float>(random() % 40) - 20; };
    const Settings set{static_cast<Profile>(random() % 4), wild(), wild(), wild()};
    const Interpolated run(path, keypoints, samples, set);  // checks the canaries
  }
}

TEST(InterpolationWorkers, NullArraysAndNoKeypoints) {
  ZRVDataGenerator g;
  Points p{{0, 0, 1}, {1, 0, 1}}, out(300);
  const float *x = p.x.data(), *y = p.y.data();
  float *xOut = out.x.data(), *yOut = out.y.data();
  unsigned char *m = p.m.data(), *mOut = out.m.data();
  EXPECT_EQ(g.InterpolateDataLinear(nullptr, y, m, xOut, yOut, mOut, 2, 9, 1), 0u);
  EXPECT_EQ(g.InterpolateDataTrapezoidal(x, y, m, xOut, nullptr, mOut, 2, 9, 1, 0, 0), 0u);
  EXPECT_EQ(g.InterpolateDataOptimized(x, y, m, xOut, yOut, nullptr, 2, 9), 0u);
  EXPECT_EQ(g.InterpolateData(x, y, nullptr, xOut, yOut, mOut, 2, 9, 1, 0, 0), 0u);
  EXPECT_EQ(g.InterpolateDataLinear(x, y, m, xOut, yOut, mOut, 0, 9, 1), 0u);
  EXPECT_EQ(g.InterpolateDataTrapezoidal(x, y, m, xOut, yOut, mOut, 0, 9, 1, 0, 0), 0u);
  EXPECT_EQ(g.InterpolateDataOptimized(x, y, m, xOut, yOut, mOut, 1, 9), 0u);
  EXPECT_TRUE(out.UntouchedFrom(9));
  EXPECT_EQ(out.x[8], 0.0f) << "one keypoint fills the samples";
}

}  // namespace
