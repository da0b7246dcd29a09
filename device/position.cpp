// Parking the mirror at a point, the laser's colours, boost and flash.
#include <algorithm>
#include <vector>

#include "device/protocol.h"
#include "device/state.h"

using namespace zrv;
using namespace zrv::protocol;
using std::chrono::milliseconds;

namespace {

constexpr unsigned int kMaxMoveSamples = 50000;
constexpr unsigned int kMinMoveMs = 1;
constexpr unsigned int kMaxMoveMs = 5000;
constexpr unsigned int kMinMoveSamples = 4;
constexpr unsigned int kCentringMs = 10;
constexpr milliseconds kFlashSettingsTime{800};
constexpr milliseconds kFlashDataTime{1200};

bool IsInField(float v) { return v >= -1.0f && v <= 1.0f; }  // not NaN either

}  // namespace

void ZRVDevice::GoToDevicePosition(float x, float y, unsigned char m, unsigned int ms) {
  Link& link = state_->link;
  link.error = ErrorNone;
  if (!IsInField(x) || !IsInField(y)) {
    link.error = ErrorInvalidValue;
    return;
  }
  if (ms == 0) {  // a controller that is playing switches to the new point without a stop
    SendDataStream(&x, &y, &m, 1, 0, true);
    if (!IsDeviceRunning()) StartDataStream(-1, true);
    return;
  }
  StopDataStream();
  float fromToX[2] = {state_->stop.x, x};
  float fromToY[2] = {state_->stop.y, y};
  unsigned char fromToM[2] = {state_->stop.m, m};
  const unsigned int duration = std::clamp(ms, kMinMoveMs, kMaxMoveMs);
  const unsigned int wanted = state_->params.SampleRate * duration / 1000 + 1;
  const unsigned int numSamples = std::clamp(wanted, kMinMoveSamples, kMaxMoveSamples);
  std::vector<float> moveX(numSamples), moveY(numSamples);
  std::vector<unsigned char> moveM(numSamples);
  InterpolateDataTriangle(fromToX, fromToY, fromToM, moveX.data(), moveY.data(), moveM.data(), numSamples);
  SendDataStream(moveX.data(), moveY.data(), moveM.data(), numSamples, 0, true);
  StartDataStream(1, true);
  SendDataStream(&x, &y, &m, 1, 0, false);
  StartDataStream(-1, true);
}

// A move with zero slope at both ends: up to the midpoint along t^2, from there along 1 - u^2. Every sample
// carries the start's digital byte. The last sample stays short of the end, which the caller sends by itself.
unsigned int ZRVDevice::InterpolateDataTriangle(float* xIn, float* yIn, unsigned char* mIn, float* xOut, float* yOut,
                                                unsigned char* mOut, unsigned int numSamples) {
  const unsigned int half = numSamples / 2;
  const unsigned int rest = numSamples - half;
  const auto ratio = [](unsigned int part, unsigned int whole) {
    return static_cast<float>(part) / static_cast<float>(whole);
  };
  const auto ease = [&](const float* in, float* out) {
    const float middle = in[0] + 0.5f * (in[1] - in[0]);
    for (unsigned int i = 0; i < half; ++i) {
      const float t = ratio(i, half) * ratio(i, half);
      out[i] = middle * t + (1.0f - t) * in[0];
    }
    for (unsigned int i = 0; i < rest; ++i) {
      const float u = ratio(rest - i, rest);
      const float t = 1.0f - u * u;
      out[half + i] = in[1] * t + (1.0f - t) * middle;
    }
  };
  ease(xIn, xOut);
  ease(yIn, yOut);
  std::fill_n(mOut, numSamples, mIn[0]);
  return numSamples;
}

void ZRVDevice::ResetDevicePosition() {
  SetOutputOffsets(0.0f, 0.0f);
  GoToDevicePosition(0.0f, 0.0f, 0, kCentringMs);
}

void ZRVDevice::SetRGBData(unsigned int* rgb, unsigned int numSamples) {
  if (rgb != nullptr) std::copy_n(rgb, std::min(numSamples, kColourTableEntries), state_->colours.begin());
}

void ZRVDevice::SetRGBData(unsigned int rgb, unsigned int numSamples) {
  if (numSamples == 0 || numSamples > kColourTableEntries) numSamples = kColourTableEntries;
  std::fill_n(state_->colours.begin(), numSamples, rgb);
}

void ZRVDevice::GetRGBData(unsigned int* rgb, unsigned int numSamples) {
  if (rgb != nullptr) std::copy_n(state_->colours.begin(), std::min(numSamples, kColourTableEntries), rgb);
}

void ZRVDevice::SetRGBGammas(float red, float green, float blue) {
  const auto curve = [](float gamma) { return MakeGammaCurve(gamma > 0.0f ? gamma : 0.0f); };  // NaN counts as 0
  state_->gammaCurves = {curve(red), curve(green), curve(blue)};
}

void ZRVDevice::SetLaserBoostEnable(unsigned int enable) {
  state_->link.Command(enable == 1 ? kCmdLaserBoostOn : kCmdLaserBoostOff);
}

// Waits also after a failed send: the controller may be writing all the same.
void ZRVDevice::SaveToFlash(ZRVFlash what) {
  Link& link = state_->link;
  link.NewCommand(kCmdSaveToFlash).U8(what);
  link.SendSerialCommand(true);
  link.machine.pause(what == FlashSettings ? kFlashSettingsTime : kFlashDataTime);
}
