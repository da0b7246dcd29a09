// Every call of ZRVDevice that talks to the controller, with the time it may take and what it should bring: the rows
// of the fault table, and the calls of the soak run.
#ifndef ZRV_TESTS_RELIABILITY_CALLS_H
#define ZRV_TESTS_RELIABILITY_CALLS_H

#include <span>
#include <string>
#include <vector>

#include "ZRVDevice.h"
#include "simulator/controller.h"

namespace zrv::reliability {

// A device and the port at which its controller is to be found.
struct Bench {
  ZRVDevice device;
  std::string port;
};

// Traits of a call.
enum : unsigned {
  kHides = 1,        // by design it may end without an error although the controller was not understood
  kText = 2,         // it reads lines of text: one too long or too short is a line all the same
  kDisconnects = 4,  // the device may be without a connection afterwards
  kStreams = 8,      // it reads what the controller sends by itself: to be switched off afterwards
  kPatient = 16,     // it waits longer for an end than for an acknowledgement
  kReadsOn = 32,     // it reads an answer although the acknowledgement failed, or asks again: what was late comes in it
};

struct Call {
  const char* name;
  const char* codes;  // of the commands it sends
  unsigned boundMs;   // its pauses and time-outs, with a controller that falls silent at the worst moment
  unsigned traits;
  bool (*run)(Bench&);                // whether what it brought is right
  bool (*undo)(Bench&) = nullptr;     // restores what run changed; null: run again
  bool (*prepare)(Bench&) = nullptr;  // may be null
};

std::span<const Call> Calls();

// The controller that the calls expect, and what its tracking reports.
sim::Options ControllerOptions();
void FeedTracking(sim::Controller& controller);

// Whether the device's own record is marked as valid.
bool RecordIsValid(ZRVDevice& device);

// The first parameter of the device's own record that the controller does not have so; null when there is none. Sends
// nothing.
const char* FirstFalseParam(ZRVDevice& device, const sim::Controller& controller);

}  // namespace zrv::reliability

#endif
