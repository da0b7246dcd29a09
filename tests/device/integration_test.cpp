// The device against the simulated controller, from connecting to playing, sensing and tracking.
#include <cmath>
#include <filesystem>

#include "tests/device/simulated_device.h"
#include "tests/reliability/calls.h"

namespace zrv::testing {
namespace {

using sim::AnalogSignal;
using Integration = SimulatedDevice;

TEST_F(Integration, EveryParameterReachesTheControllerAndAFileBringsThemToAnother) {
  sim::Options options;
  options.deviceName = "Bench 7";
  options.formatCode = 3;
  options.capacity = 12345;
  Connect(options);
  EXPECT_TRUE(controller->IsPlaying());  // holds the centre
  EXPECT_NEAR(std::hypot(controller->Output().x, controller->Output().y), 0, 1e-3);
  const struct {
    ZRVParam param;
    float value, tolerance;
  } kCases[] = {{ParamUSARTBaudRate, 115200, 0}, {ParamSampleRate, 25000, 0},   {ParamHardwareFilterBw, 500, 0},
                {ParamVdifferenceMax, 33, 0},    {ParamVbias, 44, 0},           {ParamDataScale, 0.5f, 1e-4f},
                {ParamDataRotation, 1, 1e-3f},   {ParamMEMSDriverEnable, 1, 0}, {ParamDigitalOutputEnable, 1, 0},
                {ParamLaserModulationEnable, 1, 0}, {ParamBufferOffset, 99, 0}, {ParamDeviceAxes, 5, 0},
                {ParamBootSetting, 2, 0},        {ParamSyncMode, 9, 0},         {ParamDataMode, 3, 0}};
  for (const auto& c : kCases) Set(c.param, c.value);
  device.SetDeviceParam(ParamOutputOffsets, 0.25f, -0.5f);
  device.SetDeviceName("Renamed");
  ZRVDeviceParams params;
  const auto expectAll = [&] {
    device.GetDeviceParams(&params);
    ASSERT_EQ(device.GetLastError(), ErrorNone);
    for (const auto& c : kCases) EXPECT_NEAR(device.GetDeviceParam(c.param), c.value, c.tolerance) << c.param;
    EXPECT_NEAR(params.XOffset, 0.25f, 1e-4f);
    EXPECT_NEAR(params.YOffset, -0.5f, 1e-4f);
    EXPECT_EQ(controller->FramesRejected(), 0u);
  };
  expectAll();
  EXPECT_STREQ(params.DeviceName, "Renamed");
  EXPECT_EQ(std::tuple(params.SyncState, params.SampleBufferCapacity), std::tuple(3u, 12345u));

  ZRVDevice::SetDefinitionsFile(ZRV_SOURCE_DIR "/include/ZRVDefinitions.h");
  const auto path = (std::filesystem::temp_directory_path() / "zrv_integration_params.txt").string();
  device.SaveDeviceParams(path.c_str(), nullptr);
  Connect();
  ZRVDeviceParams loaded;
  device.LoadDeviceParams(&loaded, path.c_str());
  device.SetDeviceParams(&loaded);
  Set(ParamUSARTBaudRate, 115200);  // saved, never loaded
  expectAll();
  std::filesystem::remove(path);
  ZRVDevice::SetDefinitionsFile(nullptr);
}

TEST_F(Integration, SamplesOfEveryFormatArrive) {
  const struct {
    uint32_t format;
    double xStep, yStep;  // of the quantised position
    uint8_t m[3];
    uint32_t rgb[3];
  } kCases[] = {{0, 2.0 / 65535, 2.0 / 65535, {0, 1, 0x80}, {0, 0xFFFFFF, 0xFFFFFF}},
                {1, 2.0 / 4095, 2.0 / 2047, {0, 1, 0}, {0, 0xFFFFFF, 0}},
                {2, 2.0 / 4095, 2.0 / 4095, {0, 255, 255}, {0, 0xFF0000, 0x0000FF}},
                {3, 2.0 / 4095, 2.0 / 4095, {0, 255, 255}, {0, 0xFF0000, 0x0000FF}},
                {4, 2.0 / 4095, 2.0 / 4095, {0, 1, 0x80}, {0x00FF00, 0xFF0000, 0x0000FF}}};
  float x[] = {-1, 0.3f, 1}, y[] = {1, -0.7f, 0};
  unsigned char m[] = {0, 1, 0x80};
  unsigned int rgb[] = {0x00FF00, 0xFF0000, 0x0000FF};
  device.SetRGBData(rgb, 3);
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.format);
    Connect(Unfiltered(c.format));
    device.SendDataStream(x, y, m, 3, 0, false);
    const auto& block = controller->Block();
    ASSERT_EQ(block.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
      EXPECT_NEAR(block[i].x, x[i], c.xStep) << i;
      EXPECT_NEAR(block[i].y, y[i], c.yStep) << i;
      EXPECT_EQ(std::tuple(block[i].m, block[i].rgb), std::tuple(c.m[i], c.rgb[i])) << i;
    }
  }
}

TEST_F(Integration, PlayingWaitingAndStopping) {
  Connect(Unfiltered());
  LoadRamp(1000);
  const double before = clock->Now();
  device.StartDataStream(3, true);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_NEAR(clock->Now() - before, 0.3, 0.002);  // 3 * 1000 samples at 10000 a second
  EXPECT_FALSE(device.IsDeviceRunning());
  device.StartDataStream(2, false);
  Wait(0.05);
  EXPECT_NEAR(device.GetSamplesRemaining(), 1500, 2);
  device.StartDataStream(-1, false);
  Wait(0.1 + 0.0251);
  EXPECT_TRUE(device.IsDeviceRunning());
  device.StopDataStream();
  EXPECT_FALSE(device.IsDeviceRunning());
  EXPECT_NEAR(device.GetIStop(), 251, 2);
  EXPECT_NEAR(device.GetXStop(), static_cast<float>(device.GetIStop()) / 1000, 1e-4f);
  EXPECT_EQ(device.GetMStop(), device.GetIStop() & 0xFF);
}

AnalogSignal Dc(double volts) { return {AnalogSignal::Shape::kDc, volts, 0, 0, 1}; }

TEST_F(Integration, ReadingsAndACaptureOfAnyLength) {
  sim::Options options = Unfiltered();
  options.analogInputs = {AnalogSignal{AnalogSignal::Shape::kSine, 0, 5, 100, 1}, Dc(-3)};
  options.photoDetector = Dc(0.75);
  Connect(options);
  EXPECT_NEAR(device.GetAnalogInputValue(1), -3.0f, 1e-3f);
  EXPECT_NEAR(device.GetPhotoDetectorValue(), 0.75f, 1e-3f);
  for (const unsigned count : {1u, 250001u}) {
    std::vector<float> ai0(count + 1, 99.0f), ai1(count + 1, 99.0f);
    device.GetAnalogInputBuffer(ai0.data(), ai1.data(), count);
    ASSERT_EQ(device.GetLastError(), ErrorNone);
    for (unsigned i = 0; i < count; ++i) {
      ASSERT_NEAR(ai1[i], -3.0f, 1e-3f) << i;
      ASSERT_NEAR(ai0[i], ai0[i % 100], 0.01f) << i;  // 100 Hz at 10000 a second
    }
    EXPECT_EQ(std::tuple(ai0[count], ai1[count]), std::tuple(99.0f, 99.0f));
  }
}

TEST_F(Integration, Streams) {
  sim::Options options = Unfiltered();
  options.analogInputs = {Dc(2), Dc(-5)};
  options.firmwareName = "ORBEX1D 1.0";
  options.sensorBlockSamples = 500;
  Connect(options);
  const float high = 32768 + 2 * 3277;
  std::vector<float> ai0(5000), ai1(5000);
  Set(ParamDataMode, DataModeAnalogVolts);
  ASSERT_EQ(device.GetAnalogInputStream(ai0.data(), ai1.data(), 5000), 5000u);
  EXPECT_NEAR(ai0[4999], 2, 1e-3f);
  EXPECT_NEAR(ai1[4999], -5, 1e-3f);
  Wait(0.02);
  EXPECT_NEAR(device.GetAnalogInputStream(ai0.data(), ai1.data(), 0), 200, 2);
  Set(ParamDataMode, DataModeOrBEX1);
  for (int block = 0; block < 3; ++block) {
    ASSERT_EQ(device.GetOrBEX1Stream(ai0.data(), 1, 500), 500u);
    EXPECT_EQ(std::tuple(ai0[0], ai0[499]), std::tuple(high * 10, high * 10));
  }
  Set(ParamDataMode, DataModeBuffer);
  EXPECT_TRUE(device.IsDeviceResponding());  // nothing of the stream is left in the way
}

TEST_F(Integration, Tracking) {
  Connect();
  EXPECT_TRUE(device.IsTrackingSupported());
  ZRVTrackParams params, read;
  device.GetTrackParams(&params);
  EXPECT_EQ(std::tuple(params.TrackingSupported, params.NormalGain, params.TangentialGain), std::tuple(true, 63, 0));
  params.TangentialGain = -20;
  params.HitRatio = 0.2f;
  params.StateBit1 = 1;
  device.SetTrackParams(&params);
  device.GetTrackParams(&read);
  EXPECT_EQ(std::tuple(read.TangentialGain, read.HitRatio, read.StateBit1), std::tuple(-20, 0.2f, 1u));

  controller->SetTrackTarget(sim::TrackTarget{0.5f, -0.25f, 42, true});
  controller->SetTrackIntegrals(-1000, 2000);
  ZRVTrackStatus status{};
  device.GetTrackStatus(&status);
  EXPECT_EQ(std::tuple(status.Valid, status.StatusFlag, status.StatusValue), std::tuple(true, true, 42u));
  EXPECT_NEAR(status.X, 0.5f, 1e-4f);
  EXPECT_NEAR(status.Y, -0.25f, 1e-4f);
  int first = 0, second = 0;
  device.GetTrackIntegrals(first, second);
  EXPECT_EQ(std::pair(first, second), std::pair(-1000, 2000));
}

// Every call ends within its time, and the link is sound as soon as the talk is over.
TEST_F(Integration, TalkWithoutEndHoldsNoCallUp) {
  reliability::Bench bench;
  controller = std::make_shared<sim::Controller>(reliability::ControllerOptions());
  clock = std::make_shared<sim::VirtualClock>();
  auto* port = new sim::MemoryTransport(controller, clock);
  port->Open("memory", 921600, 0, 0);
  bench.device.ConnectDevice(port);
  ASSERT_EQ(bench.device.GetLastError(), ErrorNone);
  for (const reliability::Call& call : reliability::Calls()) {
    if ((call.traits & (reliability::kDisconnects | reliability::kStreams)) != 0) continue;
    controller->faults().StartChatter({});
    Wait(0.01);
    const double before = clock->Now();
    call.run(bench);
    EXPECT_LE(clock->Now() - before, call.boundMs / 1000.0) << call.name;
    controller->faults().Clear();
    EXPECT_TRUE(bench.device.IsDeviceResponding()) << call.name;
  }
}

}  // namespace
}  // namespace zrv::testing
