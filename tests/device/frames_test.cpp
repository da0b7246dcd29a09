// Faults of the acknowledgement, resynchronisation, answers cut short, and calls without a port.
#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

class Frames : public Scripted {};

TEST_F(Frames, AcknowledgementFaultsResynchroniseAndTheNextCommandWorks) {
  const std::string reset = "B5 B0 2B EE 06 0A";
  const std::pair<Bytes, ZRVError> kCases[] = {{{0xB5, 0xB0}, ErrorSerialComm},
                                               {{0xB5, 0xB0, 0x0B}, ErrorBadAcknowledge}};
  for (const auto& [answer, error] : kCases) {
    SCOPED_TRACE(ToHex(answer));
    port->once[0xEE] = answer;
    EXPECT_EQ(Sent([&] { device.ResetDevice(); }), reset + " | " + kResync);
    EXPECT_EQ(device.GetLastError(), error);
    EXPECT_EQ(Sent([&] { device.ResetDevice(); }), reset);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
    port->Answer(0xE3, answer);  // a poll that never resynchronises
    EXPECT_EQ(Sent([&] { EXPECT_FALSE(device.IsDeviceResponding()); }), "B5 B0 2B E3 06 0A");
    EXPECT_EQ(device.GetLastError(), error);
    device.SendSerialReset();
  }
}

TEST_F(Frames, FailingWritesAndPurges) {
  port->failingWrites = 6;
  device.ResetDevice();
  EXPECT_EQ(device.GetLastError(), ErrorSerialReset);  // not even the last trailer could be written
  port->failingWrites = 0;
  port->purgesFail = true;
  device.ResetDevice();
  EXPECT_EQ(device.GetLastError(), ErrorNone);  // nothing to resynchronise
  device.SendSerialReset();
  EXPECT_EQ(device.GetLastError(), ErrorSerialComm);
}

TEST_F(Frames, AStateAnswerCountsEvenAfterABadAcknowledgement) {
  port->Answer(0xF4, {0xB5, 0xB0, 0x0B});
  port->afterPurges = LE16(0x6107);  // the resynchronisation purges what is queued; this comes after it
  EXPECT_TRUE(device.IsDeviceRunning());
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_EQ(device.GetDeviceParam(ParamSyncMode), 3.0f);   // 0x6107: bits 1..4
  EXPECT_EQ(device.GetDeviceParam(ParamSyncState), 3.0f);  // bits 13..15
  for (const uint16_t word : {uint16_t{0x100}, uint16_t{0x1000}}) {
    SetState(word);
    EXPECT_EQ(device.IsTrackingSupported(), word == 0x1000);
    EXPECT_FALSE(device.IsDeviceRunning());
  }
}

#define CALL(call) {#call, [&] { call; }}

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

}  // namespace
}  // namespace zrv::testing
