// Scan data for a MEMS-mirror controller: waveforms, curves, drawings, text and rasters, turned into evenly
// timed samples, transformed, animated and filtered. Needs no controller.
//
//   ZRVDataGenerator generator;
//   unsigned int corners = generator.AnalogClockCurve(kx, ky, km, 3, 0, 0, 0.9f);
//   generator.TransformData(kx, ky, corners, 0.8f, 0, 0, 0, false, 0, 0);
//   unsigned int samples = generator.InterpolateData(kx, ky, km, x, y, m, corners, 2000, 2, 0.2f, 0.2f);
//
// Two vocabularies, each three parallel arrays of equal length:
//   keypoints   the corners of a path. Straight segments join them; the segment from keypoint i to i + 1
//               carries the digital byte of keypoint i.
//   samples     what the controller plays: sample k goes out at k / sample rate.
//   x, y        positions, nominally -1..1
//   m           digital byte: 0 is blank (outputs off), anything else drawn. Curves and waveforms write 255.
//   index       optional fourth array, null where there is none: a number that travels along with each point,
//               such as the frame it came from
//
// Arrays are the caller's, allocated and freed by nobody else. Their room is not checked; every comment says
// how much is written. A required array that is null: 0, nothing written. Angles are in radians.
//
// Results are the number of points written; 0: nothing was written. A count of 0, or one that would divide by
// zero, gives 0. Nothing throws but a failed allocation. NaN and infinite positions do no harm, but what
// comes out for them is unspecified.
//
// Threads: an object serves one thread at a time; different objects are independent. Static members keep no
// state and may be called from anywhere.
#ifndef ZRV_DATA_GENERATOR_H
#define ZRV_DATA_GENERATOR_H

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "ZRVDefinitions.h"

typedef struct _IplImage IplImage;  // OpenCV's; its headers are needed only to make one

namespace zrv {
struct GeneratorContent;
}

namespace Dsp {
class Filter;
}

class ZRV_API ZRVDataGenerator {
 public:
  ZRVDataGenerator();
  ~ZRVDataGenerator();
  ZRVDataGenerator(const ZRVDataGenerator&) = delete;
  ZRVDataGenerator& operator=(const ZRVDataGenerator&) = delete;

  // --- Composite generators -------------------------------------------------------------------------
  //
  // Settings in, finished samples out: what most programs call.
  //
  //   ZRVScanSettings scan;                          // 20000 samples per second, 20 frames per second
  //   scan.ArrayCapacity = 50000;
  //   ZRVTextSettings text;
  //   text.Text = "Hello";
  //   generator.GenerateTextData(x, y, m, scan, text, numSamples, numFrames);
  //
  // In this order: keypoints or samples, cleaned (OptimizeKeypoints) and closed, transformed (TransformData),
  // interpolated, animated (GenerateAnimations) and filtered (FilterData, when scan.Filter says so).
  //
  //   x, y, m         scan.ArrayCapacity elements each. Null, all three: nothing is written, and the counts are
  //                   those of a call with arrays
  //   numSamples      of all frames together
  //   numFrames       frames, numSamples / numFrames samples each; those of an imported drawing may differ by a few
  //   sampleRate      to play them at, from those that choose their own rate
  //
  // Arrays too small, more than 16777216 samples, settings that give no samples, a file or font that is not there:
  // the counts and the rate are 0 and nothing is written. The work is done in scratch that the object keeps for
  // the next call.

  // Samples that the arrays must hold for these settings, and for the point file and the point-time file that are
  // loaded; never too small. For rasters and signals, and to the last sample, ask the generator itself with null
  // arrays.
  //   numKeypoints    of text (HersheyDataSize) or of the largest imported frame (IldaNumMaxPoints); 0: none, or a
  //                   clock with hands
  //   numFrames       of an imported drawing; never counted as fewer than those of the animation
  unsigned int CurvesDataSize(const ZRVScanSettings& scan, unsigned int numKeypoints = 0,
                              unsigned int numFrames = 0) const;

  void GenerateWaveformData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                            const ZRVWaveformSettings& waveform, unsigned int& numSamples, unsigned int& numFrames);
  void GenerateSpirographData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                              const ZRVSpirographSettings& spirograph, unsigned int& numSamples,
                              unsigned int& numFrames);
  void GenerateLissajousData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                             const ZRVLissajousSettings& lissajous, unsigned int& numSamples, unsigned int& numFrames);

  // Digits and text need a font: LoadHersheyFile.
  void GenerateClockData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                         const ZRVClockSettings& clock, unsigned int& numSamples, unsigned int& numFrames);
  void GenerateTextData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan, const ZRVTextSettings& text,
                        unsigned int& numSamples, unsigned int& numFrames);

  // One period of RQWaveform; as many samples as its frequency gives.
  void GenerateSignalData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                          const ZRVSignalSettings& signal, unsigned int& numSamples, unsigned int& numFrames,
                          unsigned int& sampleRate);

  // A file of any of three kinds. Loads it, as the Load calls do, in place of what was loaded.
  //   drawing         each frame takes SampleRate / RefreshRate samples, the dark way to the next one included.
  //                   Frames that are not there are skipped. Several frames are an animation by themselves:
  //                   scan.Animation is for a single one
  //   points          as they are, at the file's rate or else scan.SampleRate; or as keypoints, at the latter
  //   point times     as PointToPointPattern moves between them, at the file's rate or else one that it chooses
  //   rgb             null, or a colour 0xRRGGBB a sample, scan.ArrayCapacity of them: the drawing's, or white where
  //                   it has none; black where m is 0
  void GenerateImportFileData(float* x, float* y, unsigned char* m, unsigned int* rgb, const ZRVScanSettings& scan,
                              const ZRVImportSettings& file, unsigned int& numSamples, unsigned int& numFrames,
                              unsigned int& sampleRate);

  // Rasters and point to point, at a rate of their own choice between scan.SampleRateMin and SampleRateMax.
  void GenerateScanData(float* x, float* y, unsigned char* m, const ZRVScanSettings& scan,
                        const ZRVPatternSettings& pattern, unsigned int& numSamples, unsigned int& numFrames,
                        unsigned int& sampleRate);

  // --- Waveforms ----------------------------------------------------------------------------------
  //
  // One value a sample, no interpolation needed. With y null the signal goes to x and m is not touched;
  // otherwise x is a time axis from -1 upward (2 i / numSamples - 1), y the signal and m 255.
  // amplitude: peak value. numCycles: periods in the array, 1..numSamples. phase: start within the period.

  static unsigned int SineWaveform(float* x, float* y, unsigned char* m, unsigned int numSamples, float amplitude,
                                   unsigned int numCycles, float phase);

  // Rises from -amplitude over risePortion (0..1) of each period, then falls: 1 is a rising ramp, 0.5 a
  // symmetric triangle. A period is numSamples / numCycles whole samples and rises over one at least.
  static unsigned int SawtoothWaveform(float* x, float* y, unsigned char* m, unsigned int numSamples, float amplitude,
                                       unsigned int numCycles, float risePortion, float phase);

  // -amplitude for the first dutyCycle (0..1) of each period, +amplitude for the rest.
  static unsigned int SquareWaveform(float* x, float* y, unsigned char* m, unsigned int numSamples, float amplitude,
                                     unsigned int numCycles, float dutyCycle, float phase);

  // Uniform noise in -amplitude..amplitude. Seeds the C library's rand() with the time in seconds and draws from it:
  // calls within one second give the same noise, and a program that uses rand() itself finds it seeded anew. Not for
  // two threads at once.
  static unsigned int NoiseWaveform(float* data, unsigned int numSamples, float amplitude);

  // A two-axis test pattern: y one sine (or triangle) a period, x a sine at xMultiple times its rate. Makes
  // 12500 samples at most, to be played at outputRate samples per second.
  //   frequency       y rate in Hz, 1..40000
  //   xMultiple       x periods per y period; n = xMultiple * (samples a period, 80 at most)
  //   risePortion     rising part of the triangle, 0..1
  //   m               bit 0 always, 1 odd samples, 2 first half of a period, 3 first and last fortieth of each
  //                   half, 5 sample 0
  // A fit that leaves fewer than 2 samples a period: 0, and outputRate is not touched.
  static unsigned int RQWaveform(float* x, float* y, unsigned char* m, unsigned int& outputRate, bool triangleY,
                                 float amplitudeX, float amplitudeY, unsigned int frequency, float xMultiple,
                                 float risePortion, float reserved);

  // --- Curves -------------------------------------------------------------------------------------
  //
  // One point a sample, m 255. waveType 1 draws with the triangle wave saw() in place of sine and cosine.

  // From the centre outward in turnCount (1 and up) turns; the radius grows with the angle.
  static unsigned int SpiralCurve(float* x, float* y, unsigned char* m, unsigned int numSamples, float amplitudeX,
                                  float amplitudeY, unsigned int turnCount, float phase);

  // numSides sides of numSamples / numSides points each and the first corner again: writes up to
  // numSamples + 1. With fewer samples than sides: one point, the first corner (amplitude, 0).
  static unsigned int PolygonCurve(float* x, float* y, unsigned char* m, unsigned int numSamples, float amplitude,
                                   unsigned int numSides, float reserved);

  // A closed figure of one circle rolling on another, scaled so that its farthest point lies at amplitude.
  //   curveType       0 rose, 1 epicycloid, 2 epitrochoid, 3 hypocycloid, 4 hypotrochoid; else all (0, 0)
  //   ringA, ringB    radii of the fixed and the rolling circle (rose: numerator and denominator of its
  //                   petal ratio); ringB 0: nothing is written
  //   penDistance     of the pen from the rolling circle's centre (the trochoids)
  static unsigned int SpirographCurve(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                      unsigned int curveType, unsigned int waveType, float amplitude, int ringA,
                                      int ringB, int penDistance);

  // x = S(freqX a), y = S(freqY a + phase), a once around.
  //   modulation      0 none, 1 of the amplitude, 2 of the phase, by modFreq and modDepth, on y shifted by
  //                   modPhase. Other values write m alone.
  static unsigned int LissajousCurve(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                     unsigned int waveType, float amplitude, unsigned int freqX, unsigned int freqY,
                                     float phase, unsigned int modulation, float modDepth, unsigned int modFreq,
                                     float modPhase);

  // The three hands of a clock as 13 keypoints (always 13), to be interpolated.
  static unsigned int AnalogClockCurve(float* x, float* y, unsigned char* m, unsigned int hours, unsigned int minutes,
                                       unsigned int seconds, float amplitude);

  // A point bouncing in the box -1..1. Velocities are per sample, accelerations per sample squared;
  // restitution is what is left of a velocity after a bounce. The first point is one step from the start.
  static unsigned int DynamicsCurve(float* x, float* y, unsigned char* m, unsigned int numSamples, float startX,
                                    float startY, float velocityX, float velocityY, float accelX, float accelY,
                                    float restitution);

  // --- Drawings, text, files and rasters ------------------------------------------------------------
  //
  // The loaders report no errors. A file that cannot be opened, or is of another kind, leaves nothing loaded;
  // memory is taken in proportion to what the file holds, whatever it declares. What is loaded stays until the
  // next load, the matching Clear, or the end of the object. Only regular files are read.

  // Drawings and animations in the ILDA Image Data Transfer Format: 3D and 2D indexed (0, 1), 2D true colour (5).
  // Frames of other formats are counted, but their points are dark and at the origin. A file cut short keeps
  // the whole points that are there.
  void LoadIldaFile(const char* fileName);
  void ClearIldaData();

  unsigned int IldaFrameType() const;       // format code
  unsigned int IldaNumFrames() const;       // as the file declares them; frames are numbered from 1
  unsigned int IldaNumMaxPoints() const;    // of the largest frame
  unsigned int IldaNumTotalPoints() const;  // of all frames

  // Points of one frame; 0 when there is no such frame.
  unsigned int IldaFrameSize(unsigned int frame) const;

  // Points of count frames together. A stream of them needs room for count points more, for closing.
  unsigned int IldaAnimSize(const unsigned int* frames, unsigned int count) const;

  // Writes the listed frames as keypoints, each cleaned and closed by OptimizeKeypoints, then all together centred
  // and scaled to at most -xScale..xScale, and turned clockwise by yScale radians (it goes where
  // NormalizeData takes its angle). Frames that are not there are skipped.
  //   rgb             null, or a colour a keypoint: 0xRRGGBB; black for the indexed formats
  //   angleX          x = X cos(angleX) + Z sin(angleX)
  //   angleY          y = Y sin(angleY) + Z cos(angleY): pi / 2 shows a flat drawing upright, 0 gives its depth
  //   closeCurve      return blank to the first keypoint of each frame, from the last one even if it is dark
  // Room: IldaAnimSize(frames, count) + count.
  unsigned int IldaDataStream(float* x, float* y, unsigned char* m, unsigned int* rgb, const unsigned int* frames,
                              unsigned int count, float xScale, float yScale, float angleX, float angleY,
                              bool closeCurve);
  unsigned int IldaDataStream(float* x, float* y, unsigned char* m, const unsigned int* frames, unsigned int count,
                              float xScale, float yScale, float angleX, float angleY, bool closeCurve);

  // Keypoints that the last IldaDataStream wrote for its request number 0, 1, ...; 0 when there was none such.
  unsigned int IldaKeypointCount(unsigned int request) const;

  // Vector fonts: a file of Hershey glyphs, such as hershey.font that is installed with the library, or one made
  // by the font builder. A file cut short, or one with counts that contradict each other, is not loaded at all.
  void LoadHersheyFile(const char* fileName);
  void ClearHersheyData();

  unsigned int HersheyNumOC() const;    // occidental glyphs
  unsigned int HersheyNumOR() const;    // oriental glyphs
  unsigned int HersheyNumMath() const;  // entries of the index of mathematical signs
  unsigned int HersheyNumSym() const;   // entries of the index of symbols
  unsigned int HersheyNumFonts() const;
  unsigned int HersheyFontSize() const;  // characters a font, from the space on

  // Glyph numbers of the occidental set; -1 (all ones) when the entry is not there.
  unsigned int HersheyIndexMath(unsigned int i) const;
  unsigned int HersheyIndexSym(unsigned int i) const;
  // entry: character code - 32. -1 also for a character that the font lacks.
  int HersheyIndexFont(unsigned int font, unsigned int entry) const;

  // Keypoints of glyphs by number, or of length characters of text (one byte each, 32..127). Glyphs and
  // characters that are not there add nothing.
  unsigned int HersheyDataSize(const unsigned int* glyphs, unsigned int count, bool occidental) const;
  unsigned int HersheyDataSize(const char* text, unsigned int length, unsigned int font) const;

  // Writes glyphs as keypoints from left to right, dark between them, centred and scaled to at most
  // -xScale..xScale, and turned clockwise by yScale radians (0: upright). closeCurve: return along the same way;
  // otherwise straight and dark.
  // Room: 2 n - 1 with closeCurve, otherwise n + 1, where n is HersheyDataSize of the same glyphs.
  unsigned int HersheyDataStream(float* x, float* y, unsigned char* m, const unsigned int* glyphs, unsigned int count,
                                 bool occidental, float xScale, float yScale, bool closeCurve);
  unsigned int HersheyDataStream(float* x, float* y, unsigned char* m, const char* text, unsigned int length,
                                 unsigned int font, float xScale, float yScale, bool closeCurve);

  // "hh : mm : ss" as text: the last four arguments are font, xScale, yScale and closeCurve above. Room: as for
  // that text of 12 characters.
  unsigned int DigitalClockCurve(float* x, float* y, unsigned char* m, unsigned int hours, unsigned int minutes,
                                 unsigned int seconds, unsigned int fontIndex, float fontArg1, float fontArg2,
                                 bool fontFlag);

  // Point files: text, a sample a line: x and y (clamped to -1..1) and m (0..255); point-time files add the
  // time t in milliseconds (0..1000). A first line with the word sps gives the rate: "sps 20000". Lines that are
  // no numbers are left out. Both return the number of points.
  unsigned int LoadPointFile(const char* fileName);
  unsigned int LoadPointTimeFile(const char* fileName);
  void ClearPointFileData();
  void ClearPointTimeFileData();

  // Makes room for so many points, to load a file of up to that size without allocating. Drops what is held,
  // unless there is room already.
  void AllocPointFileData(unsigned int numPoints);
  void AllocPointTimeFileData(unsigned int numPoints);

  // Points of the file that was loaded last, of either kind: both read the same counter.
  unsigned int GetPointFileSize() const;
  unsigned int GetPointTimeFileSize() const;
  unsigned int GetPointFileSps() const;  // samples per second; 0 when the file gives none
  unsigned int GetPointTimeFileSps() const;

  // Copy what is held, at most GetPointFileSize() points, and return their number.
  unsigned int PointFileDataStream(float* x, float* y, unsigned char* m) const;
  unsigned int PointTimeFileDataStream(float* x, float* y, unsigned char* m, float* t) const;

  // Writes samples as a point file, numbers with six significant digits, with a header unless sps is 0. A
  // file that cannot be written is not reported.
  static void ExportFile(const char* fileName, const float* x, const float* y, const unsigned char* m,
                         unsigned int count, unsigned int sps);

  // The number after "key = " on the first line of a text file that holds that; hexadecimal when "0x" follows.
  // defaultValue when the file, the key or a number is not there.
  static float ReadFileParameter(const char* fileName, const char* key, float defaultValue);

  // Rasters choose their own sample rate, between minSps and maxSps, and store it in sps. They
  // return 0 and write nothing when that cannot be done or the counts are absurd. All but PointToPointPattern say
  // how much room they need: called with null x, y and m they set sps, write nothing and return the same count.

  // A raster of lines along y, stacked along x, with smooth turnarounds. Starts and ends at the same point.
  //   xAmplitude      of the stack of lines; 0 spread for a single line
  //   yAmplitude      of the sweep, turnarounds included
  //   numPixels       a line, at least 2
  //   lineDuration    of its active part, in seconds
  //   pixelHold       dwell at each pixel and step to the next, instead of a steady sweep
  //   bidirectional   scan every second line backwards, instead of flying back
  //   digitalShift    samples by which m is delayed, wrapping around
  //   rotationAngle   clockwise
  //   m               bit 0 active part of a line, bit 1 pixel clock, bit 2 first active sample of the
  //                   frame, bit 7 start of a line (one-way only)
  // Samples, from L = trunc(sps lineDuration) + 2 trunc(sps lineDuration 0.05) and
  // R = trunc(sps min(lineDuration, 0.01)): two-way (numLines + 2) L, one-way numLines (L + R) + 2 L. With up to 25000
  // pixels in all and at least one line, two-way 82500 at most and one-way 107500 (1 line of 25000 pixels; 20 lines of
  // 1190 one-way: 105196), with pixelHold 110000 and 143400 (1 line of 8333 pixels), unless minSps asks for more.
  unsigned int LinearRasterPattern(float* x, float* y, unsigned char* m, float xAmplitude, float yAmplitude,
                                   unsigned int numLines, unsigned int numPixels, float lineDuration, bool pixelHold,
                                   bool bidirectional, int digitalShift, float rotationAngle, unsigned int& sps,
                                   int minSps, int maxSps);

  // The same for imaging: four samples a pixel (one when maxSps forbids), no lead-in, one return at the end.
  // pixelHold is not used. m has no line-start bit; bit 6 marks the active part of backward lines. Samples, with
  // R = trunc(sps min(lineDuration / 2.5, 0.01)): two-way (numLines + 2) L, one-way numLines (L + R) + 2 L. Nothing
  // bounds them but maxSps: at 100000 20 lines of 1190 pixels can take 135192, so ask with null arrays.
  unsigned int LinearRasterPatternImaging(float* x, float* y, unsigned char* m, float xAmplitude, float yAmplitude,
                                          unsigned int numLines, unsigned int numPixels, float lineDuration,
                                          bool pixelHold, bool bidirectional, int digitalShift, float rotationAngle,
                                          unsigned int& sps, int minSps, int maxSps);

  // Dwells at each point with its digital byte, then moves on, dark. dwellTimes (one a point, the move included)
  // and transitionTime in milliseconds. An sps of 0 is replaced by one that makes about 50000 samples; any
  // other is kept. A dwell no longer than the move shortens this and all further moves to half of it.
  // Room: trunc(sps dwell / 1000) + 2 for each point, where an sps of 0 becomes max(minSps, maxSps) at most.
  unsigned int PointToPointPattern(float* x, float* y, unsigned char* m, const float* pointX, const float* pointY,
                                   const unsigned char* pointM, const float* dwellTimes, int numPoints,
                                   float transitionTime, unsigned int& sps, int minSps, int maxSps);

  // A bitmap burnt by the laser writer below, upright, x along its rows: resized to numPixels by numLines, dark
  // burns bright. Needs a library built with OpenCV.
  //   xAmplitude,     of an image at least as wide as high, x reaches xAmplitude and y yAmplitude height / width;
  //   yAmplitude      of a taller one, y reaches yAmplitude and x xAmplitude height / width: it gets wider. All held
  //                   in -1..1: the limits of the laser writer, within which the picture shrinks for its run-ups
  //   image           8 bits a channel (other depths, or null: 0); one channel, or three (blue, green, red). Other
  //                   channel counts are black
  //   binaryImage     full intensity below the threshold and none above; otherwise 255 - grey
  //   threshold       grey 0..255 below which a pixel counts as dark
  unsigned int ImageRasterPattern(float* x, float* y, unsigned char* m, float xAmplitude, float yAmplitude,
                                  unsigned int numLines, unsigned int numPixels, IplImage* image, bool binaryImage,
                                  int threshold, float lineDuration, bool bidirectional, unsigned int& sps, int minSps,
                                  int maxSps);

  // Burns an image of numLines by numPixels intensities along x: line 0 near yMin, pixel 0 near xMin, each pixel at
  // constant speed with its intensity in m. Before the first pixel of a line the mirror gets up to speed, after
  // the last dark one it comes to rest, both dark and within the limits: for that the picture shrinks about their
  // centre, x and y alike, by a twentieth or so. Nothing leaves the limits, nor -1..1. xMin above xMax mirrors the
  // picture. Lines without a dark pixel are skipped; the end returns to the start.
  //   raster          numLines * numPixels intensities, line by line
  //   lastDarkColumn  a line; what follows it is not burnt. -1: none
  //   lineDuration    of all pixels of a line, in seconds
  //   bidirectional   write every second written line backwards
  // Takes the most samples a pixel that keep the rate within maxSps. 0 when that leaves less than one, or a rate
  // below minSps, or when nothing is dark.
  unsigned int LaserWriterDataStream(float* x, float* y, unsigned char* m, const unsigned char* raster,
                                     const int* lastDarkColumn, unsigned int numLines, unsigned int numPixels,
                                     float lineDuration, bool bidirectional, unsigned int& sps, int minSps, int maxSps,
                                     float xMin, float xMax, float yMin, float yMax);

  // The laser writer's moves. One segment: numSamples positions from (x0, y0) on towards (x1, y1), which is not
  // written itself, under constant acceleration and with m = digital. startSpeed is the speed at the start over
  // the mean speed: 0 from rest, 1 steady, 2 to rest.
  static unsigned int LaserWriterInterpData1Seg(float* x, float* y, unsigned char* m, float x0, float y0, float x1,
                                                float y1, unsigned char digital, unsigned int numSamples,
                                                float startSpeed);
  // A path: segment i goes from keypoint i to i + 1 with the digital byte, sample count and start speed of
  // keypoint i. Writes the sum of the first numKeypoints - 1 counts.
  static unsigned int LaserWriterInterpData(const float* xIn, const float* yIn, const unsigned char* mIn,
                                            const unsigned int* samplesIn, const float* startSpeedIn, float* xOut,
                                            float* yOut, unsigned char* mOut, unsigned int numKeypoints);

  // --- Keypoints ----------------------------------------------------------------------------------

  // Makes a path of 2 keypoints or more return to its start, in place. Returns the new count.
  //   retrace         walk the path backwards: 2 numKeypoints - 1 keypoints
  //   numClosePoints  otherwise: that many keypoints straight back, blank. Nothing is added when it is 0 or
  //                   the path ends where it began.
  static unsigned int CloseCurve(float* x, float* y, unsigned char* m, unsigned int* index, unsigned int numKeypoints,
                                 unsigned int numClosePoints, bool retrace);
  static unsigned int CloseCurve(float* x, float* y, unsigned char* m, unsigned int numKeypoints,
                                 unsigned int numClosePoints, bool retrace);

  // Cleans a path for scanning, in place: trims blank ends, closes it, drops repeats, all but the first of a
  // run of blank keypoints and those on a straight line, and thins gentle bends when more than maxKeypoints
  // are left (0: the given count). Needs room for one more keypoint. Returns the new count, which thinning may
  // leave above or below maxKeypoints. Fewer than 3 keypoints, or none lit: unchanged.
  static unsigned int OptimizeKeypoints(float* x, float* y, unsigned char* m, unsigned int* index,
                                        unsigned int numKeypoints, unsigned int maxKeypoints);
  static unsigned int OptimizeKeypoints(float* x, float* y, unsigned char* m, unsigned int numKeypoints,
                                        unsigned int maxKeypoints);

  // --- Transforms ---------------------------------------------------------------------------------
  //
  // In place; all return count. Only x and y change.

  // count 0: all four 0.
  static void BoundingBox(const float* x, const float* y, unsigned int count, float& minX, float& maxX, float& minY,
                          float& maxY);

  // Scales and turns (clockwise) about the centre of the given bounds. One scale serves both axes: the span from
  // the lowest to the highest of all four bounds becomes 2 scale, so that bounds about the origin fill
  // -scale..scale along their larger side. A span of 0 puts every point at (0, 0).
  static unsigned int NormalizeData(float* x, float* y, unsigned int count, float scale, float angle, float minX,
                                    float maxX, float minY, float maxY);

  // Scales and turns (clockwise) about the centre of the bounding box, then shifts, then clips to -1..1.
  // A scale within 0.01 of 1, an angle within 0.0001 and offsets within 0.01 of 0 leave the points as
  // they are, unclipped.
  static unsigned int AffineTransformData(float* x, float* y, unsigned int count, float scale, float angle,
                                          float offsetX, float offsetY);

  // Sets the map that takes the unit square to the quadrilateral with the given four corners, the images of
  // (0,0), (1,0), (1,1), (0,1) in this order. Points of the field -1..1 are first brought to the unit square, and what
  // the map gives is the result: with null corners, the default, -1..1 comes out at 0.5..1.
  // inverse: the other way round, from the quadrilateral by the inverted matrix to the unit square and to -1..1. Of the
  // default that is the map back. Of other corners it is not: the matrix has at entry 2 what belongs at entry 5,
  // which keeps its value. Kept on purpose.
  void InitProjectiveTransformMatrix(const float* cornersX, const float* cornersY, bool inverse);
  unsigned int ProjectiveTransformData(float* x, float* y, unsigned int count) const;

  // enable: correct by the cubic table; otherwise by (strength q + 1) sqrt(q).
  void InitRadialTransformMult(bool enable);

  // q = radius^2 / sqrt(2). strength * q is meant to stay within 0..1; beyond, the nearest table entry holds.
  unsigned int RadialTransformData(float* x, float* y, unsigned int count, float strength) const;

  // Tangent distortion: a radius r becomes r f(r) / f(1), f(r) = strength r / tan(strength r). The centre and points at
  // radius 1 keep their place. Where strength r is 1e-8 or less, as it is everywhere for a negative strength, it
  // multiplies the point itself; a strength of 0 counts as 1e-8. Kept on purpose.
  static unsigned int TangentialTransformData(float* x, float* y, unsigned int count, float strength);

  // Affine, projective, radial, tangential, in this order. The last two are left out within 0.001 of 0.
  unsigned int TransformData(float* x, float* y, unsigned int count, float scale, float angle, float offsetX,
                             float offsetY, bool projective, float tangential, float radial) const;

  // --- Interpolation ------------------------------------------------------------------------------
  //
  // Keypoints in, evenly timed samples out; each sample has the digital byte of its segment. A blank segment
  // is one whose byte is 0.
  //   blankSpeed      how many times faster the beam crosses a blank segment than a drawn one
  //   drawAccel,      part of a segment's length (0..0.5) spent accelerating at its start and, equally, slowing
  //   blankAccel      down at its end
  // Room: all may write more than numSamples, since every segment gets whole samples: provide
  // numSamples + numKeypoints. That is never exceeded.

  // Clamps blankSpeed to 1..10 and the fractions to 0..0.5, then runs the trapezoidal profile, or the linear
  // one when both fractions are below 0.0001. With at least as many keypoints as samples the keypoints are
  // copied instead (room for numKeypoints) and counted. No samples or no keypoints: returns numKeypoints,
  // writes nothing. One keypoint fills all samples; the result is then 1 (linear) or 0 (trapezoidal). The index
  // arrays are both given or both null.
  unsigned int InterpolateData(const float* xIn, const float* yIn, const unsigned char* mIn, const unsigned int* idxIn,
                               float* xOut, float* yOut, unsigned char* mOut, unsigned int* idxOut,
                               unsigned int numKeypoints, unsigned int numSamples, float blankSpeed, float drawAccel,
                               float blankAccel);
  unsigned int InterpolateData(const float* xIn, const float* yIn, const unsigned char* mIn, float* xOut, float* yOut,
                               unsigned char* mOut, unsigned int numKeypoints, unsigned int numSamples,
                               float blankSpeed, float drawAccel, float blankAccel);

  // Constant speed. Ends with a closing sample: x and m of the last keypoint, and as y that keypoint's m (not
  // its y).
  unsigned int InterpolateDataLinear(const float* xIn, const float* yIn, const unsigned char* mIn, float* xOut,
                                     float* yOut, unsigned char* mOut, unsigned int numKeypoints,
                                     unsigned int numSamples, float blankSpeed);

  // Accelerates, cruises and slows down on every segment of 6 samples or more. The last keypoint itself is not
  // written, which suits closed paths. Segments of less than a sample add one each to numSamples.
  unsigned int InterpolateDataTrapezoidal(const float* xIn, const float* yIn, const unsigned char* mIn, float* xOut,
                                          float* yOut, unsigned char* mOut, unsigned int numKeypoints,
                                          unsigned int numSamples, float blankSpeed, float drawAccel, float blankAccel);

  // Time and acceleration follow the turning angles at both ends of a segment; the path is taken as closed.
  // With at least as many keypoints as samples, numSamples is raised to 1.25 numKeypoints (room for that plus
  // numKeypoints). One keypoint fills all samples, and the result is 0. The index arrays are both given or both
  // null.
  unsigned int InterpolateDataOptimized(const float* xIn, const float* yIn, const unsigned char* mIn,
                                        const unsigned int* idxIn, float* xOut, float* yOut, unsigned char* mOut,
                                        unsigned int* idxOut, unsigned int numKeypoints, unsigned int numSamples);
  unsigned int InterpolateDataOptimized(const float* xIn, const float* yIn, const unsigned char* mIn, float* xOut,
                                        float* yOut, unsigned char* mOut, unsigned int numKeypoints,
                                        unsigned int numSamples);

  // Scratch of the interpolators, one float a keypoint, grown in steps of 10000 and reused from call to call.
  // They grow it themselves; numSamples is not used.
  void AllocInterpData(unsigned int numKeypoints, unsigned int numSamples);
  void ClearInterpData();

  // --- Animations ---------------------------------------------------------------------------------
  //
  // Turn the frame of samples 0 .. numSamples - 1 into numFrames frames behind it in the same arrays, which hold
  // numSamples * numFrames samples; that is the result. The last sample of the first frame is blanked (m and
  // index 0), so that the jump to the next frame is dark, and so are samples that leave the field -1..1, but
  // for the rotation. No frames or no samples: 0.

  // animation 1 rotate, 2 scroll, 3 bounce upward; others change nothing and return numSamples.
  static unsigned int GenerateAnimations(float* x, float* y, unsigned char* m, unsigned int* idx,
                                         unsigned int animation, unsigned int numSamples, unsigned int numFrames);
  static unsigned int GenerateAnimations(float* x, float* y, unsigned char* m, unsigned int animation,
                                         unsigned int numSamples, unsigned int numFrames);

  // Once around, clockwise, about the centre of the bounding box.
  static unsigned int AnimationRotate(float* x, float* y, unsigned char* m, unsigned int* idx, unsigned int numSamples,
                                      unsigned int numFrames);
  static unsigned int AnimationRotate(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                      unsigned int numFrames);

  // From left to right through the field; the last frame is the dark way back. The first frame is moved off the
  // field to the left as well.
  static unsigned int AnimationScroll(float* x, float* y, unsigned char* m, unsigned int* idx, unsigned int numSamples,
                                      unsigned int numFrames);
  static unsigned int AnimationScroll(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                      unsigned int numFrames);

  // Starts in the direction of angle (0 is right) at 4 / numFrames a frame; the centre bounces off the edges.
  static unsigned int AnimationBounce(float* x, float* y, unsigned char* m, unsigned int* idx, unsigned int numSamples,
                                      unsigned int numFrames, float angle);
  static unsigned int AnimationBounce(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                      unsigned int numFrames, float angle);

  // --- Output filter ------------------------------------------------------------------------------
  //
  // A low pass that softens finished samples before they go to the mirror:
  //
  //   generator.SetupSoftwareFilter(1, 5, 1000.0f, 20000.0f, true);           // Bessel, 5 poles, 1 kHz
  //   generator.FilterData(x, y, xSoft, ySoft, numSamples, false);

  // Replaces the filter by one that starts from rest.
  //   type              1 Bessel, 2 Butterworth, 3 Chebyshev I (1 dB ripple), 4 Chebyshev II (48 dB stopband),
  //                     5 Elliptic (1 and 48 dB), 6 Legendre, 7 the coefficients of LoadIIRFilterParams(), which
  //                     no other argument but twoChannels concerns; any other: no filter
  //   order             number of poles, held in 1..20
  //   cutoffFrequency   Hz: -3 dB for types 1, 2 and 6, end of the ripple for 3 and 5, start of the stopband
  //                     for 4. Held in 0.00001..0.49999 of the sample rate; not-a-number: the lowest
  //   sampleRate        samples a second; not above 0, or not finite: the lowest cutoff
  //   twoChannels       for x and y together, else for one array
  void SetupSoftwareFilter(unsigned int type, unsigned int order, float cutoffFrequency, float sampleRate,
                           bool twoChannels);

  // Filters count samples, xOut may be x and yOut y. Without a filter, or with one for the other number of
  // channels, the samples are copied; one channel is also copied when count is not above the filter's order.
  // A null array: nothing happens.
  //
  // The state goes on from call to call, so that a long sequence can be filtered in pieces. A sample that is
  // not a number, infinite or beyond 5e33 counts as the last good one before it, at first as 0.
  //
  // zeroPhase: forward, then backward, over the pattern repeated three times, as for one that is played in a
  // loop; the middle is kept. Nothing is delayed, and every attenuation in dB doubles. The output arrays must
  // have room for 3 * count values; where a filter applies, all are written. More than 1431655765 samples
  // are copied.
  void FilterData(const float* x, const float* y, float* xOut, float* yOut, unsigned int count, bool zeroPhase);
  void FilterData(const float* data, float* out, unsigned int count, bool zeroPhase);

  // Reads coefficients for filter type 7. Little-endian: u32 sample rate or 0 (not used by the filter), u32
  // order N, N + 1 doubles b[0]..b[N] (numerator), N + 1 doubles a[0]..a[N] (denominator); N is held in 1..31.
  // Everything is divided by a[0]; with a[0] 0, or a coefficient that is not finite, type 7 leaves no filter.
  // A file that cannot be opened, or without its first 8 bytes: order 0 and coefficients that change nothing.
  // Coefficients cut short change nothing either, but the order is kept.
  void LoadIIRFilterParams(const char* fileName);

  // Of the filter last set up, or the coefficients last loaded, whichever came later; 0 at first. The sample
  // rate is rounded down to whole samples a second; for coefficients it is the first value of their file.
  unsigned int GetIIRFilterOrder() const { return iirFilterOrder; }
  unsigned int GetIIRFilterSps() const { return iirFilterSps; }

  // --- Helpers ------------------------------------------------------------------------------------

  // Greatest common divisor by Euclid's rule; the sign follows the truncating remainder. gcd(7, 0) is 7.
  static int gcd(int a, int b);

  // Triangle wave with the period (2 pi) and phase of a sine, for t of 0 and up.
  static float saw(float t);

 private:
  // Keypoints that need no interpolation, as they are. Returns count.
  static unsigned int CopyKeypointsToSamples(const float* xIn, const float* yIn, const unsigned char* mIn, float* xOut,
                                             float* yOut, unsigned char* mOut, int count);

  std::array<float, 9> projectiveMatrix;  // row-major 3x3
  std::array<float, 101> radialMult;      // by strength 0.00..1.00
  bool projectiveInverse = false;
  bool radialEnable = true;

  // Loaded drawings, fonts and point files.
  std::unique_ptr<zrv::GeneratorContent> content;

  // Coefficients for a filter given by them; as they are here, they change nothing.
  struct IIRCoefficients {
    unsigned int sps = 0;
    unsigned int order = 0;
    std::array<double, 32> numerator = {1.0};
    std::array<double, 32> denominator = {1.0};
  };

  std::unique_ptr<Dsp::Filter> softwareFilter;
  unsigned int iirFilterOrder = 0;
  unsigned int iirFilterSps = 0;
  IIRCoefficients iirCoefficients;

  std::unique_ptr<float[]> interpData;
  unsigned int interpDataSize = 0;
  static constexpr unsigned int blankLevel = 1;  // digital bytes below it mark blank segments
};

#endif
