// Pictures read back, to see what is where.
#ifndef ZRV_TESTS_TOOLS_DECODED_PICTURE_H
#define ZRV_TESTS_TOOLS_DECODED_PICTURE_H

#include <cstddef>

#include "tools/image_file.h"

namespace zrvtool::test {

// Blue, green, red.
inline const unsigned char* PixelAt(const Image& p, int x, int y) {
  return &p.bgr[3 * static_cast<std::size_t>(y * p.width + x)];
}

// The colours of the dark and the light theme, bright enough not to be a glow or a half-covered pixel.
inline bool IsInk(int r, int g, int b) { return b > r + 70 && b > 120 && g > r + 20; }
inline bool IsMirrorInk(int r, int g, int b) { return r > 150 && r > b + 70 && g > 60; }

template <typename Predicate>
long CountPixels(const Image& p, Predicate is, double left = 0, double top = 0, double right = 1, double bottom = 1) {
  long count = 0;
  for (int y = static_cast<int>(top * p.height); y < static_cast<int>(bottom * p.height); ++y)
    for (int x = static_cast<int>(left * p.width); x < static_cast<int>(right * p.width); ++x) {
      const unsigned char* bgr = PixelAt(p, x, y);
      count += is(bgr[2], bgr[1], bgr[0]);
    }
  return count;
}

}  // namespace zrvtool::test

#endif
