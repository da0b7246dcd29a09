// The analog inputs and the photodetector: single readings, captures, and the streams of modes 6..9.
#include <algorithm>
#include <array>
#include <cstring>

#include "device/protocol.h"
#include "device/state.h"

using namespace zrv;
using namespace zrv::protocol;

namespace {

constexpr float kNoValue = -1e9f;
constexpr unsigned int kMaxStreamPairs = 125000;
constexpr unsigned int kMaxSensorSamples = 100000;
constexpr unsigned int kStreamGraceMs = 1000;
constexpr unsigned int kFillerCount = 0xDCDC;  // a count whose bytes did not arrive
// A capture that the receive buffer does not hold is read in pieces.
constexpr unsigned int kCapturePieceSamples = kReceiveBufferBytes / kCaptureRecordBytes;
static_assert(kMaxStreamPairs * kStreamRecordBytes <= kReceiveBufferBytes);
static_assert(kMaxSensorSamples * 2 <= kReceiveBufferBytes);

// Conversions of a count.
using Convert = float (*)(unsigned int);
float Volts(unsigned int count) { return (static_cast<float>(count) - 32768.0f) / 3277.0f; }
float Normalised(unsigned int count) { return (static_cast<float>(count) - 32768.0f) / 32768.0f; }
float Detector(unsigned int count) { return static_cast<float>(count) / 32767.0f; }
float Raw(unsigned int count) { return static_cast<float>(count); }

// One count of each record, converted.
void Extract(std::span<const uint8_t> records, size_t recordBytes, size_t at, Convert convert, float* out) {
  if (out == nullptr) return;
  for (size_t i = 0; i < records.size() / recordBytes; ++i) {
    out[i] = convert(LittleEndianReader(records.subspan(i * recordBytes + at, 2)).U16());
  }
}

void Fill(float* out, unsigned int from, unsigned int to, float value) {
  if (out != nullptr) std::fill(out + from, out + to, value);
}

// A controller that reports no rate is given no more than the grace.
unsigned int StreamTimeoutMs(unsigned int numSamples, unsigned int msPerRate, unsigned int sampleRate) {
  return (sampleRate != 0 ? numSamples * msPerRate / sampleRate : 0) + kStreamGraceMs;
}

// A lost answer leaves the error as the command left it, and reads as what stands in the payload area. Kept on purpose:
// an answer that arrives after a failed acknowledgement counts, one that does not is the command's failure.
uint32_t ReadCount(Link& link, uint8_t code) {
  link.Command(code);
  const auto answer = link.Area(kAnalogAnswerBytes);
  if (link.Read(answer)) link.error = ErrorNone;
  return LittleEndianReader(answer).U16();
}

// Looks for the mark that starts a block, a byte at a time. The last attempt fails even when its byte completes
// the mark: the mark must be found before the attempts are used up.
bool FindOrBEX1Mark(Link& link, unsigned int attempts) {
  std::array<uint8_t, kOrBEX1Mark.size()> last{};
  for (unsigned int attempt = 1; attempt <= attempts; ++attempt) {
    uint8_t byte = 0;
    if (!link.Read({&byte, 1}) || attempt == attempts) return false;
    std::shift_left(last.begin(), last.end(), 1);
    last.back() = byte;
    if (last == kOrBEX1Mark) return true;
  }
  return false;
}

}  // namespace

// --- Single readings ---------------------------------------------------------------------------------

float ZRVDevice::GetAnalogInputValue(unsigned int channel) {
  Link& link = state_->link;
  link.error = ErrorNone;
  if (!link.Connected()) return kNoValue;
  return Volts(ReadCount(link, channel == 0 ? kCmdGetAnalogInput0 : kCmdGetAnalogInput1));
}

float ZRVDevice::GetPhotoDetectorValue() {
  Link& link = state_->link;
  link.error = ErrorNone;
  if (!link.Connected()) return kNoValue;
  return Detector(ReadCount(link, kCmdGetPhotoDetector));
}

// --- Captures ----------------------------------------------------------------------------------------

void ZRVDevice::SetAnalogInputBufferLength(unsigned int numSamples) {
  state_->link.NewCommand(kCmdSetCaptureLength).U24(numSamples);
  state_->link.SendSerialCommand(true);
}

void ZRVDevice::GetAnalogInputBuffer(float* ai0, float* ai1, unsigned int numSamples) {
  Link& link = state_->link;
  link.error = ErrorNone;
  if (!link.Connected()) {
    Fill(ai0, 0, numSamples, kNoValue);
    Fill(ai1, 0, numSamples, kNoValue);
    return;
  }
  SetAnalogInputBufferLength(numSamples);
  link.Command(kCmdGetCapture);
  unsigned int done = 0;
  for (bool sending = true; sending && done < numSamples;) {
    const unsigned int count = std::min(numSamples - done, kCapturePieceSamples);
    const auto piece = link.received().first(count * kCaptureRecordBytes);
    sending = link.Read(piece);
    Extract(piece, kCaptureRecordBytes, 0, Volts, ai0 != nullptr ? ai0 + done : nullptr);
    Extract(piece, kCaptureRecordBytes, 2, Volts, ai1 != nullptr ? ai1 + done : nullptr);
    done += count;
  }
  // A controller that has stopped sending is not waited for again.
  Fill(ai0, done, numSamples, Volts(kFillerCount));
  Fill(ai1, done, numSamples, Volts(kFillerCount));
}

// --- Streams -----------------------------------------------------------------------------------------

unsigned int ZRVDevice::GetAnalogInputStream(float* ai0, float* ai1, unsigned int numSamples) {
  Link& link = state_->link;
  link.error = ErrorNone;
  if (!link.Connected()) return 0;
  const ZRVDeviceParams& params = state_->params;
  const auto buffer = link.received();
  unsigned int wanted = kClearReadBytes;
  unsigned int timeoutMs = link.readTimeoutMs;
  if (numSamples > 0) {
    numSamples = std::min(numSamples, kMaxStreamPairs);
    wanted = numSamples * static_cast<unsigned int>(kStreamRecordBytes);
    timeoutMs = StreamTimeoutMs(numSamples, 1000, params.SampleRate);
  }
  unsigned int received = 0;
  const int mode = numSamples > 0 ? ZRVSerialIO::kWaitForAll : ZRVSerialIO::kReturnAtOnce;
  link.port->Read(buffer.data(), wanted, &received, timeoutMs, mode);

  const auto pairs = static_cast<unsigned int>(std::min(received, wanted) / kStreamRecordBytes);
  const auto records = buffer.first(pairs * kStreamRecordBytes);
  const auto deliver = [&](Convert first, Convert second) {
    Extract(records, kStreamRecordBytes, 0, first, ai0);
    Extract(records, kStreamRecordBytes, 2, second, ai1);
  };
  switch (params.DataMode) {
    case DataModeAnalogVolts: deliver(Volts, Volts); break;
    case DataModeAnalogVoltsRaw: deliver(Volts, Raw); break;
    case DataModeAnalogNormalized: deliver(Normalised, Normalised); break;
    default: break;
  }
  return pairs;
}

unsigned int ZRVDevice::GetOrBEX1Stream(float* data, float gain, unsigned int numSamples) {
  Link& link = state_->link;
  const ZRVDeviceParams& params = state_->params;
  link.error = ErrorNone;
  if (!link.Connected() || params.DataMode != DataModeOrBEX1) return 0;
  numSamples = std::min(numSamples, kMaxSensorSamples);
  if (!FindOrBEX1Mark(link, 3 * numSamples)) return 0;
  const auto counts = link.received().first(2 * numSamples);
  unsigned int received = 0;
  const unsigned int timeoutMs = StreamTimeoutMs(numSamples, 2000, params.SampleRate);
  const int status = link.port->Read(counts.data(), 2 * numSamples, &received, timeoutMs, ZRVSerialIO::kWaitForAll);
  if (status != ZRVSerialIO::kOk || received != 2 * numSamples) return 0;

  const bool digital = std::strstr(params.FirmwareName, "ORBEX1D") != nullptr;
  const float scale = digital ? 10.0f : gain * 3.3f / 2.048f / 65535.0f;
  Extract(counts, 2, 0, Raw, data);
  if (data != nullptr) std::transform(data, data + numSamples, data, [=](float count) { return count * scale; });
  return numSamples;
}
