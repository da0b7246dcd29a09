// Packing a full block in every format against a memcpy of the same number of bytes.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "bench/ratios.h"
#include "device/packing.h"
#include "device/protocol.h"

namespace {

constexpr size_t kSamples = 25000;

struct Block {
  Block() : x(kSamples), y(kSamples), m(kSamples), colours(kSamples) {
    for (size_t i = 0; i < kSamples; ++i) {
      x[i] = std::sin(0.01f * static_cast<float>(i));
      y[i] = std::cos(0.013f * static_cast<float>(i));
      m[i] = static_cast<uint8_t>(i % 7 != 0);
      colours[i] = static_cast<uint32_t>(i * 2654435761u >> 8);
    }
  }
  std::vector<float> x, y;
  std::vector<uint8_t> m;
  std::vector<uint32_t> colours;
  std::array<zrv::GammaCurve, 3> gamma = {zrv::MakeGammaCurve(1.0f), zrv::MakeGammaCurve(2.0f),
                                          zrv::MakeGammaCurve(0.5f)};
};

void BM_Pack(benchmark::State& state) {
  const Block block;
  const auto format = static_cast<uint32_t>(state.range(0));
  std::vector<uint8_t> out(kSamples * zrv::protocol::BytesPerSample(format));
  zrv::SampleSource source;
  source.x = block.x.data();
  source.y = block.y.data();
  source.m = block.m.data();
  source.colours = block.colours.data();
  source.gamma = &block.gamma;
  source.count = kSamples;
  source.start = kSamples / 3;
  source.delay = 40;
  for (auto _ : state) {
    zrv::PackSamples(format, source, out.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kSamples));
}

BENCHMARK(BM_Pack)->DenseRange(0, 4);

void BM_Copy(benchmark::State& state) {
  const size_t bytes = kSamples * zrv::protocol::BytesPerSample(static_cast<uint32_t>(state.range(0)));
  const std::vector<uint8_t> from(bytes, 1);
  std::vector<uint8_t> to(bytes);
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), bytes);
    benchmark::DoNotOptimize(to.data());  // else clang leaves the copy out
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_Copy)->DenseRange(0, 4);

const zrv::bench::Aim kAims[] = {
    {"packing 25000 samples, format 0, to memcpy", "BM_Pack/0", "BM_Copy/0", 3},
    {"packing 25000 samples, format 1, to memcpy", "BM_Pack/1", "BM_Copy/1", 8},
    {"packing 25000 samples, format 2, to memcpy", "BM_Pack/2", "BM_Copy/2", 8},
    {"packing 25000 samples, format 3, to memcpy", "BM_Pack/3", "BM_Copy/3", 8},
    {"packing 25000 samples, format 4, to memcpy", "BM_Pack/4", "BM_Copy/4", 8},
};

}  // namespace
