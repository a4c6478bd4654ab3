// SPDX-License-Identifier: MIT
//
// Parses texts to paths. The caller's text is read in place, slashes as backslashes, and nothing is allocated but what
// the path holds; only a message makes a copy with replaced slashes.
#include <algorithm>
#include <utility>

#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/internal/path_names.h"
#include "kvbase/filesystem/internal/report.h"
#include "kvbase/internal_assert.h"
#include "kvbase/strings/internal/character_class.h"
#include "kvbase/strings/internal/text_builder.h"

namespace KV_1_1 {

namespace {

bool isSeparator(wchar unit) {
  return (nameClassesOf(unit) & kSeparator) != 0;
}

bool isInNames(wchar unit) {
  return (nameClassesOf(unit) & (kReserved | kWildcard)) == 0;
}

// Cuts a prefix, written with backslashes, if the text begins with it.
bool cutPrefix(TextView& text, TextView prefix) {
  if (text.size() < prefix.size()) return false;
  for (std::size_t i = 0; i < prefix.size(); ++i) {
    bool const equal = prefix[i] == KVW('\\') ? isSeparator(text[i]) : text[i] == prefix[i];
    if (!equal) return false;
  }
  text.remove_prefix(prefix.size());
  return true;
}

String textOf(TextView units) {
  return units.empty() ? String::EMPTY : String(units.data(), lengthOf(units));
}

// The text as a message shows it.
String shown(TextView text) {
  String copy(text.data(), static_cast<int>(text.size()));
  copy.replace(KVW('/'), KVW('\\'));
  return copy;
}

// Where the last of some levels begins, each of which has a separator behind it.
// REQUIRES: there is one.
wchar* lastLevel(wchar* begin, wchar* end) {
  do --end;
  while (end != begin && end[-1] != KVW('\\'));
  return end;
}

enum class Levels { kValid, kInvalid, kBeyondRoot };

// Appends the levels of a text, each with a separator behind it; with `resolve`, "." and ".." are resolved. Nothing is
// appended if a level is no valid name or ".." leads beyond the first level.
// REQUIRES: there is room for one unit more than the text has.
Levels appendLevels(TextView text, bool resolve, TextBuilder& output) {
  wchar* const begin = output.extend(0);
  wchar* end = begin;
  bool isBeyondRoot = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    wchar* const level = end;
    for (; at < text.size() && isInNames(text[at]); ++at) *end++ = text[at];
    if (at < text.size() && !isSeparator(text[at])) return Levels::kInvalid;
    if (end == level) continue;
    if ((nameClassesOf(end[-1]) & kBadAtEnd) != 0) {
      int const dots = dotsIn(TextView(level, static_cast<std::size_t>(end - level)));
      if (dots == 0) return Levels::kInvalid;
      if (resolve) {
        end = level;
        if (dots == 2 && end == begin) isBeyondRoot = true;
        if (dots == 2 && end != begin) end = lastLevel(begin, end);
        continue;
      }
    }
    *end++ = KVW('\\');
  }
  if (isBeyondRoot) return Levels::kBeyondRoot;
  output.extend(static_cast<int>(end - begin));
  return Levels::kValid;
}

void reportBeyondRoot(String const& path) {
  report(KVW("Invalid path '%ls': parent references go beyond root."), path);
}

}  // namespace

SmartPtr<Directory> Directory::fromString(String const& text) {
  return fromText(upToNul(viewOf(text)));
}

SmartPtr<Directory> Directory::fromUTF8(char const* text) {
  return fromString(String(UTF8Interface(text)));
}

SmartPtr<Directory> Directory::fromUTF8(std::string const& text) {
  return fromUTF8(text.c_str());
}

SmartPtr<Directory> Directory::fromText(std::basic_string_view<wchar> text) {
  if (text.size() < 2 || !isSeparator(text[0]) || !isSeparator(text[1])) return fromStringLocal(text);
  // COMPAT: messages show two more separators behind a share that was written with a prefix.
  if (cutPrefix(text, KVW("\\\\?\\UNC\\"))) return fromStringUNC(text, KVW("\\\\"));
  if (cutPrefix(text, KVW("\\\\?\\"))) return fromStringLocal(text);
  return fromStringUNC(text.substr(2), nullptr);
}

SmartPtr<Directory> Directory::fromStringLocal(std::basic_string_view<wchar> text) {
  // A drive, a separator behind it or at the beginning, and one at the end.
  TextBuilder path(static_cast<long long>(text.size()) + 1);
  TextView rest = text;
  int rootUnits = 0;
  if (text.size() > 1 && text[1] == KVW(':') && text[0] != KVW(':')) {
    wchar const letter = strings::foldCase(text[0]);
    if (letter < KVW('a') || letter > KVW('z')) {
      report(KVW("Invalid drive letter in path '%ls'."), shown(text));
      return nullptr;
    }
    path.append(static_cast<wchar>(letter - KVW('a') + KVW('A'))).append(KVW(':'));
    rootUnits = 2;
    rest.remove_prefix(2);
  }
  bool const absolute = !rest.empty() && isSeparator(rest[0]);
  if (absolute) {
    path.append(KVW('\\'));
    rest.remove_prefix(1);
  }
  Levels const levels = appendLevels(rest, absolute, path);
  if (levels == Levels::kInvalid) {
    reportInvalidName(shown(text));
    return nullptr;
  }
  if (levels == Levels::kBeyondRoot) {
    appendLevels(rest, false, path);
    reportBeyondRoot(path.finish());
    return nullptr;
  }
  return new Directory(absolute, rootUnits, path.finish());
}

SmartPtr<Directory> Directory::fromStringUNC(std::basic_string_view<wchar> text, wchar const* behind) {
  TextBuilder path(static_cast<long long>(text.size()) + 3);
  wchar const* const begin = path.extend(0);
  path.append(KVW("\\\\"));
  if (appendLevels(text, false, path) != Levels::kValid) {
    reportInvalidName(shown(text) + behind);
    return nullptr;
  }
  TextView const written(begin, static_cast<std::size_t>(path.extend(0) - begin));
  std::size_t const server = written.find(KVW('\\'), 2);
  std::size_t const root = server == TextView::npos ? server : written.find(KVW('\\'), server + 1);
  if (root == TextView::npos) {
    report(KVW("The network path '%ls' is missing the server and/or share name."), shown(text) + behind);
    return nullptr;
  }
  return new Directory(true, static_cast<int>(root), path.finish());
}

bool Directory::normalize() {
  // One unit more than the path has, as appendLevels requires.
  TextBuilder path(path_.length() + 1ll);
  path.append(front());
  bool const isInside = appendLevels(levels(), true, path) == Levels::kValid;
  if (!isInside) reportBeyondRoot(getFullName());
  path_ = path.finish();
  return isInside;
}

wchar Directory::getDriveLetter() const {
  return rootUnits_ == 2 ? static_cast<wchar const*>(path_)[0] : wchar(0);
}

SmartPtr<File> File::fromString(Directory const& directory, String const& name) {
  return inDirectory(&directory, name);
}

SmartPtr<File> File::inDirectory(Directory const* directory, String const& name) {
  if (!isValidFileName(viewOf(name))) return nullptr;
  SmartPtr<File> file(new File(directory));
  file->setName(name);
  return file;
}

SmartPtr<File> File::named(SmartPtr<Directory const> directory, std::basic_string_view<wchar> name) {
  if (!isValidFileName(name)) return nullptr;
  SmartPtr<File> file(new File(std::move(directory)));
  std::size_t const dot = std::min(name.rfind(KVW('.')), name.size());
  file->baseName_ = textOf(name.substr(0, dot));
  file->extension_ = textOf(name.substr(std::min(dot + 1, name.size())));
  return file;
}

SmartPtr<File> File::fromString(String const& text) {
  TextView const units = upToNul(viewOf(text));
  std::size_t begin = units.size();
  while (begin > 0 && !isSeparator(units[begin - 1]) && units[begin - 1] != KVW(':')) --begin;

  if (begin == 0) return inDirectory(SmartPtr<Directory const>(new Directory).get(), text);
  SmartPtr<Directory const> directory = Directory::fromText(units.substr(0, begin));
  if (directory == nullptr) return nullptr;
  // The name is read by its length, so that a NUL makes it invalid.
  return named(std::move(directory), viewOf(text).substr(begin));
}

}  // namespace KV_1_1
