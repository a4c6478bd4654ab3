// SPDX-License-Identifier: MIT
//
// Memory that runs out at any allocation of any operation on text values: std::bad_alloc, nothing leaked, and the
// receiver as before.
#include <gtest/gtest.h>

#include <new>
#include <sstream>

#include "tests/strings/string_support.h"
#include "tests/support/allocation_failure.h"

namespace KV_1_1 {
namespace testing {
namespace {

template <class T>
void take(String& string) {
  T value{};
  string >> value;
}
template <class T>
void append(String& string) {
  string << static_cast<T>(5);
}

struct Row {
  char const* name;
  wchar const* text;
  void (*operation)(String&);
};

Row const kRows[] = {
    {"<< signed char", KVW("text"), append<signed char>},
    {"<< unsigned char", KVW("text"), append<unsigned char>},
    {"<< short", KVW("text"), append<short>},
    {"<< unsigned short", KVW("text"), append<unsigned short>},
    {"<< int", KVW("text"), append<int>},
    {"<< unsigned int", KVW("text"), append<unsigned int>},
    {"<< long", KVW("text"), append<long>},
    {"<< unsigned long", KVW("text"), append<unsigned long>},
    {"<< long long", KVW("text"), append<long long>},
    {"<< unsigned long long", KVW("text"), append<unsigned long long>},
    {"<< bool", KVW("text"), append<bool>},
    {"<< wchar", KVW("text"), append<wchar>},
    {"<< float", KVW("text"), append<float>},
    {"<< double", KVW("text"), append<double>},
    {"<< double on NIL", nullptr, append<double>},
    {"<< int on NIL", nullptr, append<int>},
    {"<< NUL on NIL", nullptr, [](String& string) { string << wchar(); }},
    {"<< text", KVW("text"), [](String& string) { string << KVW("more"); }},
    {"<< text on NIL", nullptr, [](String& string) { string << KVW("more"); }},
    {"<< itself", KVW("text"), [](String& string) { string << string; }},

    {"setIndex", KVW("scan012"), [](String& string) { string.setIndex(5); }},
    {"setIndex 0", KVW("scan012"), [](String& string) { string.setIndex(0); }},
    {"setIndex without digits", KVW("scan"), [](String& string) { string.setIndex(5); }},
    {"setIndex of digits only", KVW("012"), [](String& string) { string.setIndex(5); }},
    {"setIndex on NIL", nullptr, [](String& string) { string.setIndex(5); }},
    {"incrementIndex", KVW("file009"), [](String& string) { string.incrementIndex(); }},
    {"incrementIndex that grows", KVW("file99"), [](String& string) { string.incrementIndex(); }},
    {"incrementIndex without digits", KVW("file"), [](String& string) { string.incrementIndex(); }},
    {"incrementIndex on NIL", nullptr, [](String& string) { string.incrementIndex(); }},
    {"decrementIndex", KVW("file10"), [](String& string) { string.decrementIndex(); }},
    {"decrementIndex that grows", KVW("file0"), [](String& string) { string.decrementIndex(); }},

    {"eatwhite", KVW("  text"), [](String& string) { string.eatwhite(); }},
    {">> signed char", KVW(" 12 34"), take<signed char>},
    {">> unsigned char", KVW(" 12 34"), take<unsigned char>},
    {">> short", KVW(" 12 34"), take<short>},
    {">> unsigned short", KVW(" 12 34"), take<unsigned short>},
    {">> int", KVW(" 12 34"), take<int>},
    {">> unsigned int", KVW(" 12 34"), take<unsigned int>},
    {">> long", KVW(" 12 34"), take<long>},
    {">> unsigned long", KVW("  12 34"), take<unsigned long>},
    {">> long long", KVW(" 12 34"), take<long long>},
    {">> unsigned long long", KVW("   12 34"), take<unsigned long long>},
    {">> double", KVW(" 1.25 34"), take<double>},
    {">> float", KVW(" 1.25 34"), take<float>},
    {">> double of many digits", KVW("3.14159265358979323846264338327950288419716939937510582097494459230781640628 x"),
     take<double>},
    {">> bool, a word", KVW(" true x"), take<bool>},
    {">> bool, a number", KVW(" 12 x"), take<bool>},
    {">> bool, nothing", KVW(" maybe"), take<bool>},
    {">> wchar", KVW(" xy"), take<wchar>},
    {">> String, a line", KVW("one\ntwo"), take<String>},
    {">> String, the last line", KVW("two"), take<String>},
    {">> String, quoted", KVW("\"a b\" c"), take<String>},
    {">> String, unterminated", KVW("\"a b"), take<String>},

    {"controlsToEsc with unicode", KVW("a\n\"\u20AC"), [](String& string) { string.controlsToEsc(true); }},
    {"controlsToEsc without", KVW("abcdefg\u20AC"), [](String& string) { string.controlsToEsc(false); }},
    {"escToControls", KVW("a\\n\\u20AC"), [](String& string) { string.escToControls(true); }},
    {"escToControls, bad at once", KVW("\\q"), [](String& string) { string.escToControls(true); }},
    {"escToControls, put back", KVW("a\\n\\u20AC\\\"b\\q"), [](String& string) { string.escToControls(true); }},
    {"escToControls, a long text put back",
     KVW("\\n12345678901234567890123456789012345678901234567890123456789012345678901234567890\\\"\\u00E9\\u12"),
     [](String& string) { string.escToControls(true); }},

    {"shortenString", KVW("C:/data/projects/2020/march/scans/scan0001.dat"),
     [](String& string) { string.shortenString(30, 10); }},
    {"shortenString without head", KVW("abcdefghijklmnop"), [](String& string) { string.shortenString(10, 0); }},
};

// An operation on a text that shares its payload, or not, with the n-th allocation failing, n = 1, 2, ...
void sweep(Row const& row, bool isShared) {
  for (int n = 1; n < 50; ++n) {
    String string(row.text);
    String const holder = isShared ? string : String();
    bool threw = false;
    AllocationFailure scope(n);
    try {
      row.operation(string);
    } catch (std::bad_alloc const&) {
      threw = true;
    }
    bool const isDone = !scope.failed();
    scope.end();

    ASSERT_EQ(threw, !isDone) << "allocation " << n;
    if (isShared) ASSERT_EQ(spelled(holder), spelled(String(row.text))) << "allocation " << n;
    if (isDone) return;
    ASSERT_EQ(spelled(string), spelled(String(row.text))) << "the receiver, allocation " << n;
  }
  FAIL() << "allocates without end";
}

TEST(StringValueAllocation, FailuresLeaveTheReceiverAsItWas) {
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    for (bool const isShared : {true, false}) {
      SCOPED_TRACE(isShared ? "shared" : "sole owner");
      sweep(row, isShared);
    }
  }
}

// Every block is given back when the texts go, whichever allocation failed.
TEST(StringValueAllocation, NothingLeaks) {
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    bool isDone = false;
    for (int n = 1; n < 50 && !isDone; ++n) {
      AllocationFailure scope(n);
      try {
        String string(row.text);
        String const holder = string;
        row.operation(string);
      } catch (std::bad_alloc const&) {
      }
      isDone = !scope.failed();
      int const live = scope.live();
      scope.end();
      ASSERT_EQ(live, 0) << "allocation " << n;
      ASSERT_EQ(scope.mismatched(), 0) << "allocation " << n;
    }
    EXPECT_TRUE(isDone);
  }
}

// A stream that needs no memory itself.
class FixedBuffer final : public std::streambuf {
 public:
  FixedBuffer() { setp(chars_, chars_ + sizeof chars_); }
  explicit FixedBuffer(char const* bytes) {
    std::size_t const size = std::char_traits<char>::length(bytes);
    std::char_traits<char>::copy(chars_, bytes, size);
    setg(chars_, chars_, chars_ + size);
  }
  std::string written() const { return std::string(pbase(), pptr()); }

 private:
  char chars_[512];
};

TEST(StringValueAllocation, StreamOutput) {
  int failures = 0;
  for (bool isDone = false; !isDone; ++failures) {
    ASSERT_LT(failures, 50);
    FixedBuffer buffer;
    std::ostream stream(&buffer);
    bool threw = false;
    AllocationFailure scope(failures + 1);
    try {
      String const text(KVW("text"));
      stream << text;
    } catch (std::bad_alloc const&) {
      threw = true;
    }
    isDone = !scope.failed();
    int const live = scope.live();
    scope.end();
    ASSERT_EQ(live, 0);
    ASSERT_EQ(threw, !isDone);
    ASSERT_TRUE(stream.good());
    ASSERT_EQ(buffer.written(), isDone ? "text" : "");
  }
  EXPECT_GE(failures, 3) << "the text and its narrow copy";
}

TEST(StringValueAllocation, StreamInput) {
  for (char const* const bytes : {"  a_word_that_does_not_fit_into_a_small_string_of_the_library rest",
                                  "\"a quoted text that does not fit into a small string of the library\" rest"}) {
    SCOPED_TRACE(bytes);
    int failures = 0;
    for (bool isDone = false; !isDone; ++failures) {
      ASSERT_LT(failures, 50);
      FixedBuffer buffer(bytes);
      std::istream stream(&buffer);
      bool threw = false;
      int length = 0;
      AllocationFailure scope(failures + 1);
      {
        String text;
        try {
          stream >> text;
        } catch (std::bad_alloc const&) {
          threw = true;
        }
        length = text.length();
      }
      isDone = !scope.failed();
      int const live = scope.live();
      scope.end();
      ASSERT_EQ(live, 0);
      ASSERT_EQ(threw, !isDone);
      ASSERT_TRUE(stream.flags() & std::ios_base::skipws);
      ASSERT_EQ(length > 0, isDone);
    }
    EXPECT_GE(failures, 3) << "the bytes and the text";
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
