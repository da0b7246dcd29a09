// Sample blocks: their bytes in every format, rotation and delay, playback, stop values.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <random>

#include "device/packing.h"
#include "device/protocol.h"
#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

const struct PackCase {
  const char* name;
  uint32_t format;
  float x, y;
  uint8_t m;
  uint32_t colour;
  const char* bytes;
} kPackCases[] = {
    {"16 bit, y at -1", 0, 0, -1, 0x80, 0, "FF 7F 00 00 80"},
    {"16 bit, above 1 is clamped", 0, 3, -3, 7, 0, "FF FF 00 00 07"},
    {"16 bit, infinities", 0, kInfinity, -kInfinity, 7, 0, "FF FF 00 00 07"},
    {"16 bit, NaN is -1", 0, kNaN, -kNaN, 0, 0, "00 00 00 00 00"},
    {"16 bit, truncated", 0, 0.25f, -0.25f, 1, 0, "FF 9F FF 5F 01"},  // 40959.375, 24575.625
    {"12/11 bit, m bit 0 only", 1, 0, 0, 1, 0, "7F F7 FF"},
    {"12/11 bit, m without bit 0", 1, 1, -1, 0xFE, 0, "FF F0 00"},
    {"12/11 bit, full scale", 1, 1, 1, 0, 0, "FF FF FE"},
    {"565 white", 2, 1, -1, 1, 0xFFFFFF, "FF F0 00 FF FF"},
    {"565 red", 2, -1, 1, 1, 0xFF0000, "00 0F FF F8 00"},
    {"565 green and blue, low bits dropped", 2, 0, 0, 1, 0x07FC0F, "7F F7 FF 07 E1"},
    {"565 blanked", 2, 0, 0, 0, 0xFFFFFF, "7F F7 FF 00 00"},
    {"888", 3, 0, 0, 2, 0x123456, "7F F7 FF 12 34 56"},
    {"888 blanked", 3, 0, 0, 0, 0x123456, "7F F7 FF 00 00 00"},
    {"m and 888", 4, 0, 0, 9, 0x123456, "7F F7 FF 09 12 34 56"},
    {"m and 888 never blanked", 4, 0, 0, 0, 0x123456, "7F F7 FF 00 12 34 56"},
};

std::array<GammaCurve, 3> Gammas(float red, float green, float blue) {
  return {MakeGammaCurve(red), MakeGammaCurve(green), MakeGammaCurve(blue)};
}

TEST(Packing, Layouts) {
  const auto gamma = Gammas(1, 1, 1);
  for (const auto& c : kPackCases) {
    const size_t bytes = protocol::BytesPerSample(c.format);
    std::vector<uint8_t> out(bytes);
    PackSamples(c.format, {&c.x, &c.y, &c.m, &c.colour, &gamma, 1, 0, 0}, out.data(), PackPath::portable);
    EXPECT_EQ(Hex(out.data(), bytes), c.bytes) << c.name;
  }
}

TEST(Packing, GammaCurvesFollowTheFormula) {
  EXPECT_EQ(MakeGammaCurve(2)[128], 64);     // (128/255)^2 * 255 = 64.25
  EXPECT_EQ(MakeGammaCurve(0.5f)[64], 127);  // sqrt(64/255) * 255 = 127.7
  EXPECT_EQ(MakeGammaCurve(0)[0], 255);      // 0^0 is 1
  for (size_t value = 0; value < 256; ++value) EXPECT_EQ(MakeGammaCurve(1)[value], value);
}

// Mostly positions about the range -1..1, with every value that is treated apart.
float AnyPosition(std::mt19937& random) {
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
        const SampleSource block = {s.x.data(), s.y.data(), s.m.data(), s.colours.data(), &gamma, count, start, delay};
        for (uint32_t format = 0; format < 5; ++format) {
          for (const PackPath path : {PackPath::portable, FastestPackPath()}) CheckBlock(format, block, path);
        }
      }
    }
  }
}

class Stream : public Scripted {
 protected:
  std::string SentBlock(float* xs, float* ys, unsigned count, unsigned delay, bool minimizeJump) {
    return Sent([&] { device.SendDataStream(xs, ys, m, count, delay, minimizeJump); });
  }

  float x[4] = {0, 0, 0, 0};
  float y[4] = {-1, -1, -1, -1};
  unsigned char m[4] = {10, 11, 12, 13};
};

TEST_F(Stream, MarksAreDelayed) {
  constexpr uint16_t kFiltered = 0x100;  // 20000 samples/s through 2000 Hz: 6 samples, limited to 3 of 4
  const struct {
    uint16_t state;
    ZRVDataMode mode;
    unsigned delay;
    int firstMark;
  } kCases[] = {{kFiltered, DataModeBuffer, 0, 1}, {kFiltered, DataModeAnalogVoltsRaw, 0, 0},
                {kFiltered, DataModeAnalogNormalized, 0, 0}, {kFiltered, DataModeOrBEX1, 0, 1},
                {0, DataModeBuffer, 0, 0}, {0, DataModeBuffer, 1, 3}, {0, DataModeBuffer, 4, 1},
                {0, DataModeBuffer, 0xFFFFFFFF, 1}, {kFiltered, DataModeBuffer, 0xFFFFFFFF, 1}};
  for (const auto& c : kCases) {
    SetState(c.state);
    if (device.GetDeviceParam(ParamDataMode) != static_cast<float>(c.mode)) SetMode(c.mode);
    std::string expected = "B5 B0 2B B1 09 14 00 00 0A | B5 B0 2B B2 06 0A |";
    for (int i = 0; i < 4; ++i) expected += std::string(" FF 7F 00 00 0") + "ABCD"[(c.firstMark + i) % 4];
    EXPECT_EQ(SentBlock(x, y, 4, c.delay, false), expected) << c.state << " " << c.mode << " " << c.delay;
    EXPECT_EQ(port->WriteTimeouts().back(), 0xFFFFFFFFu);
  }
}

TEST_F(Stream, CountsAreLimited) {
  std::vector<float> many(30001, 0.0f);
  std::vector<unsigned char> marks(30001, 1);
  const auto send = [&] { device.SendDataStream(many.data(), many.data(), marks.data(), 30001, 0, false); };
  EXPECT_EQ(Sent(send).substr(0, 26), "B5 B0 2B B1 09 F0 49 02 0A");  // 150000 bytes
  const struct {
    float *x, *y;
    unsigned char* m;
    unsigned count;
  } kRefused[] = {{x, y, m, 0}, {nullptr, y, m, 4}, {x, nullptr, m, 4}, {x, y, nullptr, 4}};
  for (const auto& c : kRefused) {
    EXPECT_EQ(Sent([&] { device.SendDataStream(c.x, c.y, c.m, c.count, 0, false); }), "");
    EXPECT_EQ(device.GetLastError(), ErrorInvalidValue);
  }
}

TEST_F(Stream, TheBlockBeginsNearestToTheStopPosition) {
  SetState(0);
  port->Answer(0xF2, kAck + Bytes{0x00, 0xC0, 0x00, 0xC0, 5, 0, 0, 0, 0});
  device.StopDataStream();  // at 0.5, 0.5
  const struct {
    const char* name;
    float x[4];
    const char* firstMark;
  } kCases[] = {{"the nearest", {-1, 0, 0.4f, 0.9f}, "0C"}, {"the last", {-1, -1, -1, 1}, "0D"},
                {"the first of equals", {-1, 0.5f, 0.5f, -1}, "0B"}, {"NaN", {kNaN, kNaN, kNaN, kNaN}, "0A"}};
  for (auto c : kCases) EXPECT_EQ(SentBlock(c.x, c.x, 4, 0, true).substr(49 + 12, 2), c.firstMark) << c.name;
}

TEST_F(Stream, ColourFormatsUseTheTableAndItsGammas) {
  SetState(0x6000);
  unsigned colours[4] = {0xFF0000, 0x808080, 0x0000FF, 0x123456};
  device.SetRGBData(colours, 4);
  device.SetRGBGammas(-1, 2, 0.5f);
  EXPECT_EQ(SentBlock(x, y, 2, 0, false),
            "B5 B0 2B B1 09 0C 00 00 0A | B5 B0 2B B2 06 0A | 7F F0 00 FF 00 00 7F F0 00 FF 40 B4");
}

TEST_F(Stream, AnUnknownFormatSendsWhatTheAreaHolds) {
  SetState(0xA000);
  const std::string writes = SentBlock(x, y, 2, 0, false);
  EXPECT_EQ(writes.substr(0, 49 + 8), "B5 B0 2B B1 09 0A 00 00 0A | B5 B0 2B B2 06 0A | 0A 00 00");
  EXPECT_EQ(writes.size(), 49u + 10 * 3 - 1);
}

TEST_F(Stream, FaultsEndASendWhereTheyHappen) {
  SetState(0);
  const std::string announce = "B5 B0 2B B1 09 05 00 00 0A", follows = announce + " | B5 B0 2B B2 06 0A",
                    block = follows + " | FF 7F 00 00 0A";
  const struct {
    const char* name;
    Bytes toAnnounce, toFollows, toBlock;
    std::string writes;
    ZRVError error;
  } kCases[] = {{"announce lost", {}, kAck, kAck, announce, ErrorSerialComm},
                {"announce refused", {1, 2, 3}, kAck, kAck, announce, ErrorBadAcknowledge},
                {"follows lost", kAck, {}, kAck, follows, ErrorSerialComm},
                {"block lost", kAck, kAck, {0xB5, 0xB0}, block, ErrorSerialComm},
                {"block refused", kAck, kAck, {0xB5, 0xB0, 0x2B}, block, ErrorBadAcknowledge}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    port->Answer(0xB1, c.toAnnounce);
    port->Answer(0xB2, c.toFollows);
    port->afterBlock = c.toBlock;
    EXPECT_EQ(SentBlock(x, y, 1, 0, false), c.writes + " | " + kResync);
    EXPECT_EQ(device.GetLastError(), c.error);
  }
}

TEST_F(Stream, StartVariantsAndTheWaitForTheEnd) {
  const struct {
    int repeat;
    bool wait;
    const char* wire;
    std::vector<unsigned> waits;
  } kCases[] = {{0, true, "B5 B0 2B F1 06 0A", {2000}},
                {-7, false, "B5 B0 2B F1 06 0A", {2000}},
                {1, false, "B5 B0 2B F5 07 01 0A", {2000}},
                {100, false, "B5 B0 2B F5 07 20 0A", {2000}},
                {2, true, "B5 B0 2B F3 07 02 0A", {2000, 2 * 1000 * 30000 / 20000 + 2000}}};
  for (const auto& c : kCases) {
    EXPECT_EQ(Sent([&] { device.StartDataStream(c.repeat, c.wait); }), c.wire);
    EXPECT_EQ(port->TakeWaits(), c.waits) << c.wire;
    EXPECT_EQ(device.GetLastError(), ErrorNone) << c.wire;
  }
  for (const Bytes& end : {Bytes{}, Bytes{0xB5, 0xB0, 0x2B}}) {
    port->Answer(0xF3, kAck + end);
    EXPECT_EQ(Sent([&] { device.StartDataStream(1, true); }), std::string("B5 B0 2B F3 07 01 0A | ") + kResync);
    EXPECT_EQ(device.GetLastError(), ErrorSerialComm);
  }
}

TEST_F(Stream, StopValues) {
  const auto stopped = [&] {
    device.StopDataStream();
    return std::tuple(device.GetXStop(), device.GetYStop(), device.GetMStop(), device.GetIStop());
  };
  const std::tuple whole(65535.0f / 32768 - 1, -1.0f, 0x81, 0x12345678u);  // full scale x: 0.99997
  port->Answer(0xF2, kAck + Bytes{0xFF, 0xFF, 0x00, 0x00, 0x81, 0x78, 0x56, 0x34, 0x12});
  EXPECT_EQ(stopped(), whole);
  port->Answer(0xF2, {});  // not acknowledged: the values stay
  EXPECT_EQ(stopped(), whole);
  EXPECT_EQ(device.GetLastError(), ErrorSerialComm);
  for (uint8_t length = 0; length < 9; ++length) {
    port->Answer(0xF2, kAck + Bytes(length, 0x55));
    EXPECT_EQ(stopped(), std::tuple(0.0f, 0.0f, 0x81, 0u));
    EXPECT_EQ(device.GetLastError(), ErrorDeviceResponse);
  }
}

}  // namespace
}  // namespace zrv::testing
