// SPDX-License-Identifier: MIT
//
// Operations that change items on disk. They take paths of the system; on failure they return false and set the last
// error.
#pragma once

#include "kvbase/platform/file_api.h"

namespace KV_1_1 {
namespace platform {

// Copies a file, or a link that leads to a directory or to nothing; see FileApi::copyFile. Passes on exceptions of
// `progress`; no partial target remains then either.
bool copyItem(char const* source, char const* target, CopyProgress progress, void* data, bool failIfExists);
// Copies a link as a link, whatever it leads to. The target may be a file, a link, or missing.
bool copyLink(char const* source, char const* target, bool failIfExists);

// See FileApi::moveFile and FileApi::removeDirectory.
bool moveItem(char const* source, char const* target);
bool removeDirectoryItem(char const* path);

}  // namespace platform
}  // namespace KV_1_1
