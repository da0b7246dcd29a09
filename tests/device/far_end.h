// The far end of the serial line that transport tests open: a pseudo-terminal's other side on Linux, the second
// port of a null-modem pair on Windows.
#ifndef ZRV_TESTS_DEVICE_FAR_END_H
#define ZRV_TESTS_DEVICE_FAR_END_H

#include <cstddef>
#include <memory>
#include <string>

namespace zrv::testing {

class FarEnd {
 public:
  FarEnd();
  ~FarEnd();
  FarEnd(const FarEnd&) = delete;
  FarEnd& operator=(const FarEnd&) = delete;

  // Where the port under test is; empty when this machine has no line to test on.
  const std::string& path() const { return path_; }
  void Send(const std::string& bytes);
  // Up to count bytes; fewer when nothing comes for a second.
  std::string Receive(size_t count);
  // Unplugs the line (Linux only).
  void HangUp();

 private:
  struct Line;
  std::unique_ptr<Line> line_;
  std::string path_;
};

// Wine differs from Windows in three ways that tests see: an empty read in return-at-once mode waits until its
// time-out instead of completing with 0 bytes; a port that is open can be opened again; and the name of a port
// that was unplugged still opens, though as no serial port.
bool RunsUnderWine();

}  // namespace zrv::testing

#endif
