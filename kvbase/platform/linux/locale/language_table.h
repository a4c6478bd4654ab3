// SPDX-License-Identifier: MIT
//
// The languages that the library knows on systems that have no such table: their ids and abbreviations are those of
// Windows, because the names of translation files are made of them.
#pragma once

#include <cstdint>

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

struct Language {
  std::uint16_t id;
  // The language with its sublanguage that a neutral id stands for: 0x0407, German (Germany), for 0x0007. The id itself
  // if it is not neutral.
  std::uint16_t standard;
  char abbreviation[4];

  constexpr bool isNeutral() const { return id != standard; }
};

// All languages, by ascending id. Each `standard` has a row of its own.
Language const* languagesBegin();
Language const* languagesEnd();

// Null if there is none.
Language const* findLanguage(ulong32 id);

}  // namespace platform
}  // namespace KV_1_1
