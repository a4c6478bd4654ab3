// SPDX-License-Identifier: MIT
//
// The seam to the languages of the user, of the system and of a thread, and to the command line that may name another.
//
// A language id has 16 bits: the primary language (the low ten bits) and the sublanguage. A locale id has the sort order
// above it. 1033 is English (United States), 1031 German (Germany).
//
// Thread rule: any method may be called from any thread; each thread has a locale of its own.
#pragma once

#include <cstdint>
#include <vector>

#include "kvbase/platform/backend.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

class LocaleApi {
 public:
  // The locale of the calling thread: that which the user had when the thread first asked, unless setThreadLocale has
  // changed it.
  virtual ulong32 threadLocale() = 0;
  // An id without sublanguage sets the standard language for it (0x0407 for 0x0007), and 0 and 0x0400 the user's. The
  // sort order is kept only if the system has it for the language; this is so on Windows alone. False for a locale that
  // the system does not know; nothing has changed then.
  virtual bool setThreadLocale(ulong32 locale) = 0;

  // The language of the user's desktop, and of the user's dates and numbers; then those of the system.
  virtual std::uint16_t userUiLanguage() = 0;
  virtual std::uint16_t userLanguage() = 0;
  virtual std::uint16_t systemUiLanguage() = 0;
  virtual std::uint16_t systemLanguage() = 0;

  // The abbreviation of a language or locale, three letters such as "DEU". False for an id that the system does not
  // know; `abbreviation` is then unchanged.
  virtual bool languageAbbreviation(ulong32 locale, wstring& abbreviation) = 0;

  // Callbacks of the enumerations; they return whether to go on.
  using LanguageGroupCallback = bool (*)(ulong32 group, void* context);
  using LocaleCallback = bool (*)(ulong32 locale, void* context);
  // Calls back for each language group that the system supports, and for each locale of a group, until a callback
  // returns false. The callback must not throw. False if the enumeration is not possible.
  virtual bool enumerateLanguageGroups(LanguageGroupCallback callback, void* context) = 0;
  virtual bool enumerateLocales(ulong32 group, LocaleCallback callback, void* context) = 0;

  // Stores the arguments of the process, the program's name first. False if there is no command line; `arguments` is
  // then unchanged.
  virtual bool commandLine(std::vector<wstring>& arguments) = 0;

  // Tells the common controls of the desktop which language to use. Nothing happens off Windows.
  virtual void setControlsLanguage(std::uint16_t language) = 0;

 protected:
  // Backends are never destroyed through this interface.
  ~LocaleApi() = default;
};

}  // namespace platform
}  // namespace KV_1_1
