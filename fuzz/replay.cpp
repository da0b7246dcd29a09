// Runs every fuzzer over its corpus, with whatever compiler the build has: what was found once is never lost again.
//   fuzz_corpora CORPUS_DIRECTORY
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#define ZRV_FUZZER(name) extern "C" int Fuzz_##name(const uint8_t* data, size_t size);
#include "fuzzers.inc"
#undef ZRV_FUZZER

namespace {

struct Fuzzer {
  const char* name;
  int (*run)(const uint8_t*, size_t);
};

constexpr Fuzzer kFuzzers[] = {
#define ZRV_FUZZER(name) {#name, Fuzz_##name},
#include "fuzzers.inc"
#undef ZRV_FUZZER
};

// An input that fails ends the process: the name that was printed last is its.
size_t Replay(const Fuzzer& fuzzer, const std::filesystem::path& corpus) {
  size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(corpus)) {
    std::printf("%s %s\n", fuzzer.name, entry.path().filename().string().c_str());
    std::fflush(stdout);
    std::ifstream file(entry.path(), std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    fuzzer.run(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    ++count;
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  size_t count = 0;
  for (const Fuzzer& fuzzer : kFuzzers) {
    const size_t inputs = Replay(fuzzer, std::filesystem::path(argv[1]) / fuzzer.name);
    if (inputs == 0) return std::printf("%s has no corpus\n", fuzzer.name), 1;
    count += inputs;
  }
  std::printf("%zu inputs replayed\n", count);
  return 0;
}
