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
 *               any time with ErrorSerialComm or ErrorBadAcknowledge, after which it is resynchronised
 *               (ErrorSerialReset: that failed too), or with ErrorDeviceResponse. What comes too late for one
 *               call spoils the next: on a link that works again a pause and ZRVSendSerialReset end that; where
 *               answers come at once, two more calls fail at most without it. Should memory run out within a
 *               call, it returns zeros.
 *   Arrays      are the caller's, read or filled during the call and never kept. Their sizes are not known
 *               here: each must hold as many elements as the call says.
 *   Records     travel by value and whole, as the plain structs of ZRVDefinitions.h; settings of generators by
 *               pointer.
 *   Texts       given are only read and may be freed after the call.
 *   bool        is one byte, 0 or 1 (in Python ctypes.c_bool). Enumerations are 32-bit unsigned integers.
 *   Threads     one at a time may call with a handle, different ones with different handles. The definitions
 *               file and the port directory are for one thread to set before. Calls block until the controller
 *               answers or a time-out passes, mostly two seconds.
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

/* What an error means, with the name of its code, and behind a line end what to do; no full stop at the end. The text
 * is static. */
ZRV_API const char* ZRVGetErrorText(ZRVError error);

/* The library's version, "10.7.1.0". The text is static. */
ZRV_API const char* ZRVGetAPIVersion(void);

/* Frees a text that a call returned; null does nothing. */
ZRV_API void ZRVFreeText(char* text);

/* ---- Finding and connecting ---------------------------------------------------------------------- */

/* Opens each serial port of the machine in turn and lists the controllers that answer, 12 at most: entries
 * 0..NumDevices-1 are filled. Takes about a second for each port that stays silent, and up to three seconds more
 * for a Bluetooth port (rfcomm) without a connection. An open connection is closed first. */
ZRV_API ZRVAvailableDevicesStruct ZRVGetAvailableDevices(ZRVDevice* device);

/* Prints a list to standard output, a line a controller. */
ZRV_API void ZRVListAvailableDevices(ZRVDevice* device, ZRVAvailableDevicesStruct list);

/* Linux: where serial ports are looked for, for all devices. It starts as "/dev"; null restores that. No effect on
 * Windows. */
ZRV_API void ZRVSetPortDirectory(const char* directory);

/* Connects to a port: "COM3" or "\\.\COM3" on Windows, "/dev/ttyUSB0" or "ttyUSB0" on Linux. The mirror is then
 * centred and the laser modulation off. ErrorInvalidPortName: a name of another form; ErrorNoDeviceFound:
 * no such port, or one that may not be opened. */
ZRV_API void ZRVConnectDevice(ZRVDevice* device, const char* portName);

/* Connects through an opened transport, an object of a C++ class derived from ZRVSerialIO. The device owns it from
 * here on, also when connecting fails. When it does not override PurgeQueues, every resynchronisation reports
 * ErrorSerialComm, and the data mode cannot be set. */
ZRV_API void ZRVConnectDeviceSocket(ZRVDevice* device, ZRVSerialIO* transport);

/* Connects to the first controller found; none: ErrorNoDeviceFound. */
ZRV_API void ZRVConnectDeviceAuto(ZRVDevice* device);

ZRV_API void ZRVDisconnectDevice(ZRVDevice* device);

/* Whether a port is attached; asks nobody. */
ZRV_API bool ZRVIsDeviceConnected(ZRVDevice* device);

/* Asks the controller for an acknowledgement. A failure does not put the link in order. */
ZRV_API bool ZRVIsDeviceResponding(ZRVDevice* device);

/* Identifies the controller anew, as connecting does: resynchronises the link, sets data mode and sync mode to 0 and
 * reads the whole record, up to twice. ParamsValid is 1 when all of it arrived. */
ZRV_API ZRVDeviceParamsStruct ZRVCheckConnectDevice(ZRVDevice* device);

/* ---- The link ------------------------------------------------------------------------------------ */

/* Discards what the controller has sent so far. */
ZRV_API void ZRVClearInputBuffer(ZRVDevice* device);

/* Ends any half-sent command and drops stale answers. Failed calls do this by themselves. */
ZRV_API void ZRVSendSerialReset(ZRVDevice* device);

ZRV_API void ZRVResetDevice(ZRVDevice* device);

/* ---- Parameters ---------------------------------------------------------------------------------- */

/* The controller's whole record, read anew; ParamsValid is 1 when all of it arrived. Fields that did not arrive are 0
 * here, and stay as they were in the device's own record; ErrorDeviceResponse then. Without a connection only the
 * limits are given. */
ZRV_API ZRVDeviceParamsStruct ZRVGetDeviceParams(ZRVDevice* device);

/* Applies the fields that differ from the device's own record; 1e8 and above and NaN mean "leave as it is". All are
 * tried; the highest error code stays. Changed read-only fields: ErrorReadOnlyParam. The name goes into the
 * device's own record also when the controller refuses it. */
ZRV_API void ZRVSetDeviceParams(ZRVDevice* device, ZRVDeviceParamsStruct params);

/* One parameter as it was last read or set (ParamDeviceState is asked for). Of ParamOutputOffsets only X can be
 * had here; both are in the record. An unknown one: 1e9 and ErrorInvalidParam. */
ZRV_API float ZRVGetDeviceParam(ZRVDevice* device, ZRVParam param);

/* The same with a choice of axis: 0 is X, any other Y. Only ParamOutputOffsets has two. */
ZRV_API float ZRVGetDeviceParamAxis(ZRVDevice* device, ZRVParam param, int axis);

/* Sets one parameter. Nothing is sent when the device's own record has that value already, but for the output offsets
 * and the data mode, which are sent always. value2 is Y of ParamOutputOffsets, else unused.
 *
 * An acknowledgement that is lost on its way back leaves the record untrue: the laser is on, the record says off, and
 * switching it off sends nothing. After a failure, and to be safe before switching a laser off, read the parameters
 * again first (ZRVGetDeviceParams), then set.
 *
 * Whole numbers are rounded, codes (axes, boot setting, modes) truncated and sent as they are, in two's complement;
 * axes above 7 are ErrorInvalidValue, and so is NaN. Infinite values are clamped where a parameter has limits, else
 * ErrorInvalidValue. ParamDataMode takes 200 ms, drops what has come in and resynchronises the link. */
ZRV_API void ZRVSetDeviceParam(ZRVDevice* device, ZRVParam param, float value1, float value2);

/* Ask the controller for its state word, or its output offsets, and keep them in the device's record. */
ZRV_API void ZRVGetDeviceState(ZRVDevice* device);
ZRV_API void ZRVGetOutputOffsets(ZRVDevice* device);

/* Delay of the hardware filter in samples, at most numSamples - 1 (numSamples 0: without a limit); 0 when the filter is
 * off or its bandwidth is 0. */
ZRV_API unsigned int ZRVCalcHardwareFilterDelay(ZRVDevice* device, unsigned int numSamples);

/* Renames the controller: 31 bytes at most, else ErrorInvalidValue. Nothing is sent when it has that name already. Then
 * reads the whole record. */
ZRV_API void ZRVSetDeviceName(ZRVDevice* device, const char* name);

/* Sets the name that a controller falls back to. Without the access code nothing happens. */
ZRV_API void ZRVSetDefaultDeviceName(ZRVDevice* device, const char* name, const char* accessCode);

/* Reads a parameter file and applies it at once. Fields that it does not give stay as they are, and so do those that
 * are saved but never loaded: names, Bluetooth address, baud rate, highest voltage, filter flag, state and error
 * words. Enumerations need the file ZRVDefinitions.h in the working directory; without it they too stay as they are. */
ZRV_API void ZRVLoadDeviceParams(ZRVDevice* device, const char* fileName);

/* Writes the device's record, as it was last read or set, to a parameter file. Enumerations are written by
 * name with the help of ZRVDefinitions.h in the working directory. A file that cannot be written:
 * ErrorInvalidValue. */
ZRV_API void ZRVSaveDeviceParams(ZRVDevice* device, char* fileName);

/* The member name of a value of "ZRVAxes", "ZRVBoot", "ZRVDataMode" or "ZRVSync", read from ZRVDefinitions.h in
 * the working directory; empty when there is none. The text is the caller's: ZRVFreeText frees it, or delete[]
 * in C++. */
ZRV_API char* ZRVGetEnumString(ZRVDevice* device, const char* enumName, int value);

/* Where ZRVDefinitions.h is, for all devices. It starts as "ZRVDefinitions.h" in the working directory; null
 * restores that. */
ZRV_API void ZRVSetDefinitionsFile(const char* path);

/* The value of one key of a parameter file, defaultValue when it has none. Of doubled keys the first counts. A name
 * that ZRVDefinitions.h does not have is 1e9. */
ZRV_API float ZRVLoadDeviceParam(ZRVDevice* device, const char* fileName, const char* key, float defaultValue);

/* Stores the settings in the controller's flash. Takes about a second. */
ZRV_API void ZRVSaveToFlash(ZRVDevice* device, ZRVFlash what);

/* ---- Playing samples ----------------------------------------------------------------------------- */

/* Loads a block into the controller; playback goes on as it was.
 *   x, y           numSamples positions each, -1..1
 *   m              numSamples digital bytes
 *   delaySamples   how much later the digital byte and colour go out than the position (circular); the hardware
 *                  filter's delay is added, but for data modes 7 and 8, whose output has no filter
 *   minimizeJump   begin the block at its sample nearest to where the output last stopped
 * No more than the controller holds are sent. 0 samples, a null array, or a controller that reports a capacity of 0:
 * ErrorInvalidValue. */
ZRV_API void ZRVSendDataStream(ZRVDevice* device, float* x, float* y, unsigned char* m, unsigned int numSamples,
                               unsigned int delaySamples, bool minimizeJump);

/* Plays the block: repeat times (1..32), or without end when repeat is below 1. wait: returns when the controller
 * reports the end, also when the command failed, after repeat * SampleBufferCapacity / SampleRate seconds and 2 s at
 * most, however short the block (ErrorSerialComm then). Without end there is nothing to wait for. Without a connection
 * nothing happens, and the last error stays untouched. */
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

/* Gamma of each channel, 0 and up: sent value = trunc((value / 255) ^ gamma * 255). 1 at first. */
ZRV_API void ZRVSetRGBGammas(ZRVDevice* device, float red, float green, float blue);

/* 1 switches the laser boost on, anything else off. */
ZRV_API void ZRVSetLaserBoostEnable(ZRVDevice* device, unsigned int enable);

/* ---- Sensing ------------------------------------------------------------------------------------- */

/* One reading in volts, about -10..10; channel 0 or 1. Without a connection -1e9. */
ZRV_API float ZRVGetAnalogInputValue(ZRVDevice* device, unsigned int channel);

/* One reading, 0..2. Without a connection -1e9. */
ZRV_API float ZRVGetPhotoDetectorValue(ZRVDevice* device);

/* Captures numSamples pairs at the sample rate, in volts. A null array is left out. Without a connection every entry is
 * -1e9; what does not arrive reads as 7.25, without an error of its own. */
ZRV_API void ZRVGetAnalogInputBuffer(ZRVDevice* device, float* ai0, float* ai1, unsigned int numSamples);

/* Receives pairs that the controller sends by itself in data modes 6 (volts), 7 (volts, counts) and 8 (-1..1), and
 * returns their number. At most 125000 are waited for; numSamples 0 returns those that have arrived, and the
 * arrays must then hold 32768 elements. */
ZRV_API unsigned int ZRVGetAnalogInputStream(ZRVDevice* device, float* ai0, float* ai1, unsigned int numSamples);

/* Whether the controller can track. */
ZRV_API bool ZRVIsTrackingSupported(ZRVDevice* device);

/* Receives one block of numSamples (100000 at most) samples of the sensor module, in data mode 9, and returns
 * their number; 0 in other modes, and when no block comes. Values are count * 10 with firmware "ORBEX1D", else
 * count * gain * 3.3 / 2.048 / 65535. */
ZRV_API unsigned int ZRVGetOrBEX1Stream(ZRVDevice* device, float* data, float gain, unsigned int numSamples);

/* ---- Tracking: some controllers follow a target by themselves, from a detector signal ------------- */

/* The tracking parameters. A controller without tracking leaves TrackingSupported 0, without an error. Fields
 * that did not arrive are 0. */
ZRV_API ZRVTrackParamsStruct ZRVGetTrackParams(ZRVDevice* device);

/* Sends all tracking parameters at once, clamped; the record lists the ranges. */
ZRV_API void ZRVSetTrackParams(ZRVDevice* device, ZRVTrackParamsStruct params);

/* The tracked point; Valid tells whether it arrived. It becomes the output offsets of the device's record too,
 * since tracking moves the output by these. */
ZRV_API ZRVTrackStatus ZRVGetTrackStatus(ZRVDevice* device);

/* The two tracking integrals, -32768..32767. Without a connection they stay as they are. Neither may be null. */
ZRV_API void ZRVGetTrackIntegrals(ZRVDevice* device, int* integral1, int* integral2);

/* ---- Generator ----------------------------------------------------------------------------------- */

/* Makes scan data; needs no device. */
ZRV_API ZRVDataGenerator* ZRVCreateDataGenerator(void);
ZRV_API void ZRVDeleteDataGenerator(ZRVDataGenerator* generator);

/* A raster of lines along y, stacked along x, with smooth turnarounds; starts and ends at the same point. Returns
 * the number of samples written to x, y and m, or 0 when it cannot be made within the limits. Room needed, from
 * L = 1.1 * sps * lineDuration: (numLines + 2) * L samples, and if not bidirectional another
 * numLines * sps * min(lineDuration, 0.01). With up to 25000 pixels in all and at least one line, 82500 at most, and if
 * not bidirectional 107500 (1 line of 25000 pixels; 20 lines of 1190: 105196), with pixelHold 110000 and 143400
 * (1 line of 8333 pixels), unless minSps asks for more.
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

/* ---- Composite generators: settings in, finished samples out ---------------------------------------
 *
 *   ZRVScanSettings scan;
 *   ZRVTextSettings text;
 *   ZRVInitScanSettings(&scan);
 *   ZRVInitTextSettings(&text);
 *   scan.ArrayCapacity = 50000;                              // elements of x, y and m
 *   text.Text = "Hello";
 *   ZRVLoadHersheyFile(generator, "hershey.font");
 *   ZRVGenerateTextData(generator, x, y, m, &scan, &text, &numSamples, &numFrames);
 *
 * In this order: keypoints or samples, cleaned and closed, transformed, interpolated, animated, filtered.
 *   x, y, m         scan.ArrayCapacity elements each. Null, all three: nothing is written, and the counts are
 *                   those of a call with arrays
 *   scan and the    null: the initial values. The record is only read
 *   other record
 *   numSamples      receives the samples of all frames together; may be null
 *   numFrames       receives the frames, numSamples / numFrames samples each; those of an imported drawing may
 *                   differ by a few; may be null
 *   sampleRate      receives the rate to play them at; may be null. Those without it play at scan.SampleRate
 * Arrays too small, more than 16777216 samples, settings that give no samples, a file or font that is not there:
 * the counts and the rate are 0 and nothing is written. */

/* Fill a record with its initial values, listed in ZRVDefinitions.h. */
ZRV_API void ZRVInitScanSettings(ZRVScanSettings* settings);
ZRV_API void ZRVInitWaveformSettings(ZRVWaveformSettings* settings);
ZRV_API void ZRVInitSpirographSettings(ZRVSpirographSettings* settings);
ZRV_API void ZRVInitLissajousSettings(ZRVLissajousSettings* settings);
ZRV_API void ZRVInitClockSettings(ZRVClockSettings* settings);
ZRV_API void ZRVInitSignalSettings(ZRVSignalSettings* settings);
ZRV_API void ZRVInitImportSettings(ZRVImportSettings* settings);
ZRV_API void ZRVInitTextSettings(ZRVTextSettings* settings);
ZRV_API void ZRVInitPatternSettings(ZRVPatternSettings* settings);

/* Samples that the arrays must hold for these settings, and for the point file and the point-time file that are loaded;
 * never too small. For rasters and signals, and to the last sample, ask the generator itself with null arrays.
 *   numKeypoints    of text (ZRVHersheyDataSize) or of the largest imported frame (ZRVIldaNumMaxPoints); 0: none,
 *                   or a clock with hands
 *   numFrames       of an imported drawing; never counted as fewer than those of the animation */
ZRV_API unsigned int ZRVCurvesDataSize(ZRVDataGenerator* generator, const ZRVScanSettings* scan,
                                       unsigned int numKeypoints, unsigned int numFrames);

ZRV_API void ZRVGenerateWaveformData(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                     const ZRVScanSettings* scan, const ZRVWaveformSettings* waveform,
                                     unsigned int* numSamples, unsigned int* numFrames);
ZRV_API void ZRVGenerateSpirographData(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                       const ZRVScanSettings* scan, const ZRVSpirographSettings* spirograph,
                                       unsigned int* numSamples, unsigned int* numFrames);
ZRV_API void ZRVGenerateLissajousData(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                      const ZRVScanSettings* scan, const ZRVLissajousSettings* lissajous,
                                      unsigned int* numSamples, unsigned int* numFrames);

/* Digits and text need a font: ZRVLoadHersheyFile. */
ZRV_API void ZRVGenerateClockData(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                  const ZRVScanSettings* scan, const ZRVClockSettings* clock, unsigned int* numSamples,
                                  unsigned int* numFrames);
ZRV_API void ZRVGenerateTextData(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                 const ZRVScanSettings* scan, const ZRVTextSettings* text, unsigned int* numSamples,
                                 unsigned int* numFrames);

/* One period of the two-axis test signal; as many samples, 12500 at most, as its frequency gives. */
ZRV_API void ZRVGenerateSignalData(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                   const ZRVScanSettings* scan, const ZRVSignalSettings* signal,
                                   unsigned int* numSamples, unsigned int* numFrames, unsigned int* sampleRate);

/* A drawing, a point file or a point-time file, in place of what was loaded.
 *   drawing         each frame takes SampleRate / RefreshRate samples, the dark way to the next one included.
 *                   Frames that are not there are skipped. Several frames are an animation by themselves:
 *                   scan.Animation is for a single one
 *   points          as they are, at the file's rate or else scan.SampleRate; or as keypoints, at the latter
 *   point times     held and moved between, at the file's rate or else one that is chosen
 *   rgb             null, or scan.ArrayCapacity colours 0xRRGGBB: the drawing's, or white where it has none; black
 *                   where m is 0 */
ZRV_API void ZRVGenerateImportFileData(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                       unsigned int* rgb, const ZRVScanSettings* scan, const ZRVImportSettings* file,
                                       unsigned int* numSamples, unsigned int* numFrames, unsigned int* sampleRate);

/* Rasters and point to point, at a rate of their own choice between scan.SampleRateMin and SampleRateMax. */
ZRV_API void ZRVGenerateScanData(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                 const ZRVScanSettings* scan, const ZRVPatternSettings* pattern,
                                 unsigned int* numSamples, unsigned int* numFrames, unsigned int* sampleRate);

/* ---- The generator's single steps -----------------------------------------------------------------
 *
 * Keypoints are the corners of a path; straight segments join them, and the segment from keypoint i to i + 1
 * carries the digital byte of keypoint i. Samples are what the controller plays. Both are parallel arrays x, y
 * (-1..1) and m (0 is dark, anything else drawn; curves and waveforms write 255); an optional fourth array index
 * (null: none) travels along with the points. Room is not checked: each call says how much it writes. A required
 * array that is null, a count of 0, or one that would divide by zero: 0, nothing written. Results are the number
 * of points written. Angles are in radians. A generator serves one thread at a time; different ones are
 * independent of each other and of devices. */

/* Waveforms of numSamples samples. With y null the signal goes to x and m is not touched; otherwise x is a time
 * axis from -1 upward and m 255. amplitude: peak value. numCycles: periods, 1..numSamples. phase: start within the
 * period. Sawtooth: risePortion (0..1) of each period rises. Square: -amplitude for the first dutyCycle (0..1).
 * Noise goes to one array. It seeds the C library's rand() with the time in seconds and draws from it: calls within one
 * second give the same noise, a program that uses rand() itself finds it seeded anew, and two threads must not. */
ZRV_API unsigned int ZRVSineWaveform(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                     unsigned int numSamples, float amplitude, unsigned int numCycles, float phase);
ZRV_API unsigned int ZRVSawtoothWaveform(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                         unsigned int numSamples, float amplitude, unsigned int numCycles,
                                         float risePortion, float phase);
ZRV_API unsigned int ZRVSquareWaveform(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                       unsigned int numSamples, float amplitude, unsigned int numCycles,
                                       float dutyCycle, float phase);
ZRV_API unsigned int ZRVNoiseWaveform(ZRVDataGenerator* generator, float* data, unsigned int numSamples,
                                      float amplitude);

/* A test pattern on two axes: y one sine (or triangle) a period at frequency Hz (1..40000), x a sine at xMultiple
 * times its rate. 12500 samples at most, to be played at outputRate. m: bit 0 always, 1 odd samples, 2 first half
 * of a period, 3 first and last fortieth of each half, 5 sample 0. reserved is not used. */
ZRV_API unsigned int ZRVRQWaveform(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                   unsigned int* outputRate, bool triangleY, float amplitudeX, float amplitudeY,
                                   unsigned int frequency, float xMultiple, float risePortion, float reserved);

/* Curves, a point a sample. waveType 1 draws with a triangle wave in place of sine and cosine. */

/* From the centre outward in turnCount turns. */
ZRV_API unsigned int ZRVSpiralCurve(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                    unsigned int numSamples, float amplitudeX, float amplitudeY, unsigned int turnCount,
                                    float phase);

/* A regular polygon; writes up to numSamples + 1. With fewer samples than sides: one point. */
ZRV_API unsigned int ZRVPolygonCurve(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                     unsigned int numSamples, float amplitude, unsigned int numSides, float reserved);

/* One circle rolling on another. curveType: a ZRVCurve; ringA, ringB: fixed and rolling radius (rose: its petal
 * ratio; ringB 0: nothing is written); penDistance: from the rolling circle's centre (the trochoids). */
ZRV_API unsigned int ZRVSpirographCurve(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                        unsigned int numSamples, unsigned int curveType, unsigned int waveType,
                                        float amplitude, int ringA, int ringB, int penDistance);

/* x = sin(freqX a), y = sin(freqY a + phase), a once around. modulation: a ZRVModulation, by modFreq and modDepth,
 * on y shifted by modPhase. */
ZRV_API unsigned int ZRVLissajousCurve(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                       unsigned int numSamples, unsigned int waveType, float amplitude,
                                       unsigned int freqX, unsigned int freqY, float phase, unsigned int modulation,
                                       float modDepth, unsigned int modFreq, float modPhase);

/* The hands of a clock: always 13 keypoints. */
ZRV_API unsigned int ZRVAnalogClockCurve(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                         unsigned int hours, unsigned int minutes, unsigned int seconds,
                                         float amplitude);

/* A point bouncing in the box -1..1. Velocities per sample, accelerations per sample squared; restitution is what
 * is left of a velocity after a bounce. */
ZRV_API unsigned int ZRVDynamicsCurve(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                      unsigned int numSamples, float startX, float startY, float velocityX,
                                      float velocityY, float accelX, float accelY, float restitution);

/* ---- Files: drawings, fonts, points ---------------------------------------------------------------
 *
 * The loaders report no errors. A file that cannot be opened, or is of another kind, leaves nothing loaded. What is
 * loaded stays until the next load, the matching Clear, or the end of the generator. */

/* Drawings in the ILDA Image Data Transfer Format. Frames are numbered from 1. */
ZRV_API void ZRVLoadIldaFile(ZRVDataGenerator* generator, const char* fileName);
ZRV_API void ZRVClearIldaData(ZRVDataGenerator* generator);
ZRV_API unsigned int ZRVIldaFrameType(ZRVDataGenerator* generator); /* format code */
ZRV_API unsigned int ZRVIldaNumFrames(ZRVDataGenerator* generator);
ZRV_API unsigned int ZRVIldaNumMaxPoints(ZRVDataGenerator* generator);                  /* of the largest frame */
ZRV_API unsigned int ZRVIldaNumTotalPoints(ZRVDataGenerator* generator);                /* of all frames */
ZRV_API unsigned int ZRVIldaFrameSize(ZRVDataGenerator* generator, unsigned int frame); /* 0: no such frame */
ZRV_API unsigned int ZRVIldaAnimSize(ZRVDataGenerator* generator, const unsigned int* frames, unsigned int count);

/* Writes the listed frames as keypoints, each cleaned and closed, all together centred and scaled to at most
 * -xScale..xScale and turned clockwise by yScale radians. rgb: null, or a colour 0xRRGGBB a keypoint. angleX,
 * angleY: the view of a 3D drawing; 0 and pi / 2 show a flat one upright. closeCurve: return dark to the first
 * keypoint of each frame. Room: ZRVIldaAnimSize(frames, count) + count. */
ZRV_API unsigned int ZRVIldaDataStream(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                       unsigned int* rgb, const unsigned int* frames, unsigned int count, float xScale,
                                       float yScale, float angleX, float angleY, bool closeCurve);

/* Keypoints that the last ZRVIldaDataStream wrote for its request number 0, 1, ... */
ZRV_API unsigned int ZRVIldaKeypointCount(ZRVDataGenerator* generator, unsigned int request);

/* Vector fonts: a file of Hershey glyphs, such as hershey.font that is installed with the library. */
ZRV_API void ZRVLoadHersheyFile(ZRVDataGenerator* generator, const char* fileName);
ZRV_API void ZRVClearHersheyData(ZRVDataGenerator* generator);
ZRV_API unsigned int ZRVHersheyNumOC(ZRVDataGenerator* generator);   /* occidental glyphs */
ZRV_API unsigned int ZRVHersheyNumOR(ZRVDataGenerator* generator);   /* oriental glyphs */
ZRV_API unsigned int ZRVHersheyNumMath(ZRVDataGenerator* generator); /* mathematical signs */
ZRV_API unsigned int ZRVHersheyNumSym(ZRVDataGenerator* generator);  /* symbols */
ZRV_API unsigned int ZRVHersheyNumFonts(ZRVDataGenerator* generator);
ZRV_API unsigned int ZRVHersheyFontSize(ZRVDataGenerator* generator); /* characters a font, from the space on */

/* Glyph numbers of the occidental set; -1 (all ones) when the entry is not there. entry: character code - 32. */
ZRV_API unsigned int ZRVHersheyIndexMath(ZRVDataGenerator* generator, unsigned int i);
ZRV_API unsigned int ZRVHersheyIndexSym(ZRVDataGenerator* generator, unsigned int i);
ZRV_API int ZRVHersheyIndexFont(ZRVDataGenerator* generator, unsigned int font, unsigned int entry);

/* Keypoints of length characters of text (one byte each, 32..127), or of count glyphs by number. What is not
 * there adds nothing. */
ZRV_API unsigned int ZRVHersheyDataSize(ZRVDataGenerator* generator, const char* text, unsigned int length,
                                        unsigned int font);
ZRV_API unsigned int ZRVHersheyGlyphsDataSize(ZRVDataGenerator* generator, const unsigned int* glyphs,
                                              unsigned int count, bool occidental);

/* Writes text, or glyphs, as keypoints from left to right, dark between them, centred and scaled to at most
 * -xScale..xScale and turned clockwise by yScale radians (0: upright). closeCurve: return along the same way;
 * otherwise straight and dark. Room, n being the size above: 2 n - 1 with closeCurve, else n + 1. */
ZRV_API unsigned int ZRVHersheyDataStream(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                          const char* text, unsigned int length, unsigned int font, float xScale,
                                          float yScale, bool closeCurve);
ZRV_API unsigned int ZRVHersheyGlyphsDataStream(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                                const unsigned int* glyphs, unsigned int count, bool occidental,
                                                float xScale, float yScale, bool closeCurve);

/* "hh : mm : ss" as text; fontArg1, fontArg2 and fontFlag are xScale, yScale and closeCurve above. Room: as for
 * 12 characters. */
ZRV_API unsigned int ZRVDigitalClockCurve(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                          unsigned int hours, unsigned int minutes, unsigned int seconds,
                                          unsigned int fontIndex, float fontArg1, float fontArg2, bool fontFlag);

/* Point files: text, a sample a line: x and y (-1..1) and m (0..255); point-time files add the time t in
 * milliseconds (0..1000). A first line "sps 20000" gives the rate. The loaders return the number of points; both
 * sizes are that of the file loaded last. Alloc makes room ahead of a load. */
ZRV_API unsigned int ZRVLoadPointFile(ZRVDataGenerator* generator, const char* fileName);
ZRV_API unsigned int ZRVLoadPointTimeFile(ZRVDataGenerator* generator, const char* fileName);
ZRV_API void ZRVClearPointFileData(ZRVDataGenerator* generator);
ZRV_API void ZRVClearPointTimeFileData(ZRVDataGenerator* generator);
ZRV_API void ZRVAllocPointFileData(ZRVDataGenerator* generator, unsigned int numPoints);
ZRV_API void ZRVAllocPointTimeFileData(ZRVDataGenerator* generator, unsigned int numPoints);
ZRV_API unsigned int ZRVGetPointFileSize(ZRVDataGenerator* generator);
ZRV_API unsigned int ZRVGetPointTimeFileSize(ZRVDataGenerator* generator);
ZRV_API unsigned int ZRVGetPointFileSps(ZRVDataGenerator* generator); /* samples per second; 0: not given */
ZRV_API unsigned int ZRVGetPointTimeFileSps(ZRVDataGenerator* generator);

/* Copy what is held, at most ZRVGetPointFileSize points, and return their number. */
ZRV_API unsigned int ZRVPointFileDataStream(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m);
ZRV_API unsigned int ZRVPointTimeFileDataStream(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                                float* t);

/* Writes samples as a point file, with a header unless sps is 0. A file that cannot be written is not reported. */
ZRV_API void ZRVExportFile(ZRVDataGenerator* generator, const char* fileName, const float* x, const float* y,
                           const unsigned char* m, unsigned int count, unsigned int sps);

/* The number after "key = " in a text file; hexadecimal when "0x" follows; defaultValue when it is not there. */
ZRV_API float ZRVReadFileParameter(ZRVDataGenerator* generator, const char* fileName, const char* key,
                                   float defaultValue);

/* Greatest common divisor; the sign follows the truncating remainder. And the triangle wave with the period (2 pi) and
 * phase of a sine, for t of 0 and up. */
ZRV_API int ZRVgcd(ZRVDataGenerator* generator, int a, int b);
ZRV_API float ZRVsaw(ZRVDataGenerator* generator, float t);

/* ---- More rasters ---------------------------------------------------------------------------------
 *
 * They choose their own sample rate, minSps..maxSps, and store it in sps, which may be null. 0, and nothing
 * written, when that cannot be done. With x, y and m null all but the point-to-point pattern set sps, write nothing
 * and return the count that they would write. */

/* As ZRVLinearRasterPattern, for imaging: four samples a pixel (one when maxSps forbids), no lead-in, one return
 * at the end. pixelHold is not used. m has no line-start bit; bit 6 marks the active part of backward lines. Room, from
 * L = 1.1 * sps * lineDuration: (numLines + 2) * L, and if not bidirectional another
 * numLines * sps * min(lineDuration / 2.5, 0.01). Nothing bounds it but maxSps: at 100000
 * 20 lines of 1190 pixels can take 135192, so ask with null arrays. */
ZRV_API unsigned int ZRVLinearRasterPatternImaging(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                                   float xAmplitude, float yAmplitude, unsigned int numLines,
                                                   unsigned int numPixels, float lineDuration, bool pixelHold,
                                                   bool bidirectional, int digitalShift, float rotationAngle,
                                                   unsigned int* sps, int minSps, int maxSps);

/* Dwells at each of numPoints points with its digital byte, then moves on, dark. dwellTimes (one a point, the move
 * included) and transitionTime in milliseconds. sps is read too: 0 (or null) has a rate chosen that makes about 50000
 * samples; any other is kept. A dwell no longer than the move shortens this and all further moves to half of
 * it. Room: trunc(sps dwell / 1000) + 2 for each point, where an sps of 0 becomes max(minSps, maxSps) at most. */
ZRV_API unsigned int ZRVPointToPointPattern(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                            const float* pointX, const float* pointY, const unsigned char* pointM,
                                            const float* dwellTimes, int numPoints, float transitionTime,
                                            unsigned int* sps, int minSps, int maxSps);

/* A bitmap burnt by the laser writer below, upright, x along its rows: resized to numPixels by numLines, dark burns
 * bright. 0 in a library built without OpenCV.
 *   xAmplitude,     of an image at least as wide as high, x reaches xAmplitude and y yAmplitude height / width; of a
 *   yAmplitude      taller one, y reaches yAmplitude and x xAmplitude height / width: it gets wider. All held in -1..1:
 *                   the limits of the laser writer, within which the picture shrinks for its run-ups
 *   pixels          height rows of width pixels with channels (1..4, else 0 is returned) of 8 bits each: 1 grey,
 *                   3 blue, green, red; 2 and 4 are black. Rows start rowBytes apart (0: without gaps). Only read
 *   binaryImage     full intensity below the threshold and none above; otherwise 255 - grey
 *   threshold       grey 0..255 below which a pixel counts as dark */
ZRV_API unsigned int ZRVImageRasterPattern(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                           float xAmplitude, float yAmplitude, unsigned int numLines,
                                           unsigned int numPixels, const unsigned char* pixels, unsigned int width,
                                           unsigned int height, unsigned int channels, unsigned int rowBytes,
                                           bool binaryImage, int threshold, float lineDuration, bool bidirectional,
                                           unsigned int* sps, int minSps, int maxSps);

/* Burns numLines by numPixels intensities along x: line 0 near yMin, pixel 0 near xMin, each pixel at constant speed
 * with its intensity in m. Dark run-ups before and after each line lie within the limits too: for them the picture
 * shrinks about their centre, x and y alike. Nothing leaves the limits, nor -1..1. lastDarkColumn: a line's last pixel
 * to burn, -1 none. lineDuration in seconds. bidirectional: every second written line backwards. Takes the most samples
 * a pixel that keep the rate within maxSps. */
ZRV_API unsigned int ZRVLaserWriterDataStream(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                              const unsigned char* raster, const int* lastDarkColumn,
                                              unsigned int numLines, unsigned int numPixels, float lineDuration,
                                              bool bidirectional, unsigned int* sps, int minSps, int maxSps, float xMin,
                                              float xMax, float yMin, float yMax);

/* The laser writer's moves: numSamples positions from (x0, y0) on towards (x1, y1), which is not written itself,
 * under constant acceleration. startSpeed over the mean speed: 0 from rest, 1 steady, 2 to rest. The second makes
 * a path of them: segment i has the byte, count and start speed of keypoint i; writes the sum of the first
 * numKeypoints - 1 counts. */
ZRV_API unsigned int ZRVLaserWriterInterpData1Seg(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                                  float x0, float y0, float x1, float y1, unsigned char digital,
                                                  unsigned int numSamples, float startSpeed);
ZRV_API unsigned int ZRVLaserWriterInterpData(ZRVDataGenerator* generator, const float* xIn, const float* yIn,
                                              const unsigned char* mIn, const unsigned int* samplesIn,
                                              const float* startSpeedIn, float* xOut, float* yOut, unsigned char* mOut,
                                              unsigned int numKeypoints);

/* ---- Keypoints, transforms, interpolation, animation ------------------------------------------------ */

/* Makes a path of 2 keypoints or more return to its start, in place. retrace: along the same way, 2 numKeypoints - 1
 * keypoints; otherwise numClosePoints keypoints straight back, dark. Returns the new count. */
ZRV_API unsigned int ZRVCloseCurve(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                   unsigned int* index, unsigned int numKeypoints, unsigned int numClosePoints,
                                   bool retrace);

/* Cleans a path for scanning, in place: trims dark ends, closes it, drops what is repeated or straight on, and thins
 * gentle bends when more than maxKeypoints are left (0: the given count). Needs room for one more. */
ZRV_API unsigned int ZRVOptimizeKeypoints(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                          unsigned int* index, unsigned int numKeypoints, unsigned int maxKeypoints);

/* Transforms, in place. BoundingBox stores the four bounds, each of which may be null. */
ZRV_API void ZRVBoundingBox(ZRVDataGenerator* generator, const float* x, const float* y, unsigned int count,
                            float* minX, float* maxX, float* minY, float* maxY);

/* Scales and turns (clockwise) about the centre of the given bounds, so that the span from the lowest to the highest of
 * all four becomes 2 scale. A span of 0 puts every point at (0, 0). */
ZRV_API unsigned int ZRVNormalizeData(ZRVDataGenerator* generator, float* x, float* y, unsigned int count, float scale,
                                      float angle, float minX, float maxX, float minY, float maxY);

/* Scales and turns (clockwise) about the centre of the bounding box, shifts, clips to -1..1. A scale within 0.01
 * of 1, an angle within 0.0001 and offsets within 0.01 of 0 leave the points as they are, unclipped. */
ZRV_API unsigned int ZRVAffineTransformData(ZRVDataGenerator* generator, float* x, float* y, unsigned int count,
                                            float scale, float angle, float offsetX, float offsetY);

/* Sets the map of the unit square to the quadrilateral of four corners, the images of (0,0), (1,0), (1,1), (0,1).
 * Points of the field -1..1 are first brought to the unit square, and what the map gives is the result: with null
 * corners, the default, -1..1 comes out at 0.5..1. inverse: the other way round; of the default that is the map back,
 * of other corners it is not, for the inverted matrix has at entry 2 what belongs at entry 5, which keeps its value. */
ZRV_API void ZRVInitProjectiveTransformMatrix(ZRVDataGenerator* generator, const float* cornersX, const float* cornersY,
                                              bool inverse);
ZRV_API unsigned int ZRVProjectiveTransformData(ZRVDataGenerator* generator, float* x, float* y, unsigned int count);

/* Radial correction: enable takes the cubic table, otherwise (strength q + 1) sqrt(q), q = radius^2 / sqrt(2). */
ZRV_API void ZRVInitRadialTransformMult(ZRVDataGenerator* generator, bool enable);
ZRV_API unsigned int ZRVRadialTransformData(ZRVDataGenerator* generator, float* x, float* y, unsigned int count,
                                            float strength);

/* Tangent distortion: a radius r becomes r f(r) / f(1), f(r) = strength r / tan(strength r). The centre and points at
 * radius 1 keep their place. Where strength r is 1e-8 or less, as it is everywhere for a negative strength, it
 * multiplies the point itself; a strength of 0 counts as 1e-8. */
ZRV_API unsigned int ZRVTangentialTransformData(ZRVDataGenerator* generator, float* x, float* y, unsigned int count,
                                                float strength);

/* Affine, projective, radial, tangential, in this order. The last two are left out within 0.001 of 0. */
ZRV_API unsigned int ZRVTransformData(ZRVDataGenerator* generator, float* x, float* y, unsigned int count, float scale,
                                      float angle, float offsetX, float offsetY, bool projective, float tangential,
                                      float radial);

/* Keypoints in, evenly timed samples out. Room: numSamples + numKeypoints; with at least as many keypoints as
 * samples, 2.25 numKeypoints for the optimized profile.
 *   blankSpeed      how many times faster dark segments are crossed, 1..10
 *   drawAccel,      part of a segment's length (0..0.5) spent accelerating, and slowing down
 *   blankAccel
 * ZRVInterpolateData clamps these and takes the trapezoidal profile, or the linear one when both parts are 0. The
 * linear one ends with a sample of x and m of the last keypoint, and as y that keypoint's m. The index arrays
 * are both given or both null. */
ZRV_API unsigned int ZRVInterpolateData(ZRVDataGenerator* generator, const float* xIn, const float* yIn,
                                        const unsigned char* mIn, float* xOut, float* yOut, unsigned char* mOut,
                                        unsigned int numKeypoints, unsigned int numSamples, float blankSpeed,
                                        float drawAccel, float blankAccel);
ZRV_API unsigned int ZRVInterpolateDataLinear(ZRVDataGenerator* generator, const float* xIn, const float* yIn,
                                              const unsigned char* mIn, float* xOut, float* yOut, unsigned char* mOut,
                                              unsigned int numKeypoints, unsigned int numSamples, float blankSpeed);
ZRV_API unsigned int ZRVInterpolateDataTrapezoidal(ZRVDataGenerator* generator, const float* xIn, const float* yIn,
                                                   const unsigned char* mIn, float* xOut, float* yOut,
                                                   unsigned char* mOut, unsigned int numKeypoints,
                                                   unsigned int numSamples, float blankSpeed, float drawAccel,
                                                   float blankAccel);
ZRV_API unsigned int ZRVInterpolateDataOptimized(ZRVDataGenerator* generator, const float* xIn, const float* yIn,
                                                 const unsigned char* mIn, const unsigned int* indexIn, float* xOut,
                                                 float* yOut, unsigned char* mOut, unsigned int* indexOut,
                                                 unsigned int numKeypoints, unsigned int numSamples);

/* Scratch of the interpolators, which they grow themselves; numSamples is not used. */
ZRV_API void ZRVAllocInterpData(ZRVDataGenerator* generator, unsigned int numKeypoints, unsigned int numSamples);
ZRV_API void ZRVClearInterpData(ZRVDataGenerator* generator);

/* Turn the frame of numSamples samples into numFrames frames behind it in the same arrays, which hold numSamples *
 * numFrames; that is the result. The jump to the next frame is dark, and so are samples that leave the field, but
 * for the rotation. animation: a ZRVAnimation. angle: the start's direction, 0 is right. */
ZRV_API unsigned int ZRVGenerateAnimations(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                           unsigned int* index, unsigned int animation, unsigned int numSamples,
                                           unsigned int numFrames);
ZRV_API unsigned int ZRVAnimationRotate(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                        unsigned int* index, unsigned int numSamples, unsigned int numFrames);
ZRV_API unsigned int ZRVAnimationScroll(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                        unsigned int* index, unsigned int numSamples, unsigned int numFrames);
ZRV_API unsigned int ZRVAnimationBounce(ZRVDataGenerator* generator, float* x, float* y, unsigned char* m,
                                        unsigned int* index, unsigned int numSamples, unsigned int numFrames,
                                        float angle);

/* ---- Output filter: a low pass that softens finished samples ---------------------------------------- */

/* Replaces the filter by one that starts from rest.
 *   type              1 Bessel, 2 Butterworth, 3 Chebyshev I (1 dB ripple), 4 Chebyshev II (48 dB stopband),
 *                     5 Elliptic (1 and 48 dB), 6 Legendre, 7 the coefficients of ZRVLoadIIRFilterParams; any other:
 *                     no filter
 *   order             number of poles, 1..20
 *   cutoffFrequency   Hz: -3 dB for types 1, 2 and 6, end of the ripple for 3 and 5, start of the stopband for 4
 *   sampleRate        samples a second
 *   twoChannels       for x and y together, else for one array */
ZRV_API void ZRVSetupSoftwareFilter(ZRVDataGenerator* generator, unsigned int type, unsigned int order,
                                    float cutoffFrequency, float sampleRate, bool twoChannels);

/* Filters count samples of two arrays, or of one; xOut may be x and yOut y. Without a filter, or with one for the
 * other number of channels, the samples are copied. The state goes on from call to call. zeroPhase: as for a
 * pattern that is played in a loop, without delay; the output arrays must then have room for 3 * count values. */
ZRV_API void ZRVFilterData(ZRVDataGenerator* generator, const float* x, const float* y, float* xOut, float* yOut,
                           unsigned int count, bool zeroPhase);
ZRV_API void ZRVFilterDataSingle(ZRVDataGenerator* generator, const float* data, float* out, unsigned int count,
                                 bool zeroPhase);

/* Coefficients for filter type 7; docs/filters.md has the layout. Order and rate are those of the filter last
 * set up, or of the coefficients last loaded, whichever came later. */
ZRV_API void ZRVLoadIIRFilterParams(ZRVDataGenerator* generator, const char* fileName);
ZRV_API unsigned int ZRVGetIIRFilterOrder(ZRVDataGenerator* generator);
ZRV_API unsigned int ZRVGetIIRFilterSps(ZRVDataGenerator* generator);

#ifdef __cplusplus
}
#endif

#endif
