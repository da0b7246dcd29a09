// The fault table: every call of ZRVDevice against a simulated controller, with one fault of the link at a time, at
// every byte, in memory and on a clock that jumps.
//
//   link_faults            fails when a promise of docs/reliability.md is broken
//   link_faults --table    prints the table too
//   link_faults --real     a sample of the cases at pseudo-terminals, in real time
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string_view>
#include <thread>

#include "tests/reliability/places.h"

namespace {

using namespace zrv::reliability;
using zrv::sim::Controller;
using zrv::sim::Fault;

// --- Cases -----------------------------------------------------------------------------------------------

enum Kind {
  kDrop,
  kOneBit,
  kAllBits,
  kDouble,
  kLate,
  kTooLate,
  kCutAnswer,
  kCutCommand,
  kStall,
  kSilence,
  kChatter,
  kKinds
};
constexpr const char* kKindNames[kKinds] = {"dropped",    "one bit",    "all bits",        "doubled",
                                            "0.3 s late", "2.5 s late", "cut, answer",     "cut, command",
                                            "stalled",    "silent",     "talk without end"};
constexpr double kStalledWrite = 5;  // seconds
constexpr int kMaxFailures = 2;      // of the calls on a healed link
constexpr unsigned kEveryByteUpTo = 400;
constexpr unsigned kFramesOfABlock = 15;    // bytes ahead of it
constexpr unsigned kStreamRecordBytes = 6;  // the longest, with the mark of a block

struct Case {
  const Call* call = nullptr;
  Kind kind = kDrop;
  unsigned byte = 0;  // of the answers, or of the commands
};

struct Outcome {
  ZRVError error = ErrorNone;
  bool right = true;
  double seconds = 0;
  int failures = 0;  // afterwards, on the healed link
};

struct Traffic {
  uint64_t answered = 0, received = 0;  // bytes of a run without faults
};

bool Has(const Case& c, unsigned trait) { return (c.call->traits & trait) != 0; }
bool IsCut(const Case& c) { return c.kind == kCutAnswer || c.kind == kCutCommand; }

// Nothing in the protocol tells a value that was changed, or shifted by a byte too many, or an acknowledgement that
// was given up from the answer that is read all the same.
bool IsUnseen(const Case& c) {
  const bool readsOn = c.kind == kTooLate && Has(c, kReadsOn);
  return readsOn || c.kind == kOneBit || c.kind == kAllBits || c.kind == kDouble;
}

Fault FaultOf(const Case& c) {
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

// --- One device and its controller -------------------------------------------------------------------------

class Session {
 public:
  explicit Session(std::unique_ptr<Place> place) : place_(std::move(place)) { place_->Plug(*bench_); }

  Traffic Measure(const Call& call) {
    Ready(call);
    const Traffic before = Passed();
    if (!call.run(*bench_) || error() != ErrorNone) {
      std::fprintf(stderr, "%s fails without a fault\n", call.name);
      std::exit(1);
    }
    const Traffic after = Passed();
    if ((call.traits & kStreams) != 0) return {kStreamRecordBytes, 0};
    return {after.answered - before.answered, after.received - before.received};
  }

  // Null, or what is wrong.
  const char* Run(const Case& c, Outcome& outcome) {
    Ready(*c.call);
    Arm(c);
    const double start = place_->Now();
    outcome.right = c.call->run(*bench_);
    outcome.seconds = place_->Now() - start;
    outcome.error = error();
    const double bound = c.call->boundMs / 1000.0 + (c.kind == kStall ? kStalledWrite : 0);
    if (outcome.seconds > bound + place_->slack()) return "took too long";
    if (const char* complaint = JudgeError(c, outcome)) return complaint;
    if (const char* complaint = IsCut(c) ? Replug(c) : JudgeRecord(c, outcome)) return complaint;
    Heal(c);
    return JudgeNext(c, outcome);
  }

 private:
  ZRVDevice& device() { return bench_->device; }
  ZRVError error() { return device().GetLastError(); }

  bool Connected() {
    if (!device().IsDeviceConnected()) device().ConnectDevice(bench_->port.c_str());
    return device().IsDeviceConnected();
  }

  void Ready(const Call& call) {
    Connected();
    if (call.prepare != nullptr) call.prepare(*bench_);
  }

  Traffic Passed() {
    Traffic traffic;
    place_->Access([&](Controller& c) { traffic = {c.faults().bytesAnswered(), c.faults().bytesReceived()}; });
    return traffic;
  }

  void Arm(const Case& c) {
    place_->Access([&](Controller& controller) {
      auto& faults = controller.faults();
      if (c.kind == kSilence) return faults.StopAnswering();
      if (c.kind == kChatter) return faults.StartChatter({});
      if (c.kind == kStall) return faults.StopReceiving(c.byte);
      if (c.kind == kCutCommand) return faults.CutAfterReceiving(c.byte);
      if (Has(c, kStreams)) return faults.OnCommand(0xB5, FaultOf(c), static_cast<int>(c.byte));
      faults.AtByte(c.byte, FaultOf(c));
    });
    if (c.kind == kChatter) place_->Wait(0.01);  // it is being talked at when the call begins
    if (c.kind == kStall && c.byte == 0 && !Has(c, kDisconnects)) place_->FillLine();
  }

  static const char* JudgeError(const Case& c, const Outcome& outcome) {
    constexpr ZRVError kDocumented[] = {ErrorNone,        ErrorSerialComm,     ErrorDeviceResponse,
                                        ErrorSerialReset, ErrorBadAcknowledge, ErrorNoDeviceFound};
    if (std::find(std::begin(kDocumented), std::end(kDocumented), outcome.error) == std::end(kDocumented)) {
      return "undocumented error";
    }
    if (outcome.error != ErrorNone || Has(c, kHides) || c.kind == kChatter) return nullptr;
    const bool late = c.kind == kTooLate && !Has(c, kPatient | kReadsOn);
    if (late || c.kind >= kCutAnswer || (c.kind == kDrop && !Has(c, kText))) return "a loss without an error";
    return outcome.right || IsUnseen(c) || Has(c, kText) ? nullptr : "a wrong value without an error";
  }

  // What the call has left behind in the device's own record is true, or not marked as valid, or was wrong on the line.
  // A setter's acknowledgement that was lost leaves it untrue, as said where setters are described.
  const char* JudgeRecord(const Case& c, Outcome& outcome) {
    if (c.call->undo != nullptr || Has(c, kDisconnects | kStreams)) return nullptr;
    const char* wrong = FirstFalse();
    if (wrong == nullptr || !RecordIsValid(device())) return nullptr;
    outcome.right = false;
    return IsUnseen(c) || c.kind == kChatter ? nullptr : wrong;
  }

  const char* FirstFalse() {
    const char* wrong = nullptr;
    place_->Access([&](Controller& controller) { wrong = FirstFalseParam(device(), controller); });
    return wrong;
  }

  const char* Replug(const Case& c) {
    place_->Cut();
    if (!Has(c, kDisconnects)) {
      const double start = place_->Now();
      if (device().IsDeviceResponding() || error() == ErrorNone) return "no error on a dead link";
      if (place_->Now() - start > place_->slack()) return "waits on a dead link";
    }
    device().DisconnectDevice();
    place_->Plug(*bench_);
    return Connected() ? nullptr : "does not connect again";
  }

  // The line is released, and what comes late, or is reported at the end of a playback, has come.
  void Heal(const Case& c) {
    place_->Access([](Controller& controller) { controller.faults().Clear(); });
    if (Has(c, kStreams)) return place_->Wait(c.kind == kTooLate ? 2.6 : 0.4);
    for (double waited = 0; waited < 12; waited += 0.1) {
      bool pending = false;
      place_->Access([&](Controller& controller) { pending = controller.NextEventTime() != Controller::kNever; });
      if (!pending) return;
      place_->Wait(0.1);
    }
  }

  // Repeats a call until it works; what fails counts.
  template <typename Use>
  bool Works(Outcome& outcome, Use use) {
    for (; outcome.failures <= kMaxFailures; ++outcome.failures) {
      const bool right = use();
      if (error() == ErrorNone && right) return true;
      place_->Settle(device());
    }
    return false;
  }

  // Two calls fail at most. Then the state, the whole record and the call itself are right, and so is the record.
  const char* JudgeNext(const Case& c, Outcome& outcome) {
    const Call& call = *c.call;
    if (!device().IsDeviceConnected() && !Works(outcome, [&] { return Connected(); })) return "does not connect again";
    if (Has(c, kStreams)) {
      const auto silence = [&] {
        device().SetDeviceParam(ParamDataMode, 0);
        return true;
      };
      if (!Works(outcome, silence)) return "the stream does not end";
    }
    if (!Works(outcome, [&] {
          device().GetDeviceState();
          return true;
        }))
      return "a third call fails";
    const auto read = [&] {
      ZRVDeviceParams params;
      device().GetDeviceParams(&params);
      return true;
    };
    if (!Works(outcome, read)) return "the record cannot be read";
    if (const char* wrong = FirstFalse()) return wrong;
    const auto itself = [&] {
      if (call.undo == nullptr && call.prepare != nullptr) call.prepare(*bench_);
      return (call.undo != nullptr ? call.undo : call.run)(*bench_);
    };
    if (!Works(outcome, itself)) return "the call itself fails afterwards";
    if (Has(c, kStreams)) device().SetDeviceParam(ParamDataMode, 0);
    if (!Connected()) return "does not connect in the end";
    device().IsDeviceResponding();  // a setter without an acknowledgement has then arrived
    return FirstFalse();
  }

  // Behind pointers: the place outlives the device.
  std::unique_ptr<Place> place_;
  std::unique_ptr<Bench> bench_ = std::make_unique<Bench>();
};

// --- All of them -------------------------------------------------------------------------------------------

// Every byte, or of a long row the first, the last and some between.
std::vector<unsigned> Positions(uint64_t count) {
  std::vector<unsigned> positions;
  for (unsigned i = 0; i < count; ++i) {
    if (count <= kEveryByteUpTo || i < 40 || i + 10 >= count || i % (count / 20) == 0) positions.push_back(i);
  }
  return positions;
}

std::vector<Case> AllCases() {
  std::vector<Case> cases;
  for (const Call& call : Calls()) {
    const Traffic traffic = Session(InMemory()).Measure(call);
    const auto add = [&](Kind kind, uint64_t count) {
      for (const unsigned byte : Positions(count)) cases.push_back({&call, kind, byte});
    };
    for (int kind = kDrop; kind <= kCutAnswer; ++kind) add(static_cast<Kind>(kind), traffic.answered);
    add(kCutCommand, traffic.received + 1);  // ahead of each byte, and behind the last
    if ((call.traits & kStreams) != 0) continue;
    for (const Kind kind : {kStall, kSilence, kChatter}) add(kind, 1);
    if (traffic.received > kEveryByteUpTo) cases.push_back({&call, kStall, kFramesOfABlock});
  }
  return cases;
}

struct Row {
  std::map<int, int> cases;     // by error; 0 is none
  int notRight = 0;             // no error, but a wrong value
  std::map<int, int> failures;  // cases by the calls that failed afterwards
  double longest = 0;

  void Add(const Outcome& outcome) {
    ++(outcome.error == ErrorNone && !outcome.right ? notRight : cases[static_cast<int>(outcome.error)]);
    ++failures[outcome.failures];
    longest = std::max(longest, outcome.seconds);
  }
  void Print(const char* name) const {
    std::printf("%-32s longest %6.2f s; cases by error:", name, longest);
    for (const auto& [error, count] : cases) std::printf(" %d x %d,", error, count);
    std::printf(" not right x %d; failed afterwards:", notRight);
    for (const auto& [calls, count] : failures) std::printf(" %d x %d", calls, count);
    std::printf("\n");
  }
};

bool Holds(Session& session, const Case& c, Outcome& outcome) {
  const char* complaint = session.Run(c, outcome);
  if (complaint == nullptr) return true;
  std::fprintf(stderr, "%s, %s, byte %u: %s (error %u, %.3f s, %d failed afterwards)\n", c.call->name,
               kKindNames[c.kind], c.byte, complaint, outcome.error, outcome.seconds, outcome.failures);
  return false;
}

int RunAll(bool table) {
  const auto start = std::chrono::steady_clock::now();
  const auto cases = AllCases();
  std::map<const Call*, Row> calls;
  Row kinds[kKinds];
  int broken = 0;
  auto session = std::make_unique<Session>(InMemory());
  for (const Case& c : cases) {
    Outcome outcome;
    if (!Holds(*session, c, outcome)) {
      ++broken;
      session = std::make_unique<Session>(InMemory());
    }
    calls[c.call].Add(outcome);
    kinds[c.kind].Add(outcome);
  }
  for (const Call& call : Calls()) {
    if (table) calls[&call].Print(call.name);
  }
  for (int kind = 0; kind < kKinds; ++kind) kinds[kind].Print(kKindNames[kind]);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("%zu calls, %zu cases in %.1f s; %d broken\n", Calls().size(), cases.size(), seconds, broken);
  return broken == 0 ? 0 : 1;
}

// One case in so many, on so many links at once: most of them wait. Discovery looks for its ports elsewhere, and a line
// that takes nothing needs a second way into it.
int RunSample() {
  constexpr size_t kOneIn = 61;
  constexpr unsigned kLinks = 16;
  const auto cases = AllCases();
  std::atomic<size_t> next = 0;
  std::atomic<int> broken = 0, run = 0;
  std::vector<std::thread> links;
  for (unsigned link = 0; link < kLinks; ++link) {
    links.emplace_back([&] {
      auto session = std::make_unique<Session>(AtPseudoTerminal());
      for (size_t i = next += kOneIn; i < cases.size(); i = next += kOneIn) {
        if (cases[i].call == &Calls().front() || cases[i].kind == kStall) continue;
        Outcome outcome;
        ++run;
        if (Holds(*session, cases[i], outcome)) continue;
        ++broken;
        session = std::make_unique<Session>(AtPseudoTerminal());
      }
    });
  }
  for (std::thread& link : links) link.join();
  std::printf("%d cases at pseudo-terminals; %d broken\n", run.load(), broken.load());
  return broken == 0 && run > 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view option = argc > 1 ? argv[1] : "";
  return option == "--real" ? RunSample() : RunAll(option == "--table");
}
