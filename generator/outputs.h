// The arrays that a pattern is written to.
#ifndef ZRV_GENERATOR_OUTPUTS_H
#define ZRV_GENERATOR_OUTPUTS_H

namespace zrv {

// All given, or all absent: then only the number of samples is asked for.
struct Outputs {
  float* x;
  float* y;
  unsigned char* m;

  bool Given() const { return x != nullptr && y != nullptr && m != nullptr; }
  bool Absent() const { return x == nullptr && y == nullptr && m == nullptr; }
};

}  // namespace zrv

#endif
