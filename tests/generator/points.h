// Point arrays with canaries behind them, and random paths, for the generator's tests.
#ifndef ZRV_TESTS_GENERATOR_POINTS_H
#define ZRV_TESTS_GENERATOR_POINTS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

#include "ZRVDataGenerator.h"

namespace zrv_test {

using Generator = ZRVDataGenerator;

constexpr float kFloatCanary = -12345.5f;
constexpr unsigned char kByteCanary = 0xA5;
constexpr unsigned int kIndexCanary = 0xDEADBEEF;
constexpr float kPi = 3.14159274f;

struct XY {
  double x, y;
};

struct Points {
  std::vector<float> x, y;
  std::vector<unsigned char> m;
  std::vector<unsigned int> index;

  Points() = default;
  explicit Points(size_t room)
      : x(room, kFloatCanary), y(room, kFloatCanary), m(room, kByteCanary), index(room, kIndexCanary) {}

  struct Row {
    float x, y;
    int m;
  };
  // Indices count up from 100.
  Points(std::initializer_list<Row> rows, size_t room = 0) : Points(std::max(room, rows.size())) {
    size_t i = 0;
    for (const Row& row : rows) {
      x[i] = row.x, y[i] = row.y, m[i] = static_cast<unsigned char>(row.m);
      index[i] = static_cast<unsigned int>(100 + i);
      ++i;
    }
  }

  unsigned int size() const { return static_cast<unsigned int>(x.size()); }

  // How many of the first n carry the byte.
  std::ptrdiff_t With(int byte, size_t n) const {
    return std::count(m.begin(), m.begin() + static_cast<std::ptrdiff_t>(n), byte);
  }

  void ExpectAt(size_t first, const std::vector<XY>& expected, const char* name = "", double tolerance = 1e-6) const {
    ASSERT_LE(first + expected.size(), x.size()) << name;
    for (size_t i = 0; i < expected.size(); ++i) {
      EXPECT_NEAR(x[first + i], expected[i].x, tolerance) << name << " x at " << first + i;
      EXPECT_NEAR(y[first + i], expected[i].y, tolerance) << name << " y at " << first + i;
    }
  }

  // Nothing was written from the given place on.
  bool UntouchedFrom(size_t first) const {
    for (size_t i = first; i < x.size(); ++i) {
      if (x[i] != kFloatCanary || y[i] != kFloatCanary || m[i] != kByteCanary || index[i] != kIndexCanary) {
        return false;
      }
    }
    return true;
  }
};

// The first n; bytes become numbers, which a failure can show.
template <typename T>
auto Head(const std::vector<T>& values, size_t n) {
  using Shown = std::conditional_t<sizeof(T) == 1, int, T>;
  return std::vector<Shown>(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(n));
}

// A call that fills arrays, for instance [](auto... arrays) { return SomeCurve(arrays..., 8, 0.5f); }
using Writer = std::function<unsigned int(float*, float*, unsigned char*)>;

// It writes exactly the expected points, all lit, and refuses to do without an array.
inline void ExpectFigure(const char* name, const Writer& write, const std::vector<XY>& expected) {
  SCOPED_TRACE(name);
  const size_t count = expected.size();
  Points p(count + 4);
  EXPECT_EQ(write(nullptr, p.y.data(), p.m.data()), 0u);
  EXPECT_EQ(write(p.x.data(), p.y.data(), nullptr), 0u);
  EXPECT_TRUE(p.UntouchedFrom(0));
  EXPECT_EQ(write(p.x.data(), p.y.data(), p.m.data()), count);
  p.ExpectAt(0, expected);
  EXPECT_EQ(Head(p.m, count), std::vector<int>(count, 255));
  EXPECT_TRUE(p.UntouchedFrom(count));
}

struct Random {
  explicit Random(unsigned int seed) : engine(seed) {}
  unsigned int operator()() { return static_cast<unsigned int>(engine()); }
  float Place() { return std::uniform_real_distribution<float>(-1.0f, 1.0f)(engine); }
  std::mt19937 engine;
};

// Bits in common use: whole, repeated and straight-on keypoints, blank runs.
inline Points RandomPath(Random& random, unsigned int numKeypoints, size_t room = 0) {
  Points path(std::max<size_t>(room, numKeypoints));
  for (size_t i = 0; i < numKeypoints; ++i) {
    const unsigned int kind = random() % 8;
    path.x[i] = kind == 0 && i > 0 ? path.x[i - 1] : random.Place();
    path.y[i] = kind <= 1 && i > 0 ? path.y[i - 1] : random.Place();
    path.m[i] = random() % 3 == 0 ? 0 : static_cast<unsigned char>(1 + random() % 255);
    path.index[i] = static_cast<unsigned int>(i);
  }
  return path;
}

}  // namespace zrv_test

#endif
