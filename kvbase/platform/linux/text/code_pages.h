// SPDX-License-Identifier: MIT
//
// Windows code pages by their numbers. The contracts are those of TextApi::decode, encode and ansiCodePage.
//
// They are converted by ICU: all the pages of Windows that ICU has a table for. 1200 and 1201, which are not narrow
// text, are refused as Windows refuses them.
#pragma once

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

unsigned int currentAnsiCodePage();
int decodeCodePage(unsigned int codePage, char const* bytes, int size, wchar* units, int capacity);
int encodeCodePage(unsigned int codePage, wchar const* units, int size, char* bytes, int capacity);

}  // namespace platform
}  // namespace KV_1_1
