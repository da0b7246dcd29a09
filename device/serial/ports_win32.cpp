// Serial ports of a Windows machine: the MS-DOS device names COM1, COM2, ...
#include <windows.h>

#include <charconv>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <system_error>

#include "ZRVSerialIO.h"
#include "device/serial/ports.h"

namespace zrv {
namespace {

constexpr DWORD kFirstNamesSize = 4096;        // characters
constexpr DWORD kLargestNamesSize = 16 << 20;  // far beyond any machine; doubling ends here

// Every MS-DOS device name, each ended by a NUL and the last by two; null, with the system's last error
// set, when there is no list to be had.
std::unique_ptr<char[]> QueryDeviceNames() {
  for (DWORD size = kFirstNamesSize; size <= kLargestNamesSize; size *= 2) {
    // Two more than the system is told of: the list is ended whatever it wrote.
    std::unique_ptr<char[]> names(new (std::nothrow) char[size + 2]());
    if (names == nullptr) {
      SetLastError(ERROR_OUTOFMEMORY);
      return nullptr;
    }
    if (QueryDosDeviceA(nullptr, names.get(), size) != 0) return names;
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) return nullptr;
  }
  return nullptr;
}

char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// The number of a port name such as "COM12" or "com12"; empty for "COM", "COMX" and every other device.
std::optional<unsigned int> ComPortNumber(std::string_view name) {
  if (name.size() <= 3 || Upper(name[0]) != 'C' || Upper(name[1]) != 'O' || Upper(name[2]) != 'M') return std::nullopt;
  unsigned int number = 0;
  const char* const last = name.data() + name.size();
  const auto [end, error] = std::from_chars(name.data() + 3, last, number);
  if (error != std::errc() || end != last) return std::nullopt;
  return number;
}

}  // namespace

std::vector<SerialPortEntry> ListSerialPorts() {
  std::vector<SerialPortEntry> ports;
  const std::unique_ptr<char[]> names = QueryDeviceNames();
  if (names == nullptr) return ports;
  for (const char* name = names.get(); *name != '\0'; name += std::strlen(name) + 1) {
    if (const auto number = ComPortNumber(name)) {
      const std::string canonical = "COM" + std::to_string(*number);
      ports.push_back({canonical, PathOfComPort(canonical), *number});
    }
  }
  return ports;
}

std::string PathOfPort(std::string_view name) { return PathOfComPort(name); }

}  // namespace zrv

void ZRVSerialIO::SetPortDirectory(const char*) {}
