// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/assertion.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <map>
#include <string>

#include "kvbase/core/lazy.h"
#include "kvbase/diagnostics/internal/assertion_nesting.h"
#include "kvbase/diagnostics/internal/format_without_arguments.h"
#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/narrow_text.h"
#include "kvbase/strings/kv_string.h"

namespace {

using KV_1_1::CodePageInterface;
using KV_1_1::Lazy;
using KV_1_1::String;
namespace diagnostics = KV_1_1::diagnostics;
namespace platform = KV_1_1::platform;

constexpr int kAbortStatus = 3;

// Lines by file. Only the handler of the one failure that is being reported uses it, so it needs no lock.
using IgnoredAssertions = std::map<String, std::list<unsigned int>>;

// NIL for null.
String fromAnsi(char const* text) {
  return CodePageInterface(text, platform::kAnsiCodePage);
}

bool isIgnored(IgnoredAssertions const& ignored, String const& file, unsigned int line) {
  auto const entry = ignored.find(file);
  if (entry == ignored.end()) return false;
  for (unsigned int const ignoredLine : entry->second) {
    if (ignoredLine == line) return true;
  }
  return false;
}

String messageOf(char const* expression, char const* comment, String const& file, unsigned int line,
                 char const* function) {
  String message(KVW("Assertion "));
  message << fromAnsi(expression) << KVW(" failed.\n");
  message << KVW("In file ") << file << KVW(":") << line << KVW(" in function ") << fromAnsi(function) << KVW(".");
  if (comment != nullptr) message << KVW("\n\"") << fromAnsi(comment) << KVW("\"");
  return message;
}

void writeToStandardError(String const& message) {
  // In one call, so that it stays in one piece where other threads write.
  std::string const text = diagnostics::formatWithoutArguments(message.stringAnsi());
  std::fwrite(text.data(), 1, text.size(), stderr);
}

void defaultAssertionHandler(char const* expression, char const* comment, char const* file, unsigned int line,
                             char const* function) {
  static Lazy<IgnoredAssertions> ignoredAssertions;
  String const key = fromAnsi(file);
  if (isIgnored(ignoredAssertions.get(), key, line)) return;

  String const message = messageOf(expression, comment, key, line, function);
  platform::debug().output(message);
  writeToStandardError(message);

  String title;
  title << key << KVW(":") << line;
  switch (platform::debug().ask(message, title, platform::kAbortRetryIgnore)) {
    case platform::kAnswerAbort:
      std::raise(SIGABRT);
      std::_Exit(kAbortStatus);
    case platform::kAnswerRetry:
      platform::debug().breakIntoDebugger();
      return;
    case platform::kAnswerIgnore:
      ignoredAssertions.get()[key].push_back(line);
      return;
    default:
      return;
  }
}

// Atomic, so that it can be replaced while another thread reports.
std::atomic<AssertionFailureHandler> currentHandler{&defaultAssertionHandler};

}  // namespace

namespace KV_1_1 {
namespace diagnostics {

InterlockedCounter assertionNesting;

}  // namespace diagnostics
}  // namespace KV_1_1

void __assert_fail_x(char const* expression, char const* comment, char const* file, unsigned int line,
                     char const* function) {
  if (++diagnostics::assertionNesting == 1) {
    AssertionFailureHandler const handler = currentHandler.load();
    if (handler != nullptr) handler(expression, comment, file, line, function);
  }
  // Not by a guard: an exception is to leave the counter raised.
  --diagnostics::assertionNesting;
}

AssertionFailureHandler __get_assertion_failure_handler() {
  return currentHandler.load();
}

void __set_assertion_failure_handler(AssertionFailureHandler handler) {
  currentHandler.store(handler);
}
