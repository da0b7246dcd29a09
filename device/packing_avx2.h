// The inner loop of sample packing for x86 processors with AVX2. Same bytes as the portable one in packing.cpp.
#ifndef ZRV_DEVICE_PACKING_AVX2_H
#define ZRV_DEVICE_PACKING_AVX2_H

#include <cstddef>
#include <cstdint>

namespace zrv {

// What each value of red, green and blue adds to the colour bytes of a sample, first byte lowest.
struct ColourTables {
  uint32_t channel[3][256];
};

// Consecutive samples: no index wraps.
struct SampleRun {
  const float* x;
  const float* y;
  const uint8_t* m;
  const uint32_t* colours;
  const ColourTables* tables;  // formats with colour only
  size_t count;
};

// Whether processor and operating system have it. False where the loop is not built.
bool HasAvx2();

// Packs the beginning of a run and returns how many samples that were; the rest, 11 at most, is the caller's.
// Only where HasAvx2().
size_t PackRunAvx2(uint32_t format, const SampleRun& run, uint8_t* out);

}  // namespace zrv

#endif
