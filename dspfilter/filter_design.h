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

  void Process(unsigned count, const float* const* in, float* const* out) override {
    for (unsigned start = 0; start < count;) {
      const unsigned size = std::min(count - start, kBlockFrames);
      Frames frames;
      Read(in, start, size, frames);
      memory_.Run(cascade_, frames.data(), size);
      Write(frames, start, size, out);
      start += size;
    }
  }

 private:
  static constexpr unsigned kBlockFrames = 256;  // stays in the first-level cache
  using Frames = std::array<double, kBlockFrames * Channels>;

  void Read(const float* const* in, unsigned start, unsigned size, Frames& frames) {
    float scratch[Channels][kBlockFrames];
    const float* samples[Channels];
    for (unsigned c = 0; c < Channels; ++c) samples[c] = inputs_[c].Take(in[c] + start, size, scratch[c]);
    const double gain = cascade_.gain;
    for (unsigned i = 0; i < size; ++i) {
      for (unsigned c = 0; c < Channels; ++c) frames[i * Channels + c] = (samples[c][i] + kQuiet) * gain;
    }
  }

  static void Write(const Frames& frames, unsigned start, unsigned size, float* const* out) {
    for (unsigned c = 0; c < Channels; ++c) {
      float* samples = out[c] + start;
      for (unsigned i = 0; i < size; ++i) samples[i] = ToSample(frames[i * Channels + c]);
    }
  }

  Params params_;
  Cascade cascade_;
  std::array<SampleInput, Channels> inputs_;
  typename State::template Memory<Channels> memory_;
};

}  // namespace Dsp

#endif
