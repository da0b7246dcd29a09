#include "simulator/controller.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "common/bytes.h"
#include "simulator/commands.h"
#include "simulator/output.h"

namespace zrv::sim {

using namespace protocol;

namespace {

// A batch of the input streams, so that a fast stream does not wake its server for every record.
constexpr double kStreamBatch = 0.001;  // seconds
// Rounding of the caller's times must not lose a tick that is due just now; in ticks.
constexpr double kTickTolerance = 1e-3;
// More ticks than this are never due at once, whatever time the caller gives.
constexpr double kMaxTicks = 1e15;

// Texts are lines of the identification, and its reader has room for so many bytes.
void CutLine(std::string& text, size_t maxBytes) { text.resize(std::min({text.size(), maxBytes, text.find('\n')})); }

Options Bounded(Options options) {
  CutLine(options.deviceName, kMaxNameBytes);
  CutLine(options.firmwareName, 15);
  CutLine(options.commType, 15);
  CutLine(options.bluetoothMAC, 17);
  options.formatCode &= 7;
  options.capacity = std::clamp(options.capacity, 1u, 0xFFFFFFu);
  options.sampleRateMin = std::clamp(options.sampleRateMin, 1u, 0xFFFFFFu);
  options.sampleRateMax = std::clamp(options.sampleRateMax, options.sampleRateMin, 0xFFFFFFu);
  options.sensorBlockSamples = std::max<size_t>(options.sensorBlockSamples, 1);
  options.settling = options.settling > 0 ? std::min(options.settling, 10.0) : 0;
  options.captureCapacity = std::min<size_t>(options.captureCapacity, 0xFFFFFF);
  auto& rate = options.factory.sampleRate;
  rate = std::clamp(rate, options.sampleRateMin, options.sampleRateMax);
  return options;
}

}  // namespace

Controller::Controller(Options options)
    : options_(Bounded(std::move(options))),
      mirror_(options_.mirror),
      path_(options_.pathCapacity),
      history_(options_.pathCapacity) {
  flash_.factoryName = options_.deviceName;
  Boot();
}

void Controller::Boot() {
  settings_ = options_.factory;
  playback_.Clear();
  if (flash_.settings && flash_.settings->boot != 0) {
    settings_ = *flash_.settings;
    playback_.Load(flash_.block);
    if (settings_.boot == 2) playback_.Start(0);
  }
  reportsEnd_ = false;
  blockFollows_ = false;
  announced_ = captureLength_ = 0;
  sensorSample_ = 0;
  output_ = {};
  mirror_.Reset();
  ConfigureMirror();
  RestartClock(now_);
}

void Controller::PowerCycle() {
  answers_.Clear();
  parser_.GiveUp();
  Boot();
}

void Controller::ConfigureMirror() {
  const bool filtered = options_.hardwareFilter && settings_.dataMode != 7 && settings_.dataMode != 8;
  mirror_.Configure(
      {static_cast<double>(settings_.sampleRate), filtered ? static_cast<double>(settings_.hardwareFilterBw) : 0.0});
}

std::string Controller::DeviceName() const {
  return settings_.deviceName.empty() ? flash_.factoryName : settings_.deviceName;
}

uint16_t Controller::StateWord() const {
  uint32_t word = uint32_t{settings_.syncMode} << kStateSyncShift | options_.formatCode << kStateFormatShift;
  if (playback_.playing()) word |= kStatePlaying;
  if (options_.hardwareFilter) word |= kStateHardwareFilter;
  if (options_.tracking) word |= kStateTracking;
  return static_cast<uint16_t>(word);
}

void Controller::SetAnalogInput(unsigned channel, const AnalogSignal& signal) {
  options_.analogInputs[std::min(channel, 1u)] = signal;
}

uint16_t Controller::AnalogCount(unsigned channel, double time, const MirrorPosition& mirror) const {
  return VoltsToCount(SignalAt(options_.analogInputs[channel], time, mirror));
}

// --- What the host sends ---

void Controller::Receive(std::span<const uint8_t> bytes, double now) {
  Advance(now);
  if (bytes.empty() || faults_.linkCut()) return;
  GiveUpAfterSilence();
  lastReceived_ = now_;
  bytes = bytes.first(faults_.Accept(bytes.size()));
  bytesReceived_ += bytes.size();
  while (!bytes.empty()) {
    if (blockFollows_) {
      bytes = bytes.subspan(ReceiveBlock(bytes));
      continue;
    }
    if (const auto frame = parser_.Push(bytes.front())) Execute(*frame);
    bytes = bytes.subspan(1);
  }
}

void Controller::GiveUpAfterSilence() {
  const double silence = now_ - lastReceived_;
  if (blockFollows_ && silence > kBlockSilence) {
    blockFollows_ = false;
    announced_ = 0;
    ++rejected_;
  }
  if (silence > kFrameSilence) parser_.GiveUp();
}

void Controller::Execute(const Frame& frame) {
  const Command* command = Find(frame.code);
  const size_t size = frame.payload.size();
  const bool fits = command && size >= command->minPayload && size <= command->maxPayload;
  LittleEndianReader payload(frame.payload);
  const Reply reply = fits ? command->run(*this, payload) : std::nullopt;
  ++(reply ? accepted_ : rejected_);
  Tell(reply ? LinkEvent::Kind::kCommand : LinkEvent::Kind::kRefused, frame.code, size + kFrameOverhead, frame.payload);
  if (!reply) return;
  std::vector<uint8_t> answer = *reply;
  if (command->acknowledged) answer.insert(answer.begin(), kAcknowledge.begin(), kAcknowledge.end());
  Answer(frame.code, answer);
  RunClock();
}

size_t Controller::ReceiveBlock(std::span<const uint8_t> bytes) {
  const size_t taken = std::min(bytes.size(), announced_ - received_.size());
  received_.insert(received_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(taken));
  if (received_.size() == announced_) FinishBlock();
  return taken;
}

void Controller::FinishBlock() {
  blockFollows_ = false;
  announced_ = 0;
  Tell(LinkEvent::Kind::kBlock, kCmdBlockFollows, received_.size(), received_);
  playback_.Load(DecodeBlock(options_.formatCode, received_));
  if (playback_.playing()) RestartClock(now_);
  Answer(kCmdBlockFollows, kAcknowledge, kAcknowledge.size());
  RunClock();
}

// --- What goes to the host ---

void Controller::Tell(LinkEvent::Kind kind, uint8_t code, size_t bytes, std::span<const uint8_t> content) const {
  if (observer_) observer_({kind, now_, code, bytes, content});
}

size_t Controller::Take(std::span<uint8_t> buffer) {
  const size_t taken = answers_.Take(buffer, now_);
  bytesTaken_ += taken;
  return taken;
}

void Controller::Answer(uint8_t code, std::span<const uint8_t> bytes, uint64_t firstByte) {
  const size_t before = answers_.size();
  Put(code, bytes, firstByte);
  if (answers_.size() > before) Tell(LinkEvent::Kind::kAnswer, code, answers_.size() - before, bytes);
}

void Controller::Put(uint8_t code, std::span<const uint8_t> bytes, uint64_t firstByte) {
  faults_.BeginAnswer(bytes.size());
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (faults_.silent() || faults_.linkCut()) return;
    const auto fault = faults_.Next(code, firstByte + i);
    const auto kind = fault ? std::optional(fault->kind) : std::nullopt;
    if (kind == Fault::Kind::kDrop) continue;
    if (kind == Fault::Kind::kCut) return faults_.CutLink();
    const auto byte = static_cast<uint8_t>(bytes[i] ^ (kind == Fault::Kind::kCorrupt ? fault->mask : 0));
    const double due = kind == Fault::Kind::kDelay ? now_ + fault->seconds : now_;
    answers_.Push(byte, due);
    if (kind == Fault::Kind::kDuplicate) answers_.Push(byte, due);
  }
}

void Controller::StreamInputs(double time, const MirrorPosition& mirror) {
  std::array<uint8_t, kOrBEX1Mark.size() + kStreamRecordBytes> record;
  LittleEndianWriter writer(record);
  const bool sensor = settings_.dataMode == 9;
  if (sensor && sensorSample_++ % options_.sensorBlockSamples == 0) {
    for (const uint8_t byte : kOrBEX1Mark) writer.U8(byte);
  }
  writer.U16(AnalogCount(0, time, mirror));
  if (!sensor) writer.U16(AnalogCount(1, time, mirror));
  // A host that does not keep up loses whole records, never a part of one.
  if (answers_.size() + writer.Written() > options_.streamBacklog) return;
  Answer(kCmdSetDataMode, std::span(record).first(writer.Written()));
}

void Controller::Talk(double seconds) {
  const auto& chatter = faults_.chatter();
  chatterCredit_ = chatter ? chatterCredit_ + seconds * chatter->bytesPerSecond : 0;
  while (chatter && chatterCredit_ >= 1 && answers_.size() < options_.streamBacklog) {
    answers_.Push(chatter->value, now_);
    chatterCredit_ -= 1;
  }
  chatterCredit_ = std::min(chatterCredit_, 1.0);
}

// --- The sample clock ---

double Controller::TickTime(uint64_t tick) const {
  return firstTick_ + static_cast<double>(tick) / settings_.sampleRate;
}

uint64_t Controller::TicksDue() const {
  const double passed = (now_ - firstTick_) * settings_.sampleRate + kTickTolerance;
  if (passed < 0) return 0;
  const auto reached = static_cast<uint64_t>(std::min(passed, kMaxTicks)) + 1;
  return reached > ticks_ ? reached - ticks_ : 0;
}

void Controller::RestartClock(double firstTick) {
  firstTick_ = firstTick;
  ticks_ = 0;
}

void Controller::Advance(double now) {
  const double before = now_;
  if (now > now_ && std::isfinite(now)) now_ = now;
  Talk(now_ - before);
  RunClock();
}

void Controller::RunClock() {
  for (uint64_t due = TicksDue(); due > 0; due = TicksDue()) {
    const bool playing = playback_.playing();
    const uint64_t run = playing ? std::min(due, playback_.TicksToEnd()) : due;
    if (run == 0) {
      EndOfPlay();
    } else {
      RunTicks(run);
    }
  }
}

// Of a long time that passes at once only the end is worked out: what the path can hold, and ahead of it as long as
// the mirror takes to forget how it began.
void Controller::RunTicks(uint64_t ticks) {
  const uint64_t worth = options_.pathCapacity + static_cast<uint64_t>(settings_.sampleRate * options_.settling);
  if (ticks > worth) {
    const uint64_t skipped = ticks - worth;
    ticks_ += skipped;
    sensorSample_ += skipped;
    if (playback_.playing()) playback_.Skip(skipped);
    ticks = worth;
  }
  for (; ticks > 0; --ticks) Tick();
}

void Controller::Tick() {
  const bool playing = playback_.playing();
  if (playing) output_ = playback_.Next();
  mirror_.Step(Placed(settings_, output_));
  const MirrorPosition mirror = mirror_.position();
  ++ticks_;
  history_.Push({mirror, output_.m});
  const double time = TickTime(ticks_);  // the model has moved to the end of the sample
  if (playing) path_.Push({time, mirror.x, mirror.y, output_.m, output_.rgb});
  if (StreamsInputs()) StreamInputs(time, mirror);
}

void Controller::EndOfPlay() {
  playback_.Stop();
  if (std::exchange(reportsEnd_, false)) Answer(kCmdPlayCountedAndReport, kAcknowledge, kAcknowledge.size());
}

double Controller::NextEventTime() const {
  double next = answers_.NextTime();
  if (faults_.linkCut() || faults_.silent()) return next;
  if (playback_.playing() && reportsEnd_) next = std::min(next, TickTime(ticks_ + playback_.TicksToEnd()));
  if (StreamsInputs()) next = std::min(next, std::max(TickTime(ticks_), now_ + kStreamBatch));
  if (const auto& chatter = faults_.chatter(); chatter && chatter->bytesPerSecond > 0) {
    next = std::min(next, now_ + std::max(1 / chatter->bytesPerSecond, kStreamBatch));
  }
  return next;
}

}  // namespace zrv::sim
