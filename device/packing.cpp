#include "device/packing.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "device/protocol.h"

namespace zrv {
namespace {

using protocol::SampleFormat;

// Samples quantised at a time: the quantising loops vectorise, and their results stay in the first-level cache.
constexpr size_t kChunk = 256;

// Truncates (v + 1) * half towards zero, so that -1 gives 0 and +1 the full scale 2 * half.
void Quantise(const float* values, size_t count, float half, uint16_t* codes) {
  for (size_t i = 0; i < count; ++i) {
    float v = values[i];
    v = v > 1.0f ? 1.0f : v;
    v = v >= -1.0f ? v : -1.0f;  // NaN too: code 0
    codes[i] = static_cast<uint16_t>(static_cast<int32_t>((v + 1.0f) * half));
  }
}

struct Sample {
  uint32_t x, y;   // quantised
  uint32_t m;
  uint32_t colour; // 0x00RRGGBB
};

void PutXY12(const Sample& s, uint8_t* out) {
  out[0] = static_cast<uint8_t>(s.x >> 4);
  out[1] = static_cast<uint8_t>(s.x << 4 | s.y >> 8);
  out[2] = static_cast<uint8_t>(s.y);
}

// One sample format: full scales of X and Y divided by 2, and the layout of its bytes.
template <SampleFormat format>
struct Layout;

template <>
struct Layout<protocol::kFormatXY16M> {
  static constexpr float kHalfX = 32767.5f, kHalfY = 32767.5f;
  static constexpr bool kColour = false;
  static void Put(const Sample& s, const std::array<GammaCurve, 3>*, uint8_t* out) {
    out[0] = static_cast<uint8_t>(s.x);
    out[1] = static_cast<uint8_t>(s.x >> 8);
    out[2] = static_cast<uint8_t>(s.y);
    out[3] = static_cast<uint8_t>(s.y >> 8);
    out[4] = static_cast<uint8_t>(s.m);
  }
};

template <>
struct Layout<protocol::kFormatXY12M1> {
  static constexpr float kHalfX = 2047.5f, kHalfY = 1023.5f;
  static constexpr bool kColour = false;
  static void Put(const Sample& s, const std::array<GammaCurve, 3>*, uint8_t* out) {
    out[0] = static_cast<uint8_t>(s.x >> 4);
    out[1] = static_cast<uint8_t>(s.x << 4 | s.y >> 7);
    out[2] = static_cast<uint8_t>(s.y << 1 | (s.m & 1));
  }
};

template <>
struct Layout<protocol::kFormatXY12RGB565> {
  static constexpr float kHalfX = 2047.5f, kHalfY = 2047.5f;
  static constexpr bool kColour = true;
  static void Put(const Sample& s, const std::array<GammaCurve, 3>* gamma, uint8_t* out) {
    const uint32_t colour = s.m != 0 ? s.colour : 0;
    const uint32_t red = (*gamma)[0][colour >> 16 & 0xFF];
    const uint32_t green = (*gamma)[1][colour >> 8 & 0xFF];
    const uint32_t blue = (*gamma)[2][colour & 0xFF];
    PutXY12(s, out);
    out[3] = static_cast<uint8_t>((red & 0xF8) | green >> 5);
    out[4] = static_cast<uint8_t>((green << 3 & 0xE0) | blue >> 3);
  }
};

void PutRGB(uint32_t colour, const std::array<GammaCurve, 3>& gamma, uint8_t* out) {
  out[0] = gamma[0][colour >> 16 & 0xFF];
  out[1] = gamma[1][colour >> 8 & 0xFF];
  out[2] = gamma[2][colour & 0xFF];
}

template <>
struct Layout<protocol::kFormatXY12RGB888> {
  static constexpr float kHalfX = 2047.5f, kHalfY = 2047.5f;
  static constexpr bool kColour = true;
  static void Put(const Sample& s, const std::array<GammaCurve, 3>* gamma, uint8_t* out) {
    PutXY12(s, out);
    PutRGB(s.m != 0 ? s.colour : 0, *gamma, out + 3);
  }
};

template <>
struct Layout<protocol::kFormatXY12MRGB> {
  static constexpr float kHalfX = 2047.5f, kHalfY = 2047.5f;
  static constexpr bool kColour = true;
  static void Put(const Sample& s, const std::array<GammaCurve, 3>* gamma, uint8_t* out) {
    PutXY12(s, out);
    out[3] = static_cast<uint8_t>(s.m);
    PutRGB(s.colour, *gamma, out + 4);
  }
};

// count samples from position onwards, m and colour from markIndex onwards: no index wraps within.
template <SampleFormat format>
void PackRun(const SampleSource& source, size_t position, size_t markIndex, size_t count, uint8_t* out) {
  using Format = Layout<format>;
  constexpr size_t kBytes = protocol::BytesPerSample(format);
  uint16_t x[kChunk], y[kChunk];
  while (count > 0) {
    const size_t n = std::min(count, kChunk);
    Quantise(source.x + position, n, Format::kHalfX, x);
    Quantise(source.y + position, n, Format::kHalfY, y);
    const uint8_t* m = source.m + markIndex;
    for (size_t i = 0; i < n; ++i) {
      const uint32_t colour = Format::kColour ? source.colours[markIndex + i] : 0;
      Format::Put({x[i], y[i], m[i], colour}, source.gamma, out + i * kBytes);
    }
    position += n;
    markIndex += n;
    count -= n;
    out += n * kBytes;
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
