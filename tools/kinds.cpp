#include "kinds.h"

#include <algorithm>
#include <ctime>

#include "errors.h"

namespace zrvtool {

Pattern Room(std::size_t samples) {
  Pattern pattern;
  pattern.resize(samples);
  return pattern;
}

Rates RatesOf(const Values& v) {
  if (v.Count("rate") != 0) return {v.Integer("rate"), v.Integer("rate")};
  return {v.Integer("min-rate"), v.Integer("max-rate")};
}

TimeOfDay TimeIn(const std::string& text) {
  if (text == "now") {
    const std::time_t now = std::time(nullptr);
    const std::tm local = *std::localtime(&now);
    return {static_cast<unsigned>(local.tm_hour), static_cast<unsigned>(local.tm_min),
            static_cast<unsigned>(local.tm_sec)};
  }
  const std::vector<std::string> parts = Split(text, ':');
  unsigned int fields[3] = {0, 0, 0};
  const unsigned int limits[3] = {24, 60, 60};
  for (std::size_t i = 0; i < parts.size() && i < 3; ++i) {
    const double value = ParseNumber(parts[i], "--time");
    if (value < 0 || value >= limits[i]) throw WrongUse("--time: " + text + " is not a time of day like 10:08:30");
    fields[i] = static_cast<unsigned int>(value);
  }
  return {fields[0], fields[1], fields[2]};
}

const std::vector<Kind>& Kinds() {
  static const std::vector<Kind> kinds = [] {
    std::vector<Kind> all;
    for (std::vector<Kind> (*part)() : {WaveformKinds, CurveKinds, ContentKinds, RasterKinds, LaserKinds})
      for (Kind& kind : part()) all.push_back(std::move(kind));
    return all;
  }();
  return kinds;
}

const Kind& FindKind(const std::string& name) {
  const auto found = std::find_if(Kinds().begin(), Kinds().end(), [&](const Kind& k) { return k.name == name; });
  if (found == Kinds().end()) throw ToolError("no kind of pattern is called " + name + "; see zrv generate --help");
  return *found;
}

const std::vector<OptionRow>& CommonOptions() {
  using enum OptionType;
  static const std::vector<OptionRow> rows = {
      {"samples", Count, "2000", "samples in the pattern (in each frame of an animation)", 2, 1000000},
      {"rate", Count, "0", "samples per second; 0: as the content says, else 20000", 0, 1000000},
      {"amplitude", Number, "0.9", "half the size of the figure, 1 fills the field", 0, 1},
      {"scale", Number, "1", "size around the centre of the figure, clipped to the field", 0.01, 100},
      {"rotate", Number, "0", "turn around the centre of the figure, degrees clockwise", -3600, 3600},
      {"offset-x", Number, "0", "shift to the right", -2, 2},
      {"offset-y", Number, "0", "shift upwards", -2, 2},
      {"keystone", Text, "", "x0,y0,..x3,y3: where the corners lower left, lower right, upper right and upper left go"},
      {"radial", Number, "0", "radial distortion to take out, 0..0.7", 0, 0.7},
      {"tangential", Number, "0", "tangential distortion to take out, radians at the edge", -1.5, 1.5},
      {"close", Choice, "auto", "return to the start; auto: where the kind draws corners", 0, 0,
       "auto|none|blank|retrace"},
      {"close-samples", Count, "50", "samples of a blank return of a pattern that has no corners", 1, 100000},
      {"profile", Choice, "optimized", "speed along the lines between corners", 0, 0, "linear|trapezoidal|optimized"},
      {"blank-speed", Number, "2", "linear, trapezoidal: how much faster blank moves are", 1, 10},
      {"draw-accel", Number, "0.1", "trapezoidal: share of a drawn line spent speeding up", 0, 0.5},
      {"blank-accel", Number, "0.25", "trapezoidal: share of a blank move spent speeding up", 0, 0.5},
      {"animate", Choice, "none", "turn the figure into an animation", 0, 0, "none|rotate|scroll|bounce"},
      {"animation-frames", Count, "10", "frames of the animation", 1, 10000},
      {"filter", Text, "", "low-pass, family:order:cutoff in Hz, for instance bessel:5:1000", 0, 0, "FILTER"},
      {"zero-phase", Flag, "0", "filter forwards and backwards: no delay"},
  };
  return rows;
}

Values InitialValues(const Kind& kind) {
  Values values;
  values.Declare(CommonOptions());
  values.Declare(kind.options);
  return values;
}

Pattern MakePattern(const std::string& kind, const std::vector<std::pair<std::string, std::string>>& changes) {
  Values values = InitialValues(FindKind(kind));
  for (const auto& [name, text] : changes) values.Set(name, text);
  return MakePattern(FindKind(kind), values);
}

}  // namespace zrvtool
