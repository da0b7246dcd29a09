#include "generator/hershey_font.h"

#include <array>

#include "common/bytes.h"

namespace zrv {
namespace {

// The reversed glyphs as they came to be listed, one list per style of the same nineteen signs.
constexpr unsigned kReversedGlyphs[] = {
    850,  1515, 1515, 1515, 850, 571, 53, 251, 1141, 571, 1375, 850, 571, 1108, 53, 251, 1342, 1141, 1141,
    1217, 1500, 1445, 1585, 794, 516, 40, 206, 818,  540, 1327, 768, 490, 1067, 14, 180, 1301, 1093, 230,
    1185, 1474, 1419, 1559, 717, 440, 40, 129, 741,  464, 1275, 691, 414, 1015, 14, 103, 1249, 1041, 153};

constexpr auto kIsReversed = [] {
  std::array<bool, 1586> table{};
  for (const unsigned glyph : kReversedGlyphs) table[glyph] = true;
  return table;
}();

// Each glyph is a vertex count n and then (n + 1) triples of words, the first of which repeats the count.
bool ReadGlyphs(LittleEndianReader& in, unsigned count, HersheyGlyphSet& set) {
  for (unsigned glyph = 0; glyph < count; ++glyph) {
    const int vertices = in.S16();
    const size_t words = vertices < 0 ? 0 : (static_cast<size_t>(vertices) + 1) * 3;
    if (words == 0 || in.Left() < 2 * words) return false;
    set.starts.push_back(set.words.size());
    for (size_t i = 0; i < words; ++i) set.words.push_back(in.S16());
    if (set[glyph].Vertices() != static_cast<size_t>(vertices)) return false;
  }
  return in.ok();
}

template <typename Word>
bool ReadWords(LittleEndianReader& in, size_t count, std::vector<Word>& words) {
  if (in.Left() / 2 < count) return false;
  words.reserve(count);
  for (size_t i = 0; i < count; ++i) words.push_back(static_cast<Word>(in.U16()));
  return true;
}

}  // namespace

int HersheyFont::Entry(unsigned font, unsigned entry) const {
  if (font >= fontCount || entry >= entriesPerFont) return -1;
  return fontIndex[static_cast<size_t>(font) * entriesPerFont + entry];
}

int HersheyFont::EntryForChar(unsigned font, char c) const {
  const int entry = static_cast<signed char>(c) - ' ';  // negative from the 128th character on, too
  return entry < 0 ? -1 : Entry(font, static_cast<unsigned>(entry));
}

bool IsReversedGlyph(unsigned glyph) { return glyph < kIsReversed.size() && kIsReversed[glyph]; }

HersheyFont DecodeHersheyFont(std::span<const uint8_t> file) {
  LittleEndianReader in(file);
  HersheyFont font;
  const unsigned occidental = in.U16();
  const unsigned oriental = in.U16();
  font.fontCount = in.U16();
  font.entriesPerFont = in.U16();
  const unsigned math = in.U16();
  const unsigned symbols = in.U16();
  const size_t entries = static_cast<size_t>(font.fontCount) * font.entriesPerFont;

  const bool whole = in.ok() && ReadGlyphs(in, occidental, font.occidental) &&
                     ReadGlyphs(in, oriental, font.oriental) && ReadWords(in, entries, font.fontIndex) &&
                     ReadWords(in, math, font.mathIndex) && ReadWords(in, symbols, font.symbolIndex);
  return whole ? font : HersheyFont{};
}

}  // namespace zrv
