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

// A name of its own in each process, so that several can run side by side. The file lives as long as the object.
class InputFile {
 public:
  explicit InputFile(std::span<const uint8_t> bytes, const char* ending = "") : path_(Stem() + ending) {
    if (!zrv::WriteWholeFile(Path(), bytes)) std::abort();
  }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  const char* Path() const { return path_.c_str(); }

 private:
  static const std::string& Stem() {
    static const std::string stem =
        (std::filesystem::temp_directory_path() / ("zrv-fuzz-" + std::to_string(std::random_device()()))).string();
    return stem;
  }
  std::string path_;
};

}  // namespace zrv_fuzz

#endif
