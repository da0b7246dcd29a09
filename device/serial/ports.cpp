#include "device/serial/ports.h"

#include <thread>

namespace zrv {

std::string PathOfComPort(std::string_view name) {
  if (name.size() < 4) return {};
  if (name.front() == 'C') return "\\\\.\\" + std::string(name);
  if (name.front() == '\\') return std::string(name);
  return {};
}

void Pause(std::chrono::milliseconds duration) { std::this_thread::sleep_for(duration); }

}  // namespace zrv
