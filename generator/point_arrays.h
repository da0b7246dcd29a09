// Parallel arrays of points: positions, digital bytes and perhaps colours.
#ifndef ZRV_GENERATOR_POINT_ARRAYS_H
#define ZRV_GENERATOR_POINT_ARRAYS_H

#include <cstddef>
#include <vector>

namespace zrv {

struct PointArrays {
  float* x;
  float* y;
  unsigned char* m;
  unsigned int* rgb;  // or null

  PointArrays From(size_t i) const { return {x + i, y + i, m + i, rgb != nullptr ? rgb + i : nullptr}; }
  bool IsClosed(size_t count) const { return count > 1 && x[count - 1] == x[0] && y[count - 1] == y[0]; }
  // Whether the last of count keypoints is the way back to the first one, with the beam off.
  bool ReturnsDarkly(size_t count) const { return IsClosed(count) && m[count - 2] == 0; }
  void Fill(size_t count, const PointArrays& from) const;
};

// Room for so many values; what is there stays.
template <typename T>
T* Grown(std::vector<T>& values, size_t count) {
  if (values.size() < count) values.resize(count);
  return values.data();
}

// Arrays that only ever grow.
class PointScratch {
 public:
  // Room for so many points; what is there stays.
  PointArrays Room(size_t count, bool coloured);

 private:
  std::vector<float> x_, y_;
  std::vector<unsigned char> m_;
  std::vector<unsigned int> rgb_;
};

// What the assembly works in, kept by the generator.
struct ScanScratch {
  PointScratch keypoints, paths, samples;
  std::vector<float> filteredX, filteredY;
};

}  // namespace zrv

#endif
