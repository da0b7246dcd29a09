// What a controller answers: a connected device makes calls, and each read on the link is true to the simulated
// controller, damaged, made of the fuzzer's bytes, or fails. Nothing waits: a read that would ends as a time-out.
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <memory>

#include "device/state.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "simulator/memory_transport.h"

namespace {

using namespace zrv_fuzz;
using zrv::sim::Controller;
using zrv::sim::VirtualClock;

class DoubtfulLink : public zrv::sim::MemoryTransport {
 public:
  using MemoryTransport::MemoryTransport;

  // From here on nothing is certain.
  void Doubt(Input* in) { in_ = in; }

  int Write(const void* buffer, unsigned int count, unsigned int* written, unsigned int timeoutMs) override {
    if (in_ != nullptr && in_->U8() > 0xF8) return kFailed;
    return MemoryTransport::Write(buffer, count, written, timeoutMs);
  }

  int Read(void* buffer, unsigned int count, unsigned int* received, unsigned int timeoutMs, int mode) override {
    if (in_ == nullptr) return MemoryTransport::Read(buffer, count, received, timeoutMs, mode);
    const uint8_t what = in_->U8();
    if (what < 0x80) return MemoryTransport::Read(buffer, count, received, std::min(timeoutMs, kPatienceMs), mode);
    if (what < 0xA0) return Damaged(buffer, count, received, mode);
    if (what < 0xE0) return Invented(buffer, count, received);
    if (received != nullptr) *received = in_->Count();  // a transport that does not know what it read
    return what < 0xF0 ? kTimeout : kFailed;
  }

 private:
  static constexpr unsigned int kPatienceMs = 20;

  int Damaged(void* buffer, unsigned int count, unsigned int* received, int mode) {
    const int status = MemoryTransport::Read(buffer, count, received, kPatienceMs, mode);
    if (count > 0) static_cast<uint8_t*>(buffer)[in_->Count() % count] = in_->U8();
    return status;
  }

  int Invented(void* buffer, unsigned int count, unsigned int* received) {
    const auto bytes = in_->Bytes(count);
    if (!bytes.empty()) std::memcpy(buffer, bytes.data(), bytes.size());
    if (received != nullptr) *received = static_cast<unsigned>(bytes.size());
    return bytes.size() == count ? kOk : kTimeout;
  }

  Input* in_ = nullptr;
};

zrv::sim::Options Small(uint8_t format) {
  zrv::sim::Options options;
  options.formatCode = format;
  options.capacity = 400;
  options.pathCapacity = options.captureCapacity = 500;
  options.sampleRateMax = 20000;
  return options;
}

template <size_t size>
void RequireText(const char (&field)[size]) {
  Require(std::memchr(field, 0, size) != nullptr);
}

void Identify(ZRVDevice& device) {
  ZRVDeviceParams params;
  device.GetDeviceParams(&params);
  RequireText(params.DeviceName);
  RequireText(params.FirmwareName);
  RequireText(params.CommType);
  RequireText(params.BluetoothMAC);
  Require((params.ParamsValid == 1) == (device.GetLastError() == ErrorNone));
}

// Some fields of the record changed, to any value.
void Apply(ZRVDevice& device, Input& in) {
  const std::unique_ptr<ZRVDeviceParams> params(device.GetDeviceParams());
  for (int changes = in.U8() % 8; changes > 0; --changes) {
    constexpr size_t kFields = sizeof(ZRVDeviceParamsStruct) - offsetof(ZRVDeviceParamsStruct, HardwareFilterOn);
    const size_t at = offsetof(ZRVDeviceParamsStruct, HardwareFilterOn) + in.U8() % (kFields / 4) * 4;
    const float real = in.Float();
    const uint32_t whole = in.Count();
    ZRVDeviceParamsStruct* plain = params.get();
    std::memcpy(reinterpret_cast<char*>(plain) + at, in.Bool() ? static_cast<const void*>(&real) : &whole, 4);
  }
  device.SetDeviceParams(params.get());
}

void Send(ZRVDevice& device, Input& in) {
  const unsigned count = in.U16() % 1000;
  Samples s(count);
  for (unsigned i = 0; i < count; i += 7) s.x[i] = s.y[i] = in.Float();
  device.SendDataStream(s.x.data(), s.y.data(), s.m.data(), count, in.Count(), in.Bool());
}

void Track(ZRVDevice& device, Input& in) {
  ZRVTrackParams track;
  device.GetTrackParams(&track);
  track.Threshold = in.Float();
  track.NormalGain = in.Int();
  track.TangentialGain = in.Int();
  track.BufferDelay = in.Count();
  track.HitRatio = in.Float();
  track.StateBit0 = track.StateBit2 = in.Count();
  device.SetTrackParams(&track);
  Require(track.Threshold >= 0 && track.Threshold <= 1 && track.TangentialGain >= -25 && track.TangentialGain <= 25);
  ZRVTrackStatus status{};
  device.GetTrackStatus(&status);
  Require(status.Valid == (device.GetLastError() == ErrorNone));
  int first = 0, second = 0;
  device.GetTrackIntegrals(first, second);
  Require(std::min(first, second) >= -32768 && std::max(first, second) <= 32767);
}

void Analog(ZRVDevice& device, Input& in) {
  const unsigned count = in.U16() % 1000;
  Guarded<float> ai0(count > 0 ? count : 32768), ai1(count > 0 ? count : 32768);
  switch (in.U8() % 4) {
    case 0: device.GetAnalogInputBuffer(ai0.data(), ai1.data(), count); break;
    case 1: Require(device.GetAnalogInputStream(ai0.data(), nullptr, count) <= ai0.size()); break;
    case 2: Require(device.GetAnalogInputStream(ai0.data(), ai1.data(), count) <= ai0.size()); break;
    default: Require(device.GetOrBEX1Stream(ai0.data(), in.Float(), count) <= count);
  }
  device.GetAnalogInputValue(count);
  device.GetPhotoDetectorValue();
}

void Call(ZRVDevice& device, Input& in) {
  switch (in.U8() % 16) {
    case 0: return Identify(device);
    case 1: return Apply(device, in);
    case 2: return device.SetDeviceParam(static_cast<ZRVParam>(in.U8() % 24), in.Float(), in.Float());
    case 3: static_cast<void>(device.GetDeviceParam(static_cast<ZRVParam>(in.U8() % 24))); return;
    case 4: return Send(device, in);
    case 5: return device.StartDataStream(in.Int(), in.Bool());
    case 6:
      device.StopDataStream();
      Require(device.GetXStop() >= -1 && device.GetYStop() <= 1);
      return;
    case 7: Require(device.GetSamplesRemaining() <= 0xFFFFFF); return;
    case 8: return device.GoToDevicePosition(in.Float(), in.Float(), in.U8(), in.U16());
    case 9: return Track(device, in);
    case 10: return Analog(device, in);
    case 11: return device.SetDeviceParam(ParamDataMode, static_cast<float>(in.U8() % 11));
    case 12:
      static_cast<void>(device.IsDeviceResponding() && device.IsDeviceRunning() && device.IsTrackingSupported());
      return;
    case 13: return device.SetRGBData(in.U32(), in.Count());
    case 14: return device.SendSerialReset();
    default: return device.ClearInputBuffer();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input in(data, size);
  auto link = std::make_unique<DoubtfulLink>(std::make_shared<Controller>(Small(in.U8() & 7)),
                                             std::make_shared<VirtualClock>());
  DoubtfulLink& doubtful = *link;
  link->Open("memory", 921600, 0, 0);
  ZRVDevice device;
  zrv::StateOf(device).link.machine.pause = [](std::chrono::milliseconds) {};
  device.ConnectDevice(link.release());
  Require(device.GetLastError() == ErrorNone);
  doubtful.Doubt(&in);
  for (int call = 0; call < 40 && !in.Empty(); ++call) {
    Call(device, in);
    Require(device.GetLastError() <= ErrorNoDeviceFound);
  }
  return 0;
}
