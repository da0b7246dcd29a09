// The transport on Linux: a raw terminal line, never blocking, waited for with poll.
//
// The line is set through termios2, which takes any speed. <termios.h> knows only the POSIX constants, and
// its types clash with the kernel's, so it stays out of this file.
#include <asm/termbits.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "ZRVSerialIO.h"
#include "device/serial/ports.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned char kFiller = 0xDC;
constexpr std::chrono::milliseconds kBluetoothConnectTime{3000};
constexpr unsigned int kStalledWriteMs = 5000;

class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int fd) : fd_(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~FileDescriptor() {
    if (fd_ >= 0) close(fd_);
  }
  int get() const { return fd_; }
  bool ok() const { return fd_ >= 0; }

 private:
  int fd_ = -1;
};

class Deadline {
 public:
  explicit Deadline(unsigned int timeoutMs)
      : infinite_(timeoutMs == ZRVSerialIO::kInfinite), end_(Clock::now() + std::chrono::milliseconds(timeoutMs)) {}

  // For poll: what is left, rounded up so that it never wakes too early to be over; -1 is for ever.
  int LeftMs() const {
    if (infinite_) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now()).count();
    return static_cast<int>(std::clamp<int64_t>(left, 0, INT_MAX));
  }

 private:
  bool infinite_;
  Clock::time_point end_;
};

// Waits until the line is ready for events. Called once a read or write found nothing to do, so a line that
// reports but a hang-up or an error is dead.
int WaitFor(int fd, short events, const Deadline& deadline) {
  for (;;) {
    pollfd line = {fd, events, 0};
    const int ready = poll(&line, 1, deadline.LeftMs());
    if (ready > 0) return (line.revents & events) != 0 ? ZRVSerialIO::kOk : ZRVSerialIO::kFailed;
    if (ready == 0 && deadline.LeftMs() == 0) return ZRVSerialIO::kTimeout;
    if (ready < 0 && errno != EINTR) return ZRVSerialIO::kFailed;
  }
}

bool WouldBlock(ssize_t moved) { return moved < 0 && (errno == EAGAIN || errno == EWOULDBLOCK); }

template <typename Call>
auto RetryOnSignal(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

// Opens a terminal line for this process alone. TIOCEXCL keeps others out, but not a privileged process,
// and says nothing to those who opened before; the advisory lock does both between users of this library.
FileDescriptor OpenLine(const char* path) {
  FileDescriptor line(RetryOnSignal([&] { return open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC); }));
  if (!line.ok()) return {};
  termios2 settings{};
  if (ioctl(line.get(), TCGETS2, &settings) != 0) return {};
  if (flock(line.get(), LOCK_EX | LOCK_NB) != 0) return {};
  if (ioctl(line.get(), TIOCEXCL) != 0) return {};
  return line;
}

// The exclusive mark belongs to the line, not to the descriptor: on a pseudo-terminal it outlives the last
// close, and would lock unprivileged users out of a port that nobody uses any more.
void Release(const FileDescriptor& line) {
  if (line.ok()) ioctl(line.get(), TIOCNXCL);
}

// A Bluetooth port connects only once it is open, and reports a carrier when it did.
void AwaitBluetoothLink(const char* path, int fd) {
  const std::string_view name(path);
  if (name.substr(name.rfind('/') + 1).substr(0, 6) != "rfcomm") return;
  const auto end = Clock::now() + kBluetoothConnectTime;
  int lines = 0;
  while (Clock::now() < end && ioctl(fd, TIOCMGET, &lines) == 0 && (lines & TIOCM_CAR) == 0) {
    zrv::Pause(std::chrono::milliseconds(20));
  }
}

}  // namespace

struct ZRVSerialIO::Port {
  FileDescriptor line;
  bool returnAtOnce = false;
};

ZRVSerialIO::ZRVSerialIO() = default;
ZRVSerialIO::~ZRVSerialIO() { ZRVSerialIO::Close(); }

int ZRVSerialIO::Open(const char* path, unsigned int baudRate, unsigned int, unsigned int) {
  if (port_ != nullptr) return kFailed;
  if (path == nullptr) return kOpenFailed;
  FileDescriptor line = OpenLine(path);
  if (!line.ok()) return kOpenFailed;
  port_ = std::make_unique<Port>();
  port_->line = std::move(line);
  SetReadTimeoutMode(kWaitForAll);
  SetBaudRate(baudRate);
  AwaitBluetoothLink(path, port_->line.get());
  return kOk;
}

int ZRVSerialIO::Close() {
  if (port_ != nullptr) Release(port_->line);
  port_.reset();
  return kOk;
}

void ZRVSerialIO::SetBaudRate(unsigned int baudRate) {
  if (port_ == nullptr) return;
  const int fd = port_->line.get();
  termios2 settings{};
  if (ioctl(fd, TCGETS2, &settings) != 0) return;
  settings.c_iflag = 0;
  settings.c_oflag = 0;
  settings.c_lflag = 0;
  settings.c_cflag &= ~static_cast<tcflag_t>(CSIZE | CSTOPB | PARENB | CRTSCTS);
  settings.c_cflag |= CS8 | CREAD | CLOCAL;
  if (baudRate != 0) {  // 0 would hang up the line
    settings.c_cflag &= ~static_cast<tcflag_t>(CBAUD | (CBAUD << IBSHIFT));
    settings.c_cflag |= BOTHER | (BOTHER << IBSHIFT);
    settings.c_ispeed = baudRate;
    settings.c_ospeed = baudRate;
  }
  settings.c_cc[VMIN] = 1;  // an empty queue then reads as EAGAIN, and only a hang-up as 0 bytes
  settings.c_cc[VTIME] = 0;
  ioctl(fd, TCSETS2, &settings);
  const int handshakeLines = TIOCM_DTR | TIOCM_RTS;
  ioctl(fd, TIOCMBIC, &handshakeLines);  // a pseudo-terminal has none: not an error
}

void ZRVSerialIO::SetReadTimeoutMode(int mode) {
  if (port_ == nullptr || (mode != kReturnAtOnce && mode != kWaitForAll)) return;
  port_->returnAtOnce = mode == kReturnAtOnce;
}

int ZRVSerialIO::Write(const void* buffer, unsigned int count, unsigned int* written, unsigned int timeoutMs) {
  if (written != nullptr) *written = 0;
  if (port_ == nullptr) return kNotOpen;
  if (buffer == nullptr && count > 0) return kFailed;
  const auto* bytes = static_cast<const unsigned char*>(buffer);
  const int fd = port_->line.get();
  // Without a limit a write may take as long as it moves: a line that takes nothing at all would hang the caller.
  const bool unlimited = timeoutMs == kInfinite;
  Deadline deadline(unlimited ? kStalledWriteMs : timeoutMs);
  unsigned int done = 0;
  int status = kOk;
  while (status == kOk && done < count) {
    const ssize_t moved = RetryOnSignal([&] { return write(fd, bytes + done, count - done); });
    if (moved > 0) {
      done += static_cast<unsigned int>(moved);
      if (unlimited) deadline = Deadline(kStalledWriteMs);
    } else {
      status = moved == 0 || WouldBlock(moved) ? WaitFor(fd, POLLOUT, deadline) : kFailed;
    }
  }
  if (status == kTimeout) ioctl(fd, TCFLSH, TCOFLUSH);  // what the driver still holds is cancelled too
  if (written != nullptr) *written = done;
  return status;
}

int ZRVSerialIO::Read(void* buffer, unsigned int count, unsigned int* received, unsigned int timeoutMs,
                      int timeoutMode) {
  if (received != nullptr) *received = 0;
  if (port_ == nullptr) return kNotOpen;
  if (buffer == nullptr && count > 0) return kFailed;
  if (timeoutMode != kKeepMode) SetReadTimeoutMode(timeoutMode);
  if (count > 0) std::memset(buffer, kFiller, count);
  auto* bytes = static_cast<unsigned char*>(buffer);
  const int fd = port_->line.get();
  const Deadline deadline(timeoutMs);
  unsigned int done = 0;
  int status = kOk;
  while (status == kOk && done < count) {
    // An answer is hardly ever there already: waiting first saves the read that finds nothing.
    if (!port_->returnAtOnce) status = WaitFor(fd, POLLIN, deadline);
    if (status != kOk) break;
    const ssize_t moved = RetryOnSignal([&] { return read(fd, bytes + done, count - done); });
    if (moved > 0) {
      done += static_cast<unsigned int>(moved);
    } else if (!WouldBlock(moved)) {
      status = kFailed;  // 0 bytes is a hang-up
    } else if (port_->returnAtOnce) {
      break;
    }
  }
  if (received != nullptr) *received = done;
  return status;
}

bool ZRVSerialIO::Probe(const char* path) {
  if (path == nullptr) return false;
  const FileDescriptor line = OpenLine(path);
  Release(line);
  return line.ok();
}

int ZRVSerialIO::PurgeQueues() {
  if (port_ == nullptr) return kNotOpen;
  return ioctl(port_->line.get(), TCFLSH, TCIOFLUSH) == 0 ? kOk : kFailed;
}
