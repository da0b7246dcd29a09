// Construction, discovery of controllers, connecting and letting go.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>

#include "ZRVDevice.h"
#include "device/command_buffer.h"
#include "device/protocol.h"
#include "device/serial/ports.h"

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
constexpr size_t kColours = 100000;
constexpr unsigned int kWhite = 0xFFFFFF;

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
  explicit ReadTimeoutScope(unsigned int timeoutMs) : saved_(std::exchange(Shared().readTimeoutMs, timeoutMs)) {}
  ~ReadTimeoutScope() { Shared().readTimeoutMs = saved_; }
  ReadTimeoutScope(const ReadTimeoutScope&) = delete;
  ReadTimeoutScope& operator=(const ReadTimeoutScope&) = delete;

 private:
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

ZRVDevice::ZRVDevice()
    : params_(std::make_unique<ZRVDeviceParams>(DefaultParams())),
      track_(std::make_unique<ZRVTrackParams>(DefaultTrackParams())),
      colours_(kColours, kWhite) {
  Shared().readTimeoutMs = kDefaultReadTimeoutMs;
  SetRGBGammas(1.0f, 1.0f, 1.0f);
}

ZRVDevice::~ZRVDevice() { DisconnectDevice(); }

void ZRVDevice::DeleteDevice() {
  DisconnectDevice();
  *params_ = DefaultParams();
}

void ZRVDevice::DisconnectDevice() {
  lastError_ = ErrorNone;
  if (!Connected()) return;
  if (port_->Close() != ZRVSerialIO::kOk) lastError_ = ErrorSerialComm;
  port_.reset();
}

// --- Discovery ---------------------------------------------------------------------------------------

void ZRVDevice::GetAvailableDevices(ZRVAvailableDevices* list) {
  if (list == nullptr) {
    lastError_ = ErrorNotConnected;
    return;
  }
  list->NumDevices = 0;
  DisconnectDevice();
  for (const SerialPortEntry& port : ListSerialPorts()) {
    ZRVDeviceParams params;
    if (list->NumDevices < ZRVMaxDevices && ProbePort(port.path, params)) AddDevice(*list, port, params);
    DisconnectDevice();
  }
  lastError_ = ErrorNone;
}

ZRVAvailableDevices* ZRVDevice::GetAvailableDevices() {
  auto list = std::make_unique<ZRVAvailableDevices>();
  GetAvailableDevices(list.get());
  return list.release();
}

// Whether a controller answers at this path. Leaves the port to the caller to disconnect.
bool ZRVDevice::ProbePort(const std::string& path, ZRVDeviceParams& params) {
  port_ = std::make_unique<ZRVSerialIO>();
  if (port_->Open(path.c_str(), kConnectBaudRate, kClearReadBytes, kClearReadBytes) != ZRVSerialIO::kOk) return false;
  const uint8_t newline = kCmdProbe;
  if (port_->Write(&newline, 1, nullptr, kProbeWriteTimeoutMs) != ZRVSerialIO::kOk) return false;
  const ReadTimeoutScope shortTimeout(kDiscoveryReadTimeoutMs);
  port_->SetBaudRate(kDiscoveryBaudRate);
  CheckConnectDevice(&params);
  return params.ParamsValid != 0;
}

void ZRVDevice::ListAvailableDevices(ZRVAvailableDevices* list) {
  if (list == nullptr) {
    lastError_ = ErrorNotConnected;
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
    lastError_ = ErrorNoDeviceFound;
    return;
  }
  ConnectDevice(list.CommPortName[0]);
}

void ZRVDevice::ConnectDevice(const char* portName) {
  lastError_ = ErrorNone;
  const std::string path = PathOfPort(portName != nullptr ? portName : "");
  if (path.empty()) {
    lastError_ = ErrorInvalidPortName;
    return;
  }
  if (port_ != nullptr) DisconnectDevice();  // it may be this very port, which is opened exclusively
  if (!ZRVSerialIO::Probe(path.c_str())) {
    lastError_ = ErrorNoDeviceFound;
    return;
  }
  Pause(kPauseBeforeOpen);
  auto port = std::make_unique<ZRVSerialIO>();
  if (port->Open(path.c_str(), kConnectBaudRate, kClearReadBytes, kClearReadBytes) != ZRVSerialIO::kOk) {
    lastError_ = ErrorSerialComm;
    return;
  }
  ConnectDevice(port.release());
}

void ZRVDevice::ConnectDevice(ZRVSerialIO* transport) {
  if (transport == nullptr) {
    lastError_ = ErrorNotConnected;
    return;
  }
  if (transport != port_.get()) {
    if (port_ != nullptr) DisconnectDevice();
    port_.reset(transport);
  }
  ZRVDeviceParams params;
  CheckConnectDevice(&params);
  if (lastError_ != ErrorNone) {
    port_.reset();
    return;
  }
  ResetDevicePosition();
  SetLaserModulationEnable(0);
}

void ZRVDevice::CheckConnectDevice(ZRVDeviceParams* params) {
  if (params == nullptr) {
    lastError_ = ErrorNotConnected;
    return;
  }
  for (int attempt = 0; attempt < kCheckAttempts; ++attempt) {
    if (attempt > 0) Pause(kPauseBeforeRetry);
    SendSerialReset();
    SetDataMode(DataModeBuffer);
    SetSyncMode(SyncOff);
    GetDeviceParams(params);
    if (lastError_ == ErrorNone) return;
  }
}

ZRVDeviceParams* ZRVDevice::CheckConnectDevice() {
  auto params = std::make_unique<ZRVDeviceParams>();
  CheckConnectDevice(params.get());
  return params.release();
}
