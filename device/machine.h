// What the device link takes from the machine it runs on. Tests and fuzzers put their own in its place, so that
// nothing waits and no real port is touched.
#ifndef ZRV_DEVICE_MACHINE_H
#define ZRV_DEVICE_MACHINE_H

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "ZRVSerialIO.h"
#include "device/serial/ports.h"

namespace zrv {

struct Machine {
  std::function<void(std::chrono::milliseconds)> pause = Pause;
  std::function<std::vector<SerialPortEntry>()> listPorts = ListSerialPorts;
  std::function<bool(const char* path)> probe = ZRVSerialIO::Probe;
  std::function<std::unique_ptr<ZRVSerialIO>()> makePort = [] { return std::make_unique<ZRVSerialIO>(); };
};

}  // namespace zrv

#endif
