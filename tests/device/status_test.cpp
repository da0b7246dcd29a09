// Calls without a port, and the state word.
#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

#define CALL(call)       \
  {                      \
#call, [&] { call; } \
  }

TEST(Unconnected, EveryCallSaysSo) {
  ZRVDevice device;
  float x[2] = {0, 123}, y[2] = {0, 123};
  unsigned char m = 0;
  int first = 1, second = 2;
  ZRVDeviceParams params;
  ZRVTrackParams track;
  track.TrackingSupported = true;
  track.Threshold = 2;
  ZRVTrackStatus status{true, true, 1, 1, 1};
  const std::pair<const char*, std::function<void()>> kCalls[] = {
      CALL(device.ResetDevice()),
      CALL(device.SendSerialReset()),
      CALL(device.ClearInputBuffer()),
      CALL(EXPECT_FALSE(device.IsDeviceRunning())),
      CALL(EXPECT_FALSE(device.IsDeviceResponding())),
      CALL(device.GetDeviceParams(&params)),
      CALL(device.GetDeviceParams(nullptr)),
      CALL(device.SetDeviceParams(nullptr)),
      CALL(device.GetOutputOffsets()),
      CALL(device.SetDeviceParam(ParamSampleRate, 12345)),
      CALL(device.SendDataStream(x, y, &m, 1, 0, false)),
      CALL(device.StopDataStream()),
      CALL(EXPECT_EQ(device.GetSamplesRemaining(), 1000000000u)),
      CALL(device.GoToDevicePosition(0, 0, 0, 10)),
      CALL(device.SetDeviceName("x")),
      CALL(device.DisconnectDevice()),
      CALL(device.GetAvailableDevices(nullptr)),
      CALL(device.ListAvailableDevices(nullptr)),
      CALL(device.ConnectDevice(static_cast<ZRVSerialIO*>(nullptr))),
      CALL(EXPECT_EQ(device.GetAnalogInputValue(0), -1e9f)),
      CALL(EXPECT_EQ(device.GetPhotoDetectorValue(), -1e9f)),
      CALL(device.GetAnalogInputBuffer(x, y, 1)),
      CALL(EXPECT_EQ(device.GetAnalogInputStream(x, y, 2), 0u)),
      CALL(EXPECT_EQ(device.GetOrBEX1Stream(x, 1, 2), 0u)),
      CALL(EXPECT_FALSE(device.IsTrackingSupported())),
      CALL(device.GetTrackParams(&track)),
      CALL(device.GetTrackParams(nullptr)),
      CALL(device.SetTrackParams(&track)),
      CALL(device.SetTrackParams(nullptr)),
      CALL(device.GetTrackStatus(&status)),
      CALL(device.GetTrackStatus(nullptr)),
      CALL(device.GetTrackIntegrals(first, second)),
  };
  for (const auto& [name, call] : kCalls) {
    device.GetDeviceParam(ParamVbias);  // clears the last error
    call();
    EXPECT_EQ(device.GetLastError(), ErrorNotConnected) << name;
  }
  device.StartDataStream(1, true);
  EXPECT_EQ(device.GetDeviceParam(ParamSampleRate), 10000.0f);
  EXPECT_EQ(std::tuple(x[0], x[1], y[0], y[1], first, second), std::tuple(-1e9f, 123, -1e9f, 123, 1, 2));
  EXPECT_EQ(std::tuple(track.TrackingSupported, track.Threshold, status.Valid), std::tuple(false, 1.0f, false));
}

TEST_F(Scripted, TheStateWordIsDecoded) {
  for (const unsigned word : {0x6107u, 0x1000u, 0x0100u, 0xE01Eu}) {
    SetState(static_cast<uint16_t>(word));
    EXPECT_EQ(device.GetDeviceParam(ParamSyncMode), static_cast<float>(word >> 1 & 15)) << word;
    EXPECT_EQ(device.GetDeviceParam(ParamSyncState), static_cast<float>(word >> 13)) << word;
    EXPECT_EQ(device.IsTrackingSupported(), word == 0x1000) << word;
    EXPECT_EQ(device.IsDeviceRunning(), word == 0x6107) << word;
    EXPECT_EQ(device.CalcHardwareFilterDelay(100) > 0, (word & 0x100) != 0) << word;
  }
}

}  // namespace
}  // namespace zrv::testing
