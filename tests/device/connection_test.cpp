// Names of ports, the check that a controller answers, ownership of transports.
#include <gtest/gtest.h>

#include <memory>

#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

// Counts the transports of a test that are alive.
class CountedTransport : public ScriptedTransport {
 public:
  explicit CountedTransport(int& alive) : alive_(alive) { ++alive_; }
  ~CountedTransport() override { --alive_; }
  int Close() override {
    ++closed;
    return closeStatus;
  }
  int closed = 0;
  int closeStatus = kOk;

 private:
  int& alive_;
};

TEST(Connection, PortNames) {
  const struct {
    const char* name;
    ZRVError error;
  } kCases[] = {
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
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name != nullptr ? c.name : "null");
    ZRVDevice device;
    device.ConnectDevice(c.name);
    EXPECT_EQ(device.GetLastError(), c.error);
    EXPECT_FALSE(device.IsDeviceConnected());
  }
}

TEST(Connection, AConnectionIsCheckedCentredAndDark) {
  ZRVDevice device;
  auto* port = new ScriptedTransport;
  Bytes laserOn = kIdentification;
  laserOn[laserOn.size() - 11] = 1;
  port->Answer(0xE0, laserOn);
  device.ConnectDevice(port);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
  EXPECT_TRUE(device.IsDeviceConnected());
  const std::string writes = port->TakeWrites();
  const std::string check = "0A | 0A | 0A | B5 B0 2B B5 07 00 0A | 0A | 0A | 0A | "
                            "B5 B0 2B E0 06 0A | B5 B0 2B E4 06 0A | B5 B0 2B E1 06 0A | "
                            "B5 B0 2B BF 0A 00 80 00 80 0A | B5 B0 2B F2 06 0A";
  EXPECT_EQ(writes.substr(0, check.size()), check);
  EXPECT_EQ(writes.substr(writes.size() - 17), "B5 B0 2B D8 06 0A");
}

TEST(Connection, ASilentControllerIsTriedTwiceThenLetGo) {
  int alive = 0;
  ZRVDevice device;
  auto* port = new CountedTransport(alive);
  port->Answer(0xE0, {});
  device.ConnectDevice(port);
  EXPECT_EQ(device.GetLastError(), ErrorSerialComm);
  EXPECT_EQ(alive, 0);
  EXPECT_FALSE(device.IsDeviceConnected());
}

TEST(Connection, ASecondAttemptCounts) {
  ZRVDevice device;
  auto* port = new ScriptedTransport;
  port->Answer(0xE0, kIdentification);
  port->AnswerOnce(0xE0, {});
  device.ConnectDevice(port);
  EXPECT_EQ(device.GetLastError(), ErrorNone);
}

TEST(Connection, TransportsBelongToTheDevice) {
  int alive = 0;
  {
    ZRVDevice device;
    auto* first = new CountedTransport(alive);
    device.ConnectDevice(first);
    device.ConnectDevice(first);  // the same again: checked anew, still owned
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(device.GetLastError(), ErrorNone);
    device.ConnectDevice(new CountedTransport(alive));
    EXPECT_EQ(alive, 1);
    device.ConnectDevice(static_cast<ZRVSerialIO*>(nullptr));
    EXPECT_EQ(device.GetLastError(), ErrorNotConnected);
    EXPECT_EQ(alive, 1);
    auto* last = new CountedTransport(alive);
    last->closeStatus = ZRVSerialIO::kFailed;
    device.ConnectDevice(last);
    device.DisconnectDevice();
    EXPECT_EQ(device.GetLastError(), ErrorSerialComm);
    EXPECT_EQ(alive, 0);
    device.ConnectDevice(new CountedTransport(alive));
    device.DeleteDevice();
    EXPECT_EQ(alive, 0);
    EXPECT_EQ(device.GetDeviceParam(ParamSampleRate), 10000.0f);
    device.ConnectDevice(new CountedTransport(alive));
    EXPECT_EQ(alive, 1);
  }
  EXPECT_EQ(alive, 0);
}

TEST(Connection, NullRecordsAndVersion) {
  ZRVDevice device;
  device.GetAvailableDevices(nullptr);
  EXPECT_EQ(device.GetLastError(), ErrorNotConnected);
  device.ListAvailableDevices(nullptr);
  EXPECT_EQ(device.GetLastError(), ErrorNotConnected);
  const std::unique_ptr<ZRVDeviceParams> unchecked(device.CheckConnectDevice());
  EXPECT_EQ(unchecked->ParamsValid, 0);
  EXPECT_STREQ(ZRVDevice::GetAPIVersion(), "10.7.1.0");
}

TEST(Connection, TheListIsPrintedALineADevice) {
  ZRVAvailableDevices list;
  std::strcpy(list.DeviceName[0], "Lab");
  std::strcpy(list.CommType[0], "USB");
  std::strcpy(list.CommPortName[0], "COM3");
  list.NumDevices = 1;
  ZRVDevice device;
  ::testing::internal::CaptureStdout();
  device.ListAvailableDevices(&list);
  std::fflush(stdout);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "\nDevice Lab:USB is at serial port COM3\n");
}

TEST(Connection, TextsWithoutAnEndArePrintedUpToTheirField) {
  ZRVAvailableDevices list;
  std::memset(list.DeviceName, 'n', sizeof list.DeviceName);
  std::memset(list.CommType, 'c', sizeof list.CommType);
  std::memset(list.CommPortName, 'p', sizeof list.CommPortName);
  list.NumDevices = 1;
  ZRVDevice device;
  ::testing::internal::CaptureStdout();
  device.ListAvailableDevices(&list);
  std::fflush(stdout);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "\nDevice " + std::string(32, 'n') + ":" + std::string(16, 'c') +
                                                          " is at serial port " + std::string(10, 'p') + "\n");
}

}  // namespace
}  // namespace zrv::testing
