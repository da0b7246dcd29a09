// What the data generator owns: a digital filter of one or two channels, whatever its design.
#ifndef ZRV_DSPFILTER_FILTER_H
#define ZRV_DSPFILTER_FILTER_H

#include <initializer_list>
#include <string_view>
#include <vector>

namespace Dsp {

// The parameters of a design, by name. A family has only those that mean something to it.
class Params {
 public:
  struct Entry {
    std::string_view name;
    double value;
  };

  Params() = default;
  Params(std::initializer_list<Entry> entries) : entries_(entries) {}

  // False, and nothing changes, when the family has no such parameter.
  bool Set(std::string_view name, double value) {
    for (Entry& entry : entries_) {
      if (entry.name != name) continue;
      entry.value = value;
      return true;
    }
    return false;
  }

  // The value, or missing when the family has no such parameter.
  double Get(std::string_view name, double missing) const {
    for (const Entry& entry : entries_) {
      if (entry.name == name) return entry.value;
    }
    return missing;
  }

 private:
  std::vector<Entry> entries_;
};

inline constexpr std::string_view kSampleRate = "Sample Rate";            // samples a second
inline constexpr std::string_view kOrder = "Order";                       // poles
inline constexpr std::string_view kCutoffFrequency = "Cutoff Frequency";  // Hz
inline constexpr std::string_view kRippleDb = "Ripple dB";                // depth of the pass-band ripple
inline constexpr std::string_view kStopbandDb = "Stopband dB";            // least attenuation beyond it

class Filter {
 public:
  virtual ~Filter() = default;

  virtual unsigned NumChannels() const = 0;
  virtual unsigned Order() const = 0;

  // As last set, before any clamping. Empty for a filter given by coefficients.
  virtual Params GetParams() const { return {}; }
  // Designs the filter anew, and starts it from rest.
  virtual void SetParams(const Params&) {}

  // Filters count samples of each channel; in and out point to NumChannels() arrays each, and the output may
  // be the same arrays. The state goes on from the call before, and results do not depend on how a sequence
  // is cut into calls.
  virtual void Process(unsigned count, const float* const* in, float* const* out) = 0;

  // Back to rest: as if only zeros had been filtered so far.
  virtual void Reset() = 0;
};

}  // namespace Dsp

#endif
