// SPDX-License-Identifier: MIT
#include "kvbase/strings/internal/text_builder.h"

#include <utility>

namespace KV_1_1 {

TextBuilder::TextBuilder(int units)
    : payload_(StringVal::construct(StringVal::allocate(units), KVW(""), 0, units)), end_(payload_->str()) {}

String TextBuilder::finish() {
  *end_ = 0;
  payload_->length_ = static_cast<int>(end_ - payload_->str());
  return String::adopt(std::exchange(payload_, nullptr));
}

}  // namespace KV_1_1
