// A program of somebody else's: uses both classes and its own transport, through the installed headers alone.
#include <ZRVDataGenerator.h>
#include <ZRVDevice.h>

#include <cstdio>

class NoPort : public ZRVSerialIO {
 public:
  int Write(const void*, unsigned int, unsigned int*, unsigned int) override { return kFailed; }
};

int main() {
  ZRVDevice device;
  device.ConnectDevice(new NoPort);
  if (device.GetLastError() != ErrorSerialReset || device.IsDeviceConnected()) return 1;
  ZRVDataGenerator generator;
  float x[8], y[8];
  unsigned char m[8];
  if (generator.SineWaveform(x, y, m, 8, 1.0f, 1, 0.0f) != 8) return 2;
  std::printf("ZRV %s\n", ZRVDevice::GetAPIVersion());
  return 0;
}
