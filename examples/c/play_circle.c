/* Lists the controllers, connects to one, plays a circle for two seconds and stops. C99.
 *
 *   play_circle              lists what is there and uses the first
 *   play_circle PORT         uses this port: COM3, ttyUSB0, /dev/ttyUSB0
 *
 * Build: cc -std=c99 play_circle.c $(pkg-config --cflags --libs zrv) -lm -o play_circle
 */
#include <math.h>
#include <stdio.h>

#include "ZRVFlatInterface.h"

enum {
  NumSamples = 2000
};

/* Reports a failed call; 1 when it failed. */
static int failed(ZRVDevice* device, const char* what) {
  const ZRVError error = ZRVGetLastError(device);
  if (error != ErrorNone) fprintf(stderr, "%s failed with error %u\n", what, (unsigned int)error);
  return error != ErrorNone;
}

static void list_controllers(ZRVDevice* device) {
  const ZRVAvailableDevicesStruct found = ZRVGetAvailableDevices(device);
  unsigned int i;
  printf("%u controller(s) found\n", found.NumDevices);
  for (i = 0; i < found.NumDevices; i++) {
    printf("  %s  %s, firmware %s\n", found.CommPortName[i], found.DeviceName[i], found.FirmwareName[i]);
  }
}

static void connect_to(ZRVDevice* device, const char* port) {
  if (port != NULL) {
    ZRVConnectDevice(device, port);
  } else {
    list_controllers(device);
    ZRVConnectDeviceAuto(device);
  }
}

static void make_circle(float* x, float* y, unsigned char* m) {
  const double step = 2.0 * 3.14159265358979323846 / NumSamples; /* radians per sample */
  int i;
  for (i = 0; i < NumSamples; i++) {
    x[i] = (float)(0.5 * cos(step * i));
    y[i] = (float)(0.5 * sin(step * i));
    m[i] = 255;
  }
}

/* The parameters are read first: had an acknowledgement been lost, the record might say off while the laser is on, and
 * switching it off would send nothing. 1 when the laser may still be on. */
static int switch_off(ZRVDevice* device) {
  int tries;
  for (tries = 0; tries < 3; tries++) {
    ZRVStopDataStream(device);
    const ZRVDeviceParamsStruct params = ZRVGetDeviceParams(device);
    ZRVSetDeviceParam(device, ParamLaserModulationEnable, 0.0f, 0.0f);
    if (params.ParamsValid && ZRVGetLastError(device) == ErrorNone) return 0;
    ZRVSendSerialReset(device);
  }
  fprintf(stderr, "the controller does not answer: switch the laser off by hand\n");
  return 1;
}

static int play(ZRVDevice* device) {
  static float x[NumSamples], y[NumSamples];
  static unsigned char m[NumSamples];
  const float rate = ZRVGetDeviceParam(device, ParamSampleRate);
  const int turns = (int)(2.0f * rate / NumSamples); /* two seconds' worth, 32 at most */
  make_circle(x, y, m);
  ZRVSendDataStream(device, x, y, m, NumSamples, 0, false);
  if (failed(device, "sending the circle")) return 1;
  ZRVStartDataStream(device, turns < 1 ? 1 : turns, true); /* returns when all turns are played */
  if (failed(device, "playing")) return 1;
  ZRVStartDataStream(device, -1, false); /* and now without end */
  printf("playing: %s\n", ZRVIsDeviceRunning(device) ? "yes" : "no");
  ZRVStopDataStream(device);
  if (failed(device, "stopping")) return 1;
  printf("stopped at (%.3f, %.3f), sample %u\n", (double)ZRVGetXStop(device), (double)ZRVGetYStop(device),
         ZRVGetIStop(device));
  return 0;
}

int main(int argc, char** argv) {
  int status = 1;
  ZRVDevice* device = ZRVCreateDevice();
  if (device == NULL) return 1;
  connect_to(device, argc > 1 ? argv[1] : NULL);
  if (!failed(device, "connecting")) {
    const ZRVDeviceParamsStruct params = ZRVGetDeviceParams(device);
    printf("connected to %s, %u samples per second\n", params.DeviceName, params.SampleRate);
    status = play(device);
    if (switch_off(device)) status = 1;
    ZRVDisconnectDevice(device);
  }
  ZRVDeleteDevice(device);
  return status;
}
