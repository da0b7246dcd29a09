// Answers that are a row of small fields, each with a time-out of its own.
#ifndef ZRV_DEVICE_FIELD_READER_H
#define ZRV_DEVICE_FIELD_READER_H

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

#include "device/link.h"

namespace zrv {

// Reads an answer field by field into two records: the device's own and the caller's. A field that does not arrive
// stays as it was in both, sets ErrorDeviceResponse, and the rest is read all the same.
template <typename Record>
class FieldReader {
 public:
  FieldReader(Link& link, Record& own, Record& callers) : link_(link), records_{&own, &callers} {}

  // The next width bytes (1..4), least significant first, given to store(record, count).
  template <typename Store>
  void Take(unsigned int width, Store store) {
    std::array<uint8_t, 4> bytes{};
    if (!Arrived(link_.Read(std::span(bytes).first(width), kFieldTimeoutMs))) return;
    const uint32_t count = LittleEndianReader(bytes).U32();
    for (Record* record : records_) store(*record, count);
  }

  // A whole number or a code.
  template <typename T, typename Holder>
  void Whole(unsigned int width, T Holder::*field) {
    Take(width, [field](Record& record, uint32_t count) { record.*field = static_cast<T>(count); });
  }

  // A line of text, cut to fit.
  template <typename Holder, size_t size>
  void Text(char (Holder::*field)[size]) {
    const auto line = link_.ReadLine();
    if (!Arrived(line.has_value())) return;
    for (Record* record : records_) std::snprintf(record->*field, size, "%s", line->c_str());
  }

  bool complete() const { return complete_; }  // all so far

 private:
  bool Arrived(bool good) {
    if (good) return true;
    link_.error = ErrorDeviceResponse;
    complete_ = false;
    return false;
  }

  static constexpr unsigned int kFieldTimeoutMs = 50;

  Link& link_;
  Record* records_[2];
  bool complete_ = true;
};

}  // namespace zrv

#endif
