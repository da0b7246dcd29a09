// Drawing files: load, then stream the first frames into arrays of exactly the room that is promised.
#include <algorithm>
#include <numeric>
#include <vector>

#include "ZRVDataGenerator.h"
#include "fuzz/input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const zrv_fuzz::InputFile file({data, size});
  ZRVDataGenerator g;
  g.LoadIldaFile(file.Path());

  const unsigned count = std::min(g.IldaNumFrames(), 20u) + 2;  // frame 0, and one too many
  std::vector<unsigned> frames(count);
  std::iota(frames.begin(), frames.end(), 0u);
  const size_t room = g.IldaAnimSize(frames.data(), count) + count;
  std::vector<float> x(room), y(room);
  std::vector<unsigned char> m(room);
  std::vector<unsigned> rgb(room);
  for (const bool close : {false, true}) {
    const unsigned written =
        g.IldaDataStream(x.data(), y.data(), m.data(), rgb.data(), frames.data(), count, 1, 0, 0.3f, 1.5f, close);
    if (written > room || g.IldaNumTotalPoints() * size_t{6} > size) std::abort();
  }
  return 0;
}
