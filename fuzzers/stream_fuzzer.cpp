// SPDX-License-Identifier: MIT
//
// Tokens from a narrow stream, to its end, and texts written to one.
#include <iomanip>
#include <sstream>

#include "fuzzers/fuzz_input.h"

using namespace KV_1_1;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzzing::Input input(data, size);
  bool const skips = input.byte() & 1;
  int const width = input.below(40);
  std::istringstream in(input.bytes());
  if (!skips) in >> std::noskipws;
  std::ios_base::fmtflags const flags = in.flags();
  std::size_t tokens = 0;
  while (in.good() && tokens <= size) {
    String token(KVW("old"));
    in >> token;
    ++tokens;
    fuzzing::require(in.flags() == flags, "the flags of a stream stay");
    std::ostringstream out;
    out << std::setw(width) << token;
    bool const isText = token.length() > 0;
    fuzzing::require(isText == (out.width() == 0 && !out.str().empty()) || width == 0, "only a text uses the width");
  }
  fuzzing::require(tokens <= size + 1, "every token takes something from the stream");
  return 0;
}
