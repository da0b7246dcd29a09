// zrv filter: a point file through the software output filter, or a picture of what the filter does.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <numbers>

#include "commands.h"
#include "data_files.h"
#include "errors.h"
#include "filter_choice.h"
#include "kinds.h"
#include "options.h"
#include "pattern_options.h"
#include "picture.h"
#include "session.h"

namespace zrvtool {
namespace {

struct FilterCommand {
  std::string input, output, filter, response;
  unsigned int rate = 0;
  bool zeroPhase = false;
};

// What one impulse makes of the filter, long enough to have died away.
std::vector<float> ImpulseResponse(const FilterChoice& choice, float rate) {
  constexpr std::size_t kLength = 16384;
  ZRVDataGenerator generator;
  SetUpFilter(generator, choice, rate, false);
  std::vector<float> impulse(kLength), response(kLength);
  impulse[0] = 1;
  generator.FilterData(impulse.data(), response.data(), kLength, false);
  return response;
}

struct Spectrum {
  std::complex<double> value, slope;  // of h and of n h: their quotient gives the group delay
};

// The transform of h at one frequency, by a turning pointer (exact enough over 16384 steps).
Spectrum SpectrumAt(const std::vector<float>& h, double cyclesPerSample) {
  const std::complex<double> turn = std::polar(1.0, -2 * std::numbers::pi * cyclesPerSample);
  std::complex<double> pointer = 1;
  Spectrum s;
  for (std::size_t n = 0; n < h.size(); ++n, pointer *= turn) {
    const std::complex<double> term = static_cast<double>(h[n]) * pointer;
    s.value += term;
    s.slope += static_cast<double>(n) * term;
  }
  return s;
}

// Three decades up to half the sample rate.
std::vector<double> Frequencies(double rate) {
  constexpr int kCount = 400;
  std::vector<double> hertz;
  for (int i = 0; i < kCount; ++i)
    hertz.push_back(rate * 0.499 * std::pow(10.0, -3.0 * (kCount - 1 - i) / (kCount - 1)));
  return hertz;
}

Plot StepPlot(const std::vector<float>& h, double rate, double cutoff) {
  Plot plot = {"Step response", "time, ms", "output", {}, {{"", {}}}};
  const double end = cutoff > 0 ? 4 / cutoff : 0.1;
  double sum = 0;
  for (std::size_t n = 0; n < h.size() && static_cast<double>(n) / rate < end; ++n) {
    sum += static_cast<double>(h[n]);
    plot.x.push_back(1000 * static_cast<double>(n) / rate);
    plot.series[0].y.push_back(sum);
  }
  return plot;
}

std::vector<Plot> ResponsePlots(const FilterChoice& choice, unsigned int rate) {
  constexpr double kFloor = 1e-6;  // single precision says nothing below
  const std::vector<float> h = ImpulseResponse(choice, static_cast<float>(rate));
  const std::vector<double> hertz = Frequencies(rate);
  Plot magnitude = {"Magnitude", "frequency, Hz", "dB", hertz, {{"", {}}}, true};
  Plot phase = {"Phase", "frequency, Hz", "degrees", hertz, {{"", {}}}, true};
  Plot delay = {"Group delay", "frequency, Hz", "ms", hertz, {{"", {}}}, true};
  double last = 0;
  for (double f : hertz) {
    const Spectrum s = SpectrumAt(h, f / rate);
    const double size = std::abs(s.value);
    const bool heard = size > 10 * kFloor;
    double angle = std::arg(s.value);
    angle += 2 * std::numbers::pi * std::round((last - angle) / (2 * std::numbers::pi));
    if (heard) last = angle;
    magnitude.series[0].y.push_back(20 * std::log10(std::max(size, kFloor)));
    phase.series[0].y.push_back(heard ? angle * 180 / std::numbers::pi : NAN);
    delay.series[0].y.push_back(heard ? 1000 * (s.slope / s.value).real() / rate : NAN);
  }
  return {magnitude, phase, delay, StepPlot(h, rate, static_cast<double>(choice.cutoff))};
}

void DrawResponse(const FilterCommand& command, const FilterChoice& choice) {
  const unsigned int rate = command.rate == 0 ? 20000 : command.rate;
  DrawPlots(command.response, ResponsePlots(choice, rate),
            Describe(choice) + ", at " + std::to_string(rate) + " samples/s", 2);
  std::printf("%s: response in %s\n", Describe(choice).c_str(), command.response.c_str());
}

void FilterFile(const FilterCommand& command, const FilterChoice& choice) {
  std::vector<std::pair<std::string, std::string>> options = {
      {"file", command.input}, {"filter", command.filter}, {"rate", std::to_string(command.rate)}};
  if (command.zeroPhase) options.push_back({"zero-phase", "1"});
  const Pattern pattern = MakePattern("points", options);
  WritePattern(command.output, pattern);
  std::printf("%s: %s in %s\n", Describe(choice).c_str(), Describe(pattern).c_str(), command.output.c_str());
}

void Filter(const FilterCommand& command) {
  const FilterChoice choice = FilterChoiceIn(command.filter);
  if (command.response.empty() && command.output.empty())
    throw WrongUse("nothing to do: give a point file to read and one to write, or --response FILE for a picture");
  if (!command.output.empty()) FilterFile(command, choice);
  if (!command.response.empty()) DrawResponse(command, choice);
}

}  // namespace

void AddFilterCommand(CLI::App& app) {
  auto options = std::make_shared<FilterCommand>();
  CLI::App* command = AddCommand(app, "filter", "Low-pass filter a point file, or show what a filter does",
                                 {"zrv filter square.txt smooth.txt --filter bessel:5:1000",
                                  "zrv filter --filter butterworth:4:500 --response filter.png"},
                                 "A filter is family:order:cutoff in Hz. Families:\n" + FilterFamilies(", ") +
                                     ".\nOr file:NAME for a file of coefficients.");
  AddExistingFile(*command, "input", options->input, "point file");
  AddFile(*command, "output", options->output, "point file to write");
  command->add_option("--filter", options->filter, "family:order:cutoff")->required()->type_name("FILTER");
  AddNumber(*command, "--rate", options->rate, "samples per second; else as the file says, else 20000", 1, 1000000);
  command->add_flag("--zero-phase", options->zeroPhase, "filter forwards and backwards: no delay");
  AddFile(*command, "--response", options->response, "picture of magnitude, phase, group delay and step response");
  command->callback([options] {
    if (!options->input.empty() && options->output.empty())
      throw WrongUse("name the file to write, too: zrv filter IN OUT --filter ...");
    Filter(*options);
  });
}

}  // namespace zrvtool
