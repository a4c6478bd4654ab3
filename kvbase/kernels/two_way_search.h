// SPDX-License-Identifier: MIT
//
// Text search in linear time and constant memory, whatever text and needle look like (Crochemore and Perrin's two-way
// algorithm). The vector kernels are faster on nearly every text and fall back on it where they are not.
#pragma once

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {

// First and last index of the m units of the needle within n units; -1 if there is none.
// REQUIRES (both): m is at least 1.
int findTextLinear(wchar const* text, int n, wchar const* needle, int m);
int findLastText(wchar const* text, int n, wchar const* needle, int m);

}  // namespace strings
}  // namespace KV_1_1
