// SPDX-License-Identifier: MIT
#include "kvbase/languages/internal/product_identity.h"

#include <cstring>
#include <stdexcept>

#include "kvbase/modules/internal/module_path.h"
#include "kvbase/platform/module_api.h"
#include "kvbase/platform/shell_api.h"

namespace KV_1_1 {

namespace {

// Room for a query, its terminator counted.
constexpr std::size_t kQueryCapacity = 260;
constexpr ulong32 kTranslationSize = 4;

// Where the fixed part of a version resource has the two halves of the file version.
constexpr ulong32 kFileVersionMS = 8;
constexpr ulong32 kFileVersionLS = 12;
constexpr ulong32 kFileVersionEnd = 16;

template <class Integer>
Integer readAt(void const* data, std::size_t offset) {
  Integer value;
  std::memcpy(&value, static_cast<unsigned char const*>(data) + offset, sizeof value);
  return value;
}

void appendHex(std::uint16_t value, wstring& text) {
  for (int shift = 12; shift >= 0; shift -= 4) text += KVW("0123456789abcdef")[(value >> shift) & 15];
}

}  // namespace

bool VersionInfoBlock::load(wstring const& file) {
  ulong32 const size = platform::modules().versionInfoSize(file.c_str(), handle);
  if (size == 0) return false;
  // Zeros behind the resource end a text whose terminator is missing.
  std::unique_ptr<unsigned char[]> block(new unsigned char[std::size_t{size} + 2 * sizeof(wchar)]());
  if (!platform::modules().versionInfo(file.c_str(), handle, size, block.get())) return false;
  data = std::move(block);
  return true;
}

wchar const* VersionInfoBlock::GetVersionInfoString(wchar const* key, wchar const* defaultText) {
  if (translations == nullptr) {
    ulong32 size = 0;
    if (!platform::modules().queryVersion(data.get(), KVW("\\VarFileInfo\\Translation"), translations, size)) {
      throw std::runtime_error("VerQueryValue failed");
    }
    translationCount = size / kTranslationSize;
  }
  if (translations == nullptr || translationCount == 0) return defaultText;

  wstring query = KVW("\\StringFileInfo\\");
  appendHex(readAt<std::uint16_t>(translations, 0), query);
  appendHex(readAt<std::uint16_t>(translations, 2), query);
  query += KVW('\\');
  query += key;
  if (query.size() >= kQueryCapacity) throw std::runtime_error("stprintf failed");
  void const* value = nullptr;
  ulong32 length = 0;
  bool const found = platform::modules().queryVersion(data.get(), query.c_str(), value, length);
  return found && value != nullptr && length != 0 ? static_cast<wchar const*>(value) : defaultText;
}

wstring GetProductCommonFolder(HINSTANCE module, bool withVersion) {
  wstring folder;
  if (!platform::shell().commonProgramFiles(folder)) return wstring();
  if (folder.empty() || folder.back() != KVW('\\')) folder += KVW('\\');
  wstring path;
  VersionInfoBlock block;
  if (!platform::modules().modulePath(module, path) || !block.load(fileNameOf(path))) return wstring();

  auto const appendLevel = [&](wchar const* key, wchar const* defaultText) {
    folder += block.GetVersionInfoString(key, defaultText);
    folder += KVW('\\');
  };
  appendLevel(KVW("CompanyName"), KVW("VOLQ Fabrication GmbH"));
  appendLevel(KVW("ProductName"), KVW("custom product"));
  if (withVersion) appendLevel(KVW("ProductVersion"), KVW("internal"));
  return folder;
}

FileVersionQuad GetFileVersionQuad(wstring const& path) noexcept try {
  VersionInfoBlock block;
  void const* fixed = nullptr;
  ulong32 length = 0;
  bool const found =
      !path.empty() && block.load(path) && platform::modules().queryVersion(block.data.get(), KVW("\\"), fixed, length);
  if (!found || fixed == nullptr || length < kFileVersionEnd) return FileVersionQuad();
  std::uint32_t const high = readAt<std::uint32_t>(fixed, kFileVersionMS);
  std::uint32_t const low = readAt<std::uint32_t>(fixed, kFileVersionLS);
  return {high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF};
} catch (...) {
  // Without memory the version cannot be read.
  return FileVersionQuad();
}

}  // namespace KV_1_1
