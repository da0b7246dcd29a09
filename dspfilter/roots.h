// Roots of real polynomials.
#ifndef ZRV_DSPFILTER_ROOTS_H
#define ZRV_DSPFILTER_ROOTS_H

#include <complex>
#include <span>
#include <vector>

#include "dspfilter/double_double.h"

namespace Dsp {

// All roots of sum(coefficients[k] x^k), right to the last bits of a double when they are simple. The
// first and the last coefficient must not be 0.
std::vector<std::complex<double>> PolynomialRoots(std::span<const DoubleDouble> coefficients);

}  // namespace Dsp

#endif
