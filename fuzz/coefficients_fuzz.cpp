// Coefficient files: load, set the filter up, run it both ways.
#include "ZRVDataGenerator.h"
#include "fuzz/guarded.h"
#include "fuzz/input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zrv_fuzz;
  constexpr unsigned kCount = 40;
  const InputFile file({data, size});
  ZRVDataGenerator g;
  g.LoadIIRFilterParams(file.Path());
  Require(g.GetIIRFilterOrder() <= 31);
  for (const bool twoChannels : {false, true}) {
    Samples in(kCount), out(size_t{3} * kCount);
    for (unsigned i = 0; i < kCount; ++i) in.x[i] = in.y[kCount - 1 - i] = i % 3 == 0 ? 1.0f : -0.5f;
    g.SetupSoftwareFilter(7, 0, 0, 0, twoChannels);
    for (const bool zeroPhase : {false, true}) {
      g.FilterData(in.x.data(), in.y.data(), out.x.data(), out.y.data(), kCount, zeroPhase);
      g.FilterData(in.x.data(), out.x.data(), kCount, zeroPhase);
    }
  }
  return 0;
}
