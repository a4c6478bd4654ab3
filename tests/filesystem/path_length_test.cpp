// SPDX-License-Identifier: MIT
//
// Windows takes paths of 260 units and more only with the long-path prefix, which some operations give and some do not:
// what each of them makes of a long path there.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "kvbase/filesystem/file_system_iterator.h"
#include "kvbase/filesystem/progress.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "tests/filesystem/path_support.h"
#include "tests/support/intercepted_files.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace {

using namespace KV_1_1::testing;

// The real disk, with that limit.
class LimitedFiles final : public InterceptedFiles {
 public:
  LimitedFiles() : InterceptedFiles(platform::nativeFiles()) {}

 protected:
  bool enter(char const*, wchar const* text) override {
    constexpr std::size_t kLimit = 260;
    if (text == nullptr) return true;
    wstring const path(text);
    bool const isPrefixed = path.compare(0, 4, KVW("\\\\?\\")) == 0;
    if (isPrefixed || path.size() < kLimit) return true;
    platform::errors().setLastError(platform::kPathNotFound);
    return false;
  }
};

class PathLength : public ::testing::Test {
 protected:
  PathLength() {
    directory = directoryAt(folder.text().c_str());
    while (directory->getFullName().length() < 300) {
      directory = directory->appendLevel(String(wstring(50, KVW('d')).c_str()));
    }
    EXPECT_TRUE(directory->create());
    file = File::fromString(*directory, KVW("file"));
    EXPECT_TRUE(file->touch());
  }
  // Paths of that length are too long for some standard libraries.
  ~PathLength() override { EXPECT_TRUE(directoryAt(folder.text().c_str())->removeContents(true)); }

  TempFolder folder;
  SmartPtr<Directory const> directory;
  SmartPtr<File const> file;
};

TEST_F(PathLength, WhatEachOperationMakesOfALongPath) {
  SmartPtr<Directory const> const inner = directory->appendLevel(KVW("inner"));
  SmartPtr<File const> const copy = File::fromString(*directory, KVW("copy"));
  SmartPtr<File const> const moved = File::fromString(*directory, KVW("moved"));
  ULARGE_INTEGER size;
  FILETIME time;
  struct _stat64i32 status;
  struct Row {
    char const* name;
    int result;
    std::function<int()> run;
  };
  Row const rows[] = {
      {"File::exists", 1, [&] { return file->exists(); }},
      {"Directory::exists", 1, [&] { return directory->exists(); }},
      {"access", 1, [&] { return file->access(6); }},
      {"getCreationTime", 1, [&] { return file->getCreationTime(&time); }},
      {"getLastWriteTime", 1, [&] { return file->getLastWriteTime(&time); }},
      {"getFileSize", 1, [&] { return file->getFileSize(size); }},
      {"touch, flushed or not", 1, [&] { return file->touch(); }},
      {"copy", File::CopyOk, [&] { return file->copy(copy, false); }},
      {"move", 1, [&] { return copy->move(moved); }},
      {"File::remove", 1, [&] { return moved->remove(); }},
      {"create", 1, [&] { return inner->create(); }},
      {"Directory::remove", 1, [&] { return inner->remove(false); }},
      // without the prefix
      {"stat", 0, [&] { return file->stat(status); }},
      {"isReadOnly", 1, [&] { return file->isReadOnly(); }},
      {"setAsReadOnly", File::ReadOnlyNoFile, [&] { return file->setAsReadOnly(); }},
      {"unsetAsReadOnly", File::ReadOnlyNoFile, [&] { return file->unsetAsReadOnly(); }},
      {"findFiles", 0, [&] { return directory->findFiles(KVW("*"))->getNext() != nullptr; }},
      {"collectContents", 0, [&] { return static_cast<int>(directory->collectContents(KVW("*"), true).size()); }},
      {"removeContents, which finds nothing", 1, [&] { return directory->removeContents(true); }},
      {"Directory::remove of what is not empty", 0, [&] { return directory->remove(true); }},
      {"File::exists after that", 1, [&] { return file->exists(); }},
  };
  LimitedFiles files;
  platform::ScopedBackend<platform::FileApi> const scope(files);
  for (Row const& row : rows) {
    EXPECT_EQ(row.run(), row.result) << row.name;
    EXPECT_EQ(files.openInAll(), 0) << row.name;
  }
}

}  // namespace
}  // namespace KV_1_1
