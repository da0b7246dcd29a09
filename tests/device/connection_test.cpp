// Names of ports, the check that a controller answers, ownership of transports, the printed list.
#include <cstdio>

#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

// Counts the transports of a test that are alive.
class CountedTransport : public ScriptedTransport {
 public:
  explicit CountedTransport(int closeStatus = kOk) : closeStatus_(closeStatus) { ++alive; }
  ~CountedTransport() override { --alive; }
  int Close() override { return closeStatus_; }
  static inline int alive = 0;

 private:
  int closeStatus_;
};

TEST(Connection, PortNames) {
  ZRVDevice device;
  for (const char* name : {static_cast<const char*>(nullptr), "", "COM", "com3", "ttyNONE0"}) {
    device.ConnectDevice(name);
    EXPECT_EQ(device.GetLastError(), ErrorInvalidPortName) << (name != nullptr ? name : "null");
  }
#ifdef _WIN32
  const char* const absent[] = {"COM251", "\\\\.\\COM251"};
#else
  const char* const absent[] = {"COM251", "/dev/ttyNONE0", "/dev/null"};  // the last is no serial line
#endif
  for (const char* name : absent) {
    device.ConnectDevice(name);
    EXPECT_EQ(device.GetLastError(), ErrorNoDeviceFound) << name;
    EXPECT_FALSE(device.IsDeviceConnected());
  }
}

TEST(Connection, TransportsBelongToTheDevice) {
  {
    ZRVDevice device;
    SkipPauses(device);
    const auto outcome = [&] { return std::tuple(device.GetLastError(), CountedTransport::alive); };
    auto* silent = new CountedTransport;
    silent->Answer(0xE0, {});
    device.ConnectDevice(silent);
    EXPECT_FALSE(device.IsDeviceConnected());
    EXPECT_EQ(outcome(), std::tuple(ErrorSerialComm, 0));
    auto* first = new CountedTransport;
    device.ConnectDevice(first);
    device.ConnectDevice(first);  // the same again: checked anew, still owned
    EXPECT_EQ(outcome(), std::tuple(ErrorNone, 1));
    device.ConnectDevice(new CountedTransport(ZRVSerialIO::kFailed));
    EXPECT_EQ(outcome(), std::tuple(ErrorNone, 1));
    device.DisconnectDevice();
    EXPECT_EQ(outcome(), std::tuple(ErrorSerialComm, 0));
    device.ConnectDevice(new CountedTransport);
    device.DeleteDevice();
    EXPECT_EQ(std::tuple(device.GetDeviceParam(ParamSampleRate), CountedTransport::alive), std::tuple(10000.0f, 0));
    device.ConnectDevice(new CountedTransport);
  }
  EXPECT_EQ(CountedTransport::alive, 0);
}

// The list may be of the caller's making, with texts that have no end.
TEST(Connection, TheListIsPrintedALineADevice) {
  ZRVAvailableDevices list;
  std::strcpy(list.DeviceName[0], "Lab");
  std::memset(list.CommType[0], 'c', sizeof list.CommType[0]);
  std::memset(list.CommPortName[0], 'p', sizeof list.CommPortName[0]);
  list.NumDevices = 1;
  ::testing::internal::CaptureStdout();
  ZRVDevice().ListAvailableDevices(&list);
  std::fflush(stdout);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "\nDevice Lab:" + std::string(16, 'c') + " is at serial port " + std::string(10, 'p') + "\n");
  EXPECT_STREQ(ZRVDevice::GetAPIVersion(), "10.7.1.0");
}

}  // namespace
}  // namespace zrv::testing
