// SPDX-License-Identifier: MIT
//
// How applications follow the copying of files.
#pragma once

// The progress of one task. Applications implement it; it stands at global scope, where they expect it.
//
// Thread rule: called on the thread that does the work.
// REQUIRES: an implementation throws nothing.
class IProgress {
 public:
  // The part that is done, from 0 to 1. COMPAT: not a number for a task of size 0. It must stay the first virtual
  // operation, because modules that are built apart rely on the order.
  virtual void setProgress(double fraction) = 0;

  virtual ~IProgress() {}
};

namespace KV_1_1 {

// Counts the files that Directory::copyContents copies.
class KVFileProgressInterface {
 public:
  KVFileProgressInterface() {}
  KVFileProgressInterface(KVFileProgressInterface const&) {}
  KVFileProgressInterface(KVFileProgressInterface&&) {}
  // There are no fields to assign.
  KVFileProgressInterface& operator=(KVFileProgressInterface const&) { return *this; }
  KVFileProgressInterface& operator=(KVFileProgressInterface&&) { return *this; }

  // One more file has been copied.
  virtual void fileCopied() = 0;

 protected:
  // Nobody deletes through this interface: the object stays its maker's.
  ~KVFileProgressInterface() {}
};

}  // namespace KV_1_1
