// The simulated controller: any bytes, well-formed frames with any payload, and time between them. Whatever it was
// told, it answers again after a silence.
#include <algorithm>
#include <array>
#include <iterator>
#include <vector>

#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "simulator/controller.h"

namespace {

using Bytes = std::vector<uint8_t>;

zrv::sim::Options Small() {
  zrv::sim::Options options;
  options.sampleRateMin = 100;
  options.sampleRateMax = options.factory.sampleRate = 2000;
  options.capacity = 300;
  options.pathCapacity = options.captureCapacity = 500;
  options.sensorBlockSamples = 50;
  return options;
}

Bytes Frame(uint8_t code, std::span<const uint8_t> payload) {
  const uint8_t head[] = {0xB5, 0xB0, 0x2B, code, static_cast<uint8_t>(payload.size() + 6)};
  Bytes frame(payload.size() + 6, 0x0A);
  std::copy(payload.begin(), payload.end(), std::copy(std::begin(head), std::end(head), frame.begin()));
  return frame;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zrv_fuzz;
  Input in(data, size);
  zrv::sim::Options options = Small();
  options.formatCode = in.U8();
  zrv::sim::Controller controller(options);
  double now = 0;
  const auto hear = [&] {
    Bytes answer(controller.Available());
    Require(controller.Take(answer) == answer.size());
    return answer;
  };

  for (int step = 0; step < 100 && !in.Empty(); ++step) {
    const uint8_t what = in.U8();
    const auto bytes = in.Bytes(what >> 3);
    switch (what & 7) {
      case 0: now += 0.005 * (what >> 3); break;
      case 1: controller.Receive(bytes, now); break;
      case 2: hear(); break;
      case 3: controller.PowerCycle(); break;
      default:
        if (!bytes.empty()) controller.Receive(Frame(bytes[0], bytes.subspan(1)), now);
    }
    controller.Advance(now);
    Require(controller.Block().size() <= options.capacity && controller.NextEventTime() >= 0);
    controller.DrawnPath();
  }

  now += 2 * zrv::sim::Controller::kBlockSilence;
  controller.Receive(Frame(0xB5, std::array<uint8_t, 1>{0}), now);  // no stream of inputs in between
  hear();
  controller.Receive(Frame(0xE3, {}), now);
  Require(hear() == Bytes{0xB5, 0xB0, 0x0A});
  return 0;
}
