// SPDX-License-Identifier: MIT
#include "tests/shared/order/early.h"

#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "kvbase/kvbase.h"
#include "kvbase/modules/client_module.h"
#include "kvbase/platform/framework_api.h"
#include "kvbase/records/internal/inverse_length_table.h"
#include "tests/support/intercepted_modules.h"
#include "tests/support/scripted_debug.h"

using namespace KV_1_1;

namespace order {

namespace {

bool isWalkerGone = false;
// The payloads of the empty text and of the only name in the empty symbol table, which this program owns too.
StringVal* emptyText = nullptr;
StringVal* planted = nullptr;

StringVal* payloadOf(String const& text) {
  return reinterpret_cast<StringVal*>(const_cast<wchar*>(static_cast<wchar const*>(text))) - 1;
}

// Whether an object in static storage has been built: its memory is all zero before.
template <class T>
bool isBuilt(T const& object) {
  unsigned char bytes[sizeof(T)];
  std::memcpy(bytes, static_cast<void const*>(&object), sizeof bytes);
  for (unsigned char const byte : bytes) {
    if (byte != 0) return true;
  }
  return false;
}

std::string state() {
  int modules = 0;
  for (auto module = Module::begin(); module != Module::end(); ++module) ++modules;
  int classes = 0;
  for (mZClass const* record = nullptr; mZClass::iterateAllClasses(record);) ++classes;
  bool const hasEmpty = emptyText != nullptr ? emptyText->inqRefCount() > 1 : isBuilt(String::EMPTY);
  bool const hasSymbols = planted != nullptr ? planted->inqRefCount() > 1 : isBuilt(SymbolTable::EMPTY);
  bool const hasWalker = isBuilt(VgStackWalker::globalStackWalker) && !isWalkerGone;
  return std::string(hasEmpty ? " EMPTY" : "") + " modules=" + std::to_string(modules) +
         " records=" + std::to_string(classes) + (isBuilt(records::inverseLengthTable) ? " table" : "") +
         (hasWalker ? " walker" : "") + (hasSymbols ? " symbols" : "");
}

// Tells the first call of each kind only.
class Calls {
 public:
  void tellOnce(char const* event) {
    if (told_.insert(event).second) tell(event);
  }

 private:
  std::set<std::string> told_;
};

class ToldModules final : public KV_1_1::testing::InterceptedModules {
 public:
  HINSTANCE moduleOf(void const* address) override {
    calls_.tellOnce("the entry asks for its module");
    return InterceptedModules::moduleOf(address);
  }
  HRSRC findResource(HINSTANCE module, wchar const* name, wchar const* type) override {
    calls_.tellOnce("the module reads its header");
    return InterceptedModules::findResource(module, name, type);
  }

 protected:
  void enter(char const* method, wchar const*) override {
    if (std::strcmp(method, "isReadable") == 0) calls_.tellOnce("the module looks for its translation");
  }

 private:
  Calls calls_;
};

class ToldFramework final : public platform::FrameworkApi {
 public:
  HINSTANCE resourceInstance() override { return nullptr; }
  void setResourceInstance(HINSTANCE) override {}
  bool startExtension(HINSTANCE) override {
    tell("the framework is joined");
    return true;
  }
  void endExtension() override { tell("the framework is left"); }
};

// Has a debug-help library without functions in it.
class ToldDebug final : public KV_1_1::testing::ScriptedDebug {
 public:
  ulong32 currentProcessId() override {
    calls_.tellOnce("the walker is built");
    return ScriptedDebug::currentProcessId();
  }

 private:
  Calls calls_;
};

// Holds what is never destroyed, as it is called to the end.
struct Early {
  Early() {
    tell("first");
    platform::current.modules = modules = new ToldModules;
    platform::current.framework = framework = new ToldFramework;
    platform::current.debug = debug = new ToldDebug;
  }
  ~Early() { tell("last"); }

  ToldModules* modules;
  ToldFramework* framework;
  ToldDebug* debug;
} const early;

struct Watched {
  std::string name;
  void (*destroy)(void* object);
};
std::map<void*, Watched>& watched() {
  static auto& objects = *new std::map<void*, Watched>;
  return objects;
}

void destroyWatched(void* object) {
  Watched const& entry = watched()[object];
  tell(("destroy " + entry.name).c_str());
  entry.destroy(object);
}

std::string nameOf(void const* object) {
  if (object == &libraryModuleOwner()) return "Module";
  for (mZClass const* record = nullptr; mZClass::iterateAllClasses(record);) {
    if (record == object) return String(record->name()).stringUTF8();
  }
  return "lazy object";
}

}  // namespace

void tell(char const* event) {
  std::fputs((event + (':' + state()) + '\n').c_str(), stdout);
  std::fflush(stdout);
}

void tellWalkerGoes() {
  tell("the walker goes");
  isWalkerGone = true;
}

void watchDestruction() {
  for (AtExitList::Entry* entry = AtExitList::newest(); entry != nullptr; entry = entry->older) {
    watched()[entry->object] = {nameOf(entry->object), entry->destroy};
    entry->destroy = &destroyWatched;
  }
  emptyText = payloadOf(String::EMPTY);
  emptyText->ref();
  // The table lies in writable memory, as it is built at load; a name in it shows when the table goes.
  std::istringstream header("#define PLANTED 1\n");
  const_cast<SymbolTable&>(SymbolTable::EMPTY).parseHeaderFile(header);
  planted = payloadOf(*SymbolTable::EMPTY[1].begin());
  planted->ref();
}

}  // namespace order
