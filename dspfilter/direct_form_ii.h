// Runs a cascade over interleaved samples, in direct form II: two memories a section and channel.
#ifndef ZRV_DSPFILTER_DIRECT_FORM_II_H
#define ZRV_DSPFILTER_DIRECT_FORM_II_H

#include <algorithm>
#include <array>

#include "dspfilter/low_pass.h"

namespace Dsp {

// The state of a FilterDesign. The channels of a frame lie side by side, so that two of them fill one
// vector register; and several sections go over a block together, so that their recursions, each of
// which must wait for its own last result, run beside one another.
struct DirectFormII {
  template <unsigned Channels>
  class Memory {
   public:
    void Reset(const Cascade& cascade) {
      firstOrder_ = {};
      sections_.assign(cascade.biquads.size(), {});
    }

    // Filters numFrames frames of Channels values in place; the gain is not applied.
    void Run(const Cascade& cascade, double* frames, unsigned numFrames) {
      if (cascade.firstOrderA1) RunFirstOrder(*cascade.firstOrderA1, frames, numFrames);
      const size_t count = sections_.size();
      const size_t groups = (count + kMaxGroup - 1) / kMaxGroup;
      for (size_t group = 0; group < groups; ++group) {
        const size_t first = group * count / groups;
        const size_t size = (group + 1) * count / groups - first;
        RunGroup(size, &cascade.biquads[first], &sections_[first], frames, numFrames);
      }
    }

   private:
    static constexpr size_t kMaxGroup = 5;  // as many as keep their memories in 16 vector registers

    using Values = std::array<double, Channels>;
    struct Section {
      Values w1{}, w2{};  // one and two frames ago
    };

    static void Step(const Biquad& biquad, Section& section, Values& values) {
      for (unsigned c = 0; c < Channels; ++c) {
        const double w = (values[c] - biquad.a2 * section.w2[c]) - biquad.a1 * section.w1[c];
        values[c] = (w + section.w2[c]) + biquad.b1 * section.w1[c];
        section.w2[c] = section.w1[c];
        section.w1[c] = w;
      }
    }

    // Coefficients and memories are copied to where the compiler sees that nothing else writes them.
    template <size_t Count>
    static void RunSections(const Biquad* biquads, Section* sections, double* frames, unsigned numFrames) {
      std::array<Biquad, Count> coefficients;
      std::array<Section, Count> memories;
      std::copy_n(biquads, Count, coefficients.begin());
      std::copy_n(sections, Count, memories.begin());
      for (unsigned i = 0; i < numFrames; ++i) {
        Values values;
        std::copy_n(frames + i * Channels, Channels, values.begin());
        for (size_t s = 0; s < Count; ++s) Step(coefficients[s], memories[s], values);
        std::copy_n(values.begin(), Channels, frames + i * Channels);
      }
      std::copy_n(memories.begin(), Count, sections);
    }

    static void RunGroup(size_t size, const Biquad* biquads, Section* sections, double* frames, unsigned numFrames) {
      switch (size) {
        case 1: return RunSections<1>(biquads, sections, frames, numFrames);
        case 2: return RunSections<2>(biquads, sections, frames, numFrames);
        case 3: return RunSections<3>(biquads, sections, frames, numFrames);
        case 4: return RunSections<4>(biquads, sections, frames, numFrames);
        default: return RunSections<5>(biquads, sections, frames, numFrames);
      }
    }

    void RunFirstOrder(double a1, double* frames, unsigned numFrames) {
      Values memory = firstOrder_;
      for (unsigned i = 0; i < numFrames; ++i) {
        for (unsigned c = 0; c < Channels; ++c) {
          double& value = frames[i * Channels + c];
          const double w = value - a1 * memory[c];
          value = w + memory[c];
          memory[c] = w;
        }
      }
      firstOrder_ = memory;
    }

    Values firstOrder_{};
    std::vector<Section> sections_;
  };
};

}  // namespace Dsp

#endif
