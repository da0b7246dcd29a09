#include "picture.h"

namespace zrvtool {
namespace {

constexpr double kTile = 200, kGap = 16, kLabel = 24, kHeading = 46, kTitle = 64, kMargin = 28;

double SectionHeight(const SheetSection& section, std::size_t columns) {
  const auto rows = static_cast<double>((section.tiles.size() + columns - 1) / columns);
  return kHeading + rows * (kTile + kLabel + kGap);
}

void DrawSection(Canvas& canvas, double top, const SheetSection& section, std::size_t columns, Theme theme) {
  const Palette& palette = PaletteOf(theme);
  canvas.Text(kMargin, top + 32, section.heading, 19, palette.text, Align::Left, true);
  for (std::size_t i = 0; i < section.tiles.size(); ++i) {
    const Tile& tile = section.tiles[i];
    const Box box = {kMargin + static_cast<double>(i % columns) * (kTile + kGap),
                     top + kHeading + static_cast<double>(i / columns) * (kTile + kLabel + kGap), kTile, kTile};
    ScanStyle style = tile.style;
    style.theme = theme;
    DrawScanField(canvas, box, tile.pattern, style);
    canvas.Text(box.x + kTile / 2, box.y + kTile + 17, tile.label, 12.5, palette.faintText, Align::Centre);
  }
}

}  // namespace

void DrawSheet(const std::string& fileName, const std::string& title, const std::vector<SheetSection>& sections,
               std::size_t columns, Theme theme) {
  const Palette& palette = PaletteOf(theme);
  const double width = 2 * kMargin + static_cast<double>(columns) * (kTile + kGap) - kGap;
  double height = kTitle + kMargin;
  for (const SheetSection& section : sections) height += SectionHeight(section, columns);
  Canvas canvas(fileName, width, height);
  canvas.Fill({0, 0, width, height}, palette.paper);
  canvas.Text(kMargin, 46, title, 26, palette.text, Align::Left, true);
  double top = kTitle;
  for (const SheetSection& section : sections) {
    DrawSection(canvas, top, section, columns, theme);
    top += SectionHeight(section, columns);
  }
  canvas.Save();
}

}  // namespace zrvtool
