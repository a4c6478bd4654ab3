// SPDX-License-Identifier: MIT
//
// The searches that are running in this process. A handle is a number, not an address: one that has been closed is
// refused, also when its place is in use again.
//
// Thread rule: any function may be called from any thread; the search behind one handle belongs to one thread at a
// time.
#pragma once

#include <memory>

#include "kvbase/platform/file_api.h"
#include "kvbase/platform/linux/files/directory_snapshot.h"

namespace KV_1_1 {
namespace platform {

// Enters a search. Throws std::bad_alloc; the search is freed then.
SearchHandle registerSearch(std::unique_ptr<DirectorySearch> search);

// The search of a handle; null if there is none (any more).
DirectorySearch* searchOf(SearchHandle handle);

// Takes a search out; null if there is none.
std::unique_ptr<DirectorySearch> removeSearch(SearchHandle handle);

}  // namespace platform
}  // namespace KV_1_1
