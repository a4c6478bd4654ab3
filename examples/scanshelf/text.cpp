// SPDX-License-Identifier: MIT
#include "text.h"

#include <algorithm>
#include <iterator>

namespace scanshelf {

using KV_1_1::String;
using KV_1_1::wchar;

namespace {

struct Range {
  char32_t first;
  char32_t last;
  int width;
};

// The characters that do not take one place.
constexpr Range kWidths[] = {
    {0x0300, 0x036F, 0}, {0x1100, 0x115F, 2},   {0x200B, 0x200D, 0},   {0x20D0, 0x20FF, 0},
    {0x2E80, 0x303E, 2}, {0x3041, 0xA4CF, 2},   {0xAC00, 0xD7A3, 2},   {0xF900, 0xFAFF, 2},
    {0xFE00, 0xFE0F, 0}, {0xFE20, 0xFE2F, 0},   {0xFE30, 0xFE6F, 2},   {0xFF00, 0xFF60, 2},
    {0xFFE0, 0xFFE6, 2}, {0x1F300, 0x1F64F, 2}, {0x1F900, 0x1F9FF, 2}, {0x20000, 0x3FFFD, 2},
};

int widthOf(char32_t character) {
  Range const* const range = std::lower_bound(std::begin(kWidths), std::end(kWidths), character,
                                              [](Range const& r, char32_t c) { return r.last < c; });
  return range != std::end(kWidths) && character >= range->first ? range->width : 1;
}

bool isHigh(wchar unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool isLow(wchar unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

// The character at `position`, which moves behind it. A lone surrogate is a character.
char32_t nextCharacter(wchar const* text, int& position) {
  wchar const unit = text[position++];
  if (!isHigh(unit) || !isLow(text[position])) return unit;
  return 0x10000 + ((char32_t{unit} - 0xD800) << 10) + (char32_t{text[position++]} - 0xDC00);
}

// The longest start of the text that takes at most `width` places, as a number of units.
int headLength(wchar const* text, int length, int width) {
  for (int position = 0; position < length;) {
    int const start = position;
    width -= widthOf(nextCharacter(text, position));
    if (width < 0) return start;
  }
  return length;
}

// Whether only whole names were taken out of the path.
bool isCutAtSlashes(String const& shortened) {
  return shortened.startsWith(KVW(".../")) || shortened.find(KVW("/.../")) >= 0;
}

}  // namespace

char const* utf8(String const& text) {
  char const* const bytes = text.stringUTF8();
  return bytes != nullptr ? bytes : "";
}

String countText(std::uint64_t count) {
  String digits;
  digits << count;
  for (int place = digits.length() - 3; place > 0; place -= 3) {
    digits = digits.substr(0, place) + KVW(",") + digits.substr(place);
  }
  return digits;
}

String countOf(std::uint64_t count, wchar const* noun) {
  return countText(count) + KVW(" ") + noun + (count == 1 ? KVW("") : KVW("s"));
}

String sizeText(std::uint64_t bytes) {
  constexpr wchar const* kUnits[] = {KVW("KB"), KVW("MB"), KVW("GB"), KVW("TB")};
  String text;
  if (bytes < 1024) {
    text.printf(KVW("%u B"), static_cast<unsigned>(bytes));
    return text;
  }
  double size = static_cast<double>(bytes) / 1024;
  wchar const* const* unit = std::begin(kUnits);
  // What would print as 1024.0 is 1.0 of the next unit.
  for (; size >= 1023.95 && unit + 1 != std::end(kUnits); ++unit) size /= 1024;
  // In whole tenths, since systems print a half differently.
  unsigned long long const tenths = static_cast<unsigned long long>(size * 10 + 0.5);
  text.printf(KVW("%llu.%llu %ls"), tenths / 10, tenths % 10, *unit);
  return text;
}

String durationText(std::chrono::milliseconds duration) {
  long long const milliseconds = duration.count();
  long long const seconds = milliseconds / 1000;
  long long const minutes = seconds / 60;
  if (milliseconds == 0) return KVW("under 1 ms");
  String text;
  if (seconds == 0) {
    text.printf(KVW("%lld ms"), milliseconds);
  } else if (minutes == 0) {
    text.printf(KVW("%lld.%lld s"), seconds, milliseconds % 1000 / 100);
  } else if (minutes < 60) {
    text.printf(KVW("%lld min %lld s"), minutes, seconds % 60);
  } else {
    text.printf(KVW("%lld h %lld min"), minutes / 60, minutes % 60);
  }
  return text;
}

int displayWidth(String const& text) {
  wchar const* const units = text;
  int const length = text.length();
  int width = 0;
  for (int position = 0; position < length;) width += widthOf(nextCharacter(units, position));
  return width;
}

String shorten(String const& text, int width) {
  int excess = displayWidth(text) - width;
  if (excess <= 0) return text;
  wchar const* const units = text;
  int const head = headLength(units, text.length(), (width - 1) / 2);
  // The ellipsis takes a place of its own.
  int tail = head;
  for (++excess; excess > 0;) excess -= widthOf(nextCharacter(units, tail));
  return text.substr(0, head) + KVW("\u2026") + text.substr(tail);
}

String shortenPath(String const& path, int width) {
  if (displayWidth(path) <= width) return path;
  // The limit counts units. Fewer of them are tried where characters take two places. A front of the path comes first,
  // since it tells more than one folder more at the end.
  for (int limit = width; limit > 0; --limit) {
    for (int const front : {limit / 3, 0}) {
      String const shortened = path.shortenString(limit, front);
      if (isCutAtSlashes(shortened) && displayWidth(shortened) <= width) return shortened;
    }
  }
  return shorten(path, width);
}

}  // namespace scanshelf
