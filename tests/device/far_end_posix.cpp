#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/device/far_end.h"

namespace zrv::testing {

struct FarEnd::Line {
  int fd = posix_openpt(O_RDWR | O_NOCTTY);
  ~Line() { close(fd); }
};

FarEnd::FarEnd() : line_(std::make_unique<Line>()) {
  grantpt(line_->fd);
  unlockpt(line_->fd);
  path_ = ptsname(line_->fd);
}
FarEnd::~FarEnd() = default;

void FarEnd::Send(const std::string& bytes) {
  ASSERT_EQ(write(line_->fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

std::string FarEnd::Receive(size_t count) {
  std::string bytes;
  pollfd line = {line_->fd, POLLIN, 0};
  while (bytes.size() < count && poll(&line, 1, 1000) > 0) {
    char chunk[4096];
    const ssize_t got = read(line_->fd, chunk, std::min(sizeof chunk, count - bytes.size()));
    if (got <= 0) break;
    bytes.append(chunk, static_cast<size_t>(got));
  }
  return bytes;
}

void FarEnd::HangUp() { line_.reset(); }

bool RunsUnderWine() { return false; }

}  // namespace zrv::testing
