// What the mirror does with the positions it is given.
#ifndef ZRV_SIMULATOR_MIRROR_H
#define ZRV_SIMULATOR_MIRROR_H

#include <array>

#include "simulator/options.h"

namespace zrv::sim {

struct MirrorPosition {
  float x = 0, y = 0;
};

struct MirrorTiming {
  double sampleRate = 10000;  // samples per second
  double filterHz = 0;        // corner of the low-pass ahead of the mirror; 0: none
};

// Two equal, independent axes. Each is an optional second-order Butterworth low-pass followed by a
// second-order resonance, x'' + (w/Q) x' + w^2 x = w^2 u. The input is held for a sample and the equations
// are solved exactly over it, so any sample rate is stable.
class MirrorModel {
 public:
  explicit MirrorModel(const MirrorOptions& options);

  // New rate or filter; position and speed go on.
  void Configure(const MirrorTiming& timing);
  // At rest in the centre.
  void Reset();
  // Moves one sample on, towards target.
  void Step(const MirrorPosition& target);
  MirrorPosition position() const;

 private:
  static constexpr int kStates = 4;  // filter position and speed, mirror position and speed
  using Vector = std::array<double, kStates>;
  void StepAxis(Vector& state, double input) const;

  MirrorOptions options_;
  std::array<Vector, kStates> transition_{};  // state over one sample
  Vector drive_{};                            // what one unit of input adds to it
  Vector x_{}, y_{};
};

}  // namespace zrv::sim

#endif
