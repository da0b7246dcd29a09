// Simulated controllers on ports FOLDER/ttyUSB0, ttyUSB1, ..., one for each output format, until standard
// input ends.
#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "simulator/pseudo_terminal.h"

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  constexpr uint32_t kFormats = 6;  // the five there are, and one that no host packs
  std::vector<std::unique_ptr<zrv::sim::PseudoTerminal>> controllers;
  for (uint32_t format = 0; format < kFormats; ++format) {
    zrv::sim::Options options;
    options.deviceName = "Format " + std::to_string(format);
    options.formatCode = format;
    zrv::sim::PortOptions port;
    port.portDirectory = argv[1];
    port.portName = "ttyUSB" + std::to_string(format);
    controllers.push_back(std::make_unique<zrv::sim::PseudoTerminal>(options, port));
  }
  while (std::getchar() != EOF) {
  }
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "%s\n", failure.what());
  return 1;
}
