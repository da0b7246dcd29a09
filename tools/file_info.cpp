#include "file_info.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <sstream>

#include "ZRVDataGenerator.h"
#include "errors.h"
#include "image_file.h"
#include "kinds.h"

namespace zrvtool {
namespace {

std::string FirstBytes(const std::string& name) {
  constexpr std::size_t kSome = 4096;
  std::ifstream in(name, std::ios::binary);
  std::string head(kSome, '\0');
  in.read(head.data(), static_cast<std::streamsize>(kSome));
  head.resize(static_cast<std::size_t>(in.gcount()));
  return head;
}

const char* FormatName(unsigned int format) {
  switch (format) {
    case 0: return "3D, indexed colour";
    case 1: return "2D, indexed colour";
    case 4: return "3D, true colour (its points are not read)";
    case 5: return "2D, true colour";
    default: return "not known (its points are not read)";
  }
}

std::string Numbered(unsigned int count, const std::string& of) { return std::to_string(count) + of; }

Report Titled(const std::string& name, const char* type) {
  Report report;
  report.AddTitle(name + ": " + type, {{"file", name}, {"type", type}});
  return report;
}

Report Drawing(const std::string& name) {
  ZRVDataGenerator g;
  g.LoadIldaFile(name.c_str());
  Report r = Titled(name, "ILDA drawing");
  r.Add("Format", Numbered(g.IldaFrameType(), ", ") + FormatName(g.IldaFrameType()), {{"format", g.IldaFrameType()}});
  r.Add("Frames", Numbered(g.IldaNumFrames(), ""), {{"frames", g.IldaNumFrames()}});
  r.Add("Points", Numbered(g.IldaNumTotalPoints(), ", at most ") + Numbered(g.IldaNumMaxPoints(), " in a frame"),
        {{"points", g.IldaNumTotalPoints()}, {"most_points_in_a_frame", g.IldaNumMaxPoints()}});
  return r;
}

// Empty when the file holds none.
std::optional<Report> Fonts(const std::string& name) {
  ZRVDataGenerator g;
  g.LoadHersheyFile(name.c_str());
  if (g.HersheyNumFonts() == 0 && g.HersheyNumOC() == 0) return std::nullopt;
  Report r = Titled(name, "vector fonts");
  r.Add("Fonts", Numbered(g.HersheyNumFonts(), ", of ") + Numbered(g.HersheyFontSize(), " characters"),
        {{"fonts", g.HersheyNumFonts()}, {"characters_in_a_font", g.HersheyFontSize()}});
  r.Add("Glyphs", Numbered(g.HersheyNumOC(), " occidental, ") + Numbered(g.HersheyNumOR(), " oriental"),
        {{"occidental_glyphs", g.HersheyNumOC()}, {"oriental_glyphs", g.HersheyNumOR()}});
  r.Add("Indexed signs", Numbered(g.HersheyNumMath(), " mathematical, ") + Numbered(g.HersheyNumSym(), " symbols"),
        {{"mathematical_signs", g.HersheyNumMath()}, {"symbols", g.HersheyNumSym()}});
  return r;
}

Report Picture(const std::string& name) {
  const Image image = LoadImage(name);
  Report r = Titled(name, "image");
  r.Add("Size", std::to_string(image.width) + " x " + std::to_string(image.height) + " pixels",
        {{"width_px", image.width}, {"height_px", image.height}});
  return r;
}

// Numbers on the first line that holds some.
int ColumnsOf(const std::string& head) {
  std::istringstream lines(head);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    int columns = 0;
    for (double number; words >> number;) ++columns;
    if (columns > 0) return columns;
  }
  return 0;
}

Report Points(const std::string& name, bool withTimes) {
  ZRVDataGenerator g;
  const unsigned int count = withTimes ? g.LoadPointTimeFile(name.c_str()) : g.LoadPointFile(name.c_str());
  const unsigned int rate = withTimes ? g.GetPointTimeFileSps() : g.GetPointFileSps();
  Pattern p = Room(count);
  std::vector<float> times(count);
  if (withTimes) g.PointTimeFileDataStream(p.x.data(), p.y.data(), p.m.data(), times.data());
  else g.PointFileDataStream(p.x.data(), p.y.data(), p.m.data());
  float x0 = 0, x1 = 0, y0 = 0, y1 = 0;
  g.BoundingBox(p.x.data(), p.y.data(), count, x0, x1, y0, y1);
  const auto lit = std::count_if(p.m.begin(), p.m.end(), [](unsigned char m) { return m != 0; });
  Report r = Titled(name, withTimes ? "point-time file" : "point file");
  r.Add("Points", Numbered(count, ", ") + std::to_string(lit) + " lit", {{"points", count}, {"lit", lit}});
  if (rate == 0) r.Add("Rate", "not given", {{"rate_hz", nullptr}, {"duration_s", nullptr}});
  else
    r.Add("Rate", Numbered(rate, " samples/s, ") + WithUnit(static_cast<double>(count) / rate, "s"),
          {{"rate_hz", rate}, {"duration_s", static_cast<double>(count) / rate}});
  r.Add("Extent",
        "x " + WithUnit(Exact(x0), "") + " .. " + WithUnit(Exact(x1), "") + ", y " + WithUnit(Exact(y0), "") + " .. " +
            WithUnit(Exact(y1), ""),
        {{"x_min", Exact(x0)}, {"x_max", Exact(x1)}, {"y_min", Exact(y0)}, {"y_max", Exact(y1)}});
  return r;
}

}  // namespace

Report InfoOfFile(const std::string& name) {
  const std::string head = FirstBytes(name);
  const int columns = head.find('\0') == std::string::npos ? ColumnsOf(head) : 0;
  if (head.starts_with("ILDA")) return Drawing(name);
  if (IsImageFile(name)) return Picture(name);
  if (columns == 3 || columns == 4) return Points(name, columns == 4);
  if (std::optional<Report> fonts = Fonts(name)) return *fonts;
  throw ToolError(name + " is no ILDA drawing, vector font, PNG or JPEG image or point file");
}

}  // namespace zrvtool
