// What each call does on the link: its writes, reads, waits and pauses, in order, also when something fails. Hosts with
// a transport of their own (a recording, a script, a bridge) rely on it.
#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

const std::string kReset = "drain | purge | 0A | 0A | drain | purge | 0A";
const std::string kAnswered = " | 3 in 2000";             // an acknowledgement is waited for
const std::string kRefused = " | 3 in 2000 | " + kReset;  // and does not come, or is wrong
const std::string kName = "B5 B0 2B E0 06 0A | 3 in 2000 | line 1000";
const std::string kFields =
    " | line 1000 | line 1000 | line 1000 | line 1000 | 3 in 50 | 3 in 50 | 2 in 50 | 2 in 50 | "
    "2 in 50 | 1 in 50 | 1 in 50 | 1 in 50 | 1 in 50 | 1 in 50 | 1 in 50 | 1 in 50 | 2 in 50 | "
    "2 in 50 | 3 in 50 | 2 in 50 | 1 in 50";
const std::string kOffsets = " | B5 B0 2B E4 06 0A | 3 in 2000 | 4 in 2000";
const std::string kLimitsAsked = " | B5 B0 2B E1 06 0A | 3 in 2000 | line 1000";
const std::string kLimitsRead =
    " | 3 in 50 | 3 in 50 | 3 in 50 | 3 in 50 | 2 in 50 | 2 in 50 | 1 in 50 | 1 in 50 | 1 in 50 | "
    "1 in 50 | 1 in 50 | 1 in 50";
const std::string kIdentified = kName + kFields + kOffsets + kLimitsAsked + kLimitsRead;
const std::string kMode0 = "B5 B0 2B B5 07 00 0A | pause 200 | drain | " + kReset;
const std::string kState = "B5 B0 2B F4 06 0A";
const std::string kBlock = "B5 B0 2B B1 09 05 00 00 0A | 3 in 2000 | B5 B0 2B B2 06 0A | 3 in 2000";
const Bytes kWrong = {0xB5, 0xB0, 0x0B};

using Port = ScriptedTransport;
using Device = ZRVDevice;

void SendOne(Device& d) {
  float x = 0, y = -1;
  unsigned char m = 0x80;
  d.SendDataStream(&x, &y, &m, 1, 0, false);
}

void Capture(Device& d, unsigned count) {
  std::vector<float> ai0(count), ai1(count);
  d.GetAnalogInputBuffer(ai0.data(), ai1.data(), count);
}

void Identify(Device& d) {
  ZRVDeviceParams params;
  d.GetDeviceParams(&params);
}

void Integrals(Device& d) {
  int first = 0, second = 0;
  d.GetTrackIntegrals(first, second);
}

const struct Row {
  const char* name;
  void (*link)(Port& port);  // what it does
  void (*call)(Device& device);
  std::string events;
  ZRVError error;
} kRows[] = {
    // Commands and acknowledgements.
    {"a command", [](Port&) {}, [](Device& d) { d.ResetDevice(); }, "B5 B0 2B EE 06 0A" + kAnswered, ErrorNone},
    {"no acknowledgement",
     [](Port& p) {
       p.once[0xEE] = {0xB5, 0xB0};
     },
     [](Device& d) { d.ResetDevice(); }, "B5 B0 2B EE 06 0A" + kRefused, ErrorSerialComm},
    {"a wrong acknowledgement", [](Port& p) { p.once[0xEE] = kWrong; }, [](Device& d) { d.ResetDevice(); },
     "B5 B0 2B EE 06 0A" + kRefused, ErrorBadAcknowledge},
    {"a failed write", [](Port& p) { p.failingWrites = 1; }, [](Device& d) { d.ResetDevice(); },
     "!B5 B0 2B EE 06 0A | " + kReset, ErrorSerialComm},
    {"no write works", [](Port& p) { p.failingWrites = 4; }, [](Device& d) { d.ResetDevice(); },
     "!B5 B0 2B EE 06 0A | drain | purge | !0A | !0A | drain | purge | !0A", ErrorSerialReset},
    {"purges fail", [](Port& p) { p.purgesFail = true; }, [](Device& d) { d.SendSerialReset(); }, kReset,
     ErrorSerialComm},
    {"a poll", [](Port&) {}, [](Device& d) { EXPECT_TRUE(d.IsDeviceResponding()); }, "B5 B0 2B E3 06 0A | 3 in 2000",
     ErrorNone},
    {"a silent poll", [](Port& p) { p.once[0xE3] = {}; }, [](Device& d) { EXPECT_FALSE(d.IsDeviceResponding()); },
     "B5 B0 2B E3 06 0A | 3 in 2000", ErrorSerialComm},
    {"a wrong poll", [](Port& p) { p.once[0xE3] = kWrong; }, [](Device& d) { EXPECT_FALSE(d.IsDeviceResponding()); },
     "B5 B0 2B E3 06 0A | 3 in 2000", ErrorBadAcknowledge},
    {"a poll that is not written", [](Port& p) { p.failingWrites = 1; },
     [](Device& d) { EXPECT_FALSE(d.IsDeviceResponding()); }, "!B5 B0 2B E3 06 0A | " + kReset + " | 3 in 2000",
     ErrorSerialComm},
    {"a state that is not acknowledged is read all the same", [](Port& p) { p.once[0xF4] = kWrong; },
     [](Device& d) { d.GetDeviceState(); }, kState + kRefused + " | 2 in 2000", ErrorDeviceResponse},
    {"and counts",
     [](Port& p) {
       p.once[0xF4] = kWrong, p.afterPurges = {1, 1};
     },
     [](Device& d) { EXPECT_TRUE(d.IsDeviceRunning()); }, kState + kRefused + " | 2 in 2000", ErrorNone},
    // Setters.
    {"the value on record is not sent after a failure either", [](Port& p) { p.once[0xE8] = {}; },
     [](Device& d) { d.SetDeviceParam(ParamSampleRate, 1000), d.SetDeviceParam(ParamSampleRate, 20000); },
     "B5 B0 2B E8 09 E8 03 00 0A" + kRefused, ErrorNone},
    {"a lost acknowledgement leaves a switch untrue", [](Port& p) { p.once[0xD9] = {}; },
     [](Device& d) {
       d.SetDeviceParam(ParamLaserModulationEnable, 1), d.SetDeviceParam(ParamLaserModulationEnable, 0);
     },
     "B5 B0 2B D9 06 0A" + kRefused, ErrorNone},
    {"reading the parameters sets it right", [](Port& p) { *(p.answers[0xE0].end() - 11) = 1; },
     [](Device& d) { Identify(d), d.SetDeviceParam(ParamLaserModulationEnable, 0); },
     kIdentified + " | B5 B0 2B D8 06 0A" + kAnswered, ErrorNone},
    {"offsets", [](Port&) {}, [](Device& d) { d.SetDeviceParam(ParamOutputOffsets, 0, 0); },
     "B5 B0 2B BF 0A 00 80 00 80 0A", ErrorNone},
    {"data mode", [](Port&) {}, [](Device& d) { d.SetDeviceParam(ParamDataMode, 0); }, kMode0, ErrorNone},
    {"data mode, not written", [](Port& p) { p.failingWrites = 1; },
     [](Device& d) { d.SetDeviceParam(ParamDataMode, 0); },
     "!B5 B0 2B B5 07 00 0A | " + kReset + " | pause 200 | drain | " + kReset, ErrorSerialComm},
    {"a name is read back", [](Port&) {}, [](Device& d) { d.SetDeviceName("A"); },
     "B5 B0 2B BA 07 41 0A" + kAnswered + " | " + kIdentified, ErrorNone},
    {"a refused name is not", [](Port& p) { p.once[0xBA] = kWrong; }, [](Device& d) { d.SetDeviceName("A"); },
     "B5 B0 2B BA 07 41 0A" + kRefused, ErrorBadAcknowledge},
    {"flash, refused", [](Port& p) { p.once[0xF8] = kWrong; }, [](Device& d) { d.SaveToFlash(FlashSettings); },
     "B5 B0 2B F8 07 00 0A" + kRefused + " | pause 800", ErrorBadAcknowledge},
    {"flash with data", [](Port&) {}, [](Device& d) { d.SaveToFlash(FlashSettingsAndData); },
     "B5 B0 2B F8 07 01 0A" + kAnswered + " | pause 1200", ErrorNone},
    // The identification.
    {"the record", [](Port&) {}, Identify, kIdentified, ErrorNone},
    {"the record, not acknowledged", [](Port& p) { p.once[0xE0] = {}; }, Identify, "B5 B0 2B E0 06 0A" + kRefused,
     ErrorSerialComm},
    {"the record, another line", [](Port& p) { p.once[0xE0] = kAck + Text("ZR-INF\n"); }, Identify, kName,
     ErrorBadAcknowledge},
    {"the record, cut", [](Port& p) { p.once[0xE0] = Head(kIdentification, kIdentification.size() - 20); }, Identify,
     kName + kFields + kOffsets, ErrorDeviceResponse},
    {"the record, offsets lost", [](Port& p) { p.once[0xE4] = {}; }, Identify,
     kName + kFields + " | B5 B0 2B E4 06 0A" + kRefused, ErrorSerialComm},
    {"the record, offsets cut", [](Port& p) { p.once[0xE4] = Head(p.answers[0xE4], 6); }, Identify,
     kName + kFields + kOffsets, ErrorDeviceResponse},
    {"the record, limits not acknowledged", [](Port& p) { p.once[0xE1] = kWrong; }, Identify,
     kName + kFields + kOffsets + " | B5 B0 2B E1 06 0A" + kRefused, ErrorBadAcknowledge},
    {"the record, another line ahead of the limits", [](Port& p) { p.once[0xE1] = kAck + Text("ZR\n"); }, Identify,
     kName + kFields + kOffsets + kLimitsAsked, ErrorBadAcknowledge},
    {"the record, limits cut", [](Port& p) { p.once[0xE1] = Head(kLimits, kLimits.size() - 20); }, Identify,
     kIdentified, ErrorDeviceResponse},
    // Blocks and playback.
    {"a block", [](Port&) {}, SendOne, kBlock + " | FF 7F 00 00 80" + kAnswered, ErrorNone},
    {"a block, its announcement refused", [](Port& p) { p.once[0xB1] = kWrong; }, SendOne,
     "B5 B0 2B B1 09 05 00 00 0A" + kRefused, ErrorBadAcknowledge},
    {"a block, refused", [](Port& p) { p.once[0xB2] = kWrong; }, SendOne, kBlock + " | " + kReset, ErrorBadAcknowledge},
    {"a block, not written", [](Port& p) { p.blockFails = true; }, SendOne, kBlock + " | !FF 7F 00 00 80 | " + kReset,
     ErrorSerialComm},
    {"a block, not acknowledged", [](Port& p) { p.afterBlock = {0xB5}; }, SendOne,
     kBlock + " | FF 7F 00 00 80" + kRefused, ErrorSerialComm},
    {"a block, wrongly acknowledged", [](Port& p) { p.afterBlock = kWrong; }, SendOne,
     kBlock + " | FF 7F 00 00 80" + kRefused, ErrorBadAcknowledge},
    {"endless", [](Port&) {}, [](Device& d) { d.StartDataStream(0, true); }, "B5 B0 2B F1 06 0A" + kAnswered,
     ErrorNone},
    {"counted", [](Port&) {}, [](Device& d) { d.StartDataStream(100, false); }, "B5 B0 2B F5 07 20 0A" + kAnswered,
     ErrorNone},
    {"to the end", [](Port&) {}, [](Device& d) { d.StartDataStream(2, true); },
     "B5 B0 2B F3 07 02 0A" + kAnswered + " | 3 in 5000", ErrorNone},
    {"to an end that does not come", [](Port& p) { p.once[0xF3] = kAck; },
     [](Device& d) { d.StartDataStream(1, true); }, "B5 B0 2B F3 07 01 0A" + kAnswered + " | 3 in 3500 | " + kReset,
     ErrorSerialComm},
    {"to a wrong end", [](Port& p) { p.once[0xF3] = kAck + kWrong; }, [](Device& d) { d.StartDataStream(1, true); },
     "B5 B0 2B F3 07 01 0A" + kAnswered + " | 3 in 3500 | " + kReset, ErrorSerialComm},
    {"the end is waited for after a refusal too", [](Port& p) { p.once[0xF3] = kWrong; },
     [](Device& d) { d.StartDataStream(1, true); }, "B5 B0 2B F3 07 01 0A" + kRefused + " | 3 in 3500 | " + kReset,
     ErrorSerialComm},
    {"and its coming leaves the refusal", [](Port& p) { p.once[0xF3] = kWrong, p.afterPurges = kAck; },
     [](Device& d) { d.StartDataStream(1, true); }, "B5 B0 2B F3 07 01 0A" + kRefused + " | 3 in 3500",
     ErrorBadAcknowledge},
    {"a stop, refused", [](Port& p) { p.once[0xF2] = kWrong; }, [](Device& d) { d.StopDataStream(); },
     "B5 B0 2B F2 06 0A" + kRefused, ErrorBadAcknowledge},
    {"a stop, cut", [](Port& p) { p.once[0xF2] = kAck + Bytes(8); }, [](Device& d) { d.StopDataStream(); },
     "B5 B0 2B F2 06 0A | 3 in 2000 | 9 in 2000", ErrorDeviceResponse},
    {"samples remaining, refused", [](Port& p) { p.once[0xE2] = kWrong; },
     [](Device& d) { EXPECT_EQ(d.GetSamplesRemaining(), 0u); }, "B5 B0 2B E2 06 0A" + kRefused + " | 3 in 2000",
     ErrorDeviceResponse},
    {"a point at once, its announcement refused", [](Port& p) { p.once[0xB1] = kWrong; },
     [](Device& d) { d.GoToDevicePosition(0, 0, 0, 0); },
     "B5 B0 2B B1 09 05 00 00 0A" + kRefused + " | " + kState + kAnswered + " | 2 in 2000 | B5 B0 2B F1 06 0A" +
         kAnswered,
     ErrorNone},
    {"a move, all of it refused",
     [](Port& p) {
       for (int c : {0xF2, 0xB1, 0xF3, 0xF1}) p.answers[static_cast<uint8_t>(c)] = kWrong;
     },
     [](Device& d) { d.GoToDevicePosition(0, 0, 0, 1); },
     "B5 B0 2B F2 06 0A" + kRefused + " | B5 B0 2B B1 09 69 00 00 0A" + kRefused + " | B5 B0 2B F3 07 01 0A" +
         kRefused + " | 3 in 3500 | " + kReset + " | B5 B0 2B B1 09 05 00 00 0A" + kRefused + " | B5 B0 2B F1 06 0A" +
         kRefused,
     ErrorBadAcknowledge},
    // Sensing and tracking.
    {"a reading, refused", [](Port& p) { p.once[0xA0] = kWrong; }, [](Device& d) { d.GetAnalogInputValue(0); },
     "B5 B0 2B A0 06 0A" + kRefused + " | 2 in 2000", ErrorBadAcknowledge},
    {"a capture", [](Port&) {}, [](Device& d) { Capture(d, 100000); },
     "B5 B0 2B A4 09 A0 86 01 0A | 3 in 2000 | B5 B0 2B A5 06 0A | 3 in 2000 | 500000 in 2000", ErrorNone},
    {"a capture, refused", [](Port& p) { p.once[0xA4] = kWrong, p.once[0xA5] = kWrong; },
     [](Device& d) { Capture(d, 2); },
     "B5 B0 2B A4 09 02 00 00 0A" + kRefused + " | B5 B0 2B A5 06 0A" + kRefused + " | 10 in 2000",
     ErrorBadAcknowledge},
    {"what has come of a stream", [](Port&) {},
     [](Device& d) {
       std::vector<float> v(32768);
       d.GetAnalogInputStream(v.data(), nullptr, 0);
     },
     "131072 at once", ErrorNone},
    {"track parameters, refused", [](Port& p) { p.once[0x90] = kWrong; },
     [](Device& d) {
       ZRVTrackParams track;
       d.GetTrackParams(&track);
     },
     "B5 B0 2B 90 06 0A" + kRefused + " | line 1000", ErrorBadAcknowledge},
    {"track parameters, cut", [](Port& p) { p.once[0x90] = Head(p.answers[0x90], 13); },
     [](Device& d) {
       ZRVTrackParams track;
       d.GetTrackParams(&track);
     },
     "B5 B0 2B 90 06 0A | 3 in 2000 | line 1000 | 2 in 50 | 1 in 50 | 1 in 50 | 1 in 50 | 1 in 50 | 1 in 50",
     ErrorDeviceResponse},
    {"track status, refused", [](Port& p) { p.once[0x92] = kWrong; },
     [](Device& d) {
       ZRVTrackStatus status{};
       d.GetTrackStatus(&status);
     },
     "B5 B0 2B 92 06 0A" + kRefused + " | 6 in 2000", ErrorDeviceResponse},
    {"track integrals, refused", [](Port& p) { p.once[0x91] = kWrong; }, Integrals,
     "B5 B0 2B 91 06 0A" + kRefused + " | 4 in 2000", ErrorBadAcknowledge},
};

class Events : public Scripted {};

// Each row on a link where all went well so far, and on one whose last call failed.
TEST_F(Events, OfEveryCall) {
  port->Answer(0xA5, kAck + Bytes(500000));
  const std::map<uint8_t, Bytes> answers = port->answers;
  for (const Row& row : kRows) {
    for (const bool failedBefore : {false, true}) {
      SCOPED_TRACE(std::string(row.name) + (failedBefore ? ", after a failure" : ""));
      Identify(device);
      if (failedBefore) port->once[0xEE] = kWrong, device.ResetDevice();
      port->TakeEvents();
      row.link(*port);
      row.call(device);
      EXPECT_EQ(port->TakeEvents(), row.events);
      EXPECT_EQ(device.GetLastError(), row.error);
      static_cast<Script&>(*port) = {};
      port->answers = answers;
    }
  }
}

TEST_F(Events, OfConnecting) {
  ZRVDevice fresh;
  for (const bool preset : {false, true}) {
    if (preset) {  // what is set without a port leaves no trace
      fresh.DisconnectDevice();
      for (unsigned param = ParamUSARTBaudRate; param <= ParamSyncMode; ++param) {
        fresh.SetDeviceParam(static_cast<ZRVParam>(param), 1, 1);
      }
    }
    auto* transport = new ScriptedTransport;
    NotePauses(fresh, *transport);
    transport->once[0xE0] = {};
    *(transport->answers[0xE0].end() - 11) = 1;  // the laser was left on
    fresh.ConnectDevice(transport);
    const std::string check = kReset + " | " + kMode0 + " | ";
    const std::string tried = check + "B5 B0 2B E0 06 0A" + kRefused + " | pause 100 | " + check + kIdentified;
    const std::string moved =
        " | B5 B0 2B BF 0A 00 80 00 80 0A | B5 B0 2B F2 06 0A | 3 in 2000 | 9 in 2000 | "
        "B5 B0 2B B1 09 ED 03 00 0A | 3 in 2000 | B5 B0 2B B2 06 0A | 3 in 2000 | 1005 bytes | 3 in 2000 | "
        "B5 B0 2B F3 07 01 0A | 3 in 2000 | 3 in 3500 | " +
        kBlock +
        " | FF 7F FF 7F 00 | 3 in 2000 | "
        "B5 B0 2B F1 06 0A | 3 in 2000 | B5 B0 2B D8 06 0A | 3 in 2000";
    EXPECT_EQ(transport->TakeEvents(), tried + moved) << preset;
    EXPECT_EQ(fresh.GetLastError(), ErrorNone);
  }
}

TEST(Discovery, EventsOfItsPorts) {
  ZRVDevice device;
  Machine& machine = StateOf(device).link.machine;
  std::string events;
  std::vector<std::unique_ptr<Script>> kept;
  struct Plugged : ScriptedTransport {
    Plugged(bool silent, std::string& all) : all_(all) {
      if (silent) Answer(0xE0, {});
    }
    ~Plugged() override { all_ += events + "\n"; }
    std::string& all_;
  };
  Plugged* current = nullptr;
  int made = 0;
  machine.pause = [&](std::chrono::milliseconds time) { current->Note("pause " + std::to_string(time.count())); };
  machine.listPorts = [] { return std::vector<SerialPortEntry>{{"COM7", "silent", 7}, {"COM3", "there", 3}}; };
  machine.makePort = [&] {
    auto port = std::make_unique<Plugged>(made++ == 0, events);
    current = port.get();
    return port;
  };
  ZRVAvailableDevices list;
  device.GetAvailableDevices(&list);
  const auto quick = [](std::string text) {  // the time-out of the scan
    for (size_t at; (at = text.find("2000")) != std::string::npos;) text.replace(at, 4, "200");
    return text;
  };
  const std::string check = kReset + " | " + kMode0 + " | ";
  const std::string silent = quick(check + "B5 B0 2B E0 06 0A" + kRefused);
  EXPECT_EQ(events, "open silent 921600 | 0A | baud 460800 | " + silent + " | pause 100 | " + silent + " | close\n" +
                        "open there 921600 | 0A | baud 460800 | " + quick(check + kIdentified) + " | close\n");
  EXPECT_EQ(std::tuple(list.NumDevices, list.CommPortNumber[0], std::string(list.CommPortName[0])),
            std::tuple(1u, 3u, "COM3"));
  EXPECT_FALSE(device.IsDeviceConnected());
}

// A transport that leaves alone what does not arrive: a lost answer then reads as what the area, or the receive buffer,
// still holds.
TEST_F(Events, WhatALostAnswerReadsAs) {
  port->fills = false;
  port->Answer(0xE2, kAck + FromHex("22 80 33"));
  EXPECT_EQ(device.GetSamplesRemaining(), 0x338022u);
  port->Answer(0xA0, kAck);
  EXPECT_EQ(device.GetAnalogInputValue(0), (0x8022 - 32768.0f) / 3277.0f);
  port->Answer(0xA5, kAck + FromHex("01 80 02 80 00"));
  Capture(device, 1);
  port->Answer(0x91, kAck);
  int first = 0, second = 0;
  device.GetTrackIntegrals(first, second);
  EXPECT_EQ(std::pair(first, second), std::pair(1, 2));
  EXPECT_EQ(device.GetLastError(), ErrorNone);
}

TEST_F(Events, AnUnknownFormatSendsWhatTheAreaHolds) {
  SetState(0xA000);
  std::vector<float> zero(6, 0.0f);
  std::vector<unsigned char> m(6);
  const auto block = [&] {
    const std::string sent = Sent([&] { device.SendDataStream(zero.data(), zero.data(), m.data(), 6, 0, false); });
    return sent.substr(sent.rfind('|') + 2);
  };
  // The length that was announced, then the rest of what was sent, read and packed before: connecting centred the
  // mirror.
  port->Answer(0xF2, kAck + FromHex("11 22 33 44 55 66 77 88 99"));
  device.StopDataStream();
  EXPECT_EQ(block().substr(0, 30), "1E 00 00 44 55 66 77 88 99 00 ");
  ZRVTrackParams track;
  track.Threshold = track.HitRatio = 1;
  device.SetTrackParams(&track);
  EXPECT_EQ(block().substr(0, 51), "1E 00 00 80 00 FF 00 00 00 00 00 00 00 00 00 00 7F ");
}

}  // namespace
}  // namespace zrv::testing
