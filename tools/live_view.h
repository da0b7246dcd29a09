// A page for a browser on this machine that shows what a simulated controller does, while it does it.
#ifndef ZRV_TOOLS_LIVE_VIEW_H
#define ZRV_TOOLS_LIVE_VIEW_H

#include <cstdint>
#include <memory>
#include <string>

#include "simulator/pseudo_terminal.h"

namespace zrvtool {

// Serves until it ends, on 127.0.0.1 alone and only to requests that name this machine. Nothing that a page asks for
// changes the controller. Any number of pages may watch: each fetches what it is shown, so one that is slow holds
// nobody up.
class LiveView {
 public:
  // Port 0 takes a free one. hint is a command that the page proposes when nothing plays. Throws ToolError when the
  // port cannot be had. The terminal must outlive the view.
  LiveView(zrv::sim::PseudoTerminal& terminal, std::uint16_t port, const std::string& hint);
  ~LiveView();
  LiveView(const LiveView&) = delete;
  LiveView& operator=(const LiveView&) = delete;

  std::string Url() const;

 private:
  struct Server;
  std::unique_ptr<Server> server_;
};

}  // namespace zrvtool

#endif
