// What a simulated controller is made of: everything a real one has from the factory, in one record.
#ifndef ZRV_SIMULATOR_OPTIONS_H
#define ZRV_SIMULATOR_OPTIONS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace zrv::sim {

// What is on an analog input: value(t) = offset + amplitude * shape(t). Volts for the two analog inputs,
// detector units (0..2) for the photodetector. The shape of a sine and of a mirror axis is -1..1, noise
// is uniform in -1..1 and the same again for the same seed.
struct AnalogSignal {
  enum class Shape {
    kDc,
    kSine,
    kNoise,
    kMirrorX,
    kMirrorY
  };
  Shape shape = Shape::kDc;
  double offset = 0;
  double amplitude = 0;
  double frequency = 0;  // Hz, sine only
  uint64_t seed = 1;     // noise only
};

// One axis of the mirror: a second-order resonance with a gain of 1 at standstill.
struct MirrorOptions {
  double resonanceHz = 1200;
  double q = 50;
};

// Tracking parameters as they travel on the wire.
struct TrackSettings {
  uint16_t threshold = 16383;  // of 32767
  uint8_t normalGain = 63;
  uint8_t tangentialGain = 0x80;  // 0x80 is 0
  uint8_t bufferDelay = 40;       // samples
  uint8_t hitRatio = 255;         // of 255
  uint8_t state = 5;
};

// What the host can set and the flash can keep, as it travels on the wire.
struct Settings {
  std::string deviceName;  // empty: the factory's name
  uint32_t usartBaudRate = 921600;
  uint32_t sampleRate = 10000;      // samples per second
  uint16_t hardwareFilterBw = 200;  // Hz
  uint16_t dataScale = 32767;       // of 32767
  uint16_t rotationCos = 32767;     // 16384 is 0, 32767 is 1
  uint16_t rotationSin = 16384;
  uint8_t vbias = 80;           // volts
  uint8_t vdifferenceMax = 80;  // volts
  uint8_t axes = 0;             // ZRVAxes: bit 0 flips X, bit 1 flips Y, bit 2 swaps them first
  bool memsDriver = false;
  bool digitalOutput = false;
  bool laserModulation = false;
  bool laserBoost = false;
  uint16_t offsetX = 32768;  // 32768 is 0, one unit is 1/32767
  uint16_t offsetY = 32768;
  uint32_t bufferOffset = 0;  // samples; kept and reported, without effect on the output
  uint16_t boot = 0;          // ZRVBoot
  uint8_t dataMode = 0;       // ZRVDataMode
  uint8_t syncMode = 0;       // 0..15
  TrackSettings track;
};

struct Options {
  std::string deviceName = "ZRV Simulator";  // at most 31 bytes
  std::string firmwareName = "ZRVSIM 10.7";  // at most 15 bytes
  std::string commType = "USB";              // at most 15 bytes
  std::string bluetoothMAC = "00:11:22:33:44:55";
  uint8_t vmax = 140;  // volts
  uint16_t errorRegister = 0;
  uint32_t formatCode = 0;     // 0..7, bits 13..15 of the state word
  bool hardwareFilter = true;  // bit 8 of the state word
  bool tracking = true;        // bit 12; false answers "NOTRACK"

  uint32_t sampleRateMin = 200;
  uint32_t sampleRateMax = 100000;
  uint32_t limitWord3 = 1;
  uint32_t capacity = 25000;          // samples in the buffer, at least 1
  uint16_t hardwareFilterBwMin = 50;  // Hz
  uint16_t hardwareFilterBwMax = 10000;
  std::array<uint8_t, 4> limitBytes7To10 = {0, 100, 0, 140};
  uint8_t vbiasMin = 10;  // volts
  uint8_t vbiasMax = 100;

  Settings factory;                          // what it starts with when the flash has nothing to say
  MirrorOptions mirror;                      // both axes
  std::array<AnalogSignal, 2> analogInputs;  // AI0 and AI1
  AnalogSignal photoDetector;

  size_t pathCapacity = 100000;       // points of the drawn path that are kept, the newest ones
  double settling = 1;                // seconds in which the mirror forgets how it began: see Controller::RunTicks
  size_t captureCapacity = 1000000;   // samples of the longest capture
  size_t sensorBlockSamples = 1000;   // between two marks of the sensor-module stream
  size_t streamBacklog = 256 * 1024;  // bytes of an unread input stream that are kept for the host
};

}  // namespace zrv::sim

#endif
