// Compiled without AVX2, as it runs on every processor.
#include "device/packing_avx2.h"

#ifdef _MSC_VER
#include <intrin.h>

bool zrv::HasAvx2() {
  int leaf0[4], leaf1[4], leaf7[4];  // eax, ebx, ecx, edx
  __cpuid(leaf0, 0);
  if (leaf0[0] < 7) return false;
  __cpuid(leaf1, 1);
  constexpr int kSystemSavesRegisters = 1 << 27, kAvx = 1 << 28;
  if ((leaf1[2] & kSystemSavesRegisters) == 0 || (leaf1[2] & kAvx) == 0) return false;
  constexpr unsigned long long kWideRegisters = 6;  // the system saves the lower and upper halves
  if ((_xgetbv(0) & kWideRegisters) != kWideRegisters) return false;
  __cpuidex(leaf7, 7, 0);
  return (leaf7[1] & 1 << 5) != 0;
}
#else
bool zrv::HasAvx2() { return __builtin_cpu_supports("avx2") != 0; }
#endif
