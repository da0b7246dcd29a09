// The generator's output filter: when it applies, what it leaves alone, and the file of coefficients.
#include <array>
#include <bit>

#include "content_files.h"
#include "points.h"
#include "tests/dspfilter/responses.h"

namespace {

using namespace zrv_test;
using Channels = std::array<std::vector<float>, 2>;

std::vector<float> Noise(size_t count, unsigned seed) {
  Random random(seed);
  std::vector<float> noise(count);
  for (float& sample : noise) sample = random.Place();
  return noise;
}

// One array (the second empty) or two, filtered in place; zero phase needs the room of three.
Channels Filtered(Generator& generator, Channels data, bool zeroPhase = false) {
  const size_t count = data[0].size();
  const bool one = data[1].empty();
  for (auto& channel : data) channel.resize(count * (zeroPhase ? 3 : 1) + 1, kFloatCanary);
  float *x = data[0].data(), *y = data[1].data();
  if (one) generator.FilterData(x, x, static_cast<unsigned>(count), zeroPhase);
  else generator.FilterData(x, y, x, y, static_cast<unsigned>(count), zeroPhase);
  for (auto& channel : data) {
    EXPECT_EQ(channel.back(), kFloatCanary);
    channel.resize(one && &channel != data.data() ? 0 : count);
  }
  return data;
}

TEST(SoftwareFilter, CopiesWhenNoFilterApplies) {
  const auto x = Noise(10, 1), y = Noise(10, 2);
  const auto expect = [&](unsigned type, bool twoChannels, unsigned order, bool copiesOne, bool copiesTwo) {
    for (const bool zeroPhase : {false, true}) {
      Generator generator;
      generator.SetupSoftwareFilter(type, order, 1000, 10000, twoChannels);
      EXPECT_EQ(Filtered(generator, {x, {}}, zeroPhase)[0] == x, copiesOne) << type << " of order " << order;
      const Channels two = Filtered(generator, {x, y}, zeroPhase);
      EXPECT_EQ(two[0] == x, copiesTwo) << type << " of order " << order;
      EXPECT_EQ(two[1] == y, copiesTwo) << type << " of order " << order;
    }
  };
  expect(0, true, 4, true, true);
  expect(8, false, 4, true, true);
  expect(7, false, 4, true, true);  // coefficients not loaded
  expect(2, false, 9, false, true);
  expect(2, false, 10, true, true);  // one channel needs more samples than the order,
  expect(2, true, 10, true, false);  // two do not
  std::vector<float> out(10);
  Generator().FilterData(x.data(), out.data(), 10, false);
  EXPECT_EQ(out, x);
}

// Against the designs themselves, from one array to another; cut in two, in place; and anew after a set-up.
template <class Design>
void ExpectFamily(unsigned type) {
  const auto x = Noise(300, 3), y = Noise(300, 4);
  auto one = MakeFilter<Design, 1>(5, 0.07), other = one;
  Channels expected = {x, y};
  float* const xs[] = {expected[0].data()};
  float* const ys[] = {expected[1].data()};
  one.Process(300, xs, xs);
  other.Process(300, ys, ys);

  Generator generator;
  Channels out = {x, y};
  generator.SetupSoftwareFilter(type, 5, 700, 10000, true);
  generator.FilterData(x.data(), y.data(), out[0].data(), out[1].data(), 300, false);
  EXPECT_EQ(out, expected) << type;
  EXPECT_NE(Filtered(generator, {x, y}), expected) << "the state goes on";
  generator.SetupSoftwareFilter(type, 5, 700, 10000, true);
  Channels parts = Filtered(generator, {std::vector(x.begin(), x.begin() + 100), {y.begin(), y.begin() + 100}});
  const Channels tail = Filtered(generator, {std::vector(x.begin() + 100, x.end()), {y.begin() + 100, y.end()}});
  for (size_t c = 0; c < 2; ++c) parts[c].insert(parts[c].end(), tail[c].begin(), tail[c].end());
  EXPECT_EQ(parts, expected) << type;
}

TEST(SoftwareFilter, TypesAreTheirFamilies) {
  ExpectFamily<Dsp::Bessel::Design::LowPass<20>>(1);
  ExpectFamily<Dsp::Butterworth::Design::LowPass<20>>(2);
  ExpectFamily<Dsp::ChebyshevI::Design::LowPass<20>>(3);
  ExpectFamily<Dsp::ChebyshevII::Design::LowPass<20>>(4);
  ExpectFamily<Dsp::Elliptic::Design::LowPass<20>>(5);
  ExpectFamily<Dsp::Legendre::Design::LowPass<20>>(6);
}

// From rest and one pole with its zero, worked out sample by sample: y = (x + x1)/4 + y1/2 at the cutoff whose
// warped frequency is 1/3. Forward over three ones: 1/4, 5/8, 13/16; backward over 13/16, 5/8 the middle
// is (5/8 + 13/16)/4 + ((13/16 + 1)/4 + 13/32)/2, the state going on from the first pass.
TEST(SoftwareFilter, ZeroPhaseOfOneSampleIsTheMiddleOfThree) {
  Generator generator;
  generator.SetupSoftwareFilter(2, 1, 0.1024163823495667f, 1, true);
  const Channels out = Filtered(generator, {std::vector{1.0f}, {-1.0f}}, true);
  EXPECT_NEAR(out[0][0], 0.7890625, 1e-6);
  EXPECT_NEAR(out[1][0], -0.7890625, 1e-6);
}

TEST(SoftwareFilter, SurvivesBadArguments) {
  Generator generator;
  float sample[3] = {1, 2, 3};
  generator.LoadIIRFilterParams(nullptr);
  for (const bool two : {false, true}) {
    generator.SetupSoftwareFilter(1, 0xFFFFFFFF, std::nanf(""), -1, two);
    generator.FilterData(nullptr, sample, sample, sample, 3, false);
    generator.FilterData(sample, sample, sample, nullptr, 3, true);
    generator.FilterData(nullptr, sample, 3, true);
    generator.FilterData(sample, sample, 0, true);
    // 3 * count does not fit 32 bits: a copy, which in place touches nothing.
    generator.FilterData(sample, sample, 1431655766, true);
    EXPECT_EQ(sample[0] + sample[1] + sample[2], 6) << two;
  }
}

struct CoefficientFile : testing::Test {
  void Load(const std::string& bytes) {
    const TempFile file(bytes);
    generator.LoadIIRFilterParams(file.Path());
  }
  // Of a rate of 40000 samples a second.
  static std::string File(char order, const std::vector<double>& values = {}) {
    std::string bytes = {'\x40', '\x9C', 0, 0, order, 0, 0, 0};
    for (const double value : values) {
      for (int i = 0; i < 8; ++i) bytes += static_cast<char>(std::bit_cast<uint64_t>(value) >> (8 * i) & 0xFF);
    }
    return bytes;
  }
  std::vector<float> Impulse(bool two = false) {
    generator.SetupSoftwareFilter(7, 0, 0, 0, two);
    return Filtered(generator, {std::vector<float>{1, 0, 0, 0}, std::vector<float>(two ? 4 : 0, 1.0f)})[0];
  }
  void ExpectOrderAndRate(unsigned order, unsigned rate) {
    EXPECT_EQ(generator.GetIIRFilterOrder(), order);
    EXPECT_EQ(generator.GetIIRFilterSps(), rate);
  }

  const std::vector<float> unchanged = {1, 0, 0, 0};
  Generator generator;
};

// Written out in bytes: order 1, numerator 1 and 2, denominator 2 and -1.
TEST_F(CoefficientFile, NumeratorComesFirst) {
  Load(File(1) + std::string("\0\0\0\0\0\0\xF0\x3F\0\0\0\0\0\0\0\x40\0\0\0\0\0\0\0\x40\0\0\0\0\0\0\xF0\xBF", 32));
  ExpectOrderAndRate(1, 40000);
  const std::vector<float> expected = {0.5f, 1.25f, 0.625f, 0.3125f};
  EXPECT_EQ(Impulse(), expected);
  EXPECT_EQ(Impulse(true), expected);
}

TEST_F(CoefficientFile, OrderIsHeldIn1To31) {
  std::vector<double> values(64, 0.0);
  values[3] = values[32] = 1;  // a delay of three samples
  Load(File('\xFF', values));
  generator.SetupSoftwareFilter(7, 0, 0, 0, false);
  ExpectOrderAndRate(31, 40000);
  const auto noise = Noise(33, 1), out = Filtered(generator, {noise, {}})[0];
  EXPECT_TRUE(std::equal(out.begin() + 3, out.end(), noise.begin()));
  Load(File(0));
  ExpectOrderAndRate(1, 40000);
}

TEST_F(CoefficientFile, CutOrImpossibleFilesLeaveNoFilter) {
  const std::string whole = File(2, {0.5, 2, 4, 1, -0.5, 0.25});
  Load(whole + "more");
  EXPECT_NE(Impulse(), unchanged);
  for (size_t size = 0; size < whole.size(); ++size) {
    Load(whole.substr(0, size));
    EXPECT_EQ(generator.GetIIRFilterOrder(), size < 8 ? 0u : 2u) << size;
    EXPECT_EQ(Impulse(), unchanged) << size;
  }
  for (const double bad : {std::nan(""), static_cast<double>(INFINITY)}) {
    Load(File(1, {0.5, bad, 1, 0}));
    EXPECT_EQ(Impulse(), unchanged);
  }
  Load(whole);
  generator.LoadIIRFilterParams("/no/such/file");
  ExpectOrderAndRate(0, 0);
  EXPECT_EQ(Impulse(), unchanged);
}

TEST_F(CoefficientFile, AccessorsTellTheLastSetUp) {
  ExpectOrderAndRate(0, 0);
  Load(File(3));
  generator.SetupSoftwareFilter(1, 25, 100, 12500.5f, true);
  ExpectOrderAndRate(20, 12500);
  generator.SetupSoftwareFilter(7, 5, 100, 12500, true);
  ExpectOrderAndRate(3, 40000);
  generator.SetupSoftwareFilter(2, 5, 100, 1e30f, true);
  ExpectOrderAndRate(5, 0xFFFFFFFF);
}

}  // namespace
