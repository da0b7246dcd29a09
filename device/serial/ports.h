// The machine's serial ports: which there are, and how a port's name becomes a path that Open() takes.
#ifndef ZRV_DEVICE_SERIAL_PORTS_H
#define ZRV_DEVICE_SERIAL_PORTS_H

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace zrv {

struct SerialPortEntry {
  std::string name;  // as ConnectDevice takes it: "COM3", "ttyUSB0"
  std::string path;  // as ZRVSerialIO::Open takes it
  unsigned int number = 0;
};

// The ports a controller may be on, in the order in which discovery tries them.
std::vector<SerialPortEntry> ListSerialPorts();

// The path of a port that a user names; empty when the name has no valid form.
std::string PathOfPort(std::string_view name);

// The forms that hold on every system: "COM3" is the device "\\.\COM3", and a name that begins with a
// backslash is a path already. Anything else, or fewer than 4 characters: empty.
std::string PathOfComPort(std::string_view name);

void Pause(std::chrono::milliseconds duration);

}  // namespace zrv

#endif
