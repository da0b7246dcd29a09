#include "ZRVDataGenerator.h"
#include "points.h"

namespace {

using namespace zrv_test;
using Generator = ZRVDataGenerator;

constexpr float kPi = 3.14159274f;

struct Cloud {
  std::vector<float> x, y;

  unsigned int size() const { return static_cast<unsigned int>(x.size()); }
  void Expect(const std::vector<float>& wantedX, const std::vector<float>& wantedY, const char* name = "",
              double tolerance = 1e-6) const {
    for (size_t i = 0; i < wantedX.size(); ++i) {
      EXPECT_NEAR(x[i], wantedX[i], tolerance) << name << " x at " << i;
      EXPECT_NEAR(y[i], wantedY[i], tolerance) << name << " y at " << i;
    }
  }
};

Cloud RandomCloud(unsigned int seed, size_t n) {
  Random random(seed);
  std::uniform_real_distribution<float> place(-1, 1);
  Cloud cloud;
  for (size_t i = 0; i < n; ++i) {
    cloud.x.push_back(place(random.engine));
    cloud.y.push_back(place(random.engine));
  }
  return cloud;
}

TEST(BoundingBox, EveryLengthAndPlace) {
  float lowX = 9, highX = 9, lowY = 9, highY = 9;
  Generator::BoundingBox(nullptr, nullptr, 0, lowX, highX, lowY, highY);
  EXPECT_EQ(lowX, 0.0f);
  EXPECT_EQ(highY, 0.0f);
  for (size_t n = 1; n <= 70; ++n) {
    for (size_t at = 0; at < n; ++at) {
      Cloud cloud = RandomCloud(static_cast<unsigned int>(n), n);
      cloud.x[at] = -3, cloud.y[at] = 4;
      Generator::BoundingBox(cloud.x.data(), cloud.y.data(), cloud.size(), lowX, highX, lowY, highY);
      EXPECT_EQ(lowX, -3.0f);
      EXPECT_EQ(highY, 4.0f);
      EXPECT_EQ(highX, *std::max_element(cloud.x.begin(), cloud.x.end()));
      EXPECT_EQ(lowY, *std::min_element(cloud.y.begin(), cloud.y.end()));
    }
  }
}

TEST(NormalizeData, FillsTheLargerAxisAndTurnsClockwise) {
  Cloud wide{{1, 5, 3}, {2, 4, 3}};
  EXPECT_EQ(Generator::NormalizeData(wide.x.data(), wide.y.data(), 3, 0.5f, 0, 1, 5, 2, 4), 3u);
  wide.Expect({-0.5f, 0.5f, 0}, {-0.25f, 0.25f, 0}, "the span is 5 - 1");
  // The span is taken on one common scale: here from -1 (in x) to 7 (in y).
  Cloud apart{{-1, 1}, {5, 7}};
  Generator::NormalizeData(apart.x.data(), apart.y.data(), 2, 1, 0, -1, 1, 5, 7);
  apart.Expect({-0.25f, 0.25f}, {-0.25f, 0.25f});
  Cloud turned{{1, 5, 3}, {3, 3, 5}};
  Generator::NormalizeData(turned.x.data(), turned.y.data(), 3, 1, kPi / 2, 1, 5, 1, 5);
  turned.Expect({0, 0, 1}, {1, -1, 0});
  Cloud spot{{2, 2}, {2, 2}};
  Generator::NormalizeData(spot.x.data(), spot.y.data(), 2, 1, 0, 2, 2, 2, 2);
  spot.Expect({0, 0}, {0, 0}, "a single spot goes to the centre");
}

struct AffineCase {
  const char* name;
  float scale, angle, offsetX, offsetY;
  std::vector<float> x, y;
};

TEST(AffineTransformData, Table) {
  const std::vector<float> x = {0.8f, 0.4f, 0.6f}, y = {0.2f, -0.2f, 0};
  const AffineCase kRows[] = {
      {"below all thresholds", 1.005f, 0, 0.005f, -0.005f, x, y},
      {"shift alone", 1, 0, 0.5f, 0, {1, 0.9f, 1}, y},
      {"shift down alone", 1, 0, 0, -0.9f, x, {-0.7f, -1, -0.9f}},
      {"scale about the centre", 2, 0, 0, 0, {1, 0.2f, 0.6f}, {0.4f, -0.4f, 0}},
      {"quarter turn clockwise", 1, kPi / 2, 0, 0, {0.8f, 0.4f, 0.6f}, {-0.2f, 0.2f, 0}},
      {"a small shift counts with a scale", 0.5f, 0, 0.005f, 0, {0.705f, 0.505f, 0.605f}, {0.1f, -0.1f, 0}},
      {"flat", 0, 0, -0.6f, 0, {0, 0, 0}, {0, 0, 0}},
  };
  for (const auto& row : kRows) {
    Cloud cloud{x, y};
    EXPECT_EQ(Generator::AffineTransformData(cloud.x.data(), cloud.y.data(), 3, row.scale, row.angle, row.offsetX,
                                             row.offsetY),
              3u);
    cloud.Expect(row.x, row.y, row.name);
  }
  Cloud outside{{3}, {-3}};
  Generator::AffineTransformData(outside.x.data(), outside.y.data(), 1, 1, 0, 0, 0);
  EXPECT_EQ(outside.x[0], 3.0f) << "not clipped when nothing is wanted";
}

TEST(ProjectiveTransform, Default) {
  Generator generator;
  Cloud cloud{{-1, 0, 1}, {1, 0, -1}};
  const Cloud before = cloud;
  EXPECT_EQ(generator.ProjectiveTransformData(cloud.x.data(), cloud.y.data(), 3), 3u);
  cloud.Expect({0.5f, 0.75f, 1}, {1, 0.75f, 0.5f});
  generator.InitProjectiveTransformMatrix(nullptr, nullptr, true);
  generator.ProjectiveTransformData(cloud.x.data(), cloud.y.data(), 3);
  cloud.Expect(before.x, before.y, "and back");
}

TEST(ProjectiveTransform, TakesTheFieldToTheCorners) {
  const struct {
    const char* name;
    std::vector<float> x, y;
  } kRows[] = {
      {"parallelogram", {0, 1, 1.5f, 0.5f}, {0, 0.25f, 1, 0.75f}},
      {"no two sides parallel", {-0.9f, 0.8f, 0.6f, -0.7f}, {-0.8f, -0.6f, 0.9f, 0.5f}},
  };
  for (const auto& row : kRows) {
    Generator generator;
    generator.InitProjectiveTransformMatrix(row.x.data(), row.y.data(), false);
    Cloud field{{-1, 1, 1, -1, 0}, {-1, -1, 1, 1, 0}};
    generator.ProjectiveTransformData(field.x.data(), field.y.data(), 5);
    field.Expect(row.x, row.y, row.name);
    // The centre goes where the diagonals cross.
    const double px = field.x[4], py = field.y[4];
    const auto off = [&](size_t i, size_t j) {
      return (row.x[j] - row.x[i]) * (py - row.y[i]) - (row.y[j] - row.y[i]) * (px - row.x[i]);
    };
    EXPECT_NEAR(off(0, 2), 0, 1e-6) << row.name;
    EXPECT_NEAR(off(1, 3), 0, 1e-6) << row.name;
  }
}

// Square to (2, 3) .. (4, 7): a = 2, c = 2, e = 4, f = 3, the rest 0; determinant 8. One would expect the inverse
// entries 2 and 5 to be -c / a = -1 and -f / e = -0.75; they are (cd - af) / det = -0.75 and f = 3.
TEST(ProjectiveTransform, InverseKeepsF) {
  const float x[] = {2, 4, 4, 2}, y[] = {3, 3, 7, 7};
  Generator generator;
  generator.InitProjectiveTransformMatrix(x, y, true);
  Cloud cloud{{2, 4}, {3, 7}};
  generator.ProjectiveTransformData(cloud.x.data(), cloud.y.data(), 2);
  // u = x / 2 - 0.75, v = y / 4 + 3, then 2u - 1 and 2v - 1.
  cloud.Expect({-0.5f, 1.5f}, {6.5f, 8.5f});
}

// With its third and sixth entries at 0 in the map there is nothing to keep, and the inverse is one.
TEST(ProjectiveTransform, InverseUndoesMapsThroughTheOrigin) {
  const float x[] = {0, 1, 0.8f, 0.1f}, y[] = {0, 0.1f, 0.9f, 0.7f};
  Generator there, back;
  there.InitProjectiveTransformMatrix(x, y, false);
  back.InitProjectiveTransformMatrix(x, y, true);
  Cloud cloud = RandomCloud(5, 50);
  const Cloud before = cloud;
  there.ProjectiveTransformData(cloud.x.data(), cloud.y.data(), 50);
  back.ProjectiveTransformData(cloud.x.data(), cloud.y.data(), 50);
  cloud.Expect(before.x, before.y, "there and back", 1e-4);
}

// At (1, 1) q = sqrt(2): k = strength * sqrt(2), and the factor c solves k c^3 + c = 1.
TEST(RadialTransform, SolvesTheCubic) {
  Generator generator;
  for (double k = 0; k <= 1.0; k += 0.003) {
    Cloud cloud{{1}, {1}};
    generator.RadialTransformData(cloud.x.data(), cloud.y.data(), 1, static_cast<float>(k / std::sqrt(2.0)));
    const double c = cloud.x[0];
    EXPECT_NEAR(k * c * c * c + c, 1, 1e-4) << k;
    EXPECT_EQ(cloud.y[0], cloud.x[0]);
  }
}

TEST(RadialTransform, BeyondTheTableAndWithoutIt) {
  Generator generator;
  for (float strength : {-5.0f, -1e30f, 0.70711f, 50.0f, 1e30f, INFINITY}) {
    Cloud cloud{{1}, {1}};
    generator.RadialTransformData(cloud.x.data(), cloud.y.data(), 1, strength);
    const float c = strength < 0 ? 1 : 0.6823278f;  // above the table c^3 + c = 1
    cloud.Expect({c}, {c});
  }
  generator.InitRadialTransformMult(false);
  Cloud cloud{{1, 0}, {1, 0}};
  generator.RadialTransformData(cloud.x.data(), cloud.y.data(), 2, 0.5f);
  cloud.Expect({2.0301036f, 0}, {2.0301036f, 0}, "(0.5 * 1.41421 + 1) * 1.18921");
}

TEST(TangentialTransform, KeepsTheUnitCircle) {
  for (float strength : {0.1f, 0.5f, 1.0f}) {
    const double s = strength, inside = 0.5 * (0.5 * s / std::tan(0.5 * s)) * std::tan(s) / s;
    const auto repeated = [](const std::vector<float>& five) {  // more than are worked on at once
      std::vector<float> values;
      for (int i = 0; i < 200; ++i) values.insert(values.end(), five.begin(), five.end());
      return values;
    };
    Cloud cloud{repeated({1, 0.5f, 0, 0.6f, 0}), repeated({0, 0, -1, 0.8f, 0})};
    EXPECT_EQ(Generator::TangentialTransformData(cloud.x.data(), cloud.y.data(), 1000, strength), 1000u);
    cloud.Expect(repeated({1, static_cast<float>(inside), 0, 0.6f, 0}), repeated({0, 0, -1, 0.8f, 0}));
  }
  Cloud negative{{0.5f}, {0}};
  Generator::TangentialTransformData(negative.x.data(), negative.y.data(), 1, -0.4f);
  negative.Expect({-0.1f}, {0}, "a negative strength scales by strength times radius");
}

// Chosen so that each order gives another result.
TEST(TransformData, Order) {
  Generator generator;
  Cloud all = RandomCloud(9, 30), steps = all;
  EXPECT_EQ(generator.TransformData(all.x.data(), all.y.data(), 30, 0.8f, 0.3f, 0.1f, -0.1f, true, 0.5f, 0.4f), 30u);
  float *x = steps.x.data(), *y = steps.y.data();
  Generator::AffineTransformData(x, y, 30, 0.8f, 0.3f, 0.1f, -0.1f);
  generator.ProjectiveTransformData(x, y, 30);
  generator.RadialTransformData(x, y, 30, 0.4f);
  Generator::TangentialTransformData(x, y, 30, 0.5f);
  EXPECT_EQ(all.x, steps.x);
  EXPECT_EQ(all.y, steps.y);
  Cloud still = steps;
  generator.TransformData(still.x.data(), still.y.data(), 30, 1, 0, 0, 0, false, 0.001f, -0.001f);
  EXPECT_EQ(still.x, steps.x) << "below all thresholds";
}

TEST(Transforms, HostileInputIsHarmless) {
  const float wild[] = {NAN, INFINITY, -INFINITY, 3e38f, -1e-40f, 0};
  for (float a : wild) {
    for (float b : wild) {
      for (bool table : {true, false}) {
        Generator generator;
        const float corners[] = {a, b, 0, 1};
        generator.InitProjectiveTransformMatrix(corners, corners, table);
        generator.InitRadialTransformMult(table);
        Cloud cloud{{a, b, 0.5f, kFloatCanary}, {b, a, a, kFloatCanary}};
        EXPECT_EQ(generator.TransformData(cloud.x.data(), cloud.y.data(), 3, a, b, a, b, true, a, b), 3u);
        Generator::NormalizeData(cloud.x.data(), cloud.y.data(), 3, a, b, a, b, b, a);
        EXPECT_EQ(cloud.x[3], kFloatCanary);
        EXPECT_EQ(cloud.y[3], kFloatCanary);
      }
    }
  }
  Generator generator;
  EXPECT_EQ(generator.TransformData(nullptr, nullptr, 3, 2, 1, 0, 0, true, 1, 1), 0u);
  EXPECT_EQ(Generator::NormalizeData(nullptr, nullptr, 3, 2, 1, 0, 0, 1, 1), 0u);
}

}  // namespace
