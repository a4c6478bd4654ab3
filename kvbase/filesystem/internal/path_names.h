// SPDX-License-Identifier: MIT
//
// The rules for names, and names in paths. Texts are read by their length, so an inner NUL makes a name invalid like any
// control character.
#pragma once

#include <array>
#include <cstddef>

#include "kvbase/strings/internal/text_view.h"
#include "kvbase/strings/kv_string.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

// What a code unit is in a name. Those beyond ASCII have no class.
enum NameClass : unsigned int {
  kReserved = 1,  // in no name and no pattern
  kWildcard = 2,  // in patterns only
  kBadAtEnd = 4,  // not at the end of a name or pattern
  kSeparator = 8,
};

constexpr std::array<unsigned char, 128> makeNameClasses() {
  std::array<unsigned char, 128> classes{};
  for (std::size_t unit = 0; unit < 0x20; ++unit) classes[unit] = kReserved;
  for (wchar const unit : TextView(KVW("<>:\"|"))) classes[unit] = kReserved;
  for (wchar const unit : TextView(KVW("\\/"))) classes[unit] = kReserved | kSeparator;
  for (wchar const unit : TextView(KVW("*?"))) classes[unit] = kWildcard;
  for (wchar const unit : TextView(KVW(" ."))) classes[unit] = kBadAtEnd;
  return classes;
}
inline constexpr std::array<unsigned char, 128> kNameClasses = makeNameClasses();

constexpr unsigned int nameClassesOf(wchar unit) {
  return unit < kNameClasses.size() ? kNameClasses[unit] : 0u;
}

// 1 for ".", 2 for "..", 0 for any other text.
constexpr int dotsIn(TextView text) {
  std::size_t const size = text.size();
  if (size == 0 || size > 2 || text[0] != KVW('.') || text[size - 1] != KVW('.')) return 0;
  return static_cast<int>(size);
}

// The rule for one level: not empty, no code unit below 0x20, none of *?<>:"\/|, and no blank or dot at the end; but
// "." and ".." are valid. NIL is invalid.
bool isValidItemName(String const& name);
// The rule for the name of a file: "." and ".." are not valid.
bool isValidFileName(TextView name);
// The rule for the pattern of a search: as for a file, with * and ? allowed. NIL is invalid.
bool isValidSearchPattern(String const& pattern);

// The last of some levels, without the separator that stands behind each of them.
// REQUIRES: there is one.
constexpr TextView lastLevelOf(TextView levels) {
  levels.remove_suffix(1);
  return levels.substr(levels.rfind(KVW('\\')) + 1);  // not found is -1
}
// A path with one more level, and a separator behind it.
String withLevel(TextView path, TextView level);

}  // namespace KV_1_1
