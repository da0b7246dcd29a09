// The kinds of patterns: one table that `zrv generate`, `zrv play` and `zrv gallery` share.
#ifndef ZRV_TOOLS_KINDS_H
#define ZRV_TOOLS_KINDS_H

#include <string>
#include <utility>
#include <vector>

#include "ZRVDataGenerator.h"
#include "errors.h"
#include "pattern.h"
#include "values.h"

namespace zrvtool {

// What a kind hands on: finished samples, or keypoints that are still to be closed and interpolated.
struct Draft {
  Pattern pattern;
  bool keypoints = false;
  unsigned int samples = 0;  // that keypoints become; 0: as the options say
  bool closed = false;       // the library call closed the path already
  bool overTime = false;     // x is a time axis, which no filter softens
};

struct Kind {
  const char* name;
  const char* group;               // heading in lists and galleries
  const char* help;                // one line
  const char* example;             // itself with options, as in "zrv generate rose --ring-a 5 -o rose.txt"
  std::vector<OptionRow> options;  // a name that is also a common option replaces that one
  Draft (*make)(ZRVDataGenerator& generator, const Values& values);
};

const std::vector<Kind>& Kinds();
const Kind& FindKind(const std::string& name);

// Options that every kind understands: samples, rate, amplitude, transform, interpolation, animation, filter.
const std::vector<OptionRow>& CommonOptions();

// The kind's own options and the common ones, at their initial values.
Values InitialValues(const Kind& kind);

// Makes the pattern: draft, transform, closing, interpolation, animation, filter. Throws ToolError when the
// values cannot give a pattern.
Pattern MakePattern(const Kind& kind, const Values& values);

// The same from names and texts: MakePattern("rose", {{"ring-a", "5"}}).
Pattern MakePattern(const std::string& kind, const std::vector<std::pair<std::string, std::string>>& changes);

// Parts of the table.
std::vector<Kind> WaveformKinds();
std::vector<Kind> CurveKinds();
std::vector<Kind> ContentKinds();
std::vector<Kind> RasterKinds();
std::vector<Kind> LaserKinds();

// Arrays for a call that fills them; shrink with resize() to what it wrote.
Pattern Room(std::size_t samples);

// A draft from a call fill(x, y, m) that writes into arrays of room samples and returns how many it wrote.
template <typename Fill>
Draft Filled(std::size_t room, Fill fill) {
  Draft draft;
  draft.pattern = Room(room);
  Pattern& p = draft.pattern;
  p.resize(fill(p.x.data(), p.y.data(), p.m.data()));
  return draft;
}

// The most samples that the tool is willing to hold.
inline constexpr std::size_t kMostSamples = 20000000;

// A draft from a call make(x, y, m, rate) that chooses its own sample rate and, given no arrays, tells its
// length. advice says why it may have found no rate, and what to do.
template <typename Make>
Draft SizedByItself(const std::string& advice, Make make) {
  unsigned int rate = 0;
  const std::size_t count = make(nullptr, nullptr, nullptr, rate);
  if (count == 0) throw ToolError(advice);
  if (count > kMostSamples)
    throw ToolError("the pattern is too long: use fewer --lines, a shorter --line-time or a lower --max-rate");
  Draft draft = Filled(count, [&](float* x, float* y, unsigned char* m) { return make(x, y, m, rate); });
  draft.pattern.rate = rate;
  return draft;
}

// Limits of the sample rate that a kind with the options min-rate and max-rate may choose; --rate settles it.
struct Rates {
  int lowest, highest;
};
Rates RatesOf(const Values& values);

struct TimeOfDay {
  unsigned int hours, minutes, seconds;
};

// "10:08:30" or "now".
TimeOfDay TimeIn(const std::string& text);

}  // namespace zrvtool

#endif
