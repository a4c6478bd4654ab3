// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/windows_error.h"

#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"

namespace KV_1_1 {

String getWindowsError(ulong32 code) {
  if (code == platform::kNoError) return String::EMPTY;
  wstring text;
  if (!platform::errors().errorText(code, text)) {
    String number;
    number.printf(KVW("[0x%08x]"), static_cast<unsigned int>(code));
    return number;
  }
  text.resize(text.find_last_not_of(KVW("\r\n")) + 1);
  return String(text.c_str());
}

String getWindowsError() {
  return getWindowsError(platform::errors().lastError());
}

}  // namespace KV_1_1
