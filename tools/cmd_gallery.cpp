// zrv gallery: one sheet of everything the generator makes.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "commands.h"
#include "data_files.h"
#include "errors.h"
#include "font_builder.h"
#include "gallery_content.h"
#include "kinds.h"
#include "options.h"
#include "picture.h"

namespace zrvtool {
namespace {

using Changes = std::vector<std::pair<std::string, std::string>>;

Tile TileOf(const std::string& label, const std::string& kind, const Changes& changes, bool dots = false) {
  Tile tile;
  tile.label = label;
  tile.pattern = MakePattern(kind, changes);
  tile.style.dots = dots;
  return tile;
}

SheetSection Waveforms() {
  return {"Waveforms over time",
          {TileOf("sine", "sine", {}), TileOf("sine, phase 90", "sine", {{"phase", "90"}}),
           TileOf("sawtooth, rise 1", "sawtooth", {{"rise", "1"}}), TileOf("sawtooth, rise 0.5", "sawtooth", {}),
           TileOf("square, duty 0.25", "square", {{"duty", "0.25"}}), TileOf("noise", "noise", {{"samples", "400"}}),
           TileOf("RQ, sine", "rq", {{"multiple", "12"}}),
           TileOf("RQ, triangle", "rq", {{"multiple", "12"}, {"triangle", "1"}})}};
}

SheetSection Curves() {
  return {"Curves",
          {TileOf("spiral", "spiral", {}), TileOf("polygon, 5 sides", "polygon", {}), TileOf("rose 5:2", "rose", {}),
           TileOf("rose 3:1, triangle wave", "rose", {{"ring-a", "3"}, {"ring-b", "1"}, {"wave", "triangle"}}),
           TileOf("epicycloid 5:1", "epicycloid", {}), TileOf("epitrochoid 5:1, pen 3", "epitrochoid", {}),
           TileOf("hypocycloid 5:1", "hypocycloid", {}), TileOf("hypotrochoid 10:3, pen 5", "hypotrochoid", {}),
           TileOf("Lissajous 3:4", "lissajous", {}),
           TileOf("Lissajous, triangle wave", "lissajous", {{"wave", "triangle"}}),
           TileOf("amplitude modulation", "lissajous",
                  {{"freq-x", "20"},
                   {"freq-y", "20"},
                   {"phase", "90"},
                   {"modulation", "amplitude"},
                   {"mod-depth", "1"},
                   {"mod-freq", "3"},
                   {"amplitude", "0.6"}}),
           TileOf("phase modulation", "lissajous",
                  {{"freq-x", "1"}, {"freq-y", "2"}, {"phase", "90"}, {"modulation", "phase"}, {"mod-freq", "5"}}),
           TileOf("clock, 10:08:30", "clock", {{"time", "10:08:30"}}), TileOf("dynamics", "dynamics", {})}};
}

// One path under each speed profile and way of closing, with its samples as dots.
SheetSection Profiles(const std::string& path) {
  const Changes base = {{"file", path}, {"corners", "1"}, {"samples", "110"}};
  const auto with = [&](const char* label, Changes more) {
    more.insert(more.end(), base.begin(), base.end());
    return TileOf(label, "points", more, true);
  };
  return {"Speed along a path, a dot a sample",
          {with("linear", {{"profile", "linear"}, {"blank-speed", "1"}}),
           with("linear, blank 4 times faster", {{"profile", "linear"}, {"blank-speed", "4"}}),
           with("trapezoidal", {{"profile", "trapezoidal"}, {"draw-accel", "0.2"}}),
           with("trapezoidal, all accelerating",
                {{"profile", "trapezoidal"}, {"draw-accel", "0.5"}, {"blank-accel", "0.5"}}),
           with("optimized", {}), with("not closed", {{"close", "none"}}), with("retraced", {{"close", "retrace"}})}};
}

SheetSection Transforms() {
  const auto grid = [](const char* label, Changes more) {
    const Changes base = {{"lines", "9"}, {"pixels", "20"}, {"amplitude", "0.7"}, {"line-time", "5"}};
    more.insert(more.end(), base.begin(), base.end());
    return TileOf(label, "raster", more);
  };
  return {"Transforms of a raster",
          {grid("none", {}), grid("scale 0.5", {{"scale", "0.5"}}), grid("rotate 30", {{"rotate", "30"}}),
           grid("offset 0.2, 0.1", {{"offset-x", "0.2"}, {"offset-y", "0.1"}}),
           grid("keystone", {{"keystone", "-0.9,-0.9,0.9,-0.9,0.5,0.9,-0.5,0.9"}}),
           grid("radial 0.5", {{"radial", "0.5"}}), grid("tangential 0.9", {{"tangential", "0.9"}})}};
}

SheetSection Animations() {
  const auto star = [](const char* label, const char* animation, const char* frames) {
    return TileOf(label, "hypocycloid",
                  {{"amplitude", "0.3"}, {"samples", "300"}, {"animate", animation}, {"animation-frames", frames}});
  };
  return {"Animations, all frames at once",
          {star("rotate, 4 frames", "rotate", "4"), star("scroll, 8 frames", "scroll", "8"),
           star("bounce, 6 frames", "bounce", "6")}};
}

SheetSection Filters() {
  const auto square = [](const char* label, Changes more) {
    const Changes base = {{"samples", "400"}, {"rate", "20000"}, {"cycles", "2"}, {"amplitude", "0.7"}};
    more.insert(more.end(), base.begin(), base.end());
    return TileOf(label, "square", more);
  };
  return {"Software filters on a square wave",
          {square("Bessel 5, 500 Hz", {{"filter", "bessel:5:500"}}),
           square("Butterworth 4", {{"filter", "butterworth:4:500"}}),
           square("Chebyshev I 4", {{"filter", "chebyshev1:4:500"}}),
           square("Chebyshev II 4", {{"filter", "chebyshev2:4:500"}}),
           square("Elliptic 4", {{"filter", "elliptic:4:500"}}), square("Legendre 4", {{"filter", "legendre:4:500"}}),
           square("Bessel 5, zero phase", {{"filter", "bessel:5:500"}, {"zero-phase", "1"}})}};
}

SheetSection Rasters() {
  return {"Rasters and point patterns",
          {TileOf("raster", "raster", {{"lines", "12"}, {"pixels", "20"}}),
           TileOf("raster, one-way", "raster", {{"lines", "12"}, {"pixels", "20"}, {"one-way", "1"}}),
           TileOf("raster, pixel hold", "raster", {{"lines", "6"}, {"pixels", "12"}, {"hold", "1"}}, true),
           TileOf("imaging raster", "imaging-raster", {{"lines", "12"}, {"pixels", "40"}}),
           TileOf("imaging, one-way", "imaging-raster", {{"lines", "12"}, {"pixels", "40"}, {"one-way", "1"}}),
           TileOf("point to point", "point-to-point", {{"max-rate", "4000"}}, true)}};
}

std::string FontTitle(unsigned int font) {
  const std::span<const zrv::FontSource> fonts = zrv::DefaultFonts();
  return std::to_string(font) + (font < fonts.size() ? std::string(" ") + fonts[font].title : "");
}

SheetSection Fonts() {
  SheetSection section{"Text", {}};
  ZRVDataGenerator g;
  g.LoadHersheyFile(DefaultFontFile().c_str());
  for (unsigned int font = 0; font < g.HersheyNumFonts(); ++font)
    section.tiles.push_back(
        TileOf(FontTitle(font), "text", {{"text", "Ag 5&z"}, {"font", std::to_string(font)}, {"samples", "3000"}}));
  section.tiles.push_back(TileOf("digital clock", "digital-clock", {{"time", "10:08:30"}, {"samples", "3000"}}));
  return section;
}

// Files that the sheet needs on its way, in a directory that is gone afterwards.
class Scratch {
 public:
  Scratch() : path_(std::filesystem::temp_directory_path() / "zrv-gallery") {
    std::filesystem::create_directories(path_);
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  std::string File(const char* name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// A drawn zigzag, a dark move and a drawn line: corners of every sort.
std::string CornerPath(const Scratch& scratch) {
  const std::string name = scratch.File("corners.txt");
  std::ofstream(name)
      << "-0.8 -0.6 255\n-0.4 0.7 255\n0 -0.6 255\n0.4 0.7 0\n0.8 0.7 255\n0.8 -0.6 255\n0.3 -0.6 255\n";
  return name;
}

void Gallery(const std::string& output) {
  CheckPictureFile(output);
  const Scratch scratch;
  std::vector<SheetSection> sections = {
      Waveforms(), Curves(), Profiles(CornerPath(scratch)), Transforms(), Animations(), Filters(), Rasters()};
  sections.push_back(Fonts());
  sections.push_back(DrawingsAndBurns(scratch.File("drawing.ild")));
  sections.push_back(Composites(scratch.File("drawing.ild")));
  DrawSheet(output, "What zrv can draw", sections, 8);
  std::printf("picture in %s\n", output.c_str());
}

}  // namespace

void AddGalleryCommand(CLI::App& app) {
  auto output = std::make_shared<std::string>("zrv-gallery.png");
  CLI::App* command =
      AddCommand(app, "gallery", "A picture of everything the generator makes", {"zrv gallery -o gallery.png"});
  AddFile(*command, "-o,--output", *output, "picture to write, PNG or SVG");
  command->callback([output] { Gallery(*output); });
}

}  // namespace zrvtool
