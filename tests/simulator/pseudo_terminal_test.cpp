// The pseudo-terminal end, through plain open, read and write.
#include "simulator/pseudo_terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

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

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (fs::temp_directory_path() / "zrv-ports-XXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  ~TemporaryDirectory() { fs::remove_all(path_); }
  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

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
    while (done < count) {
      pollfd wait = {fd_, POLLIN, 0};
      if (poll(&wait, 1, 2000) <= 0) break;
      const ssize_t got = read(fd_, bytes.data() + done, count - done);
      if (got <= 0) break;
      done += static_cast<size_t>(got);
    }
    bytes.resize(done);
    return bytes;
  }
  std::string Ask(const std::string& hex, size_t answerBytes) const {
    Write(FromHex(hex));
    return ToHex(ReadBytes(answerBytes));
  }

 private:
  int fd_;
};

double Seconds(steady_clock::duration time) { return std::chrono::duration<double>(time).count(); }

TEST(PseudoTerminalTest, AnswersOneClientAfterAnother) {
  PseudoTerminal simulator;
  for (int round = 0; round < 3; ++round) {
    const Client client(simulator.Port());
    ASSERT_GE(client.fd(), 0);
    EXPECT_EQ(client.Ask(kStateFrame, 5), kAck + " 00 11") << round;
  }
}

#ifdef TIOCGEXCL
bool IsExclusive(const std::string& path) {
  const Client client(path);
  int exclusive = -1;
  EXPECT_EQ(ioctl(client.fd(), TIOCGEXCL, &exclusive), 0);
  return exclusive != 0;
}

// The mark is asked for, because a privileged user could open a locked port all the same.
TEST(PseudoTerminalTest, NoLockStaysBehindOurTransport) {
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

TEST(PseudoTerminalTest, EveryByteValuePassesBothWays) {
  PseudoTerminal simulator;
  Client client(simulator.Port());
  Bytes block;
  for (unsigned i = 0; i < 256; ++i) block.insert(block.end(), 5, static_cast<uint8_t>(i));
  EXPECT_EQ(client.Ask("B5 B0 2B B1 09 00 05 00 0A B5 B0 2B B2 06 0A", 6), kAck + " " + kAck);
  client.Write(block);
  EXPECT_EQ(ToHex(client.ReadBytes(3)), kAck);
  const auto samples = simulator.Access([](Controller& c) { return c.Block(); });
  ASSERT_EQ(samples.size(), 256u);
  for (unsigned i = 0; i < 256; ++i) EXPECT_EQ(samples[i].m, i);
  for (const std::string byte : {"0A", "0D", "03", "04", "11", "13", "1A", "7F", "FF"}) {
    client.Write(FromHex("B5 B0 2B BF 0A " + byte + " " + byte + " 00 80 0A"));
    EXPECT_EQ(client.Ask("B5 B0 2B E4 06 0A", 7), kAck + " " + byte + " " + byte + " 00 80");
  }
  EXPECT_EQ(client.Ask("B5 B0 2B A4 09 40 0D 03 0A", 3), kAck);  // 200000 samples
  client.Write(FromHex("B5 B0 2B A5 06 0A"));
  EXPECT_EQ(client.ReadBytes(1000003).size(), 1000003u) << "large answers arrive whole";
  EXPECT_EQ(client.Ask(kRespondFrame, 3), kAck);
}

TEST(PseudoTerminalTest, LinkNamesThePortAndGoes) {
  const TemporaryDirectory directory;
  const fs::path ports = directory.path() / "dev";
  {
    PseudoTerminal first({}, {.portDirectory = ports.string()});
    PseudoTerminal second({}, {.portDirectory = ports.string()});
    EXPECT_EQ(first.Port(), (ports / "ttyUSB0").string());
    EXPECT_EQ(second.Port(), (ports / "ttyUSB1").string());
    EXPECT_EQ(fs::read_symlink(ports / "ttyUSB1"), second.TerminalPath());
    EXPECT_EQ(Client(second.Port()).Ask(kRespondFrame, 3), kAck);
  }
  EXPECT_TRUE(fs::is_empty(ports));
}

TEST(PseudoTerminalTest, LinkReplacesOnlyWhatAKilledSimulatorLeft) {
  const TemporaryDirectory directory;
  const auto port = [&](const char* name) { return PortOptions{directory.path().string(), name, 0}; };
  fs::create_symlink("/dev/pts/gone", directory.path() / "ttyUSB7");
  std::ofstream(directory.path() / "file") << "precious";
  fs::create_symlink(directory.path() / "file", directory.path() / "ttyUSB8");
  {
    PseudoTerminal simulator({}, port("ttyUSB7"));
    EXPECT_EQ(fs::read_symlink(directory.path() / "ttyUSB7"), simulator.TerminalPath());
    EXPECT_THROW(PseudoTerminal({}, port("file")), std::system_error);
    EXPECT_THROW(PseudoTerminal({}, port("ttyUSB7")), std::system_error) << "a live one";
    EXPECT_THROW(PseudoTerminal({}, port("ttyUSB8")), std::system_error);
    fs::remove(directory.path() / "ttyUSB7");
    fs::create_symlink("elsewhere", directory.path() / "ttyUSB7");
  }
  EXPECT_TRUE(fs::is_symlink(directory.path() / "ttyUSB7")) << "no longer ours to remove";
  EXPECT_EQ(fs::file_size(directory.path() / "file"), 8u);
}

TEST(PseudoTerminalTest, CuttingTheLinkHangsUpFromOutsideAndInMidAnswer) {
  for (const bool fault : {false, true}) {
    const TemporaryDirectory directory;
    PseudoTerminal simulator({}, {.portDirectory = directory.path().string()});
    Client client(simulator.Port());
    if (fault) {
      simulator.Access([](Controller& c) { c.faults().OnCommand(0xF4, Fault::Cut(), 3); });
      client.Ask(kStateFrame, 5);
    } else {
      simulator.CutLink();
      EXPECT_FALSE(simulator.Running());
      EXPECT_TRUE(fs::is_empty(directory.path()));
      EXPECT_LT(open(simulator.TerminalPath().c_str(), O_RDWR | O_NOCTTY), 0);
    }
    pollfd wait = {client.fd(), POLLIN, 0};
    EXPECT_EQ(poll(&wait, 1, 1000), 1);
    EXPECT_TRUE(wait.revents & POLLHUP);
  }
}

TEST(PseudoTerminalTest, ChatterFromOutsideWakesTheServer) {
  PseudoTerminal simulator;
  Client client(simulator.Port());
  EXPECT_EQ(client.Ask(kRespondFrame, 3), kAck);
  simulator.Access([](Controller& c) { c.faults().StartChatter({0x55, 10000}); });
  EXPECT_EQ(client.ReadBytes(200), Bytes(200, 0x55));
}

TEST(PseudoTerminalTest, WaitingCostsNothing) {
  PseudoTerminal never, left;
  {
    Client gone(left.Port());
    EXPECT_EQ(gone.Ask(kRespondFrame, 3), kAck);
  }
  Client waiting(never.Port());
  EXPECT_EQ(waiting.Ask(kRespondFrame, 3), kAck);
  const std::clock_t before = std::clock();
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10);  // a busy loop would burn a second in the two threads
}

// Ideal is 92160 bytes a second. Being late is the machine's right; being early would be a fault.
TEST(PseudoTerminalTest, ThrottleIsNeverFasterThanTheLine) {
  PseudoTerminal simulator({}, {.portDirectory = "", .portName = "", .baudRate = 921600});
  Client client(simulator.Port());
  EXPECT_EQ(client.Ask("B5 B0 2B B1 09 50 C3 00 0A B5 B0 2B B2 06 0A", 6), kAck + " " + kAck);
  const auto idle = [] { std::this_thread::sleep_for(std::chrono::milliseconds(100)); };
  idle();  // must not count as time in which bytes could have come
  auto start = steady_clock::now();
  client.Write(Bytes(50000, 0));
  EXPECT_EQ(ToHex(client.ReadBytes(3)), kAck);
  EXPECT_GE(Seconds(steady_clock::now() - start), 50000 / 92160.0 * 0.995);
  client.Ask("B5 B0 2B A4 09 10 27 00 0A", 3);
  idle();
  start = steady_clock::now();
  client.Write(FromHex("B5 B0 2B A5 06 0A"));
  EXPECT_EQ(client.ReadBytes(50003).size(), 50003u);
  EXPECT_GE(Seconds(steady_clock::now() - start), 50003 / 92160.0 * 0.995);
}

}  // namespace
}  // namespace zrv::sim
