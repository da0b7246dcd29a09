// Moves to a point, the colour table, boost and flash.
#include <gtest/gtest.h>

#include <limits>

#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

class Position : public ::testing::Test, protected ScriptedDevice {
 protected:
  // The number of samples of the first block announced since the last call (format 0, 5 bytes each).
  unsigned MoveSamples() {
    const std::string writes = port->TakeWrites();
    const size_t at = writes.find("B5 B0 2B B1 09 ");
    if (at == std::string::npos) return 0;
    const auto byte = [&](size_t i) { return static_cast<unsigned>(std::stoul(writes.substr(at + 15 + 3 * i, 2), nullptr, 16)); };
    return (byte(0) | byte(1) << 8 | byte(2) << 16) / 5;
  }
};

TEST_F(Position, AtOnceSendsOnePointAndStartsOnlyWhatStands) {
  const std::string point = "B5 B0 2B B1 09 05 00 00 0A | B5 B0 2B B2 06 0A | FF BF FF 7F 01 | B5 B0 2B F4 06 0A";
  device.GoToDevicePosition(0.5f, 0, 1, 0);
  EXPECT_EQ(port->TakeWrites(), point + " | B5 B0 2B F1 06 0A");
  port->Answer(0xF4, kAck + Bytes{0x01, 0x01});
  device.GoToDevicePosition(0.5f, 0, 1, 0);
  EXPECT_EQ(port->TakeWrites(), point);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
}

TEST_F(Position, AMoveRunsFromTheStopThenHolds) {
  port->Answer(0xF2, kAck + Bytes{0x00, 0x80, 0x00, 0x80, 9, 0, 0, 0, 0});
  device.SetDeviceParam(ParamSampleRate, 1000);
  port->TakeWrites();
  device.GoToDevicePosition(1, -1, 7, 3);
  // From (0, 0) to (1, -1) in 4 samples: 0, 1/8, 1/2, 7/8; all carry the digital byte of the stop.
  EXPECT_EQ(port->TakeWrites(),
            "B5 B0 2B F2 06 0A | "
            "B5 B0 2B B1 09 14 00 00 0A | B5 B0 2B B2 06 0A | "
            "FF 7F FF 7F 09 FF 8F FF 6F 09 FF BF FF 3F 09 FF EF FF 0F 09 | "
            "B5 B0 2B F3 07 01 0A | "
            "B5 B0 2B B1 09 05 00 00 0A | B5 B0 2B B2 06 0A | FF FF 00 00 07 | "
            "B5 B0 2B F1 06 0A");
}

TEST_F(Position, LengthOfAMove) {
  const struct {
    float rate;
    unsigned ms, samples;
  } kCases[] = {{1000, 1, 4}, {1000, 4, 5}, {10000, 10, 101}, {20000, 1000, 20001}, {5000, 100000, 25001}, {50000, 5000, 30000}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.ms);
    device.SetDeviceParam(ParamSampleRate, c.rate);
    device.GoToDevicePosition(0.5f, 0.5f, 0, c.ms);
    EXPECT_EQ(MoveSamples(), c.samples);  // the last one is cut at the controller's 30000 samples
  }
}

TEST_F(Position, OutsideTheFieldIsRefused) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float bad[][2] = {{1.0001f, 0}, {-1.0001f, 0}, {0, 1.0001f}, {0, -1.0001f}, {nan, 0}, {0, nan}};
  for (const auto& p : bad) {
    for (const unsigned ms : {0u, 10u}) {
      device.GoToDevicePosition(p[0], p[1], 0, ms);
      EXPECT_EQ(device.GetLastError(), ErrorInvalidValue);
      EXPECT_EQ(port->TakeWrites(), "");
    }
  }
  device.GoToDevicePosition(1, -1, 0, 0);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
}

TEST_F(Position, CentringClearsTheOffsetsFirst) {
  device.ResetDevicePosition();
  const std::string writes = port->TakeWrites();
  EXPECT_EQ(writes.substr(0, 29 + 20), "B5 B0 2B BF 0A 00 80 00 80 0A | B5 B0 2B F2 06 0A");
}

TEST_F(Position, ColourTable) {
  std::vector<unsigned> table(200000, 1);
  device.GetRGBData(table.data(), 200000);
  EXPECT_EQ(table[99999], 0xFFFFFFu);
  EXPECT_EQ(table[100000], 1u);
  device.SetRGBData(0x00FF00u, 0);
  device.SetRGBData(0x0000FFu, 2);
  std::vector<unsigned> big(150000, 5);
  device.GetRGBData(table.data(), 100000);
  EXPECT_EQ(table[1], 0x0000FFu);
  EXPECT_EQ(table[2], 0x00FF00u);
  EXPECT_EQ(table[99999], 0x00FF00u);
  device.SetRGBData(big.data(), 150000);
  device.SetRGBData(static_cast<unsigned*>(nullptr), 3);
  device.GetRGBData(nullptr, 3);
  device.GetRGBData(table.data(), 1);
  EXPECT_EQ(table[0], 5u);
  EXPECT_EQ(port->TakeWrites(), "");
}

TEST_F(Position, BoostAndFlash) {
  const struct {
    unsigned enable;
    const char* wire;
  } kCases[] = {{1, "B5 B0 2B DB 06 0A"}, {0, "B5 B0 2B DA 06 0A"}, {2, "B5 B0 2B DA 06 0A"}};
  for (const auto& c : kCases) {
    device.SetLaserBoostEnable(c.enable);
    EXPECT_EQ(port->TakeWrites(), c.wire);
  }
  device.SaveToFlash(FlashSettingsAndData);
  EXPECT_EQ(port->TakeWrites(), "B5 B0 2B F8 07 01 0A");
}

}  // namespace
}  // namespace zrv::testing
