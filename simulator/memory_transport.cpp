#include "simulator/memory_transport.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace zrv::sim {

namespace {
constexpr int kFiller = 0xDC;
constexpr unsigned int kMaxLine = 80;
constexpr double kStalledWriteSeconds = 5;
}  // namespace

MemoryTransport::MemoryTransport(std::shared_ptr<Controller> controller, std::shared_ptr<Clock> clock)
    : controller_(std::move(controller)), clock_(std::move(clock)) {}

MemoryTransport::~MemoryTransport() = default;

int MemoryTransport::Open(const char*, unsigned int baudRate, unsigned int, unsigned int) {
  if (open_) return kFailed;
  if (controller_->faults().linkCut()) return kOpenFailed;
  open_ = true;
  baudRate_ = baudRate;
  mode_ = kWaitForAll;
  return kOk;
}

int MemoryTransport::Close() {
  open_ = false;
  return kOk;
}

void MemoryTransport::SetBaudRate(unsigned int baudRate) {
  if (open_) baudRate_ = baudRate;
}

void MemoryTransport::SetReadTimeoutMode(int mode) {
  if (mode == kReturnAtOnce || mode == kWaitForAll) mode_ = mode;
}

int MemoryTransport::Write(const void* buffer, unsigned int count, unsigned int* written, unsigned int timeoutMs) {
  if (written) *written = 0;
  if (!open_) return kNotOpen;
  if (controller_->faults().linkCut()) return kFailed;
  const auto* bytes = static_cast<const uint8_t*>(buffer);
  onLine_.insert(onLine_.end(), bytes, bytes + count);
  Deliver();
  const size_t surplus = onLine_.size() - std::min(onLine_.size(), kLineBytes);
  onLine_.resize(onLine_.size() - surplus);
  if (written) *written = count - static_cast<unsigned int>(surplus);
  if (surplus == 0) return kOk;
  clock_->WaitUntil(clock_->Now() + std::min(timeoutMs / 1000.0, kStalledWriteSeconds));
  return kTimeout;
}

void MemoryTransport::Deliver() {
  const auto taken = static_cast<size_t>(std::min<uint64_t>(onLine_.size(), controller_->faults().takes()));
  controller_->Receive(std::span(onLine_).first(taken), clock_->Now());
  onLine_.erase(onLine_.begin(), onLine_.begin() + static_cast<std::ptrdiff_t>(taken));
}

// Lets time pass until the controller may have sent something; false when the deadline is reached.
bool MemoryTransport::WaitForMore(double deadline) {
  if (clock_->Now() >= deadline) return false;
  const double wake = std::min(deadline, controller_->NextEventTime());
  if (!std::isfinite(wake)) return false;
  clock_->WaitUntil(wake);
  return true;
}

int MemoryTransport::Read(void* buffer, unsigned int count, unsigned int* received, unsigned int timeoutMs,
                          int timeoutMode) {
  if (received) *received = 0;
  if (!open_) return kNotOpen;
  if (timeoutMode != kKeepMode) SetReadTimeoutMode(timeoutMode);
  if (count > 0) std::memset(buffer, kFiller, count);
  const double deadline = timeoutMs == kInfinite ? Controller::kNever : clock_->Now() + timeoutMs / 1000.0;
  const std::span bytes(static_cast<uint8_t*>(buffer), count);
  size_t got = 0;
  bool waiting = true;
  Deliver();
  while (true) {
    controller_->Advance(clock_->Now());
    got += controller_->Take(bytes.subspan(got));
    if (received) *received = static_cast<unsigned int>(got);
    if (got == count) return kOk;
    if (controller_->faults().linkCut()) return kFailed;
    if (mode_ == kReturnAtOnce) return kOk;
    if (!waiting) return kTimeout;
    waiting = WaitForMore(deadline);
  }
}

int MemoryTransport::ReadLine(char* buffer, char terminator, unsigned int timeoutMs) {
  SetReadTimeoutMode(kWaitForAll);
  unsigned int length = 0;
  int status = kOk;
  buffer[0] = 0;
  while (length < kMaxLine) {
    char byte = 0;
    status = Read(&byte, 1, nullptr, timeoutMs, kKeepMode);
    if (status != kOk || byte == terminator) break;
    buffer[length++] = byte;
    buffer[length] = 0;
  }
  return status;
}

int MemoryTransport::PurgeQueues() {
  if (!open_) return kNotOpen;
  if (controller_->faults().linkCut()) return kFailed;
  controller_->Advance(clock_->Now());
  controller_->DiscardDue();
  onLine_.clear();
  return kOk;
}

}  // namespace zrv::sim
