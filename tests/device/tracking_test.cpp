// Tracking parameters, status and integrals.
#include "tests/device/scripted_transport.h"

bool operator==(const ZRVTrackParamsStruct& a, const ZRVTrackParamsStruct& b) {
  const auto fields = [](const ZRVTrackParamsStruct& p) {
    return std::tuple(p.TrackingSupported, p.Threshold, p.NormalGain, p.TangentialGain, p.BufferDelay, p.HitRatio,
                      p.StateBit0, p.StateBit1, p.StateBit2);
  };
  return fields(a) == fields(b);
}

namespace zrv::testing {
namespace {

using Track = ZRVTrackParamsStruct;

class Tracking : public Scripted {};

TEST_F(Tracking, ParametersAreReadAsFarAsTheyArrive) {
  const Bytes values = {0xFF, 0x7F, 200, 0x80 - 25, 191, 51, 6};
  const Track none{false, 0.25f, 1, 2, 3, 0.5f, 1, 1, 1};
  const std::tuple<std::string, size_t, Track, ZRVError> kCases[] = {
      {"ZR-INFO\n", 7, {true, 1, 200, -25, 191, 0.2f, 0, 1, 1}, ErrorNone},
      {"ZR-INFO\n", 3, {true, 1, 200, 2, 3, 0.5f, 1, 1, 1}, ErrorDeviceResponse},
      {"NOTRACK\n", 7, none, ErrorNone},
      {"", 0, none, ErrorBadAcknowledge}};
  for (const auto& [line, length, expected, error] : kCases) {
    port->Answer(0x90, kAck + Text(line) + Head(values, length));
    ZRVTrackParams params = none;
    params.TrackingSupported = true;
    EXPECT_EQ(Sent([&] { device.GetTrackParams(&params); }), "B5 B0 2B 90 06 0A");
    EXPECT_EQ(device.GetLastError(), error) << line << length;
    EXPECT_TRUE(params == expected) << line << length;
    device.SendSerialReset();  // drops values that were left unread
  }
}

TEST_F(Tracking, ParametersAreClampedInPlaceAndSent) {
  const std::tuple<Track, Track, std::string> kCases[] = {
      {{0, 2, 300, -40, 500, -1, 1, 0, 1}, {0, 1, 255, -25, 191, 0, 1, 0, 1}, "FF 7F FF 67 BF 00 05"},
      {{0, -1, -5, 40, 0, 2, 0, 1, 0}, {0, 0, 0, 25, 0, 1, 0, 1, 0}, "00 00 00 99 00 FF 02"},
      {{0, 0.5f, 63, 0, 40, 0.5f, 0, 0, 0}, {0, 0.5f, 63, 0, 40, 0.5f, 0, 0, 0}, "FF 3F 3F 80 28 7F 00"},
      {{0, kNaN, 1, 1, 1, kNaN, 0, 0, 0}, {0, 0, 1, 1, 1, 0, 0, 0, 0}, "00 00 01 81 01 00 00"},
      {{0, 0, 0, 0, 0, 0, ~0u, 1u << 31, 1u << 30},  // state bits that overflow
       {0, 0, 0, 0, 0, 0, ~0u, 1u << 31, 1u << 30},
       "00 00 00 80 00 00 FF"},
  };
  for (const auto& [given, kept, payload] : kCases) {
    ZRVTrackParams params = given;
    EXPECT_EQ(Sent([&] { device.SetTrackParams(&params); }), "B5 B0 2B 9D 0D " + payload + " 0A");
    EXPECT_TRUE(params == kept) << payload;
  }
}

TEST_F(Tracking, StatusBecomesTheOffsets) {
  ZRVTrackStatus status{};
  const auto read = [&](const Bytes& answer) {
    port->Answer(0x92, answer);
    EXPECT_EQ(Sent([&] { device.GetTrackStatus(&status); }).substr(0, 17), "B5 B0 2B 92 06 0A");
    return std::tuple(status.Valid, status.StatusFlag, status.X, status.Y, status.StatusValue);
  };
  EXPECT_EQ(read(kAck + FromHex("00 80 FF FF 11 FF")), std::tuple(true, true, 0.0f, 1.0f, 17u));
  EXPECT_EQ(read(kAck + Bytes(5)), std::tuple(false, true, 0.0f, 1.0f, 17u));
  EXPECT_EQ(device.GetLastError(), ErrorDeviceResponse);
  EXPECT_EQ(std::pair(device.GetDeviceParam(ParamOutputOffsets, 0), device.GetDeviceParam(ParamOutputOffsets, 1)),
            std::pair(0.0f, 1.0f));
  EXPECT_EQ(read(kAck + FromHex("00 00 FF 7F 05 FE")), std::tuple(true, false, -32768.0f / 32767, -1.0f / 32767, 5u));
}

TEST_F(Tracking, Integrals) {
  int first = 1, second = 2;
  port->Answer(0x91, kAck + FromHex("00 00 FF FF"));
  EXPECT_EQ(Sent([&] { device.GetTrackIntegrals(first, second); }), "B5 B0 2B 91 06 0A");
  EXPECT_EQ(std::pair(first, second), std::pair(-32768, 32767));
  port->Answer(0x91, kAck + FromHex("01 80"));
  device.GetTrackIntegrals(first, second);
  EXPECT_EQ(std::pair(first, second), std::pair(1, 0xDCDC - 32768));  // filler: the read's outcome is not looked at
  EXPECT_EQ(device.GetLastError(), ErrorNone);
}

}  // namespace
}  // namespace zrv::testing
