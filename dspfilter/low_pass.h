// From an analog prototype to the coefficients of a digital cascade.
#ifndef ZRV_DSPFILTER_LOW_PASS_H
#define ZRV_DSPFILTER_LOW_PASS_H

#include "dspfilter/filter.h"
#include "dspfilter/prototypes.h"

namespace Dsp {

// (1 + b1 z^-1 + z^-2) / (1 + a1 z^-1 + a2 z^-2). The zeros of all low passes here lie on the unit
// circle, which makes the outer numerator coefficients 1; the gain is taken out, see Cascade.
struct Biquad {
  double b1, a1, a2;
};

// gain * prod(biquads) * (1 + z^-1) / (1 + a1 z^-1), the last factor for odd orders only.
struct Cascade {
  unsigned order = 0;
  double gain = 1;
  std::optional<double> firstOrderA1;
  std::vector<Biquad> biquads;  // rising quality factor: the peaks come after the sections that damp them
};

// What a stable filter can have, as fractions of the sample rate. Below, the poles come so near to 1 that
// double precision no longer tells them apart; the upper end is its mirror image.
inline constexpr double kLowestCutoff = 1e-5;
inline constexpr double kHighestCutoff = 0.5 - 1e-5;

// Reads the parameters of a design, each held inside its range: the order in 1..maxOrder, the cutoff
// between the fractions above (not-a-number, and any cutoff without a usable sample rate: the lowest),
// ripple in 0.0001..12 dB, stopband from 1 dB above the ripple to 200 dB (not-a-number: 1 and 48 dB).
LowPassRequest ReadLowPass(const Params& params, unsigned maxOrder);

// Bilinear transform, prewarped so that 1 rad/s of the prototype comes to lie at the cutoff exactly.
Cascade DigitalCascade(const Prototype& prototype, double cutoff);

// A low-pass design of one family, as FilterDesign takes it. Defaults lists the family's parameters.
template <Prototype (*MakePrototype)(const LowPassRequest&), unsigned MaxOrder, bool HasRipple, bool HasStopband>
struct LowPassDesign {
  static Params Defaults() {
    using Entry = Params::Entry;
    const Entry ripple = {kRippleDb, 1};
    const Entry stopband = {kStopbandDb, 48};
    const Entry rate = {kSampleRate, 1};
    const Entry order = {kOrder, 2};
    const Entry cutoff = {kCutoffFrequency, 0.25};
    if constexpr (HasRipple && HasStopband) return {rate, order, cutoff, ripple, stopband};
    if constexpr (HasRipple) return {rate, order, cutoff, ripple};
    if constexpr (HasStopband) return {rate, order, cutoff, stopband};
    return {rate, order, cutoff};
  }

  static Cascade Make(const Params& params) {
    const LowPassRequest request = ReadLowPass(params, MaxOrder);
    return DigitalCascade(MakePrototype(request), request.cutoff);
  }
};

namespace Bessel::Design {
template <unsigned MaxOrder>
using LowPass = LowPassDesign<MakePrototype, MaxOrder, false, false>;
}
namespace Butterworth::Design {
template <unsigned MaxOrder>
using LowPass = LowPassDesign<MakePrototype, MaxOrder, false, false>;
}
namespace ChebyshevI::Design {
template <unsigned MaxOrder>
using LowPass = LowPassDesign<MakePrototype, MaxOrder, true, false>;
}
namespace ChebyshevII::Design {
template <unsigned MaxOrder>
using LowPass = LowPassDesign<MakePrototype, MaxOrder, false, true>;
}
namespace Elliptic::Design {
template <unsigned MaxOrder>
using LowPass = LowPassDesign<MakePrototype, MaxOrder, true, true>;
}
namespace Legendre::Design {
template <unsigned MaxOrder>
using LowPass = LowPassDesign<MakePrototype, MaxOrder, false, false>;
}

}  // namespace Dsp

#endif
