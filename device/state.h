// What a device object holds.
#ifndef ZRV_DEVICE_STATE_H
#define ZRV_DEVICE_STATE_H

#include <array>
#include <cstdint>
#include <vector>

#include "ZRVDevice.h"
#include "device/link.h"
#include "device/packing.h"

namespace zrv {

constexpr unsigned int kColourTableEntries = 100000;
constexpr unsigned int kWhite = 0xFFFFFF;

// Where the output stood when it was last stopped.
struct StopValues {
  float x = 0.0f, y = 0.0f;  // -1..1
  uint8_t m = 0;
  uint32_t index = 0;
};

struct DeviceState {
  Link link;
  ZRVDeviceParams params;  // as far as the controller is known
  ZRVTrackParams track;
  StopValues stop;
  std::vector<uint32_t> colours;          // 0x00RRGGBB by sample index
  std::array<GammaCurve, 3> gammaCurves;  // red, green, blue

  // Through the setter of a parameter; second is Y of the output offsets.
  static void Set(ZRVDevice& device, unsigned int param, double value, double second);
};

// The insides of a device, for tests.
inline DeviceState& StateOf(ZRVDevice& device) { return *device.state_; }

// Stores the state word and what stands in its bits.
void StoreStateWord(ZRVDeviceParams& params, uint32_t word);

}  // namespace zrv

#endif
