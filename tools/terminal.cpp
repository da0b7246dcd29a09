#include "terminal.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <thread>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace zrvtool {
namespace {

volatile std::sig_atomic_t stopRequested = 0;

void OnStopSignal(int) { stopRequested = 1; }

bool IsTerminal(std::FILE* stream) {
#ifdef _WIN32
  return _isatty(_fileno(stream)) != 0;
#else
  return isatty(fileno(stream)) != 0;
#endif
}

}  // namespace

bool OutputIsTerminal() { return IsTerminal(stdout); }
bool ErrorsAreTerminal() { return IsTerminal(stderr); }

void CatchStopSignals() {
  std::signal(SIGINT, OnStopSignal);
  std::signal(SIGTERM, OnStopSignal);
#ifndef _WIN32
  std::signal(SIGPIPE, OnStopSignal);
  if (std::signal(SIGHUP, OnStopSignal) == SIG_IGN) std::signal(SIGHUP, SIG_IGN);  // nohup
#endif
}

bool StopRequested() { return stopRequested != 0; }

bool SleepUnlessStopped(std::chrono::milliseconds time) {
  constexpr std::chrono::milliseconds kSlice{20};
  const auto end = std::chrono::steady_clock::now() + time;
  while (!StopRequested() && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(
        std::min<std::chrono::steady_clock::duration>(kSlice, end - std::chrono::steady_clock::now()));
  return !StopRequested();
}

bool WaitWithin(double seconds, const StopWatch& watch, std::chrono::milliseconds interval) {
  if (seconds <= 0) return SleepUnlessStopped(interval);
  const double left = std::max(0.0, seconds - watch.Seconds());
  const double wait = std::min(left, std::chrono::duration<double>(interval).count());
  return SleepUnlessStopped(std::chrono::milliseconds(static_cast<int>(std::ceil(1000 * wait)))) &&
         watch.Seconds() < seconds;
}

void StatusLine::Show(const std::string& text) {
  if (!ErrorsAreTerminal()) return;
  std::fprintf(stderr, "\r%s\x1b[K", text.c_str());
  std::fflush(stderr);
  shown_ = true;
}

void StatusLine::Clear() {
  if (!shown_) return;
  std::fputs("\r\x1b[K", stderr);
  std::fflush(stderr);
  shown_ = false;
}

std::string Bar(double share, int width) {
  const int full = static_cast<int>(std::clamp(share, 0.0, 1.0) * width + 0.5);
  std::string bar(static_cast<std::size_t>(width), '.');
  std::fill_n(bar.begin(), full, '#');
  return '[' + bar + ']';
}

}  // namespace zrvtool
