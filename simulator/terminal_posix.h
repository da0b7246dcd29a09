// The operating system's side of the pseudo-terminal end.
#ifndef ZRV_SIMULATOR_TERMINAL_POSIX_H
#define ZRV_SIMULATOR_TERMINAL_POSIX_H

#include <filesystem>
#include <string>
#include <utility>

namespace zrv::sim {

// Owns a file descriptor; -1 is none.
class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  ~Descriptor() { Close(); }
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  int get() const { return fd_; }
  void Close();

 private:
  int fd_;
};

// Both throw std::system_error.
struct Terminal {
  Descriptor controllerEnd;  // non-blocking
  std::string path;          // of the end that a client opens; raw already
};
Terminal OpenTerminal();

// Wakes a thread that sits in poll() on readable().
class WakeUp {
 public:
  WakeUp();
  void Signal();
  void Drain();
  int readable() const { return read_.get(); }

 private:
  Descriptor read_, write_;
};

// A link in a port directory that looks like a serial adapter's; removed at the end unless someone else has
// put another thing in its place. An empty name takes the first free of ttyUSB0, ttyUSB1, ...
class PortLink {
 public:
  PortLink(const std::filesystem::path& directory, const std::string& name, const std::string& terminal);
  ~PortLink();
  PortLink(const PortLink&) = delete;
  PortLink& operator=(const PortLink&) = delete;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  std::string terminal_;
};

}  // namespace zrv::sim

#endif
