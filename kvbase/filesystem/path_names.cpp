// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/internal/path_names.h"

#include "kvbase/strings/internal/text_builder.h"

namespace KV_1_1 {

namespace {

// Whether the text is not empty, holds nothing of these classes and ends as a name may.
bool isFreeOf(unsigned int classes, TextView text) {
  if (text.empty() || (nameClassesOf(text.back()) & kBadAtEnd) != 0) return false;
  for (wchar const unit : text) {
    if ((nameClassesOf(unit) & classes) != 0) return false;
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

String withLevel(TextView path, TextView level) {
  TextBuilder text(static_cast<long long>(path.size() + level.size()) + 1);
  return text.append(path).append(level).append(KVW('\\')).finish();
}

}  // namespace KV_1_1
