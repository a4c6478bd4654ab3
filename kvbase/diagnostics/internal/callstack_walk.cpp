// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/internal/narrow_copy.h"
#include "kvbase/diagnostics/internal/stack_walker_impl.h"
#include "kvbase/diagnostics/internal/symbol_type_text.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"

namespace platform = KV_1_1::platform;
namespace debug_help = KV_1_1::platform::debug_help;
using KV_1_1::ulong32;
using namespace KV_1_1::diagnostics;

namespace {

constexpr ulong32 kSymbolCapacity = StackWalker::kTextCapacity;
constexpr std::size_t kSymbolBlock = sizeof(debug_help::Symbol64) + kSymbolCapacity;

// The texts take 6 KB, of which only the ends are written.
void clearTexts(StackWalker::CallstackEntry& entry) {
  entry.name[0] = entry.undecoratedName[0] = entry.undecoratedFullName[0] = 0;
  entry.lineFileName[0] = entry.moduleName[0] = entry.loadedImageName[0] = 0;
}

debug_help::StackFrame64 firstFrame(_CONTEXT const& context) {
  debug_help::StackFrame64 frame = {};
  frame.programCounter = {context.Rip, 0, debug_help::kFlatAddress};
  frame.frame = {context.Rsp, 0, debug_help::kFlatAddress};
  frame.stack = {context.Rsp, 0, debug_help::kFlatAddress};
  return frame;
}

}  // namespace

void StackWalkerImpl::walk(StackWalker& walker, void* thread, _CONTEXT& context) const {
  // Zeroed: a name as long as the limit may come without a terminator, and the bytes behind it are not the library's.
  HeapText const block(new (std::nothrow) char[kSymbolBlock]());
  if (block == nullptr) return;
  auto& symbol = *reinterpret_cast<Symbol*>(block.get());
  symbol.sizeOfStruct = sizeof symbol;
  symbol.maxNameLength = kSymbolCapacity;
  HeapText moduleBuffer;

  Entry entry;
  entry.imageBase = 0;
  entry.symbolType = 0;
  entry.symbolTypeText = nullptr;
  StackFrame frame = firstFrame(context);
  for (auto type = StackWalker::EntryFirst; step(walker, thread, frame, context); type = StackWalker::EntryNext) {
    entry.address = frame.programCounter.offset;
    clearTexts(entry);
    entry.symbolDisplacement = 0;
    entry.lineDisplacement = entry.lineNumber = 0;
    if (entry.address == frame.returnAddress.offset) {
      walker.OnDbgHelpErr("StackWalk64-Endless-Callstack!", 0, entry.address);
      return;
    }
    if (entry.address != 0) resolve(walker, symbol, moduleBuffer, entry);
    walker.OnCallstackEntry(type, entry);
    if (frame.returnAddress.offset == 0) {
      walker.OnCallstackEntry(StackWalker::EntryLast, entry);
      platform::errors().setLastError(platform::kNoError);
      return;
    }
  }
}

bool StackWalkerImpl::step(StackWalker& walker, void* thread, StackFrame& frame, _CONTEXT& context) const {
  bool const found = stackWalk(debug_help::kMachineX64, walker.process, thread, &frame, &context, &readMemory,
                               symFunctionTableAccess, symGetModuleBase, nullptr) != 0;
  if (!found) walker.OnDbgHelpErr("StackWalk64", platform::errors().lastError(), frame.programCounter.offset);
  return found;
}

void StackWalkerImpl::resolve(StackWalker& walker, Symbol& symbol, HeapText& moduleBuffer, Entry& entry) const {
  resolveSymbol(walker, symbol, entry);
  if (symGetLine != nullptr) resolveLine(walker, entry);
  resolveModule(walker, moduleBuffer, entry);
}

void StackWalkerImpl::resolveSymbol(StackWalker& walker, Symbol& symbol, Entry& entry) const {
  std::uint64_t displacement = 0;
  if (symGetSymbol(walker.process, entry.address, &displacement, &symbol) == 0) {
    walker.OnDbgHelpErr("SymGetSymFromAddr64", platform::errors().lastError(), entry.address);
    return;
  }
  entry.symbolDisplacement = displacement;
  copyText(entry.name, symbol.name);
  undecorateSymbolName(symbol.name, entry.undecoratedName, sizeof entry.undecoratedName,
                       debug_help::kUndecorateNameOnly);
  undecorateSymbolName(symbol.name, entry.undecoratedFullName, sizeof entry.undecoratedFullName,
                       debug_help::kUndecorateComplete);
  entry.undecoratedName[sizeof entry.undecoratedName - 1] = 0;
  entry.undecoratedFullName[sizeof entry.undecoratedFullName - 1] = 0;
}

void StackWalkerImpl::resolveLine(StackWalker& walker, Entry& entry) const {
  ulong32 displacement = 0;
  debug_help::Line64 line = {};
  line.sizeOfStruct = sizeof line;
  if (symGetLine(walker.process, entry.address, &displacement, &line) == 0) {
    walker.OnDbgHelpErr("SymGetLineFromAddr64", platform::errors().lastError(), entry.address);
    return;
  }
  entry.lineDisplacement = displacement;
  entry.lineNumber = line.lineNumber;
  if (line.fileName != nullptr) copyText(entry.lineFileName, line.fileName);
}

// The texts are copied out of the work buffer itself, which serves all frames of a walk.
void StackWalkerImpl::resolveModule(StackWalker& walker, HeapText& moduleBuffer, Entry& entry) const {
  ModuleInfo* const record = moduleRecord(moduleBuffer);
  if (record == nullptr || !fillModuleRecord(walker.process, entry.address, *record)) {
    walker.OnDbgHelpErr("SymGetModuleInfo64", platform::errors().lastError(), entry.address);
    return;
  }
  entry.symbolTypeText = symbolTypeOfFrame(record->symbolType);
  copyText(entry.moduleName, record->moduleName, sizeof record->moduleName);
  entry.imageBase = record->baseOfImage;
  copyText(entry.loadedImageName, record->loadedImageName, sizeof record->loadedImageName);
}

int StackWalkerImpl::readMemory(void* walkedProcess, std::uint64_t address, void* buffer, ulong32 size,
                                ulong32* bytesRead) {
  return StackWalker::myReadProcMem(walkedProcess, address, buffer, size, bytesRead);
}
