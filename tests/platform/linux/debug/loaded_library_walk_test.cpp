// SPDX-License-Identifier: MIT
//
// Walks through libraries that are loaded and unloaded while the process runs, with and without debug data.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "kvbase/platform/linux/debug/frame_rules.h"
#include "kvbase/platform/linux/files/descriptor.h"
#include "tests/platform/linux/debug/debug_help.h"
#include "tests/platform/linux/environment_variable.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/module_files.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

using ::testing::EndsWith;

struct Walk {
  std::vector<Frame> frames;
  bool endsInOrder = false;
  std::string searchPath;
};

int walkHere(void* data) {
  Walk& walk = *static_cast<Walk*>(data);
  _CONTEXT context = emptyContext();
  platform::nativeDebug().contextCapture()(&context);
  DebugHelp help;
  help.symInitialize(DebugHelp::process(), walk.searchPath.c_str(), 0);
  walk.frames = help.walk(context);
  walk.endsInOrder = help.endsInOrder;
  return 10;
}

// A library that calls back from within its functions.
class WalkedLibrary {
 public:
  explicit WalkedLibrary(std::filesystem::path const& file) : library_(dlopen(file.c_str(), RTLD_NOW)) {
    if (library_ == nullptr) ADD_FAILURE() << dlerror();
  }
  ~WalkedLibrary() { unload(); }
  WalkedLibrary(WalkedLibrary const&) = delete;
  WalkedLibrary& operator=(WalkedLibrary const&) = delete;

  void unload() {
    if (library_ != nullptr) dlclose(library_);
    library_ = nullptr;
  }
  std::uint64_t addressOf(char const* function) const {
    return reinterpret_cast<std::uint64_t>(dlsym(library_, function));
  }
  Walk walk(char const* function = "walkedOuter", std::string const& searchPath = "") const {
    Walk walk;
    walk.searchPath = searchPath;
    auto const call = reinterpret_cast<int (*)(int (*)(void*), void*)>(dlsym(library_, function));
    if (call == nullptr) {
      ADD_FAILURE() << "no function " << function;
      return walk;
    }
    EXPECT_GE(call(&walkHere, &walk), 14);
    return walk;
  }

 private:
  void* library_;
};

void expectWalkToTheProgramsStart(Walk const& walk) {
  EXPECT_TRUE(walk.endsInOrder);
  EXPECT_GE(indexOf(walk.frames, "main"), 4);
}

constexpr char const* kInner = "(anonymous namespace)::walkedInner";

TEST(LinuxLoadedLibraryWalk, LibraryThatIsLoadedLaterHasNamesFilesAndLines) {
  Walk before;  // so that the modules are known before
  walkHere(&before);
  WalkedLibrary const library(fixtureFolder() / "walked.so");
  Walk const walk = library.walk();
  int const inner = indexOf(walk.frames, kInner);
  ASSERT_EQ(inner, 1);
  EXPECT_THAT(walk.frames[1].file, EndsWith("tests/fixtures/call_stacks/walked.cpp"));
  EXPECT_EQ(walk.frames[1].module, "walked");
  EXPECT_EQ(walk.frames[2].name, "walkedOuter");
  EXPECT_THAT(walk.frames[2].file, EndsWith("tests/fixtures/call_stacks/walked.cpp"));
  EXPECT_GT(walk.frames[2].line, 0u);
  expectWalkToTheProgramsStart(walk);
}

// The inlined function has no frame; its line is that of the frame that it is a part of.
TEST(LinuxLoadedLibraryWalk, InlinedFunctionHasTheLineOfItsOwnText) {
  WalkedLibrary const library(fixtureFolder() / "walked.so");
  Walk const walk = library.walk();
  ASSERT_EQ(indexOf(walk.frames, kInner), 1);
  EXPECT_EQ(walk.frames[1].line, 9u);
}

TEST(LinuxLoadedLibraryWalk, FrameThatIsAlignedMoreThanUsualIsWalked) {
  WalkedLibrary const library(fixtureFolder() / "walked.so");
  Walk const walk = library.walk("walkedAligned");
  EXPECT_EQ(indexOf(walk.frames, "walkedAligned"), 1);
  expectWalkToTheProgramsStart(walk);
}

TEST(LinuxLoadedLibraryWalk, StrippedLibraryIsWalkedWithItsExportedNames) {
  for (char const* name : {"walked_stripped.so", "unidentified_stripped.so"}) {
    TempFolder const folder;
    copyFixture(folder, name, name);
    WalkedLibrary const library(folder.path(name));
    Walk const walk = library.walk();
    EXPECT_EQ(indexOf(walk.frames, kInner), -1) << name;
    EXPECT_EQ(indexOf(walk.frames, "walkedOuter"), 2) << name;
    EXPECT_EQ(walk.frames[2].line, 0u) << name;
    expectWalkToTheProgramsStart(walk);
  }
}

TEST(LinuxLoadedLibraryWalk, DebugDataBesideTheLibraryIsFound) {
  for (std::string const name : {"walked", "unidentified"}) {
    for (std::string const place : {"", ".debug/"}) {
      TempFolder const folder;
      copyFixture(folder, name + "_linked.so", name + ".so");
      copyFixture(folder, name + ".debug", place + name + ".debug");
      WalkedLibrary const library(folder.path(name + ".so"));
      Walk const walk = library.walk();
      EXPECT_EQ(indexOf(walk.frames, kInner), 1) << name << ' ' << place;
      EXPECT_EQ(walk.frames[1].line, 9u) << name << ' ' << place;
    }
  }
}

TEST(LinuxLoadedLibraryWalk, DebugDataInAFolderOfTheSearchPathIsFound) {
  TempFolder const folder;
  copyFixture(folder, "walked_linked.so", "walked.so");
  copyFixture(folder, "walked.debug", "elsewhere/walked.debug");
  WalkedLibrary const library(folder.path("walked.so"));
  Walk const walk = library.walk("walkedOuter", ".;" + folder.path("elsewhere").string() + ";SRV*c:\\x*http://y;");
  EXPECT_EQ(indexOf(walk.frames, kInner), 1);
}

TEST(LinuxLoadedLibraryWalk, DebugDataOfAnotherFileIsNotTaken) {
  for (std::string const name : {"walked", "unidentified"}) {
    TempFolder const folder;
    copyFixture(folder, name + "_linked.so", name + ".so");
    // The other library's data has another build id and another checksum.
    copyFixture(folder, name == "walked" ? "unidentified.debug" : "walked.debug", name + ".debug");
    WalkedLibrary const library(folder.path(name + ".so"));
    EXPECT_EQ(indexOf(library.walk().frames, kInner), -1) << name;
  }
}

TEST(LinuxLoadedLibraryWalk, DebugDataMayHaveTheNameOfTheLibrary) {
  TempFolder const folder;
  copyFixture(folder, "walked_linked.so", "walked.debug");
  copyFixture(folder, "walked.debug", ".debug/walked.debug");
  WalkedLibrary const library(folder.path("walked.debug"));
  EXPECT_EQ(indexOf(library.walk().frames, kInner), 1);
}

// Another library takes the place, and the addresses, of one that has been unloaded.
TEST(LinuxLoadedLibraryWalk, UnloadedLibraryIsForgotten) {
  TempFolder const folder;
  copyFixture(folder, "walked.so", "same.so");
  {
    WalkedLibrary const library(folder.path("same.so"));
    EXPECT_EQ(indexOf(library.walk().frames, kInner), 1);
  }
  std::filesystem::remove(folder.path("same.so"));
  copyFixture(folder, "unidentified_stripped.so", "same.so");
  WalkedLibrary const library(folder.path("same.so"));
  EXPECT_EQ(indexOf(library.walk().frames, kInner), -1);
  EXPECT_EQ(indexOf(library.walk().frames, "walkedOuter"), 2);
}

using platform::FrameRule;
using platform::ruleOfFrame;

TEST(LinuxFrameRules, RuleOfAnUnloadedLibraryIsForgotten) {
  DebugHelp const help;
  WalkedLibrary library(fixtureFolder() / "walked.so");
  std::uint64_t const start = library.addressOf("walkedOuter");
  for (int round = 0; round < 2; ++round) {
    std::uint64_t isChecked = 0;
    EXPECT_EQ(ruleOfFrame(start, false, isChecked).kind(), FrameRule::Kind::kSimple) << round;
  }
  library.unload();
  std::uint64_t isChecked = 0;
  EXPECT_EQ(ruleOfFrame(start, false, isChecked).kind(), FrameRule::Kind::kUnknown);
}

// If a call is the last instruction of a function, the return address lies in the next function.
TEST(LinuxFrameRules, RuleOfAReturnAddressIsThatOfTheCall) {
  DebugHelp const help;
  WalkedLibrary const library(fixtureFolder() / "walked.so");
  std::uint64_t const start = library.addressOf("walkedOuter");
  int different = 0;
  for (std::uint64_t counter = start + 1; counter < start + 16; ++counter) {
    std::uint64_t isChecked = 0;
    FrameRule const returned = ruleOfFrame(counter, true, isChecked);
    FrameRule const before = ruleOfFrame(counter - 1, false, isChecked);
    EXPECT_EQ(returned.low(), before.low());
    EXPECT_EQ(returned.high(), before.high());
    if (returned.low() != ruleOfFrame(counter, false, isChecked).low()) ++different;
  }
  EXPECT_GT(different, 0);
}

// More than there is room for, so that many have the same place, and of modules that stay and that do not.
TEST(LinuxFrameRules, RulesOfManyAddressesStayRight) {
  DebugHelp const help;
  WalkedLibrary const library(fixtureFolder() / "walked.so");
  auto const staying = reinterpret_cast<std::uint64_t>(&platform::ruleOfFrame);
  std::vector<std::uint64_t> addresses;
  for (std::uint64_t i = 0; i < 5000; ++i) addresses.push_back(staying + i);
  for (std::uint64_t i = 0; i < 16; ++i) addresses.push_back(library.addressOf("walkedOuter") + i);
  std::vector<FrameRule> first;
  std::uint64_t isChecked = 0;
  for (std::uint64_t const address : addresses) first.push_back(ruleOfFrame(address, false, isChecked));
  for (std::size_t i = 0; i < addresses.size(); ++i) {
    std::size_t const back = addresses.size() - 1 - i;
    FrameRule const again = ruleOfFrame(addresses[back], false, isChecked);
    EXPECT_EQ(again.low(), first[back].low()) << back;
    EXPECT_EQ(again.high(), first[back].high()) << back;
  }
}

TEST(LinuxLoadedLibraryWalk, LoadingAndUnloadingAgainStaysRight) {
  for (int i = 0; i < 4; ++i) {
    WalkedLibrary library(fixtureFolder() / (i % 2 == 0 ? "walked.so" : "unidentified.so"));
    Walk const walk = library.walk();
    ASSERT_EQ(indexOf(walk.frames, kInner), 1) << i;
    EXPECT_EQ(walk.frames[1].module, i % 2 == 0 ? "walked" : "unidentified");
    expectWalkToTheProgramsStart(walk);
  }
}

// The file on disk is not what is in memory, so nothing is taken from it; the unwind tables in memory serve.
TEST(LinuxLoadedLibraryWalk, ReplacedOrRemovedFileIsNotTrusted) {
  for (bool const replaced : {true, false}) {
    TempFolder const folder;
    copyFixture(folder, "walked.so", "same.so");
    WalkedLibrary const library(folder.path("same.so"));
    std::filesystem::remove(folder.path("same.so"));
    if (replaced) copyFixture(folder, "unidentified.so", "same.so");
    Walk const walk = library.walk();
    EXPECT_EQ(indexOf(walk.frames, kInner), -1) << replaced;
    expectWalkToTheProgramsStart(walk);
  }
}

// Each round starts with an empty session, since a library has been unloaded. A step or a lookup without memory fails;
// none throws, and the next round finds everything.
TEST(LinuxLoadedLibraryWalk, FailingAllocationsEndInFailures) {
  DebugHelp const help;
  WalkedLibrary const library(fixtureFolder() / "walked.so");
  std::uint64_t const address = library.addressOf("walkedOuter");
  for (int n = 1; n < 1000; ++n) {
    WalkedLibrary(fixtureFolder() / "unidentified.so").unload();
    _CONTEXT context = emptyContext();
    platform::nativeDebug().contextCapture()(&context);
    debug_help::StackFrame64 frame = {};
    alignas(debug_help::Symbol64) char block[1056] = {};
    auto* const symbol = reinterpret_cast<debug_help::Symbol64*>(block);
    symbol->sizeOfStruct = 32;
    symbol->maxNameLength = 1024;
    debug_help::Line64 line = {};
    line.sizeOfStruct = sizeof line;
    debug_help::ModuleInfo64 info = {};
    info.sizeOfStruct = sizeof info;
    std::uint64_t distance = 0;
    ulong32 lineDistance = 0;
    int succeeded = 0;
    AllocationFailure scope(n);
    succeeded += help.stackWalk64(0x8664, nullptr, nullptr, &frame, &context, nullptr, nullptr, nullptr, nullptr);
    succeeded += help.symGetSymFromAddr64(nullptr, address, &distance, symbol);
    succeeded += help.symGetLineFromAddr64(nullptr, address, &lineDistance, &line);
    succeeded += help.symGetModuleInfo64(nullptr, address, &info);
    scope.end();
    if (!scope.failed()) {
      EXPECT_EQ(succeeded, 4);
      EXPECT_GT(n, 5);
      return;
    }
  }
  ADD_FAILURE() << "there is no end of allocations";
}

TEST(LinuxLoadedLibraryWalk, NothingIsDownloaded) {
  platform::Descriptor const server(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(bind(server.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(server.get(), 10), 0);
  socklen_t size = sizeof address;
  ASSERT_EQ(getsockname(server.get(), reinterpret_cast<sockaddr*>(&address), &size), 0);
  std::string const url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
  EnvironmentVariable const urls("DEBUGINFOD_URLS", url.c_str());
  EnvironmentVariable const timeout("DEBUGINFOD_TIMEOUT", "1");

  TempFolder const folder;
  copyFixture(folder, "walked_linked.so", "walked.so");
  WalkedLibrary const library(folder.path("walked.so"));
  EXPECT_EQ(indexOf(library.walk().frames, kInner), -1);
  EXPECT_EQ(accept(server.get(), nullptr, nullptr), -1);
  EXPECT_EQ(errno, EAGAIN);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
