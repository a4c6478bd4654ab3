// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/name_mapping.h"

#include <algorithm>

#include "kvbase/kernels/utf8_character.h"

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

// ASCII characters that map to themselves, except a dot or blank at the end of a name.
bool isPlain(unsigned unit) {
  return unit < 128 && kTable.plain[unit];
}

bool isEscape(unsigned int character) {
  return character >= kEscape && character <= kEscape + 0xFF;
}

wchar escaped(char byte) {
  return static_cast<wchar>(kEscape + static_cast<unsigned char>(byte));
}

void appendCharacter(unsigned int code, NativePath& path) {
  char bytes[4];
  path.append(bytes, static_cast<std::size_t>(strings::writeUtf8(code, bytes) - bytes));
}

// Appends the bytes of a name, without checking that no other text maps to the same bytes.
bool appendBytes(wchar const* name, std::size_t size, NativePath& path) {
  for (std::size_t i = 0; i < size; ++i) {
    wchar const unit = name[i];
    if (isEscape(unit)) {
      if (unit == kEscape || unit == kEscape + '/') return false;
      path.push(static_cast<char>(unit & 0xFF));
      continue;
    }
    if (unit < 128 && !isPlain(unit)) return false;
    strings::Utf16Character const character = strings::readUtf16(name + i, static_cast<int>(size - i));
    if (!character.isValid) return false;
    appendCharacter(character.code, path);
    i += static_cast<std::size_t>(character.units) - 1;
  }
  return true;
}

// Whether the bytes map back to the name. An escape is valid only where the mapping from bytes produces it.
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
    strings::Utf8Character const character = strings::readUtf8(bytes + i, static_cast<int>(size - i));
    if (byte < 0x80 || !character.isValid || isEscape(character.code)) {
      std::size_t const end = i + static_cast<std::size_t>(character.isValid ? character.bytes : 1);
      while (i < end) units[n++] = escaped(bytes[i++]);
      continue;
    }
    n = static_cast<std::size_t>(strings::writeUtf16(character.code, units + n) - units);
    i += static_cast<std::size_t>(character.bytes);
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
