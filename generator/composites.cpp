// Settings in, finished samples out. Each generator makes its keypoints or samples; the assembly does the rest.
#include <algorithm>
#include <cstring>

#include "ZRVDataGenerator.h"
#include "generator/content.h"
#include "generator/counts.h"
#include "generator/scan_assembly.h"

namespace {

using zrv::PointArrays;
using zrv::ScanAssembly;

constexpr unsigned int kClockKeypoints = 13, kClockCharacters = 12, kSignalSamples = 12500;

// Keypoints of the largest character of a digital clock.
size_t LargestDigit(const ZRVDataGenerator& generator, unsigned int font) {
  size_t largest = 0;
  for (const char& digit : {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', '-', ':', ' '}) {
    largest = std::max<size_t>(largest, generator.HersheyDataSize(&digit, 1, font));
  }
  return largest;
}

unsigned int WaveformValues(float* values, unsigned int n, const ZRVWaveformSettings& w) {
  const unsigned int cycles = std::clamp(w.Cycles, 1u, std::max(1u, n));
  switch (w.Waveform) {
    case WaveformSine: return ZRVDataGenerator::SineWaveform(values, nullptr, nullptr, n, w.Amplitude, cycles, w.Phase);
    case WaveformSawtooth:
      return ZRVDataGenerator::SawtoothWaveform(values, nullptr, nullptr, n, w.Amplitude, cycles, w.Portion, w.Phase);
    case WaveformSquare:
      return ZRVDataGenerator::SquareWaveform(values, nullptr, nullptr, n, w.Amplitude, cycles, w.Portion, w.Phase);
    case WaveformNoise: return ZRVDataGenerator::NoiseWaveform(values, n, w.Amplitude);
  }
  return 0;
}

unsigned int FillWaveform(const PointArrays& to, unsigned int n, const ZRVWaveformSettings& w) {
  float* const signal = w.Axes == SignalOnX ? to.x : to.y;
  float* const other = w.Axes == SignalOnX ? to.y : to.x;
  for (unsigned int i = 0; i < n; ++i) {
    other[i] = w.Axes == SignalOverTime ? 2.0f * static_cast<float>(i) / static_cast<float>(n) - 1.0f : 0.0f;
  }
  std::fill_n(to.m, n, static_cast<unsigned char>(255));
  return WaveformValues(signal, n, w);
}

}  // namespace

void ZRVDataGenerator::GenerateWaveformData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                                            const ZRVWaveformSettings& waveform, unsigned int& numSamples,
                                            unsigned int& numFrames) {
  ScanAssembly assembly(*this, scan, content->scratch);
  // Over time a waveform is an open path, whose way back takes a tenth of the frame, or half of it.
  const unsigned int n = assembly.SamplesPerFrame();
  const bool open = waveform.Axes == SignalOverTime, retrace = scan.Closing == ClosingRetrace;
  const unsigned int back = !open || scan.Closing == ClosingLeftOut ? 0 : retrace ? n / 2 : n / 10;
  if (waveform.Axes <= SignalOnY) {
    assembly.AddSamples(n, [&](const PointArrays& to) { return FillWaveform(to, n - back, waveform); });
  }
  if (back > 0) assembly.CloseSamples(back, retrace);
  if (open) assembly.KeepTimeAxis();
  assembly.Deliver({x, y, m}, nullptr, numSamples, numFrames);
}

void ZRVDataGenerator::GenerateSpirographData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                                              const ZRVSpirographSettings& spirograph, unsigned int& numSamples,
                                              unsigned int& numFrames) {
  ScanAssembly assembly(*this, scan, content->scratch);
  const unsigned int n = assembly.SamplesPerFrame();
  if (spirograph.Curve <= CurveHypotrochoid) {
    assembly.AddSamples(n, [&](const PointArrays& to) {
      return SpirographCurve(to.x, to.y, to.m, n, spirograph.Curve, spirograph.TriangleWave, spirograph.Amplitude,
                             std::max(1, spirograph.RingA), std::max(1, spirograph.RingB), spirograph.PenDistance);
    });
  }
  assembly.Deliver({x, y, m}, nullptr, numSamples, numFrames);
}

void ZRVDataGenerator::GenerateLissajousData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                                             const ZRVLissajousSettings& lissajous, unsigned int& numSamples,
                                             unsigned int& numFrames) {
  ScanAssembly assembly(*this, scan, content->scratch);
  const unsigned int n = assembly.SamplesPerFrame();
  if (lissajous.Modulation <= ModulatePhase) {
    assembly.AddSamples(n, [&](const PointArrays& to) {
      return LissajousCurve(to.x, to.y, to.m, n, lissajous.TriangleWave, lissajous.Amplitude, lissajous.FreqX,
                            lissajous.FreqY, lissajous.Phase, lissajous.Modulation, lissajous.ModDepth,
                            lissajous.ModFreq, lissajous.ModPhase);
    });
  }
  assembly.Deliver({x, y, m}, nullptr, numSamples, numFrames);
}

void ZRVDataGenerator::GenerateClockData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                                         const ZRVClockSettings& clock, unsigned int& numSamples,
                                         unsigned int& numFrames) {
  ScanAssembly assembly(*this, scan, content->scratch);
  if (clock.Digital) {
    const size_t room = kClockCharacters * LargestDigit(*this, clock.Font) + 1;
    assembly.AddKeypoints(room, [&](const PointArrays& to) {
      return DigitalClockCurve(to.x, to.y, to.m, clock.Hours, clock.Minutes, clock.Seconds, clock.Font, clock.Amplitude,
                               0.0f, false);
    });
  } else {
    assembly.AddKeypoints(kClockKeypoints, [&](const PointArrays& to) {
      return AnalogClockCurve(to.x, to.y, to.m, clock.Hours, clock.Minutes, clock.Seconds, clock.Amplitude);
    });
  }
  assembly.Deliver({x, y, m}, nullptr, numSamples, numFrames);
}

void ZRVDataGenerator::GenerateTextData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                                        const ZRVTextSettings& text, unsigned int& numSamples,
                                        unsigned int& numFrames) {
  ScanAssembly assembly(*this, scan, content->scratch);
  if (text.Text != nullptr) {
    const unsigned int length = text.Length != 0 ? text.Length : zrv::SaturatedCount(std::strlen(text.Text));
    const size_t room = size_t{HersheyDataSize(text.Text, length, text.Font)} + 1;
    assembly.AddKeypoints(room, [&](const PointArrays& to) {
      return HersheyDataStream(to.x, to.y, to.m, text.Text, length, text.Font, text.Amplitude, 0.0f, false);
    });
  }
  assembly.Deliver({x, y, m}, nullptr, numSamples, numFrames);
}

void ZRVDataGenerator::GenerateSignalData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                                          const ZRVSignalSettings& signal, unsigned int& numSamples,
                                          unsigned int& numFrames, unsigned int& sampleRate) {
  ScanAssembly assembly(*this, scan, content->scratch);
  unsigned int rate = 0;
  assembly.AddSamples(kSignalSamples, [&](const PointArrays& to) {
    return RQWaveform(to.x, to.y, to.m, rate, signal.TriangleY, signal.AmplitudeX, signal.AmplitudeY, signal.Frequency,
                      signal.XMultiple, signal.RisePortion, 0.0f);
  });
  assembly.Deliver({x, y, m}, nullptr, numSamples, numFrames);
  sampleRate = numSamples > 0 ? rate : 0;
}
