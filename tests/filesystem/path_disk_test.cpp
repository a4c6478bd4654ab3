// SPDX-License-Identifier: MIT
//
// Which of an item's two names goes to the system, and what exists, isDirectory and getFileSize make of its answer.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "kvbase/filesystem/file_collection_iterator.h"
#include "kvbase/filesystem/file_system_iterator.h"
#include "tests/filesystem/path_support.h"
#include "tests/support/progress.h"
#include "tests/support/scripted_files.h"
#include "tests/support/scripted_shell.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace {

using namespace KV_1_1::testing;

// The text with each {key} replaced.
std::string filled(std::string text, std::map<std::string, std::string> const& values) {
  for (auto const& value : values) {
    std::string const key = '{' + value.first + '}';
    for (std::size_t at; (at = text.find(key)) != std::string::npos;) text.replace(at, key.size(), value.second);
  }
  return text;
}

// One row per operation. Every operation is asked of the directory b and of the files f.e and g.e in it.
TEST(PathDisk, WhichNameGoesToWhichCall) {
  enum Disk { kAllThere, kFolderMissing };
  struct Row {
    char const* name;
    // {d} is the plain and {D} the prefixed name of the directory, without the separator at its end, {P} the prefixed
    // name of its parent. First the calls to the disk, then those to the desktop.
    Log calls;
    std::function<void(SmartPtr<Directory const> const&, SmartPtr<File const> const&, SmartPtr<File const> const&)> run;
    Disk disk = kAllThere;
  };
  String const pattern(KVW("*.x"));
  FILETIME time;
  struct _stat64i32 status;
  ULARGE_INTEGER size;
  Row const rows[] = {
      // exists and what FileSystemItem asks
      {"Directory::exists", {R"(getAttributes {D}\)"}, [](auto& d, auto&, auto&) { d->exists(); }},
      {"Directory::isDirectory", {R"(getAttributes {D}\)"}, [](auto& d, auto&, auto&) { d->isDirectory(); }},
      {"File::exists", {R"(getAttributes {D}\f.e)"}, [](auto&, auto& f, auto&) { f->exists(); }},
      {"access of a directory",
       {R"(getAttributes {D}\)", R"(getAttributes {D}\)", R"(openFile {D}\ 80000000 7 3 2000000)", "closeFile"},
       [](auto& d, auto&, auto&) { d->access(4); }},
      {"access of a file",
       {R"(getAttributes {D}\f.e)", R"(getAttributes {D}\f.e)", R"(openFile {D}\f.e 80000000 7 3 0)", "closeFile"},
       [](auto&, auto& f, auto&) { f->access(4); }},
      {"stat of a directory", {"getStatus {d}"}, [&](auto& d, auto&, auto&) { d->stat(status); }},
      {"stat of a file", {R"(getStatus {d}\f.e)"}, [&](auto&, auto& f, auto&) { f->stat(status); }},
      {"getCreationTime of a directory",
       {R"(getInfo {D}\)"},
       [&](auto& d, auto&, auto&) { d->getCreationTime(&time); }},
      {"getCreationTime of a file", {R"(getInfo {D}\f.e)"}, [&](auto&, auto& f, auto&) { f->getCreationTime(&time); }},
      {"getLastWriteTime of a directory",
       {R"(getInfo {D}\)"},
       [&](auto& d, auto&, auto&) { d->getLastWriteTime(&time); }},
      {"getLastWriteTime of a file",
       {R"(getInfo {D}\f.e)"},
       [&](auto&, auto& f, auto&) { f->getLastWriteTime(&time); }},
      // File
      {"getFileSize", {R"(getInfo {D}\f.e)"}, [&](auto&, auto& f, auto&) { f->getFileSize(size); }},
      {"hasEqualSize",
       {R"(getInfo {D}\f.e)", R"(getInfo {D}\g.e)"},
       [](auto&, auto& f, auto& g) { f->hasEqualSize(g); }},
      {"copy", {R"(copyFile {D}\f.e -> {D}\g.e 1)"}, [](auto&, auto& f, auto& g) { f->copy(g, false); }},
      {"copy with progress",
       {R"(copyFile {D}\f.e -> {D}\g.e 0 progress)"},
       [](auto&, auto& f, auto& g) { f->copy(g, true, std::make_shared<RecordedProgress>()); }},
      {"copy into a directory",
       {R"(copyFile {D}\f.e -> {D}\f.e 1)"},
       [](auto& d, auto& f, auto&) { f->copy(d, false); }},
      {"move", {R"(moveFile {D}\f.e -> {D}\g.e)"}, [](auto&, auto& f, auto& g) { f->move(g); }},
      {"File::remove",
       {R"(getAttributes {D}\f.e)", R"(deleteFile {D}\f.e)"},
       [](auto&, auto& f, auto&) { f->remove(); }},
      {"touch",
       {R"(openFile {D}\f.e 40000000 3 4 80)", "closeFile", R"(openDescriptor {d}\f.e 2 40 180)", "commitDescriptor",
        "closeDescriptor"},
       [](auto&, auto& f, auto&) { f->touch(); }},
      {"isReadOnly", {R"(getAttributes {d}\f.e)"}, [](auto&, auto& f, auto&) { f->isReadOnly(); }},
      {"setAsReadOnly",
       {R"(getAttributes {d}\f.e)", R"(setAttributes {d}\f.e 81)"},
       [](auto&, auto& f, auto&) { f->setAsReadOnly(); }},
      {"unsetAsReadOnly",
       {R"(getAttributes {d}\g.e)", R"(setAttributes {d}\g.e 80)"},
       [](auto&, auto&, auto& g) { g->unsetAsReadOnly(); }},
      {"setReadOnly",
       {R"(getAttributes {d}\f.e)", R"(setAttributes {d}\f.e 81)"},
       [](auto&, auto& f, auto&) { f->setReadOnly(true); }},
      {"openWithDefaultApp",
       {R"(open (null) {d}\f.e %HOMEPATH% 1)"},
       [](auto&, auto& f, auto&) { f->openWithDefaultApp(); }},
      {"showInExplorer",
       {R"(getAttributes {D}\f.e)", R"(itemListFromPath {D}\f.e)", "showItem", "freeItemList"},
       [](auto&, auto& f, auto&) { f->showInExplorer(); }},
      {"createParentDirectories",
       {R"(getAttributes {D}\)", R"(getAttributes {D}\)", R"(getAttributes {P})", R"(createDirectory {D}\)"},
       [](auto&, auto& f, auto&) { f->createParentDirectories(); },
       kFolderMissing},
      {"createParentDirectories with nothing to make",
       {R"(getAttributes {D}\)"},
       [](auto&, auto& f, auto&) { f->createParentDirectories(); }},
      // Directory
      {"isEmpty", {R"(isDirectoryEmpty {D}\)"}, [](auto& d, auto&, auto&) { d->isEmpty(); }},
      {"create",
       {R"(getAttributes {D}\)", R"(getAttributes {P})", R"(createDirectory {D}\)"},
       [](auto& d, auto&, auto&) { d->create(); },
       kFolderMissing},
      {"Directory::remove",
       {R"(getAttributes {D}\)", R"(removeDirectory {D}\)"},
       [](auto& d, auto&, auto&) { d->remove(false); }},
      {"removeContents",
       {R"(getAttributes {D}\)", R"(findFirst {d}\*)"},
       [](auto& d, auto&, auto&) { d->removeContents(false); }},
      {"openInExplorer",
       {R"(getAttributes {D}\)", R"(open open {D}\ (null) 10)"},
       [](auto& d, auto&, auto&) { d->openInExplorer(); }},
      // The iterators
      {"findContents", {R"(findFirst {d}\*.x)"}, [&](auto& d, auto&, auto&) { d->findContents(pattern); }},
      {"findDirectories", {R"(findFirst {d}\*.x)"}, [&](auto& d, auto&, auto&) { d->findDirectories(pattern); }},
      {"findFiles", {R"(findFirst {d}\*.x)"}, [&](auto& d, auto&, auto&) { d->findFiles(pattern); }},
  };
  struct Place {
    char const* name;
    char const* plain;
    char const* prefixed;
    char const* parent;
  };
  Place const places[] = {
      {"drive", R"(C:\b)", R"(\\?\C:\b)", R"(\\?\C:\)"},
      {"share", R"(\\s\t\b)", R"(\\?\UNC\s\t\b)", R"(\\?\UNC\s\t\)"},
      {"no drive", R"(\b)", R"(\\?\\b)", R"(\\?\\)"},
  };
  for (Row const& row : rows) {
    for (Place const& place : places) {
      SCOPED_TRACE(std::string(row.name) + " on " + place.name);
      SmartPtr<Directory const> const directory = directoryAt(widen(place.plain).c_str());
      SmartPtr<File const> const file = File::fromString(*directory, String(KVW("f.e")));
      SmartPtr<File const> const other = File::fromString(*directory, String(KVW("g.e")));
      ScriptedFiles files;
      wstring const prefixed = widen(place.prefixed), plain = widen(place.plain);
      files.script.attributes[widen(place.parent)] = platform::kAttributeDirectory;
      if (row.disk == kAllThere) files.script.attributes[prefixed + KVW("\\")] = platform::kAttributeDirectory;
      for (wstring const& folder : {prefixed, plain}) {
        files.script.attributes[folder + KVW("\\f.e")] = platform::kAttributeNormal;
        files.script.attributes[folder + KVW("\\g.e")] = platform::kAttributeNormal | platform::kAttributeReadOnly;
        files.script.infos[folder + KVW("\\f.e")] = {platform::kAttributeNormal, 1};
      }
      platform::ScopedBackend<platform::FileApi> const filesScope(files);
      ScriptedShell shell;
      platform::ScopedBackend<platform::ShellApi> const shellScope(shell);
      row.run(directory, file, other);
      Log calls = files.log();
      calls.insert(calls.end(), shell.log.begin(), shell.log.end());
      Log expected;
      for (std::string const& call : row.calls) {
        expected.push_back(filled(call, {{"d", place.plain}, {"D", place.prefixed}, {"P", place.parent}}));
      }
      EXPECT_EQ(calls, expected);
    }
  }
}

// A relative path has no prefix to give; the search alone is made absolute first.
TEST(PathDisk, RelativePathsGoAsTheyAre) {
  ScriptedFiles files;
  files.script.directory = KVW(R"(C:\work)");
  platform::ScopedBackend<platform::FileApi> const scope(files);
  SmartPtr<Directory const> const directory = directoryAt(KVW(R"(a\..\b)"));
  directory->exists();
  fileAt(KVW("x"))->exists();
  directory->findFiles(String(KVW("*")));
  EXPECT_EQ(files.log(),
            Log({R"(getAttributes a\..\b\)", R"(getAttributes .\x)", "currentDirectory", R"(findFirst C:\work\b\*)"}));
}

TEST(PathDisk, ExistsByAttributes) {
  struct Row {
    char const* name;
    ulong32 attributes;
    bool directory;
    bool file;
  };
  Row const rows[] = {
      {"missing", platform::kInvalidAttributes, false, false},
      {"directory", platform::kAttributeDirectory, true, false},
      {"directory with more bits", platform::kAttributeDirectory | 0x7, true, false},
      {"linked directory", platform::kAttributeDirectory | platform::kAttributeReparsePoint, true, false},
      {"file", platform::kAttributeNormal, false, true},
      {"file with other bits", platform::kAttributeReadOnly | platform::kAttributeHidden, false, true},
      {"no bit at all", 0, false, true},
  };
  SmartPtr<Directory const> const directory = directoryAt(KVW(R"(C:\a)"));
  SmartPtr<File const> const file = fileAt(KVW(R"(C:\a)"));
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    ScriptedFiles files;
    files.script.attributes[KVW(R"(\\?\C:\a\)")] = row.attributes;
    files.script.attributes[KVW(R"(\\?\C:\a)")] = row.attributes;
    platform::ScopedBackend<platform::FileApi> const scope(files);
    EXPECT_EQ(directory->exists(), row.directory);
    EXPECT_EQ(directory->isDirectory(), row.directory);
    EXPECT_EQ(file->exists(), row.file);
    FileSystemItem const& item = *file;
    EXPECT_EQ(item.exists(), row.file);
  }
}

TEST(PathDisk, FileSizeKeepsBothHalvesAndIsLeftAloneOnFailure) {
  ScriptedFiles files;
  files.script.infos[KVW(R"(\\?\C:\small)")] = {platform::kAttributeNormal, 0};
  files.script.infos[KVW(R"(\\?\C:\big)")] = {platform::kAttributeNormal, 0x123456789ABCDEF0};
  platform::ScopedBackend<platform::FileApi> const scope(files);
  CollectedMessages messages;
  ULARGE_INTEGER size;
  size.QuadPart = 77;
  EXPECT_FALSE(fileAt(KVW(R"(C:\missing)"))->getFileSize(size));
  EXPECT_EQ(size.QuadPart, 77u);
  EXPECT_TRUE(fileAt(KVW(R"(C:\small)"))->getFileSize(size));
  EXPECT_EQ(size.QuadPart, 0u);
  EXPECT_TRUE(fileAt(KVW(R"(C:\big)"))->getFileSize(size));
  EXPECT_EQ(size.QuadPart, 0x123456789ABCDEF0u);
  EXPECT_EQ(size.u.LowPart, 0x9ABCDEF0u);
  EXPECT_EQ(size.u.HighPart, 0x12345678u);
  EXPECT_EQ(messages.take(), Texts());
}

TEST(PathDisk, OnTheRealDisk) {
  TempFolder folder;
  folder.write("file.bin", "12345");
  folder.write("empty");
  folder.makeFolder("sub");
  struct Row {
    char const* name;
    wchar const* below;
    bool directory;
    bool file;
  };
  Row const rows[] = {
      {"file", KVW("file.bin"), false, true},
      {"empty file", KVW("empty"), false, true},
      {"folder", KVW("sub"), true, false},
      {"missing", KVW("missing"), false, false},
      {"below what is missing", KVW(R"(missing\x)"), false, false},
      {"below a file", KVW(R"(file.bin\x)"), false, false},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String const text(folder.text(row.below).c_str());
    EXPECT_EQ(directoryAt(text)->exists(), row.directory);
    EXPECT_EQ(directoryAt(text)->isDirectory(), row.directory);
    EXPECT_EQ(fileAt(text)->exists(), row.file);
  }
  ULARGE_INTEGER size;
  EXPECT_TRUE(fileAt(folder.text(KVW("file.bin")).c_str())->getFileSize(size));
  EXPECT_EQ(size.QuadPart, 5u);
  EXPECT_TRUE(fileAt(folder.text(KVW("empty")).c_str())->getFileSize(size));
  EXPECT_EQ(size.QuadPart, 0u);
  EXPECT_FALSE(fileAt(folder.text(KVW("missing")).c_str())->getFileSize(size));
}

}  // namespace
}  // namespace KV_1_1
