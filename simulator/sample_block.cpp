#include "simulator/sample_block.h"

#include "device/protocol.h"

namespace zrv::sim {

using namespace protocol;

namespace {

constexpr uint32_t kWhite = 0xFFFFFF;
constexpr uint8_t kLit = 255;

float Position(uint32_t code, float halfScale) { return static_cast<float>(code) / halfScale - 1.0f; }
float Position16(uint32_t code) { return Position(code, 32767.5f); }
float Position12(uint32_t code) { return Position(code, 2047.5f); }
float Position11(uint32_t code) { return Position(code, 1023.5f); }

// Three bytes: X in the upper 12 bits, Y in the lower 12.
Sample Packed12(const uint8_t* b) {
  Sample sample;
  sample.x = Position12((b[0] << 4 | b[1] >> 4) & 0xFFFu);
  sample.y = Position12(((b[1] & 0x0F) << 8 | b[2]) & 0xFFFu);
  return sample;
}

Sample White(Sample sample, uint8_t m) {
  sample.m = m;
  sample.rgb = m != 0 ? kWhite : 0;
  return sample;
}

uint32_t Rgb(uint32_t r, uint32_t g, uint32_t b) { return r << 16 | g << 8 | b; }

Sample Coloured(Sample sample, uint32_t rgb) {
  sample.m = rgb != 0 ? kLit : 0;
  sample.rgb = rgb;
  return sample;
}

Sample DecodeXY16M(const uint8_t* b) {
  Sample sample;
  sample.x = Position16(b[0] | b[1] << 8);
  sample.y = Position16(b[2] | b[3] << 8);
  return White(sample, b[4]);
}

Sample DecodeXY12M1(const uint8_t* b) {
  Sample sample = Packed12(b);
  sample.y = Position11((b[1] & 0x0F) << 7 | b[2] >> 1);
  return White(sample, b[2] & 1);
}

// The upper bits are repeated below, so that full scale is 255 again.
Sample DecodeRgb565(const uint8_t* b) {
  const uint32_t word = b[3] << 8 | b[4];
  const uint32_t r = word >> 11, g = word >> 5 & 0x3F, blue = word & 0x1F;
  return Coloured(Packed12(b), Rgb(r << 3 | r >> 2, g << 2 | g >> 4, blue << 3 | blue >> 2));
}

Sample DecodeRgb888(const uint8_t* b) { return Coloured(Packed12(b), Rgb(b[3], b[4], b[5])); }

Sample DecodeMRgb(const uint8_t* b) {
  Sample sample = Packed12(b);
  sample.m = b[3];
  sample.rgb = Rgb(b[4], b[5], b[6]);
  return sample;
}

Sample DecodeUnknown(const uint8_t*) { return {}; }

}  // namespace

std::vector<Sample> DecodeBlock(uint32_t formatCode, std::span<const uint8_t> bytes) {
  constexpr Sample (*kDecoders[])(const uint8_t*) = {DecodeXY16M, DecodeXY12M1, DecodeRgb565, DecodeRgb888, DecodeMRgb};
  const auto decode = formatCode < std::size(kDecoders) ? kDecoders[formatCode] : DecodeUnknown;
  const size_t width = BytesPerSample(formatCode);
  std::vector<Sample> block(bytes.size() / width);
  for (size_t i = 0; i < block.size(); ++i) block[i] = decode(&bytes[i * width]);
  return block;
}

}  // namespace zrv::sim
