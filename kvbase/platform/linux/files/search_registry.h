// SPDX-License-Identifier: MIT
//
// The searches that are running in this process. A handle is a number that is used once, not an address, so one that
// has been closed is refused for ever.
//
// Thread rule: any function may be called from any thread; the search behind one handle belongs to one thread at a
// time.
#pragma once

#include <memory>

#include "kvbase/platform/file_api.h"
#include "kvbase/platform/linux/files/directory_snapshot.h"

namespace KV_1_1 {
namespace platform {

// Adds a search and returns its handle. Throws std::bad_alloc; the search is freed then.
SearchHandle registerSearch(std::unique_ptr<DirectorySnapshot> search);

// The search of a handle; null if it has been closed or never existed.
DirectorySnapshot* searchOf(SearchHandle handle);

// Removes a search and hands it over; null if there is none.
std::unique_ptr<DirectorySnapshot> removeSearch(SearchHandle handle);

}  // namespace platform
}  // namespace KV_1_1
