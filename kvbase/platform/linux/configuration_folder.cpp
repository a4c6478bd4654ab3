// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/configuration_folder.h"

#include <stdlib.h>
#include <string.h>

namespace KV_1_1 {
namespace platform {

bool appendPathVariable(char const* name, NativePath& path) {
  char const* const value = getenv(name);
  if (value == nullptr || value[0] != '/') return false;
  path.append(value, strlen(value));
  return true;
}

bool appendConfigurationFolder(NativePath& path) {
  if (appendPathVariable("XDG_CONFIG_HOME", path)) return true;
  if (!appendPathVariable("HOME", path)) return false;
  path.append("/.config", strlen("/.config"));
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
