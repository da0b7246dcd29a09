// What the headers promise about threads: devices shared under one lock, generators without any. The sanitizer run
// (scripts/test --sanitize) has these watched for data races.
#include <gtest/gtest.h>

#include <cmath>
#include <mutex>
#include <thread>

#include "ZRVDataGenerator.h"
#include "ZRVDevice.h"
#include "simulator/memory_transport.h"

namespace zrv::testing {
namespace {

using Samples = std::vector<float>;

// Each thread its own device, calls in turn.
TEST(Threads, TwoDevicesUnderOneLock) {
  std::mutex oneCaller;
  int good[2] = {};
  const auto use = [&](int which) {
    sim::Options options;
    options.deviceName = which == 0 ? "left" : "right";
    options.formatCode = static_cast<uint32_t>(which);
    const auto controller = std::make_shared<sim::Controller>(options);
    auto* port = new sim::MemoryTransport(controller, std::make_shared<sim::VirtualClock>());
    port->Open("memory", 921600, 0, 0);
    std::unique_lock lock(oneCaller);
    ZRVDevice device;
    device.ConnectDevice(port);
    for (unsigned round = 1; round <= 200; ++round) {
      lock.unlock();
      Samples x(round, which == 0 ? 0.25f : -0.75f), y = x;
      std::vector<unsigned char> m(round, static_cast<unsigned char>(round));
      lock.lock();
      device.SendDataStream(x.data(), y.data(), m.data(), round, 0, false);
      ZRVDeviceParams params;
      device.GetDeviceParams(&params);
      const auto& block = controller->Block();
      good[which] += device.GetLastError() == ErrorNone && params.DeviceName == options.deviceName &&
                     block.size() == round && std::abs(block.back().x - x[0]) < 0.001f;
    }
  };
  std::thread left(use, 0), right(use, 1);
  left.join();
  right.join();
  EXPECT_EQ(good[0], 200);
  EXPECT_EQ(good[1], 200);
}

Samples Draw(unsigned seed) {
  ZRVDataGenerator g;
  Samples x(3000), y(3000), all;
  std::vector<unsigned char> m(3000);
  for (unsigned i = 1; i <= 50; ++i) {
    const unsigned corners = g.SpirographCurve(x.data(), y.data(), m.data(), 100, 4, 0, 0.9f, static_cast<int>(seed), 2, 3);
    Samples sx(3000), sy(3000);
    g.InterpolateData(x.data(), y.data(), m.data(), sx.data(), sy.data(), m.data() + 100, corners, 1000 + i, 2, 0.2f, 0.2f);
    g.SetupSoftwareFilter(1 + i % 6, 5, 1000, 20000, true);
    g.FilterData(sx.data(), sy.data(), sx.data(), sy.data(), 1000, true);
    all.insert(all.end(), sx.begin(), sx.begin() + 1000);
  }
  return all;
}

TEST(Threads, GeneratorsNeedNoLock) {
  Samples left, right;
  std::thread one([&] { left = Draw(7); }), other([&] { right = Draw(11); });
  one.join();
  other.join();
  EXPECT_EQ(left, Draw(7));
  EXPECT_EQ(right, Draw(11));
}

}  // namespace
}  // namespace zrv::testing
