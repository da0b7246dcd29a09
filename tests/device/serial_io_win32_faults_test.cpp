// The Windows transport against a kernel32 that can fail at every call.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "ZRVSerialIO.h"
#include "tests/device/fake_kernel32.h"

namespace zrv::testing {
namespace {

using ::testing::ElementsAre;
using Io = FakeKernel::Io;

constexpr const char* kPath = "\\\\.\\COM3";

class FaultyKernel : public ::testing::Test {
 protected:
  void SetUp() override { Kernel() = {}; }
  void TearDown() override {
    port.Close();
    EXPECT_TRUE(Kernel().handles.empty()) << "a handle leaked";
    EXPECT_EQ(Kernel().closesOfStrangers, 0);
    EXPECT_FALSE(Kernel().driverOwnsRequest) << "the driver still writes to a buffer that is gone";
  }
  int Open() { return port.Open(kPath, 921600, 131072, 65536); }

  ZRVSerialIO port;
  unsigned char buffer[4] = {};
  unsigned moved = 99;
};

TEST_F(FaultyKernel, TheOpenSequence) {
  EXPECT_EQ(Open(), 0);
  const FakeKernel& k = Kernel();
  EXPECT_THAT(k.calls, ElementsAre("CreateFileA", "CreateEventA", "SetupComm", "SetCommMask", "GetDefaultCommConfigA",
                                   "SetCommConfig", "GetCommTimeouts", "SetCommTimeouts", "GetCommState",
                                   "SetCommState"));
  EXPECT_EQ(k.path, kPath);
  EXPECT_EQ(k.access, 0xC0000000u);
  EXPECT_EQ(k.share, 0u);
  EXPECT_EQ(k.flags, 0x40000000u);  // overlapped
  EXPECT_TRUE(k.manualReset);
  EXPECT_FALSE(k.initiallySet);
  EXPECT_EQ(k.inputQueue, 131072u);
  EXPECT_EQ(k.outputQueue, 65536u);
  EXPECT_EQ(k.mask, 0xC1u);
  EXPECT_EQ(k.configSize, 52u);
  EXPECT_EQ(k.dcb.BaudRate, 921600u);
  EXPECT_EQ(k.timeouts.ReadIntervalTimeout, 0u);
}

TEST_F(FaultyKernel, QueueSizesAreAskedForUnlessBothAreZero) {
  EXPECT_EQ(port.Open(kPath, 9600, 0, 0), 0);
  EXPECT_EQ(Kernel().Count("SetupComm"), 0);
  port.Close();
  EXPECT_EQ(port.Open(kPath, 9600, 0, 16), 0);
  EXPECT_EQ(Kernel().Count("SetupComm"), 1);
}

TEST_F(FaultyKernel, EachCallOfTheOpenSequenceFails) {
  const struct {
    const char* call;
    int status;
    size_t handlesLeft;
  } cases[] = {
      {"CreateFileA", 2, 0},  {"CreateEventA", 4, 0},          {"SetupComm", 4, 0},
      {"SetCommMask", 4, 2},  // the port stays open
      {"GetDefaultCommConfigA", 0, 2}, {"SetCommConfig", 0, 2}, {"GetCommTimeouts", 0, 2},
      {"SetCommTimeouts", 0, 2},       {"GetCommState", 0, 2},  {"SetCommState", 0, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.call);
    Kernel() = {};
    Kernel().failing = c.call;
    EXPECT_EQ(Open(), c.status);
    EXPECT_EQ(Kernel().Count(c.call), 1);
    EXPECT_EQ(Kernel().handles.size(), c.handlesLeft);
    EXPECT_EQ(port.Write("abcd", 4, &moved, 100), c.handlesLeft == 0 ? 1 : 0);
    EXPECT_EQ(Open(), c.handlesLeft == 0 ? c.status : 4);  // nothing changes what is open
    EXPECT_EQ(port.Close(), 0);
    EXPECT_TRUE(Kernel().handles.empty());

    Kernel().failing.clear();
    EXPECT_EQ(Open(), 0);
    EXPECT_EQ(port.Write("abcd", 4, &moved, 100), 0);
    port.Close();
    EXPECT_EQ(Kernel().closesOfStrangers, 0);
  }
}

TEST_F(FaultyKernel, TheDestructorClosesAnOpenPort) {
  {
    ZRVSerialIO other;
    EXPECT_EQ(other.Open(kPath, 9600, 0, 0), 0);
    EXPECT_EQ(Kernel().handles.size(), 2u);
  }
  EXPECT_TRUE(Kernel().handles.empty());
}

TEST_F(FaultyKernel, HowATransferCanGo) {
  const struct {
    const char* name;
    Io io;
    const char* failing;
    int status;
    unsigned moved;
    int cancels;
    std::string read;
  } cases[] = {
      {"done at once", Io::kDoneAtOnce, "", 0, 4, 0, "\1\2\3\4"},
      {"pends, then done", Io::kPendsThenDone, "", 0, 4, 0, "\1\2\3\4"},
      {"times out with half", Io::kPendsForEver, "", 5, 2, 1, "\1\2\xDC\xDC"},
      {"done just before the cancel", Io::kDoneWhileCancelled, "", 5, 4, 1, "\1\2\3\4"},
      {"the wait fails", Io::kWaitFails, "", 4, 2, 1, "\1\2\3\4"},
      {"the result fails", Io::kPendsThenDone, "GetOverlappedResult", 4, 0, 0, "\1\2\3\4"},
      {"even the cancel fails", Io::kPendsForEver, "CancelIo", 5, 2, 1, "\1\2\xDC\xDC"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Kernel() = {};
    ASSERT_EQ(Open(), 0);
    Kernel().io = c.io;
    Kernel().failing = c.failing;
    Kernel().cancelledAfter = 2;
    EXPECT_EQ(port.Write("abcd", 4, &moved, 100), c.status);
    EXPECT_EQ(moved, c.moved);
    EXPECT_EQ(Kernel().Count("CancelIo"), c.cancels);
    EXPECT_EQ(Kernel().signalled, c.io == Io::kDoneAtOnce);
    EXPECT_EQ(port.Read(buffer, 4, &moved, 100, -1), c.status);
    EXPECT_EQ(moved, c.moved);
    EXPECT_EQ(std::string(buffer, buffer + 4), c.read);
    EXPECT_FALSE(Kernel().driverOwnsRequest);
    EXPECT_EQ(port.Read(buffer, 4, nullptr, 100, -1), c.status);
    port.Close();
  }
}

TEST_F(FaultyKernel, ATransferThatIsRefused) {
  ASSERT_EQ(Open(), 0);
  for (const char* call : {"WriteFile", "ReadFile"}) {
    Kernel().failing = call;
    const bool write = std::string(call) == "WriteFile";
    EXPECT_EQ(write ? port.Write("abcd", 4, &moved, 100) : port.Read(buffer, 4, &moved, 100, -1), 4) << call;
    EXPECT_EQ(moved, 0u);
  }
  EXPECT_EQ(std::string(buffer, buffer + 4), "\xDC\xDC\xDC\xDC");
  EXPECT_EQ(Kernel().Count("WaitForSingleObject"), 0);
  EXPECT_EQ(port.Read(nullptr, 4, &moved, 100, -1), 4);
  EXPECT_EQ(port.Write(nullptr, 4, &moved, 100), 4);
}

TEST_F(FaultyKernel, TheLineIsSetTo8N1WithoutFlowControlAndTheRestIsKept) {
  ASSERT_EQ(Open(), 0);
  DCB& dcb = Kernel().dcb;
  dcb = {};
  dcb.fBinary = dcb.fParity = dcb.fOutxCtsFlow = dcb.fOutxDsrFlow = dcb.fDsrSensitivity = dcb.fOutX = dcb.fInX = 1;
  dcb.fTXContinueOnXoff = dcb.fErrorChar = dcb.fNull = dcb.fAbortOnError = 1;
  dcb.fDtrControl = DTR_CONTROL_HANDSHAKE;
  dcb.fRtsControl = RTS_CONTROL_TOGGLE;
  dcb.ByteSize = 7;
  dcb.Parity = EVENPARITY;
  dcb.StopBits = TWOSTOPBITS;
  dcb.XonChar = 17;
  port.SetBaudRate(460800);
  EXPECT_EQ(dcb.BaudRate, 460800u);
  EXPECT_EQ(dcb.ByteSize, 8);
  EXPECT_EQ(dcb.Parity, NOPARITY);
  EXPECT_EQ(dcb.StopBits, ONESTOPBIT);
  EXPECT_EQ(dcb.fParity + dcb.fOutxCtsFlow + dcb.fOutxDsrFlow + dcb.fOutX + dcb.fInX, 0u);
  EXPECT_EQ(dcb.fDtrControl + dcb.fRtsControl, 0u);
  EXPECT_EQ(dcb.fBinary + dcb.fDsrSensitivity + dcb.fTXContinueOnXoff + dcb.fErrorChar + dcb.fNull + dcb.fAbortOnError,
            6u);
  EXPECT_EQ(dcb.XonChar, 17);
}

TEST_F(FaultyKernel, ReadModesSetTheReadTimeoutsAndKeepThoseOfWrites) {
  ASSERT_EQ(Open(), 0);
  COMMTIMEOUTS& timeouts = Kernel().timeouts;
  for (const auto& [mode, interval] : {std::pair{0, MAXDWORD}, {1, DWORD{0}}, {7, DWORD{9}}, {-1, DWORD{9}}}) {
    timeouts = {9, 9, 9, 5, 6};
    port.SetReadTimeoutMode(mode);
    EXPECT_EQ(timeouts.ReadIntervalTimeout, interval) << mode;
    EXPECT_EQ(timeouts.ReadTotalTimeoutMultiplier, mode == 0 || mode == 1 ? 0u : 9u);
    EXPECT_EQ(timeouts.ReadTotalTimeoutConstant, mode == 0 || mode == 1 ? 0u : 9u);
    EXPECT_EQ(timeouts.WriteTotalTimeoutMultiplier, 5u);
    EXPECT_EQ(timeouts.WriteTotalTimeoutConstant, 6u);
  }
  timeouts = {};
  EXPECT_EQ(port.Read(buffer, 4, nullptr, 100, 0), 0);
  EXPECT_EQ(timeouts.ReadIntervalTimeout, MAXDWORD);
  EXPECT_EQ(port.Read(buffer, 4, nullptr, 100, -1), 0);
  EXPECT_EQ(timeouts.ReadIntervalTimeout, MAXDWORD);
}

TEST_F(FaultyKernel, PurgeAndProbe) {
  EXPECT_EQ(port.Purge(), 1);
  ASSERT_EQ(Open(), 0);
  EXPECT_EQ(port.Purge(), 0);
  EXPECT_EQ(Kernel().purged, 0xCu);  // both queues, no abort
  Kernel().failing = "PurgeComm";
  EXPECT_EQ(port.Purge(), 4);
  port.Close();

  EXPECT_TRUE(ZRVSerialIO::Probe(kPath));
  EXPECT_EQ(Kernel().flags, 0u);
  EXPECT_EQ(Kernel().share, 0u);
  EXPECT_TRUE(Kernel().handles.empty());
  Kernel().failing = "CreateFileA";
  EXPECT_FALSE(ZRVSerialIO::Probe(kPath));
}

}  // namespace
}  // namespace zrv::testing
