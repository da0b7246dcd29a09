// A transport that answers each command as a script says, and keeps what happens on it as text.
#ifndef ZRV_TESTS_SCRIPTED_TRANSPORT_H
#define ZRV_TESTS_SCRIPTED_TRANSPORT_H

#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <limits>
#include <map>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "device/state.h"
#include "tests/hex.h"

namespace zrv::testing {

inline Bytes operator+(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

inline Bytes Text(const std::string& text) { return Bytes(text.begin(), text.end()); }
inline Bytes LE16(unsigned count) { return {static_cast<uint8_t>(count), static_cast<uint8_t>(count >> 8)}; }
inline Bytes Head(Bytes bytes, size_t count) {
  bytes.resize(count);
  return bytes;
}

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

inline const Bytes kAck = {0xB5, 0xB0, 0x0A};
constexpr const char* kResync = "0A | 0A | 0A";

// A controller "Bench 1" at 20000 samples/s, filter 2000 Hz on, 130 V, bias 70 V, difference 60 V, nothing
// enabled, sample format 0; limits 300..50000 samples/s, 30000 samples, 10..9000 Hz, bias 5..90 V.
inline const Bytes kIdentification = kAck + Text("ZR-INFO\nBench 1\nFW 3.2\nUSB\n00:11:22:33:44:55\n") +
                                     Bytes{0x00, 0x10, 0x0E,               // 921600 baud
                                           0x20, 0x4E, 0x00,               // 20000 samples/s
                                           0xD0, 0x07,                     // 2000 Hz
                                           0xFF, 0x7F, 0xFF, 0x7F,         // scale 1, rotation: cosine 1
                                           130,  70,   60,                 // volts
                                           0,    0,    0,    0,            // axes, driver, outputs, laser
                                           0x00, 0x01, 0x00, 0x00,         // state: filter on; error register
                                           0,    0,    0,    0,    0, 0};  // buffer offset, boot, data mode
inline const Bytes kLimits =
    kAck + Text("ZR-INFO\n") + Bytes{0x2C, 0x01, 0x00, 0x50, 0xC3, 0x00, 0x01, 0x00, 0x00, 0x30, 0x75,
                                     0x00, 0x0A, 0x00, 0x28, 0x23, 1,    2,    3,    4,    5,    90};

// What follows a command where it is not the acknowledgement alone: nothing after those that hosts do not wait for.
inline std::map<uint8_t, Bytes> AnswersToAll() {
  const Bytes zero = LE16(32768);
  std::map<uint8_t, Bytes> answers = {{0x90, kAck + Text("ZR-INFO\n") + Bytes{0xFF, 0x3F, 63, 0x80, 40, 255, 5}},
                                      {0xA0, kAck + zero},
                                      {0xA1, kAck + zero},
                                      {0xA6, kAck + zero},
                                      {0xE0, kIdentification},
                                      {0xE1, kLimits},
                                      {0xE2, kAck + Bytes(3)},
                                      {0xE4, kAck + zero + zero},
                                      {0xF2, kAck + zero + zero + Bytes(5)},
                                      {0xF3, kAck + kAck},
                                      {0xF4, kAck + LE16(0x100)}};
  for (const int code : {0x95, 0x96, 0x97, 0x98, 0x99, 0x9A, 0xB0, 0xB5, 0xBF, 0xE9, 0xEC}) {
    answers[static_cast<uint8_t>(code)];
  }
  return answers;
}

// What a controller sends, and what passed so far; as it begins, it answers everything.
struct Script {
  std::map<uint8_t, Bytes> answers = AnswersToAll();
  std::map<uint8_t, Bytes> once;  // instead, the first time
  Bytes afterBlock = kAck;
  Bytes afterPurges;      // once the two purges of a resynchronisation are done
  int failingWrites = 0;  // of the next ones
  bool purgesFail = false, blockFails = false;
  bool fills = true;  // what does not arrive, as a transport should

  std::deque<uint8_t> incoming;
  std::string writes;  // joined by " | "
  // Everything, joined by " | ": what is written ("!" ahead of what fails), "3 in 2000" for three bytes waited for,
  // "drain" for what is there at once, "line 1000", "purge", "pause 200", "open COM3 921600", "baud 460800", "close".
  std::string events;
  std::vector<unsigned> waits;  // the time-outs of the reads that waited for all their bytes
  int purges = 0, mode = ZRVSerialIO::kWaitForAll;
  bool blockFollows = false;
};

class ScriptedTransport : public ZRVSerialIO, public Script {
 public:
  void Answer(uint8_t code, Bytes bytes) { answers[code] = std::move(bytes); }
  void Queue(const Bytes& bytes) { incoming.insert(incoming.end(), bytes.begin(), bytes.end()); }
  void Note(const std::string& event) { events.append(events.empty() ? "" : " | ").append(event); }
  // What came since the last call.
  std::string TakeWrites() { return std::exchange(writes, {}); }
  std::string TakeEvents() { return std::exchange(events, {}); }
  std::vector<unsigned> TakeWaits() { return std::exchange(waits, {}); }

  int Open(const char* path, unsigned baudRate, unsigned, unsigned) override {
    Note(std::string("open ").append(path).append(" ").append(std::to_string(baudRate)));
    return kOk;
  }
  int Close() override {
    Note("close");
    return kOk;
  }
  void SetBaudRate(unsigned baudRate) override { Note(std::string("baud ").append(std::to_string(baudRate))); }

  int Write(const void* buffer, unsigned count, unsigned* written, unsigned timeoutMs) override {
    EXPECT_EQ(timeoutMs, count == 1 && timeoutMs == 100 ? 100 : kInfinite);  // a discovery probe has 100 ms
    const std::span bytes(static_cast<const uint8_t*>(buffer), count);
    const bool isBlock = std::exchange(blockFollows, false);
    const bool fails = failingWrites > 0 || (isBlock && blockFails);
    const std::string what = count > 100 ? std::to_string(count).append(" bytes") : ToHex(bytes);
    Note(fails ? std::string("!").append(what) : what);
    if (fails) {
      failingWrites = std::max(failingWrites - 1, 0);
      return kFailed;
    }
    writes += (writes.empty() ? "" : " | ") + ToHex(bytes);
    if (written != nullptr) *written = count;
    if (isBlock) {
      Queue(afterBlock);
    } else if (count >= 6 && bytes[0] == 0xB5) {
      const auto first = once.extract(bytes[3]);
      Queue(first ? first.mapped() : answers.try_emplace(bytes[3], kAck).first->second);
      blockFollows = bytes[3] == 0xB2;
    }
    return kOk;
  }

  int Read(void* buffer, unsigned count, unsigned* received, unsigned timeoutMs, int readMode) override {
    SetReadTimeoutMode(readMode);
    if (mode == kWaitForAll) {
      waits.push_back(timeoutMs);
      Note(std::to_string(count).append(" in ").append(std::to_string(timeoutMs)));
    } else {
      Note(timeoutMs == 0 && count == 131072 ? "drain" : std::to_string(count).append(" at once"));
    }
    return Take(buffer, count, received);
  }

  int ReadLine(char* buffer, char terminator, unsigned timeoutMs) override {
    Note(std::string("line ").append(std::to_string(timeoutMs)));
    waits.push_back(timeoutMs);
    mode = kWaitForAll;
    int status = kOk;
    for (unsigned length = 0; length < 80; buffer[++length] = '\0') {
      status = Take(&buffer[length], 1, nullptr);
      if (status == kOk && buffer[length] != terminator) continue;
      buffer[length] = '\0';
      break;
    }
    return status;
  }

  void SetReadTimeoutMode(int readMode) override { mode = readMode != kKeepMode ? readMode : mode; }
  int PurgeQueues() override {
    Note("purge");
    incoming.clear();
    if (++purges % 2 == 0) Queue(afterPurges);
    return purgesFail ? kFailed : kOk;
  }

 private:
  int Take(void* buffer, unsigned count, unsigned* received) {
    if (fills) std::memset(buffer, 0xDC, count);
    const auto moved = static_cast<unsigned>(std::min<size_t>(count, incoming.size()));
    std::copy_n(incoming.begin(), moved, static_cast<uint8_t*>(buffer));
    incoming.erase(incoming.begin(), incoming.begin() + moved);
    if (received != nullptr) *received = moved;
    return mode == kWaitForAll && moved < count ? kTimeout : kOk;
  }
};

// The device's pauses are events of the transport, and take no time.
inline void NotePauses(ZRVDevice& device, ScriptedTransport& port) {
  StateOf(device).link.machine.pause = [&port](std::chrono::milliseconds time) {
    port.Note(std::string("pause ").append(std::to_string(time.count())));
  };
}

inline void SkipPauses(ZRVDevice& device) {
  StateOf(device).link.machine.pause = [](std::chrono::milliseconds) {};
}

// A test with a device that is connected to a script, nothing on the record.
class Scripted : public ::testing::Test {
 protected:
  Scripted() { Connect(kIdentification); }

  void Connect(const Bytes& identification) {
    port = new ScriptedTransport;
    NotePauses(device, *port);
    port->Answer(0xE0, identification);
    device.ConnectDevice(port);
    ASSERT_EQ(device.GetLastError(), ErrorNone);
    static_cast<Script&>(*port) = {};
  }

  // What a call writes; its events and waits are then on record too.
  std::string Sent(const std::function<void()>& call) {
    port->TakeWrites();
    port->TakeEvents();
    port->TakeWaits();
    call();
    return port->TakeWrites();
  }

  void SetState(uint16_t word) {
    port->Answer(0xF4, kAck + LE16(word));
    device.GetDeviceState();
  }
  void SetMode(ZRVDataMode mode) { device.SetDeviceParam(ParamDataMode, static_cast<float>(mode)); }

  ZRVDevice device;
  ScriptedTransport* port = nullptr;  // the device's
};

}  // namespace zrv::testing

#endif
