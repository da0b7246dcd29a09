// Point arrays with canaries behind them, and random paths, for the generator's tests.
#ifndef ZRV_TESTS_GENERATOR_POINTS_H
#define ZRV_TESTS_GENERATOR_POINTS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace zrv_test {

constexpr float kFloatCanary = -12345.5f;
constexpr unsigned char kByteCanary = 0xA5;
constexpr unsigned int kIndexCanary = 0xDEADBEEF;

struct Random {
  explicit Random(unsigned int seed) : engine(seed) {}
  unsigned int operator()() { return static_cast<unsigned int>(engine()); }
  std::mt19937 engine;
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
  Points(std::initializer_list<Row> rows, size_t room = 0) : Points(std::max(room, rows.size())) {
    size_t i = 0;
    for (const Row& row : rows) {
      x[i] = row.x, y[i] = row.y, m[i] = static_cast<unsigned char>(row.m);
      index[i] = static_cast<unsigned int>(100 + i);
      ++i;
    }
  }

  unsigned int size() const { return static_cast<unsigned int>(x.size()); }

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

// Bits in common use: whole, repeated and straight-on keypoints, blank runs.
inline Points RandomPath(Random& random, unsigned int numKeypoints, size_t room = 0) {
  std::uniform_real_distribution<float> place(-1.0f, 1.0f);
  Points path(std::max<size_t>(room, numKeypoints));
  for (size_t i = 0; i < numKeypoints; ++i) {
    const unsigned int kind = random() % 8;
    path.x[i] = kind == 0 && i > 0 ? path.x[i - 1] : place(random.engine);
    path.y[i] = kind <= 1 && i > 0 ? path.y[i - 1] : place(random.engine);
    path.m[i] = random() % 3 == 0 ? 0 : static_cast<unsigned char>(1 + random() % 255);
    path.index[i] = static_cast<unsigned int>(i);
  }
  return path;
}

}  // namespace zrv_test

#endif
