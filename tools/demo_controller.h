// The simulated controller of the demo: on a pseudo-terminal where the system has one, in memory elsewhere.
#ifndef ZRV_TOOLS_DEMO_CONTROLLER_H
#define ZRV_TOOLS_DEMO_CONTROLLER_H

#include <memory>
#include <vector>

#include "ZRVDevice.h"
#include "simulator/controller.h"

namespace zrvtool {

class DemoController {
 public:
  virtual ~DemoController() = default;
  // Finds and connects the device, saying what it does.
  virtual void Connect(ZRVDevice& device) = 0;
  virtual void ForgetPath() = 0;
  virtual std::vector<zrv::sim::PathPoint> Path() = 0;
};

std::unique_ptr<DemoController> MakeMemoryController();
std::unique_ptr<DemoController> MakeTerminalController();

#ifdef _WIN32
inline constexpr bool kHasPseudoTerminals = false;
#else
inline constexpr bool kHasPseudoTerminals = true;
#endif

}  // namespace zrvtool

#endif
