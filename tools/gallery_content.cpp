#include "gallery_content.h"

#include <cmath>
#include <cstdint>
#include <fstream>
#include <numbers>

#include "kinds.h"
#include "simulator/mirror.h"

namespace zrvtool {
namespace {

// Big-endian pieces of a drawing file.
void Put16(std::string& file, int value) {
  file += static_cast<char>(value >> 8 & 255);
  file += static_cast<char>(value & 255);
}

void PutHeader(std::string& file, int points) {
  constexpr int kTrueColour2D = 5;
  file += "ILDA";
  Put16(file, 0);
  Put16(file, kTrueColour2D);
  file += "GALLERY ZRV     ";
  Put16(file, points);
  Put16(file, 0);  // number of this frame
  Put16(file, 1);  // frames in all
  Put16(file, 0);
}

void PutPoint(std::string& file, double x, double y, bool blank, unsigned int rgb) {
  constexpr int kBlanked = 0x40;
  Put16(file, static_cast<int>(std::lround(x * 32767)));
  Put16(file, static_cast<int>(std::lround(y * 32767)));
  file += static_cast<char>(blank ? kBlanked : 0);
  file += static_cast<char>(rgb & 255);
  file += static_cast<char>(rgb >> 8 & 255);
  file += static_cast<char>(rgb >> 16 & 255);
}

// A rainbow ring around a white square.
void WriteDrawing(const std::string& name) {
  constexpr int kRing = 72, kSquare = 7;
  constexpr unsigned int kColours[] = {0xFF3030, 0xFFB020, 0x40E040, 0x30D0E0, 0x4060FF, 0xE040E0};
  std::string file;
  PutHeader(file, kRing + 2 + kSquare);
  for (int i = 0; i <= kRing; ++i) {
    const double a = 2 * std::numbers::pi * i / kRing;
    PutPoint(file, 0.9 * std::cos(a), 0.9 * std::sin(a), false, kColours[i * 6 / kRing % 6]);
  }
  PutPoint(file, 0.9, 0, true, 0);  // a dark move begins and ends with a dark point of its own
  const double corners[kSquare][2] = {{-0.4, -0.4}, {-0.4, -0.4}, {-0.4, 0.4}, {0.4, 0.4},
                                      {0.4, -0.4},  {-0.4, -0.4}, {-0.4, -0.4}};
  for (int i = 0; i < kSquare; ++i) PutPoint(file, corners[i][0], corners[i][1], i == 0 || i == kSquare - 1, 0xFFFFFF);
  PutHeader(file, 0);
  std::ofstream(name, std::ios::binary) << file;
}

// The second round of a pattern that is played over and over, as the simulated mirror draws it.
Pattern Drawn(const Pattern& sent, double filterHz) {
  zrv::sim::MirrorModel mirror{zrv::sim::MirrorOptions()};
  mirror.Configure({static_cast<double>(sent.rate), filterHz});
  Pattern drawn = sent;
  for (int round = 0; round < 2; ++round)
    for (std::size_t i = 0; i < sent.size(); ++i) {
      mirror.Step({sent.x[i], sent.y[i]});
      drawn.x[i] = mirror.position().x;
      drawn.y[i] = mirror.position().y;
    }
  return drawn;
}

Tile BurnTile(const std::string& label, const Pattern& pattern, bool mirror) {
  Tile tile;
  tile.label = label;
  tile.pattern = pattern;
  tile.style.mirror = mirror;
  return tile;
}

}  // namespace

SheetSection DrawingsAndBurns(const std::string& drawingFile) {
  WriteDrawing(drawingFile);
  Tile drawing;
  drawing.label = "ILDA drawing with colours";
  drawing.pattern = MakePattern("ilda", {{"file", drawingFile}});
  const Pattern burnt = MakePattern("laser", {{"lines", "80"}, {"pixels", "80"}, {"line-time", "16"}});
  return {
      "Drawings and the laser writer",
      {drawing, BurnTile("laser writer: sent", burnt, false), BurnTile("drawn by the mirror", Drawn(burnt, 0), true),
       BurnTile("mirror behind a 200 Hz filter", Drawn(burnt, 200), true)}};
}

}  // namespace zrvtool
