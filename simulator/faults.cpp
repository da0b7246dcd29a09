#include "simulator/faults.h"

#include <algorithm>

namespace zrv::sim {

void Faults::AtByte(uint64_t byteFromNow, Fault fault) { atByte_[count_ + byteFromNow] = fault; }

void Faults::OnCommand(uint8_t code, Fault fault, int byteOfAnswer) {
  onCommand_.push_back({code, fault, byteOfAnswer});
}

void Faults::FailRandomly(double probability, uint32_t seed) {
  ofBytes_ = probability;
  random_.seed(seed);
}

void Faults::FailRandomAnswers(double probability, uint32_t seed) {
  ofAnswers_ = probability;
  random_.seed(seed);
}

void Faults::Clear() {
  atByte_.clear();
  onCommand_.clear();
  cutAfter_.reset();
  ofBytes_ = ofAnswers_ = 0;
  silent_ = false;
  deafFrom_ = UINT64_MAX;
  chatter_.reset();
}

// Only bare engine output is used: the standard's distributions differ between libraries, and a seed must
// give the same faults everywhere.
bool Faults::Hits(double probability) {
  return probability > 0 && static_cast<double>(random_()) < probability * 4294967296.0;
}

Fault Faults::DrawFault() {
  ++drawn_;
  const auto choice = random_();
  switch (choice % 4) {
    case 0: return Fault::Drop();
    case 1: return Fault::Corrupt(static_cast<uint8_t>(1u << (choice / 4 % 8)));
    case 2: return Fault::Duplicate();
    default: return Fault::Delay(0.01);
  }
}

void Faults::BeginAnswer(size_t bytes) {
  if (bytes > 0 && Hits(ofAnswers_)) AtByte(random_() % bytes, DrawFault());
}

size_t Faults::Accept(size_t bytes) {
  if (cutAfter_) {
    bytes = static_cast<size_t>(std::min<uint64_t>(bytes, *cutAfter_));
    *cutAfter_ -= bytes;
    cut_ = *cutAfter_ == 0;
  }
  received_ += bytes;
  return bytes;
}

std::optional<Fault> Faults::Next(uint8_t code, uint64_t byteOfAnswer) {
  if (const auto planned = atByte_.extract(count_++)) return planned.mapped();
  for (const OnCode& rule : onCommand_) {
    const bool hit = rule.byteOfAnswer < 0 || static_cast<uint64_t>(rule.byteOfAnswer) == byteOfAnswer;
    if (rule.code == code && hit) return rule.fault;
  }
  if (Hits(ofBytes_)) return DrawFault();
  return std::nullopt;
}

}  // namespace zrv::sim
