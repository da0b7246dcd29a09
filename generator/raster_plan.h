// How many samples each stretch of a line raster gets, and at which rate.
#ifndef ZRV_GENERATOR_RASTER_PLAN_H
#define ZRV_GENERATOR_RASTER_PLAN_H

#include <cstddef>
#include <optional>

namespace zrv {

struct RasterRequest {
  unsigned lines = 0;
  unsigned pixels = 0;     // a line
  float lineDuration = 0;  // seconds, of the active part of a line
  bool pixelHold = false;
  bool twoWay = false;
  int minSps = 0, maxSps = 0;
};

struct RasterPlan {
  unsigned sps = 0;
  bool twoWay = false;
  size_t lines = 0, pixels = 0, samplesPerPixel = 0;
  size_t active = 0, turn = 0, flyback = 0;  // samples
  size_t line = 0;                           // active part and both turnarounds

  size_t Lines() const { return lines * (twoWay ? line : line + flyback); }  // samples of all lines together
  size_t Total() const { return Lines() + 2 * line; }                        // with lead-in and lead-out

  // Share of a line's length to spend accelerating at each end, so that the turnarounds take that long.
  float AccelShare() const;
};

// Empty when not even the least number of samples a pixel fits, or when the total is absurd.
std::optional<RasterPlan> PlanRaster(const RasterRequest& request);
std::optional<RasterPlan> PlanImagingRaster(const RasterRequest& request);

}  // namespace zrv

#endif
