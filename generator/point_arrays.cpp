#include "generator/point_arrays.h"

#include <algorithm>

namespace zrv {

void PointArrays::Fill(size_t count, const PointArrays& from) const {
  std::fill_n(x, count, from.x[0]);
  std::fill_n(y, count, from.y[0]);
  std::fill_n(m, count, from.m[0]);
  if (rgb != nullptr) std::fill_n(rgb, count, from.rgb[0]);
}

PointArrays PointScratch::Room(size_t count, bool coloured) {
  return {Grown(x_, count), Grown(y_, count), Grown(m_, count), coloured ? Grown(rgb_, count) : nullptr};
}

}  // namespace zrv
