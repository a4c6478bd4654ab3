// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/data_modules.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "kvbase/platform/module_api.h"
#include "tests/platform/linux/open_descriptors.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/pe_image.h"
#include "tests/support/temp_folder.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;

platform::ModuleApi& modules() {
  return platform::nativeModules();
}

constexpr wchar kType[] = KVW("METADATA");
std::string const kLarge(20000, 'x');

PeImage sample() {
  PeImage image;
  image.add(kType, KVW("RESOURCE.H"), 1031, "#define A 1\r\n");
  image.add(kType, KVW("LARGE"), 1031, kLarge);
  image.add(kType, KVW("EMPTY"), 1031, "");
  image.add(6, 7, 1033, stringBlock({{4, KVW("Hello")}}));
  return image;
}

std::string contentOf(platform::ResourceBytes const& bytes) {
  return bytes.data == nullptr ? "none" : std::string(static_cast<char const*>(bytes.data), bytes.size);
}
std::string find(HINSTANCE module, wchar const* name) {
  HRSRC const resource = modules().findResource(module, name, kType);
  return resource == nullptr ? "none" : contentOf(modules().resourceBytes(module, resource));
}

class DataModules : public ::testing::Test {
 protected:
  ~DataModules() override {
    for (HINSTANCE const module : loaded_) EXPECT_TRUE(modules().freeLibrary(module));
  }
  HINSTANCE load(fs::path const& name) {
    HINSTANCE const module = modules().loadAsData(folder.text(name.u16string()).c_str());
    if (module != nullptr) loaded_.push_back(module);
    return module;
  }
  HINSTANCE load(std::string const& bytes, char const* name) {
    folder.write(name, bytes);
    return load(fs::path(name));
  }
  bool release(HINSTANCE module) {
    loaded_.erase(std::remove(loaded_.begin(), loaded_.end(), module), loaded_.end());
    return modules().freeLibrary(module);
  }

  TempFolder folder;

 private:
  std::vector<HINSTANCE> loaded_;
};

TEST_F(DataModules, GiveTheirResources) {
  HINSTANCE const module = load(sample().build(), "tool.dll");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(find(module, KVW("resource.h")), "#define A 1\r\n");
  EXPECT_EQ(find(module, KVW("LARGE")), kLarge);
  EXPECT_EQ(find(module, KVW("EMPTY")), "");
  EXPECT_EQ(find(module, KVW("MISSING")), "none");
  wstring text = KVW("unchanged");
  EXPECT_FALSE(modules().stringTableEntry(module, 99, text));
  EXPECT_FALSE(modules().stringTableEntry(module, 10000, text));
  EXPECT_EQ(text, KVW("unchanged"));
  EXPECT_TRUE(modules().stringTableEntry(module, 100, text));
  EXPECT_EQ(text, KVW("Hello"));
}

TEST_F(DataModules, BytesAreCopiedOnceAndStayWhereTheyAre) {
  HINSTANCE const module = load(sample().build(), "tool.dll");
  HRSRC const resource = modules().findResource(module, KVW("LARGE"), kType);
  platform::ResourceBytes const first = modules().resourceBytes(module, resource);
  EXPECT_EQ(find(module, KVW("RESOURCE.H")), "#define A 1\r\n");
  platform::ResourceBytes const again = modules().resourceBytes(module, resource);
  EXPECT_EQ(again.data, first.data);
  EXPECT_EQ(contentOf(first), kLarge);
}

TEST_F(DataModules, AHandleIsNothingAfterItsEnd) {
  HINSTANCE const module = load(sample().build(), "tool.dll");
  EXPECT_TRUE(release(module));
  EXPECT_FALSE(modules().freeLibrary(module));
  EXPECT_EQ(find(module, KVW("RESOURCE.H")), "none");
  std::set<unsigned short> languages;
  EXPECT_FALSE(modules().resourceLanguages(module, kType, KVW("RESOURCE.H"), languages));
  wstring text;
  EXPECT_FALSE(modules().stringTableEntry(module, 100, text));
  EXPECT_EQ(modules().resourceBytes(module, reinterpret_cast<HRSRC>(512)).data, nullptr);
}

TEST_F(DataModules, ForgedResourcesGiveNoBytesBeyondTheFile) {
  std::string const bytes = sample().build();
  HINSTANCE const module = load(bytes, "tool.dll");
  for (std::uintptr_t at = 0; at < bytes.size() + 32; at += 7) {
    platform::ResourceBytes const found = modules().resourceBytes(module, reinterpret_cast<HRSRC>(at));
    EXPECT_LE(found.size, bytes.size());
  }
  EXPECT_EQ(modules().resourceBytes(module, reinterpret_cast<HRSRC>(~std::uintptr_t(0))).data, nullptr);
}

TEST_F(DataModules, WhatIsNoWindowsFileIsNotLoaded) {
  std::string const elf =
      "\x7F"
      "ELF" +
      std::string(1000, '\0');
  folder.write("empty.dll");
  folder.write("text.dll", std::string(1000, 'M'));
  folder.write("elf.dll", elf);
  folder.write("cut.dll", sample().build().substr(0, 200));
  folder.makeFolder("folder.dll");
  ASSERT_EQ(mkfifo(folder.path("pipe.dll").c_str(), 0600), 0);
  std::size_t const descriptors = openDescriptors();
  for (char const* const name : {"empty.dll", "text.dll", "elf.dll", "cut.dll", "folder.dll", "pipe.dll", "none.dll"}) {
    EXPECT_EQ(load(fs::path(name)), nullptr) << name;
  }
  EXPECT_EQ(modules().loadAsData(KVW("")), nullptr);
  EXPECT_EQ(modules().loadAsData(KVW("\\dev\\zero")), nullptr);
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(DataModules, KeepNoDescriptorAfterTheirEnd) {
  std::size_t const descriptors = openDescriptors();
  HINSTANCE const module = load(sample().build(), "tool.dll");
  EXPECT_EQ(find(module, KVW("LARGE")), kLarge);
  EXPECT_TRUE(release(module));
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(DataModules, AFileWithoutResourcesIsAModuleInWhichNothingIsFound) {
  PeImage image = sample();
  std::string bytes = image.build();
  put32(bytes, image.tables(), 0);
  HINSTANCE const module = load(bytes, "tool.dll");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(find(module, KVW("RESOURCE.H")), "none");
}

TEST_F(DataModules, AFileThatShrinksEndsInNotFound) {
  PeImage image = sample();
  std::string const bytes = image.build();
  for (std::size_t const size : {std::size_t(0), std::size_t(1), std::size_t(100), image.root(), image.root() + 20,
                                 image.recordAt(0) + 8, bytes.size() / 2}) {
    SCOPED_TRACE(size);
    HINSTANCE const module = load(bytes, "tool.dll");
    HRSRC const large = modules().findResource(module, KVW("LARGE"), kType);
    platform::ResourceBytes const before = modules().resourceBytes(module, large);
    ASSERT_EQ(contentOf(before), kLarge);
    fs::resize_file(folder.path("tool.dll"), size);
    EXPECT_EQ(find(module, KVW("LARGE")), "none");
    EXPECT_EQ(modules().resourceBytes(module, large).data, nullptr);
    wstring text;
    EXPECT_FALSE(modules().stringTableEntry(module, 100, text));
    std::set<unsigned short> languages;
    modules().resourceLanguages(module, kType, KVW("LARGE"), languages);
    EXPECT_EQ(contentOf(before), kLarge) << "what was handed out stays";
    EXPECT_TRUE(release(module));
  }
}

TEST_F(DataModules, AFileThatShrinksBetweenLookupAndBytesHasNoBytes) {
  std::string const bytes = sample().build();
  HINSTANCE const module = load(bytes, "tool.dll");
  HRSRC const large = modules().findResource(module, KVW("LARGE"), kType);
  ASSERT_NE(large, nullptr);
  fs::resize_file(folder.path("tool.dll"), bytes.size() - kLarge.size());
  EXPECT_EQ(modules().resourceBytes(module, large).data, nullptr);
}

TEST_F(DataModules, AFileThatIsWrittenAnewGivesItsNewResources) {
  HINSTANCE const module = load(sample().build(), "tool.dll");
  EXPECT_EQ(find(module, KVW("RESOURCE.H")), "#define A 1\r\n");
  PeImage other;
  other.has64Bits = false;
  other.add(kType, KVW("NEW"), 1031, "new");
  folder.write("tool.dll", other.build());
  EXPECT_EQ(find(module, KVW("RESOURCE.H")), "none");
  EXPECT_EQ(find(module, KVW("NEW")), "new");
}

TEST_F(DataModules, AFileThatIsRemovedOrReplacedStaysAsItWas) {
  HINSTANCE const module = load(sample().build(), "tool.dll");
  fs::remove(folder.path("tool.dll"));
  folder.write("tool.dll", "another file");
  EXPECT_EQ(find(module, KVW("RESOURCE.H")), "#define A 1\r\n");
}

// The bytes that this thread has read so far.
long bytesRead() {
  std::ifstream counters("/proc/thread-self/io");
  std::string name;
  long count = 0;
  counters >> name >> count;
  EXPECT_EQ(name, "rchar:");
  return count;
}

// The image with a section table and resources that lie behind `padding` bytes without content.
void writeSparse(PeImage image, std::size_t padding, fs::path const& path) {
  image.fileAlignment = 4096;
  std::string bytes = image.build();
  std::size_t const root = image.root();
  put32(bytes, image.sectionHeader() + 20, root + padding);
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(root));
  file.seekp(static_cast<std::streamoff>(root + padding));
  file.write(bytes.data() + root, static_cast<std::streamsize>(bytes.size() - root));
}

TEST_F(DataModules, ALookupReadsAsMuchOfAFileOf100MegabytesAsOfASmallOne) {
  long read[2] = {};
  std::size_t const paddings[] = {0, 100 << 20};
  for (int i = 0; i < 2; ++i) {
    std::string const name = "size" + std::to_string(i) + ".dll";
    writeSparse(sample(), paddings[i], folder.path(name));
    long const before = bytesRead();
    HINSTANCE const module = load(fs::path(name));
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(find(module, KVW("RESOURCE.H")), "#define A 1\r\n");
    read[i] = bytesRead() - before;
  }
  EXPECT_GT(read[0], 0);
  EXPECT_LT(read[0], 30000);
  EXPECT_EQ(read[1], read[0]);
}

TEST_F(DataModules, ASecondLookupReadsNothing) {
  HINSTANCE const module = load(sample().build(), "tool.dll");
  HRSRC const first = modules().findResource(module, KVW("RESOURCE.H"), kType);
  long const idle = [] {
    long const before = bytesRead();
    return bytesRead() - before;
  }();
  long const before = bytesRead();
  EXPECT_EQ(modules().findResource(module, KVW("RESOURCE.H"), kType), first);
  EXPECT_LE(bytesRead() - before, idle + 16) << "the counters themselves have grown by a digit at most";
}

TEST_F(DataModules, EveryFailingAllocationLeavesNothingBehind) {
  folder.write("tool.dll", sample().build());
  wstring const path = folder.text(KVW("tool.dll"));
  std::size_t const descriptors = openDescriptors();
  wstring const before = KVW("a text that is longer than a text object itself");
  for (AllocationSweep sweep; sweep.next();) {
    wstring text = before;
    HINSTANCE module = nullptr;
    sweep.run([&] {
      module = modules().loadAsData(path.c_str());
      HRSRC const resource = modules().findResource(module, KVW("LARGE"), kType);
      modules().resourceBytes(module, resource);
      modules().stringTableEntry(module, 100, text);
    });
    EXPECT_TRUE(module == nullptr || modules().freeLibrary(module));
    EXPECT_EQ(text, sweep.failed() ? before : wstring(KVW("Hello")));
  }
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(DataModuleConcurrency, ThreadsSeeCompleteAnswersWhileTheFileShrinksAndGrows) {
  TempFolder const folder;
  PeImage image;
  image.add(kType, KVW("RESOURCE.H"), 1031, "#define A 1\r\n");
  image.add(kType, KVW("Z"), 1031, kLarge);
  std::string const bytes = image.build();
  folder.write("tool.dll", bytes);
  wstring const path = folder.text(KVW("tool.dll"));
  HINSTANCE const shared = modules().loadAsData(path.c_str());
  ASSERT_NE(shared, nullptr);
  onThreads([&](int thread) {
    for (int i = 0; i < 200; ++i) {
      if (thread == 0) {
        // Only the last resource is cut; what the file gets back is zeros.
        fs::resize_file(folder.path("tool.dll"), i % 2 == 0 ? bytes.size() - kLarge.size() : bytes.size());
        continue;
      }
      EXPECT_EQ(find(shared, KVW("RESOURCE.H")), "#define A 1\r\n");
      std::string const large = find(shared, KVW("Z"));
      EXPECT_TRUE(large == "none" || large.size() == kLarge.size());
      HINSTANCE const own = modules().loadAsData(path.c_str());
      EXPECT_EQ(find(own, KVW("RESOURCE.H")), "#define A 1\r\n");
      EXPECT_TRUE(modules().freeLibrary(own));
    }
  });
  EXPECT_TRUE(modules().freeLibrary(shared));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
