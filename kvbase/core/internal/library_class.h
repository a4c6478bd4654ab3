// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/core/class_record.h"
#include "kvbase/core/internal/lazy.h"
#include "kvbase/modules/internal/library_module.h"

namespace KV_1_1 {

// The record of one class of this library, meant for a function-local static:
//
//   mZClass const* File::Class() {
//     static LibraryClass<ClassCreator> record(KVW("File"), &FileSystemItem::Class);
//     return record.get();
//   }
//
// The module is fetched first and the parent's record next, so both stand before it and go after it, however the calls
// come in.
template <class Creator>
class LibraryClass {
 public:
  explicit LibraryClass(wchar const* name) : record_(name, getLibraryModule(), ClassVersion()) {}
  LibraryClass(wchar const* name, mZClass const* (*parentClass)())
      : LibraryClass(name, getLibraryModule(), parentClass) {}

  mZClass const* get() { return &record_.get(); }

 private:
  LibraryClass(wchar const* name, Module const& module, mZClass const* (*parentClass)())
      : record_(name, parentClass(), module, ClassVersion()) {}

  Lazy<Creator> record_;
};

}  // namespace KV_1_1
