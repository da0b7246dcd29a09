// The fakes. Their names are those of kernel32 here too: the header's macros put them in their namespace.
#include "tests/device/fake_kernel32.h"

#include <algorithm>
#include <cstring>

namespace zrv::testing {

FakeKernel& Kernel() {
  static FakeKernel kernel;
  return kernel;
}

int FakeKernel::Count(const std::string& call) const {
  return static_cast<int>(std::count(calls.begin(), calls.end(), call));
}

namespace {

// Records the call; true when it is the one that fails.
bool Fails(const char* call) {
  FakeKernel& k = Kernel();
  k.calls.emplace_back(call);
  if (k.failing != call) return false;
  k.lastError = k.error;
  return true;
}

HANDLE NewHandle() {
  static std::uintptr_t last = 0;
  const auto handle = reinterpret_cast<HANDLE>(last += 16);
  Kernel().handles.insert(handle);
  return handle;
}

BOOL Begin(const char* call, DWORD count, DWORD* moved) {
  if (Fails(call)) return FALSE;
  FakeKernel& k = Kernel();
  k.signalled = false;
  if (k.io == FakeKernel::Io::kDoneAtOnce) {
    *moved = count;
    return TRUE;
  }
  k.driverOwnsRequest = true;
  k.lastError = ERROR_IO_PENDING;
  return FALSE;
}

}  // namespace
}  // namespace zrv::testing

using zrv::testing::Fails;
using zrv::testing::FakeKernel;
using zrv::testing::Kernel;
using zrv::testing::NewHandle;

HANDLE WINAPI CreateFileA(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD, DWORD flags, HANDLE) {
  FakeKernel& k = Kernel();
  if (Fails("CreateFileA")) return INVALID_HANDLE_VALUE;
  k.path = path;
  k.access = access;
  k.share = share;
  k.flags = flags;
  return NewHandle();
}

BOOL WINAPI CloseHandle(HANDLE handle) {
  Kernel().calls.emplace_back("CloseHandle");
  const bool known = Kernel().handles.erase(handle) != 0;
  if (!known) ++Kernel().closesOfStrangers;
  return known;
}

HANDLE WINAPI CreateEventA(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL initiallySet, LPCSTR) {
  if (Fails("CreateEventA")) return nullptr;
  Kernel().manualReset = manualReset != FALSE;
  Kernel().initiallySet = initiallySet != FALSE;
  return NewHandle();
}

BOOL WINAPI SetEvent(HANDLE) {
  Kernel().signalled = true;
  return TRUE;
}

BOOL WINAPI SetupComm(HANDLE, DWORD inputQueue, DWORD outputQueue) {
  Kernel().inputQueue = inputQueue;
  Kernel().outputQueue = outputQueue;
  return !Fails("SetupComm");
}

BOOL WINAPI SetCommMask(HANDLE, DWORD mask) {
  Kernel().mask = mask;
  return !Fails("SetCommMask");
}

BOOL WINAPI GetDefaultCommConfigA(LPCSTR, LPCOMMCONFIG config, LPDWORD size) {
  Kernel().configSize = *size;
  if (Fails("GetDefaultCommConfigA")) return FALSE;
  config->dcb = Kernel().dcb;
  return TRUE;
}

BOOL WINAPI SetCommConfig(HANDLE, LPCOMMCONFIG, DWORD) { return !Fails("SetCommConfig"); }

BOOL WINAPI GetCommState(HANDLE, LPDCB dcb) {
  if (Fails("GetCommState")) return FALSE;
  *dcb = Kernel().dcb;
  return TRUE;
}

BOOL WINAPI SetCommState(HANDLE, LPDCB dcb) {
  if (Fails("SetCommState")) return FALSE;
  Kernel().dcb = *dcb;
  return TRUE;
}

BOOL WINAPI GetCommTimeouts(HANDLE, LPCOMMTIMEOUTS timeouts) {
  if (Fails("GetCommTimeouts")) return FALSE;
  *timeouts = Kernel().timeouts;
  return TRUE;
}

BOOL WINAPI SetCommTimeouts(HANDLE, LPCOMMTIMEOUTS timeouts) {
  if (Fails("SetCommTimeouts")) return FALSE;
  Kernel().timeouts = *timeouts;
  return TRUE;
}

BOOL WINAPI WriteFile(HANDLE, LPCVOID, DWORD count, LPDWORD moved, LPOVERLAPPED) {
  return zrv::testing::Begin("WriteFile", count, moved);
}

// What is read counts up from 1.
BOOL WINAPI ReadFile(HANDLE, LPVOID buffer, DWORD count, LPDWORD moved, LPOVERLAPPED) {
  const BOOL done = zrv::testing::Begin("ReadFile", count, moved);
  DWORD bytes = Kernel().io == FakeKernel::Io::kPendsForEver ? Kernel().cancelledAfter : count;
  if (Kernel().failing == "ReadFile") bytes = 0;
  for (DWORD i = 0; i < bytes; ++i) static_cast<unsigned char*>(buffer)[i] = static_cast<unsigned char>(i + 1);
  return done;
}

DWORD WINAPI WaitForSingleObject(HANDLE, DWORD) {
  FakeKernel& k = Kernel();
  k.calls.emplace_back("WaitForSingleObject");
  if (k.io == FakeKernel::Io::kWaitFails) return WAIT_FAILED;
  if (k.io != FakeKernel::Io::kPendsThenDone) return WAIT_TIMEOUT;
  k.driverOwnsRequest = false;
  return WAIT_OBJECT_0;
}

// Moves 4 bytes, the number every test asks for, unless the operation was cancelled.
BOOL WINAPI GetOverlappedResult(HANDLE, LPOVERLAPPED, LPDWORD moved, BOOL wait) {
  FakeKernel& k = Kernel();
  if (wait) k.driverOwnsRequest = false;
  if (Fails(wait ? "GetOverlappedResult(wait)" : "GetOverlappedResult")) return FALSE;
  const bool done = k.io == FakeKernel::Io::kPendsThenDone || k.io == FakeKernel::Io::kDoneWhileCancelled;
  *moved = done ? 4 : k.cancelledAfter;
  if (!done) k.lastError = ERROR_OPERATION_ABORTED;
  return done;
}

BOOL WINAPI CancelIo(HANDLE) { return !Fails("CancelIo"); }

BOOL WINAPI PurgeComm(HANDLE, DWORD what) {
  Kernel().purged = what;
  return !Fails("PurgeComm");
}

DWORD WINAPI GetLastError() { return Kernel().lastError; }
void WINAPI SetLastError(DWORD error) { Kernel().lastError = error; }

DWORD WINAPI QueryDosDeviceA(LPCSTR, LPSTR names, DWORD size) {
  FakeKernel& k = Kernel();
  k.largestNamesSize = std::max(k.largestNamesSize, size);
  if (Fails("QueryDosDeviceA")) return 0;
  const std::string all = k.deviceNames + '\0';
  if (k.namesNeverFit || all.size() > size) {
    k.lastError = ERROR_INSUFFICIENT_BUFFER;
    return 0;
  }
  std::memcpy(names, all.data(), all.size());
  return static_cast<DWORD>(all.size());
}
