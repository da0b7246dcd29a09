#include "simulator/memory_transport.h"

#include <cstring>

#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

struct Link {
  Link() { EXPECT_EQ(port.Open("memory", 921600, 0, 0), ZRVSerialIO::kOk); }
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
  std::shared_ptr<Clock> clock = std::make_shared<VirtualClock>();
  MemoryTransport port{controller, clock};
  Bytes buffer;
  unsigned received = 99;
};

TEST(MemoryTransportTest, ReadsAsARealPortDoes) {
  Link link;
  link.Write(FrameOf("E3"));
  EXPECT_EQ(link.Read(2), ZRVSerialIO::kOk);
  EXPECT_EQ(ToHex(link.buffer), "B5 B0");
  EXPECT_EQ(link.Read(3, 500), ZRVSerialIO::kTimeout);
  EXPECT_EQ(ToHex(link.buffer), "0A DC DC");
  EXPECT_EQ(link.received, 1u);
  EXPECT_DOUBLE_EQ(link.clock->Now(), 0.5) << "a wait takes its time on the clock";
  link.Write(FrameOf("E3"));
  EXPECT_EQ(link.Read(5, 1000, ZRVSerialIO::kReturnAtOnce), ZRVSerialIO::kOk);
  EXPECT_EQ(ToHex(link.buffer), "B5 B0 0A DC DC");
  EXPECT_EQ(link.Read(5, 1000, ZRVSerialIO::kKeepMode), ZRVSerialIO::kOk);
  EXPECT_EQ(link.received, 0u);
  EXPECT_DOUBLE_EQ(link.clock->Now(), 0.5);
  EXPECT_EQ(link.Read(1, ZRVSerialIO::kInfinite), ZRVSerialIO::kTimeout) << "nothing will ever come";
}

TEST(MemoryTransportTest, LinesEndAtTheirTerminatorOrAfterEightyBytes) {
  Link link;
  char line[82];
  line[81] = '#';
  link.Write(FrameOf("E1"));
  link.Read(3);
  EXPECT_EQ(link.port.ReadLine(line, '\n', 100), ZRVSerialIO::kOk);
  EXPECT_STREQ(line, "ZR-INFO");
  EXPECT_EQ(link.port.Purge(), ZRVSerialIO::kOk);
  link.controller->faults().StartChatter({'x', 1e6});
  EXPECT_EQ(link.port.ReadLine(line, 'y', 100), ZRVSerialIO::kOk);
  EXPECT_EQ(std::string(line) + line[81], std::string(80, 'x') + '#');
}

TEST(MemoryTransportTest, ClosedAndCutLinksSaySo) {
  Link link;
  link.controller->faults().CutLink();
  EXPECT_EQ(link.Write(FrameOf("E3")), ZRVSerialIO::kFailed);
  EXPECT_EQ(link.Read(1), ZRVSerialIO::kFailed);
  EXPECT_EQ(link.port.Purge(), ZRVSerialIO::kFailed);
  EXPECT_EQ(link.port.Open("memory", 1, 0, 0), ZRVSerialIO::kFailed) << "open already";
  EXPECT_EQ(link.port.Close(), ZRVSerialIO::kOk);
  EXPECT_EQ(link.port.Open("memory", 1, 0, 0), ZRVSerialIO::kOpenFailed);
  EXPECT_EQ(link.Write(FrameOf("E3")), ZRVSerialIO::kNotOpen);
  EXPECT_EQ(link.Read(1), ZRVSerialIO::kNotOpen);
  EXPECT_EQ(link.port.Purge(), ZRVSerialIO::kNotOpen);
}

}  // namespace
}  // namespace zrv::sim
