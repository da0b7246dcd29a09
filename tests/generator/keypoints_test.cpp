#include "ZRVDataGenerator.h"
#include "points.h"

namespace {

using namespace zrv_test;

unsigned int Close(Points& p, unsigned int n, unsigned int closePoints, bool retrace) {
  return ZRVDataGenerator::CloseCurve(p.x.data(), p.y.data(), p.m.data(), p.index.data(), n, closePoints, retrace);
}
unsigned int Optimize(Points& p, unsigned int n, unsigned int most) {
  return ZRVDataGenerator::OptimizeKeypoints(p.x.data(), p.y.data(), p.m.data(), p.index.data(), n, most);
}

void ExpectPoints(const Points& p, unsigned int n, std::vector<float> x, std::vector<float> y, std::vector<int> m,
                  std::vector<unsigned int> index) {
  ASSERT_EQ(n, x.size());
  EXPECT_EQ(Head(p.x, n), x);
  EXPECT_EQ(Head(p.y, n), y);
  EXPECT_EQ(Head(p.m, n), m);
  EXPECT_EQ(Head(p.index, n), index);
}

TEST(CloseCurve, ReturnsInTheDarkOrRetraces) {
  Points p({{0, 0, 10}, {1, 0, 20}, {1, 0.5f, 30}}, 8), one = p;
  ExpectPoints(p, Close(p, 3, 2, false), {0, 1, 1, 0.5f, 0}, {0, 0, 0.5f, 0.25f, 0}, {10, 20, 0, 0, 10},
               {100, 101, 0, 0, 100});
  EXPECT_TRUE(p.UntouchedFrom(5));
  ExpectPoints(one, Close(one, 3, 1, false), {0, 1, 1, 0}, {0, 0, 0.5f, 0}, {10, 20, 0, 10}, {100, 101, 0, 100});
  Points back({{0, 0, 10}, {1, 0, 20}, {2, 1, 30}}, 8);
  ExpectPoints(back, Close(back, 3, 0, true), {0, 1, 2, 1, 0}, {0, 0, 1, 0, 0}, {10, 20, 20, 10, 10},
               {100, 101, 101, 100, 100});
  EXPECT_TRUE(back.UntouchedFrom(5));
}

TEST(CloseCurve, LeavesAlone) {
  Points closed({{0, 0, 1}, {1, 0, 2}, {0, 0, 3}}, 6), open({{0, 0, 1}, {1, 0, 2}, {1, 1, 3}}, 6);
  EXPECT_EQ(Close(closed, 3, 2, false), 3u);
  EXPECT_EQ(Close(open, 3, 0, false), 3u) << "no points wanted";
  EXPECT_EQ(Close(open, 1, 5, true), 1u);
  EXPECT_EQ(Close(open, 0, 5, true), 0u);
  EXPECT_EQ(Head(closed.m, 3), (std::vector<int>{1, 2, 3}));
  EXPECT_TRUE(closed.UntouchedFrom(3) && open.UntouchedFrom(3));
}

TEST(OptimizeKeypoints, TrimsBlankEndsAndCloses) {
  Points p({{9, 9, 0}, {0, 0, 5}, {1, 0, 5}, {1, 1, 5}, {8, 8, 0}, {7, 7, 0}}, 8);
  ExpectPoints(p, Optimize(p, 6, 0), {0, 1, 1, 0}, {0, 0, 1, 0}, {5, 5, 0, 5}, {101, 102, 0, 101});
}

TEST(OptimizeKeypoints, DropsRepeatsAndBlankRuns) {
  Points p({{0, 0, 5}, {1, 0, 5}, {1, 0, 5}, {1, 1, 0}, {0.5f, 2, 0}, {0.2f, 3, 0}, {0, 1, 5}, {0, 0, 5}}, 10);
  std::fill(p.index.begin(), p.index.begin() + 8, 1u);
  ExpectPoints(p, Optimize(p, 8, 0), {0, 1, 1, 0, 0}, {0, 0, 1, 1, 0}, {5, 5, 0, 5, 5}, {1, 1, 1, 1, 1});
}

TEST(OptimizeKeypoints, StraightOnIsDroppedUnlessTheMarkChanges) {
  const Points base({{0, 0, 5}, {0.5f, 0, 5}, {1, 0, 5}, {1, 1, 5}}, 6);
  const auto count = [](Points p) { return Optimize(p, 4, 99); };
  const auto plain = [](Points p) {
    return ZRVDataGenerator::OptimizeKeypoints(p.x.data(), p.y.data(), p.m.data(), 4, 99);
  };
  EXPECT_EQ(count(base), 5u) << "the indices differ";
  EXPECT_EQ(plain(base), 4u) << "without indices the middle goes";
  Points otherByte = base;
  otherByte.m[2] = 6;
  EXPECT_EQ(plain(otherByte), 5u) << "the byte changes after the middle";
}

// A circle of 100 keypoints, with turns of 3.6 degrees (measure 0.02).
TEST(OptimizeKeypoints, ThinsGentleBends) {
  Points p(102);
  for (size_t i = 0; i < 100; ++i) {
    p.x[i] = std::cos(static_cast<float>(i) * 0.0628318531f);
    p.y[i] = std::sin(static_cast<float>(i) * 0.0628318531f);
    p.m[i] = 255;
  }
  const auto optimize = [](Points list, unsigned int most) {
    const unsigned int n =
        ZRVDataGenerator::OptimizeKeypoints(list.x.data(), list.y.data(), list.m.data(), 100, most);
    EXPECT_EQ(list.x[n - 1], list.x[0]);
    EXPECT_EQ(list.y[n - 1], list.y[0]);
    return n;
  };
  EXPECT_EQ(optimize(p, 1000), 101u);
  // Closing leaves keypoint 99 dark, so 2..97 are smooth: 96. r = 41, one in ceil(55 / 41) = 2: 48 go.
  EXPECT_EQ(optimize(p, 60), 101u - 48);
  // Given no target, the closing keypoint alone is too many: r = 1, one in 95 goes.
  EXPECT_EQ(optimize(p, 0), 100u);
  // r is limited to the smooth ones less one: one in ceil(1 / 95) goes, all 96.
  EXPECT_EQ(optimize(p, 2), 5u);
}

TEST(OptimizeKeypoints, OneSmoothKeypointThinsNothing) {
  // Sharp corners but for one bend of 5.7 degrees at keypoint 2.
  const Points base({{0, 0, 5}, {1, 0, 5}, {1.05f, 0.5f, 5}, {1.05f, 1, 5}, {0, 1, 5}, {0, 0, 5}}, 8);
  for (unsigned int target : {1u, 3u, 5u}) {
    Points p = base;
    EXPECT_EQ(Optimize(p, 6, target), 6u);
  }
}

TEST(OptimizeKeypoints, LeavesAlone) {
  Points dark({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, 6);
  const Points before = dark;
  for (unsigned int n : {0u, 1u, 2u, 3u, 4u}) EXPECT_EQ(Optimize(dark, n, 1), n);
  EXPECT_EQ(dark.x, before.x);
  Points two({{0, 0, 1}, {1, 0, 1}}, 4);
  EXPECT_EQ(Optimize(two, 2, 1), 2u);
  EXPECT_EQ(ZRVDataGenerator::OptimizeKeypoints(nullptr, nullptr, nullptr, 5, 5), 0u);
}

// These hold whatever the steps inside; with wild values only the bounds.
TEST(KeypointProperty, ClosedBoundedAndDrawnFromTheInput) {
  Random random(21);
  const float kWild[] = {NAN, INFINITY, -INFINITY, 3e38f, 1e-40f};
  for (int round = 0; round < 1500; ++round) {
    const bool wild = round % 3 == 0;
    const unsigned int n = wild ? random() % 20 : 4 + random() % 60;
    Points p = RandomPath(random, n, n + 4);
    for (unsigned int i = 0; wild && i < n; i += 1 + random() % 5) p.x[i] = kWild[random() % 5];
    const Points before = p;
    const unsigned int count = Optimize(p, n, random() % (n + 2));
    EXPECT_LE(count, n + 1);
    EXPECT_TRUE(p.UntouchedFrom(n + 1));
    if (wild) continue;
    if (std::all_of(before.m.begin(), before.m.begin() + n, [](int m) { return m == 0; })) continue;
    EXPECT_EQ(p.x[count - 1], p.x[0]);
    EXPECT_EQ(p.y[count - 1], p.y[0]);
    EXPECT_NE(p.m[0], 0);
    for (unsigned int i = 0; i + 3 < count; ++i) EXPECT_FALSE(p.m[i] == 0 && p.m[i + 1] == 0) << "two blank in a row";
    for (unsigned int i = 0; i < count; ++i) {
      bool known = false;
      for (unsigned int k = 0; k < n; ++k) known |= before.x[k] == p.x[i] && before.y[k] == p.y[i];
      EXPECT_TRUE(known) << i;
    }
  }
}

}  // namespace
