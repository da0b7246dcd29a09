// Runs the built zrv as a user would.
#ifndef ZRV_TESTS_TOOLS_RUN_ZRV_H
#define ZRV_TESTS_TOOLS_RUN_ZRV_H

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace zrvtool::test {

struct Outcome {
  int status = -1;     // exit status; -1 when it died or did not end in time
  std::string output;  // standard output and errors together
};

// A command of the shell.
Outcome Shell(const std::string& command);

// zrv with these arguments, separated by spaces.
Outcome Zrv(const std::string& arguments);

// zrv, or another program, running beside the test; killed with the object.
class Background {
 public:
  explicit Background(std::vector<std::string> arguments, std::string program = ZRV_TOOL_FILE);
  ~Background();
  Background(const Background&) = delete;
  Background& operator=(const Background&) = delete;

  // Reads its output until the text is in it; false when it ends or 20 s pass without.
  bool WaitFor(const std::string& text);
  void Signal(int signal);
  // Waits for its end.
  Outcome Finish(double seconds);

 private:
  bool ReadSome(double seconds);
  pid_t pid_ = -1;
  int pipe_ = -1;
  std::string output_;
};

// A directory that is gone after the test.
class Folder {
 public:
  Folder();
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  std::string File(const std::string& name) const { return (path_ / name).string(); }
  std::string Path() const { return path_.string(); }
  // With the path in place of FOLDER.
  std::string In(std::string text) const;

 private:
  std::filesystem::path path_;
};

std::string ReadText(const std::string& file);
void WriteText(const std::string& file, const std::string& text);

}  // namespace zrvtool::test

#endif
