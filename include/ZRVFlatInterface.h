/* ZRV without classes: the same library for C, Python, MATLAB, LabVIEW, C#. Valid C99 and C++17.
 *
 *   ZRVDevice* device = ZRVCreateDevice();
 *   ZRVConnectDeviceAuto(device);
 *   if (ZRVGetLastError(device) == ErrorNone) {
 *     ZRVSendDataStream(device, x, y, m, 1000, 0, false);
 *     ZRVStartDataStream(device, -1, false); // plays without end
 *     ...
 *     ZRVStopDataStream(device);
 *   }
 *   ZRVDeleteDevice(device);
 *
 * What holds for all of it:
 *   Handles     A device or generator is a pointer to an object nobody looks into. What a create function
 *               returned is the caller's, to give back to the delete function of the same kind. A create
 *               function returns null when memory is short. The delete functions take null and do nothing
 *               then; no other function looks at its handle: a null or deleted one is the caller's error.
 *   Errors      Nothing returns an error and nothing throws. Call ZRVGetLastError after each call; the codes
 *               are in ZRVDefinitions.h. Without a connection: ErrorNotConnected. The link may also fail at
 *               any time with ErrorSerialComm, ErrorBadAcknowledge or ErrorDeviceResponse; it is put in order
 *               by itself, and the next call starts clean (ErrorSerialReset: that failed too). Should memory run
 *               out within a call, it returns zeros.
 *   Arrays      are the caller's, read or filled during the call and never kept. Their sizes are not known
 *               here: each must hold as many elements as the call says.
 *   Records     travel by value and whole, as the plain structs of ZRVDefinitions.h.
 *   Texts       given are only read and may be freed after the call.
 *   bool        is one byte, 0 or 1 (in Python ctypes.c_bool). Enumerations are 32-bit unsigned integers.
 *   Threads     one at a time may call, for all devices together. Calls block until the controller answers or
 *               a time-out passes, mostly two seconds.
 *   Values      out of range are clamped silently unless said otherwise.
 */
#ifndef ZRV_FLAT_INTERFACE_H
#define ZRV_FLAT_INTERFACE_H

#include "ZRVDefinitions.h"

#ifdef __cplusplus
class ZRVDevice;
class ZRVSerialIO;
class ZRVDataGenerator;
extern "C" {
#else
typedef struct ZRVDevice ZRVDevice;
typedef struct ZRVSerialIO ZRVSerialIO;
typedef struct ZRVDataGenerator ZRVDataGenerator;
#endif

/* ---- Device handles ------------------------------------------------------------------------------ */

/* A device, not connected yet. */
ZRV_API ZRVDevice* ZRVCreateDevice(void);

/* Disconnects and frees. What the controller plays goes on playing. */
ZRV_API void ZRVDeleteDevice(ZRVDevice* device);

/* How the last call ended. Does not clear it. */
ZRV_API ZRVError ZRVGetLastError(ZRVDevice* device);

/* ---- Finding and connecting ---------------------------------------------------------------------- */

/* Opens each serial port of the machine in turn and lists the controllers that answer, 12 at most: entries
 * 0..NumDevices-1 are filled. Takes about a second for each port that stays silent. An open connection is
 * closed first. */
ZRV_API ZRVAvailableDevicesStruct ZRVGetAvailableDevices(ZRVDevice* device);

/* Connects to a port: "COM3" or "\\.\COM3" on Windows, "/dev/ttyUSB0" or "ttyUSB0" on Linux. The mirror is then
 * centred and the laser modulation off. ErrorInvalidPortName: a name of another form; ErrorNoDeviceFound:
 * no such port, or one that may not be opened. */
ZRV_API void ZRVConnectDevice(ZRVDevice* device, const char* portName);

/* Connects through an opened transport, an object of a C++ class derived from ZRVSerialIO. The device owns it from
 * here on, also when connecting fails. */
ZRV_API void ZRVConnectDeviceSocket(ZRVDevice* device, ZRVSerialIO* transport);

/* Connects to the first controller found; none: ErrorNoDeviceFound. */
ZRV_API void ZRVConnectDeviceAuto(ZRVDevice* device);

ZRV_API void ZRVDisconnectDevice(ZRVDevice* device);

/* Whether a port is attached; asks nobody. */
ZRV_API bool ZRVIsDeviceConnected(ZRVDevice* device);

/* ---- The link ------------------------------------------------------------------------------------ */

/* Discards what the controller has sent so far. */
ZRV_API void ZRVClearInputBuffer(ZRVDevice* device);

/* Ends any half-sent command and drops stale answers. Failed calls do this by themselves. */
ZRV_API void ZRVSendSerialReset(ZRVDevice* device);

ZRV_API void ZRVResetDevice(ZRVDevice* device);

/* ---- Parameters ---------------------------------------------------------------------------------- */

/* The controller's whole record, read anew; ParamsValid is 1 when all of it arrived. */
ZRV_API ZRVDeviceParamsStruct ZRVGetDeviceParams(ZRVDevice* device);

/* Applies the fields that differ from what the device has; 1e8 and above means "leave as it is". All are
 * tried; the highest error code stays. Changed read-only fields: ErrorReadOnlyParam. */
ZRV_API void ZRVSetDeviceParams(ZRVDevice* device, ZRVDeviceParamsStruct params);

/* One parameter as it was last read or set (ParamDeviceState is asked for). Of ParamOutputOffsets only X can be
 * had here; both are in the record. An unknown one: 1e9 and ErrorInvalidParam. */
ZRV_API float ZRVGetDeviceParam(ZRVDevice* device, ZRVParam param);

/* Sets one parameter; nothing is sent when it has that value already, but for the output offsets and the data
 * mode, which are sent always. value2 is Y of ParamOutputOffsets, else unused. NaN, and a code that no unsigned
 * integer holds: ErrorInvalidValue. */
ZRV_API void ZRVSetDeviceParam(ZRVDevice* device, ZRVParam param, float value1, float value2);

/* Reads a parameter file and applies it at once. Fields that it does not give stay as they are. Enumerations
 * need the file ZRVDefinitions.h in the working directory; without it they too stay as they are. */
ZRV_API void ZRVLoadDeviceParams(ZRVDevice* device, const char* fileName);

/* Writes the device's record, as it was last read or set, to a parameter file. Enumerations are written by
 * name with the help of ZRVDefinitions.h in the working directory. A file that cannot be written:
 * ErrorInvalidValue. */
ZRV_API void ZRVSaveDeviceParams(ZRVDevice* device, char* fileName);

/* The member name of a value of "ZRVAxes", "ZRVBoot", "ZRVDataMode" or "ZRVSync", read from ZRVDefinitions.h in
 * the working directory; empty when there is none. The text is the caller's and made with C++ new char[]:
 * C++ frees it with delete[]. From other languages, where there is no delete[], keep it: it is a few bytes. */
ZRV_API char* ZRVGetEnumString(ZRVDevice* device, const char* enumName, int value);

/* Stores the settings in the controller's flash. Takes about a second. */
ZRV_API void ZRVSaveToFlash(ZRVDevice* device, ZRVFlash what);

/* ---- Playing samples ----------------------------------------------------------------------------- */

/* Loads a block into the controller; playback goes on as it was.
 *   x, y           numSamples positions each, -1..1
 *   m              numSamples digital bytes
 *   delaySamples   how much later the digital byte goes out than the position (circular)
 *   minimizeJump   begin the block at its sample nearest to where the output last stopped
 * No more than the controller holds are sent. 0 samples or a null array: ErrorInvalidValue. */
ZRV_API void ZRVSendDataStream(ZRVDevice* device, float* x, float* y, unsigned char* m, unsigned int numSamples,
                               unsigned int delaySamples, bool minimizeJump);

/* Plays the block: repeat times (1..32), or without end when repeat is below 1. wait: returns at the end. Without a
 * connection the last error stays untouched. */
ZRV_API void ZRVStartDataStream(ZRVDevice* device, int repeat, bool wait);

/* Ends playback and reads back where the output stopped, for the four calls below. */
ZRV_API void ZRVStopDataStream(ZRVDevice* device);
ZRV_API float ZRVGetXStop(ZRVDevice* device);         /* -1..1 */
ZRV_API float ZRVGetYStop(ZRVDevice* device);         /* -1..1 */
ZRV_API unsigned char ZRVGetMStop(ZRVDevice* device); /* digital byte */
ZRV_API unsigned int ZRVGetIStop(ZRVDevice* device);  /* sample index */

/* Samples still to play; 1000000000 without a connection. */
ZRV_API unsigned int ZRVGetSamplesRemaining(ZRVDevice* device);
ZRV_API bool ZRVIsDeviceRunning(ZRVDevice* device);

/* ---- Position and laser -------------------------------------------------------------------------- */

/* Moves to (x, y) smoothly in about mSec milliseconds (1..5000), or at once when that is 0, and stays there with
 * digital byte m. Outside -1..1: ErrorInvalidValue, nothing sent. */
ZRV_API void ZRVGoToDevicePosition(ZRVDevice* device, float x, float y, unsigned char m, unsigned int mSec);

/* Clears the output offsets and moves to the centre. */
ZRV_API void ZRVResetDevicePosition(ZRVDevice* device);

/* Laser colours 0x00RRGGBB by sample index: a table of 100000, all white at first. */
ZRV_API void ZRVSetRGBDataArray(ZRVDevice* device, unsigned int* rgb, unsigned int numSamples);
ZRV_API void ZRVSetRGBData(ZRVDevice* device, unsigned int rgb, unsigned int numSamples); /* 0: the whole table */
ZRV_API void ZRVGetRGBData(ZRVDevice* device, unsigned int* rgb, unsigned int numSamples);

/* ---- Sensing ------------------------------------------------------------------------------------- */

/* One reading in volts, about -10..10; channel 0 or 1. Without a connection -1e9. */
ZRV_API float ZRVGetAnalogInputValue(ZRVDevice* device, unsigned int channel);

/* One reading, 0..2. Without a connection -1e9. */
ZRV_API float ZRVGetPhotoDetectorValue(ZRVDevice* device);

/* Captures numSamples pairs at the sample rate, in volts. A null array is left out. */
ZRV_API void ZRVGetAnalogInputBuffer(ZRVDevice* device, float* ai0, float* ai1, unsigned int numSamples);

/* Receives pairs that the controller sends by itself in data modes 6 (volts), 7 (volts, counts) and 8 (-1..1), and
 * returns their number. At most 125000 are waited for; numSamples 0 returns those that have arrived, and the
 * arrays must then hold 32768 elements. */
ZRV_API unsigned int ZRVGetAnalogInputStream(ZRVDevice* device, float* ai0, float* ai1, unsigned int numSamples);

/* Whether the controller can track. */
ZRV_API bool ZRVIsTrackingSupported(ZRVDevice* device);

/* ---- Generator ----------------------------------------------------------------------------------- */

/* Makes scan data; needs no device. */
ZRV_API ZRVDataGenerator* ZRVCreateDataGenerator(void);
ZRV_API void ZRVDeleteDataGenerator(ZRVDataGenerator* generator);

/* A raster of lines along y, stacked along x, with smooth turnarounds; starts and ends at the same point. Returns
 * the number of samples written to x, y and m, or 0 when it cannot be made within the limits. Room needed, from
 * L = 1.1 * sps * lineDuration: (numLines + 2) * L samples, and if not bidirectional another
 * numLines * sps * min(lineDuration, 0.01). With up to 25000 pixels in all that is about 60000.
 * With x, y and m null it sets sps, writes nothing and returns the count that it would write.
 *   xAmplitude      half size of the stack of lines, 0..1
 *   yAmplitude      half size of the sweep, turnarounds included, 0..1
 *   numPixels       a line, at least 2
 *   lineDuration    of its active part, in seconds
 *   pixelHold       dwell at each pixel and step to the next, instead of a steady sweep
 *   bidirectional   scan every second line backwards, instead of flying back
 *   digitalShift    samples by which m is delayed, wrapping around
 *   rotationAngle   radians, clockwise
 *   sps             receives the sample rate to play it at, minSps..maxSps; may be null
 *   m               bit 0 active part of a line, bit 1 pixel clock, bit 2 first active sample of the frame, bit 7
 *                   start of a line (one-way only) */
ZRV_API unsigned int ZRVLinearRasterPattern(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                            float xAmplitude, float yAmplitude, unsigned int numLines,
                                            unsigned int numPixels, float lineDuration, bool pixelHold,
                                            bool bidirectional, int digitalShift, float rotationAngle,
                                            unsigned int* sps, int minSps, int maxSps);

#ifdef __cplusplus
}
#endif

#endif
