// SPDX-License-Identifier: MIT
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "kvbase/platform/internal/native_backends.h"
#include "kvbase/platform/linux/files/path_mapping.h"
#include "kvbase/platform/linux/modules/data_modules.h"
#include "kvbase/platform/linux/modules/elf_modules.h"
#include "kvbase/platform/linux/modules/module_files.h"
#include "kvbase/platform/linux/modules/string_block.h"
#include "kvbase/platform/linux/modules/version_block.h"
#include "kvbase/platform/linux/modules/version_choice.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr std::uint16_t kNoLanguage = 0;
constexpr std::uint32_t kVersionName = 1;

// Calls `use` with the resources of a module, a data module under its lock. Returns what it returns, or the value of an
// empty result if there is no such module or it has no resources.
template <class Use>
auto withResources(HINSTANCE module, Use use) -> decltype(use(*static_cast<PeResources*>(nullptr))) {
  if (isDataModule(module)) {
    DataModule* const data = findDataModule(module);
    if (data == nullptr) return {};
    auto const lock = data->lock();
    return use(data->resources());
  }
  PeResources* const resources = resourcesOfModule(module != nullptr ? module : programModule());
  if (resources == nullptr) return {};
  return use(*resources);
}

PeResources::Version findVersion(PeResources& resources, wchar const* type, wchar const* name, std::uint16_t language) {
  PeResources::Directory versions;
  if (!resources.findVersions(ResourceKey(type), ResourceKey(name), versions)) return 0;
  return chooseVersion(resources, versions, language, nativeLocales());
}

HRSRC findHandle(HINSTANCE module, wchar const* type, wchar const* name, std::uint16_t language) {
  return withResources(module, [&](PeResources& resources) {
    return reinterpret_cast<HRSRC>(static_cast<std::uintptr_t>(findVersion(resources, type, name, language)));
  });
}

PeResources::Version versionOf(HRSRC resource) {
  return reinterpret_cast<std::uintptr_t>(resource);
}

// Calls `use` with the bytes of the version resource of a file. False if there is none.
template <class Use>
bool withVersionResource(wchar const* file, Use use) {
  NativePath path;
  if (!findModuleFileByName(file, path)) return false;
  Descriptor descriptor = openModuleFile(path);
  if (!descriptor) return false;
  FilePages pages(std::move(descriptor));
  pages.refresh();
  ByteRange image(pages);
  PeResources resources;
  if (!resources.open(image) && (!findEmbeddedImage(image, image) || !resources.open(image))) return false;
  PeResources::Version const version =
      findVersion(resources, resourceId(kVersionType), resourceId(kVersionName), kNoLanguage);
  ByteRange bytes;
  return version != 0 && resources.bytesOf(version, bytes) && bytes.size() >= VersionBlock::kHeaderSize && use(bytes);
}

}  // namespace

HINSTANCE NativeModules::program() {
  return programModule();
}

HINSTANCE NativeModules::moduleOf(void const* address) {
  return moduleHolding(address);
}

bool NativeModules::hasEntryFunction(HINSTANCE) {
  return false;
}

bool NativeModules::modulePath(HINSTANCE module, wstring& path) {
  NativePath native;
  if (isDataModule(module) || !pathOfModule(module != nullptr ? module : programModule(), native)) return false;
  path = textOfPath(KVW(""), native.data(), native.size() - 1);
  if (path.size() >= kModulePathCapacity) path.resize(kModulePathCapacity - 1);
  return true;
}

bool NativeModules::longPath(wchar const* path, wstring& longPath) {
  NativePath native;
  struct stat status;
  std::size_t const size = std::char_traits<wchar>::length(path);
  if (size >= kModulePathCapacity || !mapPath(path, size, native) || lstat(native.data(), &status) != 0) return false;
  longPath.assign(path, size);
  return true;
}

bool NativeModules::isReadable(wchar const* path) {
  NativePath native;
  return findModuleFile(path, native) && faccessat(AT_FDCWD, native.data(), R_OK, AT_EACCESS) == 0;
}

HINSTANCE NativeModules::loadAsData(wchar const* path) {
  NativePath native;
  if (!findModuleFile(path, native)) return nullptr;
  Descriptor file = openModuleFile(native);
  if (!file) return nullptr;
  std::unique_ptr<DataModule> module = DataModule::open(std::move(file));
  return module == nullptr ? nullptr : addDataModule(std::move(module));
}

bool NativeModules::freeLibrary(HINSTANCE module) {
  return removeDataModule(module) != nullptr;
}

HRSRC NativeModules::findResource(HINSTANCE module, wchar const* name, wchar const* type) {
  return findHandle(module, type, name, kNoLanguage);
}

HRSRC NativeModules::findResourceOfLanguage(HINSTANCE module, wchar const* type, wchar const* name,
                                            std::uint16_t language) {
  return findHandle(module, type, name, language);
}

bool NativeModules::resourceLanguages(HINSTANCE module, wchar const* type, wchar const* name,
                                      std::set<unsigned short>& languages) {
  return withResources(module, [&](PeResources& resources) {
    PeResources::Directory versions;
    if (!resources.findVersions(ResourceKey(type), ResourceKey(name), versions)) return false;
    resources.addLanguages(versions, languages);
    return true;
  });
}

ResourceBytes NativeModules::resourceBytes(HINSTANCE module, HRSRC resource) {
  if (isDataModule(module)) {
    DataModule* const data = findDataModule(module);
    if (data == nullptr) return ResourceBytes();
    auto const lock = data->lock();
    return data->bytesOf(versionOf(resource));
  }
  return withResources(module, [&](PeResources& resources) {
    ByteRange bytes;
    if (!resources.bytesOf(versionOf(resource), bytes)) return ResourceBytes();
    return ResourceBytes{const_cast<unsigned char*>(bytes.memory()), static_cast<ulong32>(bytes.size())};
  });
}

bool NativeModules::stringTableEntry(HINSTANCE module, unsigned int id, wstring& text) {
  unsigned int const number = id & 0xFFFF;
  wchar const* const name = resourceId(number / kStringBlockEntries + 1);
  return withResources(module, [&](PeResources& resources) {
    PeResources::Version const version = findVersion(resources, resourceId(kStringTableType), name, kNoLanguage);
    ByteRange block;
    return version != 0 && resources.bytesOf(version, block) &&
           readStringBlockEntry(block, number % kStringBlockEntries, text);
  });
}

ulong32 NativeModules::versionInfoSize(wchar const* file, ulong32& handle) {
  handle = 0;
  ulong32 size = 0;
  withVersionResource(file, [&](ByteRange const& bytes) {
    // The length of the outermost block has 16 bits; what lies behind is not read.
    size = static_cast<ulong32>(std::min<std::uint64_t>(bytes.size(), 0xFFFF) + kVersionPadding);
    return true;
  });
  return size;
}

bool NativeModules::versionInfo(wchar const* file, ulong32, ulong32 size, void* block) {
  return withVersionResource(file, [&](ByteRange const& bytes) { return copyVersionBlock(bytes, block, size); });
}

bool NativeModules::queryVersion(void const* block, wchar const* path, void const*& value, ulong32& length) {
  return VersionBlock(block, load16(static_cast<unsigned char const*>(block))).query(path, value, length);
}

}  // namespace platform
}  // namespace KV_1_1
