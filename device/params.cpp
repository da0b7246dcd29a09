// Parameter setters, each one command, and the record and single-parameter calls made of them.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "device/markers.h"
#include "device/protocol.h"
#include "device/state.h"

using namespace zrv;
using namespace zrv::protocol;
using P = ZRVDeviceParamsStruct;

namespace {

constexpr unsigned int kBaudRateMin = 115200;
constexpr unsigned int kBaudRateMax = 3686400;
constexpr unsigned int kAxesCount = 8;
constexpr std::chrono::milliseconds kDataModeSettling{200};
constexpr const char* kDefaultNameAccess = "5c0e1b7a9f3d2e84c6a1b0f97d3e5a21";

// Never reversed bounds, whatever limits the controller reported: the upper one wins.
template <typename T>
T Clamp(T value, T lowest, T highest) {
  return std::min(std::max(value, lowest), highest);  // in this order NaN stays NaN
}

float Volts(unsigned int limit) { return static_cast<float>(limit); }

uint32_t EncodeWhole(unsigned int value) { return value; }
template <typename Enum>
uint32_t EncodeEnum(Enum value) {
  return static_cast<uint32_t>(value);
}
uint32_t EncodeVolts(float volts) { return static_cast<uint32_t>(std::lround(volts)); }
uint32_t EncodeScale(float scale) { return static_cast<uint32_t>(scale * 32767.0f); }

// Cosine in the low word, sine in the high one, truncated. An angle in radians.
uint32_t EncodeRotation(float radians) {
  const auto encode = [](double ratio) { return static_cast<uint32_t>(ratio * 16383.0 + 16384.0); };
  return encode(std::cos(static_cast<double>(radians))) | encode(std::sin(static_cast<double>(radians))) << 16;
}

uint32_t EncodeOffset(float offset) { return static_cast<uint32_t>(std::lround((offset + 1.0f) * 32767.0f)) + 1; }

bool IsNameValid(const char* name) {
  return name != nullptr && std::strlen(name) < sizeof ZRVDeviceParamsStruct::DeviceName;
}

// A parameter value for a whole-numbered field. Below 0 reads 0 and above 32 bits the largest number, so that the
// field's own limits decide.
unsigned int Rounded(float value) {
  return static_cast<unsigned int>(Clamp(std::round(static_cast<double>(value)), 0.0, 4294967295.0));
}

// A code for an enumeration, truncated. A negative one is sent as it is, in two's complement.
unsigned int Truncated(float value) {
  return static_cast<unsigned int>(
      static_cast<int64_t>(Clamp(static_cast<double>(value), -2147483648.0, 4294967295.0)));
}

// A parameter that travels alone: its field in the device's record, its command, its payload.
template <typename T>
struct Setter {
  T P::*field;
  uint8_t code;
  int payloadBytes;
  bool acknowledged;
  uint32_t (*encode)(T);
};

// A flag with a command code for "on"; the code one lower is "off".
struct SwitchSetter {
  unsigned int P::*field;
  uint8_t codeOn;
};

bool SendName(Link& link, uint8_t code, const char* name) {
  CommandBuffer& command = link.NewCommand(code);
  for (const char* c = name; *c != '\0'; ++c) command.U8(static_cast<unsigned char>(*c));
  return link.SendSerialCommand(true);
}

void Refuse(DeviceState& state) { state.link.error = ErrorInvalidValue; }

// Compare with the record, send, store on success. requested is what the caller asked for, accepted what became of it
// within its limits. An acknowledgement that was lost on the way leaves the record untrue: setting again sends nothing
// until the record is read anew.
template <typename T>
void Apply(DeviceState& state, const Setter<T>& setter, T requested, T accepted) {
  T& cached = state.params.*setter.field;
  if (cached == requested) return;
  if constexpr (std::is_same_v<T, float>) {
    if (std::isnan(accepted)) return Refuse(state);
  }
  state.link.NewCommand(setter.code).Put(setter.encode(accepted), setter.payloadBytes);
  if (state.link.SendSerialCommand(setter.acknowledged)) cached = accepted;
}

void Apply(DeviceState& state, const SwitchSetter& setter, unsigned int enable) {
  unsigned int& cached = state.params.*setter.field;
  if (cached == enable) return;
  if (enable > 1) return Refuse(state);
  if (state.link.Command(static_cast<uint8_t>(enable == 1 ? setter.codeOn : setter.codeOn - 1))) cached = enable;
}

}  // namespace

void ZRVDevice::SetUSARTBaudRate(unsigned int baudRate) {
  constexpr Setter<unsigned int> kBaudRate = {&P::USARTBaudRate, kCmdSetUSARTBaudRate, 3, true, EncodeWhole};
  Apply(*state_, kBaudRate, baudRate, Clamp(baudRate, kBaudRateMin, kBaudRateMax));
}

void ZRVDevice::SetSampleRate(unsigned int samplesPerSecond) {
  constexpr Setter<unsigned int> kRate = {&P::SampleRate, kCmdSetSampleRate, 3, true, EncodeWhole};
  Apply(*state_, kRate, samplesPerSecond, Clamp(samplesPerSecond, state_->params.SampleRateMin, state_->params.SampleRateMax));
}

void ZRVDevice::SetHardwareFilterBw(unsigned int hertz) {
  constexpr Setter<unsigned int> kBandwidth = {&P::HardwareFilterBw, kCmdSetHardwareFilterBw, 2, true, EncodeWhole};
  Apply(*state_, kBandwidth, hertz, Clamp(hertz, state_->params.HardwareFilterBwMin, state_->params.HardwareFilterBwMax));
}

void ZRVDevice::SetVdifferenceMax(float volts) {
  constexpr Setter<float> kVdifference = {&P::VdifferenceMax, kCmdSetVdifferenceMax, 1, true, EncodeVolts};
  Apply(*state_, kVdifference, volts, Clamp(volts, 0.0f, state_->params.VmaxMEMSDriver));
}

void ZRVDevice::SetVbias(float volts) {
  constexpr Setter<float> kBias = {&P::Vbias, kCmdSetVbias, 1, true, EncodeVolts};
  Apply(*state_, kBias, volts, Clamp(volts, Volts(state_->params.VbiasMin), Volts(state_->params.VbiasMax)));
}

void ZRVDevice::SetDataScale(float scale) {
  constexpr Setter<float> kScale = {&P::DataScale, kCmdSetDataScale, 2, false, EncodeScale};
  Apply(*state_, kScale, scale, Clamp(scale, 0.0f, 1.0f));
}

void ZRVDevice::SetDataRotation(float radians) {
  constexpr Setter<float> kRotation = {&P::DataRotation, kCmdSetDataRotation, 4, false, EncodeRotation};
  Apply(*state_, kRotation, radians, std::isfinite(radians) ? radians : std::nanf(""));
}

void ZRVDevice::SetBufferOffset(unsigned int samples) {
  constexpr Setter<unsigned int> kOffset = {&P::BufferOffset, kCmdSetBufferOffset, 3, false, EncodeWhole};
  Apply(*state_, kOffset, samples, samples);
}

void ZRVDevice::SetDeviceAxes(ZRVAxes axes) {
  constexpr Setter<ZRVAxes> kAxes = {&P::DeviceAxes, kCmdSetDeviceAxes, 1, true, EncodeEnum};
  if (axes >= kAxesCount && axes != state_->params.DeviceAxes) return Refuse(*state_);
  Apply(*state_, kAxes, axes, axes);
}

void ZRVDevice::SetBootParams(ZRVBoot boot) {
  constexpr Setter<ZRVBoot> kBoot = {&P::BootSetting, kCmdSetBootParams, 2, true, EncodeEnum};
  Apply(*state_, kBoot, boot, boot);
}

void ZRVDevice::SetSyncMode(ZRVSync mode) {
  constexpr Setter<ZRVSync> kSync = {&P::SyncMode, kCmdSetSyncMode, 1, true, EncodeEnum};
  Apply(*state_, kSync, mode, mode);
}

void ZRVDevice::SetMEMSDriverEnable(unsigned int enable) {
  Apply(*state_, SwitchSetter{&P::MEMSDriverEnable, kCmdMEMSDriverOn}, enable);
}

void ZRVDevice::SetDigitalOutputEnable(unsigned int enable) {
  Apply(*state_, SwitchSetter{&P::DigitalOutputEnable, kCmdDigitalOutputOn}, enable);
}

void ZRVDevice::SetLaserModulationEnable(unsigned int enable) {
  Apply(*state_, SwitchSetter{&P::LaserModulationEnable, kCmdLaserModulationOn}, enable);
}

// --- Setters with a rule of their own ----------------------------------------------------------------

// Always sent: tracking moves the offsets behind the host's back.
void ZRVDevice::SetOutputOffsets(float x, float y) {
  if (std::isnan(x) || std::isnan(y)) return Refuse(*state_);
  x = Clamp(x, -1.0f, 1.0f);
  y = Clamp(y, -1.0f, 1.0f);
  Link& link = state_->link;
  link.NewCommand(kCmdSetOutputOffsets).U16(EncodeOffset(x)).U16(EncodeOffset(y));
  if (!link.SendSerialCommand(false)) return;
  state_->params.XOffset = x;
  state_->params.YOffset = y;
}

// Always sent. Leaving a streaming mode, the controller keeps sending for a moment: what it sent is dropped, also
// after a write that failed, for the controller may have obeyed all the same.
void ZRVDevice::SetDataMode(ZRVDataMode mode) {
  Link& link = state_->link;
  link.NewCommand(kCmdSetDataMode).U8(mode);
  link.SendSerialCommand(false);
  if (link.port == nullptr) return;
  link.machine.pause(kDataModeSettling);
  link.ClearInputBuffer();
  link.SendSerialReset();
  if (link.error == ErrorNone) state_->params.DataMode = mode;
}

void ZRVDevice::SetDeviceName(const char* name) {
  Link& link = state_->link;
  char(&cached)[sizeof P::DeviceName] = state_->params.DeviceName;
  link.error = ErrorNone;
  if (!IsNameValid(name)) return Refuse(*state_);
  if (std::strcmp(name, cached) == 0 || !SendName(link, kCmdSetDeviceName, name)) return;
  std::snprintf(cached, sizeof cached, "%s", name);
  ZRVDeviceParams scratch;
  GetDeviceParams(&scratch);
}

void ZRVDevice::SetDefaultDeviceName(const char* name, std::string accessCode) {
  if (accessCode != kDefaultNameAccess) return;
  if (!IsNameValid(name)) return Refuse(*state_);
  if (!SendName(state_->link, kCmdSetDefaultDeviceName, name)) return;
  ZRVDeviceParams scratch;
  GetDeviceParams(&scratch);
}

// --- Whole records -----------------------------------------------------------------------------------

namespace {

bool ChangesReadOnly(const P& wanted, const P& current) {
  const auto textChanged = [](const char* text, const char* now) { return *text != '\0' && std::strcmp(text, now) != 0; };
  const auto changed = [](auto value, auto now) { return value != now && IsGiven(value); };
  return textChanged(wanted.FirmwareName, current.FirmwareName) || textChanged(wanted.CommType, current.CommType) ||
         textChanged(wanted.BluetoothMAC, current.BluetoothMAC) ||
         changed(wanted.DeviceErrorRegister, current.DeviceErrorRegister) ||
         changed(wanted.DeviceState, current.DeviceState) ||
         changed(wanted.HardwareFilterOn, current.HardwareFilterOn) ||
         changed(wanted.VmaxMEMSDriver, current.VmaxMEMSDriver);
}

}  // namespace

void ZRVDevice::SetDeviceParams(ZRVDeviceParams* params) {
  Link& link = state_->link;
  P& current = state_->params;
  link.error = ErrorNone;
  if (params == nullptr) {
    link.error = ErrorNotConnected;
    return;
  }
  P wanted = *params;  // setting the name reads the device's record anew
  for (char* end : {std::end(wanted.DeviceName), std::end(wanted.FirmwareName), std::end(wanted.CommType),
                    std::end(wanted.BluetoothMAC)}) {
    end[-1] = '\0';
  }
  if (wanted.DeviceName[0] != '\0') {
    SetDeviceName(wanted.DeviceName);
    // What was asked for, also when the controller refused it or reports it otherwise (shortened, say): else the record
    // would count as changed, and be sent, each time.
    std::memcpy(current.DeviceName, wanted.DeviceName, sizeof wanted.DeviceName);
  }
  ZRVError worst = link.error;
  if (ChangesReadOnly(wanted, current)) worst = std::max(worst, ErrorReadOnlyParam);
  link.error = worst;
  // A field that is given goes through its setter, which compares.
  const auto apply = [&](auto value, auto set) {
    if (!IsGiven(value)) return;
    worst = std::max(worst, link.error);
    (this->*set)(value);
    link.error = std::max(worst, link.error);
  };
  apply(wanted.USARTBaudRate, &ZRVDevice::SetUSARTBaudRate);
  apply(wanted.SampleRate, &ZRVDevice::SetSampleRate);
  apply(wanted.HardwareFilterBw, &ZRVDevice::SetHardwareFilterBw);
  apply(wanted.VdifferenceMax, &ZRVDevice::SetVdifferenceMax);
  apply(wanted.Vbias, &ZRVDevice::SetVbias);
  const float x = IsGiven(wanted.XOffset) ? wanted.XOffset : current.XOffset;
  const float y = IsGiven(wanted.YOffset) ? wanted.YOffset : current.YOffset;
  if (x != current.XOffset || y != current.YOffset) {
    worst = link.error;
    SetOutputOffsets(x, y);
    link.error = std::max(worst, link.error);
  }
  apply(wanted.DataScale, &ZRVDevice::SetDataScale);
  apply(wanted.DataRotation, &ZRVDevice::SetDataRotation);
  apply(wanted.MEMSDriverEnable, &ZRVDevice::SetMEMSDriverEnable);
  apply(wanted.DigitalOutputEnable, &ZRVDevice::SetDigitalOutputEnable);
  apply(wanted.LaserModulationEnable, &ZRVDevice::SetLaserModulationEnable);
  apply(wanted.BufferOffset, &ZRVDevice::SetBufferOffset);
  apply(wanted.DeviceAxes, &ZRVDevice::SetDeviceAxes);
  apply(wanted.BootSetting, &ZRVDevice::SetBootParams);
  if (wanted.DataMode != current.DataMode) apply(wanted.DataMode, &ZRVDevice::SetDataMode);
  apply(wanted.SyncMode, &ZRVDevice::SetSyncMode);
}

// --- Single parameters -------------------------------------------------------------------------------

float ZRVDevice::GetDeviceParam(ZRVParam param, int axis) {
  state_->link.error = ErrorNone;
  const ZRVDeviceParams& p = state_->params;
  const auto number = [](auto value) { return static_cast<float>(static_cast<unsigned int>(value)); };
  switch (param) {
    case ParamDeviceState: GetDeviceState(); return number(p.DeviceState);
    case ParamUSARTBaudRate: return number(p.USARTBaudRate);
    case ParamSampleRate: return number(p.SampleRate);
    case ParamHardwareFilterBw: return number(p.HardwareFilterBw);
    case ParamVdifferenceMax: return p.VdifferenceMax;
    case ParamVbias: return p.Vbias;
    case ParamOutputOffsets: return axis == 0 ? p.XOffset : p.YOffset;
    case ParamDataScale: return p.DataScale;
    case ParamDataRotation: return p.DataRotation;
    case ParamMEMSDriverEnable: return number(p.MEMSDriverEnable);
    case ParamDigitalOutputEnable: return number(p.DigitalOutputEnable);
    case ParamLaserModulationEnable: return number(p.LaserModulationEnable);
    case ParamBufferOffset: return number(p.BufferOffset);
    case ParamDeviceAxes: return number(p.DeviceAxes);
    case ParamBootSetting: return number(p.BootSetting);
    case ParamDataMode: return number(p.DataMode);
    case ParamSyncMode: return number(p.SyncMode);
    case ParamSyncState: return number(p.SyncState);
  }
  state_->link.error = ErrorInvalidParam;
  return kUnavailable;
}

void ZRVDevice::SetDeviceParam(ZRVParam param, float value1, float value2) {
  state_->link.error = ErrorNone;
  const auto whole = [&](void (ZRVDevice::*set)(unsigned int)) {
    return std::isnan(value1) ? Refuse(*state_) : (this->*set)(Rounded(value1));
  };
  const auto code = [&]<typename Enum>(void (ZRVDevice::*set)(Enum)) {
    return !std::isfinite(value1) ? Refuse(*state_) : (this->*set)(static_cast<Enum>(Truncated(value1)));
  };
  const auto flag = [&](void (ZRVDevice::*set)(unsigned int)) {
    return !std::isfinite(value1) ? Refuse(*state_) : (this->*set)(value1 != 0.0f ? 1 : 0);
  };
  switch (param) {
    case ParamUSARTBaudRate: return whole(&ZRVDevice::SetUSARTBaudRate);
    case ParamSampleRate: return whole(&ZRVDevice::SetSampleRate);
    case ParamHardwareFilterBw: return whole(&ZRVDevice::SetHardwareFilterBw);
    case ParamVdifferenceMax: return SetVdifferenceMax(value1);
    case ParamVbias: return SetVbias(value1);
    case ParamOutputOffsets: return SetOutputOffsets(value1, value2);
    case ParamDataScale: return SetDataScale(value1);
    case ParamDataRotation: return SetDataRotation(value1);
    case ParamMEMSDriverEnable: return flag(&ZRVDevice::SetMEMSDriverEnable);
    case ParamDigitalOutputEnable: return flag(&ZRVDevice::SetDigitalOutputEnable);
    case ParamLaserModulationEnable: return flag(&ZRVDevice::SetLaserModulationEnable);
    case ParamBufferOffset: return std::isinf(value1) ? Refuse(*state_) : whole(&ZRVDevice::SetBufferOffset);
    case ParamDeviceAxes: return code(&ZRVDevice::SetDeviceAxes);
    case ParamBootSetting: return code(&ZRVDevice::SetBootParams);
    case ParamDataMode: return code(&ZRVDevice::SetDataMode);
    case ParamSyncMode: return code(&ZRVDevice::SetSyncMode);
    default: state_->link.error = ErrorInvalidParam;
  }
}

unsigned int ZRVDevice::CalcHardwareFilterDelay(unsigned int numSamples) const {
  if (state_->params.HardwareFilterOn == 0) return 0;
  const unsigned int divisor = state_->params.HardwareFilterBw * 158;
  if (divisor == 0) return 0;
  return std::min(state_->params.SampleRate * 100 / divisor, numSamples - 1);
}
