// What a shell may offer for the word at the cursor, found in the tree in which the commands are declared.
#ifndef ZRV_TOOLS_COMPLETION_H
#define ZRV_TOOLS_COMPLETION_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace zrvtool {

struct Candidate {
  std::string word, help;
};

struct Completion {
  std::vector<Candidate> candidates;  // not only those that begin like the word: some shells look further
  bool files = false, folders = false;
};

// words: those after the program's name, the last being the one at the cursor, perhaps empty.
Completion Complete(const CLI::App& app, const std::vector<std::string>& words);

// The word by which the scripts of the shells ask: zrv __complete WORD... prints a candidate a line, a tab and what it
// means, or :files, :folders.
inline constexpr char kCompleteWord[] = "__complete";
void PrintCompletion(const CLI::App& app, const std::vector<std::string>& words);

}  // namespace zrvtool

#endif
