#include "report.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace zrvtool {

double Exact(float value) {
  if (!std::isfinite(value)) return static_cast<double>(value);
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value);
  double exact = 0;
  std::from_chars(text, end.ptr, exact);
  return exact;
}

void PrintJson(const Json& json, int indent) {
  std::printf("%s\n", json.dump(indent, ' ', false, Json::error_handler_t::replace).c_str());
}

std::string WithUnit(double value, const char* unit) {
  char text[64];
  std::snprintf(text, sizeof text, "%g%s%s", value, *unit ? " " : "", unit);
  return text;
}

void Report::Add(const std::string& label, const std::string& text, const Json& members) {
  constexpr std::size_t kColumn = 23;
  text_ += label + std::string(label.size() < kColumn ? kColumn - label.size() : 1, ' ') + text + '\n';
  (section_.empty() ? json_ : json_[section_]).update(members);
}

void Report::AddNumber(const std::string& label, const Json& value, const char* unit, const char* key) {
  Add(label, WithUnit(value.get<double>(), unit), {{key, value}});
}

void Report::AddTitle(const std::string& text, const Json& members) {
  text_ += text + '\n';
  json_.update(members);
}

void Report::Begin(const std::string& title, const char* key) {
  text_ += '\n' + title + '\n';
  section_ = key;
  json_[section_] = Json::object();
}

void Report::Print(bool asJson) const {
  if (asJson) PrintJson(json_);
  else std::fputs(text_.c_str(), stdout);
}

}  // namespace zrvtool
