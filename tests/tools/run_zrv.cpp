#include "run_zrv.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace zrvtool::test {
namespace {

double Now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

}  // namespace

Outcome Zrv(const std::string& arguments) {
  std::istringstream words(arguments);
  return Background({std::istream_iterator<std::string>(words), {}}).Finish(120);
}

Outcome Shell(const std::string& command) { return Background({"-c", command}, "/bin/sh").Finish(120); }

Background::Background(std::vector<std::string> arguments, std::string program) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("pipe");
  std::vector<char*> argv = {program.data()};
  for (std::string& word : arguments) argv.push_back(word.data());
  argv.push_back(nullptr);
  pid_ = fork();
  if (pid_ == 0) {
    dup2(ends[1], 1);
    dup2(ends[1], 2);
    close(ends[0]);
    close(ends[1]);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(ends[1]);
  fcntl(ends[0], F_SETFD, FD_CLOEXEC);
  pipe_ = ends[0];
}

Background::~Background() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  close(pipe_);
}

bool Background::ReadSome(double seconds) {
  pollfd descriptor = {pipe_, POLLIN, 0};
  if (poll(&descriptor, 1, static_cast<int>(seconds * 1000)) <= 0) return false;
  char buffer[4096];
  const ssize_t n = read(pipe_, buffer, sizeof buffer);
  if (n > 0) output_.append(buffer, static_cast<std::size_t>(n));
  return n > 0;
}

bool Background::WaitFor(const std::string& text) {
  constexpr double kLongEnough = 20;
  const double end = Now() + kLongEnough;
  while (output_.find(text) == std::string::npos)
    if (Now() >= end || !ReadSome(end - Now())) return false;
  return true;
}

void Background::Signal(int signal) { kill(pid_, signal); }

Outcome Background::Finish(double seconds) {
  const double end = Now() + seconds;
  while (Now() < end && ReadSome(end - Now())) {
  }
  Outcome outcome;
  for (int status = 0; Now() < end; usleep(10000)) {
    if (waitpid(pid_, &status, WNOHANG) != pid_) continue;
    pid_ = -1;
    if (WIFEXITED(status)) outcome.status = WEXITSTATUS(status);
    break;
  }
  outcome.output = output_;
  return outcome;
}

Folder::Folder() {
  std::string name = (std::filesystem::temp_directory_path() / "zrv-test-XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::runtime_error("mkdtemp");
  path_ = name;
}

Folder::~Folder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string Folder::In(std::string text) const {
  for (std::size_t at; (at = text.find("FOLDER")) != std::string::npos;) text.replace(at, 6, Path());
  return text;
}

std::string ReadText(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void WriteText(const std::string& file, const std::string& text) { std::ofstream(file, std::ios::binary) << text; }

}  // namespace zrvtool::test
