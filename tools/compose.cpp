// From a draft to a pattern: transform, closing, interpolation, animation, filter, in the order in which a
// projector needs them.
#include <algorithm>
#include <array>
#include <cmath>

#include "errors.h"
#include "filter_choice.h"
#include "kinds.h"

namespace zrvtool {
namespace {

constexpr unsigned int kDefaultRate = 20000;

unsigned int* ColoursOf(Pattern& p) { return p.rgb.empty() ? nullptr : p.rgb.data(); }

unsigned int SizeOf(const Pattern& p) { return static_cast<unsigned int>(p.size()); }

// "x0,y0,x1,y1,x2,y2,x3,y3" as two columns.
std::array<std::array<float, 4>, 2> CornersIn(const std::string& text) {
  const std::vector<std::string> words = Split(text, ',');
  if (words.size() != 8) throw WrongUse("--keystone: give eight numbers x0,y0,x1,y1,x2,y2,x3,y3");
  std::array<std::array<float, 4>, 2> corners{};
  for (std::size_t i = 0; i < 8; ++i) corners[i % 2][i / 2] = static_cast<float>(ParseNumber(words[i], "--keystone"));
  return corners;
}

void Transform(ZRVDataGenerator& g, const Values& v, Pattern& p) {
  const bool keystone = !v.Text("keystone").empty();
  if (keystone) {
    auto corners = CornersIn(v.Text("keystone"));
    g.InitProjectiveTransformMatrix(corners[0].data(), corners[1].data(), false);
  }
  g.TransformData(p.x.data(), p.y.data(), SizeOf(p), v.Float("scale"), v.Angle("rotate"), v.Float("offset-x"),
                  v.Float("offset-y"), keystone, v.Float("tangential"), v.Float("radial"));
}

void Close(ZRVDataGenerator& g, const Values& v, Draft& draft) {
  const std::string how = v.Text("close");
  if (how == "none" || draft.closed || (how == "auto" && !draft.keypoints)) return;
  Pattern& p = draft.pattern;
  const unsigned int count = SizeOf(p);
  const unsigned int steps = draft.keypoints ? 1 : v.Count("close-samples");
  p.resize(2 * p.size() + steps);
  unsigned int closed = 0;
  if (p.rgb.empty()) closed = g.CloseCurve(p.x.data(), p.y.data(), p.m.data(), count, steps, how == "retrace");
  else closed = g.CloseCurve(p.x.data(), p.y.data(), p.m.data(), p.rgb.data(), count, steps, how == "retrace");
  p.resize(closed);
}

// Colours travel along as point indices; dark samples have none.
Pattern Interpolated(ZRVDataGenerator& g, const Values& v, Pattern& in, unsigned int samples) {
  constexpr float kSmallestAcceleration = 1e-4f;  // below it the trapezoidal profile is the linear one
  const bool optimized = v.Text("profile") == "optimized", speedsUp = v.Text("profile") == "trapezoidal";
  const float drawAccel = speedsUp ? v.Float("draw-accel") : 0, blankAccel = speedsUp ? v.Float("blank-accel") : 0;
  const bool linear = !optimized && std::max(drawAccel, blankAccel) < kSmallestAcceleration;
  Pattern out = Room(std::max<std::size_t>(samples, in.size() * 5 / 4) + in.size() + 16);
  if (!in.rgb.empty()) out.rgb.resize(out.size());
  float *const x = out.x.data(), *const y = out.y.data();
  if (optimized) {
    out.resize(g.InterpolateDataOptimized(in.x.data(), in.y.data(), in.m.data(), ColoursOf(in), x, y, out.m.data(),
                                          ColoursOf(out), SizeOf(in), samples));
  } else {
    out.resize(g.InterpolateData(in.x.data(), in.y.data(), in.m.data(), ColoursOf(in), x, y, out.m.data(),
                                 ColoursOf(out), SizeOf(in), samples, v.Float("blank-speed"), drawAccel, blankAccel));
  }
  // The linear profile's closing sample carries its digital byte in place of y; the place is the path's end.
  if (linear && out.size() > in.size()) out.y.back() = in.y.back();
  for (std::size_t i = 0; i < out.rgb.size(); ++i) {
    if (out.m[i] == 0) out.rgb[i] = 0;
  }
  return out;
}

void Interpolate(ZRVDataGenerator& g, const Values& v, Draft& draft) {
  if (!draft.keypoints || draft.pattern.size() < 2) return;
  Pattern& in = draft.pattern;
  const unsigned int samples = draft.samples != 0 ? draft.samples : v.Count("samples");
  Pattern out = Interpolated(g, v, in, samples);
  out.rate = in.rate;
  out.levels = in.levels;
  draft.pattern = std::move(out);
}

void Animate(ZRVDataGenerator& g, const Values& v, Pattern& p) {
  const unsigned int animation = v.Choice("animate"), frames = v.Count("animation-frames");
  if (animation == 0 || p.empty()) return;
  const unsigned int count = SizeOf(p);
  if (p.size() * frames > kMostSamples) throw ToolError("the animation is too long: use fewer --animation-frames");
  p.resize(p.size() * frames);
  if (p.rgb.empty()) g.GenerateAnimations(p.x.data(), p.y.data(), p.m.data(), animation, count, frames);
  else g.GenerateAnimations(p.x.data(), p.y.data(), p.m.data(), p.rgb.data(), animation, count, frames);
}

}  // namespace

Pattern MakePattern(const Kind& kind, const Values& values) {
  ZRVDataGenerator generator;
  Draft draft = kind.make(generator, values);
  if (draft.pattern.empty())
    throw ToolError(std::string("these options give no pattern; see zrv generate ") + kind.name + " --help");
  Transform(generator, values, draft.pattern);
  Close(generator, values, draft);
  Interpolate(generator, values, draft);
  Animate(generator, values, draft.pattern);
  Pattern& pattern = draft.pattern;
  if (values.Count("rate") != 0) pattern.rate = values.Count("rate");
  if (pattern.rate == 0) pattern.rate = kDefaultRate;
  if (!values.Text("filter").empty())
    ApplyFilter(generator, FilterChoiceIn(values.Text("filter")), values.Flag("zero-phase"), draft.overTime, pattern);
  return std::move(pattern);
}

}  // namespace zrvtool
