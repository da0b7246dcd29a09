// Loaders against reading the file or its numbers, text against laying down its glyphs, rasters against filling
// their outputs.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "ZRVDataGenerator.h"
#include "bench/ratios.h"
#include "common/files.h"

namespace {

// A file for the length of the program.
struct BenchFile {
  BenchFile(const char* name, const std::vector<uint8_t>& bytes)
      : path((std::filesystem::temp_directory_path() / name).string()) {
    zrv::WriteWholeFile(path.c_str(), bytes);
  }
  ~BenchFile() { std::filesystem::remove(path); }
  std::string path;
};

std::vector<uint8_t> TrueColourDrawing() {
  constexpr int kFrames = 200, kPoints = 1200;
  std::vector<uint8_t> bytes;
  for (int f = 0; f < kFrames; ++f) {
    std::vector<uint8_t> header(32);
    header[0] = 'I', header[1] = 'L', header[2] = 'D', header[3] = 'A', header[7] = 5;
    header[24] = kPoints >> 8, header[25] = kPoints & 255, header[29] = kFrames;
    bytes.insert(bytes.end(), header.begin(), header.end());
    for (int i = 0; i < kPoints * 8; ++i) bytes.push_back(static_cast<uint8_t>(i * 31 + f));
  }
  return bytes;
}

std::string PointText() {
  std::string text = "sps 20000\n";
  char line[64];
  for (int i = 0; i < 50000; ++i) {
    std::snprintf(line, sizeof line, "%g %g %d\n", std::sin(i * 0.01), std::cos(i * 0.013), i % 256);
    text += line;
  }
  return text;
}

const BenchFile& Drawing() {
  static const BenchFile file("zrv-bench.ild", TrueColourDrawing());
  return file;
}

const BenchFile& PointFile() {
  static const std::string text = PointText();
  static const BenchFile file("zrv-bench.txt", {text.begin(), text.end()});
  return file;
}

void SetFileBytes(benchmark::State& state, const BenchFile& file) {
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(std::filesystem::file_size(file.path)));
}

void BM_LoadDrawing(benchmark::State& state) {
  ZRVDataGenerator g;
  for (auto _ : state) g.LoadIldaFile(Drawing().path.c_str());
  SetFileBytes(state, Drawing());
}
BENCHMARK(BM_LoadDrawing);

void BM_ReadDrawing(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(zrv::ReadWholeFile(Drawing().path.c_str()));
  SetFileBytes(state, Drawing());
}
BENCHMARK(BM_ReadDrawing);

void BM_LoadPoints(benchmark::State& state) {
  ZRVDataGenerator g;
  for (auto _ : state) benchmark::DoNotOptimize(g.LoadPointFile(PointFile().path.c_str()));
  SetFileBytes(state, PointFile());
}
BENCHMARK(BM_LoadPoints);

// The same bytes from the same file, each number taken by the library call and thrown away.
void BM_FromChars(benchmark::State& state) {
  for (auto _ : state) {
    const auto bytes = zrv::ReadWholeFile(PointFile().path.c_str());
    const std::string_view text = zrv::AsText(*bytes);
    const char *at = text.data() + text.find('\n'), *end = text.data() + text.size();
    float value = 0, sum = 0;
    while (at < end) {
      at = std::from_chars(at + 1, end, value).ptr;
      sum += value;
      if (at + 1 == end) break;
    }
    benchmark::DoNotOptimize(sum);
  }
  SetFileBytes(state, PointFile());
}
BENCHMARK(BM_FromChars);

#ifdef ZRV_FONT_FILE
void BM_Text(benchmark::State& state) {
  ZRVDataGenerator g;
  g.LoadHersheyFile(ZRV_FONT_FILE);
  std::string text;
  while (text.size() < 1000) text += "The quick brown fox jumps over the lazy dog 0123456789 ";
  const auto length = static_cast<unsigned>(text.size());
  const size_t room = g.HersheyDataSize(text.c_str(), length, 0) + 1;
  std::vector<float> x(room), y(room);
  std::vector<unsigned char> m(room);
  for (auto _ : state) {
    g.HersheyDataStream(x.data(), y.data(), m.data(), text.c_str(), length, 0, 1, 0, false);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(length));  // glyphs
  state.counters["keypoints"] = static_cast<double>(room - 1);
}
BENCHMARK(BM_Text);
#endif

constexpr size_t kRasterRoom = 60000;

struct Outputs {
  std::vector<float> x = std::vector<float>(kRasterRoom), y = x;
  std::vector<unsigned char> m = std::vector<unsigned char>(kRasterRoom);
  ZRVDataGenerator g;
  unsigned sps = 0;

  unsigned Scan() {
    return g.LinearRasterPattern(x.data(), y.data(), m.data(), 0.9f, 0.9f, 90, 100, 0.02f, false, true, 3, 0.1f, sps, 1,
                                 100000);
  }
};

void BM_Raster(benchmark::State& state) {
  Outputs out;
  unsigned samples = 0;
  for (auto _ : state) {
    samples = out.Scan();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * samples);
}
BENCHMARK(BM_Raster);

void BM_FillOutputs(benchmark::State& state) {
  Outputs out;
  const size_t samples = out.Scan();
  float value = 0;
  for (auto _ : state) {
    std::fill_n(out.x.begin(), samples, value);
    std::fill_n(out.y.begin(), samples, value);
    std::fill_n(out.m.begin(), samples, static_cast<unsigned char>(7));
    benchmark::ClobberMemory();
    value += 1;
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(samples));
}
BENCHMARK(BM_FillOutputs);

const zrv::bench::Aim kAims[] = {
    {"drawing load, to reading the file", "BM_LoadDrawing", "BM_ReadDrawing", 4},
    {"point file load, to from_chars on its text", "BM_LoadPoints", "BM_FromChars", 1.5},
    {"50000-sample raster, to std::fill", "BM_Raster", "BM_FillOutputs", 4},
};

}  // namespace
