// A block of samples as it arrives, in each of the five formats.
#ifndef ZRV_SIMULATOR_SAMPLE_BLOCK_H
#define ZRV_SIMULATOR_SAMPLE_BLOCK_H

#include <cstdint>
#include <span>
#include <vector>

namespace zrv::sim {

struct Sample {
  float x = 0, y = 0;  // -1..1
  uint8_t m = 0;       // format 1 has bit 0 only; formats 2 and 3 have none: 255 where the colour is not black
  uint32_t rgb = 0;    // 0x00RRGGBB; formats 0 and 1 have none: white where m is not 0
};

// As many samples as bytes holds in whole. A format code above 4 has no known layout: all samples are
// the centre, dark.
std::vector<Sample> DecodeBlock(uint32_t formatCode, std::span<const uint8_t> bytes);

}  // namespace zrv::sim

#endif
