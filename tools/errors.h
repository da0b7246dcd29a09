// Failures of the tool: thrown where they are noticed, printed once in main.
#ifndef ZRV_TOOLS_ERRORS_H
#define ZRV_TOOLS_ERRORS_H

#include <stdexcept>
#include <string>

namespace zrvtool {

// What was tried, what went wrong and what to do next, in one text for the user.
class ToolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The command was called wrongly: no attempt was made.
class WrongUse : public ToolError {
 public:
  using ToolError::ToolError;
};

}  // namespace zrvtool

#endif
