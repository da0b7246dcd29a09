#include "simulator/memory_transport.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

struct Link {
  explicit Link(std::shared_ptr<Clock> time = std::make_shared<VirtualClock>())
      : clock(std::move(time)), port(controller, clock) {
    EXPECT_EQ(port.Open("memory", 921600, 0, 0), ZRVSerialIO::kOk);
  }
  int Write(const std::string& hex) {
    const Bytes bytes = FromHex(hex);
    return port.Write(bytes.data(), static_cast<unsigned>(bytes.size()), nullptr, 100);
  }
  int Read(unsigned count, unsigned timeoutMs = 1000, int mode = ZRVSerialIO::kWaitForAll) {
    buffer.assign(count + 1, 0xEE);  // with a canary behind
    const int status = port.Read(buffer.data(), count, &received, timeoutMs, mode);
    EXPECT_EQ(buffer.back(), 0xEE);
    buffer.pop_back();
    return status;
  }

  std::shared_ptr<Controller> controller = std::make_shared<Controller>();
  std::shared_ptr<Clock> clock;
  MemoryTransport port;
  Bytes buffer;
  unsigned received = 99;
};

TEST(MemoryTransportTest, ReadsAsARealPortDoes) {
  Link link;
  link.Write(kRespondFrame);
  EXPECT_EQ(link.Read(2), ZRVSerialIO::kOk);
  EXPECT_EQ(ToHex(link.buffer), "B5 B0");
  EXPECT_EQ(link.Read(3, 500), ZRVSerialIO::kTimeout);
  EXPECT_EQ(ToHex(link.buffer), "0A DC DC");
  EXPECT_EQ(link.received, 1u);
  EXPECT_DOUBLE_EQ(link.clock->Now(), 0.5) << "a wait takes its time on the clock";
  link.Write(kRespondFrame);
  EXPECT_EQ(link.Read(5, 1000, ZRVSerialIO::kReturnAtOnce), ZRVSerialIO::kOk);
  EXPECT_EQ(ToHex(link.buffer), "B5 B0 0A DC DC");
  EXPECT_EQ(link.Read(5, 1000, ZRVSerialIO::kKeepMode), ZRVSerialIO::kOk);
  EXPECT_EQ(link.received, 0u);
  EXPECT_DOUBLE_EQ(link.clock->Now(), 0.5);
  EXPECT_EQ(link.Read(1, ZRVSerialIO::kInfinite), ZRVSerialIO::kTimeout) << "nothing will ever come";
}

TEST(MemoryTransportTest, LongWaitsTakeNoTime) {
  Link link;
  link.Write("B5 B0 2B B1 09 05 00 00 0A B5 B0 2B B2 06 0A 00 00 00 00 00");
  link.Write("B5 B0 2B E8 09 C8 00 00 0A B5 B0 2B F3 07 20 0A");  // 32 samples of 5 ms
  EXPECT_EQ(link.Read(15, 0), ZRVSerialIO::kOk);
  EXPECT_EQ(link.Read(3, 600000), ZRVSerialIO::kOk);
  EXPECT_NEAR(link.clock->Now(), 0.16, 1e-6);
}

TEST(MemoryTransportTest, RealTimeWaitsReally) {
  Link link(std::make_shared<RealClock>());
  link.controller->faults().OnCommand(0xE3, Fault::Delay(0.05), 0);
  const double start = link.clock->Now();
  link.Write(kRespondFrame);
  EXPECT_EQ(link.Read(3), ZRVSerialIO::kOk);
  EXPECT_GE(link.clock->Now() - start, 0.05);
}

TEST(MemoryTransportTest, LinesEndAtTheirTerminatorOrAfterEightyBytes) {
  Link link;
  char line[82];
  line[81] = '#';
  link.Write("B5 B0 2B E1 06 0A");
  link.Read(3);
  EXPECT_EQ(link.port.ReadLine(line, '\n', 100), ZRVSerialIO::kOk);
  EXPECT_STREQ(line, "ZR-INFO");
  EXPECT_EQ(link.port.Purge(), ZRVSerialIO::kOk);
  link.controller->faults().StartChatter({'x', 1e6});
  EXPECT_EQ(link.port.ReadLine(line, 'y', 100), ZRVSerialIO::kOk);
  EXPECT_EQ(std::strlen(line), 80u);
  EXPECT_EQ(line[81], '#');
}

TEST(MemoryTransportTest, ClosedAndCutLinksSaySo) {
  Link link;
  link.controller->faults().CutLink();
  EXPECT_EQ(link.Write(kRespondFrame), ZRVSerialIO::kFailed);
  EXPECT_EQ(link.Read(1), ZRVSerialIO::kFailed);
  EXPECT_EQ(link.port.Purge(), ZRVSerialIO::kFailed);
  EXPECT_EQ(link.port.Open("memory", 1, 0, 0), ZRVSerialIO::kFailed) << "open already";
  EXPECT_EQ(link.port.Close(), ZRVSerialIO::kOk);
  EXPECT_EQ(link.port.Open("memory", 1, 0, 0), ZRVSerialIO::kOpenFailed);
  EXPECT_EQ(link.Write(kRespondFrame), ZRVSerialIO::kNotOpen);
  EXPECT_EQ(link.Read(1), ZRVSerialIO::kNotOpen);
  EXPECT_EQ(link.port.Purge(), ZRVSerialIO::kNotOpen);
}

}  // namespace
}  // namespace zrv::sim
