// Without OpenCV there are no bitmaps: the plain function is there and makes nothing, so that programs still load.
#include "ZRVFlatInterface.h"

unsigned int ZRVImageRasterPattern(ZRVDataGenerator*, float*, float*, unsigned char*, float, float, unsigned int,
                                   unsigned int, const unsigned char*, unsigned int, unsigned int, unsigned int,
                                   unsigned int, bool, int, float, bool, unsigned int*, int, int) {
  return 0;
}
