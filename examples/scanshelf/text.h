// SPDX-License-Identifier: MIT
#pragma once

#include <kvbase/kvbase.h>

#include <chrono>
#include <cstdint>

namespace scanshelf {

// The text as UTF-8; an empty text for NIL. Valid as long as the String.
char const* utf8(KV_1_1::String const& text);

//   1234567 => "1,234,567"
KV_1_1::String countText(std::uint64_t count);
// The count and the noun, with an s unless there is one.
//   1, "file" => "1 file"      1200, "file" => "1,200 files"
KV_1_1::String countOf(std::uint64_t count, KV_1_1::wchar const* noun);
//   1023 => "1023 B"      1536 => "1.5 KB"      1048575 => "1.0 MB"
KV_1_1::String sizeText(std::uint64_t bytes);
//   0 ms => "under 1 ms"      12 ms => "12 ms"      1449 ms => "1.4 s"      65 s => "1 min 5 s"
//   7260 s => "2 h 1 min"
KV_1_1::String durationText(std::chrono::milliseconds duration);

// How many places the text takes on a terminal: a pair of surrogates is one character, combining marks take no place,
// ideographs and their kin take two.
int displayWidth(KV_1_1::String const& text);
// The text, with an ellipsis for its middle if it takes more than `width` places. No character is cut in two.
//   "abcdefgh", 5 => "ab…gh"
KV_1_1::String shorten(KV_1_1::String const& text, int width);
// A path with slashes, with "..." for folders in its middle if it takes more than `width` places. Only where the names
// at its ends alone are too long is a name cut.
//   "scans/2024/March/hall/scan001.dat", 26 => "scans/.../hall/scan001.dat"
KV_1_1::String shortenPath(KV_1_1::String const& path, int width);

}  // namespace scanshelf
