// A device connected to a simulated controller in this process, whose clock moves only when the device waits.
#ifndef ZRV_TESTS_SIMULATED_DEVICE_H
#define ZRV_TESTS_SIMULATED_DEVICE_H

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "ZRVDevice.h"
#include "simulator/controller.h"
#include "simulator/memory_transport.h"

namespace zrv::testing {

class SimulatedDevice : public ::testing::Test {
 protected:
  void Connect(const sim::Options& options = {}) {
    controller = std::make_shared<sim::Controller>(options);
    clock = std::make_shared<sim::VirtualClock>();
    Reconnect();
  }

  void Reconnect() {
    auto* port = new sim::MemoryTransport(controller, clock);
    port->Open("memory", 921600, 0, 0);
    device.ConnectDevice(port);
    ASSERT_EQ(device.GetLastError(), ErrorNone);
  }

  void Set(ZRVParam param, float value) {
    device.SetDeviceParam(param, value);
    ASSERT_EQ(device.GetLastError(), ErrorNone) << param;
  }

  // Lets the controller's time pass.
  void Wait(double seconds) {
    clock->Advance(seconds);
    controller->Advance(clock->Now());
  }

  // Loads a ramp: sample i is at x = i / count, y = -x, with m = i.
  void LoadRamp(unsigned count) {
    std::vector<float> x(count), y(count);
    std::vector<unsigned char> m(count);
    for (unsigned i = 0; i < count; ++i) {
      x[i] = static_cast<float>(i) / static_cast<float>(count);
      y[i] = -x[i];
      m[i] = static_cast<unsigned char>(i);
    }
    device.SendDataStream(x.data(), y.data(), m.data(), count, 0, false);
    ASSERT_EQ(device.GetLastError(), ErrorNone);
  }

  std::shared_ptr<sim::Controller> controller;
  std::shared_ptr<sim::VirtualClock> clock;
  ZRVDevice device;
};

// A controller without the hardware filter, whose delay would shift the marks of a block.
inline sim::Options Unfiltered(uint32_t formatCode = 0) {
  sim::Options options;
  options.hardwareFilter = false;
  options.formatCode = formatCode;
  return options;
}

}  // namespace zrv::testing

#endif
