// The fields of a controller's parameter record that have a name, in the order of parameter files: what saves, loads,
// reads, sets and shows them goes by this table.
#ifndef ZRV_COMMON_PARAMETERS_H
#define ZRV_COMMON_PARAMETERS_H

#include <algorithm>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "ZRVDefinitions.h"

namespace zrv {

using ParamRecord = ZRVDeviceParamsStruct;

// Values from 1e8 on, and NaN, mark what is not given: neither sent nor saved.
constexpr bool IsGiven(float value) { return value < 1e8f; }
template <typename T>
constexpr bool IsGiven(T value) {
  return static_cast<unsigned int>(value) < 100000000;
}

// A text field up to its end, also when it fills the field.
template <auto field>
std::string_view TextOf(const ParamRecord& record) {
  const auto& text = record.*field;
  return {text, static_cast<size_t>(std::find(std::begin(text), std::end(text), '\0') - text)};
}

enum class ParamUse {
  kReported,  // saved, never loaded or set
  kLink,      // saved and set, never loaded: a file that was made elsewhere must not change the speed of this link
  kSetting,   // saved, loaded and set
  kDecoded,   // stands within another one
};

struct Parameter {
  const char* key;
  ParamUse use;
  std::variant<std::string_view (*)(const ParamRecord&), unsigned int ParamRecord::*, float ParamRecord::*,
               ZRVAxes ParamRecord::*, ZRVBoot ParamRecord::*, ZRVDataMode ParamRecord::*, ZRVSync ParamRecord::*>
      field;
  unsigned int number;  // a ZRVParam; 0: it has none
  const char* type;     // of its values: an enumeration, "Switch" for on and off, or "" for plain numbers
  const char* unit;
  const char* help;

  bool IsSet() const { return use == ParamUse::kLink || use == ParamUse::kSetting; }
  bool IsSaved() const { return use != ParamUse::kDecoded; }

  // Calls with the value, of its own type.
  template <typename Use>
  decltype(auto) Visit(const ParamRecord& record, Use use_value) const {
    return std::visit(
        [&](auto at) {
          if constexpr (std::is_member_object_pointer_v<decltype(at)>) return use_value(record.*at);
          else return use_value(at(record));
        },
        field);
  }
};

inline constexpr Parameter kParameters[] = {
    {"DeviceName", ParamUse::kReported, TextOf<&ParamRecord::DeviceName>, 0, "", "", "name"},
    {"FirmwareName", ParamUse::kReported, TextOf<&ParamRecord::FirmwareName>, 0, "", "", "firmware"},
    {"CommType", ParamUse::kReported, TextOf<&ParamRecord::CommType>, 0, "", "", "kind of link"},
    {"BluetoothMAC", ParamUse::kReported, TextOf<&ParamRecord::BluetoothMAC>, 0, "", "", "Bluetooth address"},
    {"USARTBaudRate", ParamUse::kLink, &ParamRecord::USARTBaudRate, ParamUSARTBaudRate, "", "baud",
     "speed of the serial link"},
    {"HardwareFilterOn", ParamUse::kReported, &ParamRecord::HardwareFilterOn, 0, "Switch", "", "low-pass"},
    {"VmaxMEMSDriver", ParamUse::kReported, &ParamRecord::VmaxMEMSDriver, 0, "", "V", "highest voltage of the driver"},
    {"DeviceState", ParamUse::kReported, &ParamRecord::DeviceState, ParamDeviceState, "", "", "state word"},
    {"DeviceErrorRegister", ParamUse::kReported, &ParamRecord::DeviceErrorRegister, 0, "", "", "error register"},
    {"SampleRate", ParamUse::kSetting, &ParamRecord::SampleRate, ParamSampleRate, "", "samples/s",
     "samples played per second"},
    {"HardwareFilterBw", ParamUse::kSetting, &ParamRecord::HardwareFilterBw, ParamHardwareFilterBw, "", "Hz",
     "bandwidth of the low-pass ahead of the mirror"},
    {"VdifferenceMax", ParamUse::kSetting, &ParamRecord::VdifferenceMax, ParamVdifferenceMax, "", "V",
     "largest difference of the voltages of an axis"},
    {"Vbias", ParamUse::kSetting, &ParamRecord::Vbias, ParamVbias, "", "V", "bias voltage of the mirror driver"},
    {"XOffset", ParamUse::kSetting, &ParamRecord::XOffset, ParamOutputOffsets, "", "",
     "offset of the output in X, -1..1"},
    {"YOffset", ParamUse::kSetting, &ParamRecord::YOffset, ParamOutputOffsets, "", "",
     "offset of the output in Y, -1..1"},
    {"DataScale", ParamUse::kSetting, &ParamRecord::DataScale, ParamDataScale, "", "", "factor on the positions, 0..1"},
    {"DataRotation", ParamUse::kSetting, &ParamRecord::DataRotation, ParamDataRotation, "", "rad",
     "rotation of the positions"},
    {"MEMSDriverEnable", ParamUse::kSetting, &ParamRecord::MEMSDriverEnable, ParamMEMSDriverEnable, "Switch", "",
     "mirror driver"},
    {"DigitalOutputEnable", ParamUse::kSetting, &ParamRecord::DigitalOutputEnable, ParamDigitalOutputEnable, "Switch",
     "", "digital outputs"},
    {"LaserModulationEnable", ParamUse::kSetting, &ParamRecord::LaserModulationEnable, ParamLaserModulationEnable,
     "Switch", "", "laser modulation"},
    {"BufferOffset", ParamUse::kSetting, &ParamRecord::BufferOffset, ParamBufferOffset, "", "samples",
     "offset in the sample memory"},
    {"DeviceAxes", ParamUse::kSetting, &ParamRecord::DeviceAxes, ParamDeviceAxes, "ZRVAxes", "",
     "orientation of the axes"},
    {"BootSetting", ParamUse::kSetting, &ParamRecord::BootSetting, ParamBootSetting, "ZRVBoot", "",
     "what the controller starts with"},
    {"DataMode", ParamUse::kSetting, &ParamRecord::DataMode, ParamDataMode, "ZRVDataMode", "",
     "what the controller plays or streams"},
    {"SyncMode", ParamUse::kSetting, &ParamRecord::SyncMode, ParamSyncMode, "ZRVSync", "", "synchronisation output"},
    {"SyncState", ParamUse::kDecoded, &ParamRecord::SyncState, ParamSyncState, "", "", "output format code, 0..7"},
};

// The row of a parameter; of the two output offsets X, and Y when second. Null when there is none.
constexpr const Parameter* FindParameter(unsigned int number, bool second = false) {
  for (const Parameter& row : kParameters) {
    if (number == 0 || row.number != number) continue;
    return second && number == ParamOutputOffsets ? &row + 1 : &row;
  }
  return nullptr;
}

}  // namespace zrv

#endif
