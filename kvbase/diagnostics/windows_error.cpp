// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/windows_error.h"

#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/scoped_handle.h"

namespace KV_1_1 {

namespace {

struct ErrorTextTraits {
  using Value = wchar*;
  static Value none() { return nullptr; }
  static void close(Value text) { platform::debug().freeErrorText(text); }
};

bool isLineEnd(wchar unit) {
  return unit == KVW('\r') || unit == KVW('\n');
}

}  // namespace

String getWindowsError(ulong32 code) {
  if (code == platform::kNoError) return String::EMPTY;
  platform::ScopedHandle<ErrorTextTraits> const system(platform::debug().errorText(code));
  if (!system) {
    String number;
    number.printf(KVW("[0x%08x]"), static_cast<unsigned int>(code));
    return number;
  }
  String const text(system.get());
  wchar const* const units = text;
  int end = text.length();
  while (end > 0 && isLineEnd(units[end - 1])) --end;
  return end == text.length() ? text : text.substr(0, end);
}

String getWindowsError() {
  return getWindowsError(platform::debug().lastError());
}

}  // namespace KV_1_1
