// A kernel32 made of code: it counts handles, records calls, and fails where a test asks. Included before the
// transport's sources, it takes the place of the calls they make.
#ifndef ZRV_TESTS_DEVICE_FAKE_KERNEL32_H
#define ZRV_TESTS_DEVICE_FAKE_KERNEL32_H

#include <windows.h>

#include <set>
#include <string>
#include <vector>

namespace zrv::testing {

struct FakeKernel {
  // How a read or write goes that is begun.
  enum class Io { kDoneAtOnce, kPendsThenDone, kPendsForEver, kDoneWhileCancelled, kWaitFails };

  // What a test sets.
  std::string failing;             // the call that fails; empty: none
  DWORD error = ERROR_GEN_FAILURE;  // and what it then leaves as last error
  Io io = Io::kDoneAtOnce;
  DWORD cancelledAfter = 0;        // bytes moved when a pending operation is cancelled
  std::string deviceNames;         // each ended by a NUL
  bool namesNeverFit = false;

  // What a test looks at.
  std::vector<std::string> calls;
  std::set<HANDLE> handles;        // those open now
  int closesOfStrangers = 0;       // CloseHandle of what is not open
  bool driverOwnsRequest = false;  // a read or write is still under way
  bool signalled = false;          // SetEvent since the last transfer began
  std::string path;
  DWORD access = 0, share = 0, flags = 0, inputQueue = 0, outputQueue = 0, mask = 0, purged = 0, configSize = 0;
  bool manualReset = false, initiallySet = true;
  DCB dcb{};
  COMMTIMEOUTS timeouts{};
  DWORD lastError = 0;
  DWORD largestNamesSize = 0;

  int Count(const std::string& call) const;
};

// The one of the test that runs; tests put a new one there first.
FakeKernel& Kernel();

namespace fake_kernel32 {
decltype(::CreateFileA) CreateFileA;
decltype(::CloseHandle) CloseHandle;
decltype(::CreateEventA) CreateEventA;
decltype(::SetEvent) SetEvent;
decltype(::SetupComm) SetupComm;
decltype(::SetCommMask) SetCommMask;
decltype(::GetDefaultCommConfigA) GetDefaultCommConfigA;
decltype(::SetCommConfig) SetCommConfig;
decltype(::GetCommState) GetCommState;
decltype(::SetCommState) SetCommState;
decltype(::GetCommTimeouts) GetCommTimeouts;
decltype(::SetCommTimeouts) SetCommTimeouts;
decltype(::WriteFile) WriteFile;
decltype(::ReadFile) ReadFile;
decltype(::WaitForSingleObject) WaitForSingleObject;
decltype(::GetOverlappedResult) GetOverlappedResult;
decltype(::CancelIo) CancelIo;
decltype(::PurgeComm) PurgeComm;
decltype(::GetLastError) GetLastError;
decltype(::SetLastError) SetLastError;
decltype(::QueryDosDeviceA) QueryDosDeviceA;
}  // namespace fake_kernel32
}  // namespace zrv::testing

#define CreateFileA zrv::testing::fake_kernel32::CreateFileA
#define CloseHandle zrv::testing::fake_kernel32::CloseHandle
#define CreateEventA zrv::testing::fake_kernel32::CreateEventA
#define SetEvent zrv::testing::fake_kernel32::SetEvent
#define SetupComm zrv::testing::fake_kernel32::SetupComm
#define SetCommMask zrv::testing::fake_kernel32::SetCommMask
#define GetDefaultCommConfigA zrv::testing::fake_kernel32::GetDefaultCommConfigA
#define SetCommConfig zrv::testing::fake_kernel32::SetCommConfig
#define GetCommState zrv::testing::fake_kernel32::GetCommState
#define SetCommState zrv::testing::fake_kernel32::SetCommState
#define GetCommTimeouts zrv::testing::fake_kernel32::GetCommTimeouts
#define SetCommTimeouts zrv::testing::fake_kernel32::SetCommTimeouts
#define WriteFile zrv::testing::fake_kernel32::WriteFile
#define ReadFile zrv::testing::fake_kernel32::ReadFile
#define WaitForSingleObject zrv::testing::fake_kernel32::WaitForSingleObject
#define GetOverlappedResult zrv::testing::fake_kernel32::GetOverlappedResult
#define CancelIo zrv::testing::fake_kernel32::CancelIo
#define PurgeComm zrv::testing::fake_kernel32::PurgeComm
#define GetLastError zrv::testing::fake_kernel32::GetLastError
#define SetLastError zrv::testing::fake_kernel32::SetLastError
#define QueryDosDeviceA zrv::testing::fake_kernel32::QueryDosDeviceA

#endif
