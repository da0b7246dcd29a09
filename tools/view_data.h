// What the live view's page asks for, taken from a simulated controller.
#ifndef ZRV_TOOLS_VIEW_DATA_H
#define ZRV_TOOLS_VIEW_DATA_H

#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "simulator/controller.h"
#include "simulator/link_log.h"

namespace zrvtool {

// Points of one answer at most: a frame of a thirtieth of a second holds 3334 of them at the highest sample rate.
constexpr std::size_t kMaxViewPoints = 4096;

// Points for the page, little-endian: index of the first point (8 bytes), index behind the last (8), then for each
// point X and Y (2 bytes each, signed, 1/16384), red, green, blue (a byte each) and flags: bit 0 lit, bit 1 not joined
// to the point before. Points are counted from the start of the simulator.
//
// Those that the mirror drew since the one of that index, thinned out when they are too many. Of a reader that is far
// behind only the newest are sent.
std::string DrawnPoints(const zrv::sim::Controller& controller, std::uint64_t after);
// The block in the controller's buffer where its settings put it: what the mirror is told to draw. Index 0 on.
std::string CommandedPoints(const zrv::sim::Controller& controller);

// Settings, state and link traffic, worded for a reader.
nlohmann::ordered_json ViewState(const zrv::sim::Controller& controller, const zrv::sim::LinkLog& log);

}  // namespace zrvtool

#endif
