// Point files and point-time files: whatever is read is within its range.
#include <cstdlib>

#include "common/files.h"
#include "generator/point_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  for (const auto columns : {zrv::PointColumns::xym, zrv::PointColumns::xymt}) {
    zrv::PointFile file;
    file.Read(zrv::AsText({data, size}), columns);
    for (size_t i = 0; i < file.Size(); ++i) {
      if (!(file.x[i] >= -1 && file.x[i] <= 1 && file.y[i] >= -1 && file.y[i] <= 1)) std::abort();
    }
    for (const float t : file.t) {
      if (!(t >= 0 && t <= 1000)) std::abort();
    }
  }
  return 0;
}
