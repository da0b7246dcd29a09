#include "common/bytes.h"

#include <gtest/gtest.h>

#include <array>

namespace zrv {
namespace {

constexpr std::array<uint8_t, 10> kBytes = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0xFE};

TEST(Bytes, EveryWidthInBothOrders) {
  LittleEndianReader little(kBytes);
  EXPECT_EQ(little.U8(), 0x01u);
  EXPECT_EQ(little.U16(), 0x0302u);
  EXPECT_EQ(little.U24(), 0x060504u);
  EXPECT_EQ(little.U32(), 0xFE090807u);
  EXPECT_TRUE(little.ok());

  BigEndianReader big(kBytes);
  EXPECT_EQ(big.U16(), 0x0102u);
  EXPECT_EQ(big.U64(), 0x030405060708'09FEull);
  EXPECT_EQ(big.Left(), 0u);
}

TEST(Bytes, AReadPastTheEndGivesZeroTakesNothingAndIsRemembered) {
  LittleEndianReader in{std::span(kBytes).first(3)};
  EXPECT_EQ(in.U32(), 0u);
  EXPECT_FALSE(in.ok());
  EXPECT_EQ(in.U24(), 0x030201u);
  EXPECT_FALSE(in.ok());
}

TEST(Bytes, WritersFillInOrderAndStopAtTheEnd) {
  std::array<uint8_t, 6> out{};
  LittleEndianWriter little(out);
  little.U24(0xAABBCC);
  little.U16(0x1122);
  little.U16(0x3344);  // one byte is left: nothing is written
  EXPECT_EQ(out, (std::array<uint8_t, 6>{0xCC, 0xBB, 0xAA, 0x22, 0x11, 0x00}));
  EXPECT_EQ(little.Written(), 5u);
  EXPECT_FALSE(little.ok());

  BigEndianWriter big(out);
  big.U16(0x1122);
  EXPECT_EQ(out[0], 0x11);
}

}  // namespace
}  // namespace zrv
