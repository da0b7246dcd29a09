// Rasters and point patterns: they choose their own sample rate.
#include <algorithm>

#include "errors.h"
#include "kinds.h"

namespace zrvtool {
namespace {

using enum OptionType;

using RasterCall = decltype(&ZRVDataGenerator::LinearRasterPattern);

Draft Raster(ZRVDataGenerator& g, const Values& v, RasterCall call) {
  const Rates rates = RatesOf(v);
  const std::string advice = "no sample rate up to " + std::to_string(rates.highest) +
                             " per second fits: use fewer --pixels, a longer --line-time or a higher --max-rate";
  return SizedByItself(advice, [&](float* x, float* y, unsigned char* m, unsigned int& rate) {
    return (g.*call)(x, y, m, v.Float("amplitude"), v.Float("amplitude"), v.Count("lines"), v.Count("pixels"),
                     v.Float("line-time") / 1000, v.Flag("hold"), !v.Flag("one-way"), v.Integer("shift"), 0.0f, rate,
                     rates.lowest, rates.highest);
  });
}

Draft LinearRaster(ZRVDataGenerator& g, const Values& v) {
  return Raster(g, v, &ZRVDataGenerator::LinearRasterPattern);
}

Draft ImagingRaster(ZRVDataGenerator& g, const Values& v) {
  return Raster(g, v, &ZRVDataGenerator::LinearRasterPatternImaging);
}

struct Points {
  std::vector<float> x, y, dwell;
  std::vector<unsigned char> m;
};

// A square grid, row by row.
Points GridOf(const Values& v) {
  const unsigned int n = v.Count("grid");
  Points points;
  for (unsigned int i = 0; i < n * n; ++i) {
    const auto place = [&](unsigned int k) {
      return n < 2 ? 0.0f : v.Float("amplitude") * (2.0f * static_cast<float>(k) / static_cast<float>(n - 1) - 1.0f);
    };
    points.x.push_back(place(i % n));
    points.y.push_back(place(i / n));
    points.m.push_back(255);
  }
  points.dwell.assign(points.x.size(), v.Float("dwell"));
  return points;
}

Points PointsOf(ZRVDataGenerator& g, const Values& v) {
  if (v.Text("points").empty()) return GridOf(v);
  Points points;
  const unsigned int n = g.LoadPointFile(v.Text("points").c_str());
  points.x.resize(n);
  points.y.resize(n);
  points.m.resize(n);
  g.PointFileDataStream(points.x.data(), points.y.data(), points.m.data());
  points.dwell.assign(n, v.Float("dwell"));
  return points;
}

Draft Dwell(ZRVDataGenerator& g, const Values& v, Points points) {
  double total = 0;  // ms
  for (float dwell : points.dwell) total += static_cast<double>(dwell);
  if (!(total > 0)) throw ToolError("the points have no dwell time together, so nothing would be played");
  const Rates rates = RatesOf(v);
  const double room =
      total / 1000 * std::max(rates.lowest, rates.highest) + 3 * static_cast<double>(points.x.size()) + 16;
  if (room > static_cast<double>(kMostSamples)) throw ToolError("the pattern is too long: use a lower --max-rate");
  unsigned int rate = v.Count("rate");
  Draft draft = Filled(static_cast<std::size_t>(room), [&](float* x, float* y, unsigned char* m) {
    return g.PointToPointPattern(x, y, m, points.x.data(), points.y.data(), points.m.data(), points.dwell.data(),
                                 static_cast<int>(points.x.size()), v.Float("transition"), rate, rates.lowest,
                                 rates.highest);
  });
  draft.pattern.rate = rate;
  return draft;
}

Draft PointToPoint(ZRVDataGenerator& g, const Values& v) { return Dwell(g, v, PointsOf(g, v)); }

Draft PointTime(ZRVDataGenerator& g, const Values& v) {
  Points points;
  const unsigned int n = g.LoadPointTimeFile(v.Text("file").c_str());
  points.x.resize(n);
  points.y.resize(n);
  points.m.resize(n);
  points.dwell.resize(n);
  g.PointTimeFileDataStream(points.x.data(), points.y.data(), points.m.data(), points.dwell.data());
  if (n == 0) throw ToolError(v.Text("file") + " holds no lines of four numbers: x y m time");
  return Dwell(g, v, std::move(points));
}

const OptionRow kMinRate = {"min-rate", Count, "200", "lowest sample rate to choose", 1, 1000000};
const OptionRow kMaxRate = {"max-rate", Count, "100000", "highest sample rate to choose", 1, 1000000};
const OptionRow kTransition = {"transition", Number, "0.5", "time of a move, ms", 0, 1000};

std::vector<OptionRow> RasterRows() {
  return {{"lines", Count, "20", "lines", 1, 10000},
          {"pixels", Count, "50", "pixels a line", 1, 100000},
          {"line-time", Number, "10", "time of the active part of a line, ms", 0.01, 100000},
          {"one-way", Flag, "0", "fly back after each line, not scan it backwards"},
          {"hold", Flag, "0", "dwell at each pixel"},
          {"shift", Count, "0", "samples by which the digital byte lags", -1000000, 1000000},
          kMinRate,
          kMaxRate};
}

}  // namespace

std::vector<Kind> RasterKinds() {
  return {
      {"raster", "Rasters", "lines for scanning, with smooth turnarounds and a pixel clock",
       "raster --lines 40 --pixels 100", RasterRows(), LinearRaster},
      {"imaging-raster", "Rasters", "lines for imaging: four samples a pixel, one return",
       "imaging-raster --lines 64 --pixels 64 --line-time 5", RasterRows(), ImagingRaster},
      {"point-to-point",
       "Rasters",
       "dwell at points, a grid or those of a point file, and move between them dark",
       "point-to-point --grid 5 --dwell 2",
       {{"grid", Count, "4", "points along a side of the grid", 1, 300},
        {"points", File, "", "point file, in place of the grid"},
        {"dwell", Number, "5", "time at each point with the move to the next, ms", 0.01, 1000},
        kTransition,
        kMinRate,
        kMaxRate},
       PointToPoint},
      {"point-time",
       "Rasters",
       "the points of a point-time file (x y m time), each held for its time",
       "point-time points.txt --transition 1",
       {{"file", FileArgument, "", "point-time file"}, kTransition, kMinRate, kMaxRate},
       PointTime},
  };
}

}  // namespace zrvtool
