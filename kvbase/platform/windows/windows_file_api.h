// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/file_api.h"

namespace KV_1_1 {
namespace platform {

// Forwards each call to the system; no decisions of its own.
class WindowsFileApi final : public FileApi {
 public:
  constexpr WindowsFileApi() = default;

  ulong32 getAttributes(wchar const* path) override;
  bool getInfo(wchar const* path, FileInfo& info) override;
  SearchHandle findFirst(wchar const* pattern, FindData& data) override;
  bool findNext(SearchHandle search, FindData& data) override;
  bool findClose(SearchHandle search) override;
  wchar* currentDirectory() override;
  wchar* currentDirectoryOfDrive(int drive) override;
  void freeText(wchar* text) override;
};

}  // namespace platform
}  // namespace KV_1_1
