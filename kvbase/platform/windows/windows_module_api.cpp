// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <exception>

#include "kvbase/platform/types.h"

#include <io.h>

namespace KV_1_1 {
namespace platform {

namespace {

static_assert(kModulePathCapacity == MAX_PATH, "as on Windows");

struct LanguageCollection {
  std::set<unsigned short>& languages;
  std::exception_ptr failure;
};

// No exception may pass through the system, which calls this.
BOOL CALLBACK collectLanguage(HMODULE, LPCWSTR, LPCWSTR, WORD language, LONG_PTR context) {
  auto* const collection = reinterpret_cast<LanguageCollection*>(context);
  try {
    collection->languages.insert(language);
    return TRUE;
  } catch (...) {
    collection->failure = std::current_exception();
    return FALSE;
  }
}

}  // namespace

HINSTANCE NativeModules::program() {
  return GetModuleHandleW(nullptr);
}

HINSTANCE NativeModules::moduleOf(void const* address) {
  constexpr DWORD kFlags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  HMODULE module = nullptr;
  return GetModuleHandleExW(kFlags, static_cast<wchar const*>(address), &module) != 0 ? module : nullptr;
}

bool NativeModules::hasEntryFunction(HINSTANCE module) {
  return module != program();
}

bool NativeModules::modulePath(HINSTANCE module, wstring& path) {
  wchar buffer[kModulePathCapacity];
  DWORD const length = GetModuleFileNameW(module, buffer, kModulePathCapacity);
  if (length == 0) return false;
  // The length of a path that has been cut is the capacity; the terminator takes the last place.
  path.assign(buffer, length < kModulePathCapacity ? length : kModulePathCapacity - 1);
  return true;
}

bool NativeModules::longPath(wchar const* path, wstring& longPath) {
  wchar buffer[kModulePathCapacity];
  DWORD const length = GetLongPathNameW(path, buffer, kModulePathCapacity);
  // Too little room gives the capacity that is needed.
  if (length == 0 || length >= kModulePathCapacity) return false;
  longPath.assign(buffer, length);
  return true;
}

bool NativeModules::isReadable(wchar const* path) {
  return _waccess(path, 4) == 0;
}

HINSTANCE NativeModules::loadAsData(wchar const* path) {
  return LoadLibraryExW(path, nullptr, LOAD_LIBRARY_AS_DATAFILE);
}

bool NativeModules::freeLibrary(HINSTANCE module) {
  return FreeLibrary(module) != 0;
}

HRSRC NativeModules::findResource(HINSTANCE module, wchar const* name, wchar const* type) {
  return FindResourceW(module, name, type);
}

HRSRC NativeModules::findResourceOfLanguage(HINSTANCE module, wchar const* type, wchar const* name,
                                            std::uint16_t language) {
  return FindResourceExW(module, type, name, language);
}

bool NativeModules::resourceLanguages(HINSTANCE module, wchar const* type, wchar const* name,
                                      std::set<unsigned short>& languages) {
  LanguageCollection collection = {languages, nullptr};
  bool const found =
      EnumResourceLanguagesW(module, type, name, &collectLanguage, reinterpret_cast<LONG_PTR>(&collection)) != 0;
  if (collection.failure) std::rethrow_exception(collection.failure);
  return found;
}

ResourceBytes NativeModules::resourceBytes(HINSTANCE module, HRSRC resource) {
  HGLOBAL const loaded = LoadResource(module, resource);
  if (loaded == nullptr) return ResourceBytes();
  return {LockResource(loaded), SizeofResource(module, resource)};
}

bool NativeModules::stringTableEntry(HINSTANCE module, unsigned int id, wstring& text) {
  // With a capacity of 0 the function gives the address of the text in the module, which has no terminator.
  wchar const* entry = nullptr;
  int const length = LoadStringW(module, id, reinterpret_cast<wchar*>(&entry), 0);
  if (length <= 0) return false;
  text.assign(entry, static_cast<std::size_t>(length));
  return true;
}

ulong32 NativeModules::versionInfoSize(wchar const* file, ulong32& handle) {
  return GetFileVersionInfoSizeW(file, &handle);
}

bool NativeModules::versionInfo(wchar const* file, ulong32 handle, ulong32 size, void* block) {
  return GetFileVersionInfoW(file, handle, size, block) != 0;
}

bool NativeModules::queryVersion(void const* block, wchar const* path, void const*& value, ulong32& length) {
  void* found = nullptr;
  UINT foundLength = 0;
  if (VerQueryValueW(block, path, &found, &foundLength) == 0) return false;
  value = found;
  length = foundLength;
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
