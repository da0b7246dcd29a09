// The device as plain functions, one forward each. Nothing is thrown through them.
#include "ZRVFlatInterface.h"

#include <memory>

#include "ZRVDevice.h"
#include "common/shielded.h"

using zrv::Shielded;

// clang-format off
ZRVDevice* ZRVCreateDevice(void) { return Shielded([] { return new ZRVDevice; }); }
void ZRVDeleteDevice(ZRVDevice* d) { Shielded([&] { delete d; }); }
ZRVError ZRVGetLastError(ZRVDevice* d) { return d->GetLastError(); }
const char* ZRVGetAPIVersion(void) { return ZRVDevice::GetAPIVersion(); }
void ZRVFreeText(char* text) { delete[] text; }

ZRVAvailableDevicesStruct ZRVGetAvailableDevices(ZRVDevice* d) {
  return Shielded([&] { ZRVAvailableDevices list; d->GetAvailableDevices(&list); return list; });
}
void ZRVListAvailableDevices(ZRVDevice* d, ZRVAvailableDevicesStruct list) {
  Shielded([&] { ZRVAvailableDevices devices(list); d->ListAvailableDevices(&devices); });
}
void ZRVSetPortDirectory(const char* directory) { Shielded([&] { ZRVSerialIO::SetPortDirectory(directory); }); }
void ZRVConnectDevice(ZRVDevice* d, const char* portName) { Shielded([&] { d->ConnectDevice(portName); }); }
void ZRVConnectDeviceSocket(ZRVDevice* d, ZRVSerialIO* transport) { Shielded([&] { d->ConnectDevice(transport); }); }
void ZRVConnectDeviceAuto(ZRVDevice* d) { Shielded([&] { d->ConnectDevice(); }); }
void ZRVDisconnectDevice(ZRVDevice* d) { Shielded([&] { d->DisconnectDevice(); }); }
bool ZRVIsDeviceConnected(ZRVDevice* d) { return d->IsDeviceConnected(); }
bool ZRVIsDeviceResponding(ZRVDevice* d) { return Shielded([&] { return d->IsDeviceResponding(); }); }
ZRVDeviceParamsStruct ZRVCheckConnectDevice(ZRVDevice* d) {
  return Shielded([&]() -> ZRVDeviceParamsStruct { return *std::unique_ptr<ZRVDeviceParams>(d->CheckConnectDevice()); });
}

void ZRVClearInputBuffer(ZRVDevice* d) { Shielded([&] { d->ClearInputBuffer(); }); }
void ZRVSendSerialReset(ZRVDevice* d) { Shielded([&] { d->SendSerialReset(); }); }
void ZRVResetDevice(ZRVDevice* d) { Shielded([&] { d->ResetDevice(); }); }

ZRVDeviceParamsStruct ZRVGetDeviceParams(ZRVDevice* d) {
  return Shielded([&] { ZRVDeviceParams params; d->GetDeviceParams(&params); return params; });
}
void ZRVSetDeviceParams(ZRVDevice* d, ZRVDeviceParamsStruct params) {
  Shielded([&] { ZRVDeviceParams record(params); d->SetDeviceParams(&record); });
}
float ZRVGetDeviceParam(ZRVDevice* d, ZRVParam param) { return ZRVGetDeviceParamAxis(d, param, 0); }
float ZRVGetDeviceParamAxis(ZRVDevice* d, ZRVParam param, int axis) {
  return Shielded([&] { return d->GetDeviceParam(param, axis); });
}
void ZRVSetDeviceParam(ZRVDevice* d, ZRVParam param, float value1, float value2) {
  Shielded([&] { d->SetDeviceParam(param, value1, value2); });
}
void ZRVGetDeviceState(ZRVDevice* d) { Shielded([&] { d->GetDeviceState(); }); }
void ZRVGetOutputOffsets(ZRVDevice* d) { Shielded([&] { d->GetOutputOffsets(); }); }
unsigned int ZRVCalcHardwareFilterDelay(ZRVDevice* d, unsigned int numSamples) {
  return d->CalcHardwareFilterDelay(numSamples);
}
void ZRVSetDeviceName(ZRVDevice* d, const char* name) { Shielded([&] { d->SetDeviceName(name); }); }
void ZRVSetDefaultDeviceName(ZRVDevice* d, const char* name, const char* accessCode) {
  Shielded([&] { d->SetDefaultDeviceName(name, accessCode != nullptr ? accessCode : ""); });
}
void ZRVLoadDeviceParams(ZRVDevice* d, const char* fileName) {
  Shielded([&] { ZRVDeviceParams params; d->LoadDeviceParams(&params, fileName); d->SetDeviceParams(&params); });
}
void ZRVSaveDeviceParams(ZRVDevice* d, char* fileName) { Shielded([&] { d->SaveDeviceParams(fileName, nullptr); }); }
char* ZRVGetEnumString(ZRVDevice* d, const char* enumName, int value) {
  return Shielded([&] { return d->GetEnumString(enumName != nullptr ? enumName : "", value); });
}
void ZRVSetDefinitionsFile(const char* path) { Shielded([&] { ZRVDevice::SetDefinitionsFile(path); }); }
float ZRVLoadDeviceParam(ZRVDevice* d, const char* fileName, const char* key, float defaultValue) {
  return Shielded([&] { return d->LoadDeviceParam(fileName, key, defaultValue); });
}
void ZRVSaveToFlash(ZRVDevice* d, ZRVFlash what) { Shielded([&] { d->SaveToFlash(what); }); }

void ZRVSendDataStream(ZRVDevice* d, float* x, float* y, unsigned char* m, unsigned int numSamples,
                       unsigned int delaySamples, bool minimizeJump) {
  Shielded([&] { d->SendDataStream(x, y, m, numSamples, delaySamples, minimizeJump); });
}
void ZRVStartDataStream(ZRVDevice* d, int repeat, bool wait) { Shielded([&] { d->StartDataStream(repeat, wait); }); }
void ZRVStopDataStream(ZRVDevice* d) { Shielded([&] { d->StopDataStream(); }); }
float ZRVGetXStop(ZRVDevice* d) { return d->GetXStop(); }
float ZRVGetYStop(ZRVDevice* d) { return d->GetYStop(); }
unsigned char ZRVGetMStop(ZRVDevice* d) { return d->GetMStop(); }
unsigned int ZRVGetIStop(ZRVDevice* d) { return d->GetIStop(); }
unsigned int ZRVGetSamplesRemaining(ZRVDevice* d) { return Shielded([&] { return d->GetSamplesRemaining(); }); }
bool ZRVIsDeviceRunning(ZRVDevice* d) { return Shielded([&] { return d->IsDeviceRunning(); }); }

void ZRVGoToDevicePosition(ZRVDevice* d, float x, float y, unsigned char m, unsigned int mSec) {
  Shielded([&] { d->GoToDevicePosition(x, y, m, mSec); });
}
void ZRVResetDevicePosition(ZRVDevice* d) { Shielded([&] { d->ResetDevicePosition(); }); }
void ZRVSetRGBDataArray(ZRVDevice* d, unsigned int* rgb, unsigned int n) { Shielded([&] { d->SetRGBData(rgb, n); }); }
void ZRVSetRGBData(ZRVDevice* d, unsigned int rgb, unsigned int n) { Shielded([&] { d->SetRGBData(rgb, n); }); }
void ZRVGetRGBData(ZRVDevice* d, unsigned int* rgb, unsigned int n) { Shielded([&] { d->GetRGBData(rgb, n); }); }
void ZRVSetRGBGammas(ZRVDevice* d, float red, float green, float blue) {
  Shielded([&] { d->SetRGBGammas(red, green, blue); });
}
void ZRVSetLaserBoostEnable(ZRVDevice* d, unsigned int enable) { Shielded([&] { d->SetLaserBoostEnable(enable); }); }

float ZRVGetAnalogInputValue(ZRVDevice* d, unsigned int channel) {
  return Shielded([&] { return d->GetAnalogInputValue(channel); });
}
float ZRVGetPhotoDetectorValue(ZRVDevice* d) { return Shielded([&] { return d->GetPhotoDetectorValue(); }); }
void ZRVGetAnalogInputBuffer(ZRVDevice* d, float* ai0, float* ai1, unsigned int numSamples) {
  Shielded([&] { d->GetAnalogInputBuffer(ai0, ai1, numSamples); });
}
unsigned int ZRVGetAnalogInputStream(ZRVDevice* d, float* ai0, float* ai1, unsigned int numSamples) {
  return Shielded([&] { return d->GetAnalogInputStream(ai0, ai1, numSamples); });
}
bool ZRVIsTrackingSupported(ZRVDevice* d) { return Shielded([&] { return d->IsTrackingSupported(); }); }
unsigned int ZRVGetOrBEX1Stream(ZRVDevice* d, float* data, float gain, unsigned int numSamples) {
  return Shielded([&] { return d->GetOrBEX1Stream(data, gain, numSamples); });
}

ZRVTrackParamsStruct ZRVGetTrackParams(ZRVDevice* d) {
  return Shielded([&]() -> ZRVTrackParamsStruct { return *std::unique_ptr<ZRVTrackParams>(d->GetTrackParams()); });
}
void ZRVSetTrackParams(ZRVDevice* d, ZRVTrackParamsStruct params) {
  Shielded([&] { ZRVTrackParams record(params); d->SetTrackParams(&record); });
}
ZRVTrackStatus ZRVGetTrackStatus(ZRVDevice* d) {
  return Shielded([&] { return *std::unique_ptr<ZRVTrackStatus>(d->GetTrackStatus()); });
}
void ZRVGetTrackIntegrals(ZRVDevice* d, int* integral1, int* integral2) {
  Shielded([&] { d->GetTrackIntegrals(*integral1, *integral2); });
}
