// A serial link to a simulated controller in the same process, for ZRVDevice::ConnectDevice(ZRVSerialIO*).
//
//   auto controller = std::make_shared<sim::Controller>();
//   auto* port = new sim::MemoryTransport(controller, std::make_shared<sim::VirtualClock>());
//   port->Open("memory", 921600, 0, 0);
//   device.ConnectDevice(port);   // the device owns port; controller and clock are shared with the caller
//
// It reads and writes as the real port does (0xDC filler, both read modes, the same statuses). With a
// VirtualClock a read that waits moves the clock to the next thing the controller does, so that tests of
// long waits take no time. Not thread-safe: controller and transport belong to one thread.
#ifndef ZRV_SIMULATOR_MEMORY_TRANSPORT_H
#define ZRV_SIMULATOR_MEMORY_TRANSPORT_H

#include <cstdint>
#include <memory>
#include <vector>

#include "ZRVSerialIO.h"
#include "simulator/clock.h"
#include "simulator/controller.h"

namespace zrv::sim {

class MemoryTransport : public ZRVSerialIO {
 public:
  explicit MemoryTransport(std::shared_ptr<Controller> controller,
                           std::shared_ptr<Clock> clock = std::make_shared<RealClock>());
  ~MemoryTransport() override;

  // Path and sizes are not looked at. 2 when the link was cut.
  int Open(const char* path, unsigned int baudRate, unsigned int inputBufferSize,
           unsigned int outputBufferSize) override;
  int Close() override;
  void SetBaudRate(unsigned int baudRate) override;
  void SetReadTimeoutMode(int mode) override;
  // What a controller that stopped receiving does not take stays on the line; once that is full, a write ends with a
  // time-out after 5 s at the latest, as on Linux.
  int Write(const void* buffer, unsigned int count, unsigned int* written, unsigned int timeoutMs) override;
  // Where the real port would wait for ever, because nothing more can come, this ends with a time-out.
  int Read(void* buffer, unsigned int count, unsigned int* received, unsigned int timeoutMs, int timeoutMode) override;
  int ReadLine(char* buffer, char terminator, unsigned int timeoutMs) override;
  int PurgeQueues() override;

  // Has the line hold all it can.
  void FillLine() { onLine_.resize(kLineBytes); }

  bool IsOpen() const { return open_; }
  unsigned int baudRate() const { return baudRate_; }

 private:
  static constexpr size_t kLineBytes = 4096;

  void Deliver();
  bool WaitForMore(double deadline);

  std::shared_ptr<Controller> controller_;
  std::shared_ptr<Clock> clock_;
  std::vector<uint8_t> onLine_;  // written, not taken yet
  bool open_ = false;
  unsigned int baudRate_ = 0;
  int mode_ = kWaitForAll;
};

}  // namespace zrv::sim

#endif
