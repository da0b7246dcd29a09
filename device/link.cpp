#include "device/link.h"

#include <array>

namespace zrv {

using namespace protocol;

namespace {

constexpr unsigned int kLineByteTimeoutMs = 1000;
constexpr size_t kLineBufferBytes = 81;

}  // namespace

bool Link::Connected() {
  if (port == nullptr) error = ErrorNotConnected;
  return port != nullptr;
}

bool Link::Fail(ZRVError why) {
  error = why;
  SendSerialReset();
  return false;
}

// --- Commands ------------------------------------------------------------------------------------------

bool Link::SendSerialCommand(bool waitForAcknowledge) {
  error = ErrorNone;
  if (!Connected()) return false;
  const auto frame = buffer_.Frame();
  const auto length = static_cast<unsigned int>(frame.size());
  if (port->Write(frame.data(), length, nullptr, ZRVSerialIO::kInfinite) != ZRVSerialIO::kOk) {
    return Fail(ErrorSerialComm);
  }
  return !waitForAcknowledge || ReadAcknowledge();
}

bool Link::Command(uint8_t code, bool waitForAcknowledge) {
  NewCommand(code);
  return SendSerialCommand(waitForAcknowledge);
}

// --- Answers -------------------------------------------------------------------------------------------

bool Link::Read(std::span<uint8_t> bytes, unsigned int timeoutMs) {
  const auto count = static_cast<unsigned int>(bytes.size());
  return port->Read(bytes.data(), count, nullptr, timeoutMs, ZRVSerialIO::kWaitForAll) == ZRVSerialIO::kOk;
}

bool Link::ReadAcknowledge() {
  std::array<uint8_t, kAcknowledge.size()> answer{};
  if (!Read(answer)) return Fail(ErrorSerialComm);
  return answer == kAcknowledge || Fail(ErrorBadAcknowledge);
}

std::optional<LittleEndianReader> Link::ReadAnswer(size_t count) {
  const auto answer = Area(count);
  if (Read(answer)) return LittleEndianReader(answer);
  error = ErrorDeviceResponse;
  return std::nullopt;
}

std::optional<LittleEndianReader> Link::Query(uint8_t code, size_t count) {
  Command(code);
  const auto answer = ReadAnswer(count);
  if (answer) error = ErrorNone;
  return answer;
}

std::optional<std::string> Link::ReadLine() {
  std::array<char, kLineBufferBytes> text{};
  const int status = port->ReadLine(text.data(), static_cast<char>(kTrailer), kLineByteTimeoutMs);
  if (status != ZRVSerialIO::kOk) return std::nullopt;
  text.back() = '\0';
  return std::string(text.data());
}

// --- Housekeeping --------------------------------------------------------------------------------------

void Link::ClearInputBuffer() {
  if (!Connected()) return;
  port->Read(scratch_.data(), kClearReadBytes, nullptr, 0, ZRVSerialIO::kReturnAtOnce);
}

void Link::PurgeSerialBuffers() {
  if (Connected() && port->Purge() != ZRVSerialIO::kOk) error = ErrorSerialComm;
}

// The trailers end any frame that the controller has received in part; the purges drop stale answers here.
void Link::SendSerialReset() {
  if (!Connected()) return;
  const auto writeTrailer = [this] { return port->Write(&kTrailer, 1, nullptr, ZRVSerialIO::kInfinite); };
  ClearInputBuffer();
  PurgeSerialBuffers();
  writeTrailer();
  writeTrailer();
  ClearInputBuffer();
  PurgeSerialBuffers();
  if (writeTrailer() != ZRVSerialIO::kOk) error = ErrorSerialReset;
}

void Link::Close() {
  error = ErrorNone;
  if (!Connected()) return;
  if (port->Close() != ZRVSerialIO::kOk) error = ErrorSerialComm;
  port.reset();
}

}  // namespace zrv
