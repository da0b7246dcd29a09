#include "dspfilter/iir_generic.h"

#include <cmath>
#include <limits>

namespace Dsp {
namespace {

constexpr unsigned kMaxChannels = 2;

}  // namespace

std::unique_ptr<Filter> IIRGeneric::Create(unsigned numChannels, unsigned order, std::span<const double> b,
                                           std::span<const double> a) {
  if (numChannels > kMaxChannels || b.size() <= order || a.size() <= order) return nullptr;
  std::unique_ptr<IIRGeneric> filter(new IIRGeneric);
  for (unsigned k = 0; k <= order; ++k) {
    const Tap tap = {b[k] / a[0], a[k] / a[0]};
    if (!std::isfinite(a[k]) || !std::isfinite(tap.b) || !std::isfinite(tap.a)) return nullptr;
    filter->taps_.push_back(tap);
  }
  filter->channels_.resize(numChannels);
  filter->Reset();
  return filter;
}

void IIRGeneric::Reset() {
  for (Channel& channel : channels_) channel = {{}, std::vector<double>(taps_.size())};
}

// Coefficients from outside may make an unstable filter. When its output leaves the range of
// samples, it starts again from rest instead of giving infinities or not-a-number for ever.
float IIRGeneric::Step(Channel& channel, float sample) const {
  const double x = channel.input.Take(sample) + kQuiet;
  double* memory = channel.memory.data();
  const double y = taps_[0].b * x + memory[0];
  if (!(std::abs(y) <= std::numeric_limits<float>::max())) {
    std::ranges::fill(channel.memory, 0.0);
    return 0.0f;
  }
  for (size_t k = 1; k < taps_.size(); ++k) {
    memory[k - 1] = (taps_[k].b * x - taps_[k].a * y) + memory[k];
  }
  return ToSample(y);
}

void IIRGeneric::Process(unsigned count, const float* const* in, float* const* out) {
  for (unsigned i = 0; i < count; ++i) {
    float results[kMaxChannels] = {};  // all taken before any is written: the channels may change places
    for (size_t c = 0; c < channels_.size(); ++c) results[c] = Step(channels_[c], in[c][i]);
    for (size_t c = 0; c < channels_.size(); ++c) out[c][i] = results[c];
  }
}

}  // namespace Dsp
