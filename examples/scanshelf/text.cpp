// SPDX-License-Identifier: MIT
#include "scanshelf.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace scanshelf {
namespace {

Module const* texts = nullptr;

struct Range {
  char32_t first;
  char32_t last;
  int width;
};

// The characters whose width is not 1, in ascending order.
constexpr Range kWidths[] = {
    {0x0300, 0x036F, 0}, {0x1100, 0x115F, 2},   {0x200B, 0x200D, 0},   {0x20D0, 0x20FF, 0},
    {0x2E80, 0x303E, 2}, {0x3041, 0xA4CF, 2},   {0xAC00, 0xD7A3, 2},   {0xF900, 0xFAFF, 2},
    {0xFE00, 0xFE0F, 0}, {0xFE20, 0xFE2F, 0},   {0xFE30, 0xFE6F, 2},   {0xFF00, 0xFF60, 2},
    {0xFFE0, 0xFFE6, 2}, {0x1F300, 0x1F64F, 2}, {0x1F900, 0x1F9FF, 2}, {0x20000, 0x3FFFD, 2},
};

// The width of the character at `position`, which moves behind it.
int nextWidth(wchar const* text, int& position) {
  char32_t character = text[position++];
  bool const isPair = character >= 0xD800 && character < 0xDC00 && text[position] >= 0xDC00 && text[position] < 0xE000;
  if (isPair) character = 0x10000 + ((character - 0xD800) << 10) + (text[position++] - 0xDC00);
  for (Range const& range : kWidths) {
    if (character <= range.last) return character >= range.first ? range.width : 1;
  }
  return 1;
}

}  // namespace

void takeTextsFrom(Module const& module) {
  texts = &module;
}

String textOf(unsigned id) {
  return String::loadFromResource(id, *texts);
}

String helpText() {
  return String(UTF8Interface(texts->loadStringResource(KVW("HELP.TXT"), KVW("TEXT"), /*localized=*/true).c_str()));
}

char const* utf8(String const& text) {
  char const* const bytes = text.stringUTF8();
  return bytes != nullptr ? bytes : "";
}

String countText(std::uint64_t count) {
  String digits;
  digits << count;
  String const separator = textOf(IDS_THOUSANDS_SEPARATOR);
  for (int place = digits.length() - 3; place > 0; place -= 3) {
    digits = digits.substr(0, place) + separator + digits.substr(place);
  }
  return digits;
}

String countOf(std::uint64_t count, Noun const& noun) {
  return count == 1 ? textOf(noun.one) : textOf(noun.many, countText(count));
}

String sizeText(std::uint64_t bytes) {
  if (bytes < 1024) return format(KVW("%u B"), static_cast<unsigned>(bytes));
  double size = static_cast<double>(bytes) / 1024;
  char const* prefix = "KMGT";
  // What would print as 1024.0 is 1.0 of the next unit.
  for (; size >= 1023.95 && *prefix != 'T'; ++prefix) size /= 1024;
  // Rounded here, because systems print a half differently.
  String text = format(KVW("%.1f %cB"), std::floor(size * 10 + 0.5) / 10, *prefix);
  text.replace(KVW("."), textOf(IDS_DECIMAL_SEPARATOR));
  return text;
}

String durationText(std::chrono::milliseconds duration) {
  long long const milliseconds = duration.count();
  long long const seconds = milliseconds / 1000;
  long long const minutes = seconds / 60;
  if (milliseconds == 0) return textOf(IDS_UNDER_ONE_MILLISECOND);
  if (seconds == 0) return format(KVW("%lld ms"), milliseconds);
  if (minutes == 0)
    return format(KVW("%lld%ls%lld s"), seconds, textOf(IDS_DECIMAL_SEPARATOR), milliseconds % 1000 / 100);
  if (minutes < 60) return format(KVW("%lld min %lld s"), minutes, seconds % 60);
  return format(KVW("%lld h %lld min"), minutes / 60, minutes % 60);
}

int displayWidth(String const& text) {
  int width = 0;
  for (int position = 0; position < text.length();) width += nextWidth(text, position);
  return width;
}

String shorten(String const& text, int width) {
  int excess = displayWidth(text) - width;
  if (excess <= 0) return text;
  // shortenString counts code units, so lower limits are tried too, for wide characters. A cut that keeps a part of the
  // front comes before one that does not: it tells more than one more folder at the end.
  for (int limit = width; limit > 0; --limit) {
    for (int const front : {limit / 3, 0}) {
      String const path = text.shortenString(limit, front);
      bool const hasWholeNames = (KVW("/") + path).find(KVW("/.../")) >= 0;
      if (hasWholeNames && displayWidth(path) <= width) return path;
    }
  }
  int head = 0;
  for (int next = 0, room = (width - 1) / 2; (room -= nextWidth(text, next)) >= 0;) head = next;
  int tail = head;
  for (++excess; excess > 0;) excess -= nextWidth(text, tail);  // one more, for the ellipsis
  return text.substr(0, head) + KVW("\u2026") + text.substr(tail);
}

void printLine(std::ostream& out, String const& text) {
  out << utf8(text) << '\n';
}

std::size_t shownOf(std::size_t available, bool all) {
  return all || available <= kListLength + 1 ? available : kListLength;
}

void printTable(std::ostream& out, char const* alignment, std::vector<std::vector<String>> const& rows) {
  std::vector<int> widths(std::strlen(alignment));
  for (std::vector<String> const& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], displayWidth(row[i]));
  }
  for (std::vector<String> const& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      std::string const padding(static_cast<std::size_t>(widths[i] - displayWidth(row[i])), ' ');
      out << "  " << (alignment[i] == 'r' ? padding : "") << utf8(row[i]);
      if (alignment[i] == 'l' && i + 1 < row.size()) out << padding;
    }
    out << '\n';
  }
}

}  // namespace scanshelf
