// SPDX-License-Identifier: MIT
//
// What the tests of paths share: Strings and paths as UTF-8 text for expectations, and the messages of the path
// classes.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/internal/error_sink.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

// The text by its length, inner NULs included; "NIL" for NIL.
inline std::string shown(String const& text) {
  if (text == String::NIL) return "NIL";
  return narrow(wstring(static_cast<wchar const*>(text), static_cast<std::size_t>(text.length())));
}

// A String that counts every unit of the text, NULs included; a counted terminator is no text, hence the one more.
inline String counted(wstring const& text) {
  return String(text.c_str(), static_cast<int>(text.size()) + 1);
}

// The levels as texts, found by going up.
inline std::vector<std::string> levelsOf(Directory const& directory) {
  std::vector<std::string> levels;
  SmartPtr<Directory const> const copy(new Directory(directory));
  for (SmartPtr<Directory const> at = copy; at->getParent() != nullptr; at = at->getParent()) {
    levels.push_back(shown(at->getName()));
  }
  std::reverse(levels.begin(), levels.end());
  return levels;
}

// All fields of a directory: "abs C: [a][b]", "rel NIL"; "null" for null.
inline std::string described(Directory const* directory) {
  if (directory == nullptr) return "null";
  std::string text = (directory->isAbsolute() ? "abs " : "rel ") + shown(directory->getRoot());
  auto const levels = levelsOf(*directory);
  if (!levels.empty()) text += ' ';
  for (std::string const& level : levels) text += '[' + level + ']';
  return text;
}
// The directory, base name and extension: "rel NIL | a | txt".
inline std::string described(File const* file) {
  if (file == nullptr) return "null";
  return described(file->getDirectory().get()) + " | " + shown(file->getBaseName()) + " | " +
         shown(file->getExtension());
}
template <class T>
std::string described(SmartPtr<T> const& path) {
  return described(path.get());
}

// The full name; "null" for null.
template <class T>
std::string fullName(SmartPtr<T> const& path) {
  return path == nullptr ? "null" : shown(path->getFullName());
}

// A path that must be readable.
inline SmartPtr<Directory const> directoryAt(String const& text) {
  SmartPtr<Directory const> directory = Directory::fromString(text);
  if (directory == nullptr) ADD_FAILURE() << "no directory: " << shown(text);
  return directory;
}
inline SmartPtr<File const> fileAt(String const& text) {
  SmartPtr<File const> file = File::fromString(text);
  if (file == nullptr) ADD_FAILURE() << "no file: " << shown(text);
  return file;
}

// Collects what goes to FileSystemItem::reportError while it lives. One at a time, and no path work on other threads.
class CollectedMessages {
 public:
  CollectedMessages() : previous_(std::exchange(errorSink, &collect)) { texts().clear(); }
  ~CollectedMessages() { errorSink = previous_; }
  CollectedMessages(CollectedMessages const&) = delete;
  CollectedMessages& operator=(CollectedMessages const&) = delete;

  // What came since the last call.
  std::vector<std::string> take() { return std::exchange(texts(), {}); }

 private:
  static std::vector<std::string>& texts() {
    static std::vector<std::string> all;
    return all;
  }
  static void collect(String const& message) { texts().push_back(shown(message)); }

  void (*previous_)(String const&);
};

using Texts = std::vector<std::string>;

// The messages of the path classes, with the text that they quote.
inline std::string invalidName(std::string const& text) {
  return "The path or file name '" + text + "' contains invalid characters.";
}
inline std::string invalidDrive(std::string const& text) {
  return "Invalid drive letter in path '" + text + "'.";
}
inline std::string noShare(std::string const& text) {
  return "The network path '" + text + "' is missing the server and/or share name.";
}
inline std::string beyondRoot(std::string const& text) {
  return "Invalid path '" + text + "': parent references go beyond root.";
}
inline std::string invalidPattern(std::string const& text) {
  return "The file or directory search string '" + text + "' contains invalid characters.";
}
constexpr char const* kMustBeRelative = "The path to be appended must be relative.";
constexpr char const* kNoCurrentDirectory = "Failed to get the current working directory.";
constexpr char const* kBadCurrentDirectory = "Current working directory is invalid.";
constexpr char const* kNoAbsolutePaths = "Failed to get absolute paths of this and the reference directory.";

}  // namespace testing
}  // namespace KV_1_1
