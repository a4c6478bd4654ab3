// SPDX-License-Identifier: MIT
//
// The texts of error codes: the line ends that are cut, and the number that replaces a missing text.
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/diagnostics/windows_error.h"
#include "kvbase/platform/error_codes.h"
#include "tests/filesystem/path_support.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/scripted_errors.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Asked = std::vector<ulong32>;

class WindowsError : public ::testing::Test {
 protected:
  // The library's text for an error whose text in the system is `text`.
  std::string made(wchar const* text) {
    errors.texts[5] = text;
    return shown(getWindowsError(5));
  }

  ScriptedErrors errors;
  platform::ScopedBackend<platform::ErrorApi> scope{errors};
};

TEST_F(WindowsError, CodeZeroIsEmptyWithoutAskingTheSystem) {
  errors.texts[0] = KVW("Success.\r\n");
  errors.error = 5;
  EXPECT_EQ(shown(getWindowsError(0)), "");
  EXPECT_EQ(getWindowsError(0), String::EMPTY);
  EXPECT_EQ(errors.asked, Asked());
}

TEST_F(WindowsError, ATrailingLineEndIsCut) {
  EXPECT_EQ(made(KVW("Access denied.\r\n")), "Access denied.");
  EXPECT_EQ(errors.asked, Asked{5});
}

TEST_F(WindowsError, NothingButTrailingLineEndsIsCut) {
  struct Row {
    char const* name;
    wchar const* text;
    char const* result;
  };
  Row const rows[] = {
      {"no line end", KVW("a."), "a."},
      {"CR alone", KVW("a.\r"), "a."},
      {"LF alone", KVW("a.\n"), "a."},
      {"LF before CR", KVW("a.\n\r"), "a."},
      {"several in any order", KVW("a.\r\r\n\n\r\n\r"), "a."},
      {"one unit", KVW("a"), "a"},
      {"one unit and a line end", KVW("a\r\n"), "a"},
      {"only CR and LF", KVW("\r\n"), ""},
      {"only CR", KVW("\r"), ""},
      {"only LF, several", KVW("\n\n\n"), ""},
      {"empty", KVW(""), ""},
      {"inner line ends stay", KVW("a\r\nb\n\rc\r\n"), "a\r\nb\n\rc"},
      {"line ends at the beginning stay", KVW("\r\na\r\n"), "\r\na"},
      {"a trailing blank stays", KVW("a. \r\n"), "a. "},
      {"only line ends after the last blank are cut", KVW("a.\r\n \r\n"), "a.\r\n "},
      {"a line end before a trailing blank stays", KVW("a.\r\n "), "a.\r\n "},
      {"a tab stays", KVW("a\t\r\n"), "a\t"},
      {"other line ends stay", KVW("a\v\f\u0085\u2028\r\n"), "a\v\f\xC2\x85\xE2\x80\xA8"},
      {"only blanks", KVW("  \r\n"), "  "},
      {"Unicode", KVW("Zugriff verweigert \u00e4\u65e5.\r\n"), "Zugriff verweigert \xC3\xA4\xE6\x97\xA5."},
      {"a unit whose low byte is CR", KVW("\u010d\r\n"), "\xC4\x8D"},
      {"format specifiers stay", KVW("%1 %ls %08x\r\n"), "%1 %ls %08x"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(made(row.text), row.result);
  }
}

TEST_F(WindowsError, ATextOfLineEndsIsEmptyNotNil) {
  errors.texts[5] = KVW("\r\n\r\n");
  String const text = getWindowsError(5);
  EXPECT_EQ(text, String::EMPTY);
  EXPECT_NE(String::NIL, text);
  EXPECT_EQ(text.length(), 0);
}

TEST_F(WindowsError, ALongTextIsNotTruncated) {
  wstring text(70000, KVW('x'));
  errors.texts[5] = text + KVW("\r\n");
  EXPECT_EQ(shown(getWindowsError(5)), std::string(70000, 'x'));
}

TEST_F(WindowsError, ACodeWithoutTextShowsItsNumber) {
  struct Row {
    ulong32 code;
    char const* result;
  };
  Row const rows[] = {
      {5000, "[0x00001388]"},       {1, "[0x00000001]"},          {0xABCDEF, "[0x00abcdef]"},
      {0x7FFFFFFF, "[0x7fffffff]"}, {0x80000000, "[0x80000000]"}, {0x80004005, "[0x80004005]"},
      {0xFFFFFFFF, "[0xffffffff]"},
  };
  for (Row const& row : rows) EXPECT_EQ(shown(getWindowsError(row.code)), row.result);
  EXPECT_EQ(errors.asked.size(), 7u);
  EXPECT_EQ(errors.asked.back(), 0xFFFFFFFFu);
}

TEST_F(WindowsError, ACodeWithTheHighestBitMayHaveAText) {
  errors.texts[0x80004005] = KVW("Unspecified.\r\n");
  EXPECT_EQ(shown(getWindowsError(0x80004005)), "Unspecified.");
}

TEST_F(WindowsError, WithoutArgumentTheLastErrorIsReadAtEachCall) {
  errors.texts[5] = KVW("Five.\r\n");
  errors.texts[7] = KVW("Seven.\r\n");
  errors.error = 5;
  EXPECT_EQ(shown(getWindowsError()), "Five.");
  errors.error = 7;
  EXPECT_EQ(shown(getWindowsError()), "Seven.");
  errors.error = 5000;
  EXPECT_EQ(shown(getWindowsError()), "[0x00001388]");
  EXPECT_EQ(errors.asked, (Asked{5, 7, 5000}));
}

TEST_F(WindowsError, WithoutArgumentAndWithoutErrorTheSystemIsNotAsked) {
  errors.texts[0] = KVW("Success.\r\n");
  EXPECT_EQ(shown(getWindowsError()), "");
  EXPECT_EQ(errors.asked, Asked());
}

// A backend whose text is the same for every code.
class OneText final : public platform::ErrorApi {
 public:
  explicit OneText(wstring text) : text_(std::move(text)) {}

  ulong32 lastError() override { return 5; }
  void setLastError(ulong32) override {}
  bool errorText(ulong32, wstring& text) override {
    text = text_;
    return true;
  }

 private:
  wstring text_;
};

TEST(WindowsErrorMemory, NothingLeaksWhenMemoryRunsOut) {
  for (wchar const* text : {KVW("Access denied.\r\n"), KVW("Access denied."), KVW("\r\n"), KVW("")}) {
    SCOPED_TRACE(narrow(text));
    OneText errors(text);
    platform::ScopedBackend<platform::ErrorApi> const scope(errors);
    getWindowsError();  // builds what the library builds on first use
    for (AllocationSweep sweep(*text != 0); sweep.next();) sweep.run([] { getWindowsError(); });
  }
}

// The wording depends on the system, so these tests look at the form only.
TEST(WindowsErrorOfTheSystem, UsualCodesHaveATextWithoutLineEnd) {
  for (ulong32 const code : {2, 3, 5, 32, 80, 112, 183}) {
    SCOPED_TRACE(code);
    std::string const text = shown(getWindowsError(code));
    ASSERT_NE(text, "");
    EXPECT_NE(text, "NIL");
    EXPECT_NE(text.front(), '[');
    EXPECT_NE(text.back(), '\r');
    EXPECT_NE(text.back(), '\n');
    EXPECT_EQ(shown(getWindowsError(code)), text);
    platform::errors().setLastError(code);
    EXPECT_EQ(shown(getWindowsError()), text);
  }
}

TEST(WindowsErrorOfTheSystem, ZeroIsEmptyWhateverTheLastErrorIs) {
  platform::errors().setLastError(platform::kAccessDenied);
  EXPECT_EQ(getWindowsError(0), String::EMPTY);
  platform::errors().setLastError(platform::kNoError);
  EXPECT_EQ(getWindowsError(), String::EMPTY);
}

TEST(WindowsErrorOfTheSystem, ACodeWithoutTextShowsItsNumber) {
  EXPECT_EQ(shown(getWindowsError(5000)), "[0x00001388]");
  EXPECT_EQ(shown(getWindowsError(0xFFFFFFFF)), "[0xffffffff]");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
