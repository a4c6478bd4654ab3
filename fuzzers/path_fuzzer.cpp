// SPDX-License-Identifier: MIT
//
// Two paths from any texts: all their texts, what is made from both, and what must come out the same.
#include "fuzzers/fuzz_input.h"

using namespace KV_1_1;

namespace {

void readTexts(FileSystemItem const& item) {
  item.getFullNameUnicode();
  item.getFullNameUnix();
  item.getName();
}

void requireSame(SmartPtr<Directory const> const& path, SmartPtr<Directory const> const& again) {
  fuzzing::require(again != nullptr, "a path's text is a path");
  fuzzing::require(again->getFullName() == path->getFullName(), "reading a path's text gives the same text");
}

void checkPair(SmartPtr<Directory const> const& a, SmartPtr<Directory const> const& b) {
  readTexts(*a);
  requireSame(a, Directory::fromString(a->getFullName()));
  fuzzing::require(a->contains(*a), "a path contains itself");
  fuzzing::require(a->equals(a) == FileSystemItem::Equal, "a path equals itself");
  a->equals(b);
  a->contains(*b);
  if (SmartPtr<Directory const> const joined = a->appendPath(*b)) {
    fuzzing::require(!b->isAbsolute(), "only relative paths are appended");
    fuzzing::require(joined->getFullName() == a->combine(b)->getFullName(),
                     "what can be appended combines to the same");
  }
  readTexts(*a->combine(b));
  if (SmartPtr<Directory const> const way = a->makeRelative(b)) readTexts(*way);
  if (SmartPtr<Directory const> const parent = a->getParent()) readTexts(*parent);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzzing::Input input(data, size);
  std::size_t const firstSize = input.byte();
  String const first = fuzzing::stringOf(input.narrowUnits(firstSize));
  String const second = fuzzing::stringOf(input.narrowUnits());

  SmartPtr<Directory const> const a = Directory::fromString(first);
  SmartPtr<Directory const> const b = Directory::fromString(second);
  if (a != nullptr && b != nullptr) {
    checkPair(a, b);
    checkPair(b, a);
  }
  if (a != nullptr) a->appendLevel(second);
  if (SmartPtr<File const> const file = File::fromString(second)) {
    readTexts(*file);
    SmartPtr<File const> const again = File::fromString(file->getFullName());
    fuzzing::require(again != nullptr && again->getFullName() == file->getFullName(), "a file's text is that file");
    file->replaceExtension(first);
    if (a != nullptr) file->makeRelative(a);
    if (a != nullptr) a->combine(file);
  }
  return 0;
}
