// SPDX-License-Identifier: MIT
//
// Strings: searching and replacing.
#include <algorithm>
#include <cwctype>
#include <string>

#include "benchmarks/bare_search.h"
#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

namespace {

constexpr wchar kAbsentUnit = KVW('x');

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
      .add(PEER("QString", [a = make<QString>(text)] { return static_cast<int>(a.indexOf(QChar(kAbsentUnit))); }))
      .add(PEER("UnicodeString", [a = make<UnicodeString>(text)] { return a.indexOf(kAbsentUnit); }))
      .add("floor", [a = make<BareText>(text)] { return bareFind(a, kAbsentUnit); });
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
      .add(PEER("QString",
                [a = make<QString>(text), b = make<QString>(wanted)] { return static_cast<int>(a.indexOf(b)); }))
      .add(PEER("QStringMatcher", [a = make<QString>(text), b = QStringMatcher(make<QString>(
                                                                wanted))] { return static_cast<int>(b.indexIn(a)); }))
      .add(PEER("UnicodeString",
                [a = make<UnicodeString>(text), b = make<UnicodeString>(wanted)] { return a.indexOf(b); }))
      .add("floor", [a = make<BareText>(text), wanted] { return bareFind(a, wanted.c_str()); });
}

// A text in which both units of `pair` are frequent, but the pair itself does not occur.
u16string textWithoutPair(int length, u16string const& pair) {
  u16string text = sampleText(length);
  for (std::size_t at = text.find(pair); at != u16string::npos; at = text.find(pair, at)) text[at] = KVW('a');
  return text;
}

void addFindTexts() {
  // The first and the last unit are frequent in the text; q does not occur.
  u16string const eight = KVW("theqnose");
  u16string const two = KVW("se");
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
  u16string const text(20000, KVW('a'));
  u16string const ten(10, KVW('a'));
  addFindText("hard, a^20 b in a^20000", text, ten + ten + KVW("b"));
  addFindText("hard, b a^20 in a^20000", text, KVW("b") + ten + ten);
  addFindText("hard, a^10 b a^10 in a^20000", text, ten + KVW("b") + ten);
}

void addFindLast() {
  u16string const text = sampleText(5000);
  Row("search: findLastOf unit, absent in 5000")
      .add("KVBase", [a = make<String>(text)] { return a.findLastOf(kAbsentUnit); })
      .add("u16string", [text] { return position(text.rfind(kAbsentUnit)); })
      .add(PEER("QString", [a = make<QString>(text)] { return static_cast<int>(a.lastIndexOf(QChar(kAbsentUnit))); }))
      .add(PEER("UnicodeString", [a = make<UnicodeString>(text)] { return a.lastIndexOf(kAbsentUnit); }));
}

template <class Text, class Accept>
int firstAccepted(Text const& text, Accept accept) {
  auto const found = std::find_if(text.begin(), text.end(), accept);
  return found == text.end() ? -1 : static_cast<int>(found - text.begin());
}

void addFindClass(int size) {
  u16string text = sampleText(size);
  text.back() = KVW('7');
  Row("search: first digit, at the end of " + std::to_string(size))
      .add("KVBase", [a = make<String>(text)] { return a.findDigit(); })
      .add("find_if",
           [text] { return firstAccepted(text, [](wchar unit) { return unit >= KVW('0') && unit <= KVW('9'); }); })
      .add("iswdigit loop", [text] { return firstAccepted(text, [](wchar unit) { return std::iswdigit(unit) != 0; }); })
      .add(PEER("QString",
                [a = make<QString>(text)] { return firstAccepted(a, [](QChar unit) { return unit.isDigit(); }); }))
      .add(PEER("UnicodeString",
                [a = make<UnicodeString>(text)] {
                  std::u16string_view const units(a.getBuffer(), static_cast<std::size_t>(a.length()));
                  return firstAccepted(units, [](wchar unit) { return u_isdigit(unit) != 0; });
                }))
      .add("floor", [a = make<BareText>(text)] { return bareFindDigit(a); });
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
      .add(PEER("boost", [text, from, to] { return boost::algorithm::replace_all_copy(text, from, to); }))
      .add(PEER("QString",
                [a = make<QString>(text), b = make<QString>(from), c = make<QString>(to)] {
                  QString result(a);
                  result.replace(b, c);
                  return result;
                }))
      .add(PEER("UnicodeString",
                [a = make<UnicodeString>(text), b = make<UnicodeString>(from), c = make<UnicodeString>(to)] {
                  UnicodeString result(a);
                  result.findAndReplace(b, c);
                  return result;
                }));
}

void addReplaceTexts() {
  u16string const from = KVW("q1q");
  u16string const piece = sampleText(22) + from;
  addReplaceText("replace: text, 2 matches in 50", piece + piece, from, KVW("other"));
  addReplaceText("replace: text, 200 matches in 5000", repeated(200, piece), from, KVW("other"));
  u16string const absent = KVW("eq");
  addReplaceText("replace: text, no match in 50", sampleText(50), absent, KVW("other"));
  addReplaceText("replace: text, no match in 5000", sampleText(5000), absent, KVW("other"));
}

void addReplaceUnit(int size) {
  u16string const text = sampleText(size);
  Row("replace: unit in " + std::to_string(size))
      .add("KVBase",
           [a = make<String>(text)] {
             String result(a);
             result.replace(KVW('e'), KVW('x'));
             return result;
           })
      .add("u16string",
           [text] {
             u16string result(text);
             std::replace(result.begin(), result.end(), KVW('e'), KVW('x'));
             return result;
           })
      .add(PEER("QString",
                [a = make<QString>(text)] {
                  QString result(a);
                  result.replace(QChar(KVW('e')), QChar(KVW('x')));
                  return result;
                }))
      .add(PEER("UnicodeString",
                [a = make<UnicodeString>(text), from = UnicodeString(KVW('e')), to = UnicodeString(KVW('x'))] {
                  UnicodeString result(a);
                  result.findAndReplace(from, to);
                  return result;
                }));
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
