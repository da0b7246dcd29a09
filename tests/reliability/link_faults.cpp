// The fault table: every call of ZRVDevice against a simulated controller on a pseudo-terminal, with one fault of the
// link at a time, at every byte. Cases mostly wait for time-outs, so many processes run them side by side.
//
//   link_faults [processes]      prints the table; fails when a promise of docs/reliability.md is broken
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <thread>

#include "simulator/pseudo_terminal.h"
#include "tests/reliability/calls.h"

namespace {

using namespace zrv::reliability;
using zrv::sim::Controller;
using zrv::sim::Fault;
using zrv::sim::PseudoTerminal;
using Clock = std::chrono::steady_clock;

// --- Faults ----------------------------------------------------------------------------------------------

enum Kind { kDrop, kOneBit, kAllBits, kDouble, kLate, kTooLate, kCutAnswer, kCutCommand, kStall, kSilence, kKinds };
constexpr const char* kKindNames[kKinds] = {"dropped",    "one bit",     "all bits",     "doubled", "0.3 s late",
                                            "2.5 s late", "cut, answer", "cut, command", "stalled", "silent"};
constexpr int kSlackMs = 300;         // of the machine, on top of the time-outs
constexpr int kStalledWriteMs = 5000;
constexpr unsigned kEveryByteUpTo = 400;
constexpr unsigned kFramesOfABlock = 15;  // bytes ahead of it
constexpr int kStreamRecordBytes = 6;     // the longest, with the mark of a block
constexpr int kAttempts = 3;

struct Case {
  unsigned call = 0;
  Kind kind = kDrop;
  unsigned byte = 0;  // of the answers, or of the commands
};

struct Outcome {
  unsigned index = 0;  // of the case
  int error = 0;
  bool right = true;
  int ms = 0;
  int attempts = 1;
  bool broken = false;
};

struct Traffic {
  unsigned call = 0;
  uint64_t answered = 0, received = 0;  // bytes of a run without faults
};

int Since(Clock::time_point start) {
  return static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

void Pause(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

// --- A device on a controller of its own -------------------------------------------------------------------

class Session {
 public:
  Session() {
    std::string name = (std::filesystem::temp_directory_path() / "zrv-faults-XXXXXX").string();
    directory_ = mkdtemp(name.data());
    ZRVSerialIO::SetPortDirectory(directory_.c_str());
    bench_ = std::make_unique<Bench>();
    bench_->port = directory_ + "/ttyUSB0";
    Plug();
  }
  ~Session() {
    bench_.reset();
    terminal_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
  }

  Traffic Measure(unsigned index) {
    const Call& call = Calls()[index];
    Ready(call);
    const Traffic before = Passed();
    const bool right = call.run(*bench_);
    if (!right || bench_->device.GetLastError() != ErrorNone) {
      std::fprintf(stderr, "%s fails without a fault\n", call.name);
      std::exit(1);
    }
    Pause(20);  // what was written last has then arrived
    const Traffic after = Passed();
    if ((call.traits & kStreams) != 0) return {index, kStreamRecordBytes, 0};
    return {index, after.answered - before.answered, after.received - before.received};
  }

  // Null, or what is wrong.
  const char* Run(const Case& c, Outcome& outcome) {
    const Call& call = Calls()[c.call];
    if (c.kind == kStall) {  // a second way into the line, opened before the device has it to itself
      device().DisconnectDevice();
      filler_ = open(bench_->port.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }
    Ready(call);
    Arm(call, c);
    const auto start = Clock::now();
    outcome.right = call.run(*bench_);
    outcome.ms = Since(start);
    outcome.error = static_cast<int>(error());
    if (c.kind == kStall) close(filler_);

    const int bound = static_cast<int>(call.boundMs) + (c.kind == kStall ? kStalledWriteMs : 0) + kSlackMs;
    if (outcome.ms > bound) return "took too long";
    if (const char* complaint = JudgeError(call, c, outcome)) return complaint;
    const bool cut = c.kind == kCutAnswer || c.kind == kCutCommand;
    if (cut) {
      if (const char* complaint = Replug(call)) return complaint;
    } else {
      Heal(call, c);
      if (const char* complaint = JudgeRecord(call, c, outcome)) return complaint;
    }
    return JudgeNext(call, cut);
  }

 private:
  ZRVDevice& device() { return bench_->device; }
  ZRVError error() { return bench_->device.GetLastError(); }
  template <typename Use>
  auto Access(Use use) {
    return terminal_->Access(use);
  }

  void Plug() {
    terminal_.reset();
    const zrv::sim::PortOptions port{directory_, "ttyUSB0", 0};
    terminal_ = std::make_unique<PseudoTerminal>(ControllerOptions(), port);
    Access(FeedTracking);
  }

  bool Connected() {
    if (device().IsDeviceConnected()) return true;
    device().ConnectDevice(bench_->port.c_str());
    return error() == ErrorNone;
  }

  void Ready(const Call& call) {
    if (!Connected()) Pause(100), Connected();
    if (call.prepare != nullptr) call.prepare(*bench_);
  }

  Traffic Passed() {
    return Access([](Controller& c) { return Traffic{0, c.faults().bytesAnswered(), c.faults().bytesReceived()}; });
  }

  static Fault Of(const Case& c) {
    switch (c.kind) {
      case kDrop: return Fault::Drop();
      case kOneBit: return Fault::Corrupt(static_cast<uint8_t>(1u << c.byte % 8));
      case kAllBits: return Fault::Corrupt(0xFF);
      case kDouble: return Fault::Duplicate();
      case kLate: return Fault::Delay(0.3);
      case kTooLate: return Fault::Delay(2.5);
      default: return Fault::Cut();
    }
  }

  void Arm(const Call& call, const Case& c) {
    if (c.kind == kStall && c.byte == 0) FillLine();
    Access([&](Controller& controller) {
      auto& faults = controller.faults();
      if (c.kind == kSilence) return faults.StopAnswering();
      if (c.kind == kStall) return faults.StopReceiving(c.byte);
      if (c.kind == kCutCommand) return faults.CutAfterReceiving(c.byte);
      if ((call.traits & kStreams) != 0) return faults.OnCommand(0xB5, Of(c), static_cast<int>(c.byte));
      faults.AtByte(c.byte, Of(c));
    });
  }

  // The controller takes nothing more, and the line holds all it can.
  void FillLine() {
    Access([](Controller& c) { c.faults().StopReceiving(); });
    Pause(10);
    const std::vector<char> junk(4096);
    while (write(filler_, junk.data(), junk.size()) > 0) {
    }
  }

  // Nothing in the protocol tells a value that was changed, or shifted by a byte too many, or an acknowledgement that
  // was given up from the answer that is read all the same.
  static bool Unseen(const Call& call, Kind kind) {
    const bool readsOn = kind == kTooLate && (call.traits & kReadsOn) != 0;
    return readsOn || kind == kOneBit || kind == kAllBits || kind == kDouble;
  }

  // A byte too many, left over behind an answer that was whole, costs the next command its acknowledgement. A value that
  // it shifted, or something late, is right when it is read again.
  void Settle() {
    device().GetDeviceState();
    ZRVDeviceParams params;
    device().GetDeviceParams(&params);
  }

  static const char* JudgeError(const Call& call, const Case& c, const Outcome& outcome) {
    constexpr int kDocumented[] = {0, 4, 5, 6, 7, 12};
    if (std::find(std::begin(kDocumented), std::end(kDocumented), outcome.error) == std::end(kDocumented)) {
      return "undocumented error";
    }
    const auto has = [&](unsigned trait) { return (call.traits & trait) != 0; };
    if (outcome.error != ErrorNone || has(kHides)) return nullptr;
    const bool late = c.kind == kTooLate && !has(kPatient | kReadsOn);
    if (late || c.kind >= kCutAnswer || (c.kind == kDrop && !has(kText))) return "a loss without an error";
    const bool hidden = Unseen(call, c.kind) || has(kText);
    return outcome.right || hidden ? nullptr : "a wrong value without an error";
  }

  // What the call has left behind in the device's own record is true, or was wrong on the line, or will be sent anew.
  const char* JudgeRecord(const Call& call, const Case& c, Outcome& outcome) {
    if (call.undo != nullptr || (call.traits & (kDisconnects | kStreams)) != 0) return nullptr;
    const char* wrong = Access([&](Controller& controller) { return FirstFalseParam(device(), controller); });
    if (wrong == nullptr) return nullptr;
    outcome.right = false;
    return outcome.error == ErrorNone && Unseen(call, c.kind) ? nullptr : wrong;
  }

  const char* Replug(const Call& call) {
    terminal_->CutLink();
    if ((call.traits & kDisconnects) == 0) {
      const auto start = Clock::now();
      if (device().IsDeviceResponding() || error() == ErrorNone) return "no error on a dead link";
      if (Since(start) > kSlackMs) return "waits on a dead link";
    }
    device().DisconnectDevice();
    Plug();
    return Connected() ? nullptr : "does not connect again";
  }

  void Heal(const Call& call, const Case& c) {
    AwaitWhatIsLate(call, c);
    if (c.kind == kDouble || (c.kind == kTooLate && Unseen(call, c.kind))) Settle();
  }

  void AwaitWhatIsLate(const Call& call, const Case& c) {
    Access([](Controller& controller) { controller.faults().Clear(); });
    if (c.kind == kStall) Pause(50);  // it works off what the line held
    const bool patient = (call.traits & kPatient) != 0;  // the end that it has not waited for is still to be reported
    if (c.kind != kLate && c.kind != kTooLate && !patient) return;
    const auto start = Clock::now();
    const bool streams = (call.traits & kStreams) != 0;
    const auto waiting = [](Controller& controller) { return controller.NextEventTime() != Controller::kNever; };
    while (Access(waiting) && Since(start) < (streams ? 2600 : 6000)) {
      Pause(10);
      if (streams) device().ClearInputBuffer();  // a host that goes on reading
    }
    Pause(20);
  }

  // The very next call works, the call itself works, and after it the record is true.
  const char* JudgeNext(const Call& call, bool cut) {
    if (!Connected()) return "does not connect again";
    if ((call.traits & kStreams) != 0 && !cut) {
      device().SetDeviceParam(ParamDataMode, 0);
      if (error() != ErrorNone) return "the stream does not end";
    }
    device().GetDeviceState();
    if (error() != ErrorNone) return "the next call fails";
    if (call.undo == nullptr && call.prepare != nullptr) call.prepare(*bench_);
    const bool right = (call.undo != nullptr ? call.undo : call.run)(*bench_);
    if (error() != ErrorNone || !right) return "the call itself fails afterwards";
    if ((call.traits & kStreams) != 0) device().SetDeviceParam(ParamDataMode, 0);
    if (!Connected()) return "does not connect in the end";
    device().IsDeviceResponding();  // a setter without an acknowledgement has then arrived
    if (const char* wrong = Access([&](Controller& c) { return FirstFalseParam(device(), c); })) return wrong;
    ZRVDeviceParams params;
    device().GetDeviceParams(&params);
    return error() == ErrorNone ? nullptr : "the record cannot be read";
  }

  std::string directory_;
  std::unique_ptr<PseudoTerminal> terminal_;
  std::unique_ptr<Bench> bench_;
  int filler_ = -1;
};

// --- Cases, shared out to processes --------------------------------------------------------------------------

// Every byte, or of a long row the first, the last and some between.
std::vector<unsigned> Positions(uint64_t count) {
  std::vector<unsigned> positions;
  for (unsigned i = 0; i < count; ++i) {
    if (count <= kEveryByteUpTo || i < 40 || i + 10 >= count || i % (count / 20) == 0) positions.push_back(i);
  }
  return positions;
}

std::vector<Case> AllCases(std::span<const Traffic> traffic) {
  std::vector<Case> cases;
  for (unsigned call = 0; call < Calls().size(); ++call) {
    const auto add = [&](Kind kind, uint64_t count) {
      for (const unsigned byte : Positions(count)) cases.push_back({call, kind, byte});
    };
    for (int kind = kDrop; kind <= kCutAnswer; ++kind) add(static_cast<Kind>(kind), traffic[call].answered);
    add(kCutCommand, traffic[call].received + 1);  // ahead of each byte, and behind the last
    if ((Calls()[call].traits & kStreams) != 0) continue;
    add(kStall, 1);
    add(kSilence, 1);
    if (traffic[call].received > kEveryByteUpTo) cases.push_back({call, kStall, kFramesOfABlock});
  }
  std::stable_sort(cases.begin(), cases.end(), [](const Case& a, const Case& b) {  // the longest first
    return Calls()[a.call].boundMs > Calls()[b.call].boundMs;
  });
  return cases;
}

// Calls work(item) for 0 .. count - 1 in so many processes, and returns what each sent.
template <typename Result, typename Work>
std::vector<Result> ShareOut(unsigned count, unsigned processes, Work work) {
  constexpr size_t kShared = sizeof(std::atomic<unsigned>);
  void* shared = mmap(nullptr, kShared, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) std::exit(1);
  auto& next = *new (shared) std::atomic<unsigned>(0);
  int ends[2];
  if (pipe(ends) != 0) std::exit(1);
  for (unsigned i = 0; i < std::min(processes, count); ++i) {
    if (fork() != 0) continue;
    close(ends[0]);
    {
      auto session = std::make_unique<Session>();
      for (unsigned item = next++; item < count; item = next++) {
        const Result result = work(item, session);
        if (write(ends[1], &result, sizeof result) != sizeof result) break;  // below PIPE_BUF: never torn
      }
    }
    _exit(0);
  }
  close(ends[1]);
  std::vector<Result> results;
  Result result;
  while (read(ends[0], &result, sizeof result) == sizeof result) results.push_back(result);
  close(ends[0]);
  while (wait(nullptr) > 0) {
  }
  munmap(shared, kShared);
  return results;
}

std::vector<Traffic> MeasureCalls(unsigned processes) {
  const auto count = static_cast<unsigned>(Calls().size());
  std::vector<Traffic> traffic(count);
  const auto results = ShareOut<Traffic>(count, processes, [](unsigned call, std::unique_ptr<Session>& session) {
    session = std::make_unique<Session>();
    return session->Measure(call);
  });
  if (results.size() != count) std::exit(1);
  for (const Traffic& t : results) traffic[t.call] = t;
  return traffic;
}

std::vector<Outcome> RunCases(std::span<const Case> cases, unsigned processes) {
  return ShareOut<Outcome>(static_cast<unsigned>(cases.size()), processes,
                           [&](unsigned index, std::unique_ptr<Session>& session) {
    const Case& c = cases[index];
    for (int attempt = 1;; ++attempt) {  // a busy machine breaks a time-out of 50 ms
      Outcome outcome = {.index = index, .attempts = attempt};
      const char* complaint = session->Run(c, outcome);
      if (complaint == nullptr) return outcome;
      std::fprintf(stderr, "attempt %d: %s, %s, byte %u: %s (error %d, %d ms)\n", attempt, Calls()[c.call].name,
                   kKindNames[c.kind], c.byte, complaint, outcome.error, outcome.ms);
      outcome.broken = true;
      if (attempt == kAttempts) return outcome;
      session.reset();
      session = std::make_unique<Session>();
    }
  });
}

// --- The table ---------------------------------------------------------------------------------------------

struct Row {
  std::map<int, int> cases;  // by error; 0 is none
  int notRight = 0;          // no error, but a wrong value
  int longestMs = 0;

  void Add(const Outcome& outcome, Kind kind) {
    ++(outcome.error == ErrorNone && !outcome.right ? notRight : cases[outcome.error]);
    if (kind != kStall) longestMs = std::max(longestMs, outcome.ms);
  }
  void Print(const char* name) const {
    std::printf("%-32s longest %5d ms; cases by error:", name, longestMs);
    for (const auto& [error, count] : cases) std::printf(" %d x %d,", error, count);
    std::printf(" not right x %d\n", notRight);
  }
};

int Report(std::span<const Case> cases, std::span<const Outcome> outcomes, double seconds) {
  std::vector<Row> calls(Calls().size()), kinds(kKinds);
  int broken = 0, repeated = 0;
  for (const Outcome& outcome : outcomes) {
    const Case& c = cases[outcome.index];
    calls[c.call].Add(outcome, c.kind);
    kinds[c.kind].Add(outcome, c.kind);
    broken += outcome.broken;
    repeated += !outcome.broken && outcome.attempts > 1;
  }
  for (size_t i = 0; i < calls.size(); ++i) calls[i].Print(Calls()[i].name);
  for (size_t i = 0; i < kinds.size(); ++i) kinds[i].Print(kKindNames[i]);
  std::printf("\n%zu calls, %zu cases in %.0f s; %d broken, %d only once\n", calls.size(), outcomes.size(), seconds,
              broken, repeated);
  return broken == 0 && outcomes.size() == cases.size() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const auto processes = static_cast<unsigned>(argc > 1 ? std::clamp(std::atoi(argv[1]), 1, 1000) : 150);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const auto start = Clock::now();
  const auto traffic = MeasureCalls(processes);
  const auto cases = AllCases(traffic);
  const auto outcomes = RunCases(cases, processes);
  return Report(cases, outcomes, Since(start) / 1000.0);
}
