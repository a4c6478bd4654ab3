// SPDX-License-Identifier: MIT
//
// The language id of a locale's name in the environment.
//
//   de_DE.UTF-8 => 0x0407     de => 0x0407         de_AT@euro => 0x0C07     en_DK => 0x0409 (no language of its own)
//   sr_RS => 0x281A           sr_RS@latin => 0x241A                         zh-Hant => 0x0404
//   C, POSIX, C.UTF-8 => 0x0409, because the texts of that locale are American English
#pragma once

#include <cstddef>
#include <cstdint>

namespace KV_1_1 {
namespace platform {

constexpr std::uint16_t kNoLanguage = 0;
constexpr std::uint16_t kAmericanEnglish = 0x0409;

// Whether the name, `size` bytes, is that of the locale which programs start in, with any character set.
bool isPortableLocale(char const* name, std::size_t size);

// The language of a locale's name, `size` bytes: one that is in the table of languages and is not neutral. kNoLanguage
// for any text that is not the name of a locale with such a language. The text may be anything.
std::uint16_t languageOfLocaleName(char const* name, std::size_t size);

}  // namespace platform
}  // namespace KV_1_1
