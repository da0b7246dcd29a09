// Point files and point-time files: samples as text, one a line.
#ifndef ZRV_GENERATOR_POINT_FILE_H
#define ZRV_GENERATOR_POINT_FILE_H

#include <cstdint>
#include <string_view>
#include <vector>

namespace zrv {

enum class PointColumns {
  xym,
  xymt
};

// Parallel arrays; t (milliseconds) is empty unless the file has times.
struct PointFile {
  std::vector<float> x, y, t;
  std::vector<uint8_t> m;
  unsigned sps = 0;  // samples per second; 0 without a header

  unsigned Size() const { return static_cast<unsigned>(x.size()); }

  // Replaces the points by those of a file; the arrays keep their room. Lines that do not begin with the
  // wanted numbers are left out, values beyond their range are clamped to it.
  void Read(std::string_view text, PointColumns columns);
};

// The value after "key = " on the first line that holds it; in hexadecimal when the rest of the line holds "0x".
float ReadParameter(std::string_view text, std::string_view key, float defaultValue);

}  // namespace zrv

#endif
