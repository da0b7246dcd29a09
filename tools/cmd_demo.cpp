// zrv demo: a simulated controller from start to picture.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>

#include "commands.h"
#include "demo_controller.h"
#include "errors.h"
#include "kinds.h"
#include "mirror_path.h"
#include "picture.h"
#include "session.h"
#include "terminal.h"

namespace zrvtool {
namespace {

struct DemoOptions {
  std::string directory = ".";
  bool memory = !kHasPseudoTerminals;
};

// Slow enough for the simulated mirror and its filter to follow.
Pattern DemoPattern() {
  return MakePattern("hypotrochoid", {{"ring-a", "10"}, {"ring-b", "3"}, {"pen", "6"}, {"samples", "3000"}});
}

void DrawPictures(const std::string& sentName, const std::string& drawnName, const Pattern& sent,
                  const Pattern& drawn) {
  ScanStyle style;
  style.title = "Sent: hypotrochoid 10:3";
  style.caption = Describe(sent);
  DrawScan(sentName, sent, style);
  style.title = "Drawn by the simulated mirror";
  style.caption = "last round of three; behind it, faintly, what was sent";
  style.ghost = &sent;
  style.mirror = true;
  DrawScan(drawnName, drawn, style);
}

void PrintNextSteps() {
  struct Step {
    const char* arguments;
    const char* effect;
  };
  const Step kOnTerminals[] = {{"simulate --port-dir /tmp/zrv-ports", "a controller to play with; leave it running"},
                               {"--port-dir /tmp/zrv-ports list", "in another terminal: find it"},
                               {"--port-dir /tmp/zrv-ports play auto rose", "and play on it; Ctrl-C stops"}};
  const Step kElsewhere[] = {{"list", "which controllers are there?"},
                             HasPictures() ? Step{"generate rose --preview rose.png", "a pattern and its picture"}
                                           : Step{"generate rose -o rose.csv", "a pattern as a table"},
                             {"play auto rose", "play on the first controller; Ctrl-C stops"}};
  std::printf("\nTry next:\n");
  for (const auto& step : kHasPseudoTerminals ? kOnTerminals : kElsewhere) {
    std::printf("  %s %-42s%s\n", ProgramName().c_str(), step.arguments, step.effect);
  }
}

void PlayAndWait(ZRVDevice& device, const Pattern& pattern) {
  constexpr int kRounds = 3;
  PlayOptions options;
  options.repeat = kRounds;
  StartPlaying(device, pattern, options);
  std::printf("Sent it and started playing it %d times\n", kRounds);
  WatchPlaying(device, pattern, options);
  std::printf(StopRequested() ? "Interrupted\n" : "Played to the end\n");
  StopPlaying(device);
  std::printf("Stopped at x %.3f, y %.3f\n", static_cast<double>(device.GetXStop()),
              static_cast<double>(device.GetYStop()));
}

void Demo(const DemoOptions& options) {
  CatchStopSignals();
  std::filesystem::create_directories(options.directory);
  const std::filesystem::path folder(options.directory);
  const std::string sentName = (folder / "zrv-demo-sent.png").string();
  const std::string drawnName = (folder / "zrv-demo-drawn.png").string();

  const std::unique_ptr<DemoController> controller = options.memory ? MakeMemoryController() : MakeTerminalController();
  ZRVDevice device;
  controller->Connect(device);
  const Pattern pattern = DemoPattern();
  std::printf("Generated a hypotrochoid: %s\n", Describe(pattern).c_str());
  controller->ForgetPath();
  PlayAndWait(device, pattern);
  const Pattern drawn = PatternOf(controller->Path(), pattern.size());
  device.DisconnectDevice();
  if (drawn.empty()) throw ToolError("the simulated mirror drew nothing");
  if (HasPictures()) {
    DrawPictures(sentName, drawnName, pattern, drawn);
    std::printf("\nPictures:\n  %s   what was sent\n  %s  what the mirror drew\n", sentName.c_str(), drawnName.c_str());
  } else {
    std::printf("The mirror drew %zu points; this build of zrv has no pictures to show them in\n", drawn.size());
  }
  PrintNextSteps();
}

}  // namespace

void AddDemoCommand(CLI::App& app) {
  auto options = std::make_shared<DemoOptions>();
  CLI::App* command = AddCommand(app, "demo", "Show everything once on a simulated controller", {"zrv demo"},
                                 "Leaves zrv-demo-sent.png and zrv-demo-drawn.png.");
  command->add_option("--output-dir", options->directory, "folder for the pictures")
      ->capture_default_str()
      ->type_name("DIR");
  command->add_flag("--memory", options->memory, "talk to the simulated controller through memory, not a port");
  command->callback([options] { Demo(*options); });
}

}  // namespace zrvtool
