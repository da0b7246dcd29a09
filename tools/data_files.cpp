#include "data_files.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>

#include "ZRVDataGenerator.h"
#include "ZRVDevice.h"
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

void WriteCsv(std::ostream& out, const Pattern& p) {
  out << (p.rgb.empty() ? "time_s,x,y,m\n" : "time_s,x,y,m,rgb\n");
  char line[120];
  for (std::size_t i = 0; i < p.size(); ++i) {
    std::snprintf(line, sizeof line, "%.9g,%.7g,%.7g,%u", static_cast<double>(i) / p.rate,
                  static_cast<double>(p.x[i]), static_cast<double>(p.y[i]), unsigned{p.m[i]});
    out << line;
    if (!p.rgb.empty()) {
      std::snprintf(line, sizeof line, ",%06X", p.rgb[i]);
      out << line;
    }
    out << '\n';
  }
}

// The library does not tell whether it could write.
void WritePointFile(const std::string& name, Pattern p) {
  ZRVDataGenerator generator;
  const auto count = static_cast<unsigned int>(p.size());
  generator.ExportFile(name.c_str(), p.x.data(), p.y.data(), p.m.data(), count, p.rate);
  if (std::error_code ignored; std::filesystem::is_regular_file(name, ignored) &&
                               generator.LoadPointFile(name.c_str()) != count)
    throw ToolError("could not write all of " + name + ": is the disk full?");
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
    throw ToolError("cannot find ZRVDefinitions.h, which names the values in parameter files.\n"
                    "Copy it from the library's include folder into this one.");
  ZRVDevice::SetDefinitionsFile(file.c_str());
}

void WritePattern(const std::string& name, const Pattern& pattern) {
  std::ofstream out(name);
  if (!out) throw ToolError("cannot write " + name + ": check that its folder exists and may be written to");
  if (!IsCsv(name)) return WritePointFile(name, pattern);
  WriteCsv(out, pattern);
  if (!out.flush()) throw ToolError("could not write all of " + name + ": is the disk full?");
}

}  // namespace zrvtool
