// SPDX-License-Identifier: MIT
//
// Escaping and back gives the old text; a refused text is the old one.
#include "fuzzers/fuzz_input.h"

using namespace KV_1_1;

namespace {

// Whether a text holds an escape whose restoring is not exact: \u with ASCII behind it, or digits in lower case.
bool holdsWideEscape(wstring const& text) {
  return text.find(KVW("\\u")) != wstring::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzzing::Input input(data, size);
  bool const unicode = input.byte() & 1;
  wstring const units = input.byte() & 1 ? input.narrowUnits() : input.units();
  String const original = fuzzing::stringOf(units);

  String escaped = original;
  escaped.controlsToEsc(true);
  if (units.find(wchar(0)) == wstring::npos) {
    fuzzing::require(escaped.find(KVW('\n')) < 0, "no line feed is left");
    fuzzing::require(escaped.escToControls(true) == -1, "what was escaped is good");
    fuzzing::require(escaped == original, "escaping and back gives the old text");
  }

  String plain = original;
  plain.controlsToEsc(false);

  String decoded = original;
  int const bad = decoded.escToControls(unicode);
  fuzzing::require(bad >= -1 && bad < std::max(original.length(), 1), "the index lies in the text");
  if (bad >= 0 && !holdsWideEscape(units)) {
    fuzzing::require(wstring(decoded) == wstring(original), "a refused text is put back");
  }
  return 0;
}
