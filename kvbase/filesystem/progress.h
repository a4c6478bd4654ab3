// SPDX-License-Identifier: MIT
//
// What the applications are told while files are copied.
#pragma once

// The progress of one task, of the applications' own making; it stands at global scope.
//
// Thread rule: called on the thread that does the work.
class IProgress {
 public:
  // The part that is done, from 0 to 1; not a number for a task of no size. The first virtual operation: the order is
  // a contract between modules.
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
  // There is nothing to assign.
  KVFileProgressInterface& operator=(KVFileProgressInterface const&) { return *this; }
  KVFileProgressInterface& operator=(KVFileProgressInterface&&) { return *this; }

  // One more file has been copied.
  virtual void fileCopied() = 0;

 protected:
  // Never deleted through this interface: whoever made the object keeps it.
  ~KVFileProgressInterface() {}
};

}  // namespace KV_1_1
