#include "generator/raster_plan.h"

#include <algorithm>
#include <cmath>

#include "generator/counts.h"

namespace zrv {
namespace {

constexpr uint64_t kBudgetSamples = 50000;           // what a raster should take
constexpr uint64_t kFallbackBudgetSamples = 200000;  // three times this many pixels are never too many
constexpr uint64_t kMostSamplesPerPixel = 24;
constexpr uint64_t kImagingSamplesPerPixel = 4;
constexpr float kTurnShare = 0.05f;       // of the line duration
constexpr float kLongestFlyback = 0.01f;  // seconds

// What is asked of the rate once the samples a pixel are known.
struct Budget {
  uint64_t pixels = 0, samplesPerPixel = 0;
  float rate = 0;         // samples per second, before it is limited
  float flybackTime = 0;  // seconds
};

uint64_t LinePixels(const RasterRequest& request) { return std::max(2u, request.pixels); }

float RateOf(uint64_t lineSamples, float lineDuration) { return static_cast<float>(lineSamples) / lineDuration; }

int64_t SamplesIn(int64_t sps, float seconds) { return TruncatedCount(static_cast<float>(sps) * seconds); }

uint64_t SamplesPerPixel(uint64_t lines, uint64_t pixels, uint64_t least) {
  const uint64_t cells = (lines + 1) * pixels;  // below 2^64: both are below 2^32
  const uint64_t samples = std::min(kMostSamplesPerPixel, kBudgetSamples / cells);
  if (samples >= least) return samples;
  return cells > kFallbackBudgetSamples ? 0 : kFallbackBudgetSamples / (cells * 3);
}

std::optional<RasterPlan> PlanFor(const RasterRequest& request, const Budget& budget) {
  const int64_t sps = std::max<int64_t>(std::min<int64_t>(request.maxSps, TruncatedCount(budget.rate)), request.minSps);
  const int64_t active = SamplesIn(sps, request.lineDuration);
  const int64_t turn = SamplesIn(sps, request.lineDuration * kTurnShare);
  const int64_t flyback = SamplesIn(sps, budget.flybackTime);
  if (sps <= 0 || active < 0 || turn < 0 || flyback < 0 || active + turn == 0) return std::nullopt;

  const double line = static_cast<double>(active) + 2.0 * static_cast<double>(turn);
  const double most = (request.lines + 2.0) * (line + static_cast<double>(flyback));
  if (most > std::numeric_limits<uint32_t>::max()) return std::nullopt;
  return RasterPlan{.sps = static_cast<unsigned>(sps),
                    .twoWay = request.twoWay,
                    .lines = request.lines,
                    .pixels = static_cast<size_t>(budget.pixels),
                    .samplesPerPixel = static_cast<size_t>(budget.samplesPerPixel),
                    .active = static_cast<size_t>(active),
                    .turn = static_cast<size_t>(turn),
                    .flyback = static_cast<size_t>(flyback),
                    .line = static_cast<size_t>(active + 2 * turn)};
}

}  // namespace

float RasterPlan::AccelShare() const {
  const auto share = static_cast<float>(static_cast<double>(turn) * 1e6 / static_cast<double>(line) / 1e6);
  return share * 0.5f / (1.0f - share);
}

std::optional<RasterPlan> PlanRaster(const RasterRequest& request) {
  const uint64_t least = request.pixelHold ? 4 : 1;
  Budget budget{.pixels = LinePixels(request)};
  budget.samplesPerPixel = SamplesPerPixel(request.lines, budget.pixels, least);
  if (budget.samplesPerPixel < least) return std::nullopt;

  budget.rate = RateOf(budget.pixels * budget.samplesPerPixel, request.lineDuration);
  const auto fastest = static_cast<float>(request.maxSps);
  if (budget.rate > fastest) {  // the rate stays as it was: limiting it below gives maxSps
    const int64_t affordable = TruncatedCount(fastest * request.lineDuration);
    budget.samplesPerPixel = affordable < 0 ? 0 : static_cast<uint64_t>(affordable) / budget.pixels;
    if (budget.samplesPerPixel < least) return std::nullopt;
  }
  budget.flybackTime = request.twoWay ? request.lineDuration : std::min(request.lineDuration, kLongestFlyback);
  return PlanFor(request, budget);
}

std::optional<RasterPlan> PlanImagingRaster(const RasterRequest& request) {
  Budget budget{.pixels = LinePixels(request), .samplesPerPixel = kImagingSamplesPerPixel};
  budget.rate = RateOf(budget.pixels * kImagingSamplesPerPixel, request.lineDuration);
  if (budget.rate > static_cast<float>(request.maxSps)) budget.samplesPerPixel = 1;
  budget.flybackTime = std::min(request.lineDuration / 2.5f, kLongestFlyback);
  return PlanFor(request, budget);
}

}  // namespace zrv
