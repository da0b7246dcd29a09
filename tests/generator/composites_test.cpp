// The composite generators: what each makes, that they keep to the arrays, and that sizes told are sizes needed.
#include <functional>
#include <string>

#include "ZRVDataGenerator.h"
#include "ZRVFlatInterface.h"
#include "content_files.h"
#include "points.h"

namespace zrv_test {
namespace {

struct Counts {
  unsigned int samples = 77, frames = 77, rate = 77;
  bool operator==(const Counts&) const = default;
};

struct Composite {
  const char* name;
  std::function<Counts(float*, float*, unsigned char*, const ZRVScanSettings&)> make;
  unsigned int keypoints;   // as CurvesDataSize is told
  unsigned int frames = 0;  // of an imported drawing
  unsigned int lines = 0;   // between keypoints, at most, once closed; 0: not said
};

class Composites : public ::testing::Test {
 protected:
  Composites() {
    g.LoadHersheyFile(ZRV_FONT_FILE);
    lissajous.Modulation = ModulatePhase;
    digital.Digital = true;
    text.Text = "Zrv 5";
    points.PointX = placesX, points.PointY = placesY, points.NumPoints = 3, points.Pattern = ScanPointToPoint;
  }

  // Two true-colour frames: a red corner, then a green line on the other side.
  static Bytes Drawing(int frames = 2) {
    const Bytes corner = BigEndian({-20000, 0, 0, 0xFF, -20000, 20000, 0, 0xFF, -10000, 20000, 0, 0xFF});
    Bytes file = IldaSection(5, 3, frames, corner);
    if (frames > 1) file += IldaSection(5, 2, frames, BigEndian({20000, 0, 0, 0xFF00, 20000, -20000, 0, 0xFF00}));
    file += IldaSection(5, 0, frames);
    return file;
  }

  // Rate: none, or the one that the generator chooses.
  template <typename Settings, typename... Rate>
  auto Made(void (ZRVDataGenerator::*call)(float*, float*, unsigned char*, const ZRVScanSettings&, const Settings&,
                                           unsigned int&, unsigned int&, Rate&...),
            const Settings& settings) {
    return [=, this, &settings](float* x, float* y, unsigned char* m, const ZRVScanSettings& scan) {
      Counts c;
      const auto generate = [&](Rate&... rate) { (g.*call)(x, y, m, scan, settings, c.samples, c.frames, rate...); };
      if constexpr (sizeof...(Rate) == 0) generate();
      else generate(c.rate);
      return c;
    };
  }
  auto Import(const char* path, bool keypoints = false) {
    return [this, path, keypoints](float* x, float* y, unsigned char* m, const ZRVScanSettings& scan) {
      ZRVImportSettings settings;
      settings.FileName = path;
      settings.Keypoints = keypoints;
      Counts counts;
      g.GenerateImportFileData(x, y, m, nullptr, scan, settings, counts.samples, counts.frames, counts.rate);
      return counts;
    };
  }

  std::vector<Composite> All() {
    using G = ZRVDataGenerator;
    return {{"waveform", Made(&G::GenerateWaveformData, waveform), 0},
            {"spirograph", Made(&G::GenerateSpirographData, spirograph), 0},
            {"Lissajous", Made(&G::GenerateLissajousData, lissajous), 0},
            {"clock", Made(&G::GenerateClockData, clock), 0},
            {"digital clock", Made(&G::GenerateClockData, digital), g.HersheyDataSize("10 : 08 : 30", 12, 0)},
            {"text", Made(&G::GenerateTextData, text), g.HersheyDataSize(text.Text, 5, 0), 0,
             2 * g.HersheyDataSize(text.Text, 5, 0) + 1},
            {"keypoints", Import(pointFile.Path(), true), 0, 0, 2 * 4 + 1},
            {"drawing", Import(drawing.Path()), 3, 2},
            {"one frame, animated", Import(single.Path()), 3, 1},
            {"points", Import(pointFile.Path()), 0},
            {"point times", Import(timesFile.Path()), 0},
            // From here on the size is what the generator itself says.
            {"signal", Made(&G::GenerateSignalData, signal), ~0u},
            {"raster", Made(&G::GenerateScanData, raster), ~0u},
            {"point to point", Made(&G::GenerateScanData, points), ~0u}};
  }

  TempFile pointFile{"sps 5000\n-0.5 0 255\n0.5 0 0\n0.5 0.5 255\n-0.5 0.5 255\n"};
  TempFile timesFile{"0 0 255 10\n0.5 0.5 7 20\n"}, drawing{Drawing()}, single{Drawing(1)};
  const float placesX[3] = {-0.5f, 0, 0.5f}, placesY[3] = {0, 0.5f, 0};
  ZRVDataGenerator g;
  ZRVWaveformSettings waveform;
  ZRVSpirographSettings spirograph;
  ZRVLissajousSettings lissajous;
  ZRVClockSettings clock, digital;
  ZRVTextSettings text;
  ZRVSignalSettings signal;
  ZRVPatternSettings raster, points;
};

TEST_F(Composites, KeepToTheArraysWhateverIsAsked) {
  Random random(5);
  const auto pick = [&](auto... values) { return std::array{values...}[random() % sizeof...(values)]; };
  for (int round = 0; round < 150; ++round) {
    ZRVScanSettings scan;
    scan.SampleRate = pick(20000u, 333u, 40u);
    scan.RefreshRate = pick(20.0f, 7.3f, 39.0f);
    scan.Animation = static_cast<ZRVAnimation>(random() % 4);
    scan.AnimationDuration = pick(0.0f, 0.3f);
    scan.Profile = static_cast<ZRVProfile>(random() % 3);
    scan.Closing = static_cast<ZRVClosing>(random() % 3);
    scan.KeypointBudget = random() % 50;
    scan.Scale = pick(1.0f, 0.5f);
    scan.Filter = random() % 2;
    scan.FilterZeroPhase = random() % 2;
    waveform.Waveform = static_cast<ZRVWaveform>(random() % 4);
    waveform.Axes = static_cast<ZRVWaveformAxes>(random() % 3);
    spirograph.Curve = static_cast<ZRVCurve>(random() % 5);
    g.SetupSoftwareFilter(1 + random() % 6, 4, 1000, 20000, true);
    for (const Composite& c : All()) {
      const Counts counted = c.make(nullptr, nullptr, nullptr, scan);
      if (c.keypoints != ~0u) {
        EXPECT_LE(counted.samples, g.CurvesDataSize(scan, c.keypoints, c.frames)) << c.name;
      }
      ASSERT_GT(counted.samples, 0u) << c.name;
      if (c.lines != 0 && scan.KeypointBudget == 0) {
        const int frame = static_cast<int>(static_cast<float>(scan.SampleRate) / scan.RefreshRate);
        const int lines = static_cast<int>(c.lines), off = static_cast<int>(counted.samples / counted.frames) - frame;
        const bool linear = scan.Profile == ProfileLinear;
        EXPECT_GE(off, linear ? -lines - 1 : 0) << c.name << scan.Profile;
        EXPECT_LE(off, frame > lines ? lines + linear : lines) << c.name << scan.Profile;
      }
      Points exact(counted.samples + 1);
      scan.ArrayCapacity = counted.samples - 1;
      EXPECT_EQ(c.make(exact.x.data(), exact.y.data(), exact.m.data(), scan).samples, 0u) << c.name;
      EXPECT_TRUE(exact.UntouchedFrom(0)) << c.name;
      scan.ArrayCapacity = counted.samples;
      EXPECT_EQ(c.make(exact.x.data(), exact.y.data(), exact.m.data(), scan), counted) << c.name;
      EXPECT_TRUE(exact.UntouchedFrom(counted.samples)) << c.name;
      EXPECT_NE(exact.x[counted.samples - 1], kFloatCanary) << c.name;
    }
  }
}

TEST_F(Composites, DoTheStepsInOrder) {
  ZRVScanSettings scan;
  scan.ArrayCapacity = 4000;
  scan.SampleRate = 1000;
  scan.Scale = 0.5f;
  scan.OffsetX = 0.1f;
  scan.Animation = AnimateRotate;
  scan.AnimationDuration = 0.2f;
  scan.KeypointBudget = 20;
  scan.Filter = true;
  g.SetupSoftwareFilter(1, 3, 100, 1000, true);
  Points made(4000), k(200), expected(4000);
  unsigned int samples = 0, frames = 0;
  g.GenerateTextData(made.x.data(), made.y.data(), made.m.data(), scan, text, samples, frames);

  float *kx = k.x.data(), *ky = k.y.data(), *x = expected.x.data(), *y = expected.y.data();
  unsigned char *km = k.m.data(), *m = expected.m.data();
  unsigned int n = g.HersheyDataStream(kx, ky, km, "Zrv 5", 5, 0, 0.9f, 0, false);
  n = g.OptimizeKeypoints(kx, ky, km, n, 20);
  g.TransformData(kx, ky, n, 0.5f, 0, 0.1f, 0, false, 0, 0);
  n = g.InterpolateDataOptimized(kx, ky, km, x, y, m, n, 50);
  n = g.GenerateAnimations(x, y, m, 1, n, 4);
  g.SetupSoftwareFilter(1, 3, 100, 1000, true);
  g.FilterData(x, y, x, y, n, false);
  EXPECT_EQ(std::pair(samples, frames), std::pair(n, 4u));
  EXPECT_EQ(Head(made.x, n), Head(expected.x, n));
  EXPECT_EQ(Head(made.y, n), Head(expected.y, n));
  EXPECT_EQ(Head(made.m, n), Head(expected.m, n));
}

TEST_F(Composites, WaysOfClosing) {
  ZRVScanSettings scan;
  scan.ArrayCapacity = 100;
  scan.SampleRate = 200;  // 10 samples a frame
  Points to(100);
  const auto wave = [&](ZRVClosing closing) {
    scan.Closing = closing;
    unsigned int samples = 0, frames = 0;
    g.GenerateWaveformData(to.x.data(), to.y.data(), to.m.data(), scan, waveform, samples, frames);
    return samples;
  };
  ASSERT_EQ(wave(ClosingLeftOut), 10u);
  EXPECT_FLOAT_EQ(to.x[9], 0.8f);
  ASSERT_EQ(wave(ClosingBlank), 10u);  // the last tenth leads back
  EXPECT_EQ(to.x[9], -1.0f);
  EXPECT_EQ(to.m[8], 0);
  ASSERT_EQ(wave(ClosingRetrace), 9u);
  const float kThereAndBack[] = {-1, -0.6f, -0.2f, 0.2f, 0.6f, 0.2f, -0.2f, -0.6f, -1};
  for (size_t i = 0; i < 9; ++i) EXPECT_FLOAT_EQ(to.x[i], kThereAndBack[i]) << i;

  // A path of keypoints at one speed: 1 across, 0.5 up (dark), 1 back; closed by 0.5 down.
  scan.SampleRate = 600;
  scan.Profile = ProfileLinear;
  scan.BlankSpeed = 1;
  const auto expect = [&](ZRVClosing closing, float endY, double dark) {
    scan.Closing = closing;
    const Counts made = Import(pointFile.Path(), true)(to.x.data(), to.y.data(), to.m.data(), scan);
    ASSERT_GE(made.samples, 28u) << closing;
    EXPECT_EQ(std::pair(to.x[made.samples - 1], to.y[made.samples - 1]), std::pair(-0.5f, endY)) << closing;
    EXPECT_NEAR(static_cast<double>(to.With(0, made.samples)), dark, 1.0) << closing;
  };
  expect(ClosingLeftOut, 0.5f, 6);
  expect(ClosingBlank, 0, 10);
  expect(ClosingRetrace, 0, 6);

  // One that ends lit where it began is not open: it is left as it is.
  const TempFile square(std::string("0 0 255\n0.5 0 255\n0.5 0.5 255\n0 0.5 255\n0 0 255\n"));
  std::vector<float> drawn[3];
  for (const ZRVClosing closing : {ClosingLeftOut, ClosingBlank, ClosingRetrace}) {
    scan.Closing = closing;
    drawn[closing] = Head(to.x, Import(square.Path(), true)(to.x.data(), to.y.data(), to.m.data(), scan).samples);
  }
  EXPECT_GT(drawn[0].size(), 20u);
  EXPECT_EQ(drawn[ClosingBlank], drawn[ClosingLeftOut]);
  EXPECT_EQ(drawn[ClosingRetrace], drawn[ClosingLeftOut]);
}

// A glyph that is drawn backwards leaves its last byte unwritten; what that was before must not show. Glyph 14, drawn
// so, is a closed triangle.
TEST_F(Composites, ATextIsTheSameWhateverWasMadeBefore) {
  Bytes font = Words({15, 0, 1, 4, 0, 0});
  for (int i = 0; i < 14; ++i) font += Words({0, 0, 0, 0});
  font += Words({4, 4, 0, 20, 0, 0, 1, 10, 10, 1, 20, 0, 1, 0, 0, 1, 0, 14, 0, 0});
  g.LoadHersheyFile(TempFile(font).Path());
  ZRVScanSettings scan;
  scan.ArrayCapacity = 2000;
  text.Text = "!";
  Points first(2000), second(2000), other(2000);
  unsigned int samples = 0, again = 0, frames = 0;
  g.GenerateTextData(first.x.data(), first.y.data(), first.m.data(), scan, text, samples, frames);
  EXPECT_EQ(first.With(0, samples), 0) << "the last stroke is lit";
  const TempFile dark(std::string("0 0 255\n") + "0 0.1 0\n0 0.2 0\n0.1 0.3 0\n0 0.4 0\n0 0.5 0\n0 0.6 255\n");
  Import(dark.Path(), true)(other.x.data(), other.y.data(), other.m.data(), scan);
  g.GenerateTextData(second.x.data(), second.y.data(), second.m.data(), scan, text, again, frames);
  EXPECT_EQ(Head(first.x, samples), Head(second.x, again));
  EXPECT_EQ(Head(first.m, samples), Head(second.m, again));
}

// Also what a file of another kind is taken for, or of none, leaves it alone.
TEST_F(Composites, ImportingByContentLeavesWhatWasLoadedOfOtherKinds) {
  g.LoadIldaFile(drawing.Path());
  g.LoadPointTimeFile(timesFile.Path());
  const auto held = [&] { return std::tuple(g.IldaNumTotalPoints(), g.GetPointTimeFileSps()); };
  const auto before = held();
  const TempFile rated(std::string("sps 777\n0 0 1 1\n")), nothing(std::string("none of it\n"));
  g.LoadPointTimeFile(rated.Path());
  Import(pointFile.Path())(nullptr, nullptr, nullptr, ZRVScanSettings());
  EXPECT_EQ(held(), std::tuple(std::get<0>(before), 777u));
  EXPECT_EQ(Import(nothing.Path())(nullptr, nullptr, nullptr, ZRVScanSettings()).samples, 0u);
  EXPECT_EQ(held(), std::tuple(std::get<0>(before), 777u));
  EXPECT_EQ(g.GetPointFileSps(), 5000u);
}

TEST_F(Composites, DrawingsBringTheirColoursAndLeadOnDarkly) {
  ZRVScanSettings scan;
  scan.ArrayCapacity = 4000;
  Points to(4000);
  ZRVImportSettings file;
  file.FileName = drawing.Path();
  const auto generate = [&] {
    Counts c;
    g.GenerateImportFileData(to.x.data(), to.y.data(), to.m.data(), to.index.data(), scan, file, c.samples, c.frames,
                             c.rate);
    return c;
  };
  for (const ZRVProfile profile : {ProfileLinear, ProfileTrapezoidal, ProfileOptimized}) {
    scan.Profile = profile;
    const auto [samples, frames, rate] = generate();
    ASSERT_EQ(frames, 2u) << profile;
    EXPECT_NEAR(samples, 2000, 4) << profile;
    std::array<unsigned int, 3> seen{};
    for (unsigned int i = 0; i < samples; ++i) {
      const unsigned int expected = to.m[i] == 0 ? 0 : to.x[i] < 0 ? 0xFF0000 : 0x00FF00;
      ASSERT_EQ(to.index[i], expected) << profile << ", sample " << i << " at " << to.x[i];
      ++seen[to.m[i] == 0 ? 0 : to.x[i] < 0 ? 1 : 2];
      if (i > 0 && profile == ProfileLinear) {
        EXPECT_LT(std::hypot(to.x[i] - to.x[i - 1], to.y[i] - to.y[i - 1]), 0.02f) << i;
      }
    }
    EXPECT_GT(std::min({seen[0], seen[1], seen[2]}), 100u) << profile;
    const auto counted = Import(file.FileName)(nullptr, nullptr, nullptr, scan);  // null arrays, no colours asked for
    EXPECT_EQ(counted.samples, samples) << profile;
  }
  // One frame of it turns, and is white without colours of its own: here those of points.
  const unsigned int second[] = {2, 9};
  file.Frames = second;
  file.NumFrames = 2;
  scan.Animation = AnimateRotate;
  scan.AnimationDuration = 0.1f;
  EXPECT_EQ(generate().frames, 2u);
  EXPECT_EQ(to.index[0], 0x00FF00u);
  file.FileName = nullptr;
  file.Format = ImportPoints;
  scan.Animation = AnimateNothing;
  g.LoadPointFile(pointFile.Path());
  EXPECT_EQ(generate(), (Counts{4, 1, 5000}));
  EXPECT_EQ(Head(to.index, 4), (std::vector<unsigned int>{0xFFFFFF, 0, 0xFFFFFF, 0xFFFFFF}));
}

TEST_F(Composites, RefuseWhatMakesNoScan) {
  Points to(3000);
  const auto make = Made(&ZRVDataGenerator::GenerateTextData, text);
  const auto expect = [&](const char* name, auto spoil) {
    ZRVScanSettings scan;
    scan.ArrayCapacity = 3000;
    float* y = to.y.data();
    spoil(scan, y);
    EXPECT_EQ(make(to.x.data(), y, to.m.data(), scan), (Counts{0, 0})) << name;
  };
  expect("no samples a frame", [](auto& s, auto&) { s.RefreshRate = 30000; });
  expect("not a number", [](auto& s, auto&) { s.RefreshRate = std::nanf(""); });
  expect("endless animation", [](auto& s, auto&) { s.Animation = AnimateRotate, s.AnimationDuration = 1e30f; });
  expect("no such profile", [](auto& s, auto&) { s.Profile = static_cast<ZRVProfile>(3); });
  expect("no such closing", [](auto& s, auto&) { s.Closing = static_cast<ZRVClosing>(3); });
  expect("no such animation", [](auto& s, auto&) { s.Animation = static_cast<ZRVAnimation>(4); });
  expect("an array is missing", [](auto&, auto& y) { y = nullptr; });
  EXPECT_EQ(Import("none.txt")(nullptr, nullptr, nullptr, {}), (Counts{0, 0, 0}));
  EXPECT_TRUE(to.UntouchedFrom(0));
}

// Through the plain functions: the records' initial values are those of C++, null is the same as these, and
// unwanted results may be null.
TEST_F(Composites, AreTheSameFromC) {
  ZRVScanSettings scan;
  ZRVInitScanSettings(&scan);
  scan.ArrayCapacity = 5000;
  scan.KeypointBudget = 30;
  ZRVTextSettings plain;
  ZRVInitTextSettings(&plain);
  plain.Text = "Zrv 5";
  Points made(5000), expected(5000);
  unsigned int samples = 0, frames = 0, count = 0;
  g.GenerateTextData(expected.x.data(), expected.y.data(), expected.m.data(), scan, text, samples, frames);
  ZRVGenerateTextData(&g, made.x.data(), made.y.data(), made.m.data(), &scan, &plain, &count, nullptr);
  EXPECT_EQ(count, samples);
  EXPECT_EQ(made.x, expected.x);
  g.GenerateScanData(expected.x.data(), expected.y.data(), expected.m.data(), scan, raster, samples, frames, frames);
  ZRVGenerateScanData(&g, made.x.data(), made.y.data(), made.m.data(), &scan, nullptr, &count, nullptr, nullptr);
  EXPECT_EQ(count, samples);
  EXPECT_EQ(made.x, expected.x);
  ZRVGenerateLissajousData(&g, made.x.data(), made.y.data(), made.m.data(), nullptr, nullptr, &count, nullptr);
  EXPECT_EQ(count, 0u);  // no capacity
}

}  // namespace
}  // namespace zrv_test
