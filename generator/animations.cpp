// Animations: frames written behind a base frame in the same arrays.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "ZRVDataGenerator.h"
#include "generator/geometry.h"

namespace {

using zrv::kTwoPi;

constexpr float kUpward = 1.5707964f;

bool InsideField(float value) { return (value > -1.0f) & (value < 1.0f); }

// The frames of one animation, the base frame first. The index array may be null.
class Frames {
 public:
  // Blanks the end of the base frame, so that the jump to the next frame's start is dark.
  Frames(float* x, float* y, unsigned char* m, unsigned int* idx, unsigned int numSamples)
      : x_(x), y_(y), m_(m), idx_(idx), n_(numSamples) {
    ZRVDataGenerator::BoundingBox(x, y, numSamples, minX, maxX, minY, maxY);
    centreX = (minX + maxX) / 2.0f;
    centreY = (minY + maxY) / 2.0f;
    Blank(n_ - 1);
  }

  float* X(size_t frame) const { return x_ + frame * n_; }
  float* Y(size_t frame) const { return y_ + frame * n_; }

  void CopyMarks(size_t frame) const {
    std::copy_n(m_, n_, m_ + frame * n_);
    if (idx_) std::copy_n(idx_, n_, idx_ + frame * n_);
  }
  void BlankOutside(size_t frame) const {
    const float* x = X(frame);
    const float* y = Y(frame);
    KeepWhere(frame, [=](size_t i) {
      const bool insideX = InsideField(x[i]), insideY = InsideField(y[i]);
      return insideX & insideY;
    });
  }
  // As above, but whatever y is.
  void BlankBeside(size_t frame) const {
    const float* x = X(frame);
    KeepWhere(frame, [=](size_t i) { return InsideField(x[i]); });
  }
  void BlankAll(size_t frame) const {
    std::fill_n(m_ + frame * n_, n_, static_cast<unsigned char>(0));
    if (idx_) std::fill_n(idx_ + frame * n_, n_, 0u);
  }

  float minX, maxX, minY, maxY, centreX, centreY;

 private:
  // Without branches: where a moving frame crosses an edge, a branch would be wrong every few samples.
  template <typename Keep>
  void KeepWhere(size_t frame, Keep keep) const {
    unsigned char* m = m_ + frame * n_;
    unsigned int* idx = idx_ ? idx_ + frame * n_ : nullptr;
    const size_t n = n_;
    for (size_t i = 0; i < n; ++i) m[i] = keep(i) ? m[i] : static_cast<unsigned char>(0);
    for (size_t i = 0; idx && i < n; ++i) idx[i] = keep(i) ? idx[i] : 0;
  }
  void Blank(size_t i) const {
    m_[i] = 0;
    if (idx_) idx_[i] = 0;
  }

  float* x_;
  float* y_;
  unsigned char* m_;
  unsigned int* idx_;
  size_t n_;
};

// Samples of all frames together; 0 when there are none, no arrays, or more than can be counted.
unsigned int TotalSamples(const float* x, const float* y, const unsigned char* m, unsigned int numSamples,
                          unsigned int numFrames) {
  const uint64_t total = static_cast<uint64_t>(numSamples) * numFrames;
  return x && y && m && total <= UINT32_MAX ? static_cast<unsigned int>(total) : 0;
}

void AddTo(float* to, const float* from, size_t n, float shift) {
  for (size_t i = 0; i < n; ++i) to[i] = from[i] + shift;
}

// One coordinate on the way back, from one value to the other. A single sample stays where it starts.
void WriteReturn(float* values, unsigned int n, float from, float to) {
  if (n == 1) {
    values[0] = from;
    return;
  }
  for (unsigned int i = 0; i < n; ++i) {
    values[i] = static_cast<float>(n - 1 - i) * (from - to) / static_cast<float>(n - 1) + to;
  }
}

// One coordinate of a moving centre that bounces at -1 and 1.
struct Bouncer {
  float centre, velocity;

  // Moves on by one frame; returns by how much.
  float Advance() {
    float next = centre + velocity, moved = velocity;
    if (next > 1.0f || next < -1.0f) {
      velocity = -velocity;
      next = (next > 1.0f ? 2.0f : -2.0f) - next;
      moved = next - centre;
    }
    centre = next;
    return moved;
  }
};

}  // namespace

unsigned int ZRVDataGenerator::AnimationRotate(float* x, float* y, unsigned char* m, unsigned int* idx,
                                               unsigned int numSamples, unsigned int numFrames) {
  const unsigned int total = TotalSamples(x, y, m, numSamples, numFrames);
  if (total == 0) return 0;
  const Frames frames(x, y, m, idx, numSamples);
  const float centreX = frames.centreX, centreY = frames.centreY;
  const double step = kTwoPi / numFrames;
  for (unsigned int f = 1; f < numFrames; ++f) {
    const auto s = static_cast<float>(std::sin(f * step)), c = static_cast<float>(std::cos(f * step));
    float* frameX = frames.X(f);
    float* frameY = frames.Y(f);
    for (size_t i = 0; i < numSamples; ++i) {
      const float dx = x[i] - centreX, dy = y[i] - centreY;
      frameX[i] = dx * c + dy * s + centreX;
      frameY[i] = dy * c - dx * s + centreY;
    }
    frames.CopyMarks(f);
  }
  return total;
}

unsigned int ZRVDataGenerator::AnimationScroll(float* x, float* y, unsigned char* m, unsigned int* idx,
                                               unsigned int numSamples, unsigned int numFrames) {
  const unsigned int total = TotalSamples(x, y, m, numSamples, numFrames);
  if (total == 0) return 0;
  const Frames frames(x, y, m, idx, numSamples);
  AddTo(x, x, numSamples, -(frames.maxX + 1.0f));
  const float step = (frames.maxX - frames.minX + 2.0f) / static_cast<float>(numFrames);
  for (unsigned int f = 1; f + 1 < numFrames; ++f) {
    AddTo(frames.X(f), x, numSamples, static_cast<float>(f) * step);
    std::copy_n(y, numSamples, frames.Y(f));
    frames.CopyMarks(f);
    frames.BlankBeside(f);
  }
  if (numFrames > 1) {
    // From where the last frame ended, but on the height where it began, back to the start. With two frames
    // that last frame is the base frame.
    const unsigned int back = numFrames - 1;
    const float lastX = frames.X(back)[-1];
    WriteReturn(frames.X(back), numSamples, lastX, x[0]);
    WriteReturn(frames.Y(back), numSamples, y[0], y[0]);
    frames.BlankAll(back);
  }
  frames.BlankBeside(0);
  return total;
}

unsigned int ZRVDataGenerator::AnimationBounce(float* x, float* y, unsigned char* m, unsigned int* idx,
                                               unsigned int numSamples, unsigned int numFrames, float angle) {
  const unsigned int total = TotalSamples(x, y, m, numSamples, numFrames);
  if (total == 0) return 0;
  const Frames frames(x, y, m, idx, numSamples);
  const double direction = angle;
  Bouncer across{frames.centreX, static_cast<float>(std::cos(direction) * 4.0 / numFrames)};
  Bouncer up{frames.centreY, static_cast<float>(std::sin(direction) * 4.0 / numFrames)};
  for (unsigned int f = 1; f < numFrames; ++f) {
    AddTo(frames.X(f), frames.X(f - 1), numSamples, across.Advance());
    AddTo(frames.Y(f), frames.Y(f - 1), numSamples, up.Advance());
    frames.CopyMarks(f);
    frames.BlankOutside(f);
  }
  return total;
}

unsigned int ZRVDataGenerator::GenerateAnimations(float* x, float* y, unsigned char* m, unsigned int* idx,
                                                  unsigned int animation, unsigned int numSamples,
                                                  unsigned int numFrames) {
  switch (animation) {
    case 1: return AnimationRotate(x, y, m, idx, numSamples, numFrames);
    case 2: return AnimationScroll(x, y, m, idx, numSamples, numFrames);
    case 3: return AnimationBounce(x, y, m, idx, numSamples, numFrames, kUpward);
    default: return numSamples;
  }
}

unsigned int ZRVDataGenerator::GenerateAnimations(float* x, float* y, unsigned char* m, unsigned int animation,
                                                  unsigned int numSamples, unsigned int numFrames) {
  return GenerateAnimations(x, y, m, nullptr, animation, numSamples, numFrames);
}

unsigned int ZRVDataGenerator::AnimationRotate(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                               unsigned int numFrames) {
  return AnimationRotate(x, y, m, nullptr, numSamples, numFrames);
}

unsigned int ZRVDataGenerator::AnimationScroll(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                               unsigned int numFrames) {
  return AnimationScroll(x, y, m, nullptr, numSamples, numFrames);
}

unsigned int ZRVDataGenerator::AnimationBounce(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                               unsigned int numFrames, float angle) {
  return AnimationBounce(x, y, m, nullptr, numSamples, numFrames, angle);
}
