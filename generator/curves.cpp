// Figures computed from formulas, angles in double.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "ZRVDataGenerator.h"
#include "generator/euclid.h"
#include "generator/geometry.h"

namespace {

using zrv::kPi;
using zrv::kTwoPi;

constexpr unsigned int kTriangleWave = 1;
constexpr unsigned char kOn = 255;

// The two waves that curves can be drawn with.
struct SineWave {
  static double S(double angle) { return std::sin(angle); }
  static double C(double angle) { return std::cos(angle); }
};
struct TriangleWave {
  static double S(double angle) { return ZRVDataGenerator::saw(static_cast<float>(angle)); }
  static double C(double angle) { return S(angle + kPi / 2); }
};

struct ExactPoint {
  double x, y;
};

template <typename PointAt>
void WritePoints(float* x, float* y, unsigned int n, PointAt pointAt) {
  for (unsigned int i = 0; i < n; ++i) {  // of 32 bits: these become floating point in one instruction
    const ExactPoint p = pointAt(static_cast<double>(i));
    x[i] = static_cast<float>(p.x);
    y[i] = static_cast<float>(p.y);
  }
}

// --- Spirograph

enum CurveType : unsigned int {
  kRose,
  kEpicycloid,
  kEpitrochoid,
  kHypocycloid,
  kHypotrochoid
};

// Two circles: the first turns once while the second turns `ratio` times.
struct Spirograph {
  unsigned int type;
  double step;  // radians a sample
  double ratio;
  double radius;  // of the first circle
  double pen;     // of the second
};

Spirograph PlanSpirograph(unsigned int type, int64_t a, int64_t b, int64_t penDistance, unsigned int numSamples) {
  const bool outside = type == kEpicycloid || type == kEpitrochoid;
  const int64_t sum = type == kRose ? a : outside ? a + b : a - b;
  const double offset = type == kRose ? 0.0 : outside ? 1.0 : -1.0;
  // The signs of Euclid's rule are kept: they say which way around the figure is drawn.
  const int64_t divisor = type == kRose ? zrv::Euclid(a, b) : zrv::Euclid(b, sum);
  const bool onTheRing = type == kEpicycloid || type == kHypocycloid;
  Spirograph plan{};
  plan.type = type;
  plan.step = kTwoPi * static_cast<double>(b / divisor) / numSamples;
  plan.ratio = static_cast<double>(a) / static_cast<double>(b) + offset;
  plan.radius = static_cast<double>(sum);
  plan.pen = static_cast<double>(onTheRing ? b : penDistance);
  return plan;
}

template <typename Wave>
void WriteSpirograph(float* x, float* y, unsigned int n, const Spirograph& plan) {
  const double penX = plan.type >= kHypocycloid ? plan.pen : -plan.pen;
  if (plan.type == kRose) {
    WritePoints(x, y, n, [=](double i) -> ExactPoint {
      const double angle = i * plan.step, c2 = Wave::C(plan.ratio * angle);
      return {c2 * Wave::C(angle), c2 * Wave::S(angle)};
    });
  } else {
    WritePoints(x, y, n, [=](double i) -> ExactPoint {
      const double angle = i * plan.step, second = plan.ratio * angle;
      return {plan.radius * Wave::C(angle) + penX * Wave::C(second),
              plan.radius * Wave::S(angle) - plan.pen * Wave::S(second)};
    });
  }
}

// Brings the farthest point to the given radius.
void ScaleToRadius(float* x, float* y, unsigned int n, float amplitude) {
  float farthest = 0.0f;
  for (size_t i = 0; i < n; ++i) farthest = std::max(farthest, x[i] * x[i] + y[i] * y[i]);
  const float factor = farthest > 0.0f ? amplitude / std::sqrt(farthest) : amplitude;
  for (size_t i = 0; i < n; ++i) {
    x[i] *= factor;
    y[i] *= factor;
  }
}

// --- Lissajous

struct Lissajous {
  double amplitude, freqX, freqY, phase, modDepth, modFreq, modPhase;
};

template <typename Wave>
void WriteLissajous(float* x, float* y, unsigned int n, unsigned int modulation, const Lissajous& f) {
  const auto angle = [n](double i) { return i * kTwoPi / n; };
  if (modulation == 0) {
    WritePoints(x, y, n, [=](double i) -> ExactPoint {
      const double a = angle(i);
      return {Wave::S(f.freqX * a) * f.amplitude, Wave::S(f.freqY * a + f.phase) * f.amplitude};
    });
  } else if (modulation == 1) {
    WritePoints(x, y, n, [=](double i) -> ExactPoint {
      const double a = angle(i), m = f.modFreq * a;
      return {(1.0 - Wave::S(m) * f.modDepth / 2.0) * Wave::S(f.freqX * a) * f.amplitude,
              (1.0 - Wave::S(m + f.modPhase) * f.modDepth / 2.0) * Wave::S(f.freqY * a + f.phase) * f.amplitude};
    });
  } else if (modulation == 2) {
    WritePoints(x, y, n, [=](double i) -> ExactPoint {
      const double a = angle(i), m = f.modFreq * a;
      return {Wave::S(Wave::S(m) * f.modDepth + f.freqX * a) * f.amplitude,
              Wave::S(Wave::S(m + f.modPhase) * f.modDepth + f.freqY * a + f.phase) * f.amplitude};
    });
  }
}

// --- Clock and bounce

struct Hand {
  double angle, length, width;  // 0 points right, counter-clockwise
};

// Mirrors a coordinate that left -1..1, and turns its velocity.
void Reflect(float& position, float& velocity, float restitution) {
  if (position > 1.0f) {
    position = 2.0f - position;
  } else if (position < -1.0f) {
    position = -2.0f - position;
  } else {
    return;
  }
  velocity = -velocity * restitution;
}

}  // namespace

unsigned int ZRVDataGenerator::SpiralCurve(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                           float amplitudeX, float amplitudeY, unsigned int turnCount, float phase) {
  if (!x || !y || !m || numSamples == 0 || turnCount == 0) return 0;
  const double step = turnCount * kTwoPi / numSamples, full = numSamples * step;
  WritePoints(x, y, numSamples,
              [=, start = static_cast<double>(phase), width = static_cast<double>(amplitudeX),
               height = static_cast<double>(amplitudeY)](double i) -> ExactPoint {
                const double angle = i * step + start;
                return {std::cos(angle) * angle * width / full, std::sin(angle) * angle * height / full};
              });
  std::fill_n(m, numSamples, kOn);
  return numSamples;
}

unsigned int ZRVDataGenerator::PolygonCurve(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                            float amplitude, unsigned int numSides, float /*reserved*/) {
  if (!x || !y || !m || numSamples == 0 || numSides == 0) return 0;
  const double step = kTwoPi / numSides, radius = amplitude;
  const ExactPoint first = {radius, 0.0};
  const unsigned int perSide = numSamples / numSides;
  ExactPoint from = first;
  size_t written = 0;
  for (unsigned int k = 0; k < numSides && perSide > 0; ++k) {
    // The last corner is the first one itself, so that the figure closes exactly.
    const ExactPoint to =
        k + 1 == numSides ? first : ExactPoint{std::cos((k + 1) * step) * radius, std::sin((k + 1) * step) * radius};
    WritePoints(x + written, y + written, perSide, [=](double j) -> ExactPoint {
      const double t = j / perSide;
      return {(1.0 - t) * from.x + t * to.x, (1.0 - t) * from.y + t * to.y};
    });
    written += perSide;
    from = to;
  }
  x[written] = static_cast<float>(first.x);
  y[written] = static_cast<float>(first.y);
  std::fill_n(m, written + 1, kOn);
  return static_cast<unsigned int>(written + 1);
}

unsigned int ZRVDataGenerator::SpirographCurve(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                               unsigned int curveType, unsigned int waveType, float amplitude,
                                               int ringA, int ringB, int penDistance) {
  if (!x || !y || !m || numSamples == 0) return 0;
  if (curveType > kHypotrochoid) {
    std::fill_n(x, numSamples, 0.0f);
    std::fill_n(y, numSamples, 0.0f);
  } else {
    if (ringB == 0) return 0;
    const Spirograph plan = PlanSpirograph(curveType, ringA, ringB, penDistance, numSamples);
    (waveType == kTriangleWave ? WriteSpirograph<TriangleWave> : WriteSpirograph<SineWave>)(x, y, numSamples, plan);
    ScaleToRadius(x, y, numSamples, amplitude);
  }
  std::fill_n(m, numSamples, kOn);
  return numSamples;
}

unsigned int ZRVDataGenerator::LissajousCurve(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                              unsigned int waveType, float amplitude, unsigned int freqX,
                                              unsigned int freqY, float phase, unsigned int modulation, float modDepth,
                                              unsigned int modFreq, float modPhase) {
  if (!x || !y || !m || numSamples == 0) return 0;
  const Lissajous figure{
      amplitude, static_cast<double>(freqX), static_cast<double>(freqY), phase, modDepth, static_cast<double>(modFreq),
      modPhase};
  (waveType == kTriangleWave ? WriteLissajous<TriangleWave> : WriteLissajous<SineWave>)(x, y, numSamples, modulation,
                                                                                        figure);
  std::fill_n(m, numSamples, kOn);
  return numSamples;
}

unsigned int ZRVDataGenerator::AnalogClockCurve(float* x, float* y, unsigned char* m, unsigned int hours,
                                                unsigned int minutes, unsigned int seconds, float amplitude) {
  if (!x || !y || !m) return 0;
  const Hand hands[] = {
      {kPi / 2 - kTwoPi * seconds / 60.0, 1.0, 0.03},
      {kPi / 2 - kTwoPi * (minutes + seconds / 60.0) / 60.0, 0.8, 0.07},
      {kPi / 2 - kTwoPi * (hours + minutes / 60.0 + seconds / 3600.0) / 12.0, 0.5, 0.1},
  };
  size_t at = 0;
  const auto add = [&](double angle, double radius) {
    x[at] = static_cast<float>(std::cos(angle) * radius * static_cast<double>(amplitude));
    y[at++] = static_cast<float>(std::sin(angle) * radius * static_cast<double>(amplitude));
  };
  for (const Hand& hand : hands) {
    add(0.0, 0.0);
    add(hand.angle + kPi / 2, hand.width);
    add(hand.angle, hand.length);
    add(hand.angle - kPi / 2, hand.width);
  }
  add(0.0, 0.0);
  std::fill_n(m, at, kOn);
  return static_cast<unsigned int>(at);
}

unsigned int ZRVDataGenerator::DynamicsCurve(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                             float startX, float startY, float velocityX, float velocityY, float accelX,
                                             float accelY, float restitution) {
  if (!x || !y || !m) return 0;
  float atX = startX, atY = startY;
  for (size_t i = 0; i < numSamples; ++i) {
    atX += velocityX;
    atY += velocityY;
    Reflect(atX, velocityX, restitution);
    Reflect(atY, velocityY, restitution);
    x[i] = atX;
    y[i] = atY;
    velocityX += accelX;
    velocityY += accelY;
  }
  std::fill_n(m, numSamples, kOn);
  return numSamples;
}
