#include "tools/font_builder.h"

#include <algorithm>
#include <limits>

#include "common/files.h"
#include "common/text_numbers.h"

namespace zrv {
namespace {

constexpr size_t kNumberColumns = 5, kCountColumns = 3;
constexpr const char* kOrientalFile = "japanese";

constexpr FontSource kDefaultFonts[] = {
    {"rowmans", "Roman, one stroke", FontUse::text},
    {"rowmand", "Roman, two strokes", FontUse::text},
    {"rowmant", "Roman, three strokes", FontUse::text},
    {"futural", "Sans serif, light", FontUse::text},
    {"futuram", "Sans serif, medium", FontUse::text},
    {"timesr", "Serif", FontUse::text},
    {"timesrb", "Serif, bold", FontUse::text},
    {"timesi", "Serif, italic", FontUse::text},
    {"timesib", "Serif, bold italic", FontUse::text},
    {"scripts", "Script, one stroke", FontUse::text},
    {"scriptc", "Script, two strokes", FontUse::text},
    {"cursive", "Cursive", FontUse::text},
    {"gothiceng", "Gothic English", FontUse::text},
    {"gothicger", "Gothic German", FontUse::text},
    {"gothicita", "Gothic Italian", FontUse::text},
    {"gothgbt", "Gothic English, three strokes", FontUse::text},
    {"gothgrt", "Gothic German, three strokes", FontUse::text},
    {"gothitt", "Gothic Italian, three strokes", FontUse::text},
    {"greeks", "Greek, one stroke", FontUse::text},
    {"greekc", "Greek, two strokes", FontUse::text},
    {"greek", "Greek", FontUse::text},
    {"timesg", "Greek, serif", FontUse::text},
    {"cyrillic", "Cyrillic", FontUse::text},
    {"cyrilc_1", "Cyrillic, two strokes", FontUse::text},
    {"japanese", "Japanese", FontUse::text},
    {"mathlow", "Mathematics, lower case", FontUse::math},
    {"mathupp", "Mathematics, upper case", FontUse::math},
    {"symbolic", "Symbols", FontUse::symbols},
    {"markers", "Markers", FontUse::symbols},
    {"astrology", "Astrology", FontUse::symbols},
    {"meteorology", "Meteorology", FontUse::symbols},
    {"music", "Music", FontUse::symbols},
};

// Takes characters across line ends. Fewer come back at the end of the text.
std::string TakeUnwrapped(std::string_view& text, size_t count) {
  std::string taken;
  while (taken.size() < count && !text.empty()) {
    if (text.front() != '\n' && text.front() != '\r') taken += text.front();
    text.remove_prefix(1);
  }
  return taken;
}

std::optional<int> NumberIn(const std::string& columns) {
  std::string_view text = columns;
  const auto value = TakeUnsigned(text);
  if (!value || !text.empty() || *value > std::numeric_limits<int16_t>::max()) return {};
  return static_cast<int>(*value);
}

int16_t Offset(char c) { return static_cast<int16_t>(c - 'R'); }

// The state of the pen belongs to the stroke that begins at a vertex, so lifting it marks the vertex before;
// nothing is drawn from the last one.
GlyphRecord RecordFrom(const std::string& pairs) {
  GlyphRecord record = {0, Offset(pairs[0]), Offset(pairs[1])};
  for (size_t i = 2; i < pairs.size(); i += 2) {
    const bool lifted = pairs[i] == ' ' && pairs[i + 1] == 'R';
    if (lifted && record.size() > 3) record.back() = 0;
    if (!lifted) record.insert(record.end(), {Offset(pairs[i]), Offset(pairs[i + 1]), 1});
  }
  if (record.size() > 3) record.back() = 0;
  record[0] = static_cast<int16_t>(record.size() / 3 - 1);
  return record;
}

std::optional<JhfGlyph> TakeGlyph(std::string_view& text) {
  const auto number = NumberIn(TakeUnwrapped(text, kNumberColumns));
  const auto pairs = NumberIn(TakeUnwrapped(text, kCountColumns));
  if (!number || !pairs || *pairs < 1) return {};
  const size_t length = static_cast<size_t>(*pairs) * 2;
  const std::string body = TakeUnwrapped(text, length);
  if (body.size() < length) return {};
  return JhfGlyph{*number, RecordFrom(body)};
}

void SkipLineEnds(std::string_view& text) { text.remove_prefix(std::min(text.find_first_not_of("\r\n"), text.size())); }

class WordList {
 public:
  void Add(int word) {
    bytes_.push_back(static_cast<uint8_t>(word));
    bytes_.push_back(static_cast<uint8_t>(word >> 8));
  }
  void Add(std::span<const int> words) {
    for (const int word : words) Add(word);
  }
  void Add(const GlyphRecord& glyph) {
    Add(glyph[0]);
    for (const int16_t word : glyph) Add(word);
  }
  std::vector<uint8_t> Take() { return std::move(bytes_); }

 private:
  std::vector<uint8_t> bytes_;
};

std::optional<std::vector<JhfGlyph>> Load(const std::filesystem::path& directory, const char* name,
                                          std::string& error) {
  const std::string path = (directory / name).string() + ".jhf";
  const auto bytes = ReadWholeFile(path.c_str());
  auto glyphs = bytes ? ReadJhf(AsText(*bytes)) : std::nullopt;
  if (!glyphs) error = path + (bytes ? ": not a Hershey text file" : ": cannot be read");
  return glyphs;
}

}  // namespace

std::optional<std::vector<JhfGlyph>> ReadJhf(std::string_view text) {
  std::vector<JhfGlyph> glyphs;
  for (SkipLineEnds(text); !text.empty(); SkipLineEnds(text)) {
    auto glyph = TakeGlyph(text);
    if (!glyph) return {};
    glyphs.push_back(std::move(*glyph));
  }
  return glyphs;
}

int FontBuilder::NumberOf(const JhfGlyph& glyph) {
  const auto known = numbers_.find(glyph.record);
  if (known != numbers_.end()) return known->second;
  const bool keeps = glyph.number < kFirstFreeGlyph && !glyphs_.contains(glyph.number);
  const int number = keeps ? glyph.number : nextFree_++;
  glyphs_[number] = glyph.record;
  numbers_[glyph.record] = number;
  return number;
}

void FontBuilder::AddFont(const std::vector<JhfGlyph>& glyphs) {
  for (size_t i = 0; i < kFontEntries; ++i) fonts_.push_back(i < glyphs.size() ? NumberOf(glyphs[i]) : -1);
}

// Signs only: what has no vertices cannot be seen.
void FontBuilder::AddToIndex(const std::vector<JhfGlyph>& glyphs, std::vector<int>& index) {
  for (const JhfGlyph& glyph : glyphs) {
    if (glyph.record[0] > 0) index.push_back(NumberOf(glyph));
  }
}

void FontBuilder::AddOriental(const std::vector<JhfGlyph>& glyphs) {
  for (const JhfGlyph& glyph : glyphs) oriental_.push_back(glyph.record);
}

std::vector<uint8_t> FontBuilder::Build() const {
  const int glyphCount = glyphs_.empty() ? 0 : glyphs_.rbegin()->first + 1;
  if (glyphCount > std::numeric_limits<int16_t>::max()) return {};  // the font tables are signed

  WordList words;
  const size_t fonts = fonts_.size() / kFontEntries;
  for (const size_t count :
       {static_cast<size_t>(glyphCount), oriental_.size(), fonts, kFontEntries, math_.size(), symbols_.size()}) {
    if (count > std::numeric_limits<uint16_t>::max()) return {};
    words.Add(static_cast<int>(count));
  }
  const GlyphRecord none(3, 0);
  for (int number = 0; number < glyphCount; ++number) {
    const auto glyph = glyphs_.find(number);
    words.Add(glyph == glyphs_.end() ? none : glyph->second);
  }
  for (const GlyphRecord& glyph : oriental_) words.Add(glyph);
  words.Add(fonts_);
  words.Add(math_);
  words.Add(symbols_);
  return words.Take();
}

std::span<const FontSource> DefaultFonts() { return kDefaultFonts; }

std::vector<uint8_t> BuildDefaultFont(const std::filesystem::path& directory, std::string& error) {
  FontBuilder builder;
  for (const FontSource& source : kDefaultFonts) {
    const auto glyphs = Load(directory, source.name, error);
    if (!glyphs) return {};
    builder.AddFont(*glyphs);
    if (source.use == FontUse::math) builder.AddMath(*glyphs);
    if (source.use == FontUse::symbols) builder.AddSymbols(*glyphs);
  }
  const auto oriental = Load(directory, kOrientalFile, error);
  if (!oriental) return {};
  builder.AddOriental(*oriental);
  return builder.Build();
}

}  // namespace zrv
