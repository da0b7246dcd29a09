// A recursive filter given by its coefficients.
#ifndef ZRV_DSPFILTER_IIR_GENERIC_H
#define ZRV_DSPFILTER_IIR_GENERIC_H

#include <memory>
#include <span>

#include "dspfilter/filter.h"
#include "dspfilter/samples.h"

namespace Dsp {

// y[i] = (sum(b[k] x[i-k], k = 0..N) - sum(a[k] y[i-k], k = 1..N)) / a[0]: the coefficients of b, then a,
// as MATLAB and scipy give them. Runs in transposed direct form II.
class IIRGeneric final : public Filter {
 public:
  // order + 1 coefficients are taken from each block. Null when a block is shorter, a[0] is 0,
  // a coefficient divided by a[0] is not finite, or there are more than 2 channels: there is no such filter.
  static std::unique_ptr<Filter> Create(unsigned numChannels, unsigned order, std::span<const double> b,
                                        std::span<const double> a);

  unsigned NumChannels() const override { return static_cast<unsigned>(channels_.size()); }
  unsigned Order() const override { return static_cast<unsigned>(taps_.size()) - 1; }
  void Process(unsigned count, const float* const* in, float* const* out) override;
  void Reset() override;

 private:
  struct Tap {
    double b, a;
  };
  struct Channel {
    SampleInput input;
    std::vector<double> memory;  // one for each tap; the last stays 0
  };

  IIRGeneric() = default;
  float Step(Channel& channel, float sample) const;

  std::vector<Tap> taps_;
  std::vector<Channel> channels_;
};

}  // namespace Dsp

#endif
