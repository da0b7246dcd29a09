#include "points.h"

#ifdef ZRV_TEST_OPENCV
#include <opencv2/core/core_c.h>
#endif

namespace {

using namespace zrv_test;

struct Job {
  std::vector<unsigned char> raster = {};
  std::vector<int> lastDark = {};
  unsigned pixels = 1;
  float duration = 0.001f;
  bool twoWay = false;
  int minSps = 0, maxSps = 100000;
  float xMin = -0.5f, xMax = 0.5f, yMin = -0.4f, yMax = 0.4f;
};

// Asks for the count first, as a user does.
struct Burnt {
  Points out;
  unsigned count = 0, sps = 0;

  explicit Burnt(const Job& job) {
    const unsigned room = Write(job, nullptr, nullptr, nullptr);
    out = Points(room + 8);
    count = Write(job, out.x.data(), out.y.data(), out.m.data());
    EXPECT_EQ(count, room);
    EXPECT_TRUE(out.UntouchedFrom(room));
  }

  unsigned Write(const Job& job, float* x, float* y, unsigned char* m) {
    Generator g;
    return g.LaserWriterDataStream(x, y, m, job.raster.data(), job.lastDark.data(),
                                   static_cast<unsigned>(job.lastDark.size()), job.pixels, job.duration, job.twoWay,
                                   sps, job.minSps, job.maxSps, job.xMin, job.xMax, job.yMin, job.yMax);
  }
};

// 3 lines of 4 pixels, the middle one blank; 10 samples a pixel at 40 kHz for lines of 1 ms.
Job SmallJob(bool twoWay) {
  return {.raster = {10, 20, 30, 40, 1, 2, 3, 4, 50, 60, 70, 80},
          .lastDark = {2, -1, 3},
          .pixels = 4,
          .twoWay = twoWay,
          .maxSps = 40000};
}

// Of the picture, for its run-ups: lines of 40 samples are 39 steps long, and at each end 3 more are needed, half the
// 4 samples of a run-up and one.
constexpr double kInside = 39.0 / (39 + 2 * 3);

TEST(LaserWriter, BurnsEachPixelInItsPlaceAndOnlyUpToTheLastDark) {
  for (const bool twoWay : {false, true}) {
    SCOPED_TRACE(twoWay);
    const Burnt b(SmallJob(twoWay));
    EXPECT_EQ(b.sps, 40000u);
    // Lines of 30 and 40 with 4 before and after each, and two moves: of 1.03 and 1.20 times the span, or of 0.72
    // and 0.69 times, whose square root counts. The span takes 41 samples, 0.001 being a hair more in binary;
    // halves of a move are rounded up.
    EXPECT_EQ(b.count, 38u + 48 + (twoWay ? 36 + 36 : 44 + 50));
    // Sample k of a line lies k / 39 of the way across, in either direction.
    size_t lit = 0;
    for (size_t i = 0; i < b.count; ++i) {
      if (b.out.m[i] == 0) continue;
      const size_t line = lit / 30 > 0, at = lit++ - 30 * line, k = twoWay && line == 1 ? 39 - at : at;
      EXPECT_EQ(b.out.m[i], 10 * (1 + 4 * line + k / 10)) << i;
      b.out.ExpectAt(i, {{kInside * (static_cast<double>(k) / 39 - 0.5), kInside * (line == 0 ? -0.4 : 0.4)}});
    }
    EXPECT_EQ(lit, 70u);
  }
}

TEST(LaserWriter, GetsUpToSpeedAndComesToRestInTheDark) {
  const Burnt b(SmallJob(false));
  const double step = kInside / 39, left = kInside * -0.5,
               y = kInside * -0.4;  // the pattern starts with the run-up of its first line: half a t^2 of 4 samples
  for (size_t i = 0; i <= 4; ++i) {
    b.out.ExpectAt(i, {{left - 2 * step + static_cast<double>(i * i) / 8 * step, y}});
    EXPECT_EQ(b.out.m[i] == 0, i < 4);
  }
  const size_t end = 4 + 30;
  for (size_t i = 0; i <= 4; ++i) {
    const double toGo = static_cast<double>(4 - i);
    b.out.ExpectAt(end + i, {{left + 30 * step + (2 - toGo * toGo / 8) * step, y}});
  }
}

TEST(LaserWriter, RatesThatFitAndThoseThatDoNot) {
  const auto expect = [](const char* name, unsigned pixels, float duration, int minSps, int maxSps, unsigned sps) {
    const Burnt b(Job{.raster = std::vector<unsigned char>(pixels, 9),
                      .lastDark = {0},
                      .pixels = pixels,
                      .duration = duration,
                      .minSps = minSps,
                      .maxSps = maxSps});
    EXPECT_EQ(b.sps, sps) << name;  // 0: refused
    EXPECT_EQ(b.count != 0, sps != 0) << name;
  };
  expect("rounded down to a whole number", 4, 0.001f, 0, 43999, 40000);
  expect("0.01 is a hair less in binary", 100, 0.01f, 0, 100000, 100000);
  expect("less than one", 41, 0.001f, 0, 40000, 0);
  expect("none between lowest and highest", 4, 0.001f, 41000, 43999, 0);
  expect("no duration", 4, 0.0f, 0, 40000, 0);
  expect("no number", 4, NAN, 0, 40000, 0);
  expect("absurdly long", 4, 1e9f, 0, 40000, 0);
  expect("no rate", 4, 0.001f, 0, -1, 0);
  EXPECT_EQ(Burnt(Job{.raster = {1, 2}, .lastDark = {-1}, .pixels = 2}).count, 0u) << "nothing dark";
  EXPECT_EQ(Burnt(Job{}).count, 0u) << "no lines";
}

// Mirrored limits, and some beyond the field, too; run-ups and moves included. The picture keeps its proportions.
TEST(LaserWriter, NeverLeavesItsLimits) {
  Random random(3);
  const auto limit = [&] { return static_cast<float>(random() % 2001) / 1000 - 1; };
  for (int round = 0; round < 200; ++round) {
    Job job = SmallJob(round % 2 != 0);
    job.pixels = 1 + random() % 12;
    job.raster.assign(3 * job.pixels, 200);
    job.lastDark = {static_cast<int>(random() % job.pixels), static_cast<int>(job.pixels) - 1, 0};
    job.xMin = limit(), job.xMax = limit(), job.yMin = limit(), job.yMax = limit();
    const auto [left, right] = std::minmax(job.xMin, job.xMax);
    const auto [bottom, top] = std::minmax(job.yMin, job.yMax);
    const float lowest = bottom, highest = top;
    if (round % 5 == 0) job.yMin *= 7, job.yMax *= 7;
    const Burnt b(job);
    for (size_t i = 0; i < b.count; ++i) {
      ASSERT_TRUE(b.out.x[i] >= left && b.out.x[i] <= right) << round << " " << i;
      if (round % 5 == 0) ASSERT_LE(std::abs(b.out.y[i]), 1.0f) << round;
      else ASSERT_TRUE(b.out.y[i] >= lowest && b.out.y[i] <= highest) << round << " " << i;
    }
  }
}

#ifdef ZRV_TEST_OPENCV
struct BurntImage {
  Points out{60000};
  IplImage* image;
  unsigned count = 0, sps = 0;

  BurntImage(int width, int height, int depth, int channels, int value = 255)
      : image(cvCreateImage(cvSize(width, height), depth, channels)) {
    cvSet(image, cvScalarAll(value));
  }
  ~BurntImage() { cvReleaseImage(&image); }

  void Set(int row, std::initializer_list<unsigned char> last) {
    std::copy(last.begin(), last.end(), image->imageData + row * image->widthStep + 3 * image->nChannels);
  }
  // The brightest sample, 0 when there is none.
  int Burn(unsigned lines, unsigned pixels, bool binary, int threshold, float xAmplitude = 0.5f) {
    Generator g;
    count = g.ImageRasterPattern(out.x.data(), out.y.data(), out.m.data(), xAmplitude, 0.5f, lines, pixels, image,
                                 binary, threshold, 0.001f, false, sps, 0, 40000);
    return count == 0 ? 0 : *std::max_element(out.m.begin(), out.m.begin() + count);
  }
  // The last lit sample.
  XY End() const {
    size_t i = count;
    while (i > 0 && out.m[i - 1] == 0) --i;
    return {out.x[i - 1], out.y[i - 1]};
  }
};

TEST(ImageRaster, GreyValuesThresholdAndOrientation) {
  BurntImage grey(4, 2, IPL_DEPTH_8U, 1), colour(4, 2, IPL_DEPTH_8U, 3), four(4, 2, IPL_DEPTH_8U, 4);
  grey.Set(1, {100});  // bottom right
  EXPECT_EQ(grey.Burn(2, 4, false, 128), 155);
  EXPECT_NEAR(grey.End().y, kInside * -0.25, 1e-6);  // twice as wide as high: y spans half
  EXPECT_NEAR(grey.End().x, kInside * 0.5, 1e-6);
  EXPECT_EQ(grey.Burn(2, 4, true, 128), 255);
  EXPECT_EQ(grey.Burn(2, 4, true, 100), 0) << "100 is not below 100";
  colour.Set(0, {10, 20, 30});  // blue, green, red
  EXPECT_EQ(colour.Burn(2, 4, false, 100), 255 - (29 * 30 + 59 * 20 + 11 * 10) / 100);
  EXPECT_EQ(four.Burn(2, 4, false, 1), 255) << "every grey reads as 0";
  EXPECT_EQ(four.Burn(2, 4, false, 0), 0);
}

TEST(ImageRaster, UprightImagesReachFurtherAndImpossibleOnesNowhere) {
  BurntImage upright(2, 4, IPL_DEPTH_8U, 1, 0), deep(2, 2, IPL_DEPTH_16U, 1, 0);
  EXPECT_EQ(upright.Burn(4, 8, true, 128, 0.4f), 255);
  EXPECT_NEAR(upright.End().x, kInside * 0.8, 1e-6);
  EXPECT_EQ(deep.Burn(2, 2, true, 128), 0);
  EXPECT_EQ(upright.Burn(2, 0, true, 128), 0);
  EXPECT_EQ(upright.Burn(0xFFFFFFFF, 0xFFFFFFFF, true, 128), 0);
  cvReleaseImage(&upright.image);  // leaves null
  EXPECT_EQ(upright.Burn(2, 2, true, 128), 0);
}
#endif

}  // namespace
