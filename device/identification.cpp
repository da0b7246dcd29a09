// The controller's identification: its parameter record, output offsets and limits.
#include <algorithm>
#include <cmath>

#include "device/field_reader.h"
#include "device/protocol.h"
#include "device/state.h"

using namespace zrv;
using namespace zrv::protocol;
using P = ZRVDeviceParamsStruct;

namespace {

constexpr float kScaleCounts = 32767.0f;     // data scale 1
constexpr float kRotationCounts = 16383.0f;  // cosine 1; cosine 0 is count 16384
constexpr float kRotationZero = 16384.0f;

// Only the cosine is read back, so the sign of the angle is lost. Kept on purpose: controllers report it so.
float DecodeRotation(uint32_t count) {
  const float cosine = (static_cast<float>(count) - kRotationZero) / kRotationCounts;
  return static_cast<float>(std::acos(static_cast<double>(std::clamp(cosine, -1.0f, 1.0f))));
}

// The limits, in the order of their answer.
constexpr struct {
  unsigned int width;
  unsigned int P::*field;
} kLimits[] = {
    {3, &P::SampleRateMin},       {3, &P::SampleRateMax},       {3, &P::LimitWord3}, {3, &P::SampleBufferCapacity},
    {2, &P::HardwareFilterBwMin}, {2, &P::HardwareFilterBwMax}, {1, &P::LimitByte7}, {1, &P::LimitByte8},
    {1, &P::LimitByte9},          {1, &P::LimitByte10},         {1, &P::VbiasMin},   {1, &P::VbiasMax},
};

// A port without a controller acknowledges nothing; its answer line is not waited for.
bool ReadInfoLine(Link& link, uint8_t code) {
  if (!link.Command(code)) return false;
  if (link.ReadLine() == kInfoLine) return true;
  link.error = ErrorBadAcknowledge;
  return false;
}

void ReadIdentification(FieldReader<ZRVDeviceParams>& in) {
  const auto volts = [&in](float P::*field) {
    in.Take(1, [field](P& p, uint32_t count) { p.*field = static_cast<float>(count); });
  };
  in.Text(&P::DeviceName);
  in.Text(&P::FirmwareName);
  in.Text(&P::CommType);
  in.Text(&P::BluetoothMAC);
  in.Whole(3, &P::USARTBaudRate);
  in.Whole(3, &P::SampleRate);
  in.Whole(2, &P::HardwareFilterBw);
  in.Take(2, [](P& p, uint32_t count) { p.DataScale = static_cast<float>(count) / kScaleCounts; });
  in.Take(2, [](P& p, uint32_t count) { p.DataRotation = DecodeRotation(count); });
  volts(&P::VmaxMEMSDriver);
  volts(&P::Vbias);
  volts(&P::VdifferenceMax);
  in.Whole(1, &P::DeviceAxes);
  in.Whole(1, &P::MEMSDriverEnable);
  in.Whole(1, &P::DigitalOutputEnable);
  in.Whole(1, &P::LaserModulationEnable);
  in.Take(2, StoreStateWord);
  in.Whole(2, &P::DeviceErrorRegister);
  in.Whole(3, &P::BufferOffset);
  in.Whole(2, &P::BootSetting);
  in.Whole(1, &P::DataMode);
}

}  // namespace

void ZRVDevice::GetDeviceParams(ZRVDeviceParams* params) {
  Link& link = state_->link;
  if (params == nullptr) {
    link.error = ErrorNotConnected;
    return;
  }
  ZRVDeviceParams& own = state_->params;
  own.ParamsValid = params->ParamsValid = 0;
  if (!link.Connected()) {
    for (const auto& limit : kLimits) params->*limit.field = own.*limit.field;
    return;
  }
  if (!ReadInfoLine(link, kCmdGetIdentification)) return;
  FieldReader<ZRVDeviceParams> in(link, own, *params);
  ReadIdentification(in);
  GetOutputOffsets();
  if (link.error == ErrorNone) {
    params->XOffset = own.XOffset;
    params->YOffset = own.YOffset;
  }
  if (!in.complete()) link.error = ErrorDeviceResponse;  // also when the offsets arrived
  if (link.error != ErrorNone || !ReadInfoLine(link, kCmdGetLimits)) return;
  for (const auto& limit : kLimits) in.Whole(limit.width, limit.field);
  own.ParamsValid = params->ParamsValid = in.complete() ? 1 : 0;
}

ZRVDeviceParams* ZRVDevice::GetDeviceParams() {
  auto params = std::make_unique<ZRVDeviceParams>();
  GetDeviceParams(params.get());
  return params.release();
}

void ZRVDevice::GetOutputOffsets() {
  Link& link = state_->link;
  if (!link.Command(kCmdGetOutputOffsets)) return;
  auto answer = link.ReadAnswer(kOffsetsAnswerBytes);
  if (!answer) return;
  state_->params.XOffset = DecodeOffset(answer->U16());
  state_->params.YOffset = DecodeOffset(answer->U16());
}
