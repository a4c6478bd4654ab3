// SPDX-License-Identifier: MIT
//
// How to find the caller of a frame. libdw interprets the unwind tables of a module; nearly all they say is of one form,
// which is remembered for each program counter, so that a second walk over the same code interprets nothing.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kvbase/platform/linux/debug/debug_session.h"

namespace KV_1_1 {
namespace platform {

// The registers that a function keeps for its caller and that a frame may hold, in this order, and the return address.
enum SavedRegister : std::size_t { kRbx, kRbp, kR12, kR13, kR14, kR15, kReturnAddress, kSavedRegisterCount };

struct FrameRule {
  enum class Kind : std::uint8_t {
    kUnknown,    // the tables say nothing
    kSimple,     // as the members below tell
    kOutermost,  // there is no caller
    kComplex     // has to be evaluated by libdw
  };
  Kind kind = Kind::kUnknown;
  // The frame's end, its canonical frame address, is a register (by its number in DWARF: 6 rbp, 7 rsp) plus an offset.
  // If it is indirect, that sum is the address of it.
  std::uint8_t base = 0;
  bool isIndirect = false;
  // The caller was interrupted there by a signal, so its program counter is no return address.
  bool isSignalFrame = false;
  std::int32_t offset = 0;
  // Where a register has been saved, in words relative to the frame's end: -1 is the word below it. 0: it still has the
  // caller's value.
  std::int8_t savedAt[kSavedRegisterCount] = {};
};

// The rule for a program counter. That of a return address is looked up one byte before it, inside the call.
//
// Thread rule: any thread; a rule that is remembered is found without a lock.
FrameRule ruleOfFrame(std::uint64_t programCounter, bool isReturnAddress);

// Forgets the rules of modules that have been unloaded. To be called at the start of each walk.
void checkFrameRules();

}  // namespace platform
}  // namespace KV_1_1
