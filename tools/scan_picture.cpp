#include <algorithm>
#include <cmath>

#include "picture.h"

namespace zrvtool {
namespace {

// Brightness is drawn in this many steps, so that neighbouring samples share a stroke.
constexpr int kLevelSteps = 32;

// Maps -1..1 to a field, y upwards.
class FieldMap {
 public:
  explicit FieldMap(const Box& field) : field_(field) {}
  double X(float x) const { return field_.x + (Bounded(x) + 1) / 2 * field_.width; }
  double Y(float y) const { return field_.y + (1 - Bounded(y)) / 2 * field_.height; }

 private:
  // Far enough out to show where a line leaves the field, near enough for the drawing library.
  static double Bounded(float v) { return std::isfinite(v) ? std::clamp(static_cast<double>(v), -4.0, 4.0) : 0.0; }
  Box field_;
};

void DrawGrid(Canvas& canvas, const Box& field, const Palette& palette) {
  const FieldMap map(field);
  for (float v : {-0.5f, 0.0f, 0.5f}) {
    const Colour colour = palette.grid.WithAlpha(v == 0.0f ? 1.0 : 0.6);
    canvas.Line(map.X(v), field.y, map.X(v), field.y + field.height, colour, 1);
    canvas.Line(field.x, map.Y(v), field.x + field.width, map.Y(v), colour, 1);
  }
}

// What a sample looks like, as one number: equal looks are drawn in one stroke. Blank is 0.
using Look = unsigned int;
constexpr Look kBlank = 0;

Look LookOf(const Pattern& p, std::size_t i) {
  if (!p.rgb.empty()) return p.m[i] == 0 || IsDark(p.rgb[i]) ? kBlank : 0x01000000u | p.rgb[i];
  if (p.m[i] == 0) return kBlank;
  return p.levels ? 1u + p.m[i] * (kLevelSteps - 1u) / 255u : static_cast<Look>(kLevelSteps);
}

Colour ColourOf(Look look, const Palette& palette, const ScanStyle& style) {
  const Colour ink = style.mirror ? palette.secondInk : palette.ink;
  if (look == kBlank) return palette.blank.WithAlpha(0.5);
  if (look >= 0x01000000u) {
    const Colour c = Rgb(look & 0xFFFFFF);
    // White light would vanish on white paper.
    const bool faint = style.theme == Theme::Light && c.r + c.g + c.b > 2.4;
    return faint ? palette.text : c;
  }
  return ink.WithAlpha(0.12 + 0.88 * look / kLevelSteps);
}

// Calls stroke(first, last, look) for each run of samples of one look; samples first..last are joined.
template <typename StrokeRun>
void ForEachRun(const Pattern& p, StrokeRun stroke) {
  for (std::size_t first = 0; first + 1 < p.size();) {
    const Look look = LookOf(p, first);
    std::size_t last = first + 1;
    while (last + 1 < p.size() && LookOf(p, last) == look) ++last;
    stroke(first, last, look);
    first = last;
  }
}

struct Pen {
  double line, glow, blank, dot;
};

Pen PenFor(double fieldWidth, const Pattern& pattern) {
  const double fine = pattern.levels ? 0.7 : 1.0;
  const double line = std::clamp(fieldWidth / 420.0, 0.9, 2.2) * fine;
  return {line, pattern.levels ? 0 : line * 3.2, line * 0.55, std::max(line * 1.15, 1.5)};
}

void DrawRun(Canvas& canvas, const FieldMap& map, const Pattern& p, std::size_t first, std::size_t last, Colour colour,
             double width) {
  canvas.MoveTo(map.X(p.x[first]), map.Y(p.y[first]));
  for (std::size_t i = first + 1; i <= last; ++i) canvas.LineTo(map.X(p.x[i]), map.Y(p.y[i]));
  canvas.Stroke(colour, width);
}

double Step(const Pattern& p, std::size_t from, std::size_t to) {
  return std::hypot(static_cast<double>(p.x[to]) - p.x[from], static_cast<double>(p.y[to]) - p.y[from]);
}

// A figure played over and over goes from its last sample to its first; that piece is shown where it is
// part of the figure and not a jump.
bool Closes(const Pattern& p) {
  if (p.size() < 3) return false;
  double length = 0;
  for (std::size_t i = 1; i < p.size(); ++i) length += Step(p, i - 1, i);
  return Step(p, p.size() - 1, 0) <= 3 * length / static_cast<double>(p.size() - 1);
}

Pattern WithReturn(const Pattern& pattern) {
  Pattern p = pattern;
  if (!Closes(p)) return p;
  p.x.push_back(p.x.front());
  p.y.push_back(p.y.front());
  p.m.push_back(p.m.front());
  if (!p.rgb.empty()) p.rgb.push_back(p.rgb.front());
  return p;
}

void DrawGhost(Canvas& canvas, const FieldMap& map, const Pattern& ghost, Colour colour, double width) {
  ForEachRun(ghost, [&](std::size_t first, std::size_t last, Look look) {
    if (look != kBlank) DrawRun(canvas, map, ghost, first, last, colour, width);
  });
}

void DrawPattern(Canvas& canvas, const FieldMap& map, const Pattern& p, const ScanStyle& style, const Pen& pen) {
  const Palette& palette = PaletteOf(style.theme);
  const double fade = style.dots ? 0.45 : 1.0;
  ForEachRun(p, [&](std::size_t first, std::size_t last, Look look) {
    if (look == kBlank) DrawRun(canvas, map, p, first, last, ColourOf(look, palette, style), pen.blank);
  });
  ForEachRun(p, [&](std::size_t first, std::size_t last, Look look) {
    if (look == kBlank) return;
    Colour colour = ColourOf(look, palette, style);
    if (pen.glow > 0 && style.theme == Theme::Dark && !style.dots)
      DrawRun(canvas, map, p, first, last, colour.WithAlpha(colour.a * 0.16), pen.glow);
    colour.a *= fade;
    DrawRun(canvas, map, p, first, last, colour, style.dots ? pen.blank : pen.line);
  });
}

void DrawDots(Canvas& canvas, const FieldMap& map, const Pattern& p, const ScanStyle& style, const Pen& pen) {
  const Palette& palette = PaletteOf(style.theme);
  for (std::size_t i = 0; i < p.size(); ++i) {
    const Look look = LookOf(p, i);
    const Colour colour = look == kBlank ? palette.blank : ColourOf(look, palette, style);
    canvas.Dot(map.X(p.x[i]), map.Y(p.y[i]), look == kBlank ? pen.dot * 0.6 : pen.dot, colour);
  }
}

}  // namespace

void DrawScanField(Canvas& canvas, const Box& field, const Pattern& pattern, const ScanStyle& style) {
  const Palette& palette = PaletteOf(style.theme);
  canvas.Fill(field, palette.field);
  DrawGrid(canvas, field, palette);
  canvas.Clip(field);
  const FieldMap map(field);
  const Pen pen = PenFor(field.width, pattern);
  if (style.ghost) DrawGhost(canvas, map, WithReturn(*style.ghost), palette.ghost.WithAlpha(0.8), pen.line * 0.8);
  const Pattern shown = WithReturn(pattern);
  DrawPattern(canvas, map, shown, style, pen);
  if (style.dots) DrawDots(canvas, map, pattern, style, pen);
  if (!pattern.empty()) canvas.Ring(map.X(pattern.x[0]), map.Y(pattern.y[0]), pen.line * 3, palette.mark, pen.line);
  canvas.Unclip();
  canvas.Frame(field, palette.grid, 1);
}

void DrawScan(const std::string& fileName, const Pattern& pattern, const ScanStyle& style) {
  const Palette& palette = PaletteOf(style.theme);
  const double size = style.size, margin = std::max(size * 0.055, 20.0), text = std::max(size / 62.0, 9.0);
  const double top = style.title.empty() ? margin : margin + text * 2.2;
  const double bottom = margin + (style.caption.empty() ? text : text * 2.8);
  const Box field = {margin, top, size - 2 * margin, size - 2 * margin};
  Canvas canvas(fileName, size, top + field.height + bottom);
  canvas.Fill({0, 0, size, top + field.height + bottom}, palette.paper);
  canvas.Text(margin, top - text * 1.1, style.title, text * 1.5, palette.text, Align::Left, true);
  DrawScanField(canvas, field, pattern, style);
  for (int v = -1; v <= 1; ++v) {
    const std::string label = std::to_string(v);
    const double share = (v + 1) / 2.0;
    canvas.Text(field.x + share * field.width, field.y + field.height + text * 1.5, label, text, palette.faintText,
                Align::Centre);
    canvas.Text(field.x - text * 0.5, field.y + (1 - share) * field.height + text * 0.35, label, text,
                palette.faintText, Align::Right);
  }
  canvas.Text(margin, field.y + field.height + text * 3.3, style.caption, text, palette.faintText);
  canvas.Save();
}

}  // namespace zrvtool
