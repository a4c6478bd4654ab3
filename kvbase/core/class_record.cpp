// SPDX-License-Identifier: MIT
#include "kvbase/core/class_record.h"

namespace KV_1_1 {

mZClass::mZClass(wchar const* name, Module const& module, ClassVersion const& version)
    : name_(name), parent_(nullptr), module_(&module), version_(version), nextSibling_(rootClass) {
  rootClass = this;
}

mZClass::mZClass(wchar const* name, mZClass const* parent, Module const& module, ClassVersion const& version)
    : name_(name), parent_(parent), module_(&module), version_(version), nextSibling_(parent->firstChild_) {
  parent->firstChild_ = this;
}

mZClass::~mZClass() {
  mZClass const** link = parent_ != nullptr ? &parent_->firstChild_ : &rootClass;
  while (*link != this) link = &(*link)->nextSibling_;
  *link = nextSibling_;
}

BaseNode* mZClass::create() const {
  return nullptr;
}

void mZClass::initClassStatics() const {}

void mZClass::clearClassStatics() const {}

// Not exported, as members of the class are.
struct KVBASE_LOCAL mZClass::Walk {
  // The record behind this one in a depth-first walk of the records below `top`; null at the end. A null top stands for all
  // trees.
  static mZClass const* next(mZClass const* record, mZClass const* top) {
    if (record->firstChild_ != nullptr) return record->firstChild_;
    for (; record != top; record = record->parent_) {
      if (record->nextSibling_ != nullptr) return record->nextSibling_;
    }
    return nullptr;
  }
};

bool mZClass::iterateAllClasses(mZClass const*& cursor) {
  cursor = cursor == nullptr ? rootClass : Walk::next(cursor, nullptr);
  return cursor != nullptr;
}

bool mZClass::iterateRootClasses(mZClass const*& cursor) {
  cursor = cursor == nullptr ? rootClass : cursor->nextSibling_;
  return cursor != nullptr;
}

bool mZClass::iterateBaseClasses(mZClass const*& cursor) const {
  cursor = cursor == nullptr ? parent_ : cursor->parent_;
  return cursor != nullptr;
}

bool mZClass::iterateChildClasses(mZClass const*& cursor) const {
  cursor = cursor == nullptr ? firstChild_ : cursor->nextSibling_;
  return cursor != nullptr;
}

bool mZClass::iterateDerivedClasses(mZClass const*& cursor) const {
  cursor = Walk::next(cursor == nullptr ? this : cursor, this);
  return cursor != nullptr;
}

bool mZClass::iterateLeafClasses(mZClass const*& cursor) const {
  while (iterateDerivedClasses(cursor)) {
    if (cursor->firstChild_ == nullptr) return true;
  }
  return false;
}

}  // namespace KV_1_1
