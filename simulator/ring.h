// The newest entries of an endless series.
#ifndef ZRV_SIMULATOR_RING_H
#define ZRV_SIMULATOR_RING_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zrv::sim {

template <typename T>
class Ring {
 public:
  explicit Ring(size_t capacity) : capacity_(capacity) {}

  void Push(const T& value) {
    ++pushed_;
    if (capacity_ == 0) return;
    if (entries_.size() < capacity_) {
      entries_.push_back(value);
      return;
    }
    entries_[oldest_] = value;
    oldest_ = (oldest_ + 1) % capacity_;
  }

  size_t size() const { return entries_.size(); }
  // All that ever came, also what is forgotten by now.
  uint64_t pushed() const { return pushed_; }
  // 0 is the newest; age < size().
  const T& FromNewest(size_t age) const { return entries_[(oldest_ + entries_.size() - 1 - age) % entries_.size()]; }
  T& Newest() { return entries_[(oldest_ + entries_.size() - 1) % entries_.size()]; }  // when there is one

  // Oldest first.
  std::vector<T> Copy() const {
    std::vector<T> copy;
    copy.reserve(entries_.size());
    for (size_t age = entries_.size(); age-- > 0;) copy.push_back(FromNewest(age));
    return copy;
  }

  void Clear() {
    entries_.clear();
    oldest_ = 0;
  }

 private:
  size_t capacity_;
  size_t oldest_ = 0;
  uint64_t pushed_ = 0;
  std::vector<T> entries_;
};

}  // namespace zrv::sim

#endif
