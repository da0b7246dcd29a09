#include "completion.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>

#include "filter_choice.h"
#include "help.h"
#include "parameters.h"
#include "values.h"

namespace zrvtool {
namespace {

// Names that zrv list would ask, without asking: a question from zrv would restart some boards that are no controllers.
// The on-board ports (ttyS) are left out; a machine shows thirty-two of them and has none.
std::vector<std::string> PortsIn(const std::string& folder) {
  std::vector<std::string> ports;
  std::error_code failed;
  for (std::filesystem::directory_iterator at(folder, failed), end; !failed && at != end; at.increment(failed)) {
    const std::string name = at->path().filename().string();
    if (name.starts_with("ttyUSB") || name.starts_with("ttyACM") || name.starts_with("rfcomm")) ports.push_back(name);
  }
  std::sort(ports.begin(), ports.end());
  return ports;
}

// Goes along the words as the command line is read, up to the one at the cursor.
class Walk {
 public:
  explicit Walk(const CLI::App& app) : command_(&app) {}

  void Take(const std::string& word) {
    if (awaiting_) {
      given_[awaiting_] = word;
      awaiting_ = nullptr;
    } else if (IsOption(word)) {
      TakeOption(word);
    } else if (const CLI::App* next = onlyArguments_ ? nullptr : FindCommand(word)) {
      command_ = next;
      arguments_.clear();
    } else {
      arguments_.push_back(word);
    }
  }

  Completion At(const std::string& word) const {
    Completion result;
    const std::size_t equals = word.find('=');
    if (awaiting_) {
      OfferValues(ValueName(*awaiting_), word, "", result);
    } else if (IsOption(word) && equals != std::string::npos) {
      if (const CLI::Option* option = FindOption(word.substr(0, equals)))
        OfferValues(ValueName(*option), word.substr(equals + 1), word.substr(0, equals + 1), result);
    } else if (word.starts_with('-') && !onlyArguments_) {
      OfferOptions(result);
    } else {
      OfferArguments(word, result);
    }
    return result;
  }

 private:
  // "-0.5" is none; "-" alone neither.
  bool IsOption(const std::string& word) const {
    return !onlyArguments_ && word.size() > 1 && word[0] == '-' && word[1] != '.' && (word[1] < '0' || word[1] > '9');
  }

  const CLI::App* FindCommand(const std::string& word) const {
    const auto found = command_->get_subcommands([&](const CLI::App* c) { return c->get_name() == word; });
    return found.empty() ? nullptr : found.front();
  }

  const CLI::Option* FindOption(const std::string& name) const {
    for (const CLI::App* c = command_; c; c = c->get_parent())
      if (const CLI::Option* option = c->get_option_no_throw(name)) return option;
    return nullptr;
  }

  void TakeOption(const std::string& word) {
    if (word == "--") onlyArguments_ = true;
    const std::size_t equals = word.find('=');
    const CLI::Option* option = FindOption(word.substr(0, equals));
    if (!option) return;
    given_[option] = equals == std::string::npos ? "" : word.substr(equals + 1);
    if (equals == std::string::npos && option->get_type_size() != 0) awaiting_ = option;
  }

  // Those of the command and of the levels above that were not given; where two have the same name, the nearer one.
  void OfferOptions(Completion& result) const {
    std::set<std::string> names;
    for (const CLI::App* c = command_; c; c = c->get_parent())
      for (const CLI::Option* option : c->get_options([](const CLI::Option* o) { return o->nonpositional(); }))
        if (!option->get_lnames().empty() && names.insert(option->get_lnames().front()).second &&
            !given_.contains(option))
          result.candidates.push_back({"--" + option->get_lnames().front(), option->get_description()});
  }

  void OfferArguments(const std::string& word, Completion& result) const {
    const auto expected = command_->get_options([](const CLI::Option* o) { return o->get_positional(); });
    const CLI::Option* next = arguments_.size() < expected.size() ? expected[arguments_.size()] : nullptr;
    if (next) OfferValues(ValueName(*next), word, "", result);
    if (next && next->get_required()) return;
    const auto commands = command_->get_subcommands([](const CLI::App*) { return true; });
    for (const CLI::App* c : commands) result.candidates.push_back({c->get_name(), c->get_description()});
    if (!next && commands.empty() && !onlyArguments_) OfferOptions(result);
  }

  // valueName: names in capitals stand for something that is looked up here, or for something free ("NUMBER"); others
  // for themselves. before: what the word has ahead of the value, "--profile=".
  void OfferValues(const std::string& valueName, const std::string& value, const std::string& before,
                   Completion& result) const {
    const auto offer = [&](const std::string& word, const char* help = "") {
      result.candidates.push_back({before + word, help});
    };
    for (const std::string& name : Split(valueName, '|')) {
      if (name == "FILE" || (name == "FILTER" && value.starts_with("file:"))) result.files = true;
      else if (name == "DIR") result.folders = true;
      else if (name == "PORT") OfferPorts(offer);
      else if (name == "PARAMETER")
        for (const ParameterRow& row : Parameters()) offer(row.name, row.unit);
      else if (name == "VALUE") OfferParameterValues(offer);
      else if (name == "FILTER")
        for (const std::string& family : Split(FilterFamilies("|") + "|file", '|')) offer(family + ":");
      else if (!name.empty() && (name[0] < 'A' || name[0] > 'Z')) offer(name);
    }
  }

  template <typename Offer>
  void OfferPorts(Offer offer) const {
    const auto folder = given_.find(FindOption("--port-dir"));
    for (const std::string& port : PortsIn(folder == given_.end() ? "/dev" : folder->second)) offer(port);
    offer("auto", "the first controller found");
  }

  // Those of the parameter before it.
  template <typename Offer>
  void OfferParameterValues(Offer offer) const {
    for (const ParameterRow& row : Parameters())
      if (row.type && !arguments_.empty() && arguments_.back() == row.name)
        for (const std::string& name : Split(NamesOfValues(row, "|"), '|')) offer(name);
  }

  const CLI::App* command_;
  const CLI::Option* awaiting_ = nullptr;  // whose value the next word is
  bool onlyArguments_ = false;             // after "--"
  std::vector<std::string> arguments_;     // of the command, so far
  std::map<const CLI::Option*, std::string> given_;
};

}  // namespace

Completion Complete(const CLI::App& app, const std::vector<std::string>& words) {
  Walk walk(app);
  if (words.empty()) return walk.At("");
  std::for_each(words.begin(), words.end() - 1, [&](const std::string& word) { walk.Take(word); });
  return walk.At(words.back());
}

void PrintCompletion(const CLI::App& app, const std::vector<std::string>& words) {
  const Completion completion = Complete(app, words);
  for (const Candidate& c : completion.candidates) std::printf("%s\t%s\n", c.word.c_str(), c.help.c_str());
  if (completion.files) std::printf(":files\n");
  if (completion.folders) std::printf(":folders\n");
}

}  // namespace zrvtool
