#include <limits>

#include "ZRVDataGenerator.h"
#include "content_files.h"
#include "generator/point_file.h"
#include "points.h"

namespace {

using namespace zrv_test;
using zrv::PointColumns;

TEST(PointFile, TheGrammarLineByLine) {
  const struct {
    const char* name;
    const char* text;
    unsigned sps;
    std::vector<float> x, y;
    std::vector<uint8_t> m;
  } kCases[] = {
      {"plain", "0.5 -0.25 255\n-1 1 0\n", 0, {0.5f, -1}, {-0.25f, 1}, {255, 0}},
      {"header, CR LF, no last line end", "sps 20000\r\n0 1 2\r\n3e-1\t.5  +7.9", 20000, {0, 0.3f}, {1, 0.5f}, {2, 7}},
      {"any word with sps in it", "rate:SPS=x 5\n0 0 1\n", 5, {0}, {0}, {1}},
      {"header alone", "sps 123", 123, {}, {}, {}},
      {"header without a number", "Sps\n0 0 1\n", 0, {0}, {0}, {1}},
      {"clamped", "-7 1e30 -3\n1e-50 -1e99 300\n", 0, {-1, 0}, {1, -1}, {0, 255}},
      {"empty lines", "\n\r\n0 0 1\n\n", 0, {0}, {0}, {1}},
      {"header below an empty line", "\nsps 9\n0 0 1\n", 9, {0}, {0}, {1}},
      {"such a header that reads as data is data, too", "\n1 9 2 sps\n", 9, {1}, {1}, {2}},
      {"a header further down is no number", "0 0 1\nsps 9\n", 0, {0}, {0}, {1}},
      {"lines that are no numbers", "x\n1 2\n0.1,0.2,3\nnan 0 0\ninf 0 0\n0 0 1 extra\n", 0, {0}, {0}, {1}},
      {"nothing", "", 0, {}, {}, {}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    zrv::PointFile file;
    file.Read(c.text, PointColumns::xym);
    EXPECT_EQ(file.sps, c.sps);
    EXPECT_EQ(file.x, c.x);
    EXPECT_EQ(file.y, c.y);
    EXPECT_EQ(file.m, c.m);
  }
  zrv::PointFile file;
  file.Read("sps 10\n0 0 1 2.5\n0 0 1\n0 0 1 -1\n0 0 1 5000\n", PointColumns::xymt);
  EXPECT_EQ(file.t, (std::vector<float>{2.5f, 0, 1000})) << "the fourth column";
}

TEST(PointFile, MistreatedFilesStayInRange) {
  Mistreat(FromText("sps 20000\n0.5 -0.25 255 10\r\n\n-1e-3 +1 0 1e3"), [](const Bytes& bytes) {
    zrv::PointFile file;
    file.Read(zrv::AsText(bytes), PointColumns::xymt);
    EXPECT_LE(file.Size() * 8, bytes.size() + 1);
    EXPECT_EQ(file.y.size() + file.m.size() + file.t.size(), 3 * file.x.size());
    for (const float x : file.x) EXPECT_TRUE(x >= -1 && x <= 1);
    for (const float t : file.t) EXPECT_TRUE(t >= 0 && t <= 1000);
  });
}

TEST(PointFile, ExportIsSixDigitsAndReadsBack) {
  const float x[] = {0.123456789f, -1, 1e-5f}, y[] = {0, 0.5f, 100000.5f};
  const unsigned char m[] = {0, 255, 7};
  const TempFile file(std::string("to be replaced, and longer than what replaces it is going to be: 0 0 0\n"));
  ZRVDataGenerator::ExportFile(file.Path(), x, y, m, 3, 20000);
  EXPECT_EQ(file.Text(), "sps 20000\n0.123457 0 0\n-1 0.5 255\n1e-05 100000 7\n");
  ZRVDataGenerator g;
  EXPECT_EQ(g.LoadPointFile(file.Path()), 3u);
  EXPECT_EQ(g.GetPointFileSps(), 20000u);
  Points out(8);
  EXPECT_EQ(g.PointFileDataStream(out.x.data(), out.y.data(), out.m.data()), 3u);
  EXPECT_EQ(Head(out.x, 3), (std::vector<float>{0.123457f, -1, 1e-5f}));
  EXPECT_EQ(Head(out.m, 3), (std::vector<int>{0, 255, 7}));
  EXPECT_TRUE(out.UntouchedFrom(3));

  ZRVDataGenerator::ExportFile(file.Path(), x, y, m, 1, 0);
  EXPECT_EQ(file.Text(), "0.123457 0 0\n");
  ZRVDataGenerator::ExportFile("/no/such/directory/file", x, y, m, 3, 0);
}

TEST(PointFile, BothKindsShareOneCounterAndNoStreamExceedsIt) {
  const TempFile ten(std::string("0 0 1\n0 0 1\n0 0 1\n")), two(std::string("sps 7\n0 0 1 4\n0 0 1 5\n"));
  ZRVDataGenerator g;
  EXPECT_EQ(g.LoadPointFile(ten.Path()), 3u);
  EXPECT_EQ(g.GetPointTimeFileSize(), 3u);
  Points out(8);
  std::vector<float> t(8, kFloatCanary);
  EXPECT_EQ(g.PointTimeFileDataStream(out.x.data(), out.y.data(), out.m.data(), t.data()), 0u);
  EXPECT_EQ(g.LoadPointTimeFile(two.Path()), 2u);
  EXPECT_EQ(g.GetPointFileSize(), 2u);
  EXPECT_EQ(g.PointFileDataStream(out.x.data(), out.y.data(), out.m.data()), 2u);
  EXPECT_EQ(g.PointTimeFileDataStream(out.x.data(), out.y.data(), out.m.data(), t.data()), 2u);
  EXPECT_EQ(t[1], 5.0f);
  EXPECT_EQ(t[2], kFloatCanary);
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
  const auto read = [&](const char* key) { return ZRVDataGenerator::ReadFileParameter(file.Path(), key, 99); };
  EXPECT_EQ(read("Gain"), -25.0f);  // the first line that holds "Gain = "
  EXPECT_EQ(read("Mask"), 31.0f);
  EXPECT_EQ(read("Last"), 7.0f);
  for (const char* key : {"Text", "Nothing", "", "gain"}) EXPECT_EQ(read(key), 99.0f) << key;
  EXPECT_EQ(read(nullptr), 99.0f);
  EXPECT_EQ(ZRVDataGenerator::ReadFileParameter("/no/such/file", "Gain", 1.5f), 1.5f);
  EXPECT_EQ(ZRVDataGenerator::ReadFileParameter(nullptr, "Gain", 1.5f), 1.5f);
}

}  // namespace
