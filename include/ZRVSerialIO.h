// The serial link to a controller: one port, opened, read and written with time-outs.
//
//   ZRVSerialIO port;
//   if (port.Open("/dev/ttyUSB0", 921600, 131072, 131072) != 0) return;
//   port.Write("\n", 1, nullptr, 100);
//
// A host with another kind of link (a socket, memory) derives its own class and hands the object to
// ZRVDevice::ConnectDevice(ZRVSerialIO*). Not thread-safe: one caller at a time.
//
// Every operation returns a status: 0 success, 1 port not open, 2 port could not be opened, 4 input,
// output or set-up failed (the device was unplugged, for instance), 5 time-out. A time-out cancels what
// was pending, so that the next call starts clean. Times are milliseconds; ZRVSerialIO::kInfinite waits
// for ever.
#ifndef ZRV_SERIAL_IO_H
#define ZRV_SERIAL_IO_H

#include <memory>

#include "ZRVDefinitions.h"

class ZRV_API ZRVSerialIO {
 public:
  static constexpr unsigned int kInfinite = 0xFFFFFFFFu;

  // Statuses.
  static constexpr int kOk = 0;
  static constexpr int kNotOpen = 1;
  static constexpr int kOpenFailed = 2;
  static constexpr int kFailed = 4;
  static constexpr int kTimeout = 5;

  // Read time-out modes.
  static constexpr int kKeepMode = -1;     // leave the mode as it is
  static constexpr int kReturnAtOnce = 0;  // a read returns what is queued, perhaps nothing
  static constexpr int kWaitForAll = 1;    // a read waits for every byte asked for

  ZRVSerialIO();
  // Closes an open port.
  virtual ~ZRVSerialIO();
  ZRVSerialIO(const ZRVSerialIO&) = delete;
  ZRVSerialIO& operator=(const ZRVSerialIO&) = delete;

  // Opens a port exclusively, 8N1 without flow control, in wait-for-all mode. The sizes ask the driver
  // for its queue sizes in bytes, where the system lets a program ask. An object that is open already
  // stays as it is and returns 4.
  virtual int Open(const char* path, unsigned int baudRate, unsigned int inputBufferSize,
                   unsigned int outputBufferSize);

  // Closes the port; 0 also when it was closed already.
  virtual int Close();

  // Sets the speed, any number of baud that the driver can make, and the line to 8N1 raw.
  virtual void SetBaudRate(unsigned int baudRate);

  // kReturnAtOnce or kWaitForAll; any other value changes nothing.
  virtual void SetReadTimeoutMode(int mode);

  // Writes count bytes. written, when given, gets the number that went out (also on a failure). On Linux a
  // write without a limit still ends with a time-out when the line takes nothing for 5 s.
  virtual int Write(const void* buffer, unsigned int count, unsigned int* written, unsigned int timeoutMs);

  // Fills the buffer with 0xDC, then reads up to count bytes, so that bytes that did not arrive can be
  // recognised. received, when given, gets the number that arrived (also on a time-out).
  virtual int Read(void* buffer, unsigned int count, unsigned int* received, unsigned int timeoutMs, int timeoutMode);

  // Reads a line into buffer (81 bytes at least), without its terminator and NUL-terminated. Ends at the
  // terminator, after 80 bytes, or with the first read that fails; timeoutMs is for each single byte.
  // Returns the status of the last read.
  virtual int ReadLine(char* buffer, char terminator, unsigned int timeoutMs);

  // Discards what is queued in both directions.
  int Purge();

  // Whether a port of this path exists and can be opened now.
  static bool Probe(const char* path);

  // Where ports are looked for on Linux; starts as "/dev". No effect on Windows.
  static void SetPortDirectory(const char* directory);

  // What Purge() calls: empties the driver's queues of the port that this class opened. A derived
  // transport overrides it, so that purging works there too. One that does not makes every resynchronisation of a
  // device end with ErrorSerialComm, and the data modes cannot be set.
  virtual int PurgeQueues();

 private:
  struct Port;  // the system's handles; absent while closed
  std::unique_ptr<Port> port_;
};

#endif
