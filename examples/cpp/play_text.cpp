// Plays a word on a controller for five seconds, then switches everything off. C++17.
//
//   play_text              uses the first controller found
//   play_text PORT WORD    COM3, ttyUSB0, /dev/ttyUSB0
#include <ZRVDataGenerator.h>
#include <ZRVDevice.h>

#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Scan {
  std::vector<float> x, y;
  std::vector<unsigned char> m;
  unsigned int samples = 0;
};

constexpr unsigned int kSampleRate = 20000;

void Check(const ZRVDevice& device, const char* tried) {
  const ZRVError error = device.GetLastError();
  if (error != ErrorNone) throw std::runtime_error(std::string(tried) + " failed with error " + std::to_string(error));
}

Scan Draw(const char* word) {
  ZRVDataGenerator generator;
  generator.LoadHersheyFile(ZRV_FONT_FILE);
  ZRVTextSettings text;
  text.Text = word;
  ZRVScanSettings settings;
  settings.SampleRate = kSampleRate;
  Scan scan;
  unsigned int frames = 0;
  generator.GenerateTextData(nullptr, nullptr, nullptr, settings, text, scan.samples, frames);  // how many samples?
  if (scan.samples == 0) throw std::runtime_error("the font has none of these characters, or is not there");
  settings.ArrayCapacity = scan.samples;
  scan.x.resize(scan.samples);
  scan.y.resize(scan.samples);
  scan.m.resize(scan.samples);
  generator.GenerateTextData(scan.x.data(), scan.y.data(), scan.m.data(), settings, text, scan.samples, frames);
  return scan;
}

// The parameters are read first: had an acknowledgement been lost, the record might say off while the laser is on, and
// switching it off would send nothing.
void SwitchOff(ZRVDevice& device) {
  for (int tries = 0; tries < 3; ++tries) {
    ZRVDeviceParams params;
    device.StopDataStream();
    device.GetDeviceParams(&params);
    device.SetDeviceParam(ParamLaserModulationEnable, 0);
    if (params.ParamsValid != 0 && device.GetLastError() == ErrorNone) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    device.SendSerialReset();
  }
  std::fprintf(stderr, "the controller does not answer: switch the laser off by hand\n");
}

void Play(ZRVDevice& device, Scan& scan) {
  device.SetDeviceParam(ParamSampleRate, kSampleRate);
  device.SetDeviceParam(ParamMEMSDriverEnable, 1);
  device.SetDeviceParam(ParamLaserModulationEnable, 1);
  Check(device, "switching on");
  device.SendDataStream(scan.x.data(), scan.y.data(), scan.m.data(), scan.samples, 0, true);
  Check(device, "sending the samples");
  device.StartDataStream(-1, false);  // without end
  Check(device, "playing");
  std::this_thread::sleep_for(std::chrono::seconds(5));
}

}  // namespace

int main(int argc, char** argv) try {
  Scan scan = Draw(argc > 2 ? argv[2] : "Hello");
  ZRVDevice device;
  if (argc > 1) {
    device.ConnectDevice(argv[1]);
  } else {
    device.ConnectDevice();
  }
  Check(device, "connecting");
  try {
    Play(device, scan);
  } catch (...) {
    SwitchOff(device);
    throw;
  }
  SwitchOff(device);
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
