// The gallery's places for the composite generators: each called as a program would, settings in, samples out.
#include <functional>

#include "ZRVDataGenerator.h"
#include "data_files.h"
#include "gallery_content.h"
#include "kinds.h"

namespace zrvtool {
namespace {

// What a composite is told and tells; the arrays are null while it only counts.
struct Call {
  float* x = nullptr;
  float* y = nullptr;
  unsigned char* m = nullptr;
  unsigned int* rgb = nullptr;
  ZRVScanSettings scan;
  unsigned int samples = 0, frames = 0, rate = 0;
};

using Composite = std::function<void(Call&)>;

Tile TileOf(const std::string& label, const ZRVScanSettings& scan, bool coloured, const Composite& composite) {
  Call call;
  call.scan = scan;
  call.rate = scan.SampleRate;
  composite(call);
  Tile tile;
  tile.label = label;
  Pattern& p = tile.pattern;
  p = Room(call.samples);
  if (coloured) p.rgb.resize(call.samples);
  call.x = p.x.data(), call.y = p.y.data(), call.m = p.m.data();
  call.rgb = coloured ? p.rgb.data() : nullptr;
  call.scan.ArrayCapacity = call.samples;
  composite(call);
  p.rate = call.rate;
  return tile;
}

ZRVScanSettings Animated(ZRVAnimation animation, float scale, float seconds) {
  ZRVScanSettings scan;
  scan.Animation = animation;
  scan.Scale = scale;
  scan.AnimationDuration = seconds;
  return scan;
}

ZRVScanSettings Closed(ZRVClosing closing) {
  ZRVScanSettings scan;
  scan.Closing = closing;
  return scan;
}

}  // namespace

SheetSection Composites(const std::string& drawingFile) {
  ZRVDataGenerator g;
  g.LoadHersheyFile(DefaultFontFile().c_str());
  ZRVSpirographSettings star;
  star.Curve = CurveHypocycloid;
  star.RingA = 5, star.RingB = 1;
  ZRVTextSettings text;
  text.Text = "Scan";
  ZRVClockSettings digital;
  digital.Digital = true;
  ZRVImportSettings drawing;
  drawing.FileName = drawingFile.c_str();
  ZRVScanSettings tilted;
  tilted.Angle = 0.4f;
  tilted.Scale = 0.7f;
  const ZRVScanSettings plain;

  return {"Composite generators: settings in, samples out",
          {TileOf("waveform, closed dark", plain, false,
                  [&](Call& c) { g.GenerateWaveformData(c.x, c.y, c.m, c.scan, {}, c.samples, c.frames); }),
           TileOf("spirograph, bouncing", Animated(AnimateBounce, 0.3f, 0.3f), false,
                  [&](Call& c) { g.GenerateSpirographData(c.x, c.y, c.m, c.scan, star, c.samples, c.frames); }),
           TileOf("Lissajous, turned", tilted, false,
                  [&](Call& c) { g.GenerateLissajousData(c.x, c.y, c.m, c.scan, {}, c.samples, c.frames); }),
           TileOf("clock", plain, false,
                  [&](Call& c) { g.GenerateClockData(c.x, c.y, c.m, c.scan, {}, c.samples, c.frames); }),
           TileOf("digital clock", plain, false,
                  [&](Call& c) { g.GenerateClockData(c.x, c.y, c.m, c.scan, digital, c.samples, c.frames); }),
           TileOf("signal", plain, false,
                  [&](Call& c) { g.GenerateSignalData(c.x, c.y, c.m, c.scan, {}, c.samples, c.frames, c.rate); }),
           TileOf("import, with colours", plain, true,
                  [&](Call& c) {
                    g.GenerateImportFileData(c.x, c.y, c.m, c.rgb, c.scan, drawing, c.samples, c.frames, c.rate);
                  }),
           TileOf("text, retraced", Closed(ClosingRetrace), false,
                  [&](Call& c) { g.GenerateTextData(c.x, c.y, c.m, c.scan, text, c.samples, c.frames); }),
           TileOf("text, rotating", Animated(AnimateRotate, 0.8f, 0.15f), false,
                  [&](Call& c) { g.GenerateTextData(c.x, c.y, c.m, c.scan, text, c.samples, c.frames); }),
           TileOf("scan", plain, false,
                  [&](Call& c) { g.GenerateScanData(c.x, c.y, c.m, c.scan, {}, c.samples, c.frames, c.rate); })}};
}

}  // namespace zrvtool
