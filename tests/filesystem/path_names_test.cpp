// SPDX-License-Identifier: MIT
//
// The rules for one name and for one search pattern.
#include <gtest/gtest.h>

#include "kvbase/filesystem/internal/path_names.h"
#include "tests/filesystem/path_support.h"
#include "tests/reference/path_names_model.h"

namespace KV_1_1 {
namespace testing {
namespace {

String text(wchar const* units) {
  return String(units);
}

TEST(PathNames, ValidItemNames) {
  struct Row {
    char const* name;
    String text;
    bool valid;
  };
  Row const rows[] = {
      {"NIL", String::NIL, false},
      {"EMPTY", String::EMPTY, false},
      {"empty text of its own", text(KVW("")), false},
      {"a dot", text(KVW(".")), true},
      {"two dots", text(KVW("..")), true},
      {"three dots", text(KVW("...")), false},
      {"dots in front", text(KVW("..a")), true},
      {"dots inside", text(KVW("a..b")), true},
      {"dot in front", text(KVW(".a")), true},
      {"last dot", text(KVW("a.")), false},
      {"dot and blank", text(KVW(". ")), false},
      {"blank and dot", text(KVW(" .")), false},
      {"a blank", text(KVW(" ")), false},
      {"last blank", text(KVW("a ")), false},
      {"blank in front", text(KVW(" a")), true},
      {"blank inside", text(KVW("a b")), true},
      {"asterisk", text(KVW("a*b")), false},
      {"question mark", text(KVW("a?b")), false},
      {"less", text(KVW("a<b")), false},
      {"greater", text(KVW("a>b")), false},
      {"colon", text(KVW("a:b")), false},
      {"quote", text(KVW("a\"b")), false},
      {"backslash", text(KVW("a\\b")), false},
      {"slash", text(KVW("a/b")), false},
      {"bar", text(KVW("a|b")), false},
      {"forbidden first", text(KVW("*a")), false},
      {"forbidden last", text(KVW("a*")), false},
      {"forbidden alone", text(KVW(":")), false},
      {"control 0x1F",
       text(KVW("a\x1f"
                "b")),
       false},
      {"tabulator", text(KVW("a\tb")), false},
      {"blank 0x20 inside",
       text(KVW("a\x20"
                "b")),
       true},
      {"delete 0x7F", text(KVW("a\x7f")), true},
      {"other punctuation", text(KVW("!#$%&'()+,-;=@[]^_`{}~")), true},
      {"device name", text(KVW("CON")), true},
      {"no-break space last", String(wchar(0xA0), 1), true},
      {"lone surrogate", String(wchar(0xD800), 1), true},
      {"highest unit", String(wchar(0xFFFF), 1), true},
      {"counted inner NUL", counted(wstring(KVW("a\0b"), 3)), false},
      {"counted last NUL", counted(wstring(KVW("a\0"), 2)), false},
      {"counted NUL behind a dot", counted(wstring(KVW(".\0"), 2)), false},
      {"counted NUL alone", counted(wstring(1, 0)), false},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(isValidItemName(row.text), row.valid);
  }
}

TEST(PathNames, ValidSearchPatterns) {
  struct Row {
    char const* name;
    String text;
    bool valid;
  };
  Row const rows[] = {
      {"NIL", String::NIL, false},
      {"EMPTY", String::EMPTY, false},
      {"a dot", text(KVW(".")), false},
      {"two dots", text(KVW("..")), false},
      {"three dots", text(KVW("...")), false},
      {"all", text(KVW("*")), true},
      {"all with extension", text(KVW("*.*")), true},
      {"last dot", text(KVW("*.")), false},
      {"last blank", text(KVW("* ")), false},
      {"extension", text(KVW("*.txt")), true},
      {"question marks", text(KVW("scan??.dat")), true},
      {"question mark alone", text(KVW("?")), true},
      {"no wildcard", text(KVW("a.txt")), true},
      {"path", text(KVW("sub\\*.txt")), false},
      {"slash", text(KVW("sub/*")), false},
      {"drive", text(KVW("C:*")), false},
      {"less", text(KVW("<")), false},
      {"greater", text(KVW(">")), false},
      {"quote", text(KVW("\"")), false},
      {"bar", text(KVW("|")), false},
      {"control 0x1F",
       text(KVW("*\x1f"
                "b")),
       false},
      {"blank in front", text(KVW(" *")), true},
      {"dot in front", text(KVW(".*")), true},
      {"counted inner NUL", counted(wstring(KVW("*\0b"), 3)), false},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(isValidSearchPattern(row.text), row.valid);
  }
}

// Every unit at the front, inside and at the end of a name. All units beyond Latin-1 are valid, so one name is enough for
// the places of each.
TEST(PathNames, EveryUnitInEveryPlace) {
  for (unsigned int unit = 1; unit <= 0xFF; ++unit) {
    wstring const one(1, static_cast<wchar>(unit));
    for (wstring const& name : {one, one + KVW('a'), KVW('a') + one, KVW('a') + one + KVW('b')}) {
      ASSERT_EQ(isValidItemName(String(name.c_str())), reference::isValidItemName(name)) << unit;
      ASSERT_EQ(isValidSearchPattern(String(name.c_str())), reference::isValidSearchPattern(name)) << unit;
    }
  }
  for (unsigned int unit = 0x100; unit <= 0xFFFF; ++unit) {
    wchar const name[] = {static_cast<wchar>(unit), KVW('a'), static_cast<wchar>(unit), 0};
    ASSERT_TRUE(isValidItemName(String(name))) << unit;
    ASSERT_TRUE(isValidSearchPattern(String(name))) << unit;
  }
}

// The rule holds wherever a name comes in.
TEST(PathNames, EveryUnitAsLevelAndFileName) {
  SmartPtr<Directory const> const base = directoryAt(KVW("C:\\"));
  for (unsigned int unit = 1; unit <= 0xFFFF; ++unit) {
    wstring const name = wstring(1, static_cast<wchar>(unit)) + KVW("x");
    bool const valid = reference::isValidItemName(name);
    ASSERT_EQ(base->appendLevel(String(name.c_str())) != nullptr, valid) << unit;
    SmartPtr<File const> const file = File::fromString(*base, String(name.c_str()));
    ASSERT_EQ(file != nullptr, valid) << unit;
    if (!valid) continue;
    ASSERT_EQ(shown(file->getName()), narrow(name)) << unit;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
