#include "common/text_numbers.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <locale>

namespace zrv {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(TextNumbers, FloatsAreTakenFromTheFrontOrNotAtAll) {
  const struct {
    const char* text;
    std::optional<float> value;
    const char* rest;
  } kCases[] = {
      {"0.5 1", 0.5f, " 1"},      {" \t+2.5e1,", 25.0f, ","},      {"-.25", -0.25f, ""},  {"5.", 5.0f, ""},
      {"1e99x", kInfinity, "x"},  {"-1e400", -kInfinity, ""},      {"1e-99", 0.0f, ""},   {"-1e-400", -0.0f, ""},
      {"nan", {}, "nan"},         {"-inf", {}, "-inf"},            {"", {}, ""},          {" ", {}, " "},
      {"+-1", {}, "+-1"},         {"sps", {}, "sps"},              {"0,5", 0.0f, ",5"},   {"1\r", 1.0f, "\r"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    std::string_view text = c.text;
    EXPECT_EQ(TakeFloat(text), c.value);
    EXPECT_EQ(text, c.rest);
  }
}

TEST(TextNumbers, UnsignedNumbersInBothBases) {
  const struct {
    const char* text;
    int base;
    std::optional<unsigned> value;
  } kCases[] = {{" 20000 ", 10, 20000u}, {"+7", 10, 7u},    {"-7", 10, {}},    {"99999999999", 10, 0xFFFFFFFFu},
                {"0x1F", 16, 31u},       {"ff", 16, 255u},  {"0xg", 16, {}},   {"", 10, {}}};
  for (const auto& c : kCases) {
    std::string_view text = c.text;
    EXPECT_EQ(TakeUnsigned(text, c.base), c.value) << c.text;
  }
}

struct DecimalComma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

TEST(TextNumbers, ACommaLocaleChangesNothing) {
  const std::locale before = std::locale::global(std::locale(std::locale(), new DecimalComma));
  std::string text;
  for (const float value : {-0.333333333f, 1e-5f, 123456.7f, 1234567.0f}) AppendFloat(text += ' ', value);
  std::string_view read = "0.25";
  EXPECT_EQ(TakeFloat(read), 0.25f);
  std::locale::global(before);
  EXPECT_EQ(text, " -0.333333 1e-05 123457 1.23457e+06");
}

TEST(TextNumbers, LinesEndInEitherWayOrNotAtAll) {
  std::string_view text = "a\r\n\nb\rc\nlast";
  EXPECT_EQ(TakeLine(text), "a");
  EXPECT_EQ(TakeLine(text), "");
  EXPECT_EQ(TakeLine(text), "b\rc");
  EXPECT_EQ(TakeLine(text), "last");
  EXPECT_TRUE(text.empty());
}

}  // namespace
}  // namespace zrv
