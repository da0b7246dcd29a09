// The reader of named numbers. The first byte of the input gives the length of the key that follows it.
#include "common/files.h"
#include "generator/point_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text = zrv::AsText({data, size});
  const size_t length = text.empty() ? 0 : static_cast<size_t>(data[0]) % text.size();
  zrv::ReadParameter(text, text.substr(text.empty() ? 0 : 1, length), 1.0f);
  return 0;
}
