// SPDX-License-Identifier: MIT
//
// Stopping another thread of this process. The handle of a thread is its id (gettid) in the form of a pointer.
//
// A thread is stopped by a real-time signal, whose handler stores the registers and waits. It is found among those for
// which the application has no handler when it is first needed, and it is not to be blocked.
//
// Thread rule: any function may be called from any thread.
#pragma once

#include "kvbase/platform/types.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

constexpr ulong32 kThreadFailure = 0xFFFFFFFF;

// How long a thread may take to answer: two seconds. Tests put another time here.
extern int threadAnswerMilliseconds;

// See DebugApi. A thread that does not answer in time, because it blocks the signal, cannot be stopped. The calling
// thread cannot stop itself.
ulong32 suspendOtherThread(void* thread);
ulong32 resumeOtherThread(void* thread);
bool registersOfThread(void* thread, _CONTEXT& context);

}  // namespace platform
}  // namespace KV_1_1
