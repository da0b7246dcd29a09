// Text and signs in vector fonts, as keypoints.
#include <cstdio>

#include "ZRVDataGenerator.h"
#include "common/files.h"
#include "generator/content.h"
#include "generator/counts.h"
#include "generator/geometry.h"

namespace {

struct Keypoints {
  float* x;
  float* y;
  unsigned char* m;
};

unsigned char DigitalByte(const zrv::HersheyVertex& v) { return static_cast<unsigned char>(v.pen * 255); }

// A pen state belongs to the stroke that starts at its vertex. Backwards that stroke ends there, so the state
// moves one keypoint ahead; the first stroke is always drawn, and what leaves the last keypoint is not said.
void WriteReversed(const zrv::HersheyGlyph& glyph, const Keypoints& to, float shift, zrv::Bounds& bounds) {
  const size_t count = glyph.Vertices();
  for (size_t i = 0; i < count; ++i) {
    const zrv::HersheyVertex v = glyph.Vertex(count - 1 - i);
    to.x[i] = static_cast<float>(v.x) + shift;
    to.y[i] = static_cast<float>(-v.y);
    if (i >= 1) to.m[i - 1] = DigitalByte(v);
    bounds.Add(to.x[i], to.y[i]);
  }
  if (count > 0) to.m[0] = 255;
}

void WriteForward(const zrv::HersheyGlyph& glyph, const Keypoints& to, float shift, zrv::Bounds& bounds) {
  for (size_t i = 0; i < glyph.Vertices(); ++i) {
    const zrv::HersheyVertex v = glyph.Vertex(i);
    to.x[i] = static_cast<float>(v.x) + shift;
    to.y[i] = static_cast<float>(-v.y);
    to.m[i] = DigitalByte(v);
    bounds.Add(to.x[i], to.y[i]);
  }
}

template <typename GlyphAt>
uint64_t CountVertices(const zrv::HersheyGlyphSet& set, unsigned int count, GlyphAt glyphAt) {
  uint64_t vertices = 0;
  for (unsigned int i = 0; i < count; ++i) {
    const unsigned int glyph = glyphAt(i);
    if (glyph < set.Size()) vertices += set[glyph].Vertices();
  }
  return vertices;
}

// Lays the glyphs out from left to right in the font's own units. Returns the keypoints written.
template <typename GlyphAt>
unsigned int WriteGlyphs(const zrv::HersheyGlyphSet& set, unsigned int count, GlyphAt glyphAt, const Keypoints& to,
                         zrv::Bounds& bounds) {
  if (!zrv::FitsCount(2 * CountVertices(set, count, glyphAt))) return 0;
  int64_t pen = 0;
  size_t written = 0;
  for (unsigned int i = 0; i < count; ++i) {
    const unsigned int number = glyphAt(i);
    if (written > 0) to.m[written - 1] = 0;  // dark on the way to the next glyph, even to one that is not there
    if (number >= set.Size()) continue;
    const zrv::HersheyGlyph glyph = set[number];
    const Keypoints here = {to.x + written, to.y + written, to.m + written};
    const auto shift = static_cast<float>(pen - glyph.Left());
    (zrv::IsReversedGlyph(number) ? WriteReversed : WriteForward)(glyph, here, shift, bounds);
    written += glyph.Vertices();
    pen += glyph.Right() - glyph.Left();
  }
  return static_cast<unsigned int>(written);
}

auto GlyphsOf(const zrv::HersheyFont& font, unsigned int fontNumber, const char* text) {
  return [&font, fontNumber, text](unsigned int i) {
    return static_cast<unsigned int>(font.EntryForChar(fontNumber, text[i]));  // -1 is above every glyph
  };
}

auto GlyphsOf(const unsigned int* glyphs) {
  return [glyphs](unsigned int i) { return glyphs[i]; };
}

unsigned int Finish(const Keypoints& k, unsigned int count, const zrv::Bounds& bounds, float xScale, float yScale,
                    bool closeCurve) {
  ZRVDataGenerator::NormalizeData(k.x, k.y, count, xScale, yScale, bounds.minX, bounds.maxX, bounds.minY, bounds.maxY);
  return ZRVDataGenerator::CloseCurve(k.x, k.y, k.m, count, 1, closeCurve);
}

}  // namespace

void ZRVDataGenerator::LoadHersheyFile(const char* fileName) {
  ClearHersheyData();
  if (const auto file = zrv::ReadWholeFile(fileName)) content->font = zrv::DecodeHersheyFont(*file);
}

void ZRVDataGenerator::ClearHersheyData() { content->font = {}; }

unsigned int ZRVDataGenerator::HersheyNumOC() const { return content->font.occidental.Size(); }
unsigned int ZRVDataGenerator::HersheyNumOR() const { return content->font.oriental.Size(); }
unsigned int ZRVDataGenerator::HersheyNumMath() const {
  return static_cast<unsigned int>(content->font.mathIndex.size());
}
unsigned int ZRVDataGenerator::HersheyNumSym() const {
  return static_cast<unsigned int>(content->font.symbolIndex.size());
}
unsigned int ZRVDataGenerator::HersheyNumFonts() const { return content->font.fontCount; }
unsigned int ZRVDataGenerator::HersheyFontSize() const { return content->font.entriesPerFont; }

unsigned int ZRVDataGenerator::HersheyIndexMath(unsigned int i) const {
  return i < HersheyNumMath() ? content->font.mathIndex[i] : static_cast<unsigned int>(-1);
}

unsigned int ZRVDataGenerator::HersheyIndexSym(unsigned int i) const {
  return i < HersheyNumSym() ? content->font.symbolIndex[i] : static_cast<unsigned int>(-1);
}

int ZRVDataGenerator::HersheyIndexFont(unsigned int font, unsigned int entry) const {
  return content->font.Entry(font, entry);
}

unsigned int ZRVDataGenerator::HersheyDataSize(const unsigned int* glyphs, unsigned int count, bool occidental) const {
  if (glyphs == nullptr) return 0;
  return zrv::SaturatedCount(CountVertices(content->font.Glyphs(occidental), count, GlyphsOf(glyphs)));
}

unsigned int ZRVDataGenerator::HersheyDataSize(const char* text, unsigned int length, unsigned int font) const {
  if (text == nullptr) return 0;
  return zrv::SaturatedCount(CountVertices(content->font.occidental, length, GlyphsOf(content->font, font, text)));
}

unsigned int ZRVDataGenerator::HersheyDataStream(float* x, float* y, unsigned char* m, const unsigned int* glyphs,
                                                 unsigned int count, bool occidental, float xScale, float yScale,
                                                 bool closeCurve) {
  if (x == nullptr || y == nullptr || m == nullptr || glyphs == nullptr) return 0;
  zrv::Bounds bounds;
  const unsigned int written =
      WriteGlyphs(content->font.Glyphs(occidental), count, GlyphsOf(glyphs), {x, y, m}, bounds);
  return Finish({x, y, m}, written, bounds, xScale, yScale, closeCurve);
}

unsigned int ZRVDataGenerator::HersheyDataStream(float* x, float* y, unsigned char* m, const char* text,
                                                 unsigned int length, unsigned int font, float xScale, float yScale,
                                                 bool closeCurve) {
  if (x == nullptr || y == nullptr || m == nullptr || text == nullptr) return 0;
  zrv::Bounds bounds;
  const unsigned int written =
      WriteGlyphs(content->font.occidental, length, GlyphsOf(content->font, font, text), {x, y, m}, bounds);
  return Finish({x, y, m}, written, bounds, xScale, yScale, closeCurve);
}

unsigned int ZRVDataGenerator::DigitalClockCurve(float* x, float* y, unsigned char* m, unsigned int hours,
                                                 unsigned int minutes, unsigned int seconds, unsigned int fontIndex,
                                                 float fontArg1, float fontArg2, bool fontFlag) {
  constexpr unsigned int kTextLength = 12;
  char text[48];  // room for three full-size integers; what goes beyond the 12 characters is not shown
  std::snprintf(text, sizeof text, "%02d : %02d : %02d", static_cast<int>(hours), static_cast<int>(minutes),
                static_cast<int>(seconds));
  return HersheyDataStream(x, y, m, text, kTextLength, fontIndex, fontArg1, fontArg2, fontFlag);
}
