// Frames on the wire, faults of the acknowledgement, resynchronisation, state word.
#include <gtest/gtest.h>

#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

const std::string kResetFrame = "B5 B0 2B EE 06 0A";

TEST(Frames, ACommandWithoutPayloadHasSixBytesAndWaitsForEverToBeWritten) {
  ScriptedDevice s;
  s.device.ResetDevice();
  EXPECT_EQ(s.port->TakeWrites(), kResetFrame);
  EXPECT_EQ(s.port->WriteTimeouts().back(), 0xFFFFFFFFu);
  EXPECT_EQ(s.port->TakeWaits(), std::vector<unsigned>{2000});
  EXPECT_EQ(s.device.GetLastError(), ErrorNone);
}

TEST(Frames, AcknowledgementFaultsResynchroniseAndTheNextCommandWorks) {
  const struct {
    const char* name;
    Bytes answer;
    ZRVError error;
  } kCases[] = {
      {"nothing comes", {}, ErrorSerialComm},
      {"one byte", {0xB5}, ErrorSerialComm},
      {"two bytes", {0xB5, 0xB0}, ErrorSerialComm},
      {"first byte wrong", {0xB4, 0xB0, 0x0A}, ErrorBadAcknowledge},
      {"second byte wrong", {0xB5, 0xB1, 0x0A}, ErrorBadAcknowledge},
      {"third byte wrong", {0xB5, 0xB0, 0x0B}, ErrorBadAcknowledge},
      {"late noise before it", {0x00, 0xB5, 0xB0, 0x0A}, ErrorBadAcknowledge},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    ScriptedDevice s;
    s.port->Answer(0xEE, c.answer);
    s.device.ResetDevice();
    EXPECT_EQ(s.device.GetLastError(), c.error);
    EXPECT_EQ(s.port->TakeWrites(), kResetFrame + " | " + kResync);
    s.port->Answer(0xEE, kAck);
    s.device.ResetDevice();
    EXPECT_EQ(s.device.GetLastError(), ErrorNone);
  }
}

TEST(Frames, FailingWritesAndPurges) {
  ScriptedDevice s;
  s.port->failWritesFrom = 0;
  s.device.ResetDevice();
  EXPECT_EQ(s.device.GetLastError(), ErrorSerialReset);  // not even the last trailer could be written
  s.port->failWritesFrom = -1;
  s.port->failPurge = true;
  s.device.ResetDevice();
  EXPECT_EQ(s.device.GetLastError(), ErrorNone);  // nothing to resynchronise
  s.device.SendSerialReset();
  EXPECT_EQ(s.device.GetLastError(), ErrorSerialComm);
}

TEST(Frames, TheStateWordIsDecodedEvenAfterABadAcknowledgement) {
  ScriptedDevice s;
  s.port->Answer(0xF4, Bytes{0xB5, 0xB0, 0x0B});
  // The resynchronisation purges what is queued; this answer comes after it.
  class LateAnswer : public ScriptedTransport {
   public:
    int PurgeQueues() override {
      ScriptedTransport::PurgeQueues();
      if (++purges == 2) Queue({0x07, 0x61});
      return kOk;
    }
    int purges = -1000;
  };
  auto* late = new LateAnswer;
  s.device.ConnectDevice(late);
  late->Answer(0xF4, Bytes{0xB5, 0xB0, 0x0B});
  late->purges = 0;
  EXPECT_TRUE(s.device.IsDeviceRunning());
  EXPECT_EQ(s.device.GetLastError(), ErrorNone);
  EXPECT_EQ(s.device.GetDeviceParam(ParamSyncMode), 3.0f);   // 0x6107: bits 1..4
  EXPECT_EQ(s.device.GetDeviceParam(ParamSyncState), 3.0f);  // bits 13..15
}

TEST(Frames, AStateAnswerCutShortKeepsTheStateWord) {
  for (const Bytes& answer : {kAck, kAck + Bytes{0x01}}) {
    ScriptedDevice s;
    s.port->Answer(0xF4, kAck + Bytes{0x00, 0x20});
    s.device.GetDeviceState();
    s.port->Answer(0xF4, answer);
    s.device.GetDeviceState();
    EXPECT_EQ(s.device.GetLastError(), ErrorDeviceResponse);
    EXPECT_EQ(s.device.GetDeviceParam(ParamSyncState), 1.0f);
  }
}

TEST(Frames, RespondingNeverResynchronises) {
  const struct {
    const char* name;
    Bytes answer;
    ZRVError error;
  } kCases[] = {{"answers", kAck, ErrorNone},
                {"silent", {}, ErrorSerialComm},
                {"cut", {0xB5, 0xB0}, ErrorSerialComm},
                {"wrong", {0xB5, 0xB0, 0x2B}, ErrorBadAcknowledge}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    ScriptedDevice s;
    s.port->Answer(0xE3, c.answer);
    EXPECT_EQ(s.device.IsDeviceResponding(), c.error == ErrorNone);
    EXPECT_EQ(s.device.GetLastError(), c.error);
    EXPECT_EQ(s.port->TakeWrites(), "B5 B0 2B E3 06 0A");
  }
}

TEST(Frames, WithoutAPortEveryCallSaysSo) {
  ZRVDevice device;
  float x = 0, y = 0;
  unsigned char m = 0;
  ZRVDeviceParams params;
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
                {"offsets", [&] { device.GetOutputOffsets(); }},
                {"set", [&] { device.SetDeviceParam(ParamSampleRate, 12345); }},
                {"send", [&] { device.SendDataStream(&x, &y, &m, 1, 0, false); }},
                {"stop", [&] { device.StopDataStream(); }},
                {"remaining", [&] { EXPECT_EQ(device.GetSamplesRemaining(), 1000000000u); }},
                {"goto", [&] { device.GoToDevicePosition(0, 0, 0, 10); }},
                {"centre", [&] { device.ResetDevicePosition(); }},
                {"boost", [&] { device.SetLaserBoostEnable(1); }},
                {"name", [&] { device.SetDeviceName("x"); }},
                {"disconnect", [&] { device.DisconnectDevice(); }}};
  for (const auto& call : kCalls) {
    SCOPED_TRACE(call.name);
    device.GetDeviceParam(ParamVbias);  // clears the last error
    call.call();
    EXPECT_EQ(device.GetLastError(), ErrorNotConnected);
  }
  EXPECT_EQ(device.GetDeviceParam(ParamSampleRate), 10000.0f);
}

}  // namespace
}  // namespace zrv::testing
