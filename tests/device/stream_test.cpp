// Sample blocks: their bytes in every format, rotation and delay, playback commands, stop values.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <random>

#include "device/packing.h"
#include "device/protocol.h"
#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

struct PackCase {
  const char* name;
  uint32_t format;
  float x, y;
  uint8_t m;
  uint32_t colour;
  const char* bytes;
};

const PackCase kPackCases[] = {
    {"16 bit, y at -1", 0, 0, -1, 0x80, 0, "FF 7F 00 00 80"},
    {"16 bit, full scale", 0, 1, 1, 0, 0, "FF FF FF FF 00"},
    {"16 bit, above 1 is clamped", 0, 3, -3, 7, 0, "FF FF 00 00 07"},
    {"16 bit, NaN is -1", 0, kNaN, kNaN, 0, 0, "00 00 00 00 00"},
    {"16 bit, truncated", 0, 0.25f, -0.25f, 1, 0, "FF 9F FF 5F 01"},  // 40959.375, 24575.625
    {"12/11 bit, m bit 0 only", 1, 0, 0, 1, 0, "7F F7 FF"},
    {"12/11 bit, m without bit 0", 1, 1, -1, 0xFE, 0, "FF F0 00"},
    {"12/11 bit, full scale", 1, 1, 1, 0, 0, "FF FF FE"},
    {"565 white", 2, 1, -1, 1, 0xFFFFFF, "FF F0 00 FF FF"},
    {"565 red", 2, -1, 1, 1, 0xFF0000, "00 0F FF F8 00"},
    {"565 green", 2, 0, 0, 1, 0x00FF00, "7F F7 FF 07 E0"},
    {"565 blue", 2, 0, 0, 1, 0x0000FF, "7F F7 FF 00 1F"},
    {"565 low bits are dropped", 2, 0, 0, 1, 0x070307, "7F F7 FF 00 00"},
    {"565 blanked", 2, 0, 0, 0, 0xFFFFFF, "7F F7 FF 00 00"},
    {"888", 3, 0, 0, 2, 0x123456, "7F F7 FF 12 34 56"},
    {"888 blanked", 3, 0, 0, 0, 0x123456, "7F F7 FF 00 00 00"},
    {"m and 888", 4, 0, 0, 9, 0x123456, "7F F7 FF 09 12 34 56"},
    {"m and 888 never blanked", 4, 0, 0, 0, 0x123456, "7F F7 FF 00 12 34 56"},
};

std::array<GammaCurve, 3> Gammas(float red, float green, float blue) {
  return {MakeGammaCurve(red), MakeGammaCurve(green), MakeGammaCurve(blue)};
}

// Single samples, and so many that every inner loop runs.
TEST(Packing, Layouts) {
  const auto gamma = Gammas(1, 1, 1);
  for (const auto& c : kPackCases) {
    SCOPED_TRACE(c.name);
    const size_t bytes = protocol::BytesPerSample(c.format);
    for (const PackPath path : {PackPath::portable, FastestPackPath()}) {
      for (const size_t count : {1u, 40u}) {
        const std::vector<float> x(count, c.x), y(count, c.y);
        const std::vector<uint8_t> m(count, c.m);
        const std::vector<uint32_t> colours(count, c.colour);
        const SampleSource source = {x.data(), y.data(), m.data(), colours.data(), &gamma, count, 0, 0};
        std::vector<uint8_t> out(count * bytes + 16, 0xEE);
        PackSamples(c.format, source, out.data(), path);
        for (size_t k = 0; k < count; ++k) EXPECT_EQ(Hex(&out[k * bytes], bytes), c.bytes);
        EXPECT_EQ(std::count(out.end() - 16, out.end(), 0xEE), 16);
      }
    }
  }
}

TEST(Packing, GammaCurvesFollowTheFormula) {
  EXPECT_EQ(MakeGammaCurve(1)[255], 255);
  EXPECT_EQ(MakeGammaCurve(2)[128], 64);   // (128/255)^2 * 255 = 64.25
  EXPECT_EQ(MakeGammaCurve(0.5f)[64], 127);  // sqrt(64/255) * 255 = 127.7
  EXPECT_EQ(MakeGammaCurve(0)[0], 255);    // 0^0 is 1
  for (int value = 0; value < 256; ++value) EXPECT_EQ(MakeGammaCurve(1)[static_cast<size_t>(value)], value);
}

// Mostly positions about the range -1..1, with every value that is treated apart.
float AnyPosition(std::mt19937& random) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kSpecial[] = {kNaN, -kNaN, kInfinity, -kInfinity, 1.0f, -1.0f, 0.0f, -0.0f, 3e38f, -3e38f, 1e-40f,
                                0.99999994f, -0.99999994f, 1.0000001f, -1.0000001f};
  if (random() % 8 == 0) return kSpecial[random() % std::size(kSpecial)];
  return std::uniform_real_distribution<float>(-1.2f, 1.2f)(random);
}

struct Samples {
  explicit Samples(size_t count) : x(count), y(count), m(count), colours(count) {
    std::mt19937 random(7);
    for (size_t i = 0; i < count; ++i) {
      x[i] = AnyPosition(random);
      y[i] = AnyPosition(random);
      m[i] = random() % 4 == 0 ? 0 : static_cast<uint8_t>(random());
      colours[i] = static_cast<uint32_t>(random());  // the upper byte is to be ignored
    }
  }
  std::vector<float> x, y;
  std::vector<uint8_t> m;
  std::vector<uint32_t> colours;
};

// The whole block against its samples packed singly, into an area that must stay untouched behind it.
void CheckBlock(uint32_t format, const SampleSource& block, PackPath path) {
  const size_t width = protocol::BytesPerSample(format);
  std::vector<uint8_t> out(block.count * width + 16, 0xEE);
  std::vector<uint8_t> expected = out;
  PackSamples(format, block, out.data(), path);
  for (size_t k = 0; k < block.count; ++k) {
    const size_t j = (k + block.start) % block.count;
    const size_t jd = (j + block.count - block.delay) % block.count;
    const SampleSource one = {&block.x[j], &block.y[j], &block.m[jd], &block.colours[jd], block.gamma, 1, 0, 0};
    PackSamples(format, one, &expected[k * width], PackPath::portable);
  }
  ASSERT_EQ(Hex(out.data(), out.size()), Hex(expected.data(), expected.size()))
      << "format " << format << " count " << block.count << " start " << block.start << " delay " << block.delay;
}

// Blocks about the lengths where an inner loop hands over to another, all wraps included.
TEST(Packing, RotationAndDelayAreCircular) {
  const auto gamma = Gammas(0, 2, 0.5f);  // 0: black shines, also where it comes from blanking
  for (const size_t count : {1u, 2u, 4u, 11u, 12u, 13u, 20u, 255u, 256u, 257u, 1000u}) {
    const Samples s(count);
    for (const size_t start : {size_t{0}, count / 3, count - 1}) {
      for (const size_t delay : {size_t{0}, std::min<size_t>(1, count - 1), count / 2, count - 1}) {
        for (uint32_t format = 0; format < 5; ++format) {
          for (const PackPath path : {PackPath::portable, FastestPackPath()}) {
            CheckBlock(format, {s.x.data(), s.y.data(), s.m.data(), s.colours.data(), &gamma, count, start, delay},
                       path);
          }
        }
      }
    }
  }
}

// The formula evaluated value by value, in 16 bits.
TEST(Packing, PositionsFollowTheFormula) {
  const size_t count = 20000;
  const Samples s(count);
  const auto gamma = Gammas(1, 1, 1);
  const SampleSource source = {s.x.data(), s.y.data(), s.m.data(), s.colours.data(), &gamma, count, 0, 0};
  for (const PackPath path : {PackPath::portable, FastestPackPath()}) {
    std::vector<uint8_t> out(count * 5);
    PackSamples(0, source, out.data(), path);
    for (size_t i = 0; i < count; ++i) {
      const float v = s.x[i];
      const float clamped = std::isnan(v) ? -1.0f : std::min(std::max(v, -1.0f), 1.0f);
      ASSERT_EQ(out[5 * i] + out[5 * i + 1] * 256, static_cast<int>((clamped + 1) * 32767.5f)) << v;
    }
  }
}

class Stream : public ::testing::Test, protected ScriptedDevice {
 protected:
  // Sets the state word: format code in bits 13..15, hardware filter off.
  void SetState(uint16_t state) {
    port->Answer(0xF4, kAck + Bytes{static_cast<uint8_t>(state), static_cast<uint8_t>(state >> 8)});
    device.GetDeviceState();
    port->TakeWrites();
    port->TakeWaits();
  }

  float x[4] = {0, 0, 0, 0};
  float y[4] = {-1, -1, -1, -1};
  unsigned char m[4] = {10, 11, 12, 13};
};

TEST_F(Stream, ABlockIsAnnouncedThenSentWhole) {
  SetState(0);
  device.SendDataStream(x, y, m, 4, 1, false);
  EXPECT_EQ(port->TakeWrites(),
            "B5 B0 2B B1 09 14 00 00 0A | B5 B0 2B B2 06 0A | "
            "FF 7F 00 00 0D FF 7F 00 00 0A FF 7F 00 00 0B FF 7F 00 00 0C");
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_EQ(port->WriteTimeouts().back(), 0xFFFFFFFFu);
}

TEST_F(Stream, TheFilterDelaysTheMarksUnlessTheModeHasNone) {
  // 20000 samples/s through 2000 Hz: 6 samples, limited to 3 of 4.
  const char* delayed = "FF 7F 00 00 0B FF 7F 00 00 0C FF 7F 00 00 0D FF 7F 00 00 0A";
  const char* straight = "FF 7F 00 00 0A FF 7F 00 00 0B FF 7F 00 00 0C FF 7F 00 00 0D";
  const struct {
    float mode;
    const char* block;
  } kCases[] = {{0, delayed}, {6, delayed}, {7, straight}, {8, straight}, {9, delayed}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.mode);
    device.SetDeviceParam(ParamDataMode, c.mode);
    port->TakeWrites();
    device.SendDataStream(x, y, m, 4, 0, false);
    EXPECT_EQ(port->TakeWrites(), std::string("B5 B0 2B B1 09 14 00 00 0A | B5 B0 2B B2 06 0A | ") + c.block);
  }
}

TEST_F(Stream, HugeDelaysAndCountsAreLimited) {
  SetState(0);
  for (const unsigned delay : {4u, 5u, 0xFFFFFFFFu}) {
    device.SendDataStream(x, y, m, 4, delay, false);
    EXPECT_EQ(port->TakeWrites().substr(49), "FF 7F 00 00 0B FF 7F 00 00 0C FF 7F 00 00 0D FF 7F 00 00 0A");
  }
  std::vector<float> many(30001, 0.0f);
  std::vector<unsigned char> marks(30001, 1);
  device.SendDataStream(many.data(), many.data(), marks.data(), 30001, 0, false);
  EXPECT_EQ(port->TakeWrites().substr(0, 26), "B5 B0 2B B1 09 F0 49 02 0A");  // 150000 bytes
}

TEST_F(Stream, NothingToSendIsRefused) {
  device.SendDataStream(x, y, m, 0, 0, false);
  EXPECT_EQ(device.GetLastError(), ErrorInvalidValue);
  for (int missing = 0; missing < 3; ++missing) {
    device.GetDeviceParam(ParamVbias);
    device.SendDataStream(missing == 0 ? nullptr : x, missing == 1 ? nullptr : y, missing == 2 ? nullptr : m, 4, 0,
                          false);
    EXPECT_EQ(device.GetLastError(), ErrorInvalidValue);
  }
  EXPECT_EQ(port->TakeWrites(), "");
}

TEST_F(Stream, TheBlockBeginsNearestToTheStopPosition) {
  SetState(0);
  port->Answer(0xF2, kAck + Bytes{0x00, 0xC0, 0x00, 0xC0, 5, 0x78, 0x56, 0x34, 0x12});  // 0.5, 0.5
  device.StopDataStream();
  port->TakeWrites();
  std::vector<float> cx(360), cy(360);
  std::vector<unsigned char> cm(360);
  for (size_t i = 0; i < 360; ++i) {
    cx[i] = static_cast<float>(std::cos(static_cast<double>(i) * M_PI / 180));
    cy[i] = static_cast<float>(std::sin(static_cast<double>(i) * M_PI / 180));
    cm[i] = static_cast<unsigned char>(i);
  }
  device.SendDataStream(cx.data(), cy.data(), cm.data(), 360, 0, true);
  EXPECT_EQ(port->TakeWrites().substr(49 + 12, 2), "2D");  // 45 degrees
  float farX[3] = {-1, 0.5f, 0.5f}, farY[3] = {-1, 0.5f, 0.5f};
  unsigned char marks[3] = {1, 2, 3};
  device.SendDataStream(farX, farY, marks, 3, 0, true);
  EXPECT_EQ(port->TakeWrites().substr(49 + 12, 2), "02");  // the first of equals
  float nanX[3] = {kNaN, kNaN, kNaN};
  device.SendDataStream(nanX, farY, marks, 3, 0, true);
  EXPECT_EQ(port->TakeWrites().substr(49 + 12, 2), "01");
}

TEST_F(Stream, ColourFormatsUseTheTableAndItsGammas) {
  SetState(0x6000);
  unsigned colours[4] = {0xFF0000, 0x808080, 0x0000FF, 0x123456};
  device.SetRGBData(colours, 4);
  device.SetRGBGammas(-1, 2, 0.5f);
  device.SendDataStream(x, y, m, 2, 0, false);
  EXPECT_EQ(port->TakeWrites(),
            "B5 B0 2B B1 09 0C 00 00 0A | B5 B0 2B B2 06 0A | 7F F0 00 FF 00 00 7F F0 00 FF 40 B4");
}

TEST_F(Stream, AnUnknownFormatSendsWhatTheAreaHolds) {
  SetState(0xA000);
  device.SendDataStream(x, y, m, 2, 0, false);
  const std::string writes = port->TakeWrites();
  EXPECT_EQ(writes.substr(0, 49 + 8), "B5 B0 2B B1 09 0A 00 00 0A | B5 B0 2B B2 06 0A | 0A 00 00");
  EXPECT_EQ(writes.size(), 49u + 10 * 3 - 1);
}

TEST_F(Stream, FaultsEndASendWhereTheyHappen) {
  SetState(0);
  const std::string announce = "B5 B0 2B B1 09 05 00 00 0A", follows = " | B5 B0 2B B2 06 0A",
                    block = " | FF 7F 00 00 0A", resync = " | 0A | 0A | 0A";
  const struct {
    const char* name;
    Bytes toAnnounce, toFollows, toBlock;
    std::string writes;
    ZRVError error;
  } kCases[] = {
      {"announce lost", {}, kAck, kAck, announce + resync, ErrorSerialComm},
      {"announce refused", {1, 2, 3}, kAck, kAck, announce + resync, ErrorBadAcknowledge},
      {"follows lost", kAck, {}, kAck, announce + follows + resync, ErrorSerialComm},
      {"block lost", kAck, kAck, {0xB5, 0xB0}, announce + follows + block + resync, ErrorSerialComm},
      {"block refused", kAck, kAck, {0xB5, 0xB0, 0x2B}, announce + follows + block + resync, ErrorBadAcknowledge},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    port->Answer(0xB1, c.toAnnounce);
    port->Answer(0xB2, c.toFollows);
    port->afterBlock = c.toBlock;
    device.SendDataStream(x, y, m, 1, 0, false);
    EXPECT_EQ(device.GetLastError(), c.error);
    EXPECT_EQ(port->TakeWrites(), c.writes);
    device.SendSerialReset();
    port->TakeWrites();
  }
}

TEST_F(Stream, StartVariantsAndTheWaitForTheEnd) {
  const struct {
    int repeat;
    bool wait;
    const char* wire;
    std::vector<unsigned> waits;
  } kCases[] = {
      {0, true, "B5 B0 2B F1 06 0A", {2000}},
      {-7, false, "B5 B0 2B F1 06 0A", {2000}},
      {1, false, "B5 B0 2B F5 07 01 0A", {2000}},
      {100, false, "B5 B0 2B F5 07 20 0A", {2000}},
      {2, true, "B5 B0 2B F3 07 02 0A", {2000, 2 * 1000 * 30000 / 20000 + 2000}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.wire);
    device.StartDataStream(c.repeat, c.wait);
    EXPECT_EQ(port->TakeWrites(), c.wire);
    EXPECT_EQ(port->TakeWaits(), c.waits);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
  }
  for (const Bytes& end : {Bytes{}, Bytes{0xB5, 0xB0, 0x2B}}) {
    port->Answer(0xF3, kAck + end);
    device.StartDataStream(1, true);
    EXPECT_EQ(device.GetLastError(), ErrorSerialComm);
    EXPECT_EQ(port->TakeWrites(), std::string("B5 B0 2B F3 07 01 0A | ") + kResync);
  }
  ZRVDevice unconnected;
  unconnected.StartDataStream(1, true);
  EXPECT_EQ(unconnected.GetLastError(), ErrorNone);
}

TEST_F(Stream, StopValues) {
  port->Answer(0xF2, kAck + Bytes{0xFF, 0xFF, 0x00, 0x00, 0x81, 0x78, 0x56, 0x34, 0x12});
  device.StopDataStream();
  EXPECT_EQ(port->TakeWrites(), "B5 B0 2B F2 06 0A");
  EXPECT_EQ(device.GetXStop(), 65535.0f / 32768.0f - 1.0f);  // full scale x: 0.99997
  EXPECT_EQ(device.GetYStop(), -1.0f);
  EXPECT_EQ(device.GetMStop(), 0x81);
  EXPECT_EQ(device.GetIStop(), 0x12345678u);

  port->Answer(0xF2, {});  // not acknowledged: the values stay
  device.StopDataStream();
  EXPECT_EQ(device.GetLastError(), ErrorSerialComm);
  EXPECT_EQ(device.GetIStop(), 0x12345678u);

  for (uint8_t length = 0; length < 9; ++length) {
    port->Answer(0xF2, kAck + Bytes(length, 0x55));
    device.StopDataStream();
    EXPECT_EQ(device.GetLastError(), ErrorDeviceResponse);
    EXPECT_EQ(device.GetXStop(), 0.0f);
    EXPECT_EQ(device.GetIStop(), 0u);
    EXPECT_EQ(device.GetMStop(), 0x81);
  }
}

TEST_F(Stream, SamplesRemaining) {
  port->Answer(0xE2, kAck + Bytes{0x01, 0x02, 0x03});
  EXPECT_EQ(device.GetSamplesRemaining(), 0x030201u);
  port->Answer(0xE2, kAck + Bytes{0x01, 0x02});
  EXPECT_EQ(device.GetSamplesRemaining(), 0u);
  EXPECT_EQ(device.GetLastError(), ErrorDeviceResponse);
}

}  // namespace
}  // namespace zrv::testing
