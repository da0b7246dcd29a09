// Files made by tests.
#ifndef ZRV_TESTS_GENERATOR_CONTENT_FILES_H
#define ZRV_TESTS_GENERATOR_CONTENT_FILES_H

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "common/files.h"

namespace zrv_test {

using Bytes = std::vector<uint8_t>;

inline Bytes& operator+=(Bytes& to, const Bytes& more) {
  to.insert(to.end(), more.begin(), more.end());
  return to;
}

inline Bytes FromText(const std::string& text) { return {text.begin(), text.end()}; }

inline Bytes BigEndian(std::initializer_list<int> words) {
  Bytes bytes;
  for (const int word : words) bytes += {static_cast<uint8_t>(word >> 8), static_cast<uint8_t>(word)};
  return bytes;
}

// Little-endian.
inline Bytes Words(std::initializer_list<int> words) {
  Bytes bytes;
  for (const int word : words) bytes += {static_cast<uint8_t>(word), static_cast<uint8_t>(word >> 8)};
  return bytes;
}

inline Bytes IldaSection(int format, int records, int totalFrames, const Bytes& body = {}) {
  Bytes bytes = FromText("ILDA");
  bytes += BigEndian({0, format});
  bytes += Bytes(16, ' ');  // names
  bytes += BigEndian({records, 0, totalFrames, 0});
  bytes += body;
  return bytes;
}

// A file that is there for as long as the object.
class TempFile {
 public:
  explicit TempFile(const Bytes& bytes) { EXPECT_TRUE(zrv::WriteWholeFile(Path(), bytes)); }
  explicit TempFile(const std::string& text) : TempFile(FromText(text)) {}
  ~TempFile() { std::filesystem::remove(path_); }
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  const char* Path() const { return path_.c_str(); }
  std::string Text() const {
    const auto bytes = zrv::ReadWholeFile(Path());
    return bytes ? std::string(zrv::AsText(*bytes)) : "(no file)";
  }

 private:
  const std::string path_ =
      (std::filesystem::temp_directory_path() / ("zrv-test-" + std::to_string(std::random_device()()))).string();
};

}  // namespace zrv_test

#endif
