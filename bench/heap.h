// What this process takes of the memory.
#ifndef ZRV_BENCH_HEAP_H
#define ZRV_BENCH_HEAP_H

#include <malloc.h>
#include <unistd.h>

#include <fstream>

namespace zrv::bench {

inline size_t HeapBytes() {
  const auto heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

inline size_t ResidentKB() {
  size_t pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

}  // namespace zrv::bench

#endif
