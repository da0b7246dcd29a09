// The wire protocol's constants: frames, command codes, sizes. Shared with the simulated controller.
// docs/protocol.md has the byte tables.
#ifndef ZRV_DEVICE_PROTOCOL_H
#define ZRV_DEVICE_PROTOCOL_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace zrv::protocol {

// A frame: header, code, total length (8 bits, wraps), payload, trailer.
constexpr std::array<uint8_t, 3> kFrameHeader = {0xB5, 0xB0, 0x2B};
constexpr std::array<uint8_t, 3> kAcknowledge = {0xB5, 0xB0, 0x0A};
constexpr uint8_t kTrailer = 0x0A;
constexpr size_t kFrameOverhead = 6;
constexpr size_t kMaxFrameBytes = 100;
constexpr size_t kMaxPayloadBytes = kMaxFrameBytes - kFrameOverhead;

enum Command : uint8_t {
  kCmdProbe = 0x0A,  // sent as a single byte, not as a frame
  kCmdGetTrackParams = 0x90,
  kCmdGetTrackIntegrals = 0x91,
  kCmdGetTrackStatus = 0x92,
  kCmdSetTrackThreshold = 0x95,
  kCmdSetTrackNormalGain = 0x96,
  kCmdSetTrackBufferDelay = 0x97,
  kCmdSetTrackHitRatio = 0x98,
  kCmdSetTrackState = 0x99,
  kCmdSetTrackTangentialGain = 0x9A,
  kCmdSetTrackParams = 0x9D,
  kCmdGetAnalogInput0 = 0xA0,
  kCmdGetAnalogInput1 = 0xA1,
  kCmdSetCaptureLength = 0xA4,
  kCmdGetCapture = 0xA5,
  kCmdGetPhotoDetector = 0xA6,
  kCmdSetBufferOffset = 0xB0,
  kCmdAnnounceBlock = 0xB1,
  kCmdBlockFollows = 0xB2,
  kCmdSetDataMode = 0xB5,
  kCmdSetDeviceName = 0xBA,
  kCmdSetUSARTBaudRate = 0xBB,
  kCmdSetDefaultDeviceName = 0xBD,
  kCmdSetOutputOffsets = 0xBF,
  kCmdSetHardwareFilterBw = 0xC0,
  kCmdMEMSDriverOff = 0xD4,
  kCmdMEMSDriverOn = 0xD5,
  kCmdDigitalOutputOff = 0xD6,
  kCmdDigitalOutputOn = 0xD7,
  kCmdLaserModulationOff = 0xD8,
  kCmdLaserModulationOn = 0xD9,
  kCmdLaserBoostOff = 0xDA,
  kCmdLaserBoostOn = 0xDB,
  kCmdGetIdentification = 0xE0,
  kCmdGetLimits = 0xE1,
  kCmdGetSamplesRemaining = 0xE2,
  kCmdIsResponding = 0xE3,
  kCmdGetOutputOffsets = 0xE4,
  kCmdSetSyncMode = 0xE5,
  kCmdSetDeviceAxes = 0xE7,
  kCmdSetSampleRate = 0xE8,
  kCmdSetDataScale = 0xE9,
  kCmdSetVbias = 0xEA,
  kCmdSetVdifferenceMax = 0xEB,
  kCmdSetDataRotation = 0xEC,
  kCmdReset = 0xEE,
  kCmdSetBootParams = 0xEF,
  kCmdPlayEndless = 0xF1,
  kCmdStop = 0xF2,
  kCmdPlayCountedAndReport = 0xF3,
  kCmdGetState = 0xF4,
  kCmdPlayCounted = 0xF5,
  kCmdSaveToFlash = 0xF8,
};

// Text lines of answers, each ended by kTrailer.
constexpr const char* kInfoLine = "ZR-INFO";
constexpr const char* kNoTrackLine = "NOTRACK";

// The state word.
constexpr uint32_t kStatePlaying = 1u << 0;
constexpr uint32_t kStateSyncMask = 0x1E;
constexpr int kStateSyncShift = 1;
constexpr uint32_t kStateHardwareFilter = 1u << 8;
constexpr uint32_t kStateTracking = 1u << 12;
constexpr uint32_t kStateFormatMask = 0xE000;
constexpr int kStateFormatShift = 13;

constexpr size_t kStateAnswerBytes = 2;
constexpr size_t kOffsetsAnswerBytes = 4;
constexpr size_t kStopAnswerBytes = 9;
constexpr size_t kRemainingAnswerBytes = 3;
constexpr size_t kAnalogAnswerBytes = 2;
constexpr size_t kCaptureRecordBytes = 5;
constexpr size_t kStreamRecordBytes = 4;
constexpr size_t kTrackStatusAnswerBytes = 6;
constexpr size_t kTrackIntegralsAnswerBytes = 4;
constexpr size_t kTrackParamsBytes = 7;
constexpr std::array<uint8_t, 4> kOrBEX1Mark = {0xB5, 0xAA, 0x55, 0x0F};  // starts a sensor-module block

// Output offsets and tracked points. Encoding an offset adds 1 to a count centred at 32767, decoding takes 32768
// off: not exact inverses at the ends of the range. Kept on purpose, the controller expects it.
constexpr float DecodeOffset(uint32_t count) { return (static_cast<float>(count) - 32768.0f) / 32767.0f; }

// Sample formats, by the code in bits 13..15 of the state word. Codes above 4 count as 5 bytes.
enum SampleFormat : uint32_t {
  kFormatXY16M = 0,       // X 16 bits, Y 16 bits, M
  kFormatXY12M1 = 1,      // X 12 bits, Y 11 bits, M bit 0
  kFormatXY12RGB565 = 2,  // black where M is 0
  kFormatXY12RGB888 = 3,  // black where M is 0
  kFormatXY12MRGB = 4,    // M and colour, never blanked
};
constexpr size_t kMaxBytesPerSample = 7;

constexpr uint32_t BytesPerSample(uint32_t format) {
  constexpr uint32_t kBytes[] = {5, 3, 5, 6, 7};
  return format < 5 ? kBytes[format] : 5;
}

}  // namespace zrv::protocol

#endif
