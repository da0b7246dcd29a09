// What keeps exceptions inside the library where its functions are called from C.
#ifndef ZRV_COMMON_SHIELDED_H
#define ZRV_COMMON_SHIELDED_H

namespace zrv {

// What call returns; zeros when memory ran out or a caller's transport threw.
template <typename Call>
auto Shielded(Call call) noexcept -> decltype(call()) {
  try {
    return call();
  } catch (...) {
    return decltype(call())();
  }
}

}  // namespace zrv

#endif
