// SPDX-License-Identifier: MIT
#pragma once

#include <cstring>
#include <utility>

#include "kvbase/internal_assert.h"
#include "kvbase/strings/internal/string_access.h"
#include "kvbase/strings/internal/text_view.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

// Builds a text in one block whose size the caller has measured:
//
//   TextBuilder text(name.length() + 1ll);
//   text.append(viewOf(name)).append(KVW('\\'));
//   return text.finish();
//
// Sizes are added up in 64 bits by the caller, since two lengths can exceed the range of int.
// Failure: std::bad_alloc for more than INT_MAX units and when memory is exhausted.
class TextBuilder {
 public:
  // REQUIRES: not negative.
  explicit TextBuilder(long long units)
      : payload_(StringVal::allocate(units)), next_(payload_->str()), end_(next_ + units) {}
  ~TextBuilder() {
    if (payload_ != nullptr) payload_->unref();
  }
  TextBuilder(TextBuilder const&) = delete;
  TextBuilder& operator=(TextBuilder const&) = delete;

  // REQUIRES (all three): no more units are appended than were announced.
  TextBuilder& append(TextView text) {
    wchar* const place = extend(lengthOf(text));
    if (!text.empty()) std::memcpy(place, text.data(), text.size() * sizeof(wchar));
    return *this;
  }
  TextBuilder& append(wchar unit) {
    *extend(1) = unit;
    return *this;
  }
  // The place of further units, which the caller writes.
  wchar* extend(int units) {
    KVBASE_ASSERT(units >= 0 && units <= end_ - next_);
    wchar* const place = next_;
    next_ += units;
    return place;
  }

  // The text; the builder is used up.
  String finish() {
    *next_ = 0;
    payload_->length_ = static_cast<int>(next_ - payload_->str());
    return StringAccess::adopt(std::exchange(payload_, nullptr));
  }

 private:
  StringVal* payload_;
  wchar* next_;
  wchar const* end_;  // of the announced units
};

}  // namespace KV_1_1
