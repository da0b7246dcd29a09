// Named option values: what a kind of pattern can be told, from the command line or from code.
#ifndef ZRV_TOOLS_VALUES_H
#define ZRV_TOOLS_VALUES_H

#include <map>
#include <string>
#include <vector>

namespace zrvtool {

enum class OptionType {
  Number,
  Count,
  Flag,
  Choice,
  Text,
  File,
  Argument,
  FileArgument
};

// One option: a row of the table that the command line, its help and the pattern makers share.
struct OptionRow {
  const char* name;
  OptionType type;
  const char* initial;  // text of the value when it is not given
  const char* help;
  double lowest = 0, highest = 0;  // of numbers and counts
  const char* choices = "";        // "none|blank|retrace"; of a text: what its value is called
};

// Empty when the text is a good value for the row, else what is wrong with it.
std::string Complaint(const OptionRow& row, const std::string& text);

// The words between separators: Split("a|b", '|') gives a, b.
std::vector<std::string> Split(const std::string& text, char separator);

// A number that takes up the whole text; throws ToolError with the given name otherwise.
double ParseNumber(const std::string& text, const std::string& what);

// At most ten digits, and no more than it takes: "0.1", "1000000".
std::string ShortNumber(double value);

// The values of a set of rows. Asking for a name that no row declared is a mistake of the program
// (std::out_of_range).
class Values {
 public:
  void Declare(const std::vector<OptionRow>& rows);

  // Takes over every row and value of another set; those of the same name are replaced.
  void Merge(const Values& other);

  // Throws ToolError when the text is not a good value for the row.
  void Set(const std::string& name, const std::string& text);

  // Where the command line stores the text.
  std::string& Storage(const std::string& name) { return texts_.at(name); }

  const std::string& Text(const std::string& name) const { return texts_.at(name); }
  double Number(const std::string& name) const;
  float Float(const std::string& name) const { return static_cast<float>(Number(name)); }
  unsigned int Count(const std::string& name) const { return static_cast<unsigned int>(Number(name)); }
  int Integer(const std::string& name) const { return static_cast<int>(Number(name)); }
  bool Flag(const std::string& name) const { return Text(name) == "1"; }
  // Degrees on the command line, radians in the library.
  float Angle(const std::string& name) const;
  // Which of the row's choices the text is.
  unsigned int Choice(const std::string& name) const;

 private:
  std::map<std::string, std::string> texts_;
  std::map<std::string, OptionRow> rows_;
};

}  // namespace zrvtool

#endif
