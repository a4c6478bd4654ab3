// SPDX-License-Identifier: MIT
//
// The keys of the current user are the folders below kvbase/registry/HKEY_CURRENT_USER in the user's configuration
// folder. A file in a folder is a value of the key: a text in UTF-8, without the line end that editors and shells put
// behind it.
#include <fcntl.h>

#include <climits>
#include <cstdint>
#include <cstring>

#include "kvbase/kernels/utf8.h"
#include "kvbase/platform/internal/native_backends.h"
#include "kvbase/platform/linux/configuration_folder.h"
#include "kvbase/platform/linux/files/descriptor.h"
#include "kvbase/platform/linux/files/name_mapping.h"
#include "kvbase/platform/linux/files/read_file.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr char kRootFolder[] = "/kvbase/registry/HKEY_CURRENT_USER/";

// An open key is the descriptor of its folder plus one, because the descriptor 0 must differ from no key. The root is
// not opened: its folder is looked up at each use, so that it may be made or moved while the program runs.
SettingsKey keyOf(int folder) {
  return reinterpret_cast<SettingsKey>(static_cast<std::intptr_t>(folder) + 1);
}

int folderOf(SettingsKey key) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(key) - 1);
}

SettingsKey rootKey() {
  return reinterpret_cast<SettingsKey>(static_cast<std::intptr_t>(-1));
}

// Where an item of a key is: a path, relative to a folder unless it is absolute. `path` has no terminator yet.
bool startPath(SettingsKey key, int& folder, NativePath& path) {
  if (key != rootKey()) {
    folder = folderOf(key);
    return true;
  }
  folder = AT_FDCWD;
  if (!appendConfigurationFolder(path)) return false;
  path.append(kRootFolder, sizeof kRootFolder - 1);
  return true;
}

std::size_t lengthOf(wchar const* text) {
  return std::char_traits<wchar>::length(text);
}

// Appends the folders that the name of a key leads through, separated by backslashes. The empty name leads to the key
// itself.
bool appendKeyName(wchar const* name, NativePath& path) {
  if (*name == 0) path.push('.');
  while (*name != 0) {
    wchar const* level = name;
    while (*name != 0 && *name != '\\') ++name;
    if (!appendNativeName(level, static_cast<std::size_t>(name - level), path)) return false;
    path.push('/');
    if (*name == '\\') ++name;
  }
  path.push('\0');
  return true;
}

// The size of the text without its line end.
std::size_t sizeOfLine(FileBytes const& bytes) {
  std::size_t size = bytes.size();
  if (size > 0 && bytes[size - 1] == '\n') --size;
  if (size > 0 && size < bytes.size() && bytes[size - 1] == '\r') --size;
  return size;
}

}  // namespace

SettingsKey NativeSettings::currentUser() {
  return rootKey();
}

SettingsKey NativeSettings::openKey(SettingsKey parent, wchar const* name) {
  int folder = -1;
  NativePath path;
  if (!startPath(parent, folder, path) || !appendKeyName(name, path)) return nullptr;
  int const opened = openat(folder, path.data(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  return opened < 0 ? nullptr : keyOf(opened);
}

bool NativeSettings::readValue(SettingsKey key, wchar const* name, ulong32& type, void* data, ulong32& size) {
  int folder = -1;
  NativePath path;
  if (!startPath(key, folder, path) || !appendNativeName(name, lengthOf(name), path)) return false;
  path.push('\0');
  // A unit takes at most three bytes of UTF-8, so a longer file does not fit, and it is not read.
  std::size_t const room = size / sizeof(wchar);
  std::size_t const longest = 3 * room + 2;
  FileBytes bytes;
  if (!readFile(folder, path.data(), longest < INT_MAX ? longest : INT_MAX, bytes)) return false;

  int const length = static_cast<int>(sizeOfLine(bytes));
  int const units = length == 0 ? 0 : strings::decodeUtf8(bytes.data(), length, nullptr, 0);
  type = kTextValue;
  size = static_cast<ulong32>((static_cast<std::size_t>(units) + 1) * sizeof(wchar));
  if (static_cast<std::size_t>(units) >= room) return false;
  SmallBuffer<wchar, 64> text;
  text.resize(static_cast<std::size_t>(units) + 1);
  if (units > 0) strings::decodeUtf8(bytes.data(), length, text.data(), units);
  text[static_cast<std::size_t>(units)] = 0;
  std::memcpy(data, text.data(), size);
  return true;
}

void NativeSettings::closeKey(SettingsKey key) {
  if (key != rootKey()) DescriptorTraits::close(folderOf(key));
}

}  // namespace platform
}  // namespace KV_1_1
