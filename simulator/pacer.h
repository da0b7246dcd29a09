// Lets bytes through at a line's speed.
#ifndef ZRV_SIMULATOR_PACER_H
#define ZRV_SIMULATOR_PACER_H

#include <algorithm>
#include <cstddef>
#include <limits>

namespace zrv::sim {

class Pacer {
 public:
  // 10 bits on the line for each byte; 0 baud: no limit.
  explicit Pacer(unsigned int baudRate) : bytesPerSecond_(baudRate / 10.0) {}

  bool limited() const { return bytesPerSecond_ > 0; }
  // A millisecond's worth, about the finest that poll() can wait for.
  size_t Batch() const { return std::max<size_t>(1, static_cast<size_t>(bytesPerSecond_ / 1000)); }
  // Bytes that may pass now.
  size_t Allowed(double now) const {
    if (bytesPerSecond_ == 0) return std::numeric_limits<size_t>::max();
    return static_cast<size_t>(std::max(0.0, (now - free_) * bytesPerSecond_));
  }
  void Passed(size_t bytes) {
    if (bytesPerSecond_ > 0) free_ += static_cast<double>(bytes) / bytesPerSecond_;
  }
  // Nothing is waiting: time that passes unused is lost, as it is on a line.
  void Idle(double now) { free_ = std::max(free_, now); }
  // When so many bytes may pass; in the past when they may already.
  double TimeFor(size_t bytes) const {
    return bytesPerSecond_ == 0 ? 0 : free_ + static_cast<double>(bytes) / bytesPerSecond_;
  }

 private:
  double bytesPerSecond_;
  double free_ = 0;  // the line is busy until then
};

}  // namespace zrv::sim

#endif
