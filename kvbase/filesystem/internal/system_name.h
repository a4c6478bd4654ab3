// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/strings/kv_string.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

class Directory;
class File;

// What getFullNameUnicode gives, for one call of the system: a name of ordinary length takes no block. A derived class that
// gives another name is asked for it.
//
// It takes room on the stack, so it is for functions that are not inlined where trees are walked.
class SystemName {
 public:
  explicit SystemName(Directory const& directory);
  explicit SystemName(File const& file);
  SystemName(SystemName const&) = delete;
  SystemName& operator=(SystemName const&) = delete;

  operator wchar const*() const { return text_; }

 private:
  static constexpr int kOrdinary = 259;
  class Builder;

  void build(Directory const& directory, String const& baseName, String const& extension);

  wchar const* text_;
  String block_;
  wchar units_[kOrdinary + 1];
};

}  // namespace KV_1_1
