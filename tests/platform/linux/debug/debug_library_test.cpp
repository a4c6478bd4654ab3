// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/debug/libdw.h"
#include "tests/platform/linux/debug/debug_help.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/module_files.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

platform::DebugApi& debug() {
  return platform::nativeDebug();
}

// Puts another name in the place of libdw's.
class LibdwFile {
 public:
  explicit LibdwFile(char const* file) : previous_(platform::libdwFile) { platform::libdwFile = file; }
  ~LibdwFile() { platform::libdwFile = previous_; }
  LibdwFile(LibdwFile const&) = delete;
  LibdwFile& operator=(LibdwFile const&) = delete;

 private:
  char const* previous_;
};

class Library {
 public:
  explicit Library(wchar const* path) : handle_(debug().loadLibrary(path)) {}
  ~Library() {
    if (handle_ != nullptr) EXPECT_TRUE(debug().freeLibrary(handle_));
  }
  Library(Library const&) = delete;
  Library& operator=(Library const&) = delete;

  bool isThere() const { return handle_ != nullptr; }
  template <class Function>
  Function find(char const* name) const {
    return reinterpret_cast<Function>(debug().function(handle_, name));
  }
  bool has(char const* name) const { return debug().function(handle_, name) != nullptr; }

 private:
  HINSTANCE handle_;
};

constexpr char const* kFunctions[] = {"SymInitialize",        "SymCleanup",           "StackWalk64",
                                      "SymGetOptions",        "SymSetOptions",        "SymFunctionTableAccess64",
                                      "SymGetLineFromAddr64", "SymGetModuleBase64",   "SymGetModuleInfo64",
                                      "SymGetSymFromAddr64",  "UnDecorateSymbolName", "SymLoadModule64",
                                      "SymGetSearchPath"};

TEST(LinuxDebugLibrary, DebugHelpHasAllFunctions) {
  Library const library(KVW("dbghelp.dll"));
  ASSERT_TRUE(library.isThere());
  for (char const* name : kFunctions) EXPECT_TRUE(library.has(name)) << name;
  EXPECT_FALSE(library.has("SymFromAddr"));
  EXPECT_FALSE(library.has("dwfl_begin"));
  EXPECT_FALSE(library.has(""));
}

TEST(LinuxDebugLibrary, MissingLibdwIsAMissingLibrary) {
  LibdwFile const file("libdw-that-is-not-there.so.1");
  EXPECT_EQ(debug().loadLibrary(KVW("dbghelp.dll")), nullptr);
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kModuleNotFound);
}

// The list of modules is the loader's.
TEST(LinuxDebugLibrary, MissingLibdwLeavesTheSnapshot) {
  LibdwFile const file("libdw-that-is-not-there.so.1");
  EXPECT_TRUE(Library(KVW("kernel32.dll")).isThere());
}

TEST(LinuxDebugLibrary, LibraryWithoutTheFunctionsOfLibdwHasNone) {
  LibdwFile const file("libelf.so.1");
  Library const library(KVW("dbghelp.dll"));
  ASSERT_TRUE(library.isThere());
  for (char const* name : kFunctions) EXPECT_FALSE(library.has(name)) << name;
}

TEST(LinuxDebugLibrary, MissingFunctionOfLibdwIsAMissingFunction) {
  platform::LibdwFunctions all;
  void* const library = platform::openLibdw(all);
  ASSERT_NE(library, nullptr);
  EXPECT_TRUE(all.canList() && all.canName() && all.canLine() && all.canStep() && all.canLearn());
  platform::LibdwFunctions some = all;
  some.lineInfo = nullptr;
  EXPECT_FALSE(some.canLine());
  EXPECT_TRUE(some.canStep() && some.canName());
  some = all;
  some.walkThread = nullptr;
  EXPECT_FALSE(some.canStep());
  some = all;
  some.symbolOfAddress = nullptr;
  EXPECT_FALSE(some.canName());
  // Older versions of libdw do not have this function; a walk needs none.
  some = all;
  some.frameRegisterValue = nullptr;
  EXPECT_TRUE(some.canStep());
  some = all;
  some.begin = nullptr;
  EXPECT_FALSE(some.canList() || some.canName() || some.canLine() || some.canStep());
  dlclose(library);
}

TEST(LinuxDebugLibrary, OtherBareNamesAreNotThere) {
  for (wchar const* name : {KVW("tlhelp32.dll"), KVW("psapi.dll"), KVW("libc.so.6"), KVW("dbghelp"), KVW("")}) {
    EXPECT_EQ(debug().loadLibrary(name), nullptr);
  }
}

TEST(LinuxDebugLibrary, PathIsARealFile) {
  TempFolder const folder;
  copyFixture(folder, "walked.so", "a/walked.so");
  folder.write("a/text.so", "no library");
  Library const library(folder.text(KVW("a\\walked.so")).c_str());
  ASSERT_TRUE(library.isThere());
  EXPECT_TRUE(library.has("walkedOuter"));
  EXPECT_FALSE(library.has("SymInitialize"));
  EXPECT_EQ(debug().loadLibrary(folder.text(KVW("a\\none.so")).c_str()), nullptr);
  EXPECT_EQ(debug().loadLibrary(folder.text(KVW("a\\text.so")).c_str()), nullptr);
  EXPECT_EQ(debug().loadLibrary(folder.text(KVW("a")).c_str()), nullptr);
}

TEST(LinuxDebugLibrary, NullHasNoFunctionAndIsNotFreed) {
  EXPECT_EQ(debug().function(nullptr, "SymInitialize"), nullptr);
  EXPECT_FALSE(debug().freeLibrary(nullptr));
}

TEST(LinuxDebugLibrary, FailingAllocationLeavesNothing) {
  for (AllocationSweep sweep; sweep.next();) {
    sweep.run([] { debug().freeLibrary(debug().loadLibrary(KVW("kernel32.dll"))); });
  }
}

// --- The snapshot of modules

struct Snapshot {
  debug_help::CreateToolhelp32Snapshot create;
  debug_help::Module32First first;
  debug_help::Module32Next next;

  explicit Snapshot(Library const& library)
      : create(library.find<debug_help::CreateToolhelp32Snapshot>("CreateToolhelp32Snapshot")),
        first(library.find<debug_help::Module32First>("Module32First")),
        next(library.find<debug_help::Module32Next>("Module32Next")) {}
};

debug_help::ModuleEntry32 emptyEntry() {
  debug_help::ModuleEntry32 entry = {};
  entry.size = sizeof entry;
  return entry;
}

void* const kNoSnapshot = reinterpret_cast<void*>(static_cast<std::intptr_t>(-1));

TEST(LinuxModuleSnapshot, ListsTheProgramAndItsLibraries) {
  Library const library(KVW("kernel32.dll"));
  Snapshot const service(library);
  void* const handle = service.create(debug_help::kSnapshotModules, debug().currentProcessId());
  ASSERT_NE(handle, kNoSnapshot);
  std::vector<debug_help::ModuleEntry32> entries;
  debug_help::ModuleEntry32 entry = emptyEntry();
  for (int more = service.first(handle, &entry); more != 0; more = service.next(handle, &entry)) {
    entries.push_back(entry);
  }
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kNoMoreFiles);
  EXPECT_TRUE(debug().closeHandle(handle));

  ASSERT_GE(entries.size(), 3u);
  std::string program;
  ASSERT_TRUE(debug().programPath(program));
  EXPECT_EQ(entries[0].path, program);
  EXPECT_EQ(entries[0].moduleName, program.substr(program.rfind('/') + 1));
  EXPECT_EQ(entries[0].processId, static_cast<ulong32>(getpid()));
  bool hasLibc = false;
  auto const here = reinterpret_cast<unsigned char const*>(&emptyEntry);
  for (auto const& each : entries) {
    EXPECT_EQ(each.size, 568u);
    EXPECT_EQ(reinterpret_cast<unsigned char*>(each.module), each.baseAddress);
    EXPECT_GT(each.baseSize, 0u);
    hasLibc = hasLibc || std::string(each.moduleName) == "libc.so.6";
    bool const containsThis = here >= each.baseAddress && here < each.baseAddress + each.baseSize;
    EXPECT_EQ(containsThis, &each == &entries[0]) << each.path;
  }
  EXPECT_TRUE(hasLibc);
}

TEST(LinuxModuleSnapshot, FirstStartsAgain) {
  Library const library(KVW("kernel32.dll"));
  Snapshot const service(library);
  void* const handle = service.create(debug_help::kSnapshotModules, 0);
  debug_help::ModuleEntry32 first = emptyEntry();
  debug_help::ModuleEntry32 again = emptyEntry();
  EXPECT_NE(service.first(handle, &first), 0);
  EXPECT_NE(service.next(handle, &again), 0);
  EXPECT_STRNE(again.path, first.path);
  EXPECT_NE(service.first(handle, &again), 0);
  EXPECT_STREQ(again.path, first.path);
  EXPECT_TRUE(debug().closeHandle(handle));
}

TEST(LinuxModuleSnapshot, RefusesOtherProcessesKindsAndRecords) {
  Library const library(KVW("kernel32.dll"));
  Snapshot const service(library);
  EXPECT_EQ(service.create(debug_help::kSnapshotModules, 1), kNoSnapshot);
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kAccessDenied);
  EXPECT_EQ(service.create(2, debug().currentProcessId()), kNoSnapshot);
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kInvalidParameter);
  debug_help::ModuleEntry32 entry = emptyEntry();
  EXPECT_EQ(service.first(kNoSnapshot, &entry), 0);
  EXPECT_EQ(service.next(nullptr, &entry), 0);
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kInvalidHandle);
  void* const handle = service.create(debug_help::kSnapshotModules, 0);
  entry.size = 560;
  EXPECT_EQ(service.first(handle, &entry), 0);
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kInvalidParameter);
  EXPECT_TRUE(debug().closeHandle(handle));
  EXPECT_FALSE(debug().closeHandle(kNoSnapshot));
  EXPECT_FALSE(debug().closeHandle(nullptr));
}

TEST(LinuxModuleSnapshot, LongPathIsCut) {
  TempFolder const folder;
  std::string const name(200, 'x');
  std::string const path = name + '/' + name + ".so";
  copyFixture(folder, "walked.so", path);
  void* const loaded = dlopen(folder.path(path).c_str(), RTLD_NOW);
  ASSERT_NE(loaded, nullptr);
  Library const library(KVW("kernel32.dll"));
  Snapshot const service(library);
  void* const handle = service.create(debug_help::kSnapshotModules, 0);
  debug_help::ModuleEntry32 entry = emptyEntry();
  bool found = false;
  for (int more = service.first(handle, &entry); more != 0; more = service.next(handle, &entry)) {
    if (std::string(entry.moduleName) != name + ".so") continue;
    found = true;
    EXPECT_EQ(std::string(entry.path), folder.path(path).string().substr(0, 259));
  }
  EXPECT_TRUE(found);
  debug().closeHandle(handle);
  dlclose(loaded);
}

TEST(LinuxModuleSnapshot, FailingAllocationIsNoSnapshot) {
  Library const library(KVW("kernel32.dll"));
  Snapshot const service(library);
  for (AllocationSweep sweep; sweep.next();) {
    void* handle = kNoSnapshot;
    sweep.runReporting([&] { handle = service.create(debug_help::kSnapshotModules, 0); });
    if (handle == kNoSnapshot) EXPECT_EQ(platform::nativeErrors().lastError(), platform::kNotEnoughMemory);
    if (handle != kNoSnapshot) debug().closeHandle(handle);
    EXPECT_TRUE(handle != kNoSnapshot || sweep.failed());
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
