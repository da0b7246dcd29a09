// A definitions header and a parameter file, in one input: the first two bytes give the length of the header.
#include <cstring>
#include <memory>
#include <string>

#include "ZRVDevice.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "fuzz/input_file.h"

namespace {

// What was saved is read back: whole numbers as they were, numbers that stand for "not given" as that.
void RoundTrip(ZRVDevice& device, ZRVDeviceParams& params) {
  const zrv_fuzz::InputFile file({}, ".saved");
  device.SaveDeviceParams(file.Path(), &params);
  ZRVDeviceParams loaded;
  device.LoadDeviceParams(&loaded, file.Path());
  for (const auto field : {&ZRVDeviceParams::SampleRate, &ZRVDeviceParams::HardwareFilterBw,
                           &ZRVDeviceParams::BufferOffset, &ZRVDeviceParams::MEMSDriverEnable}) {
    const unsigned before = params.*field, after = loaded.*field;
    zrv_fuzz::Require(before >= 100000000 ? after >= 100000000 : after == before);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zrv_fuzz;
  Input in(data, size);
  const size_t headerBytes = in.U16();
  const InputFile header(in.Bytes(headerBytes), ".h"), file(in.Bytes(size), ".txt");
  ZRVDevice::SetDefinitionsFile(header.Path());
  ZRVDevice device;
  for (const char* name : {"ZRVAxes", "ZRVBoot", "ZRVDataMode", "ZRVSync", ""}) {
    for (int value = -1; value < 4; ++value) {
      const std::unique_ptr<char[]> member(device.GetEnumString(name, value));
      Require(std::strlen(member.get()) <= headerBytes);
    }
  }
  ZRVDeviceParams params;
  device.LoadDeviceParams(&params, file.Path());
  device.SetDeviceParams(&params);
  RoundTrip(device, params);
  return 0;
}
