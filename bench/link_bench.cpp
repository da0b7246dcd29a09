// The link over a pseudo-terminal: a command's round trip against the bare system calls, and a block on a line
// that is as slow as a real one against the time its bytes take.
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <thread>
#include <vector>

#include "ZRVDevice.h"
#include "bench/ratios.h"
#include "simulator/pseudo_terminal.h"

namespace {

constexpr std::array<unsigned char, 3> kAcknowledge = {0xB5, 0xB0, 0x0A};
constexpr size_t kFrameBytes = 6;

// The least a controller can do: acknowledges each 6 bytes, whatever they are.
class Echo {
 public:
  Echo() : fd_(posix_openpt(O_RDWR | O_NOCTTY)) {
    grantpt(fd_);
    unlockpt(fd_);
    path_ = ptsname(fd_);
    slave_ = open(path_.c_str(), O_RDWR | O_NOCTTY);  // keeps the terminal alive between clients
    thread_ = std::thread([this] { Serve(); });
  }
  ~Echo() {
    stop_ = true;
    thread_.join();
    close(slave_);
    close(fd_);
  }
  const char* path() const { return path_.c_str(); }

 private:
  void Serve() {
    size_t pending = 0;
    while (!stop_) {
      pollfd line = {fd_, POLLIN, 0};
      if (poll(&line, 1, 50) <= 0) continue;
      unsigned char bytes[256];
      const ssize_t got = read(fd_, bytes, sizeof bytes);
      if (got <= 0) continue;
      for (pending += static_cast<size_t>(got); pending >= kFrameBytes; pending -= kFrameBytes) {
        if (write(fd_, kAcknowledge.data(), kAcknowledge.size()) < 0) return;
      }
    }
  }

  int fd_, slave_ = -1;
  std::string path_;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

void BM_BareRoundTrip(benchmark::State& state) {
  Echo echo;
  ZRVSerialIO setUp;  // leaves the line raw
  setUp.Open(echo.path(), 921600, 0, 0);
  setUp.Close();
  const int fd = open(echo.path(), O_RDWR | O_NOCTTY);
  const unsigned char frame[kFrameBytes] = {0xB5, 0xB0, 0x2B, 0xE3, 0x06, 0x0A};
  for (auto _ : state) {
    if (write(fd, frame, sizeof frame) < 0) state.SkipWithError("write");
    unsigned char answer[3];
    for (size_t got = 0; got < sizeof answer;) {
      const ssize_t more = read(fd, answer + got, sizeof answer - got);
      if (more <= 0) return state.SkipWithError("read");
      got += static_cast<size_t>(more);
    }
  }
  close(fd);
}
BENCHMARK(BM_BareRoundTrip)->UseRealTime();

void BM_CommandRoundTrip(benchmark::State& state) {
  zrv::sim::PseudoTerminal simulator;
  ZRVDevice device;
  device.ConnectDevice(simulator.Port().c_str());
  if (!device.IsDeviceConnected()) return state.SkipWithError("no connection");
  for (auto _ : state) {
    if (!device.IsDeviceResponding()) return state.SkipWithError("no answer");
  }
}
BENCHMARK(BM_CommandRoundTrip)->UseRealTime();

// The same frame through the library's transport, against the same echo.
void BM_TransportRoundTrip(benchmark::State& state) {
  Echo echo;
  ZRVSerialIO port;
  port.Open(echo.path(), 921600, 0, 0);
  const unsigned char frame[kFrameBytes] = {0xB5, 0xB0, 0x2B, 0xE3, 0x06, 0x0A};
  for (auto _ : state) {
    unsigned char answer[3];
    port.Write(frame, sizeof frame, nullptr, ZRVSerialIO::kInfinite);
    if (port.Read(answer, sizeof answer, nullptr, 2000, ZRVSerialIO::kWaitForAll) != 0) {
      return state.SkipWithError("no answer");
    }
  }
}
BENCHMARK(BM_TransportRoundTrip)->UseRealTime();

constexpr unsigned int kBaudRate = 921600;
constexpr unsigned int kSamples = 5000;
// What goes over the line for one block: two frames with their acknowledgements, the block, its acknowledgement.
constexpr double kIdealSeconds = (9 + 3 + 6 + 3 + kSamples * 5 + 3) * 10.0 / kBaudRate;

void BM_SendOnThrottledLink(benchmark::State& state) {
  zrv::sim::PortOptions line;
  line.baudRate = kBaudRate;
  zrv::sim::PseudoTerminal simulator({}, line);
  ZRVDevice device;
  device.ConnectDevice(simulator.Port().c_str());
  std::vector<float> x(kSamples, 0.5f), y(kSamples, -0.5f);
  std::vector<unsigned char> m(kSamples, 1);
  for (auto _ : state) {
    device.SendDataStream(x.data(), y.data(), m.data(), kSamples, 0, false);
    if (device.GetLastError() != ErrorNone) return state.SkipWithError("not sent");
  }
}
BENCHMARK(BM_SendOnThrottledLink)->UseRealTime()->Iterations(4);

void BM_IdealThrottledLink(benchmark::State& state) {
  for (auto _ : state) state.SetIterationTime(kIdealSeconds);
}
BENCHMARK(BM_IdealThrottledLink)->UseManualTime()->Iterations(4);

const zrv::bench::Aim kAims[] = {
    {"command round trip to the bare one", "BM_TransportRoundTrip", "BM_BareRoundTrip", 1.1},
    {"5000 samples at 921600 baud to the ideal", "BM_SendOnThrottledLink", "BM_IdealThrottledLink", 1.01},
};

}  // namespace
