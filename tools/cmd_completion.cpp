// zrv completion: scripts by which shells complete zrv's command line, which stand in completion/. A script knows
// nothing of the commands: it asks the zrv that stands on the line.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <utility>

#include "commands.h"
#include "embedded.h"
#include "options.h"

namespace zrvtool {
namespace {

const std::pair<const char*, std::string_view> kShells[] = {
    {"bash", kBashCompletion}, {"zsh", kZshCompletion}, {"fish", kFishCompletion}};

constexpr char kShellNames[] = "bash|zsh|fish";

void PrintScript(const std::string& shell) {
  for (const auto& [name, script] : kShells) {
    if (shell == name) std::fwrite(script.data(), 1, script.size(), stdout);
  }
}

}  // namespace

void AddCompletionCommand(CLI::App& app) {
  auto shell = std::make_shared<std::string>();
  CLI::App* command = AddCommand(app, "completion", "Print a script that makes a shell complete zrv's command line",
                                 {"zrv completion bash >~/.local/share/bash-completion/completions/zrv",
                                  "source <(zrv completion zsh)", "zrv completion fish | source"},
                                 "An installed zrv brings the scripts along; shells find them by themselves.");
  command->add_option("shell", *shell, "which one")
      ->required()
      ->type_name(kShellNames)
      ->check(Valid({.name = "", .type = OptionType::Choice, .initial = "", .help = "", .choices = kShellNames}));
  command->callback([shell] { PrintScript(*shell); });
}

}  // namespace zrvtool
