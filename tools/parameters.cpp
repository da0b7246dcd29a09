#include "parameters.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "common/parameters.h"
#include "errors.h"
#include "values.h"

namespace zrvtool {
namespace {

struct NamedValue {
  const char* type;
  unsigned int value;
  const char* name;
};

#define ZRV_NAMED(type, member) \
  NamedValue { #type, member, #member }
constexpr NamedValue kNamedValues[] = {
    ZRV_NAMED(ZRVAxes, AxesNormal),
    ZRV_NAMED(ZRVAxes, AxesFlipX),
    ZRV_NAMED(ZRVAxes, AxesFlipY),
    ZRV_NAMED(ZRVAxes, AxesFlipBoth),
    ZRV_NAMED(ZRVAxes, AxesSwap),
    ZRV_NAMED(ZRVAxes, AxesSwapFlipX),
    ZRV_NAMED(ZRVAxes, AxesSwapFlipY),
    ZRV_NAMED(ZRVAxes, AxesSwapFlipBoth),
    ZRV_NAMED(ZRVBoot, BootDefaults),
    ZRV_NAMED(ZRVBoot, BootSavedSettings),
    ZRV_NAMED(ZRVBoot, BootSavedSettingsAndRun),
    ZRV_NAMED(ZRVDataMode, DataModeBuffer),
    ZRV_NAMED(ZRVDataMode, DataMode1),
    ZRV_NAMED(ZRVDataMode, DataMode2),
    ZRV_NAMED(ZRVDataMode, DataMode3),
    ZRV_NAMED(ZRVDataMode, DataMode4),
    ZRV_NAMED(ZRVDataMode, DataMode5),
    ZRV_NAMED(ZRVDataMode, DataModeAnalogVolts),
    ZRV_NAMED(ZRVDataMode, DataModeAnalogVoltsRaw),
    ZRV_NAMED(ZRVDataMode, DataModeAnalogNormalized),
    ZRV_NAMED(ZRVDataMode, DataModeOrBEX1),
    ZRV_NAMED(ZRVSync, SyncOff),
    ZRV_NAMED(ZRVSync, SyncMode1),
    ZRV_NAMED(ZRVSync, SyncMode2),
    ZRV_NAMED(ZRVSync, SyncMode3),
    ZRV_NAMED(ZRVSync, SyncMode4),
    ZRV_NAMED(ZRVSync, SyncMode5),
    ZRV_NAMED(ZRVSync, SyncMode6),
    ZRV_NAMED(ZRVSync, SyncMode7),
    ZRV_NAMED(ZRVSync, SyncMode8),
    ZRV_NAMED(ZRVSync, SyncMode9),
    ZRV_NAMED(ZRVSync, SyncMode10),
    ZRV_NAMED(ZRVSync, SyncMode11),
    ZRV_NAMED(ZRVSync, SyncMode12),
    ZRV_NAMED(ZRVSync, SyncMode13),
    ZRV_NAMED(ZRVSync, SyncMode14),
    ZRV_NAMED(ZRVSync, SyncMode15),
    {"Switch", 0, "off"},
    {"Switch", 1, "on"},
};
#undef ZRV_NAMED

std::string Range(unsigned int lowest, unsigned int highest, const char* unit) {
  return std::to_string(lowest) + " .. " + std::to_string(highest) + " " + unit;
}

const char* OnOff(unsigned int value) { return value ? "on" : "off"; }

std::string StateText(unsigned int state) {
  char text[80];
  std::snprintf(text, sizeof text, "0x%08X%s%s, output format %u", state, state & 1u ? ", playing" : ", idle",
                state >> 12 & 1u ? ", tracking" : "", state >> 13 & 7u);
  return text;
}

void AddIdentity(Report& r, const ZRVDeviceParams& p) {
  r.Add("Name", p.DeviceName, {{"name", p.DeviceName}});
  r.Add("Firmware", p.FirmwareName, {{"firmware", p.FirmwareName}});
  r.Add("Link", std::string(p.CommType) + ", " + std::to_string(p.USARTBaudRate) + " baud",
        {{"link", p.CommType}, {"baud", p.USARTBaudRate}});
  r.Add("Bluetooth address", p.BluetoothMAC, {{"bluetooth_address", p.BluetoothMAC}});
  r.Add("State", StateText(p.DeviceState),
        {{"state", p.DeviceState},
         {"playing", (p.DeviceState & 1u) != 0},
         {"tracking", (p.DeviceState >> 12 & 1u) != 0},
         {"output_format", p.DeviceState >> 13 & 7u}});
  r.Add("Error register", std::to_string(p.DeviceErrorRegister), {{"error_register", p.DeviceErrorRegister}});
}

void AddSwitch(Report& r, const char* label, unsigned int value, const char* key) {
  r.Add(label, OnOff(value), {{key, value != 0}});
}

void AddNamed(Report& r, const char* label, const char* type, unsigned int value, const char* key) {
  r.Add(label, NameOfValue(type, value), {{key, NameOfValue(type, value)}});
}

void AddSettings(Report& r, const ZRVDeviceParams& p) {
  r.Begin("Settings", "settings");
  r.AddNumber("Sample rate", p.SampleRate, "samples/s", "sample_rate_hz");
  r.Add("Hardware filter", p.HardwareFilterOn ? WithUnit(p.HardwareFilterBw, "Hz") : "off",
        {{"hardware_filter", p.HardwareFilterOn != 0}, {"hardware_filter_hz", p.HardwareFilterBw}});
  AddSwitch(r, "Mirror driver", p.MEMSDriverEnable, "mirror_driver");
  r.AddNumber("Bias", Exact(p.Vbias), "V", "bias_v");
  r.AddNumber("Largest difference", Exact(p.VdifferenceMax), "V", "largest_difference_v");
  r.Add("Output offsets", WithUnit(Exact(p.XOffset), "") + ", " + WithUnit(Exact(p.YOffset), ""),
        {{"offset_x", Exact(p.XOffset)}, {"offset_y", Exact(p.YOffset)}});
  r.AddNumber("Output scale", Exact(p.DataScale), "", "scale");
  r.AddNumber("Output rotation", Exact(p.DataRotation), "rad", "rotation_rad");
  AddNamed(r, "Axes", "ZRVAxes", p.DeviceAxes, "axes");
  AddSwitch(r, "Digital outputs", p.DigitalOutputEnable, "digital_outputs");
  AddSwitch(r, "Laser modulation", p.LaserModulationEnable, "laser_modulation");
  r.AddNumber("Buffer offset", p.BufferOffset, "samples", "buffer_offset_samples");
  AddNamed(r, "Data mode", "ZRVDataMode", p.DataMode, "data_mode");
  AddNamed(r, "Synchronisation", "ZRVSync", p.SyncMode, "sync_mode");
  AddNamed(r, "After power-up", "ZRVBoot", p.BootSetting, "boot_setting");
}

void AddLimits(Report& r, const ZRVDeviceParams& p) {
  r.Begin("Limits", "limits");
  r.Add("Sample rates", Range(p.SampleRateMin, p.SampleRateMax, "samples/s"),
        {{"sample_rate_min_hz", p.SampleRateMin}, {"sample_rate_max_hz", p.SampleRateMax}});
  r.Add("Samples held", std::to_string(p.SampleBufferCapacity), {{"samples_held", p.SampleBufferCapacity}});
  r.Add("Filter bandwidths", Range(p.HardwareFilterBwMin, p.HardwareFilterBwMax, "Hz"),
        {{"hardware_filter_min_hz", p.HardwareFilterBwMin}, {"hardware_filter_max_hz", p.HardwareFilterBwMax}});
  r.Add("Bias voltages", Range(p.VbiasMin, p.VbiasMax, "V"), {{"bias_min_v", p.VbiasMin}, {"bias_max_v", p.VbiasMax}});
  r.AddNumber("Highest voltage", Exact(p.VmaxMEMSDriver), "V", "vmax_v");
}

}  // namespace

const std::vector<ParameterRow>& Parameters() {
  static const std::vector<ParameterRow> rows = [] {
    std::vector<ParameterRow> made;
    for (const bool setting : {true, false}) {
      for (const zrv::Parameter& p : zrv::kParameters) {
        if (p.number == 0 || setting != (p.use == zrv::ParamUse::kSetting)) continue;
        const int axis = &p != zrv::FindParameter(p.number);  // Y of the output offsets
        made.push_back(
            {p.key, static_cast<ZRVParam>(p.number), axis, p.unit, *p.type ? p.type : nullptr, p.IsSet(), p.help});
      }
    }
    return made;
  }();
  return rows;
}

std::string ParameterNames() {
  constexpr std::size_t kLineWidth = 100;
  std::string names;
  std::size_t lineStart = 0;
  for (const ParameterRow& row : Parameters()) {
    if (!names.empty()) names += ", ";
    if (names.size() + std::strlen(row.name) > lineStart + kLineWidth) {
      names.back() = '\n';
      lineStart = names.size();
    }
    names += row.name;
  }
  return names;
}

const ParameterRow& FindParameter(const std::string& name) {
  for (const ParameterRow& row : Parameters())
    if (name == row.name) return row;
  throw WrongUse("there is no parameter " + name + " (ErrorInvalidParam).\nThe parameters are\n" + ParameterNames() +
                 ".");
}

std::string NameOfValue(const char* type, unsigned int value) {
  for (const NamedValue& v : kNamedValues)
    if (std::string(v.type) == type && v.value == value) return v.name;
  return std::to_string(value);
}

std::string NamesOfValues(const ParameterRow& row, const char* separator) {
  std::string names;
  for (const NamedValue& v : kNamedValues)
    if (row.type && std::string(v.type) == row.type) names += (names.empty() ? "" : separator) + std::string(v.name);
  return names;
}

float ValueOf(const ParameterRow& row, const std::string& text) {
  if (!row.type) return static_cast<float>(std::clamp<double>(ParseNumber(text, row.name), -FLT_MAX, FLT_MAX));
  for (const NamedValue& v : kNamedValues)
    if (std::string(v.type) == row.type && (text == v.name || text == std::to_string(v.value)))
      return static_cast<float>(v.value);
  throw WrongUse(std::string(row.name) + " cannot be " + text + ". It can be " + NamesOfValues(row, ", ") + ".");
}

std::string Shown(const ParameterRow& row, float value) {
  if (row.type) return NameOfValue(row.type, static_cast<unsigned int>(value));
  char text[64];
  std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
  return *row.unit ? std::string(text) + " " + row.unit : text;
}

Json JsonOf(const ParameterRow& row, float value) {
  const bool whole = std::abs(value) < 1e9f && value == std::floor(value);
  Json json = {{"value", whole ? Json(static_cast<int>(value)) : Json(Exact(value))}};
  if (row.type) json["name"] = NameOfValue(row.type, static_cast<unsigned int>(value));
  if (*row.unit) json["unit"] = row.unit;
  return json;
}

Report RecordOf(const ZRVDeviceParams& params) {
  Report report;
  AddIdentity(report, params);
  AddSettings(report, params);
  AddLimits(report, params);
  return report;
}

}  // namespace zrvtool
