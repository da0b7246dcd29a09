// Benchmarks are read as ratios: a measured call against what it costs at the least (a memcpy of the same
// bytes, the bare system calls, the libm calls alone), both taken in the same run. State the aim beside the
// benchmark; the program prints a table of all aims at its end.
//
//   BENCHMARK(BM_PackFormat0);
//   BENCHMARK(BM_CopyBlock);
//   const zrv::bench::Aim kAim("packing, format 0", "BM_PackFormat0", "BM_CopyBlock", 3.0);
#ifndef ZRV_BENCH_RATIOS_H
#define ZRV_BENCH_RATIOS_H

#include <string>

namespace zrv::bench {

// measured and baseline are names as the benchmark prints them, with arguments: "BM_Pack/25000". Times are those of a
// single iteration, the best of the repetitions: processor time, which other programs disturb least, or wall clock
// where the benchmark asks for it (UseRealTime). The ratio is to stay at or below atMost.
struct Aim {
  Aim(std::string what, std::string measured, std::string baseline, double atMost);
};

}  // namespace zrv::bench

#endif
