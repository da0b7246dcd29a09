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
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return noMemory ? nullptr : ::operator new[](size); }

namespace zrv::testing {
namespace {

std::string Names(std::initializer_list<const char*> names) {
  std::string all;
  for (const char* name : names) (all += name) += '\0';
  return all;
}

std::string Found() {
  std::string found;
  for (const auto& port : ListSerialPorts()) {
    found += port.name + "=" + std::to_string(port.number) + "@" + port.path + " ";
  }
  return found;
}

class ComPorts : public ::testing::Test {
 protected:
  void SetUp() override { Kernel() = {}; }
  void TearDown() override { noMemory = false; }
};

TEST_F(ComPorts, AreTheNamesOfComAndANumberInTheSystemsOrder) {
  Kernel().deviceNames = Names({"NUL", "COM12", "COM", "COMX", "COM3X", "COM-3", "COM 3", "LPT1", "com7", "Com08", "XCOM3",
                                "CO", "COM3", "COM3", "COM99999999999", "PhysicalDrive0"});
  EXPECT_EQ(Found(), "COM12=12@\\\\.\\COM12 COM7=7@\\\\.\\COM7 COM8=8@\\\\.\\COM8 COM3=3@\\\\.\\COM3 COM3=3@\\\\.\\COM3 ");
  EXPECT_EQ(Kernel().Count("QueryDosDeviceA"), 1);
}

TEST_F(ComPorts, MoreThanFitTheFirstBuffer) {
  for (int i = 1; i <= 4000; ++i) Kernel().deviceNames += "COM" + std::to_string(i) + '\0';
  const auto ports = ListSerialPorts();
  ASSERT_EQ(ports.size(), 4000u);
  EXPECT_EQ(ports[255].number, 256u);
  EXPECT_EQ(ports.back().name, "COM4000");
  EXPECT_EQ(Kernel().largestNamesSize, 32768u);  // 30 893 characters: doubled three times
  EXPECT_EQ(Kernel().Count("QueryDosDeviceA"), 4);
}

TEST_F(ComPorts, AListThatJustFits) {
  const std::string filler(4096 - sizeof "COM5" - 2, 'x');  // with both NULs of the end, 4096
  Kernel().deviceNames = Names({filler.c_str(), "COM5"});
  EXPECT_EQ(Found(), "COM5=5@\\\\.\\COM5 ");
  EXPECT_EQ(Kernel().Count("QueryDosDeviceA"), 1);
}

TEST_F(ComPorts, ThereAreNoneWhenTheSystemGivesNoList) {
  EXPECT_EQ(Found(), "");  // an empty list
  Kernel().deviceNames = Names({"COM1"});
  Kernel().failing = "QueryDosDeviceA";
  EXPECT_EQ(Found(), "");
  EXPECT_EQ(Kernel().Count("QueryDosDeviceA"), 2);  // other errors are final
  EXPECT_EQ(Kernel().lastError, static_cast<DWORD>(ERROR_GEN_FAILURE));

  Kernel() = {};
  Kernel().namesNeverFit = true;
  EXPECT_EQ(Found(), "");
  EXPECT_EQ(Kernel().largestNamesSize, 16u << 20);

  Kernel() = {};
  noMemory = true;
  EXPECT_EQ(Found(), "");
  EXPECT_EQ(Kernel().lastError, static_cast<DWORD>(ERROR_OUTOFMEMORY));
}

TEST_F(ComPorts, PathsOfNames) {
  EXPECT_EQ(PathOfPort("COM3"), "\\\\.\\COM3");
  EXPECT_EQ(PathOfPort("\\\\.\\COM3"), "\\\\.\\COM3");
  for (const char* name : {"com3", "COM", "", "/dev/ttyS0", "ttyUSB0"}) EXPECT_EQ(PathOfPort(name), "") << name;
}

}  // namespace
}  // namespace zrv::testing
