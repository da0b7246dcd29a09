// The link to one controller: commands out, acknowledgements and answers in, and how the last call ended.
#ifndef ZRV_DEVICE_LINK_H
#define ZRV_DEVICE_LINK_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "ZRVSerialIO.h"
#include "common/bytes.h"
#include "device/command_buffer.h"
#include "device/machine.h"

namespace zrv {

constexpr unsigned int kDefaultReadTimeoutMs = 2000;  // each acknowledgement and answer
constexpr size_t kReceiveBufferBytes = 500000;
constexpr unsigned int kClearReadBytes = 131072;  // also the driver's queue sizes

// Calls that return bool say whether they succeeded; the error says why not. Nothing is read ahead of a command: what a
// call reads, writes and waits is a promise to hosts with a transport of their own, after failures too.
class Link {
 public:
  ZRVError error = ErrorNone;
  std::unique_ptr<ZRVSerialIO> port;  // null while not connected
  unsigned int readTimeoutMs = kDefaultReadTimeoutMs;
  Machine machine;

  // Whether there is a port; without one ErrorNotConnected.
  bool Connected();

  // --- Commands ---------------------------------------------------------------------------------------

  CommandBuffer& NewCommand(uint8_t code) { return buffer_.Begin(code); }

  // Sends what NewCommand() began. ErrorSerialComm or ErrorBadAcknowledge, after which the link is resynchronised.
  bool SendSerialCommand(bool waitForAcknowledge);

  // A command without a payload.
  bool Command(uint8_t code, bool waitForAcknowledge = true);

  // --- Answers ----------------------------------------------------------------------------------------

  // All of bytes, or false; the error stays as it is.
  bool Read(std::span<uint8_t> bytes, unsigned int timeoutMs);
  bool Read(std::span<uint8_t> bytes) { return Read(bytes, readTimeoutMs); }

  // An acknowledgement. One that does not come is ErrorSerialComm, another answer ErrorBadAcknowledge; both
  // resynchronise.
  bool ReadAcknowledge();

  // The next count bytes, through the payload area. ErrorDeviceResponse when they do not all come.
  std::optional<LittleEndianReader> ReadAnswer(size_t count);

  // A command and its answer. The acknowledgement may have failed: an answer that comes all the same counts.
  std::optional<LittleEndianReader> Query(uint8_t code, size_t count);

  // A line of text without its end; nothing when it did not come to one.
  std::optional<std::string> ReadLine();

  // The payload area, where answers and sample blocks lie.
  std::span<uint8_t> Area(size_t bytes) { return buffer_.Area(bytes); }
  // Where captures and streams are read to, kReceiveBufferBytes.
  std::span<uint8_t> received() { return received_; }

  // --- Housekeeping -----------------------------------------------------------------------------------

  void ClearInputBuffer();
  void PurgeSerialBuffers();
  void SendSerialReset();
  void Close();

  // Notes why a call failed and resynchronises. Always false.
  bool Fail(ZRVError why);

 private:
  CommandBuffer buffer_;
  std::vector<uint8_t> received_ = std::vector<uint8_t>(kReceiveBufferBytes);
  std::vector<uint8_t> scratch_ = std::vector<uint8_t>(kClearReadBytes);  // for what is discarded
};

}  // namespace zrv

#endif
