// Moves to a point, the colour table, boost.
#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

class Position : public Scripted {};

TEST_F(Position, AtOnceSendsOnePointAndStartsOnlyWhatStands) {
  const std::string point = "B5 B0 2B B1 09 05 00 00 0A | B5 B0 2B B2 06 0A | FF BF FF 7F 01 | B5 B0 2B F4 06 0A";
  for (const bool running : {false, true}) {
    SetState(running ? 0x101 : 0x100);
    EXPECT_EQ(Sent([&] { device.GoToDevicePosition(0.5f, 0, 1, 0); }), point + (running ? "" : " | B5 B0 2B F1 06 0A"));
  }
}

TEST_F(Position, AMoveRunsFromTheStopThenHolds) {
  port->Answer(0xF2, kAck + FromHex("00 80 00 80 09 00 00 00 00"));
  device.SetDeviceParam(ParamSampleRate, 1000);
  // From (0, 0) to (1, -1) in 4 samples: 0, 1/8, 1/2, 7/8; all carry the digital byte of the stop.
  EXPECT_EQ(Sent([&] { device.GoToDevicePosition(1, -1, 7, 3); }),
            "B5 B0 2B F2 06 0A | "
            "B5 B0 2B B1 09 14 00 00 0A | B5 B0 2B B2 06 0A | "
            "FF 7F FF 7F 09 FF 8F FF 6F 09 FF BF FF 3F 09 FF EF FF 0F 09 | "
            "B5 B0 2B F3 07 01 0A | "
            "B5 B0 2B B1 09 05 00 00 0A | B5 B0 2B B2 06 0A | FF FF 00 00 07 | "
            "B5 B0 2B F1 06 0A");
}

TEST_F(Position, LengthOfAMove) {
  const std::tuple<float, unsigned, std::string> kCases[] = {{1000, 1, "14 00 00"},  // 5 bytes a sample
                                                             {1000, 4, "19 00 00"},
                                                             {5000, 100000, "4D E8 01"},  // 5 s, 25001 samples
                                                             {50000, 5000, "F0 49 02"}};  // the controller's 30000
  for (const auto& [rate, ms, announced] : kCases) {
    device.SetDeviceParam(ParamSampleRate, rate);
    EXPECT_EQ(Sent([&, m = ms] { device.GoToDevicePosition(0.5f, 0.5f, 0, m); }).substr(0, 46),
              "B5 B0 2B F2 06 0A | B5 B0 2B B1 09 " + announced + " 0A");
  }
}

TEST_F(Position, OutsideTheFieldIsRefused) {
  for (const float bad : {1.0001f, -1.0001f, kNaN}) {
    EXPECT_EQ(Sent([&] { device.GoToDevicePosition(bad, 1, 0, 10); }), "");
    EXPECT_EQ(device.GetLastError(), ErrorInvalidValue);
    EXPECT_EQ(Sent([&] { device.GoToDevicePosition(-1, bad, 0, 10); }), "");
    EXPECT_EQ(device.GetLastError(), ErrorInvalidValue);
  }
  device.GoToDevicePosition(1, -1, 0, 0);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
}

TEST(Colours, TableIsBounded) {
  ZRVDevice device;
  std::vector<unsigned> table(150000, 1), big(150000, 5);
  device.SetRGBData(0x00FF00u, 0);
  device.SetRGBData(0x0000FFu, 2);
  device.GetRGBData(table.data(), 150000);
  EXPECT_EQ(std::tuple(table[1], table[2], table[99999], table[100000]),
            std::tuple(0x0000FFu, 0x00FF00u, 0x00FF00u, 1u));
  device.SetRGBData(big.data(), 150000);
  device.SetRGBData(static_cast<unsigned*>(nullptr), 3);
  device.GetRGBData(nullptr, 3);
  device.GetRGBData(table.data(), 1);
  EXPECT_EQ(table[0], 5u);
}

TEST_F(Position, OnlyOneTurnsTheBoostOn) {
  for (const unsigned enable : {0u, 1u, 2u}) {
    EXPECT_EQ(Sent([&] { device.SetLaserBoostEnable(enable); }),
              enable == 1 ? "B5 B0 2B DB 06 0A" : "B5 B0 2B DA 06 0A");
  }
}

}  // namespace
}  // namespace zrv::testing
