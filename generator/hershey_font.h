// The vector-font file: Hershey glyphs and the tables that turn characters into them.
#ifndef ZRV_GENERATOR_HERSHEY_FONT_H
#define ZRV_GENERATOR_HERSHEY_FONT_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zrv {

struct HersheyVertex {
  int x, y;  // y grows downward
  int pen;   // 1: the stroke to the next vertex is drawn; 0: moved with the beam off
};

// One glyph inside the words of its set.
class HersheyGlyph {
 public:
  explicit HersheyGlyph(const int16_t* record) : record_(record) {}

  size_t Vertices() const { return static_cast<size_t>(record_[0]); }
  int Left() const { return record_[1]; }
  int Right() const { return record_[2]; }
  HersheyVertex Vertex(size_t i) const {
    const int16_t* words = record_ + 3 * (i + 1);
    return {words[0], words[1], words[2]};
  }

 private:
  const int16_t* record_;  // vertex count, left bound, right bound, then x, y, pen of each vertex
};

// Glyphs by number, in one block of words.
struct HersheyGlyphSet {
  std::vector<int16_t> words;
  std::vector<size_t> starts;

  unsigned Size() const { return static_cast<unsigned>(starts.size()); }
  HersheyGlyph operator[](unsigned glyph) const { return HersheyGlyph(&words[starts[glyph]]); }
};

struct HersheyFont {
  HersheyGlyphSet occidental, oriental;
  unsigned fontCount = 0;
  unsigned entriesPerFont = 0;
  std::vector<int16_t> fontIndex;  // font after font, by character code - 32; -1: no glyph
  std::vector<uint16_t> mathIndex, symbolIndex;

  const HersheyGlyphSet& Glyphs(bool inOccidental) const { return inOccidental ? occidental : oriental; }

  // The glyph number of a character, or -1 where the tables hold none.
  int Entry(unsigned font, unsigned entry) const;
  int EntryForChar(unsigned font, char c) const;
};

// Whether a glyph is drawn from its last vertex to its first.
bool IsReversedGlyph(unsigned glyph);

// Empty when the bytes are cut short, or when a glyph's two counts differ: half a font is worse than none.
HersheyFont DecodeHersheyFont(std::span<const uint8_t> file);

}  // namespace zrv

#endif
