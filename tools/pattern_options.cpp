#include "pattern_options.h"

#include <CLI/CLI.hpp>

#include "commands.h"
#include "errors.h"

namespace zrvtool {
namespace {

const char* TypeName(const OptionRow& row) {
  switch (row.type) {
    case OptionType::Number: return "NUMBER";
    case OptionType::Count: return "COUNT";
    case OptionType::Choice: return row.choices;
    case OptionType::File:
    case OptionType::FileArgument: return "FILE";
    default: return "TEXT";
  }
}

CLI::Option* AddValue(CLI::App& command, const OptionRow& row, std::string& text) {
  const bool positional = row.type == OptionType::Argument || row.type == OptionType::FileArgument;
  CLI::Option* option = command.add_option((positional ? "" : "--") + std::string(row.name), text, row.help);
  if (positional && *row.initial == '\0') option->required();
  if (*row.initial != '\0') option->default_str(row.initial);
  option->type_name(TypeName(row));
  option->check([row](const std::string& given) { return Complaint(row, given); });
  if (row.type == OptionType::File || row.type == OptionType::FileArgument) option->check(CLI::ExistingFile);
  return option;
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
      command.add_flag_callback("--" + std::string(row.name), [&text] { text = "1"; }, row.help);
    else
      AddValue(command, row, text);
  }
}

std::shared_ptr<PatternChoice> AddPatternKinds(CLI::App& command, const std::string& usage) {
  auto choice = std::make_shared<PatternChoice>();
  AddOptions(command, CommonOptions(), choice->common);
  for (const Kind& kind : Kinds()) {
    choice->own.push_back(std::make_unique<Values>());
    Values* values = choice->own.back().get();
    CLI::App* sub = AddCommand(command, kind.name, kind.help, usage + " " + kind.example,
                               "Options for every kind (samples, rate, transform, ...): " + usage + " --help");
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
