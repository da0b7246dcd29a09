#include "data_files.h"

#include <filesystem>
#include <initializer_list>

#include "ZRVDevice.h"
#include "errors.h"

namespace zrvtool {
namespace {

std::string FirstThatExists(std::initializer_list<const char*> names) {
  for (const char* name : names)
    if (std::error_code ignored; std::filesystem::is_regular_file(name, ignored)) return name;
  return {};
}

}  // namespace

std::string DefaultFontFile() { return FirstThatExists({ZRV_INSTALLED_FONT_FILE, ZRV_BUILT_FONT_FILE}); }

void UseDefinitionsFile() {
  const std::string file =
      FirstThatExists({"ZRVDefinitions.h", ZRV_INSTALLED_INCLUDE_DIR "/ZRVDefinitions.h",
                       ZRV_SOURCE_INCLUDE_DIR "/ZRVDefinitions.h"});
  if (file.empty())
    throw ToolError("cannot find ZRVDefinitions.h, which names the values in parameter files.\n"
                    "Copy it from the library's include folder into this one.");
  ZRVDevice::SetDefinitionsFile(file.c_str());
}

}  // namespace zrvtool
