// Construction, discovery of controllers, connecting and letting go.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>

#include "device/protocol.h"
#include "device/state.h"

using namespace zrv;
using namespace zrv::protocol;
using std::chrono::milliseconds;

namespace {

constexpr unsigned int kConnectBaudRate = 921600;
constexpr unsigned int kDiscoveryBaudRate = 460800;
constexpr unsigned int kProbeWriteTimeoutMs = 100;
constexpr unsigned int kDiscoveryReadTimeoutMs = 200;
constexpr milliseconds kPauseBeforeOpen{50};
constexpr milliseconds kPauseBeforeRetry{100};
constexpr int kCheckAttempts = 2;

ZRVDeviceParams DefaultParams() {
  ZRVDeviceParams params;
  params.HardwareFilterOn = 1;
  params.VmaxMEMSDriver = 140.0f;
  params.USARTBaudRate = kConnectBaudRate;
  params.SampleRate = 10000;
  params.HardwareFilterBw = 200;
  params.VdifferenceMax = 80.0f;
  params.Vbias = 80.0f;
  params.DataScale = 1.0f;
  params.SampleRateMin = 200;
  params.SampleRateMax = 100000;
  params.LimitWord3 = 1;
  params.SampleBufferCapacity = kDefaultCapacity;
  params.LimitByte8 = 100;
  params.LimitByte10 = static_cast<unsigned int>(std::lround(params.VmaxMEMSDriver));
  params.VbiasMin = 10;
  params.VbiasMax = 100;
  return params;
}

ZRVTrackParams DefaultTrackParams() {
  ZRVTrackParams track;
  track.Threshold = 0.5f;
  track.NormalGain = 63;
  track.BufferDelay = 40;
  track.HitRatio = 1.0f;
  track.StateBit0 = 1;
  track.StateBit2 = 1;
  return track;
}

// Sets the read time-out for as long as it lives.
class ReadTimeoutScope {
 public:
  ReadTimeoutScope(Link& link, unsigned int timeoutMs)
      : link_(link), saved_(std::exchange(link.readTimeoutMs, timeoutMs)) {}
  ~ReadTimeoutScope() { link_.readTimeoutMs = saved_; }
  ReadTimeoutScope(const ReadTimeoutScope&) = delete;
  ReadTimeoutScope& operator=(const ReadTimeoutScope&) = delete;

 private:
  Link& link_;
  unsigned int saved_;
};

template <size_t size>
void CopyText(char (&to)[size], const char* from) {
  std::snprintf(to, size, "%s", from);
}

// A record of the caller's may hold texts that fill their fields without an end.
template <size_t size>
std::string TextOf(const char (&field)[size]) {
  return std::string(field, std::find(field, field + size, '\0'));
}

void AddDevice(ZRVAvailableDevices& list, const SerialPortEntry& port, const ZRVDeviceParams& params) {
  const unsigned int i = list.NumDevices++;
  CopyText(list.DeviceName[i], params.DeviceName);
  CopyText(list.FirmwareName[i], params.FirmwareName);
  CopyText(list.CommType[i], params.CommType);
  list.USARTBaudRate[i] = params.USARTBaudRate;
  list.CommPortNumber[i] = port.number;
  CopyText(list.CommPortName[i], port.name.c_str());
  list.VmaxMEMSDriver[i] = params.VmaxMEMSDriver;
}

}  // namespace

ZRVDevice::ZRVDevice() : state_(std::make_unique<DeviceState>()) {
  state_->params = DefaultParams();
  state_->track = DefaultTrackParams();
  state_->colours.assign(kColourTableEntries, kWhite);
  SetRGBGammas(1.0f, 1.0f, 1.0f);
}

ZRVDevice::~ZRVDevice() { DisconnectDevice(); }

void ZRVDevice::DeleteDevice() {
  DisconnectDevice();
  state_->params = DefaultParams();
}

void ZRVDevice::DisconnectDevice() { state_->link.Close(); }

// --- Discovery ---------------------------------------------------------------------------------------

void ZRVDevice::GetAvailableDevices(ZRVAvailableDevices* list) {
  if (list == nullptr) {
    state_->link.error = ErrorNotConnected;
    return;
  }
  list->NumDevices = 0;
  DisconnectDevice();
  for (const SerialPortEntry& port : state_->link.machine.listPorts()) {
    ZRVDeviceParams params;
    if (list->NumDevices < ZRVMaxDevices && ProbePort(port.path.c_str(), params)) AddDevice(*list, port, params);
    DisconnectDevice();
  }
  state_->link.error = ErrorNone;
}

ZRVAvailableDevices* ZRVDevice::GetAvailableDevices() {
  auto list = std::make_unique<ZRVAvailableDevices>();
  GetAvailableDevices(list.get());
  return list.release();
}

// Whether a controller answers at this path. Leaves the port to the caller to disconnect.
bool ZRVDevice::ProbePort(const char* path, ZRVDeviceParams& params) {
  Link& link = state_->link;
  link.port = link.machine.makePort();
  if (link.port->Open(path, kConnectBaudRate, kClearReadBytes, kClearReadBytes) != ZRVSerialIO::kOk) return false;
  const uint8_t newline = kCmdProbe;
  if (link.port->Write(&newline, 1, nullptr, kProbeWriteTimeoutMs) != ZRVSerialIO::kOk) return false;
  const ReadTimeoutScope shortTimeout(link, kDiscoveryReadTimeoutMs);
  link.port->SetBaudRate(kDiscoveryBaudRate);
  CheckConnectDevice(&params);
  return params.ParamsValid != 0;
}

void ZRVDevice::ListAvailableDevices(ZRVAvailableDevices* list) {
  if (list == nullptr) {
    state_->link.error = ErrorNotConnected;
    return;
  }
  std::printf("\n");
  const unsigned int count = std::min<unsigned int>(list->NumDevices, ZRVMaxDevices);
  for (unsigned int i = 0; i < count; ++i) {
    std::printf("Device %s:%s is at serial port %s\n", TextOf(list->DeviceName[i]).c_str(),
                TextOf(list->CommType[i]).c_str(), TextOf(list->CommPortName[i]).c_str());
  }
}

// --- Connecting --------------------------------------------------------------------------------------

void ZRVDevice::ConnectDevice() {
  ZRVAvailableDevices list;
  GetAvailableDevices(&list);
  if (list.NumDevices == 0) {
    state_->link.error = ErrorNoDeviceFound;
    return;
  }
  ConnectDevice(list.CommPortName[0]);
}

void ZRVDevice::ConnectDevice(const char* portName) {
  Link& link = state_->link;
  const Machine& machine = link.machine;
  link.error = ErrorNone;
  const std::string path = PathOfPort(portName != nullptr ? portName : "");
  if (path.empty()) {
    link.error = ErrorInvalidPortName;
    return;
  }
  if (link.port != nullptr) DisconnectDevice();  // it may be this very port, which is opened exclusively
  if (!machine.probe(path.c_str())) {
    link.error = ErrorNoDeviceFound;
    return;
  }
  machine.pause(kPauseBeforeOpen);
  auto port = machine.makePort();
  if (port->Open(path.c_str(), kConnectBaudRate, kClearReadBytes, kClearReadBytes) != ZRVSerialIO::kOk) {
    link.error = ErrorSerialComm;
    return;
  }
  ConnectDevice(port.release());
}

void ZRVDevice::ConnectDevice(ZRVSerialIO* transport) {
  Link& link = state_->link;
  if (transport == nullptr) {
    link.error = ErrorNotConnected;
    return;
  }
  if (transport != link.port.get()) {
    if (link.port != nullptr) DisconnectDevice();
    link.port.reset(transport);
  }
  ZRVDeviceParams params;
  CheckConnectDevice(&params);
  if (link.error != ErrorNone) {
    link.port.reset();
    return;
  }
  ResetDevicePosition();
  SetLaserModulationEnable(0);
}

void ZRVDevice::CheckConnectDevice(ZRVDeviceParams* params) {
  Link& link = state_->link;
  if (params == nullptr) {
    link.error = ErrorNotConnected;
    return;
  }
  for (int attempt = 0; attempt < kCheckAttempts; ++attempt) {
    if (attempt > 0) link.machine.pause(kPauseBeforeRetry);
    SendSerialReset();
    SetDataMode(DataModeBuffer);
    SetSyncMode(SyncOff);
    GetDeviceParams(params);
    if (link.error == ErrorNone) return;
  }
}

ZRVDeviceParams* ZRVDevice::CheckConnectDevice() {
  auto params = std::make_unique<ZRVDeviceParams>();
  CheckConnectDevice(params.get());
  return params.release();
}
