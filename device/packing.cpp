#include "device/packing.h"

#include <algorithm>
#include <cmath>

#include "device/protocol.h"

namespace zrv {
namespace {

using protocol::SampleFormat;

// Samples worked on at a time: the loop over positions vectorises, and its result stays in the first-level cache.
constexpr size_t kChunk = 256;

// Truncates (v + 1) * half towards zero, so that -1 gives 0 and +1 the full scale 2 * half.
uint32_t Quantise(float v, float half) {
  const float bounded = v > -1.0f ? v : -1.0f;  // NaN too: code 0
  const float clamped = bounded < 1.0f ? bounded : 1.0f;
  return static_cast<uint32_t>(static_cast<int32_t>((clamped + 1.0f) * half));
}

// 12 bits of X and 12 of Y go out most significant first: the three bytes, first one lowest.
uint32_t BytesOfXY12(uint32_t x, uint32_t y) {
  const uint32_t bits = x << 12 | y;
  return bits >> 16 | (bits & 0xFF00) | (bits & 0xFF) << 16;
}

// The gamma-corrected colour, red lowest.
uint32_t BytesOfColour(uint32_t colour, const std::array<GammaCurve, 3>& gamma) {
  return static_cast<uint32_t>(gamma[0][colour >> 16 & 0xFF]) | static_cast<uint32_t>(gamma[1][colour >> 8 & 0xFF]) << 8 |
         static_cast<uint32_t>(gamma[2][colour & 0xFF]) << 16;
}

// One sample format. Position() gives the bytes of X and Y, Word() the whole sample; first byte lowest in both.
template <SampleFormat format>
struct Layout;

template <>
struct Layout<protocol::kFormatXY16M> {
  static uint32_t Position(float x, float y) { return Quantise(x, 32767.5f) | Quantise(y, 32767.5f) << 16; }
  static uint64_t Word(uint32_t xy, uint64_t m, uint32_t, const std::array<GammaCurve, 3>&) { return xy | m << 32; }
};

template <>
struct Layout<protocol::kFormatXY12M1> {
  static uint32_t Position(float x, float y) { return BytesOfXY12(Quantise(x, 2047.5f), Quantise(y, 1023.5f) << 1); }
  static uint64_t Word(uint32_t xy, uint64_t m, uint32_t, const std::array<GammaCurve, 3>&) {
    return xy | (m & 1) << 16;
  }
};

struct LayoutXY12 {
  static uint32_t Position(float x, float y) { return BytesOfXY12(Quantise(x, 2047.5f), Quantise(y, 2047.5f)); }
};

template <>
struct Layout<protocol::kFormatXY12RGB565> : LayoutXY12 {
  static uint64_t Word(uint32_t xy, uint64_t m, uint32_t colour, const std::array<GammaCurve, 3>& gamma) {
    const uint64_t rgb = BytesOfColour(m != 0 ? colour : 0, gamma);
    const uint64_t first = (rgb & 0xF8) | (rgb >> 13 & 0x07);           // R 7..3, G 7..5
    const uint64_t second = (rgb >> 5 & 0xE0) | (rgb >> 19 & 0x1F);     // G 4..2, B 7..3
    return xy | first << 24 | second << 32;
  }
};

template <>
struct Layout<protocol::kFormatXY12RGB888> : LayoutXY12 {
  static uint64_t Word(uint32_t xy, uint64_t m, uint32_t colour, const std::array<GammaCurve, 3>& gamma) {
    return xy | static_cast<uint64_t>(BytesOfColour(m != 0 ? colour : 0, gamma)) << 24;
  }
};

template <>
struct Layout<protocol::kFormatXY12MRGB> : LayoutXY12 {
  static uint64_t Word(uint32_t xy, uint64_t m, uint32_t colour, const std::array<GammaCurve, 3>& gamma) {
    return xy | m << 24 | static_cast<uint64_t>(BytesOfColour(colour, gamma)) << 32;
  }
};

// Compilers make one 8-byte store of this.
template <size_t bytes>
void Store(uint64_t word, uint8_t* out) {
  for (size_t i = 0; i < bytes; ++i) out[i] = static_cast<uint8_t>(word >> (8 * i));
}

// count samples from position onwards, m and colour from mark onwards: no index wraps within. A sample is stored
// with 8 bytes, of which the next sample overwrites the surplus; those that have no such successor in this run are
// stored exactly.
template <SampleFormat format>
void PackRun(const SampleSource& source, size_t position, size_t mark, size_t count, uint8_t* out) {
  using Format = Layout<format>;
  constexpr size_t kBytes = protocol::BytesPerSample(format);
  constexpr size_t kStoredExactly = 8 / kBytes;
  const float* x = source.x + position;
  const float* y = source.y + position;
  const uint8_t* m = source.m + mark;
  const uint32_t* colours = source.colours + mark;
  const auto& gamma = *source.gamma;
  uint32_t xy[kChunk];
  for (size_t done = 0; done < count; done += kChunk) {
    const size_t n = std::min(count - done, kChunk);
    for (size_t i = 0; i < n; ++i) xy[i] = Format::Position(x[done + i], y[done + i]);
    const size_t overlapping = n > kStoredExactly ? n - kStoredExactly : 0;
    size_t i = 0;
    for (; i < overlapping; ++i, out += kBytes) {
      Store<8>(Format::Word(xy[i], m[done + i], colours[done + i], gamma), out);
    }
    for (; i < n; ++i, out += kBytes) {
      Store<kBytes>(Format::Word(xy[i], m[done + i], colours[done + i], gamma), out);
    }
  }
}

// The block is circular twice over: it begins at start, and its marks run delay samples behind. Both wrap once,
// so it falls into at most three straight runs.
template <SampleFormat format>
void Pack(const SampleSource& source, uint8_t* out) {
  size_t position = source.start;
  size_t mark = position >= source.delay ? position - source.delay : source.count - source.delay + position;
  for (size_t packed = 0; packed < source.count;) {
    const size_t run = std::min({source.count - position, source.count - mark, source.count - packed});
    PackRun<format>(source, position, mark, run, out + packed * protocol::BytesPerSample(format));
    packed += run;
    position = (position + run) % source.count;
    mark = (mark + run) % source.count;
  }
}

}  // namespace

GammaCurve MakeGammaCurve(float gamma) {
  GammaCurve curve{};
  for (size_t value = 0; value < curve.size(); ++value) {
    curve[value] = static_cast<uint8_t>(std::pow(static_cast<double>(value) / 255, static_cast<double>(gamma)) * 255);
  }
  return curve;
}

void PackSamples(uint32_t format, const SampleSource& source, uint8_t* out) {
  switch (format) {
    case protocol::kFormatXY16M: return Pack<protocol::kFormatXY16M>(source, out);
    case protocol::kFormatXY12M1: return Pack<protocol::kFormatXY12M1>(source, out);
    case protocol::kFormatXY12RGB565: return Pack<protocol::kFormatXY12RGB565>(source, out);
    case protocol::kFormatXY12RGB888: return Pack<protocol::kFormatXY12RGB888>(source, out);
    case protocol::kFormatXY12MRGB: return Pack<protocol::kFormatXY12MRGB>(source, out);
    default: return;
  }
}

}  // namespace zrv
