// What the library takes from the heap: nothing that grows from connection to connection or from call to call, and
// how much at the most. The simulated controller runs in a process of its own, so that only the library is counted.
//
//   memory [rounds]      prints the figures of docs/reliability.md; fails when anything grows
#include <malloc.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "ZRVDataGenerator.h"
#include "ZRVDevice.h"
#include "bench/heap.h"
#include "common/files.h"
#include "simulator/pseudo_terminal.h"

namespace {

size_t inUse = 0, most = 0;  // bytes from operator new

}  // namespace

[[gnu::noinline]] void* operator new(size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  inUse += malloc_usable_size(memory);
  most = std::max(most, inUse);
  return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
  inUse -= malloc_usable_size(memory);
  std::free(memory);
}

void operator delete(void* memory, size_t) noexcept { operator delete(memory); }

namespace {

using namespace zrv::bench;
using std::filesystem::path;

constexpr unsigned kSamples = 50000;
constexpr unsigned kKeypoints = 5000;
constexpr unsigned kBlock = 25000;
constexpr int kWarmUpRounds = 3;

// How far the heap rose during a call, and what is still taken afterwards; bytes.
struct Use {
  size_t peak = 0;
  long kept = 0;
};

template <typename Call>
Use Measure(Call call) {
  const size_t before = inUse;
  most = inUse;
  call();
  return {most - before, static_cast<long>(inUse) - static_cast<long>(before)};
}

// --- The device ----------------------------------------------------------------------------------------------

// A controller in another process, for as long as the object.
class ControllerProcess {
 public:
  ControllerProcess() {
    std::string name = (std::filesystem::temp_directory_path() / "zrv-memory-XXXXXX").string();
    directory_ = mkdtemp(name.data());
    child_ = fork();
    if (child_ == 0) Serve();
    while (!std::filesystem::exists(Port())) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ~ControllerProcess() {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
    std::filesystem::remove_all(directory_);
  }
  std::string Port() const { return directory_ + "/ttyUSB0"; }

 private:
  [[noreturn]] void Serve() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // nor does it outlive a measurement that broke off
    const zrv::sim::PseudoTerminal terminal({}, {directory_, "ttyUSB0", 0});
    for (;;) pause();
  }

  std::string directory_;
  pid_t child_ = -1;
};

struct Arrays {
  explicit Arrays(size_t n) : x(n), y(n), m(n) {}
  std::vector<float> x, y;
  std::vector<unsigned char> m;
};

void PlayOnce(ZRVDevice& device, const std::string& port, Arrays& a) {
  device.ConnectDevice(port.c_str());
  device.SendDataStream(a.x.data(), a.y.data(), a.m.data(), kBlock, 0, false);
  device.StartDataStream(-1, false);
  device.StopDataStream();
  if (device.GetLastError() != ErrorNone) {
    std::printf("error %u\n", device.GetLastError());
    std::exit(1);
  }
  device.DisconnectDevice();
}

bool MeasureDevice(int rounds) {
  const ControllerProcess controller;
  const std::string port = controller.Port();
  Arrays a(kBlock);
  const Use first = Measure([&] { PlayOnce(*std::make_unique<ZRVDevice>(), port, a); });
  auto device = std::make_unique<ZRVDevice>();
  const Use again = Measure([&] { PlayOnce(*device, port, a); });
  device.reset();
  std::printf("connect, send %u samples, play, stop, disconnect:\n", kBlock);
  std::printf("  the first time, with a device   %8zu bytes at most, %ld kept\n", first.peak, first.kept);
  std::printf("  again, with a device that is there %5zu bytes at most, %ld kept\n", again.peak, again.kept);

  const auto round = [&] { PlayOnce(*std::make_unique<ZRVDevice>(), port, a); };
  for (int i = 0; i < kWarmUpRounds; ++i) round();
  const size_t resident = ResidentKB(), heap = HeapBytes();
  for (int i = 0; i < rounds; ++i) round();
  const size_t residentAfter = ResidentKB(), heapAfter = HeapBytes();
  std::printf("  %d rounds: heap %zu bytes before, %zu after; resident %zu KB, %zu KB\n", rounds, heap, heapAfter,
              resident, residentAfter);
  return heap == heapAfter && again.kept == 0;
}

// --- The generator -------------------------------------------------------------------------------------------

struct Workbench {
  ZRVDataGenerator g;
  Arrays keys{kSamples + 1};  // kKeypoints of them lit and blank by turns
  Arrays out{3 * kSamples};   // what a filter without delay needs
  std::vector<unsigned char> image = std::vector<unsigned char>(100 * 100, 255);
  std::vector<int> lastDark = std::vector<int>(100, 99);
  std::vector<float> dwell = std::vector<float>(kKeypoints, 0.5f);
  std::vector<unsigned> frames = std::vector<unsigned>(50);
  std::string drawing, points, text = std::string(1000, 'R');
  ZRVScanSettings scan{.ArrayCapacity = 3 * kSamples, .SampleRate = kSamples, .RefreshRate = 1};  // of kSamples
  unsigned sps = 0;

  float* const x = out.x.data();
  float* const y = out.y.data();
  unsigned char* const m = out.m.data();
};

// A composite generator; some choose the sample rate too.
template <auto make, typename Settings>
unsigned Compose(Workbench& w, const Settings& settings) {
  unsigned samples = 0, frames = 0;
  if constexpr (requires { (w.g.*make)(w.x, w.y, w.m, w.scan, settings, samples, frames, w.sps); }) {
    (w.g.*make)(w.x, w.y, w.m, w.scan, settings, samples, frames, w.sps);
  } else {
    (w.g.*make)(w.x, w.y, w.m, w.scan, settings, samples, frames);
  }
  return samples;
}

unsigned ComposeDrawing(Workbench& w) {
  const ZRVImportSettings drawing{.FileName = w.drawing.c_str(), .Frames = w.frames.data(), .NumFrames = 1};
  unsigned samples = 0, frames = 0;
  w.g.GenerateImportFileData(w.x, w.y, w.m, nullptr, w.scan, drawing, samples, frames, w.sps);
  return samples;
}

struct Family {
  const char* name;
  unsigned (*make)(Workbench&);  // samples or keypoints written
};

// A generator that says how much it wrote, one that writes `count`, and a composite one; over a workbench w.
#define WRITES(generator, ...)                                                       \
  {                                                                                  \
#generator, [](Workbench & w) -> unsigned { return w.g.generator(__VA_ARGS__); } \
  }
#define FILLS(count, generator, ...)                                                   \
  {                                                                                    \
#generator, [](Workbench& w) -> unsigned { w.g.generator(__VA_ARGS__); return count; } \
  }
#define COMPOSES(generator, ...)                                                                    \
  {                                                                                                 \
#generator, [](Workbench & w) { return Compose<&ZRVDataGenerator::generator>(w, __VA_ARGS__); } \
  }
#define OUT w.x, w.y, w.m
#define KEYS w.keys.x.data(), w.keys.y.data(), w.keys.m.data()

const Family kFamilies[] = {
    WRITES(SineWaveform, OUT, kSamples, 1, 5, 0),
    WRITES(SawtoothWaveform, OUT, kSamples, 1, 5, 0.5f, 0),
    WRITES(SquareWaveform, OUT, kSamples, 1, 5, 0.5f, 0),
    WRITES(NoiseWaveform, w.x, kSamples, 1),
    WRITES(SpiralCurve, OUT, kSamples, 1, 1, 9, 0),
    WRITES(PolygonCurve, OUT, kSamples, 1, 7, 0),
    WRITES(SpirographCurve, OUT, kSamples, 4, 0, 1, 7, 3, 2),
    WRITES(LissajousCurve, OUT, kSamples, 0, 1, 3, 2, 0, 1, 0.5f, 20, 0),
    WRITES(DynamicsCurve, OUT, kSamples, 0, 0, 0.01f, 0.02f, 0, -0.001f, 1),
    WRITES(InterpolateDataLinear, KEYS, OUT, kKeypoints, kSamples, 2),
    WRITES(InterpolateDataTrapezoidal, KEYS, OUT, kKeypoints, kSamples, 2, 0.2f, 0.2f),
    WRITES(InterpolateDataOptimized, KEYS, OUT, kKeypoints, kSamples),
    {"OptimizeKeypoints",
     [](Workbench& w) {
       std::copy(w.keys.x.begin(), w.keys.x.end(), w.x);
       std::copy(w.keys.y.begin(), w.keys.y.end(), w.y);
       std::copy(w.keys.m.begin(), w.keys.m.end(), w.m);
       return w.g.OptimizeKeypoints(OUT, kSamples, kKeypoints);
     }},
    WRITES(CloseCurve, OUT, kSamples, 10, false),
    FILLS(1, InitProjectiveTransformMatrix, nullptr, nullptr, false),
    WRITES(TransformData, w.x, w.y, kSamples, 0.5f, 1, 0.1f, 0.1f, true, 0.2f, 0.2f),
    WRITES(AnimationRotate, OUT, kSamples / 10, 10),
    WRITES(AnimationScroll, OUT, kSamples / 10, 10),
    FILLS(w.g.IldaNumTotalPoints(), LoadIldaFile, w.drawing.c_str()),
    WRITES(IldaDataStream, OUT, w.frames.data(), 50, 1, 0, 0, 1.57f, true),
    WRITES(LoadPointFile, w.points.c_str()),
    WRITES(PointFileDataStream, OUT),
    WRITES(LinearRasterPattern, OUT, 0.9f, 0.9f, 80, 100, 0.02f, false, true, 3, 0.1f, w.sps, 1, 100000),
    WRITES(LinearRasterPatternImaging, OUT, 0.9f, 0.9f, 100, 100, 0.02f, false, true, 3, 0.1f, w.sps, 1, 100000),
    WRITES(PointToPointPattern, OUT, KEYS, w.dwell.data(), kKeypoints, 0.1f, w.sps = 20000, 1, 100000),
    WRITES(LaserWriterDataStream, OUT, w.image.data(), w.lastDark.data(), 100, 100, 0.02f, true, w.sps, 1, 20000, -0.8f,
           0.8f, -0.8f, 0.8f),
    COMPOSES(GenerateWaveformData, ZRVWaveformSettings{}),
    COMPOSES(GenerateSpirographData, ZRVSpirographSettings{}),
    COMPOSES(GenerateLissajousData, ZRVLissajousSettings{}),
    COMPOSES(GenerateClockData, ZRVClockSettings{}),
    COMPOSES(GenerateSignalData, ZRVSignalSettings{}),
    COMPOSES(GenerateScanData, ZRVPatternSettings{.NumLines = 80, .NumPixels = 100}),
    {"GenerateImportFileData", ComposeDrawing},
#ifdef ZRV_FONT_FILE
    FILLS(w.g.HersheyNumOC(), LoadHersheyFile, ZRV_FONT_FILE),
    WRITES(HersheyDataStream, OUT, w.text.c_str(), 1000, 0, 1, 0, false),
    COMPOSES(GenerateTextData, ZRVTextSettings{.Text = w.text.c_str()}),
#endif
    FILLS(w.g.GetIIRFilterOrder(), SetupSoftwareFilter, 5, 20, 1000, 20000, true),
    FILLS(kSamples, FilterData, w.keys.x.data(), w.keys.y.data(), w.x, w.y, kSamples, false),
    FILLS(kSamples, FilterData, w.keys.x.data(), w.keys.y.data(), w.x, w.y, kSamples, true),
};

std::vector<uint8_t> DrawingBytes() {
  constexpr unsigned kFrames = 50, kPoints = 1000;
  std::vector<uint8_t> bytes;
  for (unsigned f = 0; f < kFrames; ++f) {
    std::vector<uint8_t> header(32);
    header[0] = 'I', header[1] = 'L', header[2] = 'D', header[3] = 'A', header[7] = 5;
    header[24] = kPoints >> 8, header[25] = kPoints & 255, header[29] = kFrames;
    bytes.insert(bytes.end(), header.begin(), header.end());
    for (unsigned i = 0; i < kPoints * 8; ++i) bytes.push_back(static_cast<uint8_t>(i % 8 == 4 ? 0 : i * 31 + f));
  }
  return bytes;
}

bool MeasureFamilies() {
  Workbench w;
  const path directory = std::filesystem::temp_directory_path();
  w.drawing = (directory / ("zrv-memory-" + std::to_string(getpid()) + ".ild")).string();
  w.points = (directory / ("zrv-memory-" + std::to_string(getpid()) + ".txt")).string();
  for (unsigned i = 0; i < kSamples; ++i) {
    w.keys.x[i] = std::cos(static_cast<float>(i) * 0.7f);
    w.keys.y[i] = std::sin(static_cast<float>(i) * 1.3f);
    w.keys.m[i] = i % 4 != 0 ? 255 : 0;
  }
  for (unsigned f = 0; f < w.frames.size(); ++f) w.frames[f] = f + 1;
  ZRVDataGenerator::ExportFile(w.points.c_str(), w.keys.x.data(), w.keys.y.data(), w.keys.m.data(), kSamples, 20000);
  const bool written = zrv::WriteWholeFile(w.drawing.c_str(), DrawingBytes());

  bool steady = true;
  std::printf("\n%-48s %8s %12s %12s\n", "generator", "written", "peak, bytes", "kept, bytes");
  for (const Family& family : kFamilies) {
    unsigned count = 0;
    const Use use = Measure([&] { count = family.make(w); });
    const Use again = Measure([&] { family.make(w); });
    std::printf("%-48s %8u %12zu %12ld%s\n", family.name, count, use.peak, use.kept,
                count == 0        ? "  NOTHING"
                : again.kept != 0 ? "  GROWS"
                                  : "");
    steady = steady && count > 0 && again.kept == 0;
  }
  std::filesystem::remove(w.drawing);
  std::filesystem::remove(w.points);
  return written && steady;
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::clamp(std::atoi(argv[1]), 1, 1000000) : 100;
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const bool device = MeasureDevice(rounds);
  const bool families = MeasureFamilies();
  return device && families ? 0 : 1;
}
