// Plays, stops, moves, measures and tracks for as long as it is told, against a simulated controller that spoils one
// answer in a hundred. After a failed call two more may fail at most, and none may take longer than it says.
//
//   soak [seconds] [seed]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <string_view>
#include <thread>

#include "bench/heap.h"
#include "simulator/pseudo_terminal.h"
#include "tests/reliability/calls.h"

namespace {

using namespace zrv::bench;
using namespace zrv::reliability;
using zrv::sim::Controller;
using Clock = std::chrono::steady_clock;

constexpr double kFailing = 0.01;  // of the answers
constexpr double kSlackMs = 300;   // of the machine, on top of the time-outs
constexpr unsigned kWarmUpCalls = 300;
constexpr std::chrono::milliseconds kPace{2}, kUnderWay{50};
constexpr int kMaxFailures = 2;
constexpr std::string_view kChosen[] = {"SendDataStream",
                                        "StartDataStream, endless",
                                        "StartDataStream, counted",
                                        "StartDataStream, and wait",
                                        "StopDataStream",
                                        "GetSamplesRemaining",
                                        "IsDeviceRunning",
                                        "GoToDevicePosition, smooth",
                                        "GoToDevicePosition, at once",
                                        "ResetDevicePosition",
                                        "GetAnalogInputValue",
                                        "GetPhotoDetectorValue",
                                        "GetAnalogInputBuffer",
                                        "IsTrackingSupported",
                                        "GetTrackParams",
                                        "SetTrackParams",
                                        "GetTrackStatus",
                                        "GetTrackIntegrals"};

std::vector<const Call*> ChosenCalls() {
  std::vector<const Call*> chosen;
  for (const Call& call : Calls()) {
    if (std::find(std::begin(kChosen), std::end(kChosen), call.name) != std::end(kChosen)) chosen.push_back(&call);
  }
  return chosen;
}

class Soak {
 public:
  explicit Soak(uint32_t seed) : seed_(seed), random_(seed), terminal_(ControllerOptions()) {
    bench_.port = terminal_.Port();
    terminal_.Access(FeedTracking);
    bench_.device.ConnectDevice(bench_.port.c_str());
  }

  void Run(std::chrono::seconds duration) {
    while (calls_ < kWarmUpCalls) MakeOne();
    heap_ = HeapBytes();
    residentKB_ = ResidentKB();
    SpoilAnswers(true);
    for (const auto end = Clock::now() + duration; Clock::now() < end;) MakeOne();
    SpoilAnswers(false);
  }

  int Report() {
    const size_t heap = HeapBytes();
    unsigned long failures = 0;
    for (const auto& [error, count] : errors_) failures += count;
    std::printf("calls                 %lu\nanswers spoilt        %lu\n", calls_, spoilt_);
    std::printf("failed calls          %lu\n", failures);
    for (const auto& [error, count] : errors_) std::printf("  error %-2d            %lu\n", error, count);
    std::printf("within two more a good one %lu\nwrong values unnoticed %lu\n", recovered_, unnoticed_);
    std::printf("calls over their bound %lu\n", overruns_);
    std::printf("longest call          %.0f ms (%s, bound %u ms)\n", longestMs_, longest_->name, longest_->boundMs);
    std::printf("heap in use           %zu bytes after %u calls, %zu at the end\n", heap_, kWarmUpCalls, heap);
    std::printf("resident              %zu KB, %zu KB\n", residentKB_, ResidentKB());
    const bool grown = heap > heap_ + kHeapNoise;
    return recovered_ == failures && overruns_ == 0 && spoilt_ > 0 && !grown ? 0 : 1;
  }

 private:
  static constexpr size_t kHeapNoise = 65536;  // answers under way in the simulator

  void MakeOne() {
    const Call& call = *chosen_[random_() % chosen_.size()];
    if (!Make(call)) ExpectRecovery(call);
    std::this_thread::sleep_for(kPace);
  }

  void SpoilAnswers(bool spoil) {
    terminal_.Access([&](Controller& c) {
      if (!spoil) return c.faults().Clear();
      c.faults().FailRandomAnswers(kFailing, seed_ + static_cast<uint32_t>(calls_));
    });
    spoilt_ = terminal_.Access([](Controller& c) { return static_cast<unsigned long>(c.faults().randomFaults()); });
  }

  bool Make(const Call& call) {
    const auto start = Clock::now();
    const bool right = call.run(bench_);
    const ZRVError error = bench_.device.GetLastError();
    const double ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    ++calls_;
    if (ms > longestMs_) longestMs_ = ms, longest_ = &call;
    if (ms > call.boundMs + kSlackMs) {
      ++overruns_;
      std::printf("OVER: %s took %.0f ms\n", call.name, ms);
    }
    if (error != ErrorNone) ++errors_[static_cast<int>(error)];
    // What other calls bring depends on those before them.
    if (error == ErrorNone && !right && call.prepare == nullptr) ++unnoticed_;
    return error == ErrorNone;
  }

  // With a link that is sound for as long as it takes, and a host that drops what was under way.
  void ExpectRecovery(const Call& call) {
    SpoilAnswers(false);
    const auto failed = errors_;
    int tries = 0;
    do {
      std::this_thread::sleep_for(kUnderWay);
      bench_.device.SendSerialReset();
    } while (!Make(call) && ++tries <= kMaxFailures);
    errors_ = failed;
    if (tries <= kMaxFailures) {
      ++recovered_;
    } else {
      std::printf("A THIRD CALL FAILED: %s, error %u\n", call.name, bench_.device.GetLastError());
    }
    SpoilAnswers(true);
  }

  uint32_t seed_;
  std::mt19937 random_;
  zrv::sim::PseudoTerminal terminal_;
  Bench bench_;
  const std::vector<const Call*> chosen_ = ChosenCalls();
  unsigned long calls_ = 0, recovered_ = 0, unnoticed_ = 0, overruns_ = 0, spoilt_ = 0;
  std::map<int, unsigned long> errors_;
  double longestMs_ = 0;
  const Call* longest_ = nullptr;
  size_t heap_ = 0, residentKB_ = 0;  // warm
};

}  // namespace

int main(int argc, char** argv) {
  const int seconds = argc > 1 ? std::clamp(std::atoi(argv[1]), 1, 1000000) : 3600;
  const auto seed = static_cast<uint32_t>(argc > 2 ? std::atoi(argv[2]) : 1);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  Soak soak(seed);
  soak.Run(std::chrono::seconds(seconds));
  std::printf("%d s, seed %u, one answer in a hundred spoilt\n", seconds, seed);
  return soak.Report();
}
