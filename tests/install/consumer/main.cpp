// A program of somebody else's: uses both classes and its own transport, through the installed headers alone.
#include <ZRVDataGenerator.h>
#include <ZRVDevice.h>

#include <cstdio>
#include <cstring>
#include <memory>

class NoPort : public ZRVSerialIO {
 public:
  int Write(const void*, unsigned int, unsigned int*, unsigned int) override { return kFailed; }
};

// Enumeration names are read at run time, from the installed header.
bool FindsEnumNames(ZRVDevice& device, const char* definitions) {
  ZRVDevice::SetDefinitionsFile(definitions);
  const std::unique_ptr<char[]> name(device.GetEnumString("ZRVDataMode", DataModeOrBEX1));
  return name && std::strcmp(name.get(), "DataModeOrBEX1") == 0;
}

int main(int argc, char** argv) {
  if (argc != 2) return 3;
  ZRVDevice device;
  if (!FindsEnumNames(device, argv[1])) return 4;
  device.ConnectDevice(new NoPort);
  if (device.GetLastError() != ErrorSerialReset || device.IsDeviceConnected()) return 1;
  ZRVDataGenerator generator;
  float x[8], y[8];
  unsigned char m[8];
  if (generator.SineWaveform(x, y, m, 8, 1.0f, 1, 0.0f) != 8) return 2;
  std::printf("ZRV %s\n", ZRVDevice::GetAPIVersion());
  return 0;
}
