// The pictures the tool makes: scans as the beam draws them, signals over time or frequency, and sheets of
// many small scans. Each is written as PNG or SVG by the ending of the file name.
#ifndef ZRV_TOOLS_PICTURE_H
#define ZRV_TOOLS_PICTURE_H

#include <string>
#include <vector>

#include "canvas.h"
#include "pattern.h"

namespace zrvtool {

struct ScanStyle {
  std::string title;
  std::string caption;  // one faint line below the field
  Theme theme = Theme::Dark;
  int size = 900;                  // width in pixels
  bool dots = false;               // a dot at every sample: shows where the beam is slow
  const Pattern* ghost = nullptr;  // drawn faintly behind, for instance what was sent
  bool mirror = false;             // in the colour of what a mirror drew, not of what was sent
};

// The square -1..1 with the lit parts by colour or brightness, blank moves faint and the start marked.
void DrawScan(const std::string& fileName, const Pattern& pattern, const ScanStyle& style);

// The same into a part of a canvas, without text.
void DrawScanField(Canvas& canvas, const Box& field, const Pattern& pattern, const ScanStyle& style);

struct Series {
  std::string label;
  std::vector<double> y;
};

// One set of axes. Values that are not finite leave gaps.
struct Plot {
  std::string title, xLabel, yLabel;
  std::vector<double> x;
  std::vector<Series> series;
  bool logX = false;
  double yLowest = 0, yHighest = 0;  // equal: as the values ask
};

// Plots in a grid of the given number of columns.
void DrawPlots(const std::string& fileName, const std::vector<Plot>& plots, const std::string& title,
               std::size_t columns, Theme theme = Theme::Light);

struct Tile {
  std::string label;
  Pattern pattern;
  ScanStyle style;
};

struct SheetSection {
  std::string heading;
  std::vector<Tile> tiles;
};

// Small scans in a grid, a heading above each group.
void DrawSheet(const std::string& fileName, const std::string& title, const std::vector<SheetSection>& sections,
               std::size_t columns, Theme theme = Theme::Dark);

}  // namespace zrvtool

#endif
