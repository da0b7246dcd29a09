#include "help.h"

#include <algorithm>

#include "commands.h"
#include "values.h"

namespace zrvtool {
namespace {

constexpr const char kExample[] = "Example: ", kNextExample[] = "         ";

std::string Upper(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

std::string ArgumentsOf(const CLI::App& command, bool optionalToo) {
  std::string text;
  for (const CLI::Option* option : command.get_options([](const CLI::Option* o) { return o->get_positional(); })) {
    const std::string name = Upper(option->get_name(true));
    if (option->get_required()) text += " " + name;
    else if (optionalToo) text += " [" + name + "]";
  }
  return text;
}

// Type name and range, which CLI11 joins with a colon.
std::vector<std::string> TypeOf(const CLI::Option& option) {
  std::vector<std::string> parts = Split(option.get_type_name(), ':');
  parts.resize(2);
  return parts;
}

}  // namespace

std::string PathOf(const CLI::App& command) {
  const CLI::App* above = command.get_parent();
  return (above ? PathOf(*above) + ArgumentsOf(*above, false) + " " : "") + command.get_name();
}

CLI::App* AddCommand(CLI::App& app, const std::string& name, const std::string& help,
                     const std::vector<std::string>& examples, const std::string& more) {
  CLI::App* command = app.add_subcommand(name, help);
  std::string footer;
  for (const std::string& example : examples)
    footer += (footer.empty() ? kExample : '\n' + std::string(kNextExample)) + example;
  command->footer(footer + (more.empty() ? "" : "\n\n" + more));
  command->group("Commands");
  command->fallthrough();  // options of the levels above may follow
  return command;
}

HelpTexts TextsOf(const CLI::App& command) {
  const std::string footer = command.get_footer();
  const std::size_t end = std::min(footer.find("\n\n"), footer.size());
  HelpTexts texts;
  for (const std::string& line : Split(footer.substr(0, end), '\n'))
    texts.examples.push_back(line.substr(std::min(line.size(), sizeof kExample - 1)));
  if (end < footer.size()) texts.more = footer.substr(end + 2);
  return texts;
}

std::string UsageOf(const CLI::App& command) {
  std::string text = PathOf(command) + ArgumentsOf(command, true);
  if (command.get_require_subcommand_min() > 0) text += " " + command.get_formatter()->get_label("SUBCOMMAND");
  return text + " [OPTIONS]";
}

std::string ValueName(const CLI::Option& option) {
  return option.get_type_size() == 0 ? std::string() : TypeOf(option)[0];
}

std::string FullDescription(const CLI::Option& option) {
  std::string notes = option.get_type_size() == 0 ? std::string() : TypeOf(option)[1];
  if (!option.get_positional() && option.get_required()) notes += (notes.empty() ? "" : "; ") + std::string("required");
  if (!option.get_default_str().empty()) notes += (notes.empty() ? "" : "; ") + ("default " + option.get_default_str());
  return option.get_description() + (notes.empty() ? "" : " (" + notes + ")");
}

std::string HelpFormatter::make_usage(const CLI::App* app, std::string) const {
  return "Usage: " + UsageOf(*app) + "\n";
}

std::string HelpFormatter::make_option_name(const CLI::Option* option, bool isPositional) const {
  return isPositional ? Upper(option->get_name(true)) : CLI::Formatter::make_option_name(option, false);
}

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
  const std::string name = ValueName(*option);
  return name.empty() || option->get_positional() ? std::string() : " " + name;
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const { return FullDescription(*option); }

}  // namespace zrvtool
