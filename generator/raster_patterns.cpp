// Line rasters with smooth turnarounds, for scanning and for imaging.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

#include "ZRVDataGenerator.h"
#include "generator/raster_plan.h"

namespace {

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

struct Point {
  float x = 0, y = 0;
};

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
  generator.InterpolateData(xs, ys, ms, move.x.data(), move.y.data(), unused.data(), 2,
                            static_cast<unsigned>(count), shape.blankSpeed, shape.drawAccel, shape.blankAccel);
  move.x.resize(count);
  move.y.resize(count);
  return move;
}

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

// Fills the outputs from front to back, in working coordinates: x counts lines, y is the sweep -1..1.
class Assembly {
 public:
  Assembly(float* x, float* y, unsigned char* m) : x_(x), y_(y), m_(m) {}

  void Pass(const Profile& sweep, size_t line, const Profile& offset) {
    const auto base = static_cast<float>(line);
    for (size_t j = 0; j < sweep.size(); ++j) x_[at_ + j] = base + offset[j];
    std::copy(sweep.begin(), sweep.end(), y_ + at_);
    at_ += sweep.size();
  }

  // The digital bytes of the pass that ended last.
  void Digital(std::span<const uint8_t> bytes) { std::copy(bytes.begin(), bytes.end(), m_ + at_ - bytes.size()); }
  void Dark(size_t count) { std::fill_n(m_ + at_ - count, count, uint8_t{0}); }

  void Add(const Move& move) {
    std::copy(move.x.begin(), move.x.end(), x_ + at_);
    std::copy(move.y.begin(), move.y.end(), y_ + at_);
    at_ += move.x.size();
    Dark(move.x.size());
  }

  void Mark(size_t i, uint8_t bits) { m_[i] = static_cast<unsigned char>(m_[i] + bits); }
  void MoveTo(size_t at) { at_ = at; }
  Point At(size_t i) const { return {x_[i], y_[i]}; }

 private:
  float* x_;
  float* y_;
  unsigned char* m_;
  size_t at_ = 0;
};

void TwoWayLines(const RasterPlan& plan, const Profiles& p, const Style& style, Assembly& out) {
  std::vector<uint8_t> backward = p.digital;
  for (uint8_t& m : backward) m = static_cast<uint8_t>(m != 0 ? m + style.backward : 0);
  for (size_t n = 1; n <= plan.lines; n += 2) {
    out.Pass(p.forward, n - 1, n == 1 ? p.first : n < plan.lines - 1 ? p.middle : p.last);
    out.Digital(p.digital);
    if (n + 1 > plan.lines) return;
    out.Pass(p.backward, n, n >= plan.lines - 1 ? p.last : p.middle);
    out.Digital(backward);
  }
}

// The last line is told by n != lines here and by n >= lines - 1 in the fly-back (n < lines - 1 in two-way
// rasters): it looks like a slip, and is kept. Each fly-back starts half a line below its line.
void OneWayLines(const RasterPlan& plan, const Profiles& p, const Style& style, Assembly& out) {
  std::vector<uint8_t> digital = p.digital;
  digital[0] = static_cast<uint8_t>(digital[0] + style.lineStart);
  for (size_t n = 1; n <= plan.lines; ++n) {
    out.Pass(p.forward, n - 1, n == 1 ? p.first : n != plan.lines ? p.middle : p.last);
    out.Digital(digital);
    out.Pass(p.flyback, n, n >= plan.lines - 1 ? p.last : p.middle);
    out.Dark(p.flyback.size());
  }
}

void LeadInAndOut(ZRVDataGenerator& generator, const RasterPlan& plan, Assembly& out) {
  const size_t end = plan.line + plan.Lines() - 1;
  // Leads towards the second sample of the raster, not the first: kept as it is.
  const Point second = out.At(std::min(plan.line + 1, end)), last = out.At(end);
  const Point meeting = {(last.x + second.x) / 2.0f, 0.0f};
  out.Add(ShapedMove(generator, last, meeting, 0, plan.line, kLeadShaping));
  out.MoveTo(0);
  out.Add(ShapedMove(generator, meeting, second, 0, plan.line, kLeadShaping));
}

void Assemble(ZRVDataGenerator& generator, const RasterPlan& plan, const Profiles& profiles, const Style& style,
              Assembly& out) {
  const size_t start = style.leadIn ? plan.line : 0;
  out.MoveTo(start);
  (plan.twoWay ? TwoWayLines : OneWayLines)(plan, profiles, style, out);
  out.Mark(start + plan.turn, kFrameStart);
  if (style.leadIn) return LeadInAndOut(generator, plan, out);
  out.Add(ShapedMove(generator, out.At(plan.Lines() - 1), out.At(0), 0, 2 * plan.line, kLeadShaping));
}

struct Mapping {
  float xAmplitude, yAmplitude, angle;
};

void MapToOutput(float* x, float* y, size_t count, size_t lines, const Mapping& map) {
  const float cosine = std::cos(map.angle), sine = std::sin(map.angle);
  // A single line has no place of its own along the slow axis: the pattern collapses to s = 0.
  const float reach = lines > 1 ? map.xAmplitude : 0.0f;
  const float gaps = lines > 1 ? static_cast<float>(lines - 1) : 1.0f;
  const float slow = 2.0f * reach, fast = 2.0f * map.yAmplitude;
  for (size_t i = 0; i < count; ++i) {
    const float s = -reach + slow * x[i] / gaps;
    const float f = -map.yAmplitude + fast * (y[i] + 1.0f) / 2.0f;
    x[i] = cosine * s + sine * f;
    y[i] = -sine * s + cosine * f;
  }
}

// Positive shifts delay; what leaves at one end comes in at the other.
void ShiftDigital(unsigned char* m, size_t count, int shift) {
  const auto size = static_cast<int64_t>(count);
  const int64_t forward = ((-static_cast<int64_t>(shift)) % size + size) % size;
  std::rotate(m, m + forward, m + count);
}

struct Outputs {
  float* x;
  float* y;
  unsigned char* m;
};

unsigned int WriteRaster(ZRVDataGenerator& generator, const RasterPlan& plan, const Profiles& profiles,
                         const Style& style, const Outputs& to) {
  if (plan.lines == 0) {  // nothing between lead-in and lead-out: rest in the middle
    std::fill_n(to.x, plan.Total(), 0.0f);
    std::fill_n(to.y, plan.Total(), 0.0f);
    std::fill_n(to.m, plan.Total(), uint8_t{0});
    return static_cast<unsigned int>(plan.Total());
  }
  Assembly assembly(to.x, to.y, to.m);
  Assemble(generator, plan, profiles, style, assembly);
  return static_cast<unsigned int>(plan.Total());
}

}  // namespace

unsigned int ZRVDataGenerator::LinearRasterPattern(float* x, float* y, unsigned char* m, float xAmplitude,
                                                   float yAmplitude, unsigned int numLines, unsigned int numPixels,
                                                   float lineDuration, bool pixelHold, bool bidirectional,
                                                   int digitalShift, float rotationAngle, unsigned int& sps,
                                                   int minSps, int maxSps) {
  const auto plan = zrv::PlanRaster({numLines, numPixels, lineDuration, pixelHold, bidirectional, minSps, maxSps});
  if (!plan || x == nullptr || y == nullptr || m == nullptr) return 0;
  sps = plan->sps;
  const unsigned int count = WriteRaster(*this, *plan, MakeProfiles(*this, *plan, pixelHold), kScanning, {x, y, m});
  MapToOutput(x, y, count, plan->lines, {xAmplitude, yAmplitude, rotationAngle});
  ShiftDigital(m, count, digitalShift);
  return count;
}

unsigned int ZRVDataGenerator::LinearRasterPatternImaging(float* x, float* y, unsigned char* m, float xAmplitude,
                                                          float yAmplitude, unsigned int numLines,
                                                          unsigned int numPixels, float lineDuration,
                                                          bool /*pixelHold*/, bool bidirectional, int digitalShift,
                                                          float rotationAngle, unsigned int& sps, int minSps,
                                                          int maxSps) {
  const auto plan = zrv::PlanImagingRaster({numLines, numPixels, lineDuration, false, bidirectional, minSps, maxSps});
  if (!plan || x == nullptr || y == nullptr || m == nullptr) return 0;
  sps = plan->sps;
  const unsigned int count = WriteRaster(*this, *plan, MakeProfiles(*this, *plan, false), kImaging, {x, y, m});
  MapToOutput(x, y, count, plan->lines, {xAmplitude, yAmplitude, rotationAngle});
  ShiftDigital(m, count, digitalShift);
  return count;
}
