// The time a simulated controller lives in: real, or a number that a test moves.
#ifndef ZRV_SIMULATOR_CLOCK_H
#define ZRV_SIMULATOR_CLOCK_H

#include <chrono>
#include <thread>

namespace zrv::sim {

class Clock {
 public:
  virtual ~Clock() = default;
  virtual double Now() = 0;                    // seconds, never backwards
  virtual void WaitUntil(double seconds) = 0;  // returns at once when that is past
};

class RealClock : public Clock {
 public:
  double Now() override { return std::chrono::duration<double>(Steady::now() - start_).count(); }
  void WaitUntil(double seconds) override {
    std::this_thread::sleep_until(start_ +
                                  std::chrono::duration_cast<Steady::duration>(std::chrono::duration<double>(seconds)));
  }

 private:
  using Steady = std::chrono::steady_clock;
  Steady::time_point start_ = Steady::now();
};

// Waiting takes no time: the clock just moves on.
class VirtualClock : public Clock {
 public:
  double Now() override { return now_; }
  void WaitUntil(double seconds) override {
    if (seconds > now_) now_ = seconds;
  }
  void Advance(double seconds) { now_ += seconds; }

 private:
  double now_ = 0;
};

}  // namespace zrv::sim

#endif
