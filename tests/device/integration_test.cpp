// The device against the simulated controller in this process, whose clock moves only when the device waits.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "simulator/memory_transport.h"
#include "tests/reliability/calls.h"

namespace zrv::testing {
namespace {

using sim::AnalogSignal;

class Integration : public ::testing::Test {
 protected:
  void Connect(const sim::Options& options) {
    controller = std::make_shared<sim::Controller>(options);
    auto* port = new sim::MemoryTransport(controller, clock);
    port->Open("memory", 921600, 0, 0);
    device.ConnectDevice(port);
    ASSERT_EQ(device.GetLastError(), ErrorNone);
  }
  void SetMode(ZRVDataMode mode) { device.SetDeviceParam(ParamDataMode, static_cast<float>(mode)); }

  // Lets the controller's time pass.
  void Wait(double seconds) {
    clock->Advance(seconds);
    controller->Advance(clock->Now());
  }

  std::shared_ptr<sim::Controller> controller;
  std::shared_ptr<sim::VirtualClock> clock = std::make_shared<sim::VirtualClock>();
  reliability::Bench bench;
  ZRVDevice& device = bench.device;
};

AnalogSignal Dc(double volts) { return {AnalogSignal::Shape::kDc, volts, 0, 0, 1}; }

TEST_F(Integration, Streams) {
  sim::Options options;
  options.analogInputs = {Dc(2), Dc(-5)};
  options.firmwareName = "ORBEX1D 1.0";
  options.sensorBlockSamples = 500;
  Connect(options);
  const float high = 32768 + 2 * 3277;
  std::vector<float> ai0(5000), ai1(5000);
  SetMode(DataModeAnalogVolts);
  ASSERT_EQ(device.GetAnalogInputStream(ai0.data(), ai1.data(), 5000), 5000u);
  EXPECT_NEAR(ai0[4999], 2, 1e-3f);
  EXPECT_NEAR(ai1[4999], -5, 1e-3f);
  Wait(0.02);
  EXPECT_NEAR(device.GetAnalogInputStream(ai0.data(), ai1.data(), 0), 200, 2);
  SetMode(DataModeOrBEX1);
  for (int block = 0; block < 3; ++block) {
    ASSERT_EQ(device.GetOrBEX1Stream(ai0.data(), 1, 500), 500u);
    EXPECT_EQ(std::tuple(ai0[0], ai0[499]), std::tuple(high * 10, high * 10));
  }
  SetMode(DataModeBuffer);
  EXPECT_TRUE(device.IsDeviceResponding());  // nothing of the stream is left in the way
}

TEST_F(Integration, ATargetIsTracked) {
  Connect({});
  controller->SetTrackTarget(sim::TrackTarget{0.5f, -0.25f, 42, true});
  ZRVTrackStatus status{};
  device.GetTrackStatus(&status);
  EXPECT_EQ(std::tuple(status.Valid, status.StatusFlag, status.StatusValue), std::tuple(true, true, 42u));
  EXPECT_NEAR(status.X, 0.5f, 1e-4f);
  EXPECT_NEAR(status.Y, -0.25f, 1e-4f);
}

// Every call brings what it should and leaves a true record; with talk that does not end it returns within its time,
// and the link is sound as soon as the talk is over.
TEST_F(Integration, EveryCallIsRightAndTalkWithoutEndHoldsNoneUp) {
  Connect(reliability::ControllerOptions());
  reliability::FeedTracking(*controller);
  for (const reliability::Call& call : reliability::Calls()) {
    if ((call.traits & (reliability::kDisconnects | reliability::kStreams)) != 0) continue;
    SCOPED_TRACE(call.name);
    if (call.prepare != nullptr) call.prepare(bench);
    EXPECT_TRUE(call.run(bench));
    EXPECT_EQ(device.GetLastError(), ErrorNone);
    EXPECT_STREQ(reliability::FirstFalseParam(device, *controller), nullptr);
    controller->faults().StartChatter({});
    Wait(0.01);
    const double before = clock->Now();
    call.run(bench);
    EXPECT_LE(clock->Now() - before, call.boundMs / 1000.0);
    controller->faults().Clear();
    EXPECT_TRUE(device.IsDeviceResponding());
  }
}

}  // namespace
}  // namespace zrv::testing
