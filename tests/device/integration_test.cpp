// The device against the simulated controller, from connecting to playing, sensing and tracking.
#include <cmath>
#include <filesystem>

#include "tests/device/simulated_device.h"

namespace zrv::testing {
namespace {

using sim::AnalogSignal;
using Integration = SimulatedDevice;

TEST_F(Integration, ConnectingReadsTheRecordAndCentres) {
  sim::Options options;
  options.deviceName = "Bench 7";
  options.formatCode = 3;
  options.capacity = 12345;
  Connect(options);
  ZRVDeviceParams params;
  device.GetDeviceParams(&params);
  EXPECT_EQ(params.ParamsValid, 1);
  EXPECT_STREQ(params.DeviceName, "Bench 7");
  EXPECT_STREQ(params.BluetoothMAC, "00:11:22:33:44:55");
  EXPECT_EQ(params.SyncState, 3u);
  EXPECT_EQ(params.SampleBufferCapacity, 12345u);
  EXPECT_EQ(params.HardwareFilterBwMax, 10000u);
  EXPECT_TRUE(controller->IsPlaying());  // holds the centre
  EXPECT_NEAR(controller->Output().x, 0, 1e-3);
  EXPECT_NEAR(controller->Output().y, 0, 1e-3);
  EXPECT_EQ(controller->FramesRejected(), 0u);
  EXPECT_TRUE(device.IsDeviceResponding());
}

TEST_F(Integration, EveryParameterReachesTheControllerAndComesBack) {
  Connect();
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
  device.GetDeviceParams(&params);
  ASSERT_EQ(device.GetLastError(), ErrorNone);
  for (const auto& c : kCases) EXPECT_NEAR(device.GetDeviceParam(c.param), c.value, c.tolerance) << c.param;
  EXPECT_NEAR(params.XOffset, 0.25f, 1e-4f);
  EXPECT_NEAR(params.YOffset, -0.5f, 1e-4f);
  EXPECT_STREQ(params.DeviceName, "Renamed");
  EXPECT_EQ(controller->settings().sampleRate, 25000u);
  EXPECT_EQ(controller->FramesRejected(), 0u);
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
    ASSERT_EQ(device.GetLastError(), ErrorNone);
    const auto& block = controller->Block();
    ASSERT_EQ(block.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
      EXPECT_NEAR(block[i].x, x[i], c.xStep) << i;
      EXPECT_NEAR(block[i].y, y[i], c.yStep) << i;
      EXPECT_EQ(block[i].m, c.m[i]) << i;
      EXPECT_EQ(block[i].rgb, c.rgb[i]) << i;
    }
  }
}

TEST_F(Integration, ABlockLongerThanTheBufferIsCut) {
  sim::Options options = Unfiltered();
  options.capacity = 100;
  Connect(options);
  LoadRamp(1000);
  EXPECT_EQ(controller->Block().size(), 100u);
}

TEST_F(Integration, PlayingAndWaitingTakesAsLongAsTheSamples) {
  Connect(Unfiltered());
  LoadRamp(1000);
  const double before = clock->Now();
  device.StartDataStream(3, true);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_NEAR(clock->Now() - before, 0.3, 0.002);  // 3 * 1000 samples at 10000 a second
  EXPECT_FALSE(device.IsDeviceRunning());
  EXPECT_EQ(device.GetSamplesRemaining(), 0u);
}

TEST_F(Integration, StopTellsWhereAndRemainingCountsDown) {
  Connect(Unfiltered());
  LoadRamp(1000);
  device.StartDataStream(2, false);
  EXPECT_TRUE(device.IsDeviceRunning());
  Wait(0.05);
  EXPECT_NEAR(device.GetSamplesRemaining(), 1500, 2);
  device.StartDataStream(-1, false);
  Wait(0.1 + 0.0251);
  EXPECT_TRUE(device.IsDeviceRunning());
  device.StopDataStream();
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_FALSE(device.IsDeviceRunning());
  const unsigned index = device.GetIStop();
  EXPECT_NEAR(index, 251, 2);
  EXPECT_NEAR(device.GetXStop(), static_cast<float>(index) / 1000, 1e-4f);
  EXPECT_NEAR(device.GetYStop(), -device.GetXStop(), 1e-4f);
  EXPECT_EQ(device.GetMStop(), index & 0xFF);
}

TEST_F(Integration, MovesArriveSmoothly) {
  Connect(Unfiltered());
  controller->ClearDrawnPath();
  device.GoToDevicePosition(0.5f, -0.5f, 3, 100);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_TRUE(controller->IsPlaying());
  EXPECT_NEAR(controller->Output().x, 0.5f, 1e-4);
  EXPECT_EQ(controller->Output().m, 3);
  const auto path = controller->DrawnPath();
  EXPECT_GE(path.size(), 1000u);
  for (size_t i = 1; i < path.size(); ++i) ASSERT_LT(std::abs(path[i].x - path[i - 1].x), 0.01f) << i;
}

TEST_F(Integration, FlashKeepsSettingsAndData) {
  Connect(Unfiltered());
  Set(ParamVbias, 55);
  Set(ParamBootSetting, BootSavedSettings);
  LoadRamp(10);
  device.SaveToFlash(FlashSettingsAndData);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  Set(ParamVbias, 66);
  controller->PowerCycle();
  Reconnect();
  EXPECT_EQ(device.GetDeviceParam(ParamVbias), 55.0f);
}

// --- Sensing -----------------------------------------------------------------------------------------

sim::Options WithSignals(AnalogSignal ai0, AnalogSignal ai1) {
  sim::Options options = Unfiltered();
  options.analogInputs = {ai0, ai1};
  return options;
}

AnalogSignal Dc(double volts) { return {AnalogSignal::Shape::kDc, volts, 0, 0, 1}; }

TEST_F(Integration, SingleReadings) {
  sim::Options options = WithSignals(Dc(1.5), {AnalogSignal::Shape::kMirrorX, 0, 4, 0, 1});
  options.photoDetector = Dc(0.75);
  Connect(options);
  EXPECT_NEAR(device.GetAnalogInputValue(0), 1.5f, 1e-3f);
  EXPECT_NEAR(device.GetPhotoDetectorValue(), 0.75f, 1e-3f);
  device.GoToDevicePosition(0.5f, 0, 0, 20);
  Wait(1);  // the mirror has settled
  EXPECT_NEAR(device.GetAnalogInputValue(1), 2.0f, 0.05f);
}

TEST_F(Integration, ACaptureOfAnyLengthArrivesWhole) {
  Connect(WithSignals({AnalogSignal::Shape::kSine, 0, 5, 100, 1}, Dc(-3)));
  for (const unsigned count : {1u, 1000u, 100000u, 250001u}) {
    SCOPED_TRACE(count);
    std::vector<float> ai0(count + 1, 99.0f), ai1(count + 1, 99.0f);
    device.GetAnalogInputBuffer(ai0.data(), ai1.data(), count);
    ASSERT_EQ(device.GetLastError(), ErrorNone);
    for (unsigned i = 0; i < count; ++i) {
      ASSERT_LE(std::abs(ai0[i]), 5.001f) << i;
      ASSERT_NEAR(ai1[i], -3.0f, 1e-3f) << i;
    }
    EXPECT_EQ(ai0[count], 99.0f);
    if (count < 1000) continue;
    for (unsigned i = 100; i < 1000; ++i) ASSERT_NEAR(ai0[i], ai0[i - 100], 0.01f);  // 100 Hz at 10000 a second
  }
}

TEST_F(Integration, StreamsOfTheAnalogModes) {
  Connect(WithSignals(Dc(2), Dc(-5)));
  const float high = 32768 + 2 * 3277, low = 32768 - 5 * 3277;
  const struct {
    ZRVDataMode mode;
    float first, second, tolerance;
  } kCases[] = {{DataModeAnalogVolts, 2, -5, 1e-3f},
                {DataModeAnalogVoltsRaw, 2, low, 1},
                {DataModeAnalogNormalized, high / 32768 - 1, low / 32768 - 1, 1e-4f}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.mode);
    Set(ParamDataMode, static_cast<float>(c.mode));
    std::vector<float> ai0(32768), ai1(32768);
    ASSERT_EQ(device.GetAnalogInputStream(ai0.data(), ai1.data(), 5000), 5000u);
    for (const unsigned i : {0u, 2500u, 4999u}) {
      EXPECT_NEAR(ai0[i], c.first, c.tolerance);
      EXPECT_NEAR(ai1[i], c.second, c.tolerance);
    }
    Wait(0.02);
    EXPECT_NEAR(device.GetAnalogInputStream(ai0.data(), ai1.data(), 0), 200, 2);
  }
  Set(ParamDataMode, DataModeBuffer);
  EXPECT_TRUE(device.IsDeviceResponding());  // nothing of the stream is left in the way
}

TEST_F(Integration, SensorModuleStream) {
  sim::Options options = WithSignals(Dc(1), Dc(0));
  options.firmwareName = "ORBEX1D 1.0";
  options.sensorBlockSamples = 500;
  Connect(options);
  Set(ParamDataMode, DataModeOrBEX1);
  std::vector<float> data(500);
  for (int block = 0; block < 3; ++block) {
    ASSERT_EQ(device.GetOrBEX1Stream(data.data(), 1, 500), 500u);
    EXPECT_EQ(data[0], (32768 + 3277) * 10.0f);
    EXPECT_EQ(data[499], (32768 + 3277) * 10.0f);
  }
}

TEST_F(Integration, Tracking) {
  Connect();
  EXPECT_TRUE(device.IsTrackingSupported());
  ZRVTrackParams params;
  device.GetTrackParams(&params);
  ASSERT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_TRUE(params.TrackingSupported);
  EXPECT_NEAR(params.Threshold, 0.5f, 1e-4f);
  EXPECT_EQ(params.NormalGain, 63);
  EXPECT_EQ(params.TangentialGain, 0);
  params.TangentialGain = -20;
  params.HitRatio = 0.25f;
  params.StateBit1 = 1;
  device.SetTrackParams(&params);
  ASSERT_EQ(device.GetLastError(), ErrorNone);
  ZRVTrackParams read;
  device.GetTrackParams(&read);
  EXPECT_EQ(read.TangentialGain, -20);
  EXPECT_NEAR(read.HitRatio, 0.25f, 1 / 255.0f);
  EXPECT_EQ(read.StateBit1, 1u);

  controller->SetTrackTarget(sim::TrackTarget{0.5f, -0.25f, 42, true});
  controller->SetTrackIntegrals(-1000, 2000);
  ZRVTrackStatus status{};
  device.GetTrackStatus(&status);
  EXPECT_TRUE(status.Valid);
  EXPECT_TRUE(status.StatusFlag);
  EXPECT_NEAR(status.X, 0.5f, 1e-4f);
  EXPECT_NEAR(status.Y, -0.25f, 1e-4f);
  EXPECT_EQ(status.StatusValue, 42u);
  EXPECT_EQ(device.GetDeviceParam(ParamOutputOffsets, 1), status.Y);
  int first = 0, second = 0;
  device.GetTrackIntegrals(first, second);
  EXPECT_EQ(first, -1000);
  EXPECT_EQ(second, 2000);
}

TEST_F(Integration, AControllerThatCannotTrackSaysSo) {
  sim::Options options;
  options.tracking = false;
  Connect(options);
  EXPECT_FALSE(device.IsTrackingSupported());
  ZRVTrackParams params;
  params.TrackingSupported = true;
  device.GetTrackParams(&params);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_FALSE(params.TrackingSupported);
}

TEST_F(Integration, AFileBringsASetupToAnotherController) {
  ZRVDevice::SetDefinitionsFile(ZRV_SOURCE_DIR "/include/ZRVDefinitions.h");
  const auto path = (std::filesystem::temp_directory_path() / "zrv_integration_params.txt").string();
  Connect();
  Set(ParamSampleRate, 30000);
  Set(ParamDeviceAxes, AxesSwapFlipY);
  Set(ParamSyncMode, SyncMode7);
  device.SaveDeviceParams(path.c_str(), nullptr);
  Connect();
  ZRVDeviceParams loaded;
  device.LoadDeviceParams(&loaded, path.c_str());
  device.SetDeviceParams(&loaded);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_EQ(controller->settings().sampleRate, 30000u);
  EXPECT_EQ(controller->settings().axes, 6);
  EXPECT_EQ(controller->settings().syncMode, 7);
  std::filesystem::remove(path);
  ZRVDevice::SetDefinitionsFile(nullptr);
}

}  // namespace
}  // namespace zrv::testing
