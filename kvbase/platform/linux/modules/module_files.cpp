// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/module_files.h"

#include <string.h>
#include <sys/stat.h>

#include "kvbase/platform/linux/files/directory_entries.h"
#include "kvbase/platform/linux/files/path_mapping.h"
#include "kvbase/platform/linux/files/wildcard.h"
#include "kvbase/platform/linux/modules/elf_modules.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr std::size_t kLongestName = 255;  // in bytes

bool exists(char const* path) {
  struct stat status;
  return stat(path, &status) == 0;
}

bool isSameName(wchar const* name, std::size_t size, char const* entry) {
  unsigned int const first = static_cast<unsigned char>(entry[0]);
  // Nearly every name of a folder begins differently, with a letter that maps to itself.
  bool const isLetter = (first | 0x20) >= 'a' && (first | 0x20) <= 'z';
  if (isLetter && upperCased(static_cast<wchar>(first)) != upperCased(name[0])) return false;
  std::size_t const entrySize = strlen(entry);
  wchar units[kLongestName];
  if (entrySize > kLongestName || nameFromNative(entry, entrySize, units) != size) return false;
  for (std::size_t i = 0; i < size; ++i) {
    if (upperCased(units[i]) != upperCased(name[i])) return false;
  }
  return true;
}

// Replaces the name at the end of `path`, behind `folderSize` bytes, by one that differs only in case.
bool findInAnyCase(NativePath& path, std::size_t folderSize) {
  char const* const wanted = path.data() + folderSize;
  std::size_t const wantedSize = strlen(wanted);
  if (wantedSize == 0 || wantedSize > kLongestName) return false;
  wchar name[kLongestName];
  std::size_t const size = nameFromNative(wanted, wantedSize, name);

  NativePath folderPath;
  folderPath.append(path.data(), folderSize);
  if (folderSize == 0) folderPath.push('.');
  folderPath.push('\0');
  Descriptor const folder(::open(folderPath.data(), O_RDONLY | O_DIRECTORY | kPlainOpen));
  if (!folder) return false;
  char best[kLongestName + 1] = "";
  visitEntries<16384>(folder.get(), [&](dirent64 const& entry) {
    bool const isBetter = isSameName(name, size, entry.d_name) && (best[0] == '\0' || strcmp(entry.d_name, best) < 0);
    if (isBetter) strcpy(best, entry.d_name);
    return true;
  });
  if (best[0] == '\0') return false;
  path.resize(folderSize);
  path.append(best, strlen(best) + 1);
  return exists(path.data());
}

}  // namespace

bool findModuleFile(wchar const* path, NativePath& found) {
  if (!mapPath(path, found)) return false;
  if (exists(found.data())) return true;
  char const* const slash = strrchr(found.data(), '/');
  return findInAnyCase(found, slash == nullptr ? 0 : static_cast<std::size_t>(slash + 1 - found.data()));
}

bool findModuleFileByName(wchar const* name, NativePath& found) {
  std::size_t const size = std::char_traits<wchar>::length(name);
  bool const hasFolder = std::char_traits<wchar>::find(name, size, KVW('\\')) != nullptr ||
                         std::char_traits<wchar>::find(name, size, KVW('/')) != nullptr ||
                         std::char_traits<wchar>::find(name, size, KVW(':')) != nullptr;
  if (hasFolder) return findModuleFile(name, found);
  NativePath program;
  if (pathOfModule(programModule(), program)) {
    std::size_t const folderSize = static_cast<std::size_t>(strrchr(program.data(), '/') + 1 - program.data());
    found.resize(0);
    found.append(program.data(), folderSize);
    if (!appendNativeName(name, size, found)) return false;
    found.push('\0');
    if (exists(found.data()) || findInAnyCase(found, folderSize)) return true;
  }
  return pathOfModuleNamed(name, found);
}

Descriptor openModuleFile(NativePath const& path) {
  Descriptor file(::open(path.data(), O_RDONLY | kPlainOpen));
  struct stat status;
  if (file && (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))) return Descriptor();
  return file;
}

}  // namespace platform
}  // namespace KV_1_1
