// SPDX-License-Identifier: MIT
#pragma once

#include <cstring>

#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

// Builds a text in one block whose size the caller has measured:
//
//   TextBuilder text(name.length() + 1);
//   text.append(name).append(KVW('\\'));
//   return text.finish();
//
// REQUIRES: no more units are appended than were announced.
class TextBuilder {
 public:
  explicit TextBuilder(int units);
  ~TextBuilder() {
    if (payload_ != nullptr) payload_->unref();
  }
  TextBuilder(TextBuilder const&) = delete;
  TextBuilder& operator=(TextBuilder const&) = delete;

  TextBuilder& append(wchar const* text, int units) {
    if (units > 0) std::memcpy(end_, text, sizeof(wchar) * static_cast<unsigned>(units));
    end_ += units;
    return *this;
  }
  TextBuilder& append(String const& text) { return append(text, text.length()); }
  TextBuilder& append(wchar unit) {
    *end_++ = unit;
    return *this;
  }

  // The text; the builder is used up.
  String finish();

 private:
  StringVal* payload_;
  wchar* end_;  // where the next unit goes
};

}  // namespace KV_1_1
