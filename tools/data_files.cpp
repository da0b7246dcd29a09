#include "data_files.h"

#include <filesystem>
#include <initializer_list>

namespace zrvtool {
namespace {

std::string FirstThatExists(std::initializer_list<const char*> names) {
  for (const char* name : names)
    if (std::error_code ignored; std::filesystem::is_regular_file(name, ignored)) return name;
  return {};
}

}  // namespace

std::string DefaultFontFile() { return FirstThatExists({ZRV_INSTALLED_FONT_FILE, ZRV_BUILT_FONT_FILE}); }

}  // namespace zrvtool
