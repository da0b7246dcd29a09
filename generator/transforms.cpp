// Transforms of points in place: normalisation, affine, projective and the two radial distortions.
//
// Sines, cosines and tangents are taken in double and stored as float: the same on every system's library.
#include <algorithm>
#include <cmath>
#include <cstddef>

#include "ZRVDataGenerator.h"
#include "generator/geometry.h"

namespace {

constexpr float kSqrt2 = 1.41421354f;

// NaN becomes -1: every comparison with it fails.
float ClipToField(float value) { return std::min(std::max(-1.0f, value), 1.0f); }

// Smallest and largest of an array that is not empty. Sixteen of each are kept side by
// side, which the compiler can vectorise without reordering comparisons.
void Extent(const float* values, size_t count, float& lowest, float& highest) {
  constexpr size_t kLanes = 16;
  float low[kLanes], high[kLanes];
  std::fill_n(low, kLanes, values[0]);
  std::fill_n(high, kLanes, values[0]);
  size_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    for (size_t lane = 0; lane < kLanes; ++lane) {
      low[lane] = std::min(low[lane], values[i + lane]);
      high[lane] = std::max(high[lane], values[i + lane]);
    }
  }
  lowest = *std::min_element(low, low + kLanes);
  highest = *std::max_element(high, high + kLanes);
  for (; i < count; ++i) {
    lowest = std::min(lowest, values[i]);
    highest = std::max(highest, values[i]);
  }
}

}  // namespace

void ZRVDataGenerator::BoundingBox(const float* x, const float* y, unsigned int count, float& minX, float& maxX,
                                   float& minY, float& maxY) {
  minX = maxX = minY = maxY = 0.0f;
  if (count == 0 || !x || !y) return;
  Extent(x, count, minX, maxX);
  Extent(y, count, minY, maxY);
}

unsigned int ZRVDataGenerator::NormalizeData(float* x, float* y, unsigned int count, float scale, float angle,
                                             float minX, float maxX, float minY, float maxY) {
  if (!x || !y) return 0;
  const float span = std::max(maxX, maxY) - std::min(minX, minY);
  if (span == 0.0f) {  // a single spot: the quotients below would not be numbers
    std::fill_n(x, count, 0.0f);
    std::fill_n(y, count, 0.0f);
    return count;
  }
  const float centreX = (minX + maxX) / 2.0f, centreY = (minY + maxY) / 2.0f;
  const zrv::Turn turn(angle);  // clockwise
  for (size_t i = 0; i < count; ++i) {
    const float u = 2.0f * (x[i] - centreX) * scale / span;
    const float v = 2.0f * (y[i] - centreY) * scale / span;
    x[i] = u * turn.cosine + v * turn.sine;
    y[i] = v * turn.cosine - u * turn.sine;
  }
  return count;
}

unsigned int ZRVDataGenerator::AffineTransformData(float* x, float* y, unsigned int count, float scale, float angle,
                                                   float offsetX, float offsetY) {
  if (!x || !y) return 0;
  if (std::abs(scale - 1.0f) > 0.01f || std::abs(angle) > 0.0001f) {
    float minX, maxX, minY, maxY;
    BoundingBox(x, y, count, minX, maxX, minY, maxY);
    const float centreX = (minX + maxX) / 2.0f, centreY = (minY + maxY) / 2.0f;
    const zrv::Turn turn(angle);  // clockwise
    for (size_t i = 0; i < count; ++i) {
      const float u = (x[i] - centreX) * scale, v = (y[i] - centreY) * scale;
      x[i] = ClipToField(u * turn.cosine + v * turn.sine + centreX + offsetX);
      y[i] = ClipToField(v * turn.cosine - u * turn.sine + centreY + offsetY);
    }
  } else if (std::abs(offsetX) > 0.01f || std::abs(offsetY) > 0.01f) {
    for (size_t i = 0; i < count; ++i) {
      x[i] = ClipToField(x[i] + offsetX);
      y[i] = ClipToField(y[i] + offsetY);
    }
  }
  return count;
}

namespace {

using Matrix = std::array<float, 9>;  // row-major 3x3

// Maps the unit square to a quadrilateral. Source: Heckbert, Fundamentals of Texture Mapping and Image
// Warping, 2.2.3. Opposite sides parallel make the map affine.
Matrix SquareToQuadrilateral(const float* x, const float* y) {
  const float sumX = x[0] - x[1] + x[2] - x[3], sumY = y[0] - y[1] + y[2] - y[3];
  if (!(std::abs(sumX) >= 1e-9f || std::abs(sumY) >= 1e-9f)) {
    return {x[1] - x[0], x[2] - x[1], x[0], y[1] - y[0], y[2] - y[1], y[0], 0.0f, 0.0f, 1.0f};
  }
  const float dx1 = x[1] - x[2], dx2 = x[3] - x[2], dy1 = y[1] - y[2], dy2 = y[3] - y[2];
  const float den = dx1 * dy2 - dx2 * dy1;
  const float g = (sumX * dy2 - dx2 * sumY) / den;
  const float h = (dx1 * sumY - sumX * dy1) / den;
  return {g * x[1] + x[1] - x[0],
          h * x[3] + x[3] - x[0],
          x[0],
          g * y[1] + y[1] - y[0],
          h * y[3] + y[3] - y[0],
          y[0],
          g,
          h,
          1.0f};
}

// Adjugate over determinant, but for entries 2 and 5: what belongs to 5 stands in 2, and 5 stays as it was.
// Kept on purpose, and pinned by "inverse keeps f" in transforms_test.cpp.
Matrix Inverted(const Matrix& forward) {
  const auto [a, b, c, d, e, f, g, h, one] = forward;
  const float det = (d * h - e * g) * c + (e - f * h) * a - (d - f * g) * b;
  return {(e - f * h) / det,     (c * h - b) / det,     (c * d - a * f) / det, (f * g - d) / det, (a - c * g) / det, f,
          (d * h - e * g) / det, (b * g - a * h) / det, (a * e - b * d) / det};
}

// The root c of k c^3 + c = 1 by Newton's method: undoes a cubic distortion of strength k.
float CubicRoot(float k) {
  float c = 0.5f, residual = 0.0f, slope = 1.0f;
  do {
    c -= residual / slope;
    residual = (k * (c * c) + 1.0f) * c - 1.0f;
    slope = 3.0f * k * (c * c) + 1.0f;
  } while (std::abs(residual) > 1e-6f);
  return c;
}

}  // namespace

void ZRVDataGenerator::InitProjectiveTransformMatrix(const float* cornersX, const float* cornersY, bool inverse) {
  projectiveInverse = inverse;
  if (!cornersX || !cornersY) {
    const float scale = inverse ? 2.0f : 0.5f, shift = inverse ? -1.0f : 0.5f;
    projectiveMatrix = {scale, 0.0f, shift, 0.0f, scale, shift, 0.0f, 0.0f, 1.0f};
    return;
  }
  projectiveMatrix = SquareToQuadrilateral(cornersX, cornersY);
  if (inverse) projectiveMatrix = Inverted(projectiveMatrix);
}

unsigned int ZRVDataGenerator::ProjectiveTransformData(float* x, float* y, unsigned int count) const {
  if (!x || !y) return 0;
  const auto [m0, m1, m2, m3, m4, m5, m6, m7, m8] = projectiveMatrix;
  if (projectiveInverse) {
    for (size_t i = 0; i < count; ++i) {
      const float w = m6 * x[i] + m7 * y[i] + m8;
      const float u = (m0 * x[i] + m1 * y[i] + m2) / w, v = (m3 * x[i] + m4 * y[i] + m5) / w;
      x[i] = 2.0f * u - 1.0f;
      y[i] = 2.0f * v - 1.0f;
    }
  } else {
    for (size_t i = 0; i < count; ++i) {
      const float u = (x[i] + 1.0f) / 2.0f, v = (y[i] + 1.0f) / 2.0f;
      const float w = m6 * u + m7 * v + m8;
      x[i] = (m0 * u + m1 * v + m2) / w;
      y[i] = (m3 * u + m4 * v + m5) / w;
    }
  }
  return count;
}

void ZRVDataGenerator::InitRadialTransformMult(bool enable) {
  radialEnable = enable;
  for (size_t i = 0; i < radialMult.size(); ++i) radialMult[i] = CubicRoot(static_cast<float>(i) / 100.0f);
}

unsigned int ZRVDataGenerator::RadialTransformData(float* x, float* y, unsigned int count, float strength) const {
  if (!x || !y) return 0;
  for (size_t n = 0; n < count; ++n) {
    const float q = (x[n] * x[n] + y[n] * y[n]) / kSqrt2;
    const float k = strength * q;
    float factor = (k + 1.0f) * std::sqrt(q);
    if (radialEnable) {
      // Beyond the table the nearest entry holds; NaN reads entry 0.
      const float t = std::min(std::max(0.0f, 100.0f * k), 100.0f);
      const int i = static_cast<int>(t), j = std::min(i + 1, 100);
      const float r = t - static_cast<float>(i);
      factor = radialMult[static_cast<size_t>(j)] * r + (1.0f - r) * radialMult[static_cast<size_t>(i)];
    }
    x[n] *= factor;
    y[n] *= factor;
  }
  return count;
}

unsigned int ZRVDataGenerator::TangentialTransformData(float* x, float* y, unsigned int count, float strength) {
  if (!x || !y) return 0;
  const float s = std::abs(strength) < 1e-8f ? strength + 1e-8f : strength;
  const float inverse = 1.0f / s;
  const float edge = s / static_cast<float>(std::tan(static_cast<double>(s)));
  // In blocks, so that all but the tangents is vectorised.
  constexpr size_t kBlock = 256;
  float u[kBlock], tangent[kBlock];
  for (size_t first = 0; first < count; first += kBlock) {
    const size_t n = std::min(kBlock, count - first);
    float* blockX = x + first;
    float* blockY = y + first;
    for (size_t i = 0; i < n; ++i) u[i] = std::sqrt(blockX[i] * blockX[i] + blockY[i] * blockY[i]) / inverse;
    for (size_t i = 0; i < n; ++i) tangent[i] = static_cast<float>(std::tan(static_cast<double>(u[i])));
    for (size_t i = 0; i < n; ++i) {
      // The centre, and all of a negative strength, are scaled by u itself.
      const float factor = u[i] > 1e-8f ? u[i] / tangent[i] / edge : u[i];
      blockX[i] *= factor;
      blockY[i] *= factor;
    }
  }
  return count;
}

unsigned int ZRVDataGenerator::TransformData(float* x, float* y, unsigned int count, float scale, float angle,
                                             float offsetX, float offsetY, bool projective, float tangential,
                                             float radial) const {
  if (!x || !y) return 0;
  AffineTransformData(x, y, count, scale, angle, offsetX, offsetY);
  if (projective) ProjectiveTransformData(x, y, count);
  if (std::abs(radial) > 0.001f) RadialTransformData(x, y, count, radial);
  if (std::abs(tangential) > 0.001f) TangentialTransformData(x, y, count, tangential);
  return count;
}
