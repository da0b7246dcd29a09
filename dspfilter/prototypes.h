// Analog low-pass prototypes: the poles and zeros of each family at a cutoff of 1 rad/s.
#ifndef ZRV_DSPFILTER_PROTOTYPES_H
#define ZRV_DSPFILTER_PROTOTYPES_H

#include <complex>
#include <optional>
#include <span>
#include <vector>

namespace Dsp {

// A low-pass filter as asked for, every value already inside the range that designs can have.
struct LowPassRequest {
  unsigned order = 1;      // 1..20
  double cutoff = 0.25;    // fraction of the sample rate
  double rippleDb = 1;     // Chebyshev I, Elliptic
  double stopbandDb = 48;  // Chebyshev II, Elliptic
};

// The transfer function dcGain * prod(1 + (s/zero)^2) / prod(1 - s/pole).
struct Prototype {
  std::vector<std::complex<double>> poles;  // of each conjugate pair the one above the real axis
  std::optional<double> realPole;           // odd orders
  std::vector<double> zeros;                // rad/s, each a pair +-j*zero; all others lie at infinity
  double dcGain = 1;
};

namespace Bessel {
Prototype MakePrototype(const LowPassRequest& request);
}
namespace Butterworth {
Prototype MakePrototype(const LowPassRequest& request);
}
namespace ChebyshevI {
Prototype MakePrototype(const LowPassRequest& request);
}
namespace ChebyshevII {
Prototype MakePrototype(const LowPassRequest& request);
}
namespace Elliptic {
Prototype MakePrototype(const LowPassRequest& request);
}
namespace Legendre {
Prototype MakePrototype(const LowPassRequest& request);
}

// Sorts all the poles of a filter with real coefficients into pairs and the real pole of an odd order.
Prototype PrototypeFromPoles(std::span<const std::complex<double>> poles);

// 10^(dB/10) - 1: the square of the ripple factor that belongs to an attenuation.
double RippleSquared(double dB);

// The gain at which the ripple of an even order starts at 0 Hz; odd orders start at 1.
double RippleStart(unsigned order, double rippleDb);

}  // namespace Dsp

#endif
