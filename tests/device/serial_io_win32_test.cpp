// A port that vanishes while it is open: ZRV_TEST_VANISHING_PORT is unplugged by the first byte that it is sent.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "device/serial/ports.h"
#include "tests/device/serial_line.h"

namespace zrv::testing {
namespace {

TEST(VanishingPort, FailsPromptlyAndForGood) {
  const char* name = std::getenv("ZRV_TEST_VANISHING_PORT");
  if (name == nullptr) GTEST_SKIP() << "no port to unplug: see docs/windows.md";
  ZRVSerialIO port;
  ASSERT_EQ(port.Open(PathOfPort(name).c_str(), 921600, 131072, 131072), 0);
  EXPECT_EQ(port.Write("x", 1, nullptr, 1000), 0);
  char buffer[4];
  unsigned got = 99;
  const auto start = Clock::now();
  EXPECT_NE(port.Read(buffer, 4, &got, 3000, ZRVSerialIO::kWaitForAll), 0);
  EXPECT_EQ(got, 0u);
  EXPECT_NE(port.Read(buffer, 4, &got, 1000, ZRVSerialIO::kReturnAtOnce), 0);
  EXPECT_NE(port.Write("abc", 3, nullptr, 1000), 0);
  EXPECT_LT(MillisecondsSince(start), 6000);
  EXPECT_EQ(port.Close(), 0);
  // Wine keeps the name of a port that is gone, and opens what is no serial port any more.
  const std::string path = PathOfPort(name);
  EXPECT_EQ(port.Open(path.c_str(), 921600, 131072, 131072), RunsUnderWine() ? 4 : 2);
  EXPECT_EQ(ZRVSerialIO::Probe(path.c_str()), RunsUnderWine());
  EXPECT_EQ(port.Write("abc", 3, nullptr, 1000), 1);
}

}  // namespace
}  // namespace zrv::testing
