// The analog inputs and the photodetector: single readings, captures, and the streams of modes 6..9.
#include <algorithm>
#include <array>
#include <cstring>

#include "ZRVDevice.h"
#include "common/bytes.h"
#include "device/command_buffer.h"
#include "device/protocol.h"

using namespace zrv;
using namespace zrv::protocol;

namespace {

constexpr float kNoValue = -1e9f;
constexpr unsigned int kMaxStreamPairs = 125000;
constexpr unsigned int kMaxSensorSamples = 100000;
constexpr unsigned int kStreamGraceMs = 1000;
// A capture is read in pieces that a link of 921600 baud brings well within the read time-out, so that none
// is too long to arrive.
constexpr unsigned int kCapturePieceSamples = 20000;
static_assert(kCapturePieceSamples * kCaptureRecordBytes <= kReceiveBufferBytes);
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

}  // namespace

// --- Single readings ---------------------------------------------------------------------------------

// A lost answer reads as filler and leaves the error as the command left it. Kept on purpose: an answer that
// arrives after a failed acknowledgement counts, one that does not is the command's failure.
unsigned int ZRVDevice::ReadCount(unsigned char code) {
  std::array<uint8_t, kAnalogAnswerBytes> answer{};
  Command(code);
  if (ReadBytes(answer.data(), kAnalogAnswerBytes, Shared().readTimeoutMs)) lastError_ = ErrorNone;
  return LittleEndianReader(answer).U16();
}

float ZRVDevice::GetAnalogInputValue(unsigned int channel) {
  lastError_ = ErrorNone;
  if (!Connected()) return kNoValue;
  return Volts(ReadCount(channel == 0 ? kCmdGetAnalogInput0 : kCmdGetAnalogInput1));
}

float ZRVDevice::GetPhotoDetectorValue() {
  lastError_ = ErrorNone;
  if (!Connected()) return kNoValue;
  return Detector(ReadCount(kCmdGetPhotoDetector));
}

// --- Captures ----------------------------------------------------------------------------------------

void ZRVDevice::SetAnalogInputBufferLength(unsigned int numSamples) {
  NewCommand(kCmdSetCaptureLength).U24(numSamples);
  SendSerialCommand(true);
}

void ZRVDevice::GetAnalogInputBuffer(float* ai0, float* ai1, unsigned int numSamples) {
  lastError_ = ErrorNone;
  if (!Connected()) {
    Fill(ai0, 0, numSamples, kNoValue);
    Fill(ai1, 0, numSamples, kNoValue);
    return;
  }
  SetAnalogInputBufferLength(numSamples);
  Command(kCmdGetCapture);
  unsigned int done = 0;
  for (bool sending = true; sending && done < numSamples;) {
    const unsigned int count = std::min(numSamples - done, kCapturePieceSamples);
    const auto piece = std::span(Shared().received).first(count * kCaptureRecordBytes);
    sending = ReadBytes(piece.data(), static_cast<unsigned int>(piece.size()), Shared().readTimeoutMs);
    Extract(piece, kCaptureRecordBytes, 0, Volts, ai0 != nullptr ? ai0 + done : nullptr);
    Extract(piece, kCaptureRecordBytes, 2, Volts, ai1 != nullptr ? ai1 + done : nullptr);
    done += count;
  }
  // A controller that has stopped sending is not waited for again.
  Fill(ai0, done, numSamples, Volts(kFiller << 8 | kFiller));
  Fill(ai1, done, numSamples, Volts(kFiller << 8 | kFiller));
}

// --- Streams -----------------------------------------------------------------------------------------

unsigned int ZRVDevice::GetAnalogInputStream(float* ai0, float* ai1, unsigned int numSamples) {
  lastError_ = ErrorNone;
  if (!Connected()) return 0;
  const auto buffer = std::span(Shared().received);
  unsigned int wanted = kClearReadBytes;
  unsigned int timeoutMs = Shared().readTimeoutMs;
  if (numSamples > 0) {
    numSamples = std::min(numSamples, kMaxStreamPairs);
    wanted = numSamples * static_cast<unsigned int>(kStreamRecordBytes);
    timeoutMs = StreamTimeoutMs(numSamples, 1000, params_->SampleRate);
  }
  unsigned int received = 0;
  const int mode = numSamples > 0 ? ZRVSerialIO::kWaitForAll : ZRVSerialIO::kReturnAtOnce;
  port_->Read(buffer.data(), wanted, &received, timeoutMs, mode);

  const auto pairs = static_cast<unsigned int>(std::min(received, wanted) / kStreamRecordBytes);
  const auto records = buffer.first(pairs * kStreamRecordBytes);
  const auto deliver = [&](Convert first, Convert second) {
    Extract(records, kStreamRecordBytes, 0, first, ai0);
    Extract(records, kStreamRecordBytes, 2, second, ai1);
  };
  switch (params_->DataMode) {
    case DataModeAnalogVolts: deliver(Volts, Volts); break;
    case DataModeAnalogVoltsRaw: deliver(Volts, Raw); break;
    case DataModeAnalogNormalized: deliver(Normalised, Normalised); break;
    default: break;
  }
  return pairs;
}

// Looks for the mark that starts a block, a byte at a time. The last attempt fails even when its byte completes
// the mark: the mark must be found before the attempts are used up.
bool ZRVDevice::FindOrBEX1Mark(unsigned int attempts) {
  std::array<uint8_t, kOrBEX1Mark.size()> last{};
  for (unsigned int attempt = 1; attempt <= attempts; ++attempt) {
    uint8_t byte = 0;
    if (!ReadBytes(&byte, 1, Shared().readTimeoutMs) || attempt == attempts) return false;
    std::shift_left(last.begin(), last.end(), 1);
    last.back() = byte;
    if (last == kOrBEX1Mark) return true;
  }
  return false;
}

unsigned int ZRVDevice::GetOrBEX1Stream(float* data, float gain, unsigned int numSamples) {
  lastError_ = ErrorNone;
  if (!Connected() || params_->DataMode != DataModeOrBEX1) return 0;
  numSamples = std::min(numSamples, kMaxSensorSamples);
  if (!FindOrBEX1Mark(3 * numSamples)) return 0;
  const auto counts = std::span(Shared().received).first(2 * numSamples);
  unsigned int received = 0;
  const unsigned int timeoutMs = StreamTimeoutMs(numSamples, 2000, params_->SampleRate);
  const int status = port_->Read(counts.data(), 2 * numSamples, &received, timeoutMs, ZRVSerialIO::kWaitForAll);
  if (status != ZRVSerialIO::kOk || received != 2 * numSamples) return 0;

  const bool digital = std::strstr(params_->FirmwareName, "ORBEX1D") != nullptr;
  const float scale = digital ? 10.0f : gain * 3.3f / 2.048f / 65535.0f;
  Extract(counts, 2, 0, Raw, data);
  if (data != nullptr) std::transform(data, data + numSamples, data, [=](float count) { return count * scale; });
  return numSamples;
}
