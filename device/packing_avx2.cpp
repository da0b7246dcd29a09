// Compiled with AVX2 enabled, and so restricted to intrinsics: an inline function of the standard library compiled
// here could take the place of its portable twin at link time.
#include "device/packing_avx2.h"

#include <immintrin.h>

#include "device/protocol.h"

namespace zrv {
namespace {

using protocol::SampleFormat;

// Samples at a time. A pair of them is stored with 16 bytes, of which the next pair overwrites the surplus: 10 bytes
// at most, so that 4 samples of 3 bytes must follow in the run.
constexpr size_t kStep = 8;
constexpr size_t kSuccessors = 4;

// Truncates (v + 1) * half, v clamped to -1..1. MAX returns its second operand when the first is NaN.
__m256i Quantise(const float* values, float half) {
  const __m256 one = _mm256_set1_ps(1.0f);
  const __m256 clamped = _mm256_min_ps(_mm256_max_ps(_mm256_loadu_ps(values), _mm256_set1_ps(-1.0f)), one);
  return _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_add_ps(clamped, one), _mm256_set1_ps(half)));
}

__m256i Positions(SampleFormat format, const float* x, const float* y, __m256i m) {
  if (format == protocol::kFormatXY16M) {
    return _mm256_or_si256(Quantise(x, 32767.5f), _mm256_slli_epi32(Quantise(y, 32767.5f), 16));
  }
  const __m256i high = _mm256_slli_epi32(Quantise(x, 2047.5f), 12);
  if (format != protocol::kFormatXY12M1) return _mm256_or_si256(high, Quantise(y, 2047.5f));
  const __m256i bit = _mm256_and_si256(m, _mm256_set1_epi32(1));
  return _mm256_or_si256(_mm256_or_si256(high, bit), _mm256_slli_epi32(Quantise(y, 1023.5f), 1));
}

// Entries of one channel's table; the channel is the byte that shift brings down.
__m256i Channel(const uint32_t* table, __m256i colours, int shift) {
  const __m256i index = _mm256_and_si256(_mm256_srli_epi32(colours, shift), _mm256_set1_epi32(0xFF));
  return _mm256_i32gather_epi32(reinterpret_cast<const int*>(table), index, 4);
}

__m256i Colours(SampleFormat format, const SampleRun& run, size_t at, __m256i m) {
  __m256i colours = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(run.colours + at));
  if (format != protocol::kFormatXY12MRGB) {  // black where m is 0
    colours = _mm256_andnot_si256(_mm256_cmpeq_epi32(m, _mm256_setzero_si256()), colours);
  }
  const __m256i red = Channel(run.tables->channel[0], colours, 16);
  const __m256i green = Channel(run.tables->channel[1], colours, 8);
  const __m256i blue = Channel(run.tables->channel[2], colours, 0);
  return _mm256_or_si256(_mm256_or_si256(red, green), blue);
}

// What follows the position bytes of a sample, first byte lowest.
__m256i Marks(SampleFormat format, const SampleRun& run, size_t at, __m256i m) {
  switch (format) {
    case protocol::kFormatXY12RGB565:
    case protocol::kFormatXY12RGB888: return Colours(format, run, at, m);
    case protocol::kFormatXY12MRGB: return _mm256_or_si256(m, _mm256_slli_epi32(Colours(format, run, at, m), 8));
    default: return m;
  }
}

// Byte k of a pair of samples comes from this byte of (position, marks, position, marks), 4 bytes each. 12-bit
// positions go out most significant byte first.
alignas(16) constexpr int8_t kByteOrder[5][16] = {
    {0, 1, 2, 3, 4, 8, 9, 10, 11, 12, -1, -1, -1, -1, -1, -1},
    {2, 1, 0, 10, 9, 8, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1},
    {2, 1, 0, 4, 5, 10, 9, 8, 12, 13, -1, -1, -1, -1, -1, -1},
    {2, 1, 0, 4, 5, 6, 10, 9, 8, 12, 13, 14, -1, -1, -1, -1},
    {2, 1, 0, 4, 5, 6, 7, 10, 9, 8, 12, 13, 14, 15, -1, -1},
};

void Store(__m128i bytes, uint8_t* out) { _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes); }

template <SampleFormat format>
size_t Pack(const SampleRun& run, uint8_t* out) {
  constexpr size_t kPair = 2 * protocol::BytesPerSample(format);
  const __m256i order =
      _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(kByteOrder[format])));
  size_t i = 0;
  for (; i + kStep + kSuccessors <= run.count; i += kStep, out += 4 * kPair) {
    const __m256i m = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(run.m + i)));
    const __m256i positions = Positions(format, run.x + i, run.y + i, m);
    const __m256i marks = Marks(format, run, i, m);
    // Each half of a register holds a pair of its own: samples 0, 1 and 4, 5; then 2, 3 and 6, 7.
    const __m256i even = _mm256_shuffle_epi8(_mm256_unpacklo_epi32(positions, marks), order);
    const __m256i odd = _mm256_shuffle_epi8(_mm256_unpackhi_epi32(positions, marks), order);
    Store(_mm256_castsi256_si128(even), out);
    Store(_mm256_castsi256_si128(odd), out + kPair);
    Store(_mm256_extracti128_si256(even, 1), out + 2 * kPair);
    Store(_mm256_extracti128_si256(odd, 1), out + 3 * kPair);
  }
  return i;
}

}  // namespace

size_t PackRunAvx2(uint32_t format, const SampleRun& run, uint8_t* out) {
  switch (format) {
    case protocol::kFormatXY16M: return Pack<protocol::kFormatXY16M>(run, out);
    case protocol::kFormatXY12M1: return Pack<protocol::kFormatXY12M1>(run, out);
    case protocol::kFormatXY12RGB565: return Pack<protocol::kFormatXY12RGB565>(run, out);
    case protocol::kFormatXY12RGB888: return Pack<protocol::kFormatXY12RGB888>(run, out);
    case protocol::kFormatXY12MRGB: return Pack<protocol::kFormatXY12MRGB>(run, out);
    default: return 0;
  }
}

}  // namespace zrv
