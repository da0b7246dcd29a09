#include "device/state.h"
#include "simulator/memory_transport.h"
#include "tests/reliability/places.h"

namespace zrv::reliability {

namespace {

class Memory : public Place {
 public:
  void Plug(Bench& bench) override {
    controller_ = std::make_shared<sim::Controller>(ControllerOptions());
    FeedTracking(*controller_);
    bench.port = "COM3";
    Machine& machine = StateOf(bench.device).link.machine;
    machine.pause = [this](std::chrono::milliseconds time) { Wait(static_cast<double>(time.count()) / 1000); };
    machine.listPorts = [] { return std::vector<SerialPortEntry>{{"COM3", "", 3}}; };
    machine.probe = [](const char*) { return true; };
    machine.makePort = [this] {
      auto port = std::make_unique<sim::MemoryTransport>(controller_, clock_);
      port_ = port.get();
      return port;
    };
  }
  void Access(const std::function<void(sim::Controller&)>& use) override { use(*controller_); }
  void Cut() override { controller_->faults().CutLink(); }
  void FillLine() override { port_->FillLine(); }
  double Now() override { return clock_->Now(); }
  void Wait(double seconds) override {
    clock_->Advance(seconds);
    controller_->Advance(clock_->Now());
  }
  void Settle(ZRVDevice&) override {}             // answers come at once: the call's own resynchronisation drops them
  double slack() const override { return 1e-6; }  // rounding

 private:
  std::shared_ptr<sim::VirtualClock> clock_ = std::make_shared<sim::VirtualClock>();
  std::shared_ptr<sim::Controller> controller_;
  sim::MemoryTransport* port_ = nullptr;  // the last one made
};

}  // namespace

std::unique_ptr<Place> InMemory() { return std::make_unique<Memory>(); }

}  // namespace zrv::reliability
