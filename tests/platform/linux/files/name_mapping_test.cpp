// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/name_mapping.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

using platform::NativePath;

wstring fromNative(std::string const& bytes) {
  wstring units(bytes.size() + 1, KVW('#'));
  std::size_t const size = platform::nameFromNative(bytes.data(), bytes.size(), &units[0]);
  EXPECT_LE(size, bytes.size());
  EXPECT_EQ(units[bytes.size()], KVW('#'));
  units.resize(size);
  return units;
}

// The bytes of a name, "invalid" if it is refused; no test uses that text as a name.
std::string toNative(wstring const& name) {
  NativePath path;
  path.push('/');
  if (!platform::appendNativeName(name.data(), name.size(), path)) return "invalid";
  return std::string(path.data() + 1, path.size() - 1);
}

bool isForbidden(unsigned unit) {
  return unit < 0x20 || (unit < 0x80 && std::string("\\:*?<>\"|/").find(static_cast<char>(unit)) != std::string::npos);
}

TEST(NameMapping, EachNameHasItsPicture) {
  struct Row {
    char const* name;
    std::string bytes;
    wstring units;
  };
  Row const rows[] = {
      {"ASCII", "scan 1.txt", KVW("scan 1.txt")},
      {"UTF-8 whose number ends in F076", "\xF0\x9F\x81\xB6", KVW("\U0001F076")},
      {"UTF-8", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", KVW("\u00E4\u20AC\U0001F600")},
      {"forbidden", "a\\:*?<>\"|b", KVW("a\uF05C\uF03A\uF02A\uF03F\uF03C\uF03E\uF022\uF07Cb")},
      {"control", "a\x01\x1F\n", KVW("a\uF001\uF01F\uF00A")},
      {"delete is allowed", "a\x7F", KVW("a\x7F")},
      {"dot at the end", "a.", KVW("a\uF02E")},
      {"two dots at the end", "a..", KVW("a.\uF02E")},
      {"three dots", "...", KVW("..\uF02E")},
      {"blank at the end", "a ", KVW("a\uF020")},
      {"blank alone", " ", KVW("\uF020")},
      {"stray byte", "a\xE4z", KVW("a\uF0E4z")},
      {"cut sequence", "a\xE2\x82", KVW("a\uF0E2\uF082")},
      {"overlong", "\xC0\xAF", KVW("\uF0C0\uF0AF")},
      {"surrogate", "\xED\xA0\x80", KVW("\uF0ED\uF0A0\uF080")},
      {"beyond Unicode", "\xF4\x90\x80\x80", KVW("\uF0F4\uF090\uF080\uF080")},
      {"private character itself", "\xEF\x80\xBA", KVW("\uF0EF\uF080\uF0BA")},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(narrow(fromNative(row.bytes)), narrow(row.units));
    EXPECT_EQ(toNative(row.units), row.bytes);
  }
  EXPECT_EQ(narrow(fromNative(".")), ".");
  EXPECT_EQ(narrow(fromNative("..")), "..");
}

TEST(NameMapping, PicturesOfNothingAreRefused) {
  struct Row {
    char const* name;
    wstring units;
  };
  Row const rows[] = {
      {"empty", KVW("")},
      {"dot", KVW(".")},
      {"dots", KVW("..")},
      {"escaped separator", KVW("a\uF02Fb")},
      {"escaped NUL", KVW("a\uF000")},
      {"would be a dot", KVW("\uF02E")},
      {"would be dots", KVW(".\uF02E")},
      {"raw dot at the end", KVW("a.")},
      {"raw blank at the end", KVW("a ")},
      {"raw colon", KVW("a:b")},
      {"raw control", KVW("a\x01")},
      {"raw separator", KVW("a/b")},
      {"high surrogate alone", wstring{KVW('a'), static_cast<wchar>(0xD800), KVW('b')}},
      {"high surrogate at the end", wstring{KVW('a'), static_cast<wchar>(0xD800)}},
      {"low surrogate alone", wstring{static_cast<wchar>(0xDC00)}},
      {"needless escape", KVW("a\uF041")},
      {"needless escape of a dot", KVW("a\uF02Eb")},
      {"escapes that make UTF-8", KVW("\uF0C3\uF0A4")},
      {"escape that completes UTF-8", wstring{static_cast<wchar>(0xF0C3), static_cast<wchar>(0xF0A4), KVW('x')}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(toNative(row.units), "invalid");
  }
}

TEST(NameMapping, RandomNamesComeBack) {
  std::mt19937 random(20261121);
  std::string const pieces[] = {"\xC3", "\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xEF\x80\xAE", ".", " ",
                                "\\",   ":",    "\xED\xA0"};
  for (int i = 0; i < 200000; ++i) {
    std::string name;
    std::size_t const length = 1 + random() % 12;
    while (name.size() < length) {
      unsigned const kind = random() % 4;
      if (kind == 0) {
        name += pieces[random() % std::size(pieces)];
      } else {
        char const byte = static_cast<char>(kind == 1 ? 'a' + random() % 26 : 1 + random() % 255);
        if (byte != '/') name += byte;
      }
    }
    if (name == "." || name == "..") continue;
    wstring const units = fromNative(name);
    ASSERT_EQ(toNative(units), name) << i;
    for (wchar unit : units) ASSERT_FALSE(isForbidden(unit)) << i;
    ASSERT_NE(units.back(), KVW('.'));
    ASSERT_NE(units.back(), KVW(' '));
  }
}

TEST(NameMapping, RandomTextsMeanAtMostOneName) {
  std::mt19937 random(7);
  int accepted = 0;
  for (int i = 0; i < 200000; ++i) {
    wstring name;
    for (std::size_t n = 1 + random() % 5; n > 0; --n) {
      unsigned const bases[] = {0xF000, 0xF080, 0xD800, 0xDC00, 0x20, 0x40, 0x4E00};
      name += static_cast<wchar>(bases[random() % std::size(bases)] + random() % 0x80);
    }
    std::string const bytes = toNative(name);
    if (bytes == "invalid") continue;
    ++accepted;
    ASSERT_EQ(fromNative(bytes), name) << i;
  }
  EXPECT_GT(accepted, 10000);
}

TEST(NameMapping, EveryUnitComesBackOrIsRefused) {
  for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
    wstring const name{KVW('a'), static_cast<wchar>(unit), KVW('b')};
    bool const isSurrogate = unit >= 0xD800 && unit < 0xE000;
    bool const isEscape = unit >= 0xF000 && unit < 0xF100;
    unsigned const byte = unit & 0xFF;
    bool const isRight = isEscape ? byte != 0 && byte != '/' && (byte >= 0x80 || isForbidden(byte))
                                  : !isSurrogate && (unit > 0x7F || !isForbidden(unit));
    std::string const bytes = toNative(name);
    ASSERT_EQ(bytes != "invalid", isRight) << std::hex << unit;
    if (isRight) {
      ASSERT_EQ(fromNative(bytes), name) << std::hex << unit;
    }
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
