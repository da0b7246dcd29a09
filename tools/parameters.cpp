#include "parameters.h"

#include <algorithm>
#include <cstdio>

#include "errors.h"
#include "values.h"

namespace zrvtool {
namespace {

struct NamedValue {
  const char* type;
  unsigned int value;
  const char* name;
};

#define ZRV_NAMED(type, member) NamedValue{#type, member, #member}
constexpr NamedValue kNamedValues[] = {
    ZRV_NAMED(ZRVAxes, AxesNormal),          ZRV_NAMED(ZRVAxes, AxesFlipX),
    ZRV_NAMED(ZRVAxes, AxesFlipY),           ZRV_NAMED(ZRVAxes, AxesFlipBoth),
    ZRV_NAMED(ZRVAxes, AxesSwap),            ZRV_NAMED(ZRVAxes, AxesSwapFlipX),
    ZRV_NAMED(ZRVAxes, AxesSwapFlipY),       ZRV_NAMED(ZRVAxes, AxesSwapFlipBoth),
    ZRV_NAMED(ZRVBoot, BootDefaults),        ZRV_NAMED(ZRVBoot, BootSavedSettings),
    ZRV_NAMED(ZRVBoot, BootSavedSettingsAndRun),
    ZRV_NAMED(ZRVDataMode, DataModeBuffer),  ZRV_NAMED(ZRVDataMode, DataMode1),
    ZRV_NAMED(ZRVDataMode, DataMode2),       ZRV_NAMED(ZRVDataMode, DataMode3),
    ZRV_NAMED(ZRVDataMode, DataMode4),       ZRV_NAMED(ZRVDataMode, DataMode5),
    ZRV_NAMED(ZRVDataMode, DataModeAnalogVolts), ZRV_NAMED(ZRVDataMode, DataModeAnalogVoltsRaw),
    ZRV_NAMED(ZRVDataMode, DataModeAnalogNormalized), ZRV_NAMED(ZRVDataMode, DataModeOrBEX1),
    ZRV_NAMED(ZRVSync, SyncOff),             ZRV_NAMED(ZRVSync, SyncMode1),
    ZRV_NAMED(ZRVSync, SyncMode2),           ZRV_NAMED(ZRVSync, SyncMode3),
    ZRV_NAMED(ZRVSync, SyncMode4),           ZRV_NAMED(ZRVSync, SyncMode5),
    ZRV_NAMED(ZRVSync, SyncMode6),           ZRV_NAMED(ZRVSync, SyncMode7),
    ZRV_NAMED(ZRVSync, SyncMode8),           ZRV_NAMED(ZRVSync, SyncMode9),
    ZRV_NAMED(ZRVSync, SyncMode10),          ZRV_NAMED(ZRVSync, SyncMode11),
    ZRV_NAMED(ZRVSync, SyncMode12),          ZRV_NAMED(ZRVSync, SyncMode13),
    ZRV_NAMED(ZRVSync, SyncMode14),          ZRV_NAMED(ZRVSync, SyncMode15),
};
#undef ZRV_NAMED

std::string NamesOf(const char* type) {
  std::string names;
  for (const NamedValue& v : kNamedValues)
    if (std::string(v.type) == type) names += (names.empty() ? "" : ", ") + std::string(v.name);
  return names;
}

void PrintText(const char* label, const std::string& text) { std::printf("%-22s %s\n", label, text.c_str()); }

std::string WithUnit(double value, const char* unit) {
  char text[64];
  std::snprintf(text, sizeof text, "%g%s%s", value, *unit ? " " : "", unit);
  return text;
}

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

void PrintIdentity(const ZRVDeviceParams& p) {
  PrintText("Name", p.DeviceName);
  PrintText("Firmware", p.FirmwareName);
  PrintText("Link", std::string(p.CommType) + ", " + std::to_string(p.USARTBaudRate) + " baud");
  PrintText("Bluetooth address", p.BluetoothMAC);
  PrintText("State", StateText(p.DeviceState));
  PrintText("Error register", std::to_string(p.DeviceErrorRegister));
}

void PrintSettings(const ZRVDeviceParams& p) {
  PrintText("Sample rate", WithUnit(p.SampleRate, "samples/s"));
  PrintText("Hardware filter", p.HardwareFilterOn ? WithUnit(p.HardwareFilterBw, "Hz") : "off");
  PrintText("Mirror driver", OnOff(p.MEMSDriverEnable));
  PrintText("Bias", WithUnit(static_cast<double>(p.Vbias), "V"));
  PrintText("Largest difference", WithUnit(static_cast<double>(p.VdifferenceMax), "V"));
  PrintText("Output offsets", WithUnit(static_cast<double>(p.XOffset), "") + ", " +
                                  WithUnit(static_cast<double>(p.YOffset), ""));
  PrintText("Output scale", WithUnit(static_cast<double>(p.DataScale), ""));
  PrintText("Output rotation", WithUnit(static_cast<double>(p.DataRotation), "rad"));
  PrintText("Axes", NameOfValue("ZRVAxes", p.DeviceAxes));
  PrintText("Digital outputs", OnOff(p.DigitalOutputEnable));
  PrintText("Laser modulation", OnOff(p.LaserModulationEnable));
  PrintText("Buffer offset", WithUnit(p.BufferOffset, "samples"));
  PrintText("Data mode", NameOfValue("ZRVDataMode", p.DataMode));
  PrintText("Synchronisation", NameOfValue("ZRVSync", p.SyncMode));
  PrintText("After power-up", NameOfValue("ZRVBoot", p.BootSetting));
}

void PrintLimits(const ZRVDeviceParams& p) {
  PrintText("Sample rates", Range(p.SampleRateMin, p.SampleRateMax, "samples/s"));
  PrintText("Samples held", std::to_string(p.SampleBufferCapacity));
  PrintText("Filter bandwidths", Range(p.HardwareFilterBwMin, p.HardwareFilterBwMax, "Hz"));
  PrintText("Bias voltages", Range(p.VbiasMin, p.VbiasMax, "V"));
  PrintText("Highest voltage", WithUnit(static_cast<double>(p.VmaxMEMSDriver), "V"));
}

}  // namespace

const std::vector<ParameterRow>& Parameters() {
  static const std::vector<ParameterRow> rows = {
      {"SampleRate", ParamSampleRate, 0, "samples/s", nullptr, true},
      {"HardwareFilterBw", ParamHardwareFilterBw, 0, "Hz", nullptr, true},
      {"VdifferenceMax", ParamVdifferenceMax, 0, "V", nullptr, true},
      {"Vbias", ParamVbias, 0, "V", nullptr, true},
      {"XOffset", ParamOutputOffsets, 0, "", nullptr, true},
      {"YOffset", ParamOutputOffsets, 1, "", nullptr, true},
      {"DataScale", ParamDataScale, 0, "", nullptr, true},
      {"DataRotation", ParamDataRotation, 0, "rad", nullptr, true},
      {"MEMSDriverEnable", ParamMEMSDriverEnable, 0, "", nullptr, true},
      {"DigitalOutputEnable", ParamDigitalOutputEnable, 0, "", nullptr, true},
      {"LaserModulationEnable", ParamLaserModulationEnable, 0, "", nullptr, true},
      {"BufferOffset", ParamBufferOffset, 0, "samples", nullptr, true},
      {"DeviceAxes", ParamDeviceAxes, 0, "", "ZRVAxes", true},
      {"BootSetting", ParamBootSetting, 0, "", "ZRVBoot", true},
      {"DataMode", ParamDataMode, 0, "", "ZRVDataMode", true},
      {"SyncMode", ParamSyncMode, 0, "", "ZRVSync", true},
      {"USARTBaudRate", ParamUSARTBaudRate, 0, "baud", nullptr, true},
      {"DeviceState", ParamDeviceState, 0, "", nullptr, false},
      {"SyncState", ParamSyncState, 0, "", nullptr, false},
  };
  return rows;
}

const ParameterRow& FindParameter(const std::string& name) {
  std::string names;
  for (const ParameterRow& row : Parameters()) {
    if (name == row.name) return row;
    names += (names.empty() ? "" : ", ") + std::string(row.name);
  }
  throw WrongUse("there is no parameter " + name + " (ErrorInvalidParam).\nThe parameters are " + names + ".");
}

std::string NameOfValue(const char* type, unsigned int value) {
  for (const NamedValue& v : kNamedValues)
    if (std::string(v.type) == type && v.value == value) return v.name;
  return std::to_string(value);
}

float ValueOf(const ParameterRow& row, const std::string& text) {
  if (text == "on") return 1;
  if (text == "off") return 0;
  for (const NamedValue& v : kNamedValues)
    if (row.type && std::string(v.type) == row.type && text == v.name) return static_cast<float>(v.value);
  if (row.type && (text.empty() || text[0] < '0' || text[0] > '9'))
    throw WrongUse(std::string(row.name) + " cannot be " + text + ". It can be " + NamesOf(row.type) + ".");
  return static_cast<float>(ParseNumber(text, row.name));
}

std::string Shown(const ParameterRow& row, float value) {
  if (row.type) return NameOfValue(row.type, static_cast<unsigned int>(value));
  char text[64];
  std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
  return *row.unit ? std::string(text) + " " + row.unit : text;
}

void PrintRecord(const ZRVDeviceParams& params) {
  PrintIdentity(params);
  std::printf("\nSettings\n");
  PrintSettings(params);
  std::printf("\nLimits\n");
  PrintLimits(params);
}

}  // namespace zrvtool
