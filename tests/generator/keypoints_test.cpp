#include "points.h"

namespace {

using namespace zrv_test;

unsigned int Close(Points& p, unsigned int n, unsigned int closePoints, bool retrace) {
  return Generator::CloseCurve(p.x.data(), p.y.data(), p.m.data(), p.index.data(), n, closePoints, retrace);
}
unsigned int Optimize(Points& p, unsigned int n, unsigned int most) {
  return Generator::OptimizeKeypoints(p.x.data(), p.y.data(), p.m.data(), p.index.data(), n, most);
}
unsigned int OptimizeWithoutIndex(Points p, unsigned int n, unsigned int most) {
  return Generator::OptimizeKeypoints(p.x.data(), p.y.data(), p.m.data(), n, most);
}

void ExpectKeypoints(const Points& p, const std::vector<Points::Row>& rows, const std::vector<unsigned>& index) {
  for (size_t i = 0; i < rows.size(); ++i) {
    p.ExpectAt(i, {{rows[i].x, rows[i].y}});
    EXPECT_EQ(p.m[i], rows[i].m) << i;
  }
  EXPECT_EQ(Head(p.index, rows.size()), index);
}

TEST(CloseCurve, ReturnsInTheDarkOrRetraces) {
  Points p({{0, 0, 10}, {1, 0, 20}, {1, 0.5f, 30}}, 8), one = p, back = p;
  EXPECT_EQ(Close(p, 3, 2, false), 5u);
  ExpectKeypoints(p, {{0, 0, 10}, {1, 0, 20}, {1, 0.5f, 0}, {0.5f, 0.25f, 0}, {0, 0, 10}}, {100, 101, 0, 0, 100});
  EXPECT_EQ(Close(one, 3, 1, false), 4u);
  ExpectKeypoints(one, {{0, 0, 10}, {1, 0, 20}, {1, 0.5f, 0}, {0, 0, 10}}, {100, 101, 0, 100});
  EXPECT_EQ(Close(back, 3, 0, true), 5u);
  ExpectKeypoints(back, {{0, 0, 10}, {1, 0, 20}, {1, 0.5f, 20}, {1, 0, 10}, {0, 0, 10}}, {100, 101, 101, 100, 100});
  EXPECT_TRUE(p.UntouchedFrom(5) && one.UntouchedFrom(4) && back.UntouchedFrom(5));
}

TEST(CloseCurve, LeavesAlone) {
  Points closed({{0, 0, 1}, {1, 0, 2}, {0, 0, 3}}, 6), open({{0, 0, 1}, {1, 0, 2}, {1, 1, 3}}, 6);
  EXPECT_EQ(Close(closed, 3, 2, false), 3u);
  EXPECT_EQ(Close(open, 3, 0, false), 3u) << "no points wanted";
  EXPECT_EQ(Close(open, 1, 5, true), 1u);
  EXPECT_EQ(Close(open, 0, 5, true), 0u);
  ExpectKeypoints(closed, {{0, 0, 1}, {1, 0, 2}, {0, 0, 3}}, {100, 101, 102});
  EXPECT_TRUE(closed.UntouchedFrom(3) && open.UntouchedFrom(3));
}

TEST(OptimizeKeypoints, TrimsClosesAndDropsRepeatsAndBlankRuns) {
  Points p({{9, 9, 0}, {0, 0, 5}, {1, 0, 5}, {1, 1, 5}, {8, 8, 0}, {7, 7, 0}}, 8);
  EXPECT_EQ(Optimize(p, 6, 0), 4u);
  ExpectKeypoints(p, {{0, 0, 5}, {1, 0, 5}, {1, 1, 0}, {0, 0, 5}}, {101, 102, 0, 101});
  Points q({{0, 0, 5}, {1, 0, 5}, {1, 0, 5}, {1, 1, 0}, {0.5f, 2, 0}, {0.2f, 3, 0}, {0, 1, 5}, {0, 0, 5}}, 10);
  std::fill(q.index.begin(), q.index.begin() + 8, 1u);
  EXPECT_EQ(Optimize(q, 8, 0), 5u);
  ExpectKeypoints(q, {{0, 0, 5}, {1, 0, 5}, {1, 1, 0}, {0, 1, 5}, {0, 0, 5}}, {1, 1, 1, 1, 1});
}

TEST(OptimizeKeypoints, StraightOnIsDroppedUnlessTheMarkChanges) {
  Points base({{0, 0, 5}, {0.5f, 0, 5}, {1, 0, 5}, {1, 1, 5}}, 6), otherByte = base;
  otherByte.m[2] = 6;
  EXPECT_EQ(OptimizeWithoutIndex(base, 4, 99), 4u);
  EXPECT_EQ(OptimizeWithoutIndex(otherByte, 4, 99), 5u) << "the byte changes after the middle";
  EXPECT_EQ(Optimize(base, 4, 99), 5u) << "the indices differ";
}

// A circle of 100 keypoints, with turns of 3.6 degrees (measure 0.02).
TEST(OptimizeKeypoints, ThinsGentleBends) {
  Points p(102);
  for (size_t i = 0; i < 100; ++i) {
    p.x[i] = std::cos(static_cast<float>(i) * 0.0628318531f);
    p.y[i] = std::sin(static_cast<float>(i) * 0.0628318531f);
    p.m[i] = 255;
  }
  EXPECT_EQ(OptimizeWithoutIndex(p, 100, 1000), 101u);
  // Closing leaves keypoint 99 dark, so 2..97 are smooth: 96. r = 41, one in ceil(55 / 41) = 2: 48 go.
  EXPECT_EQ(OptimizeWithoutIndex(p, 100, 60), 101u - 48);
  // Given no target, the closing keypoint alone is too many: r = 1, one in 95 goes.
  EXPECT_EQ(OptimizeWithoutIndex(p, 100, 0), 100u);
  // r is limited to the smooth ones less one: one in ceil(1 / 95) goes, all 96.
  EXPECT_EQ(OptimizeWithoutIndex(p, 100, 2), 5u);
  // Sharp corners but for one bend of 5.7 degrees at keypoint 2: one smooth keypoint thins nothing.
  const Points one({{0, 0, 5}, {1, 0, 5}, {1.05f, 0.5f, 5}, {1.05f, 1, 5}, {0, 1, 5}, {0, 0, 5}}, 8);
  for (unsigned int target : {1u, 3u, 5u}) EXPECT_EQ(OptimizeWithoutIndex(one, 6, target), 6u);
  const Points dark({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, 6);
  for (unsigned int n : {0u, 1u, 2u, 3u, 4u}) EXPECT_EQ(OptimizeWithoutIndex(dark, n, 1), n);
  EXPECT_EQ(OptimizeWithoutIndex(one, 2, 1), 2u);
  EXPECT_EQ(Generator::OptimizeKeypoints(nullptr, nullptr, nullptr, 5, 5), 0u);
}

TEST(OptimizeKeypoints, ClosesWhateverTheStepsInside) {
  Random random(21);
  for (int round = 0; round < 1000; ++round) {
    const unsigned int n = 4 + random() % 30;
    Points p = RandomPath(random, n, n + 1);
    p.m[n / 2] = 1;
    const unsigned int last = Optimize(p, n, random() % (n + 2)) - 1;
    ASSERT_TRUE(last <= n && p.x[last] == p.x[0] && p.y[last] == p.y[0] && p.m[0] != 0) << round;
  }
}

}  // namespace
