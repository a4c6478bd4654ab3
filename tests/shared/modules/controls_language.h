// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace KV_1_1 {
namespace testing {

// The language of the common controls of the desktop; empty where there are none.
std::string controlsLanguage();

}  // namespace testing
}  // namespace KV_1_1
