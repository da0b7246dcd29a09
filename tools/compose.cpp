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

// The optimized profile carries colours along as point indices.
Pattern InterpolateOptimized(ZRVDataGenerator& g, Pattern& in, unsigned int samples) {
  Pattern out = Room(std::max<std::size_t>(samples, in.size() * 5 / 4) + in.size() + 16);
  if (!in.rgb.empty()) out.rgb.resize(out.size());
  out.resize(g.InterpolateDataOptimized(in.x.data(), in.y.data(), in.m.data(), ColoursOf(in), out.x.data(),
                                        out.y.data(), out.m.data(), ColoursOf(out), SizeOf(in), samples));
  return out;
}

Pattern InterpolatePlain(ZRVDataGenerator& g, const Values& v, Pattern& in, std::vector<unsigned char>& m,
                         unsigned int samples) {
  const bool linear = v.Text("profile") == "linear";
  Pattern out = Room(std::max<std::size_t>(samples, in.size()) + in.size() + 16);
  out.resize(g.InterpolateData(in.x.data(), in.y.data(), m.data(), out.x.data(), out.y.data(), out.m.data(), SizeOf(in),
                               samples, v.Float("blank-speed"), linear ? 0 : v.Float("draw-accel"),
                               linear ? 0 : v.Float("blank-accel")));
  // The linear profile's closing sample carries its digital byte in place of y; the place is the path's end.
  if (out.size() > in.size() && out.x.back() == in.x.back()) out.y.back() = in.y.back();
  return out;
}

// The other profiles carry one byte a keypoint, so each colour channel makes the journey by itself. A lit
// byte is at least 1, for the budget depends on what is lit.
Pattern InterpolateColoured(ZRVDataGenerator& g, const Values& v, Pattern& in, unsigned int samples) {
  Pattern out = InterpolatePlain(g, v, in, in.m, samples);
  out.rgb.assign(out.size(), 0);
  for (unsigned int shift : {16u, 8u, 0u}) {
    std::vector<unsigned char> channel(in.size());
    for (std::size_t i = 0; i < in.size(); ++i)
      channel[i] = in.m[i] == 0 ? 0 : static_cast<unsigned char>(std::max(1u, in.rgb[i] >> shift & 255u));
    const Pattern one = InterpolatePlain(g, v, in, channel, samples);
    for (std::size_t i = 0; i < out.size(); ++i) out.rgb[i] |= (one.m[i] > 1 ? unsigned{one.m[i]} : 0u) << shift;
  }
  return out;
}

void Interpolate(ZRVDataGenerator& g, const Values& v, Draft& draft) {
  if (!draft.keypoints || draft.pattern.size() < 2) return;
  Pattern& in = draft.pattern;
  const unsigned int samples = draft.samples != 0 ? draft.samples : v.Count("samples");
  Pattern out = v.Text("profile") == "optimized" ? InterpolateOptimized(g, in, samples)
                : in.rgb.empty()                 ? InterpolatePlain(g, v, in, in.m, samples)
                                                 : InterpolateColoured(g, v, in, samples);
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
