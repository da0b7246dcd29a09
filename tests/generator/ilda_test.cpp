#include "content_files.h"
#include "generator/ilda_file.h"
#include "points.h"

namespace {

using namespace zrv_test;

constexpr float kUpright = kPi / 2;

// Two frames of 3D points: a lit right angle of 3, and 2 points of which the second is blanked.
Bytes TwoFrames3d() {
  Bytes file = IldaSection(0, 3, 2, BigEndian({-100, 0, 7, 0x0011, 0, 0, -7, 0, 0, 100, 1, 0x8022}));
  file += IldaSection(0, 2, 2, BigEndian({1, 2, 3, 0, 4, 5, 6, 0x4000}));
  return file;
}

Bytes TrueColour() { return IldaSection(5, 2, 1, BigEndian({10, -20, 0x0033, 0x2211, 30, 40, 0x4066, 0x5544})); }

TEST(Ilda, DecodesEachFormatByHandMadeBytes) {
  using Values = std::vector<int16_t>;
  using Levels = std::vector<uint8_t>;
  const zrv::IldaDrawing d = zrv::DecodeIlda(TwoFrames3d());
  EXPECT_EQ(d.x, (Values{-100, 0, 0, 1, 4}));
  EXPECT_EQ(d.y, (Values{0, 0, 100, 2, 5}));
  EXPECT_EQ(d.z, (Values{7, -7, 1, 3, 6}));
  EXPECT_EQ(d.lit, (Levels{255, 255, 255, 255, 0}));
  EXPECT_EQ(d.Frame(2).first, 3u);
  EXPECT_EQ(d.Frame(2).size, 2u);
  const zrv::IldaDrawing flat = zrv::DecodeIlda(IldaSection(1, 2, 1, BigEndian({10, -20, 0x4000, 30, 40, 0x0005})));
  const zrv::IldaDrawing colour = zrv::DecodeIlda(TrueColour());
  for (const auto* two : {&flat, &colour}) {
    EXPECT_EQ(two->x, (Values{10, 30}));
    EXPECT_EQ(two->y, (Values{-20, 40}));
  }
  EXPECT_EQ(flat.lit, (Levels{0, 255}));
  EXPECT_EQ(colour.lit, (Levels{255, 0}));
}

TEST(Ilda, WhatIsThereIsKeptWhateverTheCountsSay) {
  const Bytes two = TwoFrames3d();
  Bytes afterPalette = IldaSection(2, 2, 99, {1, 2, 3, 4, 5, 6}), swapped = two, wrongMagic = two;
  afterPalette += two;
  std::swap(swapped[24], swapped[25]);  // little-endian count: 768 records
  wrongMagic[3] = 'B';
  const auto expect = [](const char* name, const Bytes& file, unsigned frames, unsigned points, unsigned largest,
                         unsigned type) {
    const zrv::IldaDrawing d = zrv::DecodeIlda(file);
    EXPECT_EQ((std::vector{d.frameCount, d.TotalPoints(), d.largestFrame, d.frameType}),
              (std::vector{frames, points, largest, type}))
        << name;
    EXPECT_LE(d.frameEnds.size(), file.size() / 32) << name;  // memory follows the file, not its counts
  };
  expect("whole", two, 2, 5, 3, 0);
  expect("palette in front", afterPalette, 2, 5, 3, 0);
  expect("no file at all", {}, 0, 0, 0, 0);
  expect("wrong magic", wrongMagic, 0, 0, 0, 0);
  expect("second header cut", Bytes(two.begin(), two.begin() + 32 + 24 + 31), 2, 3, 3, 0);
  expect("second record cut", Bytes(two.begin(), two.begin() + 32 + 15), 2, 1, 1, 0);
  expect("count of the other byte order", swapped, 2, 3 + 6, 9, 0);
  expect("65535 frames of 65535", IldaSection(5, 0xFFFF, 0xFFFF, Bytes(80)), 0xFFFF, 10, 10, 5);
  expect("format 4 in 6-byte records", IldaSection(4, 5, 1, Bytes(50)), 1, 5, 5, 4);
  expect("no frames declared", IldaSection(0, 1, 0, Bytes(8)), 0, 0, 0, 0);
}

struct Stream {
  Points out;
  unsigned count;

  Stream(Generator& g, std::vector<unsigned> frames, float angleX, float angleY, bool close) {
    const auto n = static_cast<unsigned>(frames.size());
    const unsigned room = g.IldaAnimSize(frames.data(), n) + n;
    out = Points(room + 8);
    count = g.IldaDataStream(out.x.data(), out.y.data(), out.m.data(), out.index.data(), frames.data(), n, 1, 0, angleX,
                             angleY, close);
    EXPECT_LE(count, room);
    EXPECT_TRUE(out.UntouchedFrom(room));
  }
};

TEST(Ilda, StreamsTheListedFramesClosedAndNormalised) {
  const TempFile file(TwoFrames3d());
  Generator g;
  g.LoadIldaFile(file.Path());
  EXPECT_EQ(g.IldaNumTotalPoints(), 5u);
  EXPECT_EQ(g.IldaFrameSize(1), 3u);
  for (const unsigned f : {0u, 3u, ~0u}) EXPECT_EQ(g.IldaFrameSize(f), 0u);

  // (-100, 0), (0, 0), (0, 100), centred; the common scale runs from the lowest x to the highest y. Closed dark.
  // Frames that are not there add nothing.
  const Stream s(g, {7, 1, 0}, 0, kUpright, false);
  ASSERT_EQ(s.count, 4u);
  s.out.ExpectAt(0, {{-0.5, -0.5}, {0.5, -0.5}, {0.5, 0.5}, {-0.5, -0.5}});
  EXPECT_EQ(Head(s.out.m, 4), (std::vector<int>{255, 255, 0, 255}));
  EXPECT_EQ(g.IldaKeypointCount(1), 4u);
  EXPECT_EQ(g.IldaKeypointCount(3), 0u);

  // With angleY 0 the height is the depth: 7, -7, 1 about a centre of 50 (the box is that of x and y).
  EXPECT_NEAR(Stream(g, {1}, 0, 0, false).out.y[0], 2.0 * (7 - 50) / 200, 1e-5);
  EXPECT_EQ(Stream(g, {2}, 0, kUpright, true).count, 3u);  // two points, closed on request
  EXPECT_EQ(Stream(g, {2}, 0, kUpright, false).count, 2u);
  // Angles that are no numbers: what frames are closed with must not depend on keypoints being equal to themselves.
  for (const float bad : {NAN, INFINITY}) {
    Stream(g, {1, 2, 1, 2}, bad, kUpright, true);
    Stream(g, {1, 2, 1, 2}, 0, bad, true);
  }
}

TEST(Ilda, ColoursTravelWithTheirKeypoints) {
  const TempFile file(TrueColour());
  Generator g;
  g.LoadIldaFile(file.Path());
  const Stream s(g, {1, 1}, 0, kUpright, false);
  EXPECT_EQ(Head(s.out.index, 4), (std::vector<unsigned>{0x112233, 0x445566, 0x112233, 0x445566}));
  EXPECT_EQ(Head(s.out.m, 4), (std::vector<int>{255, 0, 255, 0}));
}

TEST(Ilda, AFailedLoadLeavesNothing) {
  const TempFile good(TwoFrames3d()), other(std::string("sps 100\n0 0 0\n"));
  const std::string directory = std::filesystem::temp_directory_path().string();
  Generator g;
  for (const char* path : {"/no/such/file", directory.c_str(), other.Path(), static_cast<const char*>(nullptr)}) {
    g.LoadIldaFile(good.Path());
    EXPECT_EQ(g.IldaNumFrames(), 2u);
    g.LoadIldaFile(path);
    EXPECT_EQ(g.IldaNumFrames() + g.IldaNumTotalPoints() + Stream(g, {1}, 0, 0, true).count, 0u);
  }
}

}  // namespace
