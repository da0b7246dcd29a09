// Bytes as text, for tests that give what passes the wire as it is.
#ifndef ZRV_TESTS_HEX_H
#define ZRV_TESTS_HEX_H

#include <cstdint>
#include <cstdio>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace zrv::testing {

using Bytes = std::vector<uint8_t>;

inline Bytes FromHex(const std::string& text) {
  std::istringstream in(text);
  Bytes bytes;
  for (unsigned byte = 0; in >> std::hex >> byte;) bytes.push_back(static_cast<uint8_t>(byte));
  return bytes;
}

inline std::string ToHex(std::span<const uint8_t> bytes) {
  std::string text;
  for (const unsigned byte : bytes) {
    char pair[4];
    std::snprintf(pair, sizeof pair, text.empty() ? "%02X" : " %02X", byte);
    text += pair;
  }
  return text;
}

}  // namespace zrv::testing

#endif
