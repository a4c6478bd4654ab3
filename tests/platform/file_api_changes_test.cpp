// SPDX-License-Identifier: MIT
//
// Open files and changes, for the native backend of either system. The codes are those that both systems set.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/file_api.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;
using namespace KV_1_1::platform;

constexpr ulong32 kShareAll = kShareRead | kShareWrite | kShareDelete;

class FileApiChanges : public ::testing::Test {
 protected:
  static FileApi& files() { return nativeFiles(); }
  wstring at(wchar const* name) const { return folder.text(name); }

  // The last error of a call that fails, kNoError of one that succeeds.
  template <class Call>
  static ulong32 errorOf(Call call) {
    nativeErrors().setLastError(kNoError);
    if (call()) return kNoError;
    ulong32 const error = nativeErrors().lastError();
    EXPECT_NE(error, kNoError) << "a failure leaves its reason";
    return error;
  }
  FileHandle open(wchar const* name, ulong32 access, ulong32 disposition, ulong32 flags = 0) const {
    return files().openFile(at(name).c_str(), access, kShareAll, disposition, flags);
  }
  ulong32 errorOfOpen(wchar const* name, ulong32 access, ulong32 disposition = kOpenExisting, ulong32 flags = 0) const {
    return errorOf([&] {
      FileHandle const file = open(name, access, disposition, flags);
      return file != invalidFile() && files().closeFile(file);
    });
  }
  ulong32 copy(wchar const* source, wchar const* target, ulong32 flags = 0) const {
    return errorOf([&] { return files().copyFile(at(source).c_str(), at(target).c_str(), nullptr, nullptr, flags); });
  }
  ulong32 move(wchar const* source, wchar const* target) const {
    return errorOf([&] { return files().moveFile(at(source).c_str(), at(target).c_str()); });
  }
  ulong32 remove(wchar const* name) const {
    return errorOf([&] { return files().deleteFile(at(name).c_str()); });
  }
  ulong32 makeDirectory(wchar const* name) const {
    return errorOf([&] { return files().createDirectory(at(name).c_str()); });
  }
  ulong32 removeDirectory(wchar const* name) const {
    return errorOf([&] { return files().removeDirectory(at(name).c_str()); });
  }
  ulong32 setAttributes(wchar const* name, ulong32 attributes) const {
    return errorOf([&] { return files().setAttributes(at(name).c_str(), attributes); });
  }
  bool isReadOnly(wchar const* name) const {
    return (files().getAttributes(at(name).c_str()) & kAttributeReadOnly) != 0;
  }
  FileInfo info(wchar const* name) const {
    FileInfo result = {};
    EXPECT_TRUE(files().getInfo(at(name).c_str(), result));
    return result;
  }
  std::string bytes(char const* name) const {
    std::ifstream file(folder.path(name), std::ios::binary);
    EXPECT_TRUE(file) << name;
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  bool has(char const* name) const { return fs::exists(folder.path(name)); }

  TempFolder folder;
};

TEST_F(FileApiChanges, AttributesAreSetAndTakenBack) {
  folder.write("file", "kept");
  EXPECT_FALSE(isReadOnly(KVW("file")));
  EXPECT_EQ(setAttributes(KVW("file"), kAttributeReadOnly), kNoError);
  EXPECT_TRUE(isReadOnly(KVW("file")));
  EXPECT_TRUE((info(KVW("file")).attributes & kAttributeReadOnly) != 0);
  EXPECT_EQ(setAttributes(KVW("file"), kAttributeNormal), kNoError);
  EXPECT_FALSE(isReadOnly(KVW("file")));
  EXPECT_EQ(bytes("file"), "kept");
  EXPECT_EQ(setAttributes(KVW("none"), kAttributeReadOnly), kFileNotFound);
  EXPECT_EQ(setAttributes(KVW("none\\file"), kAttributeReadOnly), kPathNotFound);
}

TEST_F(FileApiChanges, FilesAreOpened) {
  folder.write("file", "kept");
  folder.makeFolder("dir");
  for (ulong32 const access : {ulong32{0}, kAccessRead, kAccessWrite, kAccessRead | kAccessWrite}) {
    SCOPED_TRACE(access);
    EXPECT_EQ(errorOfOpen(KVW("file"), access), kNoError);
    EXPECT_EQ(errorOfOpen(KVW("none"), access), kFileNotFound);
    EXPECT_EQ(errorOfOpen(KVW("none\\file"), access), kPathNotFound);
  }
  EXPECT_EQ(errorOfOpen(KVW("dir"), kAccessRead), kAccessDenied);
  EXPECT_EQ(errorOfOpen(KVW("dir"), kAccessRead, kOpenExisting, kFlagBackupSemantics), kNoError);
  EXPECT_EQ(errorOfOpen(KVW("none\\file"), kAccessWrite, kOpenAlways), kPathNotFound);
  EXPECT_EQ(bytes("file"), "kept");
  EXPECT_FALSE(has("none"));
}

TEST_F(FileApiChanges, OpenAlwaysTellsAFileMadeFromOneThatWasThere) {
  struct Row {
    char const* name;
    ulong32 code;
  };
  for (Row const& row : {Row{"made", kNoError}, Row{"was there", kAlreadyExists}}) {
    SCOPED_TRACE(row.name);
    nativeErrors().setLastError(kGeneralFailure);
    FileHandle const file = open(KVW("file"), kAccessWrite, kOpenAlways, kAttributeNormal);
    EXPECT_EQ(nativeErrors().lastError(), row.code);
    ASSERT_NE(file, invalidFile());
    EXPECT_TRUE(files().closeFile(file));
    EXPECT_EQ(bytes("file"), "");
  }
}

TEST_F(FileApiChanges, TheTimeOfTheLastWriteIsSetToTheUnit) {
  folder.write("file", "kept");
  std::uint64_t const day = std::uint64_t{24 * 60 * 60} * 10000000;
  for (std::uint64_t const time :
       {files().systemTime() - day, files().systemTime(), std::uint64_t{126444736001234567}}) {
    FileHandle const file = open(KVW("file"), kAccessWrite, kOpenExisting);
    ASSERT_NE(file, invalidFile());
    EXPECT_TRUE(files().setLastWriteTime(file, time));
    EXPECT_TRUE(files().closeFile(file));
    EXPECT_EQ(info(KVW("file")).lastWriteTime, time);
  }
  EXPECT_EQ(bytes("file"), "kept");
}

TEST_F(FileApiChanges, DescriptorsAreOpenedFlushedAndClosed) {
  folder.write("file", "kept");
  int const descriptor =
      files().openDescriptor(at(KVW("file")).c_str(), kDescriptorReadWrite, kDescriptorShareAll, kDescriptorPermission);
  ASSERT_GE(descriptor, 0);
  EXPECT_EQ(files().commitDescriptor(descriptor), 0);
  EXPECT_EQ(files().closeDescriptor(descriptor), 0);
  folder.makeFolder("dir");
  for (wchar const* name : {KVW("none"), KVW("none\\file"), KVW("dir")}) {
    EXPECT_EQ(
        files().openDescriptor(at(name).c_str(), kDescriptorReadWrite, kDescriptorShareAll, kDescriptorPermission), -1)
        << narrow(name);
  }
  EXPECT_FALSE(has("none"));
  EXPECT_EQ(bytes("file"), "kept");
}

TEST_F(FileApiChanges, FilesAreCopied) {
  folder.write("file", "contents");
  folder.write("old", "a longer old text");
  ASSERT_EQ(setAttributes(KVW("file"), kAttributeReadOnly), kNoError);
  EXPECT_EQ(copy(KVW("file"), KVW("new"), kCopyFailIfExists), kNoError);
  EXPECT_EQ(copy(KVW("file"), KVW("old")), kNoError);
  EXPECT_TRUE(isReadOnly(KVW("new")));
  for (wchar const* name : {KVW("new"), KVW("old")}) {
    EXPECT_EQ(info(name).lastWriteTime, info(KVW("file")).lastWriteTime) << narrow(name);
  }
  EXPECT_EQ(bytes("new"), "contents");
  EXPECT_EQ(bytes("old"), "contents");
}

TEST_F(FileApiChanges, CopiesThatFailLeaveTheirReason) {
  folder.write("file", "file");
  folder.write("other", "other");
  folder.makeFolder("dir");
  struct Row {
    char const* name;
    wchar const* source;
    wchar const* target;
    ulong32 flags;
    ulong32 code;
  };
  Row const rows[] = {
      {"target exists", KVW("file"), KVW("other"), kCopyFailIfExists, kFileExists},
      {"no source", KVW("none"), KVW("new"), 0, kFileNotFound},
      {"no folder of the source", KVW("none\\file"), KVW("new"), 0, kPathNotFound},
      {"no folder of the target", KVW("file"), KVW("none\\file"), 0, kPathNotFound},
      {"source is a folder", KVW("dir"), KVW("new"), 0, kAccessDenied},
      {"target is a folder", KVW("file"), KVW("dir"), 0, kAccessDenied},
      {"onto itself", KVW("file"), KVW("file"), 0, kSharingViolation},
      {"no name", KVW("file"), KVW("a|b"), 0, kInvalidName},
  };
  for (Row const& row : rows) {
    EXPECT_EQ(copy(row.source, row.target, row.flags), row.code) << row.name;
    EXPECT_FALSE(has("new") || has("none")) << row.name;
    EXPECT_EQ(bytes("file") + bytes("other"), "fileother") << row.name;
  }
}

TEST_F(FileApiChanges, ItemsAreMoved) {
  folder.write("file", "file");
  folder.write("other", "other");
  folder.write("dir/inside", "inside");
  EXPECT_EQ(move(KVW("file"), KVW("other")), kAlreadyExists);
  EXPECT_EQ(move(KVW("file"), KVW("dir")), kAlreadyExists);
  EXPECT_EQ(move(KVW("none"), KVW("new")), kFileNotFound);
  EXPECT_EQ(move(KVW("file"), KVW("none\\file")), kPathNotFound);
  EXPECT_EQ(move(KVW("file"), KVW("file")), kNoError);
  EXPECT_EQ(bytes("file") + bytes("other") + bytes("dir/inside"), "fileotherinside");
  EXPECT_EQ(move(KVW("file"), KVW("dir\\moved")), kNoError);
  EXPECT_EQ(move(KVW("dir"), KVW("renamed")), kNoError);
  EXPECT_FALSE(has("file") || has("dir"));
  EXPECT_EQ(bytes("renamed/moved") + bytes("renamed/inside"), "fileinside");
}

TEST_F(FileApiChanges, FilesAreDeleted) {
  folder.write("file");
  folder.write("locked");
  folder.makeFolder("dir");
  ASSERT_EQ(setAttributes(KVW("locked"), kAttributeReadOnly), kNoError);
  EXPECT_EQ(remove(KVW("file")), kNoError);
  EXPECT_FALSE(has("file"));
  EXPECT_EQ(remove(KVW("file")), kFileNotFound);
  EXPECT_EQ(remove(KVW("none\\file")), kPathNotFound);
  EXPECT_EQ(remove(KVW("dir")), kAccessDenied);
  EXPECT_EQ(remove(KVW("locked")), kAccessDenied);
  EXPECT_TRUE(has("dir") && has("locked"));
}

TEST_F(FileApiChanges, DirectoriesAreMadeAndRemoved) {
  folder.write("file");
  EXPECT_EQ(makeDirectory(KVW("dir")), kNoError);
  EXPECT_TRUE(fs::is_directory(folder.path("dir")));
  EXPECT_EQ(makeDirectory(KVW("dir")), kAlreadyExists);
  EXPECT_EQ(makeDirectory(KVW("file")), kAlreadyExists);
  EXPECT_EQ(makeDirectory(KVW("none\\dir")), kPathNotFound);
  EXPECT_EQ(makeDirectory(KVW("a|b")), kInvalidName);
  folder.write("dir/inside");
  EXPECT_EQ(removeDirectory(KVW("dir")), kDirectoryNotEmpty);
  EXPECT_EQ(removeDirectory(KVW("file")), kDirectoryNameInvalid);
  EXPECT_EQ(remove(KVW("dir\\inside")), kNoError);
  EXPECT_EQ(removeDirectory(KVW("dir\\")), kNoError);
  EXPECT_EQ(removeDirectory(KVW("dir")), kFileNotFound);
  EXPECT_EQ(removeDirectory(KVW("none\\dir")), kPathNotFound);
  EXPECT_EQ(removeDirectory(KVW("file\\dir")), kPathNotFound);
  EXPECT_EQ(makeDirectory(KVW("file\\dir")), kPathNotFound);
  EXPECT_TRUE(has("file"));
  EXPECT_FALSE(has("dir"));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
