// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/debug_help.h"

namespace KV_1_1 {
namespace platform {

// Completes the record of the frame whose registers are in `context`, and puts those of its caller there. For the first
// step the record is zero but for the registers in it. False at the end of a stack that is broken, or where nothing is
// known of the code; the last error tells why. A frame whose caller cannot be found is still reported, and the next
// step fails.
//
// `readMemory` gives the memory of the stack; it may answer anything: a caller whose frame does not lie above is a
// failure.
//
// Thread rule: any thread; one record and its context belong to one thread.
bool stepFrame(debug_help::StackFrame64& frame, _CONTEXT& context, void* process,
               debug_help::ReadProcessMemory64 readMemory);

// Whether an address is the program counter of a frame that this thread has stepped to last and that is a return
// address: the call before it, not the code behind it, is what the frame does.
bool isLastReturnAddress(std::uint64_t address);

}  // namespace platform
}  // namespace KV_1_1
