#include "pattern_options.h"

#include <CLI/CLI.hpp>

#include "commands.h"
#include "help.h"
#include "options.h"

namespace zrvtool {
namespace {

const char* TypeName(const OptionRow& row) {
  switch (row.type) {
    case OptionType::Number: return "NUMBER";
    case OptionType::Count: return "COUNT";
    case OptionType::Choice: return row.choices;
    default: return *row.choices ? row.choices : "TEXT";
  }
}

void AddValue(CLI::App& command, const OptionRow& row, std::string& text) {
  const bool argument = row.type == OptionType::Argument || row.type == OptionType::FileArgument;
  const bool file = row.type == OptionType::File || row.type == OptionType::FileArgument;
  const std::string name = (argument ? "" : "--") + std::string(row.name);
  CLI::Option* option = file ? AddExistingFile(command, name, text, row.help)
                             : command.add_option(name, text, row.help)->type_name(TypeName(row))->check(Valid(row));
  if (argument && *row.initial == '\0') option->required();
  if (*row.initial != '\0') option->default_str(row.initial);
}

}  // namespace

Pattern PatternChoice::Make() const {
  Values values = common;
  values.Merge(*chosen);
  return MakePattern(*kind, values);
}

void AddOptions(CLI::App& command, const std::vector<OptionRow>& rows, Values& values) {
  values.Declare(rows);
  for (const OptionRow& row : rows) {
    std::string& text = values.Storage(row.name);
    if (row.type == OptionType::Flag)
      command.add_flag_callback(
          "--" + std::string(row.name), [&text] { text = "1"; }, row.help);
    else AddValue(command, row, text);
  }
}

std::shared_ptr<PatternChoice> AddPatternKinds(CLI::App& command, const std::string& before, const std::string& after) {
  auto choice = std::make_shared<PatternChoice>();
  command.option_defaults()->group(kPatternOptions);
  AddOptions(command, CommonOptions(), choice->common);
  command.option_defaults()->group("Options");
  const auto formatter = std::make_shared<HelpFormatter>();
  formatter->label("SUBCOMMAND", "KIND");
  command.formatter(formatter);
  for (const Kind& kind : Kinds()) {
    choice->own.push_back(std::make_unique<Values>());
    Values* values = choice->own.back().get();
    CLI::App* sub = AddCommand(command, kind.name, kind.help, {before + " " + kind.example + after},
                               "Options for every kind (samples, rate, transform, ...): " + before + " --help");
    sub->group(kind.group);
    AddOptions(*sub, kind.options, *values);
    sub->callback([choice = choice.get(), &kind, values] {
      choice->kind = &kind;
      choice->chosen = values;
    });
  }
  command.require_subcommand(1);
  return choice;
}

}  // namespace zrvtool
