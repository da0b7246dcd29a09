#include "device/packing.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "device/protocol.h"

namespace zrv {
namespace {

using protocol::SampleFormat;

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

// Samples worked on at a time: what one step makes of them stays in the first-level cache for the next.
constexpr size_t kChunk = 256;

// Truncates (v + 1) * half towards zero, so that -1 gives 0 and +1 the full scale 2 * half. Clamping comes after the
// scaling, with the same result, as compilers then keep the loop free of branches: NaN gives 0 in the first step,
// and floats that are not negative compare as their bits do.
uint32_t Quantise(float v, float half) {
  const float scaled = (v + 1.0f) * half;
  const float positive = scaled > 0.0f ? scaled : 0.0f;
  const int32_t bits = std::min(std::bit_cast<int32_t>(positive), std::bit_cast<int32_t>(2.0f * half));
  return static_cast<uint32_t>(static_cast<int32_t>(std::bit_cast<float>(bits)));
}

// 12 bits of X and 12 of Y go out most significant first: the three bytes, first one lowest.
uint32_t BytesOfXY12(uint32_t x, uint32_t y) {
  const uint32_t bits = x << 12 | y;
  return bits >> 16 | (bits & 0xFF00) | (bits & 0xFF) << 16;
}

uint32_t BytesOfColour(uint32_t colour, const ColourTables& tables) {
  return tables.channel[0][colour >> 16 & 0xFF] | tables.channel[1][colour >> 8 & 0xFF] |
         tables.channel[2][colour & 0xFF];
}

// One sample format. Position() gives the bytes of X and Y, Shown() the colour after blanking, Channel() what one
// gamma-corrected channel (red 0, green 1, blue 2) adds to the colour bytes, Word() the sample; first byte lowest.
template <SampleFormat format>
struct Layout;

struct LayoutWithoutColour {
  static constexpr bool kHasColour = false;
  static uint32_t Shown(uint8_t, uint32_t) { return 0; }
};

template <>
struct Layout<protocol::kFormatXY16M> : LayoutWithoutColour {
  static uint32_t Position(float x, float y) { return Quantise(x, 32767.5f) | Quantise(y, 32767.5f) << 16; }
  static uint64_t Word(uint64_t xy, uint64_t m, uint64_t) { return xy | m << 32; }
};

template <>
struct Layout<protocol::kFormatXY12M1> : LayoutWithoutColour {
  static uint32_t Position(float x, float y) { return BytesOfXY12(Quantise(x, 2047.5f), Quantise(y, 1023.5f) << 1); }
  static uint64_t Word(uint64_t xy, uint64_t m, uint64_t) { return xy | (m & 1) << 16; }
};

template <>
struct Layout<protocol::kFormatXY12RGB888> {
  static constexpr bool kHasColour = true;
  static uint32_t Position(float x, float y) { return BytesOfXY12(Quantise(x, 2047.5f), Quantise(y, 2047.5f)); }
  static uint32_t Shown(uint8_t m, uint32_t colour) { return m != 0 ? colour : 0; }
  static uint32_t Channel(size_t channel, uint32_t value) { return value << (8 * channel); }
  static uint64_t Word(uint64_t xy, uint64_t, uint64_t colour) { return xy | colour << 24; }
};

template <>
struct Layout<protocol::kFormatXY12RGB565> : Layout<protocol::kFormatXY12RGB888> {
  static uint32_t Channel(size_t channel, uint32_t value) {
    if (channel == 0) return value & 0xF8;
    if (channel == 1) return value >> 5 | (value << 11 & 0xE000);  // 7..5 in the first byte, 4..2 in the second
    return value >> 3 << 8;
  }
};

template <>
struct Layout<protocol::kFormatXY12MRGB> : Layout<protocol::kFormatXY12RGB888> {
  static uint32_t Shown(uint8_t, uint32_t colour) { return colour; }
  static uint64_t Word(uint64_t xy, uint64_t m, uint64_t colour) { return xy | m << 24 | colour << 32; }
};

template <size_t bytes>
void Store(uint64_t word, uint8_t* out) {
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(out, &word, bytes);
  } else {
    for (size_t i = 0; i < bytes; ++i) out[i] = static_cast<uint8_t>(word >> (8 * i));
  }
}

// A sample is stored with 8 bytes, of which the next sample overwrites the surplus; those that have no such
// successor in their chunk are stored exactly.
template <SampleFormat format>
void PackChunk(const SampleRun& chunk, uint8_t* out) {
  using Format = Layout<format>;
  constexpr size_t kBytes = protocol::BytesPerSample(format);
  constexpr size_t kStoredExactly = 8 / kBytes;
  uint32_t xy[kChunk], shown[kChunk];
  for (size_t i = 0; i < chunk.count; ++i) xy[i] = Format::Position(chunk.x[i], chunk.y[i]);
  for (size_t i = 0; i < chunk.count; ++i) shown[i] = Format::Shown(chunk.m[i], chunk.colours[i]);
  const auto word = [&](size_t i) {
    return Format::Word(xy[i], chunk.m[i], Format::kHasColour ? BytesOfColour(shown[i], *chunk.tables) : 0);
  };
  const size_t overlapping = chunk.count - std::min(chunk.count, kStoredExactly);
  size_t i = 0;
  for (; i < overlapping; ++i) Store<8>(word(i), out + i * kBytes);
  for (; i < chunk.count; ++i) Store<kBytes>(word(i), out + i * kBytes);
}

SampleRun Part(const SampleRun& run, size_t from, size_t count) {
  return {run.x + from, run.y + from, run.m + from, run.colours + from, run.tables, count};
}

template <SampleFormat format>
void PackRun(const SampleRun& run, uint8_t* out) {
  for (size_t done = 0; done < run.count; done += kChunk) {
    const size_t count = std::min(run.count - done, kChunk);
    PackChunk<format>(Part(run, done, count), out + done * protocol::BytesPerSample(format));
  }
}

template <SampleFormat format>
ColourTables MakeTables(const std::array<GammaCurve, 3>& gamma) {
  ColourTables tables;
  for (size_t channel = 0; channel < 3; ++channel) {
    for (size_t value = 0; value < 256; ++value) {
      tables.channel[channel][value] = Layout<format>::Channel(channel, gamma[channel][value]);
    }
  }
  return tables;
}

// The block is circular twice over: it begins at start, and its marks run delay samples behind. Both wrap once,
// so it falls into at most three straight runs.
template <SampleFormat format>
void PackRuns(const SampleSource& source, const ColourTables* tables, uint8_t* out) {
  size_t position = source.start;
  size_t mark = position >= source.delay ? position - source.delay : source.count - source.delay + position;
  for (size_t packed = 0; packed < source.count;) {
    const size_t count = std::min({source.count - position, source.count - mark, source.count - packed});
    const SampleRun run = {
        source.x + position, source.y + position, source.m + mark, source.colours + mark, tables, count};
    PackRun<format>(run, out + packed * protocol::BytesPerSample(format));
    packed += count;
    position = (position + count) % source.count;
    mark = (mark + count) % source.count;
  }
}

template <SampleFormat format>
void Pack(const SampleSource& source, uint8_t* out) {
  if constexpr (Layout<format>::kHasColour) {
    const ColourTables tables = MakeTables<format>(*source.gamma);
    PackRuns<format>(source, &tables, out);
  } else {
    PackRuns<format>(source, nullptr, out);
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
