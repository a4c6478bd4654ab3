// SPDX-License-Identifier: MIT
//
// All globals of the library that have a constructor or destructor to run, in the order of their construction. No other
// source has such a global (`./kv check` makes sure), so no linker decides about the order. Destruction goes in the
// reverse order.
//
//      construction                                     destruction
//   1  the choice of text kernels (RunTime)             releases what the run time of C++ holds
//   2  String::NIL                                      nothing to do: its pointer is null
//   3  String::EMPTY                                    frees its payload
//   4  the library's Module, then the class records     the records, newest first, then the Module
//      from BaseNode down
//   5  the table of inverse lengths                     nothing to do
//   6  VgStackWalker::globalStackWalker                 ends symbol handling, frees the debug-help library
//   7  SymbolTable::EMPTY                               frees its containers
//   8  the mark in the at-exit list (LazyObjects)       the Lazy objects built since, newest first
//   9  the start of the library, unless the system      its end
//      calls an entry function of it
//
// The other exported data is constant-initialised: ScanPtColor<...>::nullReference and KVBoundingBoxTraits<...> stand
// with their classes, and have their values before the first of these.
#include "kvbase/core/lazy.h"
#include "kvbase/diagnostics/vg_stack_walker.h"
#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/file_collection_iterator.h"
#include "kvbase/filesystem/file_system_iterator.h"
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/library/library_entry.h"
#include "kvbase/modules/symbol_table.h"
#include "kvbase/platform/internal/run_time.h"
#include "kvbase/records/info_string_map.h"
#include "kvbase/records/internal/inverse_length_table.h"
#include "kvbase/records/observer_info.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

struct RunTime {
  RunTime() { strings::chooseKernels(); }
  ~RunTime() { platform::releaseRunTime(); }
} const runTime;

}  // namespace

// Constant-initialised, so NIL can be used before any constructor has run.
String const String::NIL;

String const String::EMPTY(KVW(""), 0);

// Constant-initialised data, for which the order does not matter.
wchar String::outOfRange = 7;
mZClass const* mZClass::rootClass = nullptr;

namespace {

ClassRecords<FileSystemItem, Directory, File, FileSystemIterator, DirectoryIterator, FileIterator,
             FileCollectionIterator, ObserverInfo, InfoStringMap> const classRecords;

}  // namespace

namespace records {
InverseLengthTable const inverseLengthTable;
}  // namespace records

}  // namespace KV_1_1

VgStackWalker VgStackWalker::globalStackWalker;

namespace KV_1_1 {

SymbolTable const SymbolTable::EMPTY;

namespace {

// Lazy objects registered after this mark are destroyed first.
struct LazyObjects {
  LazyObjects() : mark_(AtExitList::newest()) {}
  ~LazyObjects() { AtExitList::destroyDownTo(mark_); }

 private:
  AtExitList::Entry* mark_;
} const lazyObjects;

// A program that the library is linked into starts it here, and on one system every library starts here.
ModuleEntry const entry(&library::attach, &library::detach);

}  // namespace

}  // namespace KV_1_1
