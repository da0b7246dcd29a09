#include "session.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

#include "errors.h"
#include "terminal.h"

namespace zrvtool {
namespace {

struct ErrorText {
  ZRVError error;
  const char* name;
  const char* meaning;
  const char* advice;
};

constexpr ErrorText kErrors[] = {
    {ErrorNone, "ErrorNone", "success", ""},
    {ErrorNotConnected, "ErrorNotConnected", "no controller is connected", "List the controllers with: zrv list"},
    {ErrorSerialComm, "ErrorSerialComm", "the controller cannot be reached over its port",
     "Check that it is switched on, plugged in and not used by another program, then: zrv list"},
    {ErrorDeviceResponse, "ErrorDeviceResponse", "the controller did not answer in time",
     "Try again; if it stays silent, switch it off and on"},
    {ErrorSerialReset, "ErrorSerialReset", "the link could not be brought back in step",
     "Switch the controller off and on, then: zrv list"},
    {ErrorBadAcknowledge, "ErrorBadAcknowledge", "the answer is not that of a controller",
     "Check with zrv list that this is the controller's port"},
    {ErrorInvalidValue, "ErrorInvalidValue", "the value is outside its range", "See --help for the range"},
    {ErrorReadOnlyParam, "ErrorReadOnlyParam", "a value in it can only be read", "The other values were set"},
    {ErrorInvalidParam, "ErrorInvalidParam", "there is no such parameter", "See: zrv get --help"},
    {ErrorInvalidPortName, "ErrorInvalidPortName", "there is no serial port of that name",
     "Give a name like ttyUSB0 or /dev/ttyUSB0 (on Windows COM3); zrv list shows them"},
    {ErrorNoDeviceFound, "ErrorNoDeviceFound", "no controller was found there",
     "Check the cable, your right to open the port and that no other program has it;\n"
     "without hardware, run zrv simulate in another terminal"},
};

const ErrorText& TextOf(ZRVError error) {
  for (const ErrorText& text : kErrors)
    if (text.error == error) return text;
  static constexpr ErrorText kUnknown = {ErrorNone, "unknown error", "the library gave no reason", "Try again"};
  return kUnknown;
}

// Stops and switches off, and tries until it works: on a link that is sound again two calls fail at most. The parameters
// are read first, for after an acknowledgement that was lost the record may say off while the laser is on, and switching
// it off would send nothing. When they cannot be read, what may still help is sent all the same. Returns how the last
// try ended.
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
  if (rgb.empty())
    device.SetRGBData(0xFFFFFFu, 0);
  else
    device.SetRGBData(rgb.data(), static_cast<unsigned int>(rgb.size()));
  device.SendDataStream(x.data(), y.data(), m.data(), static_cast<unsigned int>(x.size()), options.delay,
                        options.minimizeJump);
  Check(device, "send the pattern");
}

std::string Progress(double elapsed, double share, bool endless) {
  char text[160];
  if (endless)
    std::snprintf(text, sizeof text, "playing, %.1f s (Ctrl-C stops)", elapsed);
  else
    std::snprintf(text, sizeof text, "playing %s %3.0f %%, %.1f s", Bar(share, 30).c_str(), 100 * share, elapsed);
  return text;
}

// True after a failure that the controller got over. Throws when it is gone.
bool Failed(ZRVDevice& device) {
  const ZRVError error = device.GetLastError();
  if (error == ErrorNone) return false;
  if (device.IsDeviceResponding()) return true;
  throw ToolError(std::string("lost the controller while playing: it no longer answers (") + TextOf(error).name +
                  ").\nWas it unplugged, switched off or stopped? See what is there with: zrv list");
}

}  // namespace

const char* NameOf(ZRVError error) { return TextOf(error).name; }

void Check(const ZRVDevice& device, const std::string& tried) {
  const ZRVError error = device.GetLastError();
  if (error == ErrorNone) return;
  const ErrorText& text = TextOf(error);
  throw ToolError("could not " + tried + ": " + text.meaning + " (" + text.name + ").\n" + text.advice + ".");
}

void TryToConnect(ZRVDevice& device, const std::string& port) {
  StatusLine status;
  status.Show(port == "auto" ? "looking for a controller ..." : "connecting to " + port + " ...");
  if (port == "auto")
    device.ConnectDevice();
  else
    device.ConnectDevice(port.c_str());
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
  const ErrorText& text = TextOf(error);
  throw ToolError(std::string("could not make sure that it stopped and the laser is off: ") + text.meaning + " (" +
                  text.name + ").\nSwitch the laser off by hand; when the controller answers again: zrv stop PORT.");
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
