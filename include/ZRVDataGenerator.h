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

class ZRV_API ZRVDataGenerator {
 public:
  ZRVDataGenerator();
  ~ZRVDataGenerator();
  ZRVDataGenerator(const ZRVDataGenerator&) = delete;
  ZRVDataGenerator& operator=(const ZRVDataGenerator&) = delete;

  // --- Waveforms ----------------------------------------------------------------------------------
  //
  // One value a sample, no interpolation needed. With y null the signal goes to x and m is not touched;
  // otherwise x is a time axis from -1 upward (2 i / numSamples - 1), y the signal and m 255.
  // amplitude: peak value. numCycles: periods in the array, 1..numSamples. phase: start within the period.

  static unsigned int SineWaveform(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                   float amplitude, unsigned int numCycles, float phase);

  // Rises from -amplitude over risePortion (0..1) of each period, then falls: 1 is a rising ramp, 0.5 a
  // symmetric triangle. A period is numSamples / numCycles whole samples and rises over one at least.
  static unsigned int SawtoothWaveform(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                       float amplitude, unsigned int numCycles, float risePortion, float phase);

  // -amplitude for the first dutyCycle (0..1) of each period, +amplitude for the rest.
  static unsigned int SquareWaveform(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                     float amplitude, unsigned int numCycles, float dutyCycle, float phase);

  // Uniform noise in -amplitude..amplitude. Seeds the C library's generator with the time in seconds: calls
  // within one second give the same noise.
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
  static unsigned int SpiralCurve(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                  float amplitudeX, float amplitudeY, unsigned int turnCount, float phase);

  // numSides sides of numSamples / numSides points each and the first corner again: writes up to
  // numSamples + 1. With fewer samples than sides: one point, the first corner (amplitude, 0).
  static unsigned int PolygonCurve(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                   float amplitude, unsigned int numSides, float reserved);

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
                                     unsigned int waveType, float amplitude, unsigned int freqX,
                                     unsigned int freqY, float phase, unsigned int modulation, float modDepth,
                                     unsigned int modFreq, float modPhase);

  // The three hands of a clock as 13 keypoints (always 13), to be interpolated.
  static unsigned int AnalogClockCurve(float* x, float* y, unsigned char* m, unsigned int hours,
                                       unsigned int minutes, unsigned int seconds, float amplitude);

  // A point bouncing in the box -1..1. Velocities are per sample, accelerations per sample squared;
  // restitution is what is left of a velocity after a bounce. The first point is one step from the start.
  static unsigned int DynamicsCurve(float* x, float* y, unsigned char* m, unsigned int numSamples, float startX,
                                    float startY, float velocityX, float velocityY, float accelX, float accelY,
                                    float restitution);

  // --- Drawings, text, files and rasters ------------------------------------------------------------

  // --- Keypoints ----------------------------------------------------------------------------------

  // Makes a path of 2 keypoints or more return to its start, in place. Returns the new count.
  //   retrace         walk the path backwards: 2 numKeypoints - 1 keypoints
  //   numClosePoints  otherwise: that many keypoints straight back, blank. Nothing is added when it is 0 or
  //                   the path ends where it began.
  static unsigned int CloseCurve(float* x, float* y, unsigned char* m, unsigned int* index,
                                 unsigned int numKeypoints, unsigned int numClosePoints, bool retrace);
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
  static void BoundingBox(const float* x, const float* y, unsigned int count, float& minX, float& maxX,
                          float& minY, float& maxY);

  // Scales and turns (clockwise) so that the given bounds fill -scale..scale along their larger side. Bounds
  // without extent put every point at the centre.
  static unsigned int NormalizeData(float* x, float* y, unsigned int count, float scale, float angle, float minX,
                                    float maxX, float minY, float maxY);

  // Scales and turns (clockwise) about the centre of the bounding box, then shifts, then clips to -1..1.
  // A scale within 0.01 of 1, an angle within 0.0001 and offsets within 0.01 of 0 leave the points as
  // they are, unclipped.
  static unsigned int AffineTransformData(float* x, float* y, unsigned int count, float scale, float angle,
                                          float offsetX, float offsetY);

  // Sets the map that takes the unit square to the quadrilateral with the given four corners, the images of
  // (0,0), (1,0), (1,1), (0,1) in this order. Null: the default, -1..1 to 0..1. inverse: the map back.
  void InitProjectiveTransformMatrix(const float* cornersX, const float* cornersY, bool inverse);
  unsigned int ProjectiveTransformData(float* x, float* y, unsigned int count) const;

  // enable: correct by the cubic table; otherwise by (strength q + 1) sqrt(q).
  void InitRadialTransformMult(bool enable);

  // q = radius^2 / sqrt(2). strength * q is meant to stay within 0..1; beyond, the nearest table entry holds.
  unsigned int RadialTransformData(float* x, float* y, unsigned int count, float strength) const;

  // Tangent distortion; points at radius 1 keep their place.
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
  // writes nothing. One keypoint fills all samples; the result is then 1 (linear) or 0 (trapezoidal).
  unsigned int InterpolateData(const float* xIn, const float* yIn, const unsigned char* mIn, float* xOut,
                               float* yOut, unsigned char* mOut, unsigned int numKeypoints,
                               unsigned int numSamples, float blankSpeed, float drawAccel, float blankAccel);

  // Constant speed. Ends with a closing sample: x and m of the last keypoint, and as y that keypoint's m (not
  // its y).
  unsigned int InterpolateDataLinear(const float* xIn, const float* yIn, const unsigned char* mIn, float* xOut,
                                     float* yOut, unsigned char* mOut, unsigned int numKeypoints,
                                     unsigned int numSamples, float blankSpeed);

  // Accelerates, cruises and slows down on every segment of 6 samples or more. The last keypoint itself is not
  // written, which suits closed paths. Segments of less than a sample add one each to numSamples.
  unsigned int InterpolateDataTrapezoidal(const float* xIn, const float* yIn, const unsigned char* mIn,
                                          float* xOut, float* yOut, unsigned char* mOut,
                                          unsigned int numKeypoints, unsigned int numSamples, float blankSpeed,
                                          float drawAccel, float blankAccel);

  // Time and acceleration follow the turning angles at both ends of a segment; the path is taken as closed.
  // With at least as many keypoints as samples, numSamples is raised to 1.25 numKeypoints (room for that plus
  // numKeypoints). One keypoint fills all samples, and the result is 0. The index arrays are both given or both
  // null.
  unsigned int InterpolateDataOptimized(const float* xIn, const float* yIn, const unsigned char* mIn,
                                        const unsigned int* idxIn, float* xOut, float* yOut, unsigned char* mOut,
                                        unsigned int* idxOut, unsigned int numKeypoints,
                                        unsigned int numSamples);
  unsigned int InterpolateDataOptimized(const float* xIn, const float* yIn, const unsigned char* mIn,
                                        float* xOut, float* yOut, unsigned char* mOut, unsigned int numKeypoints,
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
  static unsigned int AnimationRotate(float* x, float* y, unsigned char* m, unsigned int* idx,
                                      unsigned int numSamples, unsigned int numFrames);
  static unsigned int AnimationRotate(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                      unsigned int numFrames);

  // From left to right through the field; the last frame is the dark way back. The first frame is moved off the
  // field to the left as well.
  static unsigned int AnimationScroll(float* x, float* y, unsigned char* m, unsigned int* idx,
                                      unsigned int numSamples, unsigned int numFrames);
  static unsigned int AnimationScroll(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                      unsigned int numFrames);

  // Starts in the direction of angle (0 is right) at 4 / numFrames a frame; the centre bounces off the edges.
  static unsigned int AnimationBounce(float* x, float* y, unsigned char* m, unsigned int* idx,
                                      unsigned int numSamples, unsigned int numFrames, float angle);
  static unsigned int AnimationBounce(float* x, float* y, unsigned char* m, unsigned int numSamples,
                                      unsigned int numFrames, float angle);

  // --- Output filter ------------------------------------------------------------------------------

  // --- Helpers ------------------------------------------------------------------------------------

  // Greatest common divisor by Euclid's rule; the sign follows the truncating remainder. gcd(7, 0) is 7.
  static int gcd(int a, int b);

  // Triangle wave with the period (2 pi) and phase of a sine, for t of 0 and up.
  static float saw(float t);

 private:
  // Keypoints that need no interpolation, as they are. Returns count.
  static unsigned int CopyKeypointsToSamples(const float* xIn, const float* yIn, const unsigned char* mIn,
                                             float* xOut, float* yOut, unsigned char* mOut, int count);

  std::array<float, 9> projectiveMatrix;  // row-major 3x3
  std::array<float, 101> radialMult;      // by strength 0.00..1.00
  bool projectiveInverse = false;
  bool radialEnable = true;

  // Drawings, text, files and rasters: members.

  // Output filter: members.

  std::unique_ptr<float[]> interpData;
  unsigned int interpDataSize = 0;
  static constexpr unsigned int blankLevel = 1;  // digital bytes below it mark blank segments
};

#endif
