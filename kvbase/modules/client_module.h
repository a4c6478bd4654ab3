// SPDX-License-Identifier: MIT
//
// What a library or program of the application family needs: its own Module, its start and end, and one record for each of
// its classes. KVBase registers its own classes in the same way. docs/client_modules.md shows a whole library.
//
//   // In the class (class_record.h):
//   class SCANS_API Scan : public BaseNode {
//    public:
//     KVBASE_DECLARE_CLASS(Scan, SCANS_API);
//
//   // In the source of the class, in its namespace:
//   KVBASE_REGISTER_CLASS(Scan, BaseNode)
//
//   // In one source of the library or program, at global scope:
//   KVBASE_MODULE(scans::Scan, scans::ScanFile)
//
//   // A program without classes may start its Module for a scope instead:
//   int main() {
//     ModuleOwner owner;
//     ProgramStart const started(owner);
//     show(String::loadFromResource(IDS_WELCOME, owner.module()));
//   }
#pragma once

#include "kvbase/core/class_record.h"
#include "kvbase/core/lazy.h"
#include "kvbase/export.h"
#include "kvbase/modules/module.h"
#include "kvbase/platform/entry_function.h"

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
  // without translation, and one without header or with a faulty one, is started all the same.
  // False, with nothing changed, if it has been started already or the instance is null.
  // Throws std::runtime_error ("VerQueryValue failed", see LoadTranslationDLL): the Module has then not been started. After
  // a std::bad_alloc, or what a hook throws, it may have been: end() is right in either case.
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
  // Starts the Module with the instance of the program. Nothing happens if it has been started before, but it ends with
  // this object all the same.
  // Throws what ModuleOwner::start throws; the Module has then been ended.
  explicit ProgramStart(ModuleOwner& owner);
  ~ProgramStart();
  ProgramStart(ProgramStart const&) = delete;
  ProgramStart& operator=(ProgramStart const&) = delete;

 private:
  ModuleOwner& owner_;
};

// The owner of the Module of the library that this code is linked into: built at the first call, from any thread, and
// destroyed when the library ends. Each library has its own; a program that KVBase is linked into is one library with it.
KVBASE_LOCAL inline ModuleOwner& libraryModuleOwner() {
  static Lazy<ModuleOwner> owner;
  return owner.get();
}

KVBASE_LOCAL inline Module& getLibraryModule() {
  return libraryModuleOwner().module();
}

// The entry function of a module for which the system calls none: of a program, and off Windows of a library too. For the
// last of the static objects of the module.
class KVBASE_API ModuleEntry {
 public:
  using Attach = bool (*)(HINSTANCE instance) noexcept;
  using Detach = void (*)() noexcept;

  // Calls `attach` with the instance of the module that this object is part of, and `detach` if the result is false: such
  // a module cannot refuse to be loaded, so it stays, without having been started. Where the system calls an entry function
  // of the module nothing happens, now or later.
  ModuleEntry(Attach attach, Detach detach);
  // Calls `detach`, unless the start failed.
  ~ModuleEntry();
  ModuleEntry(ModuleEntry const&) = delete;
  ModuleEntry& operator=(ModuleEntry const&) = delete;

 private:
  Detach detach_;
  bool isEntry_;
};

// What the entry function of a module does. False if the Module cannot be started, or a hook throws; detachModule is safe
// behind it.
KVBASE_LOCAL inline bool attachModule(HINSTANCE instance) noexcept {
  try {
    return libraryModuleOwner().start(instance);
  } catch (...) {
    return false;
  }
}
KVBASE_LOCAL inline void detachModule() noexcept {
  libraryModuleOwner().end();
}

// Builds the records of classes, in this order; each registers itself in the at-exit list, the first of them behind the
// Module. Takes the whole list down: Lazy objects and records, newest first, and then the Module.
template <class... Classes>
class KVBASE_LOCAL ClassRecords {
 public:
  ClassRecords() { (Classes::Class(), ...); }
  ~ClassRecords() { AtExitList::destroyDownTo(nullptr); }
  ClassRecords(ClassRecords const&) = delete;
  ClassRecords& operator=(ClassRecords const&) = delete;
};

// The static object of KVBASE_MODULE.
#if defined(KVBASE_STATIC)
// The Module of the program is that of KVBase and has been started; it will end behind all static objects of the program.
template <class... Classes>
class KVBASE_LOCAL ModuleGlobals {
 public:
  ModuleGlobals() {
    (Classes::Class(), ...);
    (Classes::Class()->initClassStatics(), ...);
  }
};
#else
template <class... Classes>
class KVBASE_LOCAL ModuleGlobals {
 private:
  ClassRecords<Classes...> records_;
  ModuleEntry entry_{&attachModule, &detachModule};
};
#endif

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

// The record of a class whose hooks are called, and of one of which objects can be made as well.
template <class X>
class KVBASE_LOCAL HookedRecord : public X::ClassCreator {
 public:
  using Base = typename X::ClassCreator;
  using Base::Base;
  void initClassStatics() const override { X::initStatics(); }
  void clearClassStatics() const override { X::clearStatics(); }
};
template <class X>
class KVBASE_LOCAL CreatableRecord : public HookedRecord<X> {
 public:
  using HookedRecord<X>::HookedRecord;
  BaseNode* create() const override { return new X; }
};

}  // namespace KV_1_1

// Makes a library or program a module of the family: its Module, the records of the classes that are listed, and its start
// and end. At global scope in one source, which includes the headers of the classes.
//
// At load the records are built in the order of the list, each behind that of its parent, so a walk meets them in the
// reverse order. Then the entry function starts the Module, which calls the hooks of the classes. At the end the Module is
// ended first, then go the Lazy objects and the records, newest first, and the Module.
//
// On Windows this defines DllMain, which runs behind the static objects of all sources. Elsewhere the start is part of the
// static objects of this source, so hooks must not use static objects of others; Lazy objects are there whenever they are
// needed.
//
// If the Module cannot be started (see ModuleOwner::start), or a hook throws, the load of the library fails on Windows.
// Elsewhere the library stays loaded, with a Module that has not been started or has been ended.
//
// With KVBase linked statically the program and KVBase are one module: the classes belong to the Module of KVBase, and
// initStatics of each is called as soon as all of them have their records.
#if defined(KVBASE_STATIC)
#define KVBASE_MODULE(...) KVBASE_MODULE_WITHOUT_ENTRY(__VA_ARGS__)
#else
#define KVBASE_MODULE(...)                 \
  KVBASE_MODULE_WITHOUT_ENTRY(__VA_ARGS__) \
  KVBASE_ENTRY_FUNCTION(::KV_1_1::attachModule, ::KV_1_1::detachModule);
#endif

// The same for a library with a DllMain of its own, which must call KV_1_1::attachModule at process attach, giving false if
// that does, and KV_1_1::detachModule at process detach.
#define KVBASE_MODULE_WITHOUT_ENTRY(...)          \
  namespace KV_1_1 {                              \
  namespace {                                     \
  ModuleGlobals<__VA_ARGS__> const moduleGlobals; \
  }                                               \
  }

// Defines what KVBASE_DECLARE_CLASS declares, in the namespace of the class. No hook is called and no object can be made by
// the record. A class that KVBASE_MODULE does not list is registered at its first use; if it has hooks, only that for the
// end is called then.
#define KVBASE_REGISTER_CLASS(X, Parent)               \
  KVBASE_REGISTER_CLASS_AS(X, Parent, X::ClassCreator) \
  void X::initStatics() {}                             \
  void X::clearStatics() {}

// The same for a class that defines initStatics() and clearStatics() itself. The first is called when the Module of the
// class has got its name, symbols and translation, the second when it has lost them. Both see the records of all classes
// of the module; parents come first both times. clearStatics must not throw.
#define KVBASE_REGISTER_CLASS_WITH_HOOKS(X, Parent) KVBASE_REGISTER_CLASS_AS(X, Parent, ::KV_1_1::HookedRecord<X>)

// The same, with hooks, for a class of which mZClass::create can make objects, by the constructor without arguments.
#define KVBASE_REGISTER_CREATABLE_CLASS(X, Parent) KVBASE_REGISTER_CLASS_AS(X, Parent, ::KV_1_1::CreatableRecord<X>)

// The parts that all of them have in common. The record is a ClassCreator or derived from it.
#define KVBASE_REGISTER_CLASS_AS(X, Parent, Record)                                   \
  X::ClassCreator::~ClassCreator() = default;                                         \
  ::KV_1_1::mZClass const* X::Class() {                                               \
    static ::KV_1_1::ClassRegistration<Record> registration(KVW(#X), &Parent::Class); \
    return registration.get();                                                        \
  }                                                                                   \
  ::KV_1_1::mZClass const* X::getClassType() const {                                  \
    return Class();                                                                   \
  }
