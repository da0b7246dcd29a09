// The terminal the tool runs on: whether a person watches, and their Ctrl-C.
#ifndef ZRV_TOOLS_TERMINAL_H
#define ZRV_TOOLS_TERMINAL_H

#include <chrono>
#include <string>

namespace zrvtool {

bool OutputIsTerminal();
bool ErrorsAreTerminal();

// From here on Ctrl-C, SIGTERM, a closed terminal and a reader that leaves the pipe only make StopRequested() true,
// so that loops end in order: a controller would go on playing by itself.
void CatchStopSignals();
bool StopRequested();

// Sleeps, but not past a stop request. False when one came.
bool SleepUnlessStopped(std::chrono::milliseconds time);

// Seconds since it was made.
class StopWatch {
 public:
  double Seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count(); }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Sleeps for the interval, or for what is left of so many seconds (0: no limit). False when these are over or a
// stop was requested.
bool WaitWithin(double seconds, const StopWatch& watch, std::chrono::milliseconds interval);

// One line on standard error that is written over and over; nothing unless a person watches. Gone when the
// object is.
class StatusLine {
 public:
  StatusLine() = default;
  ~StatusLine() { Clear(); }
  StatusLine(const StatusLine&) = delete;
  StatusLine& operator=(const StatusLine&) = delete;
  void Show(const std::string& text);
  void Clear();

 private:
  bool shown_ = false;
};

// "[#####.....]" for a share of 0..1.
std::string Bar(double share, int width);

}  // namespace zrvtool

#endif
