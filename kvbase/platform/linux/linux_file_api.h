// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/file_api.h"

namespace KV_1_1 {
namespace platform {

// Files and folders by the calls of POSIX. Keeps no state but the searches that are running.
class LinuxFileApi final : public FileApi {
 public:
  constexpr LinuxFileApi() = default;

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
