// An array of exactly the room that a call is promised, with guards around it that nobody may touch.
#ifndef ZRV_FUZZ_GUARDED_H
#define ZRV_FUZZ_GUARDED_H

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <vector>

namespace zrv_fuzz {

template <typename T>
class Guarded {
 public:
  explicit Guarded(size_t room) : room_(room), bytes_((room + 2 * kGuard) * sizeof(T)) {
    std::fill_n(bytes_.begin(), kGuardBytes, kMark);
    std::fill_n(bytes_.rbegin(), kGuardBytes, kMark);
  }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;
  ~Guarded() {
    const auto whole = [](unsigned char byte) { return byte == kMark; };
    if (!std::all_of(bytes_.begin(), bytes_.begin() + kGuardBytes, whole) ||
        !std::all_of(bytes_.rbegin(), bytes_.rbegin() + kGuardBytes, whole)) {
      std::abort();
    }
  }

  T* data() { return reinterpret_cast<T*>(bytes_.data()) + kGuard; }
  size_t size() const { return room_; }
  T& operator[](size_t i) { return data()[i]; }

 private:
  static constexpr size_t kGuard = 16;
  static constexpr auto kGuardBytes = static_cast<std::ptrdiff_t>(kGuard * sizeof(T));
  static constexpr unsigned char kMark = 0xA7;
  size_t room_;
  std::vector<unsigned char> bytes_;
};

struct Samples {
  explicit Samples(size_t room) : x(room), y(room), m(room), index(room) {}
  Guarded<float> x, y;
  Guarded<unsigned char> m;
  Guarded<unsigned> index;
};

inline void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace zrv_fuzz

#endif
