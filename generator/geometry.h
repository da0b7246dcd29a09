// Points of the plane, angles and bounds.
#ifndef ZRV_GENERATOR_GEOMETRY_H
#define ZRV_GENERATOR_GEOMETRY_H

#include <algorithm>
#include <cmath>

namespace zrv {

inline constexpr double kPi = 3.14159265358979323846;
inline constexpr double kTwoPi = 2.0 * kPi;

struct Point {
  float x = 0, y = 0;
};

// An angle's cosine and sine, taken in double and stored as float: the same on every system's library.
struct Turn {
  float cosine, sine;

  explicit Turn(float radians)
      : cosine(static_cast<float>(std::cos(static_cast<double>(radians)))),
        sine(static_cast<float>(std::sin(static_cast<double>(radians)))) {}
};

// The bounding box of the keypoints written so far, as NormalizeData takes it.
struct Bounds {
  float minX = 1e6f, maxX = -1e6f, minY = 1e6f, maxY = -1e6f;  // empty: any point widens it

  void Add(float x, float y) {
    minX = std::min(minX, x);
    maxX = std::max(maxX, x);
    minY = std::min(minY, y);
    maxY = std::max(maxY, y);
  }
};

}  // namespace zrv

#endif
