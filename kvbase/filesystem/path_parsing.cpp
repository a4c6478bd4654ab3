// SPDX-License-Identifier: MIT
//
// Parses texts to paths. The caller's text is read in place, slashes as backslashes, and nothing is allocated but what
// the path holds; only a message makes a copy with replaced slashes.
#include <utility>

#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/internal/path_names.h"
#include "kvbase/filesystem/internal/report.h"
#include "kvbase/internal_assert.h"
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/internal/character_class.h"
#include "kvbase/strings/internal/text_builder.h"

namespace KV_1_1 {

namespace {

bool isSeparator(wchar unit) {
  return (nameClassesOf(unit) & kSeparator) != 0;
}

// A text up to its first NUL.
TextView untilNul(String const& text) {
  TextView const units = viewOf(text);
  return units.substr(0, static_cast<std::size_t>(strings::kernels().findUnit(units.data(), 0, text.length())));
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

// The text as a message shows it.
String shown(TextView text) {
  String copy(text.data(), static_cast<int>(text.size()));
  copy.replace(KVW('/'), KVW('\\'));
  return copy;
}

// Cuts the first level of a text, and the separators in front of it; empty if there is none.
TextView cutLevel(TextView& text) {
  std::size_t begin = 0;
  while (begin < text.size() && isSeparator(text[begin])) ++begin;
  std::size_t end = begin;
  while (end < text.size() && !isSeparator(text[end])) ++end;
  TextView const level = text.substr(begin, end - begin);
  text.remove_prefix(end);
  return level;
}

// How many levels remain when "." and ".." are resolved.
struct Resolution {
  std::size_t kept = 0;
  bool isBeyondRoot = false;

  void add(int dots) {
    if (dots == 0) {
      ++kept;
    } else if (dots == 2 && kept > 0) {
      --kept;
    } else if (dots == 2) {
      isBeyondRoot = true;
    }
  }
};

// The result of one scan of the levels of a text.
struct Scan {
  bool isValid = true;  // whether all levels are valid names; if not, the rest has no meaning
  std::size_t levels = 0;
  Resolution resolution;
};

Scan scan(TextView text) {
  Scan result;
  for (std::size_t at = 0; at < text.size() && result.isValid; ++at) {
    std::size_t const begin = at;
    unsigned int inside = 0;
    unsigned int last = 0;
    for (; at < text.size(); ++at) {
      unsigned int const classes = nameClassesOf(text[at]);
      if ((classes & kSeparator) != 0) break;
      inside |= classes;
      last = classes;
    }
    if (at == begin) continue;
    int const dots = dotsIn(text.substr(begin, at - begin));
    result.isValid = dots != 0 || ((inside & (kReserved | kWildcard)) == 0 && (last & kBadAtEnd) == 0);
    result.resolution.add(dots);
    ++result.levels;
  }
  return result;
}

// The last `count` levels of a text, counted with `resolve` after "." and ".." are resolved. The text is read
// backwards, so that no String is made of a level that a later ".." takes away.
// REQUIRES: there are `count` such levels.
std::vector<String> levelsOf(TextView text, std::size_t count, bool resolve) {
  std::vector<String> levels(count);
  std::size_t end = text.size();
  for (std::size_t skip = 0; count > 0;) {
    KVBASE_ASSERT(end > 0);
    while (isSeparator(text[end - 1])) --end;
    std::size_t begin = end;
    while (begin > 0 && !isSeparator(text[begin - 1])) --begin;
    TextView const level = text.substr(begin, end - begin);
    int const dots = resolve ? dotsIn(level) : 0;
    if (dots == 2) {
      ++skip;
    } else if (dots == 0 && skip > 0) {
      --skip;
    } else if (dots == 0) {
      levels[--count] = String(level.data(), static_cast<int>(level.size()));
    }
    end = begin;
  }
  return levels;
}

// "\\server\share".
String shareRoot(TextView server, TextView share) {
  TextBuilder root(static_cast<long long>(server.size() + share.size()) + 3);
  root.append(KVW('\\')).append(KVW('\\')).append(server);
  return root.append(KVW('\\')).append(share).finish();
}

}  // namespace

SmartPtr<Directory> Directory::fromString(String const& text) {
  return fromText(untilNul(text));
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
  TextView rest = text;
  String root;
  if (text.size() > 1 && text[1] == KVW(':') && text[0] != KVW(':')) {
    wchar const letter = strings::foldCase(text[0]);
    if (letter < KVW('a') || letter > KVW('z')) {
      report(KVW("Invalid drive letter in path '%ls'."), shown(text));
      return nullptr;
    }
    wchar const drive[] = {static_cast<wchar>(letter - KVW('a') + KVW('A')), KVW(':')};
    root = String(drive, 2);
    rest.remove_prefix(2);
  }
  bool const absolute = !rest.empty() && isSeparator(rest[0]);

  Scan const found = scan(rest);
  if (!found.isValid) {
    reportInvalidName(shown(text));
    return nullptr;
  }
  bool const resolve = absolute && !found.resolution.isBeyondRoot;
  std::size_t const count = resolve ? found.resolution.kept : found.levels;
  SmartPtr<Directory> directory(new Directory(absolute, std::move(root), levelsOf(rest, count, resolve)));
  // A path that leads beyond the root is left to normalize, whose message shows the path as it was written.
  if (absolute && !resolve && !directory->normalize()) return nullptr;
  return directory;
}

SmartPtr<Directory> Directory::fromStringUNC(std::basic_string_view<wchar> text, wchar const* behind) {
  Scan const found = scan(text);
  if (!found.isValid) {
    reportInvalidName(shown(text) + behind);
    return nullptr;
  }
  if (found.levels < 2) {
    report(KVW("The network path '%ls' is missing the server and/or share name."), shown(text) + behind);
    return nullptr;
  }
  TextView const server = cutLevel(text);
  TextView const share = cutLevel(text);
  return new Directory(true, shareRoot(server, share), levelsOf(text, found.levels - 2, false));
}

bool Directory::normalize() {
  Resolution resolution;
  for (String const& level : levels_) resolution.add(dotsIn(viewOf(level)));
  if (resolution.isBeyondRoot) {
    report(KVW("Invalid path '%ls': parent references go beyond root."), getFullName());
    levels_.clear();
    return false;
  }
  if (resolution.kept == levels_.size()) return true;

  auto end = levels_.begin();
  for (String& level : levels_) {
    int const dots = dotsIn(viewOf(level));
    if (dots == 0) {
      *end++ = std::move(level);
    } else if (dots == 2) {
      --end;
    }
  }
  levels_.erase(end, levels_.end());
  return true;
}

wchar Directory::getDriveLetter() const {
  return root_.find(KVW(':')) == 1 ? static_cast<wchar const*>(root_)[0] : wchar(0);
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

SmartPtr<File> File::fromString(String const& text) {
  TextView const units = untilNul(text);
  std::size_t begin = units.size();
  while (begin > 0 && !isSeparator(units[begin - 1]) && units[begin - 1] != KVW(':')) --begin;

  SmartPtr<Directory const> directory;
  if (begin > 0) {
    directory = Directory::fromText(units.substr(0, begin));
    if (directory == nullptr) return nullptr;
  }
  // The name is read by its length, so that a NUL makes it invalid.
  if (!isValidFileName(viewOf(text).substr(begin))) return nullptr;
  if (begin == 0) directory = new Directory;
  SmartPtr<File> file(new File(std::move(directory)));
  file->splitName(text, static_cast<int>(begin));
  return file;
}

}  // namespace KV_1_1
