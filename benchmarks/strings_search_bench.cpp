// SPDX-License-Identifier: MIT
//
// Strings: searching and replacing.
#include <QStringMatcher>
#include <algorithm>
#include <boost/algorithm/string/replace.hpp>
#include <cwctype>
#include <string>

#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

namespace {

constexpr char16_t kAbsentUnit = u'x';

int position(std::size_t found) {
  return found == u16string::npos ? -1 : static_cast<int>(found);
}

u16string repeated(int count, u16string const& text) {
  u16string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

void addFindUnit(char const* name, u16string const& text) {
  Row(name)
      .add("KVBase", [a = make<String>(text)] { return a.find(kAbsentUnit); })
      .add("u16string", [text] { return position(text.find(kAbsentUnit)); })
      .add("QString", [a = make<QString>(text)] { return static_cast<int>(a.indexOf(QChar(kAbsentUnit))); })
      .add("UnicodeString", [a = make<UnicodeString>(text)] { return a.indexOf(kAbsentUnit); });
}

void addFindUnits() {
  u16string early = sampleText(50);
  early[4] = kAbsentUnit;
  addFindUnit("search: unit, early in 50", early);
  u16string late = sampleText(50);
  late[48] = kAbsentUnit;
  addFindUnit("search: unit, late in 50", late);
  addFindUnit("search: unit, absent in 50", sampleText(50));
  addFindUnit("search: unit, absent in 50000", sampleText(50000));
}

void addFindText(std::string const& name, u16string const& text, u16string const& wanted) {
  Row("search: " + name)
      .add("KVBase", [a = make<String>(text), b = make<String>(wanted)] { return a.find(b); })
      .add("u16string", [text, wanted] { return position(text.find(wanted)); })
      .add("QString", [a = make<QString>(text), b = make<QString>(wanted)] { return static_cast<int>(a.indexOf(b)); })
      .add("QStringMatcher", [a = make<QString>(text),
                              b = QStringMatcher(make<QString>(wanted))] { return static_cast<int>(b.indexIn(a)); })
      .add("UnicodeString", [a = make<UnicodeString>(text), b = make<UnicodeString>(wanted)] { return a.indexOf(b); });
}

// A text in which both units of `pair` are frequent, but the pair itself does not occur.
u16string textWithoutPair(int length, u16string const& pair) {
  u16string text = sampleText(length);
  for (std::size_t at = text.find(pair); at != u16string::npos; at = text.find(pair, at)) text[at] = u'a';
  return text;
}

void addFindTexts() {
  // The first and the last unit are frequent in the text; q does not occur.
  u16string const eight = u"theqnose";
  u16string const two = u"se";
  auto const with = [](u16string text, std::size_t at, u16string const& part) {
    return text.replace(at, part.size(), part);
  };
  addFindText("text of 8, early in 50", with(sampleText(50), 4, eight), eight);
  for (int size : {50, 50000}) {
    std::string const in = " in " + std::to_string(size);
    std::size_t const end = static_cast<std::size_t>(size);
    addFindText("text of 8, late" + in, with(sampleText(size), end - 8, eight), eight);
    addFindText("text of 8, absent" + in, sampleText(size), eight);
    addFindText("text of 2, late" + in, with(textWithoutPair(size, two), end - 2, two), two);
    addFindText("text of 2, absent" + in, textWithoutPair(size, two), two);
  }
}

// Texts on which a naive search compares almost the whole wanted text at almost every position.
void addHardTexts() {
  u16string const text(20000, u'a');
  u16string const ten(10, u'a');
  addFindText("hard, a^20 b in a^20000", text, ten + ten + u"b");
  addFindText("hard, b a^20 in a^20000", text, u"b" + ten + ten);
  addFindText("hard, a^10 b a^10 in a^20000", text, ten + u"b" + ten);
}

void addFindLast() {
  u16string const text = sampleText(5000);
  Row("search: findLastOf unit, absent in 5000")
      .add("KVBase", [a = make<String>(text)] { return a.findLastOf(kAbsentUnit); })
      .add("u16string", [text] { return position(text.rfind(kAbsentUnit)); })
      .add("QString", [a = make<QString>(text)] { return static_cast<int>(a.lastIndexOf(QChar(kAbsentUnit))); })
      .add("UnicodeString", [a = make<UnicodeString>(text)] { return a.lastIndexOf(kAbsentUnit); });
}

template <class Text, class Accept>
int firstAccepted(Text const& text, Accept accept) {
  auto const found = std::find_if(text.begin(), text.end(), accept);
  return found == text.end() ? -1 : static_cast<int>(found - text.begin());
}

void addFindClass(int size) {
  u16string text = sampleText(size);
  text.back() = u'7';
  UnicodeString const icu = make<UnicodeString>(text);
  Row("search: first digit, at the end of " + std::to_string(size))
      .add("KVBase", [a = make<String>(text)] { return a.findDigit(); })
      .add("find_if",
           [text] { return firstAccepted(text, [](char16_t unit) { return unit >= u'0' && unit <= u'9'; }); })
      .add("iswdigit loop",
           [text] { return firstAccepted(text, [](char16_t unit) { return std::iswdigit(unit) != 0; }); })
      .add("QString", [a = make<QString>(text)] { return firstAccepted(a, [](QChar unit) { return unit.isDigit(); }); })
      .add("UnicodeString", [icu] {
        std::u16string_view const units(icu.getBuffer(), static_cast<std::size_t>(icu.length()));
        return firstAccepted(units, [](char16_t unit) { return u_isdigit(unit) != 0; });
      });
}

u16string pieced(u16string const& text, u16string const& from, u16string const& to) {
  u16string result;
  std::size_t copied = 0;
  for (std::size_t at = text.find(from); at != u16string::npos; at = text.find(from, copied)) {
    result.append(text, copied, at - copied).append(to);
    copied = at + from.size();
  }
  return result.append(text, copied, u16string::npos);
}

void addReplaceText(char const* name, u16string const& text, u16string const& from, u16string const& to) {
  Row(name)
      .add("KVBase",
           [a = make<String>(text), b = make<String>(from), c = make<String>(to)] {
             String result(a);
             result.replace(b, c);
             return result;
           })
      .add("u16string", [text, from, to] { return pieced(text, from, to); })
      .add("boost", [text, from, to] { return boost::algorithm::replace_all_copy(text, from, to); })
      .add("QString",
           [a = make<QString>(text), b = make<QString>(from), c = make<QString>(to)] {
             QString result(a);
             result.replace(b, c);
             return result;
           })
      .add("UnicodeString",
           [a = make<UnicodeString>(text), b = make<UnicodeString>(from), c = make<UnicodeString>(to)] {
             UnicodeString result(a);
             result.findAndReplace(b, c);
             return result;
           });
}

void addReplaceTexts() {
  u16string const from = u"q1q";
  u16string const piece = sampleText(22) + from;
  addReplaceText("replace: text, 2 matches in 50", piece + piece, from, u"other");
  addReplaceText("replace: text, 200 matches in 5000", repeated(200, piece), from, u"other");
  u16string const absent = u"eq";
  addReplaceText("replace: text, no match in 50", sampleText(50), absent, u"other");
  addReplaceText("replace: text, no match in 5000", sampleText(5000), absent, u"other");
}

void addReplaceUnit(int size) {
  u16string const text = sampleText(size);
  Row("replace: unit in " + std::to_string(size))
      .add("KVBase",
           [a = make<String>(text)] {
             String result(a);
             result.replace(u'e', u'x');
             return result;
           })
      .add("u16string",
           [text] {
             u16string result(text);
             std::replace(result.begin(), result.end(), u'e', u'x');
             return result;
           })
      .add("QString",
           [a = make<QString>(text)] {
             QString result(a);
             result.replace(QChar(u'e'), QChar(u'x'));
             return result;
           })
      .add("UnicodeString", [a = make<UnicodeString>(text), from = UnicodeString(u'e'), to = UnicodeString(u'x')] {
        UnicodeString result(a);
        result.findAndReplace(from, to);
        return result;
      });
}

}  // namespace

void addStringSearch() {
  addFindUnits();
  addFindTexts();
  addHardTexts();
  addFindLast();
  addFindClass(50);
  addFindClass(5000);
  addReplaceTexts();
  addReplaceUnit(50);
  addReplaceUnit(5000);
}

}  // namespace bench
}  // namespace KV_1_1
