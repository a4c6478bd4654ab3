// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/frame_steps.h"

#include <dwarf.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <utility>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/debug/debug_session.h"
#include "kvbase/platform/linux/debug/frame_rules.h"
#include "kvbase/platform/linux/debug/own_memory.h"
#include "kvbase/platform/linux/errors/last_error.h"

namespace KV_1_1 {
namespace platform {

namespace {

using debug_help::StackFrame64;

// What a record has in StackFrame64::reserved[0]: what the program counter of the next frame is. The next words of it are
// the number of signal frames so far and what ruleOfFrame keeps; kernelHelp[0] is the number of the walk.
enum NextFrame : std::uint64_t { kFirst, kReturned, kInterrupted, kBroken };
// A frame of a signal may lie anywhere, so that the stack pointer does not tell of a circle; the number of them does.
constexpr std::uint64_t kMostSignalFrames = 100;
// The return address of a frame whose caller cannot be found. The record of a frame with none ends the stack in order.
constexpr std::uint64_t kUnknownAddress = ~std::uint64_t{0};

// By the numbers of DWARF; the last one is the program counter.
constexpr int kStepRegisters = 17;
constexpr int kStackPointer = 7;
constexpr int kProgramCounter = 16;
constexpr std::uint64_t _CONTEXT::*kRegisters[kStepRegisters] = {
    &_CONTEXT::Rax, &_CONTEXT::Rdx, &_CONTEXT::Rcx, &_CONTEXT::Rbx, &_CONTEXT::Rsi, &_CONTEXT::Rdi,
    &_CONTEXT::Rbp, &_CONTEXT::Rsp, &_CONTEXT::R8,  &_CONTEXT::R9,  &_CONTEXT::R10, &_CONTEXT::R11,
    &_CONTEXT::R12, &_CONTEXT::R13, &_CONTEXT::R14, &_CONTEXT::R15, &_CONTEXT::Rip};
constexpr std::uint64_t _CONTEXT::*kSaved[kSavedRegisterCount] = {
    &_CONTEXT::Rbx, &_CONTEXT::Rbp, &_CONTEXT::R12, &_CONTEXT::R13, &_CONTEXT::R14, &_CONTEXT::R15, &_CONTEXT::Rip};

constexpr std::size_t kWindowWords = 64;

// What a thread knows of the stack that it walks.
struct WalkedStack {
  std::uint64_t lastReturnAddress;
  // A part of the stack that has been read at once, because calling the routine that reads takes longer than a step.
  std::uint64_t walk;  // the number of the walk that has read it; 0 for nothing
  std::uint64_t start;
  std::uint64_t words[kWindowWords];
};
thread_local WalkedStack walkedStack;

// Asking the loader for the address takes a part of the time of a step, and the compiler would ask again for each use.
WalkedStack& stackOfThread() {
  WalkedStack* stack = &walkedStack;
  asm("" : "+r"(stack));
  return *stack;
}

static_assert(kMostSavedWords <= kWindowWords, "a frame's registers are read at once");

// Not by thread: a walk that is continued on another thread must not find the words of another walk there.
std::atomic<std::uint64_t> walkCount{0};

class StackReader {
 public:
  StackReader(void* process, debug_help::ReadProcessMemory64 routine, std::uint64_t walk, WalkedStack& stack)
      : process_(process), routine_(routine), walk_(walk), stack_(&stack) {}

  bool read(std::uint64_t address, void* buffer, std::size_t size) const {
    if (routine_ == nullptr) {
      std::size_t count = 0;
      return readOwnMemory(address, buffer, size, count);
    }
    ulong32 count = 0;
    return routine_(process_, address, buffer, static_cast<ulong32>(size), &count) != 0 && count == size;
  }

  // The end of at most kWindowWords words that end at an address, valid until the next call; null if they cannot be read.
  std::uint64_t const* wordsBelow(std::uint64_t end, std::size_t count) const {
    std::uint64_t const distance = end - stack_->start;
    bool const isThere = stack_->walk == walk_ && distance <= sizeof stack_->words && distance >= count * 8;
    return isThere && distance % 8 == 0 ? endInWindow(distance) : readWindow(end, count);
  }

 private:
  std::uint64_t const* endInWindow(std::uint64_t distance) const {
    return reinterpret_cast<std::uint64_t const*>(reinterpret_cast<char const*>(stack_->words) + distance);
  }

  // Not inlined, so that the way that most steps take stays short.
  [[gnu::noinline]] std::uint64_t const* readWindow(std::uint64_t end, std::size_t count) const {
    std::uint64_t const start = end - count * 8;
    // The window may reach beyond what can be read.
    bool const isWhole = read(start, stack_->words, sizeof stack_->words);
    stack_->walk = isWhole ? walk_ : 0;
    stack_->start = start;
    return isWhole || read(start, stack_->words, count * 8) ? stack_->words + count : nullptr;
  }

  void* process_;
  debug_help::ReadProcessMemory64 routine_;
  std::uint64_t walk_;
  WalkedStack* stack_;
};

// A step by libdw itself. It calls back for registers and memory.
struct GeneralStep {
  _CONTEXT const* start;
  StackReader const* reader;
  bool isReturnAddress;
  LibdwFunctions const* libdw;
  int frames;
  bool hasCaller;
  _CONTEXT caller;
};
GeneralStep* currentStep;  // under the lock of the session

bool isTheThread(Dwfl*, pid_t, void*, void** argument) {
  *argument = currentStep;
  return true;
}

pid_t nextThread(Dwfl*, void*, void** argument) {
  bool const isFirst = *argument == nullptr;
  *argument = currentStep;
  return isFirst ? getpid() : 0;
}

bool readWord(Dwfl*, Dwarf_Addr address, Dwarf_Word* word, void*) {
  return currentStep->reader->read(address, word, sizeof *word);
}

bool setRegisters(Dwfl_Thread* thread, void*) {
  Dwarf_Word values[kStepRegisters];
  for (int i = 0; i < kStepRegisters; ++i) values[i] = currentStep->start->*kRegisters[i];
  // libdw takes the first frame's counter for an exact one.
  if (currentStep->isReturnAddress) --values[kProgramCounter];
  return currentStep->libdw->setRegisters(thread, 0, kStepRegisters, values);
}

int visitFrame(Dwfl_Frame* frame, void*) {
  GeneralStep& step = *currentStep;
  if (step.frames++ == 0) return DWARF_CB_OK;
  Dwarf_Addr counter = 0;
  if (!step.libdw->framePc(frame, &counter, nullptr)) return DWARF_CB_ABORT;
  step.caller = *step.start;
  // Registers whose values are lost keep those of the frame itself.
  for (unsigned i = 0; i < kProgramCounter && step.libdw->frameRegisterValue != nullptr; ++i) {
    Dwarf_Word value = 0;
    if (step.libdw->frameRegisterValue(frame, i, &value) == 0) step.caller.*kRegisters[i] = value;
  }
  step.caller.Rip = counter;
  step.hasCaller = true;
  return DWARF_CB_ABORT;
}

constexpr Dwfl_Thread_Callbacks kThreadCallbacks = {nextThread, isTheThread, readWord, setRegisters, nullptr, nullptr};

enum class StepResult { kCaller, kOutermost, kFailed };

[[gnu::cold, gnu::noinline]] StepResult stepByLibdw(_CONTEXT& context, bool isReturnAddress, bool isSignalFrame,
                                                    StackReader const& reader) {
  DebugSession& session = DebugSession::instance();
  auto const lock = session.lock();
  DebugSession::Module const* const module = session.moduleAt(context.Rip - (isReturnAddress ? 1 : 0));
  if (module == nullptr || !session.libdw().canStep()) return StepResult::kFailed;
  // Fails if it has been done before.
  session.libdw().attachState(module->session, nullptr, getpid(), &kThreadCallbacks, nullptr);
  GeneralStep step = {&context, &reader, isReturnAddress, &session.libdw(), 0, false, {}};
  currentStep = &step;
  int const result = session.libdw().walkThread(module->session, getpid(), visitFrame, nullptr);
  currentStep = nullptr;
  if (step.hasCaller) {
    if (!isSignalFrame && step.caller.Rsp <= context.Rsp) return StepResult::kFailed;
    context = step.caller;
    return StepResult::kCaller;
  }
  return result == 0 && step.frames == 1 ? StepResult::kOutermost : StepResult::kFailed;
}

[[gnu::cold, gnu::noinline]] StepResult restoreOneByOne(FrameRule rule, std::uint64_t end, _CONTEXT& context,
                                                        StackReader const& reader) {
  std::uint64_t saved[kSavedRegisterCount];
  for (std::size_t i = 0; i < kSavedRegisterCount; ++i) {
    saved[i] = context.*kSaved[i];
    std::uint64_t const address = end + static_cast<std::uint64_t>(std::int64_t{rule.savedAt(i)} * 8);
    if (rule.savedAt(i) != 0 && !reader.read(address, &saved[i], sizeof saved[i])) return StepResult::kFailed;
  }
  for (std::size_t i = 0; i < kSavedRegisterCount; ++i) context.*kSaved[i] = saved[i];
  context.Rsp = end;
  return StepResult::kCaller;
}

// The loop over the registers, written out: this is what a walk spends its time with.
template <std::size_t... I>
void restoreAll(FrameRule rule, std::uint64_t const* end, _CONTEXT& context, std::index_sequence<I...>) {
  auto const restore = [&](int at, std::uint64_t& value) {
    if (at != 0) value = end[at];
  };
  (restore(rule.savedAt(I), context.*kSaved[I]), ...);
}

// The stack pointer, which most rules are about, is not looked up: its address would be one more thing to wait for.
std::uint64_t baseOf(FrameRule rule, _CONTEXT const& context) {
  return rule.base() == kStackPointer ? context.Rsp : context.*kRegisters[rule.base()];
}

StepResult stepByRule(FrameRule rule, _CONTEXT& context, StackReader const& reader) {
  std::uint64_t end = baseOf(rule, context) + rule.offset();
  if (rule.isIndirect()) {
    std::uint64_t const* const wordEnd = reader.wordsBelow(end + 8, 1);
    if (wordEnd == nullptr) return StepResult::kFailed;
    end = wordEnd[-1];
  }
  if (end <= context.Rsp) return StepResult::kFailed;
  if (rule.savedWords() == 0) return restoreOneByOne(rule, end, context, reader);
  std::uint64_t const* const words = reader.wordsBelow(end, rule.savedWords());
  if (words == nullptr) return StepResult::kFailed;
  restoreAll(rule, words, context, std::make_index_sequence<kSavedRegisterCount>());
  context.Rsp = end;
  return StepResult::kCaller;
}

// Code that no module has: a call through a wrong pointer has pushed its return address and nothing else.
[[gnu::cold, gnu::noinline]] StepResult stepOutOfNowhere(_CONTEXT& context, StackReader const& reader) {
  std::uint64_t address = 0;
  if (!reader.read(context.Rsp, &address, sizeof address)) return StepResult::kFailed;
  context.Rip = address;
  context.Rsp += sizeof address;
  return StepResult::kCaller;
}

StepResult stepToCaller(FrameRule rule, _CONTEXT& context, bool isReturnAddress, StackReader const& reader) {
  switch (rule.kind()) {
    case FrameRule::Kind::kSimple:
      return stepByRule(rule, context, reader);
    case FrameRule::Kind::kComplex:
      return stepByLibdw(context, isReturnAddress, rule.isSignalFrame(), reader);
    case FrameRule::Kind::kUnknown:
      return stepOutOfNowhere(context, reader);
    case FrameRule::Kind::kOutermost:
      break;
  }
  return StepResult::kOutermost;
}

}  // namespace

bool stepFrame(StackFrame64& frame, _CONTEXT& context, void* process, debug_help::ReadProcessMemory64 readMemory) {
  std::uint64_t& next = frame.reserved[0];
  std::uint64_t& signalFrames = frame.reserved[1];
  std::uint64_t& walk = frame.kernelHelp[0];
  if (next == kBroken) return failWith(kPartialCopy);
  if (next == kFirst) walk = walkCount.fetch_add(1, std::memory_order_relaxed) + 1;
  WalkedStack& stack = stackOfThread();
  StackReader const reader(process, readMemory, walk, stack);

  bool const isReturnAddress = next == kReturned;
  std::uint64_t const counter = context.Rip;
  FrameRule const rule = ruleOfFrame(counter, isReturnAddress, frame.reserved[2]);
  if (rule.kind() == FrameRule::Kind::kUnknown && next != kFirst) return failWith(kInvalidAddress);
  frame.programCounter.offset = counter;
  frame.stack.offset = context.Rsp;
  StepResult result = StepResult::kFailed;
  if (!rule.isSignalFrame() || ++signalFrames <= kMostSignalFrames) {
    result = stepToCaller(rule, context, isReturnAddress, reader);
  }
  // The record of the last frame of a stack has no return address.
  frame.frame.offset = context.Rsp;
  frame.returnAddress.offset = result == StepResult::kCaller ? context.Rip : 0;
  if (result == StepResult::kFailed) frame.returnAddress.offset = kUnknownAddress;
  next = result == StepResult::kFailed ? kBroken : rule.isSignalFrame() ? kInterrupted : kReturned;
  stack.lastReturnAddress = isReturnAddress ? counter : 0;
  return true;
}

bool isLastReturnAddress(std::uint64_t address) {
  return address != 0 && address == walkedStack.lastReturnAddress;
}

}  // namespace platform
}  // namespace KV_1_1
