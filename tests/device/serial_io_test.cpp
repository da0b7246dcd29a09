// The transport on a real pseudo-terminal.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "ZRVSerialIO.h"
#include "device/serial/ports.h"

namespace zrv::testing {
namespace {

using Clock = std::chrono::steady_clock;

double MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The far end of a serial line.
class FarEnd {
 public:
  FarEnd() : fd_(posix_openpt(O_RDWR | O_NOCTTY)) {
    grantpt(fd_);
    unlockpt(fd_);
    path_ = ptsname(fd_);
  }
  ~FarEnd() { HangUp(); }
  const char* path() const { return path_.c_str(); }
  void Send(const std::string& bytes) { ASSERT_EQ(write(fd_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size())); }
  std::string Receive(size_t count) {
    std::string bytes;
    pollfd line = {fd_, POLLIN, 0};
    while (bytes.size() < count && poll(&line, 1, 1000) > 0) {
      char chunk[4096];
      const ssize_t got = read(fd_, chunk, std::min(sizeof chunk, count - bytes.size()));
      if (got <= 0) break;
      bytes.append(chunk, static_cast<size_t>(got));
    }
    return bytes;
  }
  void HangUp() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
  }

 private:
  int fd_;
  std::string path_;
};

class SerialIO : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(port.Open(far.path(), 921600, 131072, 131072), 0); }

  FarEnd far;
  ZRVSerialIO port;
  unsigned moved = 99;
};

TEST_F(SerialIO, BytesPassUnchangedBothWays) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  EXPECT_EQ(port.Write(all.data(), 256, &moved, 1000), 0);
  EXPECT_EQ(moved, 256u);
  EXPECT_EQ(far.Receive(256), all);
  far.Send(all);
  std::string back(256, '\0');
  EXPECT_EQ(port.Read(back.data(), 256, &moved, 1000, ZRVSerialIO::kWaitForAll), 0);
  EXPECT_EQ(back, all);
}

TEST_F(SerialIO, ATimedOutReadKeepsWhatCameAndFillsTheRest) {
  far.Send("ab");
  unsigned char buffer[5] = {};
  const auto start = Clock::now();
  EXPECT_EQ(port.Read(buffer, 5, &moved, 60, ZRVSerialIO::kWaitForAll), 5);
  EXPECT_GE(MillisecondsSince(start), 59);
  EXPECT_EQ(moved, 2u);
  EXPECT_EQ(std::string(buffer, buffer + 5), "ab\xDC\xDC\xDC");
  far.Send("later");
  EXPECT_EQ(port.Read(buffer, 5, &moved, 1000, ZRVSerialIO::kKeepMode), 0);
  EXPECT_EQ(std::string(buffer, buffer + 5), "later");
}

TEST_F(SerialIO, ReturnAtOnceTakesWhatIsQueued) {
  char buffer[8];
  const auto start = Clock::now();
  EXPECT_EQ(port.Read(buffer, 8, &moved, 2000, ZRVSerialIO::kReturnAtOnce), 0);
  EXPECT_EQ(moved, 0u);
  far.Send("xyz");
  while (moved == 0 && MillisecondsSince(start) < 1000) {
    EXPECT_EQ(port.Read(buffer, 8, &moved, 2000, ZRVSerialIO::kKeepMode), 0);
  }
  EXPECT_EQ(std::string(buffer, moved), "xyz");
  EXPECT_LT(MillisecondsSince(start), 1000);
  port.SetReadTimeoutMode(7);  // no such mode: nothing changes
  EXPECT_EQ(port.Read(buffer, 8, &moved, 2000, ZRVSerialIO::kKeepMode), 0);
}

TEST_F(SerialIO, Lines) {
  char line[81];
  far.Send("ZR-INFO\n\nnext");
  EXPECT_EQ(port.ReadLine(line, '\n', 1000), 0);
  EXPECT_STREQ(line, "ZR-INFO");
  EXPECT_EQ(port.ReadLine(line, '\n', 1000), 0);
  EXPECT_STREQ(line, "");
  EXPECT_EQ(port.ReadLine(line, '\n', 30), 5);
  EXPECT_STREQ(line, "next");
  far.Send(std::string(100, 'q'));
  EXPECT_EQ(port.ReadLine(line, '\n', 1000), 0);
  EXPECT_EQ(std::string(line), std::string(80, 'q'));
  EXPECT_EQ(port.ReadLine(nullptr, '\n', 10), 4);
}

TEST_F(SerialIO, AStalledWriteHonoursItsTimeout) {
  const std::string block(1 << 20, 'x');
  const auto start = Clock::now();
  EXPECT_EQ(port.Write(block.data(), 1 << 20, &moved, 80), 5);
  EXPECT_GE(MillisecondsSince(start), 79);
  EXPECT_LT(MillisecondsSince(start), 2000);
  EXPECT_LT(moved, 1u << 20);
}

TEST_F(SerialIO, AWriteWithoutALimitEndsOnceNothingMoves) {
  const std::string block(1 << 20, 'x');
  const auto start = Clock::now();
  std::thread slowReader([&] {
    for (int i = 0; i < 4; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
      far.Receive(20000);
    }
  });
  EXPECT_EQ(port.Write(block.data(), 1 << 20, &moved, ZRVSerialIO::kInfinite), 5);
  slowReader.join();
  EXPECT_GE(moved, 80000u);
  EXPECT_GE(MillisecondsSince(start), 1200 + 4900);
}

TEST_F(SerialIO, AnUnpluggedPortFailsPromptly) {
  std::thread unplug([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    far.HangUp();
  });
  char buffer[4];
  const auto start = Clock::now();
  EXPECT_EQ(port.Read(buffer, 4, &moved, ZRVSerialIO::kInfinite, ZRVSerialIO::kWaitForAll), 4);
  unplug.join();
  EXPECT_EQ(port.Read(buffer, 4, &moved, 5000, ZRVSerialIO::kReturnAtOnce), 4);
  EXPECT_EQ(port.Write("abc", 3, &moved, ZRVSerialIO::kInfinite), 4);
  EXPECT_NE(port.Purge(), 0);
  EXPECT_LT(MillisecondsSince(start), 1000);
  EXPECT_EQ(port.Close(), 0);
}

TEST_F(SerialIO, SignalsAreNoErrors) {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  sigaction(SIGALRM, &action, nullptr);
  const itimerval every = {{0, 5000}, {0, 5000}};
  setitimer(ITIMER_REAL, &every, nullptr);
  char buffer[4];
  const auto start = Clock::now();
  EXPECT_EQ(port.Read(buffer, 4, &moved, 100, ZRVSerialIO::kWaitForAll), 5);
  EXPECT_GE(MillisecondsSince(start), 99);
  const itimerval never = {};
  setitimer(ITIMER_REAL, &never, nullptr);
}

TEST_F(SerialIO, PurgeEmptiesTheQueue) {
  far.Send("stale");
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(port.Purge(), 0);
  char buffer[5];
  EXPECT_EQ(port.Read(buffer, 5, &moved, 20, ZRVSerialIO::kWaitForAll), 5);
  EXPECT_EQ(moved, 0u);
}

TEST_F(SerialIO, AnyBaudRate) {
  for (const unsigned rate : {921600u, 460800u, 250000u, 3686400u, 1234567u}) {
    port.SetBaudRate(rate);
    EXPECT_EQ(port.Write("a", 1, nullptr, 100), 0);
    EXPECT_EQ(far.Receive(1), "a");
  }
  port.SetBaudRate(0);  // would hang up the line
  EXPECT_EQ(port.Write("b", 1, nullptr, 100), 0);
}

TEST_F(SerialIO, OnePortOneOwner) {
  EXPECT_FALSE(ZRVSerialIO::Probe(far.path()));
  ZRVSerialIO second;
  EXPECT_EQ(second.Open(far.path(), 921600, 0, 0), 2);
  EXPECT_EQ(port.Open(far.path(), 921600, 0, 0), 4);
  EXPECT_EQ(port.Write("still", 5, nullptr, 100), 0);
  EXPECT_EQ(port.Close(), 0);
  EXPECT_TRUE(ZRVSerialIO::Probe(far.path()));
  EXPECT_EQ(second.Open(far.path(), 921600, 0, 0), 0);
}

TEST(ClosedSerialIO, EveryCallSaysSo) {
  ZRVSerialIO port;
  char buffer[81];
  EXPECT_EQ(port.Open("/dev/ttyNONE0", 9600, 0, 0), 2);
  EXPECT_EQ(port.Open(nullptr, 9600, 0, 0), 2);
  EXPECT_EQ(port.Open("/dev/null", 9600, 0, 0), 2);
  EXPECT_EQ(port.Write("a", 1, nullptr, 10), 1);
  EXPECT_EQ(port.Read(buffer, 1, nullptr, 10, 1), 1);
  EXPECT_EQ(port.ReadLine(buffer, '\n', 10), 1);
  EXPECT_EQ(port.Purge(), 1);
  EXPECT_EQ(port.Close(), 0);
  port.SetBaudRate(9600);
  port.SetReadTimeoutMode(0);
  EXPECT_FALSE(ZRVSerialIO::Probe("/dev/ttyNONE0"));
  EXPECT_FALSE(ZRVSerialIO::Probe(nullptr));
}

TEST(Ports, AreListedByKindThenNumber) {
  const auto directory = std::filesystem::temp_directory_path() / ("zrv-ports-" + std::to_string(getpid()));
  std::filesystem::create_directories(directory);
  for (const char* name : {"ttyS2", "ttyUSB10", "ttyUSB9", "ttyACM0", "rfcomm3", "ttyUSB", "ttyUSBx", "ttyS1a",
                           "ttyprintk", "tty1", "ttyUSB99999999999"}) {
    std::ofstream(directory / name) << "";
  }
  ZRVSerialIO::SetPortDirectory(directory.c_str());
  std::string found;
  for (const auto& port : ListSerialPorts()) found += port.name + " ";
  EXPECT_EQ(found, "ttyUSB9 ttyUSB10 ttyACM0 rfcomm3 ttyS2 ");
  EXPECT_EQ(PathOfPort("ttyUSB9"), "");  // a plain file is no port
  std::filesystem::remove(directory / "ttyUSB9");
  std::filesystem::create_symlink("/dev/null", directory / "ttyUSB9");
  EXPECT_EQ(PathOfPort("ttyUSB9"), (directory / "ttyUSB9").string());
  EXPECT_EQ(PathOfPort("../ttyUSB9"), "");
  EXPECT_EQ(PathOfPort("/x"), "/x");
  EXPECT_EQ(PathOfPort("COM3"), "\\\\.\\COM3");
  ZRVSerialIO::SetPortDirectory("/nonexistent");
  EXPECT_TRUE(ListSerialPorts().empty());
  ZRVSerialIO::SetPortDirectory(nullptr);
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace zrv::testing
