// Parameter files, and the names of enumeration members, which are read from the definitions header at run time.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "common/files.h"
#include "common/text_numbers.h"
#include "device/markers.h"
#include "device/state.h"

using namespace zrv;
using P = ZRVDeviceParamsStruct;

namespace {

constexpr const char* kDefaultDefinitionsFile = "ZRVDefinitions.h";
constexpr std::string_view kSeparator = " = ";
constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";
constexpr size_t kMaxFileBytes = 16 << 20;  // a larger one is neither a parameter file nor the header

std::string& DefinitionsFile() {
  static std::string path = kDefaultDefinitionsFile;
  return path;
}

// A file's lines; none when it cannot be read.
class Lines {
 public:
  explicit Lines(const char* path)
      : bytes_(ReadWholeFile(path, kMaxFileBytes).value_or(std::vector<uint8_t>())), left_(AsText(bytes_)) {}
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;

  std::optional<std::string_view> Next() {
    if (left_.empty()) return std::nullopt;
    return TakeLine(left_);
  }

 private:
  std::vector<uint8_t> bytes_;
  std::string_view left_;
};

bool Contains(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

// The number after the sign of a line such as "  BootDefaults = 0,".
std::optional<int> NumberAfter(std::string_view line, std::string_view sign) {
  const size_t at = line.find(sign);
  if (at == std::string_view::npos) return std::nullopt;
  line.remove_prefix(at + sign.size());
  return TakeInt(line);
}

// Whether the line has name and directly behind it a tab, a blank or an equals sign. What stands before it is
// not looked at: no member's name is the end of another's.
bool Defines(std::string_view line, std::string_view name) {
  for (size_t at = line.find(name); at != std::string_view::npos; at = line.find(name, at + 1)) {
    const std::string_view behind = line.substr(at + name.size(), 1);
    if (behind == "\t" || behind == " " || behind == "=") return true;
  }
  return false;
}

// Whether it can be a member's name at all. A number written in place of a name would be found behind any name
// that ends with it.
bool IsIdentifier(std::string_view name) {
  return !name.empty() && kLetters.find(name.front()) != std::string_view::npos;
}

// The text behind "key = " in the first line that has it, also within a longer key.
std::optional<std::string_view> FindValue(Lines& lines, std::string_view key) {
  const std::string sought = std::string(key).append(kSeparator);
  while (const auto line = lines.Next()) {
    const size_t at = line->find(sought);
    if (at != std::string_view::npos) return line->substr(at + sought.size());
  }
  return std::nullopt;
}

bool IsEnumKey(std::string_view key) {
  return key == "DeviceAxes" || key == "DataMode" || key == "BootSetting" || key == "SyncMode";
}

// Whole numbers beyond their type become its limits.
unsigned int Saturated(float value) {
  return static_cast<unsigned int>(std::clamp(static_cast<double>(value), 0.0, 4294967295.0));
}

// --- The lines that are written ----------------------------------------------------------------------

void AppendLine(std::string& text, std::string_view key, std::string_view value) {
  text.append(key).append(kSeparator).append(value).append("\n");
}

// Up to a line end, which would start another line of the file.
template <size_t size>
void AppendText(std::string& text, std::string_view key, const char (&field)[size]) {
  const std::string_view whole(field, static_cast<size_t>(std::find(field, field + size, '\0') - field));
  const std::string_view value = whole.substr(0, whole.find_first_of("\r\n"));
  if (!value.empty()) AppendLine(text, key, value);
}

void AppendDigits(std::string& text, unsigned int value) { AppendUnsigned(text, value); }
void AppendDigits(std::string& text, float value) { AppendFloat(text, value); }

template <typename T>
void AppendNumber(std::string& text, std::string_view key, T value) {
  std::string digits;
  AppendDigits(digits, value);
  if (IsGiven(value)) AppendLine(text, key, digits);
}

}  // namespace

void ZRVDevice::SetDefinitionsFile(const char* path) {
  DefinitionsFile() = path != nullptr ? path : kDefaultDefinitionsFile;
}

std::string ZRVDevice::EnumToString(std::string enumName, int value) const {
  if (enumName.empty()) return {};
  Lines lines(DefinitionsFile().c_str());
  auto line = lines.Next();
  while (line && !Contains(*line, enumName)) line = lines.Next();
  if (!line) return {};
  while ((line = lines.Next())) {
    if (Contains(*line, "= ") && NumberAfter(*line, "=") == value) {
      std::string_view member = line->substr(0, line->find('='));
      return std::string(TakeWord(member));
    }
    if (Contains(*line, "}")) return {};
  }
  return {};
}

int ZRVDevice::EnumToInt(std::string memberName) const {
  constexpr int kUnknown = static_cast<int>(kUnavailableWhole);
  if (!IsIdentifier(memberName)) return kUnknown;
  Lines lines(DefinitionsFile().c_str());
  while (const auto line = lines.Next()) {
    if (Defines(*line, memberName)) return NumberAfter(*line, "= ").value_or(kUnknown);
  }
  return kUnknown;
}

char* ZRVDevice::GetEnumString(std::string enumName, int value) const {
  const std::string name = EnumToString(std::move(enumName), value);
  char* copy = new char[name.size() + 1];
  std::memcpy(copy, name.c_str(), name.size() + 1);
  return copy;
}

void ZRVDevice::SaveDeviceParams(const char* fileName, ZRVDeviceParams* params) {
  const ZRVDeviceParams& p = params != nullptr ? *params : state_->params;
  std::string text;
  const auto number = [&](const char* key, auto value) { AppendNumber(text, key, value); };
  const auto member = [&](const char* key, const char* type, unsigned int value) {
    AppendLine(text, key, EnumToString(type, static_cast<int>(value)));
  };
  AppendText(text, "DeviceName", p.DeviceName);
  AppendText(text, "FirmwareName", p.FirmwareName);
  AppendText(text, "CommType", p.CommType);
  AppendText(text, "BluetoothMAC", p.BluetoothMAC);
  number("USARTBaudRate", p.USARTBaudRate);
  number("HardwareFilterOn", p.HardwareFilterOn);
  number("VmaxMEMSDriver", p.VmaxMEMSDriver);
  number("DeviceState", p.DeviceState);
  number("DeviceErrorRegister", p.DeviceErrorRegister);
  number("SampleRate", p.SampleRate);
  number("HardwareFilterBw", p.HardwareFilterBw);
  number("VdifferenceMax", p.VdifferenceMax);
  number("Vbias", p.Vbias);
  number("XOffset", p.XOffset);
  number("YOffset", p.YOffset);
  number("DataScale", p.DataScale);
  number("DataRotation", p.DataRotation);
  number("MEMSDriverEnable", p.MEMSDriverEnable);
  number("DigitalOutputEnable", p.DigitalOutputEnable);
  number("LaserModulationEnable", p.LaserModulationEnable);
  number("BufferOffset", p.BufferOffset);
  member("DeviceAxes", "ZRVAxes", p.DeviceAxes);
  member("BootSetting", "ZRVBoot", p.BootSetting);
  member("DataMode", "ZRVDataMode", p.DataMode);
  member("SyncMode", "ZRVSync", p.SyncMode);
  const std::span bytes(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  state_->link.error = WriteWholeFile(fileName, bytes) ? ErrorNone : ErrorInvalidValue;
}

float ZRVDevice::LoadDeviceParam(const char* fileName, const char* key, float defaultValue) const {
  if (key == nullptr) return defaultValue;
  Lines lines(fileName);
  auto value = FindValue(lines, key);
  if (!value) return defaultValue;
  if (!IsEnumKey(key)) return TakeFloat(*value).value_or(defaultValue);
  return static_cast<float>(EnumToInt(std::string(TakeWord(*value))));
}

void ZRVDevice::LoadDeviceParams(ZRVDeviceParams* params, const char* fileName) {
  state_->link.error = params != nullptr ? ErrorNone : ErrorNotConnected;
  if (params == nullptr) return;
  ZRVDeviceParams& p = *params;
  p.ParamsValid = 0;
  p.DeviceName[0] = p.FirmwareName[0] = p.CommType[0] = '\0';
  p.USARTBaudRate = p.HardwareFilterOn = p.DeviceState = p.DeviceErrorRegister = kUnavailableWhole;
  p.VmaxMEMSDriver = kUnavailable;

  const auto real = [&](const char* key) { return LoadDeviceParam(fileName, key, kUnavailable); };
  const auto whole = [&](const char* key) { return Saturated(std::round(real(key))); };
  const auto code = [&](const char* key) { return Saturated(std::trunc(real(key))); };
  p.SampleRate = whole("SampleRate");
  p.HardwareFilterBw = whole("HardwareFilterBw");
  p.VdifferenceMax = real("VdifferenceMax");
  p.Vbias = real("Vbias");
  p.XOffset = real("XOffset");
  p.YOffset = real("YOffset");
  p.DataScale = real("DataScale");
  p.DataRotation = real("DataRotation");
  p.BufferOffset = whole("BufferOffset");
  p.DeviceAxes = static_cast<ZRVAxes>(code("DeviceAxes"));
  p.BootSetting = static_cast<ZRVBoot>(code("BootSetting"));
  p.DataMode = static_cast<ZRVDataMode>(code("DataMode"));
  p.MEMSDriverEnable = whole("MEMSDriverEnable");
  p.DigitalOutputEnable = whole("DigitalOutputEnable");
  p.LaserModulationEnable = whole("LaserModulationEnable");
  p.SyncMode = static_cast<ZRVSync>(code("SyncMode"));
}
