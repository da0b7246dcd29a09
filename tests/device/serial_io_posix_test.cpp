// The transport on a pseudo-terminal: unplugging, signals, and how Linux ports are found.
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "device/serial/ports.h"
#include "tests/device/serial_line.h"

namespace zrv::testing {
namespace {

TEST_F(SerialLine, AWriteWithoutALimitEndsOnceNothingMoves) {
  const std::string block(1 << 20, 'x');
  const auto start = Clock::now();
  std::thread slowReader([&] {
    for (int i = 0; i < 4; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
      farEnd.Receive(20000);
    }
  });
  EXPECT_EQ(port.Write(block.data(), 1 << 20, &moved, ZRVSerialIO::kInfinite), 5);
  slowReader.join();
  EXPECT_GE(moved, 80000u);
  EXPECT_GE(MillisecondsSince(start), 1200 + 4900);
}

TEST_F(SerialLine, AnUnpluggedPortFailsPromptly) {
  std::thread unplug([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    farEnd.HangUp();
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

TEST_F(SerialLine, SignalsAreNoErrors) {
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
