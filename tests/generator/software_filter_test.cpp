// The generator's output filter: when it applies, what it leaves alone, and the file of coefficients.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "ZRVDataGenerator.h"
#include "content_files.h"

namespace {

constexpr float kCanary = 77.0f;

std::vector<float> Noise(size_t count, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<float> noise(count);
  for (float& sample : noise) sample = static_cast<float>(random() % 2001) / 1000.0f - 1;
  return noise;
}

std::vector<float> One(ZRVDataGenerator& generator, const std::vector<float>& in, bool zeroPhase = false) {
  std::vector<float> out(in.size() * (zeroPhase ? 3 : 1) + 1, kCanary);
  generator.FilterData(in.data(), out.data(), static_cast<unsigned>(in.size()), zeroPhase);
  EXPECT_EQ(out.back(), kCanary);
  out.resize(in.size());
  return out;
}

std::array<std::vector<float>, 2> Two(ZRVDataGenerator& generator, const std::vector<float>& x,
                                      const std::vector<float>& y, bool zeroPhase = false) {
  std::array<std::vector<float>, 2> out;
  for (auto& channel : out) channel.assign(x.size() * (zeroPhase ? 3 : 1) + 1, kCanary);
  generator.FilterData(x.data(), y.data(), out[0].data(), out[1].data(), static_cast<unsigned>(x.size()), zeroPhase);
  for (auto& channel : out) {
    EXPECT_EQ(channel.back(), kCanary);
    channel.resize(x.size());
  }
  return out;
}

TEST(SoftwareFilter, CopiesWhenNoFilterApplies) {
  const struct {
    const char* name;
    unsigned type;
    bool twoChannels;
    unsigned order;
    bool copiesOne, copiesTwo;
  } kRows[] = {
      {"type 0", 0, true, 4, true, true},          {"type 8", 8, false, 4, true, true},
      {"one channel set up", 2, false, 4, false, true}, {"two channels set up", 2, true, 4, true, false},
      {"order 10 of 10 samples", 2, false, 10, true, true}, {"order 9 of 10 samples", 2, false, 9, false, true},
      {"two channels need no length", 2, true, 10, true, false},
      {"coefficients not loaded", 7, false, 4, true, true},
  };
  const auto x = Noise(10, 1), y = Noise(10, 2);
  for (const auto& row : kRows) {
    for (const bool zeroPhase : {false, true}) {
      ZRVDataGenerator generator;
      generator.SetupSoftwareFilter(row.type, row.order, 1000, 10000, row.twoChannels);
      EXPECT_EQ(One(generator, x, zeroPhase) == x, row.copiesOne) << row.name;
      const auto two = Two(generator, x, y, zeroPhase);
      EXPECT_EQ(two[0] == x, row.copiesTwo) << row.name;
      EXPECT_EQ(two[1] == y, row.copiesTwo) << row.name;
    }
  }
}

// Gain at the cutoff, measured as an amplitude of a sine: each type must be the family it says.
TEST(SoftwareFilter, TypesAreTheirFamilies) {
  const struct {
    unsigned type;
    double atCutoff, atDoubleTheWarpedCutoff;  // order 4; dB
  } kRows[] = {
      {1, -3.0103, -13.405},  {2, -3.0103, -24.099}, {3, -1, -33.867},
      {4, -48, -54.021}, {5, -1, -58.845}, {6, -3.0103, -30.306},
  };
  constexpr double kPi = 3.14159265358979;
  const auto gainDb = [](unsigned type, double frequency) {
    ZRVDataGenerator generator;
    generator.SetupSoftwareFilter(type, 4, 100, 1000, false);
    std::vector<float> sine(20000);
    for (size_t i = 0; i < sine.size(); ++i) {
      sine[i] = static_cast<float>(std::sin(2 * kPi * frequency * static_cast<double>(i)));
    }
    sine = One(generator, sine);
    double power = 0;
    for (size_t i = 10000; i < 20000; ++i) power += sine[i] * sine[i] / 5000.0;
    return 10 * std::log10(power);
  };
  const double warpedDouble = std::atan(2 * std::tan(0.1 * kPi)) / kPi;
  for (const auto& row : kRows) {
    EXPECT_NEAR(gainDb(row.type, 0.1), row.atCutoff, 0.01) << row.type;
    EXPECT_NEAR(gainDb(row.type, warpedDouble), row.atDoubleTheWarpedCutoff, 0.01) << row.type;
  }
}

TEST(SoftwareFilter, StateGoesOnFromCallToCallAndEndsWithSetUp) {
  const auto x = Noise(300, 3), y = Noise(300, 4);
  ZRVDataGenerator generator;
  generator.SetupSoftwareFilter(3, 5, 700, 10000, true);
  const auto whole = Two(generator, x, y);
  EXPECT_NE(Two(generator, x, y), whole);
  generator.SetupSoftwareFilter(3, 5, 700, 10000, true);
  const auto head = Two(generator, {x.begin(), x.begin() + 100}, {y.begin(), y.begin() + 100});
  const auto tail = Two(generator, {x.begin() + 100, x.end()}, {y.begin() + 100, y.end()});
  for (size_t c = 0; c < 2; ++c) {
    EXPECT_TRUE(std::equal(head[c].begin(), head[c].end(), whole[c].begin()));
    EXPECT_TRUE(std::equal(tail[c].begin(), tail[c].end(), whole[c].begin() + 100));
  }
}

TEST(SoftwareFilter, FiltersInPlace) {
  for (const bool zeroPhase : {false, true}) {
    auto x = Noise(50, 5), y = Noise(50, 6);
    ZRVDataGenerator generator;
    generator.SetupSoftwareFilter(1, 3, 700, 10000, true);
    const auto expected = Two(generator, x, y, zeroPhase);
    generator.SetupSoftwareFilter(1, 3, 700, 10000, true);
    x.resize(150);
    y.resize(150);
    generator.FilterData(x.data(), y.data(), x.data(), y.data(), 50, zeroPhase);
    EXPECT_TRUE(std::equal(expected[0].begin(), expected[0].end(), x.begin()));
    EXPECT_TRUE(std::equal(expected[1].begin(), expected[1].end(), y.begin()));
  }
}

// A pulse in the middle comes out symmetric and centred, y mirrored to x; forward filtering delays it.
TEST(SoftwareFilter, ZeroPhaseDelaysNothing) {
  std::vector<float> pulse(401, 0.0f), upsideDown(401, 0.0f);
  pulse[200] = 1;
  upsideDown[200] = -1;
  ZRVDataGenerator generator;
  for (unsigned type = 1; type <= 6; ++type) {
    generator.SetupSoftwareFilter(type, 4, 1500, 10000, true);
    const auto out = Two(generator, pulse, upsideDown, true);
    EXPECT_EQ(std::ranges::max_element(out[0]) - out[0].begin(), 200) << type;
    for (size_t i = 0; i < 200; ++i) {
      ASSERT_NEAR(out[0][i], out[0][400 - i], 1e-6f) << type << " " << i;
      ASSERT_EQ(out[0][i], -out[1][i]) << type << " " << i;
    }
    generator.SetupSoftwareFilter(type, 4, 1500, 10000, true);
    const auto forward = Two(generator, pulse, upsideDown);
    EXPECT_GT(std::ranges::max_element(forward[0]) - forward[0].begin(), 200) << type;
  }
}

// From rest and one pole with its zero, worked out sample by sample: y = (x + x1)/4 + y1/2 at the cutoff whose
// warped frequency is 1/3. Forward over three ones: 1/4, 5/8, 13/16; backward over 13/16, 5/8 the middle
// is (5/8 + 13/16)/4 + ((13/16 + 1)/4 + 13/32)/2, the state going on from the first pass.
TEST(SoftwareFilter, ZeroPhaseOfOneSampleIsTheMiddleOfThree) {
  ZRVDataGenerator generator;
  generator.SetupSoftwareFilter(2, 1, 0.1024163823495667f, 1, true);
  const auto out = Two(generator, {1.0f}, {-1.0f}, true);
  EXPECT_NEAR(out[0][0], 0.7890625, 1e-6);
  EXPECT_NEAR(out[1][0], -0.7890625, 1e-6);
}

TEST(SoftwareFilter, SurvivesBadArguments) {
  ZRVDataGenerator generator;
  float sample[3] = {1, 2, 3};
  generator.LoadIIRFilterParams(nullptr);
  for (const unsigned type : {0u, 1u, 7u}) {
    for (const bool two : {false, true}) {
      generator.SetupSoftwareFilter(type, 0xFFFFFFFF, std::nanf(""), -1, two);
      generator.FilterData(nullptr, sample, sample, sample, 3, false);
      generator.FilterData(sample, sample, sample, nullptr, 3, true);
      generator.FilterData(nullptr, sample, 3, true);
      generator.FilterData(sample, nullptr, 3, false);
      generator.FilterData(sample, sample, 0, true);
      generator.FilterData(sample, sample, sample, sample, 0, true);
      EXPECT_EQ(sample[0] + sample[1] + sample[2], 6) << type;
      // 3 * count does not fit 32 bits: a copy, which in place touches nothing.
      generator.FilterData(sample, sample, 1431655766, true);
      generator.FilterData(sample, sample, sample, sample, 1431655766, true);
    }
  }
}

class CoefficientFile : public ::testing::Test {
 protected:
  void Load(const std::string& bytes) {
    const zrv_test::TempFile file(bytes);
    generator_.LoadIIRFilterParams(file.Path());
  }

  static std::string Header(unsigned char order) {
    return {'\x40', '\x9C', 0, 0, static_cast<char>(order), 0, 0, 0};  // 40000 samples a second
  }
  static std::string Bytes(const std::vector<double>& values) {
    std::string bytes;
    for (const double value : values) {
      const auto word = std::bit_cast<uint64_t>(value);
      for (int i = 0; i < 8; ++i) bytes += static_cast<char>(word >> (8 * i) & 0xFF);
    }
    return bytes;
  }

  std::vector<float> Impulse(bool twoChannels = false) {
    generator_.SetupSoftwareFilter(7, 0, 0, 0, twoChannels);
    const std::vector<float> impulse = {1, 0, 0, 0};
    return twoChannels ? Two(generator_, impulse, impulse)[1] : One(generator_, impulse);
  }

  ZRVDataGenerator generator_;
};

const std::vector<float> kUnchanged = {1, 0, 0, 0};

// Written out in bytes: order 1, numerator 1 and 2, denominator 2 and -1.
TEST_F(CoefficientFile, NumeratorComesFirst) {
  Load(Header(1) + std::string("\0\0\0\0\0\0\xF0\x3F\0\0\0\0\0\0\0\x40\0\0\0\0\0\0\0\x40\0\0\0\0\0\0\xF0\xBF", 32));
  EXPECT_EQ(generator_.GetIIRFilterOrder(), 1u);
  EXPECT_EQ(generator_.GetIIRFilterSps(), 40000u);
  const std::vector<float> expected = {0.5f, 1.25f, 0.625f, 0.3125f};
  EXPECT_EQ(Impulse(), expected);
  EXPECT_EQ(Impulse(true), expected);
}

TEST_F(CoefficientFile, OrderIsHeldIn1To31) {
  std::vector<double> numerator(41, 0.0), denominator(41, 0.0);
  numerator[3] = denominator[0] = 1;
  for (const auto& [written, order] : {std::pair<unsigned char, unsigned>{0, 1}, {31, 31}, {40, 31}, {255, 31}}) {
    Load(Header(written));
    EXPECT_EQ(generator_.GetIIRFilterOrder(), order);
  }
  numerator.resize(32);
  Load(Header(40) + Bytes(numerator) + Bytes(denominator));
  generator_.SetupSoftwareFilter(7, 0, 0, 0, false);
  EXPECT_EQ(generator_.GetIIRFilterOrder(), 31u);
  const std::vector<float> ramp = Noise(33, 1);
  const auto out = One(generator_, ramp);
  EXPECT_TRUE(std::equal(out.begin() + 3, out.end(), ramp.begin()));
}

TEST_F(CoefficientFile, CutFilesChangeNothing) {
  const std::string whole = Header(2) + Bytes({0.5, 2, 4}) + Bytes({1, -0.5, 0.25});
  Load(whole + "more");
  EXPECT_NE(Impulse(), kUnchanged);
  for (size_t size = 0; size < whole.size(); ++size) {
    Load(whole.substr(0, size));
    EXPECT_EQ(generator_.GetIIRFilterOrder(), size < 8 ? 0u : 2u) << size;
    EXPECT_EQ(Impulse(), kUnchanged) << size;
  }
  Load(whole);
  generator_.LoadIIRFilterParams("/no/such/file");
  EXPECT_EQ(generator_.GetIIRFilterOrder() + generator_.GetIIRFilterSps(), 0u);
  EXPECT_EQ(Impulse(), kUnchanged);
}

TEST_F(CoefficientFile, ImpossibleCoefficientsLeaveNoFilter) {
  for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    Load(Header(1) + Bytes({0.5, bad}) + Bytes({1, 0}));
    EXPECT_EQ(Impulse(), kUnchanged);
  }
  Load(Header(1) + Bytes({0.5, 0.5}) + Bytes({0, 1}));
  EXPECT_EQ(Impulse(), kUnchanged);
}

TEST_F(CoefficientFile, AccessorsTellTheLastSetUp) {
  EXPECT_EQ(generator_.GetIIRFilterOrder() + generator_.GetIIRFilterSps(), 0u);
  Load(Header(3));
  generator_.SetupSoftwareFilter(1, 25, 100, 12500.5f, true);
  EXPECT_EQ(generator_.GetIIRFilterOrder(), 20u);
  EXPECT_EQ(generator_.GetIIRFilterSps(), 12500u);
  generator_.SetupSoftwareFilter(7, 5, 100, 12500, true);
  EXPECT_EQ(generator_.GetIIRFilterOrder(), 3u);
  EXPECT_EQ(generator_.GetIIRFilterSps(), 40000u);
  generator_.SetupSoftwareFilter(2, 5, 100, 1e30f, true);
  EXPECT_EQ(generator_.GetIIRFilterSps(), 0xFFFFFFFFu);
}

}  // namespace
