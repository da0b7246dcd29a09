// Parameter setters, each one command, and the record and single-parameter calls made of them.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <optional>
#include <type_traits>

#include "ZRVDevice.h"
#include "device/command_buffer.h"
#include "device/markers.h"
#include "device/protocol.h"
#include "device/serial/ports.h"

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

// A parameter value for a whole-numbered field; nothing for NaN. Below 0 reads 0 and above 32 bits the largest
// number, so that the field's own limits decide.
std::optional<unsigned int> Rounded(float value) {
  if (std::isnan(value)) return std::nullopt;
  const double whole = std::round(static_cast<double>(value));
  return static_cast<unsigned int>(Clamp(whole, 0.0, 4294967295.0));
}

// A code for an enumeration, truncated; nothing when no unsigned integer holds it.
std::optional<unsigned int> Truncated(float value) {
  if (!(value > -1.0f && value < 4294967296.0f)) return std::nullopt;
  return static_cast<unsigned int>(static_cast<double>(value));
}

}  // namespace

// A parameter that travels alone: its field in the device's record, its command, its payload.
template <typename T>
struct ZRVDevice::Setter {
  T P::*field;
  uint8_t code;
  int payloadBytes;
  bool acknowledged;
  uint32_t (*encode)(T);
};

// A flag with a command code for "on"; the code one lower is "off".
struct ZRVDevice::SwitchSetter {
  unsigned int P::*field;
  uint8_t codeOn;
};

// Compare with the cache, send, store on success. After a failure the controller may have obeyed all the same: the
// next value is then sent whatever the cache says. requested is what the caller asked for, accepted what
// became of it within its limits.
template <typename T>
void ZRVDevice::Apply(const Setter<T>& setter, T requested, T accepted) {
  T& cached = (*params_).*setter.field;
  if (cached == requested && !doubtful_[setter.code]) return;
  if constexpr (std::is_same_v<T, float>) {
    if (std::isnan(accepted)) return Refuse();
  }
  NewCommand(setter.code).Put(setter.encode(accepted), setter.payloadBytes);
  doubtful_[setter.code] = !SendSerialCommand(setter.acknowledged);
  if (!doubtful_[setter.code]) cached = accepted;
}

void ZRVDevice::Apply(const SwitchSetter& setter, unsigned int enable) {
  unsigned int& cached = (*params_).*setter.field;
  if (cached == enable && !doubtful_[setter.codeOn]) return;
  if (enable > 1) return Refuse();
  doubtful_[setter.codeOn] = !Command(static_cast<uint8_t>(enable == 1 ? setter.codeOn : setter.codeOn - 1));
  if (!doubtful_[setter.codeOn]) cached = enable;
}

void ZRVDevice::Refuse() { lastError_ = ErrorInvalidValue; }

void ZRVDevice::SetUSARTBaudRate(unsigned int baudRate) {
  constexpr Setter<unsigned int> kBaudRate = {&P::USARTBaudRate, kCmdSetUSARTBaudRate, 3, true, EncodeWhole};
  Apply(kBaudRate, baudRate, Clamp(baudRate, kBaudRateMin, kBaudRateMax));
}

void ZRVDevice::SetSampleRate(unsigned int samplesPerSecond) {
  constexpr Setter<unsigned int> kRate = {&P::SampleRate, kCmdSetSampleRate, 3, true, EncodeWhole};
  Apply(kRate, samplesPerSecond, Clamp(samplesPerSecond, params_->SampleRateMin, params_->SampleRateMax));
}

void ZRVDevice::SetHardwareFilterBw(unsigned int hertz) {
  constexpr Setter<unsigned int> kBandwidth = {&P::HardwareFilterBw, kCmdSetHardwareFilterBw, 2, true, EncodeWhole};
  Apply(kBandwidth, hertz, Clamp(hertz, params_->HardwareFilterBwMin, params_->HardwareFilterBwMax));
}

void ZRVDevice::SetVdifferenceMax(float volts) {
  constexpr Setter<float> kVdifference = {&P::VdifferenceMax, kCmdSetVdifferenceMax, 1, true, EncodeVolts};
  Apply(kVdifference, volts, Clamp(volts, 0.0f, params_->VmaxMEMSDriver));
}

void ZRVDevice::SetVbias(float volts) {
  constexpr Setter<float> kBias = {&P::Vbias, kCmdSetVbias, 1, true, EncodeVolts};
  Apply(kBias, volts, Clamp(volts, Volts(params_->VbiasMin), Volts(params_->VbiasMax)));
}

void ZRVDevice::SetDataScale(float scale) {
  constexpr Setter<float> kScale = {&P::DataScale, kCmdSetDataScale, 2, false, EncodeScale};
  Apply(kScale, scale, Clamp(scale, 0.0f, 1.0f));
}

void ZRVDevice::SetDataRotation(float radians) {
  constexpr Setter<float> kRotation = {&P::DataRotation, kCmdSetDataRotation, 4, false, EncodeRotation};
  Apply(kRotation, radians, std::isfinite(radians) ? radians : std::nanf(""));
}

void ZRVDevice::SetBufferOffset(unsigned int samples) {
  constexpr Setter<unsigned int> kOffset = {&P::BufferOffset, kCmdSetBufferOffset, 3, false, EncodeWhole};
  Apply(kOffset, samples, samples);
}

void ZRVDevice::SetDeviceAxes(ZRVAxes axes) {
  constexpr Setter<ZRVAxes> kAxes = {&P::DeviceAxes, kCmdSetDeviceAxes, 1, true, EncodeEnum};
  if (axes >= kAxesCount && axes != params_->DeviceAxes) return Refuse();
  Apply(kAxes, axes, axes);
}

void ZRVDevice::SetBootParams(ZRVBoot boot) {
  constexpr Setter<ZRVBoot> kBoot = {&P::BootSetting, kCmdSetBootParams, 2, true, EncodeEnum};
  Apply(kBoot, boot, boot);
}

void ZRVDevice::SetSyncMode(ZRVSync mode) {
  constexpr Setter<ZRVSync> kSync = {&P::SyncMode, kCmdSetSyncMode, 1, true, EncodeEnum};
  Apply(kSync, mode, mode);
}

void ZRVDevice::SetMEMSDriverEnable(unsigned int enable) {
  Apply(SwitchSetter{&P::MEMSDriverEnable, kCmdMEMSDriverOn}, enable);
}

void ZRVDevice::SetDigitalOutputEnable(unsigned int enable) {
  Apply(SwitchSetter{&P::DigitalOutputEnable, kCmdDigitalOutputOn}, enable);
}

void ZRVDevice::SetLaserModulationEnable(unsigned int enable) {
  Apply(SwitchSetter{&P::LaserModulationEnable, kCmdLaserModulationOn}, enable);
}

// --- Setters with a rule of their own ----------------------------------------------------------------

// Always sent: tracking moves the offsets behind the host's back.
void ZRVDevice::SetOutputOffsets(float x, float y) {
  if (std::isnan(x) || std::isnan(y)) return Refuse();
  x = Clamp(x, -1.0f, 1.0f);
  y = Clamp(y, -1.0f, 1.0f);
  NewCommand(kCmdSetOutputOffsets).U16(EncodeOffset(x)).U16(EncodeOffset(y));
  if (!SendSerialCommand(false)) return;
  params_->XOffset = x;
  params_->YOffset = y;
}

// Always sent. Leaving a streaming mode, the controller keeps sending for a moment: what it sent is dropped.
void ZRVDevice::SetDataMode(ZRVDataMode mode) {
  NewCommand(kCmdSetDataMode).U8(mode);
  if (!SendSerialCommand(false)) return;
  Pause(kDataModeSettling);
  ClearInputBuffer();
  SendSerialReset();
  if (lastError_ == ErrorNone) params_->DataMode = mode;
}

bool ZRVDevice::SendName(unsigned char code, const char* name) {
  CommandBuffer& command = NewCommand(code);
  for (const char* c = name; *c != '\0'; ++c) command.U8(static_cast<unsigned char>(*c));
  return SendSerialCommand(true);
}

void ZRVDevice::SetDeviceName(const char* name) {
  lastError_ = ErrorNone;
  if (!IsNameValid(name)) return Refuse();
  if (std::strcmp(name, params_->DeviceName) == 0 && !doubtful_[kCmdSetDeviceName]) return;
  doubtful_[kCmdSetDeviceName] = !SendName(kCmdSetDeviceName, name);
  if (doubtful_[kCmdSetDeviceName]) return;
  std::snprintf(params_->DeviceName, sizeof params_->DeviceName, "%s", name);
  ZRVDeviceParams scratch;
  GetDeviceParams(&scratch);
}

void ZRVDevice::SetDefaultDeviceName(const char* name, std::string accessCode) {
  if (accessCode != kDefaultNameAccess) return;
  if (!IsNameValid(name)) return Refuse();
  if (!SendName(kCmdSetDefaultDeviceName, name)) return;
  ZRVDeviceParams scratch;
  GetDeviceParams(&scratch);
}

// --- Whole records -----------------------------------------------------------------------------------

void ZRVDevice::CheckReadOnly(const ZRVDeviceParams& wanted) {
  const auto textChanged = [](const char* text, const char* current) {
    return *text != '\0' && std::strcmp(text, current) != 0;
  };
  const auto changed = [](auto value, auto current) { return value != current && IsGiven(value); };
  const ZRVDeviceParams& current = *params_;
  if (textChanged(wanted.FirmwareName, current.FirmwareName) || textChanged(wanted.CommType, current.CommType) ||
      textChanged(wanted.BluetoothMAC, current.BluetoothMAC) ||
      changed(wanted.DeviceErrorRegister, current.DeviceErrorRegister) ||
      changed(wanted.DeviceState, current.DeviceState) ||
      changed(wanted.HardwareFilterOn, current.HardwareFilterOn) ||
      changed(wanted.VmaxMEMSDriver, current.VmaxMEMSDriver)) {
    lastError_ = std::max(lastError_, ErrorReadOnlyParam);
  }
}

// One field of a record: through its setter, which compares, when it is given. The worst error stays.
template <typename T>
void ZRVDevice::ApplyGiven(T wanted, void (ZRVDevice::*set)(T)) {
  if (!IsGiven(wanted)) return;
  const ZRVError soFar = lastError_;
  (this->*set)(wanted);
  lastError_ = std::max(lastError_, soFar);
}

void ZRVDevice::SetDeviceParams(ZRVDeviceParams* params) {
  lastError_ = ErrorNone;
  if (params == nullptr) {
    lastError_ = ErrorNotConnected;
    return;
  }
  ZRVDeviceParams wanted = *params;  // setting the name reads the device's record anew
  wanted.DeviceName[sizeof wanted.DeviceName - 1] = '\0';
  wanted.FirmwareName[sizeof wanted.FirmwareName - 1] = '\0';
  wanted.CommType[sizeof wanted.CommType - 1] = '\0';
  wanted.BluetoothMAC[sizeof wanted.BluetoothMAC - 1] = '\0';
  if (wanted.DeviceName[0] != '\0') {
    SetDeviceName(wanted.DeviceName);
    // What was asked for, also when the controller reports it otherwise (shortened, say): else the record would
    // count as changed, and be sent, each time.
    if (lastError_ == ErrorNone) std::memcpy(params_->DeviceName, wanted.DeviceName, sizeof wanted.DeviceName);
  }
  CheckReadOnly(wanted);

  const ZRVDeviceParams& current = *params_;
  ApplyGiven(wanted.USARTBaudRate, &ZRVDevice::SetUSARTBaudRate);
  ApplyGiven(wanted.SampleRate, &ZRVDevice::SetSampleRate);
  ApplyGiven(wanted.HardwareFilterBw, &ZRVDevice::SetHardwareFilterBw);
  ApplyGiven(wanted.VdifferenceMax, &ZRVDevice::SetVdifferenceMax);
  ApplyGiven(wanted.Vbias, &ZRVDevice::SetVbias);
  const float x = IsGiven(wanted.XOffset) ? wanted.XOffset : current.XOffset;
  const float y = IsGiven(wanted.YOffset) ? wanted.YOffset : current.YOffset;
  if (x != current.XOffset || y != current.YOffset) {
    const ZRVError soFar = lastError_;
    SetOutputOffsets(x, y);
    lastError_ = std::max(lastError_, soFar);
  }
  ApplyGiven(wanted.DataScale, &ZRVDevice::SetDataScale);
  ApplyGiven(wanted.DataRotation, &ZRVDevice::SetDataRotation);
  ApplyGiven(wanted.MEMSDriverEnable, &ZRVDevice::SetMEMSDriverEnable);
  ApplyGiven(wanted.DigitalOutputEnable, &ZRVDevice::SetDigitalOutputEnable);
  ApplyGiven(wanted.LaserModulationEnable, &ZRVDevice::SetLaserModulationEnable);
  ApplyGiven(wanted.BufferOffset, &ZRVDevice::SetBufferOffset);
  ApplyGiven(wanted.DeviceAxes, &ZRVDevice::SetDeviceAxes);
  ApplyGiven(wanted.BootSetting, &ZRVDevice::SetBootParams);
  if (wanted.DataMode != current.DataMode) ApplyGiven(wanted.DataMode, &ZRVDevice::SetDataMode);
  ApplyGiven(wanted.SyncMode, &ZRVDevice::SetSyncMode);
}

// --- Single parameters -------------------------------------------------------------------------------

float ZRVDevice::GetDeviceParam(ZRVParam param, int axis) {
  lastError_ = ErrorNone;
  const ZRVDeviceParams& p = *params_;
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
  lastError_ = ErrorInvalidParam;
  return kUnavailable;
}

void ZRVDevice::SetDeviceParam(ZRVParam param, float value1, float value2) {
  lastError_ = ErrorNone;
  const auto whole = [&](void (ZRVDevice::*set)(unsigned int)) {
    const auto value = Rounded(value1);
    return value ? (this->*set)(*value) : Refuse();
  };
  const auto code = [&]<typename Enum>(void (ZRVDevice::*set)(Enum)) {
    const auto value = Truncated(value1);
    return value ? (this->*set)(static_cast<Enum>(*value)) : Refuse();
  };
  const auto flag = [&](void (ZRVDevice::*set)(unsigned int)) {
    return std::isnan(value1) ? Refuse() : (this->*set)(value1 != 0.0f ? 1 : 0);
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
    case ParamBufferOffset: return whole(&ZRVDevice::SetBufferOffset);
    case ParamDeviceAxes: return code(&ZRVDevice::SetDeviceAxes);
    case ParamBootSetting: return code(&ZRVDevice::SetBootParams);
    case ParamDataMode: return code(&ZRVDevice::SetDataMode);
    case ParamSyncMode: return code(&ZRVDevice::SetSyncMode);
    default: lastError_ = ErrorInvalidParam;
  }
}

unsigned int ZRVDevice::CalcHardwareFilterDelay(unsigned int numSamples) const {
  if (params_->HardwareFilterOn == 0) return 0;
  const unsigned int divisor = params_->HardwareFilterBw * 158;
  if (divisor == 0) return 0;
  return std::min(params_->SampleRate * 100 / divisor, numSamples - 1);
}
