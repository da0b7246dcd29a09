// Line rasters with smooth turnarounds, for scanning and for imaging.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "ZRVDataGenerator.h"
#include "generator/geometry.h"
#include "generator/outputs.h"
#include "generator/raster_plan.h"

namespace {

using zrv::Outputs;
using zrv::Point;
using zrv::RasterPlan;
using Profile = std::vector<float>;

enum DigitalBit : uint8_t {
  kActive = 1,
  kPixelClock = 2,
  kFrameStart = 4,
  kBackward = 64,
  kLineStart = 128
};

struct Style {
  bool leadIn;
  uint8_t lineStart, backward;  // bits that mark the start of a one-way line and backward lines
};
constexpr Style kScanning = {true, kLineStart, 0};
constexpr Style kImaging = {false, 0, kBackward};

struct Shaping {
  float blankSpeed, drawAccel, blankAccel;
};
constexpr Shaping kLeadShaping = {0.5f, 0.5f, 1.0f};

struct Move {
  Profile x, y;
};

// One shaped move. Interpolation can write more than it is asked for (short or empty moves); what goes
// beyond count is dropped here.
Move ShapedMove(ZRVDataGenerator& generator, Point from, Point to, unsigned char digital, size_t count, Shaping shape) {
  const float xs[] = {from.x, to.x}, ys[] = {from.y, to.y};
  const unsigned char ms[] = {digital, digital};
  Move move{Profile(count + 2), Profile(count + 2)};
  std::vector<unsigned char> unused(count + 2);
  generator.InterpolateData(xs, ys, ms, move.x.data(), move.y.data(), unused.data(), 2, static_cast<unsigned>(count),
                            shape.blankSpeed, shape.drawAccel, shape.blankAccel);
  move.x.resize(count);
  move.y.resize(count);
  return move;
}

// From working coordinates, in which x counts lines and y is the sweep -1..1, to the output.
struct Mapping {
  float reach, slow, gaps;  // slow axis
  float yAmplitude, fast;
  zrv::Turn turn;

  Mapping(float xAmplitude, float yAmplitudeIn, float angle, size_t lines)
      : reach(lines > 1 ? xAmplitude : 0.0f),  // a single line has no place of its own: s is 0
        slow(2.0f * reach),
        gaps(lines > 1 ? static_cast<float>(lines - 1) : 1.0f),
        yAmplitude(yAmplitudeIn),
        fast(2.0f * yAmplitude),
        turn(angle) {}

  float Slow(float x) const { return -reach + slow * x / gaps; }
  float Fast(float y) const { return -yAmplitude + fast * (y + 1.0f) / 2.0f; }
};

// A pass along the fast axis, and what it adds to both outputs: the same for every line.
struct Sweep {
  Profile working, toX, toY;

  Sweep() = default;
  Sweep(Profile profile, const Mapping& map) : working(std::move(profile)), toX(working), toY(working) {
    for (size_t j = 0; j < working.size(); ++j) {
      const float f = map.Fast(working[j]);
      toX[j] = map.turn.sine * f;
      toY[j] = map.turn.cosine * f;
    }
  }
};

// What every line is put together from.
struct Profiles {
  Profile first, middle, last;  // slow axis, as offsets from the line: the turnarounds lead half a line over
  Profile forward, backward, flyback;
  std::vector<uint8_t> digital;
};

// d is 0.5 / (turn - 1); a turnaround of a single sample has no slope.
void MakeOffsets(const RasterPlan& plan, Profiles& to) {
  const size_t turn = plan.turn, tail = plan.line - turn;
  const float d = turn < 2 ? 0.0f : 0.5f / static_cast<float>(turn - 1);
  to.first.assign(plan.line, 0.0f);
  to.middle = to.last = to.first;
  for (size_t j = 0; j < turn; ++j) {
    const float rise = static_cast<float>(j) * d;
    to.middle[j] = to.last[j] = rise - 0.5f;
    to.first[tail + j] = to.middle[tail + j] = rise;
  }
}

void MakeDigital(const RasterPlan& plan, Profiles& to) {
  const size_t s = plan.samplesPerPixel;
  to.digital.assign(plan.line, 0);
  for (size_t i = 0; i < plan.active; ++i) {
    const size_t phase = i % s;
    const bool clock = s / 5 <= phase && phase < 3 * s / 5;
    to.digital[plan.turn + i] = static_cast<uint8_t>(clock ? kActive | kPixelClock : kActive);
  }
}

// Dwells at each pixel and steps to the next in the last fifth of it. What does not fit in the line (the
// rate was rounded down) is left out.
void HoldPixels(const RasterPlan& plan, const Profile& step, Profiles& to) {
  const size_t s = plan.samplesPerPixel, held = s - s / 5, lastPixel = plan.pixels - 1;
  const float a = to.forward[plan.turn > 0 ? plan.turn - 1 : 0];
  const float b = to.forward[std::min(plan.line - plan.turn, plan.line - 1)];
  const float pitch = (b - a) / static_cast<float>(lastPixel);
  for (size_t i = 0; i <= lastPixel; ++i) {
    for (size_t j = 0; j < s; ++j) {
      const size_t at = plan.turn + i * s + j;
      if (at >= plan.line) return;
      const float moved = j < held ? 0.0f : step[j - held] * pitch;
      const bool atEnd = j >= held && i == lastPixel;
      to.forward[at] = atEnd ? b : a + static_cast<float>(i) * pitch + moved;
      to.backward[at] = atEnd ? a : b - static_cast<float>(i) * pitch - moved;
    }
  }
}

Profiles MakeProfiles(ZRVDataGenerator& generator, const RasterPlan& plan, bool pixelHold) {
  Profiles to;
  MakeOffsets(plan, to);
  MakeDigital(plan, to);
  const Shaping shape = {1.0f, plan.AccelShare(), 0.5f};
  Move sweep = ShapedMove(generator, {-1, 1}, {1, -1}, pixelHold ? 0 : 1, plan.line, shape);
  to.forward = std::move(sweep.x);
  to.backward = std::move(sweep.y);
  if (pixelHold) {
    HoldPixels(plan, ShapedMove(generator, {0, 1}, {1, 0}, 0, plan.samplesPerPixel / 5, shape).x, to);
  }
  if (!plan.twoWay) to.flyback = ShapedMove(generator, {1, 1}, {-1, -1}, 0, plan.flyback, shape).x;
  return to;
}

// Fills the outputs from front to back. Off the turnarounds a line stays where it is on the slow axis, so that
// all but a few samples cost one addition an axis.
class Assembly {
 public:
  Assembly(const Outputs& to, const Mapping& map, size_t turn) : to_(to), map_(map), turn_(turn) {}

  void Pass(const Sweep& sweep, size_t line, const Profile& offset) {
    const size_t count = sweep.working.size(), begin = std::min(turn_, count);
    const size_t end = std::max(begin, std::min(offset.size() - turn_, count));
    const auto base = static_cast<float>(line);
    Slanted(sweep, base, offset, 0, begin);
    Straight(sweep, base, begin, end);
    Slanted(sweep, base, offset, end, count);
    for (size_t j = 0; j < count && at_ + j < start_ + 2; ++j) Note(j, {base + offset[j], sweep.working[j]});
    if (count > 0) last_ = {base + offset[count - 1], sweep.working[count - 1]};
    at_ += count;
  }

  // The digital bytes of the pass that ended last.
  void Digital(std::span<const uint8_t> bytes) { std::copy(bytes.begin(), bytes.end(), to_.m + at_ - bytes.size()); }
  void Dark(size_t count) { std::fill_n(to_.m + at_ - count, count, uint8_t{0}); }

  // Dark, in working coordinates.
  void Add(const Move& move) {
    for (size_t i = 0; i < move.x.size(); ++i) {
      const float s = map_.Slow(move.x[i]), f = map_.Fast(move.y[i]);
      to_.x[at_ + i] = map_.turn.cosine * s + map_.turn.sine * f;
      to_.y[at_ + i] = -map_.turn.sine * s + map_.turn.cosine * f;
    }
    at_ += move.x.size();
    Dark(move.x.size());
  }

  void Mark(size_t i, uint8_t bits) { to_.m[i] = static_cast<unsigned char>(to_.m[i] + bits); }
  void StartLinesAt(size_t at) { at_ = start_ = at; }
  void MoveTo(size_t at) { at_ = at; }

  // Working coordinates of the lines' first, second and last sample.
  Point First() const { return first_; }
  Point Second() const { return second_; }
  Point Last() const { return last_; }

 private:
  void Slanted(const Sweep& sweep, float base, const Profile& offset, size_t begin, size_t end) {
    for (size_t j = begin; j < end; ++j) {
      const float s = map_.Slow(base + offset[j]);
      to_.x[at_ + j] = map_.turn.cosine * s + sweep.toX[j];
      to_.y[at_ + j] = -map_.turn.sine * s + sweep.toY[j];
    }
  }

  void Straight(const Sweep& sweep, float base, size_t begin, size_t end) {
    const float s = map_.Slow(base), x = map_.turn.cosine * s, y = -map_.turn.sine * s;
    for (size_t j = begin; j < end; ++j) to_.x[at_ + j] = x + sweep.toX[j];
    for (size_t j = begin; j < end; ++j) to_.y[at_ + j] = y + sweep.toY[j];
  }

  void Note(size_t j, Point working) {
    if (at_ + j == start_) first_ = working;
    second_ = working;  // of a raster of a single sample, that one
  }

  Outputs to_;
  const Mapping& map_;
  size_t turn_, start_ = 0, at_ = 0;
  Point first_, second_, last_;
};

void TwoWayLines(const RasterPlan& plan, const Profiles& p, const Style& style, const Mapping& map, Assembly& out) {
  const Sweep forward(p.forward, map), backward(p.backward, map);
  std::vector<uint8_t> backwardDigital = p.digital;
  for (uint8_t& m : backwardDigital) m = static_cast<uint8_t>(m != 0 ? m + style.backward : 0);
  for (size_t n = 1; n <= plan.lines; n += 2) {
    out.Pass(forward, n - 1, n == 1 ? p.first : n < plan.lines - 1 ? p.middle : p.last);
    out.Digital(p.digital);
    if (n + 1 > plan.lines) return;
    out.Pass(backward, n, n >= plan.lines - 1 ? p.last : p.middle);
    out.Digital(backwardDigital);
  }
}

// The last line is told by n != lines here and by n >= lines - 1 in the fly-back (n < lines - 1 in two-way
// rasters): it looks like a slip, and is kept. Each fly-back starts half a line below its line.
void OneWayLines(const RasterPlan& plan, const Profiles& p, const Style& style, const Mapping& map, Assembly& out) {
  const Sweep forward(p.forward, map), flyback(p.flyback, map);
  std::vector<uint8_t> digital = p.digital;
  digital[0] = static_cast<uint8_t>(digital[0] + style.lineStart);
  for (size_t n = 1; n <= plan.lines; ++n) {
    out.Pass(forward, n - 1, n == 1 ? p.first : n != plan.lines ? p.middle : p.last);
    out.Digital(digital);
    out.Pass(flyback, n, n >= plan.lines - 1 ? p.last : p.middle);
    out.Dark(p.flyback.size());
  }
}

void LeadInAndOut(ZRVDataGenerator& generator, const RasterPlan& plan, Assembly& out) {
  // Leads towards the second sample of the raster, not the first: kept as it is.
  const Point second = out.Second(), last = out.Last();
  const Point meeting = {(last.x + second.x) / 2.0f, 0.0f};
  out.Add(ShapedMove(generator, last, meeting, 0, plan.line, kLeadShaping));
  out.MoveTo(0);
  out.Add(ShapedMove(generator, meeting, second, 0, plan.line, kLeadShaping));
}

void Assemble(ZRVDataGenerator& generator, const RasterPlan& plan, const Profiles& profiles, const Style& style,
              const Mapping& map, Assembly& out) {
  const size_t start = style.leadIn ? plan.line : 0;
  out.StartLinesAt(start);
  (plan.twoWay ? TwoWayLines : OneWayLines)(plan, profiles, style, map, out);
  if (plan.lines > 0) out.Mark(start + plan.turn, kFrameStart);
  if (style.leadIn) return LeadInAndOut(generator, plan, out);
  out.Add(ShapedMove(generator, out.Last(), out.First(), 0, 2 * plan.line, kLeadShaping));
}

// Positive shifts delay; what leaves at one end comes in at the other.
void ShiftDigital(unsigned char* m, size_t count, int shift) {
  const auto size = static_cast<int64_t>(count);
  const int64_t forward = ((-static_cast<int64_t>(shift)) % size + size) % size;
  if (forward == 0) return;
  const std::vector<unsigned char> still(m, m + count);
  std::rotate_copy(still.begin(), still.begin() + forward, still.end(), m);
}

struct Placement {
  float xAmplitude, yAmplitude, angle;
  int digitalShift;
};

// Without outputs: the rate and the count alone.
unsigned int WriteRaster(ZRVDataGenerator& generator, const std::optional<RasterPlan>& plan, bool pixelHold,
                         const Style& style, const Placement& place, const Outputs& to, unsigned int& sps) {
  if (!plan || !(to.Given() || to.Absent())) return 0;
  sps = plan->sps;
  if (to.Given()) {
    const Mapping map(place.xAmplitude, place.yAmplitude, place.angle, plan->lines);
    Assembly assembly(to, map, plan->turn);
    Assemble(generator, *plan, MakeProfiles(generator, *plan, pixelHold), style, map, assembly);
    ShiftDigital(to.m, plan->Total(), place.digitalShift);
  }
  return static_cast<unsigned int>(plan->Total());
}

}  // namespace

unsigned int ZRVDataGenerator::LinearRasterPattern(float* x, float* y, unsigned char* m, float xAmplitude,
                                                   float yAmplitude, unsigned int numLines, unsigned int numPixels,
                                                   float lineDuration, bool pixelHold, bool bidirectional,
                                                   int digitalShift, float rotationAngle, unsigned int& sps, int minSps,
                                                   int maxSps) {
  const auto plan = zrv::PlanRaster({numLines, numPixels, lineDuration, pixelHold, bidirectional, minSps, maxSps});
  return WriteRaster(*this, plan, pixelHold, kScanning, {xAmplitude, yAmplitude, rotationAngle, digitalShift},
                     {x, y, m}, sps);
}

unsigned int ZRVDataGenerator::LinearRasterPatternImaging(float* x, float* y, unsigned char* m, float xAmplitude,
                                                          float yAmplitude, unsigned int numLines,
                                                          unsigned int numPixels, float lineDuration,
                                                          bool /*pixelHold*/, bool bidirectional, int digitalShift,
                                                          float rotationAngle, unsigned int& sps, int minSps,
                                                          int maxSps) {
  const auto plan = zrv::PlanImagingRaster({numLines, numPixels, lineDuration, false, bidirectional, minSps, maxSps});
  return WriteRaster(*this, plan, false, kImaging, {xAmplitude, yAmplitude, rotationAngle, digitalShift}, {x, y, m},
                     sps);
}
