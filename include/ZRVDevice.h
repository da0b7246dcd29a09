// A MEMS-mirror laser-scanning controller on a serial port: find it, connect, set it up, play samples.
//
//   ZRVDevice device;
//   device.ConnectDevice();                                    // the first controller found
//   device.SendDataStream(x, y, m, 1000, 0, false);
//   device.StartDataStream(-1, false);                         // play without end
//   if (device.GetLastError() != ErrorNone) ...
//
// Threads: none are made, and every call blocks until the controller answers or a time-out passes. Devices share
// nothing: one thread at a time may call into a device, and different threads into different devices. The
// definitions file and the port directory are settings of the process, for one thread to make before.
//
// Errors: nothing throws. Each call leaves its outcome in the device's last error, read with
// GetLastError(). Without a connection calls set ErrorNotConnected and return what their comment says. Any
// command can end with ErrorSerialComm (written or acknowledged not at all, or too late) or
// ErrorBadAcknowledge; the link is then resynchronised (ErrorSerialReset: that failed too). An answer that is cut
// short is ErrorDeviceResponse. Nothing is read ahead of a command: what comes too late for one call spoils the
// next. On a link that works again a pause and SendSerialReset() end that; where answers come at once, two more calls
// fail at most without it. docs/reliability.md says more, also where the longest time of each call stands.
// Values out of range are clamped silently unless a comment says that they are refused.
//
// Ownership: arrays stay the caller's. Records returned by pointer are made with new and the caller's to
// delete.
#ifndef ZRV_DEVICE_H
#define ZRV_DEVICE_H

#include <memory>
#include <string>

#include "ZRVDefinitions.h"
#include "ZRVSerialIO.h"

class ZRVDevice;

namespace zrv {
struct DeviceState;  // the library's own
DeviceState& StateOf(ZRVDevice& device);
}  // namespace zrv

class ZRV_API ZRVDevice {
 public:
  ZRVDevice();
  // Disconnects.
  ~ZRVDevice();
  ZRVDevice(const ZRVDevice&) = delete;
  ZRVDevice& operator=(const ZRVDevice&) = delete;

  // How the last call ended. Does not clear it.
  ZRVError GetLastError() const;

  // "10.7.1.0". The text is static.
  static const char* GetAPIVersion();

  // --- Finding and connecting ---------------------------------------------------------------------

  // Opens each serial port of the machine in turn and lists the controllers that answer, 12 at most. Call
  // it while not connected: an open connection is closed first. About a second for each silent port, and up to
  // three seconds more for a Bluetooth port (rfcomm) without a connection. A null list: ErrorNotConnected.
  void GetAvailableDevices(ZRVAvailableDevices* list);
  ZRVAvailableDevices* GetAvailableDevices();

  // Prints the list to standard output, a line a device.
  void ListAvailableDevices(ZRVAvailableDevices* list);

  // Connects to the first controller found; none: ErrorNoDeviceFound.
  void ConnectDevice();

  // Connects to a port: "COM3" or "\\.\COM3" on Windows, "/dev/ttyUSB0" or "ttyUSB0" on Linux. A name of
  // another form: ErrorInvalidPortName; no such port, or one that may not be opened: ErrorNoDeviceFound.
  // A new connection starts with the mirror centred and the laser modulation off.
  void ConnectDevice(const char* portName);

  // Connects through an opened transport. The device owns it from here on, also when connecting fails.
  // Connecting while connected closes and destroys the old transport first. A transport that does not override
  // ZRVSerialIO::PurgeQueues works but for this: every resynchronisation reports ErrorSerialComm, so that the
  // data mode, which takes one, never counts as set.
  void ConnectDevice(ZRVSerialIO* transport);

  // Identifies the controller on the connected port, as connecting does: resynchronises the link, sets data mode
  // and sync mode to 0 and reads the whole record, up to twice. ParamsValid is 1 when that worked.
  ZRVDeviceParams* CheckConnectDevice();

  void DisconnectDevice();

  // Disconnects and clears the parameter record; the object stays usable.
  void DeleteDevice();

  bool IsDeviceConnected() const;

  // Asks the controller for an acknowledgement. A failure does not resynchronise the link.
  bool IsDeviceResponding();

  // --- Parameters -----------------------------------------------------------------------------------

  // Reads the whole record. ParamsValid tells whether it arrived in full. Fields that did not arrive stay as they
  // were, in params and in the device's own record, the limits included; ErrorDeviceResponse then. Without a
  // connection only the limits and ParamsValid (0) are filled in. A null record: ErrorNotConnected.
  void GetDeviceParams(ZRVDeviceParams* params);
  ZRVDeviceParams* GetDeviceParams();

  // Applies what differs from the device's own record, skipping values of 1e8 and above and NaN (marks of
  // "not given"). All fields are tried; the highest error code of them stays. Changed read-only fields:
  // ErrorReadOnlyParam. The name goes into the device's own record also when the controller refuses it. A null
  // record: ErrorNotConnected.
  void SetDeviceParams(ZRVDeviceParams* params);

  // One parameter of the device's own record; ParamDeviceState is read from the controller. The axis (0 X,
  // else Y) is for ParamOutputOffsets. Unknown: 1e9 and ErrorInvalidParam.
  float GetDeviceParam(ZRVParam param, int axis = 0);

  // Sets one parameter. Nothing is sent when the device's own record has that value already, but for the output
  // offsets and the data mode, which are sent always. value2 is Y of the output offsets.
  //
  // An acknowledgement that is lost on its way back leaves the record untrue: the laser is on, the record says off,
  // and switching it off sends nothing. After a failure, and to be safe before switching a laser off, read the
  // parameters again first (GetDeviceParams), then set.
  //
  // Whole numbers are rounded, codes (axes, boot setting, modes) truncated and sent as they are, in two's complement;
  // axes above 7 are ErrorInvalidValue, and so is NaN. Infinite values are clamped where a parameter has limits, else
  // ErrorInvalidValue. ParamDataMode takes 200 ms, drops what has come in and resynchronises the link.
  void SetDeviceParam(ZRVParam param, float value1, float value2 = 0);

  // Refreshes the state word, and what is decoded from it, in the device's own record.
  void GetDeviceState();

  // Refreshes XOffset and YOffset in the device's own record.
  void GetOutputOffsets();

  // Delay of the hardware filter in samples, at most numSamples - 1 (numSamples 0: without a limit); 0 when the filter
  // is off or its bandwidth is 0.
  unsigned int CalcHardwareFilterDelay(unsigned int numSamples) const;

  // Renames the controller: 31 bytes at most, else ErrorInvalidValue. Nothing is sent when it has that name already.
  // Then reads the whole record.
  void SetDeviceName(const char* name);

  // Sets the name that a controller falls back to. Without the access code nothing happens.
  void SetDefaultDeviceName(const char* name, std::string accessCode);

  // Stores the settings in the controller's flash; takes about a second.
  void SaveToFlash(ZRVFlash what);

  // --- Playing samples ------------------------------------------------------------------------------

  // Loads a block of numSamples samples into the controller; playback goes on as it was.
  //   x, y            positions, -1..1, clamped
  //   m               digital byte of each sample
  //   delaySamples    how much later the digital byte and colour go out than the position (circular);
  //                   the hardware filter's delay is added, but for data modes 7 and 8, whose output has no filter
  //   minimizeJump    begin the block at its sample nearest to where the output last stopped
  // No more samples are sent than the controller holds. 0 samples, a null array, or a controller that reports a
  // capacity of 0: ErrorInvalidValue.
  void SendDataStream(float* x, float* y, unsigned char* m, unsigned int numSamples, unsigned int delaySamples,
                      bool minimizeJump);

  // Plays the loaded block: repeat times (1..32), or without end when repeat is below 1. wait: blocks until the
  // controller reports the end, also when the command failed, for repeat * SampleBufferCapacity / SampleRate seconds
  // and 2 s at most, however short the block (ErrorSerialComm then). Without end there is nothing to wait for.
  // Without a connection nothing happens, and the last error stays untouched.
  void StartDataStream(int repeat, bool wait);

  // Ends playback and reads back where the output stopped, for the four calls below. On a lost answer
  // (ErrorDeviceResponse) position and index read 0, the digital byte is kept.
  void StopDataStream();

  float GetXStop() const;          // -1..1
  float GetYStop() const;          // -1..1
  unsigned char GetMStop() const;  // digital byte
  unsigned int GetIStop() const;   // sample index

  // Samples still to play; 1000000000 without a connection, 0 when the answer is lost.
  unsigned int GetSamplesRemaining();

  bool IsDeviceRunning();

  // --- Position and laser ---------------------------------------------------------------------------

  // Moves to (x, y) smoothly in about milliseconds (1..5000), or at once when that is 0, and stays there with
  // digital byte m. Outside -1..1: ErrorInvalidValue, nothing sent.
  void GoToDevicePosition(float x, float y, unsigned char m, unsigned int milliseconds);

  // Clears the output offsets and moves to the centre.
  void ResetDevicePosition();

  // Laser colours 0x00RRGGBB by sample index, used by the colour output formats. The table has 100000
  // entries, all white at first. The second form sets one colour (numSamples 0: the whole table).
  void SetRGBData(unsigned int* rgb, unsigned int numSamples);
  void SetRGBData(unsigned int rgb, unsigned int numSamples);
  void GetRGBData(unsigned int* rgb, unsigned int numSamples);

  // Gamma of each channel, 0 and up: sent value = trunc((value / 255) ^ gamma * 255). 1 at first.
  void SetRGBGammas(float red, float green, float blue);

  // 1 switches the laser boost on, anything else off.
  void SetLaserBoostEnable(unsigned int enable);

  // --- Analog inputs --------------------------------------------------------------------------------
  //
  // Two inputs, AI0 and AI1, of about -10..10 V, and a photodetector of 0..2. Arrays hold numSamples entries; a
  // null array is left out, what it would have held is dropped. Answer bytes that do not arrive read as the
  // filler 0xDC, which is 7.25 V; with a transport of the caller's that does not fill, as what came before.

  // One reading in volts: channel 0 is AI0, any other AI1. Without a connection -1e9. An answer that does
  // not come sets no error of its own: the last error stays that of the command.
  float GetAnalogInputValue(unsigned int channel);

  // One reading, 1 being half of the detector's range. Without a connection -1e9.
  float GetPhotoDetectorValue();

  // Captures numSamples pairs at the sample rate and returns them in volts. Without a connection every entry
  // is -1e9. Any length that the controller can capture arrives whole, as long as it keeps sending; when it
  // stops, the rest is filler, and the last error stays that of the command.
  void GetAnalogInputBuffer(float* ai0, float* ai1, unsigned int numSamples);

  // Receives pairs that the controller sends by itself in data modes 6..8, and returns their number. Mode 6:
  // both in volts. Mode 7: AI0 in volts, AI1 as counts (0..65535). Mode 8: both -1..1. In other modes the
  // pairs are counted, but the arrays are left as they are.
  //   numSamples      pairs to wait for, 125000 at most, for as long as they take at the sample rate plus a
  //                   second. 0: those that have arrived by now; the arrays must then hold 32768 entries
  // Fewer pairs, or 0, are the only sign of a failure once connected.
  unsigned int GetAnalogInputStream(float* ai0, float* ai1, unsigned int numSamples);

  // Receives one block of numSamples (100000 at most) samples of the sensor module, in data mode 9, and returns
  // their number; 0 in other modes, and when no start of a block comes within 3 * numSamples bytes, or not
  // all samples follow. Values are count * 10 with firmware "ORBEX1D", else count * gain * 3.3 / 2.048 / 65535.
  unsigned int GetOrBEX1Stream(float* data, float gain, unsigned int numSamples);

  // --- Tracking -------------------------------------------------------------------------------------
  //
  // Some controllers follow a target by themselves, from a detector signal. A null record: ErrorNotConnected.

  // Whether the controller can track. Asks it.
  bool IsTrackingSupported();

  // Reads the tracking parameters into params and the device's own record. A controller without tracking
  // clears TrackingSupported only, without an error. Another answer: ErrorBadAcknowledge; one cut short:
  // ErrorDeviceResponse, and the fields that did not arrive stay as they were.
  void GetTrackParams(ZRVTrackParams* params);
  ZRVTrackParams* GetTrackParams();

  // Sends all tracking parameters at once. Fields out of range are clamped in params itself, NaN to the lowest
  // value.
  void SetTrackParams(ZRVTrackParams* params);

  // Reads the tracked point. It becomes XOffset and YOffset of the device's own record too, since tracking
  // moves the output by these offsets. On a lost answer (ErrorDeviceResponse) only Valid is changed.
  void GetTrackStatus(ZRVTrackStatus* status);
  ZRVTrackStatus* GetTrackStatus();

  // Reads the two tracking integrals, -32768..32767. Without a connection they stay as they are.
  void GetTrackIntegrals(int& integral1, int& integral2);

  // --- Parameter files ------------------------------------------------------------------------------
  //
  // Text, a line "key = value" for each field; docs/file-formats.md has the keys. Enumerations stand in it
  // by the names of their members, which are looked up in the definitions header at run time. The decimal
  // point is a point whatever the locale says.

  // The definitions header to look names up in, for all devices. It starts as "ZRVDefinitions.h" in the
  // working directory; null restores that.
  static void SetDefinitionsFile(const char* path);

  // Writes the record, or the device's own one when params is null. Numbers from 1e8 up, and NaN, are left out.
  // A file that cannot be written: ErrorInvalidValue.
  void SaveDeviceParams(const char* fileName, ZRVDeviceParams* params);

  // Fills a record from a file; SetDeviceParams then applies it. A field that the file does not give becomes 1e9,
  // which SetDeviceParams skips. No file gives no field. Of what is saved, never loaded are: the names, which
  // become empty; the baud rate, the highest voltage, the filter flag, the state and error words, which become 1e9; the
  // Bluetooth address, which stays as it is, like the output format and the limits. A null record: ErrorNotConnected.
  void LoadDeviceParams(ZRVDeviceParams* params, const char* fileName);

  // The value of one key of a file, defaultValue when it has none. Of doubled keys the first counts. A name
  // that the definitions header does not have is 1e9.
  float LoadDeviceParam(const char* fileName, const char* key, float defaultValue) const;

  // The member name of a value of "ZRVAxes", "ZRVBoot", "ZRVDataMode" or "ZRVSync"; empty when there is none.
  // The text is made with new char[] and the caller's to delete[].
  char* GetEnumString(std::string enumName, int value) const;

  // --- The link -------------------------------------------------------------------------------------

  // Discards what the controller has sent so far.
  void ClearInputBuffer();

  // Ends any half-sent frame and drops stale answers.
  void SendSerialReset();

  void ResetDevice();

 private:
  friend struct zrv::DeviceState;
  friend zrv::DeviceState& zrv::StateOf(ZRVDevice& device);

  void CheckConnectDevice(ZRVDeviceParams* params);
  bool ProbePort(const char* path, ZRVDeviceParams& params);

  void SetUSARTBaudRate(unsigned int baudRate);
  void SetSampleRate(unsigned int samplesPerSecond);
  void SetHardwareFilterBw(unsigned int hertz);
  void SetVdifferenceMax(float volts);
  void SetVbias(float volts);
  void SetOutputOffsets(float x, float y);
  void SetDataScale(float scale);
  void SetDataRotation(float radians);
  void SetMEMSDriverEnable(unsigned int enable);
  void SetDigitalOutputEnable(unsigned int enable);
  void SetLaserModulationEnable(unsigned int enable);
  void SetBufferOffset(unsigned int samples);
  void SetDeviceAxes(ZRVAxes axes);
  void SetBootParams(ZRVBoot boot);
  void SetDataMode(ZRVDataMode mode);
  void SetSyncMode(ZRVSync mode);

  void SetTrackThreshold(float threshold);
  void SetTrackNormalGain(int gain);
  void SetTrackTangentialGain(int gain);
  void SetTrackBufferDelay(unsigned int samples);
  void SetTrackHitRatio(float ratio);
  void SetTrackState(unsigned int bits);

  void SetAnalogInputBufferLength(unsigned int numSamples);
  unsigned int InterpolateDataTriangle(float* xIn, float* yIn, unsigned char* mIn, float* xOut, float* yOut,
                                       unsigned char* mOut, unsigned int numSamples);
  std::string EnumToString(std::string enumName, int value) const;
  int EnumToInt(std::string memberName) const;

  std::unique_ptr<zrv::DeviceState> state_;
};

#endif
