// SPDX-License-Identifier: MIT
//
// Windows images with any resources, well or badly made. The bytes can be changed afterwards at the places that the
// object knows.
//
//   PeImage image;
//   image.add(KVW("METADATA"), KVW("RESOURCE.H"), 1031, "#define A 1\r\n");
//   image.add(6, 7, 1033, stringBlock({{2, KVW("Hello")}}));
//   std::string bytes = image.build();
//   put32(bytes, image.recordAt(0) + 4, 0xFFFFFFFF);                     // the size of the first resource
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace testing {

inline void put16(std::string& bytes, std::size_t at, std::size_t value) {
  bytes[at] = static_cast<char>(value);
  bytes[at + 1] = static_cast<char>(value >> 8);
}
inline void put32(std::string& bytes, std::size_t at, std::size_t value) {
  put16(bytes, at, value & 0xFFFF);
  put16(bytes, at + 2, value >> 16);
}
inline std::uint32_t get32(std::string const& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 4; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}
inline std::string bytesOf(wstring const& text) {
  std::string bytes(2 * text.size(), '\0');
  for (std::size_t i = 0; i < text.size(); ++i) put16(bytes, 2 * i, text[i]);
  return bytes;
}

// A block of a string table; the keys are the places in it, 0 to 15.
inline std::string stringBlock(std::map<int, wstring> const& entries) {
  std::string block;
  for (int i = 0; i < 16; ++i) {
    auto const entry = entries.find(i);
    wstring const text = entry == entries.end() ? wstring() : entry->second;
    block += bytesOf(wstring(1, static_cast<wchar>(text.size())) + text);
  }
  return block;
}

class PeImage {
 public:
  // A type, a name or a language: a number or a text.
  struct Key {
    Key(int value) : number(static_cast<std::uint32_t>(value)) {}
    Key(wchar const* value) : isText(true), text(value) {}
    Key(wstring value) : isText(true), text(std::move(value)) {}
    bool operator<(Key const& other) const {
      if (isText != other.isText) return isText;
      return isText ? text < other.text : number < other.number;
    }
    bool operator==(Key const& other) const { return !(*this < other) && !(other < *this); }

    bool isText = false;
    std::uint32_t number = 0;
    wstring text;
  };

  bool has64Bits = true;
  bool isSorted = true;                   // otherwise keys stand as they were added, but texts before numbers
  std::uint32_t sectionAddress = 0x5000;  // where the resources are in memory; must not be their place in the file
  std::uint32_t otherSections = 2;        // before that of the resources
  std::uint32_t fileAlignment = 0x200;
  std::size_t padding = 0;  // bytes between the headers and the section of the resources

  void add(Key type, Key name, Key language, std::string bytes) {
    resources_.push_back({{std::move(type), std::move(name), std::move(language)}, std::move(bytes)});
  }

  std::string build() {
    std::string const section = buildSection();
    std::size_t const optionalSize = has64Bits ? 240 : 224;
    std::size_t const optional = kStart + 24;
    sectionTable_ = optional + optionalSize;
    std::size_t const headers = sectionTable_ + 40 * (otherSections + 1);
    root_ = (headers + padding + fileAlignment - 1) / fileAlignment * fileAlignment;
    std::string image(root_, '\0');
    image[0] = 'M';
    image[1] = 'Z';
    put32(image, 60, kStart);
    put32(image, kStart, 0x4550);
    put16(image, kStart + 4, has64Bits ? 0x8664 : 0x14C);
    put16(image, kStart + 6, otherSections + 1);
    put16(image, kStart + 20, optionalSize);
    put16(image, optional, has64Bits ? 0x20B : 0x10B);
    tables_ = optional + (has64Bits ? 108 : 92);
    put32(image, tables_, 16);
    put32(image, tables_ + 4 + 16, sectionAddress);
    put32(image, tables_ + 4 + 20, section.size());
    // The other sections lie before that of the resources in memory, and have no bytes in the file.
    for (std::size_t i = 0; i < otherSections; ++i) put32(image, sectionTable_ + 40 * i + 12, 0x1000 + 0x1000 * i);
    std::size_t const header = sectionTable_ + 40 * otherSections;
    image.replace(header, 5, ".rsrc");
    put32(image, header + 8, section.size());
    put32(image, header + 12, sectionAddress);
    put32(image, header + 16, section.size());
    put32(image, header + 20, root_);
    return image + section;
  }

  // Places in the image that was built last.
  static constexpr std::size_t kStart = 128;  // the signature
  std::size_t sectionTable() const { return sectionTable_; }
  std::size_t sectionHeader() const { return sectionTable_ + 40 * otherSections; }  // of the resources
  std::size_t tables() const { return tables_; }                                    // the number of the data tables
  std::size_t root() const { return root_; }
  // Directories in the order root, types, names; entry k of a directory is 16 + 8 * k behind it.
  std::size_t directoryAt(std::size_t index) const { return root_ + directories_.at(index); }
  // The record of a resource, in the order of the entries in the image.
  std::size_t recordAt(std::size_t index) const { return root_ + records_.at(index); }

 private:
  struct Resource {
    Key keys[3];
    std::string bytes;
  };
  using Group = std::vector<Resource const*>;

  // The resources with the same keys down to a level, in the order in which their entries shall stand.
  std::vector<std::pair<Key, Group>> grouped(Group const& resources, int level) const {
    std::vector<std::pair<Key, Group>> groups;
    for (Resource const* resource : resources) {
      Key const& key = resource->keys[level];
      auto const same = [&](std::pair<Key, Group> const& group) { return group.first == key; };
      auto found = std::find_if(groups.begin(), groups.end(), same);
      // Without an order a key that is added twice stands twice at the last level.
      if (found == groups.end() || level == 2) found = groups.insert(groups.end(), {key, {}});
      found->second.push_back(resource);
    }
    auto const isBefore = [this](std::pair<Key, Group> const& a, std::pair<Key, Group> const& b) {
      return isSorted ? a.first < b.first : a.first.isText && !b.first.isText;
    };
    std::stable_sort(groups.begin(), groups.end(), isBefore);
    return groups;
  }

  std::string buildSection() {
    directories_.clear();
    records_.clear();
    struct Pending {
      Group group;
      int level;
      std::size_t entry;  // whose target it is
    };
    std::string out;
    std::vector<std::pair<std::size_t, wstring>> texts;
    std::vector<std::pair<std::size_t, Resource const*>> leaves;
    Group all;
    for (Resource const& resource : resources_) all.push_back(&resource);
    std::vector<Pending> pending = {{all, 0, 0}};
    for (std::size_t i = 0; i < pending.size(); ++i) {
      Pending const current = pending[i];
      std::size_t const at = out.size();
      directories_.push_back(at);
      if (current.level > 0) put32(out, current.entry + 4, 0x80000000 | at);
      auto const groups = grouped(current.group, current.level);
      out.resize(at + 16 + 8 * groups.size());
      std::size_t named = 0;
      for (std::size_t k = 0; k < groups.size(); ++k) {
        Key const& key = groups[k].first;
        std::size_t const entry = at + 16 + 8 * k;
        put32(out, entry, key.number);
        if (key.isText) texts.push_back({entry, key.text});
        named += key.isText ? 1 : 0;
        if (current.level < 2) {
          pending.push_back({groups[k].second, current.level + 1, entry});
        } else {
          leaves.push_back({entry, groups[k].second.front()});
        }
      }
      put16(out, at + 12, named);
      put16(out, at + 14, groups.size() - named);
    }
    for (auto const& text : texts) {
      put32(out, text.first, 0x80000000 | out.size());
      out += bytesOf(wstring(1, static_cast<wchar>(text.second.size())) + text.second);
    }
    out.resize((out.size() + 3) / 4 * 4);
    for (auto const& leaf : leaves) {
      put32(out, leaf.first + 4, out.size());
      records_.push_back(out.size());
      out.resize(out.size() + 16);
    }
    for (std::size_t i = 0; i < leaves.size(); ++i) {
      put32(out, records_[i], sectionAddress + out.size());
      put32(out, records_[i] + 4, leaves[i].second->bytes.size());
      out += leaves[i].second->bytes;
      out.resize((out.size() + 3) / 4 * 4);
    }
    return out;
  }

  std::vector<Resource> resources_;
  std::vector<std::size_t> directories_, records_;
  std::size_t sectionTable_ = 0, tables_ = 0, root_ = 0;
};

}  // namespace testing
}  // namespace KV_1_1
