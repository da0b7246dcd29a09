// zrv simulate: a controller on a pseudo-terminal, for anyone without hardware.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <optional>
#include <tuple>

#include "commands.h"
#include "errors.h"
#include "live_view.h"
#include "mirror_path.h"
#include "options.h"
#include "picture.h"
#include "simulator/pseudo_terminal.h"
#include "terminal.h"
#include "values.h"

namespace zrvtool {
namespace {

namespace sim = zrv::sim;

struct SimulateCommand {
  const std::string* portDirectory = nullptr;
  sim::Options options;
  sim::PortOptions port;
  std::string ai0 = "mirror-x:0:5", ai1 = "mirror-y:0:5", detector = "dc:0.5", picture;
  bool noFilter = false, noTracking = false;
  const CLI::Option* view = nullptr;
  std::uint16_t viewPort = 0;
};

sim::AnalogSignal::Shape ShapeIn(const std::string& word) {
  using Shape = sim::AnalogSignal::Shape;
  const std::pair<const char*, Shape> shapes[] = {{"dc", Shape::kDc},
                                                  {"sine", Shape::kSine},
                                                  {"noise", Shape::kNoise},
                                                  {"mirror-x", Shape::kMirrorX},
                                                  {"mirror-y", Shape::kMirrorY}};
  for (const auto& [name, shape] : shapes)
    if (word == name) return shape;
  throw WrongUse(
      "a signal is dc, sine, noise, mirror-x or mirror-y, then offset, amplitude and frequency, "
      "for instance sine:0:2:50; not " +
      word);
}

// "sine:0:2:50": shape, offset, amplitude, frequency in Hz; what is left out is 0.
sim::AnalogSignal SignalIn(const std::string& text) {
  const std::vector<std::string> words = Split(text, ':');
  sim::AnalogSignal signal;
  signal.shape = ShapeIn(words[0]);
  double* fields[] = {&signal.offset, &signal.amplitude, &signal.frequency};
  for (std::size_t i = 1; i < words.size() && i <= 3; ++i) *fields[i - 1] = ParseNumber(words[i], text);
  return signal;
}

// "zrv --port-dir DIR COMMAND PORT", as it is to be typed in another terminal.
std::string Typed(const SimulateCommand& command, const std::string& words, const std::string& port) {
  const std::string& directory = *command.portDirectory;
  if (directory.empty()) return ProgramName() + " " + words + " " + port;
  return ProgramName() + " --port-dir " + directory + " " + words + " " + port.substr(port.rfind('/') + 1);
}

void PrintWhereItIs(const SimulateCommand& command, const std::string& port, const std::string& viewUrl) {
  std::printf("simulated controller \"%s\" at %s\n", command.options.deviceName.c_str(), port.c_str());
  std::printf("in another terminal:  %s\n", Typed(command, "info", port).c_str());
  std::printf("                      %s lissajous\n", Typed(command, "play", port).c_str());
  if (!viewUrl.empty()) std::printf("live view:            %s\n", viewUrl.c_str());
  std::printf("Ctrl-C ends it.\n");
  std::fflush(stdout);
}

std::string StatusOf(const sim::Controller& c) {
  char text[160];
  std::snprintf(text, sizeof text, "%s  mirror x %+.3f y %+.3f  %u samples/s  %llu commands",
                c.IsPlaying() ? "playing" : "idle   ", static_cast<double>(c.Mirror().x),
                static_cast<double>(c.Mirror().y), c.settings().sampleRate,
                static_cast<unsigned long long>(c.FramesAccepted()));
  return text;
}

void DrawPath(sim::PseudoTerminal& terminal, const std::string& file) {
  const Pattern path = terminal.Access([](sim::Controller& c) { return PatternOf(c.DrawnPath(), 25000); });
  ScanStyle style;
  style.title = "Drawn by the simulated mirror";
  style.mirror = true;
  DrawScan(file, path, style);
  std::printf("picture in %s\n", file.c_str());
}

void Simulate(SimulateCommand& command) {
  CatchStopSignals();
  if (!command.picture.empty()) CheckPictureFile(command.picture);
  command.options.hardwareFilter = !command.noFilter;
  command.options.tracking = !command.noTracking;
  command.options.analogInputs = {SignalIn(command.ai0), SignalIn(command.ai1)};
  command.options.photoDetector = SignalIn(command.detector);
  command.port.portDirectory = *command.portDirectory;
  sim::PseudoTerminal terminal(command.options, command.port);
  std::optional<LiveView> view;
  if (command.view->count() > 0)
    view.emplace(terminal, command.viewPort, Typed(command, "play", terminal.Port()) + " lissajous");
  PrintWhereItIs(command, terminal.Port(), view ? view->Url() : "");
  {
    StatusLine status;
    do status.Show(terminal.Access([](sim::Controller& c) { return StatusOf(c); }));
    while (SleepUnlessStopped(std::chrono::milliseconds(200)));
  }
  if (!command.picture.empty()) DrawPath(terminal, command.picture);
}

std::string DeviceNameComplaint(const std::string& name) {
  constexpr std::size_t kLongest = 31;
  if (name.size() > kLongest) return "the name is longer than 31 bytes";
  const bool printable =
      std::none_of(name.begin(), name.end(), [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; });
  return printable ? "" : "the name has a line break or another control character in it";
}

std::string PortNameComplaint(const std::string& name) {
  const bool good = !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
  return good ? "" : "\"" + name + "\" is no name of a file; the folder is given with --port-dir";
}

void AddControllerOptions(CLI::App* command, SimulateCommand& c) {
  command->add_option("--name", c.options.deviceName, "name of the controller, 31 bytes at most")
      ->capture_default_str()
      ->type_name("NAME")
      ->check(DeviceNameComplaint);
  AddNumber(*command, "--format", c.options.formatCode, "output format: 0 16 bit, 1 12/11 bit, 2 to 4 with colours", 0,
            7);
  AddNumber(*command, "--capacity", c.options.capacity, "samples it holds", 1, 10000000);
  command->add_flag("--no-hardware-filter", c.noFilter, "without the low-pass ahead of the mirror");
  command->add_flag("--no-tracking", c.noTracking, "a controller that cannot track");
}

void AddWorldOptions(CLI::App* command, SimulateCommand& c) {
  AddNumber(*command, "--resonance", c.options.mirror.resonanceHz, "resonance of the mirror, Hz", 1, 1e6);
  AddNumber(*command, "--q", c.options.mirror.q, "quality factor of the resonance", 0.1, 1e6);
  for (const auto& [name, signal, help] : {std::tuple{"--ai0", &c.ai0, "signal on analog input 0"},
                                           std::tuple{"--ai1", &c.ai1, "signal on analog input 1"},
                                           std::tuple{"--detector", &c.detector, "signal on the photodetector"}})
    command->add_option(name, *signal, help)->capture_default_str()->type_name("SIGNAL");
}

}  // namespace

void AddSimulateCommand(CLI::App& app, const std::string& portDirectory) {
  auto simulate = std::make_shared<SimulateCommand>();
  simulate->portDirectory = &portDirectory;
  CLI::App* command =
      AddCommand(app, "simulate", "Run a simulated controller until Ctrl-C", {"zrv simulate --port-dir /tmp/zrv-ports"},
                 "It answers on a pseudo-terminal; with --port-dir the port also gets a name there\n"
                 "(ttyUSB0), so that zrv --port-dir DIR list finds it. A SIGNAL is shape:offset:\n"
                 "amplitude:frequency, what is left out being 0. Shapes: dc, sine, noise, mirror-x,\n"
                 "mirror-y (they follow the mirror). Volts and hertz, for instance sine:0:2:50.\n\n"
                 "With --view a browser on this machine, and no other, shows what the mirror draws as it\n"
                 "draws it, the settings and the traffic on the link.");
  AddControllerOptions(command, *simulate);
  AddWorldOptions(command, *simulate);
  command->add_option("--port-name", simulate->port.portName, "name in the port directory; else the first free ttyUSB")
      ->type_name("NAME")
      ->check(PortNameComplaint);
  AddNumber(*command, "--baud", simulate->port.baudRate, "as slow as a serial line of so many baud; 0: no limit", 0,
            100000000);
  AddFile(*command, "--picture", simulate->picture, "at the end, a picture of what the mirror drew last");
  simulate->view = command
                       ->add_option("--view", simulate->viewPort,
                                    "show what it does on a page for the browser, at http://127.0.0.1:PORT/;\n"
                                    "without a number, or with 0, at a port that is free")
                       ->type_name("[PORT]")
                       ->expected(0, 1)
                       ->default_str("0")
                       ->check(CLI::Range(0, 65535));
  command->callback([simulate] { Simulate(*simulate); });
}

}  // namespace zrvtool
