// The state of the controller and of the link, and what puts both in order.
#include <array>

#include "device/protocol.h"
#include "device/state.h"

using namespace zrv;
using namespace zrv::protocol;

void zrv::StoreStateWord(ZRVDeviceParams& params, uint32_t word) {
  params.DeviceState = word;
  params.HardwareFilterOn = (word & kStateHardwareFilter) != 0 ? 1 : 0;
  params.SyncMode = static_cast<ZRVSync>((word & kStateSyncMask) >> kStateSyncShift);
  params.SyncState = (word & kStateFormatMask) >> kStateFormatShift;
}

ZRVError ZRVDevice::GetLastError() const { return state_->link.error; }

bool ZRVDevice::IsDeviceConnected() const { return state_->link.port != nullptr; }

// A poll: whatever comes back, nothing is resynchronised. It is read also when the command could not be written.
bool ZRVDevice::IsDeviceResponding() {
  Link& link = state_->link;
  link.Command(kCmdIsResponding, false);
  if (link.port == nullptr) return false;
  std::array<uint8_t, kAcknowledge.size()> answer{};
  if (!link.Read(answer)) {
    link.error = ErrorSerialComm;
    return false;
  }
  if (answer == kAcknowledge) return true;
  link.error = ErrorBadAcknowledge;
  return false;
}

void ZRVDevice::GetDeviceState() {
  Link& link = state_->link;
  link.error = ErrorNone;
  if (!link.Connected()) return;
  if (auto answer = link.Query(kCmdGetState, kStateAnswerBytes)) StoreStateWord(state_->params, answer->U16());
}

bool ZRVDevice::IsDeviceRunning() {
  GetDeviceState();
  return state_->link.error == ErrorNone && (state_->params.DeviceState & kStatePlaying) != 0;
}

bool ZRVDevice::IsTrackingSupported() {
  GetDeviceState();
  return state_->link.error == ErrorNone && (state_->params.DeviceState & kStateTracking) != 0;
}

void ZRVDevice::ResetDevice() { state_->link.Command(kCmdReset); }

void ZRVDevice::ClearInputBuffer() { state_->link.ClearInputBuffer(); }

void ZRVDevice::SendSerialReset() { state_->link.SendSerialReset(); }
