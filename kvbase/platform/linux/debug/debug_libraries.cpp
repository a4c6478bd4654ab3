// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include <cstring>
#include <memory>
#include <utility>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/debug/debug_help_functions.h"
#include "kvbase/platform/linux/debug/debug_help_shims.h"
#include "kvbase/platform/linux/debug/debug_session.h"
#include "kvbase/platform/linux/debug/libdw.h"
#include "kvbase/platform/linux/errors/last_error.h"
#include "kvbase/platform/linux/files/path_mapping.h"

namespace KV_1_1 {
namespace platform {

namespace {

enum class Kind { kDebugHelp, kSnapshot, kFile };

struct DebugLibrary {
  Kind kind;
  void* loaded;          // of the system's loader; null for the snapshot
  LibdwFunctions libdw;  // of the debug help
};

bool isName(wchar const* path, wchar const* name) {
  return std::char_traits<wchar>::compare(path, name, std::char_traits<wchar>::length(name) + 1) == 0;
}

HINSTANCE handleOf(std::unique_ptr<DebugLibrary> library) {
  return reinterpret_cast<HINSTANCE>(library.release());
}

HINSTANCE loadDebugHelp() {
  auto library = std::make_unique<DebugLibrary>(DebugLibrary{Kind::kDebugHelp, nullptr, {}});
  library->loaded = openLibdw(library->libdw);
  if (library->loaded == nullptr) return nullptr;
  DebugSession& session = DebugSession::instance();
  auto const lock = session.lock();
  session.use(library->libdw);
  return handleOf(std::move(library));
}

HINSTANCE loadFile(wchar const* path) {
  NativePath native;
  if (!mapPath(path, native)) return nullptr;
  auto library = std::make_unique<DebugLibrary>(DebugLibrary{Kind::kFile, nullptr, {}});
  // A name without a slash would be looked for in the system's folders.
  if (strchr(native.data(), '/') == nullptr) return nullptr;
  library->loaded = dlopen(native.data(), RTLD_NOW | RTLD_LOCAL);
  return library->loaded == nullptr ? nullptr : handleOf(std::move(library));
}

}  // namespace

HINSTANCE loadDebugLibrary(wchar const* path) {
  HINSTANCE library = nullptr;
  if (isName(path, KVW("dbghelp.dll"))) {
    library = loadDebugHelp();
  } else if (isName(path, KVW("kernel32.dll"))) {
    library = handleOf(std::make_unique<DebugLibrary>(DebugLibrary{Kind::kSnapshot, nullptr, {}}));
  } else {
    library = loadFile(path);
  }
  if (library == nullptr) setLastErrorOfThread(kModuleNotFound);
  return library;
}

void (*debugFunction(HINSTANCE library, char const* name))() {
  if (library == nullptr) return nullptr;
  DebugLibrary const& debugLibrary = *reinterpret_cast<DebugLibrary const*>(library);
  switch (debugLibrary.kind) {
    case Kind::kDebugHelp:
      return debugHelpFunction(debugLibrary.libdw, name);
    case Kind::kSnapshot:
      return snapshotFunction(name);
    case Kind::kFile:
      break;
  }
  return reinterpret_cast<void (*)()>(dlsym(debugLibrary.loaded, name));
}

bool freeDebugLibrary(HINSTANCE library) {
  if (library == nullptr) return failWith(kInvalidHandle);
  std::unique_ptr<DebugLibrary> const owner(reinterpret_cast<DebugLibrary*>(library));
  if (owner->loaded != nullptr) dlclose(owner->loaded);
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
