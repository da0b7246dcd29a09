// The kinds of patterns as subcommands: zrv generate KIND, zrv play PORT KIND.
#ifndef ZRV_TOOLS_PATTERN_OPTIONS_H
#define ZRV_TOOLS_PATTERN_OPTIONS_H

#include <memory>
#include <string>
#include <vector>

#include "kinds.h"

namespace CLI {
class App;
}

namespace zrvtool {

// What was chosen on the command line; lives as long as the commands do.
struct PatternChoice {
  const Kind* kind = nullptr;
  Values common;
  std::vector<std::unique_ptr<Values>> own;  // a set of values a kind
  Values* chosen = nullptr;

  // The pattern that was asked for.
  Pattern Make() const;
};

// Adds the options of the rows to a command.
void AddOptions(CLI::App& command, const std::vector<OptionRow>& rows, Values& values);

// Heading of the options that every kind understands.
inline constexpr char kPatternOptions[] = "Options of every pattern";

// Adds a subcommand a kind and the common options. Examples are what stands before a kind, an example of the kind, and
// what goes after it.
std::shared_ptr<PatternChoice> AddPatternKinds(CLI::App& command, const std::string& before, const std::string& after);

}  // namespace zrvtool

#endif
