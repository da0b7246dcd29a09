// A filter that designs itself from parameters.
#ifndef ZRV_DSPFILTER_FILTER_DESIGN_H
#define ZRV_DSPFILTER_FILTER_DESIGN_H

#include "dspfilter/direct_form_ii.h"
#include "dspfilter/samples.h"

namespace Dsp {

// Design gives Defaults() and Make(params), for instance Bessel::Design::LowPass<20>.
template <class Design, unsigned Channels, class State = DirectFormII>
class FilterDesign final : public Filter {
 public:
  FilterDesign() { SetParams(Design::Defaults()); }

  unsigned NumChannels() const override { return Channels; }
  unsigned Order() const override { return cascade_.order; }
  const Cascade& Coefficients() const { return cascade_; }

  Params GetParams() const override { return params_; }
  void SetParams(const Params& params) override {
    params_ = params;
    cascade_ = Design::Make(params_);
    Reset();
  }

  void Reset() override {
    inputs_ = {};
    memory_.Reset(cascade_);
  }

  void Process(unsigned count, float* const* channels) override {
    for (unsigned start = 0; start < count;) {
      const unsigned size = std::min(count - start, kBlockFrames);
      std::array<double, kBlockFrames * Channels> frames;
      for (unsigned c = 0; c < Channels; ++c) Read(c, channels[c] + start, size, frames.data());
      memory_.Run(cascade_, frames.data(), size);
      for (unsigned c = 0; c < Channels; ++c) Write(c, frames.data(), size, channels[c] + start);
      start += size;
    }
  }

 private:
  static constexpr unsigned kBlockFrames = 256;  // stays in the first-level cache

  void Read(unsigned channel, const float* samples, unsigned size, double* frames) {
    SampleInput input = inputs_[channel];
    for (unsigned i = 0; i < size; ++i) {
      frames[i * Channels + channel] = input.Take(samples[i]) * cascade_.gain;
    }
    inputs_[channel] = input;
  }

  static void Write(unsigned channel, const double* frames, unsigned size, float* samples) {
    for (unsigned i = 0; i < size; ++i) samples[i] = ToSample(frames[i * Channels + channel]);
  }

  Params params_;
  Cascade cascade_;
  std::array<SampleInput, Channels> inputs_;
  typename State::template Memory<Channels> memory_;
};

}  // namespace Dsp

#endif
