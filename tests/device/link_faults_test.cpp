// One fault of the link at a time, in the middle of each kind of exchange: the call ends in bounded time with an
// error, and the next call works.
#include "tests/device/simulated_device.h"

namespace zrv::testing {
namespace {

using sim::Fault;

class LinkFaults : public SimulatedDevice {
 protected:
  void SetUp() override {
    Connect(Unfiltered());
    LoadRamp(100);
  }

  // Bytes that come after the failed call has put the link in order are the next call's trouble: they are let in
  // and dropped.
  void LetStragglersIn() {
    controller->faults().Clear();
    Wait(3);
    device.SendSerialReset();
  }

  // The link is in order: the next command, and then those of every kind, are answered.
  void ExpectSoundLink(const std::string& after) {
    SCOPED_TRACE(after);
    controller->faults().Clear();
    EXPECT_TRUE(device.IsDeviceResponding());
    device.GetDeviceState();
    EXPECT_EQ(device.GetLastError(), ErrorNone);
    ZRVDeviceParams params;
    device.GetDeviceParams(&params);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
    EXPECT_EQ(params.ParamsValid, 1);
    EXPECT_STREQ(params.DeviceName, "ZRV Simulator");
    LoadRamp(100);
    device.StartDataStream(1, true);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
  }
};

struct Exchange {
  const char* name;
  uint8_t code;
  std::function<void(ZRVDevice&)> call;
};

const Exchange kExchanges[] = {
    {"state", 0xF4, [](ZRVDevice& d) { d.GetDeviceState(); }},
    {"stop", 0xF2, [](ZRVDevice& d) { d.StopDataStream(); }},
    {"identification", 0xE0, [](ZRVDevice& d) { ZRVDeviceParams p; d.GetDeviceParams(&p); }},
    {"limits", 0xE1, [](ZRVDevice& d) { ZRVDeviceParams p; d.GetDeviceParams(&p); }},
    {"remaining", 0xE2, [](ZRVDevice& d) { d.GetSamplesRemaining(); }},
    {"setter", 0xEA, [](ZRVDevice& d) { d.SetDeviceParam(ParamVbias, d.GetDeviceParam(ParamVbias) == 50 ? 51.0f : 50.0f); }},
    {"block", 0xB2, [](ZRVDevice& d) { float v = 0; unsigned char m = 0; d.SendDataStream(&v, &v, &m, 1, 0, false); }},
    {"play and wait", 0xF3, [](ZRVDevice& d) { d.StartDataStream(1, true); }},
    {"analog", 0xA0, [](ZRVDevice& d) { d.GetAnalogInputValue(0); }},
    {"capture", 0xA5, [](ZRVDevice& d) { float v[9]; d.GetAnalogInputBuffer(v, v, 9); }},
    {"tracking", 0x90, [](ZRVDevice& d) { ZRVTrackParams p; d.GetTrackParams(&p); }},
    {"tracking status", 0x92, [](ZRVDevice& d) { ZRVTrackStatus s; d.GetTrackStatus(&s); }},
};

TEST_F(LinkFaults, OneByteOfAnAcknowledgement) {
  const struct {
    const char* name;
    Fault fault;
  } kFaults[] = {{"dropped", Fault::Drop()},
                 {"corrupt", Fault::Corrupt(0x01)},
                 {"doubled", Fault::Duplicate()},
                 {"2.5 s late", Fault::Delay(2.5)}};
  for (const Exchange& exchange : kExchanges) {
    for (const auto& fault : kFaults) {
      for (const int byte : {0, 1, 2}) {
        const std::string name = std::string(exchange.name) + ", byte " + std::to_string(byte) + " " + fault.name;
        // The last byte of an acknowledgement doubled is a good acknowledgement.
        if (byte == 2 && fault.fault.kind == Fault::Kind::kDuplicate) continue;
        controller->faults().OnCommand(exchange.code, fault.fault, byte);
        const double before = clock->Now();
        exchange.call(device);
        EXPECT_LT(clock->Now() - before, 12) << name;
        if (fault.fault.kind == Fault::Kind::kDelay) LetStragglersIn();
        ExpectSoundLink(name);
      }
    }
  }
}

TEST_F(LinkFaults, AnAcknowledgementThatFailsIsReported) {
  const struct {
    Fault fault;
    ZRVError error;
  } kFaults[] = {{Fault::Drop(), ErrorSerialComm},
                 {Fault::Corrupt(0x80), ErrorBadAcknowledge},
                 {Fault::Duplicate(), ErrorBadAcknowledge},
                 {Fault::Delay(2.5), ErrorSerialComm}};
  for (const auto& c : kFaults) {
    controller->faults().OnCommand(0xEA, c.fault, 0);
    kExchanges[5].call(device);
    EXPECT_EQ(device.GetLastError(), c.error);
    if (c.fault.kind == Fault::Kind::kDelay) LetStragglersIn();
    ExpectSoundLink("setter");
  }
}

TEST_F(LinkFaults, AnAnswerCutShort) {
  const struct {
    const char* name;
    size_t exchange;
    int byte;
    ZRVError error;
  } kCases[] = {{"state", 0, 4, ErrorDeviceResponse},          {"stop", 1, 11, ErrorDeviceResponse},
                {"identification", 2, 80, ErrorDeviceResponse}, {"limits", 3, 20, ErrorDeviceResponse},
                {"remaining", 4, 5, ErrorDeviceResponse},      {"end of play", 7, 5, ErrorSerialComm},
                {"tracking", 10, 12, ErrorDeviceResponse},     {"tracking status", 11, 8, ErrorDeviceResponse}};
  for (const auto& c : kCases) {
    controller->faults().OnCommand(kExchanges[c.exchange].code, Fault::Drop(), c.byte);
    kExchanges[c.exchange].call(device);
    EXPECT_EQ(device.GetLastError(), c.error) << c.name;
    ExpectSoundLink(c.name);
  }
}

TEST_F(LinkFaults, Silence) {
  controller->faults().StopAnswering();
  for (const Exchange& exchange : kExchanges) {
    SCOPED_TRACE(exchange.name);
    const double before = clock->Now();
    exchange.call(device);
    EXPECT_NE(device.GetLastError(), ErrorNone);
    EXPECT_LT(clock->Now() - before, 12);
  }
  EXPECT_FALSE(device.IsDeviceResponding());
  ExpectSoundLink("silence");
}

TEST_F(LinkFaults, AControllerThatTalksWithoutEnd) {
  controller->faults().StartChatter({});
  for (const Exchange& exchange : kExchanges) {
    SCOPED_TRACE(exchange.name);
    Wait(0.01);  // talk is waiting
    const double before = clock->Now();
    exchange.call(device);
    EXPECT_LT(clock->Now() - before, 12);
  }
  LetStragglersIn();
  ExpectSoundLink("chatter");
}

TEST_F(LinkFaults, RandomFaultsNeverHangOrStick) {
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    controller->faults().FailRandomly(0.05, seed);
    const double before = clock->Now();
    for (const Exchange& exchange : kExchanges) exchange.call(device);
    EXPECT_LT(clock->Now() - before, 100);
    LetStragglersIn();
    ExpectSoundLink("seed " + std::to_string(seed));
  }
}

// Without a link every call returns at once: the whole list takes none of the controller's time.
TEST_F(LinkFaults, ACutLink) {
  controller->faults().CutLink();
  const double before = clock->Now();
  for (const Exchange& exchange : kExchanges) {
    exchange.call(device);
    EXPECT_NE(device.GetLastError(), ErrorNone) << exchange.name;
  }
  EXPECT_EQ(clock->Now(), before);
  device.DisconnectDevice();
  EXPECT_FALSE(device.IsDeviceConnected());
  Connect();
  EXPECT_TRUE(device.IsDeviceResponding());
}

TEST_F(LinkFaults, TheLinkIsCutWithinAnAnswer) {
  controller->faults().OnCommand(0xF2, Fault::Cut(), 7);
  device.StopDataStream();
  EXPECT_EQ(device.GetLastError(), ErrorDeviceResponse);
  EXPECT_EQ(device.GetXStop(), 0.0f);
}

}  // namespace
}  // namespace zrv::testing
