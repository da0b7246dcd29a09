// The newest exchanges on a controller's link: each command with what came back.
//
//   sim::LinkLog log(50);
//   controller.Observe([&log](const sim::LinkEvent& event) { log.Add(event); });
#ifndef ZRV_SIMULATOR_LINK_LOG_H
#define ZRV_SIMULATOR_LINK_LOG_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "simulator/link_observer.h"
#include "simulator/ring.h"

namespace zrv::sim {

// One command and its answer, the same one several times in a row, a block of samples, or what the controller
// said by itself.
struct Exchange {
  enum class Kind {
    kCommand,
    kRefused,
    kBlock,
    kReport
  };
  static constexpr size_t kHeadBytes = 8;

  Kind kind = Kind::kCommand;
  double time = 0;  // seconds, of the latest
  uint8_t code = 0;
  uint64_t times = 1;  // how often
  uint64_t acknowledgements = 0;
  uint64_t toController = 0, toHost = 0;   // bytes
  std::array<uint8_t, kHeadBytes> head{};  // first bytes of a command's payload
  size_t payload = 0;                      // bytes of it
};

class LinkLog {
 public:
  explicit LinkLog(size_t capacity) : exchanges_(std::max<size_t>(capacity, 1)) {}

  void Add(const LinkEvent& event);
  // Oldest first.
  std::vector<Exchange> Copy() const { return exchanges_.Copy(); }

 private:
  void AddFromHost(const LinkEvent& event);
  void AddAnswer(const LinkEvent& event);

  Ring<Exchange> exchanges_;
};

}  // namespace zrv::sim

#endif
