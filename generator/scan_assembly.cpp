#include "generator/scan_assembly.h"

#include <algorithm>
#include <cmath>

#include "ZRVDataGenerator.h"
#include "generator/content.h"
#include "generator/counts.h"
#include "generator/timed_points.h"

namespace zrv {
namespace {

constexpr float kSmallestAcceleration = 0.0001f;  // below it the trapezoidal profile is the linear one

bool Listed(const ZRVScanSettings& scan) {
  return scan.Animation <= AnimateBounce && scan.Profile <= ProfileOptimized && scan.Closing <= ClosingRetrace;
}

bool SpeedsUp(const ZRVScanSettings& scan) {
  return scan.Profile == ProfileTrapezoidal &&
         (scan.DrawAccel >= kSmallestAcceleration || scan.BlankAccel >= kSmallestAcceleration);
}

// The most samples that the interpolators make of a path.
size_t RoomFor(size_t numKeypoints, size_t numSamples) {
  return std::max(numSamples, numKeypoints + numKeypoints / 4 + 1) + numKeypoints;
}

// The most keypoints that a frame has once it is closed and leads on to the next one.
size_t ClosedSize(size_t numKeypoints) { return 2 * numKeypoints + 2; }

constexpr unsigned int kWhite = 0xFFFFFF;
constexpr size_t kFewestExpected = 13;  // keypoints of the clock's hands

}  // namespace

unsigned int SamplesPerFrame(unsigned int samplesPerSecond, float refreshRate) {
  const double samples = samplesPerSecond / static_cast<double>(refreshRate);
  return samples >= 1 && samples <= static_cast<double>(kMostScanSamples) ? static_cast<unsigned int>(samples) : 0;
}

unsigned int AnimationFrames(const ZRVScanSettings& scan) {
  if (scan.Animation == AnimateNothing) return 1;
  return std::max(1u, WholeCount(std::round(scan.RefreshRate * scan.AnimationDuration)));
}

ScanAssembly::ScanAssembly(ZRVDataGenerator& generator, const ZRVScanSettings& scan, ScanScratch& scratch)
    : generator_(generator),
      scan_(scan),
      scratch_(scratch),
      samplesPerFrame_(zrv::SamplesPerFrame(scan.SampleRate, scan.RefreshRate)) {}

void ScanAssembly::AddFrame(unsigned int count) {
  if (count == 0) return;
  frames_.push_back({numKeypoints_, count});
  numKeypoints_ += count;
}

void ScanAssembly::CloseSamples(unsigned int numClosePoints, bool retrace) {
  const PointArrays to = scratch_.samples.Room(2 * numSamples_ + numClosePoints, coloured_);
  numSamples_ = ZRVDataGenerator::CloseCurve(to.x, to.y, to.m, to.rgb, static_cast<unsigned int>(numSamples_),
                                             numClosePoints, retrace);
}

// Cleans one frame in place and closes it. Behind it stays one keypoint more, at its end, for the way to the
// next frame.
void ScanAssembly::Prepare(const PointArrays& path, Frame& frame, size_t keypoint) {
  const PointArrays from = scratch_.keypoints.Room(numKeypoints_, coloured_).From(keypoint);
  const PointArrays to = path.From(frame.first);
  std::copy_n(from.x, frame.size, to.x);
  std::copy_n(from.y, frame.size, to.y);
  std::copy_n(from.m, frame.size, to.m);
  if (coloured_) std::copy_n(from.rgb, frame.size, to.rgb);

  // Cleaning closes a path by a dark way back.
  unsigned int n = generator_.OptimizeKeypoints(to.x, to.y, to.m, to.rgb, frame.size, scan_.KeypointBudget);
  if (scan_.Closing != ClosingBlank && to.ReturnsDarkly(n)) --n;
  if (scan_.Closing != ClosingLeftOut && !to.IsClosed(n)) {
    n = generator_.CloseCurve(to.x, to.y, to.m, to.rgb, n, 1, scan_.Closing == ClosingRetrace);
  }
  to.From(n).Fill(1, to.From(n - 1));
  frame.size = n;
}

// Lets a frame end, dark, where the next one starts.
void ScanAssembly::LeadOn(const PointArrays& paths, Frame& frame, const Frame& next) const {
  const PointArrays path = paths.From(frame.first), start = paths.From(next.first);
  size_t end = frame.size - 1;
  if (!path.ReturnsDarkly(frame.size)) {
    path.m[end] = 0;
    end = frame.size++;
  }
  path.From(end).Fill(1, start);
}

void ScanAssembly::Transform(const PointArrays& points, size_t count) const {
  generator_.TransformData(points.x, points.y, static_cast<unsigned int>(count), scan_.Scale, scan_.Angle,
                           scan_.OffsetX, scan_.OffsetY, scan_.Projective, scan_.Tangential, scan_.Radial);
}

void ScanAssembly::FinishKeypoints() {
  const PointArrays paths = scratch_.paths.Room(2 * numKeypoints_ + 2 * frames_.size(), coloured_);
  size_t end = 0;
  for (Frame& frame : frames_) {
    const size_t keypoint = frame.first;
    frame.first = end;
    Prepare(paths, frame, keypoint);
    end = frame.first + frame.size + 1;
  }
  if (frames_.size() > 1 && scan_.Closing != ClosingLeftOut) {
    for (size_t f = 0; f < frames_.size(); ++f) LeadOn(paths, frames_[f], frames_[(f + 1) % frames_.size()]);
  }
  Transform(paths, end);
  Interpolate(paths);
}

void ScanAssembly::Interpolate(const PointArrays& paths) {
  if (samplesPerFrame_ == 0) return;
  for (const Frame& frame : frames_) {
    const size_t room = numSamples_ + RoomFor(frame.size, samplesPerFrame_);
    if (room > kMostScanSamples) {
      numSamples_ = 0;
      return;
    }
    const PointArrays to = scratch_.samples.Room(room, coloured_).From(numSamples_);
    numSamples_ += InterpolateFrame(paths.From(frame.first), frame.size, to);
  }
  numFrames_ = static_cast<unsigned int>(frames_.size());
}

unsigned int ScanAssembly::InterpolateFrame(const PointArrays& from, unsigned int count, const PointArrays& to) const {
  if (count == 1) {
    to.Fill(samplesPerFrame_, from);
    return samplesPerFrame_;
  }
  if (scan_.Profile == ProfileOptimized) {
    return generator_.InterpolateDataOptimized(from.x, from.y, from.m, from.rgb, to.x, to.y, to.m, to.rgb, count,
                                               samplesPerFrame_);
  }
  const bool linear = !SpeedsUp(scan_);
  const unsigned int written =
      generator_.InterpolateData(from.x, from.y, from.m, from.rgb, to.x, to.y, to.m, to.rgb, count, samplesPerFrame_,
                                 scan_.BlankSpeed, linear ? 0 : scan_.DrawAccel, linear ? 0 : scan_.BlankAccel);
  // The linear profile's closing sample has a digital byte for its y: here it is to be the end of the path.
  if (linear && samplesPerFrame_ > count && written > 0) to.y[written - 1] = from.y[count - 1];
  return written;
}

void ScanAssembly::Animate() {
  if (numFrames_ != 1 || scan_.Animation == AnimateNothing) return;
  const size_t frames = AnimationFrames(scan_), total = frames * numSamples_;
  if (total > kMostScanSamples) {
    numSamples_ = 0;
    return;
  }
  const PointArrays to = scratch_.samples.Room(total, coloured_);
  numSamples_ =
      generator_.GenerateAnimations(to.x, to.y, to.m, to.rgb, scan_.Animation, static_cast<unsigned int>(numSamples_),
                                    static_cast<unsigned int>(frames));
  numFrames_ = static_cast<unsigned int>(frames);
}

void ScanAssembly::Filter() {
  const size_t room = (scan_.FilterZeroPhase ? 3 : 1) * numSamples_;
  float* const x = Grown(scratch_.filteredX, room);
  float* const y = Grown(scratch_.filteredY, room);
  const PointArrays samples = scratch_.samples.Room(numSamples_, coloured_);
  generator_.FilterData(overTime_ ? samples.y : samples.x, samples.y, x, y, static_cast<unsigned int>(numSamples_),
                        scan_.FilterZeroPhase);
  if (!overTime_) std::copy_n(x, numSamples_, samples.x);
  std::copy_n(y, numSamples_, samples.y);
}

void ScanAssembly::Deliver(const Outputs& to, unsigned int* rgb, unsigned int& numSamples, unsigned int& numFrames) {
  numSamples = numFrames = 0;
  if (!Listed(scan_) || !(to.Given() || to.Absent())) return;
  if (!frames_.empty()) {
    FinishKeypoints();
  } else {
    Transform(scratch_.samples.Room(numSamples_, coloured_), numSamples_);
  }
  Animate();
  if (numSamples_ == 0 || (to.Given() && numSamples_ > scan_.ArrayCapacity)) return;
  if (to.Given()) {
    if (scan_.Filter) Filter();
    const PointArrays from = scratch_.samples.Room(numSamples_, coloured_);
    std::copy_n(from.x, numSamples_, to.x);
    std::copy_n(from.y, numSamples_, to.y);
    std::copy_n(from.m, numSamples_, to.m);
    for (size_t i = 0; rgb != nullptr && i < numSamples_; ++i) {
      rgb[i] = from.m[i] == 0 ? 0 : coloured_ ? from.rgb[i] : kWhite;
    }
  }
  numSamples = static_cast<unsigned int>(numSamples_);
  numFrames = numFrames_;
}

}  // namespace zrv

unsigned int ZRVDataGenerator::CurvesDataSize(const ZRVScanSettings& scan, unsigned int numKeypoints,
                                              unsigned int numFrames) const {
  const size_t keypoints = std::max<size_t>({numKeypoints, content->pointFile.Size(), zrv::kFewestExpected});
  const size_t closed = zrv::ClosedSize(keypoints);
  // A drawing of which one frame is left, the others being empty or not there, is animated.
  const size_t frames = std::max(numFrames, zrv::AnimationFrames(scan));
  const zrv::PointFile& timed = content->pointTimeFile;
  const size_t frame = std::max(zrv::RoomFor(closed, zrv::SamplesPerFrame(scan.SampleRate, scan.RefreshRate)),
                                zrv::RoomForTimedPoints(timed.t, zrv::HighestRate(scan, timed.sps)));
  return zrv::SaturatedCount(std::min<uint64_t>(zrv::kMostScanSamples, frames * frame));
}
