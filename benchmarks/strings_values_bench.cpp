// SPDX-License-Identifier: MIT
//
// Strings: formatting numbers and parsing them.
#include <algorithm>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cwchar>
#include <random>
#include <string>
#include <string_view>

#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

namespace {

constexpr int kNumber = 987654321;  // too many digits for the buffer inside a u16string

// ASCII characters as UTF-16.
u16string widened(char const* text, std::size_t size) {
  return u16string(text, text + size);
}

struct NarrowText {
  char chars[64];
  std::size_t size;
};

NarrowText narrowText(int value) {
  NarrowText text;
  text.size =
      static_cast<std::size_t>(std::to_chars(text.chars, text.chars + sizeof text.chars, value).ptr - text.chars);
  return text;
}

// The number of significant digits that KVBase formats a double with; its peers are given the same.
int precisionOf(double value) {
  if (value == 0) return 1;
  double const logarithm = std::log10(std::fabs(value));
  return logarithm < 0 ? 8 : static_cast<int>(std::ceil(logarithm)) + 9;
}

NarrowText narrowText(double value) {
  NarrowText text;
  char* const end =
      std::to_chars(text.chars, text.chars + sizeof text.chars, value, std::chars_format::general, precisionOf(value))
          .ptr;
  text.size = static_cast<std::size_t>(end - text.chars);
  return text;
}

template <class Text>
Text qtText(double value) {
  return Text::number(value, 'g', precisionOf(value));
}

// --- Formatting ------------------------------------------------------------------------------------------------------

// The digits in a block of their own.
BareText bareNumber(int value) {
  NarrowText const text = narrowText(value);
  BareText number(text.size);
  *std::copy_n(text.chars, text.size, number.text()) = 0;
  return number;
}

void addFormatInt() {
  Row("format: int to text")
      .add("KVBase",
           [] {
             String text;
             text << kNumber;
             return text;
           })
      .add("to_chars + widen",
           [] {
             NarrowText const text = narrowText(kNumber);
             return widened(text.chars, text.size);
           })
      .add(PEER("QString", [] { return QString::number(kNumber); }))
      .add("floor", [] { return bareNumber(kNumber); });
}

// The text followed by the number, in a block of exactly the needed size.
template <class Value>
u16string exactSum(u16string const& text, Value value) {
  NarrowText const number = narrowText(value);
  u16string result;
  result.reserve(text.size() + number.size);
  result.append(text).append(number.chars, number.chars + number.size);
  return result;
}

template <class Text, class Value>
Text icuSum(Text const& text, Value value) {
  NarrowText const number = narrowText(value);
  wchar units[sizeof number.chars];
  std::copy_n(number.chars, number.size, units);
  return Text(text).append(units, 0, static_cast<int>(number.size));
}

template <class Value>
String kvSum(String const& text, Value value) {
  String result(text);
  result << value;
  return result;
}

void addAppendInt() {
  u16string const text = sampleText(100);
  Row("format: append int to 100")
      .add("KVBase", [a = make<String>(text)] { return kvSum(a, kNumber); })
      .add("u16string exact", [text] { return exactSum(text, kNumber); })
      .add(PEER("QString", [a = make<QString>(text)] { return QString(a + QString::number(kNumber)); }))
      .add(PEER("UnicodeString", [a = make<UnicodeString>(text)] { return icuSum(a, kNumber); }));
}

// Returns another double on each call, so that no branch can be predicted from the previous call.
class Cycle {
 public:
  explicit Cycle(std::vector<double> values) : values_(std::move(values)) {}
  double operator()() { return values_[next_++ % values_.size()]; }

 private:
  std::vector<double> values_;
  std::size_t next_ = 0;
};

// Typical values of scanning programs: lengths in millimetres, angles, counts, small deviations with all digits.
std::vector<double> sampleDoubles() {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> unit(0, 1);
  std::vector<double> values;
  for (int i = 0; i < 64; ++i) {
    values.push_back(std::floor(unit(random) * 1e6) / 1000);
    values.push_back(unit(random) * 360 - 180);
    values.push_back(std::floor(unit(random) * 1e6));
    values.push_back(unit(random) * 1e-3);
  }
  return values;
}

void addFormatDoubles() {
  std::vector<double> const values = sampleDoubles();
  u16string const text = sampleText(100);
  for (double value : values) {
    NarrowText const number = narrowText(value);
    require(plain(kvSum(String(), value)) == widened(number.chars, number.size),
            "doubles: KVBase formats like to_chars");
    require(PEER(plain(qtText<QString>(value)) == widened(number.chars, number.size),
                 "doubles: QString formats like to_chars"));
  }
  Row("format: double to text")
      .add("KVBase", [next = Cycle(values)]() mutable { return kvSum(String(), next()); })
      .add("to_chars + widen",
           [next = Cycle(values)]() mutable {
             NarrowText const number = narrowText(next());
             return widened(number.chars, number.size);
           })
      .add(PEER("QString", [next = Cycle(values)]() mutable { return qtText<QString>(next()); }));
  Row("format: append double to 100")
      .add("KVBase", [a = make<String>(text), next = Cycle(values)]() mutable { return kvSum(a, next()); })
      .add("u16string exact", [text, next = Cycle(values)]() mutable { return exactSum(text, next()); })
      .add(PEER("QString", [a = make<QString>(text),
                            next = Cycle(values)]() mutable { return QString(a + qtText<QString>(next())); }))
      .add(PEER("UnicodeString",
                [a = make<UnicodeString>(text), next = Cycle(values)]() mutable { return icuSum(a, next()); }));
}

void addPrintf() {
  u16string const name = sampleText(12);
  u16string const other = sampleText(20, 2);
  Row("format: printf %ls %ls %08x")
      .add("KVBase",
           [a = make<String>(name), b = make<String>(other)] {
             String result;
             result.printf(KVW("%ls %ls %08x"), a, b, 0xbeef);
             return result;
           })
      .add(WINDOWS_PEER("swprintf",
                        [name, other] {
                          wchar_t buffer[100];
                          int const size =
                              std::swprintf(buffer, 100, L"%ls %ls %08x", name.c_str(), other.c_str(), 0xbeefu);
                          return u16string(buffer, buffer + size);
                        }))
      .add(PEER("QString::asprintf",
                [a = make<QString>(name), b = make<QString>(other)] {
                  return QString::asprintf("%ls %ls %08x", qUtf16Printable(a), qUtf16Printable(b), 0xbeefu);
                }))
      .add(PEER("QString::arg", [a = make<QString>(name), b = make<QString>(other), format = QString("%1 %2 %3")] {
        return format.arg(a, b, QString("%1").arg(0xbeef, 8, 16, QChar(KVW('0'))));
      }));
}

// --- Parsing ---------------------------------------------------------------------------------------------------------

// Takes a copy, because an extraction removes the number from its text.
template <class Value>
Value extracted(String text) {
  Value value = 0;
  text >> value;
  return value;
}

template <class Value>
Value fromChars(char const* begin, char const* end) {
  Value value = 0;
  std::from_chars(begin, end, value);
  return value;
}

// A number at the front of a text, and its length in units.
struct FrontInt {
  int value;
  std::size_t size;
};

FrontInt bareFrontInt(wchar const* text) {
  int value = 0;
  wchar const* unit = text;
  for (; *unit >= KVW('0') && *unit <= KVW('9'); ++unit) value = value * 10 + (*unit - KVW('0'));
  return {value, static_cast<std::size_t>(unit - text)};
}

// What an extraction has to do: share the text, convert, give it back and share the empty text for what remains.
int bareInt(BareText const& text, BareText const& empty) {
  BareText const copy(text);
  BareText const rest(empty);
  return bareFrontInt(copy.text()).value;
}

// The same, with the decimal point of the locale asked for and an empty text of its own for what remains.
double bareDouble(BareText const& text) {
  BareText const copy(text);
  char chars[64];
  require(*std::localeconv()->decimal_point == '.', "parse: the decimal point is a full stop");
  std::copy_n(copy.text(), copy.size(), chars);
  double value = 0;
  std::from_chars(chars, chars + copy.size(), value);
  keep(BareText(KVW(""), 0));
  return value;
}

// The same where a text remains.
BareText bareRest(BareText const& text) {
  BareText const copy(text);
  FrontInt const number = bareFrontInt(copy.text());
  require(number.value == 12345, "extract: the value of the floor");
  return BareText(copy.text() + number.size, copy.size() - number.size);
}

void addParseInt() {
  std::string const narrow = std::to_string(kNumber);
  u16string const text = widened(narrow.data(), narrow.size());
  Row("parse: int")
      .add("KVBase", [a = make<String>(text)] { return extracted<int>(a); })
      .add("from_chars (8 bits)", [narrow] { return fromChars<int>(narrow.data(), narrow.data() + narrow.size()); })
      .add(PEER("QStringView", [a = make<QString>(text)] { return QStringView(a).toInt(); }))
      .add(PEER("QString", [a = make<QString>(text)] { return a.toInt(); }))
      .add("floor", [a = make<BareText>(text), empty = BareText(KVW(""), 0)] { return bareInt(a, empty); });
}

// The exact value of a double, to compare all of its bits.
u16string bits(double value) {
  char text[64];
  std::size_t const size = static_cast<std::size_t>(std::snprintf(text, sizeof text, "%a", value));
  return widened(text, size);
}

void addParseDouble() {
  for (std::string const narrow : {"1234.5678", "0.00012345678901234567", "-17", "6.02214076e23"}) {
    double const value = fromChars<double>(narrow.data(), narrow.data() + narrow.size());
    u16string const text = widened(narrow.data(), narrow.size());
    require(bits(extracted<double>(make<String>(text))) == bits(value), "parse: KVBase parses doubles like from_chars");
    require(PEER(bits(make<QString>(text).toDouble()) == bits(value), "parse: QString parses doubles like from_chars"));
  }
  std::string const narrow = "1234.56789012";
  u16string const text = widened(narrow.data(), narrow.size());
  auto const whole = [](double value) { return static_cast<long long>(value * 1e8); };
  Row("parse: double")
      .add("KVBase", [a = make<String>(text), whole] { return whole(extracted<double>(a)); })
      .add("from_chars (8 bits)",
           [narrow, whole] { return whole(fromChars<double>(narrow.data(), narrow.data() + narrow.size())); })
      .add(PEER("QStringView", [a = make<QString>(text), whole] { return whole(QStringView(a).toDouble()); }))
      .add(PEER("QString", [a = make<QString>(text), whole] { return whole(a.toDouble()); }))
      .add("floor", [a = make<BareText>(text), whole] { return whole(bareDouble(a)); });
}

FrontInt frontInt(std::basic_string_view<wchar> text) {
  char digits[12] = {};
  std::size_t size = 0;
  while (size < text.size() && size < sizeof digits && text[size] >= KVW('0') && text[size] <= KVW('9')) {
    digits[size] = static_cast<char>(text[size]);
    ++size;
  }
  return {fromChars<int>(digits, digits + size), size};
}

void addExtractInt(int size) {
  u16string const text = widened("12345 ", 6) + sampleText(size - 6);
  Row("parse: extract int, remainder of " + std::to_string(size))
      .add("KVBase",
           [a = make<String>(text)] {
             String rest(a);
             int value = 0;
             rest >> value;
             require(value == 12345, "extract: the value of KVBase");
             return rest;
           })
      .add("u16string",
           [text] {
             FrontInt const number = frontInt(text);
             require(number.value == 12345, "extract: the value of u16string");
             return text.substr(number.size);
           })
      .add(PEER("QString",
                [a = make<QString>(text)] {
                  qsizetype const end = a.indexOf(QChar(KVW(' ')));
                  require(QStringView(a).left(end).toInt() == 12345, "extract: the value of QString");
                  return a.mid(end);
                }))
      .add(PEER("UnicodeString",
                [a = make<UnicodeString>(text)] {
                  FrontInt const number = frontInt({a.getBuffer(), static_cast<std::size_t>(a.length())});
                  require(number.value == 12345, "extract: the value of UnicodeString");
                  return UnicodeString(a, static_cast<int>(number.size));
                }))
      .add("floor", [a = make<BareText>(text)] { return bareRest(a); });
}

}  // namespace

void addStringValues() {
  addFormatInt();
  addAppendInt();
  addFormatDoubles();
  addPrintf();
  addParseInt();
  addParseDouble();
  addExtractInt(20);
  addExtractInt(1000);
}

}  // namespace bench
}  // namespace KV_1_1
