#include "generator/point_file.h"

#include <algorithm>
#include <string>

#include "common/text_numbers.h"

namespace zrv {
namespace {

constexpr float kLongestTimeMs = 1000;

bool IsHeader(std::string_view line) {
  const auto holds = [line](std::string_view word) { return line.find(word) != std::string_view::npos; };
  return holds("sps") || holds("Sps") || holds("SPS");
}

// The first word of a header counts for nothing; the second is the rate.
unsigned HeaderRate(std::string_view line) {
  TakeWord(line);
  return TakeUnsigned(line).value_or(0);
}

uint8_t DigitalByte(float value) { return static_cast<uint8_t>(std::clamp(value, 0.0f, 255.0f)); }

void AddPoint(std::string_view line, PointColumns columns, PointFile& to) {
  const auto x = TakeFloat(line);
  const auto y = x ? TakeFloat(line) : x;
  const auto m = y ? TakeFloat(line) : y;
  const auto t = m && columns == PointColumns::xymt ? TakeFloat(line) : m;
  if (!t) return;
  to.x.push_back(std::clamp(*x, -1.0f, 1.0f));
  to.y.push_back(std::clamp(*y, -1.0f, 1.0f));
  to.m.push_back(DigitalByte(*m));
  if (columns == PointColumns::xymt) to.t.push_back(std::clamp(*t, 0.0f, kLongestTimeMs));
}

void Empty(PointFile& points, std::string_view text) {
  const auto lines = static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  const size_t room = std::min(lines, text.size() / 6 + 1);  // "0 0 0\n" is the shortest data line
  for (auto* values : {&points.x, &points.y, &points.t}) values->clear();
  for (auto* values : {&points.x, &points.y}) values->reserve(room);
  points.m.clear();
  points.m.reserve(room);
  points.sps = 0;
}

}  // namespace

void PointFile::Read(std::string_view text, PointColumns columns) {
  Empty(*this, text);
  bool firstLine = true, firstText = true;
  while (!text.empty()) {
    const std::string_view line = TakeLine(text);
    const bool header = firstText && IsHeader(line);
    if (header) sps = HeaderRate(line);
    // A header below empty lines gives the rate too, but is a data line all the same when it reads as one.
    if (!(header && firstLine)) AddPoint(line, columns, *this);
    firstText = firstText && line.empty();
    firstLine = false;
  }
}

float ReadParameter(std::string_view text, std::string_view key, float defaultValue) {
  if (key.empty()) return defaultValue;
  const std::string wanted = std::string(key) + " = ";
  while (!text.empty()) {
    std::string_view line = TakeLine(text);
    const size_t found = line.find(wanted);
    if (found == std::string_view::npos) continue;
    line.remove_prefix(found + wanted.size());
    if (line.find("0x") == std::string_view::npos) return TakeFloat(line).value_or(defaultValue);
    const auto bits = TakeUnsigned(line, 16);
    return bits ? static_cast<float>(*bits) : defaultValue;
  }
  return defaultValue;
}

}  // namespace zrv
