// SPDX-License-Identifier: MIT
#include "tests/shared/modules/controls_language.h"

namespace KV_1_1 {
namespace testing {

std::string controlsLanguage() {
  return std::string();
}

}  // namespace testing
}  // namespace KV_1_1
