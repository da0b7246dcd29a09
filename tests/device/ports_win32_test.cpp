// Which of the system's device names are serial ports, whatever the system answers.
#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <string>

#include "device/serial/ports.h"
#include "tests/device/fake_kernel32.h"

namespace {
bool noMemory = false;
}

// The list of names is the only thing that is allocated this way.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return noMemory ? nullptr : ::operator new[](size);
}

namespace zrv::testing {
namespace {

std::string Found() {
  std::string found;
  for (const auto& port : ListSerialPorts()) {
    found += port.name + "=" + std::to_string(port.number) + "@" + port.path + " ";
  }
  return found;
}

TEST(ComPorts, AreTheNamesOfComAndANumberInTheSystemsOrder) {
  kernel = {};
  for (const char* name : {"NUL", "COM12", "COM", "COMX", "COM3X", "COM-3", "COM 3", "LPT1", "com7", "Com08", "XCOM3",
                           "CO", "COM3", "COM3", "COM99999999999"}) {
    (kernel.deviceNames += name) += '\0';
  }
  EXPECT_EQ(Found(),
            "COM12=12@\\\\.\\COM12 COM7=7@\\\\.\\COM7 COM8=8@\\\\.\\COM8 COM3=3@\\\\.\\COM3 COM3=3@\\\\.\\COM3 ");
  EXPECT_EQ(PathOfPort("COM3"), "\\\\.\\COM3");
  EXPECT_EQ(PathOfPort("\\\\.\\COM3"), "\\\\.\\COM3");
  for (const char* name : {"com3", "COM", "", "/dev/ttyS0"}) EXPECT_EQ(PathOfPort(name), "") << name;
}

TEST(ComPorts, TheListGrowsToAnyLength) {
  kernel = {};
  for (int i = 1; i <= 4000; ++i) kernel.deviceNames += "COM" + std::to_string(i) + '\0';
  const auto ports = ListSerialPorts();
  ASSERT_EQ(ports.size(), 4000u);
  EXPECT_EQ(ports.back().name, "COM4000");
  EXPECT_EQ(kernel.largestNamesSize, 32768u);  // 30 893 characters: doubled three times

  kernel = {};
  kernel.deviceNames = std::string(4096 - sizeof "COM5" - 2, 'x') + '\0' + "COM5" + '\0';  // with its end, 4096
  EXPECT_EQ(Found(), "COM5=5@\\\\.\\COM5 ");
  EXPECT_EQ(kernel.Count("QueryDosDeviceA"), 1);
}

TEST(ComPorts, ThereAreNoneWhenTheSystemGivesNoList) {
  kernel = {};
  EXPECT_EQ(Found(), "");  // an empty list
  kernel.failing = "QueryDosDeviceA";
  EXPECT_EQ(Found(), "");
  EXPECT_EQ(kernel.Count("QueryDosDeviceA"), 2);  // other errors are final
  kernel = {};
  kernel.namesNeverFit = true;
  EXPECT_EQ(Found(), "");
  EXPECT_EQ(kernel.largestNamesSize, 16u << 20);
  noMemory = true;
  EXPECT_EQ(Found(), "");
  EXPECT_EQ(kernel.lastError, static_cast<DWORD>(ERROR_OUTOFMEMORY));
  noMemory = false;
}

}  // namespace
}  // namespace zrv::testing
