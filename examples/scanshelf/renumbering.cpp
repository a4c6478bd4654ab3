// SPDX-License-Identifier: MIT
#include "renumbering.h"

namespace scanshelf {

using KV_1_1::File;
using KV_1_1::String;

namespace {

// Larger numbers, dates with a time for instance, are read as this one, and its successor is negative.
constexpr unsigned kLargestIndex = 2147483647;

}  // namespace

String steppedName(File const& file) {
  String name = file.getBaseName();
  if (name.getIndex() == kLargestIndex) return String::NIL;
  name.incrementIndex();
  String const extension = file.getExtension();
  return extension.length() > 0 ? name + KVW(".") + extension : name;
}

}  // namespace scanshelf
