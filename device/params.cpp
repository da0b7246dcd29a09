// Parameter setters, each one command, and the record and single-parameter calls made of them.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "common/parameters.h"
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
  Apply(*state_, kRate, samplesPerSecond,
        Clamp(samplesPerSecond, state_->params.SampleRateMin, state_->params.SampleRateMax));
}

void ZRVDevice::SetHardwareFilterBw(unsigned int hertz) {
  constexpr Setter<unsigned int> kBandwidth = {&P::HardwareFilterBw, kCmdSetHardwareFilterBw, 2, true, EncodeWhole};
  Apply(*state_, kBandwidth, hertz,
        Clamp(hertz, state_->params.HardwareFilterBwMin, state_->params.HardwareFilterBwMax));
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

// Numbers as they are: a double holds every whole number and every float of the record.
void zrv::DeviceState::Set(ZRVDevice& device, unsigned int param, double value, double second) {
  const auto real = static_cast<float>(value);
  const auto whole = [value] { return static_cast<unsigned int>(value); };  // not of what is no whole number
  switch (param) {
    case ParamUSARTBaudRate: return device.SetUSARTBaudRate(whole());
    case ParamSampleRate: return device.SetSampleRate(whole());
    case ParamHardwareFilterBw: return device.SetHardwareFilterBw(whole());
    case ParamVdifferenceMax: return device.SetVdifferenceMax(real);
    case ParamVbias: return device.SetVbias(real);
    case ParamOutputOffsets: return device.SetOutputOffsets(real, static_cast<float>(second));
    case ParamDataScale: return device.SetDataScale(real);
    case ParamDataRotation: return device.SetDataRotation(real);
    case ParamMEMSDriverEnable: return device.SetMEMSDriverEnable(whole());
    case ParamDigitalOutputEnable: return device.SetDigitalOutputEnable(whole());
    case ParamLaserModulationEnable: return device.SetLaserModulationEnable(whole());
    case ParamBufferOffset: return device.SetBufferOffset(whole());
    case ParamDeviceAxes: return device.SetDeviceAxes(static_cast<ZRVAxes>(whole()));
    case ParamBootSetting: return device.SetBootParams(static_cast<ZRVBoot>(whole()));
    case ParamDataMode: return device.SetDataMode(static_cast<ZRVDataMode>(whole()));
    case ParamSyncMode: return device.SetSyncMode(static_cast<ZRVSync>(whole()));
    default: return;
  }
}

namespace {

double Number(std::string_view) { return 0; }
double Number(float value) { return static_cast<double>(value); }
template <typename Whole>
double Number(Whole value) {
  return static_cast<double>(static_cast<unsigned int>(value));
}

bool Differs(std::string_view wanted, std::string_view current) { return !wanted.empty() && wanted != current; }
template <typename T>
bool Differs(T wanted, T current) {
  return IsGiven(wanted) && wanted != current;
}

bool Differs(const Parameter& row, const P& wanted, const P& current) {
  return row.Visit(wanted, [&]<typename T>(T value) {
    return row.Visit(current, [&]<typename U>(U now) {
      if constexpr (std::is_same_v<T, U>) return Differs(value, now);
      else return false;
    });
  });
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
  for (const Parameter& row : kParameters) {
    if (row.IsSaved() && !row.IsSet() && Differs(row, wanted, current)) worst = std::max(worst, ErrorReadOnlyParam);
  }
  const float x = IsGiven(wanted.XOffset) ? wanted.XOffset : current.XOffset;
  const float y = IsGiven(wanted.YOffset) ? wanted.YOffset : current.YOffset;
  for (const Parameter& row : kParameters) {
    const bool offsets = row.number == ParamOutputOffsets;  // both go out together, once
    const bool moved = offsets && &row == FindParameter(row.number) && (x != current.XOffset || y != current.YOffset);
    if (!row.IsSet() || !(offsets ? moved : Differs(row, wanted, current))) continue;
    const double value = offsets ? Number(x) : row.Visit(wanted, [](auto given) { return Number(given); });
    link.error = ErrorNone;
    DeviceState::Set(*this, row.number, value, Number(y));
    worst = std::max(worst, link.error);
  }
  link.error = worst;
}

// --- Single parameters -------------------------------------------------------------------------------

float ZRVDevice::GetDeviceParam(ZRVParam param, int axis) {
  state_->link.error = ErrorNone;
  const Parameter* row = FindParameter(param, axis != 0);
  if (row == nullptr) {
    state_->link.error = ErrorInvalidParam;
    return kUnavailable;
  }
  if (param == ParamDeviceState) GetDeviceState();
  return static_cast<float>(row->Visit(state_->params, [](auto value) { return Number(value); }));
}

// Whole numbers are rounded, switches are on for anything but 0, codes are truncated.
void ZRVDevice::SetDeviceParam(ZRVParam param, float value1, float value2) {
  Link& link = state_->link;
  link.error = ErrorNone;
  const Parameter* row = FindParameter(param);
  if (row == nullptr || !row->IsSet()) {
    link.error = ErrorInvalidParam;
    return;
  }
  const bool real = std::holds_alternative<float P::*>(row->field), code = std::string_view(row->type) != "";
  const bool unlimited = code || param == ParamBufferOffset;
  if (!real && (std::isnan(value1) || (unlimited && std::isinf(value1)))) return Refuse(*state_);
  const double value = real                                      ? static_cast<double>(value1)
                       : std::string_view(row->type) == "Switch" ? (value1 != 0.0f ? 1 : 0)
                       : code                                    ? Truncated(value1)
                                                                 : Rounded(value1);
  DeviceState::Set(*this, param, value, static_cast<double>(value2));
}

unsigned int ZRVDevice::CalcHardwareFilterDelay(unsigned int numSamples) const {
  if (state_->params.HardwareFilterOn == 0) return 0;
  const unsigned int divisor = state_->params.HardwareFilterBw * 158;
  if (divisor == 0) return 0;
  return std::min(state_->params.SampleRate * 100 / divisor, numSamples - 1);
}
