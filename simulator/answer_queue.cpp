#include "simulator/answer_queue.h"

#include <algorithm>
#include <limits>

namespace zrv::sim {

void AnswerQueue::Push(uint8_t byte, double due) {
  if (bytes_.size() >= kMaxBytes) return;
  bytes_.push_back(byte);
  if (runs_.empty() || due > runs_.back().due) {
    runs_.push_back({due, 1});
  } else {
    ++runs_.back().count;
  }
}

size_t AnswerQueue::Due(double now) const {
  size_t due = 0;
  for (const Run& run : runs_) {
    if (run.due > now) break;
    due += run.count;
  }
  return due;
}

size_t AnswerQueue::Take(std::span<uint8_t> buffer, double now) {
  size_t taken = 0;
  while (taken < buffer.size() && !runs_.empty() && runs_.front().due <= now) {
    Run& run = runs_.front();
    const size_t count = std::min(run.count, buffer.size() - taken);
    const auto end = bytes_.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(bytes_.begin(), end, buffer.begin() + static_cast<std::ptrdiff_t>(taken));
    bytes_.erase(bytes_.begin(), end);
    run.count -= count;
    taken += count;
    if (run.count == 0) runs_.pop_front();
  }
  return taken;
}

double AnswerQueue::NextTime() const {
  return runs_.empty() ? std::numeric_limits<double>::infinity() : runs_.front().due;
}

void AnswerQueue::DropDue(double now) {
  while (!runs_.empty() && runs_.front().due <= now) {
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(runs_.front().count));
    runs_.pop_front();
  }
}

void AnswerQueue::Clear() {
  bytes_.clear();
  runs_.clear();
}

}  // namespace zrv::sim
