// Answers that are a row of small fields, each with a time-out of its own.
#ifndef ZRV_DEVICE_FIELD_READER_H
#define ZRV_DEVICE_FIELD_READER_H

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

#include "ZRVDevice.h"
#include "common/bytes.h"

// Reads an answer field by field. A field that does not arrive reads as filler bytes, and the rest is read
// all the same.
class ZRVDevice::FieldReader {
 public:
  explicit FieldReader(ZRVDevice& device) : device_(device) {}

  // The next width bytes (1..4), least significant first.
  uint32_t Uint(unsigned int width) {
    std::array<uint8_t, 4> bytes{};
    arrived_ = device_.ReadBytes(bytes.data(), width, kFieldTimeoutMs);
    Expect(arrived_);
    return zrv::LittleEndianReader(bytes).U32() & (0xFFFFFFFFu >> (32 - 8 * width));
  }

  float Volts() { return static_cast<float>(Uint(1)); }

  // A line of text, cut to fit.
  template <size_t size>
  void Text(char (&field)[size]) {
    std::string line;
    Expect(device_.ReadAnswerLine(line));
    std::snprintf(field, size, "%s", line.c_str());
  }

  bool arrived() const { return arrived_; }    // the last number
  bool complete() const { return complete_; }  // all so far

 private:
  void Expect(bool good) {
    if (good) return;
    device_.lastError_ = ErrorDeviceResponse;
    complete_ = false;
  }

  static constexpr unsigned int kFieldTimeoutMs = 50;

  ZRVDevice& device_;
  bool arrived_ = true;
  bool complete_ = true;
};

#endif
