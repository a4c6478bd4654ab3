// SPDX-License-Identifier: MIT
//
// The input is a version resource. Whatever is found lies in it, texts with their terminator. A shortened copy can be
// asked without its size.
#include "fuzzers/fuzz_input.h"

#include <vector>

#include "kvbase/platform/linux/modules/version_block.h"
#include "kvbase/platform/module_api.h"

using namespace KV_1_1;

namespace {

struct Query {
  wchar const* path;
  bool isText;
};
constexpr Query kQueries[] = {
    {KVW("\\"), false},
    {KVW(""), false},
    {KVW("\\VarFileInfo\\Translation"), false},
    {KVW("\\varfileinfo\\translation\\"), false},
    {KVW("\\StringFileInfo"), true},
    {KVW("\\StringFileInfo\\040904b0"), true},
    {KVW("\\StringFileInfo\\040904B0\\CompanyName"), true},
    {KVW("\\stringfileinfo\\040904b0\\productname"), true},
    {KVW("StringFileInfo\\\\040704b0\\ProductVersion"), true},
    {KVW("\\A\\B\\C\\D\\E\\F\\G\\H\\I\\J\\K\\L\\M\\N\\O\\P"), false},
};

// Reads all of a value, which must lie within the bytes with what a caller may read behind it.
void checkValue(void const* value, ulong32 length, bool isText, unsigned char const* bytes, std::size_t size) {
  auto const* const start = static_cast<unsigned char const*>(value);
  fuzzing::require(start >= bytes && start <= bytes + size, "a value lies in the block");
  std::size_t const room = static_cast<std::size_t>(bytes + size - start);
  std::size_t const byteLength = isText ? 2 * std::size_t(length) : length;
  fuzzing::require(byteLength <= room, "a value does not end behind the block");
  if (!isText || length == 0) return;
  fuzzing::require(platform::load16(start + byteLength - 2) == 0, "a text has a terminator");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzzing::Input input(data, size);
  std::size_t const room = input.byte() * std::size_t(4);
  std::string const resource = input.bytes();
  // Blocks of exactly these sizes, so that a read beyond them is seen.
  std::vector<unsigned char> const bytes(resource.begin(), resource.end());
  platform::VersionBlock const block(bytes.data(), bytes.size());
  for (Query const& query : kQueries) {
    void const* value = nullptr;
    ulong32 length = 0;
    if (!block.query(query.path, value, length)) continue;
    checkValue(value, query.isText ? length : 0, query.isText, bytes.data(), bytes.size());
  }

  std::vector<unsigned char> copy(room);
  if (!platform::copyVersionBlock(platform::ByteRange(bytes.data(), bytes.size()), copy.data(), room)) return 0;
  for (Query const& query : kQueries) {
    void const* value = nullptr;
    ulong32 length = 0;
    if (!platform::nativeModules().queryVersion(copy.data(), query.path, value, length)) continue;
    checkValue(value, static_cast<ulong32>(platform::kVersionPadding), false, copy.data(), room);
  }
  return 0;
}
