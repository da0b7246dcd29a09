// Text, drawings and point files.
#include <algorithm>
#include <numbers>

#include "data_files.h"
#include "errors.h"
#include "kinds.h"

namespace zrvtool {
namespace {

using enum OptionType;

unsigned int LoadFont(ZRVDataGenerator& g, const Values& v) {
  const std::string file = v.Text("font-file").empty() ? DefaultFontFile() : v.Text("font-file");
  if (file.empty())
    throw ToolError("no font file is installed; make one with zrv font build and name it with --font-file");
  g.LoadHersheyFile(file.c_str());
  const unsigned int fonts = g.HersheyNumFonts(), font = v.Count("font");
  if (fonts == 0) throw ToolError(file + " holds no fonts");
  if (font >= fonts) throw ToolError("--font: " + file + " holds fonts 0 to " + std::to_string(fonts - 1));
  return font;
}

bool IsDrawable(const std::string& text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
}

Draft TextLine(ZRVDataGenerator& g, const Values& v) {
  const std::string& text = v.Text("text");
  const unsigned int font = LoadFont(g, v), length = static_cast<unsigned int>(text.size());
  if (!IsDrawable(text)) throw ToolError("the text has no character that can be drawn (letters, digits, ASCII signs)");
  Draft draft = Filled(2 * std::size_t{g.HersheyDataSize(text.c_str(), length, font)} + 16,
                       [&](float* x, float* y, unsigned char* m) {
                         return g.HersheyDataStream(x, y, m, text.c_str(), length, font, v.Float("amplitude"), 0.0f,
                                                    v.Text("close") == "retrace");
                       });
  draft.keypoints = draft.closed = true;
  return draft;
}

Draft DigitalClock(ZRVDataGenerator& g, const Values& v) {
  constexpr std::size_t kMostKeypoints = 12 * 256;  // twelve characters
  const TimeOfDay t = TimeIn(v.Text("time"));
  const unsigned int font = LoadFont(g, v);
  Draft draft = Filled(2 * kMostKeypoints, [&](float* x, float* y, unsigned char* m) {
    return g.DigitalClockCurve(x, y, m, t.hours, t.minutes, t.seconds, font, v.Float("amplitude"), 0.0f,
                               v.Text("close") == "retrace");
  });
  draft.keypoints = draft.closed = true;
  return draft;
}

// "1-20,25" or "all" of count frames.
std::vector<unsigned int> FramesIn(const std::string& text, unsigned int count) {
  std::vector<unsigned int> frames;
  for (const std::string& part : Split(text == "all" ? "1-" + std::to_string(count) : text, ',')) {
    const std::vector<std::string> ends = Split(part, '-');
    const double first = ParseNumber(ends.front(), "--frames"), last = ParseNumber(ends.back(), "--frames");
    if (ends.size() > 2 || first < 1 || last > count || first > last)
      throw ToolError("--frames " + text + ": the drawing has frames 1 to " + std::to_string(count) +
                      "; give for instance 1-" + std::to_string(count));
    for (auto f = static_cast<unsigned int>(first); f <= static_cast<unsigned int>(last); ++f) frames.push_back(f);
  }
  return frames;
}

// Between two frames, and where a colour is as good as black, the beam is off. Many true-colour drawings never say
// "blank" and leave it at black.
void BlankFrameEnds(const ZRVDataGenerator& g, Pattern& p, std::size_t frames) {
  std::size_t end = 0;
  for (unsigned int f = 0; f < frames; ++f) {
    end += g.IldaKeypointCount(f);
    if (end > 0 && end <= p.size()) p.m[end - 1] = 0;
  }
  for (std::size_t i = 0; i < p.rgb.size(); ++i)
    if (IsDark(p.rgb[i])) p.m[i] = 0;
}

// So many samples a frame that all fit what a controller usually holds.
unsigned int SamplesFor(const Values& v, std::size_t frames) {
  constexpr std::size_t kMostTogether = 24000, kMostAFrame = 2000;
  const std::size_t asked = v.Count("samples");
  const std::size_t a = asked != 0 ? asked : std::clamp<std::size_t>(kMostTogether / frames, 2, kMostAFrame);
  if (a * frames > kMostSamples) throw ToolError("the drawing gets too long: use fewer --samples or --frames");
  return static_cast<unsigned int>(a * frames);
}

Draft Ilda(ZRVDataGenerator& g, const Values& v) {
  g.LoadIldaFile(v.Text("file").c_str());
  if (g.IldaNumFrames() == 0) throw ToolError(v.Text("file") + " is not an ILDA drawing, or holds no frame");
  const std::vector<unsigned int> frames = FramesIn(v.Text("frames"), g.IldaNumFrames());
  const auto count = static_cast<unsigned int>(frames.size());
  std::vector<unsigned int> rgb(std::size_t{g.IldaAnimSize(frames.data(), count)} + count + 1);
  const float upright = std::numbers::pi_v<float> / 2;
  Draft draft = Filled(rgb.size(), [&](float* x, float* y, unsigned char* m) {
    return g.IldaDataStream(x, y, m, rgb.data(), frames.data(), count, v.Float("amplitude"), 0.0f, v.Angle("turn-x"),
                            upright + v.Angle("turn-y"), v.Text("close") != "none");
  });
  rgb.resize(draft.pattern.size());
  if (std::any_of(rgb.begin(), rgb.end(), [](unsigned int c) { return c != 0; })) draft.pattern.rgb = std::move(rgb);
  BlankFrameEnds(g, draft.pattern, frames.size());
  draft.samples = SamplesFor(v, frames.size());
  draft.keypoints = draft.closed = true;
  return draft;
}

Draft PointFile(ZRVDataGenerator& g, const Values& v) {
  const unsigned int count = g.LoadPointFile(v.Text("file").c_str());
  if (count == 0) throw ToolError(v.Text("file") + " holds no points: lines of three numbers, x y m");
  Draft draft = Filled(count, [&](float* x, float* y, unsigned char* m) { return g.PointFileDataStream(x, y, m); });
  draft.pattern.rate = g.GetPointFileSps();
  return draft;
}

Draft PointFileKeypoints(ZRVDataGenerator& g, const Values& v) {
  Draft draft = PointFile(g, v);
  draft.keypoints = v.Flag("corners");
  return draft;
}

const OptionRow kFont = {"font", Count, "0", "number of the font in the font file", 0, 1000};
const OptionRow kFontFile = {"font-file", File, "", "font file; else the one that came with zrv"};

}  // namespace

std::vector<Kind> ContentKinds() {
  return {
      {"text",
       "Content",
       "a text in a vector font",
       "text \"Hello\" --font 2",
       {{"text", Argument, "", "the text"}, kFont, kFontFile},
       TextLine},
      {"digital-clock",
       "Content",
       "the time of day in digits",
       "digital-clock --time 10:08:30",
       {{"time", Text, "now", "time of day, HH:MM:SS or now"}, kFont, kFontFile},
       DigitalClock},
      {"ilda",
       "Content",
       "frames of an ILDA drawing",
       "ilda show.ild --frames 1-20",
       {{"file", FileArgument, "", "ILDA file"},
        {"frames", Text, "all", "which, for instance 1-20,25"},
        {"samples", Count, "0", "samples a frame; 0: 2000, fewer where all frames must fit 24000", 0, 1000000},
        {"turn-x", Number, "0", "view a 3D drawing from the side, degrees", -360, 360},
        {"turn-y", Number, "0", "view a 3D drawing from above, degrees", -360, 360}},
       Ilda},
      {"points",
       "Content",
       "the samples of a point file",
       "points figure.txt --rotate 45",
       {{"file", FileArgument, "", "point file"},
        {"corners", Flag, "0", "take the points as corners and interpolate between them"}},
       PointFileKeypoints},
  };
}

}  // namespace zrvtool
