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
  void SetUp() override { kernel = {}; }
  void TearDown() override {
    port.Close();
    EXPECT_TRUE(kernel.handles.empty()) << "a handle leaked";
    EXPECT_EQ(kernel.closesOfStrangers, 0);
    EXPECT_FALSE(kernel.driverOwnsRequest) << "the driver still writes to a buffer that is gone";
  }
  int Open() { return port.Open(kPath, 921600, 0x20000, 0x10000); }
  std::string Buffer() const { return std::string(buffer, buffer + 4); }

  ZRVSerialIO port;
  unsigned char buffer[4] = {};
  unsigned moved = 99;
};

TEST_F(FaultyKernel, TheOpenSequence) {
  EXPECT_EQ(Open(), 0);
  EXPECT_THAT(kernel.calls,
              ElementsAre("CreateFileA \\\\.\\COM3 c0000000 0 40000000",  // for one user, overlapped
                          "CreateEventA 1 0", "SetupComm 20000 10000", "SetCommMask c1", "GetDefaultCommConfigA 34",
                          "SetCommConfig", "GetCommTimeouts", "SetCommTimeouts", "GetCommState", "SetCommState"));
  for (const unsigned outputQueue : {0u, 16u}) {  // sizes are asked for unless both are zero
    port.Close();
    kernel = {};
    EXPECT_EQ(port.Open(kPath, 9600, 0, outputQueue), 0);
    EXPECT_EQ(kernel.Count("SetupComm"), outputQueue != 0);
  }
  {
    ZRVSerialIO other;
    EXPECT_EQ(other.Open(kPath, 9600, 0, 0), 0);
    EXPECT_EQ(kernel.handles.size(), 4u);
  }
  EXPECT_EQ(kernel.handles.size(), 2u) << "the destructor closes an open port";
}

TEST_F(FaultyKernel, EachCallOfTheOpenSequenceFails) {
  const struct {
    const char* call;
    int status;
    size_t handlesLeft;
  } cases[] = {
      {"CreateFileA", 2, 0},           {"CreateEventA", 4, 0},  {"SetupComm", 4, 0},
      {"SetCommMask", 4, 2},  // the port stays open
      {"GetDefaultCommConfigA", 0, 2}, {"SetCommConfig", 0, 2}, {"GetCommTimeouts", 0, 2},
      {"SetCommTimeouts", 0, 2},       {"GetCommState", 0, 2},  {"SetCommState", 0, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.call);
    kernel = {};
    kernel.failing = c.call;
    EXPECT_EQ(Open(), c.status);
    EXPECT_EQ(kernel.handles.size(), c.handlesLeft);
    EXPECT_EQ(port.Write("abcd", 4, &moved, 100), c.handlesLeft == 0 ? 1 : 0);
    EXPECT_EQ(Open(), c.handlesLeft == 0 ? c.status : 4);  // nothing changes what is open
    port.Close();
    EXPECT_TRUE(kernel.handles.empty());
    kernel.failing.clear();
    EXPECT_EQ(Open(), 0);
    port.Close();
    EXPECT_EQ(kernel.closesOfStrangers, 0);
  }
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
      {"reading is refused", Io::kDoneAtOnce, "ReadFile", 4, 0, 0, "\xDC\xDC\xDC\xDC"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    kernel = {};
    ASSERT_EQ(Open(), 0);
    kernel.io = c.io;
    kernel.failing = c.failing;
    kernel.cancelledAfter = 2;
    EXPECT_EQ(port.Read(buffer, 4, &moved, 100, -1), c.status);
    EXPECT_EQ(moved, c.moved);
    EXPECT_EQ(Buffer(), c.read);
    EXPECT_EQ(kernel.Count("CancelIo"), c.cancels);
    EXPECT_EQ(kernel.signalled, c.io == Io::kDoneAtOnce && c.status == 0);
    EXPECT_EQ(port.Read(buffer, 4, nullptr, 100, -1), c.status);
    if (kernel.failing == "ReadFile") kernel.failing = "WriteFile";
    EXPECT_EQ(port.Write("abcd", 4, &moved, 100), c.status);
    EXPECT_EQ(moved, c.moved);
    EXPECT_FALSE(kernel.driverOwnsRequest);
    EXPECT_EQ(port.Read(nullptr, 4, &moved, 100, -1), 4);
    EXPECT_EQ(port.Write(nullptr, 4, &moved, 100), 4);
    port.Close();
  }
}

TEST_F(FaultyKernel, TheLineIsSetTo8N1WithoutFlowControlAndTheRestIsKept) {
  ASSERT_EQ(Open(), 0);
  DCB& dcb = kernel.dcb;
  dcb = {};
  dcb.fBinary = dcb.fParity = dcb.fOutxCtsFlow = dcb.fOutxDsrFlow = dcb.fDsrSensitivity = dcb.fOutX = dcb.fInX = 1;
  dcb.fDtrControl = DTR_CONTROL_HANDSHAKE;
  dcb.fRtsControl = RTS_CONTROL_TOGGLE;
  dcb.ByteSize = 7;
  dcb.Parity = EVENPARITY;
  dcb.StopBits = TWOSTOPBITS;
  dcb.XonChar = 17;
  port.SetBaudRate(460800);
  DCB expected = {};
  expected.DCBlength = dcb.DCBlength;
  expected.BaudRate = 460800;
  expected.ByteSize = 8;
  expected.fBinary = expected.fDsrSensitivity = 1;
  expected.XonChar = 17;
  EXPECT_EQ(std::memcmp(&dcb, &expected, sizeof dcb), 0);
}

TEST_F(FaultyKernel, ReadModesSetTheReadTimeoutsAndKeepThoseOfWrites) {
  ASSERT_EQ(Open(), 0);
  for (const auto& [mode, interval] : {std::pair{0, MAXDWORD}, {1, DWORD{0}}, {7, DWORD{9}}, {-1, DWORD{9}}}) {
    const DWORD total = mode == 0 || mode == 1 ? 0 : 9;
    for (const bool byRead : {false, true}) {
      COMMTIMEOUTS& t = kernel.timeouts = {9, 9, 9, 5, 6};
      byRead ? void(port.Read(buffer, 4, nullptr, 100, mode)) : port.SetReadTimeoutMode(mode);
      EXPECT_THAT((std::vector<DWORD>{t.ReadIntervalTimeout, t.ReadTotalTimeoutMultiplier, t.ReadTotalTimeoutConstant,
                                      t.WriteTotalTimeoutMultiplier, t.WriteTotalTimeoutConstant}),
                  ElementsAre(interval, total, total, 5, 6))
          << mode;
    }
  }
}

TEST_F(FaultyKernel, PurgeAndProbe) {
  EXPECT_EQ(port.Purge(), 1);
  ASSERT_EQ(Open(), 0);
  EXPECT_EQ(port.Purge(), 0);
  EXPECT_EQ(kernel.calls.back(), "PurgeComm c");  // both queues, no abort
  kernel.failing = "PurgeComm";
  EXPECT_EQ(port.Purge(), 4);
  port.Close();
  EXPECT_TRUE(ZRVSerialIO::Probe(kPath));
  EXPECT_EQ(kernel.calls.back(), "CreateFileA \\\\.\\COM3 c0000000 0 0");
  kernel.failing = "CreateFileA";
  EXPECT_FALSE(ZRVSerialIO::Probe(kPath));
}

}  // namespace
}  // namespace zrv::testing
