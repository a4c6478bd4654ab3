// SPDX-License-Identifier: MIT
//
// Every operation with its first allocation failing, then its second, and so on: each time std::bad_alloc comes out,
// the receiver is as it was, and nothing is left over. Only the commit of a StringBuffer, and so of printf, is not
// swept: memory exhausted there ends the process.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "kvbase/platform/text_api.h"
#include "tests/strings/string_support.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/scripted_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

// Arguments, built by the first call so that the operations allocate for their results only.
String const& argument() {
  static String const text(KVW("b"));
  return text;
}
String const& otherArgument() {
  static String const text(KVW("more"));
  return text;
}

struct Operation {
  char const* name;
  void (*run)(String& receiver);
  bool mayBeNil;
};

Operation const kOperations[] = {
    {"String(text)", [](String& s) { s = String(KVW("text")); }, true},
    {"String(text, size)", [](String& s) { s = String(KVW("text"), 2); }, true},
    {"String(unit, count)", [](String& s) { s = String(KVW('x'), 3); }, true},
    {"String(UTF-8)", [](String& s) { s = String(UTF8Interface("t\xC3\xA4xt")); }, true},
    {"String(1252)", [](String& s) { s = String(CodePageInterface("t\xE4xt", 1252)); }, true},
    {"StringVal::construct of narrow text", [](String&) { StringVal::construct("text", 4, -1)->unref(); }, true},
    {"StringVal::concatenation",
     [](String&) {
       StringVal* const front = StringVal::construct(KVW("a"), -1, -1);
       StringVal* both = nullptr;
       try {
         both = front->concatenation(KVW("b"), 1);
       } catch (std::bad_alloc const&) {
         front->unref();
         throw;
       }
       front->unref();
       both->unref();
     },
     true},
    {"operator[]", [](String& s) { static_cast<void>(s[0]); }, true},
    {"write", [](String& s) { s.write(KVW("more"), -1); }, true},
    {"operator+ of Strings", [](String& s) { s = s + argument(); }, true},
    {"operator+ of a text", [](String& s) { s = s + KVW("more"); }, true},
    {"operator+ of a unit", [](String& s) { s = s + KVW('x'); }, true},
    {"text + String", [](String& s) { s = KVW("more") + s; }, true},
    {"unit + String", [](String& s) { s = KVW('x') + s; }, true},
    {"sum of three", [](String& s) { s = s + argument() + otherArgument(); }, true},
    {"+= text", [](String& s) { s += KVW("more"); }, true},
    {"+= String", [](String& s) { s += argument(); }, true},
    {"<< number << text", [](String& s) { s = String(s) << 5 << KVW("mm"); }, true},
    {"substr", [](String& s) { s = s.substr(1, 3); }, true},
    {"trim", [](String& s) { s = s.trim(true, true); }, true},
    {"merging compareEquality", [](String& s) { s.compareEquality(argument()); }, true},
    {"compareIgnoreCase", [](String& s) { s.compareIgnoreCase(argument()); }, true},
    {"endsWith", [](String& s) { s.endsWith(argument(), true); }, true},
    {"find", [](String& s) { s.find(KVW("b"), 0); }, true},
    {"findLastOf", [](String& s) { s.findLastOf(KVW("b")); }, false},
    {"replace of units", [](String& s) { s.replace(KVW('b'), KVW('x')); }, true},
    {"replace of texts", [](String& s) { s.replace(KVW("b"), KVW("xyz")); }, true},
    {"replace of Strings", [](String& s) { s.replace(argument(), otherArgument()); }, true},
    {"replace that deletes everything but blanks", [](String& s) { s.replace(KVW("b b 12"), nullptr); }, true},
    {"stringAnsi", [](String& s) { s.stringAnsi(); }, true},
    {"stringUTF8", [](String& s) { s.stringUTF8(); }, true},
    {"both narrow copies", [](String& s) { s.stringUTF8(), s.stringAnsi(); }, true},
    {"eatwhite", [](String& s) { s.eatwhite(); }, true},
    {"setIndex", [](String& s) { s.setIndex(77); }, true},
    {">> wchar",
     [](String& s) {
       wchar unit;
       s >> unit;
     },
     true},
    {">> double",
     [](String& s) {
       double value;
       s >> value;
     },
     true},
    {">> String",
     [](String& s) {
       String line;
       s >> line;
     },
     true},
    {"shortenString", [](String& s) { s = s.shortenString(6, 2); }, true},
};

// A text without allocating.
struct Snapshot {
  explicit Snapshot(String const& string) : nil(isNil(string)), length(string.length()) {
    if (length < kRoom)
      std::memcpy(units, static_cast<wchar const*>(string), static_cast<std::size_t>(length) * sizeof(wchar));
  }
  bool operator==(Snapshot const& other) const {
    return nil == other.nil && length == other.length &&
           std::memcmp(units, other.units, static_cast<std::size_t>(length) * sizeof(wchar)) == 0;
  }

  static constexpr int kRoom = 32;
  bool nil;
  int length;
  wchar units[kRoom];
};

// Runs the operation with every allocation failing once.
void sweep(Operation const& operation, String const& text, bool shared) {
  for (int failAt = 1;; ++failAt) {
    ASSERT_LT(failAt, 100);
    SCOPED_TRACE(failAt);
    String receiver = shared ? text : stringOf(units(text));
    if (isNil(text)) receiver = String::NIL;
    Snapshot const before(receiver);
    bool threw = false;
    bool kept = false;

    AllocationFailure scope(failAt);
    try {
      operation.run(receiver);
    } catch (std::bad_alloc const&) {
      threw = true;
      kept = before == Snapshot(receiver);
    }
    receiver = String::NIL;
    scope.end();

    EXPECT_EQ(threw, scope.failed());
    EXPECT_TRUE(!threw || kept);
    // A narrow copy made before the failure belongs to the payload, which a shared receiver does not take along.
    if (!shared) EXPECT_EQ(scope.live(), 0);
    EXPECT_EQ(scope.mismatched(), 0);
    EXPECT_TRUE(before == Snapshot(text));
    if (!scope.failed()) return;
  }
}

TEST(StringAllocation, EveryOperationSurvivesExhaustedMemory) {
  ScriptedText ansi;
  ansi.ansi = 1252;
  platform::ScopedBackend<platform::TextApi> backend(ansi);
  for (Operation const& operation : kOperations) {
    SCOPED_TRACE(operation.name);
    // What is set up at the first use is not the operation's.
    String warmUp(KVW(" ab b 12"));
    operation.run(warmUp);
    for (wchar const* text : {KVW(" ab b 12"), KVW("b"), KVW("")}) {
      sweep(operation, String(text), false);
      sweep(operation, String(text), true);
    }
    if (operation.mayBeNil) sweep(operation, String::NIL, true);
  }
}

TEST(StringAllocation, ACopyCostsNothing) {
  String const text(KVW("text"));
  AllocationFailure scope(1);
  {
    String const copy = text;
    String other;
    other = copy;
    String const whole = other.substr(0, -1);
    String const trimmed = whole.trim(true, true);
    String const sum = trimmed + String::NIL;
  }
  scope.end();
  EXPECT_FALSE(scope.failed());
}

using StringAllocationDeathTest = ::testing::Test;

TEST(StringAllocationDeathTest, ACommitWithoutMemoryEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        String text;
        StringBuffer* const buffer = new StringBuffer(text.buffer(10, false));
        static_cast<void>(static_cast<wchar*>(*buffer));
        AllocationFailure scope(1);
        try {
          delete buffer;
        } catch (std::bad_alloc const&) {
          // Not reached: nothing may come out of a destructor.
          std::exit(0);
        }
      },
      "");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
