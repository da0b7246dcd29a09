// The command table of the simulated controller.
#ifndef ZRV_SIMULATOR_COMMANDS_H
#define ZRV_SIMULATOR_COMMANDS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "common/bytes.h"
#include "simulator/controller.h"

namespace zrv::sim {

constexpr size_t kMaxNameBytes = 31;

// What follows the acknowledgement, often nothing; no reply at all refuses the command.
using Reply = std::optional<std::vector<uint8_t>>;

struct Command {
  uint8_t code;
  const char* name;
  uint8_t minPayload, maxPayload;  // bytes
  bool acknowledged;               // whether hosts wait for it
  Reply (*run)(Controller& controller, LittleEndianReader& payload);
};

}  // namespace zrv::sim

#endif
