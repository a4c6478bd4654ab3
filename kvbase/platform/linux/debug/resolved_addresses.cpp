// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/resolved_addresses.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "kvbase/core/lazy.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/debug/debug_session.h"
#include "kvbase/platform/linux/debug/demangle.h"
#include "kvbase/platform/linux/debug/frame_steps.h"
#include "kvbase/platform/linux/debug/guarded.h"
#include "kvbase/platform/linux/errors/last_error.h"

namespace KV_1_1 {
namespace platform {

namespace {

using debug_help::Bool;

enum SymbolType { kNoSymbols = 0, kExported = 4, kDeferred = 5, kSymbols = 6, kDebugData = 7 };

// What has been found out about an address.
struct Resolved {
  std::uint64_t address = 0;  // as looked up
  DebugSession::Module const* module = nullptr;
  SymbolType type = kDeferred;
  std::string name;  // empty if there is no symbol
  std::uint64_t symbolStart = 0;
  std::uint64_t symbolSize = 0;
  char const* file = nullptr;  // null if there is no line; stays as long as the library
  ulong32 line = 0;
  std::uint64_t lineStart = 0;
};

// The forms of a name that have been asked for; the others are empty.
struct Undecorated {
  std::string name;
  std::string complete;
  std::string nameOnly;
};

// The addresses in modules that are never unloaded. What is in the table is neither changed nor moved, so that readers
// take no lock. A table that is full takes no more. It is one of the globals without a constructor, so that a look-up
// does not ask whether it is there.
class PermanentAddresses {
 public:
  Resolved const* find(std::uint64_t address) const {
    std::size_t i = first(address);
    Resolved const* each = slots_[i].load(std::memory_order_acquire);
    // Nearly always the first one. The compiler is told, since a look-up is so short that its jumps take most of the time.
    while (__builtin_expect(each != nullptr && each->address != address, false)) {
      i = (i + 1) % kSlots;
      each = slots_[i].load(std::memory_order_acquire);
    }
    return each;
  }

  bool isFull() const { return count_ == kSlots / 2; }

  // REQUIRES: it is not full, and writers exclude each other.
  void add(Resolved const& resolved) {
    std::size_t i = first(resolved.address);
    while (slots_[i].load(std::memory_order_relaxed) != nullptr) i = (i + 1) % kSlots;
    slots_[i].store(&resolved, std::memory_order_release);
    ++count_;
  }

 private:
  static constexpr std::size_t kBits = 14;
  static constexpr std::size_t kSlots = std::size_t{1} << kBits;

  static std::size_t first(std::uint64_t address) { return (address * 0x9E3779B97F4A7C15) >> (64 - kBits); }

  std::array<std::atomic<Resolved const*>, kSlots> slots_{};
  std::size_t count_ = 0;
};
PermanentAddresses permanentAddresses;

constexpr std::size_t kMostAddresses = 2048;
constexpr std::size_t kMostNames = 2048;

// All of it is used under the lock of the session.
struct Tables {
  std::deque<Resolved> permanent;  // what permanentAddresses leads to
  // The addresses in other modules, until any of these is unloaded or there are too many.
  std::unordered_map<std::uint64_t, Resolved> others;
  std::uint32_t generation = 0;
  // The names of source files. There are only as many as there are files, so they stay.
  std::set<std::string, std::less<>> files;
  // Until there are too many.
  std::unordered_map<std::string_view, std::unique_ptr<Undecorated>> names;
  Undecorated* lastName = nullptr;  // of them; both forms of a name are asked for one after the other
};

Tables& tables() {
  static Lazy<Tables> all;
  return all.get();
}

void findSymbol(LibdwFunctions const& libdw, DebugSession::Module const& module, Resolved& result) {
  GElf_Sym symbol = {};
  GElf_Addr start = 0;
  char const* name = nullptr;
  int const number = module.symbols.find(result.address);
  if (number >= 0) {
    name = libdw.symbol(module.handle, number, &symbol, &start, nullptr, nullptr, nullptr);
  } else if (libdw.symbolOfAddress != nullptr) {
    // A label without a size, for instance.
    GElf_Off offset = 0;
    name = libdw.symbolOfAddress(module.handle, result.address, &offset, &symbol, nullptr, nullptr, nullptr);
    start = result.address - offset;
  }
  if (name == nullptr) return;
  result.name.assign(name, strnlen(name, kResolvedTextCapacity - 1));
  result.symbolStart = start;
  result.symbolSize = symbol.st_size;
}

void setLine(Resolved& result, char const* file, int number, std::uint64_t start) {
  std::string_view const name(file, strnlen(file, kResolvedTextCapacity - 1));
  auto const known = tables().files.find(name);
  result.file = known != tables().files.end() ? known->c_str() : tables().files.emplace(name).first->c_str();
  result.line = static_cast<ulong32>(number);
  result.lineStart = start;
}

// Some compilers write no table that leads from an address to its unit, so that the units themselves are asked.
void searchLineInUnits(LibdwFunctions const& libdw, Dwfl_Module* module, Resolved& result) {
  if (!libdw.canSearchUnits()) return;
  Dwarf_Addr bias = 0;
  for (Dwarf_Die* unit = nullptr; (unit = libdw.nextUnit(module, unit, &bias)) != nullptr;) {
    if (libdw.unitHasAddress(unit, result.address - bias) != 1) continue;
    Dwarf_Line* const line = libdw.lineOfUnit(unit, result.address - bias);
    char const* const file = line == nullptr ? nullptr : libdw.lineFile(line, nullptr, nullptr);
    int number = 0;
    Dwarf_Addr start = 0;
    bool const isComplete =
        file != nullptr && libdw.lineNumber(line, &number) == 0 && libdw.lineAddress(line, &start) == 0;
    if (isComplete) setLine(result, file, number, start + bias);
    return;
  }
}

// libdw itself reads and sorts all lines of a unit to tell of one.
void findLine(LibdwFunctions const& libdw, DebugSession::Module& known, Resolved& result) {
  if (!libdw.canLine()) return;
  Dwfl_Module* const module = known.handle;
  auto const own = ModuleLines::canRead(libdw) ? known.lines.find(libdw, module, result.address) : std::nullopt;
  if (own.has_value()) return setLine(result, own->file.c_str(), static_cast<int>(own->number), own->start);
  Dwfl_Line* const line = libdw.lineOfAddress(module, result.address);
  int number = 0;
  Dwarf_Addr start = 0;
  char const* const file = line == nullptr ? nullptr : libdw.lineInfo(line, &start, &number, nullptr, nullptr, nullptr);
  if (file != nullptr) {
    setLine(result, file, number, start);
  } else {
    searchLineInUnits(libdw, module, result);
  }
}

void openSymbols(LibdwFunctions const& libdw, DebugSession::Module& module) {
  if (!module.isOpen && SymbolIndex::canRead(libdw)) module.symbols.read(libdw, module.handle);
  module.isOpen = true;
}

// The kind of symbols of a module. Its file is not opened to find out.
SymbolType typeOf(LibdwFunctions const& libdw, DebugSession::Module const& module) {
  if (!module.isOpen || module.handle == nullptr) return kDeferred;
  Dwarf_Addr bias = 0;
  if (libdw.debugData != nullptr && libdw.debugData(module.handle, &bias) != nullptr) return kDebugData;
  if (libdw.symbolCount == nullptr) return kSymbols;
  return libdw.symbolCount(module.handle) > 1 ? kSymbols : kNoSymbols;
}

// What is known about an address in a module that is loaded now; null if there is none. Valid until the next call.
Resolved const* resolve(DebugSession& session, std::uint64_t address) {
  DebugSession::Module* const module = session.moduleAt(address);
  if (module == nullptr) return nullptr;
  Tables& all = tables();
  // Another thread may have been faster.
  Resolved const* const permanent = permanentAddresses.find(address);
  if (permanent != nullptr) return permanent;
  if (all.generation != session.generation() || all.others.size() >= kMostAddresses) all.others.clear();
  all.generation = session.generation();
  auto const known = all.others.find(address);
  if (known != all.others.end()) return &known->second;
  Resolved result;
  result.address = address;
  result.module = module;
  if (module->handle != nullptr) {
    openSymbols(session.libdw(), *module);
    findSymbol(session.libdw(), *module, result);
    findLine(session.libdw(), *module, result);
    result.type = typeOf(session.libdw(), *module);
  }
  if (!module->loaded.isPermanent || permanentAddresses.isFull()) return &(all.others[address] = std::move(result));
  permanentAddresses.add(all.permanent.emplace_back(std::move(result)));
  return &all.permanent.back();
}

// The address to look up for a program counter. A call that does not return may be the last instruction of a function,
// so that the address behind it belongs to another one.
std::uint64_t lookupAddress(std::uint64_t counter) {
  return isLastReturnAddress(counter) ? counter - 1 : counter;
}

// What a look-up tells of an address. Both functions are inlined into their callers: a call takes as long as the rest.
[[gnu::always_inline]] inline Bool tellSymbol(Resolved const& found, std::uint64_t counter, std::uint64_t* displacement,
                                              debug_help::Symbol64* symbol) {
  if (found.name.empty()) return failWith(kInvalidAddress);
  if (displacement != nullptr) *displacement = counter - found.symbolStart;
  symbol->address = found.symbolStart;
  symbol->size = static_cast<ulong32>(found.symbolSize);
  symbol->flags = 0;
  // The limit counts the terminator if the record is followed by exactly so many bytes, as it is when it comes from a
  // block of the size that callers allocate.
  if (symbol->maxNameLength == 0) return 1;
  std::size_t const size = std::min<std::size_t>(found.name.size(), symbol->maxNameLength - 1);
  memcpy(symbol->name, found.name.data(), size);
  symbol->name[size] = '\0';
  return 1;
}

[[gnu::always_inline]] inline Bool tellLine(Resolved const& found, std::uint64_t counter, ulong32* displacement,
                                            debug_help::Line64* line) {
  if (found.file == nullptr) return failWith(kInvalidAddress);
  *displacement = static_cast<ulong32>(counter - found.lineStart);
  line->key = nullptr;
  line->lineNumber = found.line;
  line->fileName = const_cast<char*>(found.file);  // to be read only
  line->address = found.lineStart;
  return 1;
}

template <auto tell, class... Results>
[[gnu::cold, gnu::noinline]] Bool tellUnderLock(std::uint64_t address, std::uint64_t counter, Results*... results) {
  return guarded([&]() -> Bool {
    DebugSession& session = DebugSession::instance();
    auto const lock = session.lock();
    Resolved const* const resolved = resolve(session, address);
    return resolved != nullptr ? tell(*resolved, counter, results...) : failWith(kModuleNotFound);
  });
}

// Tells of the address that a program counter stands for. False, with the last error set, if that is no address of a
// module, or if there is nothing to tell.
template <auto tell, class... Results>
Bool tellOf(std::uint64_t counter, Results*... results) {
  std::uint64_t const address = lookupAddress(counter);
  Resolved const* const permanent = permanentAddresses.find(address);
  return permanent != nullptr ? tell(*permanent, counter, results...)
                              : tellUnderLock<tell>(address, counter, results...);
}

Undecorated& entryOf(std::string_view name) {
  Tables& all = tables();
  if (all.lastName != nullptr && all.lastName->name == name) return *all.lastName;
  auto known = all.names.find(name);
  if (known == all.names.end()) {
    all.lastName = nullptr;
    if (all.names.size() >= kMostNames) all.names.clear();
    auto added = std::make_unique<Undecorated>();
    added->name = name;
    std::string_view const key = added->name;
    known = all.names.emplace(key, std::move(added)).first;
  }
  all.lastName = known->second.get();
  return *all.lastName;
}

void copyRecord(debug_help::ModuleInfo64& info, DebugSession::Module const& module, SymbolType type) {
  info = module.record;
  info.symbolType = type;
}

}  // namespace

Bool symGetSymFromAddr64(void*, std::uint64_t counter, std::uint64_t* displacement, debug_help::Symbol64* symbol) {
  if (symbol == nullptr || symbol->sizeOfStruct != sizeof *symbol) return failWith(kInvalidParameter);
  return tellOf<tellSymbol>(counter, displacement, symbol);
}

Bool symGetLineFromAddr64(void*, std::uint64_t counter, ulong32* displacement, debug_help::Line64* line) {
  bool const isValid = line != nullptr && displacement != nullptr && line->sizeOfStruct == sizeof *line;
  return isValid ? tellOf<tellLine>(counter, displacement, line) : failWith(kInvalidParameter);
}

bool moduleInfoAt(std::uint64_t counter, debug_help::ModuleInfo64& info) {
  std::uint64_t const address = lookupAddress(counter);
  Resolved const* const permanent = permanentAddresses.find(address);
  if (permanent != nullptr) {
    copyRecord(info, *permanent->module, permanent->type);
    return true;
  }
  DebugSession& session = DebugSession::instance();
  auto const lock = session.lock();
  DebugSession::Module const* const module = session.moduleAt(address);
  if (module == nullptr) return failWith(kModuleNotFound);
  copyRecord(info, *module, typeOf(session.libdw(), *module));
  return true;
}

ulong32 undecorate(char const* name, char* output, ulong32 capacity, bool nameOnly) {
  if (capacity == 0) return 0;
  auto const lock = DebugSession::instance().lock();
  Undecorated& entry = entryOf(name);
  std::string& text = nameOnly ? entry.nameOnly : entry.complete;
  if (text.empty()) text = nameOnly ? demangledNameOnly(name) : demangledName(name);
  std::size_t const size = text.copy(output, capacity - 1);
  output[size] = '\0';
  return static_cast<ulong32>(size);
}

}  // namespace platform
}  // namespace KV_1_1
