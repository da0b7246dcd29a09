// Bitmaps as the input of the laser writer.
#include <algorithm>
#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include <opencv2/core/core_c.h>
#include <opencv2/imgproc/imgproc_c.h>

#include "ZRVDataGenerator.h"
#include "ZRVFlatInterface.h"
#include "common/shielded.h"

namespace {

struct ReleaseImage {
  void operator()(IplImage* image) const { cvReleaseImage(&image); }
};
using OwnedImage = std::unique_ptr<IplImage, ReleaseImage>;

struct BurnRaster {
  std::vector<uint8_t> intensity;   // line by line, line 0 is the bottom of the image
  std::vector<int> lastDarkColumn;  // a line; -1: none
};

// Luminance of a pixel in blue, green, red order; the weights add up to 99 %, and are kept so. Any other
// channel count leaves grey as it is.
int Grey(const uint8_t* pixel, int channels, int grey) {
  if (channels == 1) return pixel[0];
  if (channels == 3) return (29 * pixel[2] + 59 * pixel[1] + 11 * pixel[0]) / 100;
  return grey;
}

// OpenCV reports errors (no memory, sizes beyond its own) by throwing; here they mean that nothing is written.
OwnedImage Resized(const IplImage& image, unsigned int width, unsigned int height) try {
  OwnedImage resized(
      cvCreateImage(cvSize(static_cast<int>(width), static_cast<int>(height)), image.depth, image.nChannels));
  cvResize(&image, resized.get(), CV_INTER_LINEAR);
  return resized;
} catch (const std::exception&) {
  return nullptr;
}

BurnRaster Rasterize(const IplImage& image, bool binary, int threshold) {
  const auto lines = static_cast<size_t>(image.height), pixels = static_cast<size_t>(image.width);
  BurnRaster raster{std::vector<uint8_t>(lines * pixels), std::vector<int>(lines, -1)};
  int grey = 0;
  for (size_t r = 0; r < lines; ++r) {
    const char* row = image.imageData + (lines - 1 - r) * static_cast<size_t>(image.widthStep);
    for (size_t c = 0; c < pixels; ++c) {
      const auto* pixel = reinterpret_cast<const uint8_t*>(row) + c * static_cast<size_t>(image.nChannels);
      grey = Grey(pixel, image.nChannels, grey);
      const bool dark = grey < threshold;
      if (dark) raster.lastDarkColumn[r] = static_cast<int>(c);
      raster.intensity[r * pixels + c] = static_cast<uint8_t>(binary ? (dark ? 255 : 0) : 255 - grey);
    }
  }
  return raster;
}

bool Usable(const IplImage* image, unsigned int numLines, unsigned int numPixels) {
  if (image == nullptr || image->imageData == nullptr || image->depth != static_cast<int>(IPL_DEPTH_8U)) return false;
  if (image->width <= 0 || image->height <= 0 || numLines == 0 || numPixels == 0) return false;
  return static_cast<uint64_t>(numLines) * numPixels <= std::numeric_limits<int>::max();
}

}  // namespace

unsigned int ZRVDataGenerator::ImageRasterPattern(float* x, float* y, unsigned char* m, float xAmplitude,
                                                  float yAmplitude, unsigned int numLines, unsigned int numPixels,
                                                  IplImage* image, bool binaryImage, int threshold, float lineDuration,
                                                  bool bidirectional, unsigned int& sps, int minSps, int maxSps) {
  if (!Usable(image, numLines, numPixels)) return 0;
  const OwnedImage resized = Resized(*image, numPixels, numLines);
  if (!resized) return 0;
  const BurnRaster raster = Rasterize(*resized, binaryImage, threshold);

  // Dividing x by a proportion below 1 widens an upright image, up to the limit, where one would expect
  // it to become narrower. Kept so.
  const float aspect = static_cast<float>(image->width) / static_cast<float>(image->height);
  const float xLimit = std::clamp(aspect < 1.0f ? xAmplitude / aspect : xAmplitude, -1.0f, 1.0f);
  const float yLimit = std::clamp(aspect < 1.0f ? yAmplitude : yAmplitude / aspect, -1.0f, 1.0f);
  return LaserWriterDataStream(x, y, m, raster.intensity.data(), raster.lastDarkColumn.data(), numLines, numPixels,
                               lineDuration, bidirectional, sps, minSps, maxSps, -xLimit, xLimit, -yLimit, yLimit);
}

unsigned int ZRVImageRasterPattern(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, float xAmplitude,
                                   float yAmplitude, unsigned int numLines, unsigned int numPixels,
                                   const unsigned char* pixels, unsigned int width, unsigned int height,
                                   unsigned int channels, unsigned int rowBytes, bool binaryImage, int threshold,
                                   float lineDuration, bool bidirectional, unsigned int* sps, int minSps, int maxSps) {
  constexpr uint64_t kMostBytes = std::numeric_limits<int>::max();
  if (rowBytes == 0 && uint64_t{width} * channels <= kMostBytes) rowBytes = width * channels;
  if (pixels == nullptr || width == 0 || height == 0 || channels == 0 || channels > 4) return 0;
  if (rowBytes / channels < width || uint64_t{rowBytes} * height > kMostBytes) return 0;
  unsigned int unwanted = 0;
  return zrv::Shielded([&] {
    IplImage image;
    cvInitImageHeader(&image, cvSize(static_cast<int>(width), static_cast<int>(height)), IPL_DEPTH_8U,
                      static_cast<int>(channels));
    image.widthStep = static_cast<int>(rowBytes);
    image.imageSize = static_cast<int>(rowBytes * height);
    image.imageData = const_cast<char*>(reinterpret_cast<const char*>(pixels));
    return g->ImageRasterPattern(x, y, m, xAmplitude, yAmplitude, numLines, numPixels, &image, binaryImage, threshold,
                                 lineDuration, bidirectional, sps != nullptr ? *sps : unwanted, minSps, maxSps);
  });
}
