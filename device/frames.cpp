// Command frames: sending, acknowledgement, answer, resynchronisation, state word.
#include <algorithm>
#include <array>
#include <cstring>

#include "ZRVDevice.h"
#include "common/bytes.h"
#include "device/command_buffer.h"
#include "device/protocol.h"

using namespace zrv;
using namespace zrv::protocol;

namespace {

constexpr unsigned int kLineByteTimeoutMs = 1000;
constexpr size_t kLineBufferBytes = 81;
constexpr std::chrono::seconds kLateBytes{3};  // beyond the longest wait for an answer

}  // namespace

SharedState& zrv::Shared() {
  static SharedState shared;
  return shared;
}

std::span<const uint8_t> zrv::CommandBuffer::Frame() {
  const size_t length = payloadLength_ + kFrameOverhead;
  uint8_t* out = std::copy(kFrameHeader.begin(), kFrameHeader.end(), frame_);
  *out++ = command_;
  *out++ = static_cast<uint8_t>(length);
  out = std::copy_n(payload_.begin(), payloadLength_, out);
  *out = kTrailer;
  return std::span(frame_).first(length);
}

bool ZRVDevice::Connected() {
  if (port_ == nullptr) lastError_ = ErrorNotConnected;
  return port_ != nullptr;
}

bool ZRVDevice::SendSerialCommand(bool waitForAcknowledge) {
  lastError_ = ErrorNone;
  if (!Connected()) return false;
  if (waitForAcknowledge) DropLateBytes();
  const auto frame = Shared().command.Frame();
  const auto length = static_cast<unsigned int>(frame.size());
  if (port_->Write(frame.data(), length, nullptr, ZRVSerialIO::kInfinite) != ZRVSerialIO::kOk) {
    return Fail(ErrorSerialComm);
  }
  return !waitForAcknowledge || ReadAcknowledge(Shared().readTimeoutMs, ErrorBadAcknowledge);
}

bool ZRVDevice::Command(unsigned char code, bool waitForAcknowledge) {
  NewCommand(code);
  return SendSerialCommand(waitForAcknowledge);
}

bool ZRVDevice::Fail(ZRVError error) {
  lastError_ = error;
  SendSerialReset();
  ExpectLateBytes();
  return false;
}

bool ZRVDevice::ReadAcknowledge(unsigned int timeoutMs, ZRVError onWrongBytes) {
  std::array<uint8_t, kAcknowledge.size()> answer{};
  const auto count = static_cast<unsigned int>(answer.size());
  if (port_->Read(answer.data(), count, nullptr, timeoutMs, ZRVSerialIO::kWaitForAll) != ZRVSerialIO::kOk) {
    return Fail(ErrorSerialComm);
  }
  return answer == kAcknowledge || Fail(onWrongBytes);
}

// The filler goes in here as well as in the transport: a transport of the caller's may not know of it.
bool ZRVDevice::ReadBytes(void* bytes, unsigned int count, unsigned int timeoutMs) {
  std::memset(bytes, kFiller, count);
  const bool arrived = port_->Read(bytes, count, nullptr, timeoutMs, ZRVSerialIO::kWaitForAll) == ZRVSerialIO::kOk;
  if (!arrived) ExpectLateBytes();
  return arrived;
}

bool ZRVDevice::ReadAnswer(void* answer, unsigned int count) {
  if (ReadBytes(answer, count, Shared().readTimeoutMs)) return true;
  lastError_ = ErrorDeviceResponse;
  return false;
}

// An answer of a command, as far as it arrived. The acknowledgement may have failed: where the answer
// came all the same, it counts.
bool ZRVDevice::Query(unsigned char code, void* answer, unsigned int count) {
  Command(code);
  if (!ReadAnswer(answer, count)) return false;
  lastError_ = ErrorNone;
  return true;
}

bool ZRVDevice::ReadAnswerLine(std::string& line) {
  std::array<char, kLineBufferBytes> text{};
  const int status = port_->ReadLine(text.data(), static_cast<char>(kTrailer), kLineByteTimeoutMs);
  text.back() = '\0';
  line = text.data();
  if (status != ZRVSerialIO::kOk) ExpectLateBytes();
  return status == ZRVSerialIO::kOk;
}

// For a while after an exchange that failed, what comes too late for it, or the rest of what was given up, is dropped
// before commands: it is not for them. Otherwise nothing is read ahead of a command.
void ZRVDevice::ExpectLateBytes() { lateBytesUntil_ = std::chrono::steady_clock::now() + kLateBytes; }

void ZRVDevice::DropLateBytes() {
  if (std::chrono::steady_clock::now() < lateBytesUntil_) ClearInputBuffer();
}

void ZRVDevice::ClearInputBuffer() {
  if (!Connected()) return;
  port_->Read(Shared().received.data(), kClearReadBytes, nullptr, 0, ZRVSerialIO::kReturnAtOnce);
}

void ZRVDevice::PurgeSerialBuffers() {
  if (Connected() && port_->Purge() != ZRVSerialIO::kOk) lastError_ = ErrorSerialComm;
}

// The trailers end any frame that the controller has received in part; the purges drop stale answers here.
void ZRVDevice::SendSerialReset() {
  if (!Connected()) return;
  const auto writeTrailer = [this] { return port_->Write(&kTrailer, 1, nullptr, ZRVSerialIO::kInfinite); };
  ClearInputBuffer();
  PurgeSerialBuffers();
  writeTrailer();
  writeTrailer();
  ClearInputBuffer();
  PurgeSerialBuffers();
  if (writeTrailer() != ZRVSerialIO::kOk) lastError_ = ErrorSerialReset;
}

void ZRVDevice::ResetDevice() { Command(kCmdReset); }

bool ZRVDevice::IsDeviceResponding() {
  if (port_ != nullptr) DropLateBytes();
  if (!Command(kCmdIsResponding, false)) return false;
  std::array<uint8_t, kAcknowledge.size()> answer{};
  if (!ReadBytes(answer.data(), static_cast<unsigned int>(answer.size()), Shared().readTimeoutMs)) {
    lastError_ = ErrorSerialComm;
    return false;
  }
  if (answer != kAcknowledge) lastError_ = ErrorBadAcknowledge;
  if (lastError_ != ErrorNone) ExpectLateBytes();
  return lastError_ == ErrorNone;
}

void ZRVDevice::GetDeviceState() {
  lastError_ = ErrorNone;
  if (!Connected()) return;
  std::array<uint8_t, kStateAnswerBytes> answer{};
  if (Query(kCmdGetState, answer.data(), kStateAnswerBytes)) DecodeState(LittleEndianReader(answer).U16());
}

void ZRVDevice::DecodeState(unsigned int state) {
  params_->DeviceState = state;
  params_->HardwareFilterOn = (state & kStateHardwareFilter) != 0 ? 1 : 0;
  params_->SyncMode = static_cast<ZRVSync>((state & kStateSyncMask) >> kStateSyncShift);
  params_->SyncState = (state & kStateFormatMask) >> kStateFormatShift;
}
