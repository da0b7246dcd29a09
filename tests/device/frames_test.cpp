// Faults of the acknowledgement, resynchronisation, answers cut short, and calls without a port.
#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

const std::string kResetFrame = "B5 B0 2B EE 06 0A";

class Frames : public Scripted {};

TEST_F(Frames, AcknowledgementFaultsResynchroniseAndTheNextCommandWorks) {
  const struct {
    const char* name;
    Bytes answer;
    ZRVError error;
  } kCases[] = {{"nothing comes", {}, ErrorSerialComm},
                {"one byte", {0xB5}, ErrorSerialComm},
                {"two bytes", {0xB5, 0xB0}, ErrorSerialComm},
                {"first byte wrong", {0xB4, 0xB0, 0x0A}, ErrorBadAcknowledge},
                {"second byte wrong", {0xB5, 0xB1, 0x0A}, ErrorBadAcknowledge},
                {"third byte wrong", {0xB5, 0xB0, 0x0B}, ErrorBadAcknowledge},
                {"late noise before it", {0x00, 0xB5, 0xB0, 0x0A}, ErrorBadAcknowledge}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    port->Answer(0xEE, c.answer);
    EXPECT_EQ(Sent([&] { device.ResetDevice(); }), kResetFrame + " | " + kResync);
    EXPECT_EQ(device.GetLastError(), c.error);
    port->Answer(0xEE, kAck);
    EXPECT_EQ(Sent([&] { device.ResetDevice(); }), kResetFrame);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
    if (c.answer.size() > 3) continue;
    port->Answer(0xE3, c.answer);  // a poll that never resynchronises
    EXPECT_EQ(Sent([&] { EXPECT_FALSE(device.IsDeviceResponding()); }), "B5 B0 2B E3 06 0A");
    EXPECT_EQ(device.GetLastError(), c.error);
    device.SendSerialReset();
  }
}

TEST_F(Frames, FailingWritesAndPurges) {
  port->writesFail = true;
  device.ResetDevice();
  EXPECT_EQ(device.GetLastError(), ErrorSerialReset);  // not even the last trailer could be written
  port->writesFail = false;
  port->purgesFail = true;
  device.ResetDevice();
  EXPECT_EQ(device.GetLastError(), ErrorNone);  // nothing to resynchronise
  device.SendSerialReset();
  EXPECT_EQ(device.GetLastError(), ErrorSerialComm);
}

TEST_F(Frames, AStateAnswerCountsEvenAfterABadAcknowledgementAndIsKeptWhenTheNextIsCut) {
  port->Answer(0xF4, {0xB5, 0xB0, 0x0B});
  port->afterPurges = {0x07, 0x61};  // the resynchronisation purges what is queued; this comes after it
  EXPECT_TRUE(device.IsDeviceRunning());
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  port->afterPurges.clear();
  for (const Bytes& cut : {kAck + LE16(0x6107), kAck, kAck + Bytes{0}}) {
    port->Answer(0xF4, cut);
    EXPECT_EQ(device.IsDeviceRunning(), cut.size() == 5);
    EXPECT_EQ(device.GetLastError(), cut.size() == 5 ? ErrorNone : ErrorDeviceResponse);
    EXPECT_EQ(device.GetDeviceParam(ParamSyncMode), 3.0f);   // 0x6107: bits 1..4
    EXPECT_EQ(device.GetDeviceParam(ParamSyncState), 3.0f);  // bits 13..15
  }
  for (const uint16_t word : {uint16_t{0}, uint16_t{0x1000}}) {
    SetState(word);
    EXPECT_EQ(device.IsTrackingSupported(), word == 0x1000);
  }
  port->Answer(0xF4, kAck);
  EXPECT_FALSE(device.IsTrackingSupported());
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
  const struct {
    const char* name;
    std::function<void()> call;
  } kCalls[] = {{"reset", [&] { device.ResetDevice(); }},
                {"resync", [&] { device.SendSerialReset(); }},
                {"clear", [&] { device.ClearInputBuffer(); }},
                {"state", [&] { device.GetDeviceState(); }},
                {"running", [&] { EXPECT_FALSE(device.IsDeviceRunning()); }},
                {"responding", [&] { EXPECT_FALSE(device.IsDeviceResponding()); }},
                {"params", [&] { device.GetDeviceParams(&params); }},
                {"params, null", [&] { device.GetDeviceParams(nullptr); }},
                {"set params, null", [&] { device.SetDeviceParams(nullptr); }},
                {"offsets", [&] { device.GetOutputOffsets(); }},
                {"set", [&] { device.SetDeviceParam(ParamSampleRate, 12345); }},
                {"send", [&] { device.SendDataStream(x, y, &m, 1, 0, false); }},
                {"stop", [&] { device.StopDataStream(); }},
                {"remaining", [&] { EXPECT_EQ(device.GetSamplesRemaining(), 1000000000u); }},
                {"goto", [&] { device.GoToDevicePosition(0, 0, 0, 10); }},
                {"centre", [&] { device.ResetDevicePosition(); }},
                {"boost", [&] { device.SetLaserBoostEnable(1); }},
                {"name", [&] { device.SetDeviceName("x"); }},
                {"disconnect", [&] { device.DisconnectDevice(); }},
                {"find, null", [&] { device.GetAvailableDevices(nullptr); }},
                {"list, null", [&] { device.ListAvailableDevices(nullptr); }},
                {"connect, null", [&] { device.ConnectDevice(static_cast<ZRVSerialIO*>(nullptr)); }},
                {"analog", [&] { EXPECT_EQ(device.GetAnalogInputValue(0), -1e9f); }},
                {"detector", [&] { EXPECT_EQ(device.GetPhotoDetectorValue(), -1e9f); }},
                {"capture", [&] { device.GetAnalogInputBuffer(x, y, 1); }},
                {"stream", [&] { EXPECT_EQ(device.GetAnalogInputStream(x, y, 2), 0u); }},
                {"sensor", [&] { EXPECT_EQ(device.GetOrBEX1Stream(x, 1, 2), 0u); }},
                {"tracking", [&] { EXPECT_FALSE(device.IsTrackingSupported()); }},
                {"get tracking", [&] { device.GetTrackParams(&track); }},
                {"get tracking, null", [&] { device.GetTrackParams(nullptr); }},
                {"set tracking", [&] { device.SetTrackParams(&track); }},
                {"set tracking, null", [&] { device.SetTrackParams(nullptr); }},
                {"tracking status", [&] { device.GetTrackStatus(&status); }},
                {"tracking status, null", [&] { device.GetTrackStatus(nullptr); }},
                {"integrals", [&] { device.GetTrackIntegrals(first, second); }}};
  for (const auto& call : kCalls) {
    device.GetDeviceParam(ParamVbias);  // clears the last error
    call.call();
    EXPECT_EQ(device.GetLastError(), ErrorNotConnected) << call.name;
  }
  device.StartDataStream(1, true);
  EXPECT_EQ(device.GetDeviceParam(ParamSampleRate), 10000.0f);
  EXPECT_THAT(x, ::testing::ElementsAre(-1e9f, 123));
  EXPECT_THAT(y, ::testing::ElementsAre(-1e9f, 123));
  EXPECT_EQ(std::tuple(track.TrackingSupported, track.Threshold, status.Valid), std::tuple(false, 1.0f, false));
  EXPECT_EQ(std::tuple(first, second), std::tuple(1, 2));
}

}  // namespace
}  // namespace zrv::testing
