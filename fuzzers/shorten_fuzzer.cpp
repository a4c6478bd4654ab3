// SPDX-License-Identifier: MIT
//
// Any text with any limit and head: the result fits if the front and the dots do.
#include "fuzzers/fuzz_input.h"

using namespace KV_1_1;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzzing::Input input(data, size);
  bool const wide = input.byte() & 1;
  int limit = input.integer();
  int head = input.integer();
  if (wide) {
    limit %= 128;
    head %= 128;
  }
  String const text = fuzzing::stringOf(input.narrowUnits());
  String const result = text.shortenString(limit, head);
  if (text.length() <= limit) {
    fuzzing::require(result.length() == text.length(), "a text that fits stays");
  } else {
    int const front = head < 0 ? text.length() : std::min(head, text.length());
    fuzzing::require(result.length() <= std::max(limit, front + 3), "the result fits, or is front and dots");
    fuzzing::require(result.find(KVW("..."), 0) >= 0 || text.find(KVW('\0'), 0) < text.length(), "there are dots");
  }
  return 0;
}
