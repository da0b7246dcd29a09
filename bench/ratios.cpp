#include "bench/ratios.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

struct Row {
  std::string what, measured, baseline;
  double atMost;
};

std::vector<Row>& Rows() {
  static std::vector<Row> rows;
  return rows;
}

// Shows the runs as usual and keeps the best time of each benchmark, in nanoseconds an iteration.
class BestTimes : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const std::string name = run.run_name.str();
      const bool wallClock = name.find("/real_time") != name.npos || name.find("/manual_time") != name.npos;
      const double seconds = wallClock ? run.real_accumulated_time : run.cpu_accumulated_time;
      const double ns = seconds * 1e9 / static_cast<double>(run.iterations);
      const auto [at, isNew] = best_.try_emplace(name, ns);
      if (!isNew) at->second = std::min(at->second, ns);
    }
  }

  // One line an aim, its fields parted by tabs, for the table of all programs; ratio - when it was not measured.
  void WriteRatios(const char* fileName) const {
    std::FILE* const file = std::fopen(fileName, "a");
    if (file == nullptr) return std::perror(fileName);
    for (const Row& row : Rows()) {
      const auto measured = Find(row.measured), baseline = Find(row.baseline);
      if (measured == best_.end() || baseline == best_.end()) {
        std::fprintf(file, "%s\t-\t-\t-\t%g\n", row.what.c_str(), row.atMost);
      } else {
        std::fprintf(file, "%s\t%.3f\t%.3f\t%.3f\t%g\n", row.what.c_str(), measured->second / 1000,
                     baseline->second / 1000, measured->second / baseline->second, row.atMost);
      }
    }
    std::fclose(file);
  }

  void PrintRatios() const {
    std::printf("\n%-44s %12s %12s %8s %8s\n", "aim", "measured ns", "baseline ns", "ratio", "aim");
    for (const Row& row : Rows()) {
      const auto measured = Find(row.measured), baseline = Find(row.baseline);
      if (measured == best_.end() || baseline == best_.end()) continue;
      const double ratio = measured->second / baseline->second;
      std::printf("%-44s %12.0f %12.0f %8.2f %8.2f%s\n", row.what.c_str(), measured->second, baseline->second, ratio,
                  row.atMost, ratio <= row.atMost ? "" : "  MISSED");
    }
  }

 private:
  // Time settings are appended to a benchmark's name ("/real_time"): they need not be repeated in an aim.
  std::map<std::string, double>::const_iterator Find(const std::string& name) const {
    return std::find_if(best_.begin(), best_.end(), [&](const auto& entry) {
      const std::string& full = entry.first;
      return full == name || full.rfind(name + "/real_time", 0) == 0 || full.rfind(name + "/repeats", 0) == 0 ||
             full.rfind(name + "/min_", 0) == 0 || full.rfind(name + "/manual_time", 0) == 0 ||
             full.rfind(name + "/iterations", 0) == 0;
    });
  }

  std::map<std::string, double> best_;
};

}  // namespace

zrv::bench::Aim::Aim(std::string what, std::string measured, std::string baseline, double atMost) {
  Rows().push_back({std::move(what), std::move(measured), std::move(baseline), atMost});
}

int main(int argc, char** argv) {
  // Interleaved repetitions, so that a slow moment of the machine hits both sides of a ratio. Overridable.
  std::vector<std::string> arguments = {argv[0], "--benchmark_repetitions=5", "--benchmark_min_time=0.05",
                                        "--benchmark_enable_random_interleaving=true"};
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  int count = static_cast<int>(pointers.size());
  benchmark::Initialize(&count, pointers.data());
  const std::string_view aims = "--aims=";
  const char* aimsFile = nullptr;
  if (count > 1 && std::string_view(pointers[1]).starts_with(aims)) {
    aimsFile = pointers[1] + aims.size();
    pointers.erase(pointers.begin() + 1);
    --count;
  }
  if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) return 1;
  BestTimes reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  if (aimsFile != nullptr) reporter.WriteRatios(aimsFile);
  return 0;
}
