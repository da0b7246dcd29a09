// Kinds and composing: what the options make of a pattern.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "run_zrv.h"
#include "tests/generator/content_files.h"
#include "tools/errors.h"
#include "tools/filter_choice.h"
#include "tools/kinds.h"
#include "tools/values.h"

namespace zrvtool::test {
namespace {

bool NeedsAFile(const Kind& kind) {
  return std::any_of(kind.options.begin(), kind.options.end(),
                     [](const OptionRow& row) { return row.type == OptionType::FileArgument; });
}

TEST(Kinds, EachMakesASoundPatternOfItsGoodInitialValues) {
  for (const Kind& kind : Kinds()) {
    Values values = InitialValues(kind);
    for (const std::vector<OptionRow>& rows : {kind.options, CommonOptions()})
      for (const OptionRow& row : rows)
        EXPECT_TRUE(*row.initial == '\0' || Complaint(row, row.initial).empty()) << kind.name << " " << row.name;
    if (NeedsAFile(kind)) continue;
    for (const OptionRow& row : kind.options)
      if (row.type == OptionType::Argument) values.Set(row.name, "Text");
    const Pattern p = MakePattern(kind, values);
    EXPECT_GT(p.size(), 10u) << kind.name;
    EXPECT_TRUE(p.x.size() == p.y.size() && p.x.size() == p.m.size() && p.rate > 0) << kind.name;
    const auto inside = [](float v) { return std::abs(v) <= 1.0001f; };
    EXPECT_TRUE(std::all_of(p.x.begin(), p.x.end(), inside)) << kind.name;
    EXPECT_TRUE(std::all_of(p.y.begin(), p.y.end(), inside)) << kind.name;
    EXPECT_TRUE(std::any_of(p.m.begin(), p.m.end(), [](unsigned char m) { return m != 0; })) << kind.name;
  }
}

// A drawn corner, a dark move and a drawn line; colours where asked for.
std::string Corners(const Folder& folder) {
  WriteText(folder.File("corners.txt"), "sps 5000\n-0.5 -0.5 255\n0.5 -0.5 0\n0.5 0.5 255\n-0.5 0.5 255\n");
  return folder.File("corners.txt");
}

// The library lets the lowest rate win: 16 points of 5 ms at 100 kHz.
TEST(Kinds, PointsHaveRoomWhenTheRatesAreCrossed) {
  const Pattern p = MakePattern("point-to-point", {{"min-rate", "100000"}, {"max-rate", "1000"}});
  EXPECT_EQ(p.rate, 100000u);
  EXPECT_NEAR(static_cast<double>(p.size()), 16 * 500, 1);
}

TEST(Compose, EveryProfileStaysOnThePath) {
  const Folder folder;
  for (const char* profile : {"linear", "trapezoidal", "optimized"}) {
    const Pattern p =
        MakePattern("points", {{"file", Corners(folder)}, {"corners", "1"}, {"profile", profile}, {"samples", "200"}});
    EXPECT_EQ(p.rate, 5000u);
    EXPECT_NEAR(static_cast<double>(p.size()), 200, 6) << profile;
    for (std::size_t i = 0; i < p.size(); ++i) {  // all four sides lie at 0.5 from an axis
      const float edge = std::max(std::abs(p.x[i]), std::abs(p.y[i]));
      EXPECT_NEAR(edge, 0.5f, 1e-4) << profile << " sample " << i;
      const bool onDarkSide = p.x[i] > 0.499f && std::abs(p.y[i]) < 0.49f;
      EXPECT_TRUE(!onDarkSide || p.m[i] == 0) << profile << " sample " << i;
    }
  }
}

TEST(Compose, ClosesAsAsked) {
  const Folder folder;
  const auto with = [&](const char* close) {
    return MakePattern("points", {{"file", Corners(folder)}, {"close", close}, {"close-samples", "7"}});
  };
  EXPECT_EQ(with("auto").size(), 4u);  // samples are left alone
  EXPECT_EQ(with("none").size(), 4u);
  const Pattern back = with("blank"), retraced = with("retrace");
  ASSERT_EQ(back.size(), 11u);
  EXPECT_EQ(back.x.back(), back.x.front());
  EXPECT_EQ(back.m[3], 0);
  ASSERT_EQ(retraced.size(), 7u);
  EXPECT_EQ(retraced.y[4], retraced.y[2]);
}

TEST(Compose, AnimatesAndFilters) {
  const Pattern p = MakePattern("rose", {{"samples", "100"},
                                         {"animate", "rotate"},
                                         {"animation-frames", "4"},
                                         {"filter", "butterworth:2:900"},
                                         {"zero-phase", "1"}});
  EXPECT_EQ(p.size(), 400u);
  EXPECT_TRUE(std::all_of(p.x.begin(), p.x.end(), [](float x) { return std::isfinite(x); }));
}

// The corners of a square as the library is told: lower left, lower right, upper right, upper left.
TEST(Compose, KeystoneMovesTheCornersWhereTheyAreSent) {
  const Folder folder;
  WriteText(folder.File("square.txt"), "-1 -1 1\n1 -1 1\n1 1 1\n-1 1 1\n");
  const Pattern p =
      MakePattern("points", {{"file", folder.File("square.txt")}, {"keystone", "-0.9,-0.8,0.7,-0.6,0.5,0.4,-0.3,0.2"}});
  const float expected[4][2] = {{-0.9f, -0.8f}, {0.7f, -0.6f}, {0.5f, 0.4f}, {-0.3f, 0.2f}};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(p.x[i], expected[i][0], 1e-5f);
    EXPECT_NEAR(p.y[i], expected[i][1], 1e-5f);
  }
}

// Two frames of true colour: a red square on the left, a blue one on the right.
std::string TwoFrames(const Folder& folder) {
  using namespace zrv_test;
  Bytes file;
  for (const auto& [left, blue] : {std::pair{-30000, 0}, {10000, 255}}) {
    file += IldaSection(5, 5, 2);
    for (const auto& [x, y] : {std::pair{0, 0}, {20000, 0}, {20000, 20000}, {0, 20000}, {0, 0}})
      file += BigEndian({left + x, y - 10000, blue, 255 - blue});
  }
  file += IldaSection(5, 0, 2);
  WriteText(folder.File("two.ild"), {file.begin(), file.end()});
  return folder.File("two.ild");
}

TEST(Drawing, KeepsItsColoursUnderEveryProfile) {
  const Folder folder;
  for (const char* profile : {"linear", "trapezoidal", "optimized"}) {
    const Pattern p = MakePattern("ilda", {{"file", TwoFrames(folder)}, {"samples", "200"}, {"profile", profile}});
    ASSERT_EQ(p.rgb.size(), p.size());
    int red = 0, blue = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
      if (p.m[i] == 0) continue;
      // Red is lit on the left only, blue on the right: no lit way between the frames.
      ASSERT_EQ(p.rgb[i], p.x[i] < 0 ? 0xFF0000u : 0x0000FFu) << profile << " sample " << i;
      (p.x[i] < 0 ? red : blue)++;
    }
    EXPECT_GT(red, 100) << profile;
    EXPECT_GT(blue, 100) << profile;
  }
  EXPECT_THROW(MakePattern("ilda", {{"file", TwoFrames(folder)}, {"frames", "2-3"}}), ToolError);
  const Pattern second = MakePattern("ilda", {{"file", TwoFrames(folder)}, {"frames", "2"}});
  EXPECT_TRUE(std::none_of(second.rgb.begin(), second.rgb.end(), [](unsigned c) { return c == 0xFF0000u; }));
}

TEST(Laser, BurnsTheChartInItsPlace) {
  const Pattern p = MakePattern("laser", {{"lines", "50"}, {"pixels", "50"}, {"line-time", "10"}});
  ASSERT_TRUE(p.levels);
  for (std::size_t i = 0; i < p.size(); ++i) {
    const double u = (static_cast<double>(p.x[i]) / 0.9 + 1) / 2, v = (static_cast<double>(p.y[i]) / 0.9 + 1) / 2;
    const double radius = std::hypot(u - 0.5, v - 0.66);
    const bool inHole = radius > 0.11 && radius<0.17, around = radius> 0.35 && v > 0.35;
    EXPECT_TRUE(!(inHole || around) || p.m[i] == 0) << "sample " << i << " at " << u << ", " << v;
  }
  EXPECT_GT(std::count(p.m.begin(), p.m.end(), 255), 500);
}

TEST(Filter, ChoicesAreReadOrRefused) {
  const FilterChoice choice = FilterChoiceIn("chebyshev2:12:1500.5");
  EXPECT_EQ(choice.type, 4u);
  EXPECT_EQ(choice.order, 12u);
  EXPECT_EQ(choice.cutoff, 1500.5f);
  EXPECT_EQ(Describe(choice), "Chebyshev II low-pass, order 12, 1500.5 Hz");
  for (const char* text : {"", "bessel", "bessel:5", "bessel:0:100", "bessel:21:100", "bessel:2.5:100", "bessel:5:0",
                           "bessel:5:-3", "bessel:5:nan", "Bessel:5:100", "bessel:5:100:7", "file:/no/such/file"})
    EXPECT_THROW(FilterChoiceIn(text), ToolError) << text;
}

TEST(Values, NumbersAreWholeTexts) {
  const OptionRow number = {"n", OptionType::Number, "1", "", -2, 2};
  const OptionRow count = {"c", OptionType::Count, "1", "", 1, 9};
  for (const char* good : {"0", "-2", "2", "+1.5", "1e0"}) EXPECT_EQ(Complaint(number, good), "") << good;
  for (const char* bad : {"", "2.1", "x", "1x", "nan", "inf", "0x1", "1,5", " 1"})
    EXPECT_NE(Complaint(number, bad), "") << bad;
  for (const char* bad : {"0", "10", "1.5", "-1"}) EXPECT_NE(Complaint(count, bad), "") << bad;
}

}  // namespace
}  // namespace zrvtool::test
