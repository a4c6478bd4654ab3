// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <stdlib.h>
#include <string.h>

#include <string>

#include "kvbase/kernels/utf8.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/file_api.h"
#include "kvbase/platform/linux/errors/last_error.h"
#include "kvbase/platform/linux/files/path_mapping.h"
#include "kvbase/platform/linux/shell/child_process.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr std::intptr_t kOpened = 42;
// Long enough for a file browser that has to be started first.
constexpr int kShowMilliseconds = 6000;

bool isLetter(unsigned unit) {
  return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z');
}

bool isDigit(unsigned unit) {
  return unit >= '0' && unit <= '9';
}

// Whether a text begins with a scheme and a colon. A single letter is a drive, not a scheme.
bool isAddress(wchar const* text) {
  if (!isLetter(text[0])) return false;
  std::size_t size = 1;
  while (isLetter(text[size]) || isDigit(text[size]) || text[size] == '+' || text[size] == '-' || text[size] == '.') {
    ++size;
  }
  return size >= 2 && text[size] == ':';
}

void appendUtf8(wchar const* text, NativePath& bytes) {
  std::size_t const units = std::char_traits<wchar>::length(text);
  std::size_t const begin = bytes.size();
  bytes.resize(begin + 3 * units);
  int const capacity = static_cast<int>(3 * units);
  int const size = strings::encodeUtf8(text, static_cast<int>(units), bytes.data() + begin, capacity);
  bytes.resize(begin + static_cast<std::size_t>(size));
}

// The path of an existing item, NUL-terminated. False, with the last error set, if it does not exist.
bool findItem(wchar const* text, NativePath& path) {
  return nativeFiles().getAttributes(text) != kInvalidAttributes && mapPath(text, path);
}

// The argument for xdg-open. False, with the last error set, if the item does not exist.
bool argumentOf(wchar const* file, NativePath& argument) {
  if (isAddress(file)) {
    appendUtf8(file, argument);
    argument.push('\0');
    return true;
  }
  NativePath path;
  if (!findItem(file, path)) return false;
  // Prevents that a name is taken for an option ("-x") or an address ("a:b").
  if (path[0] != '/') argument.append("./", 2);
  argument.append(path.data(), path.size());
  return true;
}

std::intptr_t startOpening(char const* item) {
  char const* const command[] = {"xdg-open", item, nullptr};
  if (startTool(command) == 0) return kOpened;
  setLastErrorOfThread(kGeneralFailure);
  return kGeneralFailure;
}

// All other characters have a meaning in an address, or in the message that contains it.
bool isPlainInAddress(unsigned byte) {
  return isLetter(byte) || isDigit(byte) || byte == '/' || byte == '-' || byte == '.' || byte == '_' || byte == '~';
}

void appendAddress(char const* path, NativePath& address) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  address.append("file://", 7);
  for (; *path != '\0'; ++path) {
    unsigned const byte = static_cast<unsigned char>(*path);
    if (isPlainInAddress(byte)) {
      address.push(*path);
      continue;
    }
    char const code[] = {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    address.append(code, sizeof code);
  }
  address.push('\0');
}

// The file browser answers once it shows the item.
bool fileBrowserShows(char const* address) {
  NativePath items;
  items.append("array:string:", 13);
  items.append(address, strlen(address) + 1);
  char const* const command[] = {"dbus-send",
                                 "--session",
                                 "--print-reply",
                                 "--reply-timeout=5000",
                                 "--dest=org.freedesktop.FileManager1",
                                 "/org/freedesktop/FileManager1",
                                 "org.freedesktop.FileManager1.ShowItems",
                                 items.data(),
                                 "string:",
                                 nullptr};
  return toolAnswers(command, kShowMilliseconds);
}

// "file:///a/b" and "file:///a/b/" => "file:///a/"; the root is its own folder.
void appendFolderOf(char const* address, NativePath& folder) {
  constexpr std::size_t root = sizeof "file:///" - 1;
  std::size_t size = strlen(address);
  while (size > root && address[size - 1] == '/') --size;
  while (size > root && address[size - 1] != '/') --size;
  folder.append(address, size);
  folder.push('\0');
}

}  // namespace

std::intptr_t NativeShell::open(wchar const*, wchar const* file, wchar const*, int) {
  NativePath argument;
  if (file == nullptr || file[0] == 0) return kFileNotFound;
  if (argumentOf(file, argument)) return startOpening(argument.data());
  ulong32 const error = lastErrorOfThread();
  return error == kPathNotFound || error == kAccessDenied ? static_cast<std::intptr_t>(error) : kFileNotFound;
}

ItemList NativeShell::itemListFromPath(wchar const* path) {
  NativePath native;
  if (path == nullptr || !findItem(path, native) || native[0] != '/') return nullptr;
  NativePath address;
  appendAddress(native.data(), address);
  return strdup(address.data());
}

std::int32_t NativeShell::showItem(ItemList item) {
  if (item == nullptr) return 1;
  auto const* const address = static_cast<char const*>(item);
  if (fileBrowserShows(address)) return 0;
  NativePath folder;
  appendFolderOf(address, folder);
  return startOpening(folder.data()) == kOpened ? 0 : 1;
}

void NativeShell::freeItemList(ItemList item) {
  free(item);
}

bool NativeShell::commonProgramFiles(wstring& folder) {
  char const* const chosen = getenv("KVBASE_COMMON_FILES");
  if (chosen == nullptr || chosen[0] == '\0') {
    folder = KVW("\\usr\\share");
    return true;
  }
  int const size = static_cast<int>(strlen(chosen));
  wstring text(strlen(chosen), KVW('\0'));
  text.resize(static_cast<std::size_t>(strings::decodeUtf8(chosen, size, &text[0], size)));
  folder.swap(text);
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
