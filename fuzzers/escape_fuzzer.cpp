// SPDX-License-Identifier: MIT
//
// Escaping and back gives the old text; a refused text is the old one.
#include "fuzzers/fuzz_input.h"

using namespace KV_1_1;

namespace {

// Whether what is decoded of a text escapes back to what it was: without \u, and without units that stand there as they
// are but would be escaped.
bool isRestoredExactly(wstring const& text) {
  auto const wouldChange = [](wchar unit) {
    return unit == 0 || unit == KVW('\n') || unit == KVW('\r') || unit == KVW('"') || unit == KVW('u') || unit >= 0x80;
  };
  return std::none_of(text.begin(), text.end(), wouldChange);
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
  if (bad >= 0 && isRestoredExactly(units)) {
    fuzzing::require(wstring(decoded) == wstring(original), "a refused text is put back");
  }
  return 0;
}
