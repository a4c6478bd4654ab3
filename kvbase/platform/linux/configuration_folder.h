// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/linux/files/name_mapping.h"

namespace KV_1_1 {
namespace platform {

// Appends the value of a variable of the environment that holds an absolute path, without terminator. False if it does
// not; `path` is then unchanged.
bool appendPathVariable(char const* name, NativePath& path);

// Appends the folder of the user's configuration files, without terminator: $XDG_CONFIG_HOME, else ~/.config. False if
// the environment names neither; `path` is then unchanged.
bool appendConfigurationFolder(NativePath& path);

}  // namespace platform
}  // namespace KV_1_1
