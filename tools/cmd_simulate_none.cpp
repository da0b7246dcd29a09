// zrv simulate on systems without pseudo-terminals: says so.
#include <CLI/CLI.hpp>

#include "commands.h"
#include "errors.h"

namespace zrvtool {

void AddSimulateCommand(CLI::App& app, const std::string&) {
  AddCommand(app, "simulate", "Run a simulated controller (not on this system)", {"zrv simulate"})->callback([] {
    throw ToolError(
        "a simulated controller needs a pseudo-terminal, which this system does not have.\n"
        "Run it on Linux, or see what it does here with: zrv demo");
  });
}

}  // namespace zrvtool
