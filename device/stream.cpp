// Sample blocks: sending, playing, stopping, polling.
#include <algorithm>
#include <array>

#include "device/markers.h"
#include "device/packing.h"
#include "device/protocol.h"
#include "device/state.h"

using namespace zrv;
using namespace zrv::protocol;

namespace {

// Positions come back on a 32768 scale although samples go out on 32767.5, so a stop at +1 reads 0.99997. Kept on
// purpose: it is how controllers report.
constexpr float kStopCountsPerUnit = 32768.0f;
constexpr unsigned int kMaxBlockBytes = 0xFFFFFF;  // the announced length has 3 bytes
constexpr int kMaxRepeats = 32;
constexpr float kFarAway = 1e8f;
constexpr float kNearEnough = 1e-8f;  // squared distance

// The analog streams have no hardware filter in their output path.
bool HasHardwareFilter(ZRVDataMode mode) { return mode != DataModeAnalogVoltsRaw && mode != DataModeAnalogNormalized; }

// The sample nearest to where the output stopped; the first of equals. Stops looking at a hit.
unsigned int NearestTo(const StopValues& stop, const float* x, const float* y, unsigned int numSamples) {
  unsigned int nearest = 0;
  float best = kFarAway;
  for (unsigned int i = 0; i < numSamples && best >= kNearEnough; ++i) {
    const float dx = x[i] - stop.x;
    const float dy = y[i] - stop.y;
    const float distance = dx * dx + dy * dy;
    if (distance < best) {
      best = distance;
      nearest = i;
    }
  }
  return nearest;
}

void SendBlock(Link& link, std::span<const uint8_t> block) {
  if (!link.Command(kCmdBlockFollows)) return;
  const auto size = static_cast<unsigned int>(block.size());
  if (link.port->Write(block.data(), size, nullptr, ZRVSerialIO::kInfinite) != ZRVSerialIO::kOk) {
    link.Fail(ErrorSerialComm);
    return;
  }
  link.ReadAcknowledge();
}

}  // namespace

void ZRVDevice::SendDataStream(float* x, float* y, unsigned char* m, unsigned int numSamples, unsigned int delaySamples,
                               bool minimizeJump) {
  Link& link = state_->link;
  const ZRVDeviceParams& params = state_->params;
  if (numSamples == 0 || x == nullptr || y == nullptr || m == nullptr) {
    link.error = ErrorInvalidValue;
    return;
  }
  const uint32_t format = params.SyncState;
  const uint32_t bytesPerSample = BytesPerSample(format);
  numSamples = std::min({numSamples, params.SampleBufferCapacity, kMaxBlockBytes / bytesPerSample});
  if (numSamples == 0) {  // a controller that reports no room
    link.error = ErrorInvalidValue;
    return;
  }
  const unsigned int filterDelay = HasHardwareFilter(params.DataMode) ? CalcHardwareFilterDelay(numSamples) : 0;
  // The larger one alone reaches the limit, so the sum is never taken where it would wrap.
  const unsigned int longest = numSamples - 1;
  const unsigned int delay = delaySamples > longest ? longest : std::min(delaySamples + filterDelay, longest);
  std::vector<uint32_t>& colours = state_->colours;
  if (colours.size() < numSamples) colours.resize(numSamples, kWhite);

  SampleSource source;
  source.x = x;
  source.y = y;
  source.m = m;
  source.colours = colours.data();
  source.gamma = &state_->gammaCurves;
  source.count = numSamples;
  source.start = minimizeJump ? NearestTo(state_->stop, x, y, numSamples) : 0;
  source.delay = delay;

  const unsigned int numBytes = numSamples * bytesPerSample;
  link.NewCommand(kCmdAnnounceBlock).U24(numBytes);
  if (!link.SendSerialCommand(true)) return;
  // For unknown formats nothing is packed, and the bytes that happen to be in the area go out. Kept on purpose:
  // the controller has announced a format that only it knows.
  const auto block = link.Area(numBytes);
  PackSamples(format, source, block.data());
  SendBlock(link, block);
}

void ZRVDevice::StartDataStream(int repeat, bool wait) {
  Link& link = state_->link;
  if (link.port == nullptr) return;
  if (repeat < 1) {
    link.Command(kCmdPlayEndless);
    return;
  }
  const auto repeats = static_cast<unsigned int>(std::min(repeat, kMaxRepeats));
  link.NewCommand(wait ? kCmdPlayCountedAndReport : kCmdPlayCounted).U8(repeats);
  link.SendSerialCommand(true);
  if (!wait) return;
  // The controller's whole buffer sets the wait, not the length of the block loaded. The end is waited for whatever
  // became of the command: the controller may be playing all the same.
  const unsigned int rate = state_->params.SampleRate;
  const unsigned int playMs = rate != 0 ? repeats * 1000 * state_->params.SampleBufferCapacity / rate : 0;
  std::array<uint8_t, kAcknowledge.size()> answer{};
  if (!link.Read(answer, playMs + link.readTimeoutMs)) link.error = ErrorSerialComm;
  if (answer != kAcknowledge) link.Fail(ErrorSerialComm);
}

void ZRVDevice::StopDataStream() {
  Link& link = state_->link;
  StopValues& stop = state_->stop;
  if (!link.Command(kCmdStop)) return;
  stop = {.m = stop.m};  // what callers see if the answer is lost
  auto answer = link.ReadAnswer(kStopAnswerBytes);
  if (!answer) return;
  stop.x = answer->U16() / kStopCountsPerUnit - 1.0f;
  stop.y = answer->U16() / kStopCountsPerUnit - 1.0f;
  stop.m = answer->U8();
  stop.index = answer->U32();
}

float ZRVDevice::GetXStop() const { return state_->stop.x; }
float ZRVDevice::GetYStop() const { return state_->stop.y; }
unsigned char ZRVDevice::GetMStop() const { return state_->stop.m; }
unsigned int ZRVDevice::GetIStop() const { return state_->stop.index; }

unsigned int ZRVDevice::GetSamplesRemaining() {
  Link& link = state_->link;
  link.error = ErrorNone;
  if (!link.Connected()) return kUnavailableWhole;
  auto answer = link.Query(kCmdGetSamplesRemaining, kRemainingAnswerBytes);
  return answer ? answer->U24() : 0;
}
