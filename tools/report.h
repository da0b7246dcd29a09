// Facts as commands report them: lines for a person, or JSON for a program (--json).
#ifndef ZRV_TOOLS_REPORT_H
#define ZRV_TOOLS_REPORT_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace zrvtool {

using Json = nlohmann::ordered_json;

// The number that a person reads, 0.1 and not 0.10000000149.
double Exact(float value);

// Prints it and a line end. Bytes that are not UTF-8 become U+FFFD, numbers that are not finite null. indent -1: in
// one line.
void PrintJson(const Json& json, int indent = 2);

// 20000, "samples/s": "20000 samples/s".
std::string WithUnit(double value, const char* unit);

class Report {
 public:
  // A line "label  text", and members of the object.
  void Add(const std::string& label, const std::string& text, const Json& members);

  // A number under a key with its unit, such as "bias_v".
  void AddNumber(const std::string& label, const Json& value, const char* unit, const char* key);

  // A line that stands alone, and members.
  void AddTitle(const std::string& text, const Json& members);

  // What follows stands under this title, in an object of that key.
  void Begin(const std::string& title, const char* key);

  void Print(bool asJson) const;

 private:
  std::string text_;
  Json json_ = Json::object();
  std::string section_;
};

}  // namespace zrvtool

#endif
