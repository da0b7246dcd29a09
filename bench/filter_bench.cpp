// The output filter over a million samples of two channels, against two well-known implementations where they
// are installed: liquid-dsp's iirfilt (single precision) and scipy.signal.sosfilt (double), each given the same
// Butterworth low pass in second-order sections.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "ZRVDataGenerator.h"
#include "bench/ratios.h"

#ifdef ZRV_BENCH_LIQUID
#include <complex>

#include <liquid/liquid.h>
#endif

namespace {

constexpr unsigned kSamples = 1000000;
constexpr float kCutoff = 0.1f;  // of the sample rate

struct Scan {
  Scan() : x(kSamples), y(kSamples), xOut(kSamples), yOut(kSamples) {
    for (unsigned i = 0; i < kSamples; ++i) {
      x[i] = std::sin(0.01f * static_cast<float>(i));
      y[i] = static_cast<float>(i * 2654435761u >> 8) / 16777216.0f - 0.5f;
    }
  }
  std::vector<float> x, y, xOut, yOut;
};

unsigned Order(const benchmark::State& state) { return static_cast<unsigned>(state.range(0)); }

void CountSamples(benchmark::State& state) {
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kSamples);
}

void BM_FilterData(benchmark::State& state) {
  Scan scan;
  ZRVDataGenerator generator;
  generator.SetupSoftwareFilter(2, Order(state), kCutoff, 1, true);
  for (auto _ : state) {
    generator.FilterData(scan.x.data(), scan.y.data(), scan.xOut.data(), scan.yOut.data(), kSamples, false);
    benchmark::ClobberMemory();
  }
  CountSamples(state);
}
BENCHMARK(BM_FilterData)->Arg(2)->Arg(8)->Arg(20);

// Long silence after a signal: denormal numbers would show here as a time a hundred times as long.
void BM_FilterSilence(benchmark::State& state) {
  Scan scan;
  scan.x.assign(kSamples, 0.0f);
  scan.y.assign(kSamples, 0.0f);
  scan.x[0] = scan.y[0] = 1.0f;
  ZRVDataGenerator generator;
  generator.SetupSoftwareFilter(2, Order(state), kCutoff, 1, true);
  for (auto _ : state) {
    generator.FilterData(scan.x.data(), scan.y.data(), scan.xOut.data(), scan.yOut.data(), kSamples, false);
    benchmark::ClobberMemory();
  }
  CountSamples(state);
}
BENCHMARK(BM_FilterSilence)->Arg(2)->Arg(20);

void BM_SetUp(benchmark::State& state) {
  ZRVDataGenerator generator;
  for (auto _ : state) generator.SetupSoftwareFilter(1, Order(state), kCutoff, 1, true);
}
BENCHMARK(BM_SetUp)->Arg(2)->Arg(20);

const zrv::bench::Aim kSilenceAims[] = {
    {"filter silence, order 2, to a signal", "BM_FilterSilence/2", "BM_FilterData/2", 1.25},
    {"filter silence, order 20, to a signal", "BM_FilterSilence/20", "BM_FilterData/20", 1.25},
};

#ifdef ZRV_BENCH_LIQUID
void BM_Liquid(benchmark::State& state) {
  Scan scan;
  iirfilt_rrrf filters[2];
  for (auto& filter : filters) {
    filter = iirfilt_rrrf_create_prototype(LIQUID_IIRDES_BUTTER, LIQUID_IIRDES_LOWPASS, LIQUID_IIRDES_SOS, Order(state),
                                           kCutoff, 0.0f, 1.0f, 48.0f);
  }
  for (auto _ : state) {
    iirfilt_rrrf_execute_block(filters[0], scan.x.data(), kSamples, scan.xOut.data());
    iirfilt_rrrf_execute_block(filters[1], scan.y.data(), kSamples, scan.yOut.data());
    benchmark::ClobberMemory();
  }
  for (auto& filter : filters) iirfilt_rrrf_destroy(filter);
  CountSamples(state);
}
BENCHMARK(BM_Liquid)->Arg(2)->Arg(8)->Arg(20);
#endif

#ifdef ZRV_BENCH_SCIPY_COMMAND
// The script times sosfilt itself, without the start of the interpreter, and prints seconds a call.
void BM_Scipy(benchmark::State& state) {
  const std::string result = "sosfilt_seconds.txt";
  const std::string command =
      std::string(ZRV_BENCH_SCIPY_COMMAND) + " " + std::to_string(Order(state)) + " > " + result;
  for (auto _ : state) {
    double seconds = 0;
    if (std::system(command.c_str()) != 0 || !(std::ifstream(result) >> seconds)) {
      state.SkipWithError("sosfilt could not be timed");
      break;
    }
    state.SetIterationTime(seconds);
  }
  std::remove(result.c_str());
  CountSamples(state);
}
BENCHMARK(BM_Scipy)->Arg(2)->Arg(8)->Arg(20)->Iterations(1)->UseManualTime();
#endif

// Where one is not installed its aims count as left out.
const zrv::bench::Aim kLiquidAims[] = {
    {"filter 2 x 1e6, order 2, to liquid-dsp", "BM_FilterData/2", "BM_Liquid/2", 0.5},
    {"filter 2 x 1e6, order 8, to liquid-dsp", "BM_FilterData/8", "BM_Liquid/8", 0.5},
    {"filter 2 x 1e6, order 20, to liquid-dsp", "BM_FilterData/20", "BM_Liquid/20", 0.5},
};

const zrv::bench::Aim kScipyAims[] = {
    {"filter 2 x 1e6, order 2, to scipy", "BM_FilterData/2", "BM_Scipy/2", 0.5},
    {"filter 2 x 1e6, order 8, to scipy", "BM_FilterData/8", "BM_Scipy/8", 0.5},
    {"filter 2 x 1e6, order 20, to scipy", "BM_FilterData/20", "BM_Scipy/20", 0.5},
};

}  // namespace
