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
  bool setAttributes(wchar const* path, ulong32 attributes) override;
  bool getInfo(wchar const* path, FileInfo& info) override;
  int getStatus(wchar const* path, struct _stat64i32& status) override;
  int isDirectoryEmpty(wchar const* path) override;

  FileHandle openFile(wchar const* path, ulong32 access, ulong32 share, ulong32 disposition, ulong32 flags) override;
  bool closeFile(FileHandle file) override;
  bool setLastWriteTime(FileHandle file, std::uint64_t time) override;
  std::uint64_t systemTime() override;
  int openDescriptor(wchar const* path, int flags, int share, int permission) override;
  int commitDescriptor(int descriptor) override;
  int closeDescriptor(int descriptor) override;

  bool copyFile(wchar const* source, wchar const* target, CopyProgress progress, void* data, ulong32 flags) override;
  bool moveFile(wchar const* source, wchar const* target) override;
  bool deleteFile(wchar const* path) override;
  bool createDirectory(wchar const* path) override;
  bool removeDirectory(wchar const* path) override;

  SearchHandle findFirst(wchar const* pattern, FindData& data) override;
  bool findNext(SearchHandle search, FindData& data) override;
  bool findClose(SearchHandle search) override;

  wchar* currentDirectory() override;
  wchar* currentDirectoryOfDrive(int drive) override;
  void freeText(wchar* text) override;
};

}  // namespace platform
}  // namespace KV_1_1
