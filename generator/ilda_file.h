// Drawings and animations in the ILDA Image Data Transfer Format, decoded from memory.
#ifndef ZRV_GENERATOR_ILDA_FILE_H
#define ZRV_GENERATOR_ILDA_FILE_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zrv {

// Points first..first + size - 1 of the arrays.
struct IldaFrame {
  size_t first = 0, size = 0;
};

// A loaded drawing. The point arrays hold the frames one after the other; those that the format lacks are empty
// and stand for zeros.
struct IldaDrawing {
  unsigned frameType = 0;   // format code of the frame sections
  unsigned frameCount = 0;  // as declared by the first frame; the file may hold fewer
  unsigned largestFrame = 0;
  std::vector<uint32_t> frameEnds;  // of the frames that the file holds: where the next one starts
  std::vector<int16_t> x, y;
  std::vector<int16_t> z;                 // 3D formats
  std::vector<uint8_t> lit;               // 255, or 0 where the beam is blanked
  std::vector<uint8_t> red, green, blue;  // true-colour formats

  unsigned TotalPoints() const { return static_cast<unsigned>(x.size()); }
  IldaFrame Frame(unsigned frame) const;  // 1-based; a frame that is not there has no points
};

// Empty when the bytes are no drawing. Of a drawing cut short, the whole records that are there are kept and
// the remaining counts read 0. Memory is bounded by a small multiple of the bytes given.
IldaDrawing DecodeIlda(std::span<const uint8_t> file);

}  // namespace zrv

#endif
