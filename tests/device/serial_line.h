// What the transport tests share: a port that is open, and its far end.
#ifndef ZRV_TESTS_DEVICE_SERIAL_LINE_H
#define ZRV_TESTS_DEVICE_SERIAL_LINE_H

#include <gtest/gtest.h>

#include <chrono>

#include "ZRVSerialIO.h"
#include "tests/device/far_end.h"

namespace zrv::testing {

using Clock = std::chrono::steady_clock;

inline double MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

class SerialLine : public ::testing::Test {
 protected:
  void SetUp() override {
    if (farEnd.path().empty()) GTEST_SKIP() << "no line to test on: see docs/windows.md";
    ASSERT_EQ(port.Open(farEnd.path().c_str(), 921600, 131072, 131072), 0);
  }

  FarEnd farEnd;
  ZRVSerialIO port;
  unsigned moved = 99;
};

}  // namespace zrv::testing

#endif
