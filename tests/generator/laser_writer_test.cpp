#include <limits>

#include "ZRVDataGenerator.h"
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

struct Burnt {
  Points out;
  unsigned count = 0, sps = 0;

  explicit Burnt(const Job& job) {
    const unsigned room = Write(job, nullptr, nullptr, nullptr);
    const unsigned countedSps = sps;
    out = Points(room + 8);
    count = Write(job, out.x.data(), out.y.data(), out.m.data());
    EXPECT_EQ(count, room);
    EXPECT_EQ(sps, countedSps);
    EXPECT_TRUE(out.UntouchedFrom(room));
  }

  unsigned Write(const Job& job, float* x, float* y, unsigned char* m) {
    ZRVDataGenerator g;
    return g.LaserWriterDataStream(x, y, m, job.raster.data(), job.lastDark.data(),
                                   static_cast<unsigned>(job.lastDark.size()), job.pixels, job.duration, job.twoWay,
                                   sps, job.minSps, job.maxSps, job.xMin, job.xMax, job.yMin, job.yMax);
  }

  std::vector<int> LitBytes() const {
    std::vector<int> lit;
    for (size_t i = 0; i < count; ++i) {
      if (out.m[i] != 0) lit.push_back(out.m[i]);
    }
    return lit;
  }

  // The longest way between neighbouring samples, the end and the start being neighbours too.
  double LongestStep() const {
    double longest = 0;
    for (size_t i = 0; i < count; ++i) {
      const size_t next = (i + 1) % count;
      longest = std::max(longest, static_cast<double>(std::hypot(out.x[next] - out.x[i], out.y[next] - out.y[i])));
    }
    return longest;
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

TEST(LaserWriter, BurnsEachPixelInItsPlaceAndOnlyUpToTheLastDark) {
  for (const bool twoWay : {false, true}) {
    SCOPED_TRACE(twoWay);
    const Burnt b(SmallJob(twoWay));
    EXPECT_EQ(b.sps, 40000u);
    // Lines of 30 and 40 with 4 before and after each, and two moves: of 1.03 and 1.20 times the span, or of 0.72
    // and 0.69 times, whose square root counts. The span takes 41 samples, 0.001 being a hair more in binary;
    // halves of a move are rounded up.
    EXPECT_EQ(b.count, 38u + 48 + (twoWay ? 36 + 36 : 44 + 50));
    std::vector<int> expected;
    for (const int pixel : {10, 20, 30}) expected.insert(expected.end(), 10, pixel);
    const std::vector<int> second = twoWay ? std::vector{80, 70, 60, 50} : std::vector{50, 60, 70, 80};
    for (const int pixel : second) expected.insert(expected.end(), 10, pixel);
    EXPECT_EQ(b.LitBytes(), expected);

    // Sample k of a line lies k / 39 of the way from x min to x max, in either direction.
    for (size_t i = 0; i < b.count; ++i) {
      const int m = b.out.m[i];
      if (m == 0) continue;
      EXPECT_NEAR(b.out.y[i], m <= 40 ? -0.4f : 0.4f, 1e-6);
      const int pixel = m % 50 / 10 - (m < 50);
      const double k = (b.out.x[i] + 0.5) * 39;
      EXPECT_NEAR(k, std::round(k), 1e-3) << i;
      EXPECT_EQ(static_cast<int>(std::round(k)) / 10, pixel) << i;
    }
  }
}

TEST(LaserWriter, GetsUpToSpeedAndComesToRestInTheDark) {
  const Burnt b(SmallJob(false));
  const float step = 1.0f / 39;
  size_t first = 0;
  while (b.out.m[first] == 0) ++first;
  EXPECT_EQ(first, 4u);  // the pattern starts with the run-up of its first line
  for (size_t i = 0; i < first; ++i) {
    EXPECT_GT(b.out.x[i + 1], b.out.x[i]);
    EXPECT_LT(b.out.x[i + 1] - b.out.x[i], step * 1.001f);
  }
  const size_t last = first + 29;
  EXPECT_NEAR(b.out.x[last + 1] - b.out.x[last], step, 1e-6);
  EXPECT_LT(b.out.x[last + 4] - b.out.x[last + 3], 0.5f * step);
}

TEST(LaserWriter, RatesThatFitAndThoseThatDoNot) {
  const struct {
    const char* name;
    unsigned pixels;
    float duration;
    int minSps, maxSps;
    unsigned sps;  // 0: refused
  } kCases[] = {
      {"rounded down to a whole number", 4, 0.001f, 0, 43999, 40000},
      {"0.01 is a hair less in binary", 100, 0.01f, 0, 100000, 100000},
      {"less than one", 41, 0.001f, 0, 40000, 0},
      {"none between lowest and highest", 4, 0.001f, 41000, 43999, 0},
      {"no duration", 4, 0.0f, 0, 40000, 0},
      {"no number", 4, std::numeric_limits<float>::quiet_NaN(), 0, 40000, 0},
      {"absurdly long", 4, 1e9f, 0, 40000, 0},
      {"no rate", 4, 0.001f, 0, -1, 0},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const Burnt b(Job{.raster = std::vector<unsigned char>(c.pixels, 9), .lastDark = {0}, .pixels = c.pixels,
                      .duration = c.duration, .minSps = c.minSps, .maxSps = c.maxSps});
    EXPECT_EQ(b.sps, c.sps);
    EXPECT_EQ(b.count != 0, c.sps != 0);
  }
}

TEST(LaserWriter, StaysWithinTheFieldByShorteningLinesThatHaveNoRoomToRunUp) {
  for (const bool twoWay : {false, true}) {
    Job job = SmallJob(twoWay);
    job.xMin = 1, job.xMax = -1, job.yMin = -7, job.yMax = 7;  // mirrored, and beyond the field upward
    const Burnt b(job);
    for (size_t i = 0; i < b.count; ++i) {
      EXPECT_LE(std::abs(b.out.x[i]), 1.0f);
      EXPECT_LE(std::abs(b.out.y[i]), 1.0f);
    }
    EXPECT_NEAR(b.out.x[4], 1 - 2.0f / 39 * 3, 1e-6);  // run-up of 4 samples, half as many steps, and one
  }
}

TEST(LaserWriter, RandomImagesNeverJumpAndNeverExceedTheirRoom) {
  std::mt19937 random(3);
  for (int round = 0; round < 200; ++round) {
    const size_t lines = 1 + random() % 9;
    Job job{.pixels = static_cast<unsigned>(1 + random() % 30),
            .duration = 0.0002f * static_cast<float>(1 + random() % 20),
            .twoWay = random() % 2 == 0, .maxSps = 200000};
    job.raster.assign(lines * job.pixels, 9);
    size_t burnt = 0;
    for (size_t i = 0; i < lines; ++i) {
      job.lastDark.push_back(static_cast<int>(random() % (job.pixels + 2)) - 1);  // beyond the line, too
      burnt += std::min<size_t>(static_cast<size_t>(job.lastDark.back() + 1), job.pixels);
    }
    const Burnt b(job);
    if (b.count == 0) continue;
    const double duration = job.duration, perPixel = std::round(b.sps * duration / job.pixels);
    EXPECT_EQ(static_cast<double>(b.LitBytes().size()), static_cast<double>(burnt) * perPixel);
    const double samples = perPixel * job.pixels, burn = 1.0 / std::max(samples - 1, 1.0);
    const double flyback = std::max(4.0, std::ceil(b.sps * std::min(duration, 0.01)));
    const double run = std::max(4.0, samples / 20);
    EXPECT_LE(b.LongestStep(), std::max(burn, 2 * (1 + (run + 2) * burn) / flyback) * 1.001);
  }
}

TEST(LaserWriter, NothingDarkWritesNothing) {
  EXPECT_EQ(Burnt(Job{.raster = {1, 2}, .lastDark = {-1}, .pixels = 2}).count, 0u);
  EXPECT_EQ(Burnt(Job{}).count, 0u);
}

#ifdef ZRV_TEST_OPENCV
struct ImageFile {
  IplImage* image;
  ImageFile(int width, int height, int depth, int channels, int value = 255)
      : image(cvCreateImage(cvSize(width, height), depth, channels)) {
    cvSet(image, cvScalarAll(value));
  }
  ~ImageFile() { cvReleaseImage(&image); }
  unsigned char& At(int row, int byte) {
    return reinterpret_cast<unsigned char&>(image->imageData[row * image->widthStep + byte]);
  }
};

struct BurntImage {
  Points out{60000};
  unsigned count, sps = 0;

  BurntImage(IplImage* image, unsigned lines, unsigned pixels, bool binary, int threshold, float xAmplitude = 0.5f) {
    ZRVDataGenerator g;
    count = g.ImageRasterPattern(out.x.data(), out.y.data(), out.m.data(), xAmplitude, 0.5f, lines, pixels, image,
                                 binary, threshold, 0.001f, false, sps, 0, 40000);
  }
  unsigned char Brightest() const { return count == 0 ? 0 : *std::max_element(out.m.begin(), out.m.begin() + count); }
  // Where it is lit, and how far out.
  std::pair<float, float> Reach() const {
    float x = 0, y = -9;
    for (size_t i = 0; i < count; ++i) {
      if (out.m[i] != 0) x = std::max(x, out.x[i]), y = std::max(y, out.y[i]);
    }
    return {x, y};
  }
};

TEST(ImageRaster, GreyValuesThresholdAndOrientation) {
  ImageFile grey(4, 2, IPL_DEPTH_8U, 1);
  grey.At(1, 3) = 100;  // bottom right
  const BurntImage b(grey.image, 2, 4, false, 128);
  EXPECT_EQ(b.Brightest(), 155);
  EXPECT_NEAR(b.Reach().second, -0.25f, 1e-6);  // twice as wide as high: y spans half
  EXPECT_NEAR(b.Reach().first, 0.5f, 1e-6);
  EXPECT_EQ(BurntImage(grey.image, 2, 4, true, 128).Brightest(), 255);
  EXPECT_EQ(BurntImage(grey.image, 2, 4, true, 100).count, 0u);  // 100 is not below 100

  ImageFile colour(2, 2, IPL_DEPTH_8U, 3);
  colour.At(0, 0) = 10, colour.At(0, 1) = 20, colour.At(0, 2) = 30;  // blue, green, red
  EXPECT_EQ(BurntImage(colour.image, 2, 2, false, 100).Brightest(), 255 - (29 * 30 + 59 * 20 + 11 * 10) / 100);

  ImageFile four(2, 2, IPL_DEPTH_8U, 4);
  EXPECT_EQ(BurntImage(four.image, 2, 2, false, 1).Brightest(), 255);  // every grey reads as 0
  EXPECT_EQ(BurntImage(four.image, 2, 2, false, 0).count, 0u);
}

TEST(ImageRaster, UprightImagesReachFurtherAndImpossibleOnesNowhere) {
  ImageFile upright(2, 4, IPL_DEPTH_8U, 1, 0);
  EXPECT_NEAR(BurntImage(upright.image, 4, 8, true, 128, 0.4f).Reach().first, 0.8f, 1e-6);
  ImageFile deep(2, 2, IPL_DEPTH_16U, 1, 0);
  EXPECT_EQ(BurntImage(deep.image, 2, 2, true, 128).count, 0u);
  EXPECT_EQ(BurntImage(nullptr, 2, 2, true, 128).count, 0u);
  EXPECT_EQ(BurntImage(upright.image, 2, 0, true, 128).count, 0u);
  EXPECT_EQ(BurntImage(upright.image, 0xFFFFFFFF, 0xFFFFFFFF, true, 128).count, 0u);
}
#endif

}  // namespace
