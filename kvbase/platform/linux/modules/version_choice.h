// SPDX-License-Identifier: MIT
//
// Which version of a resource the system prefers.
#pragma once

#include <cstdint>

#include "kvbase/platform/linux/modules/pe_resources.h"
#include "kvbase/platform/locale_api.h"

namespace KV_1_1 {
namespace platform {

// The version for a language: of the language itself, of its primary language, a neutral one. For a language without a
// primary language (0, 0x400, 0x800) further: of the thread's language, of the user's and its primary language (not for
// 0x800), of the system's and its primary language, of 1033, and at last the first in the image. So 0 is a search
// without a wanted language. 0 if there is no version; the locales are asked only as far as the search goes.
PeResources::Version chooseVersion(PeResources& resources, PeResources::Directory const& versions,
                                   std::uint16_t language, LocaleApi& locales);

}  // namespace platform
}  // namespace KV_1_1
