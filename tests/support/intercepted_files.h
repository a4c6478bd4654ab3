// SPDX-License-Identifier: MIT
//
// The base of the file backends for tests: calls a hook before each operation, then forwards it to another backend, and
// counts the handles that have been opened and not yet closed.
#pragma once

#include <cstdio>
#include <initializer_list>
#include <string>

#include "kvbase/platform/file_api.h"

namespace KV_1_1 {
namespace testing {

class InterceptedFiles : public platform::FileApi {
 public:
  explicit InterceptedFiles(platform::FileApi& target) : target_(target) {}
  virtual ~InterceptedFiles() = default;
  InterceptedFiles(InterceptedFiles const&) = delete;
  InterceptedFiles& operator=(InterceptedFiles const&) = delete;

  // Handles that are still open.
  int openSearches() const { return openSearches_; }
  int openFiles() const { return openFiles_; }
  int openDescriptors() const { return openDescriptors_; }
  int openInAll() const { return openSearches_ + openFiles_ + openDescriptors_; }

  ulong32 getAttributes(wchar const* path) override {
    return enter("getAttributes", path) ? target_.getAttributes(path) : platform::kInvalidAttributes;
  }
  bool setAttributes(wchar const* path, ulong32 attributes) override {
    return enter("setAttributes", with(path, {attributes}).c_str()) && target_.setAttributes(path, attributes);
  }
  bool getInfo(wchar const* path, platform::FileInfo& info) override {
    return enter("getInfo", path) && target_.getInfo(path, info);
  }
  int getStatus(wchar const* path, struct _stat64i32& status) override {
    return enter("getStatus", path) ? target_.getStatus(path, status) : -1;
  }
  int isDirectoryEmpty(wchar const* path) override {
    return enter("isDirectoryEmpty", path) ? target_.isDirectoryEmpty(path) : 0;
  }

  platform::FileHandle openFile(wchar const* path, ulong32 access, ulong32 share, ulong32 disposition,
                                ulong32 flags) override {
    if (!enter("openFile", with(path, {access, share, disposition, flags}).c_str())) return platform::invalidFile();
    platform::FileHandle const file = target_.openFile(path, access, share, disposition, flags);
    if (file != platform::invalidFile()) ++openFiles_;
    return file;
  }
  // Closes even if the hook refuses: only the answer fails, nothing leaks.
  bool closeFile(platform::FileHandle file) override {
    bool const admitted = enter("closeFile", nullptr);
    bool const closed = target_.closeFile(file);
    if (closed) --openFiles_;
    return admitted && closed;
  }
  bool setLastWriteTime(platform::FileHandle file, std::uint64_t time) override {
    return enter("setLastWriteTime", nullptr) && target_.setLastWriteTime(file, time);
  }
  // Cannot fail, so the hook is not called.
  std::uint64_t systemTime() override { return target_.systemTime(); }
  int openDescriptor(wchar const* path, int flags, int share, int permission) override {
    wstring const text = with(path, {unsignedOf(flags), unsignedOf(share), unsignedOf(permission)});
    if (!enter("openDescriptor", text.c_str())) return -1;
    int const descriptor = target_.openDescriptor(path, flags, share, permission);
    if (descriptor >= 0) ++openDescriptors_;
    return descriptor;
  }
  int commitDescriptor(int descriptor) override {
    return enter("commitDescriptor", nullptr) ? target_.commitDescriptor(descriptor) : -1;
  }
  // Closes even if the hook refuses, like closeFile.
  int closeDescriptor(int descriptor) override {
    bool const admitted = enter("closeDescriptor", nullptr);
    int const result = target_.closeDescriptor(descriptor);
    if (result == 0) --openDescriptors_;
    return admitted ? result : -1;
  }

  bool copyFile(wchar const* source, wchar const* target, platform::CopyProgress progress, void* data,
                ulong32 flags) override {
    wstring const text =
        with(pair(source, target).c_str(), {flags}) + (progress != nullptr ? KVW(" progress") : KVW(""));
    return enter("copyFile", text.c_str()) && target_.copyFile(source, target, progress, data, flags);
  }
  bool moveFile(wchar const* source, wchar const* target) override {
    return enter("moveFile", pair(source, target).c_str()) && target_.moveFile(source, target);
  }
  bool deleteFile(wchar const* path) override { return enter("deleteFile", path) && target_.deleteFile(path); }
  bool createDirectory(wchar const* path) override {
    return enter("createDirectory", path) && target_.createDirectory(path);
  }
  bool removeDirectory(wchar const* path) override {
    return enter("removeDirectory", path) && target_.removeDirectory(path);
  }

  platform::SearchHandle findFirst(wchar const* pattern, platform::FindData& data) override {
    if (!enter("findFirst", pattern)) return platform::invalidSearch();
    platform::SearchHandle const search = target_.findFirst(pattern, data);
    if (search != platform::invalidSearch()) ++openSearches_;
    return search;
  }
  bool findNext(platform::SearchHandle search, platform::FindData& data) override {
    return enter("findNext", nullptr) && target_.findNext(search, data);
  }
  // Closes even if the hook refuses, like closeFile.
  bool findClose(platform::SearchHandle search) override {
    bool const admitted = enter("findClose", nullptr);
    bool const closed = target_.findClose(search);
    if (closed) --openSearches_;
    return admitted && closed;
  }
  bool currentDirectory(wstring& path) override {
    return enter("currentDirectory", nullptr) && target_.currentDirectory(path);
  }
  bool currentDirectoryOfDrive(int drive, wstring& path) override {
    wchar const letter[] = {static_cast<wchar>('A' + drive - 1), 0};
    return enter("currentDirectoryOfDrive", letter) && target_.currentDirectoryOfDrive(drive, path);
  }

 protected:
  // Called before each call that can fail, with the name of the method and its text, null if it has none:
  //   getAttributes C:\a                         a path; the letter of a drive for currentDirectoryOfDrive
  //   moveFile C:\a -> C:\b                      two paths
  //   openFile C:\a 40000000 3 4 80              further arguments in hexadecimal digits
  //   copyFile C:\a -> C:\b 1 progress           the last word if there is a callback
  // False makes the call fail with the failure value of its method, without forwarding it.
  virtual bool enter(char const* call, wchar const* text) = 0;

 private:
  static ulong32 unsignedOf(int value) { return static_cast<ulong32>(value); }
  static wstring with(wchar const* text, std::initializer_list<ulong32> values) {
    wstring result = text;
    for (ulong32 const value : values) {
      char digits[16];
      int const size = std::snprintf(digits, sizeof digits, " %x", static_cast<unsigned>(value));
      result.append(digits, digits + size);
    }
    return result;
  }
  static wstring pair(wchar const* source, wchar const* target) { return wstring(source) + KVW(" -> ") + target; }

  platform::FileApi& target_;
  int openSearches_ = 0;
  int openFiles_ = 0;
  int openDescriptors_ = 0;
};

}  // namespace testing
}  // namespace KV_1_1
