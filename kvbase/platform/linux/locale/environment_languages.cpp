// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/locale/environment_languages.h"

#include <stdlib.h>
#include <string.h>

#include <initializer_list>

#include "kvbase/platform/linux/files/read_file.h"
#include "kvbase/platform/linux/locale/locale_name.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr std::size_t kLongestFile = 65536;

// The value of a variable; null if it is empty.
char const* variable(char const* name) {
  char const* const value = getenv(name);
  return value == nullptr || *value == '\0' ? nullptr : value;
}

// The language of the first variable that names one.
std::uint16_t languageOfVariables(std::initializer_list<char const*> names) {
  for (char const* const name : names) {
    char const* const value = variable(name);
    if (value == nullptr) continue;
    std::uint16_t const language = languageOfLocaleName(value, strlen(value));
    if (language != kNoLanguage) return language;
  }
  return kNoLanguage;
}

std::uint16_t orAmericanEnglish(std::uint16_t language) {
  return language == kNoLanguage ? kAmericanEnglish : language;
}

// Without any locale a program runs in the locale C.
bool messagesArePortable() {
  for (char const* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    char const* const value = variable(name);
    if (value != nullptr) return isPortableLocale(value, strlen(value));
  }
  return true;
}

// The value that a line assigns to LANG, without quotes. False if the line does not.
bool readAssignment(char const* line, char const* end, char const*& value, std::size_t& size) {
  constexpr char kName[] = "LANG=";
  constexpr std::size_t kNameSize = sizeof kName - 1;
  auto const isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
  while (line != end && isBlank(*line)) ++line;
  while (line != end && isBlank(end[-1])) --end;
  if (static_cast<std::size_t>(end - line) < kNameSize || memcmp(line, kName, kNameSize) != 0) return false;
  line += kNameSize;
  bool const isQuoted = end - line >= 2 && (*line == '"' || *line == '\'') && end[-1] == *line;
  value = isQuoted ? line + 1 : line;
  size = static_cast<std::size_t>(end - value) - (isQuoted ? 1 : 0);
  return true;
}

}  // namespace

std::uint16_t userUiLanguageOfEnvironment() {
  char const* const list = messagesArePortable() ? nullptr : variable("LANGUAGE");
  if (list != nullptr) {
    std::uint16_t const language = languageOfLocaleName(list, strcspn(list, ":"));
    if (language != kNoLanguage) return language;
  }
  return orAmericanEnglish(languageOfVariables({"LC_ALL", "LC_MESSAGES", "LANG"}));
}

std::uint16_t userLanguageOfEnvironment() {
  return orAmericanEnglish(languageOfVariables({"LC_ALL", "LC_TIME", "LANG"}));
}

std::uint16_t systemLanguageOfEnvironment() {
  std::uint16_t language = languageOfVariables({"KVBASE_SYSTEM_LANG"});
  if (language == kNoLanguage) language = languageOfLocaleFile("/etc/locale.conf");
  if (language == kNoLanguage) language = languageOfLocaleFile("/etc/default/locale");
  return orAmericanEnglish(language);
}

std::uint16_t languageOfLocaleFile(char const* path) {
  FileBytes file;
  if (!readFile(AT_FDCWD, path, kLongestFile, file)) return kNoLanguage;
  std::uint16_t language = kNoLanguage;
  char const* const end = file.data() + file.size();
  for (char const* line = file.data(); line != end;) {
    auto const* const found = static_cast<char const*>(memchr(line, '\n', static_cast<std::size_t>(end - line)));
    char const* const lineEnd = found == nullptr ? end : found;
    char const* value = nullptr;
    std::size_t size = 0;
    if (readAssignment(line, lineEnd, value, size)) language = languageOfLocaleName(value, size);
    line = found == nullptr ? end : found + 1;
  }
  return language;
}

}  // namespace platform
}  // namespace KV_1_1
