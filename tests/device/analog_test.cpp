// Single readings, captures and the streams of modes 6..9.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

constexpr float kCanary = 123.0f;
constexpr float kFillerVolts = (0xDCDC - 32768.0f) / 3277.0f;

Bytes LE16(unsigned count) { return {static_cast<uint8_t>(count), static_cast<uint8_t>(count >> 8)}; }

class Analog : public ::testing::Test, protected ScriptedDevice {
 protected:
  void SetMode(ZRVDataMode mode) {
    device.SetDeviceParam(ParamDataMode, static_cast<float>(mode));
    port->TakeWrites();
    port->TakeWaits();
  }

  // Reconnects to a controller of this firmware, in mode 9.
  void UseSensorModule(const std::string& firmware) {
    Bytes identification = kIdentification;
    const std::string text = "FW 3.2";
    const auto at = std::search(identification.begin(), identification.end(), text.begin(), text.end());
    identification.erase(at, at + 6);
    identification.insert(identification.begin() + 3 + 16, firmware.begin(), firmware.end());
    port = new ScriptedTransport;
    port->Answer(0xE0, identification);
    device.ConnectDevice(port);
    SetMode(DataModeOrBEX1);
  }
};

TEST_F(Analog, SingleReadings) {
  const struct {
    unsigned channel, count;
    const char* wire;
    float volts;
  } kCases[] = {{0, 32768, "B5 B0 2B A0 06 0A", 0.0f},
                {0, 65535, "B5 B0 2B A0 06 0A", 32767.0f / 3277.0f},
                {1, 0, "B5 B0 2B A1 06 0A", -32768.0f / 3277.0f},
                {7, 36045, "B5 B0 2B A1 06 0A", 1.0f}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.count);
    port->Answer(c.channel == 0 ? 0xA0 : 0xA1, kAck + LE16(c.count));
    EXPECT_EQ(device.GetAnalogInputValue(c.channel), c.volts);
    EXPECT_EQ(port->TakeWrites(), c.wire);
  }
  port->Answer(0xA6, kAck + LE16(65534));
  EXPECT_EQ(device.GetPhotoDetectorValue(), 2.0f);
  EXPECT_EQ(port->TakeWrites(), "B5 B0 2B A6 06 0A");
}

TEST_F(Analog, ALostReadingLeavesTheCommandsErrorAndReadsAsFiller) {
  const struct {
    const char* name;
    Bytes answer;
    float volts;
    ZRVError error;
  } kCases[] = {{"nothing after the acknowledgement", kAck, kFillerVolts, ErrorNone},
                {"half a count", kAck + Bytes{0x00}, (0xDC00 - 32768.0f) / 3277.0f, ErrorNone},
                {"silence", {}, kFillerVolts, ErrorSerialComm},
                {"wrong acknowledgement", {0xB5, 0xB0, 0x0B}, kFillerVolts, ErrorBadAcknowledge}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    port->Answer(0xA0, c.answer);
    EXPECT_EQ(device.GetAnalogInputValue(0), c.volts);
    EXPECT_EQ(device.GetLastError(), c.error);
  }
  port->Answer(0xA0, kAck + LE16(32768));
  EXPECT_EQ(device.GetAnalogInputValue(0), 0.0f);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
}

TEST_F(Analog, ACaptureDeliversPairsAndNoMore) {
  port->Answer(0xA5, kAck + LE16(32768) + LE16(36045) + Bytes{0xEE} + LE16(0) + LE16(65535) + Bytes{0xEE});
  float ai0[3] = {kCanary, kCanary, kCanary}, ai1[3] = {kCanary, kCanary, kCanary};
  device.GetAnalogInputBuffer(ai0, ai1, 2);
  EXPECT_EQ(port->TakeWrites(), "B5 B0 2B A4 09 02 00 00 0A | B5 B0 2B A5 06 0A");
  EXPECT_EQ(port->TakeWaits(), (std::vector<unsigned>{2000, 2000, 2000}));
  EXPECT_EQ(ai0[0], 0.0f);
  EXPECT_EQ(ai1[0], 1.0f);
  EXPECT_EQ(ai0[1], -32768.0f / 3277.0f);
  EXPECT_EQ(ai1[1], 32767.0f / 3277.0f);
  EXPECT_EQ(ai0[2], kCanary);
  EXPECT_EQ(ai1[2], kCanary);
}

// 1000003 bytes of a capture: twice what the receive buffer holds, and a record that its end would cut.
TEST_F(Analog, ALongCaptureArrivesWhole) {
  constexpr unsigned kCount = 200001;
  Bytes answer = kAck;
  for (unsigned i = 0; i < kCount; ++i) {
    for (const unsigned count : {i & 0xFFFF, ~i & 0xFFFF}) {
      answer.push_back(static_cast<uint8_t>(count));
      answer.push_back(static_cast<uint8_t>(count >> 8));
    }
    answer.push_back(0);
  }
  port->Answer(0xA5, answer);
  std::vector<float> ai0(kCount + 1, kCanary), ai1(kCount + 1, kCanary);
  device.GetAnalogInputBuffer(ai0.data(), ai1.data(), kCount);
  EXPECT_EQ(port->TakeWrites(), "B5 B0 2B A4 09 41 0D 03 0A | B5 B0 2B A5 06 0A");
  for (unsigned i = 0; i < kCount; ++i) {
    ASSERT_EQ(ai0[i], (static_cast<float>(i & 0xFFFF) - 32768.0f) / 3277.0f) << i;
    ASSERT_EQ(ai1[i], (static_cast<float>(~i & 0xFFFF) - 32768.0f) / 3277.0f) << i;
  }
  EXPECT_EQ(ai0[kCount], kCanary);
  EXPECT_EQ(ai1[kCount], kCanary);
}

TEST_F(Analog, ACaptureCutShortEndsInFiller) {
  std::vector<float> stale(200000);
  port->Answer(0xA5, kAck + LE16(0) + LE16(0) + Bytes{0} + LE16(32768));
  device.GetAnalogInputBuffer(stale.data(), nullptr, 200000);
  EXPECT_EQ(stale[0], -32768.0f / 3277.0f);
  EXPECT_EQ(stale[1], 0.0f);
  EXPECT_EQ(stale[2], kFillerVolts);
  EXPECT_EQ(stale[199999], kFillerVolts);
  EXPECT_EQ(port->TakeWaits().size(), 3u);  // the rest is not waited for
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  device.GetAnalogInputBuffer(nullptr, stale.data(), 1);
  EXPECT_EQ(stale[0], 0.0f - 32768.0f / 3277.0f);
}

TEST_F(Analog, StreamByMode) {
  const Bytes pair = LE16(0) + LE16(49152);
  const struct {
    ZRVDataMode mode;
    float first, second;
  } kCases[] = {{DataModeBuffer, kCanary, kCanary},
                {DataMode5, kCanary, kCanary},
                {DataModeAnalogVolts, -32768.0f / 3277.0f, 16384.0f / 3277.0f},
                {DataModeAnalogVoltsRaw, -32768.0f / 3277.0f, 49152.0f},
                {DataModeAnalogNormalized, -1.0f, 0.5f},
                {DataModeOrBEX1, kCanary, kCanary}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.mode);
    SetMode(c.mode);
    for (const unsigned asked : {2u, 0u}) {
      port->Queue(pair + pair);
      float ai0[3] = {kCanary, kCanary, kCanary}, ai1[3] = {kCanary, kCanary, kCanary};
      EXPECT_EQ(device.GetAnalogInputStream(ai0, ai1, asked), 2u);
      EXPECT_EQ(ai0[1], c.first);
      EXPECT_EQ(ai1[1], c.second);
      EXPECT_EQ(ai0[2], kCanary);
      EXPECT_EQ(ai1[2], kCanary);
    }
    port->Queue(pair);
    EXPECT_EQ(device.GetAnalogInputStream(nullptr, nullptr, 1), 1u);
  }
  EXPECT_EQ(port->TakeWrites(), "");  // the controller streams by itself
}

TEST_F(Analog, StreamLengthsAndWaits) {
  SetMode(DataModeAnalogNormalized);
  device.SetDeviceParam(ParamSampleRate, 10000);
  port->TakeWaits();
  std::vector<float> ai0(125001, kCanary), ai1(125001, kCanary);
  port->Queue(Bytes(130000 * 4, 0x80));
  EXPECT_EQ(device.GetAnalogInputStream(ai0.data(), ai1.data(), 200000), 125000u);
  EXPECT_EQ(port->TakeWaits(), std::vector<unsigned>{13500});
  EXPECT_EQ(ai1[124999], (0x8080 - 32768.0f) / 32768.0f);
  EXPECT_EQ(ai1[125000], kCanary);

  // What is left: 5000 pairs, of which a stream that stops half-way through a record gives the whole ones.
  port->Queue(Bytes{1, 2, 3});
  EXPECT_EQ(device.GetAnalogInputStream(ai0.data(), ai1.data(), 6000), 5000u);
  EXPECT_EQ(device.GetLastError(), ErrorNone);

  port->Queue(Bytes(131072 + 4, 0));
  EXPECT_EQ(device.GetAnalogInputStream(ai0.data(), ai1.data(), 0), 32768u);
  EXPECT_EQ(device.GetAnalogInputStream(ai0.data(), ai1.data(), 0), 1u);
  EXPECT_EQ(device.GetAnalogInputStream(ai0.data(), ai1.data(), 0), 0u);
}

TEST_F(Analog, AZeroSampleRateDividesNothingAndAddsNoWait) {
  Bytes identification = kIdentification;
  const Bytes sampleRate = {0x20, 0x4E, 0x00};
  const auto rate = std::search(identification.begin(), identification.end(), sampleRate.begin(), sampleRate.end());
  std::fill(rate, rate + 3, uint8_t{0});
  port = new ScriptedTransport;
  port->Answer(0xE0, identification);
  device.ConnectDevice(port);
  ASSERT_EQ(device.GetDeviceParam(ParamSampleRate), 0.0f);
  port->TakeWaits();
  device.StartDataStream(32, true);
  EXPECT_EQ(port->TakeWaits(), (std::vector<unsigned>{2000, 2000}));
  SetMode(DataModeAnalogVolts);
  port->TakeWaits();
  EXPECT_EQ(device.GetAnalogInputStream(nullptr, nullptr, 125000), 0u);
  EXPECT_EQ(port->TakeWaits(), std::vector<unsigned>{1000});
  SetMode(DataModeOrBEX1);
  port->Queue({0xB5, 0xAA, 0x55, 0x0F});
  EXPECT_EQ(device.GetOrBEX1Stream(nullptr, 1, 100000), 0u);
  EXPECT_EQ(port->TakeWaits().back(), 1000u);
}

// --- The sensor module -------------------------------------------------------------------------------

const Bytes kMark = {0xB5, 0xAA, 0x55, 0x0F};

TEST_F(Analog, TheSensorStreamStartsAtAMark) {
  SetMode(DataModeOrBEX1);
  const struct {
    const char* name;
    Bytes before;
    unsigned count, delivered;
  } kCases[] = {
      {"at once", kMark, 2, 2},
      {"no mark in a block of one: its attempts end with the third byte", kMark, 1, 0},
      {"a mark begun twice", Bytes{0xB5} + kMark, 2, 2},
      {"the last attempt completes the mark", Bytes{1, 2} + kMark, 2, 0},
      {"the last but one completes it", Bytes{1} + kMark, 2, 2},
      {"a broken mark", {0xB5, 0xAA, 0x55, 0x0E}, 2, 0},
      {"marks overlap", Bytes{0xB5, 0xAA} + kMark, 3, 3},
      {"the stream ends within the mark", {0xB5, 0xAA, 0x55}, 2, 0},
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
}

TEST_F(Analog, SensorScales) {
  const struct {
    const char* firmware;
    float gain;
    unsigned count;
    float value;
  } kCases[] = {{"ORBEX1D", 1, 100, 1000.0f},
                {"FW ORBEX1D 2", 5, 100, 1000.0f},
                {"ORBEX1", 2.048f, 65535, 3.3f},
                {"ORBEX1", 1, 65535, 3.3f / 2.048f},
                {"orbex1d", 2.048f, 65535, 3.3f}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.firmware);
    UseSensorModule(c.firmware);
    port->Queue(kMark + LE16(c.count) + LE16(c.count));
    float data[2] = {};
    EXPECT_EQ(device.GetOrBEX1Stream(data, c.gain, 2), 2u);
    EXPECT_NEAR(data[1], c.value, 1e-6f);
  }
}

TEST_F(Analog, SensorStreamLimits) {
  float data = kCanary;
  EXPECT_EQ(device.GetOrBEX1Stream(&data, 1, 5), 0u);  // another mode
  EXPECT_TRUE(port->TakeWaits().empty());
  SetMode(DataModeOrBEX1);
  port->Queue(kMark);
  EXPECT_EQ(device.GetOrBEX1Stream(&data, 1, 0), 0u);
  EXPECT_TRUE(port->TakeWaits().empty());
  port->Queue(LE16(1));  // one sample of two
  EXPECT_EQ(device.GetOrBEX1Stream(&data, 1, 2), 0u);
  EXPECT_EQ(port->TakeWaits().back(), 2u * 2000 / 20000 + 1000);
  EXPECT_EQ(data, kCanary);

  port->Queue(kMark + Bytes(250000, 1));
  std::vector<float> many(100001, kCanary);
  EXPECT_EQ(device.GetOrBEX1Stream(many.data(), 1, 4000000000u), 100000u);
  EXPECT_EQ(many[100000], kCanary);
  port->TakeWaits();
  port->PurgeQueues();
  port->Queue(Bytes(400000, 0xB5));  // no mark ever: 3 * 100000 bytes are looked at
  EXPECT_EQ(device.GetOrBEX1Stream(nullptr, 1, 4000000000u), 0u);
  EXPECT_EQ(port->TakeWaits().size(), 300000u);
}

TEST(AnalogWithoutAPort, SaysSo) {
  ZRVDevice device;
  float ai0[2] = {0, kCanary}, ai1[2] = {0, kCanary};
  const auto notConnected = [&] { return std::exchange(ai0[0], 0.0f), device.GetLastError() == ErrorNotConnected; };
  EXPECT_EQ(device.GetAnalogInputValue(0), -1e9f);
  EXPECT_TRUE(notConnected());
  EXPECT_EQ(device.GetPhotoDetectorValue(), -1e9f);
  EXPECT_TRUE(notConnected());
  device.GetAnalogInputBuffer(ai0, ai1, 1);
  EXPECT_EQ(ai0[0], -1e9f);
  EXPECT_EQ(ai1[0], -1e9f);
  EXPECT_EQ(ai0[1], kCanary);
  EXPECT_TRUE(notConnected());
  EXPECT_EQ(device.GetAnalogInputStream(ai0, ai1, 1), 0u);
  EXPECT_TRUE(notConnected());
  EXPECT_EQ(device.GetOrBEX1Stream(ai0, 1, 1), 0u);
  EXPECT_TRUE(notConnected());
}

}  // namespace
}  // namespace zrv::testing
