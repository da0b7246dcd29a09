// A kernel32 made of code: it counts handles, records calls, and fails where a test asks. Included before the
// transport's sources, it takes the place of the calls they make.
#ifndef ZRV_TESTS_DEVICE_FAKE_KERNEL32_H
#define ZRV_TESTS_DEVICE_FAKE_KERNEL32_H

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace zrv::testing {

struct FakeKernel {
  // How a read or write goes that is begun.
  enum class Io {
    kDoneAtOnce,
    kPendsThenDone,
    kPendsForEver,
    kDoneWhileCancelled,
    kWaitFails
  };

  // What a test sets.
  std::string failing;  // the call that fails; empty: none
  Io io = Io::kDoneAtOnce;
  DWORD cancelledAfter = 0;  // bytes moved when a pending operation is cancelled
  std::string deviceNames;   // each ended by a NUL
  bool namesNeverFit = false;

  // What a test looks at.
  std::vector<std::string> calls;  // with the arguments that matter, in hexadecimal
  std::set<HANDLE> handles;        // those open now
  int closesOfStrangers = 0;       // CloseHandle of what is not open
  bool driverOwnsRequest = false;  // a read or write is still under way
  bool signalled = false;          // SetEvent since the last transfer began
  DCB dcb{};
  COMMTIMEOUTS timeouts{};
  DWORD lastError = 0;
  DWORD largestNamesSize = 0;

  int Count(const std::string& call) const {
    return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string& entry) {
      return entry.substr(0, entry.find(' ')) == call;
    }));
  }

  // Records the call; true when it is the one that fails.
  template <typename... Arguments>
  bool Fails(const std::string& call, Arguments... arguments) {
    std::ostringstream entry;
    entry << call << std::hex;
    ((entry << ' ' << arguments), ...);
    calls.push_back(entry.str());
    if (call == failing) lastError = ERROR_GEN_FAILURE;
    return call == failing;
  }

  HANDLE NewHandle() {
    static std::uintptr_t last = 0;
    return *handles.insert(reinterpret_cast<HANDLE>(last += 16)).first;
  }

  BOOL Begin(const char* call, DWORD count, DWORD* moved) {
    if (Fails(call)) return FALSE;
    signalled = false;
    driverOwnsRequest = io != Io::kDoneAtOnce;
    if (!driverOwnsRequest) *moved = count;
    if (driverOwnsRequest) lastError = ERROR_IO_PENDING;
    return !driverOwnsRequest;
  }

  // The fakes.
  HANDLE CreateFileA(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD, DWORD flags, HANDLE) {
    return Fails("CreateFileA", path, access, share, flags) ? INVALID_HANDLE_VALUE : NewHandle();
  }
  BOOL CloseHandle(HANDLE handle) {
    const bool known = handles.erase(handle) != 0;
    if (!known) ++closesOfStrangers;
    return known;
  }
  HANDLE CreateEventA(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL initiallySet, LPCSTR) {
    return Fails("CreateEventA", manualReset, initiallySet) ? nullptr : NewHandle();
  }
  BOOL SetEvent(HANDLE) { return signalled = true; }
  BOOL SetupComm(HANDLE, DWORD inputQueue, DWORD outputQueue) { return !Fails("SetupComm", inputQueue, outputQueue); }
  BOOL SetCommMask(HANDLE, DWORD mask) { return !Fails("SetCommMask", mask); }
  BOOL GetDefaultCommConfigA(LPCSTR, LPCOMMCONFIG config, LPDWORD size) {
    config->dcb = dcb;
    return !Fails("GetDefaultCommConfigA", *size);
  }
  BOOL SetCommConfig(HANDLE, LPCOMMCONFIG, DWORD) { return !Fails("SetCommConfig"); }
  BOOL GetCommState(HANDLE, LPDCB to) {
    *to = dcb;
    return !Fails("GetCommState");
  }
  BOOL SetCommState(HANDLE, LPDCB from) {
    dcb = *from;
    return !Fails("SetCommState");
  }
  BOOL GetCommTimeouts(HANDLE, LPCOMMTIMEOUTS to) {
    *to = timeouts;
    return !Fails("GetCommTimeouts");
  }
  BOOL SetCommTimeouts(HANDLE, LPCOMMTIMEOUTS from) {
    timeouts = *from;
    return !Fails("SetCommTimeouts");
  }
  BOOL WriteFile(HANDLE, LPCVOID, DWORD count, LPDWORD moved, LPOVERLAPPED) { return Begin("WriteFile", count, moved); }
  // What is read counts up from 1.
  BOOL ReadFile(HANDLE, LPVOID buffer, DWORD count, LPDWORD moved, LPOVERLAPPED) {
    const DWORD bytes = failing == "ReadFile" ? 0 : io == Io::kPendsForEver ? cancelledAfter : count;
    for (DWORD i = 0; i < bytes; ++i) static_cast<unsigned char*>(buffer)[i] = static_cast<unsigned char>(i + 1);
    return Begin("ReadFile", count, moved);
  }
  DWORD WaitForSingleObject(HANDLE, DWORD) {
    Fails("WaitForSingleObject");
    if (io == Io::kWaitFails) return WAIT_FAILED;
    if (io != Io::kPendsThenDone) return WAIT_TIMEOUT;
    driverOwnsRequest = false;
    return WAIT_OBJECT_0;
  }
  // Moves 4 bytes, the number every test asks for, unless the operation was cancelled.
  BOOL GetOverlappedResult(HANDLE, LPOVERLAPPED, LPDWORD moved, BOOL wait) {
    if (wait) driverOwnsRequest = false;
    if (Fails(wait ? "GetOverlappedResult(wait)" : "GetOverlappedResult")) return FALSE;
    const bool done = io == Io::kPendsThenDone || io == Io::kDoneWhileCancelled;
    *moved = done ? 4 : cancelledAfter;
    if (!done) lastError = ERROR_OPERATION_ABORTED;
    return done;
  }
  BOOL CancelIo(HANDLE) { return !Fails("CancelIo"); }
  BOOL PurgeComm(HANDLE, DWORD what) { return !Fails("PurgeComm", what); }
  DWORD GetLastError() const { return lastError; }
  void SetLastError(DWORD error) { lastError = error; }
  DWORD QueryDosDeviceA(LPCSTR, LPSTR names, DWORD size) {
    largestNamesSize = std::max(largestNamesSize, size);
    if (Fails("QueryDosDeviceA")) return 0;
    const std::string all = deviceNames + '\0';
    const bool fits = !namesNeverFit && all.size() <= size;
    if (fits) std::memcpy(names, all.data(), all.size());
    if (!fits) lastError = ERROR_INSUFFICIENT_BUFFER;
    return fits ? static_cast<DWORD>(all.size()) : 0;
  }
};

// The one of the test that runs; tests put a new one there first.
inline FakeKernel kernel;

}  // namespace zrv::testing

#define CreateFileA zrv::testing::kernel.CreateFileA
#define CloseHandle zrv::testing::kernel.CloseHandle
#define CreateEventA zrv::testing::kernel.CreateEventA
#define SetEvent zrv::testing::kernel.SetEvent
#define SetupComm zrv::testing::kernel.SetupComm
#define SetCommMask zrv::testing::kernel.SetCommMask
#define GetDefaultCommConfigA zrv::testing::kernel.GetDefaultCommConfigA
#define SetCommConfig zrv::testing::kernel.SetCommConfig
#define GetCommState zrv::testing::kernel.GetCommState
#define SetCommState zrv::testing::kernel.SetCommState
#define GetCommTimeouts zrv::testing::kernel.GetCommTimeouts
#define SetCommTimeouts zrv::testing::kernel.SetCommTimeouts
#define WriteFile zrv::testing::kernel.WriteFile
#define ReadFile zrv::testing::kernel.ReadFile
#define WaitForSingleObject zrv::testing::kernel.WaitForSingleObject
#define GetOverlappedResult zrv::testing::kernel.GetOverlappedResult
#define CancelIo zrv::testing::kernel.CancelIo
#define PurgeComm zrv::testing::kernel.PurgeComm
#define GetLastError zrv::testing::kernel.GetLastError
#define SetLastError zrv::testing::kernel.SetLastError
#define QueryDosDeviceA zrv::testing::kernel.QueryDosDeviceA

#endif
