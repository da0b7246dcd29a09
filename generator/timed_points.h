// Points with dwell times as a scan: what both the point-to-point scan and point-time files come to.
#ifndef ZRV_GENERATOR_TIMED_POINTS_H
#define ZRV_GENERATOR_TIMED_POINTS_H

#include <span>
#include <vector>

#include "generator/scan_assembly.h"

namespace zrv {

struct TimedPoints {
  std::vector<float> x, y;
  std::vector<unsigned char> m;
  std::vector<float> dwellTimes;  // ms
  float transitionTime = 0;       // ms

  void Resize(size_t count);
};

// What PointToPointPattern may write at such a rate; more than a scan holds when that cannot be counted.
size_t RoomForTimedPoints(std::span<const float> dwellTimes, unsigned int samplesPerSecond);

// The rate that is given, or the highest that may be chosen within the limits of the scan.
unsigned int HighestRate(const ZRVScanSettings& scan, unsigned int rate);

// Adds the samples. rate: 0 to have one chosen within the limits of the scan; then the one chosen.
void AddTimedPoints(ScanAssembly& assembly, ZRVDataGenerator& generator, const ZRVScanSettings& scan,
                    const TimedPoints& points, unsigned int& rate);

// A sample rate as the limits of the library's calls take it.
int RateLimit(unsigned int samplesPerSecond);

}  // namespace zrv

#endif
