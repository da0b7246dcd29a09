// Stands in for packing_avx2.cpp where that cannot be compiled.
#include "device/packing_avx2.h"

bool zrv::HasAvx2() { return false; }

size_t zrv::PackRunAvx2(uint32_t, const SampleRun&, uint8_t*) { return 0; }
