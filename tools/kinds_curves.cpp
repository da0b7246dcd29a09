// Waveforms, curves and clocks.
#include "kinds.h"

namespace zrvtool {
namespace {

using enum OptionType;

template <typename Fill>
Draft FilledOverTime(std::size_t room, Fill fill) {
  Draft draft = Filled(room, fill);
  draft.overTime = true;
  return draft;
}

Draft Sine(ZRVDataGenerator& g, const Values& v) {
  const unsigned int n = v.Count("samples");
  return FilledOverTime(n, [&](float* x, float* y, unsigned char* m) {
    return g.SineWaveform(x, y, m, n, v.Float("amplitude"), v.Count("cycles"), v.Angle("phase"));
  });
}

Draft Sawtooth(ZRVDataGenerator& g, const Values& v) {
  const unsigned int n = v.Count("samples");
  return FilledOverTime(n, [&](float* x, float* y, unsigned char* m) {
    return g.SawtoothWaveform(x, y, m, n, v.Float("amplitude"), v.Count("cycles"), v.Float("rise"), v.Angle("phase"));
  });
}

Draft Square(ZRVDataGenerator& g, const Values& v) {
  const unsigned int n = v.Count("samples");
  return FilledOverTime(n, [&](float* x, float* y, unsigned char* m) {
    return g.SquareWaveform(x, y, m, n, v.Float("amplitude"), v.Count("cycles"), v.Float("duty"), v.Angle("phase"));
  });
}

// Noise comes as one array; shown over time like the other waveforms.
Draft Noise(ZRVDataGenerator& g, const Values& v) {
  const unsigned int n = v.Count("samples");
  return FilledOverTime(n, [&](float* x, float* y, unsigned char* m) {
    for (unsigned int i = 0; i < n; ++i) {
      x[i] = 2.0f * static_cast<float>(i) / static_cast<float>(n) - 1.0f;
      m[i] = 255;
    }
    return g.NoiseWaveform(y, n, v.Float("amplitude"));
  });
}

Draft Rq(ZRVDataGenerator& g, const Values& v) {
  constexpr std::size_t kLongest = 12500;
  unsigned int rate = 0;
  Draft draft = Filled(kLongest, [&](float* x, float* y, unsigned char* m) {
    return g.RQWaveform(x, y, m, rate, v.Flag("triangle"), v.Float("amplitude"), v.Float("amplitude"),
                        v.Count("frequency"), v.Float("multiple"), v.Float("rise"), 0.0f);
  });
  draft.pattern.rate = rate;
  return draft;
}

Draft Spiral(ZRVDataGenerator& g, const Values& v) {
  const unsigned int n = v.Count("samples");
  return Filled(n, [&](float* x, float* y, unsigned char* m) {
    return g.SpiralCurve(x, y, m, n, v.Float("amplitude"), v.Float("amplitude"), v.Count("turns"), v.Angle("phase"));
  });
}

Draft Polygon(ZRVDataGenerator& g, const Values& v) {
  const unsigned int n = v.Count("samples");
  return Filled(n + 1u, [&](float* x, float* y, unsigned char* m) {
    return g.PolygonCurve(x, y, m, n, v.Float("amplitude"), v.Count("sides"), 0.0f);
  });
}

template <unsigned int CurveType>
Draft Spirograph(ZRVDataGenerator& g, const Values& v) {
  const unsigned int n = v.Count("samples");
  return Filled(n, [&](float* x, float* y, unsigned char* m) {
    return g.SpirographCurve(x, y, m, n, CurveType, v.Choice("wave"), v.Float("amplitude"), v.Integer("ring-a"),
                             v.Integer("ring-b"), v.Integer("pen"));
  });
}

Draft Lissajous(ZRVDataGenerator& g, const Values& v) {
  const unsigned int n = v.Count("samples");
  return Filled(n, [&](float* x, float* y, unsigned char* m) {
    return g.LissajousCurve(x, y, m, n, v.Choice("wave"), v.Float("amplitude"), v.Count("freq-x"), v.Count("freq-y"),
                            v.Angle("phase"), v.Choice("modulation"), v.Float("mod-depth"), v.Count("mod-freq"),
                            v.Angle("mod-phase"));
  });
}

Draft Clock(ZRVDataGenerator& g, const Values& v) {
  constexpr std::size_t kCorners = 13;
  const TimeOfDay t = TimeIn(v.Text("time"));
  Draft draft = Filled(kCorners, [&](float* x, float* y, unsigned char* m) {
    return g.AnalogClockCurve(x, y, m, t.hours, t.minutes, t.seconds, v.Float("amplitude"));
  });
  draft.keypoints = true;
  return draft;
}

Draft Dynamics(ZRVDataGenerator& g, const Values& v) {
  const unsigned int n = v.Count("samples");
  return Filled(n, [&](float* x, float* y, unsigned char* m) {
    return g.DynamicsCurve(x, y, m, n, v.Float("start-x"), v.Float("start-y"), v.Float("velocity-x"),
                           v.Float("velocity-y"), v.Float("accel-x"), v.Float("accel-y"), v.Float("restitution"));
  });
}

const OptionRow kCycles = {"cycles", Count, "3", "periods in the pattern", 1, 100000};
const OptionRow kPhase = {"phase", Number, "0", "phase, degrees", 0, 3600};
const OptionRow kWave = {"wave", Choice, "sine", "sine, or triangle in its place", 0, 0, "sine|triangle"};
const OptionRow kRise = {"rise", Number, "0.5", "share of a period that rises", 0.01, 0.99};

std::vector<OptionRow> Rings(const char* a, const char* b, const char* pen) {
  return {{"ring-a", Count, a, "fixed ring (rose: petals = ring-a / ring-b)", 1, 1000},
          {"ring-b", Count, b, "rolling ring", 1, 1000},
          {"pen", Count, pen, "distance of the pen from the centre of the rolling ring", 0, 1000},
          kWave};
}

}  // namespace

std::vector<Kind> WaveformKinds() {
  return {
      {"sine", "Waveforms", "a sine over time", "sine --cycles 4", {kCycles, kPhase}, Sine},
      {"sawtooth",
       "Waveforms",
       "a sawtooth or triangle over time",
       "sawtooth --rise 0.8",
       {kCycles, {"rise", Number, "0.5", "share of a period that rises", 0, 1}, kPhase},
       Sawtooth},
      {"square",
       "Waveforms",
       "a square wave over time",
       "square --duty 0.25",
       {kCycles, {"duty", Number, "0.5", "share of a period that is low", 0, 1}, kPhase},
       Square},
      {"noise", "Waveforms", "white noise over time", "noise --filter bessel:4:500", {}, Noise},
      {"rq",
       "Waveforms",
       "test signal on two axes: fast sine on X, slow sine or triangle on Y",
       "rq --frequency 200 --multiple 12",
       {{"frequency", Count, "100", "frequency of X, Hz", 1, 80000},
        {"multiple", Number, "10", "periods of X in one of Y", 1, 1000},
        {"triangle", Flag, "0", "triangle on Y"},
        kRise},
       Rq},
  };
}

std::vector<Kind> CurveKinds() {
  return {
      {"spiral",
       "Curves",
       "a spiral from the centre outwards",
       "spiral --turns 8 --close retrace",
       {{"turns", Count, "6", "turns", 1, 10000}, kPhase},
       Spiral},
      {"polygon",
       "Curves",
       "a regular polygon",
       "polygon --sides 5",
       {{"sides", Count, "5", "corners", 1, 100000}},
       Polygon},
      {"rose", "Curves", "a rose", "rose --ring-a 5 --ring-b 2", Rings("5", "2", "1"), Spirograph<0>},
      {"epicycloid", "Curves", "a point of a ring rolling around a ring", "epicycloid --ring-a 5", Rings("5", "1", "1"),
       Spirograph<1>},
      {"epitrochoid", "Curves", "the same with the pen off the rim", "epitrochoid --pen 3", Rings("5", "1", "3"),
       Spirograph<2>},
      {"hypocycloid", "Curves", "a point of a ring rolling inside a ring", "hypocycloid --ring-a 5",
       Rings("5", "1", "1"), Spirograph<3>},
      {"hypotrochoid", "Curves", "the same with the pen off the rim", "hypotrochoid --pen 5", Rings("10", "3", "5"),
       Spirograph<4>},
      {"lissajous",
       "Curves",
       "a Lissajous figure, modulated or not",
       "lissajous --freq-x 3 --freq-y 4",
       {{"freq-x", Count, "3", "periods of X", 0, 100000},
        {"freq-y", Count, "4", "periods of Y", 0, 100000},
        {"phase", Number, "0", "phase of Y, degrees", -3600, 3600},
        kWave,
        {"modulation", Choice, "none", "what the modulation changes", 0, 0, "none|amplitude|phase"},
        {"mod-depth", Number, "0.5", "depth of the modulation (phase: radians)", 0, 100},
        {"mod-freq", Count, "1", "periods of the modulation", 0, 100000},
        {"mod-phase", Number, "0", "phase of the modulation of Y, degrees", -3600, 3600}},
       Lissajous},
      {"clock",
       "Curves",
       "the hands of a clock",
       "clock --time 10:08:30",
       {{"time", Text, "now", "time of day, HH:MM:SS or now"}},
       Clock},
      {"dynamics",
       "Curves",
       "a point bouncing in a box",
       "dynamics --accel-y -0.00002",
       {{"start-x", Number, "-0.9", "start", -1, 1},
        {"start-y", Number, "0.9", "start", -1, 1},
        {"velocity-x", Number, "0.002", "per sample", -1, 1},
        {"velocity-y", Number, "0", "per sample", -1, 1},
        {"accel-x", Number, "0", "per sample and sample", -1, 1},
        {"accel-y", Number, "-0.00002", "per sample and sample", -1, 1},
        {"restitution", Number, "0.85", "share of the speed kept in a bounce", 0, 1}},
       Dynamics},
  };
}

}  // namespace zrvtool
