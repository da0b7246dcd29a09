// What passes on the link of a simulated controller, for whoever watches it.
#ifndef ZRV_SIMULATOR_LINK_OBSERVER_H
#define ZRV_SIMULATOR_LINK_OBSERVER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace zrv::sim {

struct LinkEvent {
  enum class Kind {
    kCommand,  // a frame that is obeyed
    kRefused,  // a frame that is not: unknown, impossible, or of the wrong length
    kBlock,    // a raw block of samples that is complete
    kAnswer,   // bytes for the host: an acknowledgement, an answer, a piece of a stream
  };
  Kind kind = Kind::kCommand;
  double time = 0;                   // seconds, as the controller counts them
  uint8_t code = 0;                  // of the command it belongs to
  size_t bytes = 0;                  // on the line, whatever faults did to them
  std::span<const uint8_t> content;  // payload, samples, or answer ahead of the faults; valid during the call
};

using LinkObserver = std::function<void(const LinkEvent&)>;

}  // namespace zrv::sim

#endif
