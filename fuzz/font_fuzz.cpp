// Font files: load, then set text in the first and last font and lay out glyphs of both sets.
#include <numeric>
#include <string>
#include <vector>

#include "ZRVDataGenerator.h"
#include "fuzz/input_file.h"

namespace {

struct Outputs {
  explicit Outputs(size_t room) : x(room), y(room), m(room) {}
  std::vector<float> x, y;
  std::vector<unsigned char> m;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const zrv_fuzz::InputFile file({data, size});
  ZRVDataGenerator g;
  g.LoadHersheyFile(file.Path());

  std::string text(100, '\0');
  std::iota(text.begin(), text.end(), '\x1e');
  for (const unsigned font : {0u, g.HersheyNumFonts() - 1}) {
    Outputs out(2 * size_t{g.HersheyDataSize(text.data(), 100, font)} + 1);
    for (const bool close : {false, true}) {
      g.HersheyDataStream(out.x.data(), out.y.data(), out.m.data(), text.data(), 100, font, 1, 0, close);
    }
    g.HersheyIndexFont(font, g.HersheyFontSize() - 1);
  }
  std::vector<unsigned> glyphs(100);
  std::iota(glyphs.begin(), glyphs.end(), 0u);
  for (const bool occidental : {false, true}) {
    Outputs out(size_t{g.HersheyDataSize(glyphs.data(), 100, occidental)} + 1);
    g.HersheyDataStream(out.x.data(), out.y.data(), out.m.data(), glyphs.data(), 100, occidental, 1, 0, false);
  }
  return 0;
}
