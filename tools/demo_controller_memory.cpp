#include <cstdio>

#include "demo_controller.h"
#include "session.h"
#include "simulator/memory_transport.h"

namespace zrvtool {
namespace {

class MemoryController : public DemoController {
 public:
  void Connect(ZRVDevice& device) override {
    auto port = std::make_unique<zrv::sim::MemoryTransport>(controller_);
    port->Open("memory", 921600, 0, 0);
    device.ConnectDevice(port.release());
    Check(device, "connect to the simulated controller");
    std::printf("Started a simulated controller and connected to it through memory.\n");
  }
  void ForgetPath() override { controller_->ClearDrawnPath(); }
  std::vector<zrv::sim::PathPoint> Path() override { return controller_->DrawnPath(); }

 private:
  std::shared_ptr<zrv::sim::Controller> controller_ = std::make_shared<zrv::sim::Controller>();
};

}  // namespace

std::unique_ptr<DemoController> MakeMemoryController() { return std::make_unique<MemoryController>(); }

}  // namespace zrvtool
