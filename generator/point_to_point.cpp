// A list of points: dwell at each, move on dark.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "ZRVDataGenerator.h"
#include "generator/counts.h"

namespace {

constexpr double kWantedSamples = 50000;
constexpr int64_t kShortestMove = 6;  // samples; below that a move has no acceleration phase
constexpr float kMsPerSecond = 1000.0f;
constexpr uint64_t kMoveExtra = 2;  // interpolation writes at most so many samples more than it is asked for

int64_t SamplesIn(unsigned int sps, float ms) {
  return std::max<int64_t>(0, zrv::TruncatedCount(static_cast<float>(sps) * ms / kMsPerSecond));
}

unsigned int RateFor(const float* dwellTimes, int numPoints, int minSps, int maxSps) {
  float total = 0;
  for (int i = 0; i < numPoints; ++i) total += dwellTimes[i];
  const int64_t wanted = zrv::TruncatedCount(std::ceil(kWantedSamples * 1000.0 / static_cast<double>(total)));
  return static_cast<unsigned int>(std::max<int64_t>({std::min<int64_t>(maxSps, wanted), minSps, 0}));
}

uint64_t MostSamples(const float* dwellTimes, int numPoints, unsigned int sps) {
  uint64_t total = 0;
  for (int i = 0; i < numPoints && zrv::FitsCount(total); ++i) {
    total += static_cast<uint64_t>(SamplesIn(sps, dwellTimes[i])) + kMoveExtra;
  }
  return total;
}

}  // namespace

unsigned int ZRVDataGenerator::PointToPointPattern(float* x, float* y, unsigned char* m, const float* pointX,
                                                   const float* pointY, const unsigned char* pointM,
                                                   const float* dwellTimes, int numPoints, float transitionTime,
                                                   unsigned int& sps, int minSps, int maxSps) {
  if (x == nullptr || y == nullptr || m == nullptr) return 0;
  if (pointX == nullptr || pointY == nullptr || pointM == nullptr || dwellTimes == nullptr) return 0;
  const unsigned int rate = sps != 0 ? sps : RateFor(dwellTimes, numPoints, minSps, maxSps);
  if (!zrv::FitsCount(MostSamples(dwellTimes, numPoints, rate))) return 0;

  sps = rate;
  int64_t move = std::max(kShortestMove, SamplesIn(sps, transitionTime));
  size_t at = 0;
  for (int i = 0; i < numPoints; ++i) {
    const int64_t dwell = SamplesIn(sps, dwellTimes[i]);
    if (dwell <= move) move = dwell / 2;  // and no later move is longer: kept so
    const auto hold = static_cast<size_t>(dwell - move);
    std::fill_n(x + at, hold, pointX[i]);
    std::fill_n(y + at, hold, pointY[i]);
    std::fill_n(m + at, hold, pointM[i]);
    at += hold;

    const int next = std::min(i + 1, numPoints - 1);
    const float xs[] = {pointX[i], pointX[next]}, ys[] = {pointY[i], pointY[next]};
    const unsigned char dark[] = {0, 0};
    // A move of no samples still takes two places, which interpolation counts but does not write.
    if (move == 0) CopyKeypointsToSamples(xs, ys, dark, x + at, y + at, m + at, 2);
    at += InterpolateData(xs, ys, dark, x + at, y + at, m + at, 2, static_cast<unsigned int>(move), 2.5f, 0.1f, 0.5f);
  }
  return static_cast<unsigned int>(at);
}
