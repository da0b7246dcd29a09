// Help about commands, from the tree in which they are declared: for --help and for the manual page.
#ifndef ZRV_TOOLS_HELP_H
#define ZRV_TOOLS_HELP_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace zrvtool {

// What follows the options in a command's help.
struct HelpTexts {
  std::vector<std::string> examples;
  std::string more;
};
HelpTexts TextsOf(const CLI::App& command);

// The command with those above it and the arguments that these must have: "zrv play PORT rose".
std::string PathOf(const CLI::App& command);

// "zrv play PORT rose [OPTIONS]".
std::string UsageOf(const CLI::App& command);

// What the value of an option is called: "COUNT", "FILE", "none|blank"; empty for a flag.
std::string ValueName(const CLI::Option& option);

// The description with range and default: "play so many times (1..32)".
std::string FullDescription(const CLI::Option& option);

// Lays out --help.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App* app, std::string name) const override;
  std::string make_option_name(const CLI::Option* option, bool isPositional) const override;
  std::string make_option_opts(const CLI::Option* option) const override;
  std::string make_option_desc(const CLI::Option* option) const override;
};

}  // namespace zrvtool

#endif
