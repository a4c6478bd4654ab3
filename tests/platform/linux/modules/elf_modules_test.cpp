// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/elf_modules.h"

#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "kvbase/platform/module_api.h"
#include "tests/support/current_path.h"
#include "tests/support/module_files.h"
#include "tests/support/narrow_text.h"
#include "tests/support/pe_image.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;
using platform::ByteRange;

platform::ModuleApi& elfModules() {
  return platform::nativeModules();
}
HINSTANCE moduleOf(void const* address) {
  Dl_info info = {};
  EXPECT_NE(dladdr(address, &info), 0);
  return reinterpret_cast<HINSTANCE>(info.dli_fbase);
}
std::string pathOf(HINSTANCE module) {
  platform::NativePath path;
  return platform::pathOfModule(module, path) ? path.data() : "none";
}

TEST(ElfModules, TheHandleOfTheProgramIsItsLoadAddress) {
  static int const inTheProgram = 0;
  EXPECT_EQ(elfModules().program(), moduleOf(&inTheProgram));
  EXPECT_EQ(fs::path(pathOf(elfModules().program())), fs::canonical("/proc/self/exe"));
}

TEST(ElfModules, ALibraryOfTheSystemHasAPathAndNoResources) {
  HINSTANCE const library = moduleOf(reinterpret_cast<void const*>(&strtol));
  EXPECT_TRUE(fs::exists(pathOf(library)));
  EXPECT_EQ(platform::resourcesOfModule(library), nullptr);
  EXPECT_EQ(elfModules().findResource(library, KVW("RESOURCE.H"), KVW("METADATA")), nullptr);
}

TEST(ElfModules, AnAddressWithinAModuleIsNoHandle) {
  auto const address = reinterpret_cast<std::uintptr_t>(elfModules().program());
  HINSTANCE const within = reinterpret_cast<HINSTANCE>(address + 0x1000);
  EXPECT_EQ(pathOf(within), "none");
  EXPECT_EQ(platform::resourcesOfModule(within), nullptr);
  EXPECT_EQ(pathOf(nullptr), "none");
}

// A library that is loaded under a name of the test's choice.
struct Loaded {
  explicit Loaded(char const* name) : library(dlopen(name, RTLD_NOW | RTLD_LOCAL)) {
    EXPECT_NE(library, nullptr) << dlerror();
    void* map = nullptr;
    if (library != nullptr && dlinfo(library, RTLD_DI_LINKMAP, &map) == 0) {
      void* const section = *reinterpret_cast<void**>(static_cast<char*>(map) + 2 * sizeof(void*));  // l_ld
      handle = moduleOf(section);
    }
  }
  ~Loaded() {
    if (library != nullptr) dlclose(library);
  }
  Loaded(Loaded const&) = delete;
  Loaded& operator=(Loaded const&) = delete;

  void* library;
  HINSTANCE handle = nullptr;
};

TEST(ElfModules, ARelativeNameBecomesAnAbsolutePath) {
  TempFolder const folder, elsewhere;
  copyModule(folder, "tool", "tool");
  std::unique_ptr<Loaded> library;
  {
    CurrentPath const current(folder.path());
    library.reset(new Loaded("./tool.so"));
  }
  CurrentPath const current(elsewhere.path());
  EXPECT_EQ(pathOf(library->handle), folder.path("tool.so").string());
  platform::NativePath path;
  ASSERT_TRUE(platform::pathOfModuleNamed(KVW("tool.so"), path));
  EXPECT_EQ(std::string(path.data()), folder.path("tool.so").string());
}

// Two separators at the front of a text begin a share, and ".." in it does not follow links.
TEST(ElfModules, APathIsThatOfTheFileWhateverTheNameByWhichItWasLoaded) {
  TempFolder const folder;
  copyModule(folder, "tool", "real/app/tool");
  fs::create_symlink("real/app", folder.path("link"));
  fs::create_symlink("tool.so", folder.path("real/app/alias.so"));
  std::string const top = folder.path().string();
  struct {
    std::string name, expected;
  } const rows[] = {
      {top + "/real/app/tool.so", "/real/app/tool.so"},
      {"/" + top + "/real/app/tool.so", "/real/app/tool.so"},
      {top + "/real//app/./tool.so", "/real/app/tool.so"},
      {top + "/link/../app/tool.so", "/real/app/tool.so"},
      // What was not asked to go back stays as it was said.
      {top + "/link/tool.so", "/link/tool.so"},
      {top + "/link/../app/alias.so", "/real/app/alias.so"},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    Loaded const library(row.name.c_str());
    EXPECT_EQ(pathOf(library.handle), top + row.expected);
  }
}

TEST(ElfModules, AFolderThatHasGoneIsStillPartOfThePath) {
  TempFolder const folder;
  copyModule(folder, "tool", "app/tool");
  Loaded const library((folder.path().string() + "/app/../app/tool.so").c_str());
  fs::remove_all(folder.path("app"));
  EXPECT_EQ(pathOf(library.handle), folder.path("app/tool.so").string());
}

TEST(ElfModules, ARemovedFileHasThePathThatItHad) {
  TempFolder const folder;
  copyModule(folder, "tool", "tool");
  CurrentPath const current(folder.path());
  Loaded const library("./tool.so");
  fs::remove(folder.path("tool.so"));
  EXPECT_EQ(pathOf(library.handle), folder.path("tool.so").string());
  folder.write("tool.so (deleted)");
  EXPECT_EQ(pathOf(library.handle), folder.path("tool.so").string()) << "the other file is not loaded";
}

TEST(ElfModules, ANameMayEndLikeThatOfARemovedFile) {
  TempFolder const folder;
  copyModule(folder, "tool", "tool");
  fs::rename(folder.path("tool.so"), folder.path("tool (deleted)"));
  CurrentPath const current(folder.path());
  Loaded const library("./tool (deleted)");
  EXPECT_EQ(pathOf(library.handle), folder.path("tool (deleted)").string());
}

TEST(ElfModules, APathThatDoesNotFitIsCut) {
  TempFolder const folder;
  std::string const a(130, 'a'), b(130, 'b');
  copyModule(folder, "tool", a + '/' + b + "/tool");
  Loaded const library(folder.path(a + '/' + b + "/tool.so").c_str());
  wstring path;
  ASSERT_TRUE(elfModules().modulePath(library.handle, path));
  EXPECT_EQ(path, folder.text(widen(a + '\\' + b + "\\tool.so")).substr(0, 259));
}

TEST(ElfModules, ResourcesEndWithTheModule) {
  TempFolder const folder;
  copyModule(folder, "tool", "tool");
  HINSTANCE handle = nullptr;
  {
    Loaded const library(folder.path("tool.so").c_str());
    handle = library.handle;
    EXPECT_NE(elfModules().findResource(handle, KVW("RESOURCE.H"), KVW("METADATA")), nullptr);
    EXPECT_EQ(elfModules().freeLibrary(handle), false) << "only data elfModules are released so";
  }
  EXPECT_EQ(elfModules().findResource(handle, KVW("RESOURCE.H"), KVW("METADATA")), nullptr);
  EXPECT_EQ(pathOf(handle), "none");
}

TEST(ElfModules, AnotherModuleAtTheSameAddressHasItsOwnResources) {
  TempFolder const folder;
  copyModule(folder, "tool", "tool");
  copyModule(folder, "no_metadata", "other");
  for (int i = 0; i < 3; ++i) {
    for (char const* const name : {"tool.so", "other.so"}) {
      Loaded const library(folder.path(name).c_str());
      bool const has = elfModules().findResource(library.handle, KVW("RESOURCE.H"), KVW("METADATA")) != nullptr;
      EXPECT_EQ(has, name == std::string("tool.so"));
    }
  }
}

TEST(ElfModules, ALoadedModuleIsFoundByItsNameInAnyCase) {
  TempFolder const folder;
  copyModule(folder, "tool", "Loaded.Tool");
  platform::NativePath path;
  EXPECT_FALSE(platform::pathOfModuleNamed(KVW("loaded.tool.so"), path));
  Loaded const library(folder.path("Loaded.Tool.so").c_str());
  ASSERT_TRUE(platform::pathOfModuleNamed(KVW("loaded.TOOL.so"), path));
  EXPECT_EQ(std::string(path.data()), folder.path("Loaded.Tool.so").string());
  EXPECT_FALSE(platform::pathOfModuleNamed(KVW("loaded.tool"), path));
  EXPECT_FALSE(platform::pathOfModuleNamed(KVW(""), path));
}

// A note as it is stored.
std::string note(std::string const& owner, std::uint32_t type, std::string const& content, std::size_t alignment = 4) {
  auto const pad = [&](std::string& bytes) { bytes.resize((bytes.size() + alignment - 1) / alignment * alignment); };
  std::string bytes(12, '\0');
  put32(bytes, 0, owner.size());
  put32(bytes, 4, content.size());
  put32(bytes, 8, type);
  bytes += owner;
  pad(bytes);
  bytes += content;
  pad(bytes);
  return bytes;
}
std::string const kOwner("KVBase\0", 7);

struct Segment {
  std::uint32_t type;
  std::string bytes;
  std::uint64_t alignment = 4;
};

std::string elf(std::vector<Segment> const& segments) {
  Elf64_Ehdr header = {};
  std::memcpy(header.e_ident,
              "\x7F"
              "ELF\2\1\1",
              7);
  header.e_phoff = sizeof header;
  header.e_phentsize = sizeof(Elf64_Phdr);
  header.e_phnum = static_cast<std::uint16_t>(segments.size());
  std::string table, content;
  for (Segment const& segment : segments) {
    Elf64_Phdr entry = {};
    entry.p_type = segment.type;
    entry.p_offset = sizeof header + segments.size() * sizeof entry + content.size();
    entry.p_filesz = entry.p_memsz = segment.bytes.size();
    entry.p_align = segment.alignment;
    table.append(reinterpret_cast<char const*>(&entry), sizeof entry);
    content += segment.bytes;
  }
  return std::string(reinterpret_cast<char const*>(&header), sizeof header) + table + content;
}
std::string imageIn(std::string const& file) {
  ByteRange image;
  if (!platform::findEmbeddedImage(ByteRange(file.data(), file.size()), image)) return "none";
  return std::string(reinterpret_cast<char const*>(image.memory()), static_cast<std::size_t>(image.size()));
}

TEST(EmbeddedImage, IsFoundAmongOtherNotesAndSegments) {
  std::string const others = note(std::string("GNU\0", 4), 3, "build id") + note(kOwner, 2, "another type") +
                             note(std::string("KVBase", 6), 1, "without terminator");
  EXPECT_EQ(imageIn(elf({{PT_NOTE, note(kOwner, 1, "image")}})), "image");
  EXPECT_EQ(imageIn(elf({{PT_LOAD, "code"}, {PT_NOTE, others}, {PT_NOTE, others + note(kOwner, 1, "image")}})),
            "image");
  EXPECT_EQ(imageIn(elf({{PT_NOTE, note("GNUxx", 5, "12345", 8) + note(kOwner, 1, "image", 8), 8}})), "image");
  EXPECT_EQ(imageIn(elf({{PT_NOTE, others}})), "none");
  EXPECT_EQ(imageIn(elf({{PT_LOAD, note(kOwner, 1, "image")}})), "none");
  EXPECT_EQ(imageIn(elf({})), "none");
}

TEST(EmbeddedImage, WhateverIsWrongEndsInNotFound) {
  struct Row {
    char const* name;
    std::function<void(std::string&)> change;
  };
  constexpr std::size_t kSegment = sizeof(Elf64_Ehdr), kNote = kSegment + sizeof(Elf64_Phdr);
  Row const rows[] = {
      {"no bytes", [](std::string& b) { b.clear(); }},
      {"another signature", [](std::string& b) { b[1] = 'e'; }},
      {"32 bits", [](std::string& b) { b[4] = ELFCLASS32; }},
      {"high byte first", [](std::string& b) { b[5] = ELFDATA2MSB; }},
      {"segment table beyond the file", [](std::string& b) { put32(b, offsetof(Elf64_Ehdr, e_phoff), 0xFFFFFFF0); }},
      {"segment table far beyond the file",
       [](std::string& b) { put32(b, offsetof(Elf64_Ehdr, e_phoff) + 4, 0xFFFFFFFF); }},
      {"segments of too few bytes", [](std::string& b) { put16(b, offsetof(Elf64_Ehdr, e_phentsize), 55); }},
      {"no segments", [](std::string& b) { put16(b, offsetof(Elf64_Ehdr, e_phnum), 0); }},
      {"segment beyond the file",
       [](std::string& b) { put32(b, kSegment + offsetof(Elf64_Phdr, p_offset), 0xFFFFFFF0); }},
      {"segment longer than the file",
       [](std::string& b) { put32(b, kSegment + offsetof(Elf64_Phdr, p_filesz) + 4, 1); }},
      {"segment shorter than the note",
       [](std::string& b) { put32(b, kSegment + offsetof(Elf64_Phdr, p_filesz), 22); }},
      {"owner longer than the segment", [](std::string& b) { put32(b, kNote, 0xFFFFFFFF); }},
      {"content longer than the segment", [](std::string& b) { put32(b, kNote + 4, 0xFFFFFFFF); }},
      {"content one unit longer than the segment", [](std::string& b) { put32(b, kNote + 4, 9); }},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    std::string file = elf({{PT_NOTE, note(kOwner, 1, "image")}});
    ASSERT_EQ(imageIn(file), "image");
    row.change(file);
    EXPECT_EQ(imageIn(file), "none");
  }
}

TEST(EmbeddedImage, VersionDataOfAFileThatIsNotLoaded) {
  TempFolder const folder;
  PeImage image;
  std::string block(52 + 40, '\0');
  put16(block, 0, block.size());
  put16(block, 2, 52);
  block.replace(6, 30, bytesOf(KVW("VS_VERSION_INFO")));
  put32(block, 40 + 8, 0x00010002);
  image.add(16, 1, 1033, block);
  folder.write("Tool", elf({{PT_NOTE, note(kOwner, 1, image.build())}}));
  wstring const file = folder.text(KVW("tool"));
  ulong32 handle = 99;
  ulong32 const size = elfModules().versionInfoSize(file.c_str(), handle);
  ASSERT_GE(size, block.size());
  EXPECT_EQ(handle, 0u);
  std::vector<unsigned char> copy(size);
  ASSERT_TRUE(elfModules().versionInfo(file.c_str(), handle, size, copy.data()));
  void const* value = nullptr;
  ulong32 length = 0;
  ASSERT_TRUE(elfModules().queryVersion(copy.data(), KVW("\\"), value, length));
  EXPECT_EQ(length, 52u);
  EXPECT_EQ(platform::load32(static_cast<unsigned char const*>(value) + 8), 0x00010002u);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
