// SPDX-License-Identifier: MIT
//
// The resources of a Windows image: a program or library of 32 or 64 bits as it is stored in a file, of any maker. The
// image is outside input: whatever is wrong with it, its resources are not found. Nothing is copied; a lookup reads the
// directories on the way to the resource and nothing else.
//
// Resources have a type, a name and a language, in directories one within the other. Each is a number or a text. Texts
// compare without regard to case. A language that is a text belongs to no language id.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>

#include "kvbase/platform/linux/modules/byte_range.h"
#include "kvbase/platform/linux/small_buffer.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// A type or a name as callers give it: a number in the place of a pointer, or a text. "#12" is the number 12.
class ResourceKey {
 public:
  explicit ResourceKey(wchar const* typeOrName);

  // COMPAT: behind # as many decimal digits count as there are ("#12x" is 12, "#x" is 0); a number beyond 16 bits names
  // nothing.
  bool namesNothing() const { return number_ > 0xFFFF; }
  bool isNumber() const { return isNumber_; }
  std::uint16_t number() const { return static_cast<std::uint16_t>(number_); }
  // In upper case.
  wchar const* text() const { return text_.data(); }
  std::size_t size() const { return text_.size(); }

 private:
  bool isNumber_ = true;
  std::uint32_t number_ = 0;
  SmallBuffer<wchar, 48> text_;
};

class PeResources {
 public:
  // A directory of resources.
  struct Directory {
    std::uint32_t offset;  // behind the root
    std::uint32_t named;   // the number of its entries whose key is a text; these come first
    std::uint32_t numbered;
  };
  // A version of a resource: the offset of its record in the image; 0 is none.
  using Version = std::uint64_t;

  constexpr PeResources() = default;

  // Reads the headers. False if these bytes are no such image; there are no resources then.
  bool open(ByteRange const& image);

  // The directory of all versions of a resource. False if it is not there.
  bool findVersions(ResourceKey const& type, ResourceKey const& name, Directory& versions);
  // The version of a language, and the first one in the image; 0 if there is none with bytes in the image.
  Version findVersion(Directory const& versions, std::uint16_t language);
  Version firstVersion(Directory const& versions) const;
  void addLanguages(Directory const& versions, std::set<unsigned short>& languages) const;

  // The bytes of a version, which need not be one that was found here. False if they are not all in the image.
  bool bytesOf(Version version, ByteRange& bytes) const;

 private:
  static constexpr std::uint32_t kNotFound = 0xFFFFFFFF;
  static constexpr std::uint32_t kHighBit = 0x80000000;

  // A section, as far as it is stored in the file.
  struct Section {
    std::uint32_t address, offset, size;
  };
  struct Entry {
    std::uint32_t key;     // with the high bit the offset of a text, otherwise a number
    std::uint32_t target;  // with the high bit a directory, otherwise the record of a version
  };
  // Whether all keys of a directory ascend.
  struct Order {
    std::uint32_t directory;  // its offset plus 1; 0 for none
    bool ascends;
  };

  bool readSection(std::uint32_t index, Section& section) const;
  bool findSection(std::uint32_t address, Section& section) const;
  bool readDirectory(std::uint32_t offset, Directory& directory) const;
  bool readEntry(Directory const& directory, std::uint32_t index, Entry& entry) const;
  bool compareText(ResourceKey const& key, std::uint32_t offset, int& order) const;
  bool compareTexts(std::uint32_t offset, std::uint32_t other, int& order) const;
  bool compare(ResourceKey const& key, Entry const& entry, int& order) const;
  bool isBefore(Entry const& entry, Entry const& next) const;

  std::uint32_t find(Directory const& directory, ResourceKey const& key);
  std::uint32_t findByHalving(Directory const& directory, ResourceKey const& key) const;
  std::uint32_t findOneByOne(Directory const& directory, ResourceKey const& key, bool& ascends) const;
  bool findDirectory(Directory const& in, ResourceKey const& key, Directory& found);
  Version versionAt(std::uint32_t target) const;

  ByteRange image_;
  std::uint64_t sections_ = 0;
  std::uint32_t sectionCount_ = 0;
  Section rootSection_ = {};
  ByteRange directories_;  // from the root to the end of its section
  Order orders_[8] = {};
};

}  // namespace platform
}  // namespace KV_1_1
