// The transport on a real serial line, as it holds on every system.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "tests/device/serial_line.h"

namespace zrv::testing {
namespace {

#ifdef _WIN32
constexpr const char* kNoSuchPort = "\\\\.\\COM250";
#else
constexpr const char* kNoSuchPort = "/dev/ttyNONE0";
#endif

TEST_F(SerialLine, BytesPassUnchangedBothWays) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  EXPECT_EQ(port.Write(all.data(), 256, &moved, 1000), 0);
  EXPECT_EQ(moved, 256u);
  EXPECT_EQ(farEnd.Receive(256), all);
  farEnd.Send(all);
  std::string back(256, '\0');
  EXPECT_EQ(port.Read(back.data(), 256, &moved, 1000, ZRVSerialIO::kWaitForAll), 0);
  EXPECT_EQ(back, all);
}

TEST_F(SerialLine, ATimedOutReadKeepsWhatCameAndFillsTheRest) {
  farEnd.Send("ab");
  std::string buffer(5, '\0');
  const auto start = Clock::now();
  EXPECT_EQ(port.Read(buffer.data(), 5, &moved, 60, ZRVSerialIO::kWaitForAll), 5);
  EXPECT_GE(MillisecondsSince(start), 59);
  EXPECT_EQ(moved, 2u);
  EXPECT_EQ(buffer, "ab\xDC\xDC\xDC");
  farEnd.Send("stale");
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(port.Purge(), 0);
  EXPECT_EQ(port.Read(buffer.data(), 5, &moved, 20, ZRVSerialIO::kKeepMode), 5);
  EXPECT_EQ(moved, 0u);
}

TEST_F(SerialLine, ReturnAtOnceTakesWhatIsQueued) {
  const int emptyRead = RunsUnderWine() ? 5 : 0;
  char buffer[8];
  const auto start = Clock::now();
  EXPECT_EQ(port.Read(buffer, 8, &moved, 200, ZRVSerialIO::kReturnAtOnce), emptyRead);
  EXPECT_EQ(moved, 0u);
  farEnd.Send("xyz");
  std::string got;
  while (got.size() < 3 && MillisecondsSince(start) < 1000) {
    const int status = port.Read(buffer, 8, &moved, 200, ZRVSerialIO::kKeepMode);
    EXPECT_EQ(status, moved == 0 ? emptyRead : 0);
    got.append(buffer, moved);
  }
  EXPECT_EQ(got, "xyz");
  EXPECT_LT(MillisecondsSince(start), 1000);
  port.SetReadTimeoutMode(7);  // no such mode: nothing changes
  EXPECT_EQ(port.Read(buffer, 8, &moved, 200, ZRVSerialIO::kKeepMode), emptyRead);
}

TEST_F(SerialLine, Lines) {
  char line[81];
  farEnd.Send("ZR-INFO\n\nnext");
  EXPECT_EQ(port.ReadLine(line, '\n', 1000), 0);
  EXPECT_STREQ(line, "ZR-INFO");
  EXPECT_EQ(port.ReadLine(line, '\n', 1000), 0);
  EXPECT_STREQ(line, "");
  EXPECT_EQ(port.ReadLine(line, '\n', 30), 5);
  EXPECT_STREQ(line, "next");
  farEnd.Send(std::string(100, 'q'));
  EXPECT_EQ(port.ReadLine(line, '\n', 1000), 0);
  EXPECT_EQ(std::string(line), std::string(80, 'q'));
  EXPECT_EQ(port.ReadLine(nullptr, '\n', 10), 4);
}

TEST_F(SerialLine, AStalledWriteHonoursItsTimeout) {
  const std::string block(1 << 20, 'x');
  const auto start = Clock::now();
  EXPECT_EQ(port.Write(block.data(), 1 << 20, &moved, 80), 5);
  EXPECT_GE(MillisecondsSince(start), 79);
  EXPECT_LT(MillisecondsSince(start), 2000);
  EXPECT_LT(moved, 1u << 20);
}

TEST_F(SerialLine, AnyBaudRate) {
  for (const unsigned rate : {460800u, 3686400u, 1234567u, 0u}) {  // 0 would hang up the line: not set
    port.SetBaudRate(rate);
    EXPECT_EQ(port.Write("a", 1, nullptr, 100), 0);
    EXPECT_EQ(farEnd.Receive(1), "a");
  }
}

TEST_F(SerialLine, OnePortOneOwner) {
  if (RunsUnderWine()) GTEST_SKIP() << "Wine lets a port be opened twice";
  EXPECT_EQ(port.Open(kNoSuchPort, 9600, 0, 0), 4) << "an open object stays as it is";
  EXPECT_FALSE(ZRVSerialIO::Probe(farEnd.path().c_str()));
  ZRVSerialIO second;
  EXPECT_EQ(second.Open(farEnd.path().c_str(), 921600, 0, 0), 2);
  EXPECT_EQ(port.Close(), 0);
  EXPECT_TRUE(ZRVSerialIO::Probe(farEnd.path().c_str()));
  EXPECT_EQ(second.Open(farEnd.path().c_str(), 921600, 0, 0), 0);
}

TEST(ClosedSerialIO, EveryCallSaysSo) {
  ZRVSerialIO port;
  char buffer[81];
  EXPECT_EQ(port.Open(kNoSuchPort, 9600, 0, 0), 2);
  EXPECT_EQ(port.Open(nullptr, 9600, 0, 0), 2);
  EXPECT_EQ(port.Write("a", 1, nullptr, 10), 1);
  EXPECT_EQ(port.Read(buffer, 1, nullptr, 10, 1), 1);
  EXPECT_EQ(port.ReadLine(buffer, '\n', 10), 1);
  EXPECT_EQ(port.Purge(), 1);
  EXPECT_EQ(port.Close(), 0);
  port.SetBaudRate(9600);
  port.SetReadTimeoutMode(0);
  EXPECT_FALSE(ZRVSerialIO::Probe(kNoSuchPort));
  EXPECT_FALSE(ZRVSerialIO::Probe(nullptr));
}

}  // namespace
}  // namespace zrv::testing
