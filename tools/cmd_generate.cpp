// zrv generate: a pattern into a file, and a picture of it.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "commands.h"
#include "data_files.h"
#include "errors.h"
#include "options.h"
#include "pattern_options.h"
#include "picture.h"
#include "session.h"

namespace zrvtool {
namespace {

struct GenerateOptions {
  std::string output, preview, title;
  bool dots = false, light = false;
  int size = 900;
};

void Preview(const std::string& kind, const GenerateOptions& options, const Pattern& pattern) {
  ScanStyle style;
  style.title = options.title.empty() ? kind : options.title;
  style.caption = Describe(pattern);
  style.dots = options.dots;
  style.size = options.size;
  style.theme = options.light ? Theme::Light : Theme::Dark;
  DrawScan(options.preview, pattern, style);
}

void Generate(const PatternChoice& choice, const GenerateOptions& options) {
  if (options.output.empty() && options.preview.empty())
    throw WrongUse("nothing to write to: add -o FILE for the samples, --preview FILE for a picture, or both");
  if (!options.preview.empty()) CheckPictureFile(options.preview);
  const Pattern pattern = choice.Make();
  if (!options.output.empty()) WritePattern(options.output, pattern);
  if (!options.preview.empty()) Preview(choice.kind->name, options, pattern);
  std::printf("%s: %s\n", choice.kind->name, Describe(pattern).c_str());
  if (!options.output.empty()) std::printf("samples in %s\n", options.output.c_str());
  if (!options.preview.empty()) std::printf("picture in %s\n", options.preview.c_str());
}

}  // namespace

void AddGenerateCommand(CLI::App& app) {
  auto options = std::make_shared<GenerateOptions>();
  CLI::App* command =
      AddCommand(app, "generate", "Make a pattern: samples into a file, a picture, or both",
                 {"zrv generate lissajous --freq-x 3 --freq-y 4 -o figure.txt --preview figure.png"},
                 "A point file is what zrv play PORT points FILE plays: a line \"sps RATE\", then x y m a line.");
  AddFile(*command, "-o,--output", options->output, "samples: a table when the name ends in .csv, else a point file");
  AddFile(*command, "--preview", options->preview, "picture, PNG or SVG by the ending of its name");
  command->add_option("--title", options->title, "title of the picture");
  AddNumber(*command, "--size", options->size, "width of the picture, pixels", 64, 8000);
  command->add_flag("--dots", options->dots, "mark each sample in the picture");
  command->add_flag("--light", options->light, "picture on white, for print");
  auto choice = AddPatternKinds(*command, "zrv generate", " -o pattern.txt --preview pattern.png");
  command->callback([choice, options] { Generate(*choice, *options); });
}

}  // namespace zrvtool
