#include "content_files.h"
#include "generator/point_file.h"
#include "points.h"

namespace {

using namespace zrv_test;
using zrv::PointColumns;

TEST(PointFile, TheGrammarLineByLine) {
  zrv::PointFile file;
  const auto expect = [&](const char* name, const char* text, unsigned sps, std::vector<float> x, std::vector<float> y,
                          std::vector<uint8_t> m) {
    file.Read(text, PointColumns::xym);
    EXPECT_EQ(file.sps, sps) << name;
    EXPECT_TRUE(file.x == x && file.y == y && file.m == m) << name;
  };
  expect("plain", "0.5 -0.25 255\n-1 1 0\n", 0, {0.5f, -1}, {-0.25f, 1}, {255, 0});
  expect("header, CR LF, no end", "sps 20000\r\n0 1 2\r\n3e-1\t.5  +7.9", 20000, {0, 0.3f}, {1, 0.5f}, {2, 7});
  expect("any word with sps in it", "rate:SPS=x 5\n0 0 1\n", 5, {0}, {0}, {1});
  expect("header alone", "sps 123", 123, {}, {}, {});
  expect("header without a number", "Sps\n0 0 1\n", 0, {0}, {0}, {1});
  expect("clamped", "-7 1e30 -3\n1e-50 -1e99 300\n", 0, {-1, 0}, {1, -1}, {0, 255});
  expect("empty lines", "\n\r\n0 0 1\n\n", 0, {0}, {0}, {1});
  expect("header below an empty line", "\nsps 9\n0 0 1\n", 9, {0}, {0}, {1});
  expect("such a header that reads as data is data, too", "\n1 9 2 sps\n", 9, {1}, {1}, {2});
  expect("a header further down is no number", "0 0 1\nsps 9\n", 0, {0}, {0}, {1});
  expect("no numbers", "x\n1 2\n0.1,0.2,3\nnan 0 0\ninf 0 0\n0 0 1 extra\n", 0, {0}, {0}, {1});
  expect("nothing", "", 0, {}, {}, {});
  file.Read("sps 10\n0 0 1 2.5\n0 0 1\n0 0 1 -1\n0 0 1 5000\n", PointColumns::xymt);
  EXPECT_EQ(file.t, (std::vector<float>{2.5f, 0, 1000})) << "the fourth column";
}

TEST(PointFile, ExportIsSixDigitsAndReadsBack) {
  const float x[] = {0.123456789f, -1, 1e-5f}, y[] = {0, 0.5f, 100000.5f};
  const unsigned char m[] = {0, 255, 7};
  const TempFile file(std::string("to be replaced, and longer than what replaces it is going to be: 0 0 0\n"));
  Generator::ExportFile(file.Path(), x, y, m, 3, 20000);
  EXPECT_EQ(file.Text(), "sps 20000\n0.123457 0 0\n-1 0.5 255\n1e-05 100000 7\n");
  Generator g;
  EXPECT_EQ(g.LoadPointFile(file.Path()), 3u);
  EXPECT_EQ(g.GetPointFileSps(), 20000u);
  Points out(8);
  EXPECT_EQ(g.PointFileDataStream(out.x.data(), out.y.data(), out.m.data()), 3u);
  out.ExpectAt(0, {{0.123457, 0}, {-1, 0.5}, {1e-5, 1}});
  EXPECT_EQ(Head(out.m, 3), (std::vector<int>{0, 255, 7}));
  EXPECT_TRUE(out.UntouchedFrom(3));
  Generator::ExportFile(file.Path(), x, y, m, 1, 0);
  EXPECT_EQ(file.Text(), "0.123457 0 0\n");
  Generator::ExportFile(file.Path(), nullptr, y, m, 1, 5);  // no point to write, but it is not empty either
  EXPECT_EQ(file.Text(), "0.123457 0 0\n");
  Generator::ExportFile(file.Path(), nullptr, nullptr, nullptr, 0, 5);
  EXPECT_EQ(file.Text(), "sps 5\n");
  Generator::ExportFile(file.Path(), x, y, m, 0, 0);
  EXPECT_EQ(file.Text(), "");
  Generator::ExportFile("/no/such/directory/file", x, y, m, 3, 0);
}

TEST(PointFile, BothKindsShareOneCounterAndNoStreamExceedsIt) {
  const TempFile three(std::string("0 0 1\n0 0 1\n0 0 1\n")), two(std::string("sps 7\n0 0 1 4\n0 0 1 5\n"));
  Generator g;
  Points out(8);
  std::vector<float> t(8, kFloatCanary);
  float *x = out.x.data(), *y = out.y.data();
  EXPECT_EQ(g.LoadPointFile(three.Path()), 3u);
  EXPECT_EQ(g.GetPointTimeFileSize(), 3u);
  EXPECT_EQ(g.PointTimeFileDataStream(x, y, out.m.data(), t.data()), 0u);
  EXPECT_EQ(g.LoadPointTimeFile(two.Path()), 2u);
  EXPECT_EQ(g.GetPointFileSize(), 2u);
  EXPECT_EQ(g.PointFileDataStream(x, y, out.m.data()), 2u);
  EXPECT_EQ(g.PointTimeFileDataStream(x, y, out.m.data(), t.data()), 2u);
  EXPECT_EQ(Head(t, 3), (std::vector<float>{4, 5, kFloatCanary}));
  EXPECT_TRUE(out.UntouchedFrom(2));
  EXPECT_EQ(g.GetPointFileSps() + g.GetPointTimeFileSps(), 7u);
  g.AllocPointFileData(2);
  EXPECT_EQ(g.GetPointFileSize(), 2u);
  g.AllocPointFileData(101);
  EXPECT_EQ(g.GetPointFileSize(), 0u) << "room is grown only when it is too small";
  EXPECT_EQ(g.LoadPointTimeFile("/no/such/file"), 0u);
}

TEST(ParameterReader, FindsTheFirstLineWithTheKey) {
  const TempFile file(std::string("Gain: 1\r\nXGain = -2.5e1 V\r\nGain = 3\nMask = 0x1F\nLast = +7\nText = abc"));
  const auto read = [&](const char* key) { return Generator::ReadFileParameter(file.Path(), key, 99); };
  EXPECT_EQ(read("Gain"), -25.0f);  // the first line that holds "Gain = "
  EXPECT_EQ(read("Mask"), 31.0f);
  EXPECT_EQ(read("Last"), 7.0f);
  for (const char* key : {"Text", "Nothing", "", "gain"}) EXPECT_EQ(read(key), 99.0f) << key;
  EXPECT_EQ(read(nullptr), 99.0f);
  EXPECT_EQ(Generator::ReadFileParameter("/no/such/file", "Gain", 1.5f), 1.5f);
  EXPECT_EQ(Generator::ReadFileParameter(nullptr, "Gain", 1.5f), 1.5f);
}

}  // namespace
