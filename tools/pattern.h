// A scan as the tool passes it around: what was generated or read, ready to be shown, written or played.
#ifndef ZRV_TOOLS_PATTERN_H
#define ZRV_TOOLS_PATTERN_H

#include <cstddef>
#include <vector>

namespace zrvtool {

struct Pattern {
  std::vector<float> x, y;        // positions, -1..1
  std::vector<unsigned char> m;   // digital byte of each sample; 0 is blank
  std::vector<unsigned int> rgb;  // 0x00RRGGBB of each sample; empty when the content has no colours
  unsigned int rate = 0;          // samples per second; 0 when the content does not say
  bool levels = false;            // m is a brightness 0..255, not output bits

  std::size_t size() const { return x.size(); }
  bool empty() const { return x.empty(); }
  void resize(std::size_t count) {
    x.resize(count);
    y.resize(count);
    m.resize(count);
    if (!rgb.empty()) rgb.resize(count);
  }
};

// Colours so near to black that no laser would show them; drawings use them for "blank".
inline bool IsDark(unsigned int rgb) {
  constexpr unsigned int kLowestLit = 16;
  return (rgb >> 16 & 255) < kLowestLit && (rgb >> 8 & 255) < kLowestLit && (rgb & 255) < kLowestLit;
}

}  // namespace zrvtool

#endif
