// SPDX-License-Identifier: MIT
#pragma once

namespace KV_1_1 {
namespace platform {

// Asks the user to choose between abort, retry and ignore: by a dialog of the desktop if there is a display and a tool
// for it, else on the terminal of the process. Texts are UTF-8. Returns one of the three answers of debug_api.h, or 0
// if the question could not be put or has not been answered.
int askAbortRetryIgnore(char const* message, char const* title);

}  // namespace platform
}  // namespace KV_1_1
