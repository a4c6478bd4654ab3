// SPDX-License-Identifier: MIT
//
// The seam to what a system tells about failures.
//
// Thread rule: any method may be called from any thread; each thread has a last error of its own.
#pragma once

#include "kvbase/platform/backend.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

class DebugApi {
 public:
  // Why the last call of another group that failed on this thread did so: a code of error_codes.h or any other code of
  // the system. Calls that succeed leave it alone, unless their contract says otherwise.
  virtual ulong32 lastError() = 0;
  // Sets what lastError gives on this thread. For backends and for the fakes of tests; the library reads only.
  virtual void setLastError(ulong32 code) = 0;

  // The system's text for a code, as a rule one sentence and a line end (CR LF). NUL-terminated, to be released with
  // freeErrorText; null if there is none. The language is the system's choice; English on Linux.
  virtual wchar* errorText(ulong32 code) = 0;
  // Releases a text of errorText; null is allowed.
  virtual void freeErrorText(wchar* text) = 0;

 protected:
  // Backends are never destroyed through this interface.
  ~DebugApi() = default;
};

}  // namespace platform
}  // namespace KV_1_1
