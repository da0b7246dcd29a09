#include "values.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <optional>

#include "errors.h"

namespace zrvtool {
namespace {

std::optional<double> NumberIn(const std::string& text) {
  const char* first = text.c_str() + (text.starts_with('+') ? 1 : 0);
  const char* end = text.c_str() + text.size();
  double value = 0;
  const auto result = std::from_chars(first, end, value);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::string RangeComplaint(const OptionRow& row, const std::string& text) {
  const std::optional<double> value = NumberIn(text);
  if (!value) return text + " is not a number";
  if (row.type == OptionType::Count && *value != std::floor(*value)) return text + " is not a whole number";
  if (*value >= row.lowest && *value <= row.highest) return {};
  return text + " is not in " + ShortNumber(row.lowest) + " .. " + ShortNumber(row.highest);
}

std::string ChoiceComplaint(const OptionRow& row, const std::string& text) {
  std::string all;
  for (const std::string& choice : Split(row.choices, '|')) {
    if (choice == text) return {};
    all += (all.empty() ? "" : ", ") + choice;
  }
  return text + " is none of " + all;
}

}  // namespace

std::string Complaint(const OptionRow& row, const std::string& text) {
  switch (row.type) {
    case OptionType::Number:
    case OptionType::Count: return RangeComplaint(row, text);
    case OptionType::Choice: return ChoiceComplaint(row, text);
    default: return {};
  }
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> words;
  std::size_t first = 0;
  for (std::size_t end; (end = text.find(separator, first)) != std::string::npos; first = end + 1)
    words.push_back(text.substr(first, end - first));
  words.push_back(text.substr(first));
  return words;
}

double ParseNumber(const std::string& text, const std::string& what) {
  const std::optional<double> value = NumberIn(text);
  if (!value) throw WrongUse(what + ": " + text + " is not a number");
  return *value;
}

std::string ShortNumber(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.10g", value);
  return text;
}

void Values::Declare(const std::vector<OptionRow>& rows) {
  for (const OptionRow& row : rows) {
    texts_[row.name] = row.initial;
    rows_.insert_or_assign(row.name, row);
  }
}

void Values::Set(const std::string& name, const std::string& text) {
  const std::string complaint = Complaint(rows_.at(name), text);
  if (!complaint.empty()) throw WrongUse("--" + name + ": " + complaint);
  texts_.at(name) = text;
}

void Values::Merge(const Values& other) {
  for (const auto& [name, row] : other.rows_) {
    rows_.insert_or_assign(name, row);
    texts_[name] = other.texts_.at(name);
  }
}

double Values::Number(const std::string& name) const { return ParseNumber(Text(name), "--" + name); }

float Values::Angle(const std::string& name) const {
  return static_cast<float>(Number(name) * std::numbers::pi / 180.0);
}

unsigned int Values::Choice(const std::string& name) const {
  const std::vector<std::string> choices = Split(rows_.at(name).choices, '|');
  for (unsigned int i = 0; i < choices.size(); ++i)
    if (choices[i] == Text(name)) return i;
  throw WrongUse("--" + name + ": " + ChoiceComplaint(rows_.at(name), Text(name)));
}

}  // namespace zrvtool
