// The generator's numeric calls, with any arguments, on arrays of exactly the room that the public header promises.
#include <algorithm>
#include <cmath>
#include <iterator>

#if defined(ZRV_WITH_OPENCV)
#include <opencv2/core/core_c.h>
#endif

#include "ZRVDataGenerator.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"

namespace {

using namespace zrv_fuzz;
using G = ZRVDataGenerator;

constexpr size_t kMost = 20000;  // samples; more are not tried, for speed

unsigned Few(Input& in, unsigned most = 2000) { return std::min(in.Count(), most); }
int Rate(Input& in) { return in.Bool() ? 100 * in.U16() : in.Int(); }

// A path of random places, some of them equal, about half of it lit.
void Fill(Samples& s, size_t count, Input& in) {
  float x = 0, y = 0;
  for (size_t i = 0; i < count; ++i) {
    const uint8_t what = in.Empty() ? static_cast<uint8_t>(i * 37) : in.U8();
    if (what & 1) x = in.Empty() ? static_cast<float>(what) / 128 - 1 : in.Float();
    if (what & 2) y = in.Empty() ? static_cast<float>(what) / 300 : in.Float();
    s.x[i] = x;
    s.y[i] = y;
    s.m[i] = (what & 4) ? what : 0;
    s.index[i] = what;
  }
}

void Waveform(G&, Input& in) {
  const unsigned n = Few(in), cycles = in.Count();
  const float amplitude = in.Float(), part = in.Float(), phase = in.Float();
  Samples s(n);
  float* y = in.Bool() ? s.y.data() : nullptr;
  switch (in.U8() % 4) {
    case 0: Require(G::SineWaveform(s.x.data(), y, s.m.data(), n, amplitude, cycles, phase) <= n); break;
    case 1: Require(G::SawtoothWaveform(s.x.data(), y, s.m.data(), n, amplitude, cycles, part, phase) <= n); break;
    case 2: Require(G::SquareWaveform(s.x.data(), y, s.m.data(), n, amplitude, cycles, part, phase) <= n); break;
    default: Require(G::NoiseWaveform(s.x.data(), n, amplitude) <= n);
  }
}

void TestPattern(G&, Input& in) {
  Samples s(12500);
  unsigned rate = in.Count();
  const bool triangle = in.Bool();
  const float ax = in.Float(), ay = in.Float();
  const unsigned frequency = in.Count();
  const float multiple = in.Float(), rise = in.Float();
  Require(G::RQWaveform(s.x.data(), s.y.data(), s.m.data(), rate, triangle, ax, ay, frequency, multiple, rise, 0) <=
          12500);
}

void Curve(G&, Input& in) {
  const unsigned n = Few(in), a = in.Count(), b = in.Count(), c = in.Count();
  const float p = in.Float(), q = in.Float(), r = in.Float();
  Samples s(n), more(n + 1), hands(13);
  float *x = s.x.data(), *y = s.y.data();
  unsigned char* m = s.m.data();
  switch (in.U8() % 6) {
    case 0: Require(G::SpiralCurve(x, y, m, n, p, q, a, r) <= n); break;
    case 1: Require(G::PolygonCurve(more.x.data(), more.y.data(), more.m.data(), n, p, a, 0) <= n + 1); break;
    case 2:
      Require(G::SpirographCurve(x, y, m, n, a % 6, b & 1, p, in.Int(), in.Int(), static_cast<int>(c)) <= n);
      break;
    case 3: Require(G::LissajousCurve(x, y, m, n, b & 1, p, a, b, q, c % 4, r, in.Count(), in.Float()) <= n); break;
    case 4: Require(G::AnalogClockCurve(hands.x.data(), hands.y.data(), hands.m.data(), a, b, c, p) == 13); break;
    default: {
      const float u = in.Float(), v = in.Float(), w = in.Float();
      Require(G::DynamicsCurve(x, y, m, n, p, q, r, u, v, w, in.Float()) <= n);
    }
  }
}

// Two calls: without arrays for the room, then with them for the samples.
template <typename Pattern>
void AskThenWrite(Pattern pattern) {
  unsigned sps = 0, again = 0;
  const size_t room = pattern(nullptr, nullptr, nullptr, sps);
  if (room > kMost) return;
  Samples s(room);
  Require(pattern(s.x.data(), s.y.data(), s.m.data(), again) == room && again == sps);
}

void Raster(G& g, Input& in) {
  const unsigned lines = in.Count(), pixels = in.Count();
  const float ax = in.Float(), ay = in.Float(), duration = in.Float() / (in.Bool() ? 100.0f : 1.0f), angle = in.Float();
  const uint8_t flags = in.U8();
  const int shift = in.Int(), low = Rate(in), high = Rate(in);
  AskThenWrite([&](float* x, float* y, unsigned char* m, unsigned& sps) {
    const auto raster = (flags & 4) != 0 ? &G::LinearRasterPattern : &G::LinearRasterPatternImaging;
    return (g.*raster)(x, y, m, ax, ay, lines, pixels, duration, (flags & 1) != 0, (flags & 2) != 0, shift, angle, sps,
                       low, high);
  });
}

void LaserWriter(G& g, Input& in) {
  const unsigned lines = Few(in, 40), pixels = Few(in, 40);
  const float duration = in.Float() / (in.Bool() ? 100.0f : 1.0f);
  const bool twoWay = in.Bool();
  const int low = Rate(in), high = Rate(in);
  const float x0 = in.Float(), x1 = in.Float(), y0 = in.Float(), y1 = in.Float();
  Guarded<int> last(lines);
  for (unsigned i = 0; i < lines; ++i) last[i] = in.Int();
  Guarded<unsigned char> raster(size_t{lines} * pixels);
  AskThenWrite([&](float* x, float* y, unsigned char* m, unsigned& sps) {
    return g.LaserWriterDataStream(x, y, m, raster.data(), last.data(), lines, pixels, duration, twoWay, sps, low, high,
                                   x0, x1, y0, y1);
  });
}

#if defined(ZRV_WITH_OPENCV)
void Bitmap(G& g, Input& in) {
  const CvSize size = cvSize(1 + in.U8() % 20, 1 + in.U8() % 20);
  IplImage* image = cvCreateImage(size, IPL_DEPTH_8U, 1 + in.U8() % 4);
  const auto bytes = in.Bytes(static_cast<size_t>(image->imageSize));
  std::fill_n(image->imageData, image->imageSize, '\x60');
  std::copy(bytes.begin(), bytes.end(), image->imageData);
  const float ax = in.Float(), ay = in.Float(), duration = in.Float() / 20;
  const unsigned lines = Few(in, 100), pixels = Few(in, 100);
  const bool binary = in.Bool(), twoWay = in.Bool();
  const int threshold = in.Int(), low = Rate(in), high = Rate(in);
  AskThenWrite([&](float* x, float* y, unsigned char* m, unsigned& sps) {
    return g.ImageRasterPattern(x, y, m, ax, ay, lines, pixels, image, binary, threshold, duration, twoWay, sps, low,
                                high);
  });
  cvReleaseImage(&image);
}
#else
void Bitmap(G&, Input&) {}
#endif

void LaserMoves(G&, Input& in) {
  const unsigned k = Few(in, 30);
  Samples path(k);
  Fill(path, k, in);
  Guarded<float> speeds(k);
  size_t room = 0;
  for (unsigned i = 0; i < k; ++i) {
    path.index[i] = in.U8();
    speeds[i] = in.Float();
    if (i + 1 < k) room += path.index[i];
  }
  Samples s(room);
  Require(G::LaserWriterInterpData(path.x.data(), path.y.data(), path.m.data(), path.index.data(), speeds.data(),
                                   s.x.data(), s.y.data(), s.m.data(), k) == room);
}

void PointToPoint(G& g, Input& in) {
  const unsigned k = Few(in, 30);
  Samples path(k);
  Fill(path, k, in);
  unsigned sps = in.Bool() ? 0 : in.Count();
  const int low = Rate(in), high = Rate(in);
  const float move = in.Float();
  Guarded<float> dwell(k);
  double room = 0;
  const double rate = sps != 0 ? sps : std::max({low, high, 0});
  for (unsigned i = 0; i < k; ++i) {
    dwell[i] = in.Float();
    const double samples = std::trunc(rate * static_cast<double>(dwell[i]) / 1000);
    room += (samples > 0 ? samples : 0) + 2;
  }
  if (!(room <= static_cast<double>(kMost))) return;
  Samples s(static_cast<size_t>(room));
  Require(g.PointToPointPattern(s.x.data(), s.y.data(), s.m.data(), path.x.data(), path.y.data(), path.m.data(),
                                dwell.data(), static_cast<int>(k), move, sps, low, high) <= s.x.size());
}

void Keypoints(G&, Input& in) {
  const unsigned n = Few(in, 300), close = Few(in, 300);
  const bool indexed = in.Bool(), retrace = in.Bool(), optimize = in.Bool();
  const size_t room = optimize ? n + 1 : retrace ? std::max(2 * n, 1u) - 1 : n + close;
  Samples s(room);
  Fill(s, n, in);
  unsigned* index = indexed ? s.index.data() : nullptr;
  Require((optimize ? G::OptimizeKeypoints(s.x.data(), s.y.data(), s.m.data(), index, n, close)
                    : G::CloseCurve(s.x.data(), s.y.data(), s.m.data(), index, n, close, retrace)) <= room);
}

void Transform(G& g, Input& in) {
  const unsigned n = Few(in, 300);
  const float p = in.Float(), q = in.Float(), r = in.Float(), t = in.Float(), u = in.Float(), v = in.Float();
  const uint8_t what = in.U8();
  const float corners[] = {p, q, r, t, u, v, p, q};
  g.InitProjectiveTransformMatrix(what & 64 ? corners : nullptr, corners + 4, (what & 128) != 0);
  g.InitRadialTransformMult((what & 32) != 0);
  Samples s(n);
  Fill(s, n, in);
  float *x = s.x.data(), *y = s.y.data();
  float minX, maxX, minY, maxY;
  switch (what % 6) {
    case 0:
      G::BoundingBox(x, y, n, minX, maxX, minY, maxY);
      Require(G::NormalizeData(x, y, n, p, q, minX, maxX, minY, maxY) == n);
      break;
    case 1: Require(G::AffineTransformData(x, y, n, p, q, r, t) == n); break;
    case 2: Require(g.ProjectiveTransformData(x, y, n) == n); break;
    case 3: Require(g.RadialTransformData(x, y, n, p) == n); break;
    case 4: Require(G::TangentialTransformData(x, y, n, p) == n); break;
    default: Require(g.TransformData(x, y, n, p, q, r, t, true, u, v) == n);
  }
}

void Interpolate(G& g, Input& in) {
  const unsigned k = Few(in, 300), n = Few(in);
  const float blankSpeed = in.Float(), draw = in.Float(), blank = in.Float();
  const uint8_t what = in.U8() % 4;
  const size_t room = k + (what == 3 && k >= n ? k + k / 4 + 1 : n);
  Samples path(k), s(room);
  Fill(path, k, in);
  const float *xIn = path.x.data(), *yIn = path.y.data();
  const unsigned char* mIn = path.m.data();
  float *x = s.x.data(), *y = s.y.data();
  unsigned char* m = s.m.data();
  unsigned written = 0;
  switch (what) {
    case 0: written = g.InterpolateData(xIn, yIn, mIn, x, y, m, k, n, blankSpeed, draw, blank); break;
    case 1: written = g.InterpolateDataLinear(xIn, yIn, mIn, x, y, m, k, n, blankSpeed); break;
    case 2: written = g.InterpolateDataTrapezoidal(xIn, yIn, mIn, x, y, m, k, n, blankSpeed, draw, blank); break;
    default: written = g.InterpolateDataOptimized(xIn, yIn, mIn, path.index.data(), x, y, m, s.index.data(), k, n);
  }
  Require(written <= room);
}

void Animate(G&, Input& in) {
  const unsigned n = Few(in, 200), frames = Few(in, 50), kind = in.U8() % 5;
  const float angle = in.Float();
  const bool indexed = in.Bool();
  Samples s(std::max<size_t>(n, size_t{n} * frames));
  Fill(s, n, in);
  unsigned* index = indexed ? s.index.data() : nullptr;
  const unsigned written = kind == 4
                               ? G::AnimationBounce(s.x.data(), s.y.data(), s.m.data(), index, n, frames, angle)
                               : G::GenerateAnimations(s.x.data(), s.y.data(), s.m.data(), index, kind, n, frames);
  Require(written <= s.x.size());
}

void Filter(G& g, Input& in) {
  const unsigned type = in.U8() % 9, order = in.Count(), n = Few(in, 300);
  const float cutoff = in.Float(), rate = in.Float();
  const bool twoChannels = in.Bool(), zeroPhase = in.Bool();
  g.SetupSoftwareFilter(type, order, cutoff, rate, twoChannels);
  Require(g.GetIIRFilterOrder() <= 31);
  Samples s(n), out(zeroPhase ? 3 * n : n);
  Fill(s, n, in);
  g.FilterData(s.x.data(), s.y.data(), out.x.data(), out.y.data(), n, zeroPhase);
  g.FilterData(s.x.data(), out.x.data(), n, zeroPhase);
}

constexpr void (*kCalls[])(G&, Input&) = {Waveform,    TestPattern, Curve,        Raster,    LaserWriter,
                                          Bitmap,      LaserMoves,  PointToPoint, Keypoints, Transform,
                                          Interpolate, Animate,     Filter};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input in(data, size);
  ZRVDataGenerator g;
  do {
    kCalls[in.U8() % std::size(kCalls)](g, in);
  } while (!in.Empty());
  return 0;
}
