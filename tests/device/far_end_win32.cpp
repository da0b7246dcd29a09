// Two COM ports joined by a null modem: ZRV_TEST_NEAR_PORT is under test, ZRV_TEST_FAR_PORT plays the device.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>

#include "ZRVSerialIO.h"
#include "tests/device/far_end.h"

namespace zrv::testing {
namespace {

std::string PathFrom(const char* variable) {
  const char* name = std::getenv(variable);
  return name == nullptr ? std::string() : "\\\\.\\" + std::string(name);
}

}  // namespace

struct FarEnd::Line {
  ZRVSerialIO port;
};

FarEnd::FarEnd() : line_(std::make_unique<Line>()) {
  const std::string device = PathFrom("ZRV_TEST_FAR_PORT");
  if (device.empty()) return;
  if (line_->port.Open(device.c_str(), 921600, 0, 0) != 0) {
    ADD_FAILURE() << "cannot open " << device;
    return;
  }
  path_ = PathFrom("ZRV_TEST_NEAR_PORT");
}

// Leaves the line silent for the next test: first what came this way, then what an end still holds.
FarEnd::~FarEnd() {
  unsigned int got = 1;
  for (char chunk[4096]; got > 0;) line_->port.Read(chunk, sizeof chunk, &got, 100, ZRVSerialIO::kWaitForAll);
  ZRVSerialIO port;
  if (path_.empty() || port.Open(path_.c_str(), 921600, 0, 0) != 0) return;
  got = 1;
  for (char chunk[4096]; got > 0;) port.Read(chunk, sizeof chunk, &got, 30, ZRVSerialIO::kWaitForAll);
}

void FarEnd::Send(const std::string& bytes) {
  ASSERT_EQ(line_->port.Write(bytes.data(), static_cast<unsigned int>(bytes.size()), nullptr, 1000), 0);
}

std::string FarEnd::Receive(size_t count) {
  std::string bytes(count, '\0');
  unsigned int got = 0;
  line_->port.Read(bytes.data(), static_cast<unsigned int>(count), &got, 1000, ZRVSerialIO::kWaitForAll);
  bytes.resize(got);
  return bytes;
}

bool RunsUnderWine() { return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr; }

}  // namespace zrv::testing
