// Makes the binary font file that ZRVDataGenerator loads from the public Hershey text distribution (.jhf).
#ifndef ZRV_TOOLS_FONT_BUILDER_H
#define ZRV_TOOLS_FONT_BUILDER_H

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zrv {

// One glyph as the font file holds it: vertex count, left bound, right bound, then x, y, pen of each vertex.
using GlyphRecord = std::vector<int16_t>;

struct JhfGlyph {
  int number = 0;  // in the glyph catalogue; 12345 where the text does not say
  GlyphRecord record;
};

// The glyphs of a .jhf file: five columns number, three columns pairs, then the pairs, each character an
// offset from 'R'. The first pair is the bounds, " R" lifts the pen. Lines may be wrapped anywhere. Empty when
// the text is anything else.
std::optional<std::vector<JhfGlyph>> ReadJhf(std::string_view text);

// Collects glyphs and tables. Glyphs keep their catalogue number where it is known and free; the others, and
// those that differ from one of the same number, are numbered from kFirstFreeGlyph on. Equal glyphs are held once.
class FontBuilder {
 public:
  static constexpr size_t kFontEntries = 96;  // characters 32..127
  static constexpr int kFirstFreeGlyph = 4000;

  void AddFont(const std::vector<JhfGlyph>& glyphs);
  void AddMath(const std::vector<JhfGlyph>& glyphs) { AddToIndex(glyphs, math_); }
  void AddSymbols(const std::vector<JhfGlyph>& glyphs) { AddToIndex(glyphs, symbols_); }
  void AddOriental(const std::vector<JhfGlyph>& glyphs);

  // The font file; empty when there are more glyphs than 16 bits number.
  std::vector<uint8_t> Build() const;

 private:
  int NumberOf(const JhfGlyph& glyph);
  void AddToIndex(const std::vector<JhfGlyph>& glyphs, std::vector<int>& index);

  std::map<int, GlyphRecord> glyphs_;
  std::map<GlyphRecord, int> numbers_;
  int nextFree_ = kFirstFreeGlyph;
  std::vector<int> fonts_, math_, symbols_;
  std::vector<GlyphRecord> oriental_;
};

enum class FontUse {
  text,
  math,
  symbols
};

struct FontSource {
  const char* name;  // of the file, without .jhf
  const char* title;
  FontUse use;  // math and symbols are entered in the font file's index of that kind as well
};

// The fonts of the installed font file; the position is the font number.
std::span<const FontSource> DefaultFonts();

// Builds the font file of DefaultFonts() from a directory of .jhf files. Empty on failure; error says why.
std::vector<uint8_t> BuildDefaultFont(const std::filesystem::path& directory, std::string& error);

}  // namespace zrv

#endif
