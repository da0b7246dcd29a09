// Single readings, captures and the streams of modes 6..9.
#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

constexpr float kCanary = 123.0f;
constexpr float kFillerVolts = (0xDCDC - 32768.0f) / 3277.0f;
const Bytes kMark = {0xB5, 0xAA, 0x55, 0x0F};

class Analog : public Scripted {
 protected:
  unsigned Stream(unsigned count) { return device.GetAnalogInputStream(ai0.data(), ai1.data(), count); }
  unsigned Sensor(unsigned count) { return device.GetOrBEX1Stream(ai0.data(), 2.048f, count); }

  std::vector<float> ai0 = std::vector<float>(200002, kCanary), ai1 = ai0;
};

TEST_F(Analog, SingleReadings) {
  const std::tuple<unsigned, uint8_t, Bytes, float> kCases[] = {{0, 0xA0, LE16(65535), 32767.0f / 3277},
                                                                {1, 0xA1, LE16(0), -32768.0f / 3277},
                                                                {7, 0xA1, LE16(36045), 1},
                                                                {0, 0xA0, {0}, (0xDC00 - 32768.0f) / 3277}};
  for (const auto& [channel, code, answer, volts] : kCases) {
    port->Answer(code, kAck + answer);
    float value = 0;
    const std::string sent = Sent([&, c = channel] { value = device.GetAnalogInputValue(c); });
    EXPECT_EQ(sent, "B5 B0 2B " + ToHex({{code}}) + " 06 0A");
    EXPECT_EQ(std::tuple(value, device.GetLastError()), std::tuple(volts, ErrorNone));
  }
  port->Answer(0xA6, kAck + LE16(65534));
  EXPECT_EQ(Sent([&] { EXPECT_EQ(device.GetPhotoDetectorValue(), 2.0f); }), "B5 B0 2B A6 06 0A");
}

// 1000003 bytes: twice what the receive buffer holds, and a record that its end would cut.
TEST_F(Analog, ALongCaptureArrivesWhole) {
  constexpr unsigned kCount = 200001;
  Bytes answer = kAck;
  for (unsigned i = 0; i < kCount; ++i) {
    for (const unsigned byte : {i, i >> 8, ~i, ~i >> 8, 0xEEu}) answer.push_back(static_cast<uint8_t>(byte));
  }
  port->Answer(0xA5, answer);
  EXPECT_EQ(Sent([&] { device.GetAnalogInputBuffer(ai0.data(), ai1.data(), kCount); }),
            "B5 B0 2B A4 09 41 0D 03 0A | B5 B0 2B A5 06 0A");
  for (unsigned i = 0; i < kCount; ++i) {
    ASSERT_EQ(ai0[i], (static_cast<float>(i & 0xFFFF) - 32768.0f) / 3277.0f) << i;
    ASSERT_EQ(ai1[i], (static_cast<float>(~i & 0xFFFF) - 32768.0f) / 3277.0f) << i;
  }
  EXPECT_EQ(std::tuple(ai0[kCount], ai1[kCount]), std::tuple(kCanary, kCanary));

  // The same cut within the second pair: the rest is not waited for.
  port->Answer(0xA5, Head(answer, 3 + 7));
  port->TakeWaits();
  device.GetAnalogInputBuffer(ai0.data(), nullptr, kCount + 1);
  EXPECT_EQ(std::tuple(ai0[0], ai0[1]), std::tuple(-32768.0f / 3277, -32767.0f / 3277));
  EXPECT_THAT(std::span(ai0).subspan(2), Each(kFillerVolts));
  EXPECT_EQ(port->TakeWaits(), (std::vector<unsigned>{2000, 2000, 2000}));
}

TEST_F(Analog, StreamByMode) {
  const std::tuple<ZRVDataMode, float, float> kCases[] = {{DataMode5, kCanary, kCanary},
                                                          {DataModeAnalogVolts, -32768.0f / 3277, 16384.0f / 3277},
                                                          {DataModeAnalogVoltsRaw, -32768.0f / 3277, 49152},
                                                          {DataModeAnalogNormalized, -1, 0.5f},
                                                          {DataModeOrBEX1, kCanary, kCanary}};
  for (const auto& [mode, first, second] : kCases) {
    SetMode(mode);
    for (const unsigned asked : {2u, 0u}) {
      port->Queue(LE16(0) + LE16(49152) + LE16(0) + LE16(49152));
      ai0.assign(3, kCanary);
      ai1.assign(3, kCanary);
      EXPECT_EQ(Sent([&] { EXPECT_EQ(Stream(asked), 2u); }), "") << mode;
      EXPECT_THAT(ai0, ElementsAre(first, first, kCanary)) << mode;
      EXPECT_THAT(ai1, ElementsAre(second, second, kCanary)) << mode;
    }
    port->Queue(LE16(0) + LE16(0));
    EXPECT_EQ(device.GetAnalogInputStream(nullptr, nullptr, 1), 1u);
  }
}

TEST_F(Analog, StreamLengthsAndWaits) {
  SetMode(DataModeAnalogNormalized);
  device.SetDeviceParam(ParamSampleRate, 10000);
  port->TakeWaits();
  port->Queue(Bytes(130000 * 4, 0x80));
  EXPECT_EQ(Stream(200000), 125000u);
  EXPECT_EQ(port->TakeWaits(), std::vector<unsigned>{13500});
  EXPECT_EQ(std::tuple(ai1[124999], ai1[125000]), std::tuple((0x8080 - 32768.0f) / 32768.0f, kCanary));
  port->Queue(Bytes{1, 2, 3});  // half-way through a record behind the 5000 pairs that are left
  EXPECT_EQ(Stream(6000), 5000u);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  port->Queue(Bytes(131072 + 4, 0));
  for (const unsigned got : {32768u, 1u, 0u}) EXPECT_EQ(Stream(0), got);
}

TEST_F(Analog, AZeroSampleRateDividesNothingAndAddsNoWait) {
  Bytes identification = kIdentification;
  std::fill_n(identification.end() - 26, 3, uint8_t{0});
  Connect(identification);
  ASSERT_EQ(device.GetDeviceParam(ParamSampleRate), 0.0f);
  device.StartDataStream(32, true);
  SetMode(DataModeAnalogVolts);
  EXPECT_EQ(Stream(125000), 0u);
  SetMode(DataModeOrBEX1);
  port->Queue(kMark);
  EXPECT_EQ(Sensor(100000), 0u);
  EXPECT_EQ(port->TakeWaits(), (std::vector<unsigned>{2000, 2000, 1000, 2000, 2000, 2000, 2000, 1000}));
  Connect(kIdentification);
}

// --- The sensor module -------------------------------------------------------------------------------

TEST_F(Analog, TheSensorStreamStartsAtAMark) {
  port->Queue(kMark + Bytes(100));
  EXPECT_EQ(Sensor(5), 0u);  // another mode
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
      {"the stream ends within the samples", kMark, 4, 0},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    port->PurgeQueues();
    port->Queue(c.before + LE16(100) + LE16(200) + LE16(300));
    ai0.assign(4, kCanary);
    EXPECT_EQ(Sensor(c.count), c.delivered);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
    EXPECT_FLOAT_EQ(ai0[0], c.delivered > 0 ? 100 * 3.3f / 65535 : kCanary);
    EXPECT_EQ(ai0[c.delivered], kCanary);
  }
  EXPECT_EQ(port->TakeWaits().back(), 4u * 2000 / 20000 + 1000);
}

TEST_F(Analog, SensorStreamLimits) {
  SetMode(DataModeOrBEX1);
  port->Queue(kMark + Bytes(250000, 1));
  EXPECT_EQ(Sensor(4000000000u), 100000u);
  EXPECT_EQ(ai0[100000], kCanary);
  port->TakeWaits();
  port->PurgeQueues();
  port->Queue(Bytes(400000, 0xB5));  // no mark ever: 3 * 100000 bytes are looked at
  EXPECT_EQ(Sensor(4000000000u), 0u);
  EXPECT_EQ(port->TakeWaits().size(), 300000u);
}

}  // namespace
}  // namespace zrv::testing
