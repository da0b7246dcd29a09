// The output filter: set-up, filtering forward or with zero phase, and the file of coefficients.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>

#include "ZRVDataGenerator.h"
#include "common/bytes.h"
#include "common/files.h"
#include "dspfilter/filter_design.h"
#include "dspfilter/iir_generic.h"

namespace {

constexpr unsigned int kMaxOrder = 20;
constexpr unsigned int kGenericType = 7;
constexpr unsigned int kMaxGenericOrder = 31;

template <class Design>
std::unique_ptr<Dsp::Filter> MakeDesign(bool twoChannels) {
  if (twoChannels) return std::make_unique<Dsp::FilterDesign<Design, 2, Dsp::DirectFormII>>();
  return std::make_unique<Dsp::FilterDesign<Design, 1, Dsp::DirectFormII>>();
}

std::unique_ptr<Dsp::Filter> MakeFamily(unsigned int type, bool twoChannels) {
  switch (type) {
    case 1: return MakeDesign<Dsp::Bessel::Design::LowPass<kMaxOrder>>(twoChannels);
    case 2: return MakeDesign<Dsp::Butterworth::Design::LowPass<kMaxOrder>>(twoChannels);
    case 3: return MakeDesign<Dsp::ChebyshevI::Design::LowPass<kMaxOrder>>(twoChannels);
    case 4: return MakeDesign<Dsp::ChebyshevII::Design::LowPass<kMaxOrder>>(twoChannels);
    case 5: return MakeDesign<Dsp::Elliptic::Design::LowPass<kMaxOrder>>(twoChannels);
    case 6: return MakeDesign<Dsp::Legendre::Design::LowPass<kMaxOrder>>(twoChannels);
    default: return nullptr;
  }
}

unsigned int WholeRate(float samplesPerSecond) {
  if (!(samplesPerSecond > 0)) return 0;
  constexpr float kTooMuch = 4294967296.0f;
  if (samplesPerSecond >= kTooMuch) return std::numeric_limits<unsigned int>::max();
  return static_cast<unsigned int>(samplesPerSecond);
}

using Inputs = std::span<const float* const>;
using Outputs = std::span<float* const>;

void Copy(const float* in, float* out, size_t count) {
  if (out != in && count > 0) std::memmove(out, in, count * sizeof(float));
}

// The sequence three times over, as if played in a loop; forward, then backward; the middle is the result.
void RunZeroPhase(Dsp::Filter& filter, Inputs ins, Outputs outs, unsigned int count) {
  for (size_t c = 0; c < outs.size(); ++c) {
    for (size_t copy = 0; copy < 3; ++copy) Copy(ins[c], outs[c] + copy * count, count);
  }
  for (int pass = 0; pass < 2; ++pass) {
    filter.Process(3 * count, outs.data(), outs.data());
    for (float* out : outs) std::reverse(out, out + size_t{3} * count);
  }
  for (float* out : outs) Copy(out + count, out, count);
}

// Null filter: plain copies.
void Apply(Dsp::Filter* filter, Inputs ins, Outputs outs, unsigned int count, bool zeroPhase) {
  const auto missing = [](const float* array) { return array == nullptr; };
  if (std::ranges::any_of(ins, missing) || std::ranges::any_of(outs, missing)) return;
  if (zeroPhase && count > std::numeric_limits<unsigned int>::max() / 3) filter = nullptr;
  if (filter == nullptr) {
    for (size_t c = 0; c < ins.size(); ++c) Copy(ins[c], outs[c], count);
  } else if (zeroPhase) {
    RunZeroPhase(*filter, ins, outs, count);
  } else {
    filter->Process(count, ins.data(), outs.data());
  }
}

}  // namespace

void ZRVDataGenerator::SetupSoftwareFilter(unsigned int type, unsigned int order, float cutoffFrequency,
                                           float sampleRate, bool twoChannels) {
  softwareFilter.reset();
  if (type == kGenericType) {
    const IIRCoefficients& set = iirCoefficients;
    softwareFilter = Dsp::IIRGeneric::Create(twoChannels ? 2 : 1, set.order, set.numerator, set.denominator);
    iirFilterOrder = set.order;
    iirFilterSps = set.sps;
    return;
  }
  softwareFilter = MakeFamily(type, twoChannels);
  if (softwareFilter == nullptr) return;
  Dsp::Params params = softwareFilter->GetParams();
  params.Set(Dsp::kSampleRate, sampleRate);
  params.Set(Dsp::kOrder, order);
  params.Set(Dsp::kCutoffFrequency, cutoffFrequency);
  softwareFilter->SetParams(params);
  iirFilterOrder = softwareFilter->Order();
  iirFilterSps = WholeRate(sampleRate);
}

void ZRVDataGenerator::FilterData(const float* x, const float* y, float* xOut, float* yOut, unsigned int count,
                                  bool zeroPhase) {
  const bool applies = softwareFilter != nullptr && softwareFilter->NumChannels() == 2;
  const float* const ins[] = {x, y};
  float* const outs[] = {xOut, yOut};
  Apply(applies ? softwareFilter.get() : nullptr, ins, outs, count, zeroPhase);
}

void ZRVDataGenerator::FilterData(const float* data, float* out, unsigned int count, bool zeroPhase) {
  const bool applies =
      softwareFilter != nullptr && softwareFilter->NumChannels() == 1 && softwareFilter->Order() < count;
  const float* const ins[] = {data};
  float* const outs[] = {out};
  Apply(applies ? softwareFilter.get() : nullptr, ins, outs, count, zeroPhase);
}

void ZRVDataGenerator::LoadIIRFilterParams(const char* fileName) {
  iirCoefficients = {};
  constexpr size_t kMostBytes = 8 + 2 * sizeof(double) * (kMaxGenericOrder + 1);  // what may follow says nothing
  const auto bytes = zrv::ReadStartOfFile(fileName, kMostBytes);
  if (bytes && bytes->size() >= 8) {
    zrv::LittleEndianReader in(*bytes);
    IIRCoefficients set;
    iirCoefficients.sps = set.sps = in.U32();
    iirCoefficients.order = set.order = std::clamp(in.U32(), 1u, kMaxGenericOrder);
    for (unsigned int k = 0; k <= set.order; ++k) set.numerator[k] = in.F64();
    for (unsigned int k = 0; k <= set.order; ++k) set.denominator[k] = in.F64();
    if (in.ok()) iirCoefficients = set;  // half a filter could be an unstable one
  }
  iirFilterOrder = iirCoefficients.order;
  iirFilterSps = iirCoefficients.sps;
}
