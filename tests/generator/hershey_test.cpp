#include "content_files.h"
#include "generator/hershey_font.h"
#include "points.h"
#include "tools/font_builder.h"

namespace {

using namespace zrv_test;

// Occidental glyphs 0 (a corner of two strokes), 1 (empty, 10 wide), 2 .. 13 empty, 14 (reversed: two strokes with
// a gap); oriental glyph 0 (one stroke). One font: ' ' is glyph 1, '!' glyph 0, '"' none, '#' 14.
Bytes SmallFont() {
  Bytes file = Words({15, 1, 1, 4, 2, 1});
  file += Words({3, 3, -5, 5, -5, 5, 1, 5, 5, 1, 5, -5, 0});
  file += Words({0, 0, -5, 5});
  for (int i = 2; i < 14; ++i) file += Words({0, 0, 0, 0});
  file += Words({4, 4, 0, 20, 0, 0, 1, 10, 0, 0, 10, 10, 1, 20, 10, 0});
  file += Words({2, 2, -1, 1, -1, 0, 1, 1, 0, 0});
  file += Words({1, 0, -1, 14});
  file += Words({0, 14, 7});
  return file;
}

struct Text {
  Points out;
  unsigned count;

  Text(Generator& g, const std::string& text, bool close = false) {
    const auto length = static_cast<unsigned>(text.size());
    const unsigned n = g.HersheyDataSize(text.c_str(), length, 0), room = close ? 2 * n : n + 1;
    out = Points(room + 8);
    count = g.HersheyDataStream(out.x.data(), out.y.data(), out.m.data(), text.c_str(), length, 0, 1, 0, close);
    EXPECT_LE(count, room);
    EXPECT_TRUE(out.UntouchedFrom(room));
  }
};

struct LoadedFont : testing::Test {
  LoadedFont() { g.LoadHersheyFile(TempFile(SmallFont()).Path()); }
  Generator g;
};

TEST_F(LoadedFont, CountsAndIndexesWithTheirEdges) {
  EXPECT_EQ((std::vector{g.HersheyNumOC(), g.HersheyNumOR(), g.HersheyNumFonts(), g.HersheyFontSize()}),
            (std::vector{15u, 1u, 1u, 4u}));
  EXPECT_EQ((std::vector{g.HersheyIndexMath(1), g.HersheyIndexMath(2), g.HersheyIndexSym(0), g.HersheyIndexSym(1)}),
            (std::vector{14u, ~0u, 7u, ~0u}));
  EXPECT_EQ((std::vector{g.HersheyIndexFont(0, 3), g.HersheyIndexFont(0, 4), g.HersheyIndexFont(1, 0)}),
            (std::vector{14, -1, -1}));
  const unsigned glyphs[] = {0, 14, 15, ~0u, 1};
  EXPECT_EQ(g.HersheyDataSize(glyphs, 5, true), 7u);
  EXPECT_EQ(g.HersheyDataSize(glyphs, 5, false), 2u);
  EXPECT_EQ(g.HersheyDataSize("! \x1f\xe9#\x7f", 6, 0), 7u);  // below the space, above 127, beyond the table
}

TEST_F(LoadedFont, GlyphsStandSideBySideDarkBetweenThem) {
  // The corner at 0..10, a gap of 10, the corner at 20..30, and back to the start: centred on 15. The common scale
  // runs from the lowest y to the highest x: 35.
  const Text t(g, "! !");
  ASSERT_EQ(t.count, 7u);
  const double a = 30.0 / 35, b = 10.0 / 35;
  t.out.ExpectAt(0, {{-a, -b}, {-b, -b}, {-b, b}, {b, -b}, {a, -b}, {a, b}, {-a, -b}});
  EXPECT_EQ(Head(t.out.m, 7), (std::vector<int>{255, 255, 0, 255, 255, 0, 255}));
}

TEST_F(LoadedFont, MissingGlyphsBlankWhatCameBeforeAndTakeNoRoom) {
  EXPECT_EQ(Text(g, "\"").count, 0u);
  EXPECT_EQ(Head(Text(g, "\"!").out.m, 4), (std::vector<int>{255, 255, 0, 255}));  // nothing before it to blank
  const unsigned glyphs[] = {14, 99};
  Points out(16);
  EXPECT_EQ(g.HersheyDataStream(out.x.data(), out.y.data(), out.m.data(), glyphs, 2, true, 1, 0, false), 5u);
  EXPECT_EQ(out.m[3], 0);
  // No digits in this font; " : " has four spaces and two glyphs that are not there.
  EXPECT_EQ(g.DigitalClockCurve(out.x.data(), out.y.data(), out.m.data(), ~0u, ~0u, ~0u, 0, 1, 0, false), 0u);
}

TEST_F(LoadedFont, ReversedGlyphsDrawTheSameStrokesBackwards) {
  const Text t(g, "##");
  ASSERT_EQ(t.count, 9u);
  EXPECT_EQ(Head(t.out.m, 9), (std::vector<int>{255, 0, 255, 0, 255, 0, 255, 0, 255}));
  EXPECT_EQ(Text(g, "!#", true).count, 13u) << "closing retraces the whole text";
  EXPECT_GT(t.out.x[0], t.out.x[3]);
  EXPECT_LT(t.out.y[0], t.out.y[3]);
  unsigned reversed = 0;
  for (unsigned glyph = 0; glyph < 2000; ++glyph) reversed += zrv::IsReversedGlyph(glyph);
  EXPECT_EQ(reversed, 45u);  // 57 numbers, 12 of them repeats
}

TEST(HersheyFile, CutShortOrContradictoryIsNotLoaded) {
  Bytes file = SmallFont();
  ASSERT_EQ(zrv::DecodeHersheyFont(file).occidental.Size(), 15u);
  for (size_t length = 0; length < file.size(); ++length) {
    const zrv::HersheyFont font = zrv::DecodeHersheyFont(std::span(file).first(length));
    EXPECT_EQ(font.occidental.Size() + font.fontCount + font.mathIndex.size(), 0u) << length;
  }
  ++file[2 * 7];  // the first glyph's count, which stands there twice
  EXPECT_EQ(zrv::DecodeHersheyFont(file).occidental.Size(), 0u);
}

TEST(FontBuilder, ReadsGlyphsWrappedOrNot) {
  // Bounds -8..8; a stroke (-2,-3) (2,-3), pen up, a stroke (0,1) (3,4).
  const std::string line = "  501  6JZPOTO RRSUV";
  for (const std::string& text : {line, line + "\r\n", line.substr(0, 13) + "\n" + line.substr(13) + "\n"}) {
    const auto glyphs = zrv::ReadJhf(text);
    ASSERT_TRUE(glyphs && glyphs->size() == 1);
    EXPECT_EQ((*glyphs)[0].number, 501);
    EXPECT_EQ((*glyphs)[0].record, (zrv::GlyphRecord{4, -8, 8, -2, -3, 1, 2, -3, 0, 0, 1, 1, 3, 4, 0}));
  }
  for (const char* bad : {"  501  6JZPOTO", "x", "12345  0", "  501 -1JZ"}) EXPECT_FALSE(zrv::ReadJhf(bad)) << bad;
}

TEST(FontBuilder, WritesWhatTheLoaderReads) {
  const zrv::GlyphRecord stroke = {2, -3, 3, -1, 0, 1, 1, 0, 0}, dot = {1, -1, 1, 0, 0, 0}, none = {0, -4, 4};
  zrv::FontBuilder builder;
  builder.AddFont({{12345, none}, {7, stroke}, {12345, dot}});
  builder.AddFont({{12345, none}, {7, dot}, {7, {1, -9, 9, 0, 0, 0}}});  // known, and number 7 taken
  builder.AddSymbols({{12345, none}, {12345, dot}});
  builder.AddOriental({{12345, stroke}});
  const zrv::HersheyFont font = zrv::DecodeHersheyFont(builder.Build());
  EXPECT_EQ((std::vector{font.occidental.Size(), font.oriental.Size(), font.fontCount}), (std::vector{4003u, 1u, 2u}));
  EXPECT_EQ((std::vector{font.Entry(0, 0), font.Entry(0, 1), font.Entry(0, 2)}), (std::vector{4000, 7, 4001}));
  EXPECT_EQ((std::vector{font.Entry(1, 0), font.Entry(1, 1), font.Entry(1, 2), font.Entry(1, 3)}),
            (std::vector{4000, 4001, 4002, -1}));
  EXPECT_EQ(font.symbolIndex, (std::vector<uint16_t>{4001}));
  EXPECT_EQ(font.occidental[7].Vertex(1).x, 1);
}

#ifdef ZRV_FONT_FILE
TEST(DefaultFont, EveryFontHasTheLettersOfTheAlphabet) {
  Generator g;
  g.LoadHersheyFile(ZRV_FONT_FILE);
  const auto fonts = static_cast<unsigned>(zrv::DefaultFonts().size());
  ASSERT_EQ(g.HersheyNumFonts(), fonts);
  EXPECT_EQ(g.HersheyNumOR(), 193u);
  for (unsigned font = 0; font < fonts; ++font) {
    unsigned visible = 0;
    for (char c = '!'; c < 127; ++c) visible += g.HersheyDataSize(&c, 1, font) > 1;
    const auto& expected = zrv::DefaultFonts()[font];
    EXPECT_GT(visible, expected.use == zrv::FontUse::text ? 55u : 30u) << expected.name;
  }
  // The clock: 00 : 00 : 00 in the plainest font begins and ends with the same glyph, which is as high as it is.
  Points out(400);
  const unsigned n = g.DigitalClockCurve(out.x.data(), out.y.data(), out.m.data(), 0, 0, 0, 0, 1, 0, false);
  EXPECT_EQ(n, g.HersheyDataSize("00 : 00 : 00", 12, 0) + 1);
  const auto [low, high] = std::minmax_element(out.y.begin(), out.y.begin() + n);
  EXPECT_EQ(*high, -*low);
}
#endif

}  // namespace
