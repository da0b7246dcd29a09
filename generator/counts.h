// Sizes that a caller asks for, kept from wrapping.
#ifndef ZRV_GENERATOR_COUNTS_H
#define ZRV_GENERATOR_COUNTS_H

#include <algorithm>
#include <cstdint>
#include <limits>

namespace zrv {

// More than any array of ours holds, yet small enough that sums and small multiples do not wrap.
inline constexpr int64_t kCountLimit = int64_t{1} << 52;

inline bool FitsCount(uint64_t count) { return count <= std::numeric_limits<uint32_t>::max(); }

inline unsigned SaturatedCount(uint64_t count) {
  return static_cast<unsigned>(std::min<uint64_t>(count, std::numeric_limits<uint32_t>::max()));
}

// Truncation toward zero that is defined for every value: NaN gives 0, the rest is limited.
inline int64_t TruncatedCount(double value) {
  if (!(value == value)) return 0;
  const auto limit = static_cast<double>(kCountLimit);
  return static_cast<int64_t>(std::clamp(value, -limit, limit));
}

// The whole part as a count; 0 for negative values and NaN, and as much as 32 bits hold for too large ones.
inline unsigned WholeCount(float value) {
  if (value >= 4294967296.0f) return std::numeric_limits<uint32_t>::max();
  return value > 0.0f ? static_cast<unsigned>(value) : 0;
}

}  // namespace zrv

#endif
