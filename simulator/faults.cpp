#include "simulator/faults.h"

namespace zrv::sim {

void Faults::AtByte(uint64_t byteFromNow, Fault fault) { atByte_[count_ + byteFromNow] = fault; }

void Faults::OnCommand(uint8_t code, Fault fault, int byteOfAnswer) {
  onCommand_.push_back({code, fault, byteOfAnswer});
}

void Faults::FailRandomly(double probability, uint32_t seed) {
  probability_ = probability;
  random_.seed(seed);
}

void Faults::Clear() {
  atByte_.clear();
  onCommand_.clear();
  probability_ = 0;
  silent_ = false;
  chatter_.reset();
}

// Only bare engine output is used: the standard's distributions differ between libraries, and a seed must
// give the same faults everywhere.
std::optional<Fault> Faults::Draw() {
  if (probability_ <= 0) return std::nullopt;
  if (static_cast<double>(random_()) >= probability_ * 4294967296.0) return std::nullopt;
  const auto choice = random_();
  switch (choice % 4) {
    case 0: return Fault::Drop();
    case 1: return Fault::Corrupt(static_cast<uint8_t>(1u << (choice / 4 % 8)));
    case 2: return Fault::Duplicate();
    default: return Fault::Delay(0.01);
  }
}

std::optional<Fault> Faults::Next(uint8_t code, uint64_t byteOfAnswer) {
  if (const auto planned = atByte_.extract(count_++)) return planned.mapped();
  for (const OnCode& rule : onCommand_) {
    const bool hit = rule.byteOfAnswer < 0 || static_cast<uint64_t>(rule.byteOfAnswer) == byteOfAnswer;
    if (rule.code == code && hit) return rule.fault;
  }
  return Draw();
}

}  // namespace zrv::sim
