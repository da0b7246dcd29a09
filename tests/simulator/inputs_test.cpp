// Analog inputs: single readings, captures and the streams of modes 6..9.
#include <cmath>

#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

using Shape = AnalogSignal::Shape;

TEST(InputsTest, CaptureLoopsTheMirrorBack) {
  Options options;
  options.hardwareFilter = false;
  options.mirror = {100000, 0.7};  // as good as stiff
  options.analogInputs[0] = {Shape::kMirrorX, 0, 10, 0, 1};
  options.analogInputs[1] = {Shape::kMirrorY, 0, 10, 0, 1};
  Host host(options);
  host.Load("FF FF 00 00 11 00 00 FF FF 22");
  host.Say("F1");
  host.now += 0.00995;  // in sample 99, the second of the block
  host.Say("A4 02 00 00");
  // 10 V is count 65538, kept at 65535; -10 V is -2, kept at 0. The fifth byte is M.
  EXPECT_EQ(host.Say("A5"), kAck + " FF FF 00 00 11 00 00 FF FF 22");
}

TEST(InputsTest, CaptureAndBacklogAreBounded) {
  Options options;
  options.captureCapacity = 1000;
  options.streamBacklog = 1003;
  Host host(options);
  host.Say("A4 FF FF FF");
  host.controller.Receive(FromHex(FrameOf("A5")), host.now);
  EXPECT_EQ(host.HearBytes().size(), 3u + 5000);
  host.Say("B5 06");
  host.now += 100;
  EXPECT_EQ(host.HearBytes().size(), 1000u) << "what nobody reads loses whole records";
}

// What the mirror draws is recorded with its digital value, while playing only and up to the bound.
TEST(InputsTest, DrawnPathIsBoundedAndOrdered) {
  Options options;
  options.pathCapacity = 50;
  Host host(options);
  host.Load("FF FF 00 00 11 00 00 FF FF 00");
  host.HearAfter(1);
  EXPECT_TRUE(host.controller.DrawnPath().empty()) << "idle draws nothing";
  host.Say("F1");
  host.now += 0.01;
  host.Say("F2");
  host.HearAfter(1);
  const auto path = host.controller.DrawnPath();
  ASSERT_EQ(path.size(), 50u);
  for (size_t i = 1; i < path.size(); ++i) {
    ASSERT_NEAR(path[i].time - path[i - 1].time, 0.0001, 1e-9);
    ASSERT_NE(path[i].m, path[i - 1].m);
    ASSERT_EQ(path[i].rgb, path[i].m ? 0xFFFFFFu : 0u);
  }
}

TEST(InputsTest, FilterIsBypassedInModesSevenAndEight) {
  const auto reach = [](int mode) {
    Options options;
    options.mirror = {20000, 0.7};
    Host host(options);
    host.Say("B5 0" + std::to_string(mode));
    host.Load("FF FF FF FF 01");
    host.Say("F1");
    host.HearAfter(0.001);  // a fifth of the 200 Hz filter's period
    return host.controller.Mirror().x;
  };
  EXPECT_LT(reach(6), 0.6f);
  EXPECT_GT(reach(7), 0.99f);
  EXPECT_GT(reach(8), 0.99f);
}

}  // namespace
}  // namespace zrv::sim
