#include "simulator/commands.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "device/protocol.h"
#include "simulator/output.h"

namespace zrv::sim {

using namespace protocol;

namespace {

constexpr uint32_t kBaudMin = 115200, kBaudMax = 3686400;
constexpr uint8_t kMaxRounds = 32;
constexpr uint8_t kMaxAxes = 7, kMaxDataMode = 9, kMaxSyncMode = 15, kMaxFlash = 1;
constexpr uint16_t kMaxBoot = 2;
constexpr uint8_t kMaxBufferDelay = 191;
constexpr uint8_t kMinTangentialGain = 0x80 - 25, kMaxTangentialGain = 0x80 + 25;

const Reply kDone{std::in_place};

// An answer put together field by field.
class AnswerBytes {
 public:
  AnswerBytes& Line(std::string_view text) {
    bytes_.insert(bytes_.end(), text.begin(), text.end());
    bytes_.push_back(kTrailer);
    return *this;
  }
  AnswerBytes& U8(uint32_t value) { return Put(value, 1); }
  AnswerBytes& U16(uint32_t value) { return Put(value, 2); }
  AnswerBytes& U24(uint32_t value) { return Put(value, 3); }
  AnswerBytes& U32(uint32_t value) { return Put(value, 4); }
  operator Reply() { return std::move(bytes_); }

 private:
  AnswerBytes& Put(uint32_t value, int width) {
    for (int i = 0; i < width; ++i) bytes_.push_back(static_cast<uint8_t>(value >> (8 * i)));
    return *this;
  }
  std::vector<uint8_t> bytes_;
};

}  // namespace

// The commands' way into the controller. Every member has the signature that the table wants.
struct Controller::Commands {
  using C = Controller;
  using In = LittleEndianReader;

  // --- Shapes that several commands share ---

  template <bool Settings::*flag, bool value>
  static Reply Switch(C& c, In&) {
    c.settings_.*flag = value;
    return kDone;
  }

  template <uint8_t Settings::*field, uint8_t highest>
  static Reply SetCode(C& c, In& in) {
    const uint8_t value = in.U8();
    if (value > highest) return std::nullopt;
    c.settings_.*field = value;
    return kDone;
  }

  template <uint8_t TrackSettings::*field, uint8_t lowest = 0, uint8_t highest = 255>
  static Reply SetTrack(C& c, In& in) {
    if (!c.options_.tracking) return std::nullopt;
    c.settings_.track.*field = std::clamp(in.U8(), lowest, highest);
    return kDone;
  }

  // --- State and identification ---

  static Reply Nothing(C&, In&) { return kDone; }

  static Reply Reset(C& c, In&) {
    c.Boot();
    return kDone;
  }

  static Reply State(C& c, In&) { return AnswerBytes().U16(c.StateWord()); }

  static Reply Identification(C& c, In&) {
    const Settings& s = c.settings_;
    return AnswerBytes()
        .Line(kInfoLine)
        .Line(c.DeviceName())
        .Line(c.options_.firmwareName)
        .Line(c.options_.commType)
        .Line(c.options_.bluetoothMAC)
        .U24(s.usartBaudRate)
        .U24(s.sampleRate)
        .U16(s.hardwareFilterBw)
        .U16(s.dataScale)
        .U16(s.rotationCos)
        .U8(c.options_.vmax)
        .U8(s.vbias)
        .U8(s.vdifferenceMax)
        .U8(s.axes)
        .U8(s.memsDriver)
        .U8(s.digitalOutput)
        .U8(s.laserModulation)
        .U16(c.StateWord())
        .U16(c.options_.errorRegister)
        .U24(s.bufferOffset)
        .U16(s.boot)
        .U8(s.dataMode);
  }

  static Reply Limits(C& c, In&) {
    const Options& o = c.options_;
    AnswerBytes answer;
    answer.Line(kInfoLine)
        .U24(o.sampleRateMin)
        .U24(o.sampleRateMax)
        .U24(o.limitWord3)
        .U24(o.capacity)
        .U16(o.hardwareFilterBwMin)
        .U16(o.hardwareFilterBwMax);
    for (const uint8_t limit : o.limitBytes7To10) answer.U8(limit);
    return answer.U8(o.vbiasMin).U8(o.vbiasMax);
  }

  static Reply OutputOffsets(C& c, In&) { return AnswerBytes().U16(c.settings_.offsetX).U16(c.settings_.offsetY); }

  // --- Parameters ---

  static Reply SetBaudRate(C& c, In& in) {
    c.settings_.usartBaudRate = std::clamp(in.U24(), kBaudMin, kBaudMax);
    return kDone;
  }

  // The next sample is one new period away: the one being put out has just been held for a while.
  static Reply SetSampleRate(C& c, In& in) {
    c.settings_.sampleRate = std::clamp(in.U24(), c.options_.sampleRateMin, c.options_.sampleRateMax);
    c.RestartClock(c.now_ + 1.0 / c.settings_.sampleRate);
    c.ConfigureMirror();
    return kDone;
  }

  static Reply SetHardwareFilterBw(C& c, In& in) {
    const uint16_t low = c.options_.hardwareFilterBwMin;
    c.settings_.hardwareFilterBw = std::clamp(in.U16(), low, std::max(low, c.options_.hardwareFilterBwMax));
    c.ConfigureMirror();
    return kDone;
  }

  static Reply SetDataScale(C& c, In& in) {
    c.settings_.dataScale = std::min<uint16_t>(in.U16(), 32767);
    return kDone;
  }

  static Reply SetDataRotation(C& c, In& in) {
    c.settings_.rotationCos = std::min<uint16_t>(in.U16(), 32767);
    c.settings_.rotationSin = std::min<uint16_t>(in.U16(), 32767);
    return kDone;
  }

  static Reply SetVdifferenceMax(C& c, In& in) {
    c.settings_.vdifferenceMax = std::min(in.U8(), c.options_.vmax);
    return kDone;
  }

  static Reply SetVbias(C& c, In& in) {
    const uint8_t low = c.options_.vbiasMin;
    c.settings_.vbias = std::clamp(in.U8(), low, std::max(low, c.options_.vbiasMax));
    return kDone;
  }

  static Reply SetOutputOffsets(C& c, In& in) {
    c.settings_.offsetX = in.U16();
    c.settings_.offsetY = in.U16();
    return kDone;
  }

  static Reply SetBufferOffset(C& c, In& in) {
    c.settings_.bufferOffset = in.U24();
    return kDone;
  }

  static Reply SetBoot(C& c, In& in) {
    const uint16_t boot = in.U16();
    if (boot > kMaxBoot) return std::nullopt;
    c.settings_.boot = boot;
    return kDone;
  }

  static Reply SetDataMode(C& c, In& in) {
    const Reply reply = SetCode<&Settings::dataMode, kMaxDataMode>(c, in);
    if (reply) c.sensorSample_ = 0;
    c.ConfigureMirror();
    return reply;
  }

  // A name is a line of the identification, so it ends where a line does.
  static std::string Name(In& in) {
    const auto bytes = in.Bytes(in.Left());
    const std::string name(bytes.begin(), bytes.end());
    return name.substr(0, name.find('\n'));
  }

  static Reply SetName(C& c, In& in) {
    c.settings_.deviceName = Name(in);
    return kDone;
  }

  static Reply SetFactoryName(C& c, In& in) {
    c.flash_.factoryName = Name(in);
    return kDone;
  }

  static Reply SaveToFlash(C& c, In& in) {
    const uint8_t what = in.U8();
    if (what > kMaxFlash) return std::nullopt;
    c.flash_.settings = c.settings_;
    if (what == 1) c.flash_.block = c.playback_.block();
    return kDone;
  }

  // --- Sample block and playback ---

  static Reply AnnounceBlock(C& c, In& in) {
    const size_t width = BytesPerSample(c.options_.formatCode);
    const size_t bytes = in.U24();
    if (bytes < width || bytes > c.options_.capacity * width) return std::nullopt;
    c.announced_ = bytes;
    return kDone;
  }

  static Reply BlockFollows(C& c, In&) {
    if (c.announced_ == 0) return std::nullopt;
    c.received_.clear();
    c.blockFollows_ = true;
    return kDone;
  }

  static void Start(C& c, uint32_t rounds, bool report) {
    c.playback_.Start(rounds);
    c.reportsEnd_ = report;
    c.RestartClock(c.now_);
  }

  static Reply PlayEndless(C& c, In&) {
    Start(c, 0, false);
    return kDone;
  }

  template <bool report>
  static Reply PlayCounted(C& c, In& in) {
    const uint8_t rounds = in.U8();
    if (rounds < 1 || rounds > kMaxRounds) return std::nullopt;
    Start(c, rounds, report);
    if (!report || c.playback_.playing()) return kDone;
    return std::vector<uint8_t>(kAcknowledge.begin(), kAcknowledge.end());  // nothing loaded: over at once
  }

  static Reply Stop(C& c, In&) {
    c.playback_.Stop();
    c.reportsEnd_ = false;
    const Sample& at = c.output_;
    return AnswerBytes().U16(StopCount(at.x)).U16(StopCount(at.y)).U8(at.m).U32(c.playback_.index());
  }

  static Reply SamplesRemaining(C& c, In&) { return AnswerBytes().U24(c.playback_.Remaining()); }

  // --- Inputs ---

  template <unsigned channel>
  static Reply AnalogInput(C& c, In&) {
    return AnswerBytes().U16(c.AnalogCount(channel, c.now_, c.mirror_.position()));
  }

  static Reply PhotoDetector(C& c, In&) {
    const double value = SignalAt(c.options_.photoDetector, c.now_, c.mirror_.position());
    return AnswerBytes().U16(DetectorToCount(value));
  }

  static Reply SetCaptureLength(C& c, In& in) {
    c.captureLength_ = static_cast<uint32_t>(std::min<size_t>(in.U24(), c.options_.captureCapacity));
    return kDone;
  }

  // The inputs are recorded all the time, and a capture is the newest part of that: it needs no waiting
  // however long it is. The fifth byte of a record is the digital value put out with it.
  static Reply Capture(C& c, In&) {
    AnswerBytes answer;
    for (uint32_t age = c.captureLength_; age-- > 0;) {
      const HistoryPoint then = age < c.history_.size() ? c.history_.FromNewest(age) : HistoryPoint{};
      const double time = c.now_ - static_cast<double>(age) / c.settings_.sampleRate;
      answer.U16(c.AnalogCount(0, time, then.mirror)).U16(c.AnalogCount(1, time, then.mirror)).U8(then.m);
    }
    return answer;
  }

  // --- Tracking ---

  static Reply TrackParams(C& c, In&) {
    if (!c.options_.tracking) return AnswerBytes().Line(kNoTrackLine);
    const TrackSettings& t = c.settings_.track;
    return AnswerBytes()
        .Line(kInfoLine)
        .U16(t.threshold)
        .U8(t.normalGain)
        .U8(t.tangentialGain)
        .U8(t.bufferDelay)
        .U8(t.hitRatio)
        .U8(t.state);
  }

  static Reply SetThreshold(C& c, In& in) {
    if (!c.options_.tracking) return std::nullopt;
    c.settings_.track.threshold = std::min<uint16_t>(in.U16(), 32767);
    return kDone;
  }

  static constexpr auto SetNormalGain = SetTrack<&TrackSettings::normalGain>;
  static constexpr auto SetTangentialGain =
      SetTrack<&TrackSettings::tangentialGain, kMinTangentialGain, kMaxTangentialGain>;
  static constexpr auto SetBufferDelay = SetTrack<&TrackSettings::bufferDelay, 0, kMaxBufferDelay>;
  static constexpr auto SetHitRatio = SetTrack<&TrackSettings::hitRatio>;
  static constexpr auto SetTrackState = SetTrack<&TrackSettings::state>;

  // The record is the single values one behind the other.
  static Reply SetTrackParams(C& c, In& in) {
    for (const auto set :
         {SetThreshold, SetNormalGain, SetTangentialGain, SetBufferDelay, SetHitRatio, SetTrackState}) {
      if (!set(c, in)) return std::nullopt;
    }
    return kDone;
  }

  static Reply TrackStatus(C& c, In&) {
    if (!c.options_.tracking) return std::nullopt;
    const MirrorPosition mirror = c.mirror_.position();
    const TrackTarget t = c.trackTarget_.value_or(TrackTarget{mirror.x, mirror.y, c.output_.m, c.playback_.playing()});
    return AnswerBytes().U16(TrackCount(t.x)).U16(TrackCount(t.y)).U8(t.value).U8(t.flag);
  }

  static Reply TrackIntegrals(C& c, In&) {
    if (!c.options_.tracking) return std::nullopt;
    AnswerBytes answer;
    for (const int value : c.trackIntegrals_) {
      answer.U16(static_cast<uint32_t>(std::clamp(value, -32768, 32767) + 32768));
    }
    return answer;
  }

  static const Command kTable[];
};

const Command Controller::Commands::kTable[] = {
    {kCmdGetTrackParams, "GetTrackParams", 0, 0, true, TrackParams},
    {kCmdGetTrackIntegrals, "GetTrackIntegrals", 0, 0, true, TrackIntegrals},
    {kCmdGetTrackStatus, "GetTrackStatus", 0, 0, true, TrackStatus},
    {kCmdSetTrackThreshold, "SetTrackThreshold", 2, 2, false, SetThreshold},
    {kCmdSetTrackNormalGain, "SetTrackNormalGain", 1, 1, false, SetNormalGain},
    {kCmdSetTrackBufferDelay, "SetTrackBufferDelay", 1, 1, false, SetBufferDelay},
    {kCmdSetTrackHitRatio, "SetTrackHitRatio", 1, 1, false, SetHitRatio},
    {kCmdSetTrackState, "SetTrackState", 1, 1, false, SetTrackState},
    {kCmdSetTrackTangentialGain, "SetTrackTangentialGain", 1, 1, false, SetTangentialGain},
    {kCmdSetTrackParams, "SetTrackParams", kTrackParamsBytes, kTrackParamsBytes, true, SetTrackParams},
    {kCmdGetAnalogInput0, "GetAnalogInput0", 0, 0, true, AnalogInput<0>},
    {kCmdGetAnalogInput1, "GetAnalogInput1", 0, 0, true, AnalogInput<1>},
    {kCmdSetCaptureLength, "SetCaptureLength", 3, 3, true, SetCaptureLength},
    {kCmdGetCapture, "GetCapture", 0, 0, true, Capture},
    {kCmdGetPhotoDetector, "GetPhotoDetector", 0, 0, true, PhotoDetector},
    {kCmdSetBufferOffset, "SetBufferOffset", 3, 3, false, SetBufferOffset},
    {kCmdAnnounceBlock, "AnnounceBlock", 3, 3, true, AnnounceBlock},
    {kCmdBlockFollows, "BlockFollows", 0, 0, true, BlockFollows},
    {kCmdSetDataMode, "SetDataMode", 1, 1, false, SetDataMode},
    {kCmdSetDeviceName, "SetDeviceName", 1, kMaxNameBytes, true, SetName},
    {kCmdSetUSARTBaudRate, "SetUSARTBaudRate", 3, 3, true, SetBaudRate},
    {kCmdSetDefaultDeviceName, "SetDefaultDeviceName", 1, kMaxNameBytes, true, SetFactoryName},
    {kCmdSetOutputOffsets, "SetOutputOffsets", 4, 4, false, SetOutputOffsets},
    {kCmdSetHardwareFilterBw, "SetHardwareFilterBw", 2, 2, true, SetHardwareFilterBw},
    {kCmdMEMSDriverOff, "MEMSDriverOff", 0, 0, true, Switch<&Settings::memsDriver, false>},
    {kCmdMEMSDriverOn, "MEMSDriverOn", 0, 0, true, Switch<&Settings::memsDriver, true>},
    {kCmdDigitalOutputOff, "DigitalOutputOff", 0, 0, true, Switch<&Settings::digitalOutput, false>},
    {kCmdDigitalOutputOn, "DigitalOutputOn", 0, 0, true, Switch<&Settings::digitalOutput, true>},
    {kCmdLaserModulationOff, "LaserModulationOff", 0, 0, true, Switch<&Settings::laserModulation, false>},
    {kCmdLaserModulationOn, "LaserModulationOn", 0, 0, true, Switch<&Settings::laserModulation, true>},
    {kCmdLaserBoostOff, "LaserBoostOff", 0, 0, true, Switch<&Settings::laserBoost, false>},
    {kCmdLaserBoostOn, "LaserBoostOn", 0, 0, true, Switch<&Settings::laserBoost, true>},
    {kCmdGetIdentification, "GetIdentification", 0, 0, true, Identification},
    {kCmdGetLimits, "GetLimits", 0, 0, true, Limits},
    {kCmdGetSamplesRemaining, "GetSamplesRemaining", 0, 0, true, SamplesRemaining},
    {kCmdIsResponding, "IsResponding", 0, 0, true, Nothing},
    {kCmdGetOutputOffsets, "GetOutputOffsets", 0, 0, true, OutputOffsets},
    {kCmdSetSyncMode, "SetSyncMode", 1, 1, true, SetCode<&Settings::syncMode, kMaxSyncMode>},
    {kCmdSetDeviceAxes, "SetDeviceAxes", 1, 1, true, SetCode<&Settings::axes, kMaxAxes>},
    {kCmdSetSampleRate, "SetSampleRate", 3, 3, true, SetSampleRate},
    {kCmdSetDataScale, "SetDataScale", 2, 2, false, SetDataScale},
    {kCmdSetVbias, "SetVbias", 1, 1, true, SetVbias},
    {kCmdSetVdifferenceMax, "SetVdifferenceMax", 1, 1, true, SetVdifferenceMax},
    {kCmdSetDataRotation, "SetDataRotation", 4, 4, false, SetDataRotation},
    {kCmdReset, "Reset", 0, 0, true, Reset},
    {kCmdSetBootParams, "SetBootParams", 2, 2, true, SetBoot},
    {kCmdPlayEndless, "PlayEndless", 0, 0, true, PlayEndless},
    {kCmdStop, "Stop", 0, 0, true, Stop},
    {kCmdPlayCountedAndReport, "PlayCountedAndReport", 1, 1, true, PlayCounted<true>},
    {kCmdGetState, "GetState", 0, 0, true, State},
    {kCmdPlayCounted, "PlayCounted", 1, 1, true, PlayCounted<false>},
    {kCmdSaveToFlash, "SaveToFlash", 1, 1, true, SaveToFlash},
};

const Command* Controller::Find(uint8_t code) {
  const auto* end = std::end(Commands::kTable);
  const auto* found =
      std::find_if(std::begin(Commands::kTable), end, [code](const Command& command) { return command.code == code; });
  return found == end ? nullptr : found;
}

CommandInfo Controller::Describe(uint8_t code) {
  const Command* command = Find(code);
  return command ? CommandInfo{command->name, command->acknowledged} : CommandInfo{"unknown command", false};
}

}  // namespace zrv::sim
