// zrv: drives a scanning controller, makes and shows scans, and stands in for a controller.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "ZRVDevice.h"
#include "commands.h"
#include "errors.h"

namespace zrvtool {
namespace {

constexpr int kFailed = 1, kWrongUse = 2;

const char kFooter[] =
    "First steps without hardware:\n"
    "  zrv demo                      a simulated controller, from start to picture\n"
    "  zrv simulate                  a simulated controller for the commands below, in another terminal\n"
    "First steps with a controller:\n"
    "  zrv list                      which controllers are there?\n"
    "  zrv play auto lissajous       play on the first one found; Ctrl-C stops\n"
    "Each command explains itself: zrv play --help";

void AddCommands(CLI::App& app, const std::string& portDirectory) {
  AddDeviceCommands(app);
  AddPlayCommand(app);
  AddParameterCommands(app);
  AddParameterFileCommands(app);
  AddSensingCommands(app);
  AddGenerateCommand(app);
  AddFilterCommand(app);
  AddSimulateCommand(app, portDirectory);
  AddDemoCommand(app);
  AddFontCommand(app);
  AddGalleryCommand(app);
}

// The port directory takes effect while the line is read, before the command runs: wherever it stands.
void AddGlobalOptions(CLI::App& app, std::string& portDirectory) {
  app.set_version_flag("--version", std::string("zrv ") + ZRVDevice::GetAPIVersion());
  app.add_option_function<std::string>(
         "--port-dir",
         [&portDirectory](const std::string& directory) {
           portDirectory = directory;
           ZRVSerialIO::SetPortDirectory(directory.c_str());
         },
         "where serial ports are looked for (simulate: where its port appears); not on Windows")
      ->type_name("DIR")
      ->trigger_on_parse();
}

// CLI11 only says that a subcommand is missing, also where a word stands in its place.
int Explain(const CLI::App& app, const CLI::ParseError& e) {
  const std::vector<std::string> words = app.remaining(true);
  if (dynamic_cast<const CLI::RequiredError*>(&e) && !words.empty()) {
    std::fprintf(stderr, "zrv: there is nothing called %s here; --help shows what there is\n", words.front().c_str());
    return kWrongUse;
  }
  return app.exit(e) == 0 ? 0 : kWrongUse;
}

int Run(int argc, char** argv) {
  if (argc > 0) ProgramName() = argv[0];
  CLI::App app("Drives a MEMS-mirror scanning controller, makes the scans it plays, and simulates one.", "zrv");
  std::string portDirectory;
  AddGlobalOptions(app, portDirectory);
  AddCommands(app, portDirectory);
  app.require_subcommand(1);
  app.footer(kFooter);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return Explain(app, e);
  }
  return 0;
}

}  // namespace

std::string& ProgramName() {
  static std::string name = "zrv";
  return name;
}

CLI::App* AddCommand(CLI::App& app, const std::string& name, const std::string& help, const std::string& example,
                     const std::string& more) {
  CLI::App* command = app.add_subcommand(name, help);
  command->footer("Example: " + example + (more.empty() ? "" : "\n\n" + more));
  command->fallthrough();  // options of the levels above may follow
  return command;
}

}  // namespace zrvtool

int main(int argc, char** argv) {
  try {
    return zrvtool::Run(argc, argv);
  } catch (const std::exception& e) {
    std::fflush(stdout);
    std::fprintf(stderr, "zrv: %s\n", e.what());
    return dynamic_cast<const zrvtool::WrongUse*>(&e) ? zrvtool::kWrongUse : zrvtool::kFailed;
  }
}
