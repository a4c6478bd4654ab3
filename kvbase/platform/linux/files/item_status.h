// SPDX-License-Identifier: MIT
//
// Queries of items by the library's rule for links: a path names the link itself if that leads to a directory or to
// nothing, unless the path ends in a separator.
#pragma once

#include <sys/stat.h>

#include "kvbase/platform/file_api.h"
#include "kvbase/platform/linux/files/path_mapping.h"

namespace KV_1_1 {
namespace platform {

// One system call, two for a link. False, with the last error set, if the item does not exist or cannot be queried.
bool queryItem(char const* path, unsigned int mask, struct statx& status);

// COMPAT: a file is read-only if its owner has no right to write, whoever asks, so it is for the superuser too, who
// could write to it.
ulong32 attributesOf(mode_t mode, char const* path);
bool isReadOnly(mode_t mode);

// Whether two status records are of the same item on disk.
bool isSameItem(struct stat const& a, struct stat const& b);

// Sets the last error for a call on a path that failed with this value of errno, and returns false. For ENOENT further
// queries find out what is missing: the item, a folder above it, its drive or its share.
bool failAt(char const* path, int error);

}  // namespace platform
}  // namespace KV_1_1
