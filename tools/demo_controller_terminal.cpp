#include <cstdio>
#include <filesystem>
#include <random>

#include "demo_controller.h"
#include "errors.h"
#include "session.h"
#include "simulator/pseudo_terminal.h"

namespace zrvtool {
namespace {

// A directory of its own for the port, so that the demo finds its own controller and nothing else.
class PrivateDirectory {
 public:
  PrivateDirectory()
      : path_(std::filesystem::temp_directory_path() / ("zrv-demo-" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directory(path_);
  }
  ~PrivateDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;
  std::string Path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

class TerminalController : public DemoController {
 public:
  void Connect(ZRVDevice& device) override {
    std::printf("Started a simulated controller on %s\n", terminal_.Port().c_str());
    ZRVSerialIO::SetPortDirectory(directory_.Path().c_str());
    ZRVAvailableDevices found;
    device.GetAvailableDevices(&found);
    if (found.NumDevices == 0) throw ToolError("the simulated controller was not found on its port");
    std::printf("Found \"%s\", firmware %s, at %s\n", found.DeviceName[0], found.FirmwareName[0],
                found.CommPortName[0]);
    device.ConnectDevice(found.CommPortName[0]);
    Check(device, "connect to the simulated controller");
    std::printf("Connected\n");
  }
  void ForgetPath() override {
    terminal_.Access([](zrv::sim::Controller& c) { c.ClearDrawnPath(); });
  }
  std::vector<zrv::sim::PathPoint> Path() override {
    return terminal_.Access([](zrv::sim::Controller& c) { return c.DrawnPath(); });
  }

 private:
  PrivateDirectory directory_;
  zrv::sim::PseudoTerminal terminal_{{}, {.portDirectory = directory_.Path(), .portName = {}, .baudRate = 0}};
};

}  // namespace

std::unique_ptr<DemoController> MakeTerminalController() { return std::make_unique<TerminalController>(); }

}  // namespace zrvtool
