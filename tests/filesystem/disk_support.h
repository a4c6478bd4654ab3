// SPDX-License-Identifier: MIT
//
// What the tests of disk operations share: a scripted disk that follows what is done to it, and trees of the real disk
// as values that can be compared.
#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/filesystem/path_support.h"
#include "tests/support/progress.h"
#include "tests/support/scripted_files.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {

constexpr ulong32 kFileEntry = platform::kAttributeNormal;
constexpr ulong32 kFolderEntry = platform::kAttributeDirectory;

// A script in which folders that are made are there from then on, files that are copied too, and what is removed is
// gone. What a search gives stays as it was scripted.
//
//   ScriptedDisk files;
//   files.folders({KVW("C:\\"), KVW("C:\\a\\")});
//   files.list(KVW("C:\\a\\"), {{kFileEntry, KVW("x")}});   // the folder C:\a with the file x, behind "." and ".."
//   files.refused[R"(createDirectory \\?\C:\b\)"] = 5;      // a call as the log shows it, and the error that it leaves
class ScriptedDisk final : public RecordingFiles {
 public:
  ScriptedDisk() : RecordingFiles(script) {}

  std::map<std::string, ulong32> refused;

  // Absolute paths with a drive.
  void folders(std::vector<wstring> const& paths) {
    for (wstring const& path : paths) script.attributes[prefixed(path)] = kFolderEntry;
  }
  void file(wstring const& path) { script.attributes[prefixed(path)] = kFileEntry; }
  // The path ends in a separator.
  void list(wstring const& folder, std::vector<ScriptedEntry> const& entries) {
    folders({folder});
    auto& found = script.searches[folder + KVW('*')];
    found = {{kFolderEntry, KVW(".")}, {kFolderEntry, KVW("..")}};
    for (ScriptedEntry const& entry : entries) {
      found.push_back(entry);
      bool const isFolder = (entry.attributes & kFolderEntry) != 0;
      script.attributes[prefixed(folder + entry.name) + (isFolder ? KVW("\\") : KVW(""))] = entry.attributes;
    }
  }
  bool has(wstring const& path) const { return script.attributes.count(prefixed(path)) != 0; }

  // The log without the steps of searches, whose number depends on how many entries are passed over.
  Log calls() const {
    Log calls;
    for (std::string const& line : log()) {
      if (line != "findNext" && line != "findClose") calls.push_back(line);
    }
    return calls;
  }

  class Script final : public FileScript {
   public:
    bool createDirectory(wchar const* path) override {
      return FileScript::createDirectory(path) && (attributes[path] = kFolderEntry, true);
    }
    bool copyFile(wchar const* source, wchar const* target, platform::CopyProgress progress, void* data,
                  ulong32 flags) override {
      return FileScript::copyFile(source, target, progress, data, flags) && (attributes[target] = kFileEntry, true);
    }
    bool deleteFile(wchar const* path) override { return FileScript::deleteFile(path) && attributes.erase(path) == 1; }
    bool removeDirectory(wchar const* path) override {
      return FileScript::removeDirectory(path) && attributes.erase(path) == 1;
    }
  };
  Script script;

 protected:
  bool enter(char const* call, wchar const* text) override {
    RecordingFiles::enter(call, text);
    auto const found = refused.find(log().back());
    if (found == refused.end()) return true;
    platform::errors().setLastError(found->second);
    return false;
  }

 private:
  static wstring prefixed(wstring const& path) { return KVW(R"(\\?\)") + path; }
};

// The messages of the operations.
inline std::string noDrive(std::string const& root) {
  return "The drive or network share '" + root + "' does not exist or is inaccessible.";
}
inline std::string notCreated(std::string const& path, std::string const& reason) {
  return "Failed to create the directory '" + path + "'.\r\nWindows error message: " + reason;
}
inline std::string notRemoved(std::string const& path, std::string const& reason) {
  return "Failed to remove directory '" + path + "'.\r\nWindows error message: " + reason;
}
inline std::string notDeleted(std::string const& path, std::string const& reason) {
  return "Failed to delete file '" + path + "'.\r\nWindows error message: " + reason;
}
inline std::string notMoved(std::string const& from, std::string const& to, std::string const& reason) {
  return "Failed to move file '" + from + "' to file '" + to + "' because: " + reason;
}

// All that lies below a folder of the real disk: paths with slashes, a slash at the end of folders, and the bytes of
// files.
using Tree = std::map<std::string, std::string>;

inline std::string bytesOf(std::filesystem::path const& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

inline Tree treeOf(std::filesystem::path const& root) {
  Tree tree;
  for (auto const& item : std::filesystem::recursive_directory_iterator(root)) {
    std::string const below = item.path().lexically_relative(root).generic_u8string();
    if (item.is_directory()) {
      tree[below + '/'];
    } else {
      tree[below] = bytesOf(item.path());
    }
  }
  return tree;
}

// Makes, copies, moves and removes a file. The system gets the plain name from some operations and may refuse a long
// one, so only those that give it the prefixed name are here.
inline void useFile(SmartPtr<File const> const& file, SmartPtr<File const> const& beside) {
  EXPECT_FALSE(file->exists());
  EXPECT_TRUE(file->createParentDirectories());
  EXPECT_TRUE(file->touch());
  EXPECT_TRUE(file->exists());
  EXPECT_TRUE(file->access(6));
  ULARGE_INTEGER size;
  EXPECT_TRUE(file->getFileSize(size));
  EXPECT_EQ(size.QuadPart, 0u);
  EXPECT_EQ(file->copy(beside, false), File::CopyOk);
  EXPECT_EQ(file->copy(beside, false), File::CopyFailed);
  EXPECT_TRUE(beside->hasEqualSize(file));
  EXPECT_TRUE(file->remove());
  EXPECT_TRUE(beside->move(file));
  EXPECT_FALSE(beside->exists());
  EXPECT_TRUE(file->remove());
  EXPECT_FALSE(file->exists());
}

// What the library makes of a failure is the same code on every system. Under Wine the disk is slow, so there each kind of
// failure is tried, and on Linux each failure.
constexpr bool kTriesEachFailure = std::filesystem::path::preferred_separator == '/';

// The base of tests on the real disk: a fresh folder, and the paths of items in it.
class OnDisk : public ::testing::Test {
 protected:
  explicit OnDisk(std::filesystem::path const& where = std::filesystem::temp_directory_path()) : folder(where) {}

  SmartPtr<Directory const> directory(wstring const& below = wstring()) const {
    return directoryAt(folder.text(below).c_str());
  }
  SmartPtr<File const> file(wstring const& below) const { return fileAt(folder.text(below).c_str()); }
  // The full name of an item, as messages show it.
  std::string name(wstring const& below) const { return narrow(folder.text(below)); }
  Tree tree() const { return treeOf(folder.path()); }

  TempFolder folder;
  CollectedMessages messages;
};

}  // namespace testing
}  // namespace KV_1_1
