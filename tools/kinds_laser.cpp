// Pictures burnt by the laser writer: a test chart, and where the library was built for it, image files.
#include <algorithm>
#include <cmath>

#include "errors.h"
#include "kinds.h"

#ifdef ZRV_WITH_OPENCV
#include <opencv2/core/core_c.h>

#include "image_file.h"
#endif

namespace zrvtool {
namespace {

using enum OptionType;

template <typename Burn>
Draft Burnt(Burn burn) {
  Draft draft = SizedByItself(
      "nothing to burn: the picture is all white, or no sample rate up to --max-rate gives each pixel a sample; "
      "use fewer --pixels or a longer --line-time",
      burn);
  draft.pattern.levels = true;
  return draft;
}

// Intensity of the chart at u, v in 0..1, from the lower left: a ring, a grey wedge and bars.
unsigned char ChartAt(double u, double v) {
  const double radius = std::hypot(u - 0.5, v - 0.66);
  if (radius < 0.3) return radius > 0.2 || radius < 0.08 ? 255 : 0;
  if (v < 0.14) return static_cast<unsigned char>(255 * u);
  if (v < 0.3) return std::fmod(u * 10, 1.0) < 0.5 ? 255 : 0;
  return 0;
}

Draft Chart(ZRVDataGenerator& g, const Values& v) {
  const unsigned int lines = v.Count("lines"), pixels = v.Count("pixels");
  if (std::size_t{lines} * pixels > kMostSamples)
    throw ToolError("the chart is too large: use fewer --lines or --pixels");
  std::vector<unsigned char> raster(std::size_t{lines} * pixels);
  std::vector<int> lastDark(lines, -1);
  for (unsigned int line = 0; line < lines; ++line)
    for (unsigned int p = 0; p < pixels; ++p) {
      raster[std::size_t{line} * pixels + p] = ChartAt((p + 0.5) / pixels, (line + 0.5) / lines);
      if (raster[std::size_t{line} * pixels + p] != 0) lastDark[line] = static_cast<int>(p);
    }
  const Rates rates = RatesOf(v);
  const float a = v.Float("amplitude");
  return Burnt([&](float* x, float* y, unsigned char* m, unsigned int& rate) {
    return g.LaserWriterDataStream(x, y, m, raster.data(), lastDark.data(), lines, pixels, v.Float("line-time") / 1000,
                                   !v.Flag("one-way"), rate, rates.lowest, rates.highest, -a, a, -a, a);
  });
}

std::vector<OptionRow> BurnRows() {
  return {{"lines", Count, "64", "lines", 1, 10000},
          {"pixels", Count, "64", "pixels a line", 1, 10000},
          {"line-time", Number, "6.4", "time of all pixels of a line, ms", 0.01, 100000},
          {"one-way", Flag, "0", "fly back after each line, not write it backwards"},
          {"min-rate", Count, "200", "lowest sample rate to choose", 1, 1000000},
          {"max-rate", Count, "40000", "highest sample rate to choose", 1, 1000000}};
}

#ifdef ZRV_WITH_OPENCV
Draft Picture(ZRVDataGenerator& g, const Values& v) {
  Image image = LoadImage(v.Text("file"));
  IplImage header;
  cvInitImageHeader(&header, cvSize(image.width, image.height), IPL_DEPTH_8U, 3, IPL_ORIGIN_TL, 4);
  cvSetData(&header, image.bgr.data(), 3 * image.width);
  const Rates rates = RatesOf(v);
  return Burnt([&](float* x, float* y, unsigned char* m, unsigned int& rate) {
    return g.ImageRasterPattern(x, y, m, v.Float("amplitude"), v.Float("amplitude"), v.Count("lines"),
                                v.Count("pixels"), &header, v.Flag("binary"), v.Integer("threshold"),
                                v.Float("line-time") / 1000, !v.Flag("one-way"), rate, rates.lowest, rates.highest);
  });
}

Kind ImageKind() {
  std::vector<OptionRow> rows = BurnRows();
  rows.push_back({"file", FileArgument, "", "PNG or JPEG file"});
  rows.push_back({"binary", Flag, "0", "full brightness below the threshold, none above"});
  rows.push_back({"threshold", Count, "250", "grey, 0..255, below which a pixel counts as dark", 0, 256});
  return {"image",
          "Laser writer",
          "burn a PNG or JPEG picture, dark parts bright",
          "image photo.jpg --lines 100 --pixels 100",
          rows,
          Picture};
}
#endif

}  // namespace

std::vector<Kind> LaserKinds() {
  std::vector<Kind> kinds = {{"laser", "Laser writer", "burn a test chart: a ring, a grey wedge and bars",
                              "laser --lines 100", BurnRows(), Chart}};
#ifdef ZRV_WITH_OPENCV
  kinds.push_back(ImageKind());
#endif
  return kinds;
}

}  // namespace zrvtool
