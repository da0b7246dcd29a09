// What tests of filters share: the families by name, and frequency responses of a cascade.
#ifndef ZRV_TESTS_DSPFILTER_RESPONSES_H
#define ZRV_TESTS_DSPFILTER_RESPONSES_H

#include <cmath>
#include <complex>
#include <functional>
#include <numbers>

#include "dspfilter/filter_design.h"

using Complex = std::complex<double>;

template <class Design>
Dsp::Cascade Make(unsigned order, double cutoff) {
  Dsp::Params params = Design::Defaults();
  params.Set("Order", order);
  params.Set("Cutoff Frequency", cutoff);
  return Design::Make(params);
}

template <class Design, unsigned Channels>
Dsp::FilterDesign<Design, Channels> MakeFilter(unsigned order, double cutoff) {
  Dsp::FilterDesign<Design, Channels> filter;
  Dsp::Params params = filter.GetParams();
  params.Set("Order", order);
  params.Set("Cutoff Frequency", cutoff);
  filter.SetParams(params);
  return filter;
}

struct Family {
  const char* name;
  Dsp::Cascade (*make)(unsigned order, double cutoff);  // cutoff as a fraction of the sample rate
};

inline const Family kFamilies[] = {
    {"Bessel", Make<Dsp::Bessel::Design::LowPass<20>>},
    {"Butterworth", Make<Dsp::Butterworth::Design::LowPass<20>>},
    {"ChebyshevI", Make<Dsp::ChebyshevI::Design::LowPass<20>>},
    {"ChebyshevII", Make<Dsp::ChebyshevII::Design::LowPass<20>>},
    {"Elliptic", Make<Dsp::Elliptic::Design::LowPass<20>>},
    {"Legendre", Make<Dsp::Legendre::Design::LowPass<20>>},
};

inline Complex SectionResponse(const Dsp::Biquad& b, Complex z1) {
  return (1.0 + b.b1 * z1 + z1 * z1) / (1.0 + b.a1 * z1 + b.a2 * z1 * z1);
}

// At an analog frequency w of the prototype (1 is the cutoff), through the warping of the transform.
inline Complex ResponseAt(const Dsp::Cascade& cascade, double cutoff, double w) {
  const double angle = 2 * std::atan(w * std::tan(std::numbers::pi * cutoff));
  const Complex z1 = std::polar(1.0, -angle);
  Complex response = cascade.gain;
  if (cascade.firstOrderA1) response *= (1.0 + z1) / (1.0 + *cascade.firstOrderA1 * z1);
  for (const auto& biquad : cascade.biquads) response *= SectionResponse(biquad, z1);
  return response;
}

#endif
