// SPDX-License-Identifier: MIT
//
// Which language is wanted, and where the file of a module in that language is.
//
// Thread rule: no locks; see language_selection.h.
#pragma once

#include <cstdint>
#include <exception>
#include <map>

#include "kvbase/platform/types.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

constexpr unsigned short kNoLanguage = 0xFFFF;
// English (United States): the language of the modules' own resources, which therefore has no file.
constexpr unsigned short kFallbackLanguage = 1033;
constexpr unsigned short kPrimaryLanguageMask = 0x3FF;

// The abbreviation forced by the command line and by the user's settings, zeros if none is.
extern wchar commandLineSlot[4];
extern wchar registrySlot[4];

// Both return the slot, or null if no language is given there. An abbreviation is kept as it was typed.
//
// The command line is not read again once it has given a language. COMPAT: the first "-lang=" of up to three letters ends
// the search even if nothing follows it; longer ones are passed over.
wchar const* GetCommandLineLangAbbrev();
// The settings are read at each call, which overwrites the slot. A value that is no text or has more than three units
// counts as missing.
wchar const* GetRegistryLangAbbrev();
// The one of the command line, else the one of the settings, else null.
wchar const* GetForcedLangAbbrev();

// A search for the locale with an abbreviation: the context of the callbacks below.
struct LangIdSearch {
  unsigned short langId = kNoLanguage;
  wchar const* abbrev = nullptr;
  std::exception_ptr failure;  // of a callback; it must not pass through the system
};

// Return whether the enumeration goes on: until a locale's abbreviation is the one searched for, without regard to case.
// False for a null context or abbreviation.
bool SearchLanguageGroup(ulong32 group, void* search);
bool SearchLocale(ulong32 locale, void* search);

// The id of the first locale with that abbreviation, ignoring case; kNoLanguage if the system knows none, and for null.
unsigned short GetLangIdOfAbbrev(wchar const* abbrev);

struct LanguageFile {
  wstring path;  // empty if there is no file
  unsigned short langId = kNoLanguage;
};

// Looks for a file of a module in the module's folder, in "languages\" below it, and in the folder of its product (see
// GetProductCommonFolder). `pattern` is the file name with one %ls for the abbreviation; with `prefixModuleName` the stem
// of the module's file name stands in front of it.
//
// A forced language is the only one looked for: without a file the path is empty and the id that of the abbreviation.
// Otherwise `preferredLang` (kNoLanguage: none) comes first, then the languages of the user's desktop, of the user, of
// the system's desktop and of the system, each with its primary language behind it. 1033 ends the search with an empty
// path and kNoLanguage, wherever it stands. COMPAT: so a language behind 1033 is never looked for. COMPAT: the id of a
// file found for a primary language is that primary language. COMPAT: a language is passed over only if the one directly
// before it was the same.
//
// COMPAT: the folder and the module's name are part of the format, so "%%" in them is a percent sign. Any other percent
// sign would ask for an argument that is not there: nothing is read, and the file counts as not found in that folder. So
// does a path of 260 units or more.
//
// An empty path with kNoLanguage if the path of the module cannot be determined. Passes on the std::runtime_error of
// GetProductCommonFolder.
LanguageFile FindLanguageFile(HINSTANCE module, wstring const& pattern, bool prefixModuleName,
                              unsigned short preferredLang);

// The language recorded for each module, by its handle. It is kept until the end of the library; only LoadTranslationDLL
// adds to it.
using ModuleLanguages = std::map<std::uintptr_t, unsigned short>;
ModuleLanguages& moduleLanguages();

}  // namespace KV_1_1
