// Keypoints to evenly timed samples: how many each segment gets, and where along it they fall.
//
// Arithmetic is single precision in the order written; the counts depend on it.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "ZRVDataGenerator.h"
#include "generator/counts.h"
#include "generator/geometry.h"

namespace {

using zrv::kPi;
using zrv::Point;

constexpr float kSmallestTotal = 1e-8f;         // keeps divisions by a path length finite
constexpr float kSmallestAcceleration = 1e-4f;  // below it a profile is linear
constexpr unsigned int kShortestProfile = 6;    // samples; shorter segments run at constant speed

struct Path {
  const float* x;
  const float* y;
  const unsigned char* m;
  const unsigned int* index;  // or null
  size_t count;

  size_t Segments() const { return count - 1; }
  bool Blank(size_t i) const { return m[i] == 0; }
  Point operator[](size_t i) const { return {x[i], y[i]}; }
  Point Step(size_t i) const { return {x[i + 1] - x[i], y[i + 1] - y[i]}; }
};

float Length(Point d) { return std::sqrt(d.x * d.x + d.y * d.y); }

void MeasureSegments(const Path& path, float* lengths) {
  for (size_t i = 0; i < path.Segments(); ++i) lengths[i] = Length(path.Step(i));
}

// Without a branch, which would go either way as often.
unsigned int RoundHalfUp(float value) {
  const float floor = std::floor(value);
  return zrv::WholeCount(floor + static_cast<float>(!(value - floor < 0.5f)));
}

struct Outputs {
  float* x;
  float* y;
  unsigned char* m;
  unsigned int* index;  // or null

  void Fill(size_t first, size_t n, const Path& path, size_t keypoint) const {
    std::fill_n(x + first, n, path.x[keypoint]);
    std::fill_n(y + first, n, path.y[keypoint]);
    FillMarks(first, n, path, keypoint);
  }
  void FillMarks(size_t first, size_t n, const Path& path, size_t keypoint) const {
    std::fill_n(m + first, n, path.m[keypoint]);
    if (index) std::fill_n(index + first, n, path.index[keypoint]);
  }
};

// Samples written at a time.
constexpr unsigned int kStep = 8;
// Where so many samples are sure to follow, the last step may reach into them, as they are written later: with a few
// samples a segment, the odd ones at its end would take longer than all others.
constexpr unsigned int kSurplus = 2 * kStep;
// Single precision counts up to here; beyond, each position is rounded from its whole number.
constexpr unsigned int kMostCounted = 1u << 24;

struct Stretch {
  float* x;
  float* y;
  unsigned int n;
  bool surplus;  // of up to a step may be written behind it

  Stretch From(unsigned int first, unsigned int count) const { return {x + first, y + first, count, surplus}; }
};

// share(j, left) is the part of the way at point j, with left = n - j.
template <unsigned int kCount, typename Share>
inline void WritePoints(const Stretch& out, unsigned int first, Point from, Point to, Share share) {
  const auto j = static_cast<float>(first), left = static_cast<float>(out.n - first);
  float s[kCount];
  for (unsigned int k = 0; k < kCount; ++k) s[k] = share(j + static_cast<float>(k), left - static_cast<float>(k));
  for (unsigned int k = 0; k < kCount; ++k) out.x[first + k] = (1.0f - s[k]) * from.x + s[k] * to.x;
  for (unsigned int k = 0; k < kCount; ++k) out.y[first + k] = (1.0f - s[k]) * from.y + s[k] * to.y;
}

// The points from one to the other, the end left out.
template <typename Share>
void WriteRamp(const Stretch& out, Point from, Point to, Share share) {
  unsigned int j = 0;
  if (out.surplus) {  // once at least: most often no more
    do WritePoints<kStep>(out, j, from, to, share);
    while ((j += kStep) < out.n);
    return;
  }
  if (out.n <= kMostCounted) {
    for (; out.n - j >= kStep; j += kStep) WritePoints<kStep>(out, j, from, to, share);
  }
  for (; j < out.n; ++j) WritePoints<1>(out, j, from, to, share);
}

void WriteSteady(const Stretch& out, Point from, Point to) {
  WriteRamp(out, from, to, [whole = static_cast<float>(out.n)](float j, float) { return j / whole; });
}

void WriteSpeedingUp(const Stretch& out, Point from, Point to) {
  WriteRamp(out, from, to, [whole = static_cast<float>(out.n)](float j, float) {
    const float t = j / whole;
    return t * t;
  });
}

void WriteSlowingDown(const Stretch& out, Point from, Point to) {
  WriteRamp(out, from, to, [whole = static_cast<float>(out.n)](float, float left) {
    const float t = left / whole;
    return 1.0f - t * t;
  });
}

// Shares of a segment's length spent speeding up after its start and slowing down into its end. A share f takes
// 2f / total of the time.
struct Acceleration {
  float start, end;
  float total;  // 1 + start + end, in the order of operations of its profile
};

// Writes segments one after another, never more than the promised number of samples in all.
class SegmentWriter {
 public:
  // numSure: segments that will be given a sample at least.
  SegmentWriter(const Path& path, const Outputs& out, unsigned int numSamples, size_t numSure)
      : path_(path), out_(out), limit_(numSamples + path.Segments()), sure_(numSure) {}

  size_t Written() const { return written_; }

  void Steady(size_t segment, unsigned int wanted) {
    const Stretch out = Begin(wanted);
    WriteSteady(out, path_[segment], path_[segment + 1]);
    Finish(segment, out);
  }

  // Constant acceleration from rest, constant speed, constant deceleration to rest.
  void ThreePhase(size_t segment, unsigned int wanted, const Acceleration& part) {
    if (wanted < kShortestProfile) return Steady(segment, wanted);
    const Stretch out = Begin(wanted);
    const float twice = 2.0f * static_cast<float>(out.n);
    const unsigned int speedUp = std::min(out.n, zrv::WholeCount(std::ceil(twice * part.start / part.total)));
    const unsigned int slowDown = std::min(out.n - speedUp, zrv::WholeCount(std::floor(twice * part.end / part.total)));
    const unsigned int steady = out.n - speedUp - slowDown;

    const Point from = path_[segment], to = path_[segment + 1], d = path_.Step(segment);
    const Point cruise = {from.x + part.start * d.x, from.y + part.start * d.y};
    const Point brake = {to.x - part.end * d.x, to.y - part.end * d.y};
    WriteSpeedingUp(out.From(0, speedUp), from, cruise);
    WriteSteady(out.From(speedUp, steady), cruise, brake);
    WriteSlowingDown(out.From(speedUp + steady, slowDown), brake, to);
    Finish(segment, out);
  }

 private:
  Stretch Begin(unsigned int wanted) {
    if (wanted > 0 && sure_ > 0) --sure_;
    const size_t room = limit_ - written_;
    const auto n = static_cast<unsigned int>(std::min<size_t>(wanted, room));
    const bool surplus = sure_ >= kSurplus && room - n >= kSurplus && n <= kMostCounted;
    return {out_.x + written_, out_.y + written_, n, surplus};
  }
  void Finish(size_t segment, const Stretch& out) {
    if (out.surplus && !out_.index) {
      for (size_t j = 0; j < out.n; j += kSurplus) std::fill_n(out_.m + written_ + j, kSurplus, path_.m[segment]);
    } else {
      out_.FillMarks(written_, out.n, path_, segment);
    }
    written_ += out.n;
  }

  Path path_;
  Outputs out_;
  size_t limit_;
  size_t sure_;
  size_t written_ = 0;
};

// What is left to give as the segments are walked; the last one takes it all.
class Remainder {
 public:
  Remainder(unsigned int samples, size_t segments) : left_(samples), segments_(segments) {}

  // A segment of less than a sample: has one all the same, at no cost to the others.
  void GiveExtra() { ++left_; }

  unsigned int Take(unsigned int wanted) {
    if (--segments_ == 0) return static_cast<unsigned int>(std::min<uint64_t>(left_, UINT32_MAX));
    left_ = wanted < left_ ? left_ - wanted : 1;
    return wanted;
  }

 private:
  uint64_t left_;
  size_t segments_;
};

// Leaves in lengths the samples that each segment gets in the linear and trapezoidal profiles, not yet whole, shared
// out by length: a drawn segment gets blankSpeed times as many for its length as a blank one, and the blank ones
// together at least one each.
void ShareOut(const Path& path, float* lengths, unsigned int numSamples, float blankSpeed) {
  MeasureSegments(path, lengths);
  float blankLength = 0, drawnLength = 0;
  unsigned int numBlank = 0;
  for (size_t i = 0; i < path.Segments(); ++i) {
    const bool blank = path.Blank(i);
    blankLength += blank ? lengths[i] : 0.0f;  // without a branch
    drawnLength += blank ? 0.0f : lengths[i];
    numBlank += blank;
  }
  blankLength = std::max(blankLength, kSmallestTotal);
  drawnLength = std::max(drawnLength, kSmallestTotal);
  const float share = static_cast<float>(numSamples) * blankLength / (blankSpeed * drawnLength + blankLength);
  const unsigned int forBlank = zrv::WholeCount(std::max(static_cast<float>(numBlank), share));
  const auto blankSamples = static_cast<float>(forBlank);
  const auto drawnSamples = static_cast<float>(forBlank < numSamples ? numSamples - forBlank : 0);
  for (size_t i = 0; i < path.Segments(); ++i) {
    const bool blank = path.Blank(i);
    lengths[i] = (blank ? blankSamples : drawnSamples) * lengths[i] / (blank ? blankLength : drawnLength);
  }
}

// In this order not a number becomes the lower bound.
float Clamp(float value, float low, float high) { return std::min(std::max(low, value), high); }

// --- Optimized profile

// How corners weigh on a segment.
struct CornerRule {
  float weight;            // of a corner, on time and on acceleration
  float baseAcceleration;  // share of the length, without any corner
  float speed;             // against a drawn segment
};
constexpr CornerRule kDrawnRule = {0.3f, 0.1f, 1.0f};
constexpr CornerRule kBlankRule = {0.5f, 0.0f, 1.75f};

const CornerRule& RuleOf(const Path& path, size_t segment) { return path.Blank(segment) ? kBlankRule : kDrawnRule; }

// 0 straight on, 0.5 a right angle, 1 back again. Rounding the product of the vectors towards zero, and that
// of their lengths up, keeps the quotient within -1..1; beyond the field, where numbers are too large to be
// rounded so, the limits do.
float CornerMeasure(Point in, Point out, float lengths) {
  float dot = in.x * out.x + in.y * out.y;
  dot = (dot > 0.0f ? std::floor(dot * 100000.0f) : std::ceil(dot * 100000.0f)) / 100000.0f;
  const float norm = std::ceil(lengths * 1000000.0f) / 1000000.0f;
  const double cosine = norm == 0.0f ? static_cast<double>(dot) / 0.000001 : static_cast<double>(dot / norm);
  return static_cast<float>(std::acos(std::clamp(cosine, -1.0, 1.0)) / kPi);
}

// One measure a keypoint. The path is taken as closed: its last keypoint is its first.
std::vector<float> MeasureCorners(const Path& path, const float* lengths) {
  const size_t last = path.count - 1;
  std::vector<float> corners(path.count);
  for (size_t k = 1; k < last; ++k) {
    corners[k] = CornerMeasure(path.Step(k - 1), path.Step(k), lengths[k - 1] * lengths[k]);
  }
  const Point out = {path.x[1] - path.x[last], path.y[1] - path.y[last]};
  corners[last] = CornerMeasure(path.Step(last - 1), out, lengths[last - 1] * Length(out));
  corners[0] = corners[last];
  return corners;
}

// Turns the lengths into weights; returns their sum.
float WeighSegments(const Path& path, const std::vector<float>& corners, float* lengths) {
  float sum = 0.0f;
  for (size_t i = 0; i < path.Segments(); ++i) {
    const CornerRule& rule = RuleOf(path, i);
    lengths[i] = (1.0f + rule.weight * corners[i] + rule.weight * corners[i + 1]) * lengths[i] / rule.speed;
    sum += lengths[i];
  }
  return sum;
}

bool IsShort(float share) { return share >= 0.5f && share < 1.0f; }

size_t WriteOptimized(const Path& path, const Outputs& out, unsigned int numSamples, float* lengths) {
  MeasureSegments(path, lengths);
  const std::vector<float> corners = MeasureCorners(path, lengths);
  const float sum = WeighSegments(path, corners, lengths);
  const auto samples = static_cast<float>(numSamples);
  // Without any length the shares are not numbers: they count as none, and the last segment takes all.
  float* const shares = lengths;
  unsigned int numShort = 0;
  size_t numSure = 0;
  for (size_t i = 0; i < path.Segments(); ++i) {
    shares[i] = samples * lengths[i] / sum;
    numShort += IsShort(shares[i]);
    numSure += shares[i] >= 0.5f;
  }
  const bool enough = numSamples > numShort && numSamples - numShort > 10;

  Remainder remainder(enough ? numSamples - numShort : numSamples, path.Segments());
  SegmentWriter writer(path, out, numSamples, numSure);
  for (size_t i = 0; i < path.Segments(); ++i) {
    const CornerRule& rule = RuleOf(path, i);
    if (IsShort(shares[i])) remainder.GiveExtra();
    const unsigned int n = shares[i] >= 0.5f ? RoundHalfUp(shares[i]) : 0;
    const float start = rule.weight * corners[i] + rule.baseAcceleration;
    const float end = rule.weight * corners[i + 1] + rule.baseAcceleration;
    writer.ThreePhase(i, remainder.Take(n), {start, end, start + 1.0f + end});
  }
  return writer.Written();
}

// --- Linear and trapezoidal profile

size_t WriteLinear(const Path& path, const Outputs& out, unsigned int numSamples, float blankSpeed, float* lengths) {
  ShareOut(path, lengths, numSamples, blankSpeed);
  SegmentWriter writer(path, out, numSamples, path.Segments());
  for (size_t i = 0; i < path.Segments(); ++i) writer.Steady(i, std::max(1u, zrv::WholeCount(lengths[i])));
  // The closing sample's y is the digital byte as a number; one would expect the keypoint's y. Kept on purpose,
  // and pinned by the closing samples in interpolation_test.cpp.
  const size_t last = path.count - 1, end = writer.Written();
  out.Fill(end, 1, path, last);
  out.y[end] = static_cast<float>(path.m[last]);
  return end + 1;
}

size_t WriteTrapezoidal(const Path& path, const Outputs& out, unsigned int numSamples, float blankSpeed,
                        float drawAccel, float blankAccel, float* lengths) {
  ShareOut(path, lengths, numSamples, blankSpeed);
  Remainder remainder(numSamples, path.Segments());
  SegmentWriter writer(path, out, numSamples, path.Segments());
  const Acceleration drawn{drawAccel, drawAccel, 2.0f * drawAccel + 1.0f};
  const Acceleration blank{blankAccel, blankAccel, 2.0f * blankAccel + 1.0f};
  for (size_t i = 0; i < path.Segments(); ++i) {
    const float nominal = lengths[i];
    const bool whole = nominal >= 1.0f;
    if (!whole) remainder.GiveExtra();
    writer.ThreePhase(i, remainder.Take(whole ? RoundHalfUp(nominal) : 1), path.Blank(i) ? blank : drawn);
  }
  return writer.Written();
}

}  // namespace

unsigned int ZRVDataGenerator::InterpolateData(const float* xIn, const float* yIn, const unsigned char* mIn,
                                               const unsigned int* idxIn, float* xOut, float* yOut, unsigned char* mOut,
                                               unsigned int* idxOut, unsigned int numKeypoints, unsigned int numSamples,
                                               float blankSpeed, float drawAccel, float blankAccel) {
  if (numKeypoints == 0 || numSamples == 0) return numKeypoints;
  if (!xIn || !yIn || !mIn || !xOut || !yOut || !mOut) return 0;
  const Path path{xIn, yIn, mIn, idxIn, numKeypoints};
  const Outputs out{xOut, yOut, mOut, idxIn ? idxOut : nullptr};
  if (numKeypoints == 1) {
    out.Fill(0, numSamples, path, 0);
  } else if (numSamples <= numKeypoints) {
    if (out.index) std::copy_n(idxIn, numKeypoints, idxOut);
    return CopyKeypointsToSamples(xIn, yIn, mIn, xOut, yOut, mOut, static_cast<int>(numKeypoints));
  }
  const float speed = Clamp(blankSpeed, 1.0f, 10.0f);
  const float drawn = Clamp(drawAccel, 0.0f, 0.5f), blank = Clamp(blankAccel, 0.0f, 0.5f);
  AllocInterpData(numKeypoints, numSamples);
  if (drawn >= kSmallestAcceleration || blank >= kSmallestAcceleration) {
    if (numKeypoints < 2) return 0;
    return static_cast<unsigned int>(WriteTrapezoidal(path, out, numSamples, speed, drawn, blank, interpData.get()));
  }
  return static_cast<unsigned int>(WriteLinear(path, out, numSamples, speed, interpData.get()));
}

unsigned int ZRVDataGenerator::InterpolateData(const float* xIn, const float* yIn, const unsigned char* mIn,
                                               float* xOut, float* yOut, unsigned char* mOut, unsigned int numKeypoints,
                                               unsigned int numSamples, float blankSpeed, float drawAccel,
                                               float blankAccel) {
  return InterpolateData(xIn, yIn, mIn, nullptr, xOut, yOut, mOut, nullptr, numKeypoints, numSamples, blankSpeed,
                         drawAccel, blankAccel);
}

unsigned int ZRVDataGenerator::InterpolateDataLinear(const float* xIn, const float* yIn, const unsigned char* mIn,
                                                     float* xOut, float* yOut, unsigned char* mOut,
                                                     unsigned int numKeypoints, unsigned int numSamples,
                                                     float blankSpeed) {
  if (numKeypoints == 0 || !xIn || !yIn || !mIn || !xOut || !yOut || !mOut) return 0;
  AllocInterpData(numKeypoints, numSamples);
  return static_cast<unsigned int>(WriteLinear({xIn, yIn, mIn, nullptr, numKeypoints}, {xOut, yOut, mOut, nullptr},
                                               numSamples, blankSpeed, interpData.get()));
}

unsigned int ZRVDataGenerator::InterpolateDataTrapezoidal(const float* xIn, const float* yIn, const unsigned char* mIn,
                                                          float* xOut, float* yOut, unsigned char* mOut,
                                                          unsigned int numKeypoints, unsigned int numSamples,
                                                          float blankSpeed, float drawAccel, float blankAccel) {
  if (numKeypoints < 2 || !xIn || !yIn || !mIn || !xOut || !yOut || !mOut) return 0;
  AllocInterpData(numKeypoints, numSamples);
  return static_cast<unsigned int>(WriteTrapezoidal({xIn, yIn, mIn, nullptr, numKeypoints}, {xOut, yOut, mOut, nullptr},
                                                    numSamples, blankSpeed, drawAccel, blankAccel, interpData.get()));
}

unsigned int ZRVDataGenerator::InterpolateDataOptimized(const float* xIn, const float* yIn, const unsigned char* mIn,
                                                        const unsigned int* idxIn, float* xOut, float* yOut,
                                                        unsigned char* mOut, unsigned int* idxOut,
                                                        unsigned int numKeypoints, unsigned int numSamples) {
  if (numKeypoints == 0 || numSamples == 0) return numKeypoints;
  if (!xIn || !yIn || !mIn || !xOut || !yOut || !mOut) return 0;
  const Path path{xIn, yIn, mIn, idxIn, numKeypoints};
  const Outputs out{xOut, yOut, mOut, idxIn ? idxOut : nullptr};
  if (numKeypoints == 1) {
    out.Fill(0, numSamples, path, 0);
    return 0;
  }
  if (numSamples <= numKeypoints) numSamples = static_cast<unsigned int>(std::min(numKeypoints * 1.25, 4294967295.0));
  AllocInterpData(numKeypoints, numSamples);
  return static_cast<unsigned int>(WriteOptimized(path, out, numSamples, interpData.get()));
}

unsigned int ZRVDataGenerator::InterpolateDataOptimized(const float* xIn, const float* yIn, const unsigned char* mIn,
                                                        float* xOut, float* yOut, unsigned char* mOut,
                                                        unsigned int numKeypoints, unsigned int numSamples) {
  return InterpolateDataOptimized(xIn, yIn, mIn, nullptr, xOut, yOut, mOut, nullptr, numKeypoints, numSamples);
}
