// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/directory_snapshot.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/errors/last_error.h"
#include "kvbase/platform/linux/files/descriptor.h"
#include "kvbase/platform/linux/files/directory_entries.h"
#include "kvbase/platform/linux/files/item_status.h"
#include "kvbase/platform/linux/files/name_mapping.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr std::size_t kNameCapacity = sizeof(FindData::name) / sizeof(wchar);

// The kind of an entry, queried from the disk only if the directory does not record it.
unsigned char typeOf(int directory, char const* name, unsigned char recorded) {
  if (recorded != DT_UNKNOWN) return recorded;
  struct stat status;
  if (fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return DT_REG;
  return static_cast<unsigned char>(IFTODT(status.st_mode));
}

ulong32 attributesOfEntry(unsigned char type, bool isHidden) {
  ulong32 const kind = type == DT_DIR ? kAttributeDirectory : type == DT_LNK ? kAttributeReparsePoint : 0;
  ulong32 const attributes = kind | (isHidden ? kAttributeHidden : 0);
  return attributes != 0 ? attributes : kAttributeNormal;
}

// The first four units in upper case as one number, for fast comparison.
std::uint64_t keyOf(wchar const* name, std::size_t size) {
  std::uint64_t key = 0;
  for (std::size_t i = 0; i < 4; ++i) key = (key << 16) | (i < size ? upperCased(name[i]) : 0u);
  return key;
}

// The number of leading units that two names share in upper case, at most `most`.
std::size_t commonSize(wchar const* a, wchar const* b, std::size_t most) {
  std::size_t n = 0;
  while (n < most && (a[n] == b[n] || upperCased(a[n]) == upperCased(b[n]))) ++n;
  return n;
}

}  // namespace

bool DirectorySnapshot::read(char const* path, Wildcard const& wildcard) {
  Descriptor const directory(open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // The folder of a search is a part of a path, so a missing one is a missing path.
  if (!directory) return errno == ENOENT ? failWith(kPathNotFound) : failAt(path, errno);
  if (!readAll(directory.get(), wildcard)) return failAt(path, errno);
  sort();
  return true;
}

bool DirectorySnapshot::readAll(int directory, Wildcard const& wildcard) {
  entries_.reserve(64);
  return visitEntries<32768>(directory, [&](dirent64 const& entry) {
    add(directory, entry.d_name, entry.d_type, wildcard);
    return true;
  });
}

void DirectorySnapshot::add(int directory, char const* name, unsigned char type, Wildcard const& wildcard) {
  std::size_t const bytes = strlen(name);
  if (names_.size() - namesUsed_ < bytes) names_.resize(std::max<std::size_t>(2 * names_.size(), 2048 + bytes));
  wchar* const units = names_.data() + namesUsed_;
  std::size_t const size = nameFromNative(name, bytes, units);
  // COMPAT: a name that does not fit into FindData is left out, for Windows has none. Only foreign file systems do.
  if (size >= kNameCapacity || !wildcard.matches(units, size)) return;
  bool const isHidden = units[0] == '.' && !isDots(units, size);
  ulong32 const attributes = attributesOfEntry(typeOf(directory, name, type), isHidden);
  entries_.push_back({0, static_cast<std::uint32_t>(namesUsed_), static_cast<std::uint16_t>(size),
                      static_cast<std::uint16_t>(attributes)});
  namesUsed_ += size;
}

void DirectorySnapshot::sort() {
  auto const nameOf = [this](Entry const& entry) { return names_.data() + entry.name; };
  auto const first = std::partition(entries_.begin(), entries_.end(),
                                    [&](Entry const& entry) { return isDots(nameOf(entry), entry.size); });
  std::sort(entries_.begin(), first, [](Entry const& a, Entry const& b) { return a.size < b.size; });
  if (first == entries_.end()) return;

  // Files of one directory often have similar names, so the keys begin behind the prefix that all names share.
  std::size_t common = first->size;
  for (auto entry = first; entry != entries_.end(); ++entry) {
    common = commonSize(nameOf(*first), nameOf(*entry), std::min<std::size_t>(common, entry->size));
  }
  for (auto entry = first; entry != entries_.end(); ++entry) {
    entry->key = keyOf(nameOf(*entry) + common, entry->size - common);
  }
  std::sort(first, entries_.end(),
            [this](Entry const& a, Entry const& b) { return a.key != b.key ? a.key < b.key : isBefore(a, b); });
}

bool DirectorySnapshot::isBefore(Entry const& a, Entry const& b) const {
  wchar const* const left = names_.data() + a.name;
  wchar const* const right = names_.data() + b.name;
  std::size_t const shorter = std::min(a.size, b.size);
  std::size_t const common = commonSize(left, right, shorter);
  if (common < shorter) return upperCased(left[common]) < upperCased(right[common]);
  if (a.size != b.size) return a.size < b.size;
  return std::lexicographical_compare(left, left + a.size, right, right + b.size);
}

bool DirectorySnapshot::next(FindData& data) {
  if (next_ == entries_.size()) return failWith(kNoMoreFiles);
  Entry const& entry = entries_[next_++];
  data.attributes = entry.attributes;
  memcpy(data.name, names_.data() + entry.name, entry.size * sizeof(wchar));
  data.name[entry.size] = 0;
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
