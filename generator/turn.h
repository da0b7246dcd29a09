// An angle's cosine and sine.
#ifndef ZRV_GENERATOR_TURN_H
#define ZRV_GENERATOR_TURN_H

#include <cmath>

namespace zrv {

// Taken in double and stored as float: the same on every system's library.
struct Turn {
  float cosine, sine;

  explicit Turn(float radians)
      : cosine(static_cast<float>(std::cos(static_cast<double>(radians)))),
        sine(static_cast<float>(std::sin(static_cast<double>(radians)))) {}
};

}  // namespace zrv

#endif
