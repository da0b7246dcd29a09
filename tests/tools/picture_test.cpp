// Pictures: what is drawn where, and image files that are damaged.
#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <cmath>

#include "decoded_picture.h"
#include "run_zrv.h"
#include "tools/errors.h"
#include "tools/parameters.h"
#include "tools/picture.h"

namespace zrvtool::test {
namespace {

// Lit from left to right at y = 0.5, dark down the right side, lit back to the middle at y = -0.5.
Pattern TwoLines() {
  Pattern p;
  p.resize(150);
  for (std::size_t i = 0; i < 150; ++i) {
    const float t = static_cast<float>(i % 50) / 50;
    p.x[i] = i < 50 ? -0.8f + 1.6f * t : i < 100 ? 0.8f : 0.8f - 0.8f * t;
    p.y[i] = i < 50 ? 0.5f : i < 100 ? 0.5f - t : -0.5f;
    p.m[i] = i < 50 || i >= 100 ? 255 : 0;
  }
  return p;
}

TEST(ScanPicture, LitPartsAreInkWhereTheyBelong) {
  const Folder folder;
  ScanStyle style;
  for (Theme theme : {Theme::Dark, Theme::Light}) {
    style.theme = theme;
    DrawScan(folder.File("a.png"), TwoLines(), style);
    const Image p = LoadImage(folder.File("a.png"));
    // The field takes up 5.5 % to 94.5 % of the width; the line at y = 0.5 lies a quarter down.
    EXPECT_GT(CountPixels(p, IsInk, 0.14, 0.2, 0.84, 0.34), 600);
    EXPECT_EQ(CountPixels(p, IsInk, 0, 0, 1, 0.2), 0);
    EXPECT_EQ(CountPixels(p, IsInk, 0, 0.35, 1, 0.6), 0);  // the dark move is faint
    EXPECT_GT(CountPixels(p, IsInk, 0.52, 0.6, 1, 0.8), 250);
    EXPECT_EQ(CountPixels(p, IsInk, 0, 0.6, 0.48, 0.9), 0);
    const auto isMark = [](int r, int g, int b) { return r > 190 && g < 160 && b < 140; };
    EXPECT_GT(CountPixels(p, isMark, 0.1, 0.2, 0.2, 0.35), 5) << "the start";
    EXPECT_EQ(CountPixels(p, isMark, 0.3, 0, 1, 1), 0);
  }
}

TEST(ScanPicture, ColoursAndBrightnessShow) {
  const Folder folder;
  Pattern p = TwoLines();
  p.rgb.assign(p.size(), 0x20FF20);
  DrawScan(folder.File("c.png"), p, {});
  const auto isGreen = [](int r, int g, int b) { return g > 180 && r < 90 && b < 90; };
  EXPECT_GT(CountPixels(LoadImage(folder.File("c.png")), isGreen), 600);

  p.rgb.clear();
  p.levels = true;
  for (std::size_t i = 100; i < 150; ++i) p.m[i] = 40;
  DrawScan(folder.File("l.png"), p, {});
  const Image levels = LoadImage(folder.File("l.png"));
  const auto isBright = [](int, int g, int b) { return b > 200 && g > 150; };
  EXPECT_GT(CountPixels(levels, isBright, 0, 0, 1, 0.5), 200);
  EXPECT_EQ(CountPixels(levels, isBright, 0, 0.6, 1, 0.8), 0);
}

TEST(ScanPicture, OddPatternsAreDrawnWithoutHarm) {
  const Folder folder;
  Pattern odd;
  EXPECT_NO_THROW(DrawScan(folder.File("e.png"), odd, {}));
  odd.x = {NAN, INFINITY, 1e30f, 0};
  odd.y = {0, -INFINITY, -1e30f, NAN};
  odd.m = {255, 0, 255, 255};
  EXPECT_NO_THROW(DrawScan(folder.File("o.png"), odd, {}));
  const Plot wild = {"t", "x", "y", {0, 1, NAN}, {{"s", {NAN, INFINITY, 0}}}};
  EXPECT_NO_THROW(DrawPlots(folder.File("p.png"), {wild}, "", 1));
  EXPECT_NO_THROW(DrawPlots(folder.File("q.svg"), {{"t", "x", "y", {1, 1}, {{"s", {2, 2}}}, true}}, "", 1));
  EXPECT_NE(ReadText(folder.File("q.svg")).find("<svg"), std::string::npos);
}

TEST(PlotPicture, ARampGoesFromLowerLeftToUpperRight) {
  const Folder folder;
  Plot ramp = {"ramp", "s", "V", {}, {{"", {}}}};
  for (int i = 0; i <= 100; ++i) {
    ramp.x.push_back(i);
    ramp.series[0].y.push_back(i);
  }
  DrawPlots(folder.File("ramp.png"), {ramp}, "", 1);
  const Image p = LoadImage(folder.File("ramp.png"));
  EXPECT_GT(CountPixels(p, IsInk, 0.1, 0.55, 0.5, 0.9), 50);
  EXPECT_GT(CountPixels(p, IsInk, 0.6, 0.1, 1, 0.5), 50);
  EXPECT_EQ(CountPixels(p, IsInk, 0.1, 0.1, 0.45, 0.45), 0);
  EXPECT_EQ(CountPixels(p, IsInk, 0.65, 0.6, 1, 0.9), 0);
}

std::string JpegOf(int width, int height, unsigned char grey) {
  std::vector<unsigned char> pixels(static_cast<std::size_t>(3 * width * height), grey);
  tjhandle encoder = tjInitCompress();
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  tjCompress2(encoder, pixels.data(), width, 0, height, TJPF_BGR, &bytes, &size, TJSAMP_444, 95, 0);
  std::string file(reinterpret_cast<char*>(bytes), size);
  tjFree(bytes);
  tjDestroy(encoder);
  return file;
}

TEST(ImageFile, PngAndJpegAreRead) {
  const Folder folder;
  WriteText(folder.File("a.jpg"), JpegOf(20, 10, 77));
  const Image jpeg = LoadImage(folder.File("a.jpg"));
  EXPECT_EQ(jpeg.width, 20);
  EXPECT_EQ(jpeg.height, 10);
  EXPECT_NEAR(PixelAt(jpeg, 0, 0)[0], 77, 2);

  Canvas canvas(folder.File("a.png"), 30, 20);
  canvas.Fill({0, 0, 30, 20}, Rgb(0x102030));
  canvas.Fill({0, 0, 15, 20}, Rgb(0xF0A050));
  canvas.Save();
  const Image png = LoadImage(folder.File("a.png"));
  EXPECT_EQ(png.width, 30);
  EXPECT_EQ(PixelAt(png, 3, 3)[2], 0xF0);
  EXPECT_EQ(PixelAt(png, 25, 15)[0], 0x30);
}

TEST(ImageFile, DamagedFilesAreRefusedOrReadNeverWorse) {
  const Folder folder;
  const std::string png = folder.File("a.png"), bad = folder.File("bad");
  Canvas(png, 64, 64).Save();
  for (const std::string& good : {JpegOf(64, 64, 120), ReadText(png)}) {
    for (std::size_t at = 0; at < good.size(); at += 1 + at / 16) {
      std::string flipped = good;
      flipped[at] = static_cast<char>(flipped[at] ^ 0x81);
      for (const std::string& bytes : {good.substr(0, at), flipped}) {
        WriteText(bad, bytes);
        try {
          LoadImage(bad);
        } catch (const ToolError&) {
        }
      }
    }
  }
  WriteText(bad, ReadText(png).replace(16, 8, "\x7F\xFF\xFF\xFF\x7F\xFF\xFF\xFF", 8));  // huge
  EXPECT_THROW(LoadImage(bad), ToolError);
  EXPECT_THROW(LoadImage(folder.Path()), ToolError);
}

TEST(Parameters, NamesAndNumbersOfValues) {
  EXPECT_EQ(ValueOf(FindParameter("DeviceAxes"), "AxesSwapFlipBoth"), 7.0f);
  EXPECT_EQ(ValueOf(FindParameter("SyncMode"), "SyncMode15"), 15.0f);
  EXPECT_EQ(ValueOf(FindParameter("MEMSDriverEnable"), "on"), 1.0f);
  EXPECT_EQ(ValueOf(FindParameter("Vbias"), "42.5"), 42.5f);
  EXPECT_EQ(NameOfValue("ZRVDataMode", DataModeOrBEX1), "DataModeOrBEX1");
  EXPECT_EQ(NameOfValue("ZRVAxes", 77), "77");
  EXPECT_THROW(ValueOf(FindParameter("BootSetting"), "AxesSwap"), ToolError);
  EXPECT_THROW(ValueOf(FindParameter("Vbias"), "forty"), ToolError);
}

}  // namespace
}  // namespace zrvtool::test
