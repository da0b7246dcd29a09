// zrv: drives a scanning controller, makes and shows scans, and stands in for a controller.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <system_error>

#include "ZRVDevice.h"
#include "commands.h"
#include "completion.h"
#include "errors.h"
#include "help.h"
#include "terminal.h"

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
  AddCompletionCommand(app);
  AddManualCommand(app);
}

// The port directory takes effect while the line is read, before the command runs: wherever it stands.
void AddGlobalOptions(CLI::App& app, std::string& portDirectory) {
  app.set_version_flag("--version", std::string("zrv ") + ZRVDevice::GetAPIVersion(), "show the version");
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

// The command that the line got to.
const CLI::App& Reached(const CLI::App& app) {
  const std::vector<CLI::App*> parsed = app.get_subcommands();
  return parsed.empty() ? app : Reached(*parsed.front());
}

// CLI11 only says that a subcommand is missing, also where a word stands in its place.
std::string Complaint(const CLI::App& app, const CLI::App& reached, const CLI::ParseError& e) {
  const bool missing = dynamic_cast<const CLI::RequiredError*>(&e) && reached.get_require_subcommand_min() > 0;
  const std::vector<std::string> words = app.remaining(true);
  if (missing && !words.empty()) return "there is nothing called " + words.front() + " here";
  if (missing && std::string(e.what()).find("ubcommand") != std::string::npos)
    return reached.get_formatter()->get_label("SUBCOMMAND") + " is missing";
  return e.what();
}

int Explain(const CLI::App& app, const CLI::ParseError& e) {
  if (e.get_exit_code() == 0) return app.exit(e);  // --help, --version
  const CLI::App& reached = Reached(app);
  std::fprintf(stderr, "zrv: %s\nusage: %s\nMore: %s --help\n", Complaint(app, reached, e).c_str(),
               UsageOf(reached).c_str(), PathOf(reached).c_str());
  return kWrongUse;
}

// What was printed may still have to be written. A reader that left a pipe is no failure.
void CheckOutput() {
  if ((std::fflush(stdout) != 0 || std::ferror(stdout) != 0) && !StopRequested())
    throw ToolError("cannot write the output: " + std::generic_category().message(errno));
}

int Run(int argc, char** argv) {
  if (argc > 0) ProgramName() = argv[0];
  CLI::App app("Drives a MEMS-mirror scanning controller, makes the scans it plays, and simulates one.", "zrv");
  const auto formatter = std::make_shared<HelpFormatter>();
  formatter->label("SUBCOMMAND", "COMMAND");
  app.formatter(formatter);
  app.set_help_flag("-h,--help", "show this help");
  std::string portDirectory;
  AddGlobalOptions(app, portDirectory);
  AddCommands(app, portDirectory);
  app.require_subcommand(1);
  app.footer(kFooter);
  if (argc > 1 && argv[1] == std::string(kCompleteWord)) {
    PrintCompletion(app, {argv + 2, argv + argc});
    return 0;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return Explain(app, e);
  }
  CheckOutput();
  return 0;
}

}  // namespace

std::string& ProgramName() {
  static std::string name = "zrv";
  return name;
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
