// SPDX-License-Identifier: MIT
//
// The code pages of the Linux backend, by their Windows numbers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "kvbase/platform/internal/native_backends.h"
#include "tests/platform/linux/environment_variable.h"

namespace KV_1_1 {
namespace testing {
namespace {

using platform::NativeText;

// The variable is read once per process, so each row runs in a process of its own.
TEST(AnsiCodePageDeathTest, ComesFromTheEnvironment) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  struct Row {
    char const* value;
    unsigned int page;
  };
  Row const rows[] = {{nullptr, 65001}, {"1252", 1252}, {"932", 932},    {"", 65001},
                      {"none", 65001},  {"0", 65001},   {"70000", 65001}};
  for (Row const& row : rows) {
    EnvironmentVariable const variable("KVBASE_ANSI_CODEPAGE", row.value);
    EXPECT_EXIT(std::exit(NativeText().ansiCodePage() == row.page ? 0 : 1), ::testing::ExitedWithCode(0), "")
        << (row.value == nullptr ? "unset" : row.value);
  }
}

// The code pages of Windows that ICU has a table for.
TEST(CodePages, AreKnownByTheirWindowsNumbers) {
  for (unsigned int page :
       {37u,    437u,   500u,   720u,   737u,   775u,   850u,   852u,   855u,   857u,   858u,   860u,   861u,   862u,
        863u,   864u,   865u,   866u,   869u,   870u,   874u,   875u,   932u,   936u,   949u,   950u,   1026u,  1047u,
        1140u,  1141u,  1142u,  1143u,  1144u,  1145u,  1146u,  1147u,  1148u,  1149u,  1250u,  1251u,  1252u,  1253u,
        1254u,  1255u,  1256u,  1257u,  1258u,  10000u, 10006u, 10007u, 10029u, 10081u, 20127u, 20273u, 20277u, 20278u,
        20280u, 20284u, 20285u, 20290u, 20297u, 20420u, 20424u, 20838u, 20866u, 20871u, 20924u, 20932u, 20936u, 20949u,
        21025u, 21866u, 28591u, 28592u, 28593u, 28594u, 28595u, 28596u, 28597u, 28598u, 28599u, 28603u, 28605u, 38598u,
        50220u, 50221u, 50222u, 50225u, 51932u, 51936u, 51949u, 52936u, 54936u, 65000u}) {
    SCOPED_TRACE(page);
    char bytes[16];
    int const size = NativeText().encode(page, KVW("A1"), 2, bytes, sizeof bytes);
    ASSERT_GT(size, 0);
    wchar units[8];
    ASSERT_EQ(NativeText().decode(page, bytes, size, units, 8), 2);
    EXPECT_EQ(wstring(units, 2), KVW("A1"));
  }
}

TEST(CodePages, OtherUnicodeFormsAreNoCodePages) {
  for (unsigned int page : {1200u, 1201u, 1202u, 1208u, 12000u, 12001u}) {
    EXPECT_EQ(NativeText().decode(page, "ab", 2, nullptr, 0), 0) << page;
  }
}

TEST(CodePages, ReplacementIsAQuestionMarkOfThePage) {
  char bytes[4];
  ASSERT_EQ(NativeText().encode(37, KVW("\u3042"), 1, bytes, 4), 1);
  EXPECT_EQ(bytes[0], '\x6F') << "of the old mainframe's page";
  wchar const lone[] = {static_cast<wchar>(0xD800)};
  ASSERT_EQ(NativeText().encode(1252, lone, 1, bytes, 4), 1);
  EXPECT_EQ(bytes[0], '?');
}

TEST(CodePages, MeasuringWritesNothingAndAgreesWithWriting) {
  std::string const bytes =
      "\x93\xFA\x96\x7B"
      "abc"
      "\x1A\x1C\x7F";
  int const needed = NativeText().decode(932, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
  ASSERT_EQ(needed, 8);
  std::vector<wchar> units(8);
  ASSERT_EQ(NativeText().decode(932, bytes.data(), static_cast<int>(bytes.size()), units.data(), 8), 8);
  EXPECT_EQ(wstring(units.data(), 8), KVW("\u65E5\u672Cabc\x1A\x1C\x7F"));
  std::string back(10, '#');
  EXPECT_EQ(NativeText().encode(932, units.data(), 8, nullptr, 0), 10);
  ASSERT_EQ(NativeText().encode(932, units.data(), 8, &back[0], 10), 10);
  EXPECT_EQ(back, bytes);
  EXPECT_EQ(NativeText().encode(932, units.data(), 8, &back[0], 9), 0);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
