// zrv analog, track.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

#include "ZRVDevice.h"
#include "commands.h"
#include "errors.h"
#include "options.h"
#include "picture.h"
#include "report.h"
#include "session.h"
#include "terminal.h"

namespace zrvtool {
namespace {

struct AnalogCommand {
  std::string port, plot;
  bool json = false;
  unsigned int capture = 0;
  double seconds = 0;
  unsigned int interval = 100;  // ms
};

struct Readings {
  std::vector<double> time, ai0, ai1, detector;  // seconds, volts, volts, detector units 0..2
};

void Add(Readings& r, double time, float ai0, float ai1, float detector) {
  r.time.push_back(time);
  r.ai0.push_back(Exact(ai0));
  r.ai1.push_back(Exact(ai1));
  r.detector.push_back(Exact(detector));
}

// One live reading, as a line that a person or a program reads.
void Print(const Readings& r, StatusLine& status) {
  const std::size_t i = r.time.size() - 1;
  char text[160];
  if (OutputIsTerminal()) {
    std::snprintf(text, sizeof text, "AI0 %+8.4f V %s   AI1 %+8.4f V %s   detector %.4f", r.ai0[i],
                  Bar((r.ai0[i] + 10) / 20, 20).c_str(), r.ai1[i], Bar((r.ai1[i] + 10) / 20, 20).c_str(),
                  r.detector[i]);
    status.Show(text);
  } else {
    std::printf("%.4f,%.5f,%.5f,%.5f\n", r.time[i], r.ai0[i], r.ai1[i], r.detector[i]);
    std::fflush(stdout);
  }
}

Readings ReadLive(ZRVDevice& device, const AnalogCommand& command) {
  Readings readings;
  StatusLine status;
  const StopWatch watch;
  CatchStopSignals();  // the readings so far are still drawn; a capture is ended at once
  if (!OutputIsTerminal() && !command.json) std::printf("time_s,ai0_v,ai1_v,detector\n");
  do {
    const double time = watch.Seconds();
    float values[3] = {};
    values[0] = device.GetAnalogInputValue(0);
    Check(device, "read the analog inputs");
    values[1] = device.GetAnalogInputValue(1);
    Check(device, "read the analog inputs");
    values[2] = device.GetPhotoDetectorValue();
    Check(device, "read the photodetector");
    Add(readings, time, values[0], values[1], values[2]);
    if (!command.json) Print(readings, status);
  } while (WaitWithin(command.seconds, watch, std::chrono::milliseconds(command.interval)));
  return readings;
}

Readings Capture(ZRVDevice& device, unsigned int count) {
  const double rate = static_cast<double>(device.GetDeviceParam(ParamSampleRate));
  Check(device, "read the sample rate");
  std::vector<float> ai0(count), ai1(count);
  device.GetAnalogInputBuffer(ai0.data(), ai1.data(), count);
  Check(device, "capture the analog inputs");
  Readings readings;
  for (unsigned int i = 0; i < count; ++i) Add(readings, i / rate, ai0[i], ai1[i], 0);
  readings.detector.clear();
  return readings;
}

void PrintCapture(const Readings& r) {
  std::printf("time_s,ai0_v,ai1_v\n");
  for (std::size_t i = 0; i < r.time.size(); ++i) std::printf("%.9g,%.5f,%.5f\n", r.time[i], r.ai0[i], r.ai1[i]);
}

void PrintAsJson(const Readings& r) {
  Json json = {{"time_s", r.time}, {"ai0_v", r.ai0}, {"ai1_v", r.ai1}};
  if (!r.detector.empty()) json["detector"] = r.detector;
  PrintJson(json, -1);
}

void PlotReadings(const std::string& file, const std::string& port, const Readings& r) {
  std::vector<Plot> plots = {{"Analog inputs", "time, s", "volts", r.time, {{"AI0", r.ai0}, {"AI1", r.ai1}}}};
  if (!r.detector.empty()) plots.push_back({"Photodetector", "time, s", "units, 0 .. 2", r.time, {{"", r.detector}}});
  DrawPlots(file, plots, "Inputs of the controller at " + port, 1);
  std::fprintf(stderr, "picture in %s\n", file.c_str());
}

void Analog(const AnalogCommand& command) {
  if (!command.plot.empty()) CheckPictureFile(command.plot);
  ZRVDevice device;
  Connect(device, command.port);
  const Readings readings = command.capture > 0 ? Capture(device, command.capture) : ReadLive(device, command);
  if (command.json) PrintAsJson(readings);
  else if (command.capture > 0 && (command.plot.empty() || !OutputIsTerminal())) PrintCapture(readings);
  if (!command.plot.empty()) PlotReadings(command.plot, command.port, readings);
}

void PrintTrackParams(const ZRVTrackParams& p) {
  std::printf("threshold %g, normal gain %d, tangential gain %d, delay %u samples, hit ratio %g, state %u%u%u\n",
              static_cast<double>(p.Threshold), p.NormalGain, p.TangentialGain, p.BufferDelay,
              static_cast<double>(p.HitRatio), p.StateBit2, p.StateBit1, p.StateBit0);
}

void PrintTrackStatus(double time, const ZRVTrackStatus& s, StatusLine& status) {
  char text[160];
  if (OutputIsTerminal()) {
    std::snprintf(text, sizeof text, "x %+.4f  y %+.4f  status %3u%s", static_cast<double>(s.X),
                  static_cast<double>(s.Y), s.StatusValue, s.StatusFlag ? "  flag" : "");
    status.Show(text);
  } else {
    std::printf("%.4f,%.5f,%.5f,%u,%d\n", time, static_cast<double>(s.X), static_cast<double>(s.Y), s.StatusValue,
                s.StatusFlag ? 1 : 0);
    std::fflush(stdout);
  }
}

struct TrackCommand {
  std::string port;
  double seconds = 0;
  unsigned int interval = 100;  // ms
};

void WatchTracking(ZRVDevice& device, const TrackCommand& command) {
  CatchStopSignals();
  StatusLine line;
  const StopWatch watch;
  if (!OutputIsTerminal()) std::printf("time_s,x,y,status,flag\n");
  do {
    ZRVTrackStatus status = {};
    device.GetTrackStatus(&status);
    Check(device, "read the tracking status");
    PrintTrackStatus(watch.Seconds(), status, line);
  } while (WaitWithin(command.seconds, watch, std::chrono::milliseconds(command.interval)));
}

void Track(const TrackCommand& command) {
  ZRVDevice device;
  Connect(device, command.port);
  ZRVTrackParams params;
  device.GetTrackParams(&params);
  Check(device, "read the tracking parameters");
  if (!params.TrackingSupported) throw ToolError("the controller at " + command.port + " does not track targets");
  if (OutputIsTerminal()) PrintTrackParams(params);
  WatchTracking(device, command);
}

void AddTiming(CLI::App& command, double& seconds, unsigned int& interval) {
  AddNumber(command, "--seconds", seconds, "stop after so many seconds", 0.001, 1e9);
  AddNumber(command, "--interval", interval, "time between readings, ms", 1, 3600000);
}

}  // namespace

void AddSensingCommands(CLI::App& app) {
  auto analog = std::make_shared<AnalogCommand>();
  CLI::App* command = AddCommand(
      app, "analog", "Read the analog inputs and the photodetector",
      {"zrv analog ttyUSB0", "zrv analog ttyUSB0 --seconds 10 > readings.csv",
       "zrv analog ttyUSB0 --capture 5000 --plot inputs.png"},
      "Live readings on a terminal until Ctrl-C; a table (CSV) in a pipe or file. JSON comes at the end, a list for\n"
      "each column of the table.");
  AddPort(*command, analog->port);
  AddTiming(*command, analog->seconds, analog->interval);
  AddNumber(*command, "--capture", analog->capture, "capture so many samples of both inputs at the sample rate", 1,
            1000000);
  AddFile(*command, "--plot", analog->plot, "picture of the readings, PNG or SVG");
  AddJson(*command, analog->json);
  command->callback([analog] { Analog(*analog); });

  auto track = std::make_shared<TrackCommand>();
  command = AddCommand(app, "track", "Follow what a tracking controller reports", {"zrv track ttyUSB0"},
                       "Live on a terminal until Ctrl-C; a table (CSV) in a pipe or file.");
  AddPort(*command, track->port);
  AddTiming(*command, track->seconds, track->interval);
  command->callback([track] { Track(*track); });
}

}  // namespace zrvtool
