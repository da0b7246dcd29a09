// Burns an image line by line.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "ZRVDataGenerator.h"
#include "generator/counts.h"
#include "generator/geometry.h"
#include "generator/outputs.h"

namespace {

using zrv::Outputs;
using zrv::Point;

constexpr float kFromRest = 0, kSteady = 1, kToRest = 2;  // speed at the start over the mean speed
constexpr double kLongestFlyback = 0.01;                  // seconds, for a move across the whole image
constexpr size_t kLeastMove = 4;                          // samples of such a move
constexpr size_t kLeastRun = 4;                           // samples to get up to speed
constexpr size_t kLineToRun = 20;                         // a run-up takes this part of a line

struct Image {
  const unsigned char* raster;
  const int* lastDarkColumn;
  size_t lines, pixels;

  const unsigned char* Line(size_t line) const { return raster + line * pixels; }
  // Pixels to burn, from the first to the last dark one.
  size_t Length(size_t line) const {
    const int last = lastDarkColumn[line];
    return last < 0 ? 0 : std::min(static_cast<size_t>(last) + 1, pixels);
  }
};

struct Rate {
  unsigned sps;
  size_t samplesPerPixel;
};

// The most samples a pixel whose rate, rounded, is within maxSps.
std::optional<Rate> ChooseRate(size_t pixels, double lineDuration, int minSps, int maxSps) {
  const auto rateOf = [&](double samples) { return std::round(samples * static_cast<double>(pixels) / lineDuration); };
  double samples = std::floor(maxSps * lineDuration / static_cast<double>(pixels));
  if (rateOf(samples + 1) <= maxSps) ++samples;  // the quotient was a hair short of a whole number
  const double sps = rateOf(samples);
  const bool fits = samples >= 1 && sps >= std::max(minSps, 1) && samples * static_cast<double>(pixels) <= UINT32_MAX;
  if (!fits) return {};
  return Rate{static_cast<unsigned>(sps), static_cast<size_t>(samples)};
}

// Of the field, mirrored where the first is the larger one.
struct Limits {
  float xMin, xMax, yMin, yMax;

  // Rounding must not leave them either.
  void Keep(float& x, float& y) const {
    x = std::clamp(x, std::min(xMin, xMax), std::max(xMin, xMax));
    y = std::clamp(y, std::min(yMin, yMax), std::max(yMin, yMax));
  }
};

// Where and how fast everything goes.
struct Geometry {
  size_t perPixel = 0, run = 0, flyback = 0;  // samples: a pixel, a run-up or run-out, a move of length `span`
  float xFrom = 0, step = 0;                  // first burnt sample of a line, and the way to the next one
  float runLength = 0;                        // signed like step
  float yFrom = 0, pitch = 0;                 // line 0, and the way to the next one
  float span = 0;                             // the longer side of all that is moved over

  Point At(double sample, size_t line) const {
    return {static_cast<float>(xFrom + sample * static_cast<double>(step)), yFrom + static_cast<float>(line) * pitch};
  }
};

// From rest to a speed of one step a sample takes run samples and half as many steps, so a line needs that much room
// beyond each end (and one step beyond the last sample). For it the picture shrinks about the centre of the limits,
// in both directions alike.
Geometry Lay(const Image& image, const Rate& rate, double lineDuration, const Limits& limits) {
  Geometry g;
  const size_t samples = image.pixels * rate.samplesPerPixel, gaps = std::max<size_t>(samples - 1, 1);
  g.perPixel = rate.samplesPerPixel;
  g.run = std::min(std::max(kLeastRun, samples / kLineToRun), std::max<size_t>(gaps / 2, 1));
  const float overrun = (static_cast<float>(g.run) / 2.0f + 1.0f) / static_cast<float>(gaps);
  const float shrink = samples > 1 ? 1.0f / (1.0f + 2.0f * overrun) : 1.0f;
  const auto lay = [shrink](float from, float to) {
    const float centre = (from + to) / 2.0f, half = shrink * (to - from) / 2.0f;
    return std::pair(centre - half, centre + half);
  };
  const auto [xFrom, xTo] = lay(limits.xMin, limits.xMax);
  g.xFrom = xFrom;
  g.step = samples > 1 ? (xTo - xFrom) / static_cast<float>(gaps) : 0.0f;
  g.runLength = g.step * static_cast<float>(g.run) / 2.0f;

  const auto [yFrom, yTo] = lay(limits.yMin, limits.yMax);
  g.yFrom = yFrom;
  if (image.lines > 1) g.pitch = (yTo - g.yFrom) / static_cast<float>(image.lines - 1);
  g.span = std::max(std::abs(xTo - g.xFrom) + 2 * std::abs(g.runLength + g.step), std::abs(yTo - g.yFrom));
  const double flyback = std::ceil(rate.sps * std::min(lineDuration, kLongestFlyback));
  g.flyback = std::max(kLeastMove, static_cast<size_t>(zrv::TruncatedCount(flyback)));
  return g;
}

// Keypoints of the way through the image, each with the digital byte, samples and start speed of what follows it.
class Path {
 public:
  explicit Path(Point start) : x_{start.x}, y_{start.y} {}

  void To(Point to, unsigned char digital, size_t samples, float startSpeed) {
    m_.push_back(digital);
    samples_.push_back(static_cast<unsigned int>(samples));
    speeds_.push_back(startSpeed);
    x_.push_back(to.x);
    y_.push_back(to.y);
  }

  // From rest to rest, dark: speeds up for the first half and slows down for the second. Short moves get the
  // acceleration of a move across the span, longer ones its top speed.
  void Jump(Point to, const Geometry& g) {
    const Point from = End();
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    const double share = g.span > 0 ? length / static_cast<double>(g.span) : 0.0;
    const double samples = static_cast<double>(g.flyback) * std::max(share, std::sqrt(share));
    const auto half = static_cast<size_t>(zrv::TruncatedCount(std::ceil(samples / 2)));
    To({(from.x + to.x) / 2, (from.y + to.y) / 2}, 0, half, kFromRest);
    To(to, 0, half, kToRest);
  }

  Point End() const { return {x_.back(), y_.back()}; }

  // Appends the samples of the path to the outputs (if any) and goes on from its end.
  void Flush(const Outputs& to, const Limits& limits, size_t& written) {
    const size_t first = written;
    if (to.Given()) {
      ZRVDataGenerator::LaserWriterInterpData(x_.data(), y_.data(), m_.data(), samples_.data(), speeds_.data(),
                                              to.x + written, to.y + written, to.m + written,
                                              static_cast<unsigned int>(x_.size()));
    }
    for (const unsigned int samples : samples_) written += samples;
    for (size_t i = first; to.Given() && i < written; ++i) limits.Keep(to.x[i], to.y[i]);
    const Point end = End();
    x_.assign(1, end.x);
    y_.assign(1, end.y);
    m_.clear();
    samples_.clear();
    speeds_.clear();
  }

 private:
  std::vector<float> x_, y_, speeds_;
  std::vector<unsigned char> m_;
  std::vector<unsigned int> samples_;
};

// One line of the image: the same samples in either direction, so that both burn at the same places.
struct LineRun {
  size_t line;
  double first;      // sample to begin with
  double direction;  // +1 or -1
  size_t pixels;

  Point Start(const Geometry& g) const {
    Point start = g.At(first, line);
    start.x -= static_cast<float>(direction) * g.runLength;
    return start;
  }
};

LineRun RunOf(const Image& image, const Geometry& g, size_t line, bool backward) {
  const size_t pixels = image.Length(line);
  if (!backward) return {line, 0.0, 1.0, pixels};
  return {line, static_cast<double>(pixels * g.perPixel - 1), -1.0, pixels};
}

void Burn(const Image& image, const Geometry& g, const LineRun& run, Path& path) {
  path.To(g.At(run.first, run.line), 0, g.run, kFromRest);
  for (size_t i = 0; i < run.pixels; ++i) {
    const size_t pixel = run.direction > 0 ? i : run.pixels - 1 - i;
    const double next = run.first + run.direction * static_cast<double>((i + 1) * g.perPixel);
    path.To(g.At(next, run.line), image.Line(run.line)[pixel], g.perPixel, kSteady);
  }
  Point rest = path.End();
  rest.x += static_cast<float>(run.direction) * g.runLength;
  path.To(rest, 0, g.run, kToRest);
}

std::vector<size_t> LinesToWrite(const Image& image) {
  std::vector<size_t> lines;
  for (size_t line = 0; line < image.lines; ++line) {
    if (image.Length(line) > 0) lines.push_back(line);
  }
  return lines;
}

unsigned int BurnImage(const Image& image, const Geometry& g, const Limits& limits, bool bidirectional,
                       const Outputs& to) {
  const std::vector<size_t> lines = LinesToWrite(image);
  if (lines.empty()) return 0;
  const Point start = RunOf(image, g, lines.front(), false).Start(g);
  Path path(start);
  size_t written = 0;
  for (size_t i = 0; i < lines.size(); ++i) {
    const LineRun run = RunOf(image, g, lines[i], bidirectional && i % 2 == 1);
    if (i > 0) path.Jump(run.Start(g), g);
    Burn(image, g, run, path);
    path.Flush(to, limits, written);
  }
  path.Jump(start, g);
  path.Flush(to, limits, written);
  return static_cast<unsigned int>(written);
}

// A jump is at most the diagonal of the span, and rounded up twice.
double MostSamples(const Image& image, const Geometry& g) {
  const double burnt = static_cast<double>(image.pixels) * static_cast<double>(g.perPixel);
  const double dark = 2.0 * static_cast<double>(g.run) + 1.5 * static_cast<double>(g.flyback) + 2.0;
  return (static_cast<double>(image.lines) + 1.0) * (burnt + dark);
}

}  // namespace

unsigned int ZRVDataGenerator::LaserWriterInterpData1Seg(float* x, float* y, unsigned char* m, float x0, float y0,
                                                         float x1, float y1, unsigned char digital,
                                                         unsigned int numSamples, float startSpeed) {
  if (x == nullptr || y == nullptr || m == nullptr) return 0;
  // Constant acceleration over the unit of time: s = a t + (1 - a) t^2, with a the speed at t = 0.
  for (unsigned int i = 0; i < numSamples; ++i) {
    const float t = static_cast<float>(i) / static_cast<float>(numSamples);
    const float s = startSpeed * t + (1.0f - startSpeed) * t * t;
    x[i] = (1.0f - s) * x0 + s * x1;
    y[i] = (1.0f - s) * y0 + s * y1;
    m[i] = digital;
  }
  return numSamples;
}

unsigned int ZRVDataGenerator::LaserWriterInterpData(const float* xIn, const float* yIn, const unsigned char* mIn,
                                                     const unsigned int* samplesIn, const float* startSpeedIn,
                                                     float* xOut, float* yOut, unsigned char* mOut,
                                                     unsigned int numKeypoints) {
  if (xIn == nullptr || yIn == nullptr || mIn == nullptr || samplesIn == nullptr || startSpeedIn == nullptr) return 0;
  if (xOut == nullptr || yOut == nullptr || mOut == nullptr) return 0;
  size_t at = 0;
  for (size_t i = 0; i + 1 < numKeypoints; ++i) {
    at += LaserWriterInterpData1Seg(xOut + at, yOut + at, mOut + at, xIn[i], yIn[i], xIn[i + 1], yIn[i + 1], mIn[i],
                                    samplesIn[i], startSpeedIn[i]);
  }
  return static_cast<unsigned int>(at);
}

unsigned int ZRVDataGenerator::LaserWriterDataStream(float* x, float* y, unsigned char* m, const unsigned char* raster,
                                                     const int* lastDarkColumn, unsigned int numLines,
                                                     unsigned int numPixels, float lineDuration, bool bidirectional,
                                                     unsigned int& sps, int minSps, int maxSps, float xMin, float xMax,
                                                     float yMin, float yMax) {
  const Outputs to = {x, y, m};
  if (!to.Given() && !to.Absent()) return 0;
  if (raster == nullptr || lastDarkColumn == nullptr || numLines == 0 || numPixels == 0) return 0;
  const Image image = {raster, lastDarkColumn, numLines, numPixels};
  const auto rate = ChooseRate(image.pixels, static_cast<double>(lineDuration), minSps, maxSps);
  if (!rate) return 0;

  const auto inField = [](float limit) { return std::clamp(limit, -1.0f, 1.0f); };
  const Limits limits = {inField(xMin), inField(xMax), inField(yMin), inField(yMax)};
  const Geometry geometry = Lay(image, *rate, static_cast<double>(lineDuration), limits);
  if (MostSamples(image, geometry) > static_cast<double>(UINT32_MAX)) return 0;
  sps = rate->sps;
  return BurnImage(image, geometry, limits, bidirectional, to);
}
