// SPDX-License-Identifier: MIT
//
// Formats with conversions in any order, flags, widths and precisions: every argument is there and of the right type,
// for the fuzzer writes the format.
#include "fuzzers/fuzz_input.h"

using namespace KV_1_1;

namespace {

constexpr wchar kFlags[] = {KVW('-'), KVW('+'), KVW(' '), KVW('#'), KVW('0')};

// "%" with flags, width and precision, up to the size prefix.
void appendStart(fuzzing::Input& input, wstring& format) {
  format.push_back(KVW('%'));
  for (std::uint8_t flags = input.byte(), i = 0; i < 5; ++i) {
    if (flags >> i & 1) format.push_back(kFlags[i]);
  }
  String number;
  if (input.byte() & 1) number << input.below(input.byte() & 1 ? 40000 : 40);
  if (input.byte() & 1) number << KVW('.') << input.below(input.byte() & 1 ? 40000 : 20);
  format += static_cast<wchar const*>(number);
}

wstring formatFor(fuzzing::Input& input, wchar const* conversion) {
  wstring format = input.narrowUnits(static_cast<std::size_t>(input.below(8)));
  format.erase(std::remove(format.begin(), format.end(), KVW('%')), format.end());
  appendStart(input, format);
  return format + conversion + KVW("|");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static wchar const* const kIntegers[] = {KVW("d"), KVW("i"), KVW("u"),  KVW("x"),
                                           KVW("X"), KVW("o"), KVW("lu"), KVW("hd")};
  static wchar const* const kLong[] = {KVW("lld"), KVW("I64d"), KVW("llx"), KVW("I64u")};
  static wchar const* const kFloating[] = {KVW("g"), KVW("G"), KVW("e"), KVW("f"), KVW("E")};
  fuzzing::Input input(data, size);
  String text;
  wstring const integer = formatFor(input, kIntegers[input.below(8)]);
  text.printf(integer.c_str(), input.integer());
  wstring const wide = formatFor(input, kLong[input.below(4)]);
  text.printf(wide.c_str(), static_cast<long long>(input.integer()) * input.integer());
  wstring const floating = formatFor(input, kFloating[input.below(5)]);
  double const quotient = static_cast<double>(input.integer()) / input.integer();
  text.printf(floating.c_str(), quotient);
  wstring const inner = formatFor(input, KVW("ls"));
  String const argument = fuzzing::stringOf(input.units(static_cast<std::size_t>(input.below(100))));
  text.printf(inner.c_str(), argument);
  fuzzing::require(text.length() <= 32768, "a formatted text keeps to its limit");
  text.printf(KVW("%ls"), text);
  return 0;
}
