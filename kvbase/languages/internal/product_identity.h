// SPDX-License-Identifier: MIT
//
// What the version resource of a module says about it: company, product and version, and the version of its file.
//
// Thread rule: any thread may call any function; a VersionInfoBlock belongs to one thread at a time.
#pragma once

#include <cstdint>
#include <memory>

#include "kvbase/platform/types.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

// The version resource of one file.
struct VersionInfoBlock {
  std::unique_ptr<unsigned char[]> data;  // null until loaded
  ulong32 handle = 0;
  // Pairs of 16-bit values, language and code page, in `data`; null until first asked for. Only the first one is used.
  void const* translations = nullptr;
  ulong32 translationCount = 0;

  // Loads the resource of a file, once for a block. False if the file has none or it cannot be read.
  bool load(wstring const& file);

  // The text `key` in the language and code page of the first translation; `defaultText` if there is none or its value
  // has no units, not even a terminator. The result is valid as long as the block and `defaultText` are. COMPAT: a
  // missing text gives the default but a missing table of translations throws std::runtime_error("VerQueryValue
  // failed"). A table that is there but holds nothing gives the default. A key of 235 units or more does not fit the
  // query and throws std::runtime_error("stprintf failed").
  // REQUIRES: the block is loaded; neither text is null.
  wchar const* GetVersionInfoString(wchar const* key, wchar const* defaultText);
};

// The version of a file, such as 10.0.0.9505.
struct FileVersionQuad {
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  std::uint32_t build = 0;
  std::uint32_t revision = 0;
};

inline bool operator==(FileVersionQuad const& a, FileVersionQuad const& b) {
  return a.major == b.major && a.minor == b.minor && a.build == b.build && a.revision == b.revision;
}
inline bool operator!=(FileVersionQuad const& a, FileVersionQuad const& b) {
  return !(a == b);
}

// The folder of a module's product below the machine's common program files, with a backslash at its end:
//   C:\Program Files\Common Files\<CompanyName>\<ProductName>\<ProductVersion>\ .
// The last level is there only `withVersion`. Empty if there is no common folder, the module has no path, or its file has
// no version resource. A text that the resource lacks is "VOLQ Fabrication GmbH", "custom product" or "internal". COMPAT:
// the texts stand in the path as they are, even where a folder cannot bear that name. COMPAT: the resource is looked up
// by the bare file name of the module, so the system decides where that file is.
// Passes on the std::runtime_error of GetVersionInfoString.
wstring GetProductCommonFolder(HINSTANCE module, bool withVersion);

// The version of a file; zeros for the empty path and for a file that has none or cannot be read.
FileVersionQuad GetFileVersionQuad(wstring const& path) noexcept;

}  // namespace KV_1_1
