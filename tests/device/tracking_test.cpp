// Tracking parameters, status and integrals.
#include <gtest/gtest.h>

#include <limits>

#include "tests/device/scripted_transport.h"

// The setters of single fields are private, and nothing calls them. An explicit instantiation may name private
// members; it hands them to the tests here.
namespace {
struct TrackSetters {
  void (ZRVDevice::*threshold)(float);
  void (ZRVDevice::*normalGain)(int);
  void (ZRVDevice::*tangentialGain)(int);
  void (ZRVDevice::*bufferDelay)(unsigned int);
  void (ZRVDevice::*hitRatio)(float);
  void (ZRVDevice::*state)(unsigned int);
};
TrackSetters PrivateSetters();
template <auto threshold, auto normal, auto tangential, auto delay, auto ratio, auto bits>
struct Reach {
  friend TrackSetters PrivateSetters() { return {threshold, normal, tangential, delay, ratio, bits}; }
};
template struct Reach<&ZRVDevice::SetTrackThreshold, &ZRVDevice::SetTrackNormalGain, &ZRVDevice::SetTrackTangentialGain,
                      &ZRVDevice::SetTrackBufferDelay, &ZRVDevice::SetTrackHitRatio, &ZRVDevice::SetTrackState>;
}  // namespace

namespace zrv::testing {
namespace {

const float kNaN = std::numeric_limits<float>::quiet_NaN();

ZRVTrackParams Track(float threshold, int normal, int tangential, unsigned delay, float ratio, unsigned b0, unsigned b1,
                     unsigned b2) {
  ZRVTrackParams p;
  p.Threshold = threshold;
  p.NormalGain = normal;
  p.TangentialGain = tangential;
  p.BufferDelay = delay;
  p.HitRatio = ratio;
  p.StateBit0 = b0;
  p.StateBit1 = b1;
  p.StateBit2 = b2;
  return p;
}

void ExpectFields(const ZRVTrackParams& got, const ZRVTrackParams& want) {
  EXPECT_EQ(got.Threshold, want.Threshold);
  EXPECT_EQ(got.NormalGain, want.NormalGain);
  EXPECT_EQ(got.TangentialGain, want.TangentialGain);
  EXPECT_EQ(got.BufferDelay, want.BufferDelay);
  EXPECT_EQ(got.HitRatio, want.HitRatio);
  EXPECT_EQ(got.StateBit0, want.StateBit0);
  EXPECT_EQ(got.StateBit1, want.StateBit1);
  EXPECT_EQ(got.StateBit2, want.StateBit2);
}

class Tracking : public ::testing::Test, protected ScriptedDevice {};

TEST_F(Tracking, ParametersAreRead) {
  port->Answer(0x90, kAck + Text("ZR-INFO\n") + Bytes{0xFF, 0x7F, 200, 0x80 - 25, 191, 0, 6});
  ZRVTrackParams params;
  device.GetTrackParams(&params);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_EQ(port->TakeWrites(), "B5 B0 2B 90 06 0A");
  EXPECT_TRUE(params.TrackingSupported);
  ExpectFields(params, Track(1, 200, -25, 191, 0, 0, 1, 1));
  const std::unique_ptr<ZRVTrackParams> made(device.GetTrackParams());
  ExpectFields(*made, params);
}

TEST_F(Tracking, FirstLine) {
  const struct {
    const char* line;
    bool supported;
    ZRVError error;
  } kCases[] = {{"ZR-INFO\n", true, ErrorDeviceResponse},  // no field follows
                {"NOTRACK\n", false, ErrorNone},
                {"ZR-INFO2\n", false, ErrorBadAcknowledge},
                {"ZR-INF\n", false, ErrorBadAcknowledge},
                {"\n", false, ErrorBadAcknowledge},
                {"", false, ErrorBadAcknowledge}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.line);
    port->Answer(0x90, kAck + Text(c.line));
    ZRVTrackParams params = Track(0.25f, 1, 2, 3, 0.5f, 1, 1, 1);
    params.TrackingSupported = true;
    device.GetTrackParams(&params);
    EXPECT_EQ(device.GetLastError(), c.error);
    EXPECT_EQ(params.TrackingSupported, c.supported);
    ExpectFields(params, Track(0.25f, 1, 2, 3, 0.5f, 1, 1, 1));
  }
}

TEST_F(Tracking, ACutAnswerKeepsTheFieldsThatArrived) {
  const Bytes whole = {0xFF, 0x7F, 200, 0x81, 7, 51, 2};
  const ZRVTrackParams before = Track(0.25f, 1, 2, 3, 0.5f, 1, 1, 1);
  for (size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    port->Answer(0x90, kAck + Text("ZR-INFO\n") + Bytes(whole.begin(), whole.begin() + static_cast<long>(length)));
    ZRVTrackParams params = before;
    device.GetTrackParams(&params);
    EXPECT_EQ(device.GetLastError(), ErrorDeviceResponse);
    EXPECT_EQ(params.Threshold, length >= 2 ? 1.0f : before.Threshold);
    EXPECT_EQ(params.NormalGain, length >= 3 ? 200 : before.NormalGain);
    EXPECT_EQ(params.TangentialGain, length >= 4 ? 1 : before.TangentialGain);
    EXPECT_EQ(params.BufferDelay, length >= 5 ? 7u : before.BufferDelay);
    EXPECT_EQ(params.HitRatio, length >= 6 ? 0.2f : before.HitRatio);
    EXPECT_EQ(params.StateBit0, before.StateBit0);
  }
}

TEST_F(Tracking, ParametersAreClampedInPlaceAndSent) {
  const float inf = std::numeric_limits<float>::infinity();
  const struct {
    const char* name;
    ZRVTrackParams given, kept;
    const char* payload;
  } kCases[] = {
      {"beyond", Track(2, 300, -40, 500, -1, 1, 0, 1), Track(1, 255, -25, 191, 0, 1, 0, 1), "FF 7F FF 67 BF 00 05"},
      {"below", Track(-1, -5, 40, 0, 2, 0, 1, 0), Track(0, 0, 25, 0, 1, 0, 1, 0), "00 00 00 99 00 FF 02"},
      {"within", Track(0.5f, 63, 0, 40, 0.5f, 0, 0, 0), Track(0.5f, 63, 0, 40, 0.5f, 0, 0, 0), "FF 3F 3F 80 28 7F 00"},
      {"not numbers", Track(kNaN, 1, 1, 1, kNaN, 0, 0, 0), Track(0, 1, 1, 1, 0, 0, 0, 0), "00 00 01 81 01 00 00"},
      {"infinite", Track(inf, 1, 1, 1, -inf, 0, 0, 0), Track(1, 1, 1, 1, 0, 0, 0, 0), "FF 7F 01 81 01 00 00"},
      {"state bits that overflow", Track(0, 0, 0, 0, 0, 0xFFFFFFFF, 0x80000000, 0x40000000),
       Track(0, 0, 0, 0, 0, 0xFFFFFFFF, 0x80000000, 0x40000000), "00 00 00 80 00 00 FF"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    ZRVTrackParams params = c.given;
    device.SetTrackParams(&params);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
    ExpectFields(params, c.kept);
    EXPECT_EQ(port->TakeWrites(), std::string("B5 B0 2B 9D 0D ") + c.payload + " 0A");
  }
}

TEST_F(Tracking, Status) {
  port->Answer(0x92, kAck + Bytes{0x00, 0x80, 0xFF, 0xFF, 17, 0xFE});
  ZRVTrackStatus status{};
  status.StatusFlag = true;
  device.GetTrackStatus(&status);
  EXPECT_EQ(port->TakeWrites(), "B5 B0 2B 92 06 0A");
  EXPECT_TRUE(status.Valid);
  EXPECT_FALSE(status.StatusFlag);
  EXPECT_EQ(status.X, 0.0f);
  EXPECT_EQ(status.Y, 1.0f);
  EXPECT_EQ(status.StatusValue, 17u);
  EXPECT_EQ(device.GetDeviceParam(ParamOutputOffsets, 0), 0.0f);
  EXPECT_EQ(device.GetDeviceParam(ParamOutputOffsets, 1), 1.0f);

  port->Answer(0x92, kAck + Bytes{0, 0, 0, 0, 0});
  device.GetTrackStatus(&status);
  EXPECT_EQ(device.GetLastError(), ErrorDeviceResponse);
  EXPECT_FALSE(status.Valid);
  EXPECT_EQ(status.Y, 1.0f);
  EXPECT_EQ(device.GetDeviceParam(ParamOutputOffsets, 1), 1.0f);

  // The acknowledgement may be wrong: the answer counts.
  port->Answer(0x92, Bytes{1, 2, 3});
  port->AnswerOnce(0x92, kAck + Bytes{0, 0, 0, 0, 0, 1});
  const std::unique_ptr<ZRVTrackStatus> made(device.GetTrackStatus());
  EXPECT_TRUE(made->StatusFlag);
  EXPECT_EQ(made->X, -32768.0f / 32767.0f);
}

TEST_F(Tracking, Integrals) {
  int first = 1, second = 2;
  port->Answer(0x91, kAck + Bytes{0x00, 0x00, 0xFF, 0xFF});
  device.GetTrackIntegrals(first, second);
  EXPECT_EQ(port->TakeWrites(), "B5 B0 2B 91 06 0A");
  EXPECT_EQ(first, -32768);
  EXPECT_EQ(second, 32767);
  port->Answer(0x91, kAck + Bytes{0x01, 0x80});
  device.GetTrackIntegrals(first, second);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 0xDCDC - 32768);  // filler: the read's outcome is not looked at
  EXPECT_EQ(device.GetLastError(), ErrorNone);
}

TEST_F(Tracking, SupportIsBit12OfTheStateWord) {
  EXPECT_FALSE(device.IsTrackingSupported());
  port->Answer(0xF4, kAck + Bytes{0x00, 0x10});
  EXPECT_TRUE(device.IsTrackingSupported());
  port->Answer(0xF4, kAck);
  EXPECT_FALSE(device.IsTrackingSupported());
}

TEST_F(Tracking, SingleFields) {
  const TrackSetters set = PrivateSetters();
  const struct {
    std::function<void()> call;
    const char* wire;
  } kCases[] = {
      {[&] { (device.*set.threshold)(2); }, "95 08 FF 7F"},    {[&] { (device.*set.threshold)(kNaN); }, "95 08 00 00"},
      {[&] { (device.*set.normalGain)(300); }, "96 07 FF"},    {[&] { (device.*set.normalGain)(-1); }, "96 07 00"},
      {[&] { (device.*set.tangentialGain)(-40); }, "9A 07 67"}, {[&] { (device.*set.tangentialGain)(40); }, "9A 07 99"},
      {[&] { (device.*set.bufferDelay)(500); }, "97 07 BF"},   {[&] { (device.*set.hitRatio)(0.5f); }, "98 07 7F"},
      {[&] { (device.*set.state)(300); }, "99 07 FF"},         {[&] { (device.*set.state)(2); }, "99 07 02"},
  };
  for (const auto& c : kCases) {
    c.call();
    EXPECT_EQ(device.GetLastError(), ErrorNone);
    EXPECT_EQ(port->TakeWrites(), std::string("B5 B0 2B ") + c.wire + " 0A");
    EXPECT_TRUE(port->TakeWaits().empty());
  }
}

TEST(TrackingWithoutAPort, SaysSo) {
  ZRVDevice device;
  ZRVTrackParams params = Track(2, 0, 0, 0, 0, 0, 0, 0);
  params.TrackingSupported = true;
  ZRVTrackStatus status{true, true, 1, 1, 1};
  int first = 1, second = 2;
  const struct {
    const char* name;
    std::function<void()> call;
  } kCalls[] = {{"get", [&] { device.GetTrackParams(&params); }},
                {"get, null", [&] { device.GetTrackParams(nullptr); }},
                {"set", [&] { device.SetTrackParams(&params); }},
                {"set, null", [&] { device.SetTrackParams(nullptr); }},
                {"status", [&] { device.GetTrackStatus(&status); }},
                {"status, null", [&] { device.GetTrackStatus(nullptr); }},
                {"integrals", [&] { device.GetTrackIntegrals(first, second); }},
                {"support", [&] { EXPECT_FALSE(device.IsTrackingSupported()); }}};
  for (const auto& c : kCalls) {
    c.call();
    EXPECT_EQ(device.GetLastError(), ErrorNotConnected) << c.name;
  }
  EXPECT_FALSE(params.TrackingSupported);
  EXPECT_EQ(params.Threshold, 1.0f);  // clamped all the same
  EXPECT_FALSE(status.Valid);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 2);
}

}  // namespace
}  // namespace zrv::testing
