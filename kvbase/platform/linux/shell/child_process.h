// SPDX-License-Identifier: MIT
//
// Starting tools of the desktop.
#pragma once

#include <string>

namespace KV_1_1 {
namespace platform {

// Starts arguments[0], found through PATH, with these arguments (the last one is null), and does not wait for it to
// end. Returns 0 if it has been started, else the errno of the failure: ENOENT if there is no such tool, EACCES if it
// may not be executed. A file that is executable but none that the system can run counts as started.
//
// The tool gets a session of its own, no signal blocked or ignored, and /dev/null as its standard streams; its output
// goes to the descriptor `output` instead if that is not negative. It gets no other descriptor of this process.
//
// The tool is no child of this process, so it leaves no zombie however long it runs. The application sees one
// short-lived child, setsid(1), which starts the tool and is waited for here: it causes one SIGCHLD, and a wait() of
// another thread may collect it, which does no harm.
int startTool(char const* const arguments[], int output = -1);

// What came of a tool that was waited for.
struct ToolResult {
  bool started = false;
  int status = -1;     // its exit status; -1 if it was killed, or if nobody can tell (see startTool)
  std::string output;  // the end of what it wrote
};

// Runs a tool, found and set up as by startTool, and waits until it ends, however long that takes: a dialog waits for the
// user. The tool is a child of this process until then, and belongs to its session. `variable`, "NAME=value", is set in
// its environment.
ToolResult runTool(char const* const arguments[], char const* variable = nullptr);

// Starts a tool and waits until it writes something or closes its output. True if it writes something in time.
bool toolAnswers(char const* const arguments[], int milliseconds);

}  // namespace platform
}  // namespace KV_1_1
