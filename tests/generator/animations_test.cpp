#include "ZRVDataGenerator.h"
#include "points.h"

namespace {

using namespace zrv_test;
using Generator = ZRVDataGenerator;

constexpr unsigned int kNothing = 0, kRotate = 1, kScroll = 2, kBounce = 3;

Points BaseFrame(unsigned int numSamples, unsigned int numFrames) {
  Random random(31);
  Points p(static_cast<size_t>(numSamples) * numFrames + 4);
  std::uniform_real_distribution<float> place(-0.6f, 0.6f);
  for (size_t i = 0; i < numSamples; ++i) {
    p.x[i] = place(random.engine);
    p.y[i] = place(random.engine) * 0.5f;
    p.m[i] = static_cast<unsigned char>(1 + i % 200);
    p.index[i] = static_cast<unsigned int>(1 + i);
  }
  return p;
}

unsigned int Animate(Points& p, unsigned int animation, unsigned int numSamples, unsigned int numFrames) {
  return Generator::GenerateAnimations(p.x.data(), p.y.data(), p.m.data(), p.index.data(), animation, numSamples,
                                       numFrames);
}

bool Inside(float v) { return v > -1 && v < 1; }

TEST(Animations, FillTheirRoomAndBlankTheJumps) {
  for (unsigned int animation = kRotate; animation <= kBounce; ++animation) {
    for (unsigned int samples : {1u, 2u, 3u, 100u}) {
      for (unsigned int frames : {1u, 2u, 3u, 50u}) {
        Points p = BaseFrame(samples, frames), without = p;
        EXPECT_EQ(Animate(p, animation, samples, frames), samples * frames);
        EXPECT_TRUE(p.UntouchedFrom(samples * frames));
        EXPECT_EQ(p.m[samples - 1], 0);
        for (size_t i = 0; i < samples * frames; ++i) {
          ASSERT_TRUE(std::isfinite(p.x[i]) && p.x[i] != kFloatCanary) << animation << " at " << i;
          ASSERT_TRUE(std::isfinite(p.y[i]) && p.y[i] != kFloatCanary) << animation << " at " << i;
          ASSERT_EQ(p.index[i], p.m[i] == 0 ? 0 : 1 + i % samples) << "the index travels with the byte";
        }
        Generator::GenerateAnimations(without.x.data(), without.y.data(), without.m.data(), animation, samples, frames);
        EXPECT_EQ(p.x, without.x);
        EXPECT_EQ(p.m, without.m);
      }
    }
  }
}

TEST(Animations, NothingToDo) {
  Points p = BaseFrame(3, 2);
  const Points before = p;
  for (unsigned int animation : {kNothing, 4u}) EXPECT_EQ(Animate(p, animation, 3, 2), 3u);
  for (unsigned int animation = kRotate; animation <= kBounce; ++animation) {
    EXPECT_EQ(Animate(p, animation, 0, 2), 0u);
    EXPECT_EQ(Animate(p, animation, 3, 0), 0u);
    EXPECT_EQ(Generator::GenerateAnimations(nullptr, p.y.data(), p.m.data(), animation, 3, 2), 0u);
  }
  EXPECT_EQ(p.x, before.x);
  EXPECT_EQ(p.m, before.m);
}

// Bounding box (-0.2, -0.1) .. (0.6, 0.5): centre (0.2, 0.2).
TEST(AnimationRotate, QuarterTurnsClockwise) {
  Points p({{0.6f, 0.2f, 9}, {0.2f, 0.5f, 9}, {-0.2f, -0.1f, 9}}, 14);
  ASSERT_EQ(Animate(p, kRotate, 3, 4), 12u);
  EXPECT_NEAR(p.x[3], 0.2, 1e-6);
  EXPECT_NEAR(p.y[3], -0.2, 1e-6) << "right goes down";
  EXPECT_NEAR(p.x[6], -0.2, 1e-6);
  EXPECT_NEAR(p.y[7], -0.1, 1e-6) << "half a turn in frame 2";
  EXPECT_NEAR(p.x[10], -0.1, 1e-6);
  EXPECT_EQ(Head(p.m, 12), (std::vector<int>{9, 9, 0, 9, 9, 0, 9, 9, 0, 9, 9, 0}));
  Points outside({{1.5f, 0, 9}, {-1.5f, 0, 9}, {0, 0, 9}}, 8);
  Animate(outside, kRotate, 3, 2);
  EXPECT_EQ(Head(outside.m, 6), (std::vector<int>{9, 9, 0, 9, 9, 0})) << "lit outside the field, too";
}

// Width 0.5, so the frame starts at -1.5 and moves by 2.5 / 5 = 0.5 a frame.
TEST(AnimationScroll, ThroughTheFieldAndDarkBack) {
  Points p({{0, 0.1f, 9}, {0.5f, 0.2f, 9}, {0.25f, 0.3f, 9}}, 17);
  ASSERT_EQ(Animate(p, kScroll, 3, 5), 15u);
  const std::vector<float> there = {-1.5f, -1, -1.25f, -1, -0.5f, -0.75f, -0.5f, 0, -0.25f, 0, 0.5f, 0.25f};
  EXPECT_EQ(Head(p.x, 12), there);
  EXPECT_EQ(Head(p.m, 12), (std::vector<int>{0, 0, 0, 0, 9, 0, 9, 9, 0, 9, 9, 0})) << "the edge is outside";
  EXPECT_EQ((std::vector<float>(p.x.begin() + 12, p.x.begin() + 15)), (std::vector<float>{0.25f, -0.625f, -1.5f}));
  for (size_t i = 12; i < 15; ++i) {
    EXPECT_EQ(p.y[i], 0.1f) << "the height of the first sample";
    EXPECT_EQ(p.m[i], 0);
  }
  Points one({{0.5f, 0.25f, 9}}, 6);
  Animate(one, kScroll, 1, 4);
  EXPECT_EQ(Head(one.x, 4), (std::vector<float>{-1, -0.5f, 0, 0})) << "one sample holds on the way back";
}

// 16 frames: 0.25 up each; the centre reaches 1 in frame 4 and is back at 0.75 in frame 5.
TEST(AnimationBounce, UpAndDown) {
  Points p({{-0.125f, 0, 9}, {0.125f, 0.25f, 9}, {0, -0.25f, 9}}, 50);
  ASSERT_EQ(Animate(p, kBounce, 3, 16), 48u);
  const double expected[] = {0, 0.25, 0.5, 0.75, 1, 0.75, 0.5, 0.25, 0, -0.25, -0.5, -0.75, -1, -0.75, -0.5, -0.25};
  for (size_t f = 0; f < 16; ++f) {
    EXPECT_NEAR(p.y[3 * f], expected[f], 1e-5) << f;
    EXPECT_NEAR(p.x[3 * f], -0.125, 1e-5) << f;
  }
  EXPECT_EQ(p.m[9], 9);
  EXPECT_EQ(p.m[10], 0) << "0.75 + 0.25 is the edge, which is outside";
  EXPECT_EQ(p.m[12 * 3 + 2], 0);
}

TEST(AnimationBounce, AnyDirectionReflectsAtTheEdges) {
  for (float angle = 0; angle < 6.3f; angle += 0.1f) {
    Points p = BaseFrame(50, 40);
    ASSERT_EQ(Generator::AnimationBounce(p.x.data(), p.y.data(), p.m.data(), 50, 40, angle), 2000u);
    float lowX, highX, lowY, highY;
    for (size_t f = 0; f < 40; ++f) {
      Generator::BoundingBox(&p.x[50 * f], &p.y[50 * f], 50, lowX, highX, lowY, highY);
      EXPECT_LE(std::abs(lowX + highX) / 2, 1.0001f);
      EXPECT_LE(std::abs(lowY + highY) / 2, 1.0001f);
      if (f == 0) continue;
      const float step = std::hypot(p.x[50 * f] - p.x[50 * f - 50], p.y[50 * f] - p.y[50 * f - 50]);
      EXPECT_LE(step, 0.1001f);
      if (f == 1) { EXPECT_NEAR(step, 0.1, 1e-5) << "far from any edge"; }
    }
    for (size_t i = 50; i < 2000; ++i) {
      const bool lit = Inside(p.x[i]) && Inside(p.y[i]) && i % 50 != 49;
      EXPECT_EQ(p.m[i], lit ? 1 + i % 50 : 0) << angle << " at " << i;
    }
  }
}

TEST(Animations, HostileInputIsHarmless) {
  for (float wild : {NAN, INFINITY, -INFINITY, 3e38f}) {
    for (unsigned int animation = kRotate; animation <= kBounce; ++animation) {
      Points p = BaseFrame(20, 10);
      p.x[3] = p.y[7] = wild;
      EXPECT_EQ(Animate(p, animation, 20, 10), 200u);
      EXPECT_TRUE(p.UntouchedFrom(200));
    }
    Points p = BaseFrame(20, 10);
    EXPECT_EQ(Generator::AnimationBounce(p.x.data(), p.y.data(), p.m.data(), 20, 10, wild), 200u);
  }
  Points p = BaseFrame(2, 2);
  EXPECT_EQ(Animate(p, kRotate, 1u << 16, 1u << 16), 0u) << "more samples than can be counted";
}

}  // namespace
