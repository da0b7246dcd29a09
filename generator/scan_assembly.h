// From keypoints or samples to a finished scan: clean and close, transform, interpolate, animate, filter, hand out.
#ifndef ZRV_GENERATOR_SCAN_ASSEMBLY_H
#define ZRV_GENERATOR_SCAN_ASSEMBLY_H

#include <algorithm>
#include <cstddef>
#include <vector>

#include "ZRVDefinitions.h"
#include "generator/outputs.h"
#include "generator/point_arrays.h"

class ZRVDataGenerator;

namespace zrv {

// The most samples that a composite generator makes.
inline constexpr size_t kMostScanSamples = size_t{1} << 24;

class ScanAssembly {
 public:
  ScanAssembly(ZRVDataGenerator& generator, const ZRVScanSettings& scan, ScanScratch& scratch);

  // 0: refresh rate and sample rate give none.
  unsigned int SamplesPerFrame() const { return samplesPerFrame_; }

  // Colours travel with the points.
  void CarryColours() { coloured_ = true; }

  // x is a time axis, which no filter softens.
  void KeepTimeAxis() { overTime_ = true; }

  // One frame of keypoints from fill(PointArrays), which writes at most room of them and returns their number.
  template <typename Fill>
  void AddKeypoints(size_t room, Fill fill) {
    if (room > kMostScanSamples) return;
    const PointArrays keypoints = scratch_.keypoints.Room(room, coloured_);
    // A glyph that is drawn backwards leaves its last byte to what follows: here it is lit, not what was there before.
    std::fill_n(keypoints.m, room, static_cast<unsigned char>(255));
    AddFrame(fill(keypoints));
  }
  // The same for several frames at once, of sizeOf(0), sizeOf(1) .. keypoints; empty ones are left out.
  template <typename Fill, typename SizeOf>
  void AddKeypointFrames(size_t room, unsigned int numFrames, Fill fill, SizeOf sizeOf) {
    if (room > kMostScanSamples) return;
    fill(scratch_.keypoints.Room(room, coloured_));
    for (unsigned int f = 0; f < numFrames; ++f) AddFrame(sizeOf(f));
  }

  // One frame of samples, in the same way.
  template <typename Fill>
  void AddSamples(size_t room, Fill fill) {
    if (room > kMostScanSamples) return;
    numSamples_ = fill(scratch_.samples.Room(room, coloured_));
    numFrames_ = 1;
  }
  // Makes an open path of samples return to its start within the frame. numClosePoints as in CloseCurve.
  void CloseSamples(unsigned int numClosePoints, bool retrace);

  // Finishes the scan and writes it, or only counts when all arrays are null. rgb may be null; without colours
  // of their own, lit samples are white.
  void Deliver(const Outputs& to, unsigned int* rgb, unsigned int& numSamples, unsigned int& numFrames);

 private:
  struct Frame {
    size_t first;
    unsigned int size;
  };

  void AddFrame(unsigned int count);
  void Prepare(const PointArrays& path, Frame& frame, size_t keypoint);
  void LeadOn(const PointArrays& paths, Frame& frame, const Frame& next) const;
  void Transform(const PointArrays& points, size_t count) const;
  void Interpolate(const PointArrays& paths);
  unsigned int InterpolateFrame(const PointArrays& from, unsigned int count, const PointArrays& to) const;
  void FinishKeypoints();
  void Animate();
  void Filter();

  ZRVDataGenerator& generator_;
  const ZRVScanSettings scan_;
  ScanScratch& scratch_;
  const unsigned int samplesPerFrame_;
  bool coloured_ = false, overTime_ = false;
  std::vector<Frame> frames_;  // of keypoints
  size_t numKeypoints_ = 0;    // of all frames
  size_t numSamples_ = 0;
  unsigned int numFrames_ = 0;
};

// Samples in one frame at so many samples per second; 0 when it cannot be counted.
unsigned int SamplesPerFrame(unsigned int samplesPerSecond, float refreshRate);

// Frames of the animation; 1 when there is none.
unsigned int AnimationFrames(const ZRVScanSettings& scan);

}  // namespace zrv

#endif
