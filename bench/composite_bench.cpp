// The composite generators against their own steps called one by one, from arrays to arrays that are there already.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <numeric>
#include <string>
#include <vector>

#include "ZRVDataGenerator.h"
#include "bench/ratios.h"
#include "common/files.h"

namespace {

using benchmark::State;

constexpr unsigned int kRoom = 200000, kMostKeypoints = 20000;

struct Arrays {
  explicit Arrays(size_t room) : x(room), y(room), m(room) {}
  std::vector<float> x, y;
  std::vector<unsigned char> m;
};

// Twenty true-colour frames of a flower.
std::vector<uint8_t> Drawing() {
  constexpr unsigned int kFrames = 20, kPoints = 300;
  std::vector<uint8_t> bytes;
  for (unsigned int f = 0; f < kFrames; ++f) {
    bytes.insert(bytes.end(), {'I', 'L', 'D', 'A', 0, 0, 0, 5});
    bytes.resize(bytes.size() + 16);  // names
    bytes.insert(bytes.end(), {kPoints >> 8, kPoints & 255, 0, static_cast<uint8_t>(f), 0, kFrames, 0, 0});
    for (unsigned int i = 0; i < kPoints; ++i) {
      const double angle = 0.021 * i, radius = 20000 + 9000 * std::cos(7 * angle + f);
      const auto x = static_cast<int>(radius * std::cos(angle)), y = static_cast<int>(radius * std::sin(angle));
      for (const int v : {x >> 8, x, y >> 8, y, 0, 255, 255, 255}) bytes.push_back(static_cast<uint8_t>(v & 255));
    }
  }
  return bytes;
}

// Two ways to the same samples: a composite generator, and its steps by hand.
class Workbench {
 public:
  Workbench() {
#ifdef ZRV_FONT_FILE
    g.LoadHersheyFile(ZRV_FONT_FILE);
#endif
    const auto file = (std::filesystem::temp_directory_path() / "zrv-bench-frames.ild").string();
    zrv::WriteWholeFile(file.c_str(), Drawing());
    g.LoadIldaFile(file.c_str());
    std::filesystem::remove(file);
    scan.ArrayCapacity = kRoom;
    scan.Scale = 0.8f;
    scan.Angle = 0.3f;
  }

  unsigned int PerFrame() const {
    return static_cast<unsigned int>(static_cast<float>(scan.SampleRate) / scan.RefreshRate);
  }

  // The steps that follow keypoints, for one frame.
  unsigned int FinishKeypoints(unsigned int count) {
    count = Prepare(0, count, 0);
    Transform(path.x.data(), path.y.data(), count);
    return Interpolate(0, count, 0);
  }
  unsigned int Prepare(unsigned int keypoint, unsigned int count, unsigned int first) {
    float* kx = path.x.data() + first;
    float* ky = path.y.data() + first;
    unsigned char* km = path.m.data() + first;
    std::copy_n(keypoints.x.data() + keypoint, count, kx);
    std::copy_n(keypoints.y.data() + keypoint, count, ky);
    std::copy_n(keypoints.m.data() + keypoint, count, km);
    return g.CloseCurve(kx, ky, km, g.OptimizeKeypoints(kx, ky, km, count, 0), 1, false);
  }
  unsigned int Interpolate(unsigned int first, unsigned int count, unsigned int written) {
    return g.InterpolateDataOptimized(path.x.data() + first, path.y.data() + first, path.m.data() + first,
                                      out.x.data() + written, out.y.data() + written, out.m.data() + written, count,
                                      PerFrame());
  }
  unsigned int FinishSamples(unsigned int count) {
    Transform(out.x.data(), out.y.data(), count);
    return count;
  }

  void Transform(float* x, float* y, unsigned int count) {
    g.TransformData(x, y, count, scan.Scale, scan.Angle, 0, 0, false, 0, 0);
  }

  ZRVDataGenerator g;
  ZRVScanSettings scan;
  Arrays out{kRoom}, keypoints{kMostKeypoints}, path{kMostKeypoints};
  unsigned int samples = 0, frames = 0, rate = 0;
};

// Both benchmarks of a pair are refused unless both ways make the same number of samples.
template <typename Composite, typename ByHand>
void Run(State& state, bool composite, Composite generate, ByHand steps) {
  Workbench s;
  generate(s);
  const unsigned int expected = s.samples;
  if (expected == 0 || steps(s) != expected) return state.SkipWithError("the two ways differ in samples");
  if (composite) {
    for (auto _ : state) generate(s);
  } else {
    for (auto _ : state) benchmark::DoNotOptimize(steps(s));
  }
  state.SetItemsProcessed(static_cast<int64_t>(expected) * state.iterations());
}

// Benchmarks name and nameByHand of GenerateNameData.
#define ZRV_PAIR(name, generate, steps)                                   \
  void name(State& state) { Run(state, true, generate, steps); }          \
  BENCHMARK(name);                                                        \
  void name##ByHand(State& state) { Run(state, false, generate, steps); } \
  BENCHMARK(name##ByHand);                                                \
  const zrv::bench::Aim kAim##name("Generate" #name "Data, to its steps by hand", #name, #name "ByHand", 1.15)

#define ZRV_OUT s.out.x.data(), s.out.y.data(), s.out.m.data()
#define ZRV_KEYPOINTS s.keypoints.x.data(), s.keypoints.y.data(), s.keypoints.m.data()

void MakeWaveform(Workbench& s) { s.g.GenerateWaveformData(ZRV_OUT, s.scan, {}, s.samples, s.frames); }
unsigned int WaveformSteps(Workbench& s) {
  const unsigned int n = s.PerFrame(), back = n / 10;
  const ZRVWaveformSettings w;
  s.g.SineWaveform(ZRV_OUT, n - back, w.Amplitude, w.Cycles, w.Phase);
  return s.FinishSamples(s.g.CloseCurve(ZRV_OUT, n - back, back, false));
}
ZRV_PAIR(Waveform, MakeWaveform, WaveformSteps);

void MakeSpirograph(Workbench& s) { s.g.GenerateSpirographData(ZRV_OUT, s.scan, {}, s.samples, s.frames); }
unsigned int SpirographSteps(Workbench& s) {
  const ZRVSpirographSettings p;
  return s.FinishSamples(
      s.g.SpirographCurve(ZRV_OUT, s.PerFrame(), p.Curve, 0, p.Amplitude, p.RingA, p.RingB, p.PenDistance));
}
ZRV_PAIR(Spirograph, MakeSpirograph, SpirographSteps);

void MakeLissajous(Workbench& s) { s.g.GenerateLissajousData(ZRV_OUT, s.scan, {}, s.samples, s.frames); }
unsigned int LissajousSteps(Workbench& s) {
  const ZRVLissajousSettings l;
  return s.FinishSamples(
      s.g.LissajousCurve(ZRV_OUT, s.PerFrame(), 0, l.Amplitude, l.FreqX, l.FreqY, l.Phase, 0, 0, 0, 0));
}
ZRV_PAIR(Lissajous, MakeLissajous, LissajousSteps);

void MakeClock(Workbench& s) { s.g.GenerateClockData(ZRV_OUT, s.scan, {}, s.samples, s.frames); }
unsigned int ClockSteps(Workbench& s) {
  const ZRVClockSettings c;
  return s.FinishKeypoints(s.g.AnalogClockCurve(ZRV_KEYPOINTS, c.Hours, c.Minutes, c.Seconds, c.Amplitude));
}
ZRV_PAIR(Clock, MakeClock, ClockSteps);

void MakeSignal(Workbench& s) { s.g.GenerateSignalData(ZRV_OUT, s.scan, {}, s.samples, s.frames, s.rate); }
unsigned int SignalSteps(Workbench& s) {
  const ZRVSignalSettings q;
  return s.FinishSamples(
      s.g.RQWaveform(ZRV_OUT, s.rate, false, q.AmplitudeX, q.AmplitudeY, q.Frequency, q.XMultiple, q.RisePortion, 0));
}
ZRV_PAIR(Signal, MakeSignal, SignalSteps);

#ifdef ZRV_FONT_FILE
const char kText[] = "The quick brown fox jumps over the lazy dog";

void MakeText(Workbench& s) {
  ZRVTextSettings text;
  text.Text = kText;
  s.g.GenerateTextData(ZRV_OUT, s.scan, text, s.samples, s.frames);
}
unsigned int TextSteps(Workbench& s) {
  const ZRVTextSettings text;
  s.g.HersheyDataSize(kText, sizeof kText - 1, 0);  // the room that it needs
  return s.FinishKeypoints(s.g.HersheyDataStream(ZRV_KEYPOINTS, kText, sizeof kText - 1, 0, text.Amplitude, 0, false));
}
ZRV_PAIR(Text, MakeText, TextSteps);
#endif

void MakeImportFile(Workbench& s) {
  ZRVImportSettings file;
  file.Format = ImportIlda;  // what is loaded
  s.g.GenerateImportFileData(ZRV_OUT, nullptr, s.scan, file, s.samples, s.frames, s.rate);
}
unsigned int ImportFileSteps(Workbench& s) {
  const ZRVImportSettings file;
  std::vector<unsigned int> frames(s.g.IldaNumFrames());
  std::iota(frames.begin(), frames.end(), 1u);
  const auto count = static_cast<unsigned int>(frames.size());
  s.g.IldaDataStream(ZRV_KEYPOINTS, frames.data(), count, file.Amplitude, 0, file.AngleX, file.AngleY, true);
  std::vector<unsigned int> starts = {0};
  for (unsigned int f = 0, keypoint = 0; f < count; keypoint += s.g.IldaKeypointCount(f++)) {
    starts.push_back(starts[f] + s.Prepare(keypoint, s.g.IldaKeypointCount(f), starts[f]));
  }
  for (unsigned int f = 0; f < count; ++f) {  // each ends, dark, where the next one starts
    const size_t next = starts[(f + 1) % count], end = starts[f + 1] - 1;
    s.path.x[end] = s.path.x[next];
    s.path.y[end] = s.path.y[next];
  }
  s.Transform(s.path.x.data(), s.path.y.data(), starts[count]);
  unsigned int written = 0;
  for (unsigned int f = 0; f < count; ++f) written += s.Interpolate(starts[f], starts[f + 1] - starts[f], written);
  return written;
}
ZRV_PAIR(ImportFile, MakeImportFile, ImportFileSteps);

void MakeScan(Workbench& s) { s.g.GenerateScanData(ZRV_OUT, s.scan, {}, s.samples, s.frames, s.rate); }
unsigned int ScanSteps(Workbench& s) {
  const ZRVPatternSettings p;
  s.rate = 0;
  const auto call = [&](float* x, float* y, unsigned char* m) {
    return s.g.LinearRasterPattern(x, y, m, p.XAmplitude, p.YAmplitude, p.NumLines, p.NumPixels, p.LineDuration,
                                   p.PixelHold, p.Bidirectional, p.DigitalShift, p.RotationAngle, s.rate,
                                   static_cast<int>(s.scan.SampleRateMin), static_cast<int>(s.scan.SampleRateMax));
  };
  call(nullptr, nullptr, nullptr);  // the room that it needs
  return s.FinishSamples(call(ZRV_OUT));
}
ZRV_PAIR(Scan, MakeScan, ScanSteps);

}  // namespace
