// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/resolved_addresses.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <memory>
#include <string_view>

#include "kvbase/core/lazy.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/debug/debug_session.h"
#include "kvbase/platform/linux/debug/demangle.h"
#include "kvbase/platform/linux/debug/frame_steps.h"
#include "kvbase/platform/linux/errors/last_error.h"

namespace KV_1_1 {
namespace platform {

namespace {

// What has been found out about an address. Symbol and line are looked up separately: a walk that wants no lines pays
// for none.
struct Resolved {
  std::uint64_t address = 0;  // as looked up; 0 for an entry that is not used
  std::uint32_t generation = 0;
  bool symbolKnown = false;
  bool lineKnown = false;
  std::string name;  // empty if there is no symbol
  std::uint64_t symbolStart = 0;
  std::uint64_t symbolSize = 0;
  std::string file;  // empty if there is no line
  ulong32 line = 0;
  std::uint64_t lineStart = 0;
};

struct Undecorated {
  std::string name;
  bool nameOnly = false;
  std::string text;
};

constexpr std::size_t kBits = 11;
constexpr std::size_t kNameBits = 10;

// Both tables are used under the lock of the session. An entry gives way to the next one that belongs in its place.
struct Tables {
  std::array<Resolved, std::size_t{1} << kBits> addresses;
  std::array<Undecorated, std::size_t{1} << kNameBits> names;
};

Tables& tables() {
  static Lazy<Tables> all;
  return all.get();
}

// A line that has been found. The name of its file outlives the lock only as a copy that belongs to the thread.
struct FoundLine {
  std::uint64_t counter;  // 0 for none
  std::uint64_t start;
  ulong32 number;
  char file[kResolvedTextCapacity];
};
// Whoever asks for the symbol of an address asks for its line next, which is then at hand. It is given once: who asks
// again may have loaded other modules meanwhile.
thread_local FoundLine nextLine;

void noteLine(std::uint64_t counter, Resolved const& entry) {
  FoundLine& line = nextLine;
  line.counter = counter;
  line.start = entry.lineStart;
  line.number = entry.line;
  memcpy(line.file, entry.file.c_str(), entry.file.size() + 1);
}

void giveLine(FoundLine& found, ulong32& displacement, debug_help::Line64& line) {
  displacement = static_cast<ulong32>(found.counter - found.start);
  line.key = nullptr;
  line.lineNumber = found.number;
  line.fileName = found.file;
  line.address = found.start;
  found.counter = 0;
}

Resolved& entryOf(std::uint64_t address, std::uint32_t generation) {
  Resolved& entry = tables().addresses[(address * 0x9E3779B97F4A7C15) >> (64 - kBits)];
  if (entry.address != address || entry.generation != generation) {
    entry = Resolved();
    entry.address = address;
    entry.generation = generation;
  }
  return entry;
}

void findSymbol(DebugSession& session, Resolved& entry) {
  DebugSession::Module* const module = session.moduleAt(entry.address);
  if (module != nullptr && module->handle != nullptr && session.libdw().symbolOfAddress != nullptr) {
    module->isOpen = true;
    GElf_Off offset = 0;
    GElf_Sym symbol = {};
    char const* const name =
        session.libdw().symbolOfAddress(module->handle, entry.address, &offset, &symbol, nullptr, nullptr, nullptr);
    if (name != nullptr) {
      entry.name.assign(name, strnlen(name, kResolvedTextCapacity - 1));
      entry.symbolStart = entry.address - offset;
      entry.symbolSize = symbol.st_size;
    }
  }
  entry.symbolKnown = module != nullptr;
}

void setLine(Resolved& entry, char const* file, int number, std::uint64_t start) {
  entry.file.assign(file, strnlen(file, kResolvedTextCapacity - 1));
  entry.line = static_cast<ulong32>(number);
  entry.lineStart = start;
}

// Some compilers write no table that leads from an address to its unit, so that the units themselves are asked.
void searchLineInUnits(LibdwFunctions const& libdw, Dwfl_Module* module, Resolved& entry) {
  if (!libdw.canSearchUnits()) return;
  Dwarf_Addr bias = 0;
  for (Dwarf_Die* unit = nullptr; (unit = libdw.nextUnit(module, unit, &bias)) != nullptr;) {
    if (libdw.unitHasAddress(unit, entry.address - bias) != 1) continue;
    Dwarf_Line* const line = libdw.lineOfUnit(unit, entry.address - bias);
    char const* const file = line == nullptr ? nullptr : libdw.lineFile(line, nullptr, nullptr);
    int number = 0;
    Dwarf_Addr start = 0;
    bool const isComplete =
        file != nullptr && libdw.lineNumber(line, &number) == 0 && libdw.lineAddress(line, &start) == 0;
    if (isComplete) setLine(entry, file, number, start + bias);
    return;
  }
}

void findLine(DebugSession& session, Resolved& entry) {
  DebugSession::Module* const module = session.moduleAt(entry.address);
  if (module != nullptr && module->handle != nullptr && session.libdw().canLine()) {
    module->isOpen = true;
    Dwfl_Line* const line = session.libdw().lineOfAddress(module->handle, entry.address);
    int number = 0;
    Dwarf_Addr start = 0;
    char const* const file =
        line == nullptr ? nullptr : session.libdw().lineInfo(line, &start, &number, nullptr, nullptr, nullptr);
    if (file != nullptr) {
      setLine(entry, file, number, start);
    } else {
      searchLineInUnits(session.libdw(), module->handle, entry);
    }
  }
  entry.lineKnown = module != nullptr;
}

// The address to look up for a program counter. A call that does not return may be the last instruction of a function,
// so that the address behind it belongs to another one.
std::uint64_t lookupAddress(std::uint64_t counter) {
  return isLastReturnAddress(counter) ? counter - 1 : counter;
}

// The file name without folder and ending: KVBase for /lib/KVBase.so, libc for libc.so.6.
std::string_view shortName(std::string_view path) {
  std::size_t const slash = path.rfind('/');
  std::string_view const file = slash == std::string_view::npos ? path : path.substr(slash + 1);
  std::size_t const library = file.find(".so");
  bool const isLibrary = library != std::string_view::npos && (library + 3 == file.size() || file[library + 3] == '.');
  std::size_t const end = isLibrary ? library : file.rfind('.');
  return end == std::string_view::npos || end == 0 ? file : file.substr(0, end);
}

enum SymbolType { kNoSymbols = 0, kExported = 4, kDeferred = 5, kSymbols = 6, kDebugData = 7 };

// The kind of symbols of a module. Its file is not opened to find out.
SymbolType typeOf(DebugSession& session, DebugSession::Module& module) {
  LibdwFunctions const& libdw = session.libdw();
  if (!module.isOpen || module.handle == nullptr) return kDeferred;
  Dwarf_Addr bias = 0;
  if (libdw.debugData != nullptr && libdw.debugData(module.handle, &bias) != nullptr) return kDebugData;
  if (libdw.symbolCount == nullptr) return kSymbols;
  return libdw.symbolCount(module.handle) > 1 ? kSymbols : kNoSymbols;
}

}  // namespace

bool symbolAt(std::uint64_t address, std::uint64_t& displacement, debug_help::Symbol64& symbol) {
  DebugSession& session = DebugSession::instance();
  auto const lock = session.lock();
  session.forgetUnloaded();
  Resolved& entry = entryOf(lookupAddress(address), session.generation());
  if (!entry.symbolKnown) findSymbol(session, entry);
  if (entry.name.empty()) {
    nextLine.counter = 0;
    return failWith(entry.symbolKnown ? kInvalidAddress : kModuleNotFound);
  }
  if (entry.file.empty()) {
    nextLine.counter = 0;
  } else {
    noteLine(address, entry);
  }
  displacement = address - entry.symbolStart;
  symbol.address = entry.symbolStart;
  symbol.size = static_cast<ulong32>(entry.symbolSize);
  symbol.flags = 0;
  // The limit counts the terminator if the record is followed by exactly so many bytes, as it is when it comes from a
  // block of the size that callers allocate.
  if (symbol.maxNameLength == 0) return true;
  std::size_t const size = entry.name.copy(symbol.name, symbol.maxNameLength - 1);
  symbol.name[size] = '\0';
  return true;
}

bool lineAt(std::uint64_t address, ulong32& displacement, debug_help::Line64& line) {
  FoundLine& found = nextLine;
  if (address != 0 && found.counter == address) {
    giveLine(found, displacement, line);
    return true;
  }
  DebugSession& session = DebugSession::instance();
  auto const lock = session.lock();
  session.forgetUnloaded();
  Resolved& entry = entryOf(lookupAddress(address), session.generation());
  if (!entry.lineKnown) findLine(session, entry);
  if (entry.file.empty()) return failWith(entry.lineKnown ? kInvalidAddress : kModuleNotFound);
  noteLine(address, entry);
  giveLine(found, displacement, line);
  return true;
}

bool moduleInfoAt(std::uint64_t address, debug_help::ModuleInfo64& info) {
  DebugSession& session = DebugSession::instance();
  auto const lock = session.lock();
  DebugSession::Module* const module = session.moduleAt(lookupAddress(address));
  if (module == nullptr) return failWith(kModuleNotFound);
  info = debug_help::ModuleInfo64();
  info.sizeOfStruct = sizeof info;
  info.baseOfImage = module->loaded.start;
  info.imageSize = static_cast<ulong32>(module->loaded.end - module->loaded.start);
  info.symbolType = typeOf(session, *module);
  shortName(module->loaded.path).copy(info.moduleName, sizeof info.moduleName - 1);
  module->loaded.path.copy(info.imageName, sizeof info.imageName - 1);
  module->loaded.path.copy(info.loadedImageName, sizeof info.loadedImageName - 1);
  return true;
}

ulong32 undecorate(char const* name, char* output, ulong32 capacity, bool nameOnly) {
  if (capacity == 0) return 0;
  std::string_view const key = name;
  auto const lock = DebugSession::instance().lock();
  std::size_t const hash = std::hash<std::string_view>()(key) + (nameOnly ? 1 : 0);
  Undecorated& entry = tables().names[hash % tables().names.size()];
  if (entry.nameOnly != nameOnly || entry.name != key || entry.text.empty()) {
    entry.text.clear();
    entry.name = key;
    entry.nameOnly = nameOnly;
    entry.text = nameOnly ? demangledNameOnly(name) : demangledName(name);
  }
  std::size_t const size = entry.text.copy(output, capacity - 1);
  output[size] = '\0';
  return static_cast<ulong32>(size);
}

}  // namespace platform
}  // namespace KV_1_1
