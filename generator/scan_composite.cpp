// Rasters and point to point as finished scans, which choose their own sample rate.
#include <algorithm>
#include <limits>

#include "ZRVDataGenerator.h"
#include "generator/content.h"
#include "generator/timed_points.h"

namespace zrv {

size_t RoomForTimedPoints(std::span<const float> dwellTimes, unsigned int samplesPerSecond) {
  double room = 0;
  for (const float ms : dwellTimes) {
    room += 2.0 + std::max(0.0, static_cast<double>(samplesPerSecond) * static_cast<double>(ms) / 1000.0);
  }
  room += static_cast<double>(dwellTimes.size());  // roundings of single precision
  return room <= static_cast<double>(kMostScanSamples) ? static_cast<size_t>(room) : kMostScanSamples + 1;
}

unsigned int HighestRate(const ZRVScanSettings& scan, unsigned int rate) {
  return rate != 0 ? rate : std::max(scan.SampleRateMin, scan.SampleRateMax);
}

int RateLimit(unsigned int samplesPerSecond) {
  return static_cast<int>(std::min<unsigned int>(samplesPerSecond, std::numeric_limits<int>::max()));
}

void TimedPoints::Resize(size_t count) {
  x.resize(count);
  y.resize(count);
  m.resize(count, 255);
  dwellTimes.resize(count);
}

void AddTimedPoints(ScanAssembly& assembly, ZRVDataGenerator& generator, const ZRVScanSettings& scan,
                    const TimedPoints& points, unsigned int& rate) {
  assembly.AddSamples(RoomForTimedPoints(points.dwellTimes, HighestRate(scan, rate)), [&](const PointArrays& to) {
    return generator.PointToPointPattern(to.x, to.y, to.m, points.x.data(), points.y.data(), points.m.data(),
                                         points.dwellTimes.data(), static_cast<int>(points.x.size()),
                                         points.transitionTime, rate, RateLimit(scan.SampleRateMin),
                                         RateLimit(scan.SampleRateMax));
  });
}

}  // namespace zrv

namespace {

using zrv::PointArrays;
using zrv::RateLimit;
using zrv::ScanAssembly;

void AddRaster(ScanAssembly& assembly, ZRVDataGenerator& generator, const ZRVScanSettings& scan,
               const ZRVPatternSettings& p, unsigned int& rate) {
  const auto call = p.Pattern == ScanImagingRaster ? &ZRVDataGenerator::LinearRasterPatternImaging
                                                   : &ZRVDataGenerator::LinearRasterPattern;
  const auto fill = [&](const PointArrays& to) {
    return (generator.*call)(to.x, to.y, to.m, p.XAmplitude, p.YAmplitude, p.NumLines, p.NumPixels, p.LineDuration,
                             p.PixelHold, p.Bidirectional, p.DigitalShift, p.RotationAngle, rate,
                             RateLimit(scan.SampleRateMin), RateLimit(scan.SampleRateMax));
  };
  assembly.AddSamples(fill({}), fill);
}

zrv::TimedPoints PointsOf(const ZRVPatternSettings& p) {
  zrv::TimedPoints points;
  if (p.PointX == nullptr || p.PointY == nullptr || p.NumPoints > zrv::kMostScanSamples) return points;
  points.Resize(p.NumPoints);
  std::copy_n(p.PointX, p.NumPoints, points.x.data());
  std::copy_n(p.PointY, p.NumPoints, points.y.data());
  if (p.PointM != nullptr) std::copy_n(p.PointM, p.NumPoints, points.m.data());
  std::fill(points.dwellTimes.begin(), points.dwellTimes.end(), p.DwellTime);
  if (p.DwellTimes != nullptr) std::copy_n(p.DwellTimes, p.NumPoints, points.dwellTimes.data());
  points.transitionTime = p.TransitionTime;
  return points;
}

}  // namespace

void ZRVDataGenerator::GenerateScanData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                                        const ZRVPatternSettings& pattern, unsigned int& numSamples,
                                        unsigned int& numFrames, unsigned int& sampleRate) {
  ScanAssembly assembly(*this, scan, content->scratch);
  unsigned int rate = 0;
  if (pattern.Pattern == ScanPointToPoint) {
    AddTimedPoints(assembly, *this, scan, PointsOf(pattern), rate);
  } else if (pattern.Pattern <= ScanImagingRaster) {
    AddRaster(assembly, *this, scan, pattern, rate);
  }
  assembly.Deliver({x, y, m}, nullptr, numSamples, numFrames);
  sampleRate = numSamples > 0 ? rate : 0;
}
