#include "options.h"

namespace zrvtool {
namespace {

bool IsNumber(OptionType type) { return type == OptionType::Number || type == OptionType::Count; }

// CLI11's own check under a name of its own, which help does not repeat.
CLI::Validator Existing() {
  return {[](std::string& file) { return CLI::ExistingFile(file); }, ""};
}

}  // namespace

CLI::Validator Valid(const OptionRow& row) {
  const std::string range = IsNumber(row.type) ? ShortNumber(row.lowest) + ".." + ShortNumber(row.highest) : "";
  return {[row](std::string& text) { return Complaint(row, text); }, range};
}

CLI::Option* AddPort(CLI::App& command, std::string& port) {
  return command.add_option("port", port, "port of the controller, or auto for the first one found")
      ->required()
      ->type_name("PORT");
}

void AddJson(CLI::App& command, bool& json) {
  command.add_flag("--json", json, "print JSON, for programs; errors stay text on standard error");
}

CLI::Option* AddFile(CLI::App& command, const std::string& name, std::string& file, const std::string& help) {
  CLI::Option* option = command.add_option(name, file, help)->type_name("FILE");
  return file.empty() ? option : option->capture_default_str();
}

CLI::Option* AddExistingFile(CLI::App& command, const std::string& name, std::string& file, const std::string& help) {
  return AddFile(command, name, file, help)->check(Existing());
}

}  // namespace zrvtool
