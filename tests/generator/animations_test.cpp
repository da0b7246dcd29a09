#include "points.h"

namespace {

using namespace zrv_test;

constexpr unsigned int kRotate = 1, kScroll = 2, kBounce = 3;

Points BaseFrame(unsigned int numSamples, unsigned int numFrames) {
  Random random(31);
  Points p(static_cast<size_t>(numSamples) * numFrames + 4);
  for (size_t i = 0; i < numSamples; ++i) {
    p.x[i] = random.Place() * 0.6f;
    p.y[i] = random.Place() * 0.3f;
    p.m[i] = static_cast<unsigned char>(1 + i % 200);
    p.index[i] = static_cast<unsigned int>(1 + i);
  }
  return p;
}

unsigned int Animate(Points& p, unsigned int animation, unsigned int numSamples, unsigned int numFrames) {
  return Generator::GenerateAnimations(p.x.data(), p.y.data(), p.m.data(), p.index.data(), animation, numSamples,
                                       numFrames);
}

TEST(Animations, FillTheirRoomAndBlankTheJumps) {
  for (unsigned int animation = kRotate; animation <= kBounce; ++animation) {
    for (unsigned int samples : {1u, 2u, 3u, 100u}) {
      for (unsigned int frames : {1u, 2u, 3u, 50u}) {
        Points p = BaseFrame(samples, frames), without = p;
        EXPECT_EQ(Animate(p, animation, samples, frames), samples * frames);
        EXPECT_TRUE(p.UntouchedFrom(samples * frames));
        EXPECT_EQ(p.m[samples - 1], 0);
        for (size_t i = 0; i < samples * frames; ++i) {
          ASSERT_TRUE(std::abs(p.x[i]) < 10 && std::abs(p.y[i]) < 10) << animation << " at " << i;
          ASSERT_EQ(p.index[i], p.m[i] == 0 ? 0 : 1 + i % samples) << "the index travels with the byte";
        }
        float *x = without.x.data(), *y = without.y.data();
        Generator::GenerateAnimations(x, y, without.m.data(), animation, samples, frames);
        EXPECT_EQ(p.x, without.x);
        EXPECT_EQ(p.m, without.m);
      }
    }
  }
}

TEST(Animations, NothingToDo) {
  Points p = BaseFrame(3, 2);
  const Points before = p;
  for (unsigned int animation : {0u, 4u}) EXPECT_EQ(Animate(p, animation, 3, 2), 3u);
  for (unsigned int animation = kRotate; animation <= kBounce; ++animation) {
    EXPECT_EQ(Animate(p, animation, 0, 2) + Animate(p, animation, 3, 0), 0u);
    EXPECT_EQ(Generator::GenerateAnimations(nullptr, p.y.data(), p.m.data(), animation, 3, 2), 0u);
    EXPECT_EQ(Animate(p, animation, 1u << 16, 1u << 16), 0u) << "more samples than can be counted";
  }
  EXPECT_TRUE(p.x == before.x && p.m == before.m);
}

// Bounding box (-0.2, -0.1) .. (0.6, 0.5): centre (0.2, 0.2).
TEST(AnimationRotate, QuarterTurnsClockwise) {
  Points p({{0.6f, 0.2f, 9}, {0.2f, 0.5f, 9}, {-0.2f, -0.1f, 9}}, 14);
  ASSERT_EQ(Animate(p, kRotate, 3, 4), 12u);
  p.ExpectAt(3, {{0.2, -0.2}, {0.5, 0.2}, {-0.1, 0.6}, {-0.2, 0.2}, {0.2, -0.1}, {0.6, 0.5}});
  p.ExpectAt(9, {{0.2, 0.6}, {-0.1, 0.2}, {0.5, -0.2}});
  EXPECT_EQ(Head(p.m, 12), (std::vector<int>{9, 9, 0, 9, 9, 0, 9, 9, 0, 9, 9, 0}));
  Points outside({{1.5f, 0, 9}, {-1.5f, 0, 9}, {0, 0, 9}}, 8);
  Animate(outside, kRotate, 3, 2);
  EXPECT_EQ(outside.With(9, 6), 4) << "lit outside the field, too";
}

// Width 0.5, so the frame starts at -1.5 and moves by 2.5 / 5 = 0.5 a frame; the last one goes back.
TEST(AnimationScroll, ThroughTheFieldAndDarkBack) {
  Points p({{0, 0.1f, 9}, {0.5f, 0.2f, 9}, {0.25f, 0.3f, 9}}, 17);
  ASSERT_EQ(Animate(p, kScroll, 3, 5), 15u);
  p.ExpectAt(0, {{-1.5, 0.1}, {-1, 0.2}, {-1.25, 0.3}, {-1, 0.1}, {-0.5, 0.2}, {-0.75, 0.3}});
  p.ExpectAt(6, {{-0.5, 0.1}, {0, 0.2}, {-0.25, 0.3}, {0, 0.1}, {0.5, 0.2}, {0.25, 0.3}});
  p.ExpectAt(12, {{0.25, 0.1}, {-0.625, 0.1}, {-1.5, 0.1}});
  EXPECT_EQ(Head(p.m, 15), (std::vector<int>{0, 0, 0, 0, 9, 0, 9, 9, 0, 9, 9, 0, 0, 0, 0})) << "open edges";
  Points one({{0.5f, 0.25f, 9}}, 6);
  Animate(one, kScroll, 1, 4);
  one.ExpectAt(0, {{-1, 0.25}, {-0.5, 0.25}, {0, 0.25}, {0, 0.25}}, "one sample holds on the way back");
}

// 16 frames: 0.25 each; the centre reaches 1 in frame 4 and is back at 0.75 in frame 5.
TEST(AnimationBounce, UpAndDownOrBackAndForth) {
  const double expected[] = {0, 0.25, 0.5, 0.75, 1, 0.75, 0.5, 0.25, 0, -0.25, -0.5, -0.75, -1, -0.75, -0.5, -0.25};
  Points up({{-0.125f, 0, 9}, {0.125f, 0.25f, 9}, {0, -0.25f, 9}}, 50), right = up;
  std::swap(right.x, right.y);
  ASSERT_EQ(Animate(up, kBounce, 3, 16), 48u);
  ASSERT_EQ(Generator::AnimationBounce(right.x.data(), right.y.data(), right.m.data(), 3, 16, 0), 48u);
  for (size_t f = 0; f < 16; ++f) {
    up.ExpectAt(3 * f, {{-0.125, expected[f]}}, "up", 1e-5);
    right.ExpectAt(3 * f, {{expected[f], -0.125}}, "right", 1e-5);
  }
  for (const Points* p : {&up, &right}) {
    EXPECT_EQ(p->m[9], 9);
    EXPECT_EQ(p->m[10], 0) << "0.75 + 0.25 is the edge, which is outside";
  }
}

}  // namespace
