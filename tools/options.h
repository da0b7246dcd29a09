// Options as every command declares them. What a value is called in help ("PORT", "FILE", "bash|zsh|fish") also says
// how a shell completes it (completion.cpp).
#ifndef ZRV_TOOLS_OPTIONS_H
#define ZRV_TOOLS_OPTIONS_H

#include <CLI/CLI.hpp>
#include <string>
#include <type_traits>

#include "values.h"

namespace zrvtool {

// Checks a value as the row says; its description is the range, "1..32", which help shows.
CLI::Validator Valid(const OptionRow& row);

// A number or, for whole targets, a count, which is stored in target. A target that is not 0 is the default.
template <typename T>
CLI::Option* AddNumber(CLI::App& command, const std::string& name, T& target, const std::string& help, double lowest,
                       double highest) {
  const OptionType type = std::is_integral_v<T> ? OptionType::Count : OptionType::Number;
  CLI::Option* option = command.add_option_function<std::string>(
      name, [&target, name](const std::string& text) { target = static_cast<T>(ParseNumber(text, name)); }, help);
  if (target != 0) option->default_str(ShortNumber(static_cast<double>(target)));
  return option->type_name(type == OptionType::Count ? "COUNT" : "NUMBER")
      ->check(Valid({.name = "", .type = type, .initial = "", .help = "", .lowest = lowest, .highest = highest}));
}

// The port argument of a command.
CLI::Option* AddPort(CLI::App& command, std::string& port);

// --json, for a command that reports something.
void AddJson(CLI::App& command, bool& json);

// The name of a file or folder to write or make, which is not looked for.
CLI::Option* AddFile(CLI::App& command, const std::string& name, std::string& file, const std::string& help);

// The name of a file that must exist.
CLI::Option* AddExistingFile(CLI::App& command, const std::string& name, std::string& file, const std::string& help);

}  // namespace zrvtool

#endif
