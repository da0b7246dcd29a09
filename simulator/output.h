// From what is played and measured to what comes out of the controller and back.
#ifndef ZRV_SIMULATOR_OUTPUT_H
#define ZRV_SIMULATOR_OUTPUT_H

#include <cstdint>

#include "simulator/mirror.h"
#include "simulator/options.h"
#include "simulator/sample_block.h"

namespace zrv::sim {

// Where the settings put a sample: axes first, then scale, rotation and offsets; kept within -1..1.
MirrorPosition Placed(const Settings& settings, const Sample& sample);

// The value of a signal at a time in seconds; position is what the two mirror shapes follow.
double SignalAt(const AnalogSignal& signal, double time, const MirrorPosition& position);

// Counts of the two kinds of input, 0..65535: 3277 a volt around 32768, and 32767 a detector unit.
uint16_t VoltsToCount(double volts);
uint16_t DetectorToCount(double value);
// A position as stop values and tracking report it: 32768 or 32767 a unit around 32768.
uint16_t StopCount(float position);
uint16_t TrackCount(float position);

}  // namespace zrv::sim

#endif
