// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <iosfwd>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "kvbase/export.h"
#include "kvbase/platform/types.h"
#include "kvbase/strings/kv_string.h"
#include "kvbase/text_unit.h"

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

  // The file name of the module without folder and extension; EMPTY before the module has been started. It stays when the
  // module ends. The reference is valid until the module is started again or destroyed.
  String const& getModuleName() const;
  // The names of the module's resources, from the header text that it carries (METADATA, RESOURCE.H); SymbolTable::EMPTY
  // if it carries none or a faulty one, before the module has been started, and after it has ended. The reference is valid
  // until the module ends.
  SymbolTable const& getResourceSymbols() const;

  // --- Resources (module_resources.cpp) ------------------------------------------------------------------------------
  //
  //   ulong32 locale = 1031;
  //   auto const image = module.getResource(IDR_MAINFRAME, KVW("PNG"), /*localized=*/true, &locale);
  //
  // Names and types of resources are texts or numbers. An `id` stands for its low 16 bits; a type that is a number is
  // passed as MAKEINTRESOURCE does (platform::resourceId). Texts compare without regard to case. A NIL name finds nothing.
  //
  // With `localized` the translation library is searched first and the module itself next, otherwise the module alone. No
  // other module is ever searched.
  //
  // The language. With a null `locale` the system chooses among the languages in which the resource exists. Otherwise
  // `locale` is a Windows locale identifier; on entry the wanted one, where 0 stands for that of the thread:
  //   the resource exists in one language     that one, whatever is wanted
  //   it exists in the wanted language        that one
  //   it exists in the primary language       that one
  //   neither                                 the choice of the system
  // On return it is the language found, with the sort order of the thread's locale. Where the choice was left to the
  // system it is the thread's locale, so a caller sees that the wanted language is not there. If nothing is found, it keeps
  // its value. A version marked neutral (language 0) counts as no choice.
  //
  // Lifetime: what is found lies in the mapped module, and is valid until the module or its translation is unloaded.
  // Thread rule: any number of threads may look up resources of a module while it neither starts nor ends. The locale of
  // the calling thread is another one for a moment.
  // Failure: std::bad_alloc; the thread's locale is then what it was.

  // The instance that holds the resource; null if there is none. A resource of no bytes is found.
  HINSTANCE findResource(String const& name, wchar const* type, bool localized, ulong32* const locale) const;
  HINSTANCE findResource(unsigned int id, wchar const* type, bool localized, ulong32* const locale) const;

  // Address and size of the bytes; null and 0 if there are none.
  std::pair<void*, ulong32> getResource(String const& name, wchar const* type, bool localized,
                                        ulong32* const locale) const;
  std::pair<void*, ulong32> getResource(unsigned int id, wchar const* type, bool localized,
                                        ulong32* const locale) const;

  KVBASE_DEPRECATED_NAMES_BEGIN
  // A stream over the bytes as they are stored, in the language chosen for the thread's locale; empty if there are none. It
  // can neither be written to nor change its position, and must not outlive the module.
  std::auto_ptr<std::basic_istream<char>> loadResource(String const& name, wchar const* type, bool localized) const;
  std::auto_ptr<std::basic_istream<char>> loadResource(unsigned int id, wchar const* type, bool localized) const;
  KVBASE_DEPRECATED_NAMES_END

  // All bytes of a resource, chosen as by loadResource.
  // REQUIRES: the resource exists and has bytes; otherwise the process ends. loadResource is for one that may be missing.
  std::string loadStringResource(String const& name, wchar const* type, bool localized) const;

 private:
  // Each library of the family builds, starts and ends its own Module through it.
  friend class ModuleOwner;
  // These look at the two instances.
  friend class ScopedResourceDomain;
  friend class String;
  // For GetCurrentLangId. A function could not be imported from a DLL and be a friend without a warning of g++.
  friend struct CodeModule;

  using FoundResource = std::pair<HINSTANCE, HRSRC>;

  // Joins the list at its end.
  Module();
  // COMPAT: if this module has not been ended, the library's own module is ended, even if this is another one; this one
  // stays as it is.
  ~Module();
  Module(Module const&) = delete;
  Module& operator=(Module const&) = delete;

  // Start and end (module_start.cpp), from the entry function of the module's library; see ModuleOwner.
  bool internalInit(HINSTANCE instance);
  void internalTerm();

  // The forms above with any name; null finds nothing.
  FoundResource findResourceImpl(wchar const* name, wchar const* type, bool localized, ulong32* const locale) const;
  std::pair<void*, ulong32> getResourceImpl(wchar const* name, wchar const* type, bool localized,
                                            ulong32* const locale) const;
  KVBASE_DEPRECATED_NAMES_BEGIN
  std::auto_ptr<std::basic_istream<char>> loadResourceImpl(wchar const* name, wchar const* type, bool localized) const;
  KVBASE_DEPRECATED_NAMES_END

  static Module* head;
  static Module* tail;
  static unsigned long long count;

  Module* next_ = nullptr;
  Module* previous_ = nullptr;
  bool initialised_ = false;
  HINSTANCE codeModule_ = nullptr;
  // The translation library, or the same as codeModule_ if there is none.
  HINSTANCE resourceModule_ = nullptr;
  String* moduleName_ = nullptr;
  SymbolTable* resourceSymbols_ = nullptr;
};

// Position in the list of modules; null stands for the end. The list is circular through the end: ++ on the end goes to
// the first module, -- on the end to the last. COMPAT: the difference type is unsigned, as that of no other iterator.
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
