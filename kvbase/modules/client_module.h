// SPDX-License-Identifier: MIT
//
// What a library of the application family needs: its own Module, and one record for each of its classes. KVBase
// registers its own classes in the same way.
//
//   // In one source of the library:
//   Module& KV_1_1::getLibraryModule() {
//     static Lazy<ModuleOwner> owner;
//     return owner.get().module();
//   }
//
//   // In the source of each class below BaseNode:
//   KVBASE_REGISTER_CLASS(Scan, BaseNode)
#pragma once

#include "kvbase/core/class_record.h"
#include "kvbase/core/lazy.h"
#include "kvbase/export.h"
#include "kvbase/modules/module.h"

namespace KV_1_1 {

// Owns the Module of one library; the Module is in the list as long as its owner lives.
class ModuleOwner {
 public:
  ModuleOwner() = default;
  ModuleOwner(ModuleOwner const&) = delete;
  ModuleOwner& operator=(ModuleOwner const&) = delete;

  Module& module() { return module_; }

 private:
  Module module_;
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
