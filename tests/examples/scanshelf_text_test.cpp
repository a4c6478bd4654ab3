// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>

#include "examples/scanshelf/text.cpp"
#include "tests/examples/scanshelf_texts.h"

namespace scanshelf {
namespace {

class ScanshelfText : public ScanshelfTest {};
class ScanshelfTable : public ScanshelfTest {};

TEST_F(ScanshelfText, Counts) {
  struct {
    std::uint64_t count;
    char const* text;
  } const rows[] = {{0, "0"},
                    {999, "999"},
                    {1000, "1,000"},
                    {104233, "104,233"},
                    {1234567, "1,234,567"},
                    {UINT64_MAX, "18,446,744,073,709,551,615"}};
  for (auto const& row : rows) EXPECT_STREQ(utf8(countText(row.count)), row.text);
  EXPECT_STREQ(utf8(countOf(1, kFiles)), "1 file");
  EXPECT_STREQ(utf8(countOf(0, kFiles)), "0 files");
  EXPECT_STREQ(utf8(countOf(1200, kFiles)), "1,200 files");
}

TEST_F(ScanshelfText, Sizes) {
  constexpr std::uint64_t kKilo = 1024, kMega = kKilo * 1024, kGiga = kMega * 1024, kTera = kGiga * 1024;
  struct {
    std::uint64_t bytes;
    char const* text;
  } const rows[] = {{0, "0 B"},
                    {1023, "1023 B"},
                    {kKilo, "1.0 KB"},
                    {1536, "1.5 KB"},
                    {1280, "1.3 KB"},
                    {kMega - 1, "1.0 MB"},
                    {kMega - 60, "1023.9 KB"},
                    {kMega, "1.0 MB"},
                    {kGiga - 1, "1.0 GB"},
                    {3 * kGiga, "3.0 GB"},
                    {kTera - 1, "1.0 TB"},
                    {5000 * kTera, "5000.0 TB"}};
  for (auto const& row : rows) EXPECT_STREQ(utf8(sizeText(row.bytes)), row.text) << row.bytes;
}

TEST_F(ScanshelfText, Durations) {
  struct {
    long long milliseconds;
    char const* text;
  } const rows[] = {{0, "under 1 ms"},
                    {1, "1 ms"},
                    {999, "999 ms"},
                    {1000, "1.0 s"},
                    {1449, "1.4 s"},
                    {59'999, "59.9 s"},
                    {60'000, "1 min 0 s"},
                    {65'999, "1 min 5 s"},
                    {3'599'999, "59 min 59 s"},
                    {3'600'000, "1 h 0 min"},
                    {7'260'000, "2 h 1 min"}};
  for (auto const& row : rows) {
    EXPECT_STREQ(utf8(durationText(std::chrono::milliseconds(row.milliseconds))), row.text) << row.milliseconds;
  }
}

TEST_F(ScanshelfText, Widths) {
  KV_1_1::wchar const loneHigh[] = {'a', 0xD83D, 'b', 0};
  KV_1_1::wchar const highAtEnd[] = {'a', 0xD83D, 0};
  KV_1_1::wchar const low[] = {0xDE00, 'a', 0};
  struct {
    char const* name;
    String text;
    int width;
  } const rows[] = {
      {"NIL", String::NIL, 0},
      {"EMPTY", String::EMPTY, 0},
      {"ASCII", KVW("abc"), 3},
      {"umlaut", KVW("\u00C4rzte"), 5},
      {"umlaut of two characters", KVW("A\u0308rzte"), 5},
      {"ideograph", KVW("\u5854a"), 3},
      {"first wide one", KVW("\u1100"), 2},
      {"behind the wide ones", KVW("\u1160"), 1},
      {"narrow pair", KVW("\U00010400"), 1},
      {"wide pair", KVW("\U0001F600"), 2},
      {"ideograph of two units", KVW("\U00020000"), 2},
      {"lone high surrogate", loneHigh, 3},
      {"high surrogate at the end", highAtEnd, 2},
      {"lone low surrogate", low, 2},
  };
  for (auto const& row : rows) EXPECT_EQ(displayWidth(row.text), row.width) << row.name;
}

TEST_F(ScanshelfText, Shortening) {
  struct {
    char const* name;
    String text;
    int width;
    String result;
  } const rows[] = {
      {"NIL", String::NIL, 5, String::NIL},
      {"EMPTY", String::EMPTY, 5, String::EMPTY},
      {"fits", KVW("abcde"), 5, KVW("abcde")},
      {"one too many", KVW("abcdef"), 5, KVW("ab\u2026ef")},
      {"many", KVW("abcdefghij"), 6, KVW("ab\u2026hij")},
      {"path that fits", KVW("scans/a.dat"), 11, KVW("scans/a.dat")},
      {"path", KVW("scans/2024/March/hall/scan001.dat"), 26, KVW("scans/.../hall/scan001.dat")},
      {"path without its front", KVW("scans from 2024/March/scan001.dat"), 22, KVW(".../March/scan001.dat")},
      {"path with a long last name", KVW("scans/scan001.dat"), 9, KVW("scan\u2026.dat")},
      {"path with wide names", KVW("\u5854\u5854/\u5854\u5854/\u5854\u5854"), 11, KVW(".../\u5854\u5854")},
      {"pairs stay whole", KVW("\U0001F600\U0001F601\U0001F602\U0001F603"), 5, KVW("\U0001F600\u2026\U0001F603")},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    String const result = shorten(row.text, row.width);
    EXPECT_TRUE(result == row.result) << utf8(result);
    EXPECT_LE(displayWidth(result), row.width);
  }
}

TEST_F(ScanshelfText, NilIsAnEmptyText) {
  EXPECT_STREQ(utf8(String::NIL), "");
  EXPECT_STREQ(utf8(String::EMPTY), "");
}

TEST_F(ScanshelfTable, ColumnsAreAsWideAsTheirWidestCell) {
  std::ostringstream out;
  printTable(out, "lr", {{KVW("Name"), KVW("N")}, {KVW("\u00C4rztehaus"), KVW("1,200")}, {KVW("\u5854"), KVW("7")}});
  EXPECT_EQ(out.str(),
            "  Name           N\n"
            "  \xC3\x84rztehaus  1,200\n"
            "  \xE5\xA1\x94             7\n");
}

TEST_F(ScanshelfTable, LastCellIsNotPadded) {
  std::ostringstream out;
  printTable(out, "ll", {{KVW("Name"), KVW("x")}, {KVW("Of"), KVW("longer")}});
  EXPECT_EQ(out.str(), "  Name  x\n  Of    longer\n");
}

}  // namespace
}  // namespace scanshelf
