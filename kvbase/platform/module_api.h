// SPDX-License-Identifier: MIT
//
// The seam to loaded modules and their resources. A module is a program, a library, or a file that has been mapped only
// for its resources (a data module). Off Windows, programs and libraries are ELF files that carry their resources in a
// note (see KVBaseResources.cmake); data modules are Windows files on every system.
//
// A resource has a type, a name and a language. Type and name are a text or a number; a number is passed in the place of
// a text (see resourceId). Texts compare without regard to case, and the text "#123" means the number 123.
//
// Methods that fail because something is missing give their failure value; the library does not ask for the reason.
//
// Thread rule: any method may be called from any thread, but a module must not be freed while another thread uses it.
#pragma once

#include <cstdint>
#include <set>

#include "kvbase/platform/backend.h"
#include "kvbase/platform/types.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// Paths of modules have fewer units than this; the terminator is counted.
constexpr int kModulePathCapacity = 260;

// Types of resources that the library itself reads.
constexpr std::uint16_t kStringTableType = 6;
constexpr std::uint16_t kVersionType = 16;

// A number in the place of a type or a name: its low 16 bits.
inline wchar const* resourceId(std::uint32_t id) {
  return reinterpret_cast<wchar const*>(static_cast<std::uintptr_t>(id & 0xFFFF));
}
inline bool isResourceId(wchar const* typeOrName) {
  return (reinterpret_cast<std::uintptr_t>(typeOrName) >> 16) == 0;
}

// The bytes of a resource, where they lie in the module; valid until the module is unloaded.
struct ResourceBytes {
  void* data = nullptr;
  ulong32 size = 0;
};

class ModuleApi {
 public:
  // The handle of the program.
  virtual HINSTANCE program() = 0;
  // The program or library, but not data module, in which a function or an object lies; null if none.
  virtual HINSTANCE moduleOf(void const* address) = 0;
  // Whether the system calls an entry function (DllMain) in a module when it is loaded and unloaded, which it does with the
  // libraries of Windows. Other modules start behind their globals and end before them.
  virtual bool hasEntryFunction(HINSTANCE module) = 0;
  // The full path of a module, of the program for null; a longer one is cut after kModulePathCapacity - 1 units. False
  // if the module is not known, as a data module is not; `path` is then unchanged.
  virtual bool modulePath(HINSTANCE module, wstring& path) = 0;
  // The path with each name in its long form. Off Windows names have no other form, so the path comes back as it is if it
  // exists. False if something on the path does not exist, or the long form needs more than kModulePathCapacity - 1 units;
  // `longPath` is then unchanged.
  virtual bool longPath(wchar const* path, wstring& longPath) = 0;

  // Whether the file that belongs to a module, as a translation or a help file does, exists and can be read. Here and
  // below, the names of such files compare without regard to case on every system; their folders as the system does.
  virtual bool isReadable(wchar const* path) = 0;
  // Maps a Windows file as a data module; no code of it runs. Null if there is no such file or it is not a module. Must be
  // released with freeLibrary.
  virtual HINSTANCE loadAsData(wchar const* path) = 0;
  // Releases a module that was loaded; everything that was read from it becomes invalid.
  virtual bool freeLibrary(HINSTANCE module) = 0;

  // The version of a resource that the system prefers: a neutral one, that of the thread's language, of the user's, of
  // its primary language, the same of the system, that of 1033, then the first. Null if there is none.
  virtual HRSRC findResource(HINSTANCE module, wchar const* name, wchar const* type) = 0;
  // The version of exactly this language, or else of its primary language, or else a neutral one. For a language without
  // a primary language the search goes on as in findResource. Null if there is none.
  virtual HRSRC findResourceOfLanguage(HINSTANCE module, wchar const* type, wchar const* name,
                                       std::uint16_t language) = 0;
  // Adds the languages in which a resource exists to `languages`. False if the resource does not exist.
  virtual bool resourceLanguages(HINSTANCE module, wchar const* type, wchar const* name,
                                 std::set<unsigned short>& languages) = 0;
  // The bytes of a resource that was found; no address if it cannot be loaded. A resource of no bytes has an address.
  virtual ResourceBytes resourceBytes(HINSTANCE module, HRSRC resource) = 0;
  // Stores the entry `id` of the module's string table, in the language that findResource prefers for its block of 16
  // entries. False if there is none or it is empty; `text` is then unchanged.
  virtual bool stringTableEntry(HINSTANCE module, unsigned int id, wstring& text) = 0;

  // The size of the version resource of a file, 0 if there is none; and a handle for versionInfo. A name without folder is
  // looked for where the program and the loaded libraries are.
  virtual ulong32 versionInfoSize(wchar const* file, ulong32& handle) = 0;
  // Copies the version resource of a file to `block`, which has room for `size` bytes.
  virtual bool versionInfo(wchar const* file, ulong32 handle, ulong32 size, void* block) = 0;
  // Looks up a value in such a block: "\" (the fixed part), "\VarFileInfo\Translation",
  // "\StringFileInfo\040904b0\CompanyName". `length` counts bytes, and for texts units with the terminator. False if there
  // is none; `value` and `length` are then unchanged.
  virtual bool queryVersion(void const* block, wchar const* path, void const*& value, ulong32& length) = 0;

 protected:
  // Backends are never destroyed through this interface.
  ~ModuleApi() = default;
};

}  // namespace platform
}  // namespace KV_1_1
