#include "tests/reliability/calls.h"

#include <cmath>
#include <memory>
#include <string_view>
#include <tuple>

#include "device/state.h"

namespace zrv::reliability {

namespace {

constexpr float kVolts = 2.5f;     // at AI0
constexpr float kDetector = 0.5f;  // at the photodetector
constexpr float kTolerance = 1e-3f;
constexpr unsigned kPairs = 4;
constexpr unsigned kSensed = 16;  // a block: its mark comes within the bytes that are looked through
constexpr char kName[] = "Bench", kOtherName[] = "Other";
constexpr char kAccess[] = "5c0e1b7a9f3d2e84c6a1b0f97d3e5a21";
constexpr const char* kFirmware = "FW 3";
constexpr const char* kLink = "USB";
constexpr const char* kAddress = "00:11:22:33:44:55";

bool Near(float value, float wanted) { return std::abs(value - wanted) < kTolerance; }

// --- Setters: each has a row, and goes there and back ---------------------------------------------------

// A command without an answer that a host could check.
template <auto member, auto... arguments>
bool Do(Bench& b) {
  (b.device.*member)(arguments...);
  return true;
}

template <ZRVParam param, int to>
bool Set(Bench& b) {
  b.device.SetDeviceParam(param, static_cast<float>(to));
  return true;
}

template <ZRVParam param, int there, int back>
constexpr Call Setter(const char* name, const char* code, unsigned boundMs, unsigned traits) {
  return {name, code, boundMs, traits, Set<param, there>, Set<param, back>};
}

template <unsigned count>
bool Send(Bench& b) {
  std::vector<float> x(count, 0.0f);
  std::vector<unsigned char> m(count, 0);
  b.device.SendDataStream(x.data(), x.data(), m.data(), count, 0, false);
  return true;
}

bool Stop(Bench& b) {
  b.device.StopDataStream();
  const ZRVDevice& d = b.device;
  return d.GetXStop() == 0 && d.GetYStop() == 0 && d.GetMStop() == 0 && d.GetIStop() == 0;
}

bool LoadBlock(Bench& b) {
  Stop(b);
  return Send<4>(b);
}

// What the inputs are given.
bool AreFed(const float (&ai0)[kPairs], const float (&ai1)[kPairs]) {
  for (unsigned i = 0; i < kPairs; ++i) {
    if (!Near(ai0[i], kVolts) || !Near(ai1[i], 0)) return false;
  }
  return true;
}

bool Streamed(Bench& b) {
  float ai0[kPairs], ai1[kPairs];
  return b.device.GetAnalogInputStream(ai0, ai1, kPairs) == kPairs && AreFed(ai0, ai1);
}

bool Sensed(Bench& b) {
  float counts[kSensed];
  constexpr float kWanted = (kVolts * 3277 + 32768) * 2.048f * 3.3f / 2.048f / 65535.0f;
  if (b.device.GetOrBEX1Stream(counts, 2.048f, kSensed) != kSensed) return false;
  for (const float count : counts) {
    if (!Near(count, kWanted)) return false;
  }
  return true;
}

bool Captured(Bench& b) {
  float ai0[kPairs], ai1[kPairs];
  b.device.GetAnalogInputBuffer(ai0, ai1, kPairs);
  return AreFed(ai0, ai1);
}

bool ReadRecord(Bench& b) {
  ZRVDeviceParams params;
  b.device.GetDeviceParams(&params);
  const auto is = [](const char* text, std::string_view wanted) { return text == wanted; };
  return params.ParamsValid == 0 ||
         (is(params.DeviceName, kName) && is(params.FirmwareName, kFirmware) && is(params.CommType, kLink) &&
          is(params.BluetoothMAC, kAddress) && params.VmaxMEMSDriver == 140 && params.SampleBufferCapacity == 25000);
}

bool CheckConnection(Bench& b) {
  const std::unique_ptr<ZRVDeviceParams> params(b.device.CheckConnectDevice());
  return params->ParamsValid == 0 || std::string_view(params->DeviceName) == kName;
}

template <int different>
bool SetRecord(Bench& b) {
  ZRVDeviceParams p;
  p.VmaxMEMSDriver = 1e9f;
  p.HardwareFilterOn = p.DeviceState = p.DeviceErrorRegister = 1000000000;
  p.USARTBaudRate = different ? 460800 : 921600;
  p.SampleRate = different ? 20000 : 10000;
  p.HardwareFilterBw = different ? 400 : 200;
  p.VdifferenceMax = different ? 60 : 80;
  p.Vbias = different ? 60 : 80;
  p.DataScale = 1;
  p.DeviceAxes = different ? AxesSwap : AxesNormal;
  p.SyncMode = different ? SyncMode3 : SyncOff;
  p.MEMSDriverEnable = p.DigitalOutputEnable = p.LaserModulationEnable = different;
  b.device.SetDeviceParams(&p);
  return true;
}

bool Connect(Bench& b) {
  b.device.ConnectDevice(b.port.c_str());
  return true;
}

bool Discover(Bench& b) {
  ZRVAvailableDevices list;
  b.device.GetAvailableDevices(&list);
  return list.NumDevices == 1 && std::string_view(list.DeviceName[0]) == kName;
}

bool ReadTracking(Bench& b) {
  ZRVTrackParams p;
  b.device.GetTrackParams(&p);
  return p.TrackingSupported && Near(p.Threshold, 0.5f) && p.NormalGain == 63 && p.TangentialGain == 0 &&
         p.BufferDelay == 40 && p.HitRatio == 1 && p.StateBit0 == 1 && p.StateBit1 == 0 && p.StateBit2 == 1;
}

bool WriteTracking(Bench& b) {
  ZRVTrackParams p;
  p.Threshold = 16383.5f / 32767;
  p.NormalGain = 63;
  p.BufferDelay = 40;
  p.HitRatio = 1;
  p.StateBit0 = p.StateBit2 = 1;
  b.device.SetTrackParams(&p);
  return true;
}

bool ReadTrackPoint(Bench& b) {
  ZRVTrackStatus s;
  b.device.GetTrackStatus(&s);
  return s.X == 0 && s.Y == 0 && s.StatusValue == 0 && !s.StatusFlag;
}

bool ReadIntegrals(Bench& b) {
  int first = 0, second = 0;
  b.device.GetTrackIntegrals(first, second);
  return first == -2 && second == 300;
}

template <unsigned milliseconds>
bool GoTo(Bench& b) {
  b.device.GoToDevicePosition(0, 0, 0, milliseconds);
  return true;
}

bool Measured(Bench& b) { return Near(b.device.GetAnalogInputValue(0), kVolts); }
bool Detected(Bench& b) { return Near(b.device.GetPhotoDetectorValue(), kDetector); }
bool NoneRemain(Bench& b) { return b.device.GetSamplesRemaining() == 0; }
bool Stands(Bench& b) { return !b.device.IsDeviceRunning(); }
bool Tracks(Bench& b) { return b.device.IsTrackingSupported(); }

constexpr unsigned kAck = 2000, kAnswer = 2000, kQuery = kAck + kAnswer;
constexpr unsigned kRecord = kAck + 5 * 1000 + 19 * 50 + kAck;  // silent behind the first acknowledgement
constexpr unsigned kCheck = 200 + kRecord + 100 + 200 + kAck;   // and again at the second attempt
constexpr unsigned kMove = 5 * kAck + 2500 + 2000;              // once a capacity of 25000, and its end
constexpr unsigned kSearch = 200 + 200 + 5 * 1000 + 19 * 50 + 200 + 100 + 200 + 200;
constexpr unsigned kPlayWait = kAck + 2 * 2500 + 2000;  // twice a capacity of 25000 at 10000 a second

const Call kCalls[] = {
    {"GetAvailableDevices", "B5 E0 E4 E1", kSearch, kHides | kDisconnects, Discover, nullptr,
     Do<&ZRVDevice::DisconnectDevice>},
    {"ConnectDevice", "B5 E0 E4 E1 BF F2 B1 B2 F3 F1", kCheck + kMove, kHides | kDisconnects | kPatient, Connect,
     nullptr, Do<&ZRVDevice::DisconnectDevice>},
    {"CheckConnectDevice", "B5 E0 E4 E1", kCheck, kHides | kReadsOn, CheckConnection},
    {"IsDeviceResponding", "E3", kAck, 0, Do<&ZRVDevice::IsDeviceResponding>},
    {"GetDeviceParams", "E0 E4 E1", kRecord, kText, ReadRecord},
    {"SetDeviceParams", "BB E8 C0 EB EA D5 D7 D9 E7 E5", 10 * kAck, 0, SetRecord<1>, SetRecord<0>},
    Setter<ParamUSARTBaudRate, 460800, 921600>("SetDeviceParam, baud rate", "BB", kAck, 0),
    Setter<ParamSampleRate, 20000, 10000>("SetDeviceParam, sample rate", "E8", kAck, 0),
    Setter<ParamHardwareFilterBw, 400, 200>("SetDeviceParam, filter", "C0", kAck, 0),
    Setter<ParamVdifferenceMax, 60, 80>("SetDeviceParam, difference", "EB", kAck, 0),
    Setter<ParamVbias, 60, 80>("SetDeviceParam, bias", "EA", kAck, 0),
    {"SetDeviceParam, offsets", "BF", 0, kHides, Set<ParamOutputOffsets, 0>},
    Setter<ParamDataScale, 0, 1>("SetDeviceParam, scale", "E9", 0, kHides),
    Setter<ParamDataRotation, 1, 0>("SetDeviceParam, rotation", "EC", 0, kHides),
    Setter<ParamMEMSDriverEnable, 1, 0>("SetDeviceParam, driver", "D5", kAck, 0),
    Setter<ParamDigitalOutputEnable, 1, 0>("SetDeviceParam, outputs", "D7", kAck, 0),
    Setter<ParamLaserModulationEnable, 1, 0>("SetDeviceParam, laser", "D9", kAck, 0),
    Setter<ParamBufferOffset, 7, 0>("SetDeviceParam, buffer offset", "B0", 0, kHides),
    Setter<ParamDeviceAxes, 4, 0>("SetDeviceParam, axes", "E7", kAck, 0),
    Setter<ParamBootSetting, 1, 0>("SetDeviceParam, boot", "EF", kAck, 0),
    Setter<ParamDataMode, 3, 0>("SetDeviceParam, data mode", "B5", 200, kHides),
    Setter<ParamSyncMode, 3, 0>("SetDeviceParam, sync", "E5", kAck, 0),
    {"GetDeviceState", "F4", kQuery, kReadsOn, Do<&ZRVDevice::GetDeviceState>},
    {"GetOutputOffsets", "E4", kQuery, 0, Do<&ZRVDevice::GetOutputOffsets>},
    {"SetDeviceName", "BA E0 E4 E1", kAck + kRecord, kText, Do<&ZRVDevice::SetDeviceName, kOtherName>,
     Do<&ZRVDevice::SetDeviceName, kName>},
    {"SetDefaultDeviceName", "BD E0 E4 E1", kAck + kRecord, kText,
     Do<&ZRVDevice::SetDefaultDeviceName, kOtherName, kAccess>, Do<&ZRVDevice::SetDefaultDeviceName, kName, kAccess>},
    {"SaveToFlash", "F8", kAck + 800, 0, Do<&ZRVDevice::SaveToFlash, FlashSettings>},
    {"SendDataStream", "B1 B2", 3 * kAck, 0, Send<4>, nullptr, Stop},
    {"SendDataStream, 25000 samples", "B1 B2", 3 * kAck, 0, Send<25000>, nullptr, Stop},
    {"StartDataStream, endless", "F1", kAck, 0, Do<&ZRVDevice::StartDataStream, -1, false>, nullptr, LoadBlock},
    {"StartDataStream, counted", "F5", kAck, 0, Do<&ZRVDevice::StartDataStream, 3, false>, nullptr, LoadBlock},
    {"StartDataStream, and wait", "F3", kPlayWait, kPatient, Do<&ZRVDevice::StartDataStream, 2, true>, nullptr,
     LoadBlock},
    {"StopDataStream", "F2", kQuery, 0, Stop, nullptr, LoadBlock},
    {"GetSamplesRemaining", "E2", kQuery, kReadsOn, NoneRemain, nullptr, Stop},
    {"IsDeviceRunning", "F4", kQuery, kReadsOn, Stands, nullptr, Stop},
    {"GoToDevicePosition, smooth", "F2 B1 B2 F3 B1 B2 F1", kMove, kHides | kPatient | kReadsOn, GoTo<5>, nullptr,
     LoadBlock},
    {"GoToDevicePosition, at once", "B1 B2 F4 F1", 4 * kAck, kHides | kReadsOn, GoTo<0>, nullptr, LoadBlock},
    {"ResetDevicePosition", "BF F2 B1 B2 F3 B1 B2 F1", kMove, kHides | kPatient | kReadsOn,
     Do<&ZRVDevice::ResetDevicePosition>, nullptr, LoadBlock},
    {"SetLaserBoostEnable", "DB", kAck, 0, Do<&ZRVDevice::SetLaserBoostEnable, 1u>,
     Do<&ZRVDevice::SetLaserBoostEnable, 0u>},
    {"GetAnalogInputValue", "A0", kQuery, kHides, Measured},
    {"GetPhotoDetectorValue", "A6", kQuery, kHides, Detected},
    {"GetAnalogInputBuffer", "A4 A5", 3 * kAck, kHides, Captured},
    {"GetAnalogInputStream", "-", 1000, kHides | kStreams, Streamed, nullptr, Set<ParamDataMode, DataModeAnalogVolts>},
    {"GetOrBEX1Stream", "-", 2000 + 1000, kHides | kStreams, Sensed, nullptr, Set<ParamDataMode, DataModeOrBEX1>},
    {"IsTrackingSupported", "F4", kQuery, kReadsOn, Tracks},
    {"GetTrackParams", "90", kAck + 1000 + 6 * 50, 0, ReadTracking},
    {"SetTrackParams", "9D", kAck, 0, WriteTracking},
    {"GetTrackStatus", "92", kQuery, kReadsOn, ReadTrackPoint},
    {"GetTrackIntegrals", "91", kQuery, kHides, ReadIntegrals},
    {"ResetDevice", "EE", kAck, 0, Do<&ZRVDevice::ResetDevice>},
};

}  // namespace

std::span<const Call> Calls() { return kCalls; }

sim::Options ControllerOptions() {
  sim::Options options;
  options.deviceName = kName;
  options.firmwareName = kFirmware;
  options.commType = kLink;
  options.bluetoothMAC = kAddress;
  options.analogInputs[0].offset = kVolts;
  options.photoDetector.offset = kDetector;
  options.pathCapacity = 100;  // of what is drawn, which nobody looks at, and of a stream that nobody reads
  options.settling = 0;
  options.sensorBlockSamples = kSensed;
  return options;
}

void FeedTracking(sim::Controller& controller) {
  controller.SetTrackTarget(sim::TrackTarget{});
  controller.SetTrackIntegrals(-2, 300);
}

bool RecordIsValid(ZRVDevice& device) { return StateOf(device).params.ParamsValid != 0; }

const char* FirstFalseParam(ZRVDevice& device, const sim::Controller& controller) {
  const sim::Settings& s = controller.settings();
  const std::tuple<ZRVParam, const char*, double> kTruth[] = {
      {ParamUSARTBaudRate, "baud rate", s.usartBaudRate},
      {ParamSampleRate, "sample rate", s.sampleRate},
      {ParamHardwareFilterBw, "filter", s.hardwareFilterBw},
      {ParamVdifferenceMax, "difference", s.vdifferenceMax},
      {ParamVbias, "bias", s.vbias},
      {ParamOutputOffsets, "offset", (s.offsetX - 32768) / 32767.0},
      {ParamDataScale, "scale", s.dataScale / 32767.0},
      {ParamDataRotation, "rotation", std::acos((s.rotationCos - 16384) / 16383.0)},
      {ParamMEMSDriverEnable, "driver", s.memsDriver},
      {ParamDigitalOutputEnable, "outputs", s.digitalOutput},
      {ParamLaserModulationEnable, "laser", s.laserModulation},
      {ParamBufferOffset, "buffer offset", s.bufferOffset},
      {ParamDeviceAxes, "axes", s.axes},
      {ParamBootSetting, "boot", s.boot},
      {ParamDataMode, "data mode", s.dataMode},
      {ParamSyncMode, "sync", s.syncMode},
      {ParamSyncState, "format", controller.options().formatCode},
  };
  for (const auto& [param, name, value] : kTruth) {
    if (std::abs(device.GetDeviceParam(param) - value) > 1e-3) return name;
  }
  return nullptr;
}

}  // namespace zrv::reliability
