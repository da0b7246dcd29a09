// For builds without cairo and libjpeg-turbo: no picture is written or read, and the user is told why.
#include "canvas.h"
#include "errors.h"
#include "image_file.h"

namespace zrvtool {
namespace {

[[noreturn]] void Refuse(const std::string& what) {
  throw ToolError(
      "cannot " + what +
      ": this build of zrv has no pictures.\n"
      "Save the pattern as a file instead, or make the picture where zrv was built with ZRV_WITH_PICTURES.");
}

}  // namespace

bool HasPictures() { return false; }

void CheckPictureFile(const std::string& fileName) { Refuse("draw " + fileName); }

struct Canvas::Surface {};

Canvas::Canvas(const std::string& fileName, double, double) { Refuse("draw " + fileName); }
Canvas::~Canvas() = default;
void Canvas::Fill(const Box&, Colour, double) {}
void Canvas::Frame(const Box&, Colour, double) {}
void Canvas::Line(double, double, double, double, Colour, double) {}
void Canvas::Dot(double, double, double, Colour) {}
void Canvas::Ring(double, double, double, Colour, double) {}
void Canvas::Text(double, double, const std::string&, double, Colour, Align, bool) {}
void Canvas::TextUpwards(double, double, const std::string&, double, Colour) {}
void Canvas::MoveTo(double, double) {}
void Canvas::LineTo(double, double) {}
void Canvas::Stroke(Colour, double) {}
void Canvas::Clip(const Box&) {}
void Canvas::Unclip() {}
void Canvas::Save() {}

bool IsImageFile(const std::string&) { return false; }

Image LoadImage(const std::string& name) { Refuse("read " + name); }

}  // namespace zrvtool
