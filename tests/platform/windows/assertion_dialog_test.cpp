// SPDX-License-Identifier: MIT
//
// Assertion reports with the system's own message box, debug channel and break.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kvbase/diagnostics/assertion.h"
#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/types.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

// Answers the message boxes of this thread: each is closed by one of its buttons, and remembered.
class DialogAnswer {
 public:
  explicit DialogAnswer(int button)
      : button_(button), hook_(SetWindowsHookExW(WH_CBT, &onEvent, nullptr, GetCurrentThreadId())) {
    current() = this;
  }
  ~DialogAnswer() { UnhookWindowsHookEx(hook_); }
  DialogAnswer(DialogAnswer const&) = delete;
  DialogAnswer& operator=(DialogAnswer const&) = delete;

  struct Dialog {
    std::string title;
    std::string message;
    std::vector<int> buttons;
  };
  std::vector<Dialog> dialogs;

 private:
  static DialogAnswer*& current() {
    static DialogAnswer* answer;
    return answer;
  }

  static LRESULT CALLBACK onEvent(int code, WPARAM first, LPARAM second) {
    HWND const window = reinterpret_cast<HWND>(first);
    if (code == HCBT_ACTIVATE && isDialog(window)) {
      PostMessageW(window, WM_COMMAND, static_cast<WPARAM>(current()->button_), 0);
    }
    // Not before: when it becomes active, the box is not complete.
    if (code == HCBT_DESTROYWND && isDialog(window)) current()->dialogs.push_back(describe(window));
    return CallNextHookEx(nullptr, code, first, second);
  }

  static bool isDialog(HWND window) {
    wchar name[16] = {};
    GetClassNameW(window, name, 16);
    return wstring(name) == L"#32770";
  }

  static Dialog describe(HWND window) {
    constexpr int kMessage = 0xFFFF;
    Dialog dialog;
    dialog.title = textOf(window);
    dialog.message = textOf(GetDlgItem(window, kMessage));
    for (int id = 1; id < 12; ++id) {
      HWND const button = GetDlgItem(window, id);
      // Not IsWindowVisible: the box itself is hidden by now.
      bool const shown = button != nullptr && (GetWindowLongW(button, GWL_STYLE) & WS_VISIBLE) != 0;
      if (shown) dialog.buttons.push_back(id);
    }
    return dialog;
  }

  static std::string textOf(HWND window) {
    wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(window, &text[0], static_cast<int>(text.size()))));
    return narrow(text);
  }

  int button_;
  HHOOK hook_;
};

// What a debugger would see: the texts of the channel, and breaks, behind which the program goes on.
class DebuggerEvents {
 public:
  DebuggerEvents() : handler_(AddVectoredExceptionHandler(/*first=*/1, &onException)) {
    texts().clear();
    breaks() = 0;
  }
  ~DebuggerEvents() { RemoveVectoredExceptionHandler(handler_); }
  DebuggerEvents(DebuggerEvents const&) = delete;
  DebuggerEvents& operator=(DebuggerEvents const&) = delete;

  static std::vector<std::string>& texts() {
    static std::vector<std::string> seen;
    return seen;
  }
  static int& breaks() {
    static int seen;
    return seen;
  }

 private:
  static LONG CALLBACK onException(EXCEPTION_POINTERS* pointers) {
    constexpr DWORD kNarrowOutput = 0x40010006;
    EXCEPTION_RECORD const& record = *pointers->ExceptionRecord;
    if (record.ExceptionCode == kNarrowOutput) {
      texts().push_back(reinterpret_cast<char const*>(record.ExceptionInformation[1]));
      return EXCEPTION_CONTINUE_EXECUTION;
    }
    if (record.ExceptionCode != EXCEPTION_BREAKPOINT) return EXCEPTION_CONTINUE_SEARCH;
    ++breaks();
    // Over the one byte of the instruction.
    ++pointers->ContextRecord->Rip;
    return EXCEPTION_CONTINUE_EXECUTION;
  }

  void* handler_;
};

std::string reportOf(std::string const& file) {
  return "Assertion x % 2 failed.\nIn file " + file + ":7 in function g.\n\"comment\"";
}

std::string freshFile() {
  static int count = 0;
  return "dialog" + std::to_string(++count) + ".cpp";
}

std::string fail(std::string const& file) {
  ::testing::internal::CaptureStderr();
  __assert_fail_x("x % 2", "comment", file.c_str(), 7, "g");
  return ::testing::internal::GetCapturedStderr();
}

TEST(AssertionDialog, DialogShowsTitleMessageAndThreeButtons) {
  DebuggerEvents const events;
  DialogAnswer const answer(platform::kAnswerIgnore);
  std::string const file = freshFile();
  EXPECT_EQ(fail(file), reportOf(file));
  ASSERT_EQ(answer.dialogs.size(), 1U);
  EXPECT_EQ(answer.dialogs[0].title, file + ":7");
  EXPECT_EQ(answer.dialogs[0].message, reportOf(file));
  EXPECT_EQ(answer.dialogs[0].buttons,
            (std::vector<int>{platform::kAnswerAbort, platform::kAnswerRetry, platform::kAnswerIgnore}));
  EXPECT_EQ(DebuggerEvents::texts(), std::vector<std::string>{reportOf(file)});
}

TEST(AssertionDialog, IgnoreShowsNoDialogAgain) {
  DebuggerEvents const events;
  DialogAnswer const answer(platform::kAnswerIgnore);
  std::string const file = freshFile();
  fail(file);
  EXPECT_EQ(fail(file), "");
  EXPECT_EQ(answer.dialogs.size(), 1U);
  EXPECT_EQ(DebuggerEvents::texts().size(), 1U);
  EXPECT_EQ(DebuggerEvents::breaks(), 0);
}

TEST(AssertionDialog, RetryBreaksAndGoesOn) {
  DebuggerEvents const events;
  DialogAnswer const answer(platform::kAnswerRetry);
  std::string const file = freshFile();
  fail(file);
  EXPECT_EQ(DebuggerEvents::breaks(), 1);
  EXPECT_EQ(fail(file), reportOf(file));
  EXPECT_EQ(DebuggerEvents::breaks(), 2);
  EXPECT_EQ(answer.dialogs.size(), 2U);
}

TEST(AssertionDialogDeathTest, AbortEndsWithStatus3) {
  EXPECT_EXIT(
      {
        DialogAnswer const answer(platform::kAnswerAbort);
        __assert_fail_x("x", nullptr, "f", 7, "g");
      },
      ::testing::ExitedWithCode(3), "Assertion x failed.\nIn file f:7 in function g.");
}

TEST(AssertionDialogDeathTest, RetryWithoutADebuggerEndsTheProcess) {
  constexpr int kBreakpoint = static_cast<int>(0x80000003);
  EXPECT_EXIT(
      {
        DialogAnswer const answer(platform::kAnswerRetry);
        __assert_fail_x("x", nullptr, "f", 7, "g");
      },
      ::testing::ExitedWithCode(kBreakpoint), "");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
