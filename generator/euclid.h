// Greatest common divisor with the sign that Euclid's rule gives, which std::gcd drops.
#ifndef ZRV_GENERATOR_EUCLID_H
#define ZRV_GENERATOR_EUCLID_H

#include <cstdint>

namespace zrv {

// For values of 33 bits and less: sums of two int.
constexpr int64_t Euclid(int64_t a, int64_t b) { return b == 0 ? a : Euclid(b, a % b); }

}  // namespace zrv

#endif
