#include <algorithm>
#include <cmath>
#include <cstdio>

#include "picture.h"

namespace zrvtool {
namespace {

struct Range {
  double lowest = 0, highest = 1;
  double Share(double v) const { return (v - lowest) / (highest - lowest); }
};

void Widen(Range& range, bool& any, double v) {
  if (!std::isfinite(v)) return;
  range.lowest = any ? std::min(range.lowest, v) : v;
  range.highest = any ? std::max(range.highest, v) : v;
  any = true;
}

// The finite values with a little air around them; 0..1 when there are none.
Range RangeOf(const std::vector<const std::vector<double>*>& columns, double air) {
  Range range;
  bool any = false;
  for (const auto* column : columns)
    for (double v : *column) Widen(range, any, v);
  const double span = range.highest - range.lowest;
  const double extra = span > 0 ? span * air : std::max(std::abs(range.highest) * 0.1, 0.5);
  return any && (air > 0 || span <= 0) ? Range{range.lowest - extra, range.highest + extra} : range;
}

// A step of 1, 2 or 5 times a power of ten that cuts the range into about six.
double TickStep(const Range& range) {
  const double rough = (range.highest - range.lowest) / 6;
  const double decade = std::pow(10.0, std::floor(std::log10(rough)));
  for (double factor : {1.0, 2.0, 5.0})
    if (rough <= factor * decade) return factor * decade;
  return 10 * decade;
}

std::string TickLabel(double v, double step) {
  char text[40];
  const double rounded = std::abs(v) < step * 1e-6 ? 0.0 : v;
  std::snprintf(text, sizeof text, std::abs(v) >= 1e5 ? "%.3g" : "%.6g", rounded);
  return text;
}

constexpr double kText = 12;

// One plot on its way to the canvas: where it stands and how values map to it.
class Axes {
 public:
  Axes(Canvas& canvas, const Box& box, const Plot& plot, const Palette& palette)
      : canvas_(canvas), field_(box.Inset(62, 34, 18, 46)), plot_(plot), palette_(palette) {
    std::vector<const std::vector<double>*> columns;
    for (const Series& s : plot.series) columns.push_back(&s.y);
    y_ = plot.yLowest < plot.yHighest ? Range{plot.yLowest, plot.yHighest} : RangeOf(columns, 0.06);
    std::vector<double> xs;
    for (double v : plot.x) xs.push_back(Scaled(v));
    x_ = RangeOf({&xs}, 0);
  }

  void Draw() {
    canvas_.Fill(field_, palette_.field);
    canvas_.Text(field_.x, field_.y - 12, plot_.title, kText * 1.15, palette_.text, Align::Left, true);
    DrawGridY();
    plot_.logX ? DrawGridLogX() : DrawGridX();
    canvas_.Frame(field_, palette_.grid, 1);
    canvas_.Text(field_.x + field_.width / 2, field_.y + field_.height + 36, plot_.xLabel, kText, palette_.faintText,
                 Align::Centre);
    canvas_.TextUpwards(field_.x - 48, field_.y + field_.height / 2, plot_.yLabel, kText, palette_.faintText);
    canvas_.Clip(field_);
    for (std::size_t i = 0; i < plot_.series.size(); ++i) DrawSeries(plot_.series[i], InkOf(i));
    canvas_.Unclip();
    if (plot_.series.size() > 1) DrawLegend();
  }

 private:
  double Scaled(double v) const { return plot_.logX ? std::log10(v) : v; }
  double X(double v) const { return field_.x + x_.Share(Scaled(v)) * field_.width; }
  // A value far outside is drawn just outside, where the clip hides it.
  double Y(double v) const { return field_.y + (1 - std::clamp(y_.Share(v), -1.0, 2.0)) * field_.height; }
  Colour InkOf(std::size_t i) const {
    const Colour inks[] = {palette_.ink, palette_.secondInk, palette_.mark};
    return inks[i % 3];
  }

  void DrawGridY() {
    const double step = TickStep(y_);
    for (double v = std::ceil(y_.lowest / step) * step; v <= y_.highest; v += step) {
      canvas_.Line(field_.x, Y(v), field_.x + field_.width, Y(v), palette_.grid, 1);
      canvas_.Text(field_.x - 6, Y(v) + 4, TickLabel(v, step), kText * 0.9, palette_.faintText, Align::Right);
    }
  }

  void DrawGridX() {
    const double step = TickStep(x_);
    for (double v = std::ceil(x_.lowest / step) * step; v <= x_.highest + step * 1e-6; v += step)
      DrawTickX(v, TickLabel(v, step));
  }

  void DrawGridLogX() {
    for (double e = std::floor(x_.lowest); e <= x_.highest; ++e)
      for (int digit = 1; digit < 10; ++digit) {
        const double v = digit * std::pow(10.0, e);
        if (std::log10(v) >= x_.lowest && std::log10(v) <= x_.highest)
          DrawTickX(v, digit == 1 ? TickLabel(v, v) : std::string());
      }
  }

  void DrawTickX(double v, const std::string& label) {
    canvas_.Line(X(v), field_.y, X(v), field_.y + field_.height, palette_.grid, 1);
    canvas_.Text(X(v), field_.y + field_.height + 17, label, kText * 0.9, palette_.faintText, Align::Centre);
  }

  void DrawSeries(const Series& series, Colour ink) {
    bool down = false;
    for (std::size_t i = 0; i < std::min(series.y.size(), plot_.x.size()); ++i) {
      const bool finite = std::isfinite(series.y[i]) && std::isfinite(Scaled(plot_.x[i]));
      if (finite) down ? canvas_.LineTo(X(plot_.x[i]), Y(series.y[i])) : canvas_.MoveTo(X(plot_.x[i]), Y(series.y[i]));
      down = finite;
    }
    canvas_.Stroke(ink, 1.6);
  }

  void DrawLegend() {
    double x = field_.x + field_.width;
    for (std::size_t i = plot_.series.size(); i-- > 0;) {
      canvas_.Text(x, field_.y - 12, plot_.series[i].label, kText, InkOf(i), Align::Right, true);
      x -= 20 + 8 * static_cast<double>(plot_.series[i].label.size());
    }
  }

  Canvas& canvas_;
  Box field_;
  const Plot& plot_;
  const Palette& palette_;
  Range x_, y_;
};

}  // namespace

void DrawPlots(const std::string& fileName, const std::vector<Plot>& plots, const std::string& title,
               std::size_t columns, Theme theme) {
  constexpr double kPlotWidth = 560, kPlotHeight = 330, kHead = 50;
  const Palette& palette = PaletteOf(theme);
  const std::size_t rows = (plots.size() + columns - 1) / columns;
  const double width = kPlotWidth * static_cast<double>(columns) + 20;
  const double height = kHead + kPlotHeight * static_cast<double>(rows) + 10;
  Canvas canvas(fileName, width, height);
  canvas.Fill({0, 0, width, height}, palette.paper);
  canvas.Text(24, 36, title, 19, palette.text, Align::Left, true);
  for (std::size_t i = 0; i < plots.size(); ++i) {
    const Box box = {10 + kPlotWidth * static_cast<double>(i % columns),
                     kHead + kPlotHeight * static_cast<double>(i / columns), kPlotWidth, kPlotHeight};
    Axes(canvas, box, plots[i], palette).Draw();
  }
  canvas.Save();
}

}  // namespace zrvtool
