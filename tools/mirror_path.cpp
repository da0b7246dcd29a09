#include "mirror_path.h"

#include <algorithm>

namespace zrvtool {

Pattern PatternOf(const std::vector<zrv::sim::PathPoint>& path, std::size_t newest) {
  constexpr unsigned int kWhite = 0xFFFFFF;
  Pattern pattern;
  bool coloured = false;
  for (std::size_t i = path.size() - std::min(newest, path.size()); i < path.size(); ++i) {
    pattern.x.push_back(path[i].x);
    pattern.y.push_back(path[i].y);
    pattern.m.push_back(path[i].m);
    pattern.rgb.push_back(path[i].rgb);
    coloured = coloured || (path[i].rgb != kWhite && path[i].rgb != 0);
  }
  if (!coloured) pattern.rgb.clear();
  return pattern;
}

}  // namespace zrvtool
