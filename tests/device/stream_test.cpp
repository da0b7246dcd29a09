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
    Bytes out(protocol::BytesPerSample(c.format));
    PackSamples(c.format, {&c.x, &c.y, &c.m, &c.colour, &gamma, 1, 0, 0}, out.data());
    EXPECT_EQ(ToHex(out), c.bytes) << c.name;
  }
}

TEST(Packing, GammaCurvesFollowTheFormula) {
  EXPECT_EQ(MakeGammaCurve(2)[128], 64);     // (128/255)^2 * 255 = 64.25
  EXPECT_EQ(MakeGammaCurve(0.5f)[64], 127);  // sqrt(64/255) * 255 = 127.7
  EXPECT_EQ(MakeGammaCurve(0)[0], 255);      // 0^0 is 1
  for (size_t value = 0; value < 256; ++value) EXPECT_EQ(MakeGammaCurve(1)[value], value);
}

// Positions within and beyond the field, and those that a careless conversion takes for something else.
float AnyPosition(std::mt19937& random) {
  constexpr float kSpecial[] = {0.0f,  -0.0f,  1.0f,   -1.0f,       kNaN,         -kNaN,      kInfinity,  -kInfinity,
                                3e38f, -3e38f, 1e-45f, 0.99999994f, -0.99999994f, 1.0000001f, -1.0000001f};
  if (random() % 8 == 0) return kSpecial[random() % std::size(kSpecial)];
  return std::uniform_real_distribution<float>(-1.2f, 1.2f)(random);
}

// The whole block against its samples packed singly, into an area that must stay untouched behind it.
void CheckBlock(uint32_t format, const SampleSource& block) {
  const size_t width = protocol::BytesPerSample(format);
  Bytes out(block.count * width + 16, 0xEE);
  Bytes expected = out;
  PackSamples(format, block, out.data());
  for (size_t k = 0; k < block.count; ++k) {
    const size_t j = (k + block.start) % block.count;
    const size_t jd = (j + block.count - block.delay) % block.count;
    const SampleSource one = {&block.x[j], &block.y[j], &block.m[jd], &block.colours[jd], block.gamma, 1, 0, 0};
    PackSamples(format, one, &expected[k * width]);
  }
  ASSERT_TRUE(out == expected) << "format " << format << " count " << block.count << " start " << block.start
                               << " delay " << block.delay;
}

// Blocks about the lengths where an inner loop hands over to another, all wraps included.
TEST(Packing, RotationAndDelayAreCircular) {
  const auto gamma = Gammas(0, 2, 0.5f);  // 0: black shines, also where it comes from blanking
  std::mt19937 random(7);
  std::vector<float> x(1000), y(1000);
  std::vector<uint8_t> m(1000);
  std::vector<uint32_t> colours(1000);
  std::generate(x.begin(), x.end(), [&] { return AnyPosition(random); });
  std::generate(y.begin(), y.end(), [&] { return AnyPosition(random); });
  std::generate(m.begin(), m.end(), [&] { return static_cast<uint8_t>(random() % 4 == 0 ? 0 : random()); });
  std::generate(colours.begin(), colours.end(), std::ref(random));  // the upper byte is to be ignored
  for (const size_t count : {1u, 2u, 4u, 11u, 12u, 13u, 20u, 255u, 256u, 257u, 1000u}) {
    for (const size_t start : {size_t{0}, count / 3, count - 1}) {
      for (const size_t delay : {size_t{0}, std::min<size_t>(1, count - 1), count / 2, count - 1}) {
        const SampleSource block = {x.data(), y.data(), m.data(), colours.data(), &gamma, count, start, delay};
        for (uint32_t format = 0; format < 5; ++format) CheckBlock(format, block);
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
  } kCases[] = {{kFiltered, DataModeBuffer, 0, 1},
                {kFiltered, DataModeAnalogVoltsRaw, 0, 0},
                {kFiltered, DataModeAnalogNormalized, 0, 0},
                {kFiltered, DataModeOrBEX1, 0, 1},
                {0, DataModeBuffer, 0, 0},
                {0, DataModeBuffer, 1, 3},
                {0, DataModeBuffer, 4, 1},
                {0, DataModeBuffer, 0xFFFFFFFF, 1},
                {kFiltered, DataModeBuffer, 0xFFFFFFFF, 1}};
  for (const auto& c : kCases) {
    SetState(c.state);
    if (device.GetDeviceParam(ParamDataMode) != static_cast<float>(c.mode)) SetMode(c.mode);
    std::string expected = "B5 B0 2B B1 09 14 00 00 0A | B5 B0 2B B2 06 0A |";
    for (int i = 0; i < 4; ++i) expected += std::string(" FF 7F 00 00 0") + "ABCD"[(c.firstMark + i) % 4];
    EXPECT_EQ(SentBlock(x, y, 4, c.delay, false), expected) << c.state << " " << c.mode << " " << c.delay;
  }
}

TEST_F(Stream, CountsAreLimited) {
  std::vector<float> many(30001, 0.0f);
  std::vector<unsigned char> marks(30001, 1);
  EXPECT_EQ(Sent([&] { device.SendDataStream(many.data(), many.data(), marks.data(), 30001, 0, false); }).substr(0, 26),
            "B5 B0 2B B1 09 F0 49 02 0A");  // 150000 bytes
  const std::function<void()> kRefused[] = {[&] { device.SendDataStream(x, y, m, 0, 0, false); },
                                            [&] { device.SendDataStream(nullptr, y, m, 4, 0, false); },
                                            [&] { device.SendDataStream(x, nullptr, m, 4, 0, false); },
                                            [&] { device.SendDataStream(x, y, nullptr, 4, 0, false); }};
  for (const auto& call : kRefused) {
    EXPECT_EQ(Sent(call), "");
    EXPECT_EQ(device.GetLastError(), ErrorInvalidValue);
  }
}

TEST_F(Stream, TheBlockBeginsNearestToTheStopPosition) {
  SetState(0);
  port->Answer(0xF2, kAck + FromHex("00 C0 00 C0 05 00 00 00 00"));
  device.StopDataStream();  // at 0.5, 0.5
  const struct {
    const char* name;
    float x[4];
    const char* firstMark;
  } kCases[] = {{"the nearest", {-1, 0, 0.4f, 0.9f}, "0C"},
                {"the last", {-1, -1, -1, 1}, "0D"},
                {"the first of equals", {-1, 0.5f, 0.5f, -1}, "0B"},
                {"NaN", {kNaN, kNaN, kNaN, kNaN}, "0A"}};
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

TEST_F(Stream, StopValues) {
  const auto stopped = [&](const Bytes& answer) {
    port->Answer(0xF2, answer);
    device.StopDataStream();
    return std::tuple(device.GetXStop(), device.GetYStop(), int{device.GetMStop()}, device.GetIStop());
  };
  const std::tuple whole(65535.0f / 32768 - 1, -1.0f, 0x81, 0x12345678u);  // full scale x: 0.99997
  EXPECT_EQ(stopped(kAck + FromHex("FF FF 00 00 81 78 56 34 12")), whole);
  EXPECT_EQ(stopped({}), whole);  // not acknowledged: the values stay
  EXPECT_EQ(stopped(kAck + Bytes(8, 0x55)), std::tuple(0.0f, 0.0f, 0x81, 0u));
  EXPECT_EQ(device.GetLastError(), ErrorDeviceResponse);
}

}  // namespace
}  // namespace zrv::testing
