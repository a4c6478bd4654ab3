// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include "kvbase/platform/types.h"

#include <shellapi.h>
#include <shlobj.h>

namespace KV_1_1 {
namespace platform {

static_assert(kShowNormal == SW_SHOWNORMAL && kShowDefault == SW_SHOWDEFAULT, "as on Windows");

std::intptr_t NativeShell::open(wchar const* verb, wchar const* file, wchar const* directory, int show) {
  return reinterpret_cast<std::intptr_t>(ShellExecuteW(nullptr, verb, file, nullptr, directory, show));
}

ItemList NativeShell::itemListFromPath(wchar const* path) {
  return ILCreateFromPathW(path);
}

std::int32_t NativeShell::showItem(ItemList item) {
  return SHOpenFolderAndSelectItems(static_cast<ITEMIDLIST*>(item), 0, nullptr, 0);
}

void NativeShell::freeItemList(ItemList item) {
  ILFree(static_cast<ITEMIDLIST*>(item));
}

bool NativeShell::commonProgramFiles(wstring& folder) {
  wchar buffer[MAX_PATH];
  if (SHGetSpecialFolderPathW(nullptr, buffer, CSIDL_PROGRAM_FILES_COMMON, FALSE) == 0) return false;
  folder = buffer;
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
