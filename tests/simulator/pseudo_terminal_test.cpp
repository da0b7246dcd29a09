// The pseudo-terminal end, through plain open, read and write.
#include "simulator/pseudo_terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>

#include "ZRVSerialIO.h"
#include "tests/simulator/host.h"

namespace zrv::sim {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

class Client {
 public:
  explicit Client(const std::string& path) : fd_(open(path.c_str(), O_RDWR | O_NOCTTY)) {}
  ~Client() { close(fd_); }
  int fd() const { return fd_; }

  void Write(const Bytes& bytes) const {
    EXPECT_EQ(write(fd_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  // Up to count bytes, or those that came before two seconds of silence or the end of the line.
  Bytes ReadBytes(size_t count) const {
    Bytes bytes(count);
    size_t done = 0;
    for (pollfd wait = {fd_, POLLIN, 0}; done < count && poll(&wait, 1, 2000) > 0;) {
      const ssize_t got = read(fd_, bytes.data() + done, count - done);
      if (got <= 0) break;
      done += static_cast<size_t>(got);
    }
    bytes.resize(done);
    return bytes;
  }
  std::string Ask(const std::string& codeAndPayload, size_t answerBytes = 3) const {
    Write(FromHex(FrameOf(codeAndPayload)));
    return ToHex(ReadBytes(answerBytes));
  }

 private:
  int fd_;
};

// With a directory for links to ports.
class PseudoTerminalTest : public ::testing::Test {
 protected:
  PseudoTerminalTest() {
    std::string name = (fs::temp_directory_path() / "zrv-ports-XXXXXX").string();
    directory = mkdtemp(name.data());
  }
  ~PseudoTerminalTest() override { fs::remove_all(directory); }
  PortOptions Linked(const char* name = "") const { return {directory.string(), name, 0}; }

  fs::path directory;
};

#ifdef TIOCGEXCL
bool IsExclusive(const std::string& path) {
  const Client client(path);
  int exclusive = -1;
  EXPECT_EQ(ioctl(client.fd(), TIOCGEXCL, &exclusive), 0);
  return exclusive != 0;
}

// The mark is asked for, because a privileged user could open a locked port all the same.
TEST_F(PseudoTerminalTest, NoLockStaysBehindOurTransport) {
  PseudoTerminal simulator;
  {
    ZRVSerialIO port;
    ASSERT_EQ(port.Open(simulator.Port().c_str(), 921600, 0, 0), ZRVSerialIO::kOk);
    EXPECT_TRUE(IsExclusive(simulator.Port()));
    EXPECT_FALSE(ZRVSerialIO::Probe(simulator.Port().c_str()));
    EXPECT_TRUE(IsExclusive(simulator.Port())) << "a refused second user must not unlock it";
  }
  EXPECT_FALSE(IsExclusive(simulator.Port()));
  EXPECT_TRUE(ZRVSerialIO::Probe(simulator.Port().c_str()));
  EXPECT_FALSE(IsExclusive(simulator.Port()));
}
#endif

TEST_F(PseudoTerminalTest, EveryByteValueAndLargeAnswersPassBothWays) {
  PseudoTerminal simulator;
  Client client(simulator.Port());
  Bytes block;
  for (unsigned i = 0; i < 256; ++i) block.insert(block.end(), 5, static_cast<uint8_t>(i));
  EXPECT_EQ(client.Ask("B1 00 05 00"), kAck);
  EXPECT_EQ(client.Ask("B2"), kAck);
  client.Write(block);
  EXPECT_EQ(ToHex(client.ReadBytes(3)), kAck);
  const auto samples = simulator.Access([](Controller& c) { return c.Block(); });
  ASSERT_EQ(samples.size(), 256u);
  for (unsigned i = 0; i < 256; ++i) EXPECT_EQ(samples[i].m, i);
  for (const std::string byte : {"0A", "0D", "03", "04", "11", "13", "1A", "7F", "FF"}) {
    client.Write(FromHex(FrameOf("BF " + byte + " " + byte + " 00 80")));
    EXPECT_EQ(client.Ask("E4", 7), kAck + " " + byte + " " + byte + " 00 80");
  }
  EXPECT_EQ(client.Ask("A4 40 0D 03"), kAck);  // 200000 samples
  client.Write(FromHex(FrameOf("A5")));
  EXPECT_EQ(client.ReadBytes(1000003).size(), 1000003u);
  EXPECT_EQ(client.Ask("E3"), kAck);
}

TEST_F(PseudoTerminalTest, LinkNamesThePortAndGoes) {
  const fs::path ports = directory / "dev";
  {
    PseudoTerminal first({}, {.portDirectory = ports.string()});
    PseudoTerminal second({}, {.portDirectory = ports.string()});
    EXPECT_EQ(first.Port(), (ports / "ttyUSB0").string());
    EXPECT_EQ(second.Port(), (ports / "ttyUSB1").string());
    EXPECT_EQ(fs::read_symlink(ports / "ttyUSB1"), second.TerminalPath());
  }
  EXPECT_TRUE(fs::is_empty(ports));
}

TEST_F(PseudoTerminalTest, LinkReplacesOnlyWhatAKilledSimulatorLeft) {
  fs::create_symlink("/dev/pts/gone", directory / "ttyUSB7");
  std::ofstream(directory / "file") << "precious";
  fs::create_symlink(directory / "file", directory / "ttyUSB8");
  {
    PseudoTerminal simulator({}, Linked("ttyUSB7"));
    EXPECT_EQ(fs::read_symlink(directory / "ttyUSB7"), simulator.TerminalPath());
    for (const char* taken : {"file", "ttyUSB7", "ttyUSB8"}) {
      EXPECT_THROW(PseudoTerminal({}, Linked(taken)), std::system_error) << taken;
    }
    fs::remove(directory / "ttyUSB7");
    fs::create_symlink("elsewhere", directory / "ttyUSB7");
  }
  EXPECT_TRUE(fs::is_symlink(directory / "ttyUSB7")) << "no longer ours to remove";
  EXPECT_EQ(fs::file_size(directory / "file"), 8u);
}

TEST_F(PseudoTerminalTest, CuttingTheLinkHangsUp) {
  PseudoTerminal simulator({}, Linked());
  Client client(simulator.Port());
  simulator.CutLink();
  EXPECT_FALSE(simulator.Running());
  EXPECT_TRUE(fs::is_empty(directory));
  pollfd wait = {client.fd(), POLLIN, 0};
  EXPECT_EQ(poll(&wait, 1, 1000), 1);
  EXPECT_TRUE(wait.revents & POLLHUP);
}

TEST_F(PseudoTerminalTest, ChatterFromOutsideWakesTheServer) {
  PseudoTerminal simulator;
  Client client(simulator.Port());
  EXPECT_EQ(client.Ask("E3"), kAck);
  simulator.Access([](Controller& c) { c.faults().StartChatter({0x55, 10000}); });
  EXPECT_EQ(client.ReadBytes(200), Bytes(200, 0x55));
}

TEST_F(PseudoTerminalTest, WaitingCostsNothing) {
  PseudoTerminal never, left;
  EXPECT_EQ(Client(left.Port()).Ask("E3"), kAck);
  Client waiting(never.Port());
  EXPECT_EQ(waiting.Ask("E3"), kAck);
  const std::clock_t before = std::clock();
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10);  // a busy loop would burn a second in the two threads
}

// Ideal is 92160 bytes a second. Being late is the machine's right; being early would be a fault.
TEST_F(PseudoTerminalTest, ThrottleIsNeverFasterThanTheLine) {
  PseudoTerminal simulator({}, {.portDirectory = "", .portName = "", .baudRate = 921600});
  Client client(simulator.Port());
  const auto expectThrottled = [&](const Bytes& sent, size_t answerBytes) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // no time in which bytes could have come
    const auto start = steady_clock::now();
    client.Write(sent);
    EXPECT_EQ(client.ReadBytes(answerBytes).size(), answerBytes);
    const std::chrono::duration<double> passed = steady_clock::now() - start;
    EXPECT_GE(passed.count(), static_cast<double>(std::max(sent.size(), answerBytes)) / 92160 * 0.995);
  };
  client.Ask("B1 50 C3 00");
  client.Ask("B2");
  expectThrottled(Bytes(50000, 0), 3);
  client.Ask("A4 10 27 00");
  expectThrottled(FromHex(FrameOf("A5")), 50003);
}

}  // namespace
}  // namespace zrv::sim
