// What a data generator holds of the files it has loaded.
#ifndef ZRV_GENERATOR_CONTENT_H
#define ZRV_GENERATOR_CONTENT_H

#include <vector>

#include "generator/hershey_font.h"
#include "generator/ilda_file.h"
#include "generator/point_arrays.h"
#include "generator/point_file.h"

namespace zrv {

struct GeneratorContent {
  IldaDrawing ilda;
  std::vector<unsigned> ildaKeypoints;  // a request of the last stream
  HersheyFont font;
  PointFile pointFile, pointTimeFile;
  unsigned pointFileSize = 0;  // of the file loaded last, of either kind
  ScanScratch scratch;         // of the composite generators
};

}  // namespace zrv

#endif
