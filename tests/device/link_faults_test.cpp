// One fault of the link at a time, in the middle of each kind of exchange: the call ends in bounded time, and the
// next call works.
#include "tests/device/simulated_device.h"

namespace zrv::testing {
namespace {

using sim::Fault;

const struct Exchange {
  const char* name;
  uint8_t code;
  std::function<void(ZRVDevice&)> call;
} kExchanges[] = {
    {"state", 0xF4, [](ZRVDevice& d) { d.GetDeviceState(); }},
    {"stop", 0xF2, [](ZRVDevice& d) { d.StopDataStream(); }},
    {"identification", 0xE0, [](ZRVDevice& d) { ZRVDeviceParams p; d.GetDeviceParams(&p); }},
    {"limits", 0xE1, [](ZRVDevice& d) { ZRVDeviceParams p; d.GetDeviceParams(&p); }},
    {"remaining", 0xE2, [](ZRVDevice& d) { d.GetSamplesRemaining(); }},
    {"setter", 0xEA,
     [](ZRVDevice& d) { d.SetDeviceParam(ParamVbias, d.GetDeviceParam(ParamVbias) == 50 ? 51.0f : 50.0f); }},
    {"block", 0xB2, [](ZRVDevice& d) { float v = 0; unsigned char m = 0; d.SendDataStream(&v, &v, &m, 1, 0, false); }},
    {"play and wait", 0xF3, [](ZRVDevice& d) { d.StartDataStream(1, true); }},
    {"analog", 0xA0, [](ZRVDevice& d) { d.GetAnalogInputValue(0); }},
    {"capture", 0xA5, [](ZRVDevice& d) { float v[9]; d.GetAnalogInputBuffer(v, v, 9); }},
    {"tracking", 0x90, [](ZRVDevice& d) { ZRVTrackParams p; d.GetTrackParams(&p); }},
    {"tracking status", 0x92, [](ZRVDevice& d) { ZRVTrackStatus s; d.GetTrackStatus(&s); }},
};

class LinkFaults : public SimulatedDevice {
 protected:
  void SetUp() override {
    Connect(Unfiltered());
    LoadRamp(100);
  }

  void ExpectBounded(const Exchange& exchange, const std::string& fault) {
    const double before = clock->Now();
    exchange.call(device);
    EXPECT_LT(clock->Now() - before, 12) << exchange.name << ", " << fault;
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
    ZRVDeviceParams params;
    device.GetDeviceParams(&params);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
    EXPECT_STREQ(params.DeviceName, "ZRV Simulator");
    LoadRamp(100);
    device.StartDataStream(1, true);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
  }
};

TEST_F(LinkFaults, OneByteOfAnAcknowledgement) {
  const std::pair<const char*, Fault> kFaults[] = {{"dropped", Fault::Drop()},
                                                   {"corrupt", Fault::Corrupt(0x01)},
                                                   {"doubled", Fault::Duplicate()},
                                                   {"2.5 s late", Fault::Delay(2.5)}};
  for (const Exchange& exchange : kExchanges) {
    for (const auto& [name, fault] : kFaults) {
      for (const int byte : {0, 1, 2}) {
        // The last byte of an acknowledgement doubled is a good acknowledgement.
        if (byte == 2 && fault.kind == Fault::Kind::kDuplicate) continue;
        controller->faults().OnCommand(exchange.code, fault, byte);
        ExpectBounded(exchange, name);
        if (fault.kind == Fault::Kind::kDelay) LetStragglersIn();
        ExpectSoundLink(std::string(exchange.name) + ", byte " + std::to_string(byte) + " " + name);
      }
    }
  }
}

TEST_F(LinkFaults, SilenceAndTalkWithoutEnd) {
  for (const bool silent : {true, false}) {
    if (silent) controller->faults().StopAnswering();
    if (!silent) controller->faults().StartChatter({});
    for (const Exchange& exchange : kExchanges) {
      Wait(0.01);  // talk is waiting
      ExpectBounded(exchange, silent ? "silent" : "talking");
      EXPECT_TRUE(!silent || device.GetLastError() != ErrorNone) << exchange.name;
    }
    LetStragglersIn();
    ExpectSoundLink(silent ? "silence" : "talk");
  }
}

TEST_F(LinkFaults, RandomFaultsNeverHangOrStick) {
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    controller->faults().FailRandomly(0.05, seed);
    for (const Exchange& exchange : kExchanges) ExpectBounded(exchange, "random");
    LetStragglersIn();
    ExpectSoundLink("seed " + std::to_string(seed));
  }
}

// Without a link every call returns at once: the whole list takes none of the controller's time.
TEST_F(LinkFaults, ACutLink) {
  controller->faults().OnCommand(0xF2, Fault::Cut(), 7);  // within an answer
  device.StopDataStream();
  EXPECT_EQ(device.GetLastError(), ErrorDeviceResponse);
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

}  // namespace
}  // namespace zrv::testing
