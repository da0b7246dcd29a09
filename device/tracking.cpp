// Tracking: its parameters, status and integrals.
#include <algorithm>
#include <cmath>
#include <utility>

#include "device/field_reader.h"
#include "device/protocol.h"
#include "device/state.h"

using namespace zrv;
using namespace zrv::protocol;

namespace {

constexpr float kThresholdCounts = 32767.0f;  // threshold 1
constexpr float kRatioCounts = 255.0f;        // hit ratio 1
constexpr int kTangentialZero = 0x80;
constexpr int kIntegralZero = 32768;
constexpr size_t kTrackParamsAreaBytes = 16;  // cleared ahead of the 7 bytes that are sent

float ClampUnit(float value) { return value > 0.0f ? std::min(value, 1.0f) : 0.0f; }  // NaN: 0
int ClampNormalGain(int gain) { return std::clamp(gain, 0, 255); }
int ClampTangentialGain(int gain) { return std::clamp(gain, -25, 25); }
unsigned int ClampBufferDelay(unsigned int samples) { return std::min(samples, 191u); }
unsigned int ClampState(uint64_t bits) { return static_cast<unsigned int>(std::min<uint64_t>(bits, 255)); }

// On the wire.
uint32_t Threshold(float threshold) { return static_cast<uint32_t>(threshold * kThresholdCounts); }
uint32_t NormalGain(int gain) { return static_cast<uint32_t>(gain); }
uint32_t TangentialGain(int gain) { return static_cast<uint32_t>(gain + kTangentialZero); }
uint32_t HitRatio(float ratio) { return static_cast<uint32_t>(ratio * kRatioCounts); }
uint32_t State(const ZRVTrackParams& p) {
  return ClampState(uint64_t{p.StateBit0} + 2 * uint64_t{p.StateBit1} + 4 * uint64_t{p.StateBit2});
}

void SetStateBits(ZRVTrackParams& params, unsigned int bits) {
  params.StateBit0 = bits & 1;
  params.StateBit1 = bits >> 1 & 1;
  params.StateBit2 = bits >> 2 & 1;
}

}  // namespace

// --- Whole records -----------------------------------------------------------------------------------

void ZRVDevice::GetTrackParams(ZRVTrackParams* params) {
  Link& link = state_->link;
  if (params == nullptr) {
    link.error = ErrorNotConnected;
    return;
  }
  ZRVTrackParams& own = state_->track;
  params->TrackingSupported = own.TrackingSupported = false;
  if (!link.Connected()) return;
  link.Command(kCmdGetTrackParams);
  const auto line = link.ReadLine();
  link.error = line == kInfoLine || line == kNoTrackLine ? ErrorNone : ErrorBadAcknowledge;
  if (line != kInfoLine) return;
  params->TrackingSupported = own.TrackingSupported = true;
  using T = ZRVTrackParams;
  FieldReader<T> in(link, own, *params);
  in.Take(2, [](T& p, uint32_t count) { p.Threshold = static_cast<float>(count) / kThresholdCounts; });
  in.Whole(1, &T::NormalGain);
  in.Take(1, [](T& p, uint32_t count) { p.TangentialGain = static_cast<int>(count) - kTangentialZero; });
  in.Whole(1, &T::BufferDelay);
  in.Take(1, [](T& p, uint32_t count) { p.HitRatio = static_cast<float>(count) / kRatioCounts; });
  in.Take(1, SetStateBits);
}

ZRVTrackParams* ZRVDevice::GetTrackParams() {
  auto params = std::make_unique<ZRVTrackParams>();
  GetTrackParams(params.get());
  return params.release();
}

void ZRVDevice::SetTrackParams(ZRVTrackParams* params) {
  Link& link = state_->link;
  link.error = ErrorNone;
  if (params == nullptr) {
    link.error = ErrorNotConnected;
    return;
  }
  ZRVTrackParams& p = *params;
  p.Threshold = ClampUnit(p.Threshold);
  p.NormalGain = ClampNormalGain(p.NormalGain);
  p.TangentialGain = ClampTangentialGain(p.TangentialGain);
  p.BufferDelay = ClampBufferDelay(p.BufferDelay);
  p.HitRatio = ClampUnit(p.HitRatio);
  std::ranges::fill(link.Area(kTrackParamsAreaBytes), uint8_t{0});
  link.NewCommand(kCmdSetTrackParams)
      .U16(Threshold(p.Threshold))
      .U8(NormalGain(p.NormalGain))
      .U8(TangentialGain(p.TangentialGain))
      .U8(p.BufferDelay)
      .U8(HitRatio(p.HitRatio))
      .U8(State(p));
  if (!link.SendSerialCommand(true)) return;
  const bool supported = state_->track.TrackingSupported;  // what the controller said, not the caller
  state_->track = p;
  state_->track.TrackingSupported = supported;
}

// --- Status ------------------------------------------------------------------------------------------

void ZRVDevice::GetTrackStatus(ZRVTrackStatus* status) {
  Link& link = state_->link;
  link.error = status != nullptr ? ErrorNone : ErrorNotConnected;
  if (status == nullptr) return;
  status->Valid = false;
  if (!link.Connected()) return;
  auto answer = link.Query(kCmdGetTrackStatus, kTrackStatusAnswerBytes);
  if (!answer) return;
  status->X = state_->params.XOffset = DecodeOffset(answer->U16());
  status->Y = state_->params.YOffset = DecodeOffset(answer->U16());
  status->StatusValue = answer->U8();
  status->StatusFlag = (answer->U8() & 1) != 0;
  status->Valid = true;
}

ZRVTrackStatus* ZRVDevice::GetTrackStatus() {
  auto status = std::make_unique<ZRVTrackStatus>();
  GetTrackStatus(status.get());
  return status.release();
}

// The read's outcome is not looked at: without an answer both integrals are what the receive buffer holds.
void ZRVDevice::GetTrackIntegrals(int& integral1, int& integral2) {
  Link& link = state_->link;
  link.error = ErrorNone;
  if (!link.Connected()) return;
  link.Command(kCmdGetTrackIntegrals);
  const auto answer = link.received().first(kTrackIntegralsAnswerBytes);
  link.Read(answer);
  LittleEndianReader in(answer);
  integral1 = in.U16() - kIntegralZero;
  integral2 = in.U16() - kIntegralZero;
}

// --- Single fields, always sent and never acknowledged -----------------------------------------------

void ZRVDevice::SetTrackThreshold(float threshold) {
  Link& link = state_->link;
  threshold = ClampUnit(threshold);
  link.NewCommand(kCmdSetTrackThreshold).U16(Threshold(threshold));
  if (link.SendSerialCommand(false)) state_->track.Threshold = threshold;
}

void ZRVDevice::SetTrackNormalGain(int gain) {
  Link& link = state_->link;
  gain = ClampNormalGain(gain);
  link.NewCommand(kCmdSetTrackNormalGain).U8(NormalGain(gain));
  if (link.SendSerialCommand(false)) state_->track.NormalGain = gain;
}

void ZRVDevice::SetTrackTangentialGain(int gain) {
  Link& link = state_->link;
  gain = ClampTangentialGain(gain);
  link.NewCommand(kCmdSetTrackTangentialGain).U8(TangentialGain(gain));
  if (link.SendSerialCommand(false)) state_->track.TangentialGain = gain;
}

void ZRVDevice::SetTrackBufferDelay(unsigned int samples) {
  Link& link = state_->link;
  samples = ClampBufferDelay(samples);
  link.NewCommand(kCmdSetTrackBufferDelay).U8(samples);
  if (link.SendSerialCommand(false)) state_->track.BufferDelay = samples;
}

void ZRVDevice::SetTrackHitRatio(float ratio) {
  Link& link = state_->link;
  ratio = ClampUnit(ratio);
  link.NewCommand(kCmdSetTrackHitRatio).U8(HitRatio(ratio));
  if (link.SendSerialCommand(false)) state_->track.HitRatio = ratio;
}

void ZRVDevice::SetTrackState(unsigned int bits) {
  Link& link = state_->link;
  bits = ClampState(bits);
  link.NewCommand(kCmdSetTrackState).U8(bits);
  if (link.SendSerialCommand(false)) SetStateBits(state_->track, bits);
}
