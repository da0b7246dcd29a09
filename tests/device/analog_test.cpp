// Single readings, captures and the streams of modes 6..9.
#include <cmath>

#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

constexpr float kCanary = 123.0f;
constexpr float kFillerVolts = (0xDCDC - 32768.0f) / 3277.0f;

class Analog : public Scripted {
 protected:
  float ai0[3] = {kCanary, kCanary, kCanary}, ai1[3] = {kCanary, kCanary, kCanary};
};

TEST_F(Analog, SingleReadings) {
  const struct {
    const char* name;
    unsigned channel;
    Bytes answer;
    const char* wire;
    float volts;
    ZRVError error;
  } kCases[] = {
      {"full scale", 0, kAck + LE16(65535), "B5 B0 2B A0 06 0A", 32767.0f / 3277, ErrorNone},
      {"lowest", 1, kAck + LE16(0), "B5 B0 2B A1 06 0A", -32768.0f / 3277, ErrorNone},
      {"any other channel is 1", 7, kAck + LE16(36045), "B5 B0 2B A1 06 0A", 1, ErrorNone},
      // A lost reading leaves the command's error and reads as filler.
      {"nothing after the acknowledgement", 0, kAck, "B5 B0 2B A0 06 0A", kFillerVolts, ErrorNone},
      {"half a count", 0, kAck + Bytes{0}, "B5 B0 2B A0 06 0A", (0xDC00 - 32768.0f) / 3277, ErrorNone},
      {"silence", 0, {}, "B5 B0 2B A0 06 0A | 0A | 0A | 0A", kFillerVolts, ErrorSerialComm},
      {"bad acknowledgement", 0, {1, 2, 3}, "B5 B0 2B A0 06 0A | 0A | 0A | 0A", kFillerVolts, ErrorBadAcknowledge}};
  for (const auto& c : kCases) {
    port->Answer(c.channel == 0 ? 0xA0 : 0xA1, c.answer);
    EXPECT_EQ(Sent([&] { EXPECT_EQ(device.GetAnalogInputValue(c.channel), c.volts); }), c.wire) << c.name;
    EXPECT_EQ(device.GetLastError(), c.error) << c.name;
  }
  port->Answer(0xA6, kAck + LE16(65534));
  EXPECT_EQ(Sent([&] { EXPECT_EQ(device.GetPhotoDetectorValue(), 2.0f); }), "B5 B0 2B A6 06 0A");
}

TEST_F(Analog, ACaptureDeliversPairsAndNoMore) {
  port->Answer(0xA5, kAck + LE16(32768) + LE16(36045) + Bytes{0xEE} + LE16(0) + LE16(65535) + Bytes{0xEE});
  EXPECT_EQ(Sent([&] { device.GetAnalogInputBuffer(ai0, ai1, 2); }),
            "B5 B0 2B A4 09 02 00 00 0A | B5 B0 2B A5 06 0A");
  EXPECT_EQ(port->TakeWaits(), (std::vector<unsigned>{2000, 2000, 2000}));
  EXPECT_THAT(ai0, ElementsAre(0, -32768.0f / 3277, kCanary));
  EXPECT_THAT(ai1, ElementsAre(1, 32767.0f / 3277, kCanary));
}

// 1000003 bytes of a capture: twice what the receive buffer holds, and a record that its end would cut.
TEST_F(Analog, ALongCaptureArrivesWhole) {
  constexpr unsigned kCount = 200001;
  Bytes answer = kAck;
  for (unsigned i = 0; i < kCount; ++i) {
    for (const unsigned byte : {i, i >> 8, ~i, ~i >> 8, 0u}) answer.push_back(static_cast<uint8_t>(byte));
  }
  port->Answer(0xA5, answer);
  std::vector<float> first(kCount + 1, kCanary), second(kCount + 1, kCanary);
  device.GetAnalogInputBuffer(first.data(), second.data(), kCount);
  for (unsigned i = 0; i < kCount; ++i) {
    ASSERT_EQ(first[i], (static_cast<float>(i & 0xFFFF) - 32768.0f) / 3277.0f) << i;
    ASSERT_EQ(second[i], (static_cast<float>(~i & 0xFFFF) - 32768.0f) / 3277.0f) << i;
  }
  EXPECT_EQ(std::tuple(first[kCount], second[kCount]), std::tuple(kCanary, kCanary));

  // The same cut within the second pair.
  port->Answer(0xA5, Head(answer, 3 + 7));
  port->TakeWaits();
  device.GetAnalogInputBuffer(first.data(), nullptr, kCount);
  EXPECT_EQ(std::tuple(first[0], first[1]), std::tuple(-32768.0f / 3277, -32767.0f / 3277));
  first.pop_back();
  first.erase(first.begin(), first.begin() + 2);
  EXPECT_THAT(first, Each(kFillerVolts));
  EXPECT_EQ(port->TakeWaits().size(), 3u);  // the rest is not waited for
}

TEST_F(Analog, StreamByMode) {
  const Bytes pair = LE16(0) + LE16(49152);
  const struct {
    ZRVDataMode mode;
    float first, second;
  } kCases[] = {{DataMode5, kCanary, kCanary},
                {DataModeAnalogVolts, -32768.0f / 3277, 16384.0f / 3277},
                {DataModeAnalogVoltsRaw, -32768.0f / 3277, 49152},
                {DataModeAnalogNormalized, -1, 0.5f},
                {DataModeOrBEX1, kCanary, kCanary}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.mode);
    SetMode(c.mode);
    for (const unsigned asked : {2u, 0u}) {
      port->Queue(pair + pair);
      std::fill_n(ai0, 3, kCanary);
      std::fill_n(ai1, 3, kCanary);
      EXPECT_EQ(Sent([&] { EXPECT_EQ(device.GetAnalogInputStream(ai0, ai1, asked), 2u); }), "");
      EXPECT_THAT(ai0, ElementsAre(c.first, c.first, kCanary));
      EXPECT_THAT(ai1, ElementsAre(c.second, c.second, kCanary));
    }
    port->Queue(pair);
    EXPECT_EQ(device.GetAnalogInputStream(nullptr, nullptr, 1), 1u);
  }
}

TEST_F(Analog, StreamLengthsAndWaits) {
  SetMode(DataModeAnalogNormalized);
  device.SetDeviceParam(ParamSampleRate, 10000);
  port->TakeWaits();
  std::vector<float> first(125001, kCanary), second(125001, kCanary);
  const auto stream = [&](unsigned count) { return device.GetAnalogInputStream(first.data(), second.data(), count); };
  port->Queue(Bytes(130000 * 4, 0x80));
  EXPECT_EQ(stream(200000), 125000u);
  EXPECT_EQ(port->TakeWaits(), std::vector<unsigned>{13500});
  EXPECT_EQ(second[124999], (0x8080 - 32768.0f) / 32768.0f);
  EXPECT_EQ(second[125000], kCanary);
  port->Queue(Bytes{1, 2, 3});  // half-way through a record behind the 5000 pairs that are left
  EXPECT_EQ(stream(6000), 5000u);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  port->Queue(Bytes(131072 + 4, 0));
  EXPECT_EQ(stream(0), 32768u);
  EXPECT_EQ(stream(0), 1u);
  EXPECT_EQ(stream(0), 0u);
}

const Bytes kMark = {0xB5, 0xAA, 0x55, 0x0F};

TEST_F(Analog, AZeroSampleRateDividesNothingAndAddsNoWait) {
  Bytes identification = kIdentification;
  std::fill_n(identification.end() - 26, 3, uint8_t{0});
  Connect(identification);
  ASSERT_EQ(device.GetDeviceParam(ParamSampleRate), 0.0f);
  device.StartDataStream(32, true);
  EXPECT_EQ(port->TakeWaits(), (std::vector<unsigned>{2000, 2000}));
  SetMode(DataModeAnalogVolts);
  port->TakeWaits();
  EXPECT_EQ(device.GetAnalogInputStream(nullptr, nullptr, 125000), 0u);
  EXPECT_EQ(port->TakeWaits(), std::vector<unsigned>{1000});
  SetMode(DataModeOrBEX1);
  port->Queue(kMark);
  EXPECT_EQ(device.GetOrBEX1Stream(nullptr, 1, 100000), 0u);
  EXPECT_EQ(port->TakeWaits().back(), 1000u);
}

// --- The sensor module -------------------------------------------------------------------------------

TEST_F(Analog, TheSensorStreamStartsAtAMark) {
  EXPECT_EQ(device.GetOrBEX1Stream(ai0, 1, 5), 0u);  // another mode
  EXPECT_TRUE(port->TakeWaits().empty());
  SetMode(DataModeOrBEX1);
  const struct {
    const char* name;
    Bytes before;
    unsigned count, delivered;
  } kCases[] = {
      {"at once", kMark, 2, 2},
      {"none wanted", kMark, 0, 0},
      {"no mark in a block of one: its attempts end with the third byte", kMark, 1, 0},
      {"the last attempt completes the mark", Bytes{1, 2} + kMark, 2, 0},
      {"the last but one completes it", Bytes{0xB5} + kMark, 2, 2},  // a mark begun twice
      {"a broken mark", {0xB5, 0xAA, 0x55, 0x0E}, 2, 0},
      {"marks overlap", Bytes{0xB5, 0xAA} + kMark, 3, 3},
      {"the stream ends within the mark", {0xB5, 0xAA, 0x55}, 2, 0},
      {"the stream ends within the samples", kMark, 4, 0},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    port->PurgeQueues();
    port->Queue(c.before);
    if (c.before.size() >= 4) port->Queue(LE16(100) + LE16(200) + LE16(300));
    float data[4] = {kCanary, kCanary, kCanary, kCanary};
    EXPECT_EQ(device.GetOrBEX1Stream(data, 2.048f, c.count), c.delivered);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
    EXPECT_FLOAT_EQ(data[0], c.delivered > 0 ? 100 * 3.3f / 65535 : kCanary);
    EXPECT_EQ(data[c.delivered], kCanary);
  }
  EXPECT_EQ(port->TakeWaits().back(), 4u * 2000 / 20000 + 1000);
}

TEST_F(Analog, SensorScales) {
  const struct {
    const char* firmware;
    float gain;
    unsigned count;
    float value;
  } kCases[] = {{"FW ORBEX1D 2", 5, 100, 1000.0f}, {"orbex1d", 1, 65535, 3.3f / 2.048f}};
  for (const auto& c : kCases) {
    Bytes identification = kAck + Text("ZR-INFO\nBench 1\n") + Text(c.firmware);
    identification.insert(identification.end(), kIdentification.begin() + 3 + 16 + 6, kIdentification.end());
    Connect(identification);
    SetMode(DataModeOrBEX1);
    port->Queue(kMark + LE16(c.count) + LE16(c.count));
    EXPECT_EQ(device.GetOrBEX1Stream(ai0, c.gain, 2), 2u);
    EXPECT_NEAR(ai0[1], c.value, 1e-6f) << c.firmware;
  }
}

TEST_F(Analog, SensorStreamLimits) {
  SetMode(DataModeOrBEX1);
  port->Queue(kMark + Bytes(250000, 1));
  std::vector<float> many(100001, kCanary);
  EXPECT_EQ(device.GetOrBEX1Stream(many.data(), 1, 4000000000u), 100000u);
  EXPECT_EQ(many[100000], kCanary);
  port->PurgeQueues();
  port->TakeWaits();
  port->Queue(Bytes(400000, 0xB5));  // no mark ever: 3 * 100000 bytes are looked at
  EXPECT_EQ(device.GetOrBEX1Stream(nullptr, 1, 4000000000u), 0u);
  EXPECT_EQ(port->TakeWaits().size(), 300000u);
}

}  // namespace
}  // namespace zrv::testing
