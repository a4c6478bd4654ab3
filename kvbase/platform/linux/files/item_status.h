// SPDX-License-Identifier: MIT
//
// What the system tells about an item, by the library's rule for links: one that leads to a directory or to nothing is
// seen itself, unless the path ends in a separator.
#pragma once

#include <sys/stat.h>

#include "kvbase/platform/file_api.h"
#include "kvbase/platform/linux/files/path_mapping.h"

namespace KV_1_1 {
namespace platform {

// One call of the system, two for a link. False, with the last error, if there is no such item or it cannot be asked.
bool queryItem(char const* path, unsigned int mask, struct statx& status);

// The mode bits decide about kAttributeReadOnly, not what this process may do: the superuser may do anything.
ulong32 attributesOf(mode_t mode, char const* path);
bool isReadOnly(mode_t mode);

// Sets the last error for a call on a path that failed with this value of errno; gives false. What is missing, the
// item, a folder above it, its drive or its share, is found out by a further look at the disk.
bool failAt(char const* path, int error);

}  // namespace platform
}  // namespace KV_1_1
