// The data generator as plain functions, one forward each. Nothing is thrown through them.
#include "ZRVDataGenerator.h"
#include "ZRVFlatInterface.h"
#include "common/shielded.h"

namespace {

using zrv::Shielded;

// A result that the caller may not want: null takes it nowhere.
template <typename T>
class Out {
 public:
  explicit Out(T* wanted) : wanted_(wanted) {}
  operator T&() { return wanted_ != nullptr ? *wanted_ : unwanted_; }

 private:
  T* wanted_;
  T unwanted_{};
};

// Null settings are the initial ones.
template <typename Settings>
const Settings& OrInitial(const Settings* settings) {
  static const Settings initial;
  return settings != nullptr ? *settings : initial;
}

template <typename Settings>
void Init(Settings* settings) {
  if (settings != nullptr) *settings = Settings();
}

}  // namespace

ZRVDataGenerator* ZRVCreateDataGenerator(void) {
  return Shielded([] { return new ZRVDataGenerator; });
}
void ZRVDeleteDataGenerator(ZRVDataGenerator* g) {
  Shielded([&] { delete g; });
}

void ZRVInitScanSettings(ZRVScanSettings* settings) { Init(settings); }
void ZRVInitWaveformSettings(ZRVWaveformSettings* settings) { Init(settings); }
void ZRVInitSpirographSettings(ZRVSpirographSettings* settings) { Init(settings); }
void ZRVInitLissajousSettings(ZRVLissajousSettings* settings) { Init(settings); }
void ZRVInitClockSettings(ZRVClockSettings* settings) { Init(settings); }
void ZRVInitSignalSettings(ZRVSignalSettings* settings) { Init(settings); }
void ZRVInitImportSettings(ZRVImportSettings* settings) { Init(settings); }
void ZRVInitTextSettings(ZRVTextSettings* settings) { Init(settings); }
void ZRVInitPatternSettings(ZRVPatternSettings* settings) { Init(settings); }
unsigned int ZRVLinearRasterPattern(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, float xAmplitude,
                                    float yAmplitude, unsigned int numLines, unsigned int numPixels, float lineDuration,
                                    bool pixelHold, bool bidirectional, int digitalShift, float rotationAngle,
                                    unsigned int* sps, int minSps, int maxSps) {
  return Shielded([&] {
    return g->LinearRasterPattern(x, y, m, xAmplitude, yAmplitude, numLines, numPixels, lineDuration, pixelHold,
                                  bidirectional, digitalShift, rotationAngle, Out(sps), minSps, maxSps);
  });
}
unsigned int ZRVCurvesDataSize(ZRVDataGenerator* g, const ZRVScanSettings* scan, unsigned int numKeypoints,
                               unsigned int numFrames) {
  return Shielded([&] { return g->CurvesDataSize(OrInitial(scan), numKeypoints, numFrames); });
}
void ZRVGenerateWaveformData(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, const ZRVScanSettings* scan,
                             const ZRVWaveformSettings* waveform, unsigned int* numSamples, unsigned int* numFrames) {
  Shielded(
      [&] { g->GenerateWaveformData(x, y, m, OrInitial(scan), OrInitial(waveform), Out(numSamples), Out(numFrames)); });
}
void ZRVGenerateSpirographData(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, const ZRVScanSettings* scan,
                               const ZRVSpirographSettings* spirograph, unsigned int* numSamples,
                               unsigned int* numFrames) {
  Shielded([&] {
    g->GenerateSpirographData(x, y, m, OrInitial(scan), OrInitial(spirograph), Out(numSamples), Out(numFrames));
  });
}
void ZRVGenerateLissajousData(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, const ZRVScanSettings* scan,
                              const ZRVLissajousSettings* lissajous, unsigned int* numSamples,
                              unsigned int* numFrames) {
  Shielded([&] {
    g->GenerateLissajousData(x, y, m, OrInitial(scan), OrInitial(lissajous), Out(numSamples), Out(numFrames));
  });
}
void ZRVGenerateClockData(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, const ZRVScanSettings* scan,
                          const ZRVClockSettings* clock, unsigned int* numSamples, unsigned int* numFrames) {
  Shielded([&] { g->GenerateClockData(x, y, m, OrInitial(scan), OrInitial(clock), Out(numSamples), Out(numFrames)); });
}
void ZRVGenerateTextData(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, const ZRVScanSettings* scan,
                         const ZRVTextSettings* text, unsigned int* numSamples, unsigned int* numFrames) {
  Shielded([&] { g->GenerateTextData(x, y, m, OrInitial(scan), OrInitial(text), Out(numSamples), Out(numFrames)); });
}
void ZRVGenerateSignalData(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, const ZRVScanSettings* scan,
                           const ZRVSignalSettings* signal, unsigned int* numSamples, unsigned int* numFrames,
                           unsigned int* sampleRate) {
  Shielded([&] {
    g->GenerateSignalData(x, y, m, OrInitial(scan), OrInitial(signal), Out(numSamples), Out(numFrames),
                          Out(sampleRate));
  });
}
void ZRVGenerateImportFileData(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int* rgb,
                               const ZRVScanSettings* scan, const ZRVImportSettings* file, unsigned int* numSamples,
                               unsigned int* numFrames, unsigned int* sampleRate) {
  Shielded([&] {
    g->GenerateImportFileData(x, y, m, rgb, OrInitial(scan), OrInitial(file), Out(numSamples), Out(numFrames),
                              Out(sampleRate));
  });
}
void ZRVGenerateScanData(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, const ZRVScanSettings* scan,
                         const ZRVPatternSettings* pattern, unsigned int* numSamples, unsigned int* numFrames,
                         unsigned int* sampleRate) {
  Shielded([&] {
    g->GenerateScanData(x, y, m, OrInitial(scan), OrInitial(pattern), Out(numSamples), Out(numFrames), Out(sampleRate));
  });
}
unsigned int ZRVSineWaveform(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int numSamples,
                             float amplitude, unsigned int numCycles, float phase) {
  return Shielded([&] { return g->SineWaveform(x, y, m, numSamples, amplitude, numCycles, phase); });
}
unsigned int ZRVSawtoothWaveform(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int numSamples,
                                 float amplitude, unsigned int numCycles, float risePortion, float phase) {
  return Shielded([&] { return g->SawtoothWaveform(x, y, m, numSamples, amplitude, numCycles, risePortion, phase); });
}
unsigned int ZRVSquareWaveform(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int numSamples,
                               float amplitude, unsigned int numCycles, float dutyCycle, float phase) {
  return Shielded([&] { return g->SquareWaveform(x, y, m, numSamples, amplitude, numCycles, dutyCycle, phase); });
}
unsigned int ZRVNoiseWaveform(ZRVDataGenerator* g, float* data, unsigned int numSamples, float amplitude) {
  return Shielded([&] { return g->NoiseWaveform(data, numSamples, amplitude); });
}
unsigned int ZRVRQWaveform(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int* outputRate,
                           bool triangleY, float amplitudeX, float amplitudeY, unsigned int frequency, float xMultiple,
                           float risePortion, float reserved) {
  return Shielded([&] {
    return g->RQWaveform(x, y, m, Out(outputRate), triangleY, amplitudeX, amplitudeY, frequency, xMultiple, risePortion,
                         reserved);
  });
}
unsigned int ZRVSpiralCurve(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int numSamples,
                            float amplitudeX, float amplitudeY, unsigned int turnCount, float phase) {
  return Shielded([&] { return g->SpiralCurve(x, y, m, numSamples, amplitudeX, amplitudeY, turnCount, phase); });
}
unsigned int ZRVPolygonCurve(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int numSamples,
                             float amplitude, unsigned int numSides, float reserved) {
  return Shielded([&] { return g->PolygonCurve(x, y, m, numSamples, amplitude, numSides, reserved); });
}
unsigned int ZRVSpirographCurve(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int numSamples,
                                unsigned int curveType, unsigned int waveType, float amplitude, int ringA, int ringB,
                                int penDistance) {
  return Shielded([&] {
    return g->SpirographCurve(x, y, m, numSamples, curveType, waveType, amplitude, ringA, ringB, penDistance);
  });
}
unsigned int ZRVLissajousCurve(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int numSamples,
                               unsigned int waveType, float amplitude, unsigned int freqX, unsigned int freqY,
                               float phase, unsigned int modulation, float modDepth, unsigned int modFreq,
                               float modPhase) {
  return Shielded([&] {
    return g->LissajousCurve(x, y, m, numSamples, waveType, amplitude, freqX, freqY, phase, modulation, modDepth,
                             modFreq, modPhase);
  });
}
unsigned int ZRVAnalogClockCurve(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int hours,
                                 unsigned int minutes, unsigned int seconds, float amplitude) {
  return Shielded([&] { return g->AnalogClockCurve(x, y, m, hours, minutes, seconds, amplitude); });
}
unsigned int ZRVDynamicsCurve(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int numSamples,
                              float startX, float startY, float velocityX, float velocityY, float accelX, float accelY,
                              float restitution) {
  return Shielded([&] {
    return g->DynamicsCurve(x, y, m, numSamples, startX, startY, velocityX, velocityY, accelX, accelY, restitution);
  });
}
void ZRVLoadIldaFile(ZRVDataGenerator* g, const char* fileName) {
  Shielded([&] { g->LoadIldaFile(fileName); });
}
void ZRVClearIldaData(ZRVDataGenerator* g) {
  Shielded([&] { g->ClearIldaData(); });
}
unsigned int ZRVIldaFrameType(ZRVDataGenerator* g) {
  return Shielded([&] { return g->IldaFrameType(); });
}
unsigned int ZRVIldaNumFrames(ZRVDataGenerator* g) {
  return Shielded([&] { return g->IldaNumFrames(); });
}
unsigned int ZRVIldaNumMaxPoints(ZRVDataGenerator* g) {
  return Shielded([&] { return g->IldaNumMaxPoints(); });
}
unsigned int ZRVIldaNumTotalPoints(ZRVDataGenerator* g) {
  return Shielded([&] { return g->IldaNumTotalPoints(); });
}
unsigned int ZRVIldaFrameSize(ZRVDataGenerator* g, unsigned int frame) {
  return Shielded([&] { return g->IldaFrameSize(frame); });
}
unsigned int ZRVIldaAnimSize(ZRVDataGenerator* g, const unsigned int* frames, unsigned int count) {
  return Shielded([&] { return g->IldaAnimSize(frames, count); });
}
unsigned int ZRVIldaDataStream(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int* rgb,
                               const unsigned int* frames, unsigned int count, float xScale, float yScale, float angleX,
                               float angleY, bool closeCurve) {
  return Shielded(
      [&] { return g->IldaDataStream(x, y, m, rgb, frames, count, xScale, yScale, angleX, angleY, closeCurve); });
}
unsigned int ZRVIldaKeypointCount(ZRVDataGenerator* g, unsigned int request) {
  return Shielded([&] { return g->IldaKeypointCount(request); });
}
void ZRVLoadHersheyFile(ZRVDataGenerator* g, const char* fileName) {
  Shielded([&] { g->LoadHersheyFile(fileName); });
}
void ZRVClearHersheyData(ZRVDataGenerator* g) {
  Shielded([&] { g->ClearHersheyData(); });
}
unsigned int ZRVHersheyNumOC(ZRVDataGenerator* g) {
  return Shielded([&] { return g->HersheyNumOC(); });
}
unsigned int ZRVHersheyNumOR(ZRVDataGenerator* g) {
  return Shielded([&] { return g->HersheyNumOR(); });
}
unsigned int ZRVHersheyNumMath(ZRVDataGenerator* g) {
  return Shielded([&] { return g->HersheyNumMath(); });
}
unsigned int ZRVHersheyNumSym(ZRVDataGenerator* g) {
  return Shielded([&] { return g->HersheyNumSym(); });
}
unsigned int ZRVHersheyNumFonts(ZRVDataGenerator* g) {
  return Shielded([&] { return g->HersheyNumFonts(); });
}
unsigned int ZRVHersheyFontSize(ZRVDataGenerator* g) {
  return Shielded([&] { return g->HersheyFontSize(); });
}
unsigned int ZRVHersheyIndexMath(ZRVDataGenerator* g, unsigned int i) {
  return Shielded([&] { return g->HersheyIndexMath(i); });
}
unsigned int ZRVHersheyIndexSym(ZRVDataGenerator* g, unsigned int i) {
  return Shielded([&] { return g->HersheyIndexSym(i); });
}
int ZRVHersheyIndexFont(ZRVDataGenerator* g, unsigned int font, unsigned int entry) {
  return Shielded([&] { return g->HersheyIndexFont(font, entry); });
}
unsigned int ZRVHersheyDataSize(ZRVDataGenerator* g, const char* text, unsigned int length, unsigned int font) {
  return Shielded([&] { return g->HersheyDataSize(text, length, font); });
}
unsigned int ZRVHersheyGlyphsDataSize(ZRVDataGenerator* g, const unsigned int* glyphs, unsigned int count,
                                      bool occidental) {
  return Shielded([&] { return g->HersheyDataSize(glyphs, count, occidental); });
}
unsigned int ZRVHersheyDataStream(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, const char* text,
                                  unsigned int length, unsigned int font, float xScale, float yScale, bool closeCurve) {
  return Shielded([&] { return g->HersheyDataStream(x, y, m, text, length, font, xScale, yScale, closeCurve); });
}
unsigned int ZRVHersheyGlyphsDataStream(ZRVDataGenerator* g, float* x, float* y, unsigned char* m,
                                        const unsigned int* glyphs, unsigned int count, bool occidental, float xScale,
                                        float yScale, bool closeCurve) {
  return Shielded([&] { return g->HersheyDataStream(x, y, m, glyphs, count, occidental, xScale, yScale, closeCurve); });
}
unsigned int ZRVDigitalClockCurve(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int hours,
                                  unsigned int minutes, unsigned int seconds, unsigned int fontIndex, float fontArg1,
                                  float fontArg2, bool fontFlag) {
  return Shielded(
      [&] { return g->DigitalClockCurve(x, y, m, hours, minutes, seconds, fontIndex, fontArg1, fontArg2, fontFlag); });
}
unsigned int ZRVLoadPointFile(ZRVDataGenerator* g, const char* fileName) {
  return Shielded([&] { return g->LoadPointFile(fileName); });
}
unsigned int ZRVLoadPointTimeFile(ZRVDataGenerator* g, const char* fileName) {
  return Shielded([&] { return g->LoadPointTimeFile(fileName); });
}
void ZRVClearPointFileData(ZRVDataGenerator* g) {
  Shielded([&] { g->ClearPointFileData(); });
}
void ZRVClearPointTimeFileData(ZRVDataGenerator* g) {
  Shielded([&] { g->ClearPointTimeFileData(); });
}
void ZRVAllocPointFileData(ZRVDataGenerator* g, unsigned int numPoints) {
  Shielded([&] { g->AllocPointFileData(numPoints); });
}
void ZRVAllocPointTimeFileData(ZRVDataGenerator* g, unsigned int numPoints) {
  Shielded([&] { g->AllocPointTimeFileData(numPoints); });
}
unsigned int ZRVGetPointFileSize(ZRVDataGenerator* g) {
  return Shielded([&] { return g->GetPointFileSize(); });
}
unsigned int ZRVGetPointTimeFileSize(ZRVDataGenerator* g) {
  return Shielded([&] { return g->GetPointTimeFileSize(); });
}
unsigned int ZRVGetPointFileSps(ZRVDataGenerator* g) {
  return Shielded([&] { return g->GetPointFileSps(); });
}
unsigned int ZRVGetPointTimeFileSps(ZRVDataGenerator* g) {
  return Shielded([&] { return g->GetPointTimeFileSps(); });
}
unsigned int ZRVPointFileDataStream(ZRVDataGenerator* g, float* x, float* y, unsigned char* m) {
  return Shielded([&] { return g->PointFileDataStream(x, y, m); });
}
unsigned int ZRVPointTimeFileDataStream(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, float* t) {
  return Shielded([&] { return g->PointTimeFileDataStream(x, y, m, t); });
}
void ZRVExportFile(ZRVDataGenerator* g, const char* fileName, const float* x, const float* y, const unsigned char* m,
                   unsigned int count, unsigned int sps) {
  Shielded([&] { g->ExportFile(fileName, x, y, m, count, sps); });
}
float ZRVReadFileParameter(ZRVDataGenerator* g, const char* fileName, const char* key, float defaultValue) {
  return Shielded([&] { return g->ReadFileParameter(fileName, key, defaultValue); });
}
int ZRVgcd(ZRVDataGenerator* g, int a, int b) { return g->gcd(a, b); }
float ZRVsaw(ZRVDataGenerator* g, float t) { return g->saw(t); }
unsigned int ZRVLinearRasterPatternImaging(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, float xAmplitude,
                                           float yAmplitude, unsigned int numLines, unsigned int numPixels,
                                           float lineDuration, bool pixelHold, bool bidirectional, int digitalShift,
                                           float rotationAngle, unsigned int* sps, int minSps, int maxSps) {
  return Shielded([&] {
    return g->LinearRasterPatternImaging(x, y, m, xAmplitude, yAmplitude, numLines, numPixels, lineDuration, pixelHold,
                                         bidirectional, digitalShift, rotationAngle, Out(sps), minSps, maxSps);
  });
}
unsigned int ZRVPointToPointPattern(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, const float* pointX,
                                    const float* pointY, const unsigned char* pointM, const float* dwellTimes,
                                    int numPoints, float transitionTime, unsigned int* sps, int minSps, int maxSps) {
  return Shielded([&] {
    return g->PointToPointPattern(x, y, m, pointX, pointY, pointM, dwellTimes, numPoints, transitionTime, Out(sps),
                                  minSps, maxSps);
  });
}
unsigned int ZRVLaserWriterDataStream(ZRVDataGenerator* g, float* x, float* y, unsigned char* m,
                                      const unsigned char* raster, const int* lastDarkColumn, unsigned int numLines,
                                      unsigned int numPixels, float lineDuration, bool bidirectional, unsigned int* sps,
                                      int minSps, int maxSps, float xMin, float xMax, float yMin, float yMax) {
  return Shielded([&] {
    return g->LaserWriterDataStream(x, y, m, raster, lastDarkColumn, numLines, numPixels, lineDuration, bidirectional,
                                    Out(sps), minSps, maxSps, xMin, xMax, yMin, yMax);
  });
}
unsigned int ZRVLaserWriterInterpData1Seg(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, float x0, float y0,
                                          float x1, float y1, unsigned char digital, unsigned int numSamples,
                                          float startSpeed) {
  return Shielded(
      [&] { return g->LaserWriterInterpData1Seg(x, y, m, x0, y0, x1, y1, digital, numSamples, startSpeed); });
}
unsigned int ZRVLaserWriterInterpData(ZRVDataGenerator* g, const float* xIn, const float* yIn, const unsigned char* mIn,
                                      const unsigned int* samplesIn, const float* startSpeedIn, float* xOut,
                                      float* yOut, unsigned char* mOut, unsigned int numKeypoints) {
  return Shielded(
      [&] { return g->LaserWriterInterpData(xIn, yIn, mIn, samplesIn, startSpeedIn, xOut, yOut, mOut, numKeypoints); });
}
unsigned int ZRVCloseCurve(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int* index,
                           unsigned int numKeypoints, unsigned int numClosePoints, bool retrace) {
  return Shielded([&] { return g->CloseCurve(x, y, m, index, numKeypoints, numClosePoints, retrace); });
}
unsigned int ZRVOptimizeKeypoints(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int* index,
                                  unsigned int numKeypoints, unsigned int maxKeypoints) {
  return Shielded([&] { return g->OptimizeKeypoints(x, y, m, index, numKeypoints, maxKeypoints); });
}
void ZRVBoundingBox(ZRVDataGenerator* g, const float* x, const float* y, unsigned int count, float* minX, float* maxX,
                    float* minY, float* maxY) {
  Shielded([&] { g->BoundingBox(x, y, count, Out(minX), Out(maxX), Out(minY), Out(maxY)); });
}
unsigned int ZRVNormalizeData(ZRVDataGenerator* g, float* x, float* y, unsigned int count, float scale, float angle,
                              float minX, float maxX, float minY, float maxY) {
  return Shielded([&] { return g->NormalizeData(x, y, count, scale, angle, minX, maxX, minY, maxY); });
}
unsigned int ZRVAffineTransformData(ZRVDataGenerator* g, float* x, float* y, unsigned int count, float scale,
                                    float angle, float offsetX, float offsetY) {
  return Shielded([&] { return g->AffineTransformData(x, y, count, scale, angle, offsetX, offsetY); });
}
void ZRVInitProjectiveTransformMatrix(ZRVDataGenerator* g, const float* cornersX, const float* cornersY, bool inverse) {
  Shielded([&] { g->InitProjectiveTransformMatrix(cornersX, cornersY, inverse); });
}
unsigned int ZRVProjectiveTransformData(ZRVDataGenerator* g, float* x, float* y, unsigned int count) {
  return Shielded([&] { return g->ProjectiveTransformData(x, y, count); });
}
void ZRVInitRadialTransformMult(ZRVDataGenerator* g, bool enable) {
  Shielded([&] { g->InitRadialTransformMult(enable); });
}
unsigned int ZRVRadialTransformData(ZRVDataGenerator* g, float* x, float* y, unsigned int count, float strength) {
  return Shielded([&] { return g->RadialTransformData(x, y, count, strength); });
}
unsigned int ZRVTangentialTransformData(ZRVDataGenerator* g, float* x, float* y, unsigned int count, float strength) {
  return Shielded([&] { return g->TangentialTransformData(x, y, count, strength); });
}
unsigned int ZRVTransformData(ZRVDataGenerator* g, float* x, float* y, unsigned int count, float scale, float angle,
                              float offsetX, float offsetY, bool projective, float tangential, float radial) {
  return Shielded(
      [&] { return g->TransformData(x, y, count, scale, angle, offsetX, offsetY, projective, tangential, radial); });
}
unsigned int ZRVInterpolateData(ZRVDataGenerator* g, const float* xIn, const float* yIn, const unsigned char* mIn,
                                float* xOut, float* yOut, unsigned char* mOut, unsigned int numKeypoints,
                                unsigned int numSamples, float blankSpeed, float drawAccel, float blankAccel) {
  return Shielded([&] {
    return g->InterpolateData(xIn, yIn, mIn, xOut, yOut, mOut, numKeypoints, numSamples, blankSpeed, drawAccel,
                              blankAccel);
  });
}
unsigned int ZRVInterpolateDataLinear(ZRVDataGenerator* g, const float* xIn, const float* yIn, const unsigned char* mIn,
                                      float* xOut, float* yOut, unsigned char* mOut, unsigned int numKeypoints,
                                      unsigned int numSamples, float blankSpeed) {
  return Shielded(
      [&] { return g->InterpolateDataLinear(xIn, yIn, mIn, xOut, yOut, mOut, numKeypoints, numSamples, blankSpeed); });
}
unsigned int ZRVInterpolateDataTrapezoidal(ZRVDataGenerator* g, const float* xIn, const float* yIn,
                                           const unsigned char* mIn, float* xOut, float* yOut, unsigned char* mOut,
                                           unsigned int numKeypoints, unsigned int numSamples, float blankSpeed,
                                           float drawAccel, float blankAccel) {
  return Shielded([&] {
    return g->InterpolateDataTrapezoidal(xIn, yIn, mIn, xOut, yOut, mOut, numKeypoints, numSamples, blankSpeed,
                                         drawAccel, blankAccel);
  });
}
unsigned int ZRVInterpolateDataOptimized(ZRVDataGenerator* g, const float* xIn, const float* yIn,
                                         const unsigned char* mIn, const unsigned int* indexIn, float* xOut,
                                         float* yOut, unsigned char* mOut, unsigned int* indexOut,
                                         unsigned int numKeypoints, unsigned int numSamples) {
  return Shielded([&] {
    return g->InterpolateDataOptimized(xIn, yIn, mIn, indexIn, xOut, yOut, mOut, indexOut, numKeypoints, numSamples);
  });
}
void ZRVAllocInterpData(ZRVDataGenerator* g, unsigned int numKeypoints, unsigned int numSamples) {
  Shielded([&] { g->AllocInterpData(numKeypoints, numSamples); });
}
void ZRVClearInterpData(ZRVDataGenerator* g) {
  Shielded([&] { g->ClearInterpData(); });
}
unsigned int ZRVGenerateAnimations(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int* index,
                                   unsigned int animation, unsigned int numSamples, unsigned int numFrames) {
  return Shielded([&] { return g->GenerateAnimations(x, y, m, index, animation, numSamples, numFrames); });
}
unsigned int ZRVAnimationRotate(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int* index,
                                unsigned int numSamples, unsigned int numFrames) {
  return Shielded([&] { return g->AnimationRotate(x, y, m, index, numSamples, numFrames); });
}
unsigned int ZRVAnimationScroll(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int* index,
                                unsigned int numSamples, unsigned int numFrames) {
  return Shielded([&] { return g->AnimationScroll(x, y, m, index, numSamples, numFrames); });
}
unsigned int ZRVAnimationBounce(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, unsigned int* index,
                                unsigned int numSamples, unsigned int numFrames, float angle) {
  return Shielded([&] { return g->AnimationBounce(x, y, m, index, numSamples, numFrames, angle); });
}
void ZRVSetupSoftwareFilter(ZRVDataGenerator* g, unsigned int type, unsigned int order, float cutoffFrequency,
                            float sampleRate, bool twoChannels) {
  Shielded([&] { g->SetupSoftwareFilter(type, order, cutoffFrequency, sampleRate, twoChannels); });
}
void ZRVFilterData(ZRVDataGenerator* g, const float* x, const float* y, float* xOut, float* yOut, unsigned int count,
                   bool zeroPhase) {
  Shielded([&] { g->FilterData(x, y, xOut, yOut, count, zeroPhase); });
}
void ZRVFilterDataSingle(ZRVDataGenerator* g, const float* data, float* out, unsigned int count, bool zeroPhase) {
  Shielded([&] { g->FilterData(data, out, count, zeroPhase); });
}
void ZRVLoadIIRFilterParams(ZRVDataGenerator* g, const char* fileName) {
  Shielded([&] { g->LoadIIRFilterParams(fileName); });
}
unsigned int ZRVGetIIRFilterOrder(ZRVDataGenerator* g) {
  return Shielded([&] { return g->GetIIRFilterOrder(); });
}
unsigned int ZRVGetIIRFilterSps(ZRVDataGenerator* g) {
  return Shielded([&] { return g->GetIIRFilterSps(); });
}
