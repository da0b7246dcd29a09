#include "file_info.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
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

void PrintDrawing(const std::string& name) {
  ZRVDataGenerator g;
  g.LoadIldaFile(name.c_str());
  std::printf("%s: ILDA drawing\n", name.c_str());
  std::printf("%-22s %u, %s\n", "Format", g.IldaFrameType(), FormatName(g.IldaFrameType()));
  std::printf("%-22s %u\n", "Frames", g.IldaNumFrames());
  std::printf("%-22s %u, at most %u in a frame\n", "Points", g.IldaNumTotalPoints(), g.IldaNumMaxPoints());
}

bool PrintFont(const std::string& name) {
  ZRVDataGenerator g;
  g.LoadHersheyFile(name.c_str());
  if (g.HersheyNumFonts() == 0 && g.HersheyNumOC() == 0) return false;
  std::printf("%s: vector fonts\n", name.c_str());
  std::printf("%-22s %u, of %u characters\n", "Fonts", g.HersheyNumFonts(), g.HersheyFontSize());
  std::printf("%-22s %u occidental, %u oriental\n", "Glyphs", g.HersheyNumOC(), g.HersheyNumOR());
  std::printf("%-22s %u mathematical, %u symbols\n", "Indexed signs", g.HersheyNumMath(), g.HersheyNumSym());
  return true;
}

void PrintImage(const std::string& name) {
  const Image image = LoadImage(name);
  std::printf("%s: image\n%-22s %d x %d pixels\n", name.c_str(), "Size", image.width, image.height);
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

void PrintPoints(const std::string& name, bool withTimes) {
  ZRVDataGenerator g;
  const unsigned int count = withTimes ? g.LoadPointTimeFile(name.c_str()) : g.LoadPointFile(name.c_str());
  const unsigned int rate = withTimes ? g.GetPointTimeFileSps() : g.GetPointFileSps();
  Pattern p = Room(count);
  std::vector<float> times(count);
  if (withTimes)
    g.PointTimeFileDataStream(p.x.data(), p.y.data(), p.m.data(), times.data());
  else
    g.PointFileDataStream(p.x.data(), p.y.data(), p.m.data());
  float x0 = 0, x1 = 0, y0 = 0, y1 = 0;
  g.BoundingBox(p.x.data(), p.y.data(), count, x0, x1, y0, y1);
  const auto lit = std::count_if(p.m.begin(), p.m.end(), [](unsigned char m) { return m != 0; });
  std::printf("%s: %s\n", name.c_str(), withTimes ? "point-time file" : "point file");
  std::printf("%-22s %u, %lld lit\n", "Points", count, static_cast<long long>(lit));
  if (rate != 0) std::printf("%-22s %u samples/s, %g s\n", "Rate", rate, static_cast<double>(count) / rate);
  if (rate == 0) std::printf("%-22s not given\n", "Rate");
  std::printf("%-22s x %g .. %g, y %g .. %g\n", "Extent", static_cast<double>(x0), static_cast<double>(x1),
              static_cast<double>(y0), static_cast<double>(y1));
}

}  // namespace

void PrintFileInfo(const std::string& name) {
  const std::string head = FirstBytes(name);
  const int columns = head.find('\0') == std::string::npos ? ColumnsOf(head) : 0;
  if (head.starts_with("ILDA")) return PrintDrawing(name);
  if (IsImageFile(name)) return PrintImage(name);
  if (columns == 3 || columns == 4) return PrintPoints(name, columns == 4);
  if (PrintFont(name)) return;
  throw ToolError(name + " is no ILDA drawing, vector font, PNG or JPEG image or point file");
}

}  // namespace zrvtool
