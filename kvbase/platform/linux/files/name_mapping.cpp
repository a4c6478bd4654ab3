// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/name_mapping.h"

#include <algorithm>
#include <cstdint>

namespace KV_1_1 {
namespace platform {

namespace {

constexpr wchar kEscape = 0xF000;

constexpr bool isForbidden(unsigned unit) {
  return unit < 0x20 || unit == '\\' || unit == ':' || unit == '*' || unit == '?' || unit == '<' || unit == '>' ||
         unit == '"' || unit == '|' || unit == '/';
}

struct PlainTable {
  bool plain[128];
  constexpr PlainTable() : plain() {
    for (unsigned c = 0; c < 128; ++c) plain[c] = !isForbidden(c);
  }
};
constexpr PlainTable kTable;

// ASCII that stands for itself (but for a dot or blank at the end).
bool isPlain(unsigned unit) {
  return unit < 128 && kTable.plain[unit];
}

bool isEscape(char32_t character) {
  return character >= kEscape && character <= kEscape + 0xFF;
}

wchar escaped(char byte) {
  return static_cast<wchar>(kEscape + static_cast<unsigned char>(byte));
}

// Length of the well-formed UTF-8 sequence of two bytes or more at `bytes`, 0 if there is none; `character` gets its
// value.
std::size_t sequenceAt(char const* bytes, std::size_t size, char32_t& character) {
  auto const at = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  unsigned const lead = at(0);
  std::size_t const length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  if (length == 0 || length > size) return 0;
  character = lead & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((at(i) & 0xC0) != 0x80) return 0;
    character = (character << 6) | (at(i) & 0x3Fu);
  }
  if (length == 3 && (character < 0x800 || (character & 0xF800) == 0xD800)) return 0;
  if (length == 4 && (character < 0x10000 || character > 0x10FFFF)) return 0;
  return length;
}

void appendUtf8(char32_t character, NativePath& path) {
  int const tail = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  unsigned const lead = tail == 0 ? 0 : (0xF00u >> (tail + 1)) & 0xFFu;
  path.push(static_cast<char>(lead | (character >> (6 * tail))));
  for (int k = tail - 1; k >= 0; --k) path.push(static_cast<char>(0x80 | ((character >> (6 * k)) & 0x3F)));
}

// Appends what a name says, without asking whether another text would say the same.
bool appendBytes(wchar const* name, std::size_t size, NativePath& path) {
  for (std::size_t i = 0; i < size; ++i) {
    wchar const unit = name[i];
    if (isEscape(unit)) {
      if (unit == kEscape || unit == kEscape + '/') return false;
      path.push(static_cast<char>(unit & 0xFF));
    } else if (unit < 0xD800 || unit > 0xDFFF) {
      if (unit < 128 && !isPlain(unit)) return false;
      appendUtf8(unit, path);
    } else {
      bool const pair = unit < 0xDC00 && i + 1 < size && (name[i + 1] & 0xFC00) == 0xDC00;
      if (!pair) return false;
      appendUtf8(0x10000 + ((unit - 0xD800u) << 10) + (name[++i] - 0xDC00u), path);
    }
  }
  return true;
}

// Whether these bytes read as that name. It settles escapes: one is right only where the other direction makes it.
bool readsAs(char const* bytes, std::size_t size, wchar const* name, std::size_t units) {
  SmallBuffer<wchar, 256> text;
  text.resize(size);
  return nameFromNative(bytes, size, text.data()) == units && std::equal(name, name + units, text.data());
}

}  // namespace

std::size_t nameFromNative(char const* bytes, std::size_t size, wchar* units) {
  std::size_t n = 0;
  for (std::size_t i = 0; i < size;) {
    unsigned const byte = static_cast<unsigned char>(bytes[i]);
    if (isPlain(byte)) {
      units[n++] = static_cast<wchar>(byte);
      ++i;
      continue;
    }
    char32_t character = 0;
    std::size_t const length = byte < 0x80 ? 0 : sequenceAt(bytes + i, size - i, character);
    if (length == 0 || isEscape(character)) {
      std::size_t const end = i + std::max<std::size_t>(length, 1);
      while (i < end) units[n++] = escaped(bytes[i++]);
      continue;
    }
    if (character >= 0x10000) {
      units[n++] = static_cast<wchar>(0xD800 + ((character - 0x10000) >> 10));
      character = 0xDC00 + ((character - 0x10000) & 0x3FF);
    }
    units[n++] = static_cast<wchar>(character);
    i += length;
  }
  bool const endsBadly = n > 0 && (units[n - 1] == '.' || units[n - 1] == ' ');
  if (endsBadly && !isDots(bytes, size)) units[n - 1] = escaped(bytes[size - 1]);
  return n;
}

bool appendNativeName(wchar const* name, std::size_t size, NativePath& path) {
  std::size_t const begin = path.size();
  path.resize(begin + size);
  char* const out = path.data() + begin;
  std::size_t plain = 0;
  while (plain < size && isPlain(name[plain])) {
    out[plain] = static_cast<char>(name[plain]);
    ++plain;
  }
  bool const endsWell = size > 0 && name[size - 1] != '.' && name[size - 1] != ' ';
  if (plain == size) return endsWell;

  path.resize(begin + plain);
  if (!endsWell || !appendBytes(name + plain, size - plain, path)) return false;
  char const* const bytes = path.data() + begin;
  std::size_t const length = path.size() - begin;
  if (isDots(bytes, length)) return false;
  bool const escapes = std::any_of(name + plain, name + size, [](wchar unit) { return isEscape(unit); });
  return !escapes || readsAs(bytes, length, name, size);
}

}  // namespace platform
}  // namespace KV_1_1
