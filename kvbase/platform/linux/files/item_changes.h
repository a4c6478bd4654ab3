// SPDX-License-Identifier: MIT
//
// What changes items on disk, for paths of the system. Each gives false and sets the last error where it fails.
#pragma once

#include "kvbase/platform/file_api.h"

namespace KV_1_1 {
namespace platform {

// Copies a file, or a link that leads to a directory or to nothing; see FileApi::copyFile. Throws what the progress
// throws, when no half-made target is left either.
bool copyItem(char const* source, char const* target, CopyProgress progress, void* data, bool failIfExists);
// Copies a link as a link, whatever it leads to, onto a file or link or nothing.
bool copyLink(char const* source, char const* target, bool failIfExists);

// See FileApi::moveFile and FileApi::removeDirectory.
bool moveItem(char const* source, char const* target);
bool removeDirectoryItem(char const* path);

}  // namespace platform
}  // namespace KV_1_1
