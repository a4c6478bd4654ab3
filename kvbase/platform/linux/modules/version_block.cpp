// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/version_block.h"

#include <algorithm>

#include "kvbase/platform/linux/files/wildcard.h"

namespace KV_1_1 {
namespace platform {

namespace {

std::size_t aligned(std::size_t offset) {
  return (offset + 3) & ~std::size_t(3);
}

bool isSameKey(wchar const* key, std::size_t size, wchar const* other) {
  for (std::size_t i = 0; i < size; ++i) {
    if (other[i] == 0 || upperCased(key[i]) != upperCased(other[i])) return false;
  }
  return other[size] == 0;
}

}  // namespace

VersionBlock::VersionBlock(void const* bytes, std::size_t size)
    : bytes_(static_cast<unsigned char const*>(bytes)), size_(size) {}

// Reads the block at `at`, which lies in a block that ends at `end`.
bool VersionBlock::read(std::size_t at, std::size_t end, Block& block) const {
  if (at > end || end - at < kHeaderSize) return false;
  block.end = at + std::min<std::size_t>(load16(bytes_ + at), end - at);
  block.isText = load16(bytes_ + at + 4) != 0;
  block.valueSize = load16(bytes_ + at + 2) * std::size_t(block.isText ? 2 : 1);
  block.key = at + kHeaderSize;
  std::size_t next = block.key;
  while (next + 2 <= block.end && load16(bytes_ + next) != 0) next += 2;
  if (next + 2 > block.end) return false;
  block.keySize = (next - block.key) / 2;
  block.value = std::min(aligned(next + 2), block.end);
  block.children = aligned(block.value + block.valueSize);
  return true;
}

bool VersionBlock::hasKey(Block const& block, wchar const* key, std::size_t size) const {
  if (block.keySize != size) return false;
  for (std::size_t i = 0; i < size; ++i) {
    if (upperCased(static_cast<wchar>(load16(bytes_ + block.key + 2 * i))) != upperCased(key[i])) return false;
  }
  return true;
}

bool VersionBlock::findChild(Block const& in, wchar const* key, std::size_t size, Block& child) const {
  for (std::size_t at = in.children; read(at, in.end, child); at = aligned(child.end)) {
    if (hasKey(child, key, size)) return true;
  }
  return false;
}

bool VersionBlock::textLength(Block const& block, ulong32& length) const {
  std::size_t const room = (block.end - block.value) / 2;
  auto const unit = [&](std::size_t i) { return load16(bytes_ + block.value + 2 * i); };
  // Some makers store the number of bytes, so what is stored counts only if the text ends there.
  std::size_t const stored = block.valueSize / (block.isText ? 2 : 1);
  if (stored == 0) {
    length = 0;
    return true;
  }
  std::size_t size = stored;
  if (stored > room || unit(stored - 1) != 0) {
    for (size = 1; size <= room && unit(size - 1) != 0; ++size) {
    }
    if (size > room) return false;
  }
  length = static_cast<ulong32>(size);
  return true;
}

bool VersionBlock::query(wchar const* path, void const*& value, ulong32& length) const {
  Block block = {};
  if (!read(0, size_, block)) return false;
  bool isRoot = true, isText = false;
  while (*path != 0) {
    if (*path == '\\') {
      ++path;
      continue;
    }
    std::size_t size = 0;
    while (path[size] != 0 && path[size] != '\\') ++size;
    if (isRoot) isText = isSameKey(path, size, KVW("StringFileInfo"));
    Block const parent = block;
    if (!findChild(parent, path, size, block)) return false;
    isRoot = false;
    path += size;
  }

  ulong32 found = static_cast<ulong32>(block.valueSize);
  if (isText || block.isText) {
    if (!textLength(block, found)) return false;
  } else if (block.valueSize > block.end - block.value) {
    return false;
  }
  if (isRoot && (block.isText || block.valueSize < kFixedSize)) return false;
  value = bytes_ + block.value;
  length = found;
  return true;
}

bool copyVersionBlock(ByteRange const& resource, void* out, std::size_t size) {
  if (size < kVersionPadding + VersionBlock::kHeaderSize || resource.size() < VersionBlock::kHeaderSize) return false;
  std::size_t const copied = static_cast<std::size_t>(std::min<std::uint64_t>(resource.size(), size - kVersionPadding));
  auto* const bytes = static_cast<unsigned char*>(out);
  unsigned char header[VersionBlock::kHeaderSize];
  if (!resource.copy(0, sizeof header, header) || !resource.copy(0, copied, bytes)) return false;
  std::memset(bytes + copied, 0, size - copied);
  std::size_t const length = std::min<std::size_t>(load16(header), copied);
  bytes[0] = static_cast<unsigned char>(length);
  bytes[1] = static_cast<unsigned char>(length >> 8);
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
