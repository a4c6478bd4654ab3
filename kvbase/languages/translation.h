// SPDX-License-Identifier: MIT
//
// The files that go with a module: its translation libraries and its manual.
//
// Thread rule: see language_selection.h.
#pragma once

#include "kvbase/export.h"
#include "kvbase/platform/types.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

// Loads the translation library of a module for its resources only: toolabc.dll for tool.dll or tool.so in the language
// with the abbreviation "abc". It is looked for in the module's folder, in "languages\" below it, and in the folder
// <common program files>\<company>\<product>\<product version>\ of the module's version resource.
//
// `language` is tried first (0xFFFF: none), then those of the user and of the system; 1033, English (United States), ends
// the search, as it is the language of the module itself. A language forced by the command line or by the user's settings
// is the only one looked for (see language_selection.h).
//
// Returns the library, which stays loaded until the caller frees it (platform::modules().freeLibrary); null if a file
// was there and fitting but could not be loaded; and `module`, which must not be freed for it, in all other cases: there
// is no file, its file version is another one than the module's, or the module's path cannot be determined.
//
// Where the versions are equal, the language found is recorded for GetCurrentLangId unless the module has one recorded;
// and if the module is the program, the common controls are told the language (`language`, or else the one found).
// COMPAT: this happens before the library is loaded, so also if that fails. COMPAT: a module without a version equals a
// missing file, so 0xFFFF is recorded for it.
//
// Throws std::runtime_error if the module has a version resource without a table of translations ("VerQueryValue failed").
KVBASE_API HINSTANCE LoadTranslationDLL(HINSTANCE module, unsigned short language);

// The path of the manual of a module, which lies beside it and has its name: tool.pdf, or without the flag
// `isStandardUi` tool_ClassicUI.pdf. Empty if there is no such file that can be read, or the path of the module cannot be
// determined. `language` is ignored. COMPAT: the last dot of the whole path is taken for that of the ending, so
// C:\my.folder\tool has C:\my.pdf.
KVBASE_API wstring LocateHelpFile(HINSTANCE module, unsigned short language, bool isStandardUi);

}  // namespace KV_1_1
