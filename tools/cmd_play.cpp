// zrv play: a pattern on a controller.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "commands.h"
#include "errors.h"
#include "options.h"
#include "pattern_options.h"
#include "session.h"
#include "terminal.h"

namespace zrvtool {
namespace {

struct PlayCommand {
  std::string port;
  PlayOptions options;
  bool dark = false, detach = false;
};

const char* FormatNote(ZRVDevice& device, const Pattern& pattern) {
  constexpr float kFirstColourFormat = 2, kLastColourFormat = 4;
  const float format = device.GetDeviceParam(ParamSyncState);
  const bool colours = format >= kFirstColourFormat && format <= kLastColourFormat;
  return pattern.rgb.empty() || colours ? "" : "; its colours are left out, for the controller takes none";
}

void Play(const PatternChoice& choice, PlayCommand& command) {
  command.options.laser = !command.dark;
  const Pattern pattern = choice.Make();
  ZRVDevice device;
  Connect(device, command.port);
  CatchStopSignals();  // so far nothing has to be stopped
  LaserGuard guard(device);
  StartPlaying(device, pattern, command.options);
  std::printf("playing %s: %s%s\n", choice.kind->name, Describe(pattern).c_str(), FormatNote(device, pattern));
  std::fflush(stdout);
  if (command.detach) {
    guard.LeaveOn();
    std::printf("the controller goes on by itself; stop it with: zrv stop %s\n", command.port.c_str());
    return;
  }
  WatchPlaying(device, pattern, command.options);
  guard.Release();
  StopPlaying(device);
  std::printf("stopped\n");
}

}  // namespace

void AddPlayCommand(CLI::App& app) {
  auto play = std::make_shared<PlayCommand>();
  CLI::App* command = AddCommand(
      app, "play", "Play a pattern on a controller, until Ctrl-C", {"zrv play ttyUSB0 rose --repeat 10"},
      "Plays without end unless --repeat or --seconds is given; Ctrl-C stops the mirror, switches the laser\n"
      "off and disconnects. PORT is a name that zrv list shows, a path, or auto for the first one found.");
  AddPort(*command, play->port);
  AddNumber(*command, "--repeat", play->options.repeat, "play so many times, then stop", 1, 32);
  AddNumber(*command, "--seconds", play->options.seconds, "stop after so many seconds", 0.001, 1e9);
  AddNumber(*command, "--delay", play->options.delay, "samples by which the laser lags the mirror", 0, 1000000);
  command->add_flag("--minimize-jump", play->options.minimizeJump, "begin at the sample nearest to the mirror");
  command->add_flag("--dark", play->dark, "leave the laser and digital outputs off");
  command->add_flag("--detach", play->detach, "leave it playing and return at once");
  auto choice = AddPatternKinds(*command, "zrv play ttyUSB0", "");
  command->callback([choice, play] { Play(*choice, *play); });
}

}  // namespace zrvtool
