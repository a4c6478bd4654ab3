// SPDX-License-Identifier: MIT
//
// A hook for tests: FileSystemItem::reportError passes every message to it. Null, as in every program, means that a
// message goes nowhere.
//
// Thread rule: set it while no other thread works with paths.
#pragma once

#include "kvbase/export.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

extern KVBASE_LOCAL void (*errorSink)(String const& message);

}  // namespace KV_1_1
