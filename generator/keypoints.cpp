// Closing a path and cleaning it for scanning, both in place.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "ZRVDataGenerator.h"
#include "generator/geometry.h"

namespace {

using zrv::kPi;

constexpr double kSmoothMeasure = 0.056;  // corner measures below it are gentle bends, about 10 degrees

// The caller's arrays as one list. The index array may be null.
struct KeypointList {
  float* x;
  float* y;
  unsigned char* m;
  unsigned int* index;

  bool Lit(size_t i) const { return m[i] != 0; }
  bool SamePlace(size_t i, size_t j) const { return x[i] == x[j] && y[i] == y[j]; }
  bool SameMark(size_t i, size_t j) const { return m[i] == m[j] && (!index || index[i] == index[j]); }

  void Mark(size_t i, unsigned char digital, unsigned int number) const {
    m[i] = digital;
    if (index) index[i] = number;
  }
  void CopyMark(size_t to, size_t from) const { Mark(to, m[from], index ? index[from] : 0); }
  void CopyPlace(size_t to, size_t from) const {
    x[to] = x[from];
    y[to] = y[from];
  }
  void Copy(size_t to, size_t from) const {
    CopyPlace(to, from);
    CopyMark(to, from);
  }
};

// Moves the keypoints for which keep(i) holds to the front, in order; returns how many. While keep(i) runs,
// keypoint i and all after it still stand where they were.
template <typename Keep>
size_t KeepIf(const KeypointList& list, size_t first, size_t end, Keep keep) {
  size_t kept = first;
  for (size_t i = first; i < end; ++i) {
    if (!keep(i)) continue;
    if (kept != i) list.Copy(kept, i);
    ++kept;
  }
  return kept;
}

// As KeepIf over the whole list, but the last two keypoints always stay.
template <typename Keep>
size_t KeepIfButLastTwo(const KeypointList& list, size_t n, Keep keep) {
  if (n <= 3) return n;
  return KeepIf(list, 0, n, [&](size_t i) { return i + 2 >= n || keep(i); });
}

size_t TrimBlankEnds(const KeypointList& list, size_t n) {
  if (n <= 3) return n;
  const size_t first = static_cast<size_t>(std::find_if(list.m, list.m + n, [](auto m) { return m != 0; }) - list.m);
  size_t last = n - 1;
  while (!list.Lit(last)) --last;
  if (first > 0) {
    for (size_t i = first; i <= last; ++i) list.Copy(i - first, i);
  }
  return last - first + 1;
}

struct Corner {
  double dot, length;

  Corner(double dx1, double dy1, double dx2, double dy2)
      : dot(dx1 * dx2 + dy1 * dy2), length(std::sqrt(dx1 * dx1 + dy1 * dy1) * std::sqrt(dx2 * dx2 + dy2 * dy2)) {}

  bool Straight() const { return length == dot; }

  // 0 straight on .. 1 full reversal. The roundings keep the quotient within -1..1.
  double Measure() const {
    const double numerator = (dot > 0 ? std::floor(dot * 100000) : std::ceil(dot * 100000)) / 100000;
    const double denominator = std::ceil(length * 1000000) / 1000000;
    return std::acos(numerator / (denominator != 0 ? denominator : 0.000001)) / kPi;
  }
};

// Drops what lies on a straight line. smooth: for each kept keypoint, whether the path bends gently there
// between lit neighbours.
size_t DropStraight(const KeypointList& list, size_t n, std::vector<char>& smooth) {
  smooth.assign(n, 0);
  size_t kept = 1;
  // The keypoint before i as it stood: dropping has overwritten its place by then.
  float beforeX = list.x[0], beforeY = list.y[0];
  bool beforeLit = list.Lit(0);
  for (size_t i = 1; i + 1 < n; ++i) {
    const double dx1 = static_cast<double>(list.x[i]) - beforeX, dy1 = static_cast<double>(list.y[i]) - beforeY;
    const double dx2 = static_cast<double>(list.x[i + 1]) - list.x[i];
    const double dy2 = static_cast<double>(list.y[i + 1]) - list.y[i];
    const Corner corner(dx1, dy1, dx2, dy2);
    const bool lit = beforeLit && list.Lit(i) && list.Lit(i + 1);
    beforeX = list.x[i], beforeY = list.y[i], beforeLit = list.Lit(i);
    if (corner.Straight() && list.SameMark(i, i + 1)) continue;
    smooth[kept] = i > 1 && lit && corner.Measure() < kSmoothMeasure;
    list.Copy(kept++, i);
  }
  if (n > 1) list.Copy(kept++, n - 1);
  return kept;
}

// Drops smooth keypoints, one in so many, to come near the target. The ratio is the one kept to the one
// dropped and not the whole, so that it drops more than asked for.
size_t Thin(const KeypointList& list, size_t n, size_t target, const std::vector<char>& smooth) {
  const auto numSmooth = static_cast<size_t>(std::count(smooth.begin(), smooth.end(), 1));
  if (target >= n || numSmooth < 2) return n;
  const size_t surplus = std::min(numSmooth - 1, n - target);
  const auto every =
      static_cast<uint64_t>(std::ceil(static_cast<double>(numSmooth - surplus) / static_cast<double>(surplus)));
  uint64_t counter = 0;
  return KeepIf(list, 1, n, [&](size_t i) {
    if (!smooth[i] || ++counter != every) return true;
    counter = 0;
    return false;
  });
}

}  // namespace

unsigned int ZRVDataGenerator::CloseCurve(float* x, float* y, unsigned char* m, unsigned int* index,
                                          unsigned int numKeypoints, unsigned int numClosePoints, bool retrace) {
  if (!x || !y || !m) return 0;
  const KeypointList list{x, y, m, index};
  const size_t n = numKeypoints;
  if (n < 2) return numKeypoints;
  if (retrace) {
    for (size_t i = 0; i + 1 < n; ++i) {
      // Marks go one place earlier, so that each segment on the way back carries the one it retraces.
      list.CopyPlace(n + i, n - 2 - i);
      list.CopyMark(n + i - 1, n - 2 - i);
    }
    list.CopyMark(2 * n - 2, 0);
    return 2 * numKeypoints - 1;
  }
  if (numClosePoints == 0 || list.SamePlace(n - 1, 0)) return numKeypoints;
  const float lastX = x[n - 1], lastY = y[n - 1];
  for (size_t k = 0; k < numClosePoints; ++k) {
    const float t = 1.0f - static_cast<float>(k + 1) / static_cast<float>(numClosePoints);
    x[n + k] = (lastX - x[0]) * t + x[0];
    y[n + k] = (lastY - y[0]) * t + y[0];
    list.Mark(n + k - 1, 0, 0);
  }
  list.Copy(n + numClosePoints - 1, 0);
  return numKeypoints + numClosePoints;
}

unsigned int ZRVDataGenerator::CloseCurve(float* x, float* y, unsigned char* m, unsigned int numKeypoints,
                                          unsigned int numClosePoints, bool retrace) {
  return CloseCurve(x, y, m, nullptr, numKeypoints, numClosePoints, retrace);
}

unsigned int ZRVDataGenerator::OptimizeKeypoints(float* x, float* y, unsigned char* m, unsigned int* index,
                                                 unsigned int numKeypoints, unsigned int maxKeypoints) {
  if (!x || !y || !m) return 0;
  const KeypointList list{x, y, m, index};
  const unsigned int target = maxKeypoints == 0 ? numKeypoints : maxKeypoints;
  const bool anyLit = std::any_of(m, m + numKeypoints, [](auto digital) { return digital != 0; });
  if (numKeypoints < 3 || !anyLit) return numKeypoints;

  size_t n = TrimBlankEnds(list, numKeypoints);
  n = CloseCurve(x, y, m, index, static_cast<unsigned int>(n), 1, false);
  n = KeepIfButLastTwo(list, n, [&](size_t i) { return !(list.SamePlace(i, i + 1) && list.SameMark(i, i + 1)); });
  bool beforeLit = true;
  n = KeepIfButLastTwo(list, n, [&](size_t i) {
    const bool keep = list.Lit(i) || beforeLit;
    beforeLit = list.Lit(i);
    return keep;
  });
  std::vector<char> smooth;
  n = DropStraight(list, n, smooth);
  return static_cast<unsigned int>(Thin(list, n, target, smooth));
}

unsigned int ZRVDataGenerator::OptimizeKeypoints(float* x, float* y, unsigned char* m, unsigned int numKeypoints,
                                                 unsigned int maxKeypoints) {
  return OptimizeKeypoints(x, y, m, nullptr, numKeypoints, maxKeypoints);
}
