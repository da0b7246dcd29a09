// The fuzzer's bytes as the arguments of calls. Used up, it gives zeros.
#ifndef ZRV_FUZZ_INPUT_H
#define ZRV_FUZZ_INPUT_H

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <limits>
#include <span>

#include "common/bytes.h"

namespace zrv_fuzz {

class Input {
 public:
  Input(const uint8_t* data, size_t size) : in_({data, size}) {}

  bool Empty() const { return in_.Left() == 0; }
  uint8_t U8() { return in_.U8(); }
  uint16_t U16() { return in_.U16(); }
  uint32_t U32() { return in_.U32(); }
  bool Bool() { return (in_.U8() & 1) != 0; }
  std::span<const uint8_t> Bytes(size_t count) { return in_.Bytes(std::min(count, in_.Left())); }

  // Numbers of every size, the small ones more often.
  uint32_t Count() {
    const uint8_t kind = U8();
    if (kind < 0xE0) return kind;
    if (kind < 0xF8) return U16();
    return kind == 0xFF ? std::numeric_limits<uint32_t>::max() : U32();
  }
  int Int() { return static_cast<int>(Count()); }

  // Eighths up to 16, odd values, and any bits at all.
  float Float() {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kOdd[] = {
        -0.0f, 1e-30f,   3e38f,  -3e38f, kInfinity, -kInfinity, std::numeric_limits<float>::quiet_NaN(),
        1e8f,  20000.0f, 0.001f, 1e9f,   -1e9f};
    const uint8_t kind = U8();
    if (kind < 0xC0) return static_cast<float>(kind - 0x60) / 8.0f;
    if (kind < 0xC0 + std::size(kOdd)) return kOdd[kind - 0xC0];
    if (kind < 0xF0) return static_cast<float>(static_cast<int16_t>(U16())) / 32767.0f;
    return std::bit_cast<float>(U32());
  }

 private:
  zrv::LittleEndianReader in_;
};

}  // namespace zrv_fuzz

#endif
