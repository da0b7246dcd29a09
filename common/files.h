// Files in one read or write.
#ifndef ZRV_COMMON_FILES_H
#define ZRV_COMMON_FILES_H

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace zrv {

// The size of a regular file. Empty when there is no such file, or when the path names something whose size says
// nothing about what reading it would bring (a directory, device or pipe).
inline std::optional<uintmax_t> SizeOfFile(const char* path) {
  std::error_code failed;
  if (path == nullptr || !std::filesystem::is_regular_file(path, failed) || failed) return std::nullopt;
  const auto size = std::filesystem::file_size(path, failed);
  if (failed) return std::nullopt;
  return size;
}

// The first bytes of a regular file, all of them when it has no more than maxBytes. Empty when it cannot be read.
inline std::optional<std::vector<uint8_t>> ReadStartOfFile(const char* path, size_t maxBytes) {
  const auto size = SizeOfFile(path);
  if (!size) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;

  std::vector<uint8_t> bytes(static_cast<size_t>(std::min<uintmax_t>(*size, maxBytes)));
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<size_t>(file.gcount()));  // shorter when someone else has cut it meanwhile
  return bytes;
}

// The bytes of a regular file. Empty also when it is larger than maxBytes.
inline std::optional<std::vector<uint8_t>> ReadWholeFile(const char* path, size_t maxBytes = SIZE_MAX) {
  const auto size = SizeOfFile(path);
  if (!size || *size > maxBytes) return std::nullopt;
  return ReadStartOfFile(path, maxBytes);
}

// Replaces the file's content. False when it cannot be written whole.
inline bool WriteWholeFile(const char* path, std::span<const uint8_t> bytes) {
  if (path == nullptr) return false;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  return !file.fail();
}

inline std::span<const uint8_t> AsBytes(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

inline std::string_view AsText(std::span<const uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace zrv

#endif
