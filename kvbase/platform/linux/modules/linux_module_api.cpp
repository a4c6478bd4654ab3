// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

namespace KV_1_1 {
namespace platform {

HINSTANCE NativeModules::program() {
  return nullptr;
}

bool NativeModules::modulePath(HINSTANCE, wstring&) {
  return false;
}

bool NativeModules::longPath(wchar const*, wstring&) {
  return false;
}

bool NativeModules::isReadable(wchar const*) {
  return false;
}

HINSTANCE NativeModules::loadAsData(wchar const*) {
  return nullptr;
}

bool NativeModules::freeLibrary(HINSTANCE) {
  return false;
}

HRSRC NativeModules::findResource(HINSTANCE, wchar const*, wchar const*) {
  return nullptr;
}

HRSRC NativeModules::findResourceOfLanguage(HINSTANCE, wchar const*, wchar const*, std::uint16_t) {
  return nullptr;
}

bool NativeModules::resourceLanguages(HINSTANCE, wchar const*, wchar const*, std::set<unsigned short>&) {
  return false;
}

ResourceBytes NativeModules::resourceBytes(HINSTANCE, HRSRC) {
  return ResourceBytes();
}

bool NativeModules::stringTableEntry(HINSTANCE, unsigned int, wstring&) {
  return false;
}

ulong32 NativeModules::versionInfoSize(wchar const*, ulong32&) {
  return 0;
}

bool NativeModules::versionInfo(wchar const*, ulong32, ulong32, void*) {
  return false;
}

bool NativeModules::queryVersion(void const*, wchar const*, void const*&, ulong32&) {
  return false;
}

}  // namespace platform
}  // namespace KV_1_1
