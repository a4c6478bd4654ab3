// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/internal/path_names.h"

#include <array>

namespace KV_1_1 {

namespace {

// What a unit may not do. Units beyond ASCII may do everything.
enum NameClass : unsigned char {
  kReserved = 1,  // stands in no name and no pattern
  kWildcard = 2,  // stands in patterns only
  kBadAtEnd = 4,  // ends neither a name nor a pattern
};

constexpr std::array<unsigned char, 128> makeNameClasses() {
  std::array<unsigned char, 128> classes{};
  for (std::size_t unit = 0; unit < 0x20; ++unit) classes[unit] = kReserved;
  for (wchar const unit : TextView(KVW("<>:\"\\/|"))) classes[unit] = kReserved;
  for (wchar const unit : TextView(KVW("*?"))) classes[unit] = kWildcard;
  for (wchar const unit : TextView(KVW(" ."))) classes[unit] = kBadAtEnd;
  return classes;
}
constexpr std::array<unsigned char, 128> kNameClasses = makeNameClasses();

bool hasClass(wchar unit, unsigned int classes) {
  return unit < kNameClasses.size() && (kNameClasses[unit] & classes) != 0;
}

// Whether the text is not empty, holds nothing of these classes and ends as a name may.
bool isFreeOf(unsigned int classes, TextView text) {
  if (text.empty() || hasClass(text.back(), kBadAtEnd)) return false;
  for (wchar const unit : text) {
    if (hasClass(unit, classes)) return false;
  }
  return true;
}

}  // namespace

bool isValidItemName(String const& name) {
  TextView const units = viewOf(name);
  return dotsIn(units) != 0 || isValidFileName(units);
}

bool isValidFileName(TextView name) {
  return isFreeOf(kReserved | kWildcard, name);
}

bool isValidSearchPattern(String const& pattern) {
  return isFreeOf(kReserved, viewOf(pattern));
}

}  // namespace KV_1_1
