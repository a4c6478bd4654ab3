// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/linux_file_api.h"

#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include <memory>
#include <string>

#include "kvbase/platform/linux/path_mapping.h"
#include "kvbase/platform/linux/search_registry.h"

namespace KV_1_1 {
namespace platform {

namespace {

std::size_t sizeOf(wchar const* text) {
  return std::char_traits<wchar>::length(text);
}

// Whether the last level of a path is hidden by its name.
bool isHidden(char const* path) {
  std::size_t end = strlen(path);
  while (end > 0 && path[end - 1] == '/') --end;
  std::size_t begin = end;
  while (begin > 0 && path[begin - 1] != '/') --begin;
  std::size_t const size = end - begin;
  bool const isDots = size <= 2 && path[begin] == '.' && (size == 1 || path[begin + 1] == '.');
  return size > 0 && path[begin] == '.' && !isDots;
}

// The mode bits decide, not what this process may do: the superuser may do anything.
ulong32 attributesOf(struct stat const& status, char const* path) {
  ulong32 attributes = 0;
  if (S_ISDIR(status.st_mode)) {
    attributes |= kAttributeDirectory;
  } else if (S_ISLNK(status.st_mode)) {
    attributes |= kAttributeReparsePoint;
  } else if ((status.st_mode & S_IWUSR) == 0) {
    attributes |= kAttributeReadOnly;
  }
  if (isHidden(path)) attributes |= kAttributeHidden;
  return attributes != 0 ? attributes : kAttributeNormal;
}

// One call of the system, two for a link: it is seen itself where it leads to a directory or to nothing, else it is the
// file that it leads to. (A separator at the end makes the system look through it in the first call.)
bool query(wchar const* text, NativePath& path, struct stat& status) {
  if (!mapPath(text, sizeOf(text), path) || lstat(path.data(), &status) != 0) return false;
  if (!S_ISLNK(status.st_mode)) return true;
  struct stat target;
  if (stat(path.data(), &target) == 0 && !S_ISDIR(target.st_mode)) status = target;
  return true;
}

// Where the name begins in the pattern of a search.
std::size_t nameIndex(wchar const* pattern, std::size_t size) {
  bool const verbatim = isVerbatim(pattern, size);
  for (std::size_t i = size; i > 0; --i) {
    wchar const unit = pattern[i - 1];
    bool const isDrive = unit == ':' && (i == 2 || (verbatim && i == 6));
    if (unit == '\\' || (unit == '/' && !verbatim) || isDrive) return i;
  }
  return 0;
}

}  // namespace

ulong32 LinuxFileApi::getAttributes(wchar const* path) {
  NativePath native;
  struct stat status;
  return query(path, native, status) ? attributesOf(status, native.data()) : kInvalidAttributes;
}

bool LinuxFileApi::getInfo(wchar const* path, FileInfo& info) {
  NativePath native;
  struct stat status;
  if (!query(path, native, status)) return false;
  info.attributes = attributesOf(status, native.data());
  info.size = static_cast<std::uint64_t>(status.st_size);
  return true;
}

SearchHandle LinuxFileApi::findFirst(wchar const* pattern, FindData& data) {
  std::size_t const size = sizeOf(pattern);
  std::size_t const name = nameIndex(pattern, size);
  NativePath directory;
  wchar const here[] = {'.'};
  bool const isMapped = name == 0 ? mapPath(here, 1, directory) : mapPath(pattern, name, directory);
  if (!isMapped) return invalidSearch();

  auto search = std::make_unique<DirectorySearch>();
  if (!search->read(directory.data(), Wildcard(pattern + name, size - name)) || !search->next(data)) {
    return invalidSearch();
  }
  return registerSearch(std::move(search));
}

bool LinuxFileApi::findNext(SearchHandle handle, FindData& data) {
  DirectorySearch* const search = searchOf(handle);
  return search != nullptr && search->next(data);
}

bool LinuxFileApi::findClose(SearchHandle handle) {
  return removeSearch(handle) != nullptr;
}

wchar* LinuxFileApi::currentDirectory() {
  NativePath path;
  if (!nativeCurrentDirectory(path)) return nullptr;
  return textOfPath(KVW(""), path.data(), path.size() - 1);
}

wchar* LinuxFileApi::currentDirectoryOfDrive(int drive) {
  if (drive < 1 || drive > 26) return nullptr;
  NativePath below;
  if (!nativeDirectoryOfDrive(static_cast<char>('a' + drive - 1), below)) return nullptr;
  if (below.size() == 0) below.push('/');
  wchar const prefix[] = {static_cast<wchar>('A' + drive - 1), ':', 0};
  return textOfPath(prefix, below.data(), below.size());
}

void LinuxFileApi::freeText(wchar* text) {
  free(text);
}

}  // namespace platform
}  // namespace KV_1_1
