// Files made by tests: bytes put together by hand, mistreated in every way a loader has to survive.
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

// Calls use(bytes) with the file cut to every length, and with every bit flipped.
template <typename Use>
void Mistreat(const Bytes& good, Use use) {
  for (size_t length = 0; length < good.size(); ++length) use(Bytes(good.data(), good.data() + length));
  for (size_t bit = 0; bit < good.size() * 8; ++bit) {
    Bytes flipped = good;
    flipped[bit / 8] = static_cast<uint8_t>(flipped[bit / 8] ^ (1u << (bit % 8)));
    use(flipped);
  }
}

}  // namespace zrv_test

#endif
