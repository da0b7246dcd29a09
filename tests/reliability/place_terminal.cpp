#include "tests/reliability/places.h"

#ifdef _WIN32
std::unique_ptr<zrv::reliability::Place> zrv::reliability::AtPseudoTerminal() { return nullptr; }
#else
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "simulator/pseudo_terminal.h"

namespace zrv::reliability {

namespace {

class Terminal : public Place {
 public:
  void Plug(Bench& bench) override {
    terminal_ = std::make_unique<sim::PseudoTerminal>(ControllerOptions());
    terminal_->Access(FeedTracking);
    bench.port = terminal_->Port();
  }
  void Access(const std::function<void(sim::Controller&)>& use) override {
    terminal_->Access([&](sim::Controller& controller) { use(controller); });
  }
  void Cut() override { terminal_->CutLink(); }
  void FillLine() override {}  // the device has the line to itself
  double Now() override {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
  }
  void Wait(double seconds) override { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); }
  void Settle(ZRVDevice& device) override {
    Wait(0.05);
    device.SendSerialReset();
  }
  double slack() const override { return 0.3; }

 private:
  std::unique_ptr<sim::PseudoTerminal> terminal_;
};

}  // namespace

std::unique_ptr<Place> AtPseudoTerminal() { return std::make_unique<Terminal>(); }

}  // namespace zrv::reliability
#endif
