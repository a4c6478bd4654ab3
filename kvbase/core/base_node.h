// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/core/class_record.h"
#include "kvbase/core/interlocked_counter.h"
#include "kvbase/export.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

// The root of the hierarchy, without data and operations.
class VisitorCore {};

// The root of every counted object of the library and of the applications. It carries the reference count and leads to
// the class record.
//
// Ownership: an object is built with count 0, which means that nobody owns it. The first SmartPtr (or ref) takes the
// count to 1, the last one destroys the object. An object on the stack or inside another stays at 0 for ever and must
// never be given to a SmartPtr.
// Thread rule: the count is atomic; owners of one object may live on different threads.
class KVBASE_API BaseNode : public VisitorCore {
 public:
  BaseNode() {}

  // The record of the most derived class. Each class overrides it to give its own Class().
  virtual mZClass const* getClassType() const;

  // Takes a reference. All four are const, because owning an object does not change its value.
  void ref() const { ++references_; }
  // Gives a reference back; the last owner destroys the object, whose count then reads 0xF000DEAD until its memory is
  // released. On a count of 0 the count wraps to 0xFFFFFFFF and nothing is destroyed.
  void unref() const {
    if (references_-- != 1) return;
    references_ = kDeadMark;
    delete this;
  }
  // Gives a reference back and never destroys, so that a factory can return an unowned object.
  void unrefNoDelete() const { --references_; }
  // The count, out of date as soon as it is read.
  unsigned int getRefCounter() const { return references_; }

  // Shorthands for the members of getClassType()'s record.
  wchar const* getClassName() const { return getClassType()->name(); }
  ClassVersion getClassVersion() const { return getClassType()->version(); }
  Module const& getCodeModule() const { return getClassType()->module(); }
  bool isKindOf(mZClass const* other) const { return getClassType()->isDerivedFrom(other); }

  // The record of BaseNode, the root of the library's classes.
  static mZClass const* Class();

 protected:
  // A copy starts unowned: the count is not copied.
  BaseNode(BaseNode const&) : VisitorCore() {}
  // Leaves both counts as they are.
  BaseNode& operator=(BaseNode const&) { return *this; }
  virtual ~BaseNode() = default;

 private:
  static constexpr unsigned int kDeadMark = 0xF000DEAD;

  // Part of the compiled interface; does nothing.
  void validityCheck(unsigned int) const;

  mutable InterlockedCounter references_;
};

static_assert(sizeof(BaseNode) == 2 * sizeof(void*), "a counted object starts with its virtual table and its count");

}  // namespace KV_1_1
