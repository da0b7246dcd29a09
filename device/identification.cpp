// The controller's identification: its parameter record, output offsets and limits.
#include <algorithm>
#include <array>
#include <cmath>

#include "ZRVDevice.h"
#include "common/bytes.h"
#include "device/command_buffer.h"
#include "device/field_reader.h"
#include "device/protocol.h"

using namespace zrv;
using namespace zrv::protocol;

namespace {

constexpr float kScaleCounts = 32767.0f;     // data scale 1
constexpr float kRotationCounts = 16383.0f;  // cosine 1; cosine 0 is count 16384
constexpr float kRotationZero = 16384.0f;

// Only the cosine is read back, so the sign of the angle is lost. Kept on purpose: controllers report it so.
float DecodeRotation(uint32_t count) {
  const float cosine = (static_cast<float>(count) - kRotationZero) / kRotationCounts;
  return static_cast<float>(std::acos(static_cast<double>(std::clamp(cosine, -1.0f, 1.0f))));
}

void CopyLimits(const ZRVDeviceParams& from, ZRVDeviceParams& to) {
  constexpr unsigned int ZRVDeviceParamsStruct::*kLimits[] = {
      &ZRVDeviceParams::SampleRateMin,       &ZRVDeviceParams::SampleRateMax,
      &ZRVDeviceParams::LimitWord3,          &ZRVDeviceParams::SampleBufferCapacity,
      &ZRVDeviceParams::HardwareFilterBwMin, &ZRVDeviceParams::HardwareFilterBwMax,
      &ZRVDeviceParams::LimitByte7,          &ZRVDeviceParams::LimitByte8,
      &ZRVDeviceParams::LimitByte9,          &ZRVDeviceParams::LimitByte10,
      &ZRVDeviceParams::VbiasMin,            &ZRVDeviceParams::VbiasMax};
  for (const auto limit : kLimits) to.*limit = from.*limit;
}

}  // namespace

void ZRVDevice::GetDeviceParams(ZRVDeviceParams* params) {
  if (params == nullptr) {
    lastError_ = ErrorNotConnected;
    return;
  }
  if (!Connected()) {
    params_->ParamsValid = params->ParamsValid = 0;
    CopyLimits(*params_, *params);
    return;
  }
  const ZRVDeviceParams before = *params_;
  params_->ParamsValid = params->ParamsValid = 0;
  if (!ReadInfoLine(kCmdGetIdentification)) return;
  const bool complete = ReadIdentification();
  GetOutputOffsets();
  if (!complete) lastError_ = ErrorDeviceResponse;  // also when the offsets arrived
  if (lastError_ == ErrorNone && ReadLimits()) params_->ParamsValid = 1;
  if (params_->ParamsValid != 0) doubtful_.reset();
  *params = *params_;
  if (params->ParamsValid == 0) {  // the caller sees what arrived; the device trusts none of it
    *params_ = before;
    params_->ParamsValid = 0;
  }
}

ZRVDeviceParams* ZRVDevice::GetDeviceParams() {
  auto params = std::make_unique<ZRVDeviceParams>();
  GetDeviceParams(params.get());
  return params.release();
}

// A port without a controller acknowledges nothing; its answer line is not waited for.
bool ZRVDevice::ReadInfoLine(unsigned char code) {
  if (!Command(code)) return false;
  std::string line;
  ReadAnswerLine(line);
  if (line != kInfoLine) lastError_ = ErrorBadAcknowledge;
  if (lastError_ != ErrorNone) ExpectLateBytes();  // fields that nobody reads now
  return lastError_ == ErrorNone;
}

bool ZRVDevice::ReadIdentification() {
  FieldReader in(*this);
  ZRVDeviceParams& p = *params_;
  in.Text(p.DeviceName);
  in.Text(p.FirmwareName);
  in.Text(p.CommType);
  in.Text(p.BluetoothMAC);
  p.USARTBaudRate = in.Uint(3);
  p.SampleRate = in.Uint(3);
  p.HardwareFilterBw = in.Uint(2);
  p.DataScale = static_cast<float>(in.Uint(2)) / kScaleCounts;
  p.DataRotation = DecodeRotation(in.Uint(2));
  p.VmaxMEMSDriver = in.Volts();
  p.Vbias = in.Volts();
  p.VdifferenceMax = in.Volts();
  p.DeviceAxes = static_cast<ZRVAxes>(in.Uint(1));
  p.MEMSDriverEnable = in.Uint(1);
  p.DigitalOutputEnable = in.Uint(1);
  p.LaserModulationEnable = in.Uint(1);
  DecodeState(in.Uint(2));
  p.DeviceErrorRegister = in.Uint(2);
  p.BufferOffset = in.Uint(3);
  p.BootSetting = static_cast<ZRVBoot>(in.Uint(2));
  p.DataMode = static_cast<ZRVDataMode>(in.Uint(1));
  return in.complete();
}

bool ZRVDevice::ReadLimits() {
  if (!ReadInfoLine(kCmdGetLimits)) return false;
  FieldReader in(*this);
  ZRVDeviceParams& p = *params_;
  p.SampleRateMin = in.Uint(3);
  p.SampleRateMax = in.Uint(3);
  p.LimitWord3 = in.Uint(3);
  p.SampleBufferCapacity = in.Uint(3);
  p.HardwareFilterBwMin = in.Uint(2);
  p.HardwareFilterBwMax = in.Uint(2);
  p.LimitByte7 = in.Uint(1);
  p.LimitByte8 = in.Uint(1);
  p.LimitByte9 = in.Uint(1);
  p.LimitByte10 = in.Uint(1);
  p.VbiasMin = in.Uint(1);
  p.VbiasMax = in.Uint(1);
  return in.complete();
}

void ZRVDevice::GetOutputOffsets() {
  if (!Command(kCmdGetOutputOffsets)) return;
  std::array<uint8_t, kOffsetsAnswerBytes> answer{};
  if (!ReadAnswer(answer.data(), kOffsetsAnswerBytes)) return;
  LittleEndianReader in(answer);
  params_->XOffset = DecodeOffset(in.U16());
  params_->YOffset = DecodeOffset(in.U16());
}
