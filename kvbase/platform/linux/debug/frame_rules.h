// SPDX-License-Identifier: MIT
//
// How to find the caller of a frame. libdw interprets the unwind tables of a module; nearly all they say is of one
// form, which is remembered for each program counter, so that a second walk over the same code interprets nothing.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kvbase/platform/linux/debug/debug_session.h"

namespace KV_1_1 {
namespace platform {

// The registers that a function keeps for its caller and that a frame may hold, in this order, and the return address.
enum SavedRegister : std::size_t { kRbx, kRbp, kR12, kR13, kR14, kR15, kReturnAddress, kSavedRegisterCount };

constexpr int kMostSavedWords = 24;

// Packed into two words, which a compiler keeps in registers.
class FrameRule {
 public:
  enum class Kind : std::uint8_t {
    kUnknown,    // the tables say nothing
    kSimple,     // as the members below tell
    kOutermost,  // there is no caller
    kComplex     // has to be evaluated by libdw
  };

  FrameRule() = default;
  explicit FrameRule(Kind kind) : low_(static_cast<std::uint64_t>(kind)) {}
  // From the words of another one.
  FrameRule(std::uint64_t low, std::uint64_t high) : low_(low), high_(high) {}
  std::uint64_t low() const { return low_; }
  std::uint64_t high() const { return high_; }

  Kind kind() const { return static_cast<Kind>(low_ & 0xFF); }

  // The caller was interrupted there by a signal, so its program counter is no return address.
  bool isSignalFrame() const { return (low_ >> 24 & 1) != 0; }
  void setSignalFrame() { low_ |= std::uint64_t{1} << 24; }

  // The frame's end, its canonical frame address, is a register (by its number in DWARF: 6 rbp, 7 rsp) plus an offset.
  // If it is indirect, that sum is the address of it.
  std::size_t base() const { return low_ >> 8 & 0xFF; }
  bool isIndirect() const { return (low_ >> 16 & 1) != 0; }
  std::uint64_t offset() const {
    return static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(low_ >> 32)});
  }
  void setEnd(std::uint8_t base, std::int32_t offset, bool isIndirect) {
    low_ |= std::uint64_t{base} << 8 | std::uint64_t{isIndirect} << 16 |
            std::uint64_t{static_cast<std::uint32_t>(offset)} << 32;
  }

  // Where a register has been saved, in words relative to the frame's end: -1 is the word below it. 0: it still has the
  // caller's value.
  int savedAt(std::size_t saved) const { return static_cast<std::int8_t>(high_ >> (8 * saved + 8)); }
  void setSaved(std::size_t saved, std::int8_t at) {
    high_ |= std::uint64_t{static_cast<std::uint8_t>(at)} << (8 * saved + 8);
  }
  // How many words below the frame's end hold all saved registers; 0 if they do not lie together there.
  std::size_t savedWords() const { return high_ & 0xFF; }
  void setSavedWords(std::uint8_t count) { high_ |= count; }

 private:
  std::uint64_t low_ = 0;
  std::uint64_t high_ = 0;
};

// The rule for a program counter. That of a return address is looked up one byte before it, inside the call. `isChecked`
// is 0 at the start of a walk; the first rule of a walk that a module may have taken along when it was unloaded makes it
// 1. Modules that are unloaded later in the same walk are not noticed.
//
// Thread rule: any thread; a rule that is remembered is found without a lock.
FrameRule ruleOfFrame(std::uint64_t programCounter, bool isReturnAddress, std::uint64_t& isChecked);

}  // namespace platform
}  // namespace KV_1_1
