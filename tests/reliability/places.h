// Where a device finds its controller: in memory, on a clock that jumps, or at a real pseudo-terminal in real time.
#ifndef ZRV_TESTS_RELIABILITY_PLACES_H
#define ZRV_TESTS_RELIABILITY_PLACES_H

#include <functional>
#include <memory>

#include "tests/reliability/calls.h"

namespace zrv::reliability {

class Place {
 public:
  virtual ~Place() = default;
  // A controller as new; the last one is unplugged. The bench's device finds it at the bench's port.
  virtual void Plug(Bench& bench) = 0;
  virtual void Access(const std::function<void(sim::Controller&)>& use) = 0;
  // Unplugs it: what is connected to it notices.
  virtual void Cut() = 0;
  // The line holds all it can.
  virtual void FillLine() = 0;
  virtual double Now() = 0;
  virtual void Wait(double seconds) = 0;
  // What a host does when a call failed and it wants the next one to work: where answers take their time it waits for
  // those under way and drops them, for no call reads what was meant for another.
  virtual void Settle(ZRVDevice& device) = 0;
  // What a machine that does other work adds to a time.
  virtual double slack() const = 0;
};

std::unique_ptr<Place> InMemory();
std::unique_ptr<Place> AtPseudoTerminal();  // null on Windows

}  // namespace zrv::reliability

#endif
