/* ZRV: enumerations and plain records of the public interface. Valid C99 and C++17.
 *
 * The library also reads this file at run time: a saved parameter file holds the members of
 * `enum` types by name, and the names are looked up here. That is why every member stands on a line of
 * its own with an explicit value, why no member's name is the end of another's, and why the
 * enumerations come before the records. Values travel on the wire and into files: never renumber.
 */
#ifndef ZRV_DEFINITIONS_H
#define ZRV_DEFINITIONS_H

#include <stdbool.h>

#if defined(ZRV_STATIC)
#define ZRV_API
#elif defined(_WIN32)
#if defined(ZRV_BUILDING)
#define ZRV_API __declspec(dllexport)
#else
#define ZRV_API __declspec(dllimport)
#endif
#else
#define ZRV_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define ZRV_ENUM_BASE : unsigned int /* a record can hold any word that the wire or a file brought */
#else
#define ZRV_ENUM_BASE
#endif

/* How a call ended; every device object keeps the last one. */
typedef enum ZRVError ZRV_ENUM_BASE {
  ErrorNone = 0,             /* success */
  ErrorNotConnected = 1,     /* no serial port attached, or a null record was given */
  ErrorSerialComm = 4,       /* a write, an acknowledgement or the port itself failed */
  ErrorDeviceResponse = 5,   /* the answer did not arrive in full within the read time-out */
  ErrorSerialReset = 6,      /* the link could not be resynchronised */
  ErrorBadAcknowledge = 7,   /* the controller answered something else than its acknowledgement */
  ErrorInvalidValue = 8,     /* a value outside the accepted set or range; nothing was sent */
  ErrorReadOnlyParam = 9,    /* a record with a changed read-only field */
  ErrorInvalidParam = 10,    /* a parameter that cannot be read or written */
  ErrorInvalidPortName = 11, /* a port name of the wrong form */
  ErrorNoDeviceFound = 12    /* no controller, or no such port */
} ZRVError;

/* Single parameters, for ZRVDevice::GetDeviceParam and SetDeviceParam. */
typedef enum ZRVParam ZRV_ENUM_BASE {
  ParamDeviceState = 2,            /* state word; read only */
  ParamUSARTBaudRate = 4,          /* baud, 115200..3686400 */
  ParamSampleRate = 5,             /* samples per second */
  ParamHardwareFilterBw = 6,       /* Hz */
  ParamVdifferenceMax = 7,         /* volts */
  ParamVbias = 8,                  /* volts */
  ParamOutputOffsets = 9,          /* X and Y, -1..1 */
  ParamDataScale = 10,             /* 0..1 */
  ParamDataRotation = 11,          /* radians */
  ParamMEMSDriverEnable = 12,      /* 0 or 1 */
  ParamDigitalOutputEnable = 13,   /* 0 or 1 */
  ParamLaserModulationEnable = 14, /* 0 or 1 */
  ParamBufferOffset = 15,          /* samples */
  ParamDeviceAxes = 16,            /* orientation of the axes */
  ParamBootSetting = 17,           /* what the controller starts with */
  ParamDataMode = 18,              /* what the controller plays or streams */
  ParamSyncMode = 19,              /* synchronisation output */
  ParamSyncState = 20              /* output format code, 0..7; read only */
} ZRVParam;

/* Orientation of the output axes. */
typedef enum ZRVAxes ZRV_ENUM_BASE {
  AxesNormal = 0,
  AxesFlipX = 1,
  AxesFlipY = 2,
  AxesFlipBoth = 3,
  AxesSwap = 4,
  AxesSwapFlipX = 5,
  AxesSwapFlipY = 6,
  AxesSwapFlipBoth = 7
} ZRVAxes;

/* What the controller does after power-up. */
typedef enum ZRVBoot ZRV_ENUM_BASE {
  BootDefaults = 0,
  BootSavedSettings = 1,
  BootSavedSettingsAndRun = 2
} ZRVBoot;

/* Modes 6..8 stream the analog inputs, mode 9 the sensor module. */
typedef enum ZRVDataMode ZRV_ENUM_BASE {
  DataModeBuffer = 0,
  DataMode1 = 1,
  DataMode2 = 2,
  DataMode3 = 3,
  DataMode4 = 4,
  DataMode5 = 5,
  DataModeAnalogVolts = 6,
  DataModeAnalogVoltsRaw = 7,
  DataModeAnalogNormalized = 8,
  DataModeOrBEX1 = 9
} ZRVDataMode;

/* Synchronisation modes, bits 1..4 of the state word. */
typedef enum ZRVSync ZRV_ENUM_BASE {
  SyncOff = 0,
  SyncMode1 = 1,
  SyncMode2 = 2,
  SyncMode3 = 3,
  SyncMode4 = 4,
  SyncMode5 = 5,
  SyncMode6 = 6,
  SyncMode7 = 7,
  SyncMode8 = 8,
  SyncMode9 = 9,
  SyncMode10 = 10,
  SyncMode11 = 11,
  SyncMode12 = 12,
  SyncMode13 = 13,
  SyncMode14 = 14,
  SyncMode15 = 15
} ZRVSync;

/* What goes to flash. */
typedef enum ZRVFlash ZRV_ENUM_BASE {
  FlashSettings = 0,
  FlashSettingsAndData = 1
} ZRVFlash;

/* Kinds of the composite generators and what they share. */
typedef enum ZRVWaveform ZRV_ENUM_BASE {
  WaveformSine = 0,
  WaveformSawtooth = 1, /* rising for Portion of a period: a triangle at 0.5 */
  WaveformSquare = 2,   /* low for Portion of a period */
  WaveformNoise = 3
} ZRVWaveform;

/* Where the signal of a waveform goes. */
typedef enum ZRVWaveformAxes ZRV_ENUM_BASE {
  SignalOverTime = 0, /* X runs from left to right, Y is the signal */
  SignalOnX = 1,      /* Y rests at 0 */
  SignalOnY = 2       /* X rests at 0 */
} ZRVWaveformAxes;

typedef enum ZRVCurve ZRV_ENUM_BASE {
  CurveRose = 0,
  CurveEpicycloid = 1,
  CurveEpitrochoid = 2,
  CurveHypocycloid = 3,
  CurveHypotrochoid = 4
} ZRVCurve;

/* What the modulation of a Lissajous figure changes. */
typedef enum ZRVModulation ZRV_ENUM_BASE {
  ModulateNothing = 0,
  ModulateAmplitude = 1,
  ModulatePhase = 2
} ZRVModulation;

typedef enum ZRVImportFormat ZRV_ENUM_BASE {
  ImportByContent = 0, /* a drawing, else a point-time file, else a point file */
  ImportIlda = 1,      /* ILDA Image Data Transfer Format */
  ImportPoints = 2,    /* lines of x y m, a sample each */
  ImportPointTimes = 3 /* lines of x y m t: dwell at each point for t milliseconds */
} ZRVImportFormat;

typedef enum ZRVScanPattern ZRV_ENUM_BASE {
  ScanRaster = 0,        /* as LinearRasterPattern */
  ScanImagingRaster = 1, /* as LinearRasterPatternImaging */
  ScanPointToPoint = 2   /* as PointToPointPattern */
} ZRVScanPattern;

/* Speed along the lines between keypoints. */
typedef enum ZRVProfile ZRV_ENUM_BASE {
  ProfileLinear = 0,      /* constant */
  ProfileTrapezoidal = 1, /* speeds up and slows down on every line */
  ProfileOptimized = 2    /* as the corners demand */
} ZRVProfile;

/* How a path returns to its start. */
typedef enum ZRVClosing ZRV_ENUM_BASE {
  ClosingLeftOut = 0, /* it does not: the mirror jumps */
  ClosingBlank = 1,   /* straight and dark */
  ClosingRetrace = 2  /* the same way back */
} ZRVClosing;

typedef enum ZRVAnimation ZRV_ENUM_BASE {
  AnimateNothing = 0,
  AnimateRotate = 1, /* once around, clockwise */
  AnimateScroll = 2, /* from left to right through the field */
  AnimateBounce = 3  /* starting upward */
} ZRVAnimation;

/* The controller's configuration. */
typedef struct ZRVDeviceParamsStruct {
  unsigned char ParamsValid; /* 1 when the last identification arrived whole */
  char DeviceName[32];
  char FirmwareName[16];
  char CommType[16];             /* kind of link, as the controller reports it */
  char BluetoothMAC[18];         /* "00:11:22:33:44:55" */
  unsigned int HardwareFilterOn; /* bit 8 of the state word */
  float VmaxMEMSDriver;          /* volts */
  unsigned int DeviceState;      /* state word: bit 0 playing, bits 1..4 sync mode, bit 8 hardware
                                    filter, bit 12 tracking, bits 13..15 output format code */
  unsigned int DeviceErrorRegister;
  unsigned int USARTBaudRate;         /* baud */
  unsigned int SampleRate;            /* samples per second */
  unsigned int HardwareFilterBw;      /* Hz */
  float VdifferenceMax;               /* volts */
  float Vbias;                        /* volts */
  float XOffset;                      /* -1..1 */
  float YOffset;                      /* -1..1 */
  float DataScale;                    /* 0..1 */
  float DataRotation;                 /* radians; its sign is lost on reading back */
  unsigned int MEMSDriverEnable;      /* 0 or 1 */
  unsigned int DigitalOutputEnable;   /* 0 or 1 */
  unsigned int LaserModulationEnable; /* 0 or 1 */
  unsigned int BufferOffset;          /* samples */
  ZRVAxes DeviceAxes;
  ZRVBoot BootSetting;
  ZRVDataMode DataMode;
  ZRVSync SyncMode;
  unsigned int SyncState;            /* output format code, bits 13..15 of the state word */
  unsigned int SampleRateMin;        /* samples per second */
  unsigned int SampleRateMax;        /* samples per second */
  unsigned int LimitWord3;           /* transported only */
  unsigned int SampleBufferCapacity; /* samples that the controller holds */
  unsigned int HardwareFilterBwMin;  /* Hz */
  unsigned int HardwareFilterBwMax;  /* Hz */
  unsigned int LimitByte7;           /* transported only */
  unsigned int LimitByte8;           /* transported only */
  unsigned int LimitByte9;           /* transported only */
  unsigned int LimitByte10;          /* transported only */
  unsigned int VbiasMin;             /* volts */
  unsigned int VbiasMax;             /* volts */
} ZRVDeviceParamsStruct;

/* What discovery found; entries 0..NumDevices-1 of each array are filled. */
enum {
  ZRVMaxDevices = 12
};
typedef struct ZRVAvailableDevicesStruct {
  char DeviceName[ZRVMaxDevices][32];
  char FirmwareName[ZRVMaxDevices][16];
  char CommType[ZRVMaxDevices][16];
  unsigned int USARTBaudRate[ZRVMaxDevices];
  unsigned int CommPortNumber[ZRVMaxDevices];
  char CommPortName[ZRVMaxDevices][10]; /* what ConnectDevice takes: "COM3", "ttyUSB0" */
  float VmaxMEMSDriver[ZRVMaxDevices];  /* volts */
  unsigned int NumDevices;
} ZRVAvailableDevicesStruct;

/* Tracking parameters. */
typedef struct ZRVTrackParamsStruct {
  bool TrackingSupported;   /* the controller answered with tracking data */
  float Threshold;          /* detector threshold, 0..1 */
  int NormalGain;           /* across the track, 0..255 */
  int TangentialGain;       /* along the track, -25..25 */
  unsigned int BufferDelay; /* samples, 0..191 */
  float HitRatio;           /* 0..1 */
  unsigned int StateBit0;   /* 0 or 1 */
  unsigned int StateBit1;   /* 0 or 1 */
  unsigned int StateBit2;   /* 0 or 1 */
} ZRVTrackParamsStruct;

/* Tracking status. */
typedef struct ZRVTrackStatus {
  bool Valid;      /* the answer arrived */
  bool StatusFlag; /* bit 0 of answer byte 5 */
  float X;         /* tracked position, -1..1 */
  float Y;
  unsigned int StatusValue; /* answer byte 4 */
} ZRVTrackStatus;

/* ---- Settings of the composite generators (ZRVDataGenerator::Generate...Data) ----
 *
 * In C++ a new record has the values given here; in C the ZRVInit... functions of ZRVFlatInterface.h put them
 * in. Angles are in radians. An enumeration value that is not listed: the generator writes nothing.
 */
#ifdef __cplusplus
#define ZRV_DEFAULT(value) = value
#else
#define ZRV_DEFAULT(value)
#endif

/* What all of them share. */
typedef struct ZRVScanSettings {
  unsigned int ArrayCapacity ZRV_DEFAULT(0);  /* elements of each array that is to be filled */
  unsigned int SampleRate ZRV_DEFAULT(20000); /* samples per second */
  float RefreshRate ZRV_DEFAULT(20.0f);       /* frames per second: a frame has SampleRate / RefreshRate
                                                 samples, rounded down. Lines between keypoints get whole
                                                 samples: a linear profile may make one a line fewer or more,
                                                 the others one a line more; with no fewer keypoints than samples a
                                                 frame has a sample a keypoint (optimized: 1.25). A retraced
                                                 waveform has one fewer where the number is even. No part in
                                                 scans and signals, which make their own time */
  ZRVAnimation Animation ZRV_DEFAULT(AnimateNothing);
  float AnimationDuration ZRV_DEFAULT(1.0f); /* seconds: RefreshRate * AnimationDuration frames, rounded, at
                                                least 1 */
  float Scale ZRV_DEFAULT(1.0f);             /* about the centre of the figure */
  float Angle ZRV_DEFAULT(0.0f);             /* clockwise, about the centre of the figure */
  float OffsetX ZRV_DEFAULT(0.0f);
  float OffsetY ZRV_DEFAULT(0.0f);
  bool Projective ZRV_DEFAULT(false); /* by the matrix of InitProjectiveTransformMatrix */
  float Tangential ZRV_DEFAULT(0.0f); /* strength of the tangential distortion */
  float Radial ZRV_DEFAULT(0.0f);     /* strength of the radial distortion */
  ZRVProfile Profile ZRV_DEFAULT(ProfileOptimized);
  float BlankSpeed ZRV_DEFAULT(2.0f);           /* linear, trapezoidal: dark lines are so many times faster, 1..10 */
  float DrawAccel ZRV_DEFAULT(0.1f);            /* trapezoidal: part of a drawn line spent speeding up, 0..0.5 */
  float BlankAccel ZRV_DEFAULT(0.25f);          /* trapezoidal: the same of a dark line */
  unsigned int KeypointBudget ZRV_DEFAULT(0);   /* keypoints a frame above which gentle bends are thinned; 0: as
                                                   many as there are */
  ZRVClosing Closing ZRV_DEFAULT(ClosingBlank); /* of open paths: keypoints, waveforms over time. A path that ends
                                                   lit where it began is left as it is */
  bool Filter ZRV_DEFAULT(false);               /* by SetupSoftwareFilter, for two channels; x of a waveform over
                                                   time is left as it is */
  bool FilterZeroPhase ZRV_DEFAULT(false);
  unsigned int SampleRateMin ZRV_DEFAULT(200);    /* limits for those that choose their own rate: */
  unsigned int SampleRateMax ZRV_DEFAULT(100000); /* the controller's, from its parameter record */
} ZRVScanSettings;

typedef struct ZRVWaveformSettings {
  ZRVWaveform Waveform ZRV_DEFAULT(WaveformSine);
  ZRVWaveformAxes Axes ZRV_DEFAULT(SignalOverTime);
  float Amplitude ZRV_DEFAULT(0.9f);  /* peak value */
  unsigned int Cycles ZRV_DEFAULT(3); /* periods a frame */
  float Phase ZRV_DEFAULT(0.0f);
  float Portion ZRV_DEFAULT(0.5f); /* of a period, 0..1: rising (sawtooth), low (square) */
} ZRVWaveformSettings;

typedef struct ZRVSpirographSettings {
  ZRVCurve Curve ZRV_DEFAULT(CurveHypotrochoid);
  bool TriangleWave ZRV_DEFAULT(false); /* in place of sine and cosine */
  float Amplitude ZRV_DEFAULT(0.9f);    /* radius of the farthest point */
  int RingA ZRV_DEFAULT(10);            /* fixed ring, at least 1 (rose: petals = RingA / RingB) */
  int RingB ZRV_DEFAULT(3);             /* rolling ring, at least 1 */
  int PenDistance ZRV_DEFAULT(5);       /* of the pen from the rolling ring's centre, for the trochoids */
} ZRVSpirographSettings;

typedef struct ZRVLissajousSettings {
  bool TriangleWave ZRV_DEFAULT(false); /* in place of the sine */
  float Amplitude ZRV_DEFAULT(0.9f);
  unsigned int FreqX ZRV_DEFAULT(3); /* periods a frame */
  unsigned int FreqY ZRV_DEFAULT(4);
  float Phase ZRV_DEFAULT(0.0f); /* of Y */
  ZRVModulation Modulation ZRV_DEFAULT(ModulateNothing);
  float ModDepth ZRV_DEFAULT(0.5f);    /* radians for the phase */
  unsigned int ModFreq ZRV_DEFAULT(1); /* periods a frame */
  float ModPhase ZRV_DEFAULT(0.0f);    /* on Y */
} ZRVLissajousSettings;

typedef struct ZRVClockSettings {
  bool Digital ZRV_DEFAULT(false); /* digits in a font that LoadHersheyFile loaded, else hands */
  unsigned int Hours ZRV_DEFAULT(10);
  unsigned int Minutes ZRV_DEFAULT(8);
  unsigned int Seconds ZRV_DEFAULT(30);
  float Amplitude ZRV_DEFAULT(0.9f); /* length of the longest hand; at most half the width of the
                                        digits */
  unsigned int Font ZRV_DEFAULT(0);
} ZRVClockSettings;

/* A test signal on two axes: Y one sine or triangle a period, X a sine at XMultiple times its rate. */
typedef struct ZRVSignalSettings {
  bool TriangleY ZRV_DEFAULT(false);
  float AmplitudeX ZRV_DEFAULT(0.9f);
  float AmplitudeY ZRV_DEFAULT(0.9f);
  unsigned int Frequency ZRV_DEFAULT(100); /* of Y, 1..40000 Hz */
  float XMultiple ZRV_DEFAULT(10.0f);
  float RisePortion ZRV_DEFAULT(0.5f); /* rising part of the triangle, 0..1 */
} ZRVSignalSettings;

typedef struct ZRVImportSettings {
  const char* FileName ZRV_DEFAULT(nullptr); /* null: what was loaded before; Format must then be given */
  ZRVImportFormat Format ZRV_DEFAULT(ImportByContent);
  const unsigned int* Frames ZRV_DEFAULT(nullptr); /* frames of a drawing, numbered from 1; null: all */
  unsigned int NumFrames ZRV_DEFAULT(0);           /* in Frames */
  float Amplitude ZRV_DEFAULT(0.9f);               /* at most half the longer side of a drawing */
  float AngleX ZRV_DEFAULT(0.0f);                  /* view of a drawing, as IldaDataStream takes it */
  float AngleY ZRV_DEFAULT(1.5707964f);
  bool Keypoints ZRV_DEFAULT(false);      /* a point file gives corners, not samples */
  float TransitionTime ZRV_DEFAULT(0.5f); /* of a move between the points of a point-time file, ms */
} ZRVImportSettings;

typedef struct ZRVTextSettings {
  const char* Text ZRV_DEFAULT(nullptr);
  unsigned int Length ZRV_DEFAULT(0); /* characters; 0: up to the closing zero */
  unsigned int Font ZRV_DEFAULT(0);   /* of those that LoadHersheyFile loaded */
  float Amplitude ZRV_DEFAULT(0.9f);  /* at most half the longer side */
} ZRVTextSettings;

typedef struct ZRVPatternSettings {
  ZRVScanPattern Pattern ZRV_DEFAULT(ScanRaster);
  float XAmplitude ZRV_DEFAULT(0.9f); /* of the stack of lines */
  float YAmplitude ZRV_DEFAULT(0.9f); /* of the sweep, turnarounds included */
  unsigned int NumLines ZRV_DEFAULT(20);
  unsigned int NumPixels ZRV_DEFAULT(50); /* a line */
  float LineDuration ZRV_DEFAULT(0.01f);  /* seconds, of the active part */
  bool PixelHold ZRV_DEFAULT(false);      /* dwell at each pixel */
  bool Bidirectional ZRV_DEFAULT(true);
  int DigitalShift ZRV_DEFAULT(0);          /* samples */
  float RotationAngle ZRV_DEFAULT(0.0f);    /* clockwise */
  const float* PointX ZRV_DEFAULT(nullptr); /* point to point: NumPoints places */
  const float* PointY ZRV_DEFAULT(nullptr);
  const unsigned char* PointM ZRV_DEFAULT(nullptr); /* digital byte of each; null: 255 */
  const float* DwellTimes ZRV_DEFAULT(nullptr);     /* ms a point with the move to the next; null: DwellTime */
  float DwellTime ZRV_DEFAULT(5.0f);                /* ms */
  unsigned int NumPoints ZRV_DEFAULT(0);
  float TransitionTime ZRV_DEFAULT(0.5f); /* ms, of the move */
} ZRVPatternSettings;

#undef ZRV_DEFAULT

#ifdef __cplusplus
/* The records as classes: the same fields, all zero after construction, copied to and from the plain form. */
struct ZRVDeviceParams : ZRVDeviceParamsStruct {
  ZRVDeviceParams() : ZRVDeviceParamsStruct() {}
  ZRVDeviceParams(const ZRVDeviceParamsStruct& plain) : ZRVDeviceParamsStruct(plain) {}
};

struct ZRVAvailableDevices : ZRVAvailableDevicesStruct {
  ZRVAvailableDevices() : ZRVAvailableDevicesStruct() {}
  ZRVAvailableDevices(const ZRVAvailableDevicesStruct& plain) : ZRVAvailableDevicesStruct(plain) {}
};

struct ZRVTrackParams : ZRVTrackParamsStruct {
  ZRVTrackParams() : ZRVTrackParamsStruct() {}
  ZRVTrackParams(const ZRVTrackParamsStruct& plain) : ZRVTrackParamsStruct(plain) {}
};
#endif

#endif
