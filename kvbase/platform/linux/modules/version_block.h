// SPDX-License-Identifier: MIT
//
// The version resource of a module: blocks within blocks, each with a key, a value and further blocks. It is outside
// input, so no value is given that does not lie in the bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kvbase/platform/linux/modules/byte_range.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

class VersionBlock {
 public:
  // The size of the header of a block; no block is smaller.
  static constexpr std::size_t kHeaderSize = 6;
  // The size of the value of the outermost block, the fixed part.
  static constexpr std::size_t kFixedSize = 52;

  // Over bytes in memory, which must outlive the object. The block has the size that its first two bytes tell, but not
  // more than `size`.
  VersionBlock(void const* bytes, std::size_t size);

  // Finds the value at a path of keys, "\VarFileInfo\Translation"; keys compare without regard to case, and empty ones
  // are skipped. "\" is the fixed part, and there is none if it is not complete. A text is a value marked so, and each
  // below "\StringFileInfo": it has a terminator, and `length` counts its units with the terminator; a value without
  // units has length 0. Of all other values `length` counts bytes. False, with unchanged outputs, if there is no such
  // value.
  bool query(wchar const* path, void const*& value, ulong32& length) const;

 private:
  struct Block {
    std::size_t end;
    std::size_t value;  // offsets; not more than `end`
    std::size_t children;
    std::size_t valueSize;  // in bytes, as the block tells it
    std::size_t key;
    std::size_t keySize;  // in units
    bool isText;
  };

  bool read(std::size_t at, std::size_t end, Block& block) const;
  bool findChild(Block const& in, wchar const* key, std::size_t size, Block& child) const;
  bool hasKey(Block const& block, wchar const* key, std::size_t size) const;
  bool textLength(Block const& block, ulong32& length) const;

  unsigned char const* bytes_;
  std::size_t size_;
};

// Copies a version resource to `out` for use by VersionBlock without its size: as much as fits before the last
// kVersionPadding bytes of `size`, with the length in its header adapted, then zeros up to `size`. A caller may thus
// read the first pair of an empty table of translations. False, with nothing written, if no header fits.
constexpr std::size_t kVersionPadding = 4;
bool copyVersionBlock(ByteRange const& resource, void* out, std::size_t size);

}  // namespace platform
}  // namespace KV_1_1
