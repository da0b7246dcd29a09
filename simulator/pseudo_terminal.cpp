#include "simulator/pseudo_terminal.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <ctime>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "simulator/clock.h"
#include "simulator/pacer.h"
#include "simulator/terminal_posix.h"

namespace zrv::sim {

namespace {

constexpr size_t kChunk = 4096;      // what a pseudo-terminal passes at once
constexpr double kLongestWait = 60;  // seconds
// How often to look for a client while nobody has the port open. The controller does not hold it open itself: it
// would not see a client leave, and would go on answering nobody. What a client left unread in the terminal may still
// reach the next one, as on a real line; connecting drops it.
constexpr double kAbsentWait = 0.01;
constexpr std::chrono::milliseconds kLastWords{20};

// Finer than the milliseconds of poll, each of which would slow a line of real speed by a tenth of a kilobyte.
timespec Duration(double seconds) {
  const auto ns = static_cast<int64_t>(std::ceil(std::clamp(seconds, 0.0, kLongestWait) * 1e9));
  return {static_cast<time_t>(ns / 1'000'000'000), static_cast<long>(ns % 1'000'000'000)};
}

}  // namespace

struct PseudoTerminal::Server {
  Server(const Options& options, const PortOptions& port)
      : controller(options), terminal(OpenTerminal()), input(port.baudRate), output(port.baudRate) {
    if (!port.portDirectory.empty()) link.emplace(port.portDirectory, port.portName, terminal.path);
    portPath = link ? link->path().string() : terminal.path;
    thread = std::thread([this] { Serve(); });
  }

  ~Server() {
    stopping = true;
    wake.Signal();
    Join();
  }

  void Join() {
    if (thread.joinable()) thread.join();
  }

  // Answers go out before the next bytes are looked at, so that a command is answered without delay.
  void Serve() {
    while (!stopping) {
      const bool linked = Refill();
      Send();
      if (!linked) return Unplug();
      if (!Receive()) Sleep();
    }
  }

  // Fetches what the controller has to say; false when its link is cut.
  bool Refill() {
    const std::lock_guard lock(mutex);
    controller.Advance(clock.Now());
    if (pending.empty()) {
      pending.resize(std::min(kChunk, controller.Available()));
      controller.Take(pending);
    }
    nextEvent = controller.NextEventTime();
    deaf = controller.faults().deaf();
    return !controller.faults().linkCut();
  }

  void Send() {
    blocked = said = false;
    if (!present) pending.clear();  // nobody listens
    if (pending.empty()) return output.Idle(clock.Now());
    const size_t count = std::min(pending.size(), output.Allowed(clock.Now()));
    if (count == 0) return;
    const ssize_t sent = write(terminal.controllerEnd.get(), pending.data(), count);
    said = sent > 0;
    if (sent > 0) {
      output.Passed(static_cast<size_t>(sent));
      pending.erase(pending.begin(), pending.begin() + sent);
    }
    blocked = sent < 0 && errno == EAGAIN;
    if (sent < 0 && errno == EIO) pending.clear();
  }

  // True when something was read, and there may be more.
  bool Receive() {
    if (deaf) return false;
    std::array<uint8_t, kChunk> bytes;
    const double now = clock.Now();
    const size_t allowed = std::min(bytes.size(), MayRead(now));
    if (allowed == 0) return false;
    const ssize_t count = read(terminal.controllerEnd.get(), bytes.data(), allowed);
    present = count > 0 || errno == EAGAIN;
    if (count <= 0) return false;
    input.Passed(static_cast<size_t>(count));
    const std::lock_guard lock(mutex);
    controller.Receive(std::span(bytes).first(static_cast<size_t>(count)), now);
    return true;
  }

  // Bytes that the line has had time to bring; when it is still busy with them, none, and inputTime says
  // when there will be.
  size_t MayRead(double now) {
    inputTime = Controller::kNever;
    if (!input.limited()) return kChunk;
    int queued = 0;
    if (ioctl(terminal.controllerEnd.get(), FIONREAD, &queued) != 0 || queued <= 0) {
      inputBusy = false;
      input.Idle(now);
      return input.Batch();  // the read tells whether the port is open at all, and may find what has just come
    }
    if (!std::exchange(inputBusy, true)) input.Idle(now);
    const size_t batch = std::min(static_cast<size_t>(queued), input.Batch());
    const size_t allowed = input.Allowed(now);
    if (allowed >= batch) return allowed;
    inputTime = input.TimeFor(batch);
    return 0;
  }

  // When to look again though nothing came from outside.
  double NextTime() {
    double next = inputTime;
    if (pending.empty()) next = std::min(next, nextEvent);
    if (!pending.empty() && !blocked) {
      next = std::min(next, output.TimeFor(std::min(pending.size(), output.Batch())));
    }
    return present ? next : std::min(next, clock.Now() + kAbsentWait);
  }

  void Sleep() {
    const bool listen = inputTime == Controller::kNever && !deaf;
    const auto events = static_cast<short>((listen ? POLLIN : 0) | (blocked ? POLLOUT : 0));
    const int fd = present && events != 0 ? terminal.controllerEnd.get() : -1;
    std::array<pollfd, 2> fds = {{{wake.readable(), POLLIN, 0}, {fd, events, 0}}};
    const timespec wait = Duration(NextTime() - clock.Now());
    const int ready = ppoll(fds.data(), fds.size(), &wait, nullptr);
    if (ready > 0 && fds[0].revents != 0) wake.Drain();
  }

  // A hang-up takes along what the client has not read: what was said just before is given the time to arrive.
  void Unplug() {
    if (said) std::this_thread::sleep_for(kLastWords);
    link.reset();
    terminal.controllerEnd.Close();
    running = false;
  }

  RealClock clock;
  std::mutex mutex;  // guards controller
  Controller controller;

  Terminal terminal;
  std::optional<PortLink> link;
  std::string portPath;
  WakeUp wake;
  std::atomic<bool> stopping = false, running = true;

  // Of the serving thread alone.
  Pacer input, output;
  std::vector<uint8_t> pending;  // taken from the controller, not yet sent
  bool blocked = false;          // the terminal takes no more for now
  bool said = false;             // the last Send() sent something
  bool deaf = false;
  bool present = true;  // somebody has the port open
  bool inputBusy = false;
  double inputTime = Controller::kNever;
  double nextEvent = Controller::kNever;

  std::thread thread;
};

PseudoTerminal::PseudoTerminal(const Options& options, const PortOptions& port)
    : server_(std::make_unique<Server>(options, port)) {}

PseudoTerminal::~PseudoTerminal() = default;

const std::string& PseudoTerminal::Port() const { return server_->portPath; }
const std::string& PseudoTerminal::TerminalPath() const { return server_->terminal.path; }
bool PseudoTerminal::Running() const { return server_->running; }

void PseudoTerminal::CutLink() {
  Access([](Controller& controller) { controller.faults().CutLink(); });
  server_->Join();  // the thread ends once it finds the link cut
}

PseudoTerminal::Locked::Locked(PseudoTerminal& terminal) : server_(*terminal.server_), lock_(server_.mutex) {
  server_.controller.Advance(server_.clock.Now());
}

// The caller may have changed what is to be sent next.
PseudoTerminal::Locked::~Locked() { server_.wake.Signal(); }

Controller& PseudoTerminal::Locked::controller() const { return server_.controller; }

}  // namespace zrv::sim
