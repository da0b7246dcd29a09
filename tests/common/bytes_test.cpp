#include "common/bytes.h"

#include <gtest/gtest.h>

#include <array>

namespace zrv {
namespace {

constexpr std::array<uint8_t, 10> kBytes = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0xFE};

TEST(Bytes, ReadersKnowEveryWidthAndOrderAndTheEnd) {
  LittleEndianReader little(kBytes);
  EXPECT_EQ(little.U8(), 0x01u);
  EXPECT_EQ(little.U16(), 0x0302u);
  EXPECT_EQ(little.U32(), 0x07060504u);
  EXPECT_EQ(little.U32(), 0u) << "three bytes are left: a read past the end takes nothing";
  EXPECT_EQ(little.U24(), 0xFE0908u);
  EXPECT_FALSE(little.ok());

  BigEndianReader big(kBytes);
  EXPECT_EQ(big.U16(), 0x0102u);
  EXPECT_EQ(big.U64(), 0x030405060708'09FEull);
  EXPECT_TRUE(big.ok());
}

TEST(Bytes, WritersFillInOrderAndStopAtTheEnd) {
  std::array<uint8_t, 6> out{};
  LittleEndianWriter little(out);
  little.U24(0xAABBCC);
  little.U16(0x1122);
  little.U16(0x3344);  // one byte is left: nothing is written
  EXPECT_EQ(out, (std::array<uint8_t, 6>{0xCC, 0xBB, 0xAA, 0x22, 0x11, 0x00}));
  EXPECT_FALSE(little.ok());
}

}  // namespace
}  // namespace zrv
