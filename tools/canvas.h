// A drawing surface that becomes a PNG or an SVG file, by the ending of its name. Thin skin over cairo:
// everything the pictures need, and the only place of the tool (with canvas.cpp) that sees cairo.
#ifndef ZRV_TOOLS_CANVAS_H
#define ZRV_TOOLS_CANVAS_H

#include <memory>
#include <string>

namespace zrvtool {

struct Colour {
  double r = 0, g = 0, b = 0, a = 1;
  Colour WithAlpha(double alpha) const { return {r, g, b, alpha}; }
};
Colour Rgb(unsigned int rrggbb);

struct Box {
  double x = 0, y = 0, width = 0, height = 0;
  Box Inset(double left, double top, double right, double bottom) const {
    return {x + left, y + top, width - left - right, height - top - bottom};
  }
};

enum class Theme {
  Dark,
  Light
};

// The colours of a theme: dark shows laser light as light, white is for print.
struct Palette {
  Colour paper, field, grid, text, faintText, ink, secondInk, ghost, blank, mark;
};
const Palette& PaletteOf(Theme theme);

enum class Align {
  Left,
  Centre,
  Right
};

// Whether this build can draw at all.
bool HasPictures();

// Throws ToolError when no picture could be written under this name. For pictures that are drawn after a long time
// only.
void CheckPictureFile(const std::string& fileName);

class Canvas {
 public:
  // Width and height in pixels (PNG) or points (SVG). Throws when the ending is neither .png nor .svg.
  Canvas(const std::string& fileName, double width, double height);
  ~Canvas();
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  void Fill(const Box& box, Colour colour, double cornerRadius = 0);
  void Frame(const Box& box, Colour colour, double lineWidth);
  void Line(double x0, double y0, double x1, double y1, Colour colour, double lineWidth);
  void Dot(double x, double y, double radius, Colour colour);
  void Ring(double x, double y, double radius, Colour colour, double lineWidth);

  // y is the base line of the text.
  void Text(double x, double y, const std::string& text, double size, Colour colour, Align align = Align::Left,
            bool bold = false);
  void TextUpwards(double x, double y, const std::string& text, double size, Colour colour);

  // A path in pieces; Stroke ends it.
  void MoveTo(double x, double y);
  void LineTo(double x, double y);
  void Stroke(Colour colour, double lineWidth);

  // Everything drawn from Clip to Unclip stays inside the box.
  void Clip(const Box& box);
  void Unclip();

  // Writes the file. Throws when it cannot be written.
  void Save();

 private:
  struct Surface;
  std::unique_ptr<Surface> surface_;
};

}  // namespace zrvtool

#endif
