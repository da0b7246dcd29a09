#include "simulator/terminal_posix.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace zrv::sim {

namespace fs = std::filesystem;

namespace {

constexpr int kMaxPortNumber = 255;

[[noreturn]] void Fail(int error, const std::string& what) {
  throw std::system_error(error, std::generic_category(), what);
}

void Check(bool good, const char* what) {
  if (!good) Fail(errno, what);
}

// Until the client sets the line up itself, it must not echo the controller's own bytes back to it.
void MakeRaw(const std::string& path) {
  const Descriptor line(open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  termios settings{};
  Check(line.get() >= 0 && tcgetattr(line.get(), &settings) == 0, "pseudo-terminal");
  settings.c_iflag = IGNPAR;
  settings.c_oflag = 0;
  settings.c_lflag = 0;
  settings.c_cflag = CS8 | CREAD | CLOCAL;
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  Check(tcsetattr(line.get(), TCSANOW, &settings) == 0, "pseudo-terminal");
}

// Whether the link was left by a simulator that was killed: it leads nowhere, or to the terminal that we
// have just been given.
bool IsStale(const fs::path& link, const std::string& terminal) {
  std::error_code error;
  if (!fs::is_symlink(fs::symlink_status(link, error))) return false;
  return !fs::exists(link, error) || fs::read_symlink(link, error) == terminal;
}

// False when something else has that name.
bool MakeLink(const fs::path& link, const std::string& terminal) {
  std::error_code error;
  if (IsStale(link, terminal)) fs::remove(link, error);
  fs::create_symlink(terminal, link, error);
  if (error && error != std::errc::file_exists) Fail(error.value(), link.string());
  return !error;
}

fs::path LinkInto(const fs::path& directory, const std::string& name, const std::string& terminal) {
  fs::create_directories(directory);
  if (!name.empty()) {
    if (!MakeLink(directory / name, terminal)) Fail(EEXIST, (directory / name).string());
    return directory / name;
  }
  for (int number = 0; number <= kMaxPortNumber; ++number) {
    const fs::path link = directory / ("ttyUSB" + std::to_string(number));
    if (MakeLink(link, terminal)) return link;
  }
  Fail(EEXIST, (directory / "ttyUSB*").string());
}

}  // namespace

void Descriptor::Close() {
  if (fd_ >= 0) close(std::exchange(fd_, -1));
}

Terminal OpenTerminal() {
  Terminal terminal;
  terminal.controllerEnd = Descriptor(posix_openpt(O_RDWR | O_NOCTTY));
  const int fd = terminal.controllerEnd.get();
  Check(fd >= 0 && grantpt(fd) == 0 && unlockpt(fd) == 0, "pseudo-terminal");
  Check(fcntl(fd, F_SETFD, FD_CLOEXEC) == 0 && fcntl(fd, F_SETFL, O_RDWR | O_NONBLOCK) == 0, "pseudo-terminal");
  const char* path = ptsname(fd);
  Check(path != nullptr, "pseudo-terminal");
  terminal.path = path;
  MakeRaw(terminal.path);
  return terminal;
}

WakeUp::WakeUp() {
  int ends[2];
  Check(pipe(ends) == 0, "pipe");
  read_ = Descriptor(ends[0]);
  write_ = Descriptor(ends[1]);
  for (const int end : ends) {
    Check(fcntl(end, F_SETFL, O_NONBLOCK) == 0 && fcntl(end, F_SETFD, FD_CLOEXEC) == 0, "pipe");
  }
}

// A full pipe wakes just as well, so the outcome of the write does not matter.
void WakeUp::Signal() {
  const char byte = 0;
  [[maybe_unused]] const auto written = write(write_.get(), &byte, 1);
}

void WakeUp::Drain() {
  char bytes[64];
  while (read(read_.get(), bytes, sizeof bytes) > 0) {
  }
}

PortLink::PortLink(const fs::path& directory, const std::string& name, const std::string& terminal)
    : path_(LinkInto(directory, name, terminal)), terminal_(terminal) {}

PortLink::~PortLink() {
  std::error_code error;
  if (fs::read_symlink(path_, error) == terminal_) fs::remove(path_, error);
}

}  // namespace zrv::sim
