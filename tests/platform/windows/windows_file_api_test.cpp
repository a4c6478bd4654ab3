// SPDX-License-Identifier: MIT
//
// Each method has the effect of the Windows call that it forwards to.
#include <gtest/gtest.h>

#include <errno.h>
#include <io.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/file_api.h"
#include "kvbase/platform/types.h"
#include "tests/support/current_path.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

platform::FileApi& files() {
  return platform::nativeFiles();
}

std::string directoryOfDrive(int drive) {
  wstring path;
  EXPECT_TRUE(files().currentDirectoryOfDrive(drive, path));
  return narrow(path);
}

// Whether a call succeeds, and its last error if it fails.
using Outcome = std::pair<bool, ulong32>;

Outcome outcomeOf(std::function<bool()> const& call) {
  SetLastError(ERROR_SUCCESS);
  bool const done = call();
  return {done, done ? ERROR_SUCCESS : GetLastError()};
}

// Each method and its Windows call are run on equal items in a folder of their own and must have the same effect.
TEST(WindowsFileApiTest, ChangesAreTheSystems) {
  using Call = std::function<bool(wstring const& folder)>;
  struct Row {
    char const* name;
    Call forward;
    Call direct;
  };
  auto const both = [](char const* name, auto forward, auto direct) { return Row{name, forward, direct}; };
  std::vector<Row> rows;
  for (wchar const* item : {KVW("file"), KVW("locked"), KVW("empty"), KVW("full"), KVW("none"), KVW("none\\x"),
                            KVW("a|b"), KVW("file\\x"), KVW("empty\\")}) {
    wstring const name = item;
    rows.push_back(both(
        "delete", [name](wstring const& in) { return files().deleteFile((in + name).c_str()); },
        [name](wstring const& in) { return DeleteFileW((in + name).c_str()) != FALSE; }));
    rows.push_back(both(
        "make directory", [name](wstring const& in) { return files().createDirectory((in + name).c_str()); },
        [name](wstring const& in) { return CreateDirectoryW((in + name).c_str(), nullptr) != FALSE; }));
    rows.push_back(both(
        "remove directory", [name](wstring const& in) { return files().removeDirectory((in + name).c_str()); },
        [name](wstring const& in) { return RemoveDirectoryW((in + name).c_str()) != FALSE; }));
    rows.push_back(both(
        "set attributes",
        [name](wstring const& in) { return files().setAttributes((in + name).c_str(), FILE_ATTRIBUTE_READONLY); },
        [name](wstring const& in) {
          return SetFileAttributesW((in + name).c_str(), FILE_ATTRIBUTE_READONLY) != FALSE;
        }));
    rows.push_back(both(
        "move from",
        [name](wstring const& in) { return files().moveFile((in + name).c_str(), (in + KVW("new")).c_str()); },
        [name](wstring const& in) { return MoveFileW((in + name).c_str(), (in + KVW("new")).c_str()) != FALSE; }));
    rows.push_back(both(
        "move to",
        [name](wstring const& in) { return files().moveFile((in + KVW("file")).c_str(), (in + name).c_str()); },
        [name](wstring const& in) { return MoveFileW((in + KVW("file")).c_str(), (in + name).c_str()) != FALSE; }));
    for (ulong32 const flags : {ulong32{0}, platform::kCopyFailIfExists}) {
      rows.push_back(both(
          "copy to",
          [name, flags](wstring const& in) {
            return files().copyFile((in + KVW("file")).c_str(), (in + name).c_str(), nullptr, nullptr, flags);
          },
          [name, flags](wstring const& in) {
            return CopyFileExW((in + KVW("file")).c_str(), (in + name).c_str(), nullptr, nullptr, nullptr, flags) !=
                   FALSE;
          }));
    }
  }
  auto const fill = [](TempFolder const& folder) {
    folder.write("file", "contents");
    folder.write("locked", "locked");
    folder.write("full/inside");
    folder.makeFolder("empty");
    ASSERT_TRUE(SetFileAttributesW(folder.text(KVW("locked")).c_str(), FILE_ATTRIBUTE_READONLY));
  };
  auto const itemsOf = [](TempFolder const& folder) {
    std::vector<std::string> items;
    for (auto const& item : std::filesystem::recursive_directory_iterator(folder.path())) {
      std::string const attributes = std::to_string(GetFileAttributesW(item.path().c_str()));
      items.push_back(std::filesystem::relative(item.path(), folder.path()).string() + ' ' + attributes);
    }
    std::sort(items.begin(), items.end());
    return items;
  };
  for (std::size_t i = 0; i < rows.size(); ++i) {
    SCOPED_TRACE(rows[i].name);
    SCOPED_TRACE(i);
    TempFolder forwarded, direct;
    fill(forwarded);
    fill(direct);
    EXPECT_EQ(outcomeOf([&] { return rows[i].forward(forwarded.text(KVW(""))); }),
              outcomeOf([&] { return rows[i].direct(direct.text(KVW(""))); }));
    EXPECT_EQ(itemsOf(forwarded), itemsOf(direct));
  }
}

TEST(WindowsFileApiTest, AReadOnlyFileIsNotDeleted) {
  TempFolder folder;
  folder.write("file");
  wstring const path = folder.text(KVW("file"));
  ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(outcomeOf([&] { return files().deleteFile(path.c_str()); }), Outcome(false, ERROR_ACCESS_DENIED));
  EXPECT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL));
  EXPECT_EQ(outcomeOf([&] { return files().deleteFile(path.c_str()); }), Outcome(true, ERROR_SUCCESS));
}

TEST(WindowsFileApiTest, OpenFilesAreHandlesOfTheSystem) {
  TempFolder folder;
  folder.write("file", "contents");
  wstring const path = folder.text(KVW("file"));
  platform::FileHandle const file =
      files().openFile(path.c_str(), platform::kAccessRead, platform::kShareRead, platform::kOpenExisting, 0);
  ASSERT_NE(file, platform::invalidFile());
  char bytes[16];
  DWORD size = 0;
  EXPECT_TRUE(ReadFile(file, bytes, sizeof bytes, &size, nullptr));
  EXPECT_EQ(std::string(bytes, size), "contents");
  platform::FileHandle const other = files().openFile(path.c_str(), platform::kAccessRead | platform::kAccessWrite,
                                                      platform::kShareRead, platform::kOpenExisting, 0);
  EXPECT_EQ(other, platform::invalidFile());
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
  EXPECT_TRUE(files().closeFile(file));
}

TEST(WindowsFileApiTest, TimesAreTheSystems) {
  TempFolder folder;
  folder.write("file", "contents");
  wstring const path = folder.text(KVW("file"));
  platform::FileHandle const file =
      files().openFile(path.c_str(), platform::kAccessWrite, platform::kShareRead, platform::kOpenExisting, 0);
  ASSERT_NE(file, platform::invalidFile());
  std::uint64_t const wanted = 0x01D0123456789ABC;
  EXPECT_TRUE(files().setLastWriteTime(file, wanted));
  FILETIME written;
  EXPECT_TRUE(GetFileTime(file, nullptr, nullptr, &written));
  EXPECT_TRUE(files().closeFile(file));
  EXPECT_EQ(written.dwLowDateTime, 0x56789ABCu);
  EXPECT_EQ(written.dwHighDateTime, 0x01D01234u);

  WIN32_FILE_ATTRIBUTE_DATA data;
  ASSERT_TRUE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data));
  platform::FileInfo info;
  ASSERT_TRUE(files().getInfo(path.c_str(), info));
  EXPECT_EQ(info.lastWriteTime, wanted);
  EXPECT_EQ(info.creationTime >> 32, data.ftCreationTime.dwHighDateTime);
  EXPECT_EQ(info.creationTime & 0xFFFFFFFF, data.ftCreationTime.dwLowDateTime);
}

TEST(WindowsFileApiTest, TheStatusIsThatOfTheRuntime) {
  TempFolder folder;
  folder.write("file", "contents");
  for (wchar const* name : {KVW("file"), KVW("none")}) {
    struct _stat64i32 found = {}, direct = {};
    wstring const path = folder.text(name);
    EXPECT_EQ(files().getStatus(path.c_str(), found), _wstat64i32(path.c_str(), &direct));
    EXPECT_EQ(found.st_mode, direct.st_mode);
    EXPECT_EQ(found.st_size, direct.st_size);
    EXPECT_EQ(found.st_mtime, direct.st_mtime);
    EXPECT_EQ(found.st_nlink, direct.st_nlink);
  }
}

TEST(WindowsFileApiTest, DescriptorsAreThoseOfTheRuntime) {
  TempFolder folder;
  folder.write("file", "contents");
  int const descriptor = files().openDescriptor(folder.text(KVW("file")).c_str(), platform::kDescriptorReadWrite,
                                                platform::kDescriptorShareAll, platform::kDescriptorPermission);
  ASSERT_GE(descriptor, 0);
  EXPECT_EQ(_filelength(descriptor), 8);
  EXPECT_EQ(_write(descriptor, "\n", 1), 1);
  EXPECT_EQ(_tell(descriptor), 1) << "a line feed is one byte";
  EXPECT_EQ(files().commitDescriptor(descriptor), 0);
  EXPECT_EQ(files().closeDescriptor(descriptor), 0);
}

TEST(WindowsFileApiTest, TextsOfCodesAreTheSystems) {
  for (ulong32 const code :
       {platform::kNoError, platform::kFileNotFound, platform::kDiskFull, ulong32{107}, ulong32{5000}}) {
    SCOPED_TRACE(code);
    wchar* direct = nullptr;
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0,
                   reinterpret_cast<wchar*>(&direct), 0, nullptr);
    wstring const expected = direct != nullptr ? direct : KVW("unchanged");
    LocalFree(direct);
    wstring text = KVW("unchanged");
    EXPECT_EQ(platform::nativeErrors().errorText(code, text), direct != nullptr);
    EXPECT_EQ(narrow(text), narrow(expected));
  }
}

TEST(WindowsFileApiTest, TheLastErrorIsThatOfTheSystem) {
  platform::nativeErrors().setLastError(4711);
  EXPECT_EQ(GetLastError(), 4711u);
  SetLastError(815);
  EXPECT_EQ(platform::nativeErrors().lastError(), 815u);
}

TEST(WindowsFileApiTest, AttributesAreTheSystems) {
  TempFolder folder;
  folder.write("file.txt", "123");
  wstring const path = folder.text(KVW("file.txt"));
  ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(files().getAttributes(path.c_str()), GetFileAttributesW(path.c_str()));
  EXPECT_NE(files().getAttributes(path.c_str()) & platform::kAttributeHidden, 0u);
  platform::FileInfo info;
  ASSERT_TRUE(files().getInfo(path.c_str(), info));
  EXPECT_EQ(info.attributes, GetFileAttributesW(path.c_str()));
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(WindowsFileApiTest, SizeHasItsHighHalf) {
  TempFolder folder;
  folder.write("large");
  wstring const path = folder.text(KVW("large"));
  HANDLE const file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  LARGE_INTEGER end;
  end.QuadPart = 0x140000002;
  EXPECT_TRUE(SetFilePointerEx(file, end, nullptr, FILE_BEGIN));
  EXPECT_TRUE(SetEndOfFile(file));
  CloseHandle(file);
  platform::FileInfo info;
  ASSERT_TRUE(files().getInfo(path.c_str(), info));
  EXPECT_EQ(info.size, 0x140000002u);
}

TEST(WindowsFileApiTest, CurrentDirectoryOfADrive) {
  TempFolder folder;
  CurrentPath const current(folder.path());
  int const drive = folder.text()[0] - KVW('A') + 1;
  EXPECT_EQ(directoryOfDrive(drive), narrow(folder.text()));
  bool const isOnC = drive == 3;
  if (!isOnC) {
    EXPECT_EQ(directoryOfDrive(3), "C:\\");
  }
}

// The runtime would end the process. That of Wine sets its error instead.
TEST(WindowsFileApiTest, TheRuntimeIsNotAskedForADriveThatIsNotThere) {
  DWORD const drives = GetLogicalDrives();
  for (int drive = 1; drive <= 26; ++drive) {
    if ((drives & (DWORD{1} << (drive - 1))) != 0) continue;
    wstring path = KVW("unchanged");
    errno = 0;
    EXPECT_FALSE(files().currentDirectoryOfDrive(drive, path));
    EXPECT_EQ(errno, 0) << drive;
    EXPECT_EQ(narrow(path), "unchanged");
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
