// SPDX-License-Identifier: MIT
//
// The backends of the system the library is built for. They are declared once and implemented twice: by the sources in
// platform/windows, which forward each call one to one, and by those in platform/linux. They have no state, are
// constant-initialised and trivially destroyed, so they can be called at any time.
#pragma once

#include "kvbase/platform/error_api.h"
#include "kvbase/platform/file_api.h"
#include "kvbase/platform/shell_api.h"
#include "kvbase/platform/text_api.h"

namespace KV_1_1 {
namespace platform {

class NativeFiles final : public FileApi {
 public:
  constexpr NativeFiles() = default;

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

  bool currentDirectory(wstring& path) override;
  bool currentDirectoryOfDrive(int drive, wstring& path) override;
};

class NativeText final : public TextApi {
 public:
  constexpr NativeText() = default;

  unsigned int ansiCodePage() override;
  int decode(unsigned int codePage, char const* bytes, int size, wchar* units, int capacity) override;
  int encode(unsigned int codePage, wchar const* units, int size, char* bytes, int capacity) override;
  int print(wchar* out, std::size_t capacity, wchar const* format, va_list arguments) override;
  unsigned int classesOf(wchar unit) override;
};

class NativeShell final : public ShellApi {
 public:
  constexpr NativeShell() = default;

  std::intptr_t open(wchar const* verb, wchar const* file, wchar const* directory, int show) override;
  ItemList itemListFromPath(wchar const* path) override;
  std::int32_t showItem(ItemList item) override;
  void freeItemList(ItemList item) override;
};

class NativeErrors final : public ErrorApi {
 public:
  constexpr NativeErrors() = default;

  ulong32 lastError() override;
  void setLastError(ulong32 code) override;
  bool errorText(ulong32 code, wstring& text) override;
};

}  // namespace platform
}  // namespace KV_1_1
