// SPDX-License-Identifier: MIT
//
// The languages of the user and of the system, as the environment tells them now. A source that is not set, is empty or
// is not the name of a locale with a known language (locale_name.h) is passed over for the next; the last is American
// English.
//
//   the user's desktop      LANGUAGE (its first entry; not if the next three select the locale C), LC_ALL, LC_MESSAGES,
//                           LANG
//   the user's formats      LC_ALL, LC_TIME, LANG
//   the system              KVBASE_SYSTEM_LANG, then LANG in /etc/locale.conf, then in /etc/default/locale
//
// The locale of the C library is neither read nor changed, because it belongs to the application.
#pragma once

#include <cstdint>

namespace KV_1_1 {
namespace platform {

std::uint16_t userUiLanguageOfEnvironment();
std::uint16_t userLanguageOfEnvironment();
std::uint16_t systemLanguageOfEnvironment();

// The language that the last assignment to LANG in a file of lines such as LANG="de_DE.UTF-8" names. kNoLanguage if
// there is no such file or no such assignment, or it names no known language. A file of more than 64 KB is not read,
// nor is anything but a plain file.
std::uint16_t languageOfLocaleFile(char const* path);

}  // namespace platform
}  // namespace KV_1_1
