// SPDX-License-Identifier: MIT
//
// The language in which a module speaks. It is decided in this order:
//   1. the first argument of the program of the form -lang=xxx or /lang=xxx with at most three letters, in upper or lower
//      case;
//   2. the text "GUILanguage" of the user's settings, Software\VOLQ\<program>\Settings\10.0, where <program> is the file
//      name of the program without its last ending (Linux: see kvbase/platform/settings_api.h);
//   3. the languages of the user and of the system.
// A language is named by its abbreviation of three letters, as the system has it ("DEU", "FRA"), in upper or lower case; a
// language id has 16 bits.
//
// Thread rule: these functions, LoadTranslationDLL and the start of a module use process-wide data without a lock, so only
// one thread at a time may be in any of them.
#pragma once

#include <vector>

#include "kvbase/export.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

class Module;

// The language recorded for a module when its translation library was looked for (see LoadTranslationDLL); 0xFFFF if
// none is. COMPAT: it may be a primary language (7 instead of 1031), and the 0xFFFF of a search that found no file.
KVBASE_API unsigned short GetCurrentLangId(Module const& module);

// The abbreviations of the languages in use, the most wanted first. A forced language (1 and 2 above) stands alone, as it
// was typed. Otherwise these are the languages of the user's desktop, of the user, of the system's desktop and of the
// system, and English (United States); no language id is asked for twice, and one without an abbreviation is left out.
// COMPAT: two ids with the same abbreviation give it twice.
KVBASE_API std::vector<wstring> GetUsedLangAbbrevs();

}  // namespace KV_1_1
