// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/path_mapping.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unicode/uchar.h>
#include <unistd.h>

#include <memory>

#include "kvbase/kernels/sse2_vector.h"
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/configuration_folder.h"
#include "kvbase/platform/linux/errors/last_error.h"

namespace KV_1_1 {
namespace platform {

namespace {

void appendText(char const* text, NativePath& path) {
  path.append(text, strlen(text));
}

// The folder of drives and shares, without terminator. False if the user has no configuration folder.
bool appendDrivesFolder(NativePath& path) {
  if (appendPathVariable("KVBASE_DRIVES", path)) return true;
  if (!appendConfigurationFolder(path)) return false;
  appendText("/kvbase/drives", path);
  return true;
}

wchar lowered(wchar unit) {
  if (unit < 0x80) return unit >= 'A' && unit <= 'Z' ? static_cast<wchar>(unit + 0x20) : unit;
  return static_cast<wchar>(u_tolower(unit));
}

// Appends the root of a drive, with a separator at its end so that its link is followed.
bool appendDriveRoot(char letter, NativePath& path) {
  if (!appendDrivesFolder(path)) return false;
  char const name[] = {'/', letter, ':', '/'};
  path.append(name, sizeof name);
  return true;
}

// Whether the text starts with \\?\.
bool isVerbatim(wchar const* text, std::size_t size) {
  return size >= 4 && text[0] == '\\' && text[1] == '\\' && text[2] == '?' && text[3] == '\\';
}

// Parses a text level by level and builds the path of the system.
class PathMapper {
 public:
  PathMapper(wchar const* text, std::size_t size, NativePath& path) : next_(text), end_(text + size), path_(path) {}

  // Returns kNoError, or the reason why there is no such path.
  ulong32 run() {
    if (next_ == end_) return kPathNotFound;
    verbatim_ = isVerbatim(next_, left());
    if (verbatim_) next_ += 4;
    if (!appendRoot() || !appendLevels()) return error_;
    if (path_.size() == 0) path_.push('.');
    if (trailing_ && path_[path_.size() - 1] != '/') path_.push('/');
    path_.push('\0');
    return kNoError;
  }

 private:
  bool fail(ulong32 error) {
    error_ = error;
    return false;
  }
  std::size_t left() const { return static_cast<std::size_t>(end_ - next_); }
  bool isSeparator(wchar unit) const { return unit == '\\' || (unit == '/' && !verbatim_); }
  bool startsWithSeparator() const { return next_ != end_ && isSeparator(*next_); }
  bool startsWithDrive() const {
    return left() >= 2 && next_[1] == ':' && lowered(*next_) >= 'a' && lowered(*next_) <= 'z';
  }
  bool startsWithUnc() const {
    return verbatim_ && left() >= 4 && lowered(next_[0]) == 'u' && lowered(next_[1]) == 'n' &&
           lowered(next_[2]) == 'c' && next_[3] == '\\';
  }

  // Appends everything before the levels. path_ then ends in a separator, or is empty for a relative path.
  bool appendRoot() {
    if (startsWithUnc()) {
      next_ += 4;
      return appendShare();
    }
    if (startsWithDrive()) return appendDrive();
    if (!verbatim_ && left() >= 2 && isSeparator(next_[0]) && isSeparator(next_[1])) {
      next_ += 2;
      return appendShare();
    }
    if (startsWithSeparator()) path_.push('/');
    floor_ = path_.size();
    return true;
  }

  bool appendDrive() {
    char const letter = static_cast<char>(lowered(*next_));
    next_ += 2;
    if (!appendDriveRoot(letter, path_)) return fail(kPathNotFound);
    floor_ = path_.size();
    if (startsWithSeparator()) return true;
    if (verbatim_ && next_ != end_) return false;
    NativePath below;
    if (!nativeDirectoryOfDrive(letter, below)) return fail(kPathNotFound);
    if (below.size() > 0) {
      path_.append(below.data() + 1, below.size() - 1);
      path_.push('/');
    }
    return true;
  }

  bool appendShare() {
    if (!appendDrivesFolder(path_)) return fail(kBadNetworkPath);
    appendText("/unc/", path_);
    for (int i = 0; i < 2; ++i) {
      SmallBuffer<wchar, 64> name;
      for (; next_ != end_ && !isSeparator(*next_); ++next_) name.push(lowered(*next_));
      if (!appendNativeName(name.data(), name.size(), path_)) return false;
      path_.push('/');
      if (next_ != end_) ++next_;
    }
    floor_ = path_.size();
    return true;
  }

  bool appendLevels() {
    while (next_ != end_) {
      if (isSeparator(*next_)) {
        ++next_;
        continue;
      }
      wchar const* const level = next_;
      while (next_ != end_ && !isSeparator(*next_)) ++next_;
      if (!appendLevel(level, static_cast<std::size_t>(next_ - level))) return false;
    }
    trailing_ = isSeparator(end_[-1]);
    // Each level was appended with a separator; the last one stays only if the text has it.
    if (!trailing_ && path_.size() > floor_) path_.resize(path_.size() - 1);
    return true;
  }

  bool appendLevel(wchar const* level, std::size_t size) {
    if (!verbatim_) {
      if (size == 1 && level[0] == '.') return true;
      if (size == 2 && level[0] == '.' && level[1] == '.') {
        removeLevel();
        return true;
      }
    }
    if (!appendNativeName(level, size, path_)) return false;
    path_.push('/');
    return true;
  }

  void removeLevel() {
    if (path_.size() > floor_) {
      std::size_t size = path_.size() - 1;
      while (size > floor_ && path_[size - 1] != '/') --size;
      path_.resize(size);
      return;
    }
    bool const isRooted = floor_ > 0 && path_[0] == '/';
    if (isRooted) return;
    appendText("../", path_);
    floor_ = path_.size();
  }

  wchar const* next_;
  wchar const* const end_;
  NativePath& path_;
  ulong32 error_ = kInvalidName;
  bool verbatim_ = false;
  bool trailing_ = false;
  std::size_t floor_ = 0;  // ".." does not shorten path_ below this size
};

using Units = strings::Sse2Vector;

template <class... Registers>
Units::Register anyOf(Units::Register first, Registers... others) {
  ((first = Units::bitOr(first, others)), ...);
  return first;
}

// As many bytes as a vector has.
constexpr std::size_t kStep = std::size_t{2} * Units::kUnits;

// Maps kStep units of a path, each by itself. False if that cannot be done. `mayEnd` tells whether a name may end before
// the first of them, and then whether one may end behind the last.
bool mapPlainUnits(wchar const* text, bool& mayEnd, char* bytes) {
  // Any unit beyond ASCII is below a blank now.
  auto const block = Units::narrowed(Units::load(text), Units::load(text + Units::kUnits));
  auto const are = [block](char byte) { return Units::equalBytes(block, Units::bytesOf(byte)); };
  // Whether bytes are one of two that differ in one bit.
  auto const areEither = [block](char byte, char bit) {
    return Units::equalBytes(Units::bitOr(block, Units::bytesOf(bit)), Units::bytesOf(byte));
  };
  auto const isForbidden = anyOf(Units::greaterBytes(Units::bytesOf(' '), block), areEither(':', ':' ^ '*'),
                                 areEither('?', '?' ^ '/'), areEither('|', '|' ^ '<'), are('>'), are('"'));
  auto const separators = are('\\');
  unsigned int const badEnds = Units::mask(anyOf(separators, are('.'), are(' ')));
  unsigned int const behindBadEnds = badEnds << 1 | (mayEnd ? 0 : 1);
  if (Units::mask(isForbidden) != 0 || (Units::mask(separators) & behindBadEnds) != 0) return false;
  mayEnd = (badEnds >> (kStep - 1)) == 0;
  Units::storeBytes(bytes, Units::bitXor(block, Units::bitAnd(separators, Units::bytesOf('\\' ^ '/'))));
  return true;
}

// Maps a text whose units map one by one, as those of nearly every path do: in ASCII and not long, from the native root or
// without a root, with no drive, no share, no "." and "..", and no two separators next to each other. False for all others,
// whether or not there is such a path; `path` is then unspecified.
bool mapPlainPath(wchar const* text, std::size_t size, NativePath& path) {
  if (isVerbatim(text, size)) {
    text += 4;
    size -= 4;
    if (size == 0 || text[0] != '\\') return false;
  }
  if (size < kStep || size >= NativePath::kSmall) return false;
  path.resize(size + 1);
  char* const bytes = path.data();
  bool mayEnd = true;
  std::size_t done = 0;
  for (; done + kStep <= size; done += kStep) {
    if (!mapPlainUnits(text + done, mayEnd, bytes + done)) return false;
  }
  if (done < size) {
    // The last vector overlaps the one before, which has seen what stands before its first unit.
    std::size_t const last = size - kStep;
    mayEnd = true;
    if (!mapPlainUnits(text + last, mayEnd, bytes + last)) return false;
  }
  bytes[size] = '\0';
  return mayEnd || text[size - 1] == '\\';
}

}  // namespace

bool mapPathByLevels(wchar const* text, std::size_t size, NativePath& path) {
  path.resize(0);
  ulong32 const error = PathMapper(text, size, path).run();
  return error == kNoError || failWith(error);
}

bool mapPath(wchar const* text, std::size_t size, NativePath& path) {
  return mapPlainPath(text, size, path) || mapPathByLevels(text, size, path);
}

bool mapPath(wchar const* text, NativePath& path) {
  return mapPath(text, static_cast<std::size_t>(strings::kernels().length(text)), path);
}

Root rootOf(char const* path) {
  Root const native = {Root::Kind::kNative, 0};
  NativePath drives;
  if (strchr(path, ':') == nullptr && strstr(path, "/unc/") == nullptr) return native;
  if (!appendDrivesFolder(drives) || strncmp(path, drives.data(), drives.size()) != 0) return native;
  char const* const below = path + drives.size();
  bool const isShare = strncmp(below, "/unc/", 5) == 0;
  char const* end = below;
  for (int levels = isShare ? 3 : 1; levels > 0 && *end == '/'; --levels) end += 1 + strcspn(end + 1, "/");
  bool const isDrive = !isShare && end - below == 3 && end[-1] == ':';
  if (!isShare && !isDrive) return native;
  return {isShare ? Root::Kind::kShare : Root::Kind::kDrive, static_cast<std::size_t>(end - path)};
}

wstring textOfPath(wchar const* prefix, char const* bytes, std::size_t size) {
  wstring text = prefix;
  std::size_t used = text.size();
  text.resize(used + size);
  for (std::size_t i = 0; i < size;) {
    if (bytes[i] == '/') {
      text[used++] = '\\';
      ++i;
      continue;
    }
    auto const* const slash = static_cast<char const*>(memchr(bytes + i, '/', size - i));
    std::size_t const end = slash == nullptr ? size : static_cast<std::size_t>(slash - bytes);
    used += nameFromNative(bytes + i, end - i, &text[used]);
    i = end;
  }
  text.resize(used);
  return text;
}

bool nativeCurrentDirectory(NativePath& path) {
  path.resize(512);
  while (getcwd(path.data(), path.size()) == nullptr) {
    if (errno != ERANGE) return false;
    path.resize(2 * path.size());
  }
  path.resize(strlen(path.data()) + 1);
  return path[0] == '/';  // not "(unreachable)/..."
}

bool nativeDirectoryOfDrive(char letter, NativePath& below) {
  below.resize(0);
  NativePath link;
  if (!appendDriveRoot(letter, link)) return false;
  link.push('\0');
  std::unique_ptr<char, void (*)(void*)> const root(realpath(link.data(), nullptr), &free);
  if (root == nullptr) return false;
  NativePath folder;
  if (!nativeCurrentDirectory(folder)) return true;
  std::size_t const size = strcmp(root.get(), "/") == 0 ? 0 : strlen(root.get());
  bool const isBelow = strncmp(folder.data(), root.get(), size) == 0 && folder[size] == '/' && folder[size + 1] != '\0';
  if (isBelow) appendText(folder.data() + size, below);
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
