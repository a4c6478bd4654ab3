// SPDX-License-Identifier: MIT
//
// What a file's path requires, bare: one scan of the text that checks and resolves its levels, a counted object for the
// directory and one for the file, and a text for the directory, for the base name and for the extension.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include "benchmarks/texts.h"
#include "kvbase/kvbase.h"

namespace KV_1_1 {
namespace bench {

constexpr unsigned char kInName = 0, kNotAtEnd = 1, kBetweenLevels = 2, kInNoName = 3;

constexpr std::array<unsigned char, 128> makeBareUnits() {
  std::array<unsigned char, 128> units{};
  for (std::size_t i = 0; i < 0x20; ++i) units[i] = kInNoName;
  for (char const unit : std::string_view("<>:\"|*?")) units[static_cast<std::size_t>(unit)] = kInNoName;
  for (char const unit : std::string_view("\\/")) units[static_cast<std::size_t>(unit)] = kBetweenLevels;
  for (char const unit : std::string_view(" .")) units[static_cast<std::size_t>(unit)] = kNotAtEnd;
  return units;
}
inline constexpr std::array<unsigned char, 128> kBareUnits = makeBareUnits();

inline unsigned char bareUnit(wchar unit) {
  return unit < kBareUnits.size() ? kBareUnits[unit] : kInName;
}

class BareDirectory final : public BaseNode {
 public:
  BareDirectory(bool absolute, int rootUnits, BareText path)
      : absolute_(absolute), rootUnits_(rootUnits), path_(std::move(path)) {}
  BareText const& path() const { return path_; }

 private:
  bool absolute_;
  int rootUnits_;
  BareText path_;
};

class BareFile final : public BaseNode {
 public:
  BareFile(SmartPtr<BareDirectory const> directory, BareText baseName, BareText extension)
      : baseName_(std::move(baseName)), directory_(std::move(directory)), extension_(std::move(extension)) {}

  // Null for an invalid path. Shares, prefixes and names without extension are left out.
  static SmartPtr<BareFile const> parse(u16string const& text);

  BareText fullName() const {
    BareText const& path = directory_->path();
    BareText text(path.size() + baseName_.size() + 1 + extension_.size());
    wchar* end = std::copy_n(path.text(), path.size(), text.text());
    end = std::copy_n(baseName_.text(), baseName_.size(), end);
    *end++ = '.';
    text.finish(std::copy_n(extension_.text(), extension_.size(), end));
    return text;
  }

 private:
  BareText baseName_;
  SmartPtr<BareDirectory const> directory_;
  BareText extension_;
};

// Where the levels end when "." or ".." has been resolved; null for ".." beyond the first level.
inline wchar* resolvedBare(wchar* levels, wchar* dots, wchar* end) {
  if (end - dots == 1) return dots;
  if (dots == levels) return nullptr;
  do --dots;
  while (dots != levels && dots[-1] != '\\');
  return dots;
}

// Copies the units from `from` on, which end in a NUL, and resolves and ends the levels among them. Where the name begins
// behind them, and `end`, where that ends; null for an invalid level.
inline wchar* copyBareLevels(wchar const* from, bool absolute, wchar*& end) {
  wchar* const levels = end;
  for (;; ++from) {
    wchar* const level = end;
    while (bareUnit(*from) <= kNotAtEnd) *end++ = *from++;
    if (*from == 0) return level;
    if (bareUnit(*from) == kInNoName) return nullptr;
    if (end == level) continue;
    bool const isDots = bareUnit(end[-1]) == kNotAtEnd;
    if (isDots && (end - level > 2 || *level != '.' || end[-1] != '.')) return nullptr;
    if (isDots && absolute) {
      end = resolvedBare(levels, level, end);
      if (end == nullptr) return nullptr;
    } else {
      *end++ = '\\';
    }
  }
}

inline SmartPtr<BareFile const> BareFile::parse(u16string const& text) {
  BareText path(text.size() + 1);
  wchar const* from = text.c_str();
  wchar* end = path.text();
  bool const hasDrive = from[0] != 0 && from[1] == ':';
  if (hasDrive) {
    wchar const letter = from[0] & ~0x20;
    if (letter < 'A' || letter > 'Z') return nullptr;
    *end++ = letter;
    *end++ = ':';
    from += 2;
  }
  bool const absolute = bareUnit(*from) == kBetweenLevels;
  if (absolute) *end++ = '\\';
  wchar* const name = copyBareLevels(from, absolute, end);
  if (name == nullptr || name == end || bareUnit(end[-1]) == kNotAtEnd) return nullptr;

  wchar const* dot = end;
  while (dot != name && *--dot != '.') {
  }
  if (dot == name) return nullptr;
  BareText baseName(name, static_cast<std::size_t>(dot - name));
  BareText extension(dot + 1, static_cast<std::size_t>(end - dot) - 1);
  path.finish(name);
  SmartPtr<BareDirectory const> directory(new BareDirectory(absolute, hasDrive ? 2 : 0, std::move(path)));
  return new BareFile(std::move(directory), std::move(baseName), std::move(extension));
}

}  // namespace bench
}  // namespace KV_1_1
