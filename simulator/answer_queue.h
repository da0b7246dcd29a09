// Bytes on their way to the host, each due at a time, in order.
#ifndef ZRV_SIMULATOR_ANSWER_QUEUE_H
#define ZRV_SIMULATOR_ANSWER_QUEUE_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>

namespace zrv::sim {

class AnswerQueue {
 public:
  // What a host that never reads can pile up; more is lost, as it is on a real line.
  static constexpr size_t kMaxBytes = 16 * 1024 * 1024;

  // A byte never overtakes the one before it, whatever time is asked for.
  void Push(uint8_t byte, double due);
  size_t Due(double now) const;
  size_t Take(std::span<uint8_t> buffer, double now);
  // When the byte at the front is due; infinity when empty.
  double NextTime() const;
  size_t size() const { return bytes_.size(); }
  void DropDue(double now);
  void Clear();

 private:
  struct Run {  // neighbours that are due together
    double due;
    size_t count;
  };
  std::deque<uint8_t> bytes_;
  std::deque<Run> runs_;
};

}  // namespace zrv::sim

#endif
