// SPDX-License-Identifier: MIT
//
// Strings as values: construction, sharing, destruction, comparison, substrings, concatenation.
#include <algorithm>
#include <cwctype>
#include <string>

#include "benchmarks/bare_search.h"
#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

namespace {

constexpr int kSizes[] = {5, 50, 5000};
constexpr wchar kLatinLetters[] = KVW("\u00e4\u00f6\u00fc\u00df\u00e9");

std::string sized(char const* row, int size) {
  return std::string("storage: ") + row + ", " + std::to_string(size);
}

void addConstruction(int size) {
  u16string const text = sampleText(size);
  addTexts(Row(sized("construct + destroy", size)), [&text](auto tag) {
    return [text] { return make<typename decltype(tag)::Type>(text); };
  }).add("make_shared", [text] {
      return std::make_shared<u16string const>(text);
    }).add("floor", [text] { return BareText(text.data(), text.size()); });

  Row(sized("construct from NUL-terminated", size))
      .add("KVBase", [text] { return String(text.c_str()); })
      .add("u16string", [text] { return u16string(text.c_str()); })
      .add(PEER("QString", [text] { return QString::fromUtf16(text.c_str()); }))
      .add(PEER("QString(QChar*)", [text] { return QString(reinterpret_cast<QChar const*>(text.c_str())); }))
      .add(PEER("UnicodeString", [text] { return UnicodeString(text.c_str()); }))
      .add("floor", [text] { return BareText(text.c_str(), std::char_traits<wchar>::length(text.c_str())); });

  int const batch = size <= 50 ? 1000 : 200;
  Row(sized("destroy (batch)", size))
      .addDestruction("KVBase", batch, [text] { return make<String>(text); })
      .addDestruction("u16string", batch, [text] { return make<u16string>(text); })
      .addDestruction(PEER("QString", batch, [text] { return make<QString>(text); }))
      .addDestruction(PEER("UnicodeString", batch, [text] { return make<UnicodeString>(text); }))
      .addDestruction("floor", batch, [text] { return make<BareText>(text); });
}

void addSharing() {
  u16string const text = sampleText(50);
  addTexts(Row("storage: copy + destroy (share)"), [&text](auto tag) {
    using Text = typename decltype(tag)::Type;
    return [text = make<Text>(text)] { return Text(text); };
  }).add("shared_ptr", [text = std::make_shared<u16string const>(text)] {
      return text;
    }).add("floor", [text = make<BareText>(text)] { return text; });
}

// The two texts compared share no storage.
void addEquality(std::string const& name, u16string const& first, u16string const& second) {
  Row row = addTexts(Row(name), [&first, &second](auto tag) {
    using Text = typename decltype(tag)::Type;
    return [a = make<Text>(first), b = make<Text>(second)] { return a == b; };
  });
  if (first.size() < 8) return;
  row.add("floor", [a = make<BareText>(first), b = make<BareText>(second)] { return bareEqual(a, b); });
}

template <class Text>
Order order(Text const& a, Text const& b) {
  return {a.compare(b)};
}

void addOrder(std::string const& name, u16string const& first, u16string const& second) {
  Row row = addTexts(Row(name), [&first, &second](auto tag) {
    using Text = typename decltype(tag)::Type;
    return [a = make<Text>(first), b = make<Text>(second)] { return order(a, b); };
  });
  if (first.size() < 8) return;
  row.add("floor", [a = make<BareText>(first), b = make<BareText>(second)] { return bareOrder(a, b); });
}

u16string differingAt(u16string text, std::size_t index) {
  ++text[index];
  return text;
}

void addComparison(int size) {
  u16string const text = sampleText(size);
  u16string const late = differingAt(text, text.size() - 1);
  addEquality(sized("equality, equal", size), text, text);
  if (size > 5) addEquality(sized("equality, late difference", size), text, late);
  addOrder(sized("compare, equal", size), text, text);
  addOrder(sized("compare, late difference", size), text, late);
}

u16string upperAscii(u16string text) {
  for (wchar& unit : text) {
    if (unit >= KVW('a') && unit <= KVW('z')) unit = static_cast<wchar>(unit - 32);
  }
  return text;
}

Order lowerOrder(u16string const& a, u16string const& b) {
  for (std::size_t i = 0, end = std::min(a.size(), b.size()); i < end; ++i) {
    int const difference = static_cast<int>(std::towlower(a[i])) - static_cast<int>(std::towlower(b[i]));
    if (difference != 0) return {difference};
  }
  return {static_cast<int>(a.size()) - static_cast<int>(b.size())};
}

void addOrderIgnoringCase(std::string const& name, u16string const& text) {
  u16string const other = upperAscii(text);
  Row(name)
      .add("KVBase", [a = make<String>(text), b = make<String>(other)] { return Order{a.compareIgnoreCase(b)}; })
      .add("towlower loop", [a = text, b = other] { return lowerOrder(a, b); })
      .add(PEER("QString", [a = make<QString>(text),
                            b = make<QString>(other)] { return Order{a.compare(b, Qt::CaseInsensitive)}; }))
      .add(PEER("UnicodeString", [a = make<UnicodeString>(text), b = make<UnicodeString>(other)] {
        return Order{a.caseCompare(b, U_FOLD_CASE_DEFAULT)};
      }));
}

void addComparisonsIgnoringCase(int size) {
  u16string text = sampleText(size);
  addOrderIgnoringCase(sized("compareIgnoreCase, ASCII", size), text);
  if (size == 5) return;
  // Every third unit becomes a Latin-1 letter, in the same case in both texts.
  for (std::size_t i = 0; i < text.size(); i += 3) text[i] = kLatinLetters[i % 5];
  addOrderIgnoringCase(sized("compareIgnoreCase, Latin-1", size), text);
}

void addSubstr(int size) {
  u16string const text = sampleText(size);
  int const start = size / 4;
  int const units = size / 2;
  Row(sized("substr, half of", size))
      .add("KVBase", [a = make<String>(text), start, units] { return a.substr(start, start + units); })
      .add("u16string",
           [text, start, units] {
             return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(units));
           })
      .add(PEER("QString", [a = make<QString>(text), start, units] { return a.mid(start, units); }))
      .add(PEER("UnicodeString",
                [a = make<UnicodeString>(text), start, units] { return UnicodeString(a, start, units); }))
      .add("floor", [text, start, units] { return BareText(text.data() + start, static_cast<std::size_t>(units)); });
}

void addWholeSubstr() {
  u16string const text = sampleText(50);
  Row("storage: substr, whole")
      .add("KVBase", [a = make<String>(text)] { return a.substr(0); })
      .add("u16string", [text] { return text.substr(0); })
      .add(PEER("QString", [a = make<QString>(text)] { return a.mid(0); }))
      .add(PEER("UnicodeString", [a = make<UnicodeString>(text)] { return UnicodeString(a, 0); }))
      .add("floor", [a = make<BareText>(text)] { return a; });
}

u16string trimmed(u16string const& text) {
  static constexpr wchar kSpaces[] = KVW(" \t\n\v\f\r");
  std::size_t const start = text.find_first_not_of(kSpaces);
  return start == u16string::npos ? u16string() : text.substr(start, text.find_last_not_of(kSpaces) + 1 - start);
}

bool isAsciiSpace(wchar unit) {
  return unit == KVW(' ') || (unit >= KVW('\t') && unit <= KVW('\r'));
}

BareText bareTrimmed(BareText const& text) {
  wchar const* start = text.text();
  wchar const* end = start + text.size();
  while (start != end && isAsciiSpace(*start)) ++start;
  while (end != start && isAsciiSpace(end[-1])) --end;
  std::size_t const units = static_cast<std::size_t>(end - start);
  return units == text.size() ? text : BareText(start, units);
}

void addTrim(char const* name, u16string const& text) {
  Row(name)
      .add("KVBase", [a = make<String>(text)] { return a.trim(); })
      .add("u16string", [text] { return trimmed(text); })
      .add(PEER("boost", [text] { return boost::algorithm::trim_copy_if(text, isAsciiSpace); }))
      .add(PEER("QString", [a = make<QString>(text)] { return a.trimmed(); }))
      .add(PEER("UnicodeString", [a = make<UnicodeString>(text)] { return UnicodeString(a).trim(); }))
      .add("floor", [a = make<BareText>(text)] { return bareTrimmed(a); });
}

void addStartsAndEnds() {
  u16string const text = sampleText(60);
  u16string const start = text.substr(0, 8);
  u16string const end = text.substr(52);
  u16string const shouted = upperAscii(end);
  Row("storage: startsWith, 8 of 60")
      .add("KVBase", [a = make<String>(text), b = make<String>(start)] { return a.startsWith(b); })
      .add("u16string", [text, start] { return text.compare(0, start.size(), start) == 0; })
      .add(PEER("QString", [a = make<QString>(text), b = make<QString>(start)] { return a.startsWith(b); }))
      .add(PEER("UnicodeString",
                [a = make<UnicodeString>(text), b = make<UnicodeString>(start)] { return a.startsWith(b) != 0; }));
  Row("storage: endsWith, 8 of 60")
      .add("KVBase", [a = make<String>(text), b = make<String>(end)] { return a.endsWith(b); })
      .add("u16string", [text, end] { return text.compare(text.size() - end.size(), end.size(), end) == 0; })
      .add(PEER("QString", [a = make<QString>(text), b = make<QString>(end)] { return a.endsWith(b); }))
      .add(PEER("UnicodeString",
                [a = make<UnicodeString>(text), b = make<UnicodeString>(end)] { return a.endsWith(b) != 0; }));
  Row("storage: endsWith ignoring case, 8 of 60")
      .add("KVBase", [a = make<String>(text), b = make<String>(shouted)] { return a.endsWith(b, true); })
      .add("towlower loop",
           [text, shouted] { return lowerOrder(text.substr(text.size() - shouted.size()), shouted).value == 0; })
      .add(PEER("QString",
                [a = make<QString>(text), b = make<QString>(shouted)] { return a.endsWith(b, Qt::CaseInsensitive); }))
      .add(PEER("UnicodeString", [a = make<UnicodeString>(text), b = make<UnicodeString>(shouted)] {
        return a.caseCompare(a.length() - b.length(), b.length(), b, U_FOLD_CASE_DEFAULT) == 0;
      }));
}

// The sum in a block of exactly the needed size.
u16string appended(u16string const& text, wchar unit) {
  u16string result;
  result.reserve(text.size() + 1);
  result = text;
  result += unit;
  return result;
}

void addAppend() {
  u16string const text = sampleText(100);
  Row("storage: append a unit to 100, new block")
      .add("KVBase", [a = make<String>(text)] { return a + KVW('x'); })
      .add("u16string exact", [text] { return appended(text, KVW('x')); })
      .add("u16string", [text] { return text + KVW('x'); })
      .add(PEER("QString", [a = make<QString>(text)] { return QString(a + QChar(KVW('x'))); }))
      .add(PEER("UnicodeString", [a = make<UnicodeString>(text)] { return a + KVW('x'); }))
      .add("floor", [text] { return BareText(text.data(), text.size(), KVW("x"), 1); });
  // The receiver still holds the previous result, whose block is freed.
  Row("storage: append a unit to 100, receiver replaced")
      .add("KVBase", [a = make<String>(text), r = String()]() mutable { return (r = a + KVW('x')).length(); })
      .add("u16string exact",
           [text, r = u16string()]() mutable {
             r = appended(text, KVW('x'));
             return static_cast<int>(r.size());
           })
      .add(PEER("QString",
                [a = make<QString>(text), r = QString()]() mutable {
                  r = a + QChar(KVW('x'));
                  return static_cast<int>(r.size());
                }))
      .add(PEER("UnicodeString", [a = make<UnicodeString>(text), r = UnicodeString()]() mutable {
        r = a + KVW('x');
        return r.length();
      }));
}

void addConcatenation() {
  u16string const first = sampleText(50);
  u16string const second = sampleText(50, 2);
  addTexts(Row("storage: a + b, 50 + 50"), [&first, &second](auto tag) {
    using Text = typename decltype(tag)::Type;
    return [a = make<Text>(first), b = make<Text>(second)] { return Text(a + b); };
  }).add("floor", [first, second] { return BareText(first.data(), first.size(), second.data(), second.size()); });
}

}  // namespace

void addStringStorage() {
  for (int size : kSizes) addConstruction(size);
  addSharing();
  addEquality("storage: equality, other length", sampleText(50), sampleText(50) + KVW("x"));
  addEquality("storage: equality, early difference", sampleText(50), differingAt(sampleText(50), 0));
  for (int size : kSizes) addComparison(size);
  for (int size : kSizes) addComparisonsIgnoringCase(size);
  addSubstr(100);
  addSubstr(5000);
  addWholeSubstr();
  addTrim("storage: trim, 3 + 3 of 50", KVW("   ") + sampleText(44) + KVW("   "));
  addTrim("storage: trim, nothing to cut", sampleText(50));
  addStartsAndEnds();
  addAppend();
  addConcatenation();
}

}  // namespace bench
}  // namespace KV_1_1
