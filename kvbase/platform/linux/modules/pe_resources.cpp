// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/pe_resources.h"

#include <algorithm>

#include "kvbase/platform/linux/files/wildcard.h"
#include "kvbase/platform/module_api.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr std::uint32_t kDosHeaderSize = 64;
constexpr std::uint32_t kFileHeaderSize = 4 + 20;  // with the signature before it
constexpr std::uint16_t kOptionalHeader32 = 0x10B;
constexpr std::uint16_t kOptionalHeader64 = 0x20B;
constexpr std::uint32_t kResourceTable = 2;
constexpr std::uint32_t kSectionHeaderSize = 40;
constexpr std::uint32_t kDirectorySize = 16;
constexpr std::uint32_t kEntrySize = 8;
constexpr std::uint32_t kRecordSize = 16;

template <class Number>
int threeWay(Number a, Number b) {
  return a < b ? -1 : a > b ? 1 : 0;
}

// A text of the resource section, read piece by piece: its number of units, then the units.
class StoredText {
 public:
  StoredText(ByteRange const& directories, std::uint32_t offset) : directories_(directories), next_(offset) {
    unsigned char const* const size = directories_.at(next_, 2);
    isThere_ = size != nullptr;
    if (!isThere_) return;
    size_ = load16(size);
    next_ += 2;
    isThere_ = directories_.has(next_, 2 * size_);
  }

  bool isThere() const { return isThere_; }
  std::size_t size() const { return size_; }
  // The bytes of the next `count` units, which stay until anything else is read. Null if they cannot be read.
  unsigned char const* next(std::size_t count) {
    unsigned char const* const bytes = directories_.at(next_, 2 * count);
    next_ += 2 * count;
    return bytes;
  }
  // Stores the next `count` units in upper case. False if they cannot be read.
  bool read(std::size_t count, wchar* units) {
    unsigned char const* const bytes = next(count);
    if (bytes == nullptr) return false;
    for (std::size_t i = 0; i < count; ++i) units[i] = upperCased(static_cast<wchar>(load16(bytes + 2 * i)));
    return true;
  }

 private:
  ByteRange const& directories_;
  std::uint64_t next_;
  std::size_t size_ = 0;
  bool isThere_ = false;
};

constexpr std::size_t kPiece = 64;

}  // namespace

ResourceKey::ResourceKey(wchar const* typeOrName) {
  if (isResourceId(typeOrName)) {
    number_ = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(typeOrName));
    return;
  }
  if (typeOrName[0] == '#') {
    for (wchar const* digit = typeOrName + 1; *digit >= '0' && *digit <= '9' && number_ <= 0xFFFF; ++digit)
      number_ = 10 * number_ + static_cast<std::uint32_t>(*digit - '0');
    return;
  }
  isNumber_ = false;
  std::size_t const size = std::char_traits<wchar>::length(typeOrName);
  text_.resize(size);
  std::transform(typeOrName, typeOrName + size, text_.data(), upperCased);
}

bool PeResources::open(ByteRange const& image) {
  *this = PeResources();
  unsigned char const* const dos = image.at(0, kDosHeaderSize);
  if (dos == nullptr || dos[0] != 'M' || dos[1] != 'Z') return false;
  std::uint64_t const start = load32(dos + 60);
  unsigned char const* const file = image.at(start, kFileHeaderSize);
  if (file == nullptr || load32(file) != 0x4550) return false;
  std::uint32_t const sectionCount = load16(file + 6);
  std::uint64_t const optional = start + kFileHeaderSize;
  std::uint64_t const sections = optional + load16(file + 20);
  unsigned char const* const magic = image.at(optional, 2);
  if (magic == nullptr) return false;
  std::uint16_t const width = load16(magic);
  if (width != kOptionalHeader32 && width != kOptionalHeader64) return false;

  std::uint64_t const tables = optional + (width == kOptionalHeader32 ? 92 : 108);  // their number, then the tables
  unsigned char const* const number = image.at(tables, 4);
  if (number == nullptr) return false;
  image_ = image;
  sections_ = sections;
  sectionCount_ = sectionCount;
  if (load32(number) <= kResourceTable) return true;
  unsigned char const* const table = image.at(tables + 4 + std::uint64_t{8} * kResourceTable, 4);
  if (table == nullptr) return true;
  std::uint32_t const root = load32(table);
  if (root == 0 || !findSection(root, rootSection_)) return true;
  std::uint32_t const inSection = root - rootSection_.address;
  directories_ = image.part(rootSection_.offset + inSection, rootSection_.size - inSection);
  return true;
}

bool PeResources::readSection(std::uint32_t index, Section& section) const {
  unsigned char const* const header =
      image_.at(sections_ + std::uint64_t(index) * kSectionHeaderSize, kSectionHeaderSize);
  if (header == nullptr) return false;
  section.address = load32(header + 12);
  section.size = load32(header + 16);
  section.offset = load32(header + 20);
  if (section.offset > image_.size()) section.size = 0;
  section.size = static_cast<std::uint32_t>(std::min<std::uint64_t>(section.size, image_.size() - section.offset));
  return true;
}

// The section in which the byte at `address` is stored.
bool PeResources::findSection(std::uint32_t address, Section& section) const {
  for (std::uint32_t i = 0; i < sectionCount_ && readSection(i, section); ++i) {
    if (address >= section.address && address - section.address < section.size) return true;
  }
  return false;
}

bool PeResources::readDirectory(std::uint32_t offset, Directory& directory) const {
  unsigned char const* const header = directories_.at(offset, kDirectorySize);
  if (header == nullptr) return false;
  directory = {offset, load16(header + 12), load16(header + 14)};
  // A number of entries that cannot be there is cut, so that no lookup takes longer than the image is large.
  std::uint64_t const room = (directories_.size() - offset - kDirectorySize) / kEntrySize;
  directory.named = static_cast<std::uint32_t>(std::min<std::uint64_t>(directory.named, room));
  directory.numbered = static_cast<std::uint32_t>(std::min<std::uint64_t>(directory.numbered, room - directory.named));
  return true;
}

bool PeResources::readEntry(Directory const& directory, std::uint32_t index, Entry& entry) const {
  std::uint64_t const offset = std::uint64_t(directory.offset) + kDirectorySize + std::uint64_t(index) * kEntrySize;
  unsigned char const* const bytes = directories_.at(offset, kEntrySize);
  if (bytes == nullptr) return false;
  entry = {load32(bytes), load32(bytes + 4)};
  return true;
}

bool PeResources::compareText(ResourceKey const& key, std::uint32_t offset, int& order) const {
  StoredText text(directories_, offset);
  if (!text.isThere()) return false;
  std::size_t const common = std::min(key.size(), text.size());
  for (std::size_t i = 0; i < common; i += kPiece) {
    std::size_t const count = std::min(kPiece, common - i);
    unsigned char const* const bytes = text.next(count);
    if (bytes == nullptr) return false;
    for (std::size_t k = 0; k < count; ++k) {
      order = threeWay(key.text()[i + k], upperCased(static_cast<wchar>(load16(bytes + 2 * k))));
      if (order != 0) return true;
    }
  }
  order = threeWay(key.size(), text.size());
  return true;
}

bool PeResources::compareTexts(std::uint32_t offset, std::uint32_t other, int& order) const {
  StoredText text(directories_, offset), otherText(directories_, other);
  if (!text.isThere() || !otherText.isThere()) return false;
  std::size_t const common = std::min(text.size(), otherText.size());
  wchar units[kPiece], otherUnits[kPiece];
  for (std::size_t i = 0; i < common; i += kPiece) {
    std::size_t const count = std::min(kPiece, common - i);
    if (!text.read(count, units) || !otherText.read(count, otherUnits)) return false;
    order = std::char_traits<wchar>::compare(units, otherUnits, count);
    if (order != 0) return true;
  }
  order = threeWay(text.size(), otherText.size());
  return true;
}

// Texts come before numbers.
bool PeResources::compare(ResourceKey const& key, Entry const& entry, int& order) const {
  bool const isText = (entry.key & kHighBit) != 0;
  if (key.isNumber() == isText) {
    order = isText ? 1 : -1;
    return true;
  }
  if (isText) return compareText(key, entry.key & ~kHighBit, order);
  order = threeWay<std::uint32_t>(key.number(), entry.key);
  return true;
}

bool PeResources::isBefore(Entry const& entry, Entry const& next) const {
  bool const isText = (entry.key & kHighBit) != 0;
  bool const nextIsText = (next.key & kHighBit) != 0;
  if (isText != nextIsText) return isText;
  int order = 0;
  if (isText) return compareTexts(entry.key & ~kHighBit, next.key & ~kHighBit, order) && order < 0;
  return entry.key < next.key;
}

std::uint32_t PeResources::findByHalving(Directory const& directory, ResourceKey const& key) const {
  std::uint32_t first = key.isNumber() ? directory.named : 0;
  std::uint32_t end = key.isNumber() ? directory.named + directory.numbered : directory.named;
  while (first < end) {
    std::uint32_t const middle = first + (end - first) / 2;
    Entry entry;
    int order = 0;
    if (!readEntry(directory, middle, entry) || !compare(key, entry, order)) return kNotFound;
    if (order == 0) return entry.target;
    if (order < 0) {
      end = middle;
    } else {
      first = middle + 1;
    }
  }
  return kNotFound;
}

std::uint32_t PeResources::findOneByOne(Directory const& directory, ResourceKey const& key, bool& ascends) const {
  Entry previous = {};
  ascends = true;
  for (std::uint32_t i = 0; i < directory.named + directory.numbered; ++i) {
    Entry entry;
    if (!readEntry(directory, i, entry)) break;
    int order = 0;
    bool const isReadable = compare(key, entry, order);
    if (isReadable && order == 0) {
      ascends = false;
      return entry.target;
    }
    ascends = ascends && isReadable && (i == 0 || isBefore(previous, entry)) &&
              ((entry.key & kHighBit) != 0) == (i < directory.named);
    previous = entry;
  }
  return kNotFound;
}

// The format asks for ascending keys, but not every maker complies. What halving does not find is searched one by one;
// that is done once in a directory whose keys do ascend.
std::uint32_t PeResources::find(Directory const& directory, ResourceKey const& key) {
  std::uint32_t const target = findByHalving(directory, key);
  if (target != kNotFound) return target;
  Order& order = orders_[directory.offset / kDirectorySize % (sizeof orders_ / sizeof *orders_)];
  if (order.directory == directory.offset + 1 && order.ascends) return kNotFound;
  bool ascends = false;
  std::uint32_t const found = findOneByOne(directory, key, ascends);
  order = {directory.offset + 1, ascends};
  return found;
}

bool PeResources::findDirectory(Directory const& in, ResourceKey const& key, Directory& found) {
  std::uint32_t const target = find(in, key);
  return target != kNotFound && (target & kHighBit) != 0 && readDirectory(target & ~kHighBit, found);
}

bool PeResources::findVersions(ResourceKey const& type, ResourceKey const& name, Directory& versions) {
  Directory root, names;
  return !type.namesNothing() && !name.namesNothing() && readDirectory(0, root) && findDirectory(root, type, names) &&
         findDirectory(names, name, versions);
}

PeResources::Version PeResources::findVersion(Directory const& versions, std::uint16_t language) {
  std::uint32_t const target = find(versions, ResourceKey(resourceId(language)));
  return target == kNotFound ? 0 : versionAt(target);
}

PeResources::Version PeResources::firstVersion(Directory const& versions) const {
  Entry entry;
  return versions.named + versions.numbered > 0 && readEntry(versions, 0, entry) ? versionAt(entry.target) : 0;
}

void PeResources::addLanguages(Directory const& versions, std::set<unsigned short>& languages) const {
  Entry entry;
  for (std::uint32_t i = 0; i < versions.named + versions.numbered && readEntry(versions, i, entry); ++i) {
    if (entry.key <= 0xFFFF) languages.insert(static_cast<unsigned short>(entry.key));
  }
}

PeResources::Version PeResources::versionAt(std::uint32_t target) const {
  if ((target & kHighBit) != 0 || !directories_.has(target, kRecordSize)) return 0;
  Version const version = rootSection_.offset + (rootSection_.size - directories_.size()) + target;
  ByteRange bytes;
  return bytesOf(version, bytes) ? version : 0;
}

bool PeResources::bytesOf(Version version, ByteRange& bytes) const {
  unsigned char const* const record = image_.at(version, kRecordSize);
  if (record == nullptr) return false;
  std::uint32_t const address = load32(record);
  std::uint32_t const size = load32(record + 4);
  if (size == 0) {
    bytes = image_.part(version, 0);
    return true;
  }
  Section section = rootSection_;
  bool const isBesideDirectories = address >= section.address && address - section.address < section.size;
  if (!isBesideDirectories && !findSection(address, section)) return false;
  std::uint32_t const inSection = address - section.address;
  if (size > section.size - inSection) return false;
  bytes = image_.part(std::uint64_t(section.offset) + inSection, size);
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
