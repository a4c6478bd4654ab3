// SPDX-License-Identifier: MIT
//
// Any sequence of extractions from any text. No extraction makes a text longer, but for the stored length of two forms.
#include "fuzzers/fuzz_input.h"

using namespace KV_1_1;

namespace {

template <class Value>
void extract(String& text) {
  Value value{};
  text >> value;
}

using Extraction = void (*)(String&);
constexpr Extraction kExtractions[] = {
    &extract<signed char>,
    &extract<unsigned char>,
    &extract<short>,
    &extract<unsigned short>,
    &extract<int>,
    &extract<unsigned int>,
    &extract<long>,
    &extract<unsigned long>,
    &extract<long long>,
    &extract<float>,
    &extract<unsigned long long>,
    &extract<double>,
    &extract<bool>,
    &extract<wchar>,
    &extract<String>,
};
constexpr int kCount = sizeof kExtractions / sizeof *kExtractions;

int textLength(String const& text) {
  return String(static_cast<wchar const*>(text)).length();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzzing::Input input(data, size);
  int const steps = 1 + input.below(12);
  int order[12];
  for (int i = 0; i < steps; ++i) order[i] = input.below(kCount);
  String text = fuzzing::stringOf(input.narrowUnits());
  String const original = text;
  wstring const before(static_cast<wchar const*>(original));

  String stepped = text;
  unsigned int const index = stepped.getIndex();
  stepped.incrementIndex();
  // Digits of other scripts count as digits of the index, but not all of them have a value; and a step ends the text at
  // an inner NUL.
  bool const isPlain = original.length() == static_cast<int>(before.size()) &&
                       std::all_of(before.begin(), before.end(), [](wchar unit) { return unit < 0x80; });
  if (isPlain && index < 2147483647u) fuzzing::require(stepped.getIndex() == index + 1, "an increment adds one");
  stepped.decrementIndex();
  stepped.setIndex(index);
  stepped.eatwhite();

  for (int i = 0; i < steps; ++i) {
    int const length = textLength(text);
    kExtractions[order[i]](text);
    fuzzing::require(textLength(text) <= std::max(length, original.length()),
                     "what remains is no longer than the text");
  }
  fuzzing::require(before == static_cast<wchar const*>(original), "other holders keep their text");
  return 0;
}
