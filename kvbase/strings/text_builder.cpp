// SPDX-License-Identifier: MIT
#include "kvbase/strings/internal/text_builder.h"

#include <utility>

namespace KV_1_1 {

TextBuilder::TextBuilder(int units) : payload_(StringVal::construct(StringVal::allocate(units), KVW(""), 0, units)) {}

String TextBuilder::finish() {
  payload_->str()[payload_->length_] = 0;
  return String::adopt(std::exchange(payload_, nullptr));
}

}  // namespace KV_1_1
