// Turns sample arrays into the bytes of a sample block. docs/protocol.md has the layouts.
#ifndef ZRV_DEVICE_PACKING_H
#define ZRV_DEVICE_PACKING_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace zrv {

using GammaCurve = std::array<uint8_t, 256>;

// trunc((value / 255) ^ gamma * 255) for each 8-bit value.
GammaCurve MakeGammaCurve(float gamma);

struct SampleSource {
  const float* x = nullptr;  // -1..1; beyond is clamped, NaN counts as -1
  const float* y = nullptr;
  const uint8_t* m = nullptr;
  const uint32_t* colours = nullptr;                 // 0x00RRGGBB, one a sample
  const std::array<GammaCurve, 3>* gamma = nullptr;  // red, green, blue
  size_t count = 0;
  size_t start = 0;  // the block begins at this sample and wraps round
  size_t delay = 0;  // m and colour come from this many samples earlier, wrapping
};

// Writes count samples of a format (0..4) to out, which holds count * BytesPerSample(format) bytes. Formats
// above 4 write nothing. start and delay are below count.
void PackSamples(uint32_t format, const SampleSource& source, uint8_t* out);

}  // namespace zrv

#endif
