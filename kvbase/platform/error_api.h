// SPDX-License-Identifier: MIT
//
// The seam to the system's reports of failures: the last error of a thread, and the texts of error codes.
//
// Thread rule: any method may be called from any thread; each thread has a last error of its own.
#pragma once

#include "kvbase/platform/backend.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

class ErrorApi {
 public:
  // The reason why the last call of another group that failed on this thread failed: a code of error_codes.h or any
  // other code of the system. Calls that succeed leave it unchanged, unless their contract says otherwise. Calls for
  // languages, settings and modules need not set it.
  virtual ulong32 lastError() = 0;
  // Sets the result of lastError on this thread. For backends and test fakes; of the library itself only the stack
  // walker sets it, to tell why it failed.
  virtual void setLastError(ulong32 code) = 0;

  // Stores the system's text for a code in `text`: as a rule one sentence and a line end (CR LF). False if there is
  // none; `text` is then unchanged. The language is the system's choice; English on Linux.
  virtual bool errorText(ulong32 code, wstring& text) = 0;

 protected:
  // Backends are never destroyed through this interface.
  ~ErrorApi() = default;
};

}  // namespace platform
}  // namespace KV_1_1
