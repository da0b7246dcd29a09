// Life of a generator, its scratch, and the small helpers that several patterns share.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "ZRVDataGenerator.h"
#include "dspfilter/filter.h"
#include "generator/content.h"
#include "generator/euclid.h"

ZRVDataGenerator::ZRVDataGenerator() : content(std::make_unique<zrv::GeneratorContent>()) {
  InitProjectiveTransformMatrix(nullptr, nullptr, projectiveInverse);
  InitRadialTransformMult(radialEnable);
}

// Here, where the types behind the owning pointers are complete.
ZRVDataGenerator::~ZRVDataGenerator() = default;

void ZRVDataGenerator::AllocInterpData(unsigned int numKeypoints, unsigned int /*numSamples*/) {
  constexpr uint64_t kStep = 10000;  // patterns of similar size do not allocate anew each time
  const uint64_t wanted = (numKeypoints + kStep - 1) / kStep * kStep;
  if (wanted <= interpDataSize) return;
  ClearInterpData();
  interpData.reset(new float[wanted]);
  interpDataSize = static_cast<unsigned int>(std::min<uint64_t>(wanted, UINT32_MAX));
}

void ZRVDataGenerator::ClearInterpData() {
  interpData.reset();
  interpDataSize = 0;
}

unsigned int ZRVDataGenerator::CopyKeypointsToSamples(const float* xIn, const float* yIn, const unsigned char* mIn,
                                                      float* xOut, float* yOut, unsigned char* mOut, int count) {
  if (count <= 0) return 0;
  const auto n = static_cast<unsigned int>(count);
  std::copy_n(xIn, n, xOut);
  std::copy_n(yIn, n, yOut);
  std::copy_n(mIn, n, mOut);
  return n;
}

int ZRVDataGenerator::gcd(int a, int b) { return static_cast<int>(zrv::Euclid(a, b)); }

// The half period is found by truncation, not by rounding down, so that t below -pi/2 leaves -1..1: kept on
// purpose, for all phases start at 0.
float ZRVDataGenerator::saw(float t) {
  constexpr float kPi = 3.14159274f;  // single precision, so that saw() of a multiple of it is exact
  const float v = t / kPi + 0.5f;
  const float w = v - 2.0f * std::trunc(v / 2.0f);
  return w <= 1.0f ? 2.0f * w - 1.0f : 1.0f - 2.0f * (w - 1.0f);
}
