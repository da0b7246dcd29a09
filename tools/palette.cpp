// The colours of the pictures.
#include "canvas.h"

namespace zrvtool {

Colour Rgb(unsigned int rrggbb) {
  return {(rrggbb >> 16 & 255) / 255.0, (rrggbb >> 8 & 255) / 255.0, (rrggbb & 255) / 255.0, 1};
}

const Palette& PaletteOf(Theme theme) {
  static const Palette dark = {Rgb(0x0E1117), Rgb(0x141A24), Rgb(0x273142), Rgb(0xE8ECF3), Rgb(0x8C97A8),
                               Rgb(0x5CD6FF), Rgb(0xFFC857), Rgb(0x5C6F8F), Rgb(0x7C889B), Rgb(0xFF8A5C)};
  static const Palette light = {Rgb(0xFFFFFF), Rgb(0xF8F9FB), Rgb(0xDFE4EC), Rgb(0x1B2430), Rgb(0x66717F),
                                Rgb(0x0B63B0), Rgb(0xC2410C), Rgb(0xA9B7CC), Rgb(0x9AA6B8), Rgb(0xD6336C)};
  return theme == Theme::Dark ? dark : light;
}

}  // namespace zrvtool
