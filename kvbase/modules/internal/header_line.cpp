// SPDX-License-Identifier: MIT
#include "kvbase/modules/internal/header_line.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kvbase/internal_assert.h"
#include "kvbase/kernels/front_search.h"
#include "kvbase/platform/narrow_text.h"
#include "kvbase/strings/internal/character_class.h"

namespace KV_1_1 {

namespace {

// Its first unit is looked for in bytes too.
constexpr TextView kDefine = KVW("#define");
// Names by which resource editors keep their books.
constexpr TextView kEditorPrefix = KVW("_APS");

bool isGraphic(wchar unit) {
  return strings::hasClass(unit, platform::kGraphic);
}

std::size_t skipBlanks(TextView line, std::size_t at) {
  while (at < line.size() && !isGraphic(line[at])) {
    TextView const rest = line.substr(at + 1);
    // Goes on to the next graphic unit of ASCII, or to any unit beyond ASCII.
    int const blanks = strings::findRangeFromFront(rest.data(), lengthOf(rest), KVW('!'), KVW('~'));
    at += 1 + static_cast<std::size_t>(blanks);
  }
  return at;
}

// Some of the graphic units of ASCII that a text begins with, all of them if it is short.
int graphicAsciiUnits(TextView text) {
  if (lengthOf(text) < strings::kFew) return 0;
  auto const test = [text](auto v, auto load) {
    using V = decltype(v);
    auto const units = load(text.data());
    return V::bitAnd(V::greater(units, V::of(KVW(' '))), V::greater(V::of(0x7F), units));
  };
  return strings::firstZeroFromFront(lengthOf(text), test, [] { return strings::kFrontUnits; });
}

std::size_t skipWord(TextView line, std::size_t at) {
  while (at < line.size() && isGraphic(line[at])) {
    at += 1 + static_cast<std::size_t>(graphicAsciiUnits(line.substr(at + 1)));
  }
  return at;
}

TextView wordAt(TextView line, std::size_t at) {
  return line.substr(at, skipWord(line, at) - at);
}

bool startsWith(TextView text, TextView prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

std::size_t findDefine(TextView line) {
  if (startsWith(line, kDefine)) return 0;
  int const at = strings::kernels().findText(line.data(), lengthOf(line), kDefine.data(), lengthOf(kDefine));
  return at >= 0 ? static_cast<std::size_t>(at) : TextView::npos;
}

// The value of a definition whose name ends at `nameEnd`.
// COMPAT: at the end of the line it is the first word of the line; with only blanks behind the name, the whole line.
TextView tokenBehind(TextView line, std::size_t nameEnd) {
  if (nameEnd == line.size()) return wordAt(line, skipBlanks(line, 0));
  std::size_t const start = skipBlanks(line, nameEnd + 1);
  return start < line.size() ? wordAt(line, start) : line;
}

// Takes a number of few digits, as nearly every number is; false for all other tokens.
bool readPlainNumber(TextView token, unsigned int& number) {
  constexpr std::size_t kFewDigits = 9;
  std::size_t at = 0;
  unsigned int value = 0;
  for (; at < token.size() && token[at] >= KVW('0') && token[at] <= KVW('9'); ++at) {
    if (at == kFewDigits) return false;
    value = value * 10 + (token[at] - KVW('0'));
  }
  // Digits beyond ASCII would go on with the number.
  if (at == 0 || (at < token.size() && token[at] >= 0x80)) return false;
  number = value;
  return true;
}

}  // namespace

HeaderLine readHeaderLine(TextView line) {
  HeaderLine result;
  std::size_t const define = findDefine(line);
  if (define == TextView::npos) return result;

  std::size_t const behind = define + kDefine.size();
  std::size_t const nameStart = skipBlanks(line, behind);
  if (nameStart == behind || nameStart == line.size()) {
    result.kind = HeaderLine::kFaulty;
    return result;
  }
  result.name = wordAt(line, nameStart);
  if (startsWith(result.name, kEditorPrefix)) return result;

  result.token = tokenBehind(line, nameStart + result.name.size());
  result.kind = HeaderLine::kNumber;
  if (readPlainNumber(result.token, result.number)) return result;
  String const token(result.token.data(), lengthOf(result.token));
  String rest = token;
  rest >> result.number;
  // COMPAT: whatever was taken, the token is a number.
  if (rest == token) result.kind = HeaderLine::kReference;
  return result;
}

namespace {

// Whether text of ASCII bytes reads the same in the ANSI code page. It does not in EBCDIC, nor where bytes of ASCII shift
// to other characters, as "+", "~{", the escape character and the two shift characters do in one page or another.
bool isTransparentToAscii() {
  static constexpr char kProbe[] =
      "\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0B\x0C\x0D "
      "!\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
      "abcdefghijklmnopqrstuvwxyz{|}~\x7F +ABC- ~{!!~} \x1B$B!!\x1B(B \x0E!!\x0F";
  constexpr int kSize = sizeof kProbe - 1;
  wchar units[kSize];
  int const converted = platform::decodeNarrow(platform::text(), platform::kAnsiCodePage, kProbe, kSize, units, kSize);
  if (converted != kSize) return false;
  for (int i = 0; i < kSize; ++i)
    if (units[i] != static_cast<unsigned char>(kProbe[i])) return false;
  return true;
}

bool isAscii(char const* bytes, int size) {
  std::uint64_t block = 0;
  std::uint64_t all = 0;
  int at = 0;
  for (; at + 8 <= size; at += 8) {
    std::memcpy(&block, bytes + at, sizeof block);
    all |= block;
  }
  for (; at < size; ++at) all |= static_cast<unsigned char>(bytes[at]);
  return (all & 0x8080808080808080u) == 0;
}

}  // namespace

LineReader::LineReader()
    : isUtf8_(platform::isUtf8(platform::text(), platform::kAnsiCodePage)),
      isTransparent_(isUtf8_ || isTransparentToAscii()) {}

// Reads "#define NAME 123", as most lines are, from its bytes. False for all others, whatever they are.
bool LineReader::readPlain(char const* bytes, int size, HeaderLine& line) {
  constexpr char kStart[] = "#define";
  constexpr int kStartSize = sizeof kStart - 1;
  constexpr int kFewDigits = 9;
  auto const isBlank = [](char c) { return (c >= '\x01' && c <= ' ') || c == '\x7F'; };
  auto const isWord = [](char c) { return c >= '!' && c <= '~'; };
  auto const isDigit = [](char c) { return c >= '0' && c <= '9'; };
  if (!isTransparent_ || size < kStartSize || std::memcmp(bytes, kStart, kStartSize) != 0) return false;
  char const* at = bytes + kStartSize;
  if (!isBlank(*at)) return false;
  while (isBlank(*at)) ++at;
  wchar* nameEnd = units_;
  for (; isWord(*at); ++at) *nameEnd++ = static_cast<wchar>(*at);
  line.name = TextView(units_, static_cast<std::size_t>(nameEnd - units_));
  if (line.name.empty() || startsWith(line.name, kEditorPrefix) || !isBlank(*at)) return false;
  // Numbers often stand in a column.
  while (bytes + size - at >= 8 && std::memcmp(at, "        ", 8) == 0) at += 8;
  while (isBlank(*at)) ++at;

  char const* const number = at;
  line.number = 0;
  for (; isDigit(*at) && at - number < kFewDigits; ++at)
    line.number = 10 * line.number + static_cast<unsigned int>(*at - '0');
  // A further digit, of ASCII or beyond it, goes on with the number.
  bool const isNumber = at != number && !isDigit(*at) && isAscii(at, 1);
  if (!isNumber || !(isUtf8_ || isAscii(at, static_cast<int>(bytes + size - at)))) return false;
  line.kind = HeaderLine::kNumber;
  return true;
}

HeaderLine LineReader::read(char const* bytes, int size) {
  KVBASE_ASSERT(size >= 0 && size < kLimit);
  HeaderLine line;
  return readPlain(bytes, size, line) ? line : readHeaderLine(decode(bytes, size));
}

TextView LineReader::decode(char const* bytes, int size) {
  if (isTransparent_ && std::memchr(bytes, kDefine.front(), static_cast<std::size_t>(size)) == nullptr) {
    return TextView();
  }
  if (isUtf8_ || (isTransparent_ && isAscii(bytes, size))) {
    int const units = strings::kernels().fromUtf8(bytes, size, units_, kLimit);
    return TextView(units_, static_cast<std::size_t>(units));
  }
  converted_ = String(CodePageInterface(bytes, platform::kAnsiCodePage));
  return viewOf(converted_);
}

}  // namespace KV_1_1
