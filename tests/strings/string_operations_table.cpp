// SPDX-License-Identifier: MIT
#include "tests/strings/string_operations.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <streambuf>
#include <utility>

#include "kvbase/modules/module.h"
#include "tests/strings/string_support.h"

namespace KV_1_1 {
namespace testing {

namespace {

String const& argument() {
  static String const text(KVW("b"));
  return text;
}

String const& asConst(String const& string) {
  return string;
}

// Of an operation without result.
Answer const kNothing;

template <class Value>
Answer add(String& receiver, Value const& value) {
  receiver += value;
  return kNothing;
}

template <class Value>
Answer taken(String& receiver) {
  Value value = Value(1);
  receiver >> value;
  return static_cast<int>(value);
}

// A stream buffer that needs no memory.
class FixedBuffer final : public std::streambuf {
 public:
  FixedBuffer() { setp(chars_, chars_ + sizeof chars_); }

 private:
  char chars_[64];
};

// The width that the output leaves.
Answer outputOf(String const& text) {
  FixedBuffer buffer;
  std::ostream stream(&buffer);
  stream.width(4);
  stream << text;
  return static_cast<int>(stream.width());
}

Answer token(String& receiver) {
  String target(KVW("old"));
  receiver >> target;
  return target;
}

// What it gives for each of NIL, EMPTY and an empty text of its own, where that differs.
constexpr StringOperation::Outcomes each(char const* nil, char const* empty, char const* own) {
  return {nil, empty, own};
}

constexpr auto kKeeps = StringOperation::kKeeps;
constexpr auto kChanges = StringOperation::kChanges;
constexpr int kFatal = StringOperation::kFatal;

StringOperation const kOperations[] = {
    // Building and assigning.
    {"String::String()", kChanges, [](String& s) -> Answer { return s = String(), kNothing; },
     each("", "; NIL", "; NIL")},
    {"String::String(String const&)", kKeeps, [](String& s) -> Answer { return String(s); },
     each("NIL", "EMPTY", "same")},
    {"String::String(String&&)", kChanges, [](String& s) -> Answer { return String(std::move(s)); },
     each("NIL", "EMPTY; NIL", "same; NIL")},
    {"String::String(wchar const*)", kChanges, [](String& s) -> Answer { return s = String(KVW("text")), kNothing; },
     "; \"text\"", 1},
    {"String::String(wchar const*, int)", kChanges,
     [](String& s) -> Answer { return s = String(KVW("text"), 2), kNothing; }, "; \"te\"", 1},
    {"String::String(wchar, int)", kChanges, [](String& s) -> Answer { return s = String(KVW('x'), 3), kNothing; },
     "; \"xxx\"", 1},
    {"String::String(CodePageInterface): UTF-8", kChanges,
     [](String& s) -> Answer { return s = String(UTF8Interface("text")), kNothing; }, "; \"text\"", 1},
    {"String::String(CodePageInterface): 1252", kChanges,
     [](String& s) -> Answer { return s = String(CodePageInterface("text", 1252)), kNothing; }, "; \"text\"", 1},
    {"String::operator=(String const&)", kChanges, [](String& s) -> Answer { return s = argument(); }, "\"b\"; \"b\""},
    {"String::operator=(String&&)", kChanges, [](String& s) -> Answer { return s = String(KVW("x")); }, "\"x\"; \"x\"",
     1},
    // Units and narrow text.
    {"String::operator[](int)", kChanges, [](String& s) -> Answer { return s[0]; }, each("7", "0; \"\"", "0"), 1},
    {"String::length()", kKeeps, [](String& s) -> Answer { return s.length(); }, "0"},
    {"String::operator wchar const*()", kKeeps, [](String& s) -> Answer { return *static_cast<wchar const*>(s); }, "0"},
    {"String::stringAnsi()", kKeeps, [](String& s) -> Answer { return s.stringAnsi(); }, each("null", "\"\"", "\"\""),
     1},
    {"String::stringUTF8()", kKeeps, [](String& s) -> Answer { return s.stringUTF8(); }, each("null", "\"\"", "\"\""),
     1},
    {"String::stringUTF8(): after stringAnsi", kKeeps,
     [](String& s) -> Answer { return s.stringAnsi(), s.stringUTF8(); }, each("null", "\"\"", "\"\""), 2},
    {"String::stringPath()", kKeeps, [](String& s) -> Answer { return s.stringPath() == static_cast<wchar const*>(s); },
     "true"},
    {"String::buffer(int, bool): no array", kKeeps, [](String& s) -> Answer { return s.buffer(10, false), kNothing; },
     ""},
    {"String::write(wchar const*, int)", kChanges,
     [](String& s) -> Answer { return s.write(KVW("more"), -1), kNothing; }, "; \"more\"", 1},
    {"String::write(wchar const*, int): an empty text", kChanges,
     [](String& s) -> Answer { return s.write(KVW(""), 0), kNothing; }, "; \"\"", 1},
    {"String::write(wchar const*, int): null", kKeeps, [](String& s) -> Answer { return s.write(kNull, 0), kNothing; },
     ""},
    // Comparison. On a String that may change, the forms that take a String merge equal texts.
    {"String::compare(String const&)", kKeeps, [](String& s) -> Answer { return asConst(s).compare(argument()); },
     "-1"},
    {"String::compare(String const&): with NIL", kKeeps,
     [](String& s) -> Answer { return asConst(s).compare(String::NIL); }, each("0", "1", "1")},
    {"String::compare(String const&): with EMPTY", kKeeps,
     [](String& s) -> Answer { return asConst(s).compare(String::EMPTY); }, each("-1", "0", "0")},
    {"String::compare(String const&): merging", kChanges, [](String& s) -> Answer { return s.compare(argument()); },
     "-1", 0, KVW("b")},
    {"String::compare(String const&): merging with EMPTY", kChanges,
     [](String& s) -> Answer { return s.compare(String::EMPTY); }, each("-1", "0", "0; EMPTY"), 0, KVW("")},
    {"String::compare(wchar const*)", kKeeps, [](String& s) -> Answer { return asConst(s).compare(KVW("b")); }, "-1"},
    {"String::compare(wchar const*): with null", kKeeps, [](String& s) -> Answer { return s.compare(kNull); },
     each("0", "1", "1")},
    {"String::compare(wchar const*): with an empty text", kKeeps,
     [](String& s) -> Answer { return s.compare(KVW("")); }, each("-1", "0", "0")},
    {"String::compare(wchar)", kKeeps, [](String& s) -> Answer { return s.compare(KVW('a')); }, "-1"},
    {"String::compare(wchar): with NUL", kKeeps, [](String& s) -> Answer { return s.compare(wchar(0)); },
     each("-1", "0", "0")},
    {"String::compareEquality(String const&)", kKeeps,
     [](String& s) -> Answer { return asConst(s).compareEquality(argument()); }, "false", 0, KVW("b")},
    {"String::compareEquality(String const&): with NIL", kKeeps,
     [](String& s) -> Answer { return asConst(s).compareEquality(String::NIL); }, each("true", "false", "false")},
    {"String::compareEquality(String const&): merging", kChanges,
     [](String& s) -> Answer { return s.compareEquality(argument()); }, "false", 0, KVW("b")},
    {"String::compareEquality(String const&): merging with EMPTY", kChanges,
     [](String& s) -> Answer { return s.compareEquality(String::EMPTY); }, each("false", "true", "true; EMPTY"), 0,
     KVW("")},
    {"String::compareIgnoreCase(String const&)", kKeeps,
     [](String& s) -> Answer { return signOf(s.compareIgnoreCase(argument())); }, "-1"},
    {"String::compareIgnoreCase(String const&): with NIL", kKeeps,
     [](String& s) -> Answer { return signOf(s.compareIgnoreCase(String::NIL)); }, each("0", "1", "1")},
    {"String::compareIgnoreCase(String const&): with EMPTY", kKeeps,
     [](String& s) -> Answer { return signOf(s.compareIgnoreCase(String::EMPTY)); }, each("-1", "0", "0")},
    {"String::compareIgnoreCase(wchar const*)", kKeeps,
     [](String& s) -> Answer { return signOf(s.compareIgnoreCase(KVW("A"))); }, "-1"},
    {"String::compareIgnoreCase(wchar const*): with null", kKeeps,
     [](String& s) -> Answer { return signOf(s.compareIgnoreCase(kNull)); }, each("0", "1", "1")},
    {"String::compareIgnoreCase(wchar)", kKeeps,
     [](String& s) -> Answer { return signOf(s.compareIgnoreCase(KVW('A'))); }, "-1"},
    {"String::compareIgnoreCase(wchar): with NUL", kKeeps,
     [](String& s) -> Answer { return signOf(s.compareIgnoreCase(wchar(0))); }, each("-1", "0", "0")},
    {"operator<(String, String)", kKeeps, [](String& s) -> Answer { return s < argument(); }, "true"},
    {"operator==(String, String)", kKeeps, [](String& s) -> Answer { return s == argument(); }, "false"},
    {"operator==(String, text): null", kKeeps, [](String& s) -> Answer { return s == kNull; },
     each("true", "false", "false")},
    // Cutting and testing.
    {"String::substr(int, int)", kKeeps, [](String& s) -> Answer { return s.substr(0, -1); }, "EMPTY"},
    {"String::substr(int, int): a part", kKeeps, [](String& s) -> Answer { return s.substr(1, 3); }, "EMPTY", 1},
    {"String::trim(bool, bool)", kKeeps, [](String& s) -> Answer { return s.trim(true, true); },
     each("NIL", "EMPTY", "same"), 1},
    {"String::startsWith(String const&)", kKeeps, [](String& s) -> Answer { return s.startsWith(argument()); },
     "false"},
    {"String::startsWith(String const&): EMPTY", kKeeps,
     [](String& s) -> Answer { return s.startsWith(String::EMPTY); }, "true"},
    {"String::startsWith(String const&): NIL", kKeeps, [](String& s) -> Answer { return s.startsWith(String::NIL); },
     "true"},
    {"String::endsWith(String const&)", kKeeps, [](String& s) -> Answer { return s.endsWith(argument()); }, "false"},
    {"String::endsWith(String const&): EMPTY", kKeeps, [](String& s) -> Answer { return s.endsWith(String::EMPTY); },
     "false"},
    {"String::endsWith(String const&, bool)", kKeeps, [](String& s) -> Answer { return s.endsWith(argument(), true); },
     "false"},
    {"String::endsWith(String const&, bool): NIL", kKeeps,
     [](String& s) -> Answer { return s.endsWith(String::NIL, true); }, "false"},
    // Search.
    {"String::find(wchar const*, int)", kKeeps, [](String& s) -> Answer { return s.find(KVW("b"), 0); }, "-1"},
    {"String::find(wchar const*, int): an empty text", kKeeps, [](String& s) -> Answer { return s.find(KVW(""), 0); },
     "-1"},
    {"String::find(wchar const*, int): null", kKeeps, [](String& s) -> Answer { return s.find(kNull, 0); }, "-1"},
    {"String::find(wchar, int)", kKeeps, [](String& s) -> Answer { return s.find(KVW('b'), 0); }, "-1"},
    {"String::find(wchar, int): NUL", kKeeps, [](String& s) -> Answer { return s.find(wchar(0), 0); }, "-1"},
    {"String::findLastOf(wchar const*)", kKeeps, [](String& s) -> Answer { return s.findLastOf(KVW("b")); },
     each(nullptr, "-1", "-1")},
    {"String::findLastOf(wchar, int)", kKeeps, [](String& s) -> Answer { return s.findLastOf(KVW('b'), 0); }, "-1"},
    {"String::findLastOf(wchar, int): NUL", kKeeps, [](String& s) -> Answer { return s.findLastOf(wchar(0), 0); },
     "-1"},
    {"String::findAlpha(int)", kKeeps, [](String& s) -> Answer { return s.findAlpha(0); }, "-1"},
    {"String::findNonAlpha(int)", kKeeps, [](String& s) -> Answer { return s.findNonAlpha(0); }, "-1"},
    {"String::findAlphaNum(int)", kKeeps, [](String& s) -> Answer { return s.findAlphaNum(0); }, "-1"},
    {"String::findNonAlphaNum(int)", kKeeps, [](String& s) -> Answer { return s.findNonAlphaNum(0); }, "-1"},
    {"String::findDigit(int, wchar)", kKeeps, [](String& s) -> Answer { return s.findDigit(0, KVW('1')); }, "-1"},
    {"String::findNonDigit(int)", kKeeps, [](String& s) -> Answer { return s.findNonDigit(0); }, "-1"},
    {"String::findSignedDigit(int)", kKeeps, [](String& s) -> Answer { return s.findSignedDigit(0); }, "-1"},
    {"String::findNonSignedDigit(int)", kKeeps, [](String& s) -> Answer { return s.findNonSignedDigit(0); }, "-1"},
    {"String::findNumeric(int)", kKeeps, [](String& s) -> Answer { return s.findNumeric(0); }, "-1"},
    {"String::findWS(int)", kKeeps, [](String& s) -> Answer { return s.findWS(0); }, "-1"},
    {"String::findNonWS(int)", kKeeps, [](String& s) -> Answer { return s.findNonWS(0); }, "-1"},
    // Replacement.
    {"String::replace(wchar, wchar)", kChanges, [](String& s) -> Answer { return s.replace(KVW('b'), KVW('x')); }, "0",
     1},
    {"String::replace(wchar const*, wchar const*)", kChanges,
     [](String& s) -> Answer { return s.replace(KVW("b"), KVW("xyz")); }, each("0; EMPTY", "0", "0; EMPTY"), 1},
    {"String::replace(wchar const*, wchar const*): of an empty text", kKeeps,
     [](String& s) -> Answer { return s.replace(KVW(""), KVW("x")); }, "0"},
    {"String::replace(wchar const*, wchar const*): of null", kKeeps,
     [](String& s) -> Answer { return s.replace(kNull, KVW("x")); }, "0"},
    {"String::replace(wchar const*, wchar const*): that deletes", kChanges,
     [](String& s) -> Answer { return s.replace(KVW("b"), kNull); }, each("0; EMPTY", "0", "0; EMPTY"), 0, KVW("b")},
    {"String::replace(String const&, String const&)", kChanges,
     [](String& s) -> Answer { return s.replace(argument(), String::NIL); }, each("0; EMPTY", "0", "0; EMPTY"), 1},
    {"String::replace(String const&, wchar const*)", kChanges,
     [](String& s) -> Answer { return s.replace(argument(), KVW("xyz")); }, each("0; EMPTY", "0", "0; EMPTY"), 1},
    {"String::replace(wchar const*, String const&)", kChanges,
     [](String& s) -> Answer { return s.replace(KVW(" "), argument()); }, each("0; EMPTY", "0", "0; EMPTY"), 1},
    // Values as text.
    {"String::operator+=(signed char)", kChanges,
     [](String& s) -> Answer { return add(s, static_cast<signed char>(5)); }, "; \"5\"", 1},
    {"String::operator+=(unsigned char)", kChanges,
     [](String& s) -> Answer { return add(s, static_cast<unsigned char>(5)); }, "; \"5\"", 1},
    {"String::operator+=(short)", kChanges, [](String& s) -> Answer { return add(s, static_cast<short>(5)); },
     "; \"5\"", 1},
    {"String::operator+=(unsigned short)", kChanges,
     [](String& s) -> Answer { return add(s, static_cast<unsigned short>(5)); }, "; \"5\"", 1},
    {"String::operator+=(int)", kChanges, [](String& s) -> Answer { return add(s, static_cast<int>(5)); }, "; \"5\"",
     1},
    {"String::operator+=(unsigned int)", kChanges,
     [](String& s) -> Answer { return add(s, static_cast<unsigned int>(5)); }, "; \"5\"", 1},
    {"String::operator+=(long)", kChanges, [](String& s) -> Answer { return add(s, static_cast<long>(5)); }, "; \"5\"",
     1},
    {"String::operator+=(unsigned long)", kChanges,
     [](String& s) -> Answer { return add(s, static_cast<unsigned long>(5)); }, "; \"5\"", 1},
    {"String::operator+=(long long)", kChanges, [](String& s) -> Answer { return add(s, static_cast<long long>(5)); },
     "; \"5\"", 1},
    {"String::operator+=(unsigned long long)", kChanges,
     [](String& s) -> Answer { return add(s, static_cast<unsigned long long>(5)); }, "; \"5\"", 1},
    {"String::operator+=(bool)", kChanges, [](String& s) -> Answer { return add(s, true); }, "; \"true\"", 1},
    {"String::operator+=(wchar)", kChanges, [](String& s) -> Answer { return add(s, KVW('x')); }, "; \"x\"", 1},
    {"String::operator+=(wchar): NUL", kChanges, [](String& s) -> Answer { return add(s, wchar(0)); }, "; \"\"", 1},
    {"String::operator+=(wchar const*)", kChanges, [](String& s) -> Answer { return add(s, KVW("more")); },
     "; \"more\"", 1},
    {"String::operator+=(wchar const*): an empty text", kChanges, [](String& s) -> Answer { return add(s, KVW("")); },
     "; \"\"", 1},
    {"String::operator+=(wchar const*): null", kKeeps, [](String& s) -> Answer { return add(s, kNull); }, ""},
    {"String::operator+=(String const&)", kChanges, [](String& s) -> Answer { return add(s, argument()); }, "; \"b\"",
     1},
    {"String::operator+=(String const&): NIL", kKeeps, [](String& s) -> Answer { return add(s, String::NIL); }, ""},
    {"String::operator+=(String const&): EMPTY", kChanges, [](String& s) -> Answer { return add(s, String::EMPTY); },
     each("; EMPTY", "; \"\"", "; \"\""), 1},
    {"String::operator+=(float)", kChanges, [](String& s) -> Answer { return add(s, 2.5f); }, "; \"2.5\"", 1},
    {"String::operator+=(double)", kChanges, [](String& s) -> Answer { return add(s, 2.5); }, "; \"2.5\"", 1},
    {"String::operator<<(T const&)", kChanges, [](String& s) -> Answer { return s << 5, kNothing; }, "; \"5\"", 1},
    {"operator+(String, String)", kKeeps, [](String& s) -> Answer { return s + argument(); }, "\"b\"", 1},
    {"operator+(String, String): NIL behind", kKeeps, [](String& s) -> Answer { return s + String::NIL; },
     each("NIL", "EMPTY", "same")},
    {"operator+(String, String): NIL in front", kKeeps, [](String& s) -> Answer { return String::NIL + s; },
     each("NIL", "EMPTY", "same")},
    {"operator+(String, text)", kKeeps, [](String& s) -> Answer { return s + KVW("more"); }, "\"more\"", 1},
    {"operator+(String, text): null", kKeeps, [](String& s) -> Answer { return s + kNull; },
     each("NIL", "EMPTY", "same")},
    {"operator+(text, String)", kKeeps, [](String& s) -> Answer { return KVW("more") + s; }, "\"more\"", 1},
    {"operator+(text, String): null", kKeeps, [](String& s) -> Answer { return kNull + s; },
     each("NIL", "EMPTY", "same")},
    {"operator+(text, String): an empty text", kKeeps, [](String& s) -> Answer { return KVW("") + s; }, "\"\"", 1},
    {"operator+(String, unit)", kKeeps, [](String& s) -> Answer { return s + KVW('x'); }, "\"x\"", 1},
    {"operator+(String, unit): NUL", kKeeps, [](String& s) -> Answer { return s + wchar(0); }, "\"\"", 1},
    {"operator+(unit, String)", kKeeps, [](String& s) -> Answer { return KVW('x') + s; }, "\"x\"", 1},
    {"operator+(unit, String): NUL", kKeeps, [](String& s) -> Answer { return wchar(0) + s; }, "\"\"", 1},
    // The number at the end.
    {"String::getIndex()", kKeeps, [](String& s) -> Answer { return static_cast<int>(s.getIndex()); }, "0"},
    {"String::setIndex(unsigned int)", kChanges, [](String& s) -> Answer { return s.setIndex(77), kNothing; },
     "; \"77\"", 3, KVW("scan012")},
    {"String::setIndex(unsigned int): 0", kChanges, [](String& s) -> Answer { return s.setIndex(0), kNothing; },
     "; \"0\"", 2, KVW("scan012")},
    {"String::setIndex(unsigned int): digits only", kChanges,
     [](String& s) -> Answer { return s.setIndex(5), kNothing; }, "; \"5\"", 2, KVW("012")},
    {"String::incrementIndex()", kChanges, [](String& s) -> Answer { return s.incrementIndex(), kNothing; }, "; \"1\"",
     1, KVW("file009")},
    {"String::incrementIndex(): wider", kChanges, [](String& s) -> Answer { return s.incrementIndex(), kNothing; },
     "; \"1\"", 1, KVW("file99")},
    {"String::decrementIndex()", kChanges, [](String& s) -> Answer { return s.decrementIndex(), kNothing; }, "; \"1\"",
     1, KVW("file10")},
    {"String::decrementIndex(): wider", kChanges, [](String& s) -> Answer { return s.decrementIndex(), kNothing; },
     "; \"1\"", 1, KVW("file0")},
    // Values from text.
    {"String::eatwhite()", kChanges, [](String& s) -> Answer { return s.eatwhite(), kNothing; }, "", 1},
    {"String::operator>>(signed char&)", kChanges, [](String& s) -> Answer { return taken<signed char>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 1, KVW("  12 34")},
    {"String::operator>>(short&)", kChanges, [](String& s) -> Answer { return taken<short>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 1, KVW("  12 34")},
    {"String::operator>>(unsigned short&)", kChanges, [](String& s) -> Answer { return taken<unsigned short>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 1, KVW("  12 34")},
    {"String::operator>>(int&)", kChanges, [](String& s) -> Answer { return taken<int>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 1, KVW("  12 34")},
    {"String::operator>>(long&)", kChanges, [](String& s) -> Answer { return taken<long>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 1, KVW("  12 34")},
    {"String::operator>>(long long&)", kChanges, [](String& s) -> Answer { return taken<long long>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 1, KVW("  12 34")},
    {"String::operator>>(unsigned char&)", kChanges, [](String& s) -> Answer { return taken<unsigned char>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 1, KVW("  12 34")},
    {"String::operator>>(unsigned int&)", kChanges, [](String& s) -> Answer { return taken<unsigned int>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 1, KVW("  12 34")},
    {"String::operator>>(unsigned long&)", kChanges, [](String& s) -> Answer { return taken<unsigned long>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 1, KVW("  12 34")},
    {"String::operator>>(unsigned long long&)", kChanges,
     [](String& s) -> Answer { return taken<unsigned long long>(s); }, each("0; EMPTY", "0", "0; EMPTY"), 1,
     KVW("  12 34")},
    {"String::operator>>(double&)", kChanges, [](String& s) -> Answer { return taken<double>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 1, KVW(" 1.25 34")},
    {"String::operator>>(double&): many digits", kChanges, [](String& s) -> Answer { return taken<double>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 2,
     KVW("3.14159265358979323846264338327950288419716939937510582097494459230781640628620899862803482534211706"
         "79821480865132823066470938446095505822317253594081284811174502841 x")},
    {"String::operator>>(float&)", kChanges, [](String& s) -> Answer { return taken<float>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 1, KVW(" 1.25 34")},
    {"String::operator>>(bool&)", kChanges, [](String& s) -> Answer { return taken<bool>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 2, KVW(" true x")},
    {"String::operator>>(bool&): a number", kChanges, [](String& s) -> Answer { return taken<bool>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 2, KVW(" 12 x")},
    {"String::operator>>(bool&): neither", kChanges, [](String& s) -> Answer { return taken<bool>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 1, KVW(" maybe")},
    {"String::operator>>(wchar&)", kChanges, [](String& s) -> Answer { return taken<wchar>(s); },
     each("0; EMPTY", "0", "0; EMPTY"), 2, KVW(" xy")},
    {"String::operator>>(String&): a line", kChanges, [](String& s) -> Answer { return token(s); },
     each("NIL; EMPTY", "\"\"", "same; EMPTY"), 4, KVW("one\ntwo")},
    {"String::operator>>(String&): quoted", kChanges, [](String& s) -> Answer { return token(s); },
     each("NIL; EMPTY", "\"\"", "same; EMPTY"), 4, KVW("\"a b\" c")},
    {"String::operator>>(String&): unterminated", kChanges, [](String& s) -> Answer { return token(s); },
     each("NIL; EMPTY", "\"\"", "same; EMPTY"), 3, KVW("\"a b")},
    // Escapes, display, printf, buffers, streams.
    {"String::controlsToEsc(bool)", kChanges, [](String& s) -> Answer { return s.controlsToEsc(true), kNothing; }, "",
     1, KVW("a\n\"\u20AC")},
    {"String::controlsToEsc(bool): without unicode", kChanges,
     [](String& s) -> Answer { return s.controlsToEsc(false), kNothing; }, "", 1, KVW("abcdefg\u20AC")},
    {"String::escToControls(bool)", kChanges, [](String& s) -> Answer { return s.escToControls(true); }, "-1", 1,
     KVW("a\\n\\u20AC")},
    {"String::escToControls(bool): bad at once", kChanges, [](String& s) -> Answer { return s.escToControls(true); },
     "-1", 1, KVW("\\q")},
    {"String::escToControls(bool): put back", kChanges, [](String& s) -> Answer { return s.escToControls(true); }, "-1",
     1, KVW("a\\n\\u20AC\\\"b\\q")},
    {"String::escToControls(bool): a long text put back", kChanges,
     [](String& s) -> Answer { return s.escToControls(true); }, "-1", 1,
     KVW("\\n12345678901234567890123456789012345678901234567890123456789012345678901234567890\\\"\\u00E9\\u12")},
    {"String::shortenString(int, int)", kKeeps, [](String& s) -> Answer { return s.shortenString(30, 10); },
     each("NIL", "EMPTY", "same"), 1, KVW("C:/data/projects/2020/march/scans/scan0001.dat")},
    {"String::shortenString(int, int): a negative limit", kKeeps,
     [](String& s) -> Answer { return s.shortenString(-1, 0); }, "\"...\"", 1},
    {"String::printf(wchar const*, Arguments const&...): nothing", kChanges,
     [](String& s) -> Answer { return s.printf(KVW("")), kNothing; }, "; \"\"", kFatal},
    {"String::printf(wchar const*, Arguments const&...): itself", kChanges,
     [](String& s) -> Answer { return s.printf(KVW("<%ls>"), s), kNothing; }, "; \"<>\"", kFatal},
    {"String::buffer(int, bool)", kChanges,
     [](String& s) -> Answer { return std::fill_n(static_cast<wchar*>(s.buffer(3, false)), 3, KVW('x')), kNothing; },
     "; \"xxx\"", kFatal},
    {"String::buffer(int, bool): narrow", kChanges,
     [](String& s) -> Answer { return std::fill_n(static_cast<char*>(s.buffer(3, false)), 3, 'x'), kNothing; },
     "; \"xxx\"", kFatal},
    {"String::buffer(int, bool): keep", kChanges,
     [](String& s) -> Answer { return static_cast<void>(static_cast<wchar*>(s.buffer(2, true))), kNothing; },
     each(nullptr, "; \"\"", "; \"\""), kFatal},
    {"String::loadFromResource(unsigned int, Module const&)", kKeeps,
     [](String&) -> Answer { return String::loadFromResource(0xFFFF, *Module::begin()); },
     "\"Error loading string resource!\"", 1},
    {"operator<<(std::ostream, String)", kKeeps, [](String& s) -> Answer { return outputOf(s); }, "4", 1},
};

}  // namespace

std::vector<StringOperation> const& stringOperations() {
  static std::vector<StringOperation> const rows(std::begin(kOperations), std::end(kOperations));
  return rows;
}

std::string shown(Answer const& answer, wchar const* payload) {
  struct Show {
    wchar const* payload;
    std::string operator()(std::monostate) const { return ""; }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(int value) const { return std::to_string(value); }
    std::string operator()(wchar unit) const { return std::to_string(int(unit)); }
    std::string operator()(char const* text) const { return text != nullptr ? '"' + std::string(text) + '"' : "null"; }
    std::string operator()(String const& text) const {
      return static_cast<wchar const*>(text) == payload ? "same" : state(text);
    }
  };
  return std::visit(Show{payload}, answer);
}

}  // namespace testing
}  // namespace KV_1_1
