// SPDX-License-Identifier: MIT
#include "kvbase/platform/windows/windows_file_api.h"

#include <direct.h>
#include <stdlib.h>

#include <cwchar>
#include <iterator>

#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace platform {

namespace {

void store(WIN32_FIND_DATAW const& found, FindData& data) {
  static_assert(sizeof(data.name) == sizeof(found.cFileName), "a name of the system fits");
  data.attributes = found.dwFileAttributes;
  std::wmemcpy(data.name, found.cFileName, std::size(data.name));
}

}  // namespace

ulong32 WindowsFileApi::getAttributes(wchar const* path) {
  return GetFileAttributesW(path);
}

bool WindowsFileApi::getInfo(wchar const* path, FileInfo& info) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(path, GetFileExInfoStandard, &data)) return false;
  info.attributes = data.dwFileAttributes;
  info.size = (std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow;
  return true;
}

SearchHandle WindowsFileApi::findFirst(wchar const* pattern, FindData& data) {
  WIN32_FIND_DATAW found;
  SearchHandle const search = FindFirstFileW(pattern, &found);
  if (search != invalidSearch()) store(found, data);
  return search;
}

bool WindowsFileApi::findNext(SearchHandle search, FindData& data) {
  WIN32_FIND_DATAW found;
  if (!FindNextFileW(search, &found)) return false;
  store(found, data);
  return true;
}

bool WindowsFileApi::findClose(SearchHandle search) {
  return FindClose(search) != FALSE;
}

wchar* WindowsFileApi::currentDirectory() {
  return _wgetcwd(nullptr, 0);
}

// The length is the least that is allocated; a longer text gets its room. With 0 Wine knows the current drive only.
wchar* WindowsFileApi::currentDirectoryOfDrive(int drive) {
  return _wgetdcwd(drive, nullptr, MAX_PATH);
}

void WindowsFileApi::freeText(wchar* text) {
  free(text);
}

}  // namespace platform
}  // namespace KV_1_1
