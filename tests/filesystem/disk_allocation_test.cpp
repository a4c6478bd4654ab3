// SPDX-License-Identifier: MIT
//
// Memory that runs out at any point of an operation on the real disk: std::bad_alloc comes through, nothing leaks,
// nothing stays open, and nothing is removed, overwritten or made that was not to be. Operations that end in a message
// are not here: formatting a text ends the process when memory runs out while the text is put in place.
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

#include "tests/filesystem/disk_fault_support.h"
#include "tests/support/allocation_failure.h"

namespace KV_1_1 {
namespace {

using namespace KV_1_1::testing;

class DiskAllocation : public DiskTree {
 protected:
  // Runs the operation on a fresh tree with the first, second, ... allocation failing until it passes.
  void sweepAllocations(std::string const& name, std::function<void()> const& run) {
    SCOPED_TRACE(name);
    Tree const before = tree();
    FailingFiles files;
    platform::ScopedBackend<platform::FileApi> const scope(files);
    run();  // what is built on first use stands from here on
    Tree const done = tree();
    build();
    for (int n = 1; n < 20000; ++n) {
      bool threw = false;
      AllocationFailure memory(n);
      try {
        run();
      } catch (std::bad_alloc const&) {
        threw = true;
      }
      memory.end();
      SCOPED_TRACE("allocation " + std::to_string(n));
      ASSERT_EQ(memory.live(), 0);
      ASSERT_EQ(memory.mismatched(), 0);
      ASSERT_EQ(files.openInAll(), 0);
      ASSERT_EQ(threw, memory.failed());
      ASSERT_EQ(messages.take(), Texts());
      Tree const after = tree();
      expectBetween(before, after, done);
      if (after != before) build();
      if (memory.failed()) continue;
      EXPECT_EQ(after, done);
      return;
    }
    FAIL() << "never passed";
  }
};

TEST_F(DiskAllocation, Files) {
  auto const one = file(KVW("one.txt")), two = file(KVW("two.txt")), fresh = file(KVW("new.txt"));
  auto const empty = directory(KVW("u"));
  sweepAllocations("copy", [&] { one->copy(fresh, false); });
  sweepAllocations("copy over a file", [&] { one->copy(two, true); });
  sweepAllocations("copy into a folder", [&] { one->copy(empty, false); });
  sweepAllocations("move", [&] { one->move(fresh); });
  sweepAllocations("remove", [&] { one->remove(); });
  sweepAllocations("touch", [&] { one->touch(); });
  sweepAllocations("touch of a missing file", [&] { fresh->touch(); });
  sweepAllocations("setAsReadOnly", [&] { one->setAsReadOnly(); });
}

TEST_F(DiskAllocation, Queries) {
  auto const one = file(KVW("one.txt")), two = file(KVW("two.txt"));
  auto const full = directory(KVW("s"));
  sweepAllocations("access", [&] { one->access(6), full->access(4); });
  sweepAllocations("stat", [&] {
    struct _stat64i32 status;
    one->stat(status), full->stat(status);
  });
  sweepAllocations("times", [&] {
    FILETIME time;
    one->getCreationTime(&time), full->getLastWriteTime(&time);
  });
  sweepAllocations("hasEqualSize", [&] { one->hasEqualSize(two); });
  sweepAllocations("isReadOnly", [&] { one->isReadOnly(); });
  sweepAllocations("isEmpty", [&] { full->isEmpty(); });
}

TEST_F(DiskAllocation, Directories) {
  auto const full = directory(KVW("s")), other = directory(KVW("t")), empty = directory(KVW("u"));
  auto const fresh = directory(KVW("n\\m"));
  auto const deepFile = file(KVW("n\\m\\f.txt"));
  CountedFiles progress;
  sweepAllocations("create", [&] { fresh->create(); });
  sweepAllocations("createParentDirectories", [&] { deepFile->createParentDirectories(); });
  sweepAllocations("remove of an empty folder", [&] { empty->remove(false); });
  sweepAllocations("remove, recursive", [&] { full->remove(true); });
  sweepAllocations("removeContents", [&] { full->removeContents(false); });
  sweepAllocations("removeContents, recursive", [&] { full->removeContents(true); });
  sweepAllocations("copyContents", [&] { full->copyContents(empty, true, false, &progress); });
  sweepAllocations("copyContents, overwriting", [&] { full->copyContents(other, true, true, &progress); });
}

}  // namespace
}  // namespace KV_1_1
