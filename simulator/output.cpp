#include "simulator/output.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <utility>

namespace zrv::sim {

namespace {

constexpr uint8_t kFlipX = 1, kFlipY = 2, kSwap = 4;

uint16_t Count(double value) {
  return value >= 0 ? static_cast<uint16_t>(std::lround(std::min(value, 65535.0))) : uint16_t{0};
}

float OffsetOf(uint16_t word) { return (static_cast<float>(word) - 32768.0f) / 32767.0f; }
float CosineOf(uint16_t word) { return (static_cast<float>(word) - 16384.0f) / 16383.0f; }

// Uniform in -1..1 and fixed by seed and time. Source of the mixer: Steele, Lea & Flood, Fast Splittable
// Pseudorandom Number Generators, OOPSLA 2014 (SplitMix64).
double NoiseAt(uint64_t seed, double time) {
  uint64_t z = seed * 0x9E3779B97F4A7C15u + std::bit_cast<uint64_t>(time);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
  z ^= z >> 31;
  return static_cast<double>(z >> 11) * 0x1p-52 - 1.0;
}

double ShapeAt(const AnalogSignal& signal, double time, const MirrorPosition& position) {
  switch (signal.shape) {
    case AnalogSignal::Shape::kSine: return std::sin(2 * std::numbers::pi * signal.frequency * time);
    case AnalogSignal::Shape::kNoise: return NoiseAt(signal.seed, time);
    case AnalogSignal::Shape::kMirrorX: return position.x;
    case AnalogSignal::Shape::kMirrorY: return position.y;
    default: return 0;
  }
}

}  // namespace

MirrorPosition Placed(const Settings& settings, const Sample& sample) {
  float x = sample.x, y = sample.y;
  if (settings.axes & kSwap) std::swap(x, y);
  if (settings.axes & kFlipX) x = -x;
  if (settings.axes & kFlipY) y = -y;
  const float scale = static_cast<float>(settings.dataScale) / 32767.0f;
  const float c = scale * CosineOf(settings.rotationCos), s = scale * CosineOf(settings.rotationSin);
  return {std::clamp(c * x - s * y + OffsetOf(settings.offsetX), -1.0f, 1.0f),
          std::clamp(s * x + c * y + OffsetOf(settings.offsetY), -1.0f, 1.0f)};
}

double SignalAt(const AnalogSignal& signal, double time, const MirrorPosition& position) {
  return signal.offset + signal.amplitude * ShapeAt(signal, time, position);
}

uint16_t VoltsToCount(double volts) { return Count(volts * 3277 + 32768); }
uint16_t DetectorToCount(double value) { return Count(value * 32767); }
uint16_t StopCount(float position) { return Count((position + 1.0) * 32768); }
uint16_t TrackCount(float position) { return Count(position * 32767.0 + 32768); }

}  // namespace zrv::sim
