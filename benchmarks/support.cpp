// SPDX-License-Identifier: MIT
#include "benchmarks/support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace KV_1_1 {
namespace bench {

u16string plain(String const& text) {
  return u16string(static_cast<wchar const*>(text), static_cast<std::size_t>(text.length()));
}

u16string plain(std::string const& text) {
  return u16string(text.begin(), text.end());
}

u16string plain(char const* text) {
  return plain(std::string(text));
}

u16string plain(u16string const& text) {
  return text;
}

u16string plain(std::shared_ptr<u16string const> const& text) {
  return *text;
}

u16string plain(long long number) {
  return plain(std::to_string(number));
}

u16string plain(Order order) {
  return plain(static_cast<long long>((order.value > 0) - (order.value < 0)));
}

void failPremise(char const* premise) {
  std::fprintf(stderr, "premise of a row does not hold: %s\n", premise);
  std::exit(1);
}

u16string withSlashes(u16string text) {
  std::replace(text.begin(), text.end(), KVW('\\'), KVW('/'));
  return text;
}

u16string sampleText(int length, unsigned int seed) {
  static constexpr wchar kLetters[] =
      KVW("eeeeeeeeeeeetttttttttaaaaaaaaoooooooiiiiiiinnnnnnnsssssshhhhhhrrrrrrddddllllcccuuummmwwffggyyppbvk");
  std::mt19937 random(seed);
  u16string text;
  for (int i = 0; i < length; ++i) text += kLetters[random() % (sizeof kLetters / sizeof kLetters[0] - 1)];
  return text;
}

void Row::expect(std::unique_ptr<u16string>& expected, u16string result, std::string const& label) {
  if (expected == nullptr) expected = std::make_unique<u16string>(result);
  if (*expected == result) return;
  auto const shown = [](u16string const& text) { return std::string(make<String>(text).stringUTF8()); };
  std::fprintf(stderr, "%s gives \"%s\", but an earlier contestant gave \"%s\"\n", label.c_str(), shown(result).c_str(),
               shown(*expected).c_str());
  std::exit(1);
}

}  // namespace bench
}  // namespace KV_1_1
