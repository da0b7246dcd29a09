// Numbers that stand for "not given" in parameter records, files and answers of calls.
#ifndef ZRV_DEVICE_MARKERS_H
#define ZRV_DEVICE_MARKERS_H

namespace zrv {

// What a value that is not available reads as.
constexpr float kUnavailable = 1e9f;
constexpr unsigned int kUnavailableWhole = 1000000000;

}  // namespace zrv

#endif
