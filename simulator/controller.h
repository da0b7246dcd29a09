// The simulated controller: a small firmware that reads frames, answers them and plays its sample buffer.
//
//   sim::Controller controller;
//   controller.Receive(bytes, now);      // what the host wrote
//   controller.Advance(now);             // let time pass: playback, streams, end-of-play answers
//   controller.Take(buffer);             // what the host reads
//
// Time is a number of seconds that the caller gives and that never goes backwards; the controller itself
// never looks at a clock. Not thread-safe.
//
// Which commands are answered: those for which a host waits. The others are obeyed in silence, since an
// acknowledgement that nobody reads would be taken for the next command's. Unknown commands, payloads of
// the wrong length and impossible values are not acknowledged and change nothing; values beyond a limit are
// clamped to it.
//
// The output moves whether or not the MEMS driver and the laser are enabled, so that what is played can be
// seen without either: the drawn path is what a fully enabled system would draw.
#ifndef ZRV_SIMULATOR_CONTROLLER_H
#define ZRV_SIMULATOR_CONTROLLER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "simulator/answer_queue.h"
#include "simulator/faults.h"
#include "simulator/frame_parser.h"
#include "simulator/link_observer.h"
#include "simulator/mirror.h"
#include "simulator/options.h"
#include "simulator/playback.h"
#include "simulator/ring.h"
#include "simulator/sample_block.h"

namespace zrv::sim {

struct Command;

struct CommandInfo {
  const char* name;   // "unknown command" for a code that is none
  bool acknowledged;  // whether hosts wait for an acknowledgement
};

// A point that the mirror drew while the controller was playing.
struct PathPoint {
  double time = 0;     // seconds
  float x = 0, y = 0;  // mirror position; leaves -1..1 where it overshoots
  uint8_t m = 0;       // digital value
  uint32_t rgb = 0;    // 0x00RRGGBB; formats without colour: white where m is not 0
};

// What tracking reports; without one, the present output, its M and whether it is playing.
struct TrackTarget {
  float x = 0, y = 0;  // -1..1
  uint8_t value = 0;
  bool flag = false;
};

class Controller {
 public:
  static constexpr double kNever = std::numeric_limits<double>::infinity();
  // A frame or a block that stays incomplete this long is given up, as after a host that died half-way.
  static constexpr double kFrameSilence = 0.1;  // seconds
  static constexpr double kBlockSilence = 1.0;

  explicit Controller(Options options = {});

  // Bytes from the host, arriving at this time.
  void Receive(std::span<const uint8_t> bytes, double now);
  // Lets time pass. A time before the last one counts as the last one.
  void Advance(double now);
  // The next time at which the controller has something to send by itself; kNever when there is none.
  double NextEventTime() const;

  // Bytes for the host that are due, as of the last Advance or Receive.
  size_t Available() const { return answers_.Due(now_); }
  // Takes up to buffer.size() of them; returns how many.
  size_t Take(std::span<uint8_t> buffer);
  // Drops those, as a purge at the host's end does. What is delayed still comes.
  void DiscardDue() { answers_.DropDue(now_); }

  // Power off and on: what is not in flash is lost. The answers under way too.
  void PowerCycle();

  Faults& faults() { return faults_; }
  const Faults& faults() const { return faults_; }

  // What a look inside shows, all as of the last Advance or Receive.
  const Options& options() const { return options_; }
  const Settings& settings() const { return settings_; }
  std::string DeviceName() const;
  uint16_t StateWord() const;
  bool IsPlaying() const { return playback_.playing(); }
  uint32_t SamplesRemaining() const { return playback_.Remaining(); }
  uint32_t SampleIndex() const { return playback_.index(); }
  uint32_t Rounds() const { return playback_.rounds(); }  // asked for at the last start; 0: without end
  const Sample& Output() const { return output_; }        // the sample being put out
  MirrorPosition Mirror() const { return mirror_.position(); }
  const std::vector<Sample>& Block() const { return playback_.block(); }
  // The newest points drawn, oldest first, Options::pathCapacity at most.
  std::vector<PathPoint> DrawnPath() const { return path_.Copy(); }
  const Ring<PathPoint>& Path() const { return path_; }  // the same in place, until time passes
  void ClearDrawnPath() { path_.Clear(); }
  // Frames obeyed, and frames or commands that were dropped as broken, unknown or impossible.
  uint64_t FramesAccepted() const { return accepted_; }
  uint64_t FramesRejected() const { return rejected_ + parser_.faults(); }
  uint64_t BytesReceived() const { return bytesReceived_; }
  uint64_t BytesTaken() const { return bytesTaken_; }

  // Tells the observer of all that passes on the link from now on; an empty one ends that. It is called from within
  // Receive and Advance and may not call the controller.
  void Observe(LinkObserver observer) { observer_ = std::move(observer); }
  static CommandInfo Describe(uint8_t code);

  // The world around the controller.
  void SetAnalogInput(unsigned channel, const AnalogSignal& signal);  // channel 0 or 1
  void SetPhotoDetector(const AnalogSignal& signal) { options_.photoDetector = signal; }
  void SetTrackTarget(std::optional<TrackTarget> target) { trackTarget_ = target; }
  void SetTrackIntegrals(int first, int second) { trackIntegrals_ = {first, second}; }  // -32768..32767

 private:
  struct Commands;  // the command table and what each command does
  struct FlashImage {
    std::string factoryName;
    std::optional<Settings> settings;
    std::vector<Sample> block;
  };
  struct HistoryPoint {
    MirrorPosition mirror;
    uint8_t m = 0;
  };

  static const Command* Find(uint8_t code);  // null for an unknown code
  void Boot();
  void Execute(const Frame& frame);
  void GiveUpAfterSilence();
  size_t ReceiveBlock(std::span<const uint8_t> bytes);
  void FinishBlock();
  void Tell(LinkEvent::Kind kind, uint8_t code, size_t bytes, std::span<const uint8_t> content) const;
  void Answer(uint8_t code, std::span<const uint8_t> bytes, uint64_t firstByte = 0);
  void Put(uint8_t code, std::span<const uint8_t> bytes, uint64_t firstByte);
  void RunTicks(uint64_t ticks);
  void RunClock();
  void Tick();
  void EndOfPlay();
  void StreamInputs(double time, const MirrorPosition& mirror);
  void Talk(double seconds);
  bool StreamsInputs() const { return settings_.dataMode >= 6; }
  // Tick 0 of the sample clock is to be at this time.
  void RestartClock(double firstTick);
  void ConfigureMirror();
  double TickTime(uint64_t tick) const;
  uint64_t TicksDue() const;
  uint16_t AnalogCount(unsigned channel, double time, const MirrorPosition& mirror) const;

  Options options_;
  Settings settings_;
  FlashImage flash_;

  FrameParser parser_;
  std::vector<uint8_t> received_;  // of the raw block under way
  size_t announced_ = 0;           // bytes of the block to come
  bool blockFollows_ = false;
  double lastReceived_ = 0;

  AnswerQueue answers_;
  Faults faults_;

  double now_ = 0;
  double firstTick_ = 0;  // the sample clock: tick k is at firstTick_ + k / sampleRate
  uint64_t ticks_ = 0;    // done since then
  Playback playback_;
  bool reportsEnd_ = false;
  Sample output_;
  MirrorModel mirror_;
  Ring<PathPoint> path_;
  Ring<HistoryPoint> history_;

  uint32_t captureLength_ = 0;
  uint64_t sensorSample_ = 0;
  double chatterCredit_ = 0;  // bytes owed
  std::optional<TrackTarget> trackTarget_;
  std::array<int, 2> trackIntegrals_{};
  uint64_t accepted_ = 0;
  uint64_t rejected_ = 0;
  uint64_t bytesReceived_ = 0, bytesTaken_ = 0;
  LinkObserver observer_;
};

}  // namespace zrv::sim

#endif
