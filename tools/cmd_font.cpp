// zrv font build, font list.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "commands.h"
#include "data_files.h"
#include "errors.h"
#include "font_builder.h"
#include "options.h"

namespace zrvtool {
namespace {

struct FontCommand {
  std::string directory = "/usr/share/hershey-fonts", output = "hershey.font";
};

void Build(const FontCommand& command) {
  std::string error;
  const std::vector<std::uint8_t> font = zrv::BuildDefaultFont(command.directory, error);
  if (font.empty())
    throw ToolError("cannot build a font file from " + command.directory + ": " + error +
                    ".\nThe .jhf files come with the package hershey-fonts-data.");
  WriteBytes(command.output, font);
  std::printf("%zu fonts, %zu bytes in %s\n", zrv::DefaultFonts().size(), font.size(), command.output.c_str());
}

void List() {
  int number = 0;
  for (const zrv::FontSource& font : zrv::DefaultFonts())
    std::printf("%2d  %-12s %s\n", number++, font.name, font.title);
}

}  // namespace

void AddFontCommand(CLI::App& app) {
  CLI::App* font = AddCommand(app, "font", "Vector fonts: list those of zrv, or build a font file",
                              {"zrv font list", "zrv font build -o my.font"});
  font->require_subcommand(1);
  AddCommand(*font, "list", "The fonts that came with zrv, by number", {"zrv font list"})->callback(List);
  auto options = std::make_shared<FontCommand>();
  CLI::App* build = AddCommand(*font, "build", "Build a font file from the public Hershey text files (.jhf)",
                               {"zrv font build /usr/share/hershey-fonts -o my.font"});
  build->add_option("directory", options->directory, "folder of the .jhf files")
      ->capture_default_str()
      ->type_name("DIR");
  AddFile(*build, "-o,--output", options->output, "font file to write");
  build->callback([options] { Build(*options); });
}

}  // namespace zrvtool
