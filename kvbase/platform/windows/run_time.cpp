// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/run_time.h"

#include <exception>  // tells which C++ library this is

#include "kvbase/platform/types.h"

// A static library has the run time of the program, which others may still use and which ends with the process.
#if defined(__GLIBCXX__) && !defined(KVBASE_STATIC)
#define KVBASE_OWN_RUN_TIME
#include <pthread.h>

// Functions of the libraries of mingw, which are linked into this one. The first frees the memory that is reserved for
// exceptions; the second gives the record of a thread, which is the thread's value in the slot of the threads library.
namespace __gnu_cxx {
void __freeres();
}
extern "C" void* __pth_gpointer_locked(pthread_t thread);
#endif

namespace KV_1_1 {
namespace platform {

// Without this each load would cost 73 KB and one of the 1088 slots of the process; without a free one the next library of
// mingw that is loaded ends the process.
void releaseRunTime() noexcept {
#if defined(KVBASE_OWN_RUN_TIME)
  __gnu_cxx::__freeres();

  constexpr DWORD kSlots = 1088;
  void const* const record = __pth_gpointer_locked(pthread_self());
  for (DWORD slot = 0; record != nullptr && slot < kSlots; ++slot) {
    if (TlsGetValue(slot) != record) continue;
    TlsFree(slot);
    return;
  }
#endif
}

}  // namespace platform
}  // namespace KV_1_1
