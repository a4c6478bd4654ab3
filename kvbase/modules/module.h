// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <iterator>

#include "kvbase/export.h"
#include "kvbase/platform/types.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

class SymbolTable;

// One loaded library of the application family. All modules of a process stand in one list.
//
//   for (Module const& module : Module::all()) show(module.getModuleName());
//
// Lifetime: a module belongs to its library and is in the list from its construction to its destruction.
// Thread rule: modules come and go only while a library loads or unloads, which the system serialises. No walk may run
// meanwhile; walks among themselves may.
class KVBASE_API Module {
 public:
  class const_iterator;
  struct Range;

  // begin() is the end if there is no module.
  static const_iterator begin();
  static const_iterator end();
  // The same list from its last module to its first.
  static std::reverse_iterator<const_iterator> rbegin();
  static std::reverse_iterator<const_iterator> rend();
  // The list as a range for a `for` loop.
  static Range all();

  // The file name of the module without folder and extension; EMPTY before the module has been started.
  String const& getModuleName() const;

 private:
  // Each library of the family builds its own Module through it.
  friend class ModuleOwner;
  // Needs the handle (kvbase/languages/language_selection.h).
  friend KVBASE_API unsigned short GetCurrentLangId(Module const& module);

  // Joins the list at its end.
  Module();
  ~Module();
  Module(Module const&) = delete;
  Module& operator=(Module const&) = delete;

  static Module* head;
  static Module* tail;
  static unsigned long long count;

  Module* next_ = nullptr;
  Module* previous_ = nullptr;
  bool initialised_ = false;
  HINSTANCE codeModule_ = nullptr;
  HINSTANCE resourceModule_ = nullptr;
  String* moduleName_ = nullptr;
  SymbolTable* resourceSymbols_ = nullptr;
};

// Position in the list of modules; null stands for the end. The list is circular through the end: ++ on the end goes to
// the first module, -- on the end to the last.
KVBASE_DEPRECATED_NAMES_BEGIN
class KVBASE_API Module::const_iterator : public std::iterator<std::bidirectional_iterator_tag, Module const,
                                                               unsigned long long, Module const*, Module const&> {
 public:
  const_iterator(const_iterator const&) = default;
  const_iterator& operator=(const_iterator const&) = default;

  // REQUIRES (both): not at the end.
  Module const& operator*() const { return *module_; }
  Module const* operator->() const { return module_; }

  // COMPAT: the postfix forms are the prefix forms: they move the iterator and return a reference to it, not its old
  // position.
  const_iterator& operator++();
  const_iterator& operator++(int) { return ++*this; }
  const_iterator& operator--();
  const_iterator& operator--(int) { return --*this; }

  friend bool operator==(const_iterator const& a, const_iterator const& b) { return a.module_ == b.module_; }
  friend bool operator!=(const_iterator const& a, const_iterator const& b) { return a.module_ != b.module_; }

 protected:
  friend class Module;
  explicit const_iterator(Module const* module) : module_(module) {}

 private:
  Module const* module_;
};
KVBASE_DEPRECATED_NAMES_END

struct Module::Range {
  const_iterator begin() const { return Module::begin(); }
  const_iterator end() const { return Module::end(); }
};
inline Module::Range Module::all() {
  return Range();
}

}  // namespace KV_1_1
