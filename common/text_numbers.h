// Lines and numbers of text files, read and written the same whatever the process's locale says.
#ifndef ZRV_COMMON_TEXT_NUMBERS_H
#define ZRV_COMMON_TEXT_NUMBERS_H

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace zrv {

constexpr bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f' || c == '\r'; }

// Takes the next line off the front of text, without its line end ("\n" or "\r\n").
inline std::string_view TakeLine(std::string_view& text) {
  const size_t end = text.find('\n');
  std::string_view line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

inline void SkipBlanks(std::string_view& text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
}

// Takes the next word, a run of characters that are not blank; empty at the end.
inline std::string_view TakeWord(std::string_view& text) {
  SkipBlanks(text);
  const auto end = std::find_if(text.begin(), text.end(), IsBlank);
  const std::string_view word = text.substr(0, static_cast<size_t>(end - text.begin()));
  text.remove_prefix(word.size());
  return word;
}

// Takes a decimal integer with an optional sign after any blanks. One beyond 32 bits reads as the limit it
// passed. Nothing is taken when no digit is there.
inline std::optional<int> TakeInt(std::string_view& text) {
  std::string_view rest = text;
  SkipBlanks(rest);
  if (rest.starts_with('+') && !rest.starts_with("+-")) rest.remove_prefix(1);
  int value = 0;
  const auto end = std::from_chars(rest.data(), rest.data() + rest.size(), value);
  if (end.ec == std::errc::invalid_argument) return {};
  if (end.ec == std::errc::result_out_of_range) {
    value = rest.starts_with('-') ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
  }
  text = rest.substr(static_cast<size_t>(end.ptr - rest.data()));
  return value;
}

// Whether a number is below 1, by where its first digit that counts stands and by its exponent.
inline bool IsBelowOne(std::string_view digits) {
  const size_t e = digits.find_first_of("eE");
  const std::string_view mantissa = digits.substr(0, e);
  const auto point = static_cast<int64_t>(std::min(mantissa.find('.'), mantissa.size()));
  const auto first = static_cast<int64_t>(std::min(mantissa.find_first_of("123456789"), mantissa.size()));
  std::string_view exponent = e == std::string_view::npos ? "0" : digits.substr(e + 1);
  return point - first + TakeInt(exponent).value_or(0) <= 0;
}

// What a decimal number too large or too small for a float is read as: infinity or zero, with its sign.
inline float OutOfRangeFloat(std::string_view digits) {
  double wide = 0;
  const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), wide);
  if (end.ec == std::errc()) return static_cast<float>(wide);
  const float size = IsBelowOne(digits) ? 0.0f : std::numeric_limits<float>::infinity();
  return digits.starts_with('-') ? -size : size;
}

// Takes a decimal number after any blanks; a leading '+' is accepted. Nothing is taken when none is there.
// The words "inf" and "nan" are no numbers.
inline std::optional<float> TakeFloat(std::string_view& text) {
  std::string_view rest = text;
  SkipBlanks(rest);
  if (rest.starts_with('+') && !rest.starts_with("+-")) rest.remove_prefix(1);
  const std::string_view digits = rest.substr(rest.starts_with('-') ? 1 : 0);
  if (digits.empty() || digits[0] == 'i' || digits[0] == 'I' || digits[0] == 'n' || digits[0] == 'N') return {};

  float value = 0;
  const auto end = std::from_chars(rest.data(), rest.data() + rest.size(), value);
  if (end.ec == std::errc::invalid_argument) return {};
  const auto length = static_cast<size_t>(end.ptr - rest.data());
  if (end.ec == std::errc::result_out_of_range) value = OutOfRangeFloat(rest.substr(0, length));
  text = rest.substr(length);
  return value;
}

// Takes an unsigned integer after any blanks; a leading '+' is accepted, and in base 16 a leading "0x".
// One too large for 32 bits reads as the largest. Nothing is taken when no digit is there.
inline std::optional<unsigned> TakeUnsigned(std::string_view& text, int base = 10) {
  std::string_view rest = text;
  SkipBlanks(rest);
  if (rest.starts_with('+')) rest.remove_prefix(1);
  if (base == 16 && (rest.starts_with("0x") || rest.starts_with("0X"))) rest.remove_prefix(2);

  unsigned value = 0;
  const auto end = std::from_chars(rest.data(), rest.data() + rest.size(), value, base);
  if (end.ec == std::errc::invalid_argument) return {};
  if (end.ec == std::errc::result_out_of_range) value = std::numeric_limits<unsigned>::max();
  text = rest.substr(static_cast<size_t>(end.ptr - rest.data()));
  return value;
}

// Six significant digits, the shorter of plain and exponent form: what a stream writes by default.
inline void AppendFloat(std::string& text, float value) {
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6);
  text.append(digits, end.ptr);
}

inline void AppendUnsigned(std::string& text, unsigned value) {
  char digits[16];
  const auto end = std::to_chars(digits, digits + sizeof digits, value);
  text.append(digits, end.ptr);
}

}  // namespace zrv

#endif
