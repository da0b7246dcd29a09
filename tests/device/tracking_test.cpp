// Tracking parameters, status and integrals.
#include "tests/device/scripted_transport.h"

// The setters of single fields are private, and nothing calls them. An explicit instantiation may name private
// members; it hands them to the tests here.
namespace {
template <auto... members>
struct Reach {
  friend auto PrivateSetters(ZRVDevice&) { return std::tuple(members...); }
};
template struct Reach<&ZRVDevice::SetTrackThreshold, &ZRVDevice::SetTrackNormalGain, &ZRVDevice::SetTrackTangentialGain,
                      &ZRVDevice::SetTrackBufferDelay, &ZRVDevice::SetTrackHitRatio, &ZRVDevice::SetTrackState>;
auto PrivateSetters(ZRVDevice&);
}  // namespace

namespace zrv::testing {
namespace {

using Fields = std::tuple<float, int, int, unsigned, float, unsigned, unsigned, unsigned>;

Fields FieldsOf(const ZRVTrackParams& p) {
  return {p.Threshold, p.NormalGain, p.TangentialGain, p.BufferDelay,
          p.HitRatio,  p.StateBit0,  p.StateBit1,      p.StateBit2};
}

ZRVTrackParams Track(const Fields& fields) {
  ZRVTrackParams p;
  std::tie(p.Threshold, p.NormalGain, p.TangentialGain, p.BufferDelay, p.HitRatio, p.StateBit0, p.StateBit1,
           p.StateBit2) = fields;
  return p;
}

class Tracking : public Scripted {};

TEST_F(Tracking, ParametersAreReadAsFarAsTheyArrive) {
  const Bytes line = kAck + Text("ZR-INFO\n"), values = {0xFF, 0x7F, 200, 0x80 - 25, 191, 51, 6};
  const Fields before(0.25f, 1, 2, 3, 0.5f, 1, 1, 1);
  const Fields after[] = {before, before, {1, 1, 2, 3, 0.5f, 1, 1, 1}, {1, 200, 2, 3, 0.5f, 1, 1, 1},
                          {1, 200, -25, 3, 0.5f, 1, 1, 1}, {1, 200, -25, 191, 0.5f, 1, 1, 1},
                          {1, 200, -25, 191, 0.2f, 1, 1, 1}, {1, 200, -25, 191, 0.2f, 0, 1, 1}};
  for (size_t length = 0; length <= values.size(); ++length) {
    port->Answer(0x90, line + Head(values, length));
    ZRVTrackParams params = Track(before);
    EXPECT_EQ(Sent([&] { device.GetTrackParams(&params); }), "B5 B0 2B 90 06 0A");
    EXPECT_EQ(device.GetLastError(), length < values.size() ? ErrorDeviceResponse : ErrorNone) << length;
    EXPECT_EQ(FieldsOf(params), after[length]) << length;
    EXPECT_TRUE(params.TrackingSupported);
  }
  const std::pair<const char*, ZRVError> kOtherLines[] = {{"NOTRACK\n", ErrorNone},
                                                          {"ZR-INFO2\n", ErrorBadAcknowledge},
                                                          {"ZR-INF\n", ErrorBadAcknowledge},
                                                          {"", ErrorBadAcknowledge}};
  for (const auto& [text, error] : kOtherLines) {
    port->Answer(0x90, kAck + Text(text) + values);
    ZRVTrackParams params = Track(before);
    params.TrackingSupported = true;
    device.GetTrackParams(&params);
    EXPECT_EQ(device.GetLastError(), error) << text;
    EXPECT_FALSE(params.TrackingSupported) << text;
    EXPECT_EQ(FieldsOf(params), before) << text;
    device.SendSerialReset();
  }
}

TEST_F(Tracking, ParametersAreClampedInPlaceAndSent) {
  const struct {
    const char* name;
    Fields given, kept;
    const char* payload;
  } kCases[] = {
      {"beyond", {2, 300, -40, 500, -1, 1, 0, 1}, {1, 255, -25, 191, 0, 1, 0, 1}, "FF 7F FF 67 BF 00 05"},
      {"below", {-1, -5, 40, 0, 2, 0, 1, 0}, {0, 0, 25, 0, 1, 0, 1, 0}, "00 00 00 99 00 FF 02"},
      {"within", {0.5f, 63, 0, 40, 0.5f, 0, 0, 0}, {0.5f, 63, 0, 40, 0.5f, 0, 0, 0}, "FF 3F 3F 80 28 7F 00"},
      {"not numbers", {kNaN, 1, 1, 1, kNaN, 0, 0, 0}, {0, 1, 1, 1, 0, 0, 0, 0}, "00 00 01 81 01 00 00"},
      {"state bits that overflow", {0, 0, 0, 0, 0, 0xFFFFFFFF, 0x80000000, 0x40000000},
       {0, 0, 0, 0, 0, 0xFFFFFFFF, 0x80000000, 0x40000000}, "00 00 00 80 00 00 FF"},
  };
  for (const auto& c : kCases) {
    ZRVTrackParams params = Track(c.given);
    EXPECT_EQ(Sent([&] { device.SetTrackParams(&params); }), std::string("B5 B0 2B 9D 0D ") + c.payload + " 0A");
    EXPECT_EQ(FieldsOf(params), c.kept) << c.name;
  }
}

TEST_F(Tracking, StatusBecomesTheOffsets) {
  ZRVTrackStatus status{};
  const auto read = [&](const Bytes& answer) {
    port->Answer(0x92, answer);
    EXPECT_EQ(Sent([&] { device.GetTrackStatus(&status); }).substr(0, 17), "B5 B0 2B 92 06 0A");
    return std::tuple(status.Valid, status.StatusFlag, status.X, status.Y, status.StatusValue);
  };
  EXPECT_EQ(read(kAck + Bytes{0x00, 0x80, 0xFF, 0xFF, 17, 0xFF}), std::tuple(true, true, 0.0f, 1.0f, 17u));
  EXPECT_EQ(read(kAck + Bytes{0, 0, 0, 0, 0}), std::tuple(false, true, 0.0f, 1.0f, 17u));
  EXPECT_EQ(device.GetLastError(), ErrorDeviceResponse);
  EXPECT_EQ(device.GetDeviceParam(ParamOutputOffsets, 1), 1.0f);
  // The acknowledgement may be wrong: the answer counts.
  port->afterPurges = {0, 0, 0, 0, 5, 0xFE};
  EXPECT_EQ(read({1, 2, 3}), std::tuple(true, false, -32768.0f / 32767, -32768.0f / 32767, 5u));
  EXPECT_EQ(device.GetDeviceParam(ParamOutputOffsets, 0), -32768.0f / 32767);
}

TEST_F(Tracking, Integrals) {
  int first = 1, second = 2;
  port->Answer(0x91, kAck + Bytes{0x00, 0x00, 0xFF, 0xFF});
  EXPECT_EQ(Sent([&] { device.GetTrackIntegrals(first, second); }), "B5 B0 2B 91 06 0A");
  EXPECT_EQ(std::tuple(first, second), std::tuple(-32768, 32767));
  port->Answer(0x91, kAck + Bytes{0x01, 0x80});
  device.GetTrackIntegrals(first, second);
  EXPECT_EQ(std::tuple(first, second), std::tuple(1, 0xDCDC - 32768));  // filler: the read's outcome is not looked at
  EXPECT_EQ(device.GetLastError(), ErrorNone);
}

TEST_F(Tracking, SingleFieldsAreNotAcknowledged) {
  const auto [threshold, normalGain, tangentialGain, bufferDelay, hitRatio, state] = PrivateSetters(device);
  const auto expect = [&](const char* wire, auto setter, auto value) {
    EXPECT_EQ(Sent([&] { (device.*setter)(value); }), std::string("B5 B0 2B ") + wire + " 0A");
    EXPECT_TRUE(port->TakeWaits().empty()) << wire;
  };
  expect("95 08 FF 7F", threshold, 2.0f);
  expect("95 08 00 00", threshold, kNaN);
  expect("96 07 FF", normalGain, 300);
  expect("9A 07 67", tangentialGain, -40);
  expect("97 07 BF", bufferDelay, 500u);
  expect("98 07 7F", hitRatio, 0.5f);
  expect("99 07 FF", state, 300u);
  expect("99 07 02", state, 2u);
}

}  // namespace
}  // namespace zrv::testing
