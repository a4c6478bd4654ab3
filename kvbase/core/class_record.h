// SPDX-License-Identifier: MIT
//
// The run-time class tree. Every class below BaseNode has one record that says what the class is called, which class it
// derives from, which module its code lives in and what its version is. The records of all loaded modules form one
// tree.
//
//   for (mZClass const* c = nullptr; mZClass::iterateAllClasses(c);) show(c->name());
//
// Thread rule: records are built and destroyed only while a module loads or unloads, which the system serialises. No
// walk may run meanwhile; walks among themselves may.
#pragma once

#include <cstdint>

#include "kvbase/export.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

class BaseNode;
class Module;

// The version of a class: one 64-bit value, which the library does not interpret. 0 by default.
struct ClassVersion {
  std::uint64_t value = 0;
};
static_assert(sizeof(ClassVersion) == 8, "a version is one 64-bit value");
inline bool operator==(ClassVersion a, ClassVersion b) {
  return a.value == b.value;
}
inline bool operator!=(ClassVersion a, ClassVersion b) {
  return a.value != b.value;
}
inline bool operator<(ClassVersion a, ClassVersion b) {
  return a.value < b.value;
}

// The record of one class.
class KVBASE_API mZClass {
 public:
  // The record of a root class, inserted at the front of the list of roots. The name is not copied; it is a literal, as a
  // rule.
  mZClass(wchar const* name, Module const& module, ClassVersion const& version);
  // The record of a derived class, inserted at the front of its parent's children, so the newest comes first.
  // REQUIRES: parent is not null.
  mZClass(wchar const* name, mZClass const* parent, Module const& module, ClassVersion const& version);
  mZClass(mZClass const&) = delete;
  mZClass& operator=(mZClass const&) = delete;
  // Unlinks the record.
  // REQUIRES: the records of derived classes have been destroyed before.
  virtual ~mZClass();

  // A new object of the class, unowned; null unless the class overrides this.
  virtual BaseNode* create() const;
  // The hooks that the class's module runs when it starts and ends. They do nothing unless overridden.
  virtual void initClassStatics() const;
  virtual void clearClassStatics() const;

  wchar const* name() const { return name_; }
  // The record of the base class; null for a root.
  mZClass const* parent() const { return parent_; }
  Module const& module() const { return *module_; }
  ClassVersion version() const { return version_; }

  // Whether `other` is this record or one of its ancestors; false for null.
  bool isDerivedFrom(mZClass const* other) const {
    for (mZClass const* record = this; record != nullptr; record = record->parent_) {
      if (record == other) return true;
    }
    return false;
  }

  // Walks. The caller sets the cursor to null and calls until the result is false. The cursor is then null again, so a
  // further call starts from the beginning. Children come newest first.
  //
  // All classes of all modules, depth first, parent before children.
  static bool iterateAllClasses(mZClass const*& cursor);
  // The roots.
  static bool iterateRootClasses(mZClass const*& cursor);
  // The ancestors of this class, nearest first, without the class itself.
  bool iterateBaseClasses(mZClass const*& cursor) const;
  // The direct children.
  bool iterateChildClasses(mZClass const*& cursor) const;
  // All classes below this one, depth first, without the class itself.
  bool iterateDerivedClasses(mZClass const*& cursor) const;
  // Those of them that have no child. A class without children has no leaves: it is not a leaf of itself.
  bool iterateLeafClasses(mZClass const*& cursor) const;

 private:
  struct Walk;

  static mZClass const* rootClass;

  wchar const* name_;
  mZClass const* parent_;
  Module const* module_;
  ClassVersion version_;
  // The links belong to the tree, not to the value of the record: children join const parents.
  mutable mZClass const* firstChild_ = nullptr;
  mutable mZClass const* nextSibling_ = nullptr;
};

}  // namespace KV_1_1

// Declares, in its public part, what each class below BaseNode has; client_module.h registers the class.
//   X::Class()            its record, which is built by the first call
//   getClassType()        the same, by the object
//   X::initStatics(), X::clearStatics()   the hooks for start and end of its module
//   X::ClassCreator       the type of its record, or its base
// `Api` stands for the macro by which a library exports the class; it may be empty.
#define KVBASE_DECLARE_CLASS(X, Api)                      \
  ::KV_1_1::mZClass const* getClassType() const override; \
  static ::KV_1_1::mZClass const* Class();                \
  static void initStatics();                              \
  static void clearStatics();                             \
  class Api ClassCreator : public ::KV_1_1::mZClass {     \
   public:                                                \
    using mZClass::mZClass;                               \
    ~ClassCreator() override;                             \
  }
