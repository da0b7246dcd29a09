// The bounding box of the keypoints written so far, as NormalizeData takes it.
#ifndef ZRV_GENERATOR_BOUNDS_H
#define ZRV_GENERATOR_BOUNDS_H

#include <algorithm>

namespace zrv {

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
