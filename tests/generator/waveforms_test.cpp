#include <cfloat>
#include <climits>

#include "ZRVDataGenerator.h"
#include "points.h"

namespace {

using namespace zrv_test;
using Generator = ZRVDataGenerator;

constexpr float kPi = 3.14159274f;

void ExpectNear(const std::vector<float>& actual, const std::vector<float>& expected, const char* name = "") {
  ASSERT_GE(actual.size(), expected.size());
  for (size_t i = 0; i < expected.size(); ++i) EXPECT_NEAR(actual[i], expected[i], 1e-6) << name << " at " << i;
}

TEST(SineWaveform, WithATimeAxisOrInOneArray) {
  Points p(6);
  ASSERT_EQ(Generator::SineWaveform(p.x.data(), p.y.data(), p.m.data(), 4, 1, 1, 0), 4u);
  ExpectNear(p.x, {-1, -0.5f, 0, 0.5f});
  ExpectNear(p.y, {0, 1, 0, -1});
  EXPECT_EQ(Head(p.m, 4), (std::vector<int>{255, 255, 255, 255}));
  EXPECT_TRUE(p.UntouchedFrom(4));
  Generator::SineWaveform(p.x.data(), nullptr, nullptr, 4, 0.5f, 2, kPi / 2);
  ExpectNear(p.x, {0.5f, -0.5f, 0.5f, -0.5f});
}

struct SawtoothCase {
  const char* name;
  unsigned int samples, cycles;
  float amplitude, rise, phase;
  std::vector<float> expected;
};

TEST(SawtoothWaveform, Shapes) {
  const SawtoothCase kRows[] = {
      {"rising ramp", 4, 1, 1, 1, 0, {-1, -0.5f, 0, 0.5f}},
      {"triangle", 8, 1, 2, 0.5f, 0, {-2, -1, 0, 1, 2, 1, 0, -1}},
      {"two triangles", 8, 2, 1, 0.5f, 0, {-1, 0, 1, 0, -1, 0, 1, 0}},
      {"rises over one sample at least", 10, 1, 0.9f, 0, 0,
       {-0.9f, 0.9f, 0.7f, 0.5f, 0.3f, 0.1f, -0.1f, -0.3f, -0.5f, -0.7f}},
      {"a quarter period later", 8, 1, 2, 0.5f, kPi / 2, {0, 1, 2, 1, 0, -1, -2, -1}},
      {"a quarter period earlier", 8, 1, 2, 0.5f, -kPi / 2, {0, -1, -2, -1, 0, 1, 2, 1}},
      {"the remainder begins a new period", 5, 2, 1, 1, 0, {-1, 0, -1, 0, -1}},
      {"rises beyond the period", 4, 1, 1, 2, 0, {-1, -0.75f, -0.5f, -0.25f}},
      {"one sample a period", 3, 3, 1, 0.5f, 0, {-1, -1, -1}},
  };
  for (const auto& row : kRows) {
    Points p(row.samples + 2);
    EXPECT_EQ(Generator::SawtoothWaveform(p.x.data(), p.y.data(), p.m.data(), row.samples, row.amplitude,
                                          row.cycles, row.rise, row.phase),
              row.samples);
    ExpectNear(p.y, row.expected, row.name);
    EXPECT_TRUE(p.UntouchedFrom(row.samples)) << row.name;
  }
}

TEST(SquareWaveform, Shapes) {
  const SawtoothCase kRows[] = {
      {"low for a quarter", 8, 1, 1, 0.25f, 0, {-1, -1, 1, 1, 1, 1, 1, 1}},
      {"a low part is rounded up", 4, 1, 1, 0.3f, 0, {-1, -1, 1, 1}},
      {"0.3 of 10 is 3", 10, 1, 1, 0.3f, 0, {-1, -1, -1, 1, 1, 1, 1, 1, 1, 1}},
      {"never low", 2, 1, 1, 0, 0, {1, 1}},
      {"half a period later", 4, 1, 1, 0.5f, kPi, {1, 1, -1, -1}},
      {"three periods later", 4, 1, 1, 0.5f, 6 * kPi, {-1, -1, 1, 1}},
  };
  for (const auto& row : kRows) {
    Points p(row.samples);
    Generator::SquareWaveform(p.x.data(), nullptr, nullptr, row.samples, row.amplitude, row.cycles, row.rise,
                              row.phase);
    ExpectNear(p.x, row.expected, row.name);
  }
}

TEST(Waveforms, NothingToDivideBy) {
  Points p(4);
  float *x = p.x.data(), *y = p.y.data();
  unsigned char* m = p.m.data();
  unsigned int rate = 77;
  EXPECT_EQ(Generator::SineWaveform(x, y, m, 0, 1, 1, 0), 0u);
  EXPECT_EQ(Generator::SawtoothWaveform(x, y, m, 4, 1, 0, 0.5f, 0), 0u);
  EXPECT_EQ(Generator::SawtoothWaveform(x, y, m, 4, 1, 5, 0.5f, 0), 0u) << "more cycles than samples";
  EXPECT_EQ(Generator::SquareWaveform(x, y, m, 4, 1, 5, 0.5f, 0), 0u);
  EXPECT_EQ(Generator::SquareWaveform(nullptr, y, m, 4, 1, 1, 0.5f, 0), 0u);
  EXPECT_EQ(Generator::SineWaveform(x, y, nullptr, 4, 1, 1, 0), 0u);
  EXPECT_EQ(Generator::NoiseWaveform(nullptr, 4, 1), 0u);
  for (unsigned int frequency : {0u, 40001u, 80001u, UINT_MAX}) {
    EXPECT_EQ(Generator::RQWaveform(x, y, m, rate, false, 1, 1, frequency, 1, 1, 0), 0u) << frequency;
  }
  for (float multiple : {0.0f, -1.0f, NAN, INFINITY, 1e-30f, 6251.0f}) {
    EXPECT_EQ(Generator::RQWaveform(x, y, m, rate, true, 1, 1, 2000, multiple, 1, 0), 0u) << multiple;
  }
  EXPECT_EQ(rate, 77u);
  EXPECT_TRUE(p.UntouchedFrom(0));
}

TEST(Waveforms, HostileParametersAreHarmless) {
  Points p(500);
  unsigned int rate = 0;
  for (float wild : {NAN, INFINITY, -INFINITY, FLT_MAX, -FLT_MAX, 1e10f, -1e10f, FLT_MIN}) {
    EXPECT_EQ(Generator::SawtoothWaveform(p.x.data(), p.y.data(), p.m.data(), 100, 1, 3, wild, wild), 100u);
    EXPECT_EQ(Generator::SquareWaveform(p.x.data(), p.y.data(), p.m.data(), 100, 1, 3, wild, wild), 100u);
    EXPECT_EQ(Generator::SineWaveform(p.x.data(), p.y.data(), p.m.data(), 100, wild, 3, wild), 100u);
    EXPECT_EQ(Generator::RQWaveform(p.x.data(), p.y.data(), p.m.data(), rate, true, 1, wild, 2000, 10, wild, 0), 400u);
  }
  EXPECT_TRUE(p.UntouchedFrom(400));
}

TEST(NoiseWaveform, StaysWithinItsAmplitude) {
  std::vector<float> data(20001, kFloatCanary);
  ASSERT_EQ(Generator::NoiseWaveform(data.data(), 20000, 0.5f), 20000u);
  EXPECT_EQ(data[20000], kFloatCanary);
  const auto [low, high] = std::minmax_element(data.begin(), data.end() - 1);
  EXPECT_TRUE(*low >= -0.5f && *low < -0.49f) << *low;
  EXPECT_TRUE(*high <= 0.5f && *high > 0.49f) << *high;
}

TEST(RQWaveform, CountsAndRate) {
  const struct {
    unsigned int frequency;
    float multiple;
    unsigned int count, rate;
  } kRows[] = {
      {2000, 10, 400, 80000},     // 40 samples a period
      {100, 10, 800, 8000},       // 80 at most
      {3000, 2.5f, 65, 78000},    // 26 a period, 65 in all
      {1000, 1000, 12000, 12000}, // 12500 at most: 12 a period
      {1000, 6250, 12500, 2000},
  };
  for (const auto& row : kRows) {
    Points p(row.count + 3);
    unsigned int rate = 0;
    EXPECT_EQ(Generator::RQWaveform(p.x.data(), p.y.data(), p.m.data(), rate, false, 1, 1, row.frequency,
                                    row.multiple, 0.5f, 0),
              row.count);
    EXPECT_EQ(rate, row.rate);
    EXPECT_TRUE(p.UntouchedFrom(row.count));
  }
}

// 10000 Hz: 8 samples a period, two x periods in 16 samples.
TEST(RQWaveform, EightSamplesAPeriod) {
  Points p(16);
  unsigned int rate;
  ASSERT_EQ(Generator::RQWaveform(p.x.data(), p.y.data(), p.m.data(), rate, true, 0.5f, 0.8f, 10000, 2, 0.75f, 0), 16u);
  // Bit 3 is off for 0 < i mod 4 <= 3, bit 2 on in the first half of 8, bit 5 at the start.
  EXPECT_EQ(Head(p.m, 16), (std::vector<int>{45, 7, 5, 7, 9, 3, 1, 3, 13, 7, 5, 7, 9, 3, 1, 3}));
  ExpectNear(p.x, {0, -0.3535534f, -0.5f, -0.3535534f, 0, 0.3535534f, 0.5f});
  const float a = 0.8f;  // rises over 12 samples, falls over 4
  ExpectNear(p.y, {-a, -a * 5 / 6, -a * 4 / 6, -a * 3 / 6});
  ExpectNear({p.y[11], p.y[12], p.y[13], p.y[14], p.y[15]}, {a * 5 / 6, a, a / 2, 0, -a / 2});
  Generator::RQWaveform(p.x.data(), p.y.data(), p.m.data(), rate, false, 0.5f, 0.8f, 10000, 2, 0.75f, 0);
  ExpectNear({p.y[0], p.y[4], p.y[8], p.y[12]}, {0, -a, 0, a}, "sine");
}

}  // namespace
