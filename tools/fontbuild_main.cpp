// zrv-fontbuild DIRECTORY FONT LIST: makes the default font file from the .jhf files of a directory, and a list
// of its fonts for people.
#include <cstdio>
#include <string>

#include "common/files.h"
#include "tools/font_builder.h"

namespace {

constexpr const char* kAcknowledgement =
    "The Hershey Fonts were originally created by Dr. A. V. Hershey while working at the U. S. National Bureau\n"
    "of Standards.\n"
    "The format of the Font data in the distribution from which this font file was made was originally created by\n"
    "  James Hurt\n"
    "  Cognition, Inc.\n"
    "  900 Technology Park Drive\n"
    "  Billerica, MA 01821\n"
    "  (mit-eddie!ci-dandelion!hurt)\n"
    "\n"
    "The font data may be used by anyone for any purpose, commercial or otherwise, provided that these\n"
    "acknowledgements are distributed with it. It may be converted into any other format except the one\n"
    "distributed by the U.S. NTIS.\n"
    "\n"
    "The font file itself was made by a program of ZRV, copyright (c) 2026 The ZRV authors, under the MIT license.\n";

std::string FontList() {
  std::string text = std::string("Fonts of hershey.font\n\n") + kAcknowledgement + "\nNumber, name, title:\n";
  int number = 0;
  for (const zrv::FontSource& font : zrv::DefaultFonts()) {
    char line[96];
    std::snprintf(line, sizeof line, "%2d  %-12s %s\n", number++, font.name, font.title);
    text += line;
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: zrv-fontbuild DIRECTORY FONT LIST\n", stderr);
    return 2;
  }
  std::string error;
  const auto font = zrv::BuildDefaultFont(argv[1], error);
  const bool written =
      !font.empty() && zrv::WriteWholeFile(argv[2], font) && zrv::WriteWholeFile(argv[3], zrv::AsBytes(FontList()));
  if (!written) std::fprintf(stderr, "zrv-fontbuild: %s\n", error.empty() ? "cannot write" : error.c_str());
  return written ? 0 : 1;
}
