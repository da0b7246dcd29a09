// Sample blocks: sending, playing, stopping, polling.
#include <algorithm>
#include <array>

#include "ZRVDevice.h"
#include "common/bytes.h"
#include "device/command_buffer.h"
#include "device/markers.h"
#include "device/packing.h"
#include "device/protocol.h"

using namespace zrv;
using namespace zrv::protocol;

namespace {

// Positions come back on a 32768 scale although samples go out on 32767.5, so a stop at +1 reads 0.99997. Kept on
// purpose: it is how controllers report.
constexpr float kStopCountsPerUnit = 32768.0f;
constexpr unsigned int kMaxBlockBytes = 0xFFFFFF;  // the announced length has 3 bytes
constexpr int kMaxRepeats = 32;
constexpr unsigned int kBlockSilenceMs = 1100;
constexpr unsigned int kWhite = 0xFFFFFF;
constexpr float kFarAway = 1e8f;
constexpr float kNearEnough = 1e-8f;  // squared distance

// The analog streams have no hardware filter in their output path.
bool HasHardwareFilter(ZRVDataMode mode) {
  return mode != DataModeAnalogVoltsRaw && mode != DataModeAnalogNormalized;
}

}  // namespace

void ZRVDevice::SendDataStream(float* x, float* y, unsigned char* m, unsigned int numSamples,
                               unsigned int delaySamples, bool minimizeJump) {
  if (numSamples == 0 || x == nullptr || y == nullptr || m == nullptr) {
    lastError_ = ErrorInvalidValue;
    return;
  }
  const uint32_t format = params_->SyncState;
  bytesPerSample_ = BytesPerSample(format);
  numSamples = std::min({numSamples, params_->SampleBufferCapacity, kMaxBlockBytes / bytesPerSample_});
  if (numSamples == 0) {  // a controller that reports no room
    lastError_ = ErrorInvalidValue;
    return;
  }
  const unsigned int filterDelay = HasHardwareFilter(params_->DataMode) ? CalcHardwareFilterDelay(numSamples) : 0;
  // The larger one alone reaches the limit, so the sum is never taken where it would wrap.
  const unsigned int longest = numSamples - 1;
  const unsigned int delay = delaySamples > longest ? longest : std::min(delaySamples + filterDelay, longest);
  if (colours_.size() < numSamples) colours_.resize(numSamples, kWhite);

  SampleSource source;
  source.x = x;
  source.y = y;
  source.m = m;
  source.colours = colours_.data();
  source.gamma = &gammaCurves_;
  source.count = numSamples;
  source.start = minimizeJump ? NearestToStop(x, y, numSamples) : 0;
  source.delay = delay;

  const unsigned int numBytes = numSamples * bytesPerSample_;
  NewCommand(kCmdAnnounceBlock).U24(numBytes);
  if (!SendSerialCommand(true)) return;
  // For unknown formats nothing is packed, and the bytes that happen to be in the area go out. Kept on purpose:
  // the controller has announced a format that only it knows.
  const auto block = Shared().command.Area(numBytes);
  PackSamples(format, source, block.data());
  SendBlock(block.data(), numBytes);
}

// A controller that waits for the rest of a block takes whatever comes for it, until the line has been silent for a
// second. One that may be waiting is given this silence here, so that the next command is not lost.
bool ZRVDevice::SendBlock(const unsigned char* block, unsigned int numBytes) {
  if (Command(kCmdBlockFollows)) {
    if (port_->Write(block, numBytes, nullptr, ZRVSerialIO::kInfinite) == ZRVSerialIO::kOk) {
      return ReadAcknowledge(Shared().readTimeoutMs, ErrorBadAcknowledge);
    }
    Fail(ErrorSerialComm);
  }
  port_->Read(Shared().received.data(), kClearReadBytes, nullptr, kBlockSilenceMs, ZRVSerialIO::kWaitForAll);
  return false;
}

// The sample nearest to where the output stopped; the first of equals. Stops looking at a hit.
unsigned int ZRVDevice::NearestToStop(const float* x, const float* y, unsigned int numSamples) const {
  unsigned int nearest = 0;
  float best = kFarAway;
  for (unsigned int i = 0; i < numSamples && best >= kNearEnough; ++i) {
    const float dx = x[i] - xStop_;
    const float dy = y[i] - yStop_;
    const float distance = dx * dx + dy * dy;
    if (distance < best) {
      best = distance;
      nearest = i;
    }
  }
  return nearest;
}

void ZRVDevice::StartDataStream(int repeat, bool wait) {
  if (port_ == nullptr) return;
  if (repeat < 1) {
    Command(kCmdPlayEndless);
    return;
  }
  const auto repeats = static_cast<unsigned int>(std::min(repeat, kMaxRepeats));
  NewCommand(wait ? kCmdPlayCountedAndReport : kCmdPlayCounted).U8(repeats);
  const bool started = SendSerialCommand(true);
  if (!wait || !started) return;
  // The controller's whole buffer sets the wait, not the length of the block loaded.
  const unsigned int rate = params_->SampleRate;
  const unsigned int playMs = rate != 0 ? repeats * 1000 * params_->SampleBufferCapacity / rate : 0;
  ReadAcknowledge(playMs + Shared().readTimeoutMs, ErrorSerialComm);
}

void ZRVDevice::StopDataStream() {
  if (!Command(kCmdStop)) return;
  xStop_ = yStop_ = 0.0f;  // what callers see if the answer is lost
  iStop_ = 0;
  std::array<uint8_t, kStopAnswerBytes> answer{};
  if (!ReadAnswer(answer.data(), kStopAnswerBytes)) return;
  LittleEndianReader in(answer);
  xStop_ = in.U16() / kStopCountsPerUnit - 1.0f;
  yStop_ = in.U16() / kStopCountsPerUnit - 1.0f;
  mStop_ = in.U8();
  iStop_ = in.U32();
}

unsigned int ZRVDevice::GetSamplesRemaining() {
  lastError_ = ErrorNone;
  if (!Connected()) return kUnavailableWhole;
  std::array<uint8_t, kRemainingAnswerBytes> answer{};
  if (!Query(kCmdGetSamplesRemaining, answer.data(), kRemainingAnswerBytes)) return 0;
  return LittleEndianReader(answer).U24();
}

bool ZRVDevice::IsDeviceRunning() {
  GetDeviceState();
  return lastError_ == ErrorNone && (params_->DeviceState & kStatePlaying) != 0;
}
