// SPDX-License-Identifier: MIT
//
// A library that has been loaded, used and unloaded leaves nothing behind. Not with a sanitizer, which keeps what it knows of
// each library that was ever loaded.
#include <gtest/gtest.h>

#include <string>

#include "tests/shared/loader.h"

namespace {

// Memory and objects of the system that the process holds.
struct Held {
  long long bytes = allocatedBytes();
  int objects = heldObjects();
};

// Loads a library, calls a function of it unless the name is null, and unloads it.
void loadAndUnload(std::string const& stem, char const* function) {
  void* const library = loadLibrary(stem);
  // One that cannot be started may refuse.
  ASSERT_TRUE(library != nullptr || stem == "unstartable");
  if (library == nullptr) return;
  if (function != nullptr) functionOf(library, function)();
  ASSERT_TRUE(unloadLibrary(library));
  ASSERT_FALSE(isLibraryLoaded(stem));
  ASSERT_FALSE(isLibraryLoaded("KVBase"));
}

struct CyclesRow {
  char const* name;
  char const* stem;
  char const* function;
  int count;
  bool isClient;
};

// The loader of the system keeps tables that grow for a while.
constexpr int kFirst = 20;
constexpr long long kTables = 16384;

class LibraryLoadCycles : public ::testing::TestWithParam<CyclesRow> {};

TEST_P(LibraryLoadCycles, LeaveNothingBehind) {
  CyclesRow const& row = GetParam();
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  for (int round = 0; round < kFirst; ++round) loadAndUnload(row.stem, row.function);
  Held const before;
  for (int round = 0; round < row.count && !HasFatalFailure(); ++round) loadAndUnload(row.stem, row.function);
  Held const after;
  ::testing::internal::GetCapturedStdout();
  ::testing::internal::GetCapturedStderr();
  EXPECT_LT(after.bytes - before.bytes, kTables + row.count * leakOfRunTime(row.isClient));
  EXPECT_EQ(after.objects, before.objects);
}

constexpr CyclesRow kCycles[] = {
    {"TheLibrary", "stripped/KVBase", nullptr, 1000, false},
    {"TheLibraryInUse", "walker", "useLibrary", 30, true},
    {"AClientModule", "shapes", "useShapes", 30, true},
    {"ALibraryThatCannotBeStarted", "unstartable", nullptr, 30, false},
};
INSTANTIATE_TEST_SUITE_P(Of, LibraryLoadCycles, ::testing::ValuesIn(kCycles),
                         [](auto const& row) { return std::string(row.param.name); });

}  // namespace
