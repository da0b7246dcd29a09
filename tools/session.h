// A connection to a controller as the commands use it: failures become errors that say what was tried, what
// the controller library called it and what to do next.
#ifndef ZRV_TOOLS_SESSION_H
#define ZRV_TOOLS_SESSION_H

#include <string>

#include "ZRVDevice.h"
#include "pattern.h"

namespace zrvtool {

// Throws ToolError when the device's last call failed. tried completes "could not ...".
void Check(const ZRVDevice& device, const std::string& tried);

// Connects to the port, or to the first controller found when the name is "auto". Throws when there is no controller;
// what comes next may have failed: to centre the mirror and switch the laser off.
void TryToConnect(ZRVDevice& device, const std::string& port);

// The same, and throws then too.
void Connect(ZRVDevice& device, const std::string& port);

struct PlayOptions {
  int repeat = 0;          // times, 1..32; 0: without end
  double seconds = 0;      // at most so long; 0: no limit
  unsigned int delay = 0;  // samples by which the digital byte lags
  bool minimizeJump = false;
  bool laser = true;  // the laser modulation and digital outputs are switched on
};

// Sets the sample rate, loads the pattern with its colours and starts it.
void StartPlaying(ZRVDevice& device, const Pattern& pattern, const PlayOptions& options);

// Waits for the end of the pattern, of the time or for Ctrl-C, showing progress on a terminal. Throws when
// the controller is lost on the way.
void WatchPlaying(ZRVDevice& device, const Pattern& pattern, const PlayOptions& options);

// Stops and switches the laser off. Throws, with what is left to do by hand, when that cannot be made sure of.
void StopPlaying(ZRVDevice& device);

// Has a command that lights or drives something leave the laser off, whatever happens, unless it ends well. It is also
// left off after an interruption once CatchStopSignals() was called.
class LaserGuard {
 public:
  explicit LaserGuard(ZRVDevice& device) : device_(device) {}
  ~LaserGuard();
  LaserGuard(const LaserGuard&) = delete;
  LaserGuard& operator=(const LaserGuard&) = delete;
  void Release() { armed_ = false; }
  // The command ended well, and what it lit stays on. Throws when it was interrupted meanwhile.
  void LeaveOn();

 private:
  ZRVDevice& device_;
  bool armed_ = true;
};

// "2000 samples, 20000 samples/s, 0.1 s".
std::string Describe(const Pattern& pattern);

}  // namespace zrvtool

#endif
