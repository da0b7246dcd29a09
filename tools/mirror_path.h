// What a simulated mirror drew, as a pattern that can be shown.
#ifndef ZRV_TOOLS_MIRROR_PATH_H
#define ZRV_TOOLS_MIRROR_PATH_H

#include <vector>

#include "pattern.h"
#include "simulator/controller.h"

namespace zrvtool {

// The newest points, all of them when there are fewer. Colours are kept when they are not all white.
Pattern PatternOf(const std::vector<zrv::sim::PathPoint>& path, std::size_t newest);

}  // namespace zrvtool

#endif
