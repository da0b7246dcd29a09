// Names of ports, the check that a controller answers, ownership of transports, the printed list.
#include <cstdio>
#include <memory>

#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

// Counts the transports of a test that are alive.
class CountedTransport : public ScriptedTransport {
 public:
  explicit CountedTransport(int& alive, int closeStatus = kOk) : alive_(alive), closeStatus_(closeStatus) { ++alive_; }
  ~CountedTransport() override { --alive_; }
  int Close() override { return closeStatus_; }

 private:
  int& alive_;
  int closeStatus_;
};

TEST(Connection, PortNames) {
  const std::pair<const char*, ZRVError> kCases[] = {
      {nullptr, ErrorInvalidPortName},
      {"", ErrorInvalidPortName},
      {"COM", ErrorInvalidPortName},
      {"com3", ErrorInvalidPortName},
      {"ttyNONE0", ErrorInvalidPortName},
      {"COM251", ErrorNoDeviceFound},
      {"\\\\.\\COM251", ErrorNoDeviceFound},
#ifndef _WIN32
      {"/dev/ttyNONE0", ErrorNoDeviceFound},
      {"/dev/null", ErrorNoDeviceFound},  // no serial line
      {"/tmp", ErrorNoDeviceFound},
#endif
  };
  ZRVDevice device;
  for (const auto& [name, error] : kCases) {
    device.ConnectDevice(name);
    EXPECT_EQ(device.GetLastError(), error) << (name != nullptr ? name : "null");
    EXPECT_FALSE(device.IsDeviceConnected());
  }
}

TEST(Connection, IsTriedAgainThenCentredAndDark) {
  ZRVDevice device;
  auto* port = new ScriptedTransport;
  Bytes laserOn = kIdentification;
  laserOn[laserOn.size() - 11] = 1;
  port->Answer(0xE0, laserOn);
  port->AnswerOnce(0xE0, {});
  device.ConnectDevice(port);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  const std::string writes = port->TakeWrites();
  const std::string check = "0A | 0A | 0A | B5 B0 2B B5 07 00 0A | 0A | 0A | 0A | B5 B0 2B E0 06 0A",
                    rest = " | B5 B0 2B E4 06 0A | B5 B0 2B E1 06 0A | "
                           "B5 B0 2B BF 0A 00 80 00 80 0A | B5 B0 2B F2 06 0A",
                    expected = check + " | " + kResync + " | " + check + rest;
  EXPECT_EQ(writes.substr(0, expected.size()), expected);
  EXPECT_EQ(writes.substr(writes.size() - 17), "B5 B0 2B D8 06 0A");
}

TEST(Connection, TransportsBelongToTheDevice) {
  int alive = 0;
  {
    ZRVDevice device;
    auto* silent = new CountedTransport(alive);
    silent->Answer(0xE0, {});
    device.ConnectDevice(silent);
    EXPECT_FALSE(device.IsDeviceConnected());
    EXPECT_EQ(std::tuple(device.GetLastError(), alive), std::tuple(ErrorSerialComm, 0));
    auto* first = new CountedTransport(alive);
    device.ConnectDevice(first);
    device.ConnectDevice(first);  // the same again: checked anew, still owned
    EXPECT_EQ(std::tuple(device.GetLastError(), alive), std::tuple(ErrorNone, 1));
    device.ConnectDevice(new CountedTransport(alive, ZRVSerialIO::kFailed));
    EXPECT_EQ(alive, 1);
    device.DisconnectDevice();
    EXPECT_EQ(std::tuple(device.GetLastError(), alive), std::tuple(ErrorSerialComm, 0));
    device.ConnectDevice(new CountedTransport(alive));
    device.DeleteDevice();
    EXPECT_EQ(std::tuple(device.GetDeviceParam(ParamSampleRate), alive), std::tuple(10000.0f, 0));
    device.ConnectDevice(new CountedTransport(alive));
  }
  EXPECT_EQ(alive, 0);
}

// The list may be of the caller's making, with texts that have no end.
TEST(Connection, TheListIsPrintedALineADevice) {
  ZRVAvailableDevices list;
  std::strcpy(list.DeviceName[0], "Lab");
  std::strcpy(list.CommType[0], "USB");
  std::strcpy(list.CommPortName[0], "COM3");
  std::memset(list.DeviceName[1], 'n', sizeof list.DeviceName[1]);
  std::memset(list.CommType[1], 'c', sizeof list.CommType[1]);
  std::memset(list.CommPortName[1], 'p', sizeof list.CommPortName[1]);
  list.NumDevices = 2;
  ::testing::internal::CaptureStdout();
  ZRVDevice().ListAvailableDevices(&list);
  std::fflush(stdout);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "\nDevice Lab:USB is at serial port COM3\nDevice " + std::string(32, 'n') + ":" + std::string(16, 'c') +
                " is at serial port " + std::string(10, 'p') + "\n");
  EXPECT_STREQ(ZRVDevice::GetAPIVersion(), "10.7.1.0");
}

}  // namespace
}  // namespace zrv::testing
