#include "ZRVDevice.h"

// The version stands in the top CMakeLists.txt alone.
const char* ZRVDevice::GetAPIVersion() { return ZRV_VERSION_STRING; }
