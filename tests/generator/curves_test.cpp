#include "points.h"

namespace {

using namespace zrv_test;

TEST(Curves, KnownPoints) {
  const double r = std::sqrt(0.5), s = std::sin(1), t = std::sin(1 + 0.785398163);
  const auto polygon = [](unsigned n, float amplitude, unsigned sides) {
    return [=](auto... to) { return Generator::PolygonCurve(to..., n, amplitude, sides, 0); };
  };
  const auto spirograph = [](unsigned n, unsigned type, int a, int b, int pen) {
    return [=](auto... to) { return Generator::SpirographCurve(to..., n, type, 0, 0.6f, a, b, pen); };
  };
  const auto lissajous = [](unsigned n, unsigned wave, unsigned modulate) {  // 1 : 2, modulated at 2
    return [=](auto... to) { return Generator::LissajousCurve(to..., n, wave, 1, 1, 2, 0, modulate, 1, 2, kPi / 2); };
  };
  ExpectFigure("two turns of a spiral in quarter turns, radius i / 8",
               [](auto... to) { return Generator::SpiralCurve(to..., 8, 0.8f, 0.4f, 2, 0); },
               {{0, 0}, {0, 0.05}, {-0.2, 0}, {0, -0.15}, {0.4, 0}, {0, 0.25}, {-0.6, 0}, {0, -0.35}});
  ExpectFigure("square, closed", polygon(8, 2, 4),
               {{2, 0}, {1, 1}, {0, 2}, {-1, 1}, {-2, 0}, {-1, -1}, {0, -2}, {1, -1}, {2, 0}});
  ExpectFigure("less than a sample a side", polygon(4, 0.5f, 5), {{0.5, 0}});
  // cos(2t) times (cos t, sin t), eighths of a turn; tips at the amplitude.
  ExpectFigure("rose", spirograph(8, 0, 2, 1, 0),
               {{0.6, 0}, {0, 0}, {0, -0.6}, {0, 0}, {-0.6, 0}, {0, 0}, {0, 0.6}, {0, 0}});
  ExpectFigure("a common factor taken out", spirograph(4, 0, 6, 3, 0), {{0.6, 0}, {0, -0.6}, {-0.6, 0}, {0, 0.6}});
  // The others in quarters. R = 2, r = 1, k = 2; farthest 3 at half way.
  ExpectFigure("cardioid", spirograph(4, 1, 1, 1, 0), {{0.2, 0}, {0.2, 0.4}, {-0.6, 0}, {0.2, -0.4}});
  // R = 2, pen 3: through (-1, 0) .. (-5, 0).
  ExpectFigure("limacon", spirograph(4, 2, 1, 1, 3), {{-0.12, 0}, {0.36, 0.24}, {-0.6, 0}, {0.36, -0.24}});
  ExpectFigure("astroid", spirograph(4, 3, 4, 1, 0), {{0.6, 0}, {0, 0.6}, {-0.6, 0}, {0, -0.6}});
  ExpectFigure("ellipse 4 by 2", spirograph(4, 4, 2, 1, 3), {{0.6, 0}, {0, -0.3}, {-0.6, 0}, {0, 0.3}});
  ExpectFigure("without radius and pen", spirograph(2, 4, 3, 3, 0), {{0, 0}, {0, 0}});
  ExpectFigure("an unknown figure is all centre", spirograph(2, 5, 3, 0, 1), {{0, 0}, {0, 0}});
  ExpectFigure("Lissajous", lissajous(8, 0, 0), {{0, 0}, {r, 1}, {1, 0}, {r, -1}, {0, 0}, {-r, 1}, {-1, 0}, {-r, -1}});
  ExpectFigure("of triangles", lissajous(8, 1, 0),
               {{0, 0}, {0.5, 1}, {1, 0}, {0.5, -1}, {0, 0}, {-0.5, 1}, {-1, 0}, {-0.5, -1}});
  // x: (1 - sin(2a) / 2) sin a; y: (1 - cos(2a) / 2) sin(2a)
  ExpectFigure("its amplitude modulated", lissajous(8, 0, 1),
               {{0, 0}, {r / 2, 1}, {1, 0}, {1.5 * r, -1}, {0, 0}, {-r / 2, 1}, {-1, 0}, {-1.5 * r, -1}});
  // x: sin(sin(2a) + a); y: sin(cos(2a) + 2a)
  ExpectFigure("its phase modulated", lissajous(8, 0, 2),
               {{0, s}, {t, 1}, {1, s}, {t, -1}, {0, s}, {-t, 1}, {-1, s}, {-t, -1}});
  ExpectFigure("three o'clock", [](auto... to) { return Generator::AnalogClockCurve(to..., 3, 0, 0, 0.5f); },
               {{0, 0},
                {-0.015, 0},
                {0, 0.5},
                {0.015, 0},  // seconds
                {0, 0},
                {-0.035, 0},
                {0, 0.4},
                {0.035, 0},  // minutes
                {0, 0},
                {0, 0.05},
                {0.25, 0},
                {0, -0.05},
                {0, 0}});
  ExpectFigure("bounces and slows",
               [](auto... to) { return Generator::DynamicsCurve(to..., 4, 0.9f, 0, 0.2f, 0, 0, 0, 0.5f); },
               {{0.9, 0}, {0.8, 0}, {0.7, 0}, {0.6, 0}});
  ExpectFigure("speeds up below",
               [](auto... to) { return Generator::DynamicsCurve(to..., 4, 0, -0.9f, 0.1f, -0.2f, 0.1f, 0.1f, 1); },
               {{0.1, -0.9}, {0.3, -0.6}, {0.6, -0.2}, {1.0, 0.3}});
  ExpectFigure("no turns", [](auto... to) { return Generator::SpiralCurve(to..., 4, 1, 1, 0, 0); }, {});
  ExpectFigure("no sides", polygon(7, 1, 0), {});
  ExpectFigure("a ring of nothing", spirograph(4, 0, 3, 0, 1), {});
  ExpectFigure("no samples", spirograph(0, 0, 2, 1, 0), {});
}

TEST(LissajousCurve, AnUnknownModulationWritesTheByteAlone) {
  Points p(5);
  EXPECT_EQ(Generator::LissajousCurve(p.x.data(), p.y.data(), p.m.data(), 5, 0, 1, 1, 2, 0, 3, 1, 2, 0), 5u);
  EXPECT_EQ(p.x[4], kFloatCanary);
  EXPECT_EQ(p.m[4], 255);
}

TEST(AnalogClockCurve, HandsCreep) {
  Points p(13);
  Generator::AnalogClockCurve(p.x.data(), p.y.data(), p.m.data(), 1, 30, 15, 1);
  const double hour = (1 + 30.25 / 60) / 12, minute = 30.25 / 60, turn = 6.283185307;
  EXPECT_NEAR(p.x[10] / p.y[10], std::tan(turn * hour), 1e-5);
  EXPECT_NEAR(p.x[6] / p.y[6], std::tan(turn * minute), 1e-5);
}

}  // namespace
