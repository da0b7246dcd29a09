// Tracking: its parameters, status and integrals.
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "ZRVDevice.h"
#include "common/bytes.h"
#include "device/command_buffer.h"
#include "device/field_reader.h"
#include "device/protocol.h"

using namespace zrv;
using namespace zrv::protocol;

namespace {

constexpr float kThresholdCounts = 32767.0f;  // threshold 1
constexpr float kRatioCounts = 255.0f;        // hit ratio 1
constexpr int kTangentialZero = 0x80;
constexpr int kIntegralZero = 32768;

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

bool ZRVDevice::IsTrackingSupported() {
  GetDeviceState();
  return lastError_ == ErrorNone && (params_->DeviceState & kStateTracking) != 0;
}

// --- Whole records -----------------------------------------------------------------------------------

void ZRVDevice::GetTrackParams(ZRVTrackParams* params) {
  if (params == nullptr) {
    lastError_ = ErrorNotConnected;
    return;
  }
  params->TrackingSupported = track_->TrackingSupported = false;
  if (!Connected()) return;
  Command(kCmdGetTrackParams);
  std::string line;
  ReadAnswerLine(line);
  lastError_ = line == kInfoLine || line == kNoTrackLine ? ErrorNone : ErrorBadAcknowledge;
  if (lastError_ != ErrorNone) ExpectLateBytes();  // fields that nobody reads now
  if (line != kInfoLine) return;
  params->TrackingSupported = track_->TrackingSupported = true;
  ReadTrackFields(*params);
}

void ZRVDevice::ReadTrackFields(ZRVTrackParams& params) {
  FieldReader in(*this);
  // A field that does not arrive stays as it was, in both records.
  const auto read = [&](unsigned int width, auto store) {
    const uint32_t count = in.Uint(width);
    if (!in.arrived()) return;
    store(params, count);
    store(*track_, count);
  };
  read(2, [](auto& p, uint32_t n) { p.Threshold = static_cast<float>(n) / kThresholdCounts; });
  read(1, [](auto& p, uint32_t n) { p.NormalGain = static_cast<int>(n); });
  read(1, [](auto& p, uint32_t n) { p.TangentialGain = static_cast<int>(n) - kTangentialZero; });
  read(1, [](auto& p, uint32_t n) { p.BufferDelay = n; });
  read(1, [](auto& p, uint32_t n) { p.HitRatio = static_cast<float>(n) / kRatioCounts; });
  read(1, SetStateBits);
}

ZRVTrackParams* ZRVDevice::GetTrackParams() {
  auto params = std::make_unique<ZRVTrackParams>();
  GetTrackParams(params.get());
  return params.release();
}

void ZRVDevice::SetTrackParams(ZRVTrackParams* params) {
  lastError_ = ErrorNone;
  if (params == nullptr) {
    lastError_ = ErrorNotConnected;
    return;
  }
  ZRVTrackParams& p = *params;
  p.Threshold = ClampUnit(p.Threshold);
  p.NormalGain = ClampNormalGain(p.NormalGain);
  p.TangentialGain = ClampTangentialGain(p.TangentialGain);
  p.BufferDelay = ClampBufferDelay(p.BufferDelay);
  p.HitRatio = ClampUnit(p.HitRatio);
  NewCommand(kCmdSetTrackParams)
      .U16(Threshold(p.Threshold))
      .U8(NormalGain(p.NormalGain))
      .U8(TangentialGain(p.TangentialGain))
      .U8(p.BufferDelay)
      .U8(HitRatio(p.HitRatio))
      .U8(State(p));
  if (!SendSerialCommand(true)) return;
  const bool supported = track_->TrackingSupported;  // what the controller said, not the caller
  *track_ = p;
  track_->TrackingSupported = supported;
}

// --- Status ------------------------------------------------------------------------------------------

void ZRVDevice::GetTrackStatus(ZRVTrackStatus* status) {
  lastError_ = status != nullptr ? ErrorNone : ErrorNotConnected;
  if (status == nullptr) return;
  status->Valid = false;
  if (!Connected()) return;
  std::array<uint8_t, kTrackStatusAnswerBytes> answer{};
  if (!Query(kCmdGetTrackStatus, answer.data(), kTrackStatusAnswerBytes)) return;
  LittleEndianReader in(answer);
  status->X = params_->XOffset = DecodeOffset(in.U16());
  status->Y = params_->YOffset = DecodeOffset(in.U16());
  status->StatusValue = in.U8();
  status->StatusFlag = (in.U8() & 1) != 0;
  status->Valid = true;
}

ZRVTrackStatus* ZRVDevice::GetTrackStatus() {
  auto status = std::make_unique<ZRVTrackStatus>();
  GetTrackStatus(status.get());
  return status.release();
}

// The read's outcome is not looked at: without an answer both integrals are filler.
void ZRVDevice::GetTrackIntegrals(int& integral1, int& integral2) {
  lastError_ = ErrorNone;
  if (!Connected()) return;
  Command(kCmdGetTrackIntegrals);
  std::array<uint8_t, kTrackIntegralsAnswerBytes> answer{};
  ReadBytes(answer.data(), kTrackIntegralsAnswerBytes, Shared().readTimeoutMs);
  LittleEndianReader in(answer);
  integral1 = in.U16() - kIntegralZero;
  integral2 = in.U16() - kIntegralZero;
}

// --- Single fields, always sent and never acknowledged -----------------------------------------------

void ZRVDevice::SetTrackThreshold(float threshold) {
  threshold = ClampUnit(threshold);
  NewCommand(kCmdSetTrackThreshold).U16(Threshold(threshold));
  if (SendSerialCommand(false)) track_->Threshold = threshold;
}

void ZRVDevice::SetTrackNormalGain(int gain) {
  gain = ClampNormalGain(gain);
  NewCommand(kCmdSetTrackNormalGain).U8(NormalGain(gain));
  if (SendSerialCommand(false)) track_->NormalGain = gain;
}

void ZRVDevice::SetTrackTangentialGain(int gain) {
  gain = ClampTangentialGain(gain);
  NewCommand(kCmdSetTrackTangentialGain).U8(TangentialGain(gain));
  if (SendSerialCommand(false)) track_->TangentialGain = gain;
}

void ZRVDevice::SetTrackBufferDelay(unsigned int samples) {
  samples = ClampBufferDelay(samples);
  NewCommand(kCmdSetTrackBufferDelay).U8(samples);
  if (SendSerialCommand(false)) track_->BufferDelay = samples;
}

void ZRVDevice::SetTrackHitRatio(float ratio) {
  ratio = ClampUnit(ratio);
  NewCommand(kCmdSetTrackHitRatio).U8(HitRatio(ratio));
  if (SendSerialCommand(false)) track_->HitRatio = ratio;
}

void ZRVDevice::SetTrackState(unsigned int bits) {
  bits = ClampState(bits);
  NewCommand(kCmdSetTrackState).U8(bits);
  if (SendSerialCommand(false)) SetStateBits(*track_, bits);
}
