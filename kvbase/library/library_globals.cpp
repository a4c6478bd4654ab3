// SPDX-License-Identifier: MIT
//
// Every global of the library that needs code to come up or go down, in the order in which they come up. They go down
// in the reverse order. No other source of the library has such a global (`./kv check` looks), so that neither linker
// decides about the order.
//
//   up                                               down
//   1  the choice of text kernels                    last: nothing to do
//   2  String::NIL                                   its null pointer: nothing happens
//   3  String::EMPTY                                 its payload is freed
//   4  the library's Module, the class records       records newest first, then the Module
//      from BaseNode down
//   5  (objects built lazily, by their first user)   first of all, newest first
#include "kvbase/core/lazy.h"
#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/file_collection_iterator.h"
#include "kvbase/filesystem/file_system_iterator.h"
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

struct KernelChoice {
  KernelChoice() { strings::chooseKernels(); }
} const kernelChoice;

}  // namespace

// Constant-initialised, so NIL is usable from the very first instruction.
String const String::NIL;

String const String::EMPTY(KVW(""), 0);

// Constant-initialised data, of no concern to the order.
wchar String::outOfRange = 7;
mZClass const* mZClass::rootClass = nullptr;

namespace {

// The records enter themselves in the end list as they are built, behind the module that the first of them asks for.
struct ClassRecords {
  ClassRecords() {
    FileSystemItem::Class();
    Directory::Class();
    File::Class();
    FileSystemIterator::Class();
    DirectoryIterator::Class();
    FileIterator::Class();
    FileCollectionIterator::Class();
  }
  ~ClassRecords() { AtExitList::runDownTo(nullptr); }
} const classRecords;

// What enters the end list from here on was built lazily and goes first.
struct LazyObjects {
  LazyObjects() : mark_(AtExitList::newest()) {}
  ~LazyObjects() { AtExitList::runDownTo(mark_); }

 private:
  AtExitList::Entry* mark_;
} const lazyObjects;

}  // namespace

}  // namespace KV_1_1
