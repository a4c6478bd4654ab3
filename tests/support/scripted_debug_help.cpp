// SPDX-License-Identifier: MIT
#include "tests/support/scripted_debug_help.h"

#include <cstdlib>

namespace KV_1_1 {
namespace testing {

namespace {

using namespace platform::debug_help;

ScriptedDebugHelp* installed = nullptr;

ScriptedDebugHelp& help() {
  return ScriptedDebugHelp::active();
}

void put(char const* text, char* buffer, std::size_t capacity) {
  std::size_t const size = std::strlen(text) + 1;
  std::memcpy(buffer, text, size < capacity ? size : capacity);
}

// --- dbghelp.dll --------------------------------------------------------------------------------------------------------

Bool symInitialize(void* process, char const* path, Bool invade) {
  help().note("SymInitialize ", process == help().process ? "process " : "? ", path, " ", invade);
  return help().initializes || help().fail();
}

Bool symCleanup(void* process) {
  help().note("SymCleanup ", process == help().process ? "process" : "?");
  return 1;
}

ulong32 symGetOptions() {
  help().note("SymGetOptions");
  return help().symOptions;
}

ulong32 symSetOptions(ulong32 options) {
  help().note("SymSetOptions ", options);
  return help().optionsAfterSetting != 0 ? help().optionsAfterSetting : options;
}

Bool symGetSearchPath(void*, char* path, ulong32 capacity) {
  help().note("SymGetSearchPath ", capacity, path[0] == 0 && path[capacity - 1] == 0 ? "" : " not cleared");
  if (!help().hasSearchPath) return help().fail();
  put(help().searchPath.c_str(), path, capacity);
  return 1;
}

std::uint64_t symLoadModule(void*, void* file, char const* image, char const* module, std::uint64_t base,
                            ulong32 size) {
  help().note("SymLoadModule64 ", file == nullptr ? "" : "file ", image, " ", module, " ", base, " ", size);
  auto const found = help().loadErrors.find(image);
  if (found == help().loadErrors.end()) return base;
  platform::errors().setLastError(found->second);
  return 0;
}

Bool symGetModuleInfo(void*, std::uint64_t address, ModuleInfo64* info) {
  help().note("SymGetModuleInfo64 ", address, " ", info->sizeOfStruct);
  auto const found = help().modules.find(address);
  if (found == help().modules.end()) return help().fail();
  // A newer library may fill a longer record; the work buffer has room for it.
  std::memset(info, 0xEE, 4096);
  *info = found->second;
  info->sizeOfStruct = 1680;
  return 1;
}

Bool symGetSymbol(void*, std::uint64_t address, std::uint64_t* displacement, Symbol64* symbol) {
  help().note("SymGetSymFromAddr64 ", address, " ", symbol->sizeOfStruct, " ", symbol->maxNameLength);
  *displacement = 77;
  auto const found = help().symbols.find(address);
  if (found == help().symbols.end()) return help().fail();
  *displacement = found->second.displacement;
  put(found->second.name.c_str(), reinterpret_cast<char*>(symbol) + offsetof(Symbol64, name), symbol->maxNameLength);
  return 1;
}

ulong32 undecorate(char const* name, char* output, ulong32 capacity, ulong32 flags) {
  help().note("UnDecorateSymbolName ", flags, " ", capacity);
  for (auto const& entry : help().symbols) {
    if (entry.second.name.compare(0, std::strlen(name), name) != 0) continue;
    put((flags == kUndecorateNameOnly ? entry.second.undecorated : entry.second.complete).c_str(), output, capacity);
    return 1;
  }
  return 0;
}

Bool symGetLine(void*, std::uint64_t address, ulong32* displacement, Line64* line) {
  help().note("SymGetLineFromAddr64 ", address, " ", line->sizeOfStruct);
  *displacement = 66;
  auto const found = help().lines.find(address);
  if (found == help().lines.end()) return help().fail();
  *displacement = found->second.displacement;
  line->lineNumber = found->second.number;
  line->fileName = found->second.hasFile ? &found->second.file[0] : nullptr;
  return 1;
}

void* functionTableAccess(void*, std::uint64_t) {
  return nullptr;
}

std::uint64_t moduleBase(void*, std::uint64_t) {
  return 0;
}

Bool stackWalk(ulong32 machine, void* process, void* thread, StackFrame64* frame, void* context,
               ReadProcessMemory64 readMemory, FunctionTableAccess64 functionTable, GetModuleBase64 base,
               TranslateAddress64 translate) {
  ScriptedDebugHelp& script = help();
  bool const asAgreed = machine == 0x8664 && process == script.process && functionTable == &functionTableAccess &&
                        base == &moduleBase && translate == nullptr;
  script.note("StackWalk64 ", thread == script.thread ? "other" : "self", asAgreed ? "" : " wrong arguments");
  if (script.steps == 0) {
    script.firstFrame = *frame;
    std::memcpy(&script.firstContext, context, sizeof script.firstContext);
    script.contextGiven = context;
    // The walk changes its context.
    static_cast<_CONTEXT*>(context)->Rip = 0;
  }
  if (script.readsAt != 0) {
    char bytes[4] = {};
    ulong32 count = 0xFFFFFFFF;
    script.readResult = readMemory(process, script.readsAt, bytes, sizeof bytes, &count);
    script.bytesRead.assign(bytes, count <= sizeof bytes ? count : 0);
  }
  bool const atEnd = script.steps >= script.frames.size();
  if (atEnd && !(script.endless && !script.frames.empty())) return script.fail();
  ScriptedDebugHelp::Frame const& next = atEnd ? script.frames.back() : script.frames[script.steps];
  ++script.steps;
  frame->programCounter.offset = next.programCounter;
  frame->returnAddress.offset = next.returnAddress;
  return 1;
}

// --- kernel32.dll -------------------------------------------------------------------------------------------------------

void* createSnapshot(ulong32 flags, ulong32 processId) {
  help().note("CreateToolhelp32Snapshot ", flags, " ", processId);
  help().nextModule = 0;
  if (!help().takesSnapshot) return ScriptedDebug::handle(help().fail() ? 0 : -1);
  ++help().openHandles;
  return ScriptedDebug::handle(0x33);
}

Bool nextEntry(void*, ModuleEntry32* entry) {
  if (help().nextModule >= help().snapshot.size() || entry->size != 568) return 0;
  ScriptedDebugHelp::Module const& module = help().snapshot[help().nextModule++];
  store(entry->path, module.path);
  store(entry->moduleName, module.name);
  entry->baseAddress = reinterpret_cast<unsigned char*>(static_cast<std::uintptr_t>(module.base));
  entry->baseSize = module.size;
  return 1;
}

// --- psapi.dll ----------------------------------------------------------------------------------------------------------

Bool enumerateModules(void*, HINSTANCE* modules, ulong32 size, ulong32* needed) {
  help().note("EnumProcessModules ", size);
  *needed = 0;
  if (!help().enumerates) return help().fail();
  std::size_t const count = help().listed.size();
  for (std::size_t i = 0; i < count && (i + 1) * sizeof(HINSTANCE) <= size; ++i)
    modules[i] = reinterpret_cast<HINSTANCE>(i + 1);
  *needed = help().needed != 0 ? help().needed : static_cast<ulong32>(count * sizeof(HINSTANCE));
  return 1;
}

ScriptedDebugHelp::Module const& listedModule(HINSTANCE handle) {
  return help().listed[reinterpret_cast<std::uintptr_t>(handle) - 1];
}

Bool moduleInformation(void*, HINSTANCE module, ModuleInformation* information, ulong32 size) {
  if (!help().knowsModules || size != sizeof *information) return help().fail();
  information->base = reinterpret_cast<void*>(static_cast<std::uintptr_t>(listedModule(module).base));
  information->size = listedModule(module).size;
  return 1;
}

ulong32 writeName(std::string const& text, char* name, ulong32 capacity) {
  if (!help().knowsModules) return 0;
  put(text.c_str(), name, capacity);
  return static_cast<ulong32>(text.size());
}

ulong32 moduleFileName(void*, HINSTANCE module, char* name, ulong32 capacity) {
  return writeName(listedModule(module).path, name, capacity);
}

ulong32 moduleBaseName(void*, HINSTANCE module, char* name, ulong32 capacity) {
  return writeName(listedModule(module).name, name, capacity);
}

template <class Callee>
ScriptedDebug::Function as(Callee callee) {
  return reinterpret_cast<ScriptedDebug::Function>(callee);
}

}  // namespace

ScriptedDebugHelp::ScriptedDebugHelp() {
  if (installed != nullptr) std::abort();
  installed = this;
  libraries[KVW("dbghelp.dll")] = {
      {"SymInitialize", as(&symInitialize)},
      {"SymCleanup", as(&symCleanup)},
      {"StackWalk64", as(&stackWalk)},
      {"SymGetOptions", as(&symGetOptions)},
      {"SymSetOptions", as(&symSetOptions)},
      {"SymFunctionTableAccess64", as(&functionTableAccess)},
      {"SymGetLineFromAddr64", as(&symGetLine)},
      {"SymGetModuleBase64", as(&moduleBase)},
      {"SymGetModuleInfo64", as(&symGetModuleInfo)},
      {"SymGetSymFromAddr64", as(&symGetSymbol)},
      {"UnDecorateSymbolName", as(&undecorate)},
      {"SymLoadModule64", as(&symLoadModule)},
      {"SymGetSearchPath", as(&symGetSearchPath)},
  };
  libraries[KVW("kernel32.dll")] = {
      {"CreateToolhelp32Snapshot", as(&createSnapshot)},
      {"Module32First", as(&nextEntry)},
      {"Module32Next", as(&nextEntry)},
  };
  libraries[KVW("psapi.dll")] = {
      {"EnumProcessModules", as(&enumerateModules)},
      {"GetModuleFileNameExA", as(&moduleFileName)},
      {"GetModuleBaseNameA", as(&moduleBaseName)},
      {"GetModuleInformation", as(&moduleInformation)},
  };
  // Later loading allocates nothing.
  for (auto& library : libraries) loaded[reinterpret_cast<HINSTANCE>(&library)] = 0;
  threadRegisters.Rip = 0x1000;
  threadRegisters.Rsp = 0x7000;
  snapshot = {{"C:\\app\\tool.exe", "tool.exe", 0x400000, 8192}};
}

ScriptedDebugHelp::~ScriptedDebugHelp() {
  installed = nullptr;
}

ScriptedDebugHelp& ScriptedDebugHelp::active() {
  if (installed == nullptr) std::abort();
  return *installed;
}

}  // namespace testing
}  // namespace KV_1_1
