// SPDX-License-Identifier: MIT
//
// What every operation makes of a receiver without text: NIL, the EMPTY payload, and an empty text of its own. One row
// for each operation; a new operation gets a row here.
#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>

#include "tests/strings/string_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

// The answer of an operation without result.
std::string const kNothing;

std::string show(int value) {
  return std::to_string(value);
}
std::string show(bool value) {
  return value ? "true" : "false";
}
std::string show(char const* text) {
  return text != nullptr ? '"' + std::string(text) + '"' : "null";
}
std::string signOf(int value) {
  return show((value > 0) - (value < 0));
}

template <class Value>
std::string extracted(String& receiver) {
  Value value = Value(1);
  receiver >> value;
  return value == Value(0) ? "0" : "not 0";
}

template <class Value>
std::string appended(String& receiver, Value const& value) {
  receiver += value;
  return kNothing;
}

struct Operation {
  char const* name;
  // What the operation answers; its effect on the receiver is looked at afterwards.
  std::string (*run)(String& receiver);
  // "answer" or "answer; new state of the receiver". A receiver with an empty text of its own that keeps its payload,
  // or an answer that shares it, shows as "same".
  char const* nil;
  char const* empty;
  char const* own;
};

// The state of a String with "same" for the given payload.
std::string stateBeside(String const& string, wchar const* payload) {
  return static_cast<wchar const*>(string) == payload ? "same" : state(string);
}

wchar const* ownPayload = nullptr;

std::string show(String const& result) {
  return stateBeside(result, ownPayload);
}

wchar const* const kNull = nullptr;

Operation const kOperations[] = {
    // Value operations.
    {"length", [](String& s) { return show(s.length()); }, "0", "0", "0"},
    {"copy", [](String& s) { return show(String(s)); }, "NIL", "EMPTY", "same"},
    {"assignment of a text", [](String& s) { return show(s = String(KVW("x"))); }, "\"x\"; \"x\"", "\"x\"; \"x\"",
     "\"x\"; \"x\""},
    {"compare with NIL", [](String& s) { return show(s.compare(kNull)); }, "0", "1", "1"},
    {"const compare with NIL", [](String& s) { return show(const_cast<String const&>(s).compare(String::NIL)); },
     "0", "1", "1"},
    {"compare with EMPTY", [](String& s) { return show(const_cast<String const&>(s).compare(String::EMPTY)); },
     "-1", "0", "0"},
    {"merging compare with EMPTY", [](String& s) { return show(s.compare(String::EMPTY)); }, "-1", "0", "0; EMPTY"},
    {"compare with a text", [](String& s) { return show(s.compare(String(KVW("a")))); }, "-1", "-1", "-1"},
    {"compare with an empty text", [](String& s) { return show(s.compare(KVW(""))); }, "-1", "0", "0"},
    {"compare with a unit", [](String& s) { return show(s.compare(KVW('a'))); }, "-1", "-1", "-1"},
    {"compare with NUL", [](String& s) { return show(s.compare(wchar(0))); }, "-1", "0", "0"},
    {"compareIgnoreCase with NIL", [](String& s) { return signOf(s.compareIgnoreCase(String::NIL)); }, "0", "1", "1"},
    {"compareIgnoreCase with null", [](String& s) { return signOf(s.compareIgnoreCase(kNull)); }, "0", "1", "1"},
    {"compareIgnoreCase with EMPTY", [](String& s) { return signOf(s.compareIgnoreCase(String::EMPTY)); },
     "-1", "0", "0"},
    {"compareIgnoreCase with a text", [](String& s) { return signOf(s.compareIgnoreCase(KVW("A"))); },
     "-1", "-1", "-1"},
    {"compareIgnoreCase with NUL", [](String& s) { return signOf(s.compareIgnoreCase(wchar(0))); }, "-1", "0", "0"},
    {"const compareEquality with NIL",
     [](String& s) { return show(const_cast<String const&>(s).compareEquality(String::NIL)); },
     "true", "false", "false"},
    {"merging compareEquality with EMPTY", [](String& s) { return show(s.compareEquality(String::EMPTY)); }, "false",
     "true", "true; EMPTY"},
    {"merging compareEquality with a text", [](String& s) { return show(s.compareEquality(String(KVW("a")))); },
     "false", "false", "false"},
    {"operator[]", [](String& s) { return show(&s[0] == &String::outOfRange); }, "true", "false; \"\"", "false"},
    {"operator[] value", [](String& s) { return show(int(s[0])); }, "7", "0; \"\"", "0"},
    {"write", [](String& s) { return s.write(KVW("x"), -1), kNothing; }, "; \"x\"", "; \"x\"", "; \"x\""},
    {"write of an empty text", [](String& s) { return s.write(KVW(""), 0), kNothing; }, "; \"\"", "; \"\"", "; \"\""},
    {"write of null", [](String& s) { return s.write(nullptr, 0), kNothing; }, "", "", ""},
    {"operator+ of a text", [](String& s) { return show(s + KVW("x")); }, "\"x\"", "\"x\"", "\"x\""},
    {"operator+ of NIL", [](String& s) { return show(s + String::NIL); }, "NIL", "EMPTY", "same"},
    {"operator+ of NUL", [](String& s) { return show(s + wchar(0)); }, "\"\"", "\"\"", "\"\""},
    {"substr", [](String& s) { return show(s.substr(0, -1)); }, "EMPTY", "EMPTY", "EMPTY"},
    {"substr of a part", [](String& s) { return show(s.substr(1, 2)); }, "EMPTY", "EMPTY", "EMPTY"},
    {"trim", [](String& s) { return show(s.trim(true, true)); }, "NIL", "EMPTY", "same"},
    {"startsWith a text", [](String& s) { return show(s.startsWith(String(KVW("a")))); }, "false", "false", "false"},
    {"startsWith EMPTY", [](String& s) { return show(s.startsWith(String::EMPTY)); }, "true", "true", "true"},
    {"startsWith NIL", [](String& s) { return show(s.startsWith(String::NIL)); }, "true", "true", "true"},
    {"endsWith a text", [](String& s) { return show(s.endsWith(String(KVW("a")))); }, "false", "false", "false"},
    {"endsWith EMPTY", [](String& s) { return show(s.endsWith(String::EMPTY)); }, "false", "false", "false"},
    {"endsWith NIL", [](String& s) { return show(s.endsWith(String::NIL, true)); }, "false", "false", "false"},
    // Appending values.
    {"+= text", [](String& s) { return appended(s, KVW("x")); }, "; \"x\"", "; \"x\"", "; \"x\""},
    {"+= empty text", [](String& s) { return appended(s, KVW("")); }, "; \"\"", "; \"\"", "; \"\""},
    {"+= null", [](String& s) { return appended(s, kNull); }, "", "", ""},
    {"+= String", [](String& s) { return appended(s, String(KVW("x"))); }, "; \"x\"", "; \"x\"", "; \"x\""},
    {"+= NIL", [](String& s) { return appended(s, String::NIL); }, "", "", ""},
    {"+= EMPTY", [](String& s) { return appended(s, String::EMPTY); }, "; EMPTY", "; \"\"", "; \"\""},
    {"<< number", [](String& s) { return s << 5, kNothing; }, "; \"5\"", "; \"5\"", "; \"5\""},
    // Searches.
    {"find a text", [](String& s) { return show(s.find(KVW("a"), 0)); }, "-1", "-1", "-1"},
    {"find an empty text", [](String& s) { return show(s.find(KVW(""), 0)); }, "-1", "-1", "-1"},
    {"find a unit", [](String& s) { return show(s.find(KVW('a'), 0)); }, "-1", "-1", "-1"},
    {"find NUL", [](String& s) { return show(s.find(wchar(0), 0)); }, "-1", "-1", "-1"},
    {"findLastOf a unit", [](String& s) { return show(s.findLastOf(KVW('a'), 0)); }, "-1", "-1", "-1"},
    {"findLastOf NUL", [](String& s) { return show(s.findLastOf(wchar(0), 0)); }, "-1", "-1", "-1"},
    {"findAlpha", [](String& s) { return show(s.findAlpha(0)); }, "-1", "-1", "-1"},
    {"findNonAlpha", [](String& s) { return show(s.findNonAlpha(0)); }, "-1", "-1", "-1"},
    {"findAlphaNum", [](String& s) { return show(s.findAlphaNum(0)); }, "-1", "-1", "-1"},
    {"findNonAlphaNum", [](String& s) { return show(s.findNonAlphaNum(0)); }, "-1", "-1", "-1"},
    {"findDigit", [](String& s) { return show(s.findDigit(0, 0)); }, "-1", "-1", "-1"},
    {"findNonDigit", [](String& s) { return show(s.findNonDigit(0)); }, "-1", "-1", "-1"},
    {"findSignedDigit", [](String& s) { return show(s.findSignedDigit(0)); }, "-1", "-1", "-1"},
    {"findNonSignedDigit", [](String& s) { return show(s.findNonSignedDigit(0)); }, "-1", "-1", "-1"},
    {"findNumeric", [](String& s) { return show(s.findNumeric(0)); }, "-1", "-1", "-1"},
    {"findWS", [](String& s) { return show(s.findWS(0)); }, "-1", "-1", "-1"},
    {"findNonWS", [](String& s) { return show(s.findNonWS(0)); }, "-1", "-1", "-1"},
    {"replace of units", [](String& s) { return show(s.replace(KVW('a'), KVW('b'))); }, "0", "0", "0"},
    {"replace of texts", [](String& s) { return show(s.replace(KVW("a"), KVW("b"))); }, "0; EMPTY", "0", "0; EMPTY"},
    {"replace of Strings", [](String& s) { return show(s.replace(String(KVW("a")), String::NIL)); }, "0; EMPTY", "0",
     "0; EMPTY"},
    {"replace of an empty text", [](String& s) { return show(s.replace(KVW(""), KVW("b"))); }, "0", "0", "0"},
    {"replace of null", [](String& s) { return show(s.replace(kNull, KVW("b"))); }, "0", "0", "0"},
    // Values from text.
    {">> int", &extracted<int>, "0; EMPTY", "0", "0; EMPTY"},
    {">> unsigned int", &extracted<unsigned int>, "0; EMPTY", "0", "0; EMPTY"},
    {">> long long", &extracted<long long>, "0; EMPTY", "0", "0; EMPTY"},
    {">> double", &extracted<double>, "0; EMPTY", "0", "0; EMPTY"},
    {">> bool", &extracted<bool>, "0; EMPTY", "0", "0; EMPTY"},
    {">> unit", &extracted<wchar>, "0; EMPTY", "0", "0; EMPTY"},
    {">> String",
     [](String& s) {
       String target(KVW("old"));
       s >> target;
       return show(target);
     },
     "NIL; EMPTY", "\"\"", "same; EMPTY"},  // the first unit is read through operator[], which unshares
    {"eatwhite", [](String& s) { return s.eatwhite(), kNothing; }, "", "", ""},
    // The number at the end.
    {"getIndex", [](String& s) { return show(int(s.getIndex())); }, "0", "0", "0"},
    {"setIndex 0", [](String& s) { return s.setIndex(0), kNothing; }, "; \"0\"", "; \"0\"", "; \"0\""},
    {"setIndex 5", [](String& s) { return s.setIndex(5), kNothing; }, "; \"5\"", "; \"5\"", "; \"5\""},
    {"incrementIndex", [](String& s) { return s.incrementIndex(), kNothing; }, "; \"1\"", "; \"1\"", "; \"1\""},
    {"decrementIndex", [](String& s) { return s.decrementIndex(), kNothing; }, "; \"1\"", "; \"1\"", "; \"1\""},
    // Escapes and display.
    {"controlsToEsc", [](String& s) { return s.controlsToEsc(true), kNothing; }, "", "", ""},
    {"escToControls", [](String& s) { return show(s.escToControls(true)); }, "-1", "-1", "-1"},
    {"shortenString", [](String& s) { return show(s.shortenString(10, 3)); }, "NIL", "EMPTY", "same"},
    {"shortenString to nothing", [](String& s) { return show(s.shortenString(0, 0)); }, "NIL", "EMPTY", "same"},
    {"shortenString to a negative limit", [](String& s) { return show(s.shortenString(-1, 0)); },
     "\"...\"", "\"...\"", "\"...\""},
    // Narrow text, buffers, printf, streams.
    {"stringAnsi", [](String& s) { return show(s.stringAnsi()); }, "null", "\"\"", "\"\""},
    {"stringUTF8", [](String& s) { return show(s.stringUTF8()); }, "null", "\"\"", "\"\""},
    {"stringPath", [](String& s) { return show(s.stringPath() == static_cast<wchar const*>(s)); },
     "true", "true", "true"},
    {"buffer without array", [](String& s) { return (void)s.buffer(10, false), kNothing; }, "", "", ""},
    {"buffer", [](String& s) { return show(int(static_cast<wchar*>(s.buffer(10, false))[10])); },
     "0; \"\"", "0; \"\"", "0; \"\""},
    {"printf of nothing", [](String& s) { return s.printf(KVW("")), kNothing; }, "; \"\"", "; \"\"", "; \"\""},
    {"printf of itself", [](String& s) { return s.printf(KVW("<%ls>"), s), kNothing; },
     "; \"<>\"", "; \"<>\"", "; \"<>\""},
    {"output to a stream",
     [](String& s) {
       std::ostringstream stream;
       stream.width(4);
       stream << s;
       return show(stream.str().c_str()) + show(int(stream.width()));
     },
     "\"\"4", "\"\"4", "\"\"4"},
};

// An answer alone says that the receiver stays as it is.
std::string withState(std::string const& answer, String const& receiver, std::string const& before) {
  std::string const after = stateBeside(receiver, ownPayload);
  return after == before ? answer : answer + "; " + after;
}

TEST(StringNil, EveryOperationOnAReceiverWithoutText) {
  ASSERT_EQ(String::outOfRange, 7);
  for (Operation const& operation : kOperations) {
    SCOPED_TRACE(operation.name);
    ownPayload = nullptr;
    String nil;
    std::string const ofNil = operation.run(nil);
    EXPECT_EQ(withState(ofNil, nil, "NIL"), operation.nil);

    String empty = String::EMPTY;
    std::string const ofEmpty = operation.run(empty);
    EXPECT_EQ(withState(ofEmpty, empty, "EMPTY"), operation.empty);
    EXPECT_EQ(String::EMPTY.length(), 0);

    String own(KVW(""));
    ownPayload = own;
    // A new payload cannot come to lie where the old one was: it is built before the old one is released.
    std::string const ofOwn = operation.run(own);
    EXPECT_EQ(withState(ofOwn, own, "same"), operation.own);
  }
  ownPayload = nullptr;
}

TEST(StringNil, TheConstantsStayWhatTheyAre) {
  String nil = String::NIL;
  String empty = String::EMPTY;
  nil += KVW("text");
  empty += KVW("text");
  EXPECT_EQ(state(String::NIL), "NIL");
  EXPECT_EQ(state(String::EMPTY), "EMPTY");
  EXPECT_EQ(String::EMPTY.length(), 0);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
