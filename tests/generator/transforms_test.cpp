#include "points.h"

namespace {

using namespace zrv_test;

Points At(const std::vector<XY>& places) {
  Points p(places.size());
  for (size_t i = 0; i < places.size(); ++i) {
    p.x[i] = static_cast<float>(places[i].x), p.y[i] = static_cast<float>(places[i].y);
  }
  return p;
}

Points Cloud(unsigned int seed, unsigned int n) {
  Random random(seed);
  Points p(n);
  for (size_t i = 0; i < n; ++i) p.x[i] = random.Place(), p.y[i] = random.Place();
  return p;
}

// The points after transform(x, y, count).
template <typename Transform>
void Expect(const char* name, Points p, Transform transform, const std::vector<XY>& expected) {
  EXPECT_EQ(transform(p.x.data(), p.y.data(), p.size()), p.size()) << name;
  p.ExpectAt(0, expected, name);
  EXPECT_EQ(transform(static_cast<float*>(nullptr), p.y.data(), 1u), 0u) << name;
}

TEST(BoundingBox, EveryLengthAndPlace) {
  float lowX = 9, highX = 9, lowY = 9, highY = 9;
  Generator::BoundingBox(nullptr, nullptr, 0, lowX, highX, lowY, highY);
  EXPECT_EQ(lowX, 0.0f);
  EXPECT_EQ(highY, 0.0f);
  for (unsigned int n = 1; n <= 70; ++n) {
    for (size_t at = 0; at < n; ++at) {
      Points p = Cloud(n, n);
      p.x[at] = -3, p.y[at] = 4;
      Generator::BoundingBox(p.x.data(), p.y.data(), n, lowX, highX, lowY, highY);
      EXPECT_EQ(lowX, -3.0f);
      EXPECT_EQ(highY, 4.0f);
      EXPECT_EQ(highX, *std::max_element(p.x.begin(), p.x.end()));
      EXPECT_EQ(lowY, *std::min_element(p.y.begin(), p.y.end()));
    }
  }
}

TEST(NormalizeData, FillsTheLargerAxisAndTurnsClockwise) {
  const auto normalize = [](float scale, float angle, float minX, float maxX, float minY, float maxY) {
    return [=](auto... p) { return Generator::NormalizeData(p..., scale, angle, minX, maxX, minY, maxY); };
  };
  Expect("the span is 5 - 1", At({{1, 2}, {5, 4}, {3, 3}}), normalize(0.5f, 0, 1, 5, 2, 4),
         {{-0.5, -0.25}, {0.5, 0.25}, {0, 0}});
  Expect("one common scale, from -1 in x to 7 in y", At({{-1, 5}, {1, 7}}), normalize(1, 0, -1, 1, 5, 7),
         {{-0.25, -0.25}, {0.25, 0.25}});
  Expect("turned", At({{1, 3}, {5, 3}, {3, 5}}), normalize(1, kPi / 2, 1, 5, 1, 5), {{0, 1}, {0, -1}, {1, 0}});
  Expect("a single spot", At({{2, 2}}), normalize(1, 0, 2, 2, 2, 2), {{0, 0}});
}

TEST(AffineTransformData, AboutTheCentreAndClipped) {
  const std::vector<XY> still = {{0.8, 0.2}, {0.4, -0.2}, {0.6, 0}};
  const auto affine = [](float scale, float angle, float offsetX, float offsetY) {
    return [=](auto... p) { return Generator::AffineTransformData(p..., scale, angle, offsetX, offsetY); };
  };
  Expect("below all thresholds", At(still), affine(1.005f, 0, 0.005f, -0.005f), still);
  Expect("not clipped when nothing is wanted", At({{3, -3}}), affine(1, 0, 0, 0), {{3, -3}});
  Expect("shift", At(still), affine(1, 0, 0.5f, 0), {{1, 0.2}, {0.9, -0.2}, {1, 0}});
  Expect("shift down", At(still), affine(1, 0, 0, -0.9f), {{0.8, -0.7}, {0.4, -1}, {0.6, -0.9}});
  Expect("scale", At(still), affine(2, 0, 0, 0), {{1, 0.4}, {0.2, -0.4}, {0.6, 0}});
  Expect("clockwise", At(still), affine(1, kPi / 2, 0, 0), {{0.8, -0.2}, {0.4, 0.2}, {0.6, 0}});
  Expect("a small shift counts with a scale", At(still), affine(0.5f, 0, 0.005f, 0.009f),
         {{0.705, 0.109}, {0.505, -0.091}, {0.605, 0.009}});
}

// The centre goes where the diagonals cross.
TEST(ProjectiveTransform, TakesTheFieldToTheCornersAndBack) {
  Generator generator;
  const std::vector<XY> field = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}, {0, 0}};
  const auto project = [&](auto... p) { return generator.ProjectiveTransformData(p...); };
  const std::vector<XY> quarter = {{0.5, 0.5}, {1, 0.5}, {1, 1}, {0.5, 1}, {0.75, 0.75}};
  Expect("as made", At(field), project, quarter);
  generator.InitProjectiveTransformMatrix(nullptr, nullptr, true);
  Expect("and back", At(quarter), project, field);
  const float x[] = {0, 1, 1.5f, 0.5f}, y[] = {0, 0.25f, 1, 0.75f};
  generator.InitProjectiveTransformMatrix(x, y, false);
  Expect("parallelogram", At(field), project, {{0, 0}, {1, 0.25}, {1.5, 1}, {0.5, 0.75}, {0.75, 0.5}});
  const float anyX[] = {-0.9f, 0.8f, 0.6f, -0.7f}, anyY[] = {-0.8f, -0.6f, 0.9f, 0.5f};
  generator.InitProjectiveTransformMatrix(anyX, anyY, false);
  Expect("no two sides parallel", At(field), project,
         {{-0.9, -0.8}, {0.8, -0.6}, {0.6, 0.9}, {-0.7, 0.5}, {-0.125, 0.0783333}});
}

// Square to (2, 3) .. (4, 7): a = 2, c = 2, e = 4, f = 3, the rest 0; determinant 8. One would expect the inverse
// entries 2 and 5 to be -c / a = -1 and -f / e = -0.75; they are (cd - af) / det = -0.75 and f = 3. So
// u = x / 2 - 0.75, v = y / 4 + 3, then 2u - 1 and 2v - 1.
TEST(ProjectiveTransform, InverseKeepsF) {
  const float x[] = {2, 4, 4, 2}, y[] = {3, 3, 7, 7};
  Generator generator;
  generator.InitProjectiveTransformMatrix(x, y, true);
  Expect("inverse keeps f", At({{2, 3}, {4, 7}}), [&](auto... p) { return generator.ProjectiveTransformData(p...); },
         {{-0.5, 6.5}, {1.5, 8.5}});
}

// At (1, 1) q = sqrt(2): k = strength * sqrt(2), and the factor c solves k c^3 + c = 1, of a table for k in 0..1.
TEST(RadialTransform, SolvesTheCubic) {
  Generator generator;
  const auto radial = [&](float strength) {
    return [&, strength](auto... p) { return generator.RadialTransformData(p..., strength); };
  };
  for (float strength : {-1e30f, -5.0f, 0.0f, 0.1f, 0.123f, 0.5f, 0.705f, 0.70711f, 50.0f, 1e30f, INFINITY}) {
    Points p = At({{1, 1}});
    radial(strength)(p.x.data(), p.y.data(), 1u);
    const double k = std::clamp(strength * std::sqrt(2.0), 0.0, 1.0), c = p.x[0];
    EXPECT_NEAR(k * c * c * c + c, 1, 1e-4) << strength;
    EXPECT_EQ(p.y[0], p.x[0]);
  }
  Expect("no number reads the table's start", At({{1, 1}}), radial(NAN), {{1, 1}});
  generator.InitRadialTransformMult(false);
  Expect("(0.5 * 1.41421 + 1) * 1.18921", At({{1, 1}, {0, 0}}), radial(0.5f), {{2.0301036, 2.0301036}, {0, 0}});
}

TEST(TangentialTransform, KeepsTheUnitCircle) {
  const auto tangential = [](float strength) {
    return [=](auto... p) { return Generator::TangentialTransformData(p..., strength); };
  };
  for (float strength : {0.1f, 0.5f, 1.0f}) {
    const double s = strength, inside = 0.5 * (0.5 * s / std::tan(0.5 * s)) * std::tan(s) / s;
    std::vector<XY> from, to;
    for (int i = 0; i < 200; ++i) {  // more than are worked on at once
      from.insert(from.end(), {{1, 0}, {0.5, 0}, {0, -1}, {0.6, 0.8}, {0, 0}});
      to.insert(to.end(), {{1, 0}, {inside, 0}, {0, -1}, {0.6, 0.8}, {0, 0}});
    }
    Expect("repeated", At(from), tangential(strength), to);
  }
  Expect("a negative strength scales by strength times radius", At({{0.5, 0}}), tangential(-0.4f), {{-0.1, 0}});
}

// Chosen so that each order gives another result.
TEST(TransformData, Order) {
  Generator generator;
  Points all = Cloud(9, 30), steps = all;
  generator.TransformData(all.x.data(), all.y.data(), 30, 0.8f, 0.3f, 0.1f, -0.1f, true, 0.5f, 0.4f);
  float *x = steps.x.data(), *y = steps.y.data();
  Generator::AffineTransformData(x, y, 30, 0.8f, 0.3f, 0.1f, -0.1f);
  generator.ProjectiveTransformData(x, y, 30);
  generator.RadialTransformData(x, y, 30, 0.4f);
  Generator::TangentialTransformData(x, y, 30, 0.5f);
  EXPECT_EQ(all.x, steps.x);
  EXPECT_EQ(all.y, steps.y);
  generator.TransformData(x, y, 30, 1, 0, 0, 0, false, 0.001f, -0.001f);
  EXPECT_EQ(all.x, steps.x) << "below all thresholds";
}

}  // namespace
