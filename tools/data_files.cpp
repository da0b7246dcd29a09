#include "data_files.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <system_error>

#include "ZRVDevice.h"
#include "common/files.h"
#include "common/text_numbers.h"
#include "errors.h"

namespace zrvtool {
namespace {

std::string FirstThatExists(std::initializer_list<std::string> names) {
  for (const std::string& name : names)
    if (std::error_code ignored; std::filesystem::is_regular_file(name, ignored)) return name;
  return {};
}

// A file of the installation that this program is part of, wherever that was put. Where the system does not
// tell which program this is, a name that is nowhere.
std::string BesideProgram(const char* name) {
  std::error_code ignored;
  return (std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path() / ".." / name).string();
}

bool IsCsv(const std::string& name) { return name.ends_with(".csv") || name.ends_with(".CSV"); }

std::string Csv(const Pattern& p) {
  std::string text = p.rgb.empty() ? "time_s,x,y,m\n" : "time_s,x,y,m,rgb\n";
  char line[120];
  for (std::size_t i = 0; i < p.size(); ++i) {
    std::snprintf(line, sizeof line, "%.9g,%.7g,%.7g,%u", static_cast<double>(i) / p.rate, static_cast<double>(p.x[i]),
                  static_cast<double>(p.y[i]), unsigned{p.m[i]});
    text += line;
    if (!p.rgb.empty()) {
      std::snprintf(line, sizeof line, ",%06X", p.rgb[i]);
      text += line;
    }
    text += '\n';
  }
  return text;
}

// As the library's ExportFile() writes it, which does not tell whether it could.
std::string PointFile(const Pattern& p) {
  std::string text = "sps " + std::to_string(p.rate) + "\n";
  for (std::size_t i = 0; i < p.size(); ++i) {
    zrv::AppendFloat(text, p.x[i]);
    text += ' ';
    zrv::AppendFloat(text, p.y[i]);
    text += ' ' + std::to_string(p.m[i]) + '\n';
  }
  return text;
}

[[noreturn]] void RefuseToWrite(const std::string& name, int reason) {
  throw ToolError("cannot write " + name + ": " + std::generic_category().message(reason));
}

}  // namespace

std::string DefaultFontFile() {
  return FirstThatExists({BesideProgram("share/zrv/hershey.font"), ZRV_INSTALLED_FONT_FILE, ZRV_BUILT_FONT_FILE});
}

void UseDefinitionsFile() {
  const std::string file =
      FirstThatExists({"ZRVDefinitions.h", BesideProgram("include/ZRVDefinitions.h"),
                       ZRV_INSTALLED_INCLUDE_DIR "/ZRVDefinitions.h", ZRV_SOURCE_INCLUDE_DIR "/ZRVDefinitions.h"});
  if (file.empty())
    throw ToolError(
        "cannot find ZRVDefinitions.h, which names the values in parameter files.\n"
        "Copy it from the library's include folder into this one.");
  ZRVDevice::SetDefinitionsFile(file.c_str());
}

void WriteBytes(const std::string& name, std::span<const std::uint8_t> bytes) {
  errno = 0;
  if (!zrv::WriteWholeFile(name.c_str(), bytes)) RefuseToWrite(name, errno);
}

void CheckWritable(const std::string& name) {
  std::error_code ignored;
  const bool isNew = !std::filesystem::exists(name, ignored);
  errno = 0;
  if (!std::ofstream(name, std::ios::app)) RefuseToWrite(name, errno);
  if (isNew) std::filesystem::remove(name, ignored);
}

void WritePattern(const std::string& name, const Pattern& pattern) {
  WriteBytes(name, zrv::AsBytes(IsCsv(name) ? Csv(pattern) : PointFile(pattern)));
}

}  // namespace zrvtool
