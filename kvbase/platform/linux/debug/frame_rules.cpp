// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/frame_rules.h"

#include <dwarf.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>

#include "kvbase/platform/linux/debug/sequence_slot.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr int kRegisterCount = 17;
constexpr int kDwarfRsp = 7;
// Where in FrameRule::savedAt a register of DWARF is; -1 for one that functions do not keep.
constexpr int kPlaces[kRegisterCount] = {-1, -1, -1,   kRbx, -1,   -1,   kRbp,          -1, -1, -1,
                                         -1, -1, kR12, kR13, kR14, kR15, kReturnAddress};

// A remembered rule: the address looked up, the two words of the rule, and the generation of the session that it is right
// for.
using Slot = SequenceSlot<4>;
constexpr std::uint64_t kAnyGeneration = ~std::uint64_t{0};
constexpr std::size_t kSlotBits = 11;
Slot slots[std::size_t{1} << kSlotBits];
std::atomic<std::uint32_t> currentGeneration{0};

std::size_t placeOf(std::uint64_t address) {
  return (address * 0x9E3779B97F4A7C15) >> (64 - kSlotBits);
}

// Two addresses of one stack may have the same place; the second one of them is remembered beside it.
Slot& slotBeside(std::size_t place) {
  return slots[place ^ 1];
}

bool isRemembered(std::uint64_t address, Slot const& slot, Slot::Words& words) {
  return slot.load(words) && words[0] == address;
}

bool isCfaOffset(Dwarf_Op const* operations, std::size_t count, std::int64_t& offset) {
  if (count == 0 || count > 2 || operations[0].atom != DW_OP_call_frame_cfa) return false;
  offset = 0;
  if (count == 1) return true;
  if (operations[1].atom != DW_OP_plus_uconst) return false;
  offset = static_cast<std::int64_t>(operations[1].number);
  return true;
}

bool readCfa(LibdwFunctions const& libdw, Dwarf_Frame* frame, FrameRule& rule) {
  Dwarf_Op* operations = nullptr;
  std::size_t count = 0;
  if (libdw.frameCfa(frame, &operations, &count) != 0) return false;
  if (count != 1 && !(count == 2 && operations[1].atom == DW_OP_deref)) return false;
  int base = -1;
  std::int64_t offset = 0;
  if (operations[0].atom >= DW_OP_breg0 && operations[0].atom <= DW_OP_breg31) {
    base = operations[0].atom - DW_OP_breg0;
    offset = static_cast<std::int64_t>(operations[0].number);
  } else if (operations[0].atom == DW_OP_bregx) {
    base = static_cast<int>(operations[0].number);
    offset = static_cast<std::int64_t>(operations[0].number2);
  }
  if (base < 0 || base >= kRegisterCount - 1 || offset != static_cast<std::int32_t>(offset)) return false;
  rule.setEnd(static_cast<std::uint8_t>(base), static_cast<std::int32_t>(offset), count == 2);
  return true;
}

// Reads where one register is. False if the rule has no place for it.
bool readRegister(LibdwFunctions const& libdw, Dwarf_Frame* frame, int number, FrameRule& rule) {
  Dwarf_Op memory[3];
  Dwarf_Op* operations = nullptr;
  std::size_t count = 0;
  if (libdw.frameRegister(frame, number, memory, &operations, &count) != 0) return false;
  bool const isUndefined = count == 0 && operations == memory;
  if (number == kRegisterCount - 1 && isUndefined) {
    rule = FrameRule(FrameRule::Kind::kOutermost);
    return true;
  }
  // The stack pointer of the caller is the frame's end by definition.
  if (number == kDwarfRsp) return count == 0 || (count == 2 && operations[0].atom == DW_OP_call_frame_cfa);
  if (count == 0) return number != kRegisterCount - 1;
  std::int64_t offset = 0;
  if (kPlaces[number] < 0 || !isCfaOffset(operations, count, offset)) return false;
  std::int64_t const words = offset / 8;
  if (words * 8 != offset || words == 0 || words != static_cast<std::int8_t>(words)) return false;
  rule.setSaved(static_cast<std::size_t>(kPlaces[number]), static_cast<std::int8_t>(words));
  return true;
}

void noteSavedWords(FrameRule& rule) {
  int lowest = 0;
  for (std::size_t i = 0; i < kSavedRegisterCount; ++i) {
    if (rule.savedAt(i) > 0 || rule.savedAt(i) < -kMostSavedWords) return;
    lowest = std::min(lowest, rule.savedAt(i));
  }
  rule.setSavedWords(static_cast<std::uint8_t>(-lowest));
}

FrameRule readRule(LibdwFunctions const& libdw, Dwarf_Frame* frame) {
  FrameRule complex(FrameRule::Kind::kComplex);
  bool isSignalFrame = false;
  if (libdw.frameInfo(frame, nullptr, nullptr, &isSignalFrame) < 0) return complex;
  if (isSignalFrame) {
    complex.setSignalFrame();
    return complex;
  }
  FrameRule simple(FrameRule::Kind::kSimple);
  if (!readCfa(libdw, frame, simple)) return complex;
  for (int number = 0; number < kRegisterCount; ++number) {
    if (!readRegister(libdw, frame, number, simple)) return complex;
  }
  if (simple.kind() == FrameRule::Kind::kSimple) noteSavedWords(simple);
  return simple;
}

FrameRule learnRule(DebugSession& session, DebugSession::Module* module, std::uint64_t address) {
  if (module == nullptr || module->handle == nullptr) return FrameRule();
  // A module whose tables cannot be read is left to libdw, which has a heuristic besides.
  FrameRule const complex(FrameRule::Kind::kComplex);
  LibdwFunctions const& libdw = session.libdw();
  if (!libdw.canLearn()) return complex;
  Dwarf_Addr bias = 0;
  Dwarf_CFI* const tables = libdw.exceptionFrames(module->handle, &bias);
  Dwarf_Frame* frame = nullptr;
  if (tables == nullptr || libdw.frameOfAddress(tables, address - bias, &frame) != 0) return complex;
  std::unique_ptr<Dwarf_Frame, void (*)(Dwarf_Frame*)> const owner(frame, [](Dwarf_Frame* each) { free(each); });
  return readRule(libdw, frame);
}

FrameRule learnAndRemember(std::uint64_t address) {
  DebugSession& session = DebugSession::instance();
  auto const lock = session.lock();
  DebugSession::Module* const module = session.moduleAt(address);
  FrameRule const rule = learnRule(session, module, address);
  currentGeneration.store(session.generation(), std::memory_order_release);
  // A module may be loaded at an address that has none now.
  if (rule.kind() == FrameRule::Kind::kUnknown) return rule;
  std::size_t const place = placeOf(address);
  Slot::Words words;
  bool const isFree = !slots[place].load(words) || words[0] == 0 || words[0] == address;
  Slot& slot = isFree ? slots[place] : slotBeside(place);
  slot.store({address, rule.low(), rule.high(), module->loaded.isPermanent ? kAnyGeneration : session.generation()});
  return rule;
}

// Sees to it that the current generation is that of the modules that are loaded now.
void checkGeneration() {
  DebugSession& session = DebugSession::instance();
  auto const lock = session.lock();
  session.forgetUnloaded();
  currentGeneration.store(session.generation(), std::memory_order_release);
}

// The rule where a look at the first slot is not enough: nothing is known, or another address is remembered there, or
// the module may have been unloaded since.
[[gnu::cold, gnu::noinline]] FrameRule searchRule(std::uint64_t address, std::uint64_t& isChecked) {
  std::size_t const place = placeOf(address);
  Slot::Words words;
  bool const isKnown = isRemembered(address, slots[place], words) || isRemembered(address, slotBeside(place), words);
  if (!isKnown) return learnAndRemember(address);
  if (words[3] != kAnyGeneration) {
    if (isChecked == 0) checkGeneration();
    isChecked = 1;
    if (words[3] != currentGeneration.load(std::memory_order_relaxed)) return learnAndRemember(address);
  }
  return FrameRule(words[1], words[2]);
}

}  // namespace

FrameRule ruleOfFrame(std::uint64_t programCounter, bool isReturnAddress, std::uint64_t& isChecked) {
  std::uint64_t const address = programCounter - (isReturnAddress ? 1 : 0);
  Slot::Words words;
  bool const isSettled = isRemembered(address, slots[placeOf(address)], words) && words[3] == kAnyGeneration;
  return isSettled ? FrameRule(words[1], words[2]) : searchRule(address, isChecked);
}

}  // namespace platform
}  // namespace KV_1_1
