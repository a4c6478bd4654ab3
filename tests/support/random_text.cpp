// SPDX-License-Identifier: MIT
#include "tests/support/random_text.h"

#include "kvbase/platform/text_api.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

namespace {

// The first and the last unit of every range that some code treats separately.
constexpr std::uint16_t kLimits[] = {0x0001, 0x0009, 0x0020, 0x0040, 0x0041, 0x005A, 0x005B, 0x0060, 0x0061, 0x007A,
                                     0x007B, 0x007F, 0x0080, 0x00FF, 0x07FF, 0x0800, 0x7FFF, 0x8000, 0xD7FF, 0xD800,
                                     0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFEFF, 0xFFFD, 0xFFFE, 0xFFFF};

template <class T, std::size_t N>
T pick(RandomText& random, T const (&values)[N]) {
  return values[random.below(static_cast<int>(N))];
}

}  // namespace

wchar RandomText::unit(RandomUnits units) {
  static constexpr wchar kFew[] = {KVW('a'), KVW('b'), KVW('A'), KVW(' ')};
  if (units == RandomUnits::kFew) return pick(*this, kFew);
  if (units == RandomUnits::kAscii) return static_cast<wchar>(between(1, 0x7F));
  if (units == RandomUnits::kAnyWithNul && oneIn(12)) return 0;
  switch (below(6)) {
    case 0:
      return static_cast<wchar>(between(1, 0xFFFF));
    case 1:
      return static_cast<wchar>(pick(*this, kLimits));
    case 2:
      return static_cast<wchar>(between(0xD800, 0xDFFF));
    default:
      return static_cast<wchar>(between(1, 0x7F));
  }
}

wstring RandomText::text(int length, RandomUnits units) {
  wstring text;
  while (static_cast<int>(text.size()) < length) {
    text += unit(units);
    bool const pair = units >= RandomUnits::kAny && static_cast<int>(text.size()) + 1 < length && oneIn(10);
    if (!pair) continue;
    text += static_cast<wchar>(between(0xD800, 0xDBFF));
    text += static_cast<wchar>(between(0xDC00, 0xDFFF));
  }
  return text;
}

std::string RandomText::utf8(int length) {
  // Pieces at the edge of what is well-formed: over-long forms, surrogates, beyond the last character, lone bytes.
  static char const* const kPieces[] = {"\xC0\x80",
                                        "\xC1\xBF",
                                        "\xE0\x80\x80",
                                        "\xE0\x9F\xBF",
                                        "\xED\xA0",
                                        "\xED\xBF\xBF",
                                        "\xF0\x80\x80\x80",
                                        "\xF0\x8F\xBF\xBF",
                                        "\xF4\x90",
                                        "\xF5\x80\x80\x80",
                                        "\xFE",
                                        "\xFF",
                                        "\x80",
                                        "\xBF",
                                        "\xC3",
                                        "\xE2\x82",
                                        "\xF0\x9F",
                                        "\xF0\x9F\x98",
                                        "\xF4\x8F\xBF\xBF",
                                        "\xEF\xBF\xBF"};
  std::string bytes;
  while (static_cast<int>(bytes.size()) < length) {
    switch (below(8)) {
      case 0:
        bytes += pick(*this, kPieces);
        break;
      case 1:
        bytes += static_cast<char>(below(0x100));
        break;
      case 2:
        bytes += narrow(text(between(1, 3), RandomUnits::kAny));
        break;
      case 3:
        bytes += '\0';
        break;
      default:
        bytes += narrow(text(between(1, 20), RandomUnits::kAscii));
        break;
    }
  }
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

std::vector<wchar> const& sampledUnits() {
  static std::vector<wchar> const units = [] {
    std::vector<wchar> sampled;
    RandomText random(1);
    auto const classOf = [](int unit) { return platform::nativeText().classesOf(static_cast<wchar>(unit)); };
    for (int unit = 1; unit <= 0xFFFF; ++unit) {
      bool const isLimit = classOf(unit) != classOf(unit - 1) || (unit < 0xFFFF && classOf(unit) != classOf(unit + 1));
      if (unit <= 0x3FF || unit >= 0xFF00 || isLimit || random.oneIn(100)) sampled.push_back(static_cast<wchar>(unit));
    }
    return sampled;
  }();
  return units;
}

}  // namespace testing
}  // namespace KV_1_1
