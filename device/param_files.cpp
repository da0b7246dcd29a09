// Parameter files, and the names of enumeration members, which are read from the definitions header at run time.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "common/files.h"
#include "common/parameters.h"
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

// The enumeration whose members a key's values are written by; null for numbers.
const char* EnumerationOf(std::string_view key) {
  for (const Parameter& row : kParameters) {
    if (key == row.key && std::string_view(row.type).starts_with("ZRV")) return row.type;
  }
  return nullptr;
}

// Whole numbers beyond their type become its limits.
unsigned int Saturated(float value) {
  return static_cast<unsigned int>(std::clamp(static_cast<double>(value), 0.0, 4294967295.0));
}

void Store(float value, float& field) { field = value; }
void Store(float value, unsigned int& field) { field = Saturated(std::round(value)); }
template <typename Enum>
void Store(float value, Enum& field) {
  field = static_cast<Enum>(Saturated(std::trunc(value)));
}

// --- The lines that are written ----------------------------------------------------------------------

void AppendLine(std::string& text, std::string_view key, std::string_view value) {
  text.append(key).append(kSeparator).append(value).append("\n");
}

void AppendDigits(std::string& text, unsigned int value) { AppendUnsigned(text, value); }
void AppendDigits(std::string& text, float value) { AppendFloat(text, value); }

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
  const P& record = params != nullptr ? *params : state_->params;
  std::string text;
  for (const Parameter& row : kParameters) {
    if (!row.IsSaved()) continue;
    row.Visit(record, [&](auto value) {
      using T = decltype(value);
      std::string written;
      if constexpr (std::is_same_v<T, std::string_view>) {
        written = value.substr(0, value.find_first_of("\r\n"));  // a line end would start another line of the file
        if (written.empty()) return;
      } else if constexpr (std::is_enum_v<T>) {
        written = EnumToString(row.type, static_cast<int>(value));
      } else {
        if (!IsGiven(value)) return;
        AppendDigits(written, value);
      }
      AppendLine(text, row.key, written);
    });
  }
  const std::span bytes(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  state_->link.error = WriteWholeFile(fileName, bytes) ? ErrorNone : ErrorInvalidValue;
}

float ZRVDevice::LoadDeviceParam(const char* fileName, const char* key, float defaultValue) const {
  if (key == nullptr) return defaultValue;
  Lines lines(fileName);
  auto value = FindValue(lines, key);
  if (!value) return defaultValue;
  if (EnumerationOf(key) == nullptr) return TakeFloat(*value).value_or(defaultValue);
  return static_cast<float>(EnumToInt(std::string(TakeWord(*value))));
}

void ZRVDevice::LoadDeviceParams(ZRVDeviceParams* params, const char* fileName) {
  state_->link.error = params != nullptr ? ErrorNone : ErrorNotConnected;
  if (params == nullptr) return;
  params->ParamsValid = 0;
  params->DeviceName[0] = params->FirmwareName[0] = params->CommType[0] = '\0';
  for (const Parameter& row : kParameters) {
    if (!row.IsSaved()) continue;
    const bool loaded = row.use == ParamUse::kSetting;
    const float value = loaded ? LoadDeviceParam(fileName, row.key, kUnavailable) : kUnavailable;
    std::visit(
        [&](auto at) {
          if constexpr (std::is_member_object_pointer_v<decltype(at)>) Store(value, params->*at);
        },
        row.field);
  }
}
