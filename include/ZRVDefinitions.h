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

/* The controller's configuration. */
typedef struct ZRVDeviceParamsStruct {
  unsigned char ParamsValid;         /* 1 when the last identification arrived whole */
  char DeviceName[32];
  char FirmwareName[16];
  char CommType[16];                 /* kind of link, as the controller reports it */
  char BluetoothMAC[18];             /* "00:11:22:33:44:55" */
  unsigned int HardwareFilterOn;     /* bit 8 of the state word */
  float VmaxMEMSDriver;              /* volts */
  unsigned int DeviceState;          /* state word: bit 0 playing, bits 1..4 sync mode, bit 8 hardware
                                        filter, bit 12 tracking, bits 13..15 output format code */
  unsigned int DeviceErrorRegister;
  unsigned int USARTBaudRate;        /* baud */
  unsigned int SampleRate;           /* samples per second */
  unsigned int HardwareFilterBw;     /* Hz */
  float VdifferenceMax;              /* volts */
  float Vbias;                       /* volts */
  float XOffset;                     /* -1..1 */
  float YOffset;                     /* -1..1 */
  float DataScale;                   /* 0..1 */
  float DataRotation;                /* radians; its sign is lost on reading back */
  unsigned int MEMSDriverEnable;     /* 0 or 1 */
  unsigned int DigitalOutputEnable;  /* 0 or 1 */
  unsigned int LaserModulationEnable; /* 0 or 1 */
  unsigned int BufferOffset;         /* samples */
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
enum { ZRVMaxDevices = 12 };
typedef struct ZRVAvailableDevicesStruct {
  char DeviceName[ZRVMaxDevices][32];
  char FirmwareName[ZRVMaxDevices][16];
  char CommType[ZRVMaxDevices][16];
  unsigned int USARTBaudRate[ZRVMaxDevices];
  unsigned int CommPortNumber[ZRVMaxDevices];
  char CommPortName[ZRVMaxDevices][10];       /* what ConnectDevice takes: "COM3", "ttyUSB0" */
  float VmaxMEMSDriver[ZRVMaxDevices];        /* volts */
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
  bool Valid;               /* the answer arrived */
  bool StatusFlag;          /* bit 0 of answer byte 5 */
  float X;                  /* tracked position, -1..1 */
  float Y;
  unsigned int StatusValue; /* answer byte 4 */
} ZRVTrackStatus;

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
