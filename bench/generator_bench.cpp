// The generator against the least work that its outputs need: interpolation against filling the same arrays,
// curves and transforms against their library functions alone.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "ZRVDataGenerator.h"
#include "bench/ratios.h"

namespace {

using Generator = ZRVDataGenerator;
using benchmark::State;
using zrv::bench::Aim;

constexpr unsigned int kPoints = 10000;  // fits the second-level cache, so that arithmetic is what is measured

struct Arrays {
  std::vector<float> x, y;
  std::vector<unsigned char> m;

  explicit Arrays(size_t n) : x(n), y(n), m(n) {}
};

// Random keypoints, one in four blank.
Arrays Keypoints(unsigned int n) {
  std::mt19937 random(1);
  std::uniform_real_distribution<float> place(-1, 1);
  Arrays path(n + 4);
  for (size_t i = 0; i < n; ++i) {
    path.x[i] = place(random);
    path.y[i] = place(random);
    path.m[i] = random() % 4 ? 255 : 0;
  }
  return path;
}

Arrays Cloud() { return Keypoints(kPoints); }

unsigned int Samples(const State& state) { return static_cast<unsigned int>(state.range(0)); }
unsigned int Count(const State& state) { return static_cast<unsigned int>(state.range(1)); }  // of keypoints

void PerItem(State& state, size_t items) {
  state.SetItemsProcessed(static_cast<int64_t>(items) * static_cast<int64_t>(state.iterations()));
}

// --- Interpolation

// A million samples from few keypoints to many, and the same ten times longer: the last has segments of 10 samples
// in the one case, of 100 in the other.
void SamplesAndKeypoints(benchmark::internal::Benchmark* b) {
  for (int keypoints : {10, 1000, 100000}) b->Args({1000000, keypoints});
  b->Args({10000000, 100000});
}

void FillOnly(State& state) {
  Arrays out(Samples(state));
  for (auto _ : state) {
    std::fill(out.x.begin(), out.x.end(), 0.5f);
    std::fill(out.y.begin(), out.y.end(), 0.5f);
    std::fill(out.m.begin(), out.m.end(), static_cast<unsigned char>(255));
    benchmark::ClobberMemory();
  }
  PerItem(state, Samples(state));
}
BENCHMARK(FillOnly)->Arg(1000000)->Arg(10000000);

void Linear(State& state) {
  Generator g;
  const Arrays in = Keypoints(Count(state));
  Arrays out(Samples(state) + Count(state));
  for (auto _ : state) {
    benchmark::DoNotOptimize(g.InterpolateDataLinear(in.x.data(), in.y.data(), in.m.data(), out.x.data(), out.y.data(),
                                                     out.m.data(), Count(state), Samples(state), 2));
  }
  PerItem(state, Samples(state));
}
BENCHMARK(Linear)->Apply(SamplesAndKeypoints);

void Trapezoidal(State& state) {
  Generator g;
  const Arrays in = Keypoints(Count(state));
  Arrays out(Samples(state) + Count(state));
  for (auto _ : state) {
    benchmark::DoNotOptimize(g.InterpolateDataTrapezoidal(in.x.data(), in.y.data(), in.m.data(), out.x.data(),
                                                          out.y.data(), out.m.data(), Count(state), Samples(state), 2,
                                                          0.2f, 0.3f));
  }
  PerItem(state, Samples(state));
}
BENCHMARK(Trapezoidal)->Apply(SamplesAndKeypoints);

void Optimized(State& state) {
  Generator g;
  const Arrays in = Keypoints(Count(state));
  Arrays out(Samples(state) + Count(state));
  for (auto _ : state) {
    benchmark::DoNotOptimize(g.InterpolateDataOptimized(in.x.data(), in.y.data(), in.m.data(), out.x.data(),
                                                        out.y.data(), out.m.data(), Count(state), Samples(state)));
  }
  PerItem(state, Samples(state));
}
BENCHMARK(Optimized)->Apply(SamplesAndKeypoints);

const Aim kInterpolationAims[] = {
    {"linear interpolation, 10 keypoints", "Linear/1000000/10", "FillOnly/1000000", 3},
    {"linear interpolation, 1000 keypoints", "Linear/1000000/1000", "FillOnly/1000000", 3},
    {"linear interpolation, 100000 keypoints", "Linear/1000000/100000", "FillOnly/1000000", 3},
    {"linear interpolation, 100000 keypoints, 10 million samples", "Linear/10000000/100000", "FillOnly/10000000", 3},
    {"trapezoidal interpolation, 10 keypoints", "Trapezoidal/1000000/10", "FillOnly/1000000", 3},
    {"trapezoidal interpolation, 1000 keypoints", "Trapezoidal/1000000/1000", "FillOnly/1000000", 3},
    {"trapezoidal interpolation, 100000 keypoints", "Trapezoidal/1000000/100000", "FillOnly/1000000", 3},
    {"trapezoidal interpolation, 100000 keypoints, 10 million samples", "Trapezoidal/10000000/100000",
     "FillOnly/10000000", 3},
    {"optimized interpolation, 10 keypoints", "Optimized/1000000/10", "FillOnly/1000000", 4},
    {"optimized interpolation, 1000 keypoints", "Optimized/1000000/1000", "FillOnly/1000000", 4},
    {"optimized interpolation, 100000 keypoints", "Optimized/1000000/100000", "FillOnly/1000000", 4},
    {"optimized interpolation, 100000 keypoints, 10 million samples", "Optimized/10000000/100000", "FillOnly/10000000",
     4},
};

// --- Keypoints. A fresh copy each round, whose cost is in the figure.

void OptimizeKeypoints(State& state, bool gentle) {
  const unsigned int n = kPoints;
  Arrays path = Cloud();
  for (size_t i = 0; gentle && i < n; ++i) {
    path.x[i] = std::cos(static_cast<float>(i) * 0.02f), path.y[i] = std::sin(static_cast<float>(i) * 0.02f);
    path.m[i] = 255;
  }
  Arrays copy = path;
  for (auto _ : state) {
    copy = path;
    benchmark::DoNotOptimize(Generator::OptimizeKeypoints(copy.x.data(), copy.y.data(), copy.m.data(), n, n / 2));
  }
  PerItem(state, n);
}
BENCHMARK_CAPTURE(OptimizeKeypoints, random_corners, false);
BENCHMARK_CAPTURE(OptimizeKeypoints, gentle_bends, true);

// --- Library functions alone, at the angles that the curves and transforms below take

template <typename Value>
void Library(State& state, Value value) {
  const Arrays in = Cloud();
  std::vector<double> out(kPoints);
  for (size_t i = 0; i < kPoints; ++i) out[i] = std::hypot(in.x[i], in.y[i]);
  const std::vector<double> radius = out;
  for (auto _ : state) {
    for (size_t i = 0; i < kPoints; ++i) out[i] = value(static_cast<double>(i) * 0.000628, radius[i]);
    benchmark::ClobberMemory();
  }
  PerItem(state, kPoints);
}

#define ZRV_LIBRARY(name, ...)                                                                             \
  void name(State& state) {                                                                                \
    Library(state, []([[maybe_unused]] double a, [[maybe_unused]] double radius) { return __VA_ARGS__; }); \
  }                                                                                                        \
  BENCHMARK(name)

ZRV_LIBRARY(LibSin, std::sin(a * 10));
ZRV_LIBRARY(LibSinCos, std::sin(a * 10) + std::cos(a * 10));
ZRV_LIBRARY(LibSinCosTwice, std::sin(a * 3) + std::cos(a * 3) + std::sin(a * 4) + std::cos(a * 4));
ZRV_LIBRARY(LibSinTwice, std::sin(a * 3) + std::sin(a * 4));
ZRV_LIBRARY(LibSinFourTimes, std::sin(std::sin(a * 5) + a * 3) + std::sin(std::sin(a * 5 + 1) + a * 4));
ZRV_LIBRARY(LibTan, std::tan(radius * 0.6));
const Aim kLibraryAims[] = {
    {"sine waveform, to its libm calls", "Sine", "LibSin", 1.2},
    {"spiral, to its libm calls", "Spiral", "LibSinCos", 1.2},
    {"rose, to its libm calls", "Rose", "LibSinCosTwice", 1.2},
    {"hypotrochoid, to its libm calls", "Hypotrochoid", "LibSinCosTwice", 1.2},
    {"Lissajous, to its libm calls", "Lissajous", "LibSinTwice", 1.2},
    {"Lissajous, phase modulated, to its libm calls", "LissajousPhase", "LibSinFourTimes", 1.2},
    {"tangential transform, to its tangents", "Tangential", "LibTan", 1.2},
};

// --- Curves and waveforms

template <typename Draw>
void Curve(State& state, Draw draw) {
  Arrays out(kPoints + 1);
  for (auto _ : state) benchmark::DoNotOptimize(draw(out.x.data(), out.y.data(), out.m.data()));
  PerItem(state, kPoints);
}

#define ZRV_CURVE(name, ...)                                                                   \
  void name(State& state) {                                                                    \
    Curve(state, [](float* x, float* y, unsigned char* m) { return Generator::__VA_ARGS__; }); \
  }                                                                                            \
  BENCHMARK(name)

ZRV_CURVE(Sine, SineWaveform(x, y, m, kPoints, 1, 10, 0));
ZRV_CURVE(Sawtooth, SawtoothWaveform(x, y, m, kPoints, 1, 10, 0.5f, 0));
ZRV_CURVE(Square, SquareWaveform(x, y, m, kPoints, 1, 10, 0.5f, 0));
ZRV_CURVE(Spiral, SpiralCurve(x, y, m, kPoints, 1, 1, 10, 0));
ZRV_CURVE(Polygon, PolygonCurve(x, y, m, kPoints, 1, 6, 0));
ZRV_CURVE(Rose, SpirographCurve(x, y, m, kPoints, 0, 0, 1, 7, 3, 2));
ZRV_CURVE(Hypotrochoid, SpirographCurve(x, y, m, kPoints, 4, 0, 1, 7, 3, 2));
ZRV_CURVE(HypotrochoidTriangle, SpirographCurve(x, y, m, kPoints, 4, 1, 1, 7, 3, 2));
ZRV_CURVE(Lissajous, LissajousCurve(x, y, m, kPoints, 0, 1, 3, 4, 0, 0, 0, 0, 0));
ZRV_CURVE(LissajousPhase, LissajousCurve(x, y, m, kPoints, 0, 1, 3, 4, 0, 2, 1, 5, 0));
ZRV_CURVE(LissajousTriangle, LissajousCurve(x, y, m, kPoints, 1, 1, 3, 4, 0, 0, 0, 0, 0));
ZRV_CURVE(Dynamics, DynamicsCurve(x, y, m, kPoints, 0, 0, 0.01f, 0.02f, 0, 0, 1));

// --- Transforms. The points stay in range: each round begins with a copy, whose cost is in the figure.

template <typename Change>
void Transform(State& state, Change change) {
  const Generator g;
  const Arrays points = Cloud();
  Arrays copy = points;
  for (auto _ : state) {
    copy = points;
    benchmark::DoNotOptimize(change(g, copy.x.data(), copy.y.data()));
  }
  PerItem(state, kPoints);
}

#define ZRV_TRANSFORM(name, ...)                                                            \
  void name(State& state) {                                                                 \
    Transform(state, [](const Generator& g, float* x, float* y) { return g.__VA_ARGS__; }); \
  }                                                                                         \
  BENCHMARK(name)

ZRV_TRANSFORM(CopyOnly, TransformData(x, y, 0, 1, 0, 0, 0, false, 0, 0));
ZRV_TRANSFORM(Normalize, NormalizeData(x, y, kPoints, 0.5f, 1, -1, 1, -1, 1));
ZRV_TRANSFORM(Affine, AffineTransformData(x, y, kPoints, 0.5f, 1, 0, 0));
ZRV_TRANSFORM(Projective, ProjectiveTransformData(x, y, kPoints));
ZRV_TRANSFORM(Radial, RadialTransformData(x, y, kPoints, 0.6f));
ZRV_TRANSFORM(Tangential, TangentialTransformData(x, y, kPoints, 0.6f));

// --- Animations

void Animation(State& state, unsigned int kind) {
  constexpr unsigned int kFrames = 30;
  const Arrays base = Cloud();
  Arrays frames(static_cast<size_t>(kPoints) * kFrames);
  for (auto _ : state) {
    std::copy_n(base.x.begin(), kPoints, frames.x.begin());
    benchmark::DoNotOptimize(
        Generator::GenerateAnimations(frames.x.data(), frames.y.data(), frames.m.data(), kind, kPoints, kFrames));
  }
  PerItem(state, static_cast<size_t>(kPoints) * kFrames);
}
BENCHMARK_CAPTURE(Animation, rotate, 1u);
BENCHMARK_CAPTURE(Animation, scroll, 2u);
BENCHMARK_CAPTURE(Animation, bounce, 3u);

}  // namespace
