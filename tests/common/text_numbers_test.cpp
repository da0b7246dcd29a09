#include "common/text_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <tuple>

namespace zrv {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(TextNumbers, FloatsAreTakenFromTheFrontOrNotAtAll) {
  const std::tuple<const char*, std::optional<float>, const char*> kCases[] = {
      {"0.5 1", 0.5f, " 1"},     {" \t+2.5e1,", 25.0f, ","}, {"-.25", -0.25f, ""}, {"5.", 5.0f, ""},
      {"1e99x", kInfinity, "x"}, {"-1e400", -kInfinity, ""}, {"1e-99", 0.0f, ""},  {"-1e-400", -0.0f, ""},
      {"nan", {}, "nan"},        {"-inf", {}, "-inf"},       {"", {}, ""},         {" ", {}, " "},
      {"+-1", {}, "+-1"},        {"sps", {}, "sps"},         {"0,5", 0.0f, ",5"},  {"1\r", 1.0f, "\r"},
  };
  for (const auto& [text, value, rest] : kCases) {
    std::string_view left = text;
    EXPECT_EQ(TakeFloat(left), value) << text;
    EXPECT_EQ(left, rest) << text;
  }
  const std::string zeros(400, '0');  // what is far out of range goes by its digits, not by the sign of an exponent
  for (const auto& [text, value] : {std::pair("-0." + zeros + "1", -0.0f),
                                    {"1" + zeros, kInfinity},
                                    {"0." + zeros + "1e9", 0.0f},
                                    {"0." + zeros + "1e800", kInfinity},
                                    {"-1" + zeros + "e-9", -kInfinity},
                                    {zeros + "1e-400", 0.0f}}) {
    std::string_view left = text;
    EXPECT_EQ(std::signbit(TakeFloat(left).value()), std::signbit(value)) << text;
    left = text;
    EXPECT_EQ(TakeFloat(left), value) << text;
  }
}

TEST(TextNumbers, UnsignedNumbersInBothBases) {
  const std::tuple<std::string_view, int, std::optional<unsigned>> kCases[] = {
      {" 20000 ", 10, 20000u}, {"+7", 10, 7u},   {"-7", 10, {}},  {"99999999999", 10, 0xFFFFFFFFu},
      {"0x1F", 16, 31u},       {"ff", 16, 255u}, {"0xg", 16, {}}, {"", 10, {}}};
  for (auto [text, base, value] : kCases) EXPECT_EQ(TakeUnsigned(text, base), value) << text;
}

TEST(TextNumbers, LinesEndInEitherWayOrNotAtAll) {
  std::string_view text = "a\r\n\nb\rc\nlast";
  for (const char* line : {"a", "", "b\rc", "last"}) EXPECT_EQ(TakeLine(text), line);
  EXPECT_TRUE(text.empty());
}

}  // namespace
}  // namespace zrv
