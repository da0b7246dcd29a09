// The generator's composites, with any settings: the room that they ask for without arrays is what they fill, what
// CurvesDataSize() says is enough, and with too little room nothing is written.
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

#include "ZRVDataGenerator.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "fuzz/input_file.h"
#include "tools/font_builder.h"

namespace {

using namespace zrv_fuzz;
using G = ZRVDataGenerator;

constexpr unsigned kMost = 30000;  // samples; more are not tried, for speed

template <typename Enum>
Enum Any(Input& in) {
  return static_cast<Enum>(in.U8() % 8);
}

// A font with the same few lines in every place.
std::vector<uint8_t> SmallFont() {
  std::string text;
  char line[32];
  for (int i = 0; i < 60; ++i) {
    std::snprintf(line, sizeof line, "%5d  6JZPOTO RRSUV\n", 501 + i);
    text += line;
  }
  zrv::FontBuilder builder;
  builder.AddFont(zrv::ReadJhf(text).value());
  return builder.Build();
}

ZRVScanSettings Scan(Input& in) {
  ZRVScanSettings scan;
  scan.SampleRate = in.Count();
  scan.RefreshRate = in.Float();
  scan.Animation = Any<ZRVAnimation>(in);
  scan.AnimationDuration = in.Float();
  scan.Scale = in.Float();
  scan.OffsetX = in.Float();
  scan.Tangential = in.Float();
  scan.Profile = Any<ZRVProfile>(in);
  scan.BlankSpeed = in.Float();
  scan.DrawAccel = in.Float();
  scan.KeypointBudget = in.Count();
  scan.Closing = Any<ZRVClosing>(in);
  scan.Projective = in.Bool();
  scan.Filter = in.Bool();
  scan.FilterZeroPhase = in.Bool();
  scan.SampleRateMin = in.Count();
  scan.SampleRateMax = 100 * in.U16();
  return scan;
}

struct Counts {
  unsigned samples = 0, frames = 0, rate = 0;
  bool operator==(const Counts&) const = default;
};

// generate(x, y, m, rgb, scan, counts); enough: what is known to be room for it, 0 where nothing is said.
template <typename Generate>
void Check(Generate generate, ZRVScanSettings scan, size_t enough) {
  scan.ArrayCapacity = kMost;
  Counts asked;
  generate(nullptr, nullptr, nullptr, nullptr, scan, asked);
  Require((asked.samples == 0) == (asked.frames == 0));
  if (asked.samples == 0 || asked.samples > kMost) return;
  Require(enough == 0 || asked.samples <= enough);
  for (const bool cramped : {false, true}) {
    scan.ArrayCapacity = asked.samples - cramped;
    Samples s(scan.ArrayCapacity);
    Counts written{1, 1, asked.rate};  // a composite without a rate leaves it alone
    generate(s.x.data(), s.y.data(), s.m.data(), s.index.data(), scan, written);
    Require(cramped ? written == Counts{} : written == asked);
  }
}

template <typename Settings>
void Check(G& g, const Settings& settings, const ZRVScanSettings& scan, size_t enough,
           void (G::*call)(float*, float*, unsigned char*, const ZRVScanSettings&, const Settings&, unsigned&,
                           unsigned&)) {
  Check([&](float* x, float* y, unsigned char* m, unsigned*, const ZRVScanSettings& s,
            Counts& c) { (g.*call)(x, y, m, s, settings, c.samples, c.frames); },
        scan, enough);
}

template <typename Settings>
void Check(G& g, const Settings& settings, const ZRVScanSettings& scan,
           void (G::*call)(float*, float*, unsigned char*, const ZRVScanSettings&, const Settings&, unsigned&,
                           unsigned&, unsigned&)) {
  Check([&](float* x, float* y, unsigned char* m, unsigned*, const ZRVScanSettings& s,
            Counts& c) { (g.*call)(x, y, m, s, settings, c.samples, c.frames, c.rate); },
        scan, 0);
}

void Waveform(G& g, Input& in, const ZRVScanSettings& scan, size_t enough) {
  const ZRVWaveformSettings w = {
      Any<ZRVWaveform>(in), Any<ZRVWaveformAxes>(in), in.Float(), in.Count(), in.Float(), in.Float()};
  Check(g, w, scan, enough, &G::GenerateWaveformData);
}

void Spirograph(G& g, Input& in, const ZRVScanSettings& scan, size_t enough) {
  const ZRVSpirographSettings s = {Any<ZRVCurve>(in), in.Bool(), in.Float(), in.Int(), in.Int(), in.Int()};
  Check(g, s, scan, enough, &G::GenerateSpirographData);
}

void Lissajous(G& g, Input& in, const ZRVScanSettings& scan, size_t enough) {
  const ZRVLissajousSettings l = {in.Bool(),  in.Float(), in.Count(), in.Count(), in.Float(), Any<ZRVModulation>(in),
                                  in.Float(), in.Count(), in.Float()};
  Check(g, l, scan, enough, &G::GenerateLissajousData);
}

void Clock(G& g, Input& in, const ZRVScanSettings& scan, size_t enough) {
  const ZRVClockSettings c = {in.Bool(), in.Count(), in.Count(), in.Count(), in.Float(), in.U8() % 3u};
  Check(g, c, scan, c.Digital ? 0 : enough, &G::GenerateClockData);
}

void Text(G& g, Input& in, const ZRVScanSettings& scan, size_t) {
  const auto bytes = in.Bytes(in.U8() % 32);
  const std::string text(bytes.begin(), bytes.end());
  const unsigned length = in.Bool() ? 0 : static_cast<unsigned>(text.size());
  const ZRVTextSettings t = {text.c_str(), length, in.U8() % 2u, in.Float()};
  const unsigned keypoints = g.HersheyDataSize(text.data(), static_cast<unsigned>(text.size()), t.Font);
  Check(g, t, scan, keypoints > 0 ? g.CurvesDataSize(scan, keypoints) : 0, &G::GenerateTextData);
}

void Signal(G& g, Input& in, const ZRVScanSettings& scan, size_t) {
  const ZRVSignalSettings s = {in.Bool(), in.Float(), in.Float(), in.Count(), in.Float(), in.Float()};
  Check(g, s, scan, &G::GenerateSignalData);
}

void Pattern(G& g, Input& in, const ZRVScanSettings& scan, size_t) {
  Guarded<float> px(20), py(20), dwell(20);
  ZRVPatternSettings p;
  p.Pattern = Any<ZRVScanPattern>(in);
  p.XAmplitude = in.Float();
  p.NumLines = in.Count();
  p.NumPixels = in.Count();
  p.LineDuration = in.Float() / 20;
  p.PixelHold = in.Bool();
  p.Bidirectional = in.Bool();
  p.DigitalShift = in.Int();
  p.PointX = px.data();
  p.PointY = py.data();
  p.DwellTimes = in.Bool() ? nullptr : dwell.data();
  p.DwellTime = in.Float();
  p.NumPoints = in.U8() % 21u;
  p.TransitionTime = in.Float();
  for (unsigned i = 0; i < p.NumPoints; ++i) {
    px[i] = py[i] = static_cast<float>(i % 5) / 5;
    dwell[i] = in.Float();
  }
  Check(g, p, scan, &G::GenerateScanData);
}

void Import(G& g, Input& in, const ZRVScanSettings& scan, size_t) {
  Guarded<unsigned> frames(in.U8() % 5);
  for (size_t i = 0; i < frames.size(); ++i) frames[i] = in.U8() % 6;
  ZRVImportSettings i;
  i.Format = Any<ZRVImportFormat>(in);
  i.Frames = in.Bool() ? nullptr : frames.data();
  i.NumFrames = static_cast<unsigned>(frames.size());
  i.Amplitude = in.Float();
  i.AngleX = in.Float();
  i.Keypoints = in.Bool();
  i.TransitionTime = in.Float();
  const InputFile file(in.Bytes(4000), ".import");
  i.FileName = file.Path();
  const auto generate = [&](float* x, float* y, unsigned char* m, unsigned* rgb, const ZRVScanSettings& s, Counts& c) {
    g.GenerateImportFileData(x, y, m, rgb, s, i, c.samples, c.frames, c.rate);
  };
  Check(generate, scan, 0);
}

constexpr void (*kComposites[])(G&, Input&, const ZRVScanSettings&, size_t) = {Waveform, Spirograph, Lissajous, Clock,
                                                                               Text,     Signal,     Pattern,   Import};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::vector<uint8_t> font = SmallFont();
  Input in(data, size);
  G g;
  {
    const InputFile file(font, ".font");
    g.LoadHersheyFile(file.Path());
  }
  g.SetupSoftwareFilter(in.U8() % 7, 1 + in.U8() % 6, 1000, 20000, true);
  const auto composite = kComposites[in.U8() % std::size(kComposites)];
  const ZRVScanSettings scan = Scan(in);
  composite(g, in, scan, g.CurvesDataSize(scan));
  return 0;
}
