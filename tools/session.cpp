#include "session.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

#include "ZRVFlatInterface.h"
#include "errors.h"
#include "terminal.h"

namespace zrvtool {
namespace {

// Stops and switches off, and tries until it works: on a link that is sound again two calls fail at most. The
// parameters are read first, for after an acknowledgement that was lost the record may say off while the laser is on,
// and switching it off would send nothing. When they cannot be read, what may still help is sent all the same. Returns
// how the last try ended.
ZRVError StopAndSwitchOff(ZRVDevice& device) {
  constexpr int kTries = 3;
  constexpr std::chrono::milliseconds kUnderWay{50};
  ZRVError worst = ErrorNone;
  const auto note = [&] { worst = std::max(worst, device.GetLastError()); };
  for (int tries = 1; tries <= kTries; ++tries) {
    worst = ErrorNone;
    device.StopDataStream();
    note();
    ZRVDeviceParams params;
    device.GetDeviceParams(&params);
    note();
    for (const ZRVParam param : {ParamLaserModulationEnable, ParamDigitalOutputEnable}) {
      if (params.ParamsValid == 0 && tries < kTries) break;
      device.SetDeviceParam(param, 0);
      note();
    }
    if (worst == ErrorNone) break;
    std::this_thread::sleep_for(kUnderWay);  // what is under way for a call that failed comes, and is dropped
    device.SendSerialReset();
  }
  return worst;
}

// The parameter as it is now: its value, or throws.
unsigned int Setting(ZRVDevice& device, ZRVParam param, const char* what) {
  const float value = device.GetDeviceParam(param);
  Check(device, std::string("read ") + what);
  return static_cast<unsigned int>(value);
}

void Switch(ZRVDevice& device, ZRVParam param, bool on, const char* what) {
  device.SetDeviceParam(param, on ? 1.0f : 0.0f);
  Check(device, std::string("switch ") + (on ? "on " : "off ") + what);
}

void SetRate(ZRVDevice& device, unsigned int rate) {
  device.SetDeviceParam(ParamSampleRate, static_cast<float>(rate));
  Check(device, "set the sample rate");
  const unsigned int got = Setting(device, ParamSampleRate, "the sample rate");
  if (got != rate)
    std::fprintf(stderr, "zrv: the controller plays at %u samples per second, not %u: its limit\n", got, rate);
}

// What the controller can hold.
unsigned int Capacity(ZRVDevice& device) {
  ZRVDeviceParams params;
  device.GetDeviceParams(&params);
  Check(device, "read the controller's limits");
  return params.SampleBufferCapacity;
}

void SendPattern(ZRVDevice& device, const Pattern& pattern, const PlayOptions& options) {
  std::vector<float> x = pattern.x, y = pattern.y;
  std::vector<unsigned char> m = pattern.m;
  std::vector<unsigned int> rgb = pattern.rgb;
  if (rgb.empty()) device.SetRGBData(0xFFFFFFu, 0);
  else device.SetRGBData(rgb.data(), static_cast<unsigned int>(rgb.size()));
  device.SendDataStream(x.data(), y.data(), m.data(), static_cast<unsigned int>(x.size()), options.delay,
                        options.minimizeJump);
  Check(device, "send the pattern");
}

std::string Progress(double elapsed, double share, bool endless) {
  char text[160];
  if (endless) std::snprintf(text, sizeof text, "playing, %.1f s (Ctrl-C stops)", elapsed);
  else std::snprintf(text, sizeof text, "playing %s %3.0f %%, %.1f s", Bar(share, 30).c_str(), 100 * share, elapsed);
  return text;
}

// True after a failure that the controller got over. Throws when it is gone.
bool Failed(ZRVDevice& device) {
  const ZRVError error = device.GetLastError();
  if (error == ErrorNone) return false;
  if (device.IsDeviceResponding()) return true;
  throw ToolError(std::string("lost the controller while playing: ") + ZRVGetErrorText(error) +
                  ".\nWas it unplugged, switched off or stopped? See what is there with: zrv list");
}

}  // namespace

void Check(const ZRVDevice& device, const std::string& tried) {
  const ZRVError error = device.GetLastError();
  if (error == ErrorNone) return;
  throw ToolError("could not " + tried + ": " + ZRVGetErrorText(error) + ".");
}

void TryToConnect(ZRVDevice& device, const std::string& port) {
  StatusLine status;
  status.Show(port == "auto" ? "looking for a controller ..." : "connecting to " + port + " ...");
  if (port == "auto") device.ConnectDevice();
  else device.ConnectDevice(port.c_str());
  if (!device.IsDeviceConnected()) Check(device, port == "auto" ? "connect to a controller" : "connect to " + port);
}

void Connect(ZRVDevice& device, const std::string& port) {
  TryToConnect(device, port);
  LaserGuard guard(device);
  Check(device, "centre the mirror and switch the laser off");
  guard.Release();
}

void StartPlaying(ZRVDevice& device, const Pattern& pattern, const PlayOptions& options) {
  const unsigned int capacity = Capacity(device);
  if (pattern.size() > capacity)
    throw ToolError("the pattern has " + std::to_string(pattern.size()) + " samples, but the controller holds " +
                    std::to_string(capacity) + ".\nMake it shorter, with fewer --samples or frames.");
  SetRate(device, pattern.rate);
  SendPattern(device, pattern, options);
  Switch(device, ParamMEMSDriverEnable, true, "the mirror driver");
  Switch(device, ParamDigitalOutputEnable, options.laser, "the digital outputs");
  Switch(device, ParamLaserModulationEnable, options.laser, "the laser modulation");
  device.StartDataStream(options.repeat > 0 ? options.repeat : -1, false);
  Check(device, "start playing");
}

void WatchPlaying(ZRVDevice& device, const Pattern& pattern, const PlayOptions& options) {
  constexpr std::chrono::milliseconds kPoll{100};
  const bool endless = options.repeat == 0;
  const double whole = static_cast<double>(pattern.size()) * (endless ? 1 : options.repeat);
  const StopWatch watch;
  StatusLine status;
  do {
    const bool running = device.IsDeviceRunning();
    if (Failed(device)) continue;
    if (!running && !endless) return;
    if (!running) throw ToolError("the controller stopped playing by itself. Was it stopped by another program?");
    double share = 0;
    if (!endless) {
      share = 1 - device.GetSamplesRemaining() / whole;
      if (Failed(device)) continue;
    }
    status.Show(Progress(watch.Seconds(), share, endless));
  } while (WaitWithin(options.seconds, watch, kPoll));
}

void StopPlaying(ZRVDevice& device) {
  const ZRVError error = StopAndSwitchOff(device);
  if (error == ErrorNone) return;
  throw ToolError(std::string("could not make sure that it stopped and the laser is off: ") + ZRVGetErrorText(error) +
                  ".\nSwitch the laser off by hand; when the controller answers again: zrv stop PORT.");
}

void LaserGuard::LeaveOn() {
  if (StopRequested()) throw ToolError("interrupted");
  Release();
}

LaserGuard::~LaserGuard() {
  if (!armed_ || !device_.IsDeviceConnected()) return;
  try {
    StopPlaying(device_);
  } catch (const ToolError& error) {
    std::fprintf(stderr, "zrv: %s\n", error.what());
  }
}

std::string Describe(const Pattern& pattern) {
  char text[120];
  std::snprintf(text, sizeof text, "%zu samples, %u samples/s, %.4g s", pattern.size(), pattern.rate,
                static_cast<double>(pattern.size()) / pattern.rate);
  return text;
}

}  // namespace zrvtool
