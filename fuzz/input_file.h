// The fuzzer's bytes as a file, for what is loaded by name.
#ifndef ZRV_FUZZ_INPUT_FILE_H
#define ZRV_FUZZ_INPUT_FILE_H

#include <cstdlib>
#include <filesystem>
#include <random>
#include <span>
#include <string>

#include "common/files.h"

namespace zrv_fuzz {

class InputFile {
 public:
  explicit InputFile(std::span<const uint8_t> bytes) {
    if (!zrv::WriteWholeFile(Path(), bytes)) std::abort();
  }
  const char* Path() const { return path().c_str(); }

 private:
  static const std::string& path() {
    static const Name name;
    return name.path;
  }
  struct Name {  // one a process, so that several can run side by side
    std::string path =
        (std::filesystem::temp_directory_path() / ("zrv-fuzz-" + std::to_string(std::random_device()()))).string();
    ~Name() { std::filesystem::remove(path); }
  };
};

}  // namespace zrv_fuzz

#endif
