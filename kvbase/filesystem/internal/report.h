// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/filesystem/file_system_item.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

// Formats a message by String::printf and passes it to FileSystemItem::reportError.
template <class... Arguments>
void report(wchar const* format, Arguments const&... arguments) {
  String message;
  message.printf(format, arguments...);
  FileSystemItem::reportError(message);
}

// The message that several operations share.
inline void reportInvalidName(String const& text) {
  report(KVW("The path or file name '%ls' contains invalid characters."), text);
}

}  // namespace KV_1_1
