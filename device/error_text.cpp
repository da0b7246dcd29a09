// What went wrong, in words.
#include "ZRVFlatInterface.h"

const char* ZRVGetErrorText(ZRVError error) {
  switch (error) {
    case ErrorNone: return "success (ErrorNone)";
    case ErrorNotConnected: return "no controller is connected (ErrorNotConnected).\nConnect first";
    case ErrorSerialComm:
      return "the controller cannot be reached over its port (ErrorSerialComm).\n"
             "Check that it is switched on, plugged in and not used by another program";
    case ErrorDeviceResponse:
      return "the controller did not answer in time (ErrorDeviceResponse).\n"
             "Try again; if it stays silent, switch it off and on";
    case ErrorSerialReset:
      return "the link could not be brought back in step (ErrorSerialReset).\nSwitch the controller off and on";
    case ErrorBadAcknowledge:
      return "the answer is not that of a controller (ErrorBadAcknowledge).\nCheck that this is the controller's port";
    case ErrorInvalidValue:
      return "a value is outside its range (ErrorInvalidValue).\nThe documentation of the call gives the range";
    case ErrorReadOnlyParam: return "a value in it can only be read (ErrorReadOnlyParam).\nThe other values were set";
    case ErrorInvalidParam:
      return "there is no such parameter, or it cannot be set (ErrorInvalidParam).\nZRVParam lists them";
    case ErrorInvalidPortName:
      return "there is no serial port of that name (ErrorInvalidPortName).\n"
             "Give a name like ttyUSB0 or /dev/ttyUSB0, on Windows COM3";
    case ErrorNoDeviceFound:
      return "no controller was found there (ErrorNoDeviceFound).\n"
             "Check the cable, your right to open the port and that no other program has it; without hardware, run\n"
             "zrv simulate";
  }
  return "an error that this version does not know.\nTry again";
}
