// Faults that a simulated controller is asked to make. Most act on its answers byte by byte, whatever the bytes
// mean: acknowledgements, answers and streams alike.
//
//   controller.faults().AtByte(2, Fault::Corrupt(0x01));           // third byte from now, once
//   controller.faults().OnCommand(0xF2, Fault::Drop());            // every answer of the stop command
//   controller.faults().OnCommand(0xF4, Fault::Delay(0.5), 3);     // first byte behind the acknowledgement
#ifndef ZRV_SIMULATOR_FAULTS_H
#define ZRV_SIMULATOR_FAULTS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <vector>

namespace zrv::sim {

struct Fault {
  enum class Kind {
    kDrop,
    kCorrupt,
    kDuplicate,
    kDelay,
    kCut
  };
  Kind kind = Kind::kDrop;
  uint8_t mask = 0;    // corrupt: the bits to flip
  double seconds = 0;  // delay: this byte and all behind it come so much later

  static Fault Drop() { return {}; }
  static Fault Corrupt(uint8_t mask) { return {Kind::kCorrupt, mask, 0}; }
  static Fault Duplicate() { return {Kind::kDuplicate, 0, 0}; }
  static Fault Delay(double seconds) { return {Kind::kDelay, 0, seconds}; }
  static Fault Cut() { return {Kind::kCut, 0, 0}; }  // the link is gone before this byte
};

// Endless talk: value again and again at this rate, from now on.
struct Chatter {
  uint8_t value = 0xB5;
  double bytesPerSecond = 92160;
};

class Faults {
 public:
  static constexpr int kEveryByte = -1;

  // The byteFromNow-th answer byte from now, 0 being the next; once.
  void AtByte(uint64_t byteFromNow, Fault fault);

  // Every answer of a command. byteOfAnswer counts from 0 and includes the acknowledgement: what comes
  // later for the same command counts on (the end-of-play acknowledgement of 0xF3 is bytes 3..5, and so is
  // the one that follows the raw block of 0xB2). The input streams count as answers of 0xB5.
  void OnCommand(uint8_t code, Fault fault, int byteOfAnswer = kEveryByte);

  // Each byte is dropped, corrupted, doubled or delayed by 10 ms with this probability, 0..1.
  void FailRandomly(double probability, uint32_t seed);
  // So is one byte of an answer, with this probability for each answer.
  void FailRandomAnswers(double probability, uint32_t seed);

  // The link is gone behind the count-th byte from the host, 0: with the first one.
  void CutAfterReceiving(uint64_t count) { cutAfter_ = count; }
  // Behind so many bytes what the host sends is not taken from the line, which fills up.
  void StopReceiving(uint64_t after = 0) { deafFrom_ = received_ + after; }
  void StopAnswering() { silent_ = true; }
  void StartChatter(Chatter chatter) { chatter_ = chatter; }
  void CutLink() { cut_ = true; }

  // A good controller again; a link that was cut stays cut.
  void Clear();

  uint64_t bytesAnswered() const { return count_; }
  uint64_t bytesReceived() const { return received_; }
  uint64_t randomFaults() const { return drawn_; }
  bool silent() const { return silent_; }
  bool deaf() const { return received_ >= deafFrom_; }
  uint64_t takes() const { return deaf() ? 0 : deafFrom_ - received_; }  // so many more bytes from the host
  bool linkCut() const { return cut_; }
  const std::optional<Chatter>& chatter() const { return chatter_; }

  // An answer of so many bytes is about to go out.
  void BeginAnswer(size_t bytes);
  // Of so many bytes from the host, those that come through.
  size_t Accept(size_t bytes);
  // What happens to the next answer byte, byteOfAnswer of the answer of command code.
  std::optional<Fault> Next(uint8_t code, uint64_t byteOfAnswer);

 private:
  struct OnCode {
    uint8_t code;
    Fault fault;
    int byteOfAnswer;
  };
  bool Hits(double probability);
  Fault DrawFault();

  uint64_t count_ = 0, received_ = 0, drawn_ = 0;
  std::optional<uint64_t> cutAfter_;
  uint64_t deafFrom_ = UINT64_MAX;
  std::map<uint64_t, Fault> atByte_;
  std::vector<OnCode> onCommand_;
  double ofBytes_ = 0, ofAnswers_ = 0;  // probabilities
  std::mt19937 random_;
  bool silent_ = false;
  bool cut_ = false;
  std::optional<Chatter> chatter_;
};

}  // namespace zrv::sim

#endif
