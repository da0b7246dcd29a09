// What the headers promise about threads: devices and generators share nothing, so that each thread may use its own.
// The sanitizer run (scripts/test --sanitize) has these watched for data races.
#include <gtest/gtest.h>

#include <cmath>
#include <thread>

#include "ZRVDataGenerator.h"
#include "device/state.h"
#include "simulator/memory_transport.h"

namespace zrv::testing {
namespace {

using Samples = std::vector<float>;

int GoodRounds(const std::string& name, uint32_t format, float position) {
  sim::Options options;
  options.deviceName = name;
  options.formatCode = format;
  const auto controller = std::make_shared<sim::Controller>(options);
  auto* port = new sim::MemoryTransport(controller, std::make_shared<sim::VirtualClock>());
  port->Open("memory", 921600, 0, 0);
  ZRVDevice device;
  StateOf(device).link.machine.pause = [](std::chrono::milliseconds) {};
  device.ConnectDevice(port);
  int good = 0;
  for (unsigned round = 1; round <= 200; ++round) {
    Samples x(round, position), y = x;
    std::vector<unsigned char> m(round, static_cast<unsigned char>(round));
    device.SendDataStream(x.data(), y.data(), m.data(), round, 0, false);
    ZRVDeviceParams params;
    device.GetDeviceParams(&params);
    const auto& block = controller->Block();
    good += device.GetLastError() == ErrorNone && params.DeviceName == name && block.size() == round &&
            std::abs(block.back().x - position) < 0.001f;
  }
  return good;
}

Samples Draw(int seed) {
  ZRVDataGenerator g;
  Samples x(3000), y(3000), all;
  std::vector<unsigned char> m(3000);
  for (unsigned i = 1; i <= 50; ++i) {
    const unsigned corners = g.SpirographCurve(x.data(), y.data(), m.data(), 100, 4, 0, 0.9f, seed, 2, 3);
    Samples sx(3000), sy(3000);
    g.InterpolateData(x.data(), y.data(), m.data(), sx.data(), sy.data(), m.data() + 100, corners, 1000 + i, 2, 0.2f,
                      0.2f);
    g.SetupSoftwareFilter(1 + i % 6, 5, 1000, 20000, true);
    g.FilterData(sx.data(), sy.data(), sx.data(), sy.data(), 1000, true);
    all.insert(all.end(), sx.begin(), sx.begin() + 1000);
  }
  return all;
}

TEST(Threads, EachItsOwnDeviceAndGenerator) {
  int good[2] = {};
  Samples drawn[2];
  std::thread left([&] { good[0] = GoodRounds("left", 0, 0.25f), drawn[0] = Draw(7); });
  std::thread right([&] { good[1] = GoodRounds("right", 1, -0.75f), drawn[1] = Draw(11); });
  left.join();
  right.join();
  EXPECT_EQ(good[0], 200);
  EXPECT_EQ(good[1], 200);
  EXPECT_EQ(drawn[0], Draw(7));
  EXPECT_EQ(drawn[1], Draw(11));
}

}  // namespace
}  // namespace zrv::testing
