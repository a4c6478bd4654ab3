// SPDX-License-Identifier: MIT
//
// What a library or program of the application family needs: its own Module, and one record for each of its classes.
// KVBase registers its own classes in the same way.
//
//   // In one source of the library:
//   Module& KV_1_1::getLibraryModule() {
//     static Lazy<ModuleOwner> owner;
//     return owner.get().module();
//   }
//
//   // In the source of each class below BaseNode:
//   KVBASE_REGISTER_CLASS(Scan, BaseNode)
//
//   // In a program, which has no entry function to start its Module:
//   int main() {
//     ModuleOwner owner;  // or the one of getLibraryModule(), if the program registers classes
//     ProgramStart const started(owner);
//     show(String::loadFromResource(IDS_WELCOME, owner.module()));
//   }
#pragma once

#include "kvbase/core/class_record.h"
#include "kvbase/core/lazy.h"
#include "kvbase/export.h"
#include "kvbase/modules/module.h"

namespace KV_1_1 {

// Owns the Module of one library; the Module is in the list as long as its owner lives.
//
// The library's entry function starts the Module when the library has been loaded and ends it before the library is
// unloaded; a library may be started again.
// Thread rule: both run while the system serialises loading and unloading.
class ModuleOwner {
 public:
  ModuleOwner() = default;
  ModuleOwner(ModuleOwner const&) = delete;
  ModuleOwner& operator=(ModuleOwner const&) = delete;

  Module& module() { return module_; }

  // Gives the Module the instance of its library, loads its translation library, and gives it its name and the symbols of
  // the header resource METADATA RESOURCE.H; then calls initClassStatics of the Module's classes, parents first. A module
  // without translation, and one without header or with a faulty one, is no less started.
  // False, with nothing changed, if it has been started already or the instance is null.
  // Throws std::runtime_error ("VerQueryValue failed", see LoadTranslationDLL): the Module has then not been started. After
  // a std::bad_alloc, or what a hook throws, it may have been: end() is right in either case. Memory exhausted while the
  // header is read ends the process.
  bool start(HINSTANCE instance) { return module_.internalInit(instance); }
  // Unloads the translation library, drops the symbols and calls clearClassStatics of the Module's classes.
  // Nothing happens if it has not been started. The name stays; no resource may be looked up from then on.
  // COMPAT: parents are cleared before their children, in the same order as they were started.
  void end() { module_.internalTerm(); }

 private:
  Module module_;
};

// Starts the Module of a program, and ends it with its scope.
// Lifetime: the owner must outlive it.
class KVBASE_API ProgramStart {
 public:
  // Starts the Module with the instance of the program. Nothing happens if it has been started before; it ends with this
  // object no less.
  // Throws what ModuleOwner::start throws; the Module has then been ended.
  explicit ProgramStart(ModuleOwner& owner);
  ~ProgramStart();
  ProgramStart(ProgramStart const&) = delete;
  ProgramStart& operator=(ProgramStart const&) = delete;

 private:
  ModuleOwner& owner_;
};

// The Module of the library that this code is linked into: built at the first call, from any thread, and destroyed when
// the library ends. Each library defines this function once; it is never exported.
KVBASE_LOCAL Module& getLibraryModule();

// The record of one class, for a function-local static of Class(). It gets the Module first and the parent's record next,
// so both are built before this record and destroyed after it, whatever the order in which classes are used.
template <class Creator>
class KVBASE_LOCAL ClassRegistration {
 public:
  // A root class.
  explicit ClassRegistration(wchar const* name) : record_(name, getLibraryModule(), ClassVersion()) {}
  ClassRegistration(wchar const* name, mZClass const* (*parentClass)())
      : ClassRegistration(name, getLibraryModule(), parentClass) {}

  mZClass const* get() { return &record_.get(); }

 private:
  ClassRegistration(wchar const* name, Module const& module, mZClass const* (*parentClass)())
      : record_(name, parentClass(), module, ClassVersion()) {}

  Lazy<Creator> record_;
};

}  // namespace KV_1_1

// Defines what a registered class declares: Class(), getClassType(), the destructor of its ClassCreator, and the hooks
// initStatics() and clearStatics(), which do nothing. For use at namespace scope, in the namespace of the class.
#define KVBASE_REGISTER_CLASS(X, Parent)      \
  KVBASE_REGISTER_CLASS_WITH_HOOKS(X, Parent) \
  void X::initStatics() {}                    \
  void X::clearStatics() {}

// The same for a class that defines its two hooks itself.
#define KVBASE_REGISTER_CLASS_WITH_HOOKS(X, Parent)                                            \
  X::ClassCreator::~ClassCreator() = default;                                                  \
  mZClass const* X::Class() {                                                                  \
    static ::KV_1_1::ClassRegistration<X::ClassCreator> registration(KVW(#X), &Parent::Class); \
    return registration.get();                                                                 \
  }                                                                                            \
  mZClass const* X::getClassType() const {                                                     \
    return Class();                                                                            \
  }
