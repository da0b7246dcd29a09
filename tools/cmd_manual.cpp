// zrv manual: the manual page zrv(1), from the tables by which commands, patterns and parameters are declared.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

#include "ZRVDevice.h"
#include "commands.h"
#include "help.h"
#include "parameters.h"
#include "pattern_options.h"

namespace zrvtool {
namespace {

// Text as roff takes it: hyphens as they are, and no line that begins like a request.
std::string Escaped(const std::string& text) {
  std::string out;
  for (char c : text) {
    if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n')) out += "\\&";
    if (c == '\\') out += "\\e";
    else if (c == '-') out += "\\-";
    else out += c;
  }
  return out;
}

void Section(const char* name) { std::printf(".SH %s\n", name); }
// Text, of which empty lines make paragraphs.
void Paragraph(const std::string& text) {
  const std::size_t end = text.find("\n\n");
  std::printf(".PP\n%s\n", Escaped(text.substr(0, end)).c_str());
  if (end != std::string::npos) Paragraph(text.substr(end + 2));
}
void Line(const std::string& text) { std::printf("%s\n", Escaped(text).c_str()); }

void Item(const std::string& head, const std::string& text) {
  std::printf(".TP\n.B %s\n%s\n", Escaped(head).c_str(), Escaped(text).c_str());
}

// Lines as they stand, indented.
void Verbatim(const std::vector<std::string>& lines) {
  std::printf(".PP\n.RS 4\n.nf\n");
  for (const std::string& line : lines) Line(line);
  std::printf(".fi\n.RE\n");
}

std::string HeadOf(const CLI::Option& option) {
  std::string names;
  for (const std::string& name : option.get_snames()) names += "-" + name + ", ";
  for (const std::string& name : option.get_lnames()) names += "--" + name;
  const std::string value = ValueName(option);
  return names + (value.empty() ? "" : " " + value);
}

void Options(const CLI::App& command, const std::string& group) {
  for (const CLI::Option* option : command.get_options())
    if (option->nonpositional() && option->get_group() == group && option != command.get_help_ptr())
      Item(HeadOf(*option), FullDescription(*option));
}

void Arguments(const CLI::App& command) {
  for (const CLI::Option* option : command.get_options([](const CLI::Option* o) { return o->get_positional(); }))
    Item(HelpFormatter().make_option_name(option, true), FullDescription(*option));
}

std::vector<const CLI::App*> CommandsOf(const CLI::App& command) {
  return command.get_subcommands([](const CLI::App*) { return true; });
}

bool MakesPatterns(const CLI::App& command) {
  const auto inGroup = [](const CLI::Option* option) { return option->get_group() == kPatternOptions; };
  return !command.get_options(inGroup).empty();
}

void Command(const CLI::App& command) {
  std::printf(".SS %s\n", Escaped(UsageOf(command)).c_str());
  const HelpTexts texts = TextsOf(command);
  Line(command.get_description() + ".");
  if (!texts.more.empty()) Paragraph(texts.more);
  if (MakesPatterns(command)) Paragraph("KIND and its options are described under PATTERNS.");
  Arguments(command);
  Options(command, "Options");
  Verbatim(texts.examples);
  if (!MakesPatterns(command))
    for (const CLI::App* sub : CommandsOf(command)) Command(*sub);
}

void Patterns(const CLI::App& generate) {
  Section("PATTERNS");
  Line(
      "The kinds of patterns, the same for zrv generate and zrv play, and the options of each. Options that every kind "
      "takes follow.");
  std::string group;
  for (const CLI::App* kind : CommandsOf(generate)) {
    if (kind->get_group() != group) std::printf(".SS %s\n", Escaped(group = kind->get_group()).c_str());
    Item(kind->get_name(), kind->get_description() + ".");
    std::printf(".RS\n");
    Arguments(*kind);
    Options(*kind, "Options");
    std::printf(".RE\n");
  }
  std::printf(".SS %s\n", Escaped(kPatternOptions).c_str());
  Options(generate, kPatternOptions);
}

void ParameterTable() {
  Section("PARAMETERS");
  Line("Of a controller, as zrv get and zrv set name them. Values that have names are given by name or number.");
  for (const ParameterRow& row : Parameters()) {
    const std::string names = NamesOfValues(row, ", ");
    std::string text = row.help;
    if (*row.unit) text += std::string(", ") + row.unit;
    if (!names.empty()) text += ": " + names;
    Item(row.name, text + (row.writable ? "." : ". It can only be read."));
  }
}

struct Entry {
  const char* head;
  const char* text;
};

template <std::size_t N>
void Entries(const char* section, const Entry (&entries)[N]) {
  Section(section);
  for (const Entry& entry : entries) Item(entry.head, entry.text);
}

constexpr Entry kExitStatuses[] = {
    {"0", "The command did its work."},
    {"1",
     "It failed: no controller answered, a file could not be read or written, a value was refused by the controller. "
     "Standard error says what was tried, what went wrong and what to do."},
    {"2", "It was called wrongly: a missing argument, an unknown option, a value out of its range. Nothing was done."},
};
constexpr Entry kFiles[] = {
    {"/dev/ttyUSB*, /dev/ttyACM*, /dev/rfcomm*, /dev/ttyS*",
     "Where controllers are looked for, in this order. Most systems let members of a group such as dialout open them."},
    {"share/zrv/hershey.font", "The vector fonts that came with zrv; zrv font list names them."},
    {"include/ZRVDefinitions.h", "Names the values in parameter files. One in the working directory comes first."},
};

void Page(const CLI::App& app) {
  std::printf(".TH ZRV 1 \"%s\" \"zrv %s\" \"User Commands\"\n", ZRV_MANUAL_DATE, ZRVDevice::GetAPIVersion());
  Section("NAME");
  Line("zrv - drive a MEMS-mirror scanning controller, make scans, simulate a controller");
  Section("SYNOPSIS");
  Line(UsageOf(app));
  Section("DESCRIPTION");
  Line(app.get_description());
  Paragraph(
      "PORT is a name that zrv list shows (ttyUSB0), a path (/dev/ttyUSB0), or auto for the first controller found. "
      "Connecting centres the mirror and switches the laser modulation off, so every command on a port, but for list, "
      "ends what was left playing there. A port serves one program at a time.");
  Paragraph("Progress shows on a terminal only; in a pipe there are just the results.");
  Section("OPTIONS");
  Line("These may stand anywhere on the line.");
  Options(app, "Options");
  Item("-h, --help", "Explain the command that it stands with.");
  Section("COMMANDS");
  for (const CLI::App* command : CommandsOf(app)) Command(*command);
  Patterns(*app.get_subcommand("generate"));
  ParameterTable();
  Entries("EXIT STATUS", kExitStatuses);
  Section("ENVIRONMENT");
  Line("zrv reads no environment variables of its own.");
  Entries("FILES", kFiles);
  Section("EXAMPLES");
  Line("A first look without hardware, then with a simulated controller that answers to a second terminal:");
  Verbatim({"zrv demo", "zrv simulate --port-dir /tmp/zrv-ports", "zrv --port-dir /tmp/zrv-ports play auto rose"});
  Line("A controller: find it, set it up, play on it, stop what plays:");
  Verbatim({"zrv list", "zrv set auto SampleRate 40000", "zrv play auto lissajous --freq-x 3 --freq-y 4 --detach",
            "zrv stop auto"});
  Line("Any content through files:");
  Verbatim({"zrv generate text Hello --font 2 -o hello.txt --preview hello.png",
            "zrv filter hello.txt soft.txt --filter bessel:5:1000", "zrv play auto points soft.txt"});
}

}  // namespace

void AddManualCommand(CLI::App& app) {
  CLI::App* command = AddCommand(app, "manual", "Print the manual page", {"zrv manual | man -l -", "man zrv"});
  command->callback([&app] { Page(app); });
}

}  // namespace zrvtool
