// SPDX-License-Identifier: MIT
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/debug_help.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/module_api.h"
#include "kvbase/platform/pointer_text.h"
#include "tests/platform/linux/environment_variable.h"
#include "tests/platform/linux/refused_call.h"
#include "tests/support/current_path.h"
#include "tests/support/skip.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

platform::DebugApi& debugApi() {
  return platform::nativeDebug();
}

std::uint64_t addressOf(void const* pointer) {
  return reinterpret_cast<std::uint64_t>(pointer);
}

bool readMemory(void const* from, void* to, std::size_t size, std::size_t& count) {
  return debugApi().readMemory(debugApi().currentProcess(), addressOf(from), to, size, count);
}

TEST(LinuxDebugMemory, IsReadFromHeapStackAndText) {
  std::vector<char> heap(10000);
  for (std::size_t i = 0; i < heap.size(); ++i) heap[i] = static_cast<char>(i * 7);
  char stack[100];
  memcpy(stack, heap.data(), sizeof stack);
  std::vector<char> copy(heap.size());
  std::size_t count = 0;
  EXPECT_TRUE(readMemory(heap.data(), copy.data(), copy.size(), count));
  EXPECT_EQ(count, copy.size());
  EXPECT_EQ(copy, heap);
  for (std::size_t size : {0, 1, 7, 8, 9, 99}) {
    std::fill(copy.begin(), copy.end(), 'x');
    EXPECT_TRUE(readMemory(stack + 1, copy.data(), size, count));
    EXPECT_EQ(count, size);
    EXPECT_EQ(memcmp(copy.data(), stack + 1, size), 0);
    EXPECT_EQ(copy[size], 'x');
  }
  EXPECT_TRUE(readMemory("text", copy.data(), 5, count));
  EXPECT_STREQ(copy.data(), "text");
}

TEST(LinuxDebugMemory, StackOfAnotherThreadIsRead) {
  char here[16] = "of the test";
  char copy[16] = "";
  std::thread([&] {
    std::size_t count = 0;
    EXPECT_TRUE(readMemory(here, copy, sizeof copy, count));
  }).join();
  EXPECT_STREQ(copy, here);
}

TEST(LinuxDebugMemory, UnmappedMemoryIsAFailure) {
  auto const pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  auto* const pages =
      static_cast<char*>(mmap(nullptr, 2 * pageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  ASSERT_NE(pages, MAP_FAILED);
  ASSERT_EQ(munmap(pages + pageSize, pageSize), 0);
  char copy[16];
  std::size_t count = 99;
  EXPECT_FALSE(readMemory(nullptr, copy, sizeof copy, count));
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kPartialCopy);
  EXPECT_FALSE(debugApi().readMemory(debugApi().currentProcess(), ~std::uint64_t{0} - 3, copy, sizeof copy, count));
  EXPECT_FALSE(readMemory(pages + pageSize, copy, sizeof copy, count));
  EXPECT_FALSE(readMemory(pages + pageSize - 8, copy, sizeof copy, count));
  EXPECT_LE(count, 8u);
  EXPECT_TRUE(readMemory(pages + pageSize - 8, copy, 8, count));
  munmap(pages, pageSize);
}

TEST(LinuxDebugMemory, IsReadThroughAFileWhereTheCallIsForbidden) {
  for (unsigned const error : {EPERM, ENOSYS}) {
    bool isRefused = false;
    std::thread([&] {
      isRefused = refuseCall(SYS_process_vm_readv, error);
      std::vector<char> const heap(100, 'x');
      std::vector<char> copy(heap.size());
      std::size_t count = 0;
      EXPECT_TRUE(readMemory(heap.data(), copy.data(), copy.size(), count)) << error;
      EXPECT_EQ(count, copy.size());
      EXPECT_EQ(copy, heap);
      EXPECT_FALSE(readMemory(nullptr, copy.data(), copy.size(), count)) << error;
      EXPECT_EQ(count, 0u);
    }).join();
    KVBASE_SKIP_UNLESS(isRefused, "a kernel that takes a filter of system calls");
  }
}

// Beyond the stack's end nothing is read without asking the system.
TEST(LinuxDebugMemory, EndOfTheStackIsAFailureNotACrash) {
  std::thread([] {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_getattr_np(pthread_self(), &attributes), 0);
    void* low = nullptr;
    std::size_t size = 0;
    pthread_attr_getstack(&attributes, &low, &size);
    pthread_attr_destroy(&attributes);
    std::vector<char> copy(size + (std::size_t{64} << 20));
    std::size_t count = 0;
    char here = 0;
    readMemory(&here, copy.data(), copy.size(), count);
    EXPECT_GT(count, 0u);
  }).join();
}

TEST(LinuxDebugContext, HasTheRegistersOfItsCaller) {
  _CONTEXT context;
  memset(&context, 0xAB, sizeof context);
  context.ContextFlags = platform::debug_help::kContextFull;
  auto const capture = debugApi().contextCapture();
  capture(&context);
  char local;
  EXPECT_EQ(context.ContextFlags, platform::debug_help::kContextFull);
  EXPECT_EQ(context.Rdi, addressOf(&context));
  EXPECT_LE(context.Rsp, addressOf(&local));
  EXPECT_GT(context.Rsp + 65536, addressOf(&local));
  EXPECT_EQ(context.Rsp % 16, 0u);
  EXPECT_EQ(context.SegCs, 0x33);
  EXPECT_EQ(context.Dr0, 0xABABABABABABABABu);
}

TEST(LinuxDebugContext, CaptureChangesNoRegister) {
  _CONTEXT first = {};
  _CONTEXT second = {};
  auto const capture = debugApi().contextCapture();
  capture(&first);
  capture(&second);
  EXPECT_EQ(first.Rbx, second.Rbx);
  EXPECT_EQ(first.Rbp, second.Rbp);
  EXPECT_EQ(first.Rsp, second.Rsp);
  EXPECT_EQ(first.R12, second.R12);
  EXPECT_EQ(first.R15, second.R15);
  EXPECT_NE(first.Rip, second.Rip);
}

TEST(LinuxDebugProcess, HandlesAreConstants) {
  EXPECT_EQ(debugApi().currentProcess(), reinterpret_cast<void*>(static_cast<std::intptr_t>(-1)));
  EXPECT_EQ(debugApi().currentThread(), GetCurrentThread());
  EXPECT_EQ(debugApi().currentProcessId(), static_cast<ulong32>(getpid()));
}

TEST(LinuxDebugProcess, ProgramPathHasBothNotations) {
  std::string narrow;
  wstring wide;
  wstring ofModule;
  ASSERT_TRUE(debugApi().programPath(narrow));
  ASSERT_TRUE(debugApi().programPath(wide));
  EXPECT_EQ(std::filesystem::path(narrow), std::filesystem::canonical("/proc/self/exe"));
  EXPECT_EQ(wide[0], KVW('\\'));
  ASSERT_TRUE(platform::nativeModules().modulePath(nullptr, ofModule));
  if (wide.size() < 260) EXPECT_EQ(wide, ofModule);
}

TEST(LinuxDebugProcess, CurrentDirectory) {
  TempFolder const folder;
  std::string path = "before";
  {
    CurrentPath const current(folder.path());
    EXPECT_TRUE(debugApi().currentDirectory(path));
    EXPECT_EQ(path, folder.path().string());
  }
  std::filesystem::create_directory(folder.path("gone"));
  CurrentPath const current(folder.path("gone"));
  std::filesystem::remove(folder.path("gone"));
  path = "before";
  EXPECT_FALSE(debugApi().currentDirectory(path));
  EXPECT_EQ(path, "before");
}

TEST(LinuxDebugProcess, EnvironmentVariables) {
  EnvironmentVariable const set("KVBASE_TEST_A", "value \u00E4");
  EnvironmentVariable const empty("KVBASE_TEST_B", "");
  EnvironmentVariable const unset("KVBASE_TEST_C", nullptr);
  std::string narrow = "before";
  wstring wide = KVW("before");
  EXPECT_TRUE(debugApi().environmentVariable("KVBASE_TEST_A", narrow));
  EXPECT_EQ(narrow, "value \u00E4");
  EXPECT_TRUE(debugApi().environmentVariable(KVW("KVBASE_TEST_A"), wide));
  EXPECT_EQ(wide, KVW("value \u00E4"));
  for (char const* name : {"KVBASE_TEST_B", "KVBASE_TEST_C"}) {
    narrow = "before";
    EXPECT_FALSE(debugApi().environmentVariable(name, narrow)) << name;
    EXPECT_EQ(narrow, "before");
  }
  wide = KVW("before");
  EXPECT_FALSE(debugApi().environmentVariable(KVW("KVBASE_TEST_B"), wide));
  EXPECT_FALSE(debugApi().environmentVariable(KVW("KVBASE_TEST_C"), wide));
  EXPECT_EQ(wide, KVW("before"));
}

TEST(LinuxDebugProcess, UserNameIsThatOfTheUser) {
  std::string name;
  ASSERT_TRUE(debugApi().userName(name));
  passwd const* const entry = getpwuid(geteuid());
  EXPECT_EQ(name, entry != nullptr ? entry->pw_name : std::to_string(geteuid()));
}

TEST(LinuxDebugProcess, SystemVersionIsThatOfTheKernel) {
  platform::SystemVersion version;
  ASSERT_TRUE(debugApi().systemVersion(version));
  utsname names;
  ASSERT_EQ(uname(&names), 0);
  std::string const release = names.release;
  std::string const start = std::to_string(version.major) + '.' + std::to_string(version.minor);
  EXPECT_EQ(release.compare(0, start.size(), start), 0) << release;
  EXPECT_THAT(release, ::testing::EndsWith(version.servicePack));
  EXPECT_EQ(version.suiteMask, 0);
  EXPECT_EQ(version.productType, 0);
}

TEST(LinuxDebugProcess, FileWithoutVersion) {
  for (char const* file : {"/bin/sh", "/none/at/all", ""}) {
    EXPECT_EQ(debugApi().versionInfoSize(file), 0u) << file;
    char block[8];
    EXPECT_FALSE(debugApi().versionInfo(file, sizeof block, block)) << file;
  }
  EXPECT_EQ(debugApi().versionInfoSize(nullptr), 0u);
}

// There may be no log; that a text gets lost then is no failure.
TEST(LinuxPointerText, IsThatOfThePrintFunctions) {
  for (std::uint64_t const value :
       {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{0xABCDEF0123}, ~std::uint64_t{0}}) {
    char expected[32];
    snprintf(expected, sizeof expected, "%p", reinterpret_cast<void*>(value));
    EXPECT_STREQ(platform::PointerText(value).get(), expected);
  }
}

TEST(LinuxDebugChannel, TakesAnyText) {
  debugApi().output("percent %s%n\n");
  debugApi().output(static_cast<char const*>(nullptr));
  debugApi().output(KVW("wide \u00E4 %s"));
  debugApi().output(static_cast<wchar const*>(nullptr));
  wchar const half[] = {0xD83D, 0};
  debugApi().output(half);
  debugApi().output("");
}

TEST(LinuxDebugBreak, StopsWithATrap) {
  pid_t const child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    debugApi().breakIntoDebugger();
    _exit(0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGTRAP);
}

TEST(LinuxDebugBreak, GoesOnIfTheTrapIsHandled) {
  auto const previous = signal(SIGTRAP, [](int) {});
  debugApi().breakIntoDebugger();
  signal(SIGTRAP, previous);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
