// SPDX-License-Identifier: MIT
//
// Texts written to narrow streams and tokens read from them, in the ANSI code page.
#include <gtest/gtest.h>

#include <iomanip>
#include <iterator>
#include <new>
#include <sstream>
#include <streambuf>

#include "kvbase/platform/backend.h"
#include "tests/reference/string_stream_model.h"
#include "tests/strings/string_support.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/random_text.h"
#include "tests/support/scripted_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr std::ios_base::iostate kEndAndFailed = std::ios_base::eofbit | std::ios_base::failbit;

// The ANSI code page, for the time of a test, so that results do not depend on the machine.
class StringStream : public ::testing::Test {
 protected:
  void setAnsi(unsigned int codePage) { text_.ansi = codePage; }

  ScriptedText text_;
  platform::ScopedBackend<platform::TextApi> scope_{text_};
};

std::string restOf(std::istream& stream) {
  stream.clear();
  return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

// --- Output ----------------------------------------------------------------------------------------------------------

TEST_F(StringStream, WritesTheAnsiForm) {
  struct Row {
    char const* name;
    unsigned int codePage;
    wchar const* text;
    char const* bytes;
  };
  Row const rows[] = {
      {"ASCII", 1252, KVW("text"), "text"},
      {"no quotes, no escapes", 1252, KVW("a \"b\\\n"), "a \"b\\\n"},
      {"Latin", 1252, KVW("\u00E9\u20AC"), "\xE9\x80"},
      {"not in the code page", 1252, KVW("a\u4E2Db"), "a?b"},
      {"UTF-8", 65001, KVW("\u00E9\u20AC\U0001F600"), "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"a lone surrogate in UTF-8", 65001,
       KVW("a\xD800"
           "b"),
       "a\xEF\xBF\xBD"
       "b"},
      {"two bytes", 932, KVW("\u3042x"), "\x82\xA0x"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    setAnsi(row.codePage);
    std::ostringstream stream;
    EXPECT_EQ(&(stream << String(row.text)), &stream);
    EXPECT_EQ(stream.str(), row.bytes);
    EXPECT_TRUE(stream.good());
  }
}

TEST_F(StringStream, WritesWithWidthAndFill) {
  setAnsi(1252);
  std::ostringstream stream;
  stream << std::setfill('*') << std::setw(6) << String(KVW("ab")) << std::left << std::setw(5) << String(KVW("cd"))
         << std::setw(2) << String(KVW("efg")) << String(KVW("h"));
  EXPECT_EQ(stream.str(), "****abcd***efgh");
  EXPECT_EQ(stream.width(), 0);
}

TEST_F(StringStream, TheWidthCountsBytes) {
  setAnsi(65001);
  std::ostringstream stream;
  stream << std::setw(4) << String(KVW("\u20AC"));
  EXPECT_EQ(stream.str(), " \xE2\x82\xAC");
}

// Takes a few chars, then no more.
class ShortBuffer final : public std::streambuf {
 public:
  explicit ShortBuffer(std::size_t room) : room_(room) {}
  std::string written;

 protected:
  int_type overflow(int_type c) override {
    if (written.size() == room_) return traits_type::eof();
    written += traits_type::to_char_type(c);
    return c;
  }

 private:
  std::size_t room_;
};

TEST_F(StringStream, AFullStreamGoesBad) {
  setAnsi(1252);
  ShortBuffer buffer(3);
  std::ostream stream(&buffer);
  stream << String(KVW("abcdef"));
  EXPECT_EQ(buffer.written, "abc");
  EXPECT_TRUE(stream.bad());
  stream << String(KVW("x"));
  EXPECT_EQ(buffer.written, "abc");
}

TEST_F(StringStream, AFullStreamThrowsIfAskedTo) {
  setAnsi(1252);
  ShortBuffer buffer(3);
  std::ostream stream(&buffer);
  stream.exceptions(std::ios_base::badbit);
  EXPECT_THROW(stream << String(KVW("abcdef")), std::ios_base::failure);
  EXPECT_TRUE(stream.bad());
}

// --- Input -----------------------------------------------------------------------------------------------------------

TEST_F(StringStream, ReadsTokens) {
  struct Row {
    char const* name;
    char const* bytes;
    char const* token;
    char const* rest;
    std::ios_base::iostate state;
  };
  Row const rows[] = {
      {"the first word", "  abc def", "abc", " def", std::ios_base::goodbit},
      {"the last word", " def", "def", "", kEndAndFailed},
      {"all kinds of white space", "\t\n\v\f\r abc\vdef", "abc", "\vdef", std::ios_base::goodbit},
      {"an end", "", "", "", kEndAndFailed},
      {"blanks only", "  \n", "", "", kEndAndFailed},
      {"quoted, an escaped quote", "\"a\\\"b\"", "a\"b", "", std::ios_base::goodbit},
      {"quoted with a blank", "\"a b\" c", "a b", " c", std::ios_base::goodbit},
      {"quoted, leading blanks stay", "  \"  a\"b", "  a", "b", std::ios_base::goodbit},
      {"quoted and empty", "\"\" c", "", " c", std::ios_base::goodbit},
      {"quoted, a backslash protects any char", "\"\\n\\\\\\a\"", "n\\a", "", std::ios_base::goodbit},
      {"quoted, line feeds inside", "\"a\nb\"", "a\nb", "", std::ios_base::goodbit},
      {"unterminated", "\"a b", "a b", "", kEndAndFailed},
      {"unterminated, a backslash last", "\"a\\", "a", "", kEndAndFailed},
      {"a quote alone", "\"", "", "", kEndAndFailed},
      {"a quote inside a word", "a\"b c\"", "a\"b", " c\"", std::ios_base::goodbit},
      {"a backslash in a word stays", "a\\b c", "a\\b", " c", std::ios_base::goodbit},
      {"a word of one char", "a b", "a", " b", std::ios_base::goodbit},
  };
  setAnsi(1252);
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    std::istringstream stream(row.bytes);
    String text(KVW("old"));
    String const holder = text;
    EXPECT_EQ(&(stream >> text), &stream);
    EXPECT_EQ(spelled(holder), "\"old\"");
    EXPECT_EQ(spelled(text), "\"" + std::string(row.token) + "\"");
    EXPECT_EQ(stream.rdstate(), row.state);
    EXPECT_TRUE(stream.flags() & std::ios_base::skipws);
    EXPECT_EQ(restOf(stream), row.rest);
  }
}

TEST_F(StringStream, DecodesTheAnsiCodePage) {
  struct Row {
    char const* name;
    unsigned int codePage;
    char const* bytes;
    wchar const* text;
  };
  Row const rows[] = {
      {"Latin", 1252, "\xE9\x80 ", KVW("\u00E9\u20AC")},
      {"UTF-8", 65001, "\xC3\xA9\xF0\x9F\x98\x80 ", KVW("\u00E9\U0001F600")},
      {"two bytes", 932, "\x82\xA0x ", KVW("\u3042x")},
      {"quoted", 1252, "\"\xE9 \\\xE9\"", KVW("\u00E9 \u00E9")},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    setAnsi(row.codePage);
    std::istringstream stream(row.bytes);
    String text;
    stream >> text;
    EXPECT_EQ(spelled(text), spelled(Text(row.text)));
  }
}

TEST_F(StringStream, ANulEndsTheTokenButNotTheReading) {
  setAnsi(1252);
  std::istringstream stream(std::string("ab\0cd ef", 8));
  String text;
  stream >> text;
  EXPECT_EQ(spelled(text), "\"ab\"");
  EXPECT_EQ(restOf(stream), " ef");
}

TEST_F(StringStream, BytesThatCannotBeDecodedGiveNil) {
  setAnsi(1252);
  text_.failAt = 1;
  std::istringstream stream("abc def");
  String text(KVW("old"));
  stream >> text;
  EXPECT_TRUE(isNil(text));
  EXPECT_TRUE(stream.good());
  EXPECT_TRUE(stream.flags() & std::ios_base::skipws);
}

TEST_F(StringStream, AClearSkipwsStaysClearAndBlanksAreSkippedAllTheSame) {
  std::istringstream stream("  abc def");
  stream >> std::noskipws;
  String text;
  stream >> text;
  EXPECT_EQ(spelled(text), "\"abc\"");
  EXPECT_FALSE(stream.flags() & std::ios_base::skipws);
  stream >> text;
  EXPECT_EQ(spelled(text), "\"def\"");
  EXPECT_FALSE(stream.flags() & std::ios_base::skipws);
}

TEST_F(StringStream, AFailedStreamGivesAnEmptyText) {
  for (std::ios_base::iostate const state : {std::ios_base::failbit, std::ios_base::badbit, std::ios_base::eofbit}) {
    std::istringstream stream("abc");
    stream.setstate(state);
    String text(KVW("old"));
    stream >> text;
    EXPECT_EQ(spelled(text), "\"\"");
    EXPECT_TRUE(stream.fail());
    EXPECT_TRUE(stream.flags() & std::ios_base::skipws);
    EXPECT_EQ(restOf(stream), "abc");
  }
}

TEST_F(StringStream, AnEndThatThrowsRestoresTheFlags) {
  for (char const* const bytes : {"", "  ", "abc", "\"abc", "\"ab\\"}) {
    SCOPED_TRACE(bytes);
    for (std::ios_base::iostate const mask : {std::ios_base::eofbit, std::ios_base::failbit, kEndAndFailed}) {
      std::istringstream stream(bytes);
      stream.exceptions(mask);
      String text(KVW("old"));
      EXPECT_THROW(stream >> text, std::ios_base::failure);
      EXPECT_TRUE(isNil(text)) << "the target is NIL until the token stands";
      EXPECT_TRUE(stream.flags() & std::ios_base::skipws);
    }
  }
}

// Memory that runs out while a token is read: std::bad_alloc, nothing left over, the stream's flags as before.
TEST_F(StringStream, ExhaustedMemoryWhileReading) {
  // A stream that needs no memory itself.
  class FixedBuffer final : public std::streambuf {
   public:
    explicit FixedBuffer(char const* bytes) {
      std::size_t const size = std::char_traits<char>::length(bytes);
      std::char_traits<char>::copy(chars_, bytes, size);
      setg(chars_, chars_, chars_ + size);
    }

   private:
    char chars_[128];
  };
  for (char const* const bytes : {"  a_word_that_does_not_fit_into_a_small_string_of_the_library rest",
                                  "\"a quoted text that does not fit into a small string of the library\" rest"}) {
    SCOPED_TRACE(bytes);
    // The bytes and the text.
    for (AllocationSweep sweep(2); sweep.next();) {
      FixedBuffer buffer(bytes);
      std::istream stream(&buffer);
      String text;
      sweep.run([&] { stream >> text; });
      EXPECT_TRUE(stream.flags() & std::ios_base::skipws);
      EXPECT_EQ(text.length() == 0, sweep.failed());
    }
  }
}

// --- Against the model -----------------------------------------------------------------------------------------------

// The part of code page 1252 that is the same as in Unicode, the euro sign, and what the page does not have.
wchar randomUnit(RandomText& random) {
  switch (random.below(8)) {
    case 0:
      return static_cast<wchar>(random.between(0xA0, 0xFF));
    case 1:
      return 0x20AC;
    case 2:
      return static_cast<wchar>(random.between(0x4E00, 0x9FA0));
    default:
      return static_cast<wchar>(random.between(1, 0x7E));
  }
}
char encoded(wchar unit) {
  return unit == 0x20AC ? '\x80' : unit > 0xFF ? '?' : static_cast<char>(unit);
}
wchar decoded(char byte) {
  return byte == '\x80' ? wchar(0x20AC) : static_cast<wchar>(static_cast<unsigned char>(byte));
}

TEST_F(StringStream, RandomOutputAgreesWithTheModel) {
  setAnsi(1252);
  RandomText random(301);
  std::ostringstream stream;
  for (int i = 0; i < kRounds; ++i) {
    wstring text;
    std::string bytes;
    for (int units = random.below(12); units > 0; --units) {
      text += randomUnit(random);
      bytes += encoded(text.back());
    }
    std::size_t const width = static_cast<std::size_t>(random.oneIn(2) ? random.below(20) : 0);
    char const fill = static_cast<char>(random.between(' ', '~'));
    bool const isLeft = random.oneIn(2);
    stream.str(std::string());
    stream << std::setw(static_cast<int>(width)) << std::setfill(fill) << (isLeft ? std::left : std::right);
    stream << stringOf(text);
    std::string const expected = text.empty() ? "" : reference::padded(bytes, width, fill, isLeft);
    ASSERT_EQ(stream.str(), expected);
    ASSERT_EQ(stream.width(), static_cast<std::streamsize>(text.empty() ? width : 0));
  }
}

std::string randomBytes(RandomText& random) {
  static char const kChars[] = {' ', '"', '\\', '\n', 'a', 'b', '\t', '"', '\\', '\0', '\xE9', '\x80', '\v'};
  std::string bytes = random.oneIn(3) ? "\"" : "";
  for (int size = random.below(14); size > 0; --size)
    bytes += random.oneIn(3) ? encoded(static_cast<wchar>(random.between(0xA1, 0xFF))) : kChars[random.below(13)];
  return bytes;
}

TEST_F(StringStream, RandomInputAgreesWithTheModel) {
  setAnsi(1252);
  RandomText random(302);
  for (int i = 0; i < kRounds; ++i) {
    reference::Source source;
    source.bytes = randomBytes(random);
    std::istringstream stream(source.bytes);
    bool const isSkipping = random.oneIn(2);
    if (!isSkipping) stream >> std::noskipws;
    for (int tokens = 0; tokens < 3; ++tokens) {
      String text;
      stream >> text;
      wstring expected;
      for (char const byte : reference::takeToken(source)) expected += decoded(byte);
      ASSERT_EQ(spelled(text), spelled(Text(expected))) << "token " << tokens << " of " << source.bytes;
      ASSERT_EQ(stream.rdstate(), source.state) << "token " << tokens << " of " << source.bytes;
      ASSERT_EQ((stream.flags() & std::ios_base::skipws) != 0, isSkipping);
    }
    ASSERT_EQ(restOf(stream), source.bytes.substr(source.at));
  }
}

TEST_F(StringStream, LongTexts) {
  setAnsi(65001);
  wstring text = RandomText(303).text(1 << 16, RandomUnits::kAny);
  std::ostringstream out;
  out << stringOf(text);
  EXPECT_GE(out.str().size(), text.size());

  std::string const word(1 << 16, 'w');
  std::istringstream in(word + " \"" + word + " " + word + "\"");
  String token;
  in >> token;
  EXPECT_EQ(token.length(), 1 << 16);
  in >> token;
  EXPECT_EQ(token.length(), (2 << 16) + 1);
  EXPECT_TRUE(in.good());
}

TEST_F(StringStream, EveryByteIsRead) {
  setAnsi(1252);
  for (int code = 0; code <= 0xFF; ++code) {
    char const byte = static_cast<char>(code);
    bool const isWhite = reference::Source::isWhite(byte);
    std::istringstream stream(std::string("a") + byte + "b c");
    String text;
    stream >> text;
    wstring const whole(static_cast<wchar const*>(text));
    EXPECT_EQ(whole.front(), KVW('a'));
    EXPECT_EQ(whole.size(), isWhite || byte == 0 ? 1u : 3u) << "byte " << code;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
