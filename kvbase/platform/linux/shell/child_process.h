// SPDX-License-Identifier: MIT
//
// Starting tools of the desktop.
#pragma once

namespace KV_1_1 {
namespace platform {

// Starts arguments[0], found through PATH, with these arguments (the last one is null), and does not wait for it. Gives
// 0 if it runs, else the errno of the failure.
//
// The tool gets a session of its own, no signal blocked or ignored, and /dev/null as its standard streams; its output
// goes to the descriptor `output` instead if that is not negative. It is no child of this process: it leaves no zombie,
// sends no SIGCHLD, and nothing that the application does with SIGCHLD or with wait() has a part in it.
int startTool(char const* const arguments[], int output = -1);

// Starts a tool and waits until it says something or closes its output. True if it says something in time.
bool toolAnswers(char const* const arguments[], int milliseconds);

}  // namespace platform
}  // namespace KV_1_1
