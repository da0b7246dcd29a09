// A simulated controller on a pseudo-terminal: any program opens its port as if it were a USB adapter.
//
//   sim::PseudoTerminal simulator(options, {.portDirectory = "/tmp/ports"});
//   ... connect to simulator.Port(), "/tmp/ports/ttyUSB0" ...
//   auto path = simulator.Access([](sim::Controller& c) { return c.DrawnPath(); });
//
// The controller runs on a thread of its own until the object ends. POSIX only.
#ifndef ZRV_SIMULATOR_PSEUDO_TERMINAL_H
#define ZRV_SIMULATOR_PSEUDO_TERMINAL_H

#include <memory>
#include <mutex>
#include <string>

#include "simulator/controller.h"

namespace zrv::sim {

struct PortOptions {
  // Where a link such as ttyUSB0 to the terminal is made (the directory too); empty: no link.
  std::string portDirectory = {};
  // The link's name; empty: the first free of ttyUSB0, ttyUSB1, ... A link whose simulator is gone is
  // replaced, anything else of that name is left alone and is an error.
  std::string portName = {};
  // Bytes pass at baud/10 a second in each direction; 0: as fast as they can.
  unsigned int baudRate = 0;
};

class PseudoTerminal {
 public:
  // Opens the terminal and starts serving. Throws std::system_error when the system refuses.
  explicit PseudoTerminal(const Options& options = {}, const PortOptions& port = {});
  // Stops, removes the link, and hangs up on whoever still holds the port.
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  // Path to connect to: the link when there is one, else the terminal itself.
  const std::string& Port() const;
  // The terminal itself, such as /dev/pts/5.
  const std::string& TerminalPath() const;

  // Calls use(Controller&), brought up to the present and guarded against the serving thread, and returns
  // what it returns. Take copies; keep no reference.
  template <typename Use>
  auto Access(Use use) {
    const Locked locked(*this);
    return use(locked.controller());
  }

  // Unplugs: the client sees a hang-up, the link disappears. Cannot be undone.
  void CutLink();
  // False once the link was cut.
  bool Running() const;

 private:
  struct Server;
  class Locked {
   public:
    explicit Locked(PseudoTerminal& terminal);
    ~Locked();
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
    Controller& controller() const;

   private:
    Server& server_;
    std::unique_lock<std::mutex> lock_;
  };

  std::unique_ptr<Server> server_;
};

}  // namespace zrv::sim

#endif
