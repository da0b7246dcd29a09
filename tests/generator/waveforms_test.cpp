#include <climits>

#include "points.h"

namespace {

using namespace zrv_test;

// In one array, and as y of two of which x is the time axis -1..1.
void ExpectWave(const char* name, const Writer& write, const std::vector<double>& signal) {
  const double step = 2.0 / static_cast<double>(signal.size());
  std::vector<XY> points;
  for (const double value : signal) points.push_back({step * static_cast<double>(points.size()) - 1, value});
  ExpectFigure(name, write, points);
  Points one(signal.size() + 1);
  EXPECT_EQ(write(one.x.data(), nullptr, nullptr), signal.size()) << name;
  for (size_t i = 0; i < signal.size(); ++i) EXPECT_NEAR(one.x[i], signal[i], 1e-6) << name;
  EXPECT_EQ(one.x.back(), kFloatCanary) << name;
}

TEST(Waveforms, KnownShapes) {
  const auto sine = [](unsigned n, unsigned cycles, float amplitude, float phase) {
    return [=](auto... to) { return Generator::SineWaveform(to..., n, amplitude, cycles, phase); };
  };
  ExpectWave("sine", sine(4, 1, 1, 0), {0, 1, 0, -1});
  ExpectWave("two sines from the top", sine(4, 2, 0.5f, kPi / 2), {0.5, -0.5, 0.5, -0.5});
  ExpectWave("no samples", sine(0, 1, 1, 0), {});
  const auto sawtooth = [](unsigned n, unsigned cycles, float amplitude, float rise, float phase) {
    return [=](auto... to) { return Generator::SawtoothWaveform(to..., n, amplitude, cycles, rise, phase); };
  };
  ExpectWave("triangle", sawtooth(8, 1, 2, 0.5f, 0), {-2, -1, 0, 1, 2, 1, 0, -1});
  ExpectWave("rises over one sample at least", sawtooth(5, 1, 1, 0, 0), {-1, 1, 0.5, 0, -0.5});
  ExpectWave("a quarter period later", sawtooth(8, 1, 2, 0.5f, kPi / 2), {0, 1, 2, 1, 0, -1, -2, -1});
  ExpectWave("a quarter period earlier", sawtooth(8, 1, 2, 0.5f, -kPi / 2), {0, -1, -2, -1, 0, 1, 2, 1});
  ExpectWave("the remainder begins a new period", sawtooth(5, 2, 1, 1, 0), {-1, 0, -1, 0, -1});
  ExpectWave("rises beyond the period", sawtooth(4, 1, 1, 2, 0), {-1, -0.75, -0.5, -0.25});
  ExpectWave("one sample a period", sawtooth(3, 3, 1, 0.5f, 0), {-1, -1, -1});
  ExpectWave("no cycles", sawtooth(4, 0, 1, 0.5f, 0), {});
  const auto square = [](unsigned n, unsigned cycles, float duty, float phase) {
    return [=](auto... to) { return Generator::SquareWaveform(to..., n, 1, cycles, duty, phase); };
  };
  ExpectWave("a low part is rounded up", square(4, 1, 0.3f, 0), {-1, -1, 1, 1});
  ExpectWave("0.3 of 10 is 3", square(10, 1, 0.3f, 0), {-1, -1, -1, 1, 1, 1, 1, 1, 1, 1});
  ExpectWave("three and a half periods later", square(4, 1, 0.5f, 7 * kPi), {1, 1, -1, -1});
  ExpectWave("more cycles than samples", square(4, 5, 0.5f, 0), {});
}

TEST(RQWaveform, Refuses) {
  Points p(12500);
  float *x = p.x.data(), *y = p.y.data();
  unsigned char* m = p.m.data();
  unsigned int rate = 77;
  for (unsigned int frequency : {0u, 40001u, 80001u, UINT_MAX}) {
    EXPECT_EQ(Generator::RQWaveform(x, y, m, rate, false, 1, 1, frequency, 1, 1, 0), 0u) << frequency;
  }
  for (float multiple : {0.0f, -1.0f, NAN, INFINITY, 1e-30f, 6251.0f}) {
    EXPECT_EQ(Generator::RQWaveform(x, y, m, rate, true, 1, 1, 2000, multiple, 1, 0), 0u) << multiple;
  }
  EXPECT_EQ(rate, 77u);
  EXPECT_TRUE(p.UntouchedFrom(0));
}

TEST(NoiseWaveform, StaysWithinItsAmplitude) {
  std::vector<float> data(20001, kFloatCanary);
  EXPECT_EQ(Generator::NoiseWaveform(nullptr, 4, 1), 0u);
  ASSERT_EQ(Generator::NoiseWaveform(data.data(), 20000, 0.5f), 20000u);
  EXPECT_EQ(data[20000], kFloatCanary);
  const auto [low, high] = std::minmax_element(data.begin(), data.end() - 1);
  EXPECT_TRUE(*low >= -0.5f && *low < -0.49f) << *low;
  EXPECT_TRUE(*high <= 0.5f && *high > 0.49f) << *high;
}

TEST(RQWaveform, CountsAndRate) {
  const auto expect = [](unsigned frequency, float multiple, unsigned count, unsigned rate) {
    Points p(count + 3);
    unsigned got = 0;
    float *x = p.x.data(), *y = p.y.data();
    EXPECT_EQ(Generator::RQWaveform(x, y, p.m.data(), got, false, 1, 1, frequency, multiple, 1, 0), count);
    EXPECT_EQ(got, rate);
    EXPECT_TRUE(p.UntouchedFrom(count));
  };
  expect(2000, 10, 400, 80000);      // 40 samples a period
  expect(100, 10, 800, 8000);        // 80 at most
  expect(3000, 2.5f, 65, 78000);     // 26 a period, 65 in all
  expect(1000, 1000, 12000, 12000);  // 12500 at most: 12 a period
}

// 10000 Hz: 8 samples a period, two x periods in 16 samples. The triangle rises over 12 samples and falls over 4.
TEST(RQWaveform, EightSamplesAPeriod) {
  Points p(16);
  float *x = p.x.data(), *y = p.y.data();
  unsigned int rate;
  ASSERT_EQ(Generator::RQWaveform(x, y, p.m.data(), rate, true, 0.5f, 0.8f, 10000, 2, 0.75f, 0), 16u);
  // Bit 3 is off for 0 < i mod 4 <= 3, bit 2 on in the first half of 8, bit 5 at the start.
  EXPECT_EQ(Head(p.m, 16), (std::vector<int>{45, 7, 5, 7, 9, 3, 1, 3, 13, 7, 5, 7, 9, 3, 1, 3}));
  const double a = 0.8, r = 0.3535534;
  p.ExpectAt(0, {{0, -a}, {-r, -a * 5 / 6}, {-0.5, -a * 4 / 6}, {-r, -a * 3 / 6}});
  p.ExpectAt(11, {{-r, a * 5 / 6}, {0, a}, {r, a / 2}, {0.5, 0}, {r, -a / 2}});
  Generator::RQWaveform(x, y, p.m.data(), rate, false, 0.5f, 0.8f, 10000, 2, 0.75f, 0);
  for (size_t i = 0; i < 16; ++i) EXPECT_NEAR(y[i], -a * std::sin(static_cast<double>(i) * kPi / 8), 1e-6);
}

}  // namespace
