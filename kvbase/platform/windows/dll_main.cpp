// SPDX-License-Identifier: MIT
#include "kvbase/library/library_entry.h"
#include "kvbase/platform/entry_function.h"

KVBASE_ENTRY_FUNCTION(KV_1_1::library::attach, KV_1_1::library::detach);
