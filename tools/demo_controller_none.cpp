// For systems without pseudo-terminals.
#include "demo_controller.h"
#include "errors.h"

namespace zrvtool {

std::unique_ptr<DemoController> MakeTerminalController() {
  throw ToolError("this system has no pseudo-terminals; use zrv demo --memory");
}

}  // namespace zrvtool
