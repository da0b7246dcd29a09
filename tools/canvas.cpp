#include "canvas.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cctype>
#include <numbers>

#include "data_files.h"
#include "errors.h"

namespace zrvtool {

bool HasPictures() { return true; }

namespace {

bool HasEnding(const std::string& fileName, const char* ending) {
  std::string lower = fileName;
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower.ends_with(ending);
}

struct SurfaceDeleter {
  void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
  void operator()(cairo_t* c) const { cairo_destroy(c); }
};

void CheckEnding(const std::string& fileName) {
  if (!HasEnding(fileName, ".svg") && !HasEnding(fileName, ".png"))
    throw WrongUse("cannot make a picture named " + fileName + ": the name must end in .png or .svg");
}

cairo_surface_t* MakeSurface(const std::string& fileName, double width, double height) {
  CheckEnding(fileName);
  if (HasEnding(fileName, ".svg")) return cairo_svg_surface_create(fileName.c_str(), width, height);
  return cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(width), static_cast<int>(height));
}

}  // namespace

void CheckPictureFile(const std::string& fileName) {
  CheckEnding(fileName);
  CheckWritable(fileName);
}

struct Canvas::Surface {
  Surface(const std::string& name, double width, double height)
      : fileName(name), surface(MakeSurface(name, width, height)), context(cairo_create(surface.get())) {
    Check(cairo_surface_status(surface.get()));
    cairo_set_line_join(context.get(), CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_cap(context.get(), CAIRO_LINE_CAP_ROUND);
  }

  void Check(cairo_status_t status) const {
    if (status != CAIRO_STATUS_SUCCESS)
      throw ToolError("cannot write " + fileName + ": " + cairo_status_to_string(status));
  }

  void SetColour(Colour c) { cairo_set_source_rgba(context.get(), c.r, c.g, c.b, c.a); }

  void SetFont(double size, bool bold) {
    cairo_select_font_face(context.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context.get(), size);
  }

  void Stroke(Colour colour, double lineWidth) {
    SetColour(colour);
    cairo_set_line_width(context.get(), lineWidth);
    cairo_stroke(context.get());
  }

  std::string fileName;
  std::unique_ptr<cairo_surface_t, SurfaceDeleter> surface;
  std::unique_ptr<cairo_t, SurfaceDeleter> context;
};

Canvas::Canvas(const std::string& fileName, double width, double height)
    : surface_(std::make_unique<Surface>(fileName, width, height)) {}

Canvas::~Canvas() = default;

void Canvas::Fill(const Box& box, Colour colour, double cornerRadius) {
  cairo_t* c = surface_->context.get();
  const double r = cornerRadius, quarter = std::numbers::pi / 2;
  cairo_new_sub_path(c);
  cairo_arc(c, box.x + box.width - r, box.y + r, r, -quarter, 0);
  cairo_arc(c, box.x + box.width - r, box.y + box.height - r, r, 0, quarter);
  cairo_arc(c, box.x + r, box.y + box.height - r, r, quarter, 2 * quarter);
  cairo_arc(c, box.x + r, box.y + r, r, 2 * quarter, 3 * quarter);
  cairo_close_path(c);
  surface_->SetColour(colour);
  cairo_fill(c);
}

void Canvas::Frame(const Box& box, Colour colour, double lineWidth) {
  cairo_rectangle(surface_->context.get(), box.x, box.y, box.width, box.height);
  surface_->Stroke(colour, lineWidth);
}

void Canvas::Line(double x0, double y0, double x1, double y1, Colour colour, double lineWidth) {
  MoveTo(x0, y0);
  LineTo(x1, y1);
  Stroke(colour, lineWidth);
}

void Canvas::Dot(double x, double y, double radius, Colour colour) {
  cairo_new_sub_path(surface_->context.get());
  cairo_arc(surface_->context.get(), x, y, radius, 0, 2 * std::numbers::pi);
  surface_->SetColour(colour);
  cairo_fill(surface_->context.get());
}

void Canvas::Ring(double x, double y, double radius, Colour colour, double lineWidth) {
  cairo_new_sub_path(surface_->context.get());
  cairo_arc(surface_->context.get(), x, y, radius, 0, 2 * std::numbers::pi);
  surface_->Stroke(colour, lineWidth);
}

void Canvas::Text(double x, double y, const std::string& text, double size, Colour colour, Align align, bool bold) {
  cairo_t* c = surface_->context.get();
  surface_->SetFont(size, bold);
  cairo_text_extents_t extents;
  cairo_text_extents(c, text.c_str(), &extents);
  const double share = align == Align::Left ? 0 : align == Align::Centre ? 0.5 : 1;
  cairo_move_to(c, x - share * extents.x_advance, y);
  surface_->SetColour(colour);
  cairo_show_text(c, text.c_str());
  cairo_new_path(c);
}

void Canvas::TextUpwards(double x, double y, const std::string& text, double size, Colour colour) {
  cairo_t* c = surface_->context.get();
  cairo_save(c);
  cairo_translate(c, x, y);
  cairo_rotate(c, -std::numbers::pi / 2);
  Text(0, 0, text, size, colour, Align::Centre);
  cairo_restore(c);
}

void Canvas::MoveTo(double x, double y) { cairo_move_to(surface_->context.get(), x, y); }
void Canvas::LineTo(double x, double y) { cairo_line_to(surface_->context.get(), x, y); }
void Canvas::Stroke(Colour colour, double lineWidth) { surface_->Stroke(colour, lineWidth); }

void Canvas::Clip(const Box& box) {
  cairo_t* c = surface_->context.get();
  cairo_save(c);
  cairo_rectangle(c, box.x, box.y, box.width, box.height);
  cairo_clip(c);
}

void Canvas::Unclip() { cairo_restore(surface_->context.get()); }

void Canvas::Save() {
  surface_->Check(cairo_status(surface_->context.get()));
  if (HasEnding(surface_->fileName, ".png"))
    surface_->Check(cairo_surface_write_to_png(surface_->surface.get(), surface_->fileName.c_str()));
  cairo_surface_finish(surface_->surface.get());
  surface_->Check(cairo_surface_status(surface_->surface.get()));
}

}  // namespace zrvtool
