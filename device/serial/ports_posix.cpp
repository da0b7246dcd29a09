// Serial ports of a Linux machine: device files of known names in the port directory.
#include "device/serial/ports.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <system_error>

#include "ZRVSerialIO.h"

namespace zrv {
namespace {

// In the order in which a controller is likely: USB adapter, USB device, Bluetooth, on-board port.
constexpr std::string_view kPrefixes[] = {"ttyUSB", "ttyACM", "rfcomm", "ttyS"};

std::string& PortDirectory() {
  static std::string directory = "/dev";
  return directory;
}

std::optional<unsigned int> NumberAfter(std::string_view prefix, std::string_view name) {
  if (name.substr(0, prefix.size()) != prefix) return std::nullopt;
  const std::string_view digits = name.substr(prefix.size());
  unsigned int number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return number;
}

std::vector<std::string> NamesInPortDirectory() {
  std::vector<std::string> names;
  std::error_code error;
  std::filesystem::directory_iterator entry(PortDirectory(), error);
  for (const std::filesystem::directory_iterator end; !error && entry != end; entry.increment(error)) {
    names.push_back(entry->path().filename().string());
  }
  return names;
}

bool IsCharacterDevice(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode);
}

}  // namespace

std::vector<SerialPortEntry> ListSerialPorts() {
  std::vector<SerialPortEntry> ports;
  const std::vector<std::string> names = NamesInPortDirectory();
  for (const std::string_view prefix : kPrefixes) {
    const size_t first = ports.size();
    for (const std::string& name : names) {
      if (const auto number = NumberAfter(prefix, name)) {
        ports.push_back({name, PortDirectory() + "/" + name, *number});
      }
    }
    std::sort(ports.begin() + static_cast<std::ptrdiff_t>(first), ports.end(),
              [](const SerialPortEntry& a, const SerialPortEntry& b) { return a.number < b.number; });
  }
  return ports;
}

std::string PathOfPort(std::string_view name) {
  if (name.empty()) return {};
  if (name.front() == '/') return std::string(name);
  if (name.find('/') == std::string_view::npos) {
    const std::string path = PortDirectory() + "/" + std::string(name);
    if (IsCharacterDevice(path)) return path;
  }
  return PathOfComPort(name);
}

}  // namespace zrv

void ZRVSerialIO::SetPortDirectory(const char* directory) {
  zrv::PortDirectory() = directory != nullptr && *directory != '\0' ? directory : "/dev";
}
