// SPDX-License-Identifier: MIT
//
// The forwards, compared with the calls they stand for.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "kvbase/platform/file_api.h"
#include "kvbase/platform/types.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

platform::FileApi& files() {
  return platform::nativeFiles();
}

std::string released(wchar* text) {
  std::string const result = text == nullptr ? "null" : narrow(text);
  files().freeText(text);
  return result;
}

TEST(WindowsFileApiTest, ConstantsAreThoseOfTheSystem) {
  EXPECT_EQ(platform::kAttributeReadOnly, static_cast<ulong32>(FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(platform::kAttributeHidden, static_cast<ulong32>(FILE_ATTRIBUTE_HIDDEN));
  EXPECT_EQ(platform::kAttributeDirectory, static_cast<ulong32>(FILE_ATTRIBUTE_DIRECTORY));
  EXPECT_EQ(platform::kAttributeNormal, static_cast<ulong32>(FILE_ATTRIBUTE_NORMAL));
  EXPECT_EQ(platform::kAttributeReparsePoint, static_cast<ulong32>(FILE_ATTRIBUTE_REPARSE_POINT));
  EXPECT_EQ(platform::kInvalidAttributes, INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(platform::invalidSearch(), INVALID_HANDLE_VALUE);
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
  std::filesystem::path const previous = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  int const drive = folder.text()[0] - KVW('A') + 1;
  EXPECT_EQ(released(files().currentDirectoryOfDrive(drive)), narrow(folder.text()));
  bool const isOnC = drive == 3;
  if (!isOnC) {
    EXPECT_EQ(released(files().currentDirectoryOfDrive(3)), "C:\\");
  }
  std::filesystem::current_path(previous);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
