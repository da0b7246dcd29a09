// A transport that answers each command as a script says, and keeps what was written as text.
#ifndef ZRV_TESTS_SCRIPTED_TRANSPORT_H
#define ZRV_TESTS_SCRIPTED_TRANSPORT_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <deque>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ZRVDevice.h"

namespace zrv::testing {

using Bytes = std::vector<uint8_t>;

inline std::string Hex(const uint8_t* bytes, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%s%02X", i > 0 ? " " : "", static_cast<unsigned>(bytes[i]));
    text += digits;
  }
  return text;
}

inline Bytes operator+(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

inline Bytes Text(const std::string& text) { return Bytes(text.begin(), text.end()); }
inline Bytes LE16(unsigned count) { return {static_cast<uint8_t>(count), static_cast<uint8_t>(count >> 8)}; }
inline Bytes Head(const Bytes& bytes, size_t count) {
  return Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
}

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

inline const Bytes kAck = {0xB5, 0xB0, 0x0A};

// A controller "Bench 1" at 20000 samples/s, filter 2000 Hz on, 130 V, bias 70 V, difference 60 V, nothing
// enabled, sample format 0; limits 300..50000 samples/s, 30000 samples, 10..9000 Hz, bias 5..90 V.
inline const Bytes kIdentification =
    kAck + Text("ZR-INFO\nBench 1\nFW 3.2\nUSB\n00:11:22:33:44:55\n") +
    Bytes{0x00, 0x10, 0x0E,  // 921600 baud
          0x20, 0x4E, 0x00,  // 20000 samples/s
          0xD0, 0x07,        // 2000 Hz
          0xFF, 0x7F,        // scale 1
          0xFF, 0x7F,        // rotation: cosine 1
          130, 70, 60,       // volts
          0, 0, 0, 0,        // axes, driver, outputs, laser
          0x00, 0x01,        // state: filter on
          0x00, 0x00,        // error register
          0x00, 0x00, 0x00,  // buffer offset
          0x00, 0x00,        // boot
          0x00};             // data mode
inline const Bytes kLimits = kAck + Text("ZR-INFO\n") +
                             Bytes{0x2C, 0x01, 0x00, 0x50, 0xC3, 0x00, 0x01, 0x00, 0x00, 0x30, 0x75, 0x00,
                                   0x0A, 0x00, 0x28, 0x23, 1,    2,    3,    4,    5,    90};
inline const Bytes kCentred = kAck + Bytes{0x00, 0x80, 0x00, 0x80};

class ScriptedTransport : public ZRVSerialIO {
 public:
  // What the controller sends after a command of this code; several calls queue up, the last one stays.
  void Answer(uint8_t code, Bytes bytes) { answers_[code] = {std::move(bytes)}; }
  void AnswerOnce(uint8_t code, Bytes bytes) { answers_[code].push_front(std::move(bytes)); }
  // Bytes that the controller sends after the block that follows an 0xB2.
  Bytes afterBlock = kAck;
  Bytes afterPurges;  // that arrive once the two purges of a resynchronisation are done
  bool writesFail = false, purgesFail = false;

  ScriptedTransport() { Reset(); }

  // The script of a controller that answers everything, with nothing under way.
  void Reset() {
    answers_.clear();
    incoming_.clear();
    writes_.clear();
    waits_.clear();
    afterBlock = kAck;
    afterPurges.clear();
    writesFail = purgesFail = blockFollows_ = false;
    mode_ = kWaitForAll;
    purges_ = 0;
    for (const int code : {0x9D, 0xA4, 0xB1, 0xB2, 0xBA, 0xBB, 0xBD, 0xC0, 0xD4, 0xD5, 0xD6, 0xD7, 0xD8, 0xD9, 0xDA,
                           0xDB, 0xE3, 0xE5, 0xE7, 0xE8, 0xEA, 0xEB, 0xEE, 0xEF, 0xF1, 0xF5, 0xF8}) {
      Answer(static_cast<uint8_t>(code), kAck);
    }
    Answer(0x90, kAck + Text("ZR-INFO\n") + Bytes{0xFF, 0x3F, 63, 0x80, 40, 255, 5});
    Answer(0x91, kAck + Bytes{0x00, 0x80, 0x00, 0x80});
    Answer(0x92, kAck + Bytes{0x00, 0x80, 0x00, 0x80, 0, 0});
    for (const int code : {0xA0, 0xA1, 0xA6}) Answer(static_cast<uint8_t>(code), kAck + Bytes{0x00, 0x80});
    Answer(0xA5, kAck);
    Answer(0xE0, kIdentification);
    Answer(0xE1, kLimits);
    Answer(0xE2, kAck + Bytes{0, 0, 0});
    Answer(0xE4, kCentred);
    Answer(0xF2, kAck + Bytes{0x00, 0x80, 0x00, 0x80, 0, 0, 0, 0, 0});
    Answer(0xF3, kAck + kAck);
    Answer(0xF4, kAck + Bytes{0x00, 0x01});
  }

  // All writes since the last call, each as hex, joined by " | ".
  std::string TakeWrites() {
    std::string all;
    for (const std::string& write : writes_) all += (all.empty() ? "" : " | ") + write;
    writes_.clear();
    return all;
  }
  // The time-outs of the reads that waited for all their bytes since the last call.
  std::vector<unsigned> TakeWaits() { return std::exchange(waits_, {}); }
  const std::vector<unsigned>& WriteTimeouts() const { return writeTimeouts_; }

  int Write(const void* buffer, unsigned count, unsigned* written, unsigned timeoutMs) override {
    writeTimeouts_.push_back(timeoutMs);
    if (writesFail) return kFailed;
    const auto* bytes = static_cast<const uint8_t*>(buffer);
    writes_.push_back(Hex(bytes, count));
    if (written != nullptr) *written = count;
    if (std::exchange(blockFollows_, false)) {
      Queue(afterBlock);
    } else if (count >= 6 && bytes[0] == 0xB5) {
      Reply(bytes[3]);
    }
    return kOk;
  }

  int Read(void* buffer, unsigned count, unsigned* received, unsigned timeoutMs, int mode) override {
    if (mode != kKeepMode) mode_ = mode;
    if (mode_ == kWaitForAll) waits_.push_back(timeoutMs);
    auto* out = static_cast<uint8_t*>(buffer);
    std::memset(out, 0xDC, count);
    const auto moved = static_cast<unsigned>(std::min<size_t>(count, incoming_.size()));
    std::copy_n(incoming_.begin(), moved, out);
    incoming_.erase(incoming_.begin(), incoming_.begin() + moved);
    if (received != nullptr) *received = moved;
    return mode_ == kWaitForAll && moved < count ? kTimeout : kOk;
  }

  void SetReadTimeoutMode(int mode) override { mode_ = mode; }
  int PurgeQueues() override {
    incoming_.clear();
    if (++purges_ % 2 == 0) Queue(afterPurges);
    return purgesFail ? kFailed : kOk;
  }

  void Queue(const Bytes& bytes) { incoming_.insert(incoming_.end(), bytes.begin(), bytes.end()); }

 private:
  void Reply(uint8_t code) {
    auto& queue = answers_[code];
    if (!queue.empty()) Queue(queue.front());
    if (queue.size() > 1) queue.pop_front();
    blockFollows_ = code == 0xB2;
  }

  std::map<uint8_t, std::deque<Bytes>> answers_;
  std::deque<uint8_t> incoming_;
  std::vector<std::string> writes_;
  std::vector<unsigned> writeTimeouts_, waits_;
  int purges_ = 0;
  int mode_ = kWaitForAll;
  bool blockFollows_ = false;
};

// A test with a device that is connected to a script, nothing on the record. Connecting takes 200 ms, so the tests of
// a program share the device: each begins with its record, stop values and colours read or set anew.
class Scripted : public ::testing::Test {
 protected:
  Scripted() {
    if (port == nullptr) Connect(kIdentification);
    port->Reset();
    ZRVDeviceParams params;
    device.GetDeviceParams(&params);
    device.StopDataStream();
    device.SetRGBData(0xFFFFFFu, 0);
    device.SetRGBGammas(1, 1, 1);
    port->TakeWrites();
    port->TakeWaits();
  }

  void Connect(const Bytes& identification) {
    port = new ScriptedTransport;
    port->Answer(0xE0, identification);
    device.ConnectDevice(port);
    port->TakeWrites();
    port->TakeWaits();
  }

  // What a call writes; its waits are then on record too.
  std::string Sent(const std::function<void()>& call) {
    port->TakeWrites();
    port->TakeWaits();
    call();
    return port->TakeWrites();
  }

  void SetState(uint16_t word) {
    port->Answer(0xF4, kAck + LE16(word));
    device.GetDeviceState();
  }
  void SetMode(ZRVDataMode mode) { Sent([&] { device.SetDeviceParam(ParamDataMode, static_cast<float>(mode)); }); }

  static inline ZRVDevice device;
  static inline ScriptedTransport* port = nullptr;  // the device's
};

constexpr const char* kResync = "0A | 0A | 0A";

}  // namespace zrv::testing

#endif
