// The classes as plain functions, one forward each. Nothing is thrown through them.
#include "ZRVFlatInterface.h"

#include <type_traits>

#include "ZRVDataGenerator.h"
#include "ZRVDevice.h"

namespace {

// What call returns; zeros when memory ran out or a caller's transport threw.
template <typename Call>
auto Shielded(Call call) noexcept -> decltype(call()) {
  try {
    return call();
  } catch (...) {
    return decltype(call())();
  }
}

}  // namespace

// clang-format off
ZRVDevice* ZRVCreateDevice(void) { return Shielded([] { return new ZRVDevice; }); }
void ZRVDeleteDevice(ZRVDevice* d) { Shielded([&] { delete d; }); }
ZRVError ZRVGetLastError(ZRVDevice* d) { return d->GetLastError(); }

ZRVAvailableDevicesStruct ZRVGetAvailableDevices(ZRVDevice* d) {
  return Shielded([&] { ZRVAvailableDevices list; d->GetAvailableDevices(&list); return list; });
}
void ZRVConnectDevice(ZRVDevice* d, const char* portName) { Shielded([&] { d->ConnectDevice(portName); }); }
void ZRVConnectDeviceSocket(ZRVDevice* d, ZRVSerialIO* transport) { Shielded([&] { d->ConnectDevice(transport); }); }
void ZRVConnectDeviceAuto(ZRVDevice* d) { Shielded([&] { d->ConnectDevice(); }); }
void ZRVDisconnectDevice(ZRVDevice* d) { Shielded([&] { d->DisconnectDevice(); }); }
bool ZRVIsDeviceConnected(ZRVDevice* d) { return d->IsDeviceConnected(); }

void ZRVClearInputBuffer(ZRVDevice* d) { Shielded([&] { d->ClearInputBuffer(); }); }
void ZRVSendSerialReset(ZRVDevice* d) { Shielded([&] { d->SendSerialReset(); }); }
void ZRVResetDevice(ZRVDevice* d) { Shielded([&] { d->ResetDevice(); }); }

ZRVDeviceParamsStruct ZRVGetDeviceParams(ZRVDevice* d) {
  return Shielded([&] { ZRVDeviceParams params; d->GetDeviceParams(&params); return params; });
}
void ZRVSetDeviceParams(ZRVDevice* d, ZRVDeviceParamsStruct params) {
  Shielded([&] { ZRVDeviceParams record(params); d->SetDeviceParams(&record); });
}
float ZRVGetDeviceParam(ZRVDevice* d, ZRVParam param) { return Shielded([&] { return d->GetDeviceParam(param, 0); }); }
void ZRVSetDeviceParam(ZRVDevice* d, ZRVParam param, float value1, float value2) {
  Shielded([&] { d->SetDeviceParam(param, value1, value2); });
}
void ZRVLoadDeviceParams(ZRVDevice* d, const char* fileName) {
  Shielded([&] { ZRVDeviceParams params; d->LoadDeviceParams(&params, fileName); d->SetDeviceParams(&params); });
}
void ZRVSaveDeviceParams(ZRVDevice* d, char* fileName) { Shielded([&] { d->SaveDeviceParams(fileName, nullptr); }); }
char* ZRVGetEnumString(ZRVDevice* d, const char* enumName, int value) {
  return Shielded([&] { return d->GetEnumString(enumName != nullptr ? enumName : "", value); });
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

ZRVDataGenerator* ZRVCreateDataGenerator(void) { return Shielded([] { return new ZRVDataGenerator; }); }
void ZRVDeleteDataGenerator(ZRVDataGenerator* g) { Shielded([&] { delete g; }); }
unsigned int ZRVLinearRasterPattern(ZRVDataGenerator* g, float* x, float* y, unsigned char* m, float xAmplitude,
                                    float yAmplitude, unsigned int numLines, unsigned int numPixels,
                                    float lineDuration, bool pixelHold, bool bidirectional, int digitalShift,
                                    float rotationAngle, unsigned int* sps, int minSps, int maxSps) {
  unsigned int unwanted = 0;
  return Shielded([&] {
    return g->LinearRasterPattern(x, y, m, xAmplitude, yAmplitude, numLines, numPixels, lineDuration, pixelHold,
                                  bidirectional, digitalShift, rotationAngle, sps != nullptr ? *sps : unwanted, minSps,
                                  maxSps);
  });
}
