// SPDX-License-Identifier: MIT
#include "tests/shared/modules/controls_language.h"

#include "kvbase/platform/types.h"

#include <commctrl.h>

namespace KV_1_1 {
namespace testing {

std::string controlsLanguage() {
  return std::to_string(GetMUILanguage());
}

}  // namespace testing
}  // namespace KV_1_1
