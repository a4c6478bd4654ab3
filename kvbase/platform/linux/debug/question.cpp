// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/question.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/linux/files/descriptor.h"
#include "kvbase/platform/linux/shell/child_process.h"

namespace KV_1_1 {
namespace platform {

namespace {

// What a way of asking came to. A way that cannot be gone leaves the question to the next one.
enum class Outcome { kAnswered, kNotAnswered, kNotAsked };

struct Answer {
  char const* word;
  char letter;
  int value;
};
constexpr Answer kAnswers[] = {{"Abort", 'a', kAnswerAbort},
                               {"Retry", 'r', kAnswerRetry},
                               {"Ignore", 'i', kAnswerIgnore}};

bool isSet(char const* variable) {
  char const* const value = getenv(variable);
  return value != nullptr && *value != '\0';
}

// For zenity, which reads escapes in a text even if it is no mark-up.
std::string escaped(char const* text) {
  std::string result;
  for (; *text != '\0'; ++text) {
    if (*text == '\\') result += '\\';
    result += *text;
  }
  return result;
}

// zenity writes the button's text, and the library of its windows may write other lines. When its window is closed, it
// ends with the status of the variable: by default 1, which is its status too if there is no such display.
Outcome askByZenity(char const* message, char const* title, int& answer) {
  std::string const text = "--text=" + escaped(message);
  std::string const caption = std::string("--title=") + title;
  char const* const command[] = {"zenity",
                                 "--question",
                                 "--switch",
                                 "--no-markup",
                                 "--no-wrap",
                                 caption.c_str(),
                                 text.c_str(),
                                 "--extra-button=Abort",
                                 "--extra-button=Retry",
                                 "--extra-button=Ignore",
                                 nullptr};
  constexpr int kClosed = 17;
  ToolResult const result = runTool(command, "ZENITY_ESC=17");
  std::string const lines = '\n' + result.output;
  for (Answer const& each : kAnswers) {
    if (lines.find('\n' + std::string(each.word) + '\n') == std::string::npos) continue;
    answer = each.value;
    return Outcome::kAnswered;
  }
  return result.status == kClosed ? Outcome::kNotAnswered : Outcome::kNotAsked;
}

// The text in the mark-up that kdialog takes a text for that has something like it. kdialog reads escapes too.
std::string markedUp(char const* text) {
  std::string result = "<qt>";
  for (; *text != '\0'; ++text) {
    switch (*text) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '\\':
        result += "&#92;";
        break;
      case '\n':
        result += "<br/>";
        break;
      default:
        result += *text;
    }
  }
  return result + "</qt>";
}

// kdialog ends with 0, 1 or 2 by the button, and with 2 also when its window is closed. A tool that could not show a
// window ends with another status.
Outcome askByKdialog(char const* message, char const* title, int& answer) {
  std::string const text = markedUp(message);
  char const* const command[] = {
      "kdialog", "--title",        title,    "--yes-label",          "Abort",      "--no-label",
      "Retry",   "--cancel-label", "Ignore", "--warningyesnocancel", text.c_str(), nullptr};
  ToolResult const result = runTool(command);
  if (!result.started || result.status < 0 || result.status > 2) return Outcome::kNotAsked;
  answer = kAnswers[result.status].value;
  return Outcome::kAnswered;
}

bool writeAll(int descriptor, std::string const& text) {
  for (std::size_t done = 0; done < text.size();) {
    ssize_t const count = write(descriptor, text.data() + done, text.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    done += static_cast<std::size_t>(count);
  }
  return true;
}

// A terminal obeys control characters, which a text from elsewhere must not bring. U+0080 to U+009F are such too.
std::string printable(char const* text) {
  std::string result;
  for (; *text != '\0'; ++text) {
    auto const byte = static_cast<unsigned char>(text[0]);
    auto const next = static_cast<unsigned char>(text[1]);
    bool const isPair = byte == 0xC2 && next >= 0x80 && next < 0xA0;
    bool const isControl = isPair || (byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7F;
    result += isControl ? '?' : *text;
    if (isPair) ++text;
  }
  return result;
}

// Reads a line and takes its first letter; false at the end of the input.
bool readLetter(int terminal, char& letter) {
  letter = '\0';
  for (;;) {
    char byte;
    ssize_t const count = read(terminal, &byte, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    // A terminal in raw mode ends a line with the latter.
    if (byte == '\n' || byte == '\r') return true;
    if (letter == '\0' && byte != ' ') letter = byte;
  }
}

Outcome askOnTerminal(char const* message, char const* title, int& answer) {
  Descriptor const terminal(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
  // A process in the background would be stopped when it reads.
  if (!terminal || tcgetpgrp(terminal.get()) != getpgrp()) return Outcome::kNotAsked;
  if (!writeAll(terminal.get(), '\n' + printable(title) + "\n\n" + printable(message) + "\n\n")) {
    return Outcome::kNotAsked;
  }
  for (;;) {
    char letter;
    bool const isAsked = writeAll(terminal.get(), "[a]bort, [r]etry, [i]gnore? ");
    if (!isAsked || !readLetter(terminal.get(), letter)) return Outcome::kNotAnswered;
    for (Answer const& each : kAnswers) {
      if (letter != each.letter && letter != each.word[0]) continue;
      answer = each.value;
      return Outcome::kAnswered;
    }
  }
}

}  // namespace

int askAbortRetryIgnore(char const* message, char const* title) {
  int answer = 0;
  Outcome outcome = Outcome::kNotAsked;
  if (isSet("DISPLAY") || isSet("WAYLAND_DISPLAY")) {
    outcome = askByZenity(message, title, answer);
    if (outcome == Outcome::kNotAsked) outcome = askByKdialog(message, title, answer);
  }
  if (outcome == Outcome::kNotAsked) askOnTerminal(message, title, answer);
  return answer;
}

}  // namespace platform
}  // namespace KV_1_1
