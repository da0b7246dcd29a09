// What the transport does alike on every system. The calls that reach the port itself are in
// serial_io_posix.cpp and serial_io_win32.cpp.
#include "ZRVSerialIO.h"

namespace {

constexpr int kMaxLineBytes = 80;

}  // namespace

int ZRVSerialIO::ReadLine(char* buffer, char terminator, unsigned int timeoutMs) {
  if (buffer == nullptr) return kFailed;
  SetReadTimeoutMode(kWaitForAll);
  buffer[0] = '\0';
  int status = kOk;
  for (int stored = 0; stored < kMaxLineBytes;) {
    char byte = 0;
    status = Read(&byte, 1, nullptr, timeoutMs, kKeepMode);
    if (status != kOk || byte == terminator) break;
    buffer[stored++] = byte;
    buffer[stored] = '\0';
  }
  return status;
}

int ZRVSerialIO::Purge() { return PurgeQueues(); }
