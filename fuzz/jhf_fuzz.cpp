// Hershey text files: what is read must make a font file that loads.
#include <cstdlib>

#include "common/files.h"
#include "generator/hershey_font.h"
#include "tools/font_builder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto glyphs = zrv::ReadJhf(zrv::AsText({data, size}));
  if (!glyphs) return 0;
  zrv::FontBuilder builder;
  builder.AddFont(*glyphs);
  builder.AddSymbols(*glyphs);
  builder.AddOriental(*glyphs);
  const auto file = builder.Build();
  if (zrv::DecodeHersheyFont(file).oriental.Size() != (file.empty() ? 0 : glyphs->size())) std::abort();
  return 0;
}
