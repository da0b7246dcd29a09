// Multi-byte values in byte streams, each width and byte order in one place.
#ifndef ZRV_COMMON_BYTES_H
#define ZRV_COMMON_BYTES_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zrv {

enum class ByteOrder {
  little,
  big
};

// Takes values from a byte sequence. A read past the end gives 0, takes nothing and clears ok().
template <ByteOrder order>
class ByteReader {
 public:
  explicit ByteReader(std::span<const uint8_t> bytes) : bytes_(bytes) {}

  uint8_t U8() { return static_cast<uint8_t>(Take(1)); }
  uint16_t U16() { return static_cast<uint16_t>(Take(2)); }
  uint32_t U24() { return static_cast<uint32_t>(Take(3)); }
  uint32_t U32() { return static_cast<uint32_t>(Take(4)); }
  uint64_t U64() { return Take(8); }
  int16_t S16() { return static_cast<int16_t>(U16()); }
  double F64() { return std::bit_cast<double>(U64()); }

  // False when fewer bytes are left; takes nothing then.
  bool Skip(size_t count) { return !Bytes(count).empty() || count == 0; }

  // The next count bytes, or nothing when fewer are left.
  std::span<const uint8_t> Bytes(size_t count) {
    if (count > bytes_.size()) {
      ok_ = false;
      return {};
    }
    const auto taken = bytes_.first(count);
    bytes_ = bytes_.subspan(count);
    return taken;
  }

  size_t Left() const { return bytes_.size(); }
  bool ok() const { return ok_; }

 private:
  uint64_t Take(size_t width) {
    uint64_t value = 0;
    const auto taken = Bytes(width);
    for (size_t i = 0; i < taken.size(); ++i) {
      const size_t shift = order == ByteOrder::little ? i : taken.size() - 1 - i;
      value |= static_cast<uint64_t>(taken[i]) << (8 * shift);
    }
    return value;
  }

  std::span<const uint8_t> bytes_;
  bool ok_ = true;
};

using LittleEndianReader = ByteReader<ByteOrder::little>;
using BigEndianReader = ByteReader<ByteOrder::big>;

// Puts values into a byte sequence, least significant byte first: nothing of ours is written in the other order. A
// write past the end writes nothing and clears ok().
class LittleEndianWriter {
 public:
  explicit LittleEndianWriter(std::span<uint8_t> bytes) : bytes_(bytes) {}

  void U8(uint32_t value) { Put(value, 1); }
  void U16(uint32_t value) { Put(value, 2); }
  void U24(uint32_t value) { Put(value, 3); }
  void U32(uint32_t value) { Put(value, 4); }
  void U64(uint64_t value) { Put(value, 8); }
  void F64(double value) { Put(std::bit_cast<uint64_t>(value), 8); }

  size_t Written() const { return written_; }
  bool ok() const { return ok_; }

 private:
  void Put(uint64_t value, size_t width) {
    if (width > bytes_.size() - written_) {
      ok_ = false;
      return;
    }
    for (size_t i = 0; i < width; ++i) bytes_[written_ + i] = static_cast<uint8_t>(value >> (8 * i));
    written_ += width;
  }

  std::span<uint8_t> bytes_;
  size_t written_ = 0;
  bool ok_ = true;
};

}  // namespace zrv

#endif
